#pragma once

#include "document/SystemClipboard.h"
#include "util/MainWindowHost.h"

#include <QHash>
#include <QMainWindow>

class QAction;
class QLabel;
class QMdiArea;
class QMenu;
class QTimer;
class QToolBar;

// The main window: a frame of document windows with the menu bar, the toolbar and the status
// bar. Its items do no work of their own; each calls one command procedure.
class frmMain : public QMainWindow, public modMain::MainWindowHost {
    Q_OBJECT

public:
    explicit frmMain(QWidget *parent = nullptr);
    ~frmMain() override;

    // The load handler: Initialise, the bars, the tool-tips and the focus timer.
    void MDIForm_Load();
    // The close question and Finalise; true when the close may go on.
    bool MDIForm_QueryUnload();

    QMdiArea *mdiArea() const { return m_mdi; }
    QAction *Item(const QString &name) const { return m_items.value(name); }
    QMenu *Menu(const QString &name) const { return m_menus.value(name); }
    QAction *Button(const QString &key) const { return m_buttons.value(key); }
    QToolBar *tbToolBar() const { return m_toolbar; }
    QString StatusText() const;
    QTimer *Timer1() const { return m_timer; }

    // A toolbar click: the button's procedure, then always the toolbar refresh.
    void tbToolBar_ButtonClick(const QString &key);
    // Files (or a name given as text) dropped on the frame.
    void MDIForm_OLEDragDrop(const class QMimeData *data);
    void UpdateStatusBarText(const QString &text);

    // MainWindowHost
    QRect Placement() const override;
    void SetLeft(int x) override;
    void SetTop(int y) override;
    void SetWidth(int width) override;
    void SetHeight(int height) override;
    bool IsMinimised() const override;
    double LogicalDpiX() const override;
    double LogicalDpiY() const override;
    modMain::MsgBoxResult ShowMessage(const QString &text, modMain::MsgBoxButtons buttons,
                                      modMain::MsgBoxIcon icon) override;
    void SetItemEnabled(const QString &name, bool enabled) override;
    void SetItemChecked(const QString &name, bool checked) override;
    void SetItemCaption(const QString &name, const QString &caption) override;
    void SetButtonEnabled(const QString &key, bool enabled) override;
    void SetButtonVisible(const QString &key, bool visible) override;
    void SetButtonToolTip(const QString &key, const QString &tip) override;
    void SetButtonValue(const QString &key, int value) override;
    void RefreshToolbar() override;
    void RefreshCommands(bool all) override;
    bool ChooseFile(modMain::FileDialogRequest &request) override;
    bool ChooseFont(modMain::FontDialogValues &values) override;
    QString PopupMenu(const QString &menu, const QStringList &available) override;
    bool WindowKey(QKeyCombination key) override;
    Document *NewDocumentWindow() override;
    bool Exit() override;
    void Arrange(modMain::Arrangement how) override;
    int ChildWindowCount() const override;
    void SetToolbarVisible(bool visible) override;
    void SetStatusBarVisible(bool visible) override;
    void SetStatusText(const QString &text) override { UpdateStatusBarText(text); }
    void BeginBusy() override;
    void EndBusy() override;
    void ResetPointer() override;
    void ShowAbout() override;
    void UpdateMRUFile(const QString &file, bool remove) override;
    QString MRUFile(int index) override;
    void ShowMRUFiles(const QStringList &captions) override;
    void ShowSearchDialog() override;
    QString ShowHelp(const QString &file, int context) override;
    void EnterWhatsThisMode() override;
    void PrintSetup() override;
    void Print(bool currentEntryOnly) override;
    void PrintPreview(bool currentEntryOnly) override;
    void SaveSettings() override;
    void ShowDebug() override;
    void PopupBarMenu(const QString &menu, const QPoint &at) override;
    void TextSelectionChanged() override;

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void BuildMenus();
    void BuildToolbar();
    void BuildStatusBar();
    void BindShortcuts(QAction *action, const QString &caption, const QList<QKeySequence> &keys);
    // A document window became the active one (or none is).
    void OnSubWindowActivated(class QMdiSubWindow *frame);
    void Timer1_Timer();
    // The lock keys, the typing mode and the time in the status bar's panels.
    void ShowStatusPanels();
    void TileHorizontal();
    void TileVertical();
    // One above the other, or side by side.
    void Tile(bool sideBySide);
    void ArrangeIcons();

    QMdiArea *m_mdi = nullptr;
    QToolBar *m_toolbar = nullptr;
    QLabel *m_statusText = nullptr;
    QTimer *m_timer = nullptr;
    QHash<QString, QAction *> m_items;
    QHash<QString, QMenu *> m_menus;
    QHash<QString, QAction *> m_buttons;
    QHash<QString, QLabel *> m_panels; // the status bar's panels by key
    QList<QAction *> m_mruItems;       // the File menu's recent files, item 1 first
    SystemClipboard m_clipboard;
};
