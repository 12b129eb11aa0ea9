// The whole program as a user drives it: the main window with its document windows, the File
// commands and their dialogs, questions, shortcuts, settings and the workspace.
#include "app/frmMain.h"
#include "app/modCommandState.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modFile.h"
#include "document/modRecovery.h"
#include "editor/frmDocument.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/MainWindowHost.h"
#include "util/modGlobals.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

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
        m_log.reset();
        m_settings.reset();
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
        QVERIFY(app.fake.FileRequests[0].Save);
        QCOMPARE(app.fake.FileRequests[0].FileName,
                 QString()); // an unnamed document offers no name
        QCOMPARE(w->parentWidget()->windowTitle(), path(u"plans.mvd"_s));
        QVERIFY(!w->document().m_bDataChanged);

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
            {"close, yes saves", "mnuFileClose", "y", "SK"},
            {"close, no discards", "mnuFileClose", "n", "DK"},
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
        QVERIFY(app.windows()[1]->document().bReadOnly);
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
        QCOMPARE(modSettings::GetSetting(u"Settings"_s, u"StartWithNewDocument"_s), u"True"_s);
        QCOMPARE(modSettings::GetSetting(u"Settings"_s, u"AutoSplit"_s), u"False"_s);

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

private:
    std::unique_ptr<ScopedSettings> m_settings;
    std::unique_ptr<ScopedLog> m_log;
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }
};

QTEST_MAIN(TestApplication)
#include "tst_application.moc"
