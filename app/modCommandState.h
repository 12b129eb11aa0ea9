#pragma once

#include <QKeyCombination>
#include <QString>

#include <optional>

// The refresh of the enabled, checked and pressed states of the main window's menu items and
// toolbar buttons. All of them are set at once after each change, never lazily.
namespace modMain {

// Alignment of the text selection; nullopt where a selection mixes them.
enum class Alignment { Left, Right, Centre };

// What the refreshes read of the open documents.
struct CommandInputs {
    int OpenDocuments = 0;        // document windows loaded
    bool ActiveDocument = false;  // the active child window is a document window
    bool ReadOnly = false;        // the active document's bReadOnly
    bool EntrySelected = false;   // its outline has a selected entry
    bool SelectionIsRoot = false; // ... which is the root
    bool OutlineSorted = false;
    bool SelectionTagged = false;
    bool TaggedExist = false;
    bool OutlineHasFocus = false;
    bool TextHasFocus = false;
    int ExpansionLevel = 0; // m_iExpansionLevel: N after expanding to N, -1 after all
    bool RootExists = false;
    bool RootExpanded = false;
    bool AnyDocumentChanged = false;    // the per-document flag, OR of all document windows
    bool ActiveDocumentChanged = false; // ... and the active window's own answer
    std::optional<bool> SelBold;
    std::optional<bool> SelItalic;
    std::optional<bool> SelUnderline;
    std::optional<Alignment> SelAlignment;
};

// The inputs read from the open documents and the active one. Without `tagged` the walk of the
// whole outline for a tagged entry is left out (TaggedExist stays false): the toolbar's pressed
// states, refreshed as the caret moves, do not need it.
CommandInputs CurrentCommandInputs(bool tagged = true);

// True when the item's rule holds for the inputs (procedure not considered).
bool RuleHolds(unsigned needs, const CommandInputs &in, bool coarse);
// The enabled state the refresh gives an item: its rule holds and it has a procedure.
bool ItemEnabled(const QString &itemName, const CommandInputs &in, bool coarse = false);

// 1 (pressed) for a known true value, 0 for false or mixed.
int SetButtonValue(std::optional<bool> value);

// The refreshes, of the current inputs or of given ones.
void MenuEnable(int openDocuments);
void MenuEnable(int openDocuments, CommandInputs in);
void MenuEnableDynamic();
void MenuEnableDynamic(const CommandInputs &in);
void UpdateToolbarStatus();
void UpdateToolbarStatus(const CommandInputs &in);

// A key of the document window: its command runs only while the command is enabled, then the
// toolbar follows. Returns whether the key belongs to a command (it is consumed either way).
bool RunWindowKey(QKeyCombination key);

} // namespace modMain
