// Loading, saving and exporting large generated documents: 10,000 and 100,000 entries, each a
// formatted rich text of a few hundred to a few thousand characters, stored compressed.
#include "bench/BenchDocuments.h"
#include "bench/BenchProcess.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocText.h"
#include "document/modDocV1.h"
#include "document/modRecovery.h"
#include "outline/modNodes.h"
#include "util/ByteChain.h"
#include "util/ErrorLog.h"

#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>

namespace {

QTemporaryDir &workDir() {
    static QTemporaryDir dir;
    return dir;
}

// The generated document of `count` entries in the shape, saved once; returns the file's path.
QString documentFile(int count, benchdocs::Shape shape = benchdocs::Shape::Balanced) {
    static std::map<std::pair<int, int>, QString> files;
    const std::pair key(count, int(shape));
    auto found = files.find(key);
    if (found != files.end()) {
        return found->second;
    }
    const QString path = workDir().filePath(
        QStringLiteral("doc%1-%2.mvd").arg(count).arg(QLatin1String(benchdocs::ShapeName(shape))));
    benchdocs::Write(path, count, shape);
    files[key] = path;
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

// The file's bytes alone, made as a save makes them (handed over a block at a time), without the
// disk.
void BM_SaveBytes(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)));
    Document *doc = modDoc::DocLoad(path);
    for (auto _ : state) {
        qsizetype bytes = 0;
        ByteChain out([&](const std::vector<QByteArrayView> &pieces) {
            for (const QByteArrayView piece : pieces) {
                bytes += piece.size();
            }
        });
        modDocV1::DocSaveVersion(*doc, out);
        out.flush();
        benchmark::DoNotOptimize(bytes);
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

// The command-line tool's convert (load and save, as a separate process) and `cp` of the same
// file, side by side.
void BM_CliConvert(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)), benchdocs::Shape(state.range(1)));
    const QByteArray tool =
        (QCoreApplication::applicationDirPath() + "/mavrolen-cli").toLocal8Bit();
    const QByteArray target = workDir().filePath(QStringLiteral("converted.mvd")).toLocal8Bit();
    for (auto _ : state) {
        if (!benchproc::Run({tool, "convert", path.toLocal8Bit(), target})) {
            state.SkipWithError("convert failed");
            break;
        }
    }
    state.counters["file_MB"] = double(QFile(path).size()) / (1 << 20);
}

void BM_CopyFile(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)), benchdocs::Shape(state.range(1)));
    const QByteArray target = workDir().filePath(QStringLiteral("copied.mvd")).toLocal8Bit();
    for (auto _ : state) {
        if (!benchproc::Run({"cp", path.toLocal8Bit(), target})) {
            state.SkipWithError("cp failed");
            break;
        }
    }
}

void shapes(benchmark::internal::Benchmark *b) {
    for (auto shape :
         {benchdocs::Shape::Flat, benchdocs::Shape::Balanced, benchdocs::Shape::Realistic}) {
        b->Args({100000, int(shape)});
    }
    b->ArgNames({"entries", "shape"});
}

} // namespace

BENCHMARK(BM_CheckPoint)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_RecoveryWriteNow)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_CliConvert)->Apply(shapes)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_CopyFile)->Apply(shapes)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_Load)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Save)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SaveBytes)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ExportText)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(1);

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    modMain::SetLogPath(workDir().filePath(QStringLiteral("bench.log")));
    if (argc > 2 && QByteArray(argv[1]) == "--write-document") {
        // Writes a generated document to a file, for timing the tools and the window:
        // --write-document <entries> [<file> [balanced|flat|realistic]].
        const int count = QByteArray(argv[2]).toInt();
        const QString out = argc > 3 ? QString::fromLocal8Bit(argv[3]) : QStringLiteral("doc.mvd");
        benchdocs::Shape shape = benchdocs::Shape::Balanced;
        for (auto s : {benchdocs::Shape::Flat, benchdocs::Shape::Realistic}) {
            if (argc > 4 && QByteArray(argv[4]) == benchdocs::ShapeName(s)) {
                shape = s;
            }
        }
        QFile::remove(out);
        return benchdocs::Write(out, count, shape) ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
