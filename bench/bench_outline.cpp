// Speed of the outline commands on large outlines: moving an entry that carries a big subtree,
// sorting everything, deleting many tagged entries, expanding and collapsing everything.
#include "document/Document.h"
#include "outline/modNodes.h"
#include "outline/modOutline.h"
#include "richtext/TextPane.h"
#include "support/FakeMainWindow.h"
#include "util/MainWindowHost.h"

#include <benchmark/benchmark.h>

#include <QRandomGenerator>

#include <functional>
#include <memory>
#include <vector>

using namespace modNodes;
using namespace modOutline;

namespace {

// A text pane that keeps the loaded text, as the real one must at least do.
class MemoryPane : public TextPane {
public:
    QByteArray TextRTF() const override { return m_rtf; }
    void SetTextRTF(const QByteArray &rtf) override { m_rtf = rtf; }
    bool Visible() const override { return m_bVisible; }
    void SetVisible(bool visible) override { m_bVisible = visible; }
    void SetBaseFont(const PaneFont &) override {}
    void ApplyFontToAll(const PaneFont &) override {}

private:
    QByteArray m_rtf;
    bool m_bVisible = true;
};

// An active document with a pane, whose entries carry a real stored text.
struct BenchDocument {
    Document doc;
    QByteArray stored;
    BenchDocument() {
        doc.setTextPane(std::make_unique<MemoryPane>());
        Documents::SetActive(&doc);
        NodeTextCompressIfRequired("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}\\f0\\fs20 Some "
                                   "words of an entry, \\b bold\\b0  and plain.\\par}",
                                   stored);
    }
    ~BenchDocument() { Documents::SetActive(nullptr); }
    Node *add(Node *parent, const QString &label) {
        Node *n = NodeInsert(&doc, relChild, parent);
        n->setText(label);
        n->setTag(stored);
        return n;
    }
    // Fills the parent with count entries, fan-out 10, pre-order, as a load does.
    void fill(Node *parent, int count, const std::function<QString()> &label) {
        int made = 0;
        std::function<void(Node *, int)> walk = [&](Node *p, int depth) {
            for (int i = 0; i < 10 && made < count; ++i) {
                Node *n = add(p, label());
                ++made;
                if (depth > 1) {
                    walk(n, depth - 1);
                }
            }
        };
        int depth = 1;
        for (long long capacity = 10; capacity < count; capacity = capacity * 10 + 10) {
            ++depth;
        }
        g_bDocTransfer = true;
        walk(parent, depth);
        g_bDocTransfer = false;
    }
    Node *root() { return doc.trvOutline().Item(1)->Root(); }
};

int countUnder(const Node *node) {
    int n = 1;
    for (const Node *c : node->childList()) {
        n += countUnder(c);
    }
    return n;
}

QString fixedLabel() {
    return QStringLiteral("Entry");
}

QString randomLabel() {
    static const char *words[] = {"alpha", "Beta", "gamma", "Delta", "epsilon", "Zeta", "eta"};
    QRandomGenerator *r = QRandomGenerator::global();
    return QString::fromLatin1(words[r->bounded(7)]) + QString::number(r->bounded(100000));
}

// An entry carrying a 10,000-entry subtree moved up past its previous sibling and back down
// (two moves an iteration).
void BM_MoveBigSubtreeUpDown(benchmark::State &state) {
    BenchDocument b;
    g_bDocTransfer = true;
    Node *root = NodeInsert(&b.doc, relChild, nullptr);
    b.add(root, QStringLiteral("before"));
    Node *big = b.add(root, QStringLiteral("big"));
    b.add(root, QStringLiteral("after"));
    g_bDocTransfer = false;
    b.fill(big, 10000, fixedLabel);
    NodeSelect(&b.doc, big);
    for (auto _ : state) {
        OutlineMoveUp();
        OutlineMoveDown();
    }
    state.counters["entries"] = double(b.doc.trvOutline().Count());
}

// The same entry moved down into the next parent (first child, ahead of its children) and back
// up into the end of its former parent (two moves an iteration).
void BM_MoveBigSubtreeAcrossParents(benchmark::State &state) {
    BenchDocument b;
    g_bDocTransfer = true;
    Node *root = NodeInsert(&b.doc, relChild, nullptr);
    Node *p = b.add(root, QStringLiteral("p"));
    b.add(p, QStringLiteral("x"));
    Node *big = b.add(p, QStringLiteral("big"));
    Node *q = b.add(root, QStringLiteral("q"));
    for (int i = 0; i < 10; ++i) {
        b.add(q, QStringLiteral("y"));
    }
    g_bDocTransfer = false;
    b.fill(big, 10000, fixedLabel);
    NodeSelect(&b.doc, big);
    for (auto _ : state) {
        OutlineMoveDown();
        OutlineMoveUp();
    }
    if (countUnder(b.root()) != b.doc.trvOutline().Count()) {
        state.SkipWithError("entries lost");
    }
}

// Sort all of 100,000 entries with random labels.
void BM_SortAll(benchmark::State &state) {
    BenchDocument b;
    Node *root = NodeInsert(&b.doc, relChild, nullptr);
    b.fill(root, 99999, randomLabel);
    NodeSelect(&b.doc, root);
    for (auto _ : state) {
        state.PauseTiming();
        for (Node *n : b.doc.trvOutline()) {
            n->setText(randomLabel());
        }
        state.ResumeTiming();
        OutlineSortAll();
    }
    state.counters["entries"] = double(b.doc.trvOutline().Count());
}

// Delete 10,000 tagged leaves spread through 100,000 entries, through the command.
void BM_DeleteTaggedEntries(benchmark::State &state) {
    FakeMainWindow frm; // answers the deletion question
    for (auto _ : state) {
        state.PauseTiming();
        frm.Answers = {modMain::vbYes};
        auto b = std::make_unique<BenchDocument>();
        Node *root = NodeInsert(&b->doc, relChild, nullptr);
        b->fill(root, 99999, fixedLabel);
        std::vector<Node *> leaves;
        for (Node *n : b->doc.trvOutline()) {
            if (n->Children() == 0) {
                leaves.push_back(n);
            }
        }
        const size_t step = leaves.size() / 10000;
        int tagged = 0;
        for (size_t i = 0; i < leaves.size() && tagged < 10000; i += step, ++tagged) {
            NodeTagOn(leaves[i]);
        }
        NodeSelect(&b->doc, root);
        const int before = b->doc.trvOutline().Count();
        state.ResumeTiming();
        OutlineDeleteTaggedEntries();
        state.PauseTiming();
        state.counters["deleted"] = double(before - b->doc.trvOutline().Count());
        b.reset();
        state.ResumeTiming();
    }
}

void BM_ExpandAll(benchmark::State &state) {
    BenchDocument b;
    Node *root = NodeInsert(&b.doc, relChild, nullptr);
    b.fill(root, 99999, fixedLabel);
    NodeSelect(&b.doc, root);
    for (auto _ : state) {
        state.PauseTiming();
        NodeCollapseAll(root);
        state.ResumeTiming();
        OutlineExpandAll();
    }
}

void BM_CollapseAll(benchmark::State &state) {
    BenchDocument b;
    Node *root = NodeInsert(&b.doc, relChild, nullptr);
    b.fill(root, 99999, fixedLabel);
    NodeSelect(&b.doc, root);
    for (auto _ : state) {
        state.PauseTiming();
        NodeExpandAll(root);
        state.ResumeTiming();
        OutlineCollapseAll();
    }
}

} // namespace

BENCHMARK(BM_MoveBigSubtreeUpDown)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MoveBigSubtreeAcrossParents)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortAll)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DeleteTaggedEntries)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ExpandAll)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CollapseAll)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
