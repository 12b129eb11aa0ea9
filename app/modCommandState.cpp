#include "app/modCommandState.h"

#include "app/MainWindowHost.h"
#include "app/modCommands.h"
#include "app/modMain.h"

using namespace Qt::StringLiterals;

namespace modMain {

namespace {

std::function<CommandInputs()> g_inputProvider;

bool IsWritable(const CommandInputs &in) {
    return in.OpenDocuments > 0 && in.ActiveDocument && !in.ReadOnly;
}

// Sets one item and every toolbar button that shares it.
void ApplyItem(MainWindowHost &frm, const modCommands::MenuItem &item, bool enabled) {
    frm.SetItemEnabled(item.Name, enabled);
    for (const modCommands::ToolbarButton &b : modCommands::ToolbarButtons()) {
        if (b.Item == item.Name) {
            frm.SetButtonEnabled(b.Key, enabled);
        }
    }
}

} // namespace

void SetCommandInputProvider(std::function<CommandInputs()> provider) {
    g_inputProvider = std::move(provider);
}

CommandInputs CurrentCommandInputs() {
    return g_inputProvider ? g_inputProvider() : CommandInputs{};
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
    const modCommands::MenuItem *item = modCommands::FindItem(itemName);
    if (!item) {
        return false;
    }
    if (!RuleHolds(item->Needs, in, coarse)) {
        return false;
    }
    if (item->Kind == modCommands::ItemKind::Command) {
        return modCommands::FindProcedure(item->ProcName) != nullptr;
    }
    return true;
}

int SetButtonValue(std::optional<bool> value) {
    return value.value_or(false) ? 1 : 0;
}

void MenuEnable(int openDocuments) {
    PROC("modMain MenuEnable");
    Guarded([&] {
        MainWindowHost *frm = MainWindow();
        if (!frm) {
            return;
        }
        CommandInputs in = CurrentCommandInputs();
        in.OpenDocuments = openDocuments;
        for (const modCommands::MenuItem &item : modCommands::MenuItems()) {
            if (item.Kind == modCommands::ItemKind::Separator) {
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
    Guarded([] {
        MainWindowHost *frm = MainWindow();
        if (!frm) {
            return;
        }
        const CommandInputs in = CurrentCommandInputs();
        const bool tagged = in.ActiveDocument && in.EntrySelected && in.SelectionTagged;
        frm->SetItemCaption(u"mnuOutlineTaggedEntry"_s, modCommands::TagCaption(tagged));
        frm->SetButtonToolTip(u"Tag Entry"_s, modCommands::TagToolTip(tagged));
        for (const modCommands::MenuItem &item : modCommands::MenuItems()) {
            if (item.Kind == modCommands::ItemKind::Separator) {
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
    Guarded([] {
        MainWindowHost *frm = MainWindow();
        const CommandInputs in = CurrentCommandInputs();
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

} // namespace modMain
