#pragma once

#include <functional>

#include <QRect>
#include <QString>

// What the program's core needs of the main window, so that settings, questions and the command
// state can be handled without widgets. The main window registers itself with SetMainWindow.
namespace modMain {

enum MsgBoxButtons { vbOKOnly = 0, vbOKCancel = 1, vbYesNoCancel = 3, vbYesNo = 4 };
enum MsgBoxIcon {
    vbNoIcon = 0,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64
};
enum MsgBoxResult { vbOK = 1, vbCancel = 2, vbYes = 6, vbNo = 7 };

enum class Arrangement { Cascade, TileHorizontal, TileVertical, ArrangeIcons };

class MainWindowHost {
public:
    virtual ~MainWindowHost() = default;

    // Placement, in device-independent pixels of the screen.
    virtual QRect Placement() const = 0;
    virtual void SetLeft(int x) = 0;
    virtual void SetTop(int y) = 0;
    virtual void SetWidth(int width) = 0;
    virtual void SetHeight(int height) = 0;
    virtual bool IsMinimised() const = 0;
    virtual double LogicalDpiX() const = 0;
    virtual double LogicalDpiY() const = 0;

    // A message box owned by the main window and titled with the application title.
    virtual MsgBoxResult ShowMessage(const QString &text, MsgBoxButtons buttons,
                                     MsgBoxIcon icon) = 0;

    // Menu items by name, toolbar buttons by key.
    virtual void SetItemEnabled(const QString &name, bool enabled) = 0;
    virtual void SetItemChecked(const QString &name, bool checked) = 0;
    virtual void SetItemCaption(const QString &name, const QString &caption) = 0;
    virtual void SetButtonEnabled(const QString &key, bool enabled) = 0;
    virtual void SetButtonVisible(const QString &key, bool visible) = 0;
    virtual void SetButtonToolTip(const QString &key, const QString &tip) = 0;
    virtual void SetButtonValue(const QString &key, int value) = 0;
    virtual void RefreshToolbar() = 0;

    // The document windows of the frame.
    virtual void Arrange(Arrangement how) = 0;
    virtual int ChildWindowCount() const = 0;

    // The About box, modal.
    virtual void ShowAbout() = 0;

    // The text of the status bar's first panel, shown at once.
    virtual void SetStatusText(const QString &text) { (void)text; }
};

void SetMainWindow(MainWindowHost *host);
// Sets the status bar's text (nothing without a main window).
void UpdateStatusBarText(const QString &text);
MainWindowHost *MainWindow();

// Asks the user (through the main window). Tests queue answers with PushMsgBoxAnswer; a queued
// answer is taken without showing anything. With no main window and no queued answer the result
// is Cancel (OK for a plain message).
MsgBoxResult MsgBox(const QString &text, MsgBoxButtons buttons = vbOKOnly,
                    MsgBoxIcon icon = vbNoIcon);
void PushMsgBoxAnswer(MsgBoxResult answer);
// A function that answers every question instead of the main window (tests, tools); an empty one
// removes it. Queued answers come first.
using MsgBoxHandler = std::function<int(const QString &text, int buttons, int icon)>;
void SetMsgBoxHandler(MsgBoxHandler handler);
void ClearMsgBoxAnswers();
// The texts asked since the last ClearMsgBoxAnswers (the latest 100), oldest first.
QStringList AskedMessages();

} // namespace modMain
