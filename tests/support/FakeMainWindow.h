#pragma once

#include "util/MainWindowHost.h"

#include <QHash>
#include <QList>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>

// The main window of the tests. It records what the core sets and asks, and answers the
// questions, dialogs and pop-up menus from queues the test fills (an empty queue gives the
// headless answer: Cancel, or OK for a plain message; dialogs and menus cancelled). Alone it has
// no widgets; put in front of the real main window (`real`), it passes everything else on to it,
// so that whole-program tests drive the real windows without modal dialogs. It is the main window
// for its lifetime.
class FakeMainWindow : public modMain::MainWindowHost {
public:
    explicit FakeMainWindow(modMain::MainWindowHost *real = nullptr);
    ~FakeMainWindow() override;
    FakeMainWindow(const FakeMainWindow &) = delete;
    FakeMainWindow &operator=(const FakeMainWindow &) = delete;

    // Answers, taken first to last.
    QList<modMain::MsgBoxResult> Answers;
    QList<std::optional<QString>> FileNames;                     // the file dialog's
    QList<std::optional<modMain::FontDialogValues>> FontChoices; // the font dialog's
    QStringList MenuPicks;                                       // the pop-up menus'
    bool RunKeys = true; // document-window keys run their commands (else only recorded)

    // What was asked and set.
    QStringList Asked; // message texts
    QList<int> AskedButtons, AskedIcons;
    QList<bool> AskedWhileBusy; // the busy pointer was on when asked
    QList<modMain::FileDialogRequest> FileRequests;
    QList<modMain::FontDialogValues> FontsShown;
    QStringList MenusShown; // "menu: item item ..." (the available items)
    QList<QKeyCombination> Keys;
    QRect Geometry{0, 0, 100, 100};
    bool Minimised = false;
    double Dpi = 96.0;
    QHash<QString, bool> ItemEnabled, ItemChecked, ButtonEnabled, ButtonVisible;
    QHash<QString, QString> ItemCaption, ButtonToolTip;
    QHash<QString, int> ButtonValue;
    QStringList Calls; // placement setters and window requests, in call order
    int Refreshes = 0, Children = 0;
    int Busy = 0; // nesting of the busy pointer
    bool ToolbarShown = true, StatusBarShown = true;
    QString StatusText;

