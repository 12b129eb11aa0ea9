#pragma once

#include <QString>

#include <functional>

// The one way the core asks the user a question. The main window installs the handler that shows
// a message box owned by it and titled with the application title.
namespace modMain {

// Buttons.
inline constexpr int vbOKOnly = 0;
inline constexpr int vbYesNoCancel = 3;
inline constexpr int vbYesNo = 4;
// Icons.
inline constexpr int vbQuestion = 32;
inline constexpr int vbExclamation = 48;
// Answers.
inline constexpr int vbOK = 1;
inline constexpr int vbCancel = 2;
inline constexpr int vbYes = 6;
inline constexpr int vbNo = 7;

using MsgBoxHandler = std::function<int(const QString &text, int buttons, int icon)>;

// Installs the handler (an empty one removes it).
void SetMsgBoxHandler(MsgBoxHandler handler);

// Asks through the handler; with none installed the answer is Cancel (OK for a plain message).
int MsgBox(const QString &text, int buttons, int icon);

} // namespace modMain
