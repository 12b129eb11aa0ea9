#pragma once

#include <QKeyCombination>
#include <QKeySequence>
#include <QList>
#include <QString>

#include <utility>

// The routing of the main window's menus, toolbar and shortcuts and of the document window's
// keys: one table whose rows hold every fact of a command. The menu bar, the pop-up menus, the
// toolbar, the shortcuts, the check marks and the document window's keys are all built from it.
namespace modCommands {

// A command procedure; the row's argument is handed to it.
using Procedure = void (*)(int argument);

// Conditions an item needs to be enabled.
enum Need : unsigned {
    None = 0,
    DocOpen = 1u << 0,      // a document window is open
    Writable = 1u << 1,     // ... and the active one may be changed
    Entry = 1u << 2,        // an entry is selected in the active document
    NotRoot = 1u << 3,      // ... and it is not the root
    OutlineFocus = 1u << 4, // the outline has the focus
    TextFocus = 1u << 5,    // the text pane has the focus
    TaggedExist = 1u << 6,  // some entry of the active document is tagged
    AnyChanged = 1u << 7,   // some open document has unsaved changes
};

// Menu: a submenu (or pop-up menu); Command: an item that runs a procedure; Separator; Key: a
// key of the document window that has no menu item.
enum class ItemKind { Menu, Command, Separator, Key };

// How a toolbar button shows.
enum ButtonStyle : unsigned {
    Plain = 0,
    Toggle = 1u << 0,   // it shows a pressed state
    GroupEnd = 1u << 1, // a separator follows it
};

// A toolbar button of a command.
struct Button {
    QString Key;           // also the tool-tip; empty: the command has no button
    int Order = 0;         // place on the toolbar, from 1
    QString Theme;         // the desktop icon theme's name for the image ("" none)
    QString Drawing;       // the program's own image (ToolbarIcons.h), when the theme has none
    bool Toggle = false;   // shows a pressed state
    bool GroupEnd = false; // a separator follows it
};

struct Command {
    QString Name;    // "mnuFileSave" (a Key row: a name of its own)
    QString Caption; // "&Save"; empty for separators and keys
    int Depth = 1;   // 0 on the bar (or a pop-up menu), 1 inside it, 2 inside a submenu
    ItemKind Kind = ItemKind::Command;
    Procedure Proc = nullptr;          // null: not part of the program yet; the item stays disabled
    int Argument = 0;                  // handed to the procedure
    unsigned Needs = None;             // the item's enabling rule
    bool Checkable = false;            // the item shows a check mark
    QList<QKeySequence> Shortcuts;     // the main window's keys for the item
    QList<QKeyCombination> WindowKeys; // the document window's keys for it
    Button Toolbar;
    bool Popup = false; // a pop-up menu (and its items) that never shows on the bar

    // The table is written with these.
    Command &&Check() && {
        Checkable = true;
        return std::move(*this);
    }
    Command &&Pop() && {
        Popup = true;
        return std::move(*this);
    }
    Command &&Keys(QList<QKeySequence> keys) && {
        Shortcuts = std::move(keys);
        return std::move(*this);
    }
    Command &&Window(QList<QKeyCombination> keys) && {
        WindowKeys = std::move(keys);
        return std::move(*this);
    }
    Command &&Tool(QString key, int order, QString theme, QString drawing,
                   unsigned style = Plain) && {
        Toolbar = {std::move(key),       order,
                   std::move(theme),     std::move(drawing),
                   bool(style & Toggle), bool(style & GroupEnd)};
        return std::move(*this);
    }
};

// Every command in menu order (pop-up menus and keys last).
const QList<Command> &MenuItems();

// A toolbar button and the row it belongs to.
struct ToolbarButton {
    QString Key;
    QString Item;
    const Command *Row;
};
// The toolbar's buttons in order.
const QList<ToolbarButton> &ToolbarButtons();

const Command *FindItem(const QString &name);
const ToolbarButton *FindButton(const QString &key);
// The row that handles a key of the document window (Shift, Ctrl, Alt and the keypad flag
// count), or null.
const Command *FindWindowKey(QKeyCombination key);

// True when the item (or a button's item) has a procedure to call.
bool HasProcedure(const QString &itemName);

// Calls the item's procedure with its argument under the error convention. Returns false when
// the item is unknown or has no procedure.
bool RunItem(const QString &itemName);

// The tag command's caption and the "Tag Entry" button's tool-tip.
QString TagCaption(bool tagged);
QString TagToolTip(bool tagged);

} // namespace modCommands
