// Recovery copies of documents with unsaved changes, written in the background.
#include "document/modRecovery.h"

#include "document/DocFiles.h"
#include "document/Document.h"
#include "document/modDocV1.h"
#include "outline/Node.h"
#include "outline/modNodes.h"
#include "util/ByteChain.h"
#include "util/CodePage.h"
#include "util/ErrorLog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <unistd.h>

namespace modRecovery {

namespace {

QString g_sFolder;

// What one open document's copy is at.
struct CopyState {
    QString base;                  // the folder and "<pid>-<n>", without extension
    std::mutex writing;            // held while its files are written or removed
    std::atomic<bool> pending;     // a background write is queued or running
    quint64 written = ~quint64(0); // the tree revision of the last copy
    bool exists = false;
    qint64 dirtySince = -1; // when an unwritten change was first seen (ms of the clock)
    QString error;          // the last failure of a background write, reported on the next tick
};

std::map<const Document *, std::shared_ptr<CopyState>> g_states;
int g_iNext = 0;
QElapsedTimer g_clock;
std::mutex g_errorsLock;

qint64 now() {
    if (!g_clock.isValid()) {
        g_clock.start();
    }
    return g_clock.elapsed();
}

std::shared_ptr<CopyState> stateOf(const Document *doc) {
    auto &s = g_states[doc];
    if (!s) {
        s = std::make_shared<CopyState>();
        s->pending = false;
        s->base = Folder() + QLatin1Char('/') + QString::number(::getpid()) + QLatin1Char('-') +
                  QString::number(++g_iNext);
    }
    return s;
}

// The document as it is now, taken on the user-interface thread: the header, and the entries
// in pre-order with their labels and stored texts shared, not copied. The lines of the native
// format are made from it later, on any thread.
struct Snapshot {
    struct Entry {
        int depth;
        qulonglong position; // among its siblings, from 1
        QString label;
        Node::TagHold text;
        bool tagged;
        bool showing;
    };
    QByteArray header;
    std::vector<Entry> entries;
};

// The key the native format gives an entry: "0" for a top entry, then the positions among the
// siblings on the way down ("0.2.1"). Keys are made here: the tree's own keys stay as they are.
QByteArray keyOf(const Node *node) {
    std::vector<qulonglong> path;
    for (const Node *n = node; n->Parent(); n = n->Parent()) {
        const auto &siblings = n->Parent()->childList();
        path.push_back(
            qulonglong(std::find(siblings.begin(), siblings.end(), n) - siblings.begin()) + 1);
    }
    QByteArray key("0");
    for (auto it = path.rbegin(); it != path.rend(); ++it) {
        key += '.' + QByteArray::number(*it);
    }
    return key;
}

Snapshot takeSnapshot(const Document &doc) {
    const Nodes &nodes = doc.trvOutline();
    Snapshot shot;
    const Node *selected = nodes.SelectedItem();
    modDocV1::DocSaveHeader(shot.header, doc, selected ? "KEY" + keyOf(selected) : QByteArray());
    shot.entries.reserve(size_t(nodes.Count()));
    struct Item {
        const Node *node;
        int depth;
        qulonglong position;
        bool showing;
    };
    std::vector<Item> stack;
    const auto &top = nodes.topNodes();
    for (auto it = top.rbegin(); it != top.rend(); ++it) {
        stack.push_back({*it, 0, 0, true});
    }
    while (!stack.empty()) {
        const Item item = stack.back();
        stack.pop_back();
        const Node *n = item.node;
        shot.entries.push_back(
            {item.depth, item.position, n->Text(), n->HoldTag(), n->ImageTagged(), item.showing});
        const auto &children = n->childList();
        const bool showing = item.showing && n->Expanded();
        for (size_t i = children.size(); i-- > 0;) {
            stack.push_back({children[i], item.depth + 1, qulonglong(i + 1), showing});
        }
    }
    return shot;
}

// The native format's bytes of a snapshot, handed to the chain as they are made.
void formatSnapshot(const Snapshot &shot, ByteChain &out) {
    out.append(shot.header);
    std::vector<QByteArray> keys; // the key of the last entry at each depth
    QByteArray label;
    for (const Snapshot::Entry &e : shot.entries) {
        keys.resize(size_t(e.depth) + 1);
        QByteArray &key = keys[size_t(e.depth)];
        if (e.depth == 0) {
            key = "0";
        } else {
            key.resize(0);
            key.append(keys[size_t(e.depth) - 1])
                .append('.')
                .append(QByteArray::number(e.position));
        }
        CodePage::fromUnicode(e.label, label);
        modDocV1::DocSaveEntry(out, key, label, e.tagged, e.showing, e.text.view());
    }
}

QByteArray infoText(const Document &doc) {
    return "pid " + QByteArray::number(qint64(::getpid())) + "\nfile " + doc.m_sFile.toUtf8() +
           "\ncaption " + doc.m_sCaption.toUtf8() + '\n';
}

// Writes one file atomically (temporary file, flushed, renamed); "" or the reason it failed.
QString writeFile(const QString &path, const std::function<void(ByteChain &)> &fill) {
    QSaveFile file(path);
    bool ok = file.open(QIODevice::WriteOnly);
    if (ok) {
        ByteChain out([&](const std::vector<QByteArrayView> &pieces) {
            for (const QByteArrayView piece : pieces) {
                ok = ok && file.write(piece.data(), piece.size()) == piece.size();
            }
        });
        fill(out);
        out.flush();
    }
    if (!ok || !file.commit()) {
        return path + QStringLiteral(": ") + file.errorString();
    }
    return {};
}

// Writes the copy of the snapshot, then its side file; runs on any thread.
QString writeCopy(CopyState &s, const Snapshot &shot, const QByteArray &info) {
    const std::lock_guard<std::mutex> lock(s.writing);
    if (!QDir().mkpath(QFileInfo(s.base).path())) {
        return s.base + QStringLiteral(": the folder cannot be made");
    }
    QString error = writeFile(s.base + QStringLiteral(".mvd"),
                              [&](ByteChain &out) { formatSnapshot(shot, out); });
    if (error.isEmpty()) {
        error =
            writeFile(s.base + QStringLiteral(".info"), [&](ByteChain &out) { out.append(info); });
    }
    return error;
}

void removeFiles(CopyState &s) {
    const std::lock_guard<std::mutex> lock(s.writing);
    QFile::remove(s.base + QStringLiteral(".info"));
    QFile::remove(s.base + QStringLiteral(".mvd"));
    s.exists = false;
    s.written = ~quint64(0);
}

bool processAlive(qint64 pid) {
    return pid > 0 && (::kill(pid_t(pid), 0) == 0 || errno == EPERM);
}

void reportFailure(const QString &what) {
    modMain::Guarded([&] {
        PROC("modRecovery CheckPoint");
        modMain::Raise(modMain::errPathFileAccess, what);
    });
}

} // namespace

QString Folder() {
    if (!g_sFolder.isEmpty()) {
        return g_sFolder;
    }
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
           QStringLiteral("/recovery");
}

void SetFolder(const QString &folder) {
    WaitForWrites();
    g_sFolder = folder;
    g_states.clear();
}

void WaitForWrites() {
    for (auto &entry : g_states) {
        const std::lock_guard<std::mutex> lock(entry.second->writing);
    }
    QThreadPool::globalInstance()->waitForDone();
}

QString CopyOf(const Document *doc) {
    const auto it = g_states.find(doc);
    return it != g_states.end() && it->second->exists ? it->second->base + QStringLiteral(".mvd")
                                                      : QString();
}

bool WriteNow(Document &doc) {
    PROC("modRecovery WriteNow");
    const auto s = stateOf(&doc);
    const quint64 revision = doc.trvOutline().Revision();
    const QString error = writeCopy(*s, takeSnapshot(doc), infoText(doc));
    if (!error.isEmpty()) {
        reportFailure(error);
        return false;
    }
    s->exists = true;
    s->written = revision;
    s->dirtySince = -1;
    return true;
}

void Forget(Document *doc) {
    const auto it = g_states.find(doc);
    if (it == g_states.end()) {
        return;
    }
    removeFiles(*it->second);
    g_states.erase(it);
}

void CheckPoint(bool idle) {
    PROC("modRecovery CheckPoint");
    const std::vector<Document *> &open = Documents::All();
    // Closed documents lose their copies.
    for (auto it = g_states.begin(); it != g_states.end();) {
        if (std::find(open.begin(), open.end(), it->first) == open.end()) {
            removeFiles(*it->second);
            it = g_states.erase(it);
        } else {
            ++it;
        }
    }
    for (Document *doc : open) {
        const auto found = g_states.find(doc);
        if (!doc->m_bDataChanged) {
            if (found != g_states.end() && found->second->exists) {
                removeFiles(*found->second); // saved cleanly
            }
            continue;
        }
        const auto s = stateOf(doc);
        {
            const std::lock_guard<std::mutex> lock(g_errorsLock);
            if (!s->error.isEmpty()) {
                reportFailure(std::exchange(s->error, QString()));
                s->written = ~quint64(0); // written again on a later check
            }
        }
        const quint64 revision = doc->trvOutline().Revision();
        if (revision == s->written || s->pending) {
            continue;
        }
        if (s->dirtySince < 0) {
            s->dirtySince = now();
        }
        if (!idle && now() - s->dirtySince < kMaxDelayMs) {
            continue;
        }
        // The snapshot is taken here; the file is made and written on a worker thread.
        auto shot = std::make_shared<Snapshot>(takeSnapshot(*doc));
        QByteArray info = infoText(*doc);
        s->pending = true;
        s->written = revision;
        s->exists = true;
        s->dirtySince = -1;
        QThreadPool::globalInstance()->start([s, shot, info = std::move(info)] {
            const QString error = writeCopy(*s, *shot, info);
            if (!error.isEmpty()) {
                const std::lock_guard<std::mutex> lock(g_errorsLock);
                s->error = error;
            }
            s->pending = false;
        });
    }
}

QList<Recovered> Pending() {
    PROC("modRecovery Pending");
    QList<Recovered> found;
    const QDir dir(Folder());
    const QFileInfoList infos =
        dir.entryInfoList({QStringLiteral("*.info")}, QDir::Files, QDir::Time);
    for (const QFileInfo &fi : infos) {
        QFile f(fi.filePath());
        if (!f.open(QIODevice::ReadOnly)) {
            continue;
        }
        Recovered r;
        for (const QByteArray &line : f.readAll().split('\n')) {
            if (line.startsWith("pid ")) {
                r.ProcessId = line.mid(4).toLongLong();
            } else if (line.startsWith("file ")) {
                r.OriginalFile = QString::fromUtf8(line.mid(5));
            } else if (line.startsWith("caption ")) {
                r.Caption = QString::fromUtf8(line.mid(8));
            }
        }
        r.CopyPath = fi.path() + QLatin1Char('/') + fi.completeBaseName() + QStringLiteral(".mvd");
        r.Written = fi.lastModified();
        if (r.ProcessId == ::getpid() || processAlive(r.ProcessId) || !QFile::exists(r.CopyPath)) {
            continue;
        }
        found.append(r);
    }
    return found;
}

void Discard(const Recovered &copy) {
    QFile::remove(QFileInfo(copy.CopyPath).path() + QLatin1Char('/') +
                  QFileInfo(copy.CopyPath).completeBaseName() + QStringLiteral(".info"));
    QFile::remove(copy.CopyPath);
}

} // namespace modRecovery
