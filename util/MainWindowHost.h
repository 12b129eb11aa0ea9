#pragma once

#include <QColor>
#include <QKeyCombination>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

#include "util/TextEncoding.h"

#include <optional>

class Document;

// Everything the program's core asks of its windows: questions and messages, the file and font
// dialogs, document windows, the pop-up menus, the status bar, the busy pointer, the bars and the
// command state. The main window implements it; without one (the command-line tool, tests that
// install nothing) every request gets the headless answer written beside it.
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

// The settings of the one common file dialog.
struct FileDialogRequest {
    bool Save = false;  // a save dialog (else an open dialog)
    QString DefaultExt; // "mvd" or "txt"
    QString FileName;   // the initial name; the chosen name when the dialog is confirmed
    QString Filter;     // description|pattern pairs, separated by "|"
    int Flags = 0;      // the classic flags (file must exist 0x1000, overwrite prompt 0x2, ...)
    // A text export: the dialog also offers the character encoding, which comes back here.
    bool OfferEncoding = false;
    TextEncoding::Encoding Encoding = TextEncoding::Encoding::CodePage;
};

// What the one font dialog shows and returns.
struct FontDialogValues {
    QString FontName;
    double FontSize = 0; // points
    bool FontBold = false;
    bool FontItalic = false;
    bool FontUnderline = false;
    bool FontStrikethru = false;
    std::optional<QColor> Color; // the selection's colour, when the dialog is asked for it
};

class MainWindowHost {
public:
    virtual ~MainWindowHost() = default;

    // Placement, in device-independent pixels of the screen.
    virtual QRect Placement() const { return {}; }
    virtual void SetLeft(int) {}
    virtual void SetTop(int) {}
    virtual void SetWidth(int) {}
    virtual void SetHeight(int) {}
    virtual bool IsMinimised() const { return false; }
    virtual double LogicalDpiX() const { return 96.0; }
    virtual double LogicalDpiY() const { return 96.0; }

    // A message box owned by the main window and titled with the application title. Headless:
    // Cancel, or OK for a plain message.
    virtual MsgBoxResult ShowMessage(const QString &text, MsgBoxButtons buttons, MsgBoxIcon icon);
    // The file dialog: true with request.FileName set when a name came back. Headless: cancelled.
    virtual bool ChooseFile(FileDialogRequest &) { return false; }
    // The font dialog: true when confirmed (the values then hold the choice). Headless: cancelled.
    virtual bool ChooseFont(FontDialogValues &) { return false; }
    // Shows the pop-up menu `menu` (a menu of the command table) with only `available` of its
    // items enabled, modal; the name of the item picked, "" for none. Headless: none.
    virtual QString PopupMenu(const QString &menu, const QStringList &available);

    // A key pressed in a document window: runs the command the key belongs to (while that is
    // enabled); true when it belongs to one, and the key is consumed. Headless: no command.
    virtual bool WindowKey(QKeyCombination) { return false; }
    // A new document window with its document, shown in the frame; the document it holds.
    // Headless: null, and the core makes a document without a window.
    virtual Document *NewDocumentWindow() { return nullptr; }
    // Closes the main window and with it every document window; false when there is none, and
    // the core closes its documents itself.
    virtual bool Exit() { return false; }
    // The recently used files: a file just opened or saved goes to the top of the list, or a
    // file that no longer exists is taken out (`remove`); the file behind the File menu's item
    // `index` (counted from 1), "" for none; the captions of the items to show, from item 1 (the
    // separator above them shows only when there is one). Headless: no list.
    virtual void UpdateMRUFile(const QString &, bool remove) { (void)remove; }
    virtual QString MRUFile(int) { return {}; }
    virtual void ShowMRUFiles(const QStringList &) {}
    // The frame's document windows: arranged, counted.
    virtual void Arrange(Arrangement) {}
    virtual int ChildWindowCount() const { return 0; }

    // Menu items by name, toolbar buttons by key.
    virtual void SetItemEnabled(const QString &, bool) {}
    virtual void SetItemChecked(const QString &, bool) {}
    virtual void SetItemCaption(const QString &, const QString &) {}
    virtual void SetButtonEnabled(const QString &, bool) {}
    virtual void SetButtonVisible(const QString &, bool) {}
    virtual void SetButtonToolTip(const QString &, const QString &) {}
    virtual void SetButtonValue(const QString &, int) {}
    virtual void RefreshToolbar() {}
    // The refreshes of the command state after documents opened, closed or changed: MenuEnable
    // with the open-document counter then MenuEnableDynamic (all), or MenuEnableDynamic and the
    // toolbar's pressed states (not all).
    virtual void RefreshCommands(bool all) { (void)all; }

    // The bars.
    virtual void SetToolbarVisible(bool) {}
    virtual void SetStatusBarVisible(bool) {}
    // The text of the status bar's first panel, shown at once.
    virtual void SetStatusText(const QString &) {}

    // The mouse pointer: the hourglass on (nested) and off, and back to the arrow whatever the
    // nesting (the error report).
    virtual void BeginBusy() {}
    virtual void EndBusy() {}
    virtual void ResetPointer() {}

    // The About box, modal.
    virtual void ShowAbout() {}
    // The find and replace dialog on the active document, modal. Headless: nothing.
    virtual void ShowSearchDialog() {}
    // The help window on the collection `file` at the page of `context`: the error's description
    // when the collection cannot be shown, else "". Headless: there is no help viewer.
    virtual QString ShowHelp(const QString &file, int context);
    // The next click on a control of the document window shows that control's help.
    virtual void EnterWhatsThisMode() {}
    // The page setup dialog; the print dialog and the preview window of the active document (or
    // of its current entry). Headless: nothing.
    virtual void PrintSetup() {}
    virtual void Print(bool currentEntryOnly) { (void)currentEntryOnly; }
    virtual void PrintPreview(bool currentEntryOnly) { (void)currentEntryOnly; }
    // Writes the options and the main window's placement to the settings store now (the find
    // dialog keeps the search state with them). Headless: nothing.
    virtual void SaveSettings() {}
    // The diagnostic window of the active document's selected entry.
    virtual void ShowDebug() {}
    // Pops up one of the bar's menus ("mnuEdit", "mnuoutline") at a point of the screen, its
    // items enabled as the refresh leaves them; the item picked runs its command.
    virtual void PopupBarMenu(const QString &, const QPoint &) {}
    // The text pane's selection or its format at the caret changed: the toolbar's pressed
    // states follow.
    virtual void TextSelectionChanged() {}
};

void SetMainWindow(MainWindowHost *host);
// The main window, or null without one.
MainWindowHost *MainWindow();
// The main window, or a host that gives the headless answers.
MainWindowHost &Host();

// Asks the user (through the main window).
MsgBoxResult MsgBox(const QString &text, MsgBoxButtons buttons = vbOKOnly,
                    MsgBoxIcon icon = vbNoIcon);
// Sets the status bar's text.
void UpdateStatusBarText(const QString &text);

} // namespace modMain

// Shows the busy pointer for the life of the object. The error report also resets the pointer,
// so a command that fails never leaves it busy.
class BusyPointer {
public:
    BusyPointer() { modMain::Host().BeginBusy(); }
    ~BusyPointer() { modMain::Host().EndBusy(); }
    BusyPointer(const BusyPointer &) = delete;
    BusyPointer &operator=(const BusyPointer &) = delete;
};
