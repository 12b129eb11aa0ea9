#include "editor/modView.h"

#include "editor/modSplit.h"
#include "outline/modNodes.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"
#include "util/modGlobals.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace modView {

namespace {

// The active document's window, or null.
DocumentWindow *ActiveWindow() {
    Document *doc = nullptr;
    if (!modMain::DocumentActive(doc)) {
        return nullptr;
    }
    return dynamic_cast<DocumentWindow *>(doc->view());
}

// Runs a layout command on the active document window.
template <class F> void OnActiveWindow(const char *name, F &&body) {
    modMain::Guarded([&] {
        modMain::CurrentProcName = QString::fromLatin1(name);
        if (DocumentWindow *window = ActiveWindow()) {
            body(*window);
        }
    });
}

// Inverts an option and shows it on its menu item.
void Toggle(bool &flag, const QString &item) {
    flag = !flag;
    modMain::Host().SetItemChecked(item, flag);
}

} // namespace

void ViewInitialise(DocumentWindow &window) {
    PROC("modView ViewInitialise");
    const double text =
        std::max(0.0, window.InnerWidth() - (window.OutlineWidth() + modSplit::kWidthAllowance));
    modSplit::SplitSizeControls(window, (text + window.OutlineWidth()) / 2);
}

void ViewFitSplit(DocumentWindow &window) {
    modMain::Guarded([&] {
        PROC("modView ViewFitSplit");
        // The narrowest width, in steps from the margin, at which every showing label fits; never
        // more than the right margin allows.
        const double needed = window.RequiredOutlineWidth();
        double width = -kFitStep;
        double previous;
        do {
            previous = width;
            width += kFitStep;
            modSplit::SplitCheckPosition(window, width);
        } while (needed > width && width != previous);
        modSplit::SplitSizeControls(window, width);
    });
}

void ViewAutoFitSplit(DocumentWindow &window) {
    PROC("modView ViewAutoFitSplit");
    if (modNodes::g_bDocTransfer || !modGlobals::AutoSplit || modNodes::g_iActionDepth > 0) {
        return;
    }
    ViewFitSplit(window);
}

void ViewToolbar() {
    PROC("modView ViewToolbar");
    Toggle(modGlobals::ViewToolbar, u"mnuViewToolbar"_s);
    modMain::Host().SetToolbarVisible(modGlobals::ViewToolbar);
}

void ViewStatusBar() {
    PROC("modView ViewStatusBar");
    Toggle(modGlobals::ViewStatusbar, u"mnuViewStatusBar"_s);
    modMain::Host().SetStatusBarVisible(modGlobals::ViewStatusbar);
    Document *doc = nullptr;
    if (modGlobals::ViewStatusbar && modMain::DocumentActive(doc) && doc->view()) {
        doc->view()->UpdateStatusBar(doc->trvOutline().SelectedItem());
    }
}

void ViewGoToOutline() {
    OnActiveWindow("modView ViewGoToOutline", [](DocumentWindow &w) { w.FocusOutline(); });
}

void ViewGoToText() {
    OnActiveWindow("modView ViewGoToText", [](DocumentWindow &w) { w.FocusText(); });
}

void ViewMaximiseLeft() {
    OnActiveWindow("modView ViewMaximiseLeft",
                   [](DocumentWindow &w) { modSplit::SplitSizeControls(w, w.InnerWidth()); });
}

void ViewMaximiseRight() {
    OnActiveWindow("modView ViewMaximiseRight",
                   [](DocumentWindow &w) { modSplit::SplitSizeControls(w, 0); });
}

void ViewEqualiseLeftAndRight() {
    OnActiveWindow("modView ViewEqualiseLeftAndRight",
                   [](DocumentWindow &w) { ViewInitialise(w); });
}

void ViewFitSplit() {
    OnActiveWindow("modView ViewFitSplit", [](DocumentWindow &w) { ViewFitSplit(w); });
}

void ViewMoveSplit() {
    OnActiveWindow("modView ViewMoveSplit", [](DocumentWindow &w) { modSplit::SplitMoveStart(w); });
}

void ViewOptionsBackupOnSave() {
    PROC("modView ViewOptionsBackupOnSave");
    Toggle(modGlobals::Backup, u"mnuViewOptionsBackupOnSave"_s);
}

void ViewOptionsAutoFitSplit() {
    PROC("modView ViewOptionsAutoFitSplit");
    Toggle(modGlobals::AutoSplit, u"mnuViewOptionsAutoFitSplit"_s);
    if (modGlobals::AutoSplit) {
        ViewFitSplit();
    }
}

void ViewOptionsStartWithNewDoc() {
    PROC("modView ViewOptionsStartWithNewDoc");
    Toggle(modGlobals::StartWithNewDocument, u"mnuViewOptionsStartWithNewDoc"_s);
}

void ViewOptionsStartWithPrevDocs() {
    PROC("modView ViewOptionsStartWithPrevDocs");
    Toggle(modGlobals::StartWithLatestDocuments, u"mnuViewOptionsStartWithPrevDocs"_s);
}

void ViewOptionsClickToRenameEntry() {
    PROC("modView ViewOptionsClickToRenameEntry");
    Toggle(modGlobals::AutoLabelEdit, u"mnuViewOptionsClickToRenameEntry"_s);
    for (Document *doc : Documents::All()) {
        doc->m_bLabelEditAutomatic = modGlobals::AutoLabelEdit;
        if (doc->view()) {
            doc->view()->DocumentStateChanged();
        }
    }
}

} // namespace modView
