#pragma once

#include <QString>

#include <functional>
#include <optional>

#include "util/TextEncoding.h"

class Document;

// The File menu's commands. Each acts on the active document and leaves the work to modDoc,
// modDocText and modDocClipboard; the window system is reached through the hooks below, so the
// commands also run without windows.
namespace modFile {

// The settings of the one common file dialog for a command.
struct FileDialogRequest {
    bool Save = false;  // a save dialog (else an open dialog)
    QString DefaultExt; // "mvd" or "txt"
    QString FileName;   // the initial name; the chosen name when the dialog is confirmed
    QString Filter;     // description|pattern pairs, separated by "|"
    int Flags = 0;      // the classic flags (file must exist 0x1000, overwrite prompt 0x2, ...)
    // A text export: the dialog also offers the character encoding, which comes back here.
    bool OfferEncoding = false;
    TextEncoding::Encoding Encoding = TextEncoding::Encoding::CodePage;
};
inline constexpr int kOpenFlags = 0x281800;
inline constexpr int kSaveFlags = 0x280802;

// The dialog: true with request.FileName set when a name came back, false when cancelled.
// Without a handler every dialog is cancelled.
using FileDialogHandler = std::function<bool(FileDialogRequest &request)>;
void SetFileDialogHandler(FileDialogHandler handler);
// Shows the dialog; the chosen name, or nothing when cancelled. The dialog keeps the last name.
// With `encoding`, the dialog offers the text encoding too and the choice comes back there.
std::optional<QString> ShowDialog(bool save, const QString &ext, const QString &initial,
                                  const QString &filter, int flags,
                                  TextEncoding::Encoding *encoding = nullptr);

// The filter of the native and text files; with "All Files" for opening.
QString FileFilter(bool forOpening);
QString TextFileFilter();

// What the commands need of the windows. Unset hooks act on headless documents.
struct WindowHooks {
    // Makes the document's window the active one.
    std::function<void(Document *doc)> Activate;
    // Closes the document's window, which asks the closing question. Returns whether it closed.
    std::function<bool(Document *doc)> Close;
    // Closes the main window (and with it every document window).
    std::function<void()> Exit;
};
void SetWindowHooks(WindowHooks hooks);
// Makes the document's window the active one and gives it the focus (the Activate hook; without
// it, the document becomes the active one).
void ActivateDocument(Document *doc);

// The closing question of a document about to close: true when it may close. Asks "Do you want
// to save the file <name>?" of a changed, writable document; Yes saves it first.
bool QueryUnload(Document &doc);
// The bookkeeping after a document window has closed: the counter and the menus.
void DocumentUnloaded();

void FileNew();
void FileOpen();
void FileClose();
void FileSave();
void FileSaveAs();
void FileSaveAll();
void FileImportText();
void FileExportText();
void FileImportClipboard();
void FileExportClipboard();
void FileExit();
// The recently used file of menu item `index` (modMRU): an open one is brought forward with a
// warning; one that no longer exists is taken out of the list with a warning; else it is opened.
void FileMRU(int index);

} // namespace modFile
