// Printing and publishing large documents: 10,000 entries of formatted texts (runs of bold,
// italic and colour, bullets, now and then a table) to HTML, Markdown and PDF, and the first
// page of the preview for 1,000 to 100,000 entries, which must not grow with the document.
#include "app/modMain.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "outline/modNodes.h"
#include "print/PrintPages.h"
#include "print/modExport.h"
#include "print/modPrint.h"

#include <QGuiApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <vector>

namespace {

QTemporaryDir &workDir() {
    static QTemporaryDir dir;
    return dir;
}

QByteArray richText(std::mt19937 &random, int words) {
    static const char *vocabulary[] = {"garden", "house", "paint",  "plans",  "water",
                                       "window", "north", "winter", "budget", "notes"};
    QByteArray rtf = "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}}"
                     "{\\colortbl ;\\red255\\green0\\blue0;}\\pard\\f0\\fs20 ";
    for (int i = 0; i < words; ++i) {
        const unsigned r = random();
        if (r % 31 == 0) {
            rtf += "\\par\r\n";
        }
        if (r % 37 == 0) {
            rtf += "\\par{\\*\\pn\\pnlvlblt{\\pntxtb\\'b7}}\\fi-360\\li360 ";
        }
        const char *open = r % 17 == 0 ? "{\\b " : r % 19 == 0 ? "{\\i\\cf1 " : nullptr;
        if (open) {
            rtf += open;
        }
        rtf += vocabulary[r % 10];
        rtf += QByteArray::number(r % 1000);
        if (open) {
            rtf += '}';
        }
        rtf += ' ';
    }
    rtf += "\\par\\pard ";
    if (random() % 20 == 0) {
        rtf += "\\trowd\\cellx2000\\cellx4000 one\\cell two\\cell\\row"
               "\\trowd\\cellx2000\\cellx4000 three\\cell four\\cell\\row\\pard ";
    }
    return rtf + "\\par }";
}

// `count` entries, up to 12 children each, texts of 40 to 240 words stored compressed.
Document *document(int count) {
    static std::map<int, Document *> docs;
    if (Document *doc = docs[count]) {
        return doc;
    }
    std::mt19937 random{unsigned(count)};
    Document *doc = modDoc::DocInit();
    std::vector<Node *> nodes;
    size_t parent = 0;
    for (int i = 0; i < count; ++i) {
        if (!nodes.empty() && nodes[parent]->Children() >= 12) {
            ++parent;
        }
        Node *n = nodes.empty() ? modNodes::NodeInsert(doc, relFirst, nullptr)
                                : modNodes::NodeInsert(doc, relChild, nodes[parent]);
        n->setText(QStringLiteral("Entry %1 about the garden").arg(i));
        QByteArray stored;
        modNodes::NodeTextCompressIfRequired(richText(random, 40 + int(random() % 200)), stored);
        n->setTag(stored);
        nodes.push_back(n);
    }
    nodes.front()->setSelected(true);
    docs[count] = doc;
    return doc;
}

void BM_Html(benchmark::State &state) {
    Document *doc = document(int(state.range(0)));
    const QString target = workDir().filePath(QStringLiteral("out.html"));
    for (auto _ : state) {
        if (!modExport::ExportHtml(*doc, target)) {
            state.SkipWithError("export failed (see the session log)");
        }
    }
}

void BM_Markdown(benchmark::State &state) {
    Document *doc = document(int(state.range(0)));
    const QString target = workDir().filePath(QStringLiteral("out.md"));
    for (auto _ : state) {
        if (!modExport::ExportMarkdown(*doc, target)) {
            state.SkipWithError("export failed (see the session log)");
        }
    }
}

void BM_Pdf(benchmark::State &state) {
    Document *doc = document(int(state.range(0)));
    const QString target = workDir().filePath(QStringLiteral("out.pdf"));
    const auto entries = modPrint::PrintEntries(*doc, {});
    int pages = 0;
    for (auto _ : state) {
        if (!modPrint::WritePdf(*doc, entries, true, target, modPrint::PageLayoutDefault(),
                                [&](int done, int total) {
                                    pages = total > 0 ? total : done;
                                    return true;
                                })) {
            state.SkipWithError("PDF failed (see the session log)");
        }
    }
    state.counters["pages"] = pages;
}

// From the entries to the first page drawn at preview size.
void BM_PreviewFirstPage(benchmark::State &state) {
    Document *doc = document(int(state.range(0)));
    for (auto _ : state) {
        PrintPages pages(modPrint::PrintEntries(*doc, {}), true, QStringLiteral("Bench"),
                         modPrint::TextFont(*doc), modPrint::PageLayoutDefault());
        benchmark::DoNotOptimize(pages.renderPage(0, 0, 800));
    }
}

} // namespace

BENCHMARK(BM_Html)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_Markdown)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_Pdf)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_PreviewFirstPage)
    ->Arg(1000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    modMain::SetLogPath(workDir().filePath(QStringLiteral("bench.log")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
