#pragma once

#include "util/MainWindowHost.h"

#include <QString>

#include <optional>

class Document;

// The File menu's commands. Each acts on the active document and leaves the work to modDoc,
// modDocText and modDocClipboard; dialogs and windows are the main window's (MainWindowHost), so
// the commands also run without windows.
namespace modFile {

using modMain::FileDialogRequest;
inline constexpr int kOpenFlags = 0x281800;
inline constexpr int kSaveFlags = 0x280802;

// Shows the main window's file dialog; the chosen name, or nothing when cancelled. The dialog
// keeps the last name. With `encoding`, the dialog offers the text encoding too and the choice
// comes back there.
std::optional<QString> ShowDialog(bool save, const QString &ext, const QString &initial,
                                  const QString &filter, int flags,
                                  TextEncoding::Encoding *encoding = nullptr);

// The filter of the native and text files; with "All Files" for opening.
QString FileFilter(bool forOpening);
QString TextFileFilter();

// Makes the document's window the active one and gives it the focus; without a window, the
// document becomes the active one.
void ActivateDocument(Document *doc);

// The closing question of a document about to close: true when it may close. Asks "Do you want
// to save the file <name>?" of a changed, writable document; Yes saves it first.
bool QueryUnload(Document &doc);
// The bookkeeping of a document allowed to close: it leaves the counter, stops being the active
// one, and the menus follow.
void DocumentUnloaded(Document &doc);

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
