#include "app/frmMain.h"

#include "app/StatusPanels.h"
#include "app/ToolbarIcons.h"
#include "app/modCommandState.h"
#include "app/modCommands.h"
#include "app/modMain.h"
#include "app/modSession.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocClipboard.h"
#include "document/modRecovery.h"
#include "editor/frmDocument.h"
#include "editor/modFont.h"
#include "help/frmAbout.h"
#include "help/frmHelp.h"
#include "util/modGlobals.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFontDialog>
#include <QLabel>
#include <QLocale>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QRegularExpression>
#include <QShortcut>
#include <QStatusBar>
#include <QTime>
#include <QTimer>
#include <QToolBar>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

// "Description|pattern|Description|pattern" as the dialog's name filters.
QStringList NameFilters(const QString &filter) {
    const QStringList parts = filter.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        // The description already shows the pattern: "Text Files (*.txt)". Here every file
        // matches "*", with or without a dot in its name.
        QString description = parts[i];
        filters.append(description.replace(u"(*.*)"_s, u"(*)"_s));
    }
    return filters;
}

// A pause of the keys and mouse this long counts as idle: the recovery copies are written then.
constexpr qint64 kIdleMs = 2000;

// Restarts a clock at every key and mouse button of the application.
class InputWatch : public QObject {
public:
    InputWatch(QElapsedTimer *clock, QObject *parent) : QObject(parent), m_clock(clock) {}

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        const QEvent::Type type = event->type();
        if (type == QEvent::KeyPress || type == QEvent::MouseButtonPress || type == QEvent::Wheel) {
            m_clock->start();
        }
        return false;
    }

private:
    QElapsedTimer *m_clock;
};

} // namespace

frmMain::frmMain(QWidget *parent) : QMainWindow(parent) {
    setObjectName(u"frmMain"_s);
    setWindowTitle(u"Mavrolen"_s);
    setWindowIcon(ApplicationIcon());
    QApplication::setWindowIcon(windowIcon());
    setAcceptDrops(true);
    m_mdi = new QMdiArea(this);
    m_mdi->setObjectName(u"MDIClient"_s);
    m_mdi->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_mdi->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(m_mdi);
    BuildMenus();
    BuildToolbar();
    BuildStatusBar();
    m_timer = new QTimer(this);
    m_timer->setObjectName(u"Timer1"_s);
    connect(m_timer, &QTimer::timeout, this, [this] { Timer1_Timer(); });
    m_recoveryTimer = new QTimer(this);
    m_recoveryTimer->setObjectName(u"RecoveryTimer"_s);
    m_recoveryTimer->setInterval(1000);
    connect(m_recoveryTimer, &QTimer::timeout, this,
            [this] { modRecovery::CheckPoint(m_lastInput.elapsed() >= kIdleMs); });
    m_lastInput.start();
    qApp->installEventFilter(new InputWatch(&m_lastInput, this));
    connect(m_mdi, &QMdiArea::subWindowActivated, this, &frmMain::OnSubWindowActivated);
    modDocClipboard::SetClipboard(&m_clipboard);
    modMain::SetMainWindow(this);
    frmHelp::InstallWhatsThisKey();
}

frmMain::~frmMain() {
    // MDIForm_Unload: the process-wide reference goes with the window.
    if (modMain::MainWindow() == this) {
        modMain::SetMainWindow(nullptr);
    }
    modDocClipboard::SetClipboard(nullptr);
    // The document windows go before the frame's own members.
    disconnect(m_mdi, nullptr, this, nullptr);
    for (QMdiSubWindow *frame : m_mdi->subWindowList()) {
        delete frame;
    }
}

