// The help commands with and without the guide's help collection, and the help-document mode.
#include "app/frmMain.h"
#include "document/Document.h"
#include "help/frmHelp.h"
#include "help/modHelp.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "util/MainWindowHost.h"

#include <QHelpContentModel>
#include <QHelpEngine>
#include <QHelpIndexModel>
#include <QTabWidget>
#include <QTextBrowser>
#include <QtTest>

using namespace Qt::StringLiterals;

class TestHelp : public QObject {
    Q_OBJECT
private slots:
    void cleanup();
    void contentsAndSearch_data();
    void contentsAndSearch();
    void helpDocumentOpensOnce();
};

void TestHelp::cleanup() {
    modHelp::g_bUseHelpDocument = false;
    delete frmHelp::Instance();
    DocTest::closeAll();
}

void TestHelp::contentsAndSearch_data() {
    QTest::addColumn<QString>("file"); // "guide": the collection built beside the program
    QTest::addColumn<bool>("search");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("icon");
    const QString none = u"There is no Help associated with this project."_s;
    QTest::newRow("no help: contents")
        << u""_s << false << u"Unable to display Help Contents. "_s + none
        << int(modMain::vbInformation);
    QTest::newRow("no help: search") << u""_s << true << u"Unable to display Help Search. "_s + none
                                     << int(modMain::vbInformation);
    QTest::newRow("guide: contents") << u"guide"_s << false << u""_s << 0;
    QTest::newRow("guide: search") << u"guide"_s << true << u""_s << 0;
    QTest::newRow("missing file") << u"/nowhere/Mavrolen.qhc"_s << false
                                  << u"The help file /nowhere/Mavrolen.qhc does not exist."_s
                                  << int(modMain::vbNoIcon);
    QTest::newRow("not a collection") << u"notes"_s << true << u"*"_s << int(modMain::vbNoIcon);
}

void TestHelp::contentsAndSearch() {
    QFETCH(QString, file);
    QFETCH(bool, search);
    QFETCH(QString, message);
    QFETCH(int, icon);
    ScopedLog log;
    QTemporaryDir dir;
    if (file == u"guide"_s) {
        file = modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpFileName));
    } else if (file == u"notes"_s) {
        file = dir.filePath(u"Mavrolen.qhc"_s);
        WriteFileBytes(file, "not a help collection");
    }
    modHelp::SetHelpFile(file);
    frmMain main;
    FakeMainWindow frm(&main);
    search ? modHelp::HelpSearch() : modHelp::HelpContents();
    QStringList asked;
    for (qsizetype i = 0; i < frm.Asked.size(); ++i) {
        asked << frm.Asked[i];
        if (frm.AskedIcons.value(i) != icon) {
            asked << u"wrong icon %1"_s.arg(frm.AskedIcons.value(i));
        }
    }

    if (message == u"*"_s) { // the engine's own description of the error
        QCOMPARE(asked.size(), 1);
        QVERIFY(!asked.first().isEmpty());
    } else {
        QCOMPARE(asked, message.isEmpty() ? QStringList() : QStringList{message});
    }
    frmHelp *window = frmHelp::Instance();
    QCOMPARE(window != nullptr, message.isEmpty());
    if (window) {
        QCOMPARE(window->windowTitle(), u"Mavrolen Help"_s);
        QVERIFY(window->isVisible());
        QCOMPARE(window->Tabs()->count(), 3);
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

void TestHelp::helpDocumentOpensOnce() {
    ScopedLog log;
    modHelp::g_bUseHelpDocument = true;
    modHelp::SetHelpFile({});
    modHelp::HelpContents();
    modHelp::HelpSearch();
    QCOMPARE(Documents::All().size(), size_t(1));
    Document *doc = Documents::All().front();
    QCOMPARE(doc->m_sFile, modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpDocumentName)));
    const auto &top = doc->trvOutline().topNodes();
    QCOMPARE(top.size(), size_t(1));
    QCOMPARE(top.front()->Text(), u"Mavrolen Help"_s);
    QVERIFY(top.front()->childList().size() >= 10);
    QVERIFY(log.content().isEmpty());
}

QTEST_MAIN(TestHelp)
#include "tst_help.moc"
