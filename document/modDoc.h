#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include "document/DocFiles.h"
#include "richtext/clsFont.h"

class Document;
namespace modRecovery {
struct Recovered;
}

// Creating documents and moving them between the model and files: the choice of format (by the
// extension on saving, by the file's "formatversion" tag on loading), the backup, the text-format
// warning, captions and the read-only state.
namespace modDoc {

// The message asked before a document of several entries is saved as plain text.
QString TextFormatWarning();

// The open-document counter: raised when a document is created, lowered when one is allowed to
// close (the documents of the list that are not closing). New documents are captioned "Document "
// and the counter.
int OpenDocumentCount();

// The application's default outline and text fonts, given to new documents.
void SetDefaultFonts(const clsFont &outline, const clsFont &text);
// Closes a document without asking: it leaves the counter and, without a window, is destroyed.
void DocClose(Document *doc);

// A new document window (the main window's; without one, a document without a window),
// captioned "Document n"; it becomes the active document.
Document *DocInit();
// A new, empty document: default fonts, marked changed, native format.
Document *DocNew();
// Opens a file into a new document (nothing happens when the file does not exist). Returns the
// new document, or null.
Document *DocLoad(const QString &path);
// Loads a file's bytes into a fresh document whose m_sFile is set: the format by the extension,
// then by the "formatversion" tag; finishes the document (caption, read-only state, showing and
// tagged entries, selection).
void DocLoadBytes(Document &doc, const QByteArray &bytes);
// Opens a crash-recovery copy as a changed, unsaved document under its original name (m_sFile is
// the original file, or empty for an unnamed document). The copy becomes this process's copy of
// the new document. Returns null (error reported) when it cannot be read.
Document *DocOpenRecovered(const modRecovery::Recovered &copy);
void DocFinishLoad(Document &doc, const QString &selectedKey, const QList<bool> &taggedByIndex,
                   const QList<bool> &showingByIndex);
// Saves the active document under `path`. Returns true when the file was written.
bool DocSave(const QString &path);
// Why the last save failed, in the system's words ("No space left on device"); empty when it
// wrote the file or the user declined the text-format warning.
QString SaveFailure();
// Saves a given document (the active one is not consulted). `backupAndAsk` false skips the backup
// and the text-format warning.
bool DocSaveDocument(Document &doc, const QString &path, bool backupAndAsk = true);

// "1" for the native extension "mvd" (any case), "-1" for every other extension and none.
QString DocDefaultVersionFromExt(const QString &path);

// True when the document's file is set and the user may not write it.
bool DocReadOnly(const Document &doc);

} // namespace modDoc