void frmMain::BuildMenus() {
    QMenu *parents[3] = {nullptr, nullptr, nullptr};
    for (const modCommands::Command &item : modCommands::MenuItems()) {
        if (item.Kind == modCommands::ItemKind::Key) {
            continue;
        }
        QMenu *owner = item.Depth > 0 ? parents[item.Depth - 1] : nullptr;
        if (item.Kind == modCommands::ItemKind::Menu) {
            QMenu *menu = nullptr;
            if (item.Depth == 0 && !item.Popup) {
                menu = menuBar()->addMenu(item.Caption);
            } else if (item.Depth == 0) {
                menu = new QMenu(item.Caption, this); // pop-up, never on the bar
            } else {
                menu = owner->addMenu(item.Caption);
            }
            menu->setObjectName(item.Name);
            menu->menuAction()->setObjectName(item.Name);
            m_menus.insert(item.Name, menu);
            m_items.insert(item.Name, menu->menuAction());
            parents[item.Depth] = menu;
            continue;
        }
        QAction *action = nullptr;
        if (item.Kind == modCommands::ItemKind::Separator) {
            action = owner->addSeparator();
        } else {
            action = owner->addAction(item.Caption);
            const QString name = item.Name;
            connect(action, &QAction::triggered, this, [name] {
                modCommands::RunItem(name);
                modMain::UpdateToolbarStatus();
            });
            action->setCheckable(item.Checkable);
            action->setEnabled(modCommands::HasProcedure(item.Name));
            BindShortcuts(action, item.Caption, item.Shortcuts);
        }
        action->setObjectName(item.Name);
        m_items.insert(item.Name, action);
    }
    // Shown only while there are recent files.
    m_items.value(u"mnuFileBarMRU"_s)->setVisible(false);
}

void frmMain::BindShortcuts(QAction *action, const QString &caption,
                            const QList<QKeySequence> &keys) {
    // A key the caption already shows (after its run of blanks) is bound beside the item, so that
    // the menu does not show it twice; the others are the item's own and show in the menu.
    static const QRegularExpression tail(u"\\s{2,}(\\S+)$"_s);
    const QRegularExpressionMatch m = tail.match(caption);
    const QKeySequence shown =
        m.hasMatch() ? QKeySequence::fromString(m.captured(1)) : QKeySequence();
    QList<QKeySequence> own;
    for (const QKeySequence &key : keys) {
        if (key != shown) {
            own.append(key);
            continue;
        }
        auto *shortcut = new QShortcut(key, this);
        shortcut->setContext(Qt::WindowShortcut);
        connect(shortcut, &QShortcut::activated, action, [action] {
            if (action->isEnabled()) {
                action->trigger();
            }
        });
    }
    action->setShortcuts(own);
    action->setShortcutContext(Qt::WindowShortcut);
}

void frmMain::BuildToolbar() {
    m_toolbar = addToolBar(u"Toolbar"_s);
    m_toolbar->setObjectName(u"tbToolBar"_s);
    m_toolbar->setIconSize(QSize(24, 24));
    m_toolbar->setMovable(false);
    for (const modCommands::ToolbarButton &b : modCommands::ToolbarButtons()) {
        const modCommands::Button &button = b.Row->Toolbar;
        QAction *action =
            m_toolbar->addAction(ToolbarIcon(b.Key, button.Theme, button.Drawing), b.Key);
        action->setObjectName(b.Key);
        action->setCheckable(button.Toggle);
        action->setEnabled(modCommands::HasProcedure(b.Item));
        const QString key = b.Key;
        connect(action, &QAction::triggered, this, [this, key] { tbToolBar_ButtonClick(key); });
        m_buttons.insert(b.Key, action);
        if (button.GroupEnd) {
            m_toolbar->addSeparator();
        }
    }
}

void frmMain::BuildStatusBar() {
    QStatusBar *bar = statusBar();
    bar->setObjectName(u"sbStatusBar"_s);
    m_statusText = new QLabel(bar);
    m_statusText->setObjectName(u"Text"_s);
    bar->addWidget(m_statusText, 1);
    for (const StatusPanel &p : StatusPanels::Panels(KeyState{}, QTime(0, 0))) {
        auto *panel = new QLabel(bar);
        panel->setObjectName(p.Key);
        panel->setAlignment(Qt::AlignCenter);
        panel->setMinimumWidth(panel->fontMetrics().horizontalAdvance(u"CAPS"_s) + 12);
        panel->setFrameShape(QFrame::StyledPanel);
        panel->installEventFilter(this);
        bar->addPermanentWidget(panel);
        m_panels.insert(p.Key, panel);
    }
    ShowStatusPanels();
}

