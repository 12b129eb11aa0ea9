#include "document/modFile.h"
#include "document/modRecovery.h"

#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocClipboard.h"
#include "document/modDocText.h"
#include "outline/modNodes.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"
#include "util/modGlobals.h"
#include "util/modString.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace modFile {

namespace {

// The common dialog keeps the last name it held.
QString g_sDialogFileName;

const QString kNativeExt = u"mvd"_s;

void StatusText(const QString &text) {
    modMain::UpdateStatusBarText(text);
}

void Activate(Document *doc) {
    Documents::SetActive(doc);
    if (doc->view()) {
        doc->view()->ActivateWindow();
    }
}

// The coarse and the fine refresh of the command state.
void RefreshAll() {
    modMain::Host().RefreshCommands(true);
}

} // namespace

std::optional<QString> ShowDialog(bool save, const QString &ext, const QString &initial,
                                  const QString &filter, int flags,
                                  TextEncoding::Encoding *encoding) {
    FileDialogRequest request;
    request.Save = save;
    request.DefaultExt = ext;
    request.FileName = initial;
    request.Filter = filter;
    request.Flags = flags;
    request.OfferEncoding = encoding != nullptr;
    if (!modMain::Host().ChooseFile(request) || request.FileName.isEmpty()) {
        return std::nullopt;
    }
    g_sDialogFileName = request.FileName;
    if (encoding) {
        *encoding = request.Encoding;
    }
    return request.FileName;
}

void ActivateDocument(Document *doc) {
    Activate(doc);
}

QString FileFilter(bool forOpening) {
    QString filter = u"Mavrolen Files (*."_s + kNativeExt + u")|*."_s + kNativeExt +
                     u"|Text Files (*.txt)|*.txt"_s;
    if (forOpening) {
        filter += u"|All Files (*.*)|*.*"_s;
    }
    return filter;
}

QString TextFileFilter() {
    return u"Text Files (*.txt)|*.txt"_s;
}

bool QueryUnload(Document &doc) {
    PROC("frmDocument Form_QueryUnload");
    if (doc.bReadOnly || !doc.m_bDataChanged) {
        return true;
    }
    const int answer = modMain::MsgBox(u"Do you want to save the file "_s + doc.m_sFile + u"?"_s,
                                       modMain::vbYesNoCancel, modMain::vbQuestion);
    if (answer == modMain::vbCancel) {
        return false;
    }
    if (answer == modMain::vbYes) {
        Activate(&doc);
        FileSave();
    }
    return true;
}

void DocumentUnloaded(Document &doc) {
    doc.m_bClosing = true;
    if (Documents::Active() == &doc) {
        Documents::SetActive(nullptr);
    }
    RefreshAll();
}

void FileNew() {
    modMain::Guarded([] {
        PROC("modFile FileNew");
        Document *doc = modDoc::DocNew();
        if (!doc) {
            return;
        }
        Node *root = modNodes::NodeInsert(doc, relFirst, nullptr);
        modNodes::NodeInitialise(doc, root);
        RefreshAll();
    });
}

void FileOpen() {
    modMain::Guarded([] {
        PROC("modFile FileOpen");
        StatusText(QString());
        const auto name =
            ShowDialog(false, kNativeExt, g_sDialogFileName, FileFilter(true), kOpenFlags);
        if (name) {
            modDoc::DocLoad(*name);
            RefreshAll();
        }
    });
}

void FileClose() {
    modMain::Guarded([] {
        PROC("modFile FileClose");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        if (doc->view()) {
            doc->view()->CloseWindow();
        } else if (QueryUnload(*doc)) {
            modDoc::DocClose(doc);
            RefreshAll();
        }
        StatusText(QString());
    });
}

void FileSave() {
    modMain::Guarded([] {
        PROC("modFile FileSave");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        // Cleared first, and it stays cleared when the Save As dialog is cancelled; a save that
        // fails leaves the document marked changed.
        const bool changed = doc->m_bDataChanged;
        doc->m_bDataChanged = false;
        if (!doc->m_sFile.isEmpty()) {
            if (!modDoc::DocSave(doc->m_sFile)) {
                doc->m_bDataChanged = changed;
            } else {
                modRecovery::Forget(doc); // saved cleanly: the recovery copy goes
            }
        } else {
            FileSaveAs();
        }
    });
}

