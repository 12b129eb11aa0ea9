#pragma once

#include <QList>
#include <QString>

// The routing of the main window's menus and toolbar: every item and button calls exactly one
// command procedure, found by name in one table. A procedure that is not part of the program
// (yet) is null, and its items stay disabled.
namespace modCommands {

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

enum class ItemKind { Menu, Command, Separator };

struct MenuItem {
    QString Name;    // "mnuFileSave"
    QString Caption; // "&Save"; empty for separators
    int Depth;       // 0 on the bar (or a pop-up menu), 1 inside it, 2 inside a submenu
    ItemKind Kind;
    QString ProcName; // the command procedure; empty for menus and separators
    int Argument;     // handed to the procedure
    unsigned Needs;   // the item's rule
    bool Popup;       // a pop-up menu that never shows on the bar
};

struct ToolbarButton {
    QString Key;  // also the tool-tip
    QString Item; // the menu item whose procedure and rule the button shares
};

// The menu tree in display order (pop-up menus last).
const QList<MenuItem> &MenuItems();
// The 46 toolbar buttons in order.
const QList<ToolbarButton> &ToolbarButtons();

const MenuItem *FindItem(const QString &name);
const ToolbarButton *FindButton(const QString &key);

// Gives a name its procedure: the window layer adds the procedures that need widgets (dialogs,
// the layout of document windows).
void SetProcedure(const QString &procName, Procedure procedure);
// The procedure of a name, or null.
Procedure FindProcedure(const QString &procName);
// True when the item (or a button's item) has a procedure to call.
bool HasProcedure(const QString &itemName);

// Calls the item's procedure with its argument under the error convention. Returns false when
// the item is unknown or has no procedure.
bool RunItem(const QString &itemName);

// The tag command's caption and the "Tag Entry" button's tool-tip.
QString TagCaption(bool tagged);
QString TagToolTip(bool tagged);

} // namespace modCommands