void frmMain::MDIForm_Load() {
    PROC("frmMain MDIForm_Load");
    modMain::Guarded([this] {
        modMain::Initialise();
        statusBar()->setVisible(modGlobals::ViewStatusbar);
        for (const modCommands::ToolbarButton &b : modCommands::ToolbarButtons()) {
            m_buttons.value(b.Key)->setToolTip(b.Key);
            m_buttons.value(b.Key)->setStatusTip(b.Key);
        }
        m_toolbar->setVisible(modGlobals::ViewToolbar);
        m_items.value(u"mnuViewToolbar"_s)->setChecked(modGlobals::ViewToolbar);
        m_items.value(u"mnuViewStatusBar"_s)->setChecked(modGlobals::ViewStatusbar);
        m_items.value(u"mnuViewOptionsBackupOnSave"_s)->setChecked(modGlobals::Backup);
        m_items.value(u"mnuViewOptionsAutoFitSplit"_s)->setChecked(modGlobals::AutoSplit);
        m_items.value(u"mnuViewOptionsStartWithNewDoc"_s)
            ->setChecked(modGlobals::StartWithNewDocument);
        m_items.value(u"mnuViewOptionsStartWithPrevDocs"_s)
            ->setChecked(modGlobals::StartWithLatestDocuments);
        m_items.value(u"mnuViewOptionsClickToRenameEntry"_s)->setChecked(modGlobals::AutoLabelEdit);
        m_timer->setInterval(modGlobals::TimerInterval);
        m_timer->start();
        OfferRecovery();
        m_recoveryTimer->start();
    });
}

void frmMain::OfferRecovery() {
    PROC("frmMain OfferRecovery");
    modMain::Guarded([] {
        const QList<modRecovery::Recovered> copies = modRecovery::Pending();
        if (copies.isEmpty()) {
            return;
        }
        QString list;
        for (const modRecovery::Recovered &copy : copies) {
            list += u"\n    "_s +
                    (copy.OriginalFile.isEmpty() ? copy.Caption + u" (never saved)"_s
                                                 : copy.OriginalFile) +
                    u", as it was at "_s + QLocale().toString(copy.Written, QLocale::ShortFormat);
        }
        const modMain::MsgBoxResult answer = modMain::MsgBox(
            u"Mavrolen did not end normally last time. These documents had changes that were not "
            "saved:\n"_s +
                list +
                u"\n\nDo you want to open the recovered copies? Each opens as a changed document "
                "under its original name; your files are not changed until you save.\n\n"
                "Yes: open them.  No: discard the copies.  Cancel: keep them for the next "
                "start."_s,
            modMain::vbYesNoCancel, modMain::vbQuestion);
        for (const modRecovery::Recovered &copy : copies) {
            if (answer == modMain::vbYes) {
                modDoc::DocOpenRecovered(copy);
            } else if (answer == modMain::vbNo) {
                modRecovery::Discard(copy);
            }
        }
        if (answer == modMain::vbYes) {
            modMain::MenuEnable(modDoc::OpenDocumentCount());
            modMain::MenuEnableDynamic();
        }
    });
}

bool frmMain::MDIForm_QueryUnload() {
    PROC("frmMain MDIForm_QueryUnload");
    return modMain::Guarded(
        [this] {
            if (ChildWindowCount() > 0) {
                const modMain::MsgBoxResult answer =
                    modMain::MsgBox(u"Do you really want to exit the application?"_s,
                                    modMain::vbYesNoCancel, modMain::vbQuestion);
                if (answer != modMain::vbYes) {
                    return false;
                }
            }
            modMain::Finalise();
            return true;
        },
        false);
}

void frmMain::closeEvent(QCloseEvent *event) {
    if (!MDIForm_QueryUnload()) {
        event->ignore();
        return;
    }
    // Only now does each document window ask its own question, in order; the first that stays
    // open (Cancel, or a save that failed) stops the exit, and the others are not asked.
    for (QMdiSubWindow *frame : m_mdi->subWindowList(QMdiArea::CreationOrder)) {
        if (!frame->close()) {
            event->ignore();
            return;
        }
    }
    m_timer->stop();
    m_recoveryTimer->stop();
    modRecovery::WaitForWrites();
    event->accept();
}

void frmMain::tbToolBar_ButtonClick(const QString &key) {
    PROC("frmMain tbToolBar_ButtonClick");
    modMain::Guarded([&] {
        if (const modCommands::ToolbarButton *b = modCommands::FindButton(key)) {
            modCommands::RunItem(b->Item);
        }
    });
    modMain::UpdateToolbarStatus();
}

