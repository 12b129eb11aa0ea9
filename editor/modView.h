#pragma once

class DocumentWindow;

// The View menu's commands: the layout of the active document window (fitting, equalising and
// maximising the two sides, moving the splitter), the focus, the bars and the option toggles.
// The layout commands do nothing without an active document window.
namespace modView {

inline constexpr double kFitStep = 100; // the outline widens by this much per trial when fitting

// A document window's layout when it loads, and its fitting.
void ViewInitialise(DocumentWindow &window);
void ViewFitSplit(DocumentWindow &window);
// Fits the splitter unless a whole document is being transferred, a command is running or the
// AutoSplit setting is off.
void ViewAutoFitSplit(DocumentWindow &window);

void ViewToolbar();
void ViewStatusBar();
void ViewGoToOutline();
void ViewGoToText();
void ViewMaximiseLeft();
void ViewMaximiseRight();
void ViewEqualiseLeftAndRight();
void ViewFitSplit();
void ViewMoveSplit();
void ViewOptionsBackupOnSave();
void ViewOptionsAutoFitSplit();
void ViewOptionsStartWithNewDoc();
void ViewOptionsStartWithPrevDocs();
void ViewOptionsClickToRenameEntry();

} // namespace modView
