// The whole program as a user drives it: files named on its command line, the main window with
// its document windows, menus and toolbar, the File commands and their dialogs, questions,
// shortcuts, settings and the workspace; drops, Window arrangements, the find and replace dialog,
// the help commands with and without the guide's help collection, the question what to print,
// the preview and printing on a PDF printer.
#include "app/frmMain.h"
#include "app/modCommandState.h"
#include "app/modMain.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modFile.h"
#include "document/modRecovery.h"
#include "editor/frmDocument.h"
#include "help/frmHelp.h"
#include "help/modHelp.h"
#include "outline/modNodes.h"
#include "print/PrintPages.h"
#include "print/PrintUi.h"
#include "print/frmPreview.h"
#include "search/frmSearch.h"
#include "search/modSearch.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/MainWindowHost.h"
#include "util/modGlobals.h"

#include <QPrinter>
#include <QtHelp>
#include <QtTest>
#include <QtWidgets>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// The program's arguments: two document files, written only while the start-up test runs so that
// the other tests start without them, and a file that never exists.
QStringList g_files;

// The program's main window as at start-up, with its questions and file dialogs answered from the
// fake's queues.
struct App {
    frmMain frm;
    FakeMainWindow fake{&frm};

    // `answers`: for the questions asked while the program starts.
    explicit App(const QList<modMain::MsgBoxResult> &answers = {}) {
        fake.Answers = answers;
        frm.MDIForm_Load();
        frm.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frm));
        frm.activateWindow();
    }
    ~App() {
        // Whatever is still open goes without questions.
        for (Document *doc : Documents::All()) {
            doc->m_bDataChanged = false;
        }
        frm.mdiArea()->closeAllSubWindows();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QList<frmDocument *> windows() const {
        QList<frmDocument *> list;
        for (QMdiSubWindow *s : frm.mdiArea()->subWindowList(QMdiArea::CreationOrder)) {
            if (auto *w = qobject_cast<frmDocument *>(s->widget()); w && !w->unloaded()) {
                list.append(w);
            }
        }
        return list;
    }
    frmDocument *active() const {
        QMdiSubWindow *s = frm.mdiArea()->activeSubWindow();
        return s ? qobject_cast<frmDocument *>(s->widget()) : nullptr;
    }
    void key(int k, Qt::KeyboardModifiers mods, QWidget *target = nullptr) {
        if (!target) {
            target = active() ? static_cast<QWidget *>(active()->trvOutline()) : &frm;
        }
        QTest::keyClick(target, Qt::Key(k), mods);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

// Types a label into the outline's editor and accepts it.
void TypeLabel(QTreeView *tree, const QString &text) {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QPointer<QLineEdit> editor = tree->viewport()->findChild<QLineEdit *>();
    QVERIFY(editor);
    editor->selectAll();
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
    // The delegate commits on the next turn of the event loop.
    QTRY_VERIFY(!editor || !editor->isVisible());
    QTest::qWait(0);
}

} // namespace

class TestApplication : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_settings = std::make_unique<ScopedSettings>();
        m_log = std::make_unique<ScopedLog>();
    }

    void cleanup() {
        QFile::remove(g_files[0]);
        QFile::remove(g_files[1]);
        modHelp::g_bUseHelpDocument = false;
        delete frmHelp::Instance();
        DocTest::closeAll();
        m_log.reset();
        m_settings.reset();
    }

    void commandLineFilesOpenInOrder() {
        WriteFileBytes(g_files[0], DocTest::exampleFile());
        WriteFileBytes(g_files[1], DocTest::exampleFile());
        // A workspace and the new-document option are both ignored when files are named.
        modSettings::SaveSetting(u"Workspace"_s, u"1"_s, g_files[0]);
        modSettings::SaveSetting(u"Settings"_s, u"StartWithNewDocument"_s, u"True"_s);
        App app;
        QStringList opened;
        for (frmDocument *w : app.windows()) {
            opened << w->document().m_sFile;
        }
        QCOMPARE(opened, g_files.mid(0, 2));
        QCOMPARE(Documents::Active()->m_sFile, g_files[1]);
        QCOMPARE(Documents::Active()->m_sCaption, g_files[1]);
        // The missing file was passed on, and failed quietly.
        QVERIFY(!m_log->content().contains(u"missing.mvd"_s));
    }

    void newEditSaveReopen() {
        App app;
        QVERIFY(app.windows().isEmpty());
        app.key(Qt::Key_N, Qt::ControlModifier, &app.frm);
        QCOMPARE(app.windows().size(), 1);
        frmDocument *w = app.active();
        QCOMPARE(w->parentWidget()->windowTitle(), u"Document 1"_s);
        // The new root's label is being edited: typing renames it.
        TypeLabel(w->trvOutline(), u"Plans"_s);
        QCOMPARE(w->document().trvOutline().SelectedItem()->Text(), u"Plans"_s);

        w->txtRTF()->setFocus();
        QTest::keyClicks(w->txtRTF(), u"hello world"_s);
        app.fake.FileNames << path(u"plans.mvd"_s);
        app.key(Qt::Key_S, Qt::ControlModifier, w->txtRTF());
        QCOMPARE(app.fake.FileRequests.size(), 1);
        QCOMPARE(app.fake.FileRequests[0].FileName,
                 QString()); // an unnamed document offers no name
        QCOMPARE(w->parentWidget()->windowTitle(), path(u"plans.mvd"_s));

        // Closing a saved document asks nothing.
        app.key(Qt::Key_W, Qt::ControlModifier, w->txtRTF());
        QVERIFY(app.windows().isEmpty());
        QVERIFY(app.fake.Asked.isEmpty());

        app.fake.FileNames << path(u"plans.mvd"_s);
        app.key(Qt::Key_O, Qt::ControlModifier, &app.frm);
        QCOMPARE(app.windows().size(), 1);
        QCOMPARE(app.active()->document().trvOutline().SelectedItem()->Text() + u": "_s +
                     app.active()->txtRTF()->toPlainText(),
                 u"Plans: hello world"_s);

        // Save As offers the document's name without its extension; the text export asks for text;
        // cancelled dialogs change nothing.
        app.fake.FileRequests.clear();
        for (const QString &item : {u"mnuFileSaveAs"_s, u"mnuFileExportText"_s, u"mnuFileOpen"_s,
                                    u"mnuFileImportText"_s}) {
            app.frm.Item(item)->trigger();
        }
        QCOMPARE(app.fake.FileRequests.size(), 4);
        QVERIFY(app.fake.FileRequests[0].Save && !app.fake.FileRequests[2].Save);
        QCOMPARE(app.fake.FileRequests[0].FileName, path(u"plans"_s));
        QCOMPARE(app.fake.FileRequests[1].DefaultExt, u"txt"_s);
        QCOMPARE(app.windows().size(), 1);
        QCOMPARE(app.active()->document().m_sFile, path(u"plans.mvd"_s));
    }

    void keyboardOutline() {
        const QString file = path(u"outline.mvd"_s);
        WriteFileBytes(file, DocTest::exampleFile());
        App app;
        modDoc::DocLoad(file);
        frmDocument *w = app.active();
        QTreeView *tree = w->trvOutline();
        tree->setFocus();
        Nodes &nodes = w->document().trvOutline();
        modNodes::NodeSelect(&w->document(), FindEntry(w->document().trvOutline(), u"Garden"_s));
        // Alt+B inserts below and starts the label edit; Alt+Right indents, Alt+Up moves up.
        app.key(Qt::Key_B, Qt::AltModifier, tree);
        TypeLabel(tree, u"Shed"_s);
        app.key(Qt::Key_Right, Qt::AltModifier, tree);
        QCOMPARE(nodes.SelectedItem()->Parent()->Text(), u"Garden"_s);
        app.key(Qt::Key_Left, Qt::AltModifier, tree);
        app.key(Qt::Key_Up, Qt::AltModifier, tree);
        QCOMPARE(nodes.topNodes().front()->childList().front()->Text(), u"Shed"_s);

        // A read-only document: the shortcut is consumed and does nothing.
        w->document().bReadOnly = true;
        modMain::MenuEnableDynamic();
        const qsizetype count = nodes.Count();
        app.key(Qt::Key_I, Qt::AltModifier, tree);
        QCOMPARE(nodes.Count(), count);
        QVERIFY(!app.frm.Item(u"mnuOutlineInsertChild"_s)->isEnabled());
        w->document().bReadOnly = false;
        modMain::MenuEnableDynamic();
        app.key(Qt::Key_I, Qt::AltModifier, tree);
        QCOMPARE(nodes.Count(), count + 1);
    }

    void closingQuestion_data() {
        // Two changed documents a and b; File > Close on a, or File > Exit. The answers: y Yes, n
        // No, c Cancel, the first one to Exit's own question. The outcome per document: S saved and
        // closed, D closed unsaved, K still open and its file untouched, F the save failed (its
        // folder went away): message, still open and changed.
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("answers");
        QTest::addColumn<QString>("outcome");
        AddRows({
            {"close, cancel keeps", "mnuFileClose", "c", "KK"},
            {"close, failed save keeps", "mnuFileClose", "y", "FK"},
            {"exit, not wanted", "mnuFileExit", "n", "KK"},
            {"exit, yes yes", "mnuFileExit", "yyy", "SS"},
            {"exit, no no", "mnuFileExit", "ynn", "DD"},
            {"exit, cancel stops at once", "mnuFileExit", "yc", "KK"},
            {"exit, no then cancel", "mnuFileExit", "ync", "DK"},
            {"exit, yes then cancel", "mnuFileExit", "yyc", "SK"},
            {"exit, failed save stops", "mnuFileExit", "yy", "FK"},
        });
    }
    void closingQuestion() {
        QFETCH(QString, command);
        QFETCH(QString, answers);
        QFETCH(QString, outcome);
        QDir(path(u"sub"_s)).removeRecursively();
        QVERIFY(QDir().mkpath(path(u"sub"_s)));
        const QStringList files{path(u"sub/a.mvd"_s), path(u"b.mvd"_s)};
        App app;
        for (const QString &file : files) {
            WriteFileBytes(file, DocTest::exampleFile());
            Document *doc = modDoc::DocLoad(file);
            FindEntry(doc->trvOutline(), u"House"_s)->setText(u"Changed"_s);
            doc->m_bDataChanged = true;
        }
        if (outcome.startsWith(u'F')) {
            QVERIFY(QDir(path(u"sub"_s)).removeRecursively());
        }
        QList<QPointer<frmDocument>> windows;
        for (frmDocument *w : app.windows()) {
            windows << w;
        }
        modFile::ActivateDocument(&windows[0]->document());
        for (const QChar answer : answers) {
            app.fake.Answers << (answer == u'y'   ? modMain::vbYes
                                 : answer == u'n' ? modMain::vbNo
                                                  : modMain::vbCancel);
        }
        app.frm.Item(command)->trigger();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const bool exit = command == u"mnuFileExit"_s;
        QStringList questions;
        for (const QString &text : std::as_const(app.fake.Asked)) {
            if (text.startsWith(u"Do you want to save the file "_s)) {
                questions << text;
            }
        }
        QCOMPARE(questions.size(), answers.size() - int(exit));
        if (!questions.isEmpty()) {
            QCOMPARE(questions[0], u"Do you want to save the file "_s + files[0] + u"?"_s);
        }
        QCOMPARE(app.fake.Asked[0] == u"Do you really want to exit the application?"_s, exit);
        QCOMPARE(app.fake.Asked.last().contains(u"No such file or directory"_s),
                 outcome.startsWith(u'F'));
        for (int i = 0; i < 2; ++i) {
            const QChar o = outcome[i];
            QCOMPARE(windows[i].isNull(), o == u'S' || o == u'D');
            QCOMPARE(ReadFileBytes(files[i]).contains("Changed"), o == u'S');
            if (o == u'K') {
                QCOMPARE(ReadFileBytes(files[i]), DocTest::exampleFile());
            }
            if (!windows[i].isNull()) {
                QVERIFY(windows[i]->document().m_bDataChanged);
            }
        }
        QCOMPARE(app.frm.isVisible(), !exit || (outcome != u"SS"_s && outcome != u"DD"_s));
        // The session ends (settings and workspace written) before the documents are asked about.
        QCOMPARE(m_log->content().contains(u"Session ended at "_s), exit && answers[0] == u'y');
    }

    void saveAllSkipsReadOnly() {
        const QString a = path(u"a.mvd"_s), b = path(u"b.mvd"_s), c = path(u"c.mvd"_s);
        WriteFileBytes(a, DocTest::exampleFile());
        WriteFileBytes(b, DocTest::exampleFile());
        QFile::setPermissions(b, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        App app;
        modDoc::DocLoad(a);
        modDoc::DocLoad(b);
        modFile::FileNew();
        QCOMPARE(app.windows().size(), 3);
        QVERIFY(app.windows()[1]->parentWidget()->windowTitle().endsWith(u" (read-only)"_s));
        for (frmDocument *w : app.windows()) {
            w->document().trvOutline().Item(1)->setText(u"Edited"_s);
            w->document().m_bDataChanged = true;
        }
        app.fake.FileNames << c; // the unnamed one gets the Save As dialog in turn
        app.frm.Item(u"mnuFileSaveAll"_s)->trigger();
        QVERIFY(ReadFileBytes(a).contains("Edited"));
        QCOMPARE(ReadFileBytes(b), DocTest::exampleFile());
        QVERIFY(ReadFileBytes(c).contains("Edited"));
        QCOMPARE(app.fake.FileRequests.size(), 1);
        QVERIFY(app.fake.Asked.isEmpty());
        QFile::setPermissions(b, QFile::ReadOwner | QFile::WriteOwner);
    }

    void settingsAndWorkspaceCarryOver() {
        const QString a = path(u"a.mvd"_s), b = path(u"b.mvd"_s);
        WriteFileBytes(a, DocTest::exampleFile());
        WriteFileBytes(b, DocTest::exampleFile());
        // The check marks of the options turned over, and of the status bar.
        const QStringList items{u"mnuViewOptionsStartWithNewDoc"_s, u"mnuViewOptionsAutoFitSplit"_s,
                                u"mnuViewToolbar"_s, u"mnuViewOptionsBackupOnSave"_s,
                                u"mnuViewStatusBar"_s};
        const auto checked = [&](App &app) {
            QString out;
            for (const QString &item : items) {
                out += app.frm.Item(item)->isChecked() ? u'1' : u'0';
            }
            return out;
        };
        {
            App app;
            QCOMPARE(checked(app), u"01111"_s);
            for (const QString &item : items.mid(0, 4)) {
                app.frm.Item(item)->trigger();
            }
            for (int i = 1; i <= 12; ++i) {
                modSettings::SaveSetting(u"Workspace"_s, QString::number(i), u"stale"_s);
            }
            modDoc::DocLoad(b);
            modFile::FileNew();
            modDoc::DocLoad(a);
            // Yes to "Do you really want to exit ...?", No to saving the new document.
            app.fake.Answers << modMain::vbYes << modMain::vbNo;
            QVERIFY(app.frm.close());
        }
        // The workspace replaces the stale one and keeps the untitled document's place.
        QCOMPARE(modSettings::GetAllSettings(u"Workspace"_s),
                 (QList<QPair<QString, QString>>{{u"1"_s, b}, {u"2"_s, QString()}, {u"3"_s, a}}));

        // The next start reopens the named files in their order, then adds the new document.
        App next;
        QStringList files;
        for (frmDocument *w : next.windows()) {
            files << w->document().m_sFile;
        }
        QCOMPARE(files, (QStringList{b, a, QString()}));
        QCOMPARE(checked(next), u"10001"_s);
        QVERIFY(next.frm.tbToolBar()->isHidden() && !next.frm.statusBar()->isHidden());
        QVERIFY(m_log->content().startsWith(u"Session started at "_s));
        modGlobals::InitialiseDefaults();
    }

    void recoveryOffer_data() {
        QTest::addColumn<int>("answer");
        QTest::newRow("yes opens the copies") << int(modMain::vbYes);
        QTest::newRow("no discards them") << int(modMain::vbNo);
        QTest::newRow("cancel keeps them for later") << int(modMain::vbCancel);
    }
    void recoveryOffer() {
        QFETCH(int, answer);
        // Two copies left by a process that is gone: a named document and a never saved one.
        const QString file = path(u"r.mvd"_s);
        WriteFileBytes(file, DocTest::exampleFile());
        const QDir folder(modRecovery::Folder());
        QVERIFY(folder.mkpath(u"."_s));
        const QStringList originals{file, QString()};
        for (int i = 0; i < 2; ++i) {
            const QString base = folder.filePath(u"2147483000-"_s + QString::number(i + 1));
            WriteFileBytes(base + u".mvd"_s,
                           QByteArray(DocTest::exampleFile()).replace("Garden", "Lost words"));
            WriteFileBytes(base + u".info"_s,
                           "pid 2147483000\nfile " + originals[i].toUtf8() + "\ncaption " +
                               (i ? QByteArray("Document 3") : file.toUtf8()) + "\n");
        }
        App app({modMain::MsgBoxResult(answer)});
        QCOMPARE(app.fake.Asked.size(), 1);
        QVERIFY(app.fake.Asked[0].contains(file));
        QVERIFY(app.fake.Asked[0].contains(u"Document 3 (never saved)"_s));
        QCOMPARE(app.windows().size(), answer == modMain::vbYes ? 2 : 0);
        QCOMPARE(modRecovery::Pending().size(), answer == modMain::vbCancel ? 2 : 0);
        QCOMPARE(ReadFileBytes(file),
                 DocTest::exampleFile()); // recovery never writes the user's file
        if (answer != modMain::vbYes) {
            return;
        }
        QStringList opened;
        for (frmDocument *w : app.windows()) {
            opened << w->document().m_sFile;
            QVERIFY(w->document().m_bDataChanged);
            QVERIFY(FindEntry(w->document().trvOutline(), u"Lost words"_s));
        }
        opened.sort();
        QCOMPARE(opened, QStringList({QString(), file}));
        // Closed without saving, on purpose: the copies go.
        app.fake.Answers << modMain::vbNo << modMain::vbNo;
        app.frm.Item(u"mnuFileClose"_s)->trigger();
        app.frm.Item(u"mnuFileClose"_s)->trigger();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        modRecovery::WaitForWrites();
        QVERIFY(app.windows().isEmpty());
        QCOMPARE(folder.entryList(QDir::Files), QStringList());
    }

    void menusToolbarAndStatesWithNoDocument() {
        App app;
        frmMain &frm = app.frm;
        QVERIFY(!frm.Item(u"mnuFileBarMRU"_s)->isVisible());
        // The pop-up menus stay off the bar.
        for (QAction *a : frm.menuBar()->actions()) {
            QVERIFY(!a->text().startsWith(u"Confirm"_s));
        }
        // Every button has its picture; of the buttons only New and Open work without a document.
        for (QAction *a : frm.tbToolBar()->actions()) {
            const bool free = a->objectName() == u"New File"_s || a->objectName() == u"Open File"_s;
            QVERIFY2(a->isSeparator() || (!a->icon().pixmap(24, 24).isNull() && a->isVisible() &&
                                          a->isEnabled() == free),
                     qPrintable(a->objectName()));
        }
        // A click on a button without a procedure does nothing and still refreshes.
        frm.tbToolBar_ButtonClick(u"Bold Text"_s);
        frm.tbToolBar_ButtonClick(u"No Such Key"_s);
        QVERIFY(!m_log->content().contains(u"Error"_s));
        // With no document open the program closes without a question, writing its settings.
        QVERIFY(frm.close());
        QVERIFY(app.fake.Asked.isEmpty());
        QVERIFY(m_log->content().contains(u"Session ended at "_s));
        QCOMPARE(modSettings::GetSetting(u"Settings"_s, u"MaxMRUFiles"_s), u"10"_s);
    }

    void dropsOpenFiles_data() {
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
    void dropsOpenFiles() {
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

    void arrangements() {
        App app;
        frmMain &frm = app.frm;
        frm.resize(900, 700);
        for (int i = 0; i < 3; ++i) {
            modDoc::DocInit();
        }
        const QList<QMdiSubWindow *> subs = frm.mdiArea()->subWindowList(QMdiArea::CreationOrder);
        const QRect area = frm.mdiArea()->viewport()->rect();

        for (const bool horizontal : {true, false}) {
            frm.Item(horizontal ? u"mnuWindowTileHorizontal"_s : u"mnuWindowTileVertical"_s)
                ->trigger();
            // Full width, one under the other in creation order; side by side checked as mirrored.
            auto turn = [&](QRect r) {
                return horizontal ? r : QRect(r.y(), r.x(), r.height(), r.width());
            };
            const QRect all = turn(area);
            int next = all.top();
            for (QMdiSubWindow *s : subs) {
                const QRect g = turn(s->geometry());
                QCOMPARE(QList<int>({g.left(), g.width(), g.top()}),
                         QList<int>({all.left(), all.width(), next}));
                next = g.bottom() + 1;
            }
            QCOMPARE(next, all.bottom() + 1);
        }
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
    // Text typed into a new document, formatted and changed through the Edit menu, undone with the
    // pane's key, the recent files of the File menu, and the saved file holding the formatting.
    void editingThroughTheMenus() {
        const QString file = path(u"notes.mvd"_s);
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
        fake.FileNames << file;
        frm.Item(u"mnuFileSaveAs"_s)->trigger();
        Document *saved = DocTest::loadBytes(ReadFileBytes(file), file);
        QByteArray rtf;
        modNodes::NodeTextDecompressIfRequired(saved->trvOutline().topNodes().front()->Tag(), rtf);
        QVERIFY2(rtf.contains("\\b the\\b0"), rtf.constData());
        QCOMPARE(frm.Item(u"mnuFileMRU1"_s)->text(), u"&1 "_s + file);
        QVERIFY(frm.Item(u"mnuFileBarMRU"_s)->isVisible());
    }

    void searchDialog() {
        using namespace modSearch;
        CreateHistories();
        InitialiseHistories();
        g_hisFind.Store("apple");
        g_hisFind.Save();
        g_sFindText = "cat";
        g_sReplaceText.clear();
        g_sSearchWhereText.clear();

        // Opened for finding: no replace controls, and no scope kept yet.
        g_iSearchMode = 1;
        {
            frmSearch dialog;
            QVERIFY(dialog.cmbInput[1]->isHidden() && dialog.cmdInput[1]->isHidden() &&
                    dialog.cmdInput[2]->isHidden() && dialog.lblInput[1]->isHidden());
            QCOMPARE(dialog.cmbInput[2]->count(), 3);
            // The history loads behind an empty entry; the kept expression is in the box.
            QCOMPARE(dialog.cmbInput[0]->count(), 2);
            QCOMPARE(dialog.cmbInput[0]->itemText(1), "apple");
            QCOMPARE(dialog.cmbInput[0]->currentText(), "cat");
            QVERIFY(!dialog.cmdInput[0]->isEnabled());
            dialog.cmbInput[2]->setCurrentIndex(1);
            QVERIFY(dialog.cmdInput[0]->isEnabled());
            QCOMPARE(g_sSearchWhere, "1");
        }

        // Opened for replacing: Replace All follows the replace expression.
        g_iSearchMode = 2;
        frmSearch dialog;
        QVERIFY(!dialog.cmbInput[1]->isHidden());
        QCOMPARE(dialog.cmbInput[2]->currentIndex(), 1); // the kept scope
        QVERIFY(!dialog.cmdInput[2]->isEnabled());
        dialog.cmbInput[0]->setEditText(" a ");
        dialog.cmbInput[1]->setEditText("ba");
        QCOMPARE(g_sFindText, "a");
        QVERIFY(!dialog.cmdInput[2]->isEnabled());
        dialog.cmbInput[1]->setEditText("b");
        QVERIFY(dialog.cmdInput[2]->isEnabled());
        QVERIFY(!dialog.cmdInput[1]->isEnabled());
        // Escape presses "&Close", which saves the histories.
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(modSettings::GetSetting("FindHistory", "1"), "a");
        QCOMPARE(modSettings::GetSetting("ReplaceHistory", "1"), "b");
    }

    void helpContentsAndSearch_data() {
        QTest::addColumn<QString>("file"); // "guide": the collection built beside the program
        QTest::addColumn<bool>("search");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("icon");
        const QString none = u"There is no Help associated with this project."_s;
        QTest::newRow("no help: contents")
            << u""_s << false << u"Unable to display Help Contents. "_s + none
            << int(modMain::vbInformation);
        QTest::newRow("no help: search")
            << u""_s << true << u"Unable to display Help Search. "_s + none
            << int(modMain::vbInformation);
        QTest::newRow("guide: contents") << u"guide"_s << false << u""_s << 0;
        QTest::newRow("guide: search") << u"guide"_s << true << u""_s << 0;
        QTest::newRow("missing file")
            << u"/nowhere/Mavrolen.qhc"_s << false
            << u"The help file /nowhere/Mavrolen.qhc does not exist."_s << int(modMain::vbNoIcon);
        QTest::newRow("not a collection") << u"notes"_s << true << u"*"_s << int(modMain::vbNoIcon);
    }
    void helpContentsAndSearch() {
        QFETCH(QString, file);
        QFETCH(bool, search);
        QFETCH(QString, message);
        QFETCH(int, icon);
        if (file == u"guide"_s) {
            file = modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpFileName));
        } else if (file == u"notes"_s) {
            file = path(u"Mavrolen.qhc"_s);
            WriteFileBytes(file, "not a help collection");
        }
        modHelp::SetHelpFile(file);
        frmMain main;
        FakeMainWindow frm(&main);
        search ? modHelp::HelpSearch() : modHelp::HelpContents();
        const QStringList &asked = frm.Asked;
        QCOMPARE(frm.AskedIcons, QList<int>(asked.size(), icon));
        if (message == u"*"_s) { // the engine's own description of the error
            QCOMPARE(asked.size(), 1);
            QVERIFY(!asked.first().isEmpty());
        } else {
            QCOMPARE(asked, message.isEmpty() ? QStringList() : QStringList{message});
        }
        frmHelp *window = frmHelp::Instance();
        QCOMPARE(window != nullptr, message.isEmpty());
        if (window) {
            QVERIFY(window->isVisible());
            // Contents and Search both open the contents page, and the tree lists the guide.
            QCOMPARE(window->Browser()->source().fileName(), u"index.html"_s);
            QVERIFY(window->Browser()->toPlainText().contains(u"Keyboard shortcuts"_s));
            QHelpContentModel *contents = window->Engine()->contentModel();
            QTRY_VERIFY(!contents->isCreatingContents() && contents->rowCount() == 1);
            QVERIFY(contents->rowCount(contents->index(0, 0)) >= 10);
            QHelpIndexModel *index = window->Engine()->indexModel();
            QTRY_VERIFY(!index->isCreatingIndex() && index->stringList().contains(u"backup"_s));
            // Asking again reuses the window.
            modHelp::HelpContents();
            QCOMPARE(frmHelp::Instance(), window);
        }
    }

    void helpDocumentOpensOnce() {
        modHelp::g_bUseHelpDocument = true;
        modHelp::SetHelpFile({});
        modHelp::HelpContents();
        modHelp::HelpSearch();
        QCOMPARE(Documents::All().size(), size_t(1));
        Document *doc = Documents::All().front();
        QCOMPARE(doc->m_sFile,
                 modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpDocumentName)));
        const auto &top = doc->trvOutline().topNodes();
        QCOMPARE(top.size(), size_t(1));
        QCOMPARE(top.front()->Text(), u"Mavrolen Help"_s);
        QVERIFY(top.front()->childList().size() >= 10);
        QVERIFY(m_log->content().isEmpty());
    }

    void printChoiceDialog_data() {
        QTest::addColumn<QString>("asked");  // the command's flag and whether an entry is selected
        QTest::addColumn<QString>("answer"); // what the user changes before OK
        QTest::addColumn<QString>("expected"); // the choice, and the answers kept for the next time
        AddRows({
            {"current entry preselected", "entry,selected", "",
             "entry children texts|children texts"},
            {"whole document preselected", "document,selected", "",
             "document children texts|children texts"},
            {"nothing selected", "entry,none", "", "document children texts|children texts"},
            {"user picks the entry alone", "document,selected", "entry,-children",
             "entry texts|texts"},
            {"labels only remembered", "entry,selected", "-texts", "entry children|children"},
        });
    }
    // The dialog as the command shows it, answered the way the row says.
    void printChoiceDialog() {
        QFETCH(QString, asked);
        QFETCH(QString, answer);
        QFETCH(QString, expected);
        modPrint::PrintChoice choice;
        modPrint::PrintChoiceLoad(choice);
        choice.CurrentEntryOnly = asked.startsWith("entry");
        bool whileShown = false;
        QTimer::singleShot(0, this, [&] {
            auto *dialog = qobject_cast<PrintChoiceDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            // Child entries are a choice for the current entry only.
            whileShown = dialog->childrenBox()->isEnabled() == dialog->entryButton()->isChecked() &&
                         dialog->entryButton()->isEnabled() == asked.endsWith("selected");
            for (const QString &a : answer.split(',', Qt::SkipEmptyParts)) {
                if (a == "entry") {
                    dialog->entryButton()->setChecked(true);
                } else if (a == "-children") {
                    dialog->childrenBox()->setChecked(false);
                } else if (a == "-texts") {
                    dialog->textsBox()->setChecked(false);
                }
            }
            dialog->accept();
        });
        QVERIFY(modPrint::AskPrintChoice(choice, asked.endsWith(",selected"), nullptr));
        QVERIFY(whileShown);
        modPrint::PrintChoice kept;
        modPrint::PrintChoiceLoad(kept);
        auto words = [](const modPrint::PrintChoice &c) {
            QStringList out;
            for (const auto &[on, word] : {std::pair{c.Children, "children"}, {c.Texts, "texts"}}) {
                if (on) {
                    out << word;
                }
            }
            return out.join(' ');
        };
        QCOMPARE((choice.CurrentEntryOnly ? "entry " : "document ") + words(choice) + '|' +
                     words(kept),
                 expected);
    }

    void printPreviewAndPrint() {
        Document *doc = DocTest::newDocument();
        Node *root = DocTest::add(doc, nullptr, "Root");
        for (int i = 0; i < 400; ++i) {
            DocTest::add(doc, root, QString("Entry %1").arg(i),
                         "{\\rtf1\\ansi One line\\par Another {\\b bold} line\\par A third\\par }");
        }
        const auto entries = modPrint::PrintEntries(*doc, {});
        frmPreview preview(
            [&](const QPageLayout &layout) {
                return std::make_unique<PrintPages>(entries, true, "Long", QFont(), layout);
            },
            modPrint::PageLayoutDefault(), "Long");
        preview.show();
        QVERIFY(QTest::qWaitForWindowExposed(&preview));
        QVERIFY(!preview.complete());
        QCOMPARE(preview.currentPage(), 0);
        preview.setCurrentPage(5);
        QCOMPARE(preview.currentPage(), 5);
        QTRY_VERIFY_WITH_TIMEOUT(preview.complete(), 120000);
        const int count = preview.pages().pageCount();
        QVERIFY(count > 10);
        QCOMPARE(preview.findChild<QSpinBox *>()->maximum(), count);
        preview.setZoomPercent(40);
        QCOMPARE(preview.currentPage(), 5); // zooming keeps the page
        preview.fitWidth();
        auto *scroll = preview.findChild<QScrollArea *>();
        QVERIFY(scroll->widget()->width() <= scroll->viewport()->width() + 1);
        preview.setCurrentPage(count + 10);
        QCOMPARE(preview.currentPage(), count - 1);

        // Every page, then pages 2 to 3.
        for (const int from : {0, 2}) {
            QPrinter printer(QPrinter::HighResolution);
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(path("printed.pdf"));
            modPrint::ApplyPageLayout(printer, preview.pages().pageLayout());
            if (from > 0) {
                printer.setPrintRange(QPrinter::PageRange);
                printer.setFromTo(from, 3);
            }
            QVERIFY(modPrint::PrintOn(printer, preview.pages(), nullptr));
            const QByteArray bytes = ReadFileBytes(path("printed.pdf"));
            QCOMPARE(int(bytes.count("/Type /Page\n")) + int(bytes.count("/Type /Page\r")),
                     from > 0 ? 2 : count);
        }
    }

private:
    std::unique_ptr<ScopedSettings> m_settings;
    std::unique_ptr<ScopedLog> m_log;
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }
};

int main(int argc, char *argv[]) {
    // The program sees the files as its arguments; the test framework sees only its own.
    QTemporaryDir dir;
    QList<QByteArray> args{argv[0]};
    for (const char *name : {"first.mvd", "second.mvd", "missing.mvd"}) {
        g_files << dir.filePath(QString::fromLatin1(name));
        args << g_files.back().toLocal8Bit();
    }
    char *programArgs[] = {args[0].data(), args[1].data(), args[2].data(), args[3].data(), nullptr};
    int programArgc = 4;
    QApplication app(programArgc, programArgs);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    TestApplication test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_application.moc"
