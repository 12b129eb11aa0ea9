// Opening documents in the program's window, as a user does: the program is started with the
// file on its command line, on the X server named by DISPLAY (an Xvfb is enough).
//
// What is timed is what the user waits for: from the spawn of the program until its main window
// is mapped and the program has gone idle. An in-process benchmark would leave out the start-up
// (the X connection, fonts, settings, the splash) and would decide for itself when the event
// queue counts as empty, so the program is run as a separate process and watched from outside:
// - the main window is mapped: a MapNotify on the root window for a window whose _NET_WM_PID is
//   the program's and whose type is not the splash's;
// - the program is idle: its CPU time (/proc/<pid>/stat, all threads) has not moved for 300 ms
//   since the window was mapped. The time reported is when the CPU time last moved (or the map,
//   when that came later), so the quiet period itself is not counted. CPU time moves in clock
//   ticks (10 ms), which bounds the resolution.
// The peak resident memory (VmHWM) is read before the program is stopped. `cp` of the same file
// runs in the same benchmark run for comparison.
#include "bench/BenchDocuments.h"
#include "bench/BenchProcess.h"
#include "util/ErrorLog.h"

#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <thread>

namespace {

QTemporaryDir &workDir() {
    static QTemporaryDir dir;
    return dir;
}

// Where the generated documents go: --documents=<folder> keeps them for later runs.
QString &documentsDir() {
    static QString dir;
    return dir;
}

constexpr int kExample = 3; // the three-entry example document

// The document of `count` entries in the shape, written once per run.
QString documentFile(int count, benchdocs::Shape shape) {
    static std::map<std::pair<int, int>, QString> files;
    const std::pair key(count, int(shape));
    if (auto it = files.find(key); it != files.end()) {
        return it->second;
    }
    const QString name =
        QStringLiteral("doc%1-%2.mvd").arg(count).arg(QLatin1String(benchdocs::ShapeName(shape)));
    const QString path = documentsDir().isEmpty() ? workDir().filePath(name)
                                                  : documentsDir() + QLatin1Char('/') + name;
    if (QFile::exists(path)) {
        // Kept from an earlier run.
    } else if (count == kExample) {
        // Projects, with Garden (tagged) and House (selected).
        Document *doc = modDoc::DocInit();
        Node *root = modNodes::NodeInsert(doc, relFirst, nullptr);
        root->setText(QStringLiteral("Projects"));
        Node *garden = modNodes::NodeInsert(doc, relChild, root);
        garden->setText(QStringLiteral("Garden"));
        modNodes::NodeTagOn(garden);
        Node *house = modNodes::NodeInsert(doc, relChild, root);
        house->setText(QStringLiteral("House"));
        root->setExpanded(true);
        house->setSelected(true);
        doc->m_fntOutlineFont.setName(QStringLiteral("Arial"));
        doc->m_fntOutlineFont.setSize(10);
        doc->m_fntTextFont.setName(QStringLiteral("Times New Roman"));
        doc->m_fntTextFont.setSize(10);
        modDoc::DocSaveDocument(*doc, path, false);
        modDoc::DocClose(doc);
    } else {
        benchdocs::Write(path, count, shape);
    }
    files[key] = path;
    return path;
}

// The X server, watched for the program's windows.
class XWatch {
public:
    XWatch() {
        m_conn = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(m_conn)) {
            return;
        }
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_conn)).data->root;
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_conn, m_root, XCB_CW_EVENT_MASK, &mask);
        m_pidAtom = atom("_NET_WM_PID");
        m_typeAtom = atom("_NET_WM_WINDOW_TYPE");
        m_splashAtom = atom("_NET_WM_WINDOW_TYPE_SPLASH");
        xcb_flush(m_conn);
    }
    ~XWatch() { xcb_disconnect(m_conn); }
    XWatch(const XWatch &) = delete;
    XWatch &operator=(const XWatch &) = delete;

    bool ok() const { return m_root != 0; }

    // Drains the events; true when one of them mapped a main window of the process.
    bool mainWindowMapped(pid_t pid) {
        bool mapped = false;
        while (xcb_generic_event_t *e = xcb_poll_for_event(m_conn)) {
            if ((e->response_type & 0x7f) == XCB_MAP_NOTIFY) {
                const auto *map = reinterpret_cast<xcb_map_notify_event_t *>(e);
                mapped = mapped || (!map->override_redirect && isMainWindowOf(map->window, pid));
            }
            free(e);
        }
        return mapped;
    }

private:
    xcb_atom_t atom(const char *name) {
        xcb_intern_atom_reply_t *r = xcb_intern_atom_reply(
            m_conn, xcb_intern_atom(m_conn, 0, uint16_t(strlen(name)), name), nullptr);
        const xcb_atom_t a = r ? r->atom : 0;
        free(r);
        return a;
    }

    // The first 32-bit value of a property; 0 when absent.
    uint32_t property(xcb_window_t w, xcb_atom_t prop, xcb_atom_t type) {
        xcb_get_property_reply_t *r = xcb_get_property_reply(
            m_conn, xcb_get_property(m_conn, 0, w, prop, type, 0, 1), nullptr);
        uint32_t v = 0;
        if (r && xcb_get_property_value_length(r) >= 4) {
            v = *static_cast<uint32_t *>(xcb_get_property_value(r));
        }
        free(r);
        return v;
    }

    bool isMainWindowOf(xcb_window_t w, pid_t pid) {
        return property(w, m_pidAtom, XCB_ATOM_CARDINAL) == uint32_t(pid) &&
               property(w, m_typeAtom, XCB_ATOM_ATOM) != m_splashAtom;
    }

    xcb_connection_t *m_conn = nullptr;
    xcb_window_t m_root = 0;
    xcb_atom_t m_pidAtom = 0;
    xcb_atom_t m_typeAtom = 0;
    xcb_atom_t m_splashAtom = 0;
};