void FileSaveAs() {
    modMain::Guarded([] {
        PROC("modFile FileSaveAs");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        const auto name = ShowDialog(true, kNativeExt, modString::FileWithoutExt(doc->m_sFile),
                                     FileFilter(false), kSaveFlags);
        if (name && !modDoc::DocSave(*name)) {
            doc->m_bDataChanged = true;
        }
    });
}

void FileSaveAll() {
    modMain::Guarded([] {
        PROC("modFile FileSaveAll");
        // A copy: saving may not open or close documents, but the list must not move under us.
        const std::vector<Document *> all = Documents::All();
        for (Document *doc : all) {
            if (doc->bReadOnly) {
                continue;
            }
            Activate(doc);
            FileSave();
        }
    });
}

void FileImportText() {
    modMain::Guarded([] {
        PROC("modFile FileImportText");
        const auto name =
            ShowDialog(false, u"txt"_s, g_sDialogFileName, TextFileFilter(), kOpenFlags);
        if (!name) {
            return;
        }
        if (Document *doc = modDoc::DocNew()) {
            modDocText::DocImport(*doc, *name);
            RefreshAll();
        }
    });
}

void FileExportText() {
    modMain::Guarded([] {
        PROC("modFile FileExportText");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        TextEncoding::Encoding encoding = TextEncoding::Encoding::CodePage;
        const auto name = ShowDialog(true, u"txt"_s, modString::FileWithoutExt(doc->m_sFile),
                                     TextFileFilter(), kSaveFlags, &encoding);
        if (name) {
            modDocText::DocExport(*doc, *name, encoding);
        }
    });
}

void FileImportClipboard() {
    modMain::Guarded([] {
        PROC("modFile FileImportClipboard");
        BusyPointer busy;
        Document *before = nullptr;
        Document *doc = nullptr;
        {
            modNodes::g_bDocTransfer = true;
            struct Clear {
                ~Clear() { modNodes::g_bDocTransfer = false; }
            } clear;
            if (modMain::DocumentActive(before)) {
                doc = modDoc::DocNew();
                if (doc) {
                    modDocClipboard::DocImport();
                }
                // The label editing of the document that was active before (deliberately not
                // the new one) follows the setting.
                before->m_bLabelEditAutomatic = modGlobals::AutoLabelEdit;
                if (before->view()) {
                    before->view()->DocumentStateChanged();
                }
            }
        }
        Document *active = nullptr;
        if (modMain::DocumentActive(active) && active->view()) {
            active->view()->ViewAutoFitSplit();
        }
        RefreshAll();
    });
}

void FileExportClipboard() {
    modMain::Guarded([] {
        PROC("modFile FileExportClipboard");
        BusyPointer busy;
        modNodes::g_bDocTransfer = true;
        struct Clear {
            ~Clear() { modNodes::g_bDocTransfer = false; }
        } clear;
        modDocClipboard::DocExport();
    });
}

void FileExit() {
    modMain::Guarded([] {
        PROC("modFile FileExit");
        if (modMain::Host().Exit()) {
            return;
        }
        // Without windows: close every document, each asking its question; stop at a Cancel.
        const std::vector<Document *> all = Documents::All();
        for (Document *doc : all) {
            Activate(doc);
            FileClose();
            if (Documents::Active() == doc) {
                return;
            }
        }
    });
}

void FileMRU(int index) {
    modMain::Guarded([index] {
        PROC("modFile FileMRU");
        const QString file = modMain::Host().MRUFile(index);
        if (file.isEmpty()) {
            return; // no such item
        }
        for (Document *doc : Documents::All()) {
            if (doc->m_sFile == file) {
                modMain::MsgBox(u"Warning - the file "_s + file +
                                    u" is already loaded, so cannot be loaded again"_s,
                                modMain::vbOKOnly, modMain::vbExclamation);
                Activate(doc);
                return;
            }
        }
        if (modString::FileExists(file)) {
            modDoc::DocLoad(file);
            modMain::Host().UpdateMRUFile(file, false);
        } else {
            modMain::MsgBox(u"Warning - the file "_s + file +
                                u" no longer exists, so cannot be loaded"_s,
                            modMain::vbOKOnly, modMain::vbExclamation);
            modMain::Host().UpdateMRUFile(file, true);
        }
        RefreshAll();
    });
}

} // namespace modFile
