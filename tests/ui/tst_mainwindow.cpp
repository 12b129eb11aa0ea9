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

namespace {

// Every caption of the menu bar in display order, separators as "-".
const QStringList kCaptions = {u"&File"_s,
                               u"&New"_s,
                               u"&Open"_s,
                               u"&Close"_s,
                               u"-"_s,
                               u"&Save"_s,
                               u"Save &as..."_s,
                               u"Save a&ll"_s,
                               u"-"_s,
                               u"&Import new document"_s,
                               u"From &clipboard"_s,
                               u"From &text file..."_s,
                               u"&Export this document"_s,
                               u"To &clipboard"_s,
                               u"To &text file..."_s,
                               u"To &HTML file..."_s,
                               u"To &Markdown file..."_s,
                               u"To P&DF file..."_s,
                               u"-"_s,
                               u"Print set&up..."_s,
                               u"Print pre&view..."_s,
                               u"&Print..."_s,
                               u"Print &current entry..."_s,
                               u"Print preview current &entry..."_s,
                               u"-"_s,
                               u"-"_s,
                               u"E&xit Alt+F4"_s,
                               u"&Outline"_s,
                               u"Insert &above     Alt+A"_s,
                               u"Insert &below      Alt+B"_s,
                               u"&Insert child        Alt+I"_s,
                               u"-"_s,
                               u"Inden&t               Alt+Right"_s,
                               u"&Unindent           Alt+Left"_s,
                               u"&Move"_s,
                               u"Mo&ve up           Alt+Up"_s,
                               u"Move do&wn      Alt+Down"_s,
                               u"Move &first         Alt+Home"_s,
                               u"Move &last        Alt+End"_s,
                               u"-"_s,
                               u"&Expand             Plus"_s,
                               u"Expa&nd to level"_s,
                               u"&1"_s,
                               u"&2"_s,
                               u"&3"_s,
                               u"&4"_s,
                               u"&5"_s,
                               u"&6"_s,
                               u"&7"_s,
                               u"E&xpand all"_s,
                               u"&Collapse            Minus"_s,
                               u"C&ollapse all"_s,
                               u"-"_s,
                               u"&Copy                 Alt+C"_s,
                               u"&Paste                Alt+P"_s,
                               u"Paste &and delete"_s,
                               u"&Delete               Alt+Delete"_s,
                               u"&Rename            F2"_s,
                               u"-"_s,
                               u"Sort current &entry"_s,
                               u"&Sort all entries"_s,
                               u"-"_s,
                               u"Ta&g / untag entry    Alt+T"_s,
                               u"Paste tagged entries"_s,
                               u"Delete tagged entries"_s,
                               u"-"_s,
                               u"&Font..."_s,
                               u"&Edit"_s,
                               u"Cu&t               Ctrl+X"_s,
                               u"&Copy            Ctrl+C"_s,
                               u"&Paste           Ctrl+V"_s,
                               u"Paste &special"_s,
                               u"&Delete          Del"_s,
                               u"Select &all      Ctrl+A"_s,
                               u"Cl&ear entry text"_s,
                               u"-"_s,
                               u"&Insert"_s,
                               u"Insert &tab             Ctrl+Tab"_s,
                               u"Insert &long date"_s,
                               u"Insert &short date  Ctrl+D"_s,
                               u"Insert ti&me            Ctrl+M"_s,
                               u"-"_s,
                               u"Ca&se"_s,
                               u"&Lower"_s,
                               u"&Proper name"_s,
                               u"&Upper"_s,
                               u"&Toggle"_s,
                               u"-"_s,
                               u"F&ormat"_s,
                               u"&Bold"_s,
                               u"&Italic"_s,
                               u"Stri&kethrough"_s,
                               u"&Underline"_s,
                               u"-"_s,
                               u"&Left"_s,
                               u"C&entre"_s,
                               u"&Right"_s,
                               u"-"_s,
                               u"Bulle&ts"_s,
                               u"In&dent"_s,
                               u"Unind&ent"_s,
                               u"-"_s,
                               u"Change current &font..."_s,
                               u"Change document fo&nt..."_s,
                               u"&Search"_s,
                               u"&Find"_s,
                               u"Find and &replace"_s,
                               u"Repeat &last find"_s,
                               u"&View"_s,
                               u"&Toolbar"_s,
                               u"&MDI taskbar"_s,
                               u"Status &bar"_s,
                               u"-"_s,
                               u"Go to &outline"_s,
                               u"Go to &text"_s,
                               u"-"_s,
                               u"Maximise &left"_s,
                               u"Maximise &right"_s,
                               u"Equalise left &and right"_s,
                               u"&Fit split"_s,
                               u"Move &split"_s,
                               u"-"_s,
                               u"O&ptions..."_s,
                               u"&Back up on saving"_s,
                               u"&Fit split automatically"_s,
                               u"Start with &new document"_s,
                               u"Start with &previous documents"_s,
                               u"Click to &rename entry"_s,
                               u"&Window"_s,
                               u"&New window"_s,
                               u"&Cascade"_s,
                               u"Tile &horizontal"_s,
                               u"Tile &vertical"_s,
                               u"&Arrange icons"_s,
                               u"&Help"_s,
                               u"&Contents"_s,
                               u"&Search for help on..."_s,
                               u"-"_s,
                               u"&About Mavrolen..."_s};

void Walk(const QList<QAction *> &actions, QStringList &out) {
    for (QAction *a : actions) {
        if (a->isSeparator()) {
            out << u"-"_s;
            continue;
        }
        out << a->text();
        if (a->menu()) {
            Walk(a->menu()->actions(), out);
        }
    }
}

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void menuCaptionsInOrder();
    void popupMenusStayOffTheBar();
    void toolbarButtons();
    void enabledStatesWithNoDocument();
    void loadAppliesOptions();
    void closeQuery_data();
    void closeQuery();
    void closeWithoutDocumentsAsksNothing();
    void dropsOpenFiles_data();
    void dropsOpenFiles();
    void arrangements();
    void aboutBox();
    void statusText();
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

void TestMainWindow::menuCaptionsInOrder() {
    frmMain frm;
    QStringList captions;
    Walk(frm.menuBar()->actions(), captions);
    QCOMPARE(captions.size(), kCaptions.size());
    for (qsizetype i = 0; i < captions.size(); ++i) {
        QString got = captions[i];
        if (kCaptions[i].startsWith(u"E&xit"_s)) {
            got = got.simplified(); // the number of blanks before Alt+F4 is free
        }
        QCOMPARE(got, kCaptions[i]);
    }
    QCOMPARE(frm.windowTitle(), u"Mavrolen"_s);
    QVERIFY(frm.Item(u"mnuOutlineMoveLast"_s));
    QCOMPARE(frm.Item(u"mnuOutlineMoveLast"_s)->objectName(), u"mnuOutlineMoveLast"_s);
    QVERIFY(!frm.Item(u"mnuFileBarMRU"_s)->isVisible());
}

void TestMainWindow::popupMenusStayOffTheBar() {
    frmMain frm;
    QMenu *confirm = frm.Menu(u"mnuConfirm"_s);
    QVERIFY(confirm);
    QStringList captions;
    Walk(confirm->actions(), captions);
    QCOMPARE(captions,
             (QStringList{u"Copy &before highlighted entry"_s, u"Copy &after highlighted entry"_s,
                          u"Copy as &child of highlighted entry"_s, u"-"_s,
                          u"Move b&efore highlighted entry"_s, u"Move a&fter highlighted entry"_s,
                          u"Move as c&hild of highlighted entry"_s, u"-"_s, u"Cancel"_s}));
    captions.clear();
    Walk(frm.Menu(u"mnuConfirmIndent"_s)->actions(), captions);
    QCOMPARE(captions, (QStringList{u"&Indent"_s, u"&Unindent"_s, u"Cancel"_s}));
    for (QAction *a : frm.menuBar()->actions()) {
        QVERIFY(!a->text().startsWith(u"Confirm"_s));
    }
}

void TestMainWindow::toolbarButtons() {
    frmMain frm;
    frm.MDIForm_Load();
    const QList<QAction *> actions = frm.tbToolBar()->actions();
    QStringList keys;
    for (QAction *a : actions) {
        if (a->isSeparator()) {
            continue;
        }
        keys << a->objectName();
        QVERIFY2(!a->icon().isNull(), qPrintable(a->objectName()));
        QVERIFY(!a->icon().pixmap(24, 24).isNull());
        if (a->objectName() != u"Tag Entry"_s) {
            QCOMPARE(a->toolTip(), a->objectName());
        }
    }
    QCOMPARE(keys.size(), 46);
    QCOMPARE(keys.mid(0, 3), (QStringList{u"New File"_s, u"Open File"_s, u"Save File"_s}));
    QCOMPARE(keys.mid(25, 8),
             (QStringList{u"Expand to level 1"_s, u"Expand to level 2"_s, u"Expand to level 3"_s,
                          u"Expand to level 4"_s, u"Expand to level 5"_s, u"Expand to level 6"_s,
                          u"Expand to level 7"_s, u"Expand all levels"_s}));
    QCOMPARE(keys.last(), u"Right Align Text"_s);
    // A click on a button without a procedure does nothing and still refreshes.
    frm.tbToolBar_ButtonClick(u"Bold Text"_s);
    frm.tbToolBar_ButtonClick(u"No Such Key"_s);
    QVERIFY(!m_log->content().contains(u"Error"_s));
}

void TestMainWindow::enabledStatesWithNoDocument() {
    frmMain frm;
    frm.MDIForm_Load();
    // Only items that have a procedure and need no document are available.
    QVERIFY(frm.Item(u"mnuHelpAbout"_s)->isEnabled());
    QVERIFY(frm.Item(u"mnuViewMDITaskbar"_s)->isEnabled());
    for (const QString &name :
         {u"mnuWindowCascade"_s, u"mnuWindowTileHorizontal"_s, u"mnuWindowTileVertical"_s,
          u"mnuWindowArrangeIcons"_s, u"mnuWindowNewWindow"_s, u"mnuFileSave"_s,
          u"mnuOutlineInsertChild"_s, u"mnuEditFormatBold"_s, u"mnuSearchFind"_s}) {
        QVERIFY2(!frm.Item(name)->isEnabled(), qPrintable(name));
    }
    // Of the buttons only New and Open work without a document.
    for (QAction *a : frm.tbToolBar()->actions()) {
        if (!a->isSeparator()) {
            const bool free = a->objectName() == u"New File"_s || a->objectName() == u"Open File"_s;
            QVERIFY2(a->isEnabled() == free, qPrintable(a->objectName()));
            QVERIFY(a->isVisible());
        }
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
}

void TestMainWindow::loadAppliesOptions() {
    modSettings::SaveSetting(u"Settings"_s, u"ViewToolbar"_s, u"False"_s);
    modSettings::SaveSetting(u"Settings"_s, u"Backup"_s, u"False"_s);
    frmMain frm;
    frm.MDIForm_Load();
    QVERIFY(m_log->content().startsWith(u"Session started at "_s));
    QVERIFY(frm.tbToolBar()->isHidden());
    QVERIFY(!frm.statusBar()->isHidden());
    QVERIFY(!frm.Item(u"mnuViewToolbar"_s)->isChecked());
    QVERIFY(frm.Item(u"mnuViewStatusBar"_s)->isChecked());
    QVERIFY(!frm.Item(u"mnuViewOptionsBackupOnSave"_s)->isChecked());
    QVERIFY(frm.Timer1()->isActive());
    QCOMPARE(frm.Timer1()->interval(), 250);
    modSettings::SaveSetting(u"Settings"_s, u"ViewToolbar"_s, u"True"_s);
}

void TestMainWindow::closeQuery_data() {
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("closes");
    QTest::newRow("yes") << int(modMain::vbYes) << true;
    QTest::newRow("no") << int(modMain::vbNo) << false;
    QTest::newRow("cancel") << int(modMain::vbCancel) << false;
}

void TestMainWindow::closeQuery() {
    QFETCH(int, answer);
    QFETCH(bool, closes);
    frmMain frm;
    FakeMainWindow fake(&frm);
    frm.MDIForm_Load();
    frm.show();
    modDoc::DocInit()->m_sFile = u"/tmp/x.mvd"_s;
    fake.Answers << modMain::MsgBoxResult(answer);
    const bool closed = frm.close();
    QCOMPARE(closed, closes);
    QCOMPARE(fake.Asked, QStringList{u"Do you really want to exit the application?"_s});
    QCOMPARE(m_log->content().contains(u"Session ended at "_s), closes);
    // Finalise wrote the settings and the workspace, and only then were the windows closed.
    QCOMPARE(modSettings::GetSetting(u"Workspace"_s, u"1"_s), closes ? u"/tmp/x.mvd"_s : QString());
    QCOMPARE(frm.mdiArea()->subWindowList().isEmpty(), closes);
    QCOMPARE(frm.isVisible(), !closes);
}

void TestMainWindow::closeWithoutDocumentsAsksNothing() {
    frmMain frm;
    FakeMainWindow fake(&frm);
    frm.MDIForm_Load();
    frm.show();
    QVERIFY(frm.close());
    QVERIFY(fake.Asked.isEmpty());
    QVERIFY(m_log->content().contains(u"Session ended at "_s));
    QCOMPARE(modSettings::GetSetting(u"Settings"_s, u"MaxMRUFiles"_s), u"10"_s);
}

void TestMainWindow::dropsOpenFiles_data() {
    QTest::addColumn<int>("kind");             // 0 urls, 1 text, 2 rich text, 3 nothing usable
    QTest::addColumn<QStringList>("expected"); // names in the current folder
    QTest::newRow("three files in order") << 0 << QStringList{u"c.mvd"_s, u"a.mvd"_s, u"b b.mvd"_s};
    QTest::newRow("plain text is one name") << 1 << QStringList{u"not a file name"_s};
    QTest::newRow("rich text is one name too") << 2 << QStringList{u"{\\rtf1 x}"_s};
    QTest::newRow("image only") << 3 << QStringList{};
}

void TestMainWindow::dropsOpenFiles() {
    QFETCH(int, kind);
    QFETCH(QStringList, expected);
    // Every name of the table is a file of the current folder, so that it opens.
    QTemporaryDir dir;
    const QString home = QDir::currentPath();
    QDir::setCurrent(dir.path());
    for (const QString &name :
         {u"c.mvd"_s, u"a.mvd"_s, u"b b.mvd"_s, u"not a file name"_s, u"{\\rtf1 x}"_s}) {
        WriteFileBytes(name, "{\\ttf_formatversion 1}\r\n");
    }
    frmMain frm;
    QMimeData data;
    switch (kind) {
    case 0:
        data.setUrls({QUrl::fromLocalFile(dir.filePath(u"c.mvd"_s)),
                      QUrl::fromLocalFile(dir.filePath(u"a.mvd"_s)),
                      QUrl::fromLocalFile(dir.filePath(u"b b.mvd"_s))});
        break;
    case 1:
        data.setText(u"not a file name"_s);
        break;
    case 2:
        data.setData(u"text/rtf"_s, "{\\rtf1 x}");
        break;
    default:
        data.setData(u"image/png"_s, "\x89PNG");
        break;
    }
    frm.MDIForm_OLEDragDrop(&data);
    QStringList opened, want;
    for (const Document *doc : Documents::All()) {
        opened << doc->m_sFile;
    }
    for (const QString &name : expected) {
        want << modMain::FullPathName(name);
    }
    QDir::setCurrent(home);
    QCOMPARE(opened, want);
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
    QCOMPARE(frmAbout::VersionText(1, 2, 0), u"Version 1.2.0"_s);
    QCOMPARE(frmAbout::VersionText(10, 0, 123), u"Version 10.0.123"_s);
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

void TestMainWindow::statusText() {
    frmMain frm;
    frm.UpdateStatusBarText(u"Chapter one"_s);
    QCOMPARE(frm.StatusText(), u"Chapter one"_s);
    for (const QString &key : {u"Caps"_s, u"Num"_s, u"Ins"_s}) {
        QVERIFY(frm.statusBar()->findChild<QLabel *>(key));
    }
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