struct OpenResult {
    bool ok = false;
    double mappedS = 0;
    double idleS = 0;
    double cpuS = 0;
    double peakMb = 0;
};

// Starts the program with the file and watches it until its window shows and it is idle.
OpenResult openInWindow(const QString &file) {
    static const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/mavrolen");
    static QTemporaryDir home;
    OpenResult result;
    // One connection for the whole run: an Xvfb left without clients resets itself, and
    // refuses connections while it does.
    static XWatch x;
    if (!x.ok()) {
        return result;
    }
    (void)x.mainWindowMapped(0); // events of earlier runs
    const QByteArray h = home.path().toLocal8Bit();
    const auto start = benchproc::Clock::now();
    const pid_t pid =
        benchproc::Spawn({program.toLocal8Bit(), file.toLocal8Bit()},
                         {"QT_QPA_PLATFORM=xcb", "HOME=" + h, "XDG_CONFIG_HOME=" + h + "/config",
                          "XDG_DATA_HOME=" + h + "/data", "XDG_CACHE_HOME=" + h + "/cache"});
    if (pid <= 0) {
        return result;
    }
    using namespace std::chrono_literals;
    bool mapped = false;
    auto lastChange = start;
    long ticks = -1;
    while (benchproc::Clock::now() - start < 120s) {
        std::this_thread::sleep_for(2ms);
        const auto now = benchproc::Clock::now();
        if (!mapped && x.mainWindowMapped(pid)) {
            mapped = true;
            result.mappedS = benchproc::Seconds(start, now);
            lastChange = now;
        }
        const long t = benchproc::CpuTicks(pid);
        if (t < 0) {
            break; // the program ended
        }
        if (t != ticks) {
            ticks = t;
            if (mapped) {
                lastChange = now;
            }
        }
        if (mapped && now - lastChange >= 300ms) {
            result.ok = true;
            result.idleS = benchproc::Seconds(start, lastChange);
            result.cpuS = benchproc::TicksToSeconds(ticks);
            result.peakMb = double(benchproc::StatusKb(pid, "VmHWM")) / 1024;
            break;
        }
    }
    kill(pid, SIGKILL);
    benchproc::Wait(pid);
    return result;
}

// Arguments: entries, shape.
void BM_OpenInWindow(benchmark::State &state) {
    const auto shape = benchdocs::Shape(state.range(1));
    const QString path = documentFile(int(state.range(0)), shape);
    const double fileMb = double(QFile(path).size()) / (1 << 20);
    for (auto _ : state) {
        const OpenResult r = openInWindow(path);
        if (!r.ok) {
            state.SkipWithError("the window did not show and settle (is DISPLAY an X server?)");
            break;
        }
        state.SetIterationTime(r.idleS);
        state.counters["mapped_s"] = r.mappedS;
        state.counters["cpu_s"] = r.cpuS;
        state.counters["peak_MB"] = r.peakMb;
        state.counters["limit_MB"] = 2 * fileMb + 60;
    }
    state.counters["file_MB"] = fileMb;
    state.SetLabel(benchdocs::ShapeName(shape));
}

// `cp` of the same file, for comparison.
void BM_CopyFile(benchmark::State &state) {
    const QString path = documentFile(int(state.range(0)), benchdocs::Shape(state.range(1)));
    const QByteArray target = workDir().filePath(QStringLiteral("copy.mvd")).toLocal8Bit();
    for (auto _ : state) {
        if (!benchproc::Run({"cp", path.toLocal8Bit(), target})) {
            state.SkipWithError("cp failed");
            break;
        }
    }
}

void shapes(benchmark::internal::Benchmark *b) {
    b->Args({kExample, int(benchdocs::Shape::Balanced)});
    for (auto shape :
         {benchdocs::Shape::Flat, benchdocs::Shape::Balanced, benchdocs::Shape::Realistic}) {
        b->Args({100000, int(shape)});
    }
    b->ArgNames({"entries", "shape"});
}

} // namespace

BENCHMARK(BM_OpenInWindow)
    ->Apply(shapes)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK(BM_CopyFile)->Apply(shapes)->Unit(benchmark::kMillisecond)->Iterations(3);

int main(int argc, char **argv) {
    // The documents are made here without a window; the program under test gets the X server.
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    modMain::SetLogPath(workDir().filePath(QStringLiteral("bench.log")));
    if (display.isEmpty()) {
        qWarning("bench_window needs an X server in DISPLAY (for example an Xvfb)");
        return 1;
    }
    for (int i = 1; i < argc; ++i) {
        if (QByteArray(argv[i]).startsWith("--documents=")) {
            documentsDir() = QString::fromLocal8Bit(argv[i] + 12);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
