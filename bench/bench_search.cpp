// Find and replace over a generated 100,000-entry document (the shape and texts of
// bench_documents): a phrase only the last entry holds, found in all entry texts the first time
// (every text decoded) and again (decoded texts kept); Replace All of a word that 1,000 entries
// hold; a label only the last entry has.
#include "app/modMain.h"
#include "bench/BenchDocuments.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "search/modSearch.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int kEntries = 100000;
constexpr int kEveryWord = kEntries / 1000; // every 100th entry holds the word to replace

QTemporaryDir &workDir() {
    static QTemporaryDir dir;
    return dir;
}

struct Fixture {
    Document *doc = nullptr;
    std::vector<Node *> nodes;
    std::vector<QByteArray> withWord; // the stored texts of the entries that hold the word
};

QByteArray stored(const QByteArray &rtf) {
    QByteArray s;
    modNodes::NodeTextCompressIfRequired(rtf, s);
    return s;
}

Fixture &fixture() {
    static Fixture f;
    if (f.doc) {
        return f;
    }
    std::mt19937 random{unsigned(kEntries)};
    f.doc = modDoc::DocInit();
    f.doc->setTextPane(std::make_unique<RichTextBuffer>());
    f.nodes.reserve(kEntries);
    size_t parent = 0;
    for (int i = 0; i < kEntries; ++i) {
        Node *n = nullptr;
        if (f.nodes.empty()) {
            n = modNodes::NodeInsert(f.doc, relFirst, nullptr);
        } else {
            if (f.nodes[parent]->Children() >= 12) {
                ++parent;
            }
            n = modNodes::NodeInsert(f.doc, relChild, f.nodes[parent]);
        }
        n->setText(QStringLiteral("Entry %1 about the garden").arg(i));
        QByteArray rtf = benchdocs::RichText(random, 40 + int(random() % 400));
        const qsizetype end = rtf.lastIndexOf("\\par");
        if (i == kEntries - 1) {
            rtf.insert(end, "quartz lighthouse ");
        } else if (i % kEveryWord == kEveryWord / 2) {
            rtf.insert(end, "zephyr ");
        }
        n->setTag(stored(rtf));
        if (i % kEveryWord == kEveryWord / 2) {
            f.withWord.push_back(n->Tag());
        }
        f.nodes.push_back(n);
    }
    return f;
}

void startAtRoot(const QString &find, const QString &where) {
    Fixture &f = fixture();
    modNodes::NodeSelect(f.doc, f.nodes.front());
    modSearch::g_sFindText = find;
    modSearch::g_bMatchCase = false;
    modSearch::g_bWholeWord = false;
    modSearch::g_bBackwards = false;
    modSearch::g_sSearchWhere = where;
}

bool foundLast() {
    return fixture().doc->trvOutline().SelectedItem() == fixture().nodes.back();
}

void BM_FindAllTextsFirst(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        modSearch::ForgetTexts();
        startAtRoot(QStringLiteral("Quartz Lighthouse"), QStringLiteral("1"));
        state.ResumeTiming();
        if (!modSearch::SearchPerform() || !foundLast()) {
            state.SkipWithError("not found");
        }
    }
}

void BM_FindAllTextsRepeat(benchmark::State &state) {
    startAtRoot(QStringLiteral("Quartz Lighthouse"), QStringLiteral("1"));
    modSearch::SearchPerform();
    for (auto _ : state) {
        state.PauseTiming();
        startAtRoot(QStringLiteral("Quartz Lighthouse"), QStringLiteral("1"));
        state.ResumeTiming();
        if (!modSearch::SearchPerform() || !foundLast()) {
            state.SkipWithError("not found");
        }
    }
}

// Find, then Replace All, as the dialog's buttons run them; the texts are put back after each.
void BM_ReplaceAll1000(benchmark::State &state) {
    Fixture &f = fixture();
    for (auto _ : state) {
        startAtRoot(QStringLiteral("zephyr"), QStringLiteral("1"));
        modSearch::g_sReplaceText = QStringLiteral("breeze");
        modSearch::g_iSearchMode = 2;
        modSearch::SearchPerform();
        modSearch::SearchReplaceAll();
        modSearch::g_iSearchMode = 0;
        state.PauseTiming();
        int changed = 0;
        for (size_t i = 0; i < f.withWord.size(); ++i) {
            Node *n = f.nodes[i * kEveryWord + kEveryWord / 2];
            changed += n->Tag() != f.withWord[i];
            n->setTag(f.withWord[i]);
        }
        if (changed != int(f.withWord.size())) {
            state.SkipWithError("not every entry was replaced");
        }
        state.ResumeTiming();
    }
}

void BM_FindLabels(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        startAtRoot(QStringLiteral("ENTRY 99999 about"), QStringLiteral("2"));
        state.ResumeTiming();
        if (!modSearch::SearchPerform() || !foundLast()) {
            state.SkipWithError("not found");
        }
    }
}

} // namespace

BENCHMARK(BM_FindAllTextsFirst)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_FindAllTextsRepeat)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ReplaceAll1000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_FindLabels)->Unit(benchmark::kMillisecond)->Iterations(5);

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    modMain::SetLogPath(workDir().filePath(QStringLiteral("bench.log")));
    if (argc > 2 && QByteArray(argv[1]) == "--write-document") {
        // Writes the document to a file, for timing the command-line find.
        QFile::remove(QString::fromLocal8Bit(argv[2]));
        return modDoc::DocSaveDocument(*fixture().doc, QString::fromLocal8Bit(argv[2]), false) ? 0
                                                                                               : 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
