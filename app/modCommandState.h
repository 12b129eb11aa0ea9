#pragma once

#include <QString>

#include <functional>
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

// Where the refreshes take their inputs from; the document windows install a provider that
// reads the active document. Without one, no document is open.
void SetCommandInputProvider(std::function<CommandInputs()> provider);
CommandInputs CurrentCommandInputs();

// True when the item's rule holds for the inputs (procedure not considered).
bool RuleHolds(unsigned needs, const CommandInputs &in, bool coarse);
// The enabled state the refresh gives an item: its rule holds and it has a procedure.
bool ItemEnabled(const QString &itemName, const CommandInputs &in, bool coarse = false);

// 1 (pressed) for a known true value, 0 for false or mixed.
int SetButtonValue(std::optional<bool> value);

void MenuEnable(int openDocuments);
void MenuEnableDynamic();
void UpdateToolbarStatus();

} // namespace modMain
