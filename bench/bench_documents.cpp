// Loading, saving and exporting large generated documents: 10,000 and 100,000 entries, each a
// formatted rich text of a few hundred to a few thousand characters, stored compressed.
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocText.h"
#include "document/modDocV1.h"
#include "document/modRecovery.h"
#include "outline/modNodes.h"
#include "util/ErrorLog.h"

#include <QFile>
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

// A formatted rich text of roughly `words` words: fonts, colours, bold and italic runs, a list.
QByteArray richText(std::mt19937 &random, int words) {
    static const char *vocabulary[] = {"garden", "house",  "paint",   "plans",   "water",
                                       "window", "letter", "north",   "winter",  "budget",
                                       "review", "travel", "caf\xe9", "meeting", "notes"};
    QByteArray rtf =
        "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\froman "
        "Times New Roman;}}{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue128;}"
        "\\viewkind4\\uc1\\pard\\f0\\fs20 ";
    for (int i = 0; i < words; ++i) {
        const unsigned r = random();
        if (r % 23 == 0) {
            rtf += "\\par\r\n";
        }
        if (r % 17 == 0) {
            rtf += "{\\b ";
        } else if (r % 19 == 0) {
            rtf += "{\\i\\cf1 ";
        } else if (r % 29 == 0) {
            rtf += "{\\f1\\fs24\\cf2 ";
        }
        rtf += vocabulary[r % 15];
        rtf += QByteArray::number(r % 1000);
        if (r % 17 == 0 || r % 19 == 0 || r % 29 == 0) {
            rtf += '}';
        }
        rtf += ' ';
    }
    rtf += "\\par\r\n}\r\n";
    return rtf;
}

// Builds a document of `count` entries (each entry gets up to 12 children, about 5 levels
// deep), saves it once and returns the file's path. Cached per size.
QString documentFile(int count) {
    static std::map<int, QString> files;
    auto found = files.find(count);
    if (found != files.end()) {
        return found->second;
    }
    std::mt19937 random{unsigned(count)};
    Document *doc = modDoc::DocInit();
    std::vector<Node *> nodes;
    nodes.reserve(size_t(count));
    size_t parent = 0;
    for (int i = 0; i < count; ++i) {
        Node *n = nullptr;
        if (nodes.empty()) {
            n = modNodes::NodeInsert(doc, relFirst, nullptr);
        } else {
            if (nodes[parent]->Children() >= 12) {
                ++parent;
            }
            n = modNodes::NodeInsert(doc, relChild, nodes[parent]);
        }
        n->setText(QStringLiteral("Entry %1 about the garden").arg(i));
        QByteArray stored;
        modNodes::NodeTextCompressIfRequired(richText(random, 40 + int(random() % 400)), stored);
        n->setTag(stored);
        if (random() % 5 == 0) {
            modNodes::NodeTagOn(n);
        }
        nodes.push_back(n);
    }
    for (size_t i = 0; i < nodes.size() / 3; ++i) {
        nodes[i]->setExpanded(true);
    }
    nodes.back()->setSelected(true);
    const QString path = workDir().filePath(QStringLiteral("doc%1.mvd").arg(count));
    modDoc::DocSaveDocument(*doc, path, false);
    modDoc::DocClose(doc);
    files[count] = path;
    return path;
}

long residentKb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return -1;
    }
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:")) {
            return line.mid(6).trimmed().split(' ').first().toLong();
        }
    }
    return -1;
}

void BM_Load(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)));
    const double fileMb = double(QFile(path).size()) / (1 << 20);
    for (auto _ : state) {
        const long before = residentKb();
        Document *doc = modDoc::DocLoad(path);
        state.PauseTiming();
        if (!doc || doc->trvOutline().Count() != state.range(0)) {
            state.SkipWithError("load failed");
            break;
        }
        state.counters["file_MB"] = fileMb;
        state.counters["rss_after_MB"] = double(residentKb()) / 1024;
        state.counters["rss_growth_MB"] = double(residentKb() - before) / 1024;
        modDoc::DocClose(doc);
        state.ResumeTiming();
    }
}

void BM_Save(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)));
    Document *doc = modDoc::DocLoad(path);
    const QString target = workDir().filePath(QStringLiteral("saved.mvd"));
    for (auto _ : state) {
        if (!modDoc::DocSaveDocument(*doc, target, false)) {
            state.SkipWithError("save failed");
            break;
        }
    }
    modDoc::DocClose(doc);
}

// The file's bytes alone, without the disk.
void BM_SaveBytes(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)));
    Document *doc = modDoc::DocLoad(path);
    for (auto _ : state) {
        benchmark::DoNotOptimize(modDocV1::DocSaveVersion(*doc));
    }
    modDoc::DocClose(doc);
}

void BM_ExportText(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)));
    Document *doc = modDoc::DocLoad(path);
    const QString target = workDir().filePath(QStringLiteral("export.txt"));
    for (auto _ : state) {
        if (!modDocText::DocExport(*doc, target)) {
            state.SkipWithError("export failed (see the session log)");
            break;
        }
    }
    modDoc::DocClose(doc);
}

// One recovery checkpoint of a changed document: what the user-interface thread spends (the
// snapshot); the copy is written on a worker thread, waited for outside the timing.
void BM_CheckPoint(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)));
    modRecovery::SetFolder(workDir().filePath(QStringLiteral("recovery")));
    Document *doc = modDoc::DocLoad(path);
    doc->m_bDataChanged = true;
    Node *last = doc->trvOutline().Item(int(doc->trvOutline().Count()));
    int round = 0;
    for (auto _ : state) {
        last->setText(QStringLiteral("Changed %1").arg(++round));
        modRecovery::CheckPoint(true);
        state.PauseTiming();
        modRecovery::WaitForWrites();
        state.ResumeTiming();
    }
    state.counters["file_MB"] = double(QFile(path).size()) / (1 << 20);
    modDoc::DocClose(doc);
}

// The whole copy written on the calling thread, for comparison with the checkpoint.
void BM_RecoveryWriteNow(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)));
    modRecovery::SetFolder(workDir().filePath(QStringLiteral("recovery")));
    Document *doc = modDoc::DocLoad(path);
    for (auto _ : state) {
        if (!modRecovery::WriteNow(*doc)) {
            state.SkipWithError("recovery copy failed");
            break;
        }
    }
    modDoc::DocClose(doc);
}

} // namespace

BENCHMARK(BM_CheckPoint)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_RecoveryWriteNow)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Load)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Save)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SaveBytes)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ExportText)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(1);

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    modMain::SetLogPath(workDir().filePath(QStringLiteral("bench.log")));
    if (argc > 2 && QByteArray(argv[1]) == "--write-document") {
        // Writes the generated document of the given size to a file, for timing the tool.
        const int count = QByteArray(argv[2]).toInt();
        const QString out = argc > 3 ? QString::fromLocal8Bit(argv[3]) : QStringLiteral("doc.mvd");
        QFile::remove(out);
        return QFile::copy(documentFile(count), out) ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
