#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

class Document;

// Recovery copies: while a document has unsaved changes, a copy of it in the native format is
// kept in a folder of the user's data, so that the work survives a crash. The copy "<id>.mvd"
// loads as an ordinary native document; beside it "<id>.info" names the owning process and the
// document's file. Copies are written atomically, on a worker thread, from a snapshot taken on
// the calling thread; they never touch the user's file.
namespace modRecovery {

// "recovery" under the application's local data folder; tests point it elsewhere (empty restores
// the default).
QString Folder();
void SetFolder(const QString &folder);

// The window layer calls this from a timer (every few seconds) and with `idle` true when the
// program goes idle. Every open document with unsaved changes whose tree changed since its last
// copy gets a fresh copy: at once when idle, else once kMaxDelayMs have passed since the change
// was first seen. The copy of a document that is no longer changed (saved) or no longer open
// (closed) is removed.
inline constexpr qint64 kMaxDelayMs = 30000;
void CheckPoint(bool idle);
// Writes the document's copy now (on the calling thread); false when it could not be written.
bool WriteNow(Document &doc);
// Removes the document's copy (after a clean save or close); waits for a write in progress.
void Forget(Document *doc);
// Waits until no copy is being written.
void WaitForWrites();
// The copy file of an open document ("" when it has none).
QString CopyOf(const Document *doc);

// A copy left by a process that is gone.
struct Recovered {
    QString CopyPath;     // the native copy
    QString OriginalFile; // the document's file; empty for a document never saved
    QString Caption;      // the window caption it had ("Document 2" for an unnamed one)
    qint64 ProcessId = 0;
    QDateTime Written;
};
// Copies whose process is not this one and no longer runs, newest first.
QList<Recovered> Pending();
// Deletes a copy.
void Discard(const Recovered &copy);

} // namespace modRecovery
