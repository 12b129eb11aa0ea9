#include "app/ApplicationUi.h"

#include "app/frmMain.h"
#include "app/modCommandState.h"
#include "app/modCommands.h"
#include "app/modGlobals.h"
#include "app/modMain.h"
#include "app/modSession.h"
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "document/modDoc.h"
#include "document/modDocClipboard.h"
#include "document/modFile.h"
#include "editor/frmDocument.h"
#include "editor/modFont.h"
#include "outline/modNodes.h"
#include "outline/modOutline.h"
#include "richtext/RichTextBuffer.h"

#include <QAction>
#include <QFileDialog>
#include <QFontDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPointer>
#include <QRegularExpression>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ApplicationUi {

namespace {

QPointer<frmMain> g_frm;
SystemClipboard g_clipboard;

frmDocument *WindowOf(const Document *doc) {
    for (frmDocument *w : frmDocument::windows()) {
        if (&w->document() == doc) {
            return w;
        }
    }
    return nullptr;
}

frmDocument *ActiveWindow() {
    return WindowOf(Documents::Active());
}

QMdiSubWindow *FrameOf(frmDocument *w) {
    return w ? qobject_cast<QMdiSubWindow *>(w->parentWidget()) : nullptr;
}

void Refresh() {
    modMain::MenuEnableDynamic();
    modMain::UpdateToolbarStatus();
}

// "Description|pattern|Description|pattern" as the dialog's name filters.
QStringList NameFilters(const QString &filter) {
    const QStringList parts = filter.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        // The description already shows the pattern: "Text Files (*.txt)". Here every file
        // matches "*", with or without a dot in its name.
        QString description = parts[i];
        filters.append(description.replace(u"(*.*)"_s, u"(*)"_s));
    }
    return filters;
}

bool ShowFileDialog(modFile::FileDialogRequest &request) {
    QFileDialog dialog(g_frm);
    dialog.setWindowTitle(request.Save ? u"Save As"_s : u"Open"_s);
    dialog.setAcceptMode(request.Save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode((request.Flags & 0x1000) ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !(request.Flags & 0x2));
    dialog.setNameFilters(NameFilters(request.Filter));
    dialog.setDefaultSuffix(request.DefaultExt);
    // A name typed without extension takes the extension of the chosen kind of file.
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString &f) {
        static const QRegularExpression pattern(u"\\(\\*\\.(\\w+)\\)"_s);
        const QRegularExpressionMatch m = pattern.match(f);
        if (m.hasMatch()) {
            dialog.setDefaultSuffix(m.captured(1));
        }
    });
    if (!request.FileName.isEmpty()) {
        dialog.selectFile(request.FileName);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return false;
    }
    request.FileName = dialog.selectedFiles().constFirst();
    return true;
}

bool ShowFontDialog(modFont::FontDialogValues &values) {
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, modFont::FontOf(values), g_frm, u"Font"_s);
    if (!ok) {
        return false;
    }
    values.FontName = chosen.family();
    values.FontSize = chosen.pointSizeF();
    values.FontBold = chosen.bold();
    values.FontItalic = chosen.italic();
    values.FontUnderline = chosen.underline();
    values.FontStrikethru = chosen.strikeOut();
    return true;
}

modMain::CommandInputs ReadInputs() {
    modMain::CommandInputs in;
    for (frmDocument *w : frmDocument::windows()) {
        if (w->unloaded()) {
            continue;
        }
        ++in.OpenDocuments;
        if (w->document().m_bDataChanged) {
            in.AnyDocumentChanged = true;
        }
    }
    Document *doc = Documents::Active();
    frmDocument *window = WindowOf(doc);
    if (!doc || (window && window->unloaded())) {
        return in;
    }
    in.ActiveDocument = true;
    in.ReadOnly = doc->bReadOnly;
    in.ActiveDocumentChanged = doc->m_bDataChanged;
    in.OutlineHasFocus = doc->m_bOutlineHasFocus;
    in.TextHasFocus = doc->m_bTextHasFocus;
    in.ExpansionLevel = doc->m_iExpansionLevel;
    const Nodes &nodes = doc->trvOutline();
    in.OutlineSorted = nodes.Count() > 0 && nodes.Sorted();
    if (Node *selected = nodes.SelectedItem()) {
        in.EntrySelected = true;
        in.SelectionIsRoot = selected->Parent() == nullptr;
        in.SelectionTagged = modNodes::NodeTagged(selected);
    }
    in.TaggedExist = modNodes::NodesTaggedExist();
    if (!nodes.topNodes().empty()) {
        in.RootExists = true;
        in.RootExpanded = nodes.topNodes().front()->Expanded();
    }
    if (auto *pane = dynamic_cast<RichTextBuffer *>(doc->txtRTF())) {
        in.SelBold = pane->SelBold();
        in.SelItalic = pane->SelItalic();
        in.SelUnderline = pane->SelUnderline();
        if (const auto a = pane->SelAlignment()) {
            in.SelAlignment = *a == 1   ? modMain::Alignment::Right
                              : *a == 2 ? modMain::Alignment::Centre
                                        : modMain::Alignment::Left;
        }
    }
    return in;
}