    QRect Placement() const override { return Geometry; }
    void SetLeft(int x) override { Geometry.moveLeft(x), Calls << QStringLiteral("Left"); }
    void SetTop(int y) override { Geometry.moveTop(y), Calls << QStringLiteral("Top"); }
    void SetWidth(int w) override { Geometry.setWidth(w), Calls << QStringLiteral("Width"); }
    void SetHeight(int h) override { Geometry.setHeight(h), Calls << QStringLiteral("Height"); }
    bool IsMinimised() const override { return Minimised; }
    double LogicalDpiX() const override { return Dpi; }
    double LogicalDpiY() const override { return Dpi; }
    modMain::MsgBoxResult ShowMessage(const QString &text, modMain::MsgBoxButtons buttons,
                                      modMain::MsgBoxIcon icon) override;
    bool ChooseFile(modMain::FileDialogRequest &request) override;
    bool ChooseFont(modMain::FontDialogValues &values) override;
    QString PopupMenu(const QString &menu, const QStringList &available) override;
    bool WindowKey(QKeyCombination key) override;
    bool Exit() override;
    void Arrange(modMain::Arrangement how) override {
        Calls << QStringLiteral("Arrange %1").arg(int(how)), on().Arrange(how);
    }
    Document *NewDocumentWindow() override { return on().NewDocumentWindow(); }
    void UpdateMRUFile(const QString &path, bool remove) override;
    // Alone it keeps the recently used files as the main window does.
    QString MRUFile(int index) override;
    void ShowMRUFiles(const QStringList &captions) override {
        on().ShowMRUFiles(MRUShown = captions);
    }
    QString ShowHelp(const QString &file, int context) override;
    // The windows of their own: recorded in Calls ("Search", "Print 1", ...), then passed on.
    void ShowSearchDialog() override { Pass(QStringLiteral("Search"), &Host::ShowSearchDialog); }
    void EnterWhatsThisMode() override {
        Pass(QStringLiteral("WhatsThis"), &Host::EnterWhatsThisMode);
    }
    void PrintSetup() override { Pass(QStringLiteral("PrintSetup"), &Host::PrintSetup); }
    void Print(bool entry) override {
        Pass(QStringLiteral("Print %1").arg(entry), &Host::Print, entry);
    }
    void PrintPreview(bool entry) override {
        Pass(QStringLiteral("Preview %1").arg(entry), &Host::PrintPreview, entry);
    }
    void SaveSettings() override { Pass(QStringLiteral("SaveSettings"), &Host::SaveSettings); }
    void ShowDebug() override { Pass(QStringLiteral("Debug"), &Host::ShowDebug); }
    void PopupBarMenu(const QString &menu, const QPoint &at) override {
        Pass(QStringLiteral("Popup ") + menu, &Host::PopupBarMenu, menu, at);
    }
    int ChildWindowCount() const override { return m_real ? m_real->ChildWindowCount() : Children; }
    // The settings are recorded, then passed on.
    void SetItemEnabled(const QString &n, bool v) override {
        on().SetItemEnabled(n, ItemEnabled[n] = v);
    }
    void SetItemChecked(const QString &n, bool v) override {
        on().SetItemChecked(n, ItemChecked[n] = v);
    }
    void SetItemCaption(const QString &n, const QString &c) override {
        on().SetItemCaption(n, ItemCaption[n] = c);
    }
    void SetButtonEnabled(const QString &k, bool v) override {
        on().SetButtonEnabled(k, ButtonEnabled[k] = v);
    }
    void SetButtonVisible(const QString &k, bool v) override {
        on().SetButtonVisible(k, ButtonVisible[k] = v);
    }
    void SetButtonToolTip(const QString &k, const QString &t) override {
        on().SetButtonToolTip(k, ButtonToolTip[k] = t);
    }
    void SetButtonValue(const QString &k, int v) override {
        on().SetButtonValue(k, ButtonValue[k] = v);
    }
    void RefreshToolbar() override { ++Refreshes, on().RefreshToolbar(); }
    void RefreshCommands(bool all) override;
    void SetToolbarVisible(bool v) override { on().SetToolbarVisible(ToolbarShown = v); }
    void SetStatusBarVisible(bool v) override { on().SetStatusBarVisible(StatusBarShown = v); }
    void SetStatusText(const QString &text) override { on().SetStatusText(StatusText = text); }
    void BeginBusy() override { ++Busy, on().BeginBusy(); }
    void EndBusy() override { Busy = Busy > 0 ? Busy - 1 : 0, on().EndBusy(); }
    void ResetPointer() override { Busy = 0, on().ResetPointer(); }
    void ShowAbout() override { Calls << QStringLiteral("About"); }

    QStringList MRUShown; // the recent files' captions last shown

private:
    using Host = modMain::MainWindowHost;
    // The real window, or one that does nothing.
    Host &on() { return m_real ? *m_real : m_none; }
    template <typename... Args, typename... Values>
    void Pass(const QString &call, void (Host::*method)(Args...), Values &&...values) {
        Calls << call;
        if (m_real) {
            (m_real->*method)(std::forward<Values>(values)...);
        }
    }
    modMain::MainWindowHost *m_real;
    modMain::MainWindowHost *m_previous;
    modMain::MainWindowHost m_none;
};

// Points the settings store at a file of a temporary folder, and the recovery copies at a
// folder beside it, for the life of the object.
class ScopedSettings {
public:
    ScopedSettings();
    ~ScopedSettings();
    QString path() const;

private:
    QTemporaryDir m_dir;
};
