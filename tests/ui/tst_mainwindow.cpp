// The main window: menus, toolbar, close question, drops, Window arrangements, About box.
#include "app/frmMain.h"
#include "app/modCommandState.h"
#include "app/modMain.h"
#include "app/modSession.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modFile.h"
#include "editor/frmDocument.h"
#include "help/frmAbout.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "util/modGlobals.h"

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QtTest>

using namespace Qt::StringLiterals;

class TestMainWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void menusToolbarAndStatesWithNoDocument();
    void dropsOpenFiles_data();
    void dropsOpenFiles();
    void arrangements();
    void aboutBox();
    void editingThroughTheMenus();

private:
    ScopedSettings *m_settings = nullptr;
    ScopedLog *m_log = nullptr;
};

void TestMainWindow::init() {
    m_settings = new ScopedSettings;
    m_log = new ScopedLog;
}

void TestMainWindow::cleanup() {
    delete m_log;
    delete m_settings;
}

void TestMainWindow::menusToolbarAndStatesWithNoDocument() {
    frmMain frm;
    frm.MDIForm_Load();
    QCOMPARE(frm.windowTitle(), u"Mavrolen"_s);
    QVERIFY(!frm.Item(u"mnuFileBarMRU"_s)->isVisible());
    // The pop-up menus exist but stay off the bar.
    QCOMPARE(frm.Menu(u"mnuConfirm"_s)->actions().size(), 9);
    QCOMPARE(frm.Menu(u"mnuConfirmIndent"_s)->actions().size(), 3);
    for (QAction *a : frm.menuBar()->actions()) {
        QVERIFY(!a->text().startsWith(u"Confirm"_s));
    }
    // Every button has its picture; of the buttons only New and Open work without a document.
    int buttons = 0;
    for (QAction *a : frm.tbToolBar()->actions()) {
        if (a->isSeparator()) {
            continue;
        }
        ++buttons;
        QVERIFY2(!a->icon().pixmap(24, 24).isNull(), qPrintable(a->objectName()));
        const bool free = a->objectName() == u"New File"_s || a->objectName() == u"Open File"_s;
        QVERIFY2(a->isEnabled() == free, qPrintable(a->objectName()));
        QVERIFY(a->isVisible());
    }
    QCOMPARE(buttons, 46);
    // A click on a button without a procedure does nothing and still refreshes.
    frm.tbToolBar_ButtonClick(u"Bold Text"_s);
    frm.tbToolBar_ButtonClick(u"No Such Key"_s);
    QVERIFY(!m_log->content().contains(u"Error"_s));
    // Only items that have a procedure and need no document are available.
    QVERIFY(frm.Item(u"mnuHelpAbout"_s)->isEnabled());
    QVERIFY(frm.Item(u"mnuViewMDITaskbar"_s)->isEnabled());
    for (const QString &name : {u"mnuWindowCascade"_s, u"mnuFileSave"_s, u"mnuOutlineInsertChild"_s,
                                u"mnuEditFormatBold"_s}) {
        QVERIFY2(!frm.Item(name)->isEnabled(), qPrintable(name));
    }
    // With a window in the frame the Window menu works.
    modMain::CommandInputs in;
    in.OpenDocuments = 1;
    in.ActiveDocument = true;
    modMain::MenuEnable(1, in);
    modMain::MenuEnableDynamic(in);
    QVERIFY(frm.Item(u"mnuWindowCascade"_s)->isEnabled());
    QVERIFY(!frm.Item(u"mnuWindowNewWindow"_s)->isEnabled()); // it has no action
    QCOMPARE(frm.Item(u"mnuOutlineTaggedEntry"_s)->text(), u"Ta&g entry      Alt+T"_s);
    frm.UpdateStatusBarText(u"Chapter one"_s);
    QCOMPARE(frm.StatusText(), u"Chapter one"_s);
    for (const QString &key : {u"Caps"_s, u"Num"_s, u"Ins"_s}) {
        QVERIFY(frm.statusBar()->findChild<QLabel *>(key));
    }
    // With no document open the program closes without a question, writing its settings.
    FakeMainWindow fake(&frm);
    QVERIFY(frm.close());
    QVERIFY(fake.Asked.isEmpty());
    QVERIFY(m_log->content().contains(u"Session ended at "_s));
    QCOMPARE(modSettings::GetSetting(u"Settings"_s, u"MaxMRUFiles"_s), u"10"_s);
}