// The document window's shortcut: the command runs only while its menu item is enabled; the key
// is consumed either way.
bool RunShortcut(const QString &command, const QString &menuItem) {
    if (menuItem.isEmpty()) {
        if (command == u"ChangeSelectedFontSize False"_s) {
            if (frmDocument *w = ActiveWindow()) {
                modMain::Guarded([w] { modFont::ChangeSelectedFontSize(*w->buffer(), false); });
                return true;
            }
        }
        return false;
    }
    if (!modMain::ItemEnabled(menuItem, modMain::CurrentCommandInputs())) {
        return false;
    }
    const bool ran = modCommands::RunItem(menuItem);
    modMain::UpdateToolbarStatus();
    return ran;
}

void Toggle(bool &flag, const QString &item) {
    flag = !flag;
    if (g_frm) {
        g_frm->SetItemChecked(item, flag);
    }
}

// The layout commands act on the active document window only.
void layout(void (frmDocument::*member)()) {
    if (frmDocument *w = ActiveWindow()) {
        (w->*member)();
    }
}

// The View menu's commands.
void RegisterViewCommands() {
    using modCommands::SetProcedure;
    SetProcedure(u"ViewToolbar"_s, [](int) {
        PROC("modView ViewToolbar");
        Toggle(modGlobals::ViewToolbar, u"mnuViewToolbar"_s);
        if (g_frm) {
            g_frm->tbToolBar()->setVisible(modGlobals::ViewToolbar);
        }
    });
    SetProcedure(u"ViewStatusBar"_s, [](int) {
        PROC("modView ViewStatusBar");
        Toggle(modGlobals::ViewStatusbar, u"mnuViewStatusBar"_s);
        if (!g_frm) {
            return;
        }
        g_frm->statusBar()->setVisible(modGlobals::ViewStatusbar);
        Document *doc = nullptr;
        if (modGlobals::ViewStatusbar && modMain::DocumentActive(doc) && doc->view()) {
            doc->view()->UpdateStatusBar(doc->trvOutline().SelectedItem());
        }
    });
    SetProcedure(u"ViewGoToOutline"_s, [](int) { layout(&frmDocument::ViewGoToOutline); });
    SetProcedure(u"ViewGoToText"_s, [](int) { layout(&frmDocument::ViewGoToText); });
    SetProcedure(u"ViewMaximiseLeft"_s, [](int) { layout(&frmDocument::ViewMaximiseLeft); });
    SetProcedure(u"ViewMaximiseRight"_s, [](int) { layout(&frmDocument::ViewMaximiseRight); });
    SetProcedure(u"ViewEqualiseLeftAndRight"_s,
                 [](int) { layout(&frmDocument::ViewEqualiseLeftAndRight); });
    SetProcedure(u"ViewFitSplit"_s, [](int) { layout(&frmDocument::ViewFitSplit); });
    SetProcedure(u"ViewMoveSplit"_s, [](int) { layout(&frmDocument::ViewMoveSplit); });
    SetProcedure(u"ViewOptionsBackupOnSave"_s, [](int) {
        PROC("modView ViewOptionsBackupOnSave");
        Toggle(modGlobals::Backup, u"mnuViewOptionsBackupOnSave"_s);
    });
    SetProcedure(u"ViewOptionsAutoFitSplit"_s, [](int) {
        PROC("modView ViewOptionsAutoFitSplit");
        Toggle(modGlobals::AutoSplit, u"mnuViewOptionsAutoFitSplit"_s);
        if (modGlobals::AutoSplit) {
            layout(&frmDocument::ViewFitSplit);
        }
    });
    SetProcedure(u"ViewOptionsStartWithNewDoc"_s, [](int) {
        PROC("modView ViewOptionsStartWithNewDoc");
        Toggle(modGlobals::StartWithNewDocument, u"mnuViewOptionsStartWithNewDoc"_s);
    });
    SetProcedure(u"ViewOptionsStartWithPrevDocs"_s, [](int) {
        PROC("modView ViewOptionsStartWithPrevDocs");
        Toggle(modGlobals::StartWithLatestDocuments, u"mnuViewOptionsStartWithPrevDocs"_s);
    });
    SetProcedure(u"ViewOptionsClickToRenameEntry"_s, [](int) {
        PROC("modView ViewOptionsClickToRenameEntry");
        Toggle(modGlobals::AutoLabelEdit, u"mnuViewOptionsClickToRenameEntry"_s);
        frmDocument::setClickToRename(modGlobals::AutoLabelEdit);
    });
    SetProcedure(u"EditCurrentFont"_s, [](int) { modFont::EditCurrentFont(); });
    SetProcedure(u"EditDocumentFont"_s, [](int) { modFont::EditDocumentFont(); });
}