void frmMain::dragEnterEvent(QDragEnterEvent *event) {
    // MDIForm_OLEDragOver: always a copy.
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void frmMain::dragMoveEvent(QDragMoveEvent *event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void frmMain::dropEvent(QDropEvent *event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    MDIForm_OLEDragDrop(event->mimeData());
}

void frmMain::MDIForm_OLEDragDrop(const QMimeData *data) {
    PROC("frmMain MDIForm_OLEDragDrop");
    modMain::Guarded([data] {
        if (!data) {
            return;
        }
        // No existence test here: DocLoad reports a missing file itself.
        if (data->hasUrls()) {
            for (const QUrl &url : data->urls()) {
                const QString name = url.isLocalFile() ? url.toLocalFile() : url.toString();
                modDoc::DocLoad(modMain::FullPathName(name));
            }
            return;
        }
        if (data->hasText()) {
            modDoc::DocLoad(modMain::FullPathName(data->text()));
            return;
        }
        // Rich text is taken as a file name too, on purpose.
        for (const QString &format : {u"text/rtf"_s, u"application/rtf"_s, u"text/richtext"_s}) {
            if (data->hasFormat(format)) {
                modDoc::DocLoad(modMain::FullPathName(QString::fromLocal8Bit(data->data(format))));
                return;
            }
        }
    });
}

QString frmMain::StatusText() const {
    return m_statusText->text();
}

void frmMain::UpdateStatusBarText(const QString &text) {
    PROC("modMain UpdateStatusBarText");
    m_statusText->setText(text);
    statusBar()->repaint();
}

void frmMain::Timer1_Timer() {
    PROC("frmMain Timer1_Timer");
    modMain::Guarded([this] {
        ShowStatusPanels();
        // The focus resting on the frame itself goes back to the control that last had it in the
        // active document window.
        if (QApplication::activeWindow() != this) {
            return;
        }
        QWidget *focus = QApplication::focusWidget();
        const bool onFrame = !focus || focus == this || focus == m_mdi ||
                             qobject_cast<QMdiSubWindow *>(focus) != nullptr;
        if (!onFrame) {
            return;
        }
        QMdiSubWindow *sub = m_mdi->activeSubWindow();
        if (!sub || !sub->widget()) {
            return;
        }
        if (QWidget *control = sub->widget()->focusWidget()) {
            control->setFocus();
        }
    });
}

QRect frmMain::Placement() const {
    return QRect(x(), y(), width(), height());
}

void frmMain::SetLeft(int left) {
    move(left, y());
}

void frmMain::SetTop(int top) {
    move(x(), top);
}

void frmMain::SetWidth(int w) {
    resize(w, height());
}

void frmMain::SetHeight(int h) {
    resize(width(), h);
}

bool frmMain::IsMinimised() const {
    return isMinimized();
}

double frmMain::LogicalDpiX() const {
    return logicalDpiX() > 0 ? logicalDpiX() : 96.0;
}

double frmMain::LogicalDpiY() const {
    return logicalDpiY() > 0 ? logicalDpiY() : 96.0;
}

modMain::MsgBoxResult frmMain::ShowMessage(const QString &text, modMain::MsgBoxButtons buttons,
                                           modMain::MsgBoxIcon icon) {
    QMessageBox box(this);
    box.setWindowTitle(u"Mavrolen"_s);
    box.setText(text);
    switch (icon) {
    case modMain::vbCritical:
        box.setIcon(QMessageBox::Critical);
        break;
    case modMain::vbQuestion:
        box.setIcon(QMessageBox::Question);
        break;
    case modMain::vbExclamation:
        box.setIcon(QMessageBox::Warning);
        break;
    case modMain::vbInformation:
        box.setIcon(QMessageBox::Information);
        break;
    default:
        box.setIcon(QMessageBox::NoIcon);
        break;
    }
    switch (buttons) {
    case modMain::vbOKCancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        break;
    case modMain::vbYesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    case modMain::vbYesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    default:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    }
    switch (box.exec()) {
    case QMessageBox::Ok:
        return modMain::vbOK;
    case QMessageBox::Yes:
        return modMain::vbYes;
    case QMessageBox::No:
        return modMain::vbNo;
    default:
        return buttons == modMain::vbOKOnly ? modMain::vbOK : modMain::vbCancel;
    }
}

void frmMain::SetItemEnabled(const QString &name, bool enabled) {
    if (QAction *a = m_items.value(name)) {
        a->setEnabled(enabled);
    }
}

void frmMain::SetItemChecked(const QString &name, bool checked) {
    if (QAction *a = m_items.value(name)) {
        a->setChecked(checked);
    }
}

void frmMain::SetItemCaption(const QString &name, const QString &caption) {
    if (QAction *a = m_items.value(name)) {
        a->setText(caption);
    }
}

void frmMain::SetButtonEnabled(const QString &key, bool enabled) {
    if (QAction *a = m_buttons.value(key)) {
        a->setEnabled(enabled);
    }
}

void frmMain::SetButtonVisible(const QString &key, bool visible) {
    if (QAction *a = m_buttons.value(key)) {
        a->setVisible(visible);
    }
}

void frmMain::SetButtonToolTip(const QString &key, const QString &tip) {
    if (QAction *a = m_buttons.value(key)) {
        a->setToolTip(tip);
    }
}

void frmMain::SetButtonValue(const QString &key, int value) {
    if (QAction *a = m_buttons.value(key)) {
        a->setChecked(value != 0);
    }
}

void frmMain::RefreshToolbar() {
    m_toolbar->update();
}

int frmMain::ChildWindowCount() const {
    return int(m_mdi->subWindowList().size());
}

void frmMain::Arrange(modMain::Arrangement how) {
    switch (how) {
    case modMain::Arrangement::Cascade:
        m_mdi->cascadeSubWindows();
        break;
    case modMain::Arrangement::TileHorizontal:
        TileHorizontal();
        break;
    case modMain::Arrangement::TileVertical:
        TileVertical();
        break;
    case modMain::Arrangement::ArrangeIcons:
        ArrangeIcons();
        break;
    }
}

namespace {

// The windows to tile: the visible ones that are not minimised, in creation order.
QList<QMdiSubWindow *> Tiled(QMdiArea *area) {
    QList<QMdiSubWindow *> list;
    for (QMdiSubWindow *w : area->subWindowList(QMdiArea::CreationOrder)) {
        if (w->isVisible() && !w->isMinimized()) {
            list.append(w);
        }
    }
    return list;
}

// Room left above the row of minimised windows.
int IconRowHeight(QMdiArea *area) {
    for (QMdiSubWindow *w : area->subWindowList()) {
        if (w->isVisible() && w->isMinimized()) {
            return w->height();
        }
    }
    return 0;
}

} // namespace

void frmMain::TileHorizontal() {
    Tile(false);
}

void frmMain::TileVertical() {
    Tile(true);
}

void frmMain::Tile(bool sideBySide) {
    const QList<QMdiSubWindow *> windows = Tiled(m_mdi);
    if (windows.isEmpty()) {
        return;
    }
    const QRect area = m_mdi->viewport()->rect().adjusted(0, 0, 0, -IconRowHeight(m_mdi));
    const int n = int(windows.size());
    const int span = sideBySide ? area.width() : area.height();
    for (int i = 0; i < n; ++i) {
        const int from = span * i / n;
        const int to = span * (i + 1) / n;
        windows[i]->showNormal();
        if (sideBySide) {
            windows[i]->setGeometry(area.left() + from, area.top(), to - from, area.height());
        } else {
            windows[i]->setGeometry(area.left(), area.top() + from, area.width(), to - from);
        }
    }
}

void frmMain::ArrangeIcons() {
    // Minimised windows line up along the bottom edge, left to right, in rows upwards.
    const QRect area = m_mdi->viewport()->rect();
    int x = area.left();
    int y = -1;
    for (QMdiSubWindow *w : m_mdi->subWindowList(QMdiArea::CreationOrder)) {
        if (!w->isVisible() || !w->isMinimized()) {
            continue;
        }
        if (y < 0) {
            y = area.bottom() + 1 - w->height();
        } else if (x + w->width() > area.right() + 1) {
            x = area.left();
            y -= w->height();
        }
        w->move(x, y);
        x += w->width();
    }
}

void frmMain::RefreshCommands(bool all) {
    if (all) {
        modMain::MenuEnable(modDoc::OpenDocumentCount());
    }
    modMain::MenuEnableDynamic();
    modMain::UpdateToolbarStatus();
}

bool frmMain::ChooseFile(modMain::FileDialogRequest &request) {
    QFileDialog dialog(this);
    dialog.setWindowTitle(request.Save ? u"Save As"_s : u"Open"_s);
    dialog.setAcceptMode(request.Save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode((request.Flags & 0x1000) ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !(request.Flags & 0x2));
    dialog.setNameFilters(NameFilters(request.Filter));
    dialog.setDefaultSuffix(request.DefaultExt);
    // A name typed without extension takes the extension of the chosen kind of file.
    connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString &f) {
        static const QRegularExpression pattern(u"\\(\\*\\.(\\w+)\\)"_s);
        const QRegularExpressionMatch m = pattern.match(f);
        if (m.hasMatch()) {
            dialog.setDefaultSuffix(m.captured(1));
        }
    });
    if (!request.FileName.isEmpty()) {
        dialog.selectFile(request.FileName);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return false;
    }
    request.FileName = dialog.selectedFiles().constFirst();
    return true;
}

bool frmMain::ChooseFont(modMain::FontDialogValues &values) {
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, modFont::FontOf(values), this, u"Font"_s);
    if (!ok) {
        return false;
    }
    values.FontName = chosen.family();
    values.FontSize = chosen.pointSizeF();
    values.FontBold = chosen.bold();
    values.FontItalic = chosen.italic();
    values.FontUnderline = chosen.underline();
    values.FontStrikethru = chosen.strikeOut();
    return true;
}