void TestMainWindow::dropsOpenFiles_data() {
    QTest::addColumn<QString>("format"); // "urls": the data are names in the current folder
    QTest::addColumn<QString>("data");   // joined by "|"
    QTest::addColumn<QString>("opened"); // the names opened, joined by "|"
    AddRows({
        {"three files in order", "urls", "c.mvd|a.mvd|b b.mvd", "c.mvd|a.mvd|b b.mvd"},
        {"plain text is one name", "text/plain", "not a file name", "not a file name"},
        {"rich text is one name too", "text/rtf", "{\\rtf1 x}", "{\\rtf1 x}"},
        {"image only", "image/png", "\x89PNG", ""},
    });
}

void TestMainWindow::dropsOpenFiles() {
    QFETCH(QString, format);
    QFETCH(QString, data);
    QFETCH(QString, opened);
    // Every name of the table is a file of the current folder, so that it opens.
    QTemporaryDir dir;
    const QString home = QDir::currentPath();
    QDir::setCurrent(dir.path());
    for (const QString &name :
         {u"c.mvd"_s, u"a.mvd"_s, u"b b.mvd"_s, u"not a file name"_s, u"{\\rtf1 x}"_s}) {
        WriteFileBytes(name, "{\\ttf_formatversion 1}\r\n");
    }
    frmMain frm;
    QMimeData mime;
    QList<QUrl> urls;
    for (const QString &name : data.split(u'|')) {
        urls << QUrl::fromLocalFile(dir.filePath(name));
    }
    format == u"urls"_s ? mime.setUrls(urls) : mime.setData(format, data.toUtf8());
    frm.MDIForm_OLEDragDrop(&mime);
    QStringList got, want;
    for (const Document *doc : Documents::All()) {
        got << doc->m_sFile;
    }
    for (const QString &name : opened.split(u'|', Qt::SkipEmptyParts)) {
        want << modMain::FullPathName(name);
    }
    QDir::setCurrent(home);
    QCOMPARE(got, want);
}

void TestMainWindow::arrangements() {
    frmMain frm;
    frm.resize(900, 700);
    frm.MDIForm_Load();
    frm.show();
    QVERIFY(QTest::qWaitForWindowExposed(&frm));
    for (int i = 0; i < 3; ++i) {
        modDoc::DocInit();
    }
    const QList<QMdiSubWindow *> subs = frm.mdiArea()->subWindowList(QMdiArea::CreationOrder);
    QCOMPARE(subs.size(), 3);
    const QRect area = frm.mdiArea()->viewport()->rect();

    frm.Item(u"mnuWindowTileHorizontal"_s)->trigger();
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(subs[i]->geometry().width(), area.width());
        QCOMPARE(subs[i]->geometry().left(), area.left());
        if (i > 0) {
            QCOMPARE(subs[i]->geometry().top(), subs[i - 1]->geometry().bottom() + 1);
        }
    }
    QCOMPARE(subs[2]->geometry().bottom(), area.bottom());

    frm.Item(u"mnuWindowTileVertical"_s)->trigger();
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(subs[i]->geometry().height(), area.height());
        if (i > 0) {
            QCOMPARE(subs[i]->geometry().left(), subs[i - 1]->geometry().right() + 1);
        }
    }
    QCOMPARE(subs[2]->geometry().right(), area.right());

    frm.Item(u"mnuWindowCascade"_s)->trigger();
    QSet<int> lefts;
    for (QMdiSubWindow *s : subs) {
        lefts.insert(s->geometry().left());
    }
    QCOMPARE(lefts.size(), 3);

    subs[0]->showMinimized();
    subs[2]->showMinimized();
    subs[0]->move(300, 10);
    frm.Item(u"mnuWindowArrangeIcons"_s)->trigger();
    QCOMPARE(subs[0]->geometry().left(), area.left());
    QCOMPARE(subs[0]->geometry().bottom(), area.bottom());
    QCOMPARE(subs[2]->geometry().top(), subs[0]->geometry().top());
    QCOMPARE(subs[2]->geometry().left(), subs[0]->geometry().right() + 1);
    // Tiling leaves the row of minimised windows free.
    frm.Item(u"mnuWindowTileHorizontal"_s)->trigger();
    QVERIFY(subs[1]->geometry().bottom() < subs[0]->geometry().top());
}