Document *MakeDocumentWindow() {
    auto *window = new frmDocument;
    QMdiSubWindow *frame = g_frm->mdiArea()->addSubWindow(window);
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->setWindowIcon(g_frm->windowIcon());
    // The frame's own menu claims the desktop's close key (Ctrl+W) too; the File menu's Close
    // keeps it, so that the key is not ambiguous.
    if (QMenu *menu = frame->systemMenu()) {
        const QKeySequence ctrlW(Qt::CTRL | Qt::Key_W);
        for (QAction *a : menu->actions()) {
            QList<QKeySequence> keys = a->shortcuts();
            if (keys.removeAll(ctrlW) > 0) {
                a->setShortcuts(keys);
            }
        }
    }
    // A new window takes about two thirds of the frame. (While the program starts, the frame is
    // not laid out yet: its own size, less the bars, stands in for the document area.)
    QSize area = g_frm->mdiArea()->viewport()->size();
    if (!g_frm->isVisible()) {
        area = g_frm->size() - QSize(0, 120);
    }
    frame->resize(std::max(480, area.width() * 2 / 3), std::max(320, area.height() * 2 / 3));
    frame->show();
    return &window->document();
}

void OnSubWindowActivated(QMdiSubWindow *frame) {
    auto *window = frame ? qobject_cast<frmDocument *>(frame->widget()) : nullptr;
    if (window && window->unloaded()) {
        return;
    }
    Documents::SetActive(window ? &window->document() : nullptr);
    if (window) {
        window->Form_Activate();
    }
    modMain::MenuEnable(modDoc::OpenDocumentCount());
    Refresh();
}

} // namespace

void Install(frmMain &frm) {
    g_frm = &frm;
    modDocClipboard::SetClipboard(&g_clipboard);
    modDoc::SetDocumentFactory(MakeDocumentWindow);
    modDoc::SetQuestionHandler([](const QString &question) {
        return int(modMain::MsgBox(question, modMain::vbYesNoCancel, modMain::vbQuestion));
    });
    modDoc::SetBackupRule([] { return modGlobals::Backup; });
    modDoc::SetAutoLabelEditRule([] { return modGlobals::AutoLabelEdit; });

    modFile::SetFileDialogHandler(ShowFileDialog);
    modFile::WindowHooks hooks;
    hooks.Activate = [](Document *doc) {
        Documents::SetActive(doc);
        if (QMdiSubWindow *frame = FrameOf(WindowOf(doc)); frame && g_frm) {
            g_frm->mdiArea()->setActiveSubWindow(frame);
        }
    };
    hooks.Close = [](Document *doc) {
        QMdiSubWindow *frame = FrameOf(WindowOf(doc));
        return frame ? frame->close() : false;
    };
    hooks.Exit = [] {
        if (g_frm) {
            g_frm->close();
        }
    };
    modFile::SetWindowHooks(hooks);

    modFont::SetFontDialogHandler(ShowFontDialog);
    modOutline::SetOutlineFontChooser(
        [](clsFont &font) { return modFont::ChangeTreeviewFont(font); });

    modMain::DocumentHooks session;
    session.DocLoad = [](const QString &file) { modDoc::DocLoad(file); };
    session.FileNew = [] { modFile::FileNew(); };
    session.OpenDocumentFiles = [] {
        QStringList files;
        for (frmDocument *w : frmDocument::windows()) {
            if (!w->unloaded()) {
                files.append(w->document().m_sFile);
            }
        }
        return files;
    };
    modMain::SetDocumentHooks(session);
    modMain::SetCommandInputProvider(ReadInputs);

    frmDocument::Hooks &doc = frmDocument::hooks();
    doc.runCommand = RunShortcut;
    doc.updateStatusBar = [](frmDocument *, Node *node) {
        if (!modNodes::g_bDocTransfer && node && g_frm) {
            g_frm->UpdateStatusBarText(node->Text());
        }
    };
    doc.menuEnableDynamic = Refresh;

    RegisterViewCommands();
    QObject::connect(frm.mdiArea(), &QMdiArea::subWindowActivated, &frm, OnSubWindowActivated);
}

void Uninstall() {
    modDoc::SetDocumentFactory({});
    modDoc::SetQuestionHandler({});
    modFile::SetFileDialogHandler({});
    modFile::SetWindowHooks({});
    modFont::SetFontDialogHandler({});
    modOutline::SetOutlineFontChooser({});
    modMain::SetDocumentHooks({});
    modMain::SetCommandInputProvider({});
    frmDocument::hooks() = {};
    modDocClipboard::SetClipboard(nullptr);
    g_frm = nullptr;
}

} // namespace ApplicationUi
