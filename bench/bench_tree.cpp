// Speed of the entry tree: building a document's tree as a load does, renumbering keys, copying
// and deleting subtrees, deleting tagged entries one by one, and compressing entry texts.
#include "document/Document.h"
#include "outline/modCompress.h"
#include "outline/modNodes.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <vector>

using namespace modNodes;

namespace {

constexpr int kEntries = 100000;

// Adds entries in file order (pre-order), each the last child of its parent, as a load does.
void buildFlat(Document &doc, int count) {
    g_bDocTransfer = true;
    Node *root = NodeInsert(&doc, relChild, nullptr);
    const QByteArray tag("12,stored text");
    for (int i = 1; i < count; ++i) {
        Node *n = NodeInsert(&doc, relChild, root);
        n->setText(QStringLiteral("Entry"));
        n->setTag(tag);
    }
    g_bDocTransfer = false;
}

// A tree of the given fan-out, filled in pre-order until it holds count entries.
void buildBalanced(Document &doc, int count, int fanOut) {
    g_bDocTransfer = true;
    int made = 1;
    const QByteArray tag("12,stored text");
    Node *root = NodeInsert(&doc, relChild, nullptr);
    // Depth 5 under the root with fan-out 10 holds 111,110 entries; stop at count.
    std::function<void(Node *, int)> fill = [&](Node *parent, int depth) {
        for (int i = 0; i < fanOut && made < count; ++i) {
            Node *n = NodeInsert(&doc, relChild, parent);
            n->setText(QStringLiteral("Entry"));
            n->setTag(tag);
            ++made;
            if (depth > 1) {
                fill(n, depth - 1);
            }
        }
    };
    fill(root, 5);
    g_bDocTransfer = false;
}

void BM_BuildFlat(benchmark::State &state) {
    for (auto _ : state) {
        auto doc = std::make_unique<Document>();
        buildFlat(*doc, kEntries);
        benchmark::DoNotOptimize(doc->trvOutline().Count());
        state.PauseTiming(); // tearing down is not building
        doc.reset();
        state.ResumeTiming();
    }
}

void BM_BuildBalanced(benchmark::State &state) {
    for (auto _ : state) {
        auto doc = std::make_unique<Document>();
        buildBalanced(*doc, kEntries, 10);
        benchmark::DoNotOptimize(doc->trvOutline().Count());
        state.PauseTiming();
        doc.reset();
        state.ResumeTiming();
    }
}

void BM_SetKeys(benchmark::State &state) {
    Document doc;
    buildBalanced(doc, kEntries, 10);
    Node *root = doc.trvOutline().Item(1);
    for (auto _ : state) {
        NodeSetKeys(root, QStringLiteral("KEY0"));
    }
}

void BM_DuplicateAndDeleteSubtree(benchmark::State &state) {
    Document doc;
    Documents::SetActive(&doc);
    buildBalanced(doc, kEntries, 10);
    Node *root = doc.trvOutline().Item(1);
    Node *source = root->Child(); // 11,111 entries
    for (auto _ : state) {
        Node *copy = NodeDuplicate(&doc, source, root, relChild);
        NodeDelete(&doc, copy);
    }
    Documents::SetActive(nullptr);
}

// Deletes 10,000 tagged entries one by one, in collection order, from a 100,000-entry tree:
// flat under the root (argument 0) or balanced with fan-out 10 (argument 1).
void BM_DeleteTaggedEntries(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto doc = std::make_unique<Document>();
        Documents::SetActive(doc.get());
        if (state.range(0) == 0) {
            buildFlat(*doc, kEntries);
        } else {
            buildBalanced(*doc, kEntries, 10);
        }
        // 10,000 leaves spread evenly through the tree.
        std::vector<Node *> leaves;
        for (Node *n : doc->trvOutline()) {
            if (n->Children() == 0) {
                leaves.push_back(n);
            }
        }
        std::vector<NodeRef> tagged;
        const size_t step = leaves.size() / 10000;
        for (size_t i = 0; i < leaves.size() && tagged.size() < 10000; i += step) {
            NodeTagOn(leaves[i]);
            tagged.emplace_back(leaves[i]);
        }
        state.counters["deleted"] = double(tagged.size());
        state.ResumeTiming();
        for (const NodeRef &ref : tagged) {
            NodeDelete(doc.get(), ref.get());
        }
        state.PauseTiming();
        Documents::SetActive(nullptr);
        tagged.clear();
        doc.reset();
        state.ResumeTiming();
    }
}

QByteArray richText(qsizetype size) {
    QByteArray rtf("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}\\f0\\fs20 ");
    int i = 0;
    while (rtf.size() < size) {
        rtf += "Paragraph " + QByteArray::number(i++) +
               " of an outline entry, with \\b bold\\b0  words and caf\\'e9.\\par\r\n";
    }
    rtf.truncate(size - 1);
    return rtf + '}';
}

void BM_CompressRichText(benchmark::State &state) {
    const QByteArray text = richText(1 << 20);
    QByteArray stored;
    for (auto _ : state) {
        NodeTextCompressIfRequired(text, stored);
        benchmark::DoNotOptimize(stored.data());
    }
    state.SetBytesProcessed(state.iterations() * text.size());
    state.counters["stored"] = double(stored.size());
}

void BM_DecompressRichText(benchmark::State &state) {
    const QByteArray text = richText(1 << 20);
    QByteArray stored;
    NodeTextCompressIfRequired(text, stored);
    QByteArray out;
    for (auto _ : state) {
        NodeTextDecompressIfRequired(stored, out);
        benchmark::DoNotOptimize(out.data());
    }
    if (out != text) {
        state.SkipWithError("round trip differs");
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}

} // namespace

BENCHMARK(BM_BuildFlat)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildBalanced)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SetKeys)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DuplicateAndDeleteSubtree)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DeleteTaggedEntries)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_CompressRichText)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecompressRichText)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