void TestMainWindow::aboutBox() {
    frmAbout splash(true);
    QCOMPARE(splash.windowTitle(), u"About Mavrolen"_s);
    QVERIFY(splash.cmdOK->isHidden());
    QCOMPARE(splash.lblControl[0]->text(), u"Mavrolen"_s);
    QVERIFY(splash.lblControl[2]->text().startsWith(u"Version "_s));
    frmAbout box(false);
    QVERIFY(!box.cmdOK->isHidden());
    // From the Help menu the box is modal; its OK button closes it.
    frmMain frm;
    frm.MDIForm_Load();
    QTimer::singleShot(0, [] {
        auto *about = qobject_cast<frmAbout *>(QApplication::activeModalWidget());
        QVERIFY(about);
        about->cmdOK->click();
    });
    frm.Item(u"mnuHelpAbout"_s)->trigger();
}

// Text typed into a new document, formatted and changed through the Edit menu, undone with the
// pane's key, the recent files of the File menu, and the saved file holding the formatting.
void TestMainWindow::editingThroughTheMenus() {
    QTemporaryDir dir;
    const QString path = dir.filePath(u"notes.mvd"_s);
    frmMain frm;
    frm.resize(900, 700);
    frm.MDIForm_Load();
    frm.show();
    QVERIFY(QTest::qWaitForWindowExposed(&frm));
    modFile::FileNew();
    auto *window = qobject_cast<frmDocument *>(frm.mdiArea()->activeSubWindow()->widget());
    QVERIFY(window);
    QTextEdit *pane = window->txtRTF();
    pane->setFocus();
    QTRY_VERIFY(frm.Item(u"mnuEditFormatBold"_s)->isEnabled());
    QTest::keyClicks(pane, u"Paint the hall"_s);
    QTextCursor c = pane->textCursor();
    c.setPosition(6);
    c.setPosition(9, QTextCursor::KeepAnchor);
    pane->setTextCursor(c);

    frm.Item(u"mnuEditFormatBold"_s)->trigger();
    QVERIFY(frm.Button(u"Bold Text"_s)->isChecked());
    frm.Item(u"mnuEditCaseToggle"_s)->trigger();
    QCOMPARE(pane->toPlainText(), u"Paint The hall"_s);
    QCOMPARE(pane->textCursor().selectedText(), u"The"_s); // the pane shows the selection kept
    QTest::keyClick(pane, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(pane->toPlainText(), u"Paint the hall"_s);
    c.setPosition(0);
    pane->setTextCursor(c);
    QVERIFY(!frm.Button(u"Bold Text"_s)->isChecked()); // the toolbar follows the caret

    FakeMainWindow fake(&frm);
    fake.FileNames << path;
    frm.Item(u"mnuFileSaveAs"_s)->trigger();
    Document *saved = DocTest::loadBytes(ReadFileBytes(path), path);
    QByteArray rtf;
    modNodes::NodeTextDecompressIfRequired(saved->trvOutline().topNodes().front()->Tag(), rtf);
    QVERIFY2(rtf.contains("\\b the\\b0"), rtf.constData());
    QCOMPARE(frm.Item(u"mnuFileMRU1"_s)->text(), u"&1 "_s + path);
    QVERIFY(frm.Item(u"mnuFileBarMRU"_s)->isVisible());
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
