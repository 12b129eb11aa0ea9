#include "app/modCommandState.h"

#include "app/modCommands.h"
#include "app/modMain.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "util/MainWindowHost.h"

using namespace Qt::StringLiterals;

namespace modMain {

namespace {

bool IsWritable(const CommandInputs &in) {
    return in.OpenDocuments > 0 && in.ActiveDocument && !in.ReadOnly;
}

// Sets one item and every toolbar button that shares it.
void ApplyItem(MainWindowHost &frm, const modCommands::Command &item, bool enabled) {
    frm.SetItemEnabled(item.Name, enabled);
    if (!item.Toolbar.Key.isEmpty()) {
        frm.SetButtonEnabled(item.Toolbar.Key, enabled);
    }
}

} // namespace

CommandInputs CurrentCommandInputs(bool tagged) {
    CommandInputs in;
    in.OpenDocuments = modDoc::OpenDocumentCount();
    for (const Document *doc : Documents::All()) {
        if (!doc->m_bClosing && doc->m_bDataChanged) {
            in.AnyDocumentChanged = true;
        }
    }
    const Document *doc = Documents::Active();
    if (!doc || doc->m_bClosing) {
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
    in.TaggedExist = tagged && modNodes::NodesTaggedExist();
    if (!nodes.topNodes().empty()) {
        in.RootExists = true;
        in.RootExpanded = nodes.topNodes().front()->Expanded();
    }
    if (const auto *pane = dynamic_cast<const RichTextBuffer *>(doc->txtRTF())) {
        in.SelBold = pane->SelBold();
        in.SelItalic = pane->SelItalic();
        in.SelUnderline = pane->SelUnderline();
        if (const auto a = pane->SelAlignment()) {
            in.SelAlignment = *a == 1   ? Alignment::Right
                              : *a == 2 ? Alignment::Centre
                                        : Alignment::Left;
        }
    }
    return in;
}

bool RuleHolds(unsigned needs, const CommandInputs &in, bool coarse) {
    using namespace modCommands;
    const bool docOpen = in.OpenDocuments > 0;
    if ((needs & DocOpen) && !docOpen) {
        return false;
    }
    if ((needs & Writable) && !IsWritable(in)) {
        return false;
    }
    if (coarse) {
        return true;
    }
    if ((needs & (Entry | NotRoot)) && !(in.ActiveDocument && in.EntrySelected)) {
        return false;
    }
    if ((needs & NotRoot) && in.SelectionIsRoot) {
        return false;
    }
    if ((needs & OutlineFocus) && !(in.ActiveDocument && in.OutlineHasFocus)) {
        return false;
    }
    if ((needs & TextFocus) && !(in.ActiveDocument && in.TextHasFocus)) {
        return false;
    }
    if ((needs & TaggedExist) && !(in.ActiveDocument && in.TaggedExist)) {
        return false;
    }
    if ((needs & AnyChanged) && !in.AnyDocumentChanged) {
        return false;
    }
    return true;
}

bool ItemEnabled(const QString &itemName, const CommandInputs &in, bool coarse) {
    const modCommands::Command *item = modCommands::FindItem(itemName);
    if (!item) {
        return false;
    }
    if (!RuleHolds(item->Needs, in, coarse)) {
        return false;
    }
    if (item->Kind == modCommands::ItemKind::Command || item->Kind == modCommands::ItemKind::Key) {
        return item->Proc != nullptr;
    }
    return true;
}

int SetButtonValue(std::optional<bool> value) {
    return value.value_or(false) ? 1 : 0;
}

void MenuEnable(int openDocuments) {
    PROC("modMain MenuEnable");
    Guarded([&] { MenuEnable(openDocuments, CurrentCommandInputs()); });
}

void MenuEnable(int openDocuments, CommandInputs in) {
    PROC("modMain MenuEnable");
    Guarded([&] {
        MainWindowHost *frm = MainWindow();
        if (!frm) {
            return;
        }
        in.OpenDocuments = openDocuments;
        for (const modCommands::Command &item : modCommands::MenuItems()) {
            if (item.Kind == modCommands::ItemKind::Separator ||
                item.Kind == modCommands::ItemKind::Key) {
                continue;
            }
            ApplyItem(*frm, item, ItemEnabled(item.Name, in, true));
        }
        for (const modCommands::ToolbarButton &b : modCommands::ToolbarButtons()) {
            frm->SetButtonVisible(b.Key, true);
        }
    });
}

void MenuEnableDynamic() {
    PROC("modMain MenuEnableDynamic");
    Guarded([] { MenuEnableDynamic(CurrentCommandInputs()); });
}

void MenuEnableDynamic(const CommandInputs &in) {
    PROC("modMain MenuEnableDynamic");
    Guarded([&] {
        MainWindowHost *frm = MainWindow();
        if (!frm) {
            return;
        }
        const bool tagged = in.ActiveDocument && in.EntrySelected && in.SelectionTagged;
        frm->SetItemCaption(u"mnuOutlineTaggedEntry"_s, modCommands::TagCaption(tagged));
        frm->SetButtonToolTip(u"Tag Entry"_s, modCommands::TagToolTip(tagged));
        for (const modCommands::Command &item : modCommands::MenuItems()) {
            if (item.Kind == modCommands::ItemKind::Separator ||
                item.Kind == modCommands::ItemKind::Key) {
                continue;
            }
            ApplyItem(*frm, item, ItemEnabled(item.Name, in, false));
        }
        // The level the outline was last expanded to shows on its command and button.
        const int level = in.ActiveDocument ? in.ExpansionLevel : 0;
        for (int n = 1; n <= 7; ++n) {
            frm->SetItemChecked(u"mnuOutlineExpandLevel"_s + QString::number(n), level == n);
            frm->SetButtonValue(u"Expand to level "_s + QString::number(n), level == n ? 1 : 0);
        }
        frm->SetItemChecked(u"mnuOutlineExpandAll"_s, level == -1);
        frm->SetButtonValue(u"Expand all levels"_s, level == -1 ? 1 : 0);
    });
}

void UpdateToolbarStatus() {
    PROC("modMain UpdateToolbarStatus");
    Guarded([] { UpdateToolbarStatus(CurrentCommandInputs()); });
}

void UpdateToolbarStatus(const CommandInputs &in) {
    PROC("modMain UpdateToolbarStatus");
    Guarded([&] {
        MainWindowHost *frm = MainWindow();
        if (!frm || !in.ActiveDocument) {
            return;
        }
        const bool collapsed = in.RootExists ? !in.RootExpanded : true;
        frm->SetButtonValue(u"Bold Text"_s, SetButtonValue(in.SelBold));
        frm->SetButtonValue(u"Italic Text"_s, SetButtonValue(in.SelItalic));
        frm->SetButtonValue(u"Underline Text"_s, SetButtonValue(in.SelUnderline));
        auto is = [&](Alignment a) -> std::optional<bool> {
            if (!in.SelAlignment) {
                return std::nullopt;
            }
            return *in.SelAlignment == a;
        };
        frm->SetButtonValue(u"Left Align Text"_s, SetButtonValue(is(Alignment::Left)));
        frm->SetButtonValue(u"Centre Align Text"_s, SetButtonValue(is(Alignment::Centre)));
        frm->SetButtonValue(u"Right Align Text"_s, SetButtonValue(is(Alignment::Right)));
        if (collapsed) {
            for (int n = 2; n <= 7; ++n) {
                frm->SetButtonValue(u"Expand to level "_s + QString::number(n), 0);
            }
            frm->SetButtonValue(u"Expand all levels"_s, 0);
        }
        frm->RefreshToolbar();
    });
}

bool RunWindowKey(QKeyCombination key) {
    const modCommands::Command *c = modCommands::FindWindowKey(key);
    if (!c) {
        return false;
    }
    if (ItemEnabled(c->Name, CurrentCommandInputs())) {
        modCommands::RunItem(c->Name);
    }
    UpdateToolbarStatus();
    return true;
}

} // namespace modMain