QString frmMain::PopupMenu(const QString &menu, const QStringList &available) {
    QMenu *popup = m_menus.value(menu);
    if (!popup) {
        return {};
    }
    for (QAction *a : popup->actions()) {
        if (!a->isSeparator()) {
            a->setEnabled(available.contains(a->objectName()));
        }
    }
    QAction *picked = popup->exec(QCursor::pos());
    return picked ? picked->objectName() : QString();
}

bool frmMain::WindowKey(QKeyCombination key) {
    return modMain::RunWindowKey(key);
}

Document *frmMain::NewDocumentWindow() {
    auto *window = new frmDocument;
    QMdiSubWindow *frame = m_mdi->addSubWindow(window);
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->setWindowIcon(windowIcon());
    // The frame's own menu claims the desktop's close key (Ctrl+W) too; the File menu's Close
    // keeps it, so that the key is not ambiguous.
    if (QMenu *menu = frame->systemMenu()) {
        const QKeySequence ctrlW(Qt::CTRL | Qt::Key_W);
        for (QAction *a : menu->actions()) {
            QList<QKeySequence> keys = a->shortcuts();
            if (keys.removeAll(ctrlW) > 0) {
                a->setShortcuts(keys);
            }
        }
    }
    // A new window takes about two thirds of the frame. (While the program starts, the frame is
    // not laid out yet: its own size, less the bars, stands in for the document area.)
    QSize area = m_mdi->viewport()->size();
    if (!isVisible()) {
        area = size() - QSize(0, 120);
    }
    // Never larger than the area it sits in.
    frame->resize(std::min(area.width(), std::max(480, area.width() * 2 / 3)),
                  std::min(area.height(), std::max(320, area.height() * 2 / 3)));
    frame->show();
    return &window->document();
}

void frmMain::OnSubWindowActivated(QMdiSubWindow *frame) {
    auto *window = frame ? qobject_cast<frmDocument *>(frame->widget()) : nullptr;
    if (window && window->unloaded()) {
        return;
    }
    Documents::SetActive(window ? &window->document() : nullptr);
    if (window) {
        window->Form_Activate();
    }
    RefreshCommands(true);
}

bool frmMain::Exit() {
    close();
    return true;
}

void frmMain::SetToolbarVisible(bool visible) {
    m_toolbar->setVisible(visible);
}

void frmMain::SetStatusBarVisible(bool visible) {
    statusBar()->setVisible(visible);
}

void frmMain::BeginBusy() {
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
}

void frmMain::EndBusy() {
    if (QGuiApplication::overrideCursor()) {
        QGuiApplication::restoreOverrideCursor();
    }
}

void frmMain::ResetPointer() {
    while (QGuiApplication::overrideCursor()) {
        QGuiApplication::restoreOverrideCursor();
    }
}

void frmMain::ShowAbout() {
    frmAbout about(false, this);
    about.exec();
}
