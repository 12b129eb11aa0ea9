// The windows and lists the main window keeps for the commands: the recently used files of the
// File menu, the find dialog, the help window, printing, the diagnostic window, the pop-up menus
// of the document windows and the status bar's panels.
#include "app/KeyStateUi.h"
#include "app/StatusPanels.h"
#include "app/frmMain.h"
#include "app/modCommandState.h"
#include "app/modMRU.h"
#include "app/modSettings.h"
#include "document/modFile.h"
#include "editor/frmDocument.h"
#include "help/frmDebug.h"
#include "help/frmHelp.h"
#include "print/PrintCommands.h"
#include "search/frmSearch.h"
#include "util/ErrorLog.h"

#include <QAction>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMouseEvent>
#include <QTextEdit>
#include <QTime>

using namespace Qt::StringLiterals;

void frmMain::UpdateMRUFile(const QString &file, bool remove) {
    modMRU::UpdateMRUFile(file, remove);
}

QString frmMain::MRUFile(int index) {
    return modMRU::MenuFile(index);
}

void frmMain::ShowMRUFiles(const QStringList &captions) {
    QMenu *file = Menu(u"mnuFile"_s);
    QAction *after = Item(u"mnuFileBar4"_s);
    while (m_mruItems.size() < captions.size()) {
        const int index = int(m_mruItems.size()) + 1;
        auto *action = new QAction(file);
        action->setObjectName(u"mnuFileMRU"_s + QString::number(index));
        connect(action, &QAction::triggered, this, [index] { modFile::FileMRU(index); });
        file->insertAction(after, action);
        m_mruItems.append(action);
        m_items.insert(action->objectName(), action);
    }
    for (qsizetype i = 0; i < m_mruItems.size(); ++i) {
        QAction *action = m_mruItems[i];
        action->setVisible(i < captions.size());
        if (i < captions.size()) {
            // "&N " is the item's access key; an ampersand of the file name shows as itself.
            const QString &caption = captions[i];
            action->setText(caption.left(3) + QString(caption.mid(3)).replace(u'&', u"&&"_s));
        }
    }
    Item(u"mnuFileBarMRU"_s)->setVisible(!captions.isEmpty());
}

void frmMain::ShowSearchDialog() {
    frmSearch::ShowModal();
}

QString frmMain::ShowHelp(const QString &file, int context) {
    return frmHelp::Open(file, context);
}

void frmMain::EnterWhatsThisMode() {
    frmHelp::EnterWhatsThisMode();
}

void frmMain::PrintSetup() {
    modPrint::FilePrintSetup();
}

void frmMain::Print(bool currentEntryOnly) {
    modPrint::FilePrint(currentEntryOnly);
}

void frmMain::PrintPreview(bool currentEntryOnly) {
    modPrint::FilePrintPreview(currentEntryOnly);
}

void frmMain::SaveSettings() {
    modSettings::SaveSettings();
}

void frmMain::ShowDebug() {
    frmDebug::Open(this);
}

void frmMain::PopupBarMenu(const QString &menu, const QPoint &at) {
    if (QMenu *popup = Menu(menu)) {
        RefreshCommands(false);
        popup->exec(at);
    }
}

void frmMain::TextSelectionChanged() {
    // Runs at every move of the caret: no walk of the whole outline.
    modMain::UpdateToolbarStatus(modMain::CurrentCommandInputs(false));
}

void frmMain::ShowStatusPanels() {
    KeyState keys;
    KeyStateUi::ReadLocks(keys.CapsLock, keys.NumLock);
    if (QMdiSubWindow *sub = m_mdi->activeSubWindow()) {
        if (auto *window = qobject_cast<frmDocument *>(sub->widget())) {
            keys.Overwrite = window->txtRTF()->overwriteMode();
        }
    }
    for (const StatusPanel &panel : StatusPanels::Panels(keys, QTime::currentTime())) {
        if (QLabel *label = m_panels.value(panel.Key)) {
            label->setText(panel.Text);
            label->setEnabled(panel.Enabled);
            label->setToolTip(panel.ToolTip);
        }
    }
}

bool frmMain::eventFilter(QObject *watched, QEvent *event) {
    // A click on a lock key's panel toggles the key; on the typing mode's, the mode of the
    // active text pane.
    if (event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        const int key = StatusPanels::VirtualKey(m_panels.key(qobject_cast<QLabel *>(watched)));
        if (key == 45) {
            QMdiSubWindow *sub = m_mdi->activeSubWindow();
            if (auto *window = sub ? qobject_cast<frmDocument *>(sub->widget()) : nullptr) {
                window->txtRTF()->setOverwriteMode(!window->txtRTF()->overwriteMode());
            }
        } else if (key != 0) {
            KeyStateUi::ToggleLock(key);
        }
        if (key != 0) {
            ShowStatusPanels();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}
