#pragma once

class frmMain;

// Connects the program's core to its windows: document windows made in the main window's frame,
// the file and font dialogs, the questions, the command state read from the active document,
// the View commands and the session's document procedures. Called once, before the main window
// loads.
namespace ApplicationUi {
void Install(frmMain &frm);
// Lets go of everything Install connected (the main window is going).
void Uninstall();
} // namespace ApplicationUi
