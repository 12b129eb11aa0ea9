// Recovery copies: written for changed documents only, loadable as native documents, removed on
// a clean save or close, offered after the owning process is gone, opened as changed documents
// under their original names, and discarded.
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocV1.h"
#include "document/modFile.h"
#include "document/modRecovery.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"
#include "util/ErrorLog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestRecovery : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void lifecycle_data() {
        QTest::addColumn<bool>("named"); // a document with a file, or a new "Document n"
        QTest::newRow("named") << true;
        QTest::newRow("never saved") << false;
    }
    void lifecycle() {
        QFETCH(bool, named);
        ScopedLog log;
        QTemporaryDir dir;
        modRecovery::SetFolder(dir.filePath("recovery"));
        Document *doc = DocTest::exampleDocument();
        const QString file = named ? dir.filePath("notes.mvd") : QString();
        if (named) {
            QVERIFY(modDoc::DocSaveDocument(*doc, file, false));
        }
        const QString caption = doc->m_sCaption;
        // Unchanged: no copy. Changed but not yet due: none either, until the program is idle.
        doc->m_bDataChanged = false;
        modRecovery::CheckPoint(true);
        QVERIFY(modRecovery::CopyOf(doc).isEmpty());
        doc->m_bDataChanged = true;
        doc->trvOutline().Item(2)->setText("Renamed");
        modRecovery::CheckPoint(false);
        QVERIFY(modRecovery::CopyOf(doc).isEmpty());
        modRecovery::CheckPoint(true);
        modRecovery::WaitForWrites();
        const QString copy = modRecovery::CopyOf(doc);
        QVERIFY(QFile::exists(copy));
        // The copy holds what a save would write.
        QCOMPARE(ReadFileBytes(copy), modDocV1::DocSaveVersion(*doc));
        QVERIFY(ReadFileBytes(copy).contains("{\\ttf_nodelabel Renamed}"));
        // This process's own copies are not offered.
        QVERIFY(modRecovery::Pending().isEmpty());
        // A clean save or a close removes the copy; the user's file is never touched by recovery.
        if (named) {
            const QByteArray saved = ReadFileBytes(file);
            modFile::FileSave();
            QVERIFY(!QFile::exists(copy));
            QVERIFY(ReadFileBytes(file) != saved);
        } else {
            modDoc::DocClose(doc);
            QVERIFY(!QFile::exists(copy));
            doc = DocTest::exampleDocument();
            doc->m_sCaption = caption;
        }
        // A copy whose process is gone (its id rewritten to one that cannot run) is offered.
        doc->m_bDataChanged = true;
        doc->trvOutline().Item(3)->setText("Lost words");
        QVERIFY(modRecovery::WriteNow(*doc));
        const QString info = QFileInfo(modRecovery::CopyOf(doc)).path() + '/' +
                             QFileInfo(modRecovery::CopyOf(doc)).completeBaseName() + ".info";
        QByteArray side = ReadFileBytes(info);
        side.replace("pid " + QByteArray::number(qint64(::getpid())), "pid 2147483000");
        WriteFileBytes(info, side);
        const QString orphan = modRecovery::CopyOf(doc);
        // Forget the document without removing the files, as a crash would.
        QFile::copy(orphan, orphan + ".keep");
        QFile::copy(info, info + ".keep");
        modDoc::DocClose(doc);
        QFile::rename(orphan + ".keep", orphan);
        QFile::rename(info + ".keep", info);
        const QList<modRecovery::Recovered> pending = modRecovery::Pending();
        QCOMPARE(pending.size(), 1);
        QCOMPARE(pending[0].OriginalFile, file);
        QCOMPARE(pending[0].ProcessId, qint64(2147483000));
        // Opened under its caption, it becomes this process's own copy. (What it holds and its
        // discarding are checked through the whole program.)
        Document *back = modDoc::DocOpenRecovered(pending[0]);
        QVERIFY(back && back->m_bDataChanged);
        QVERIFY(named ? back->m_sCaption == file : back->m_sCaption.startsWith("Document "));
        QVERIFY(!QFile::exists(orphan));
        QVERIFY(QFile::exists(modRecovery::CopyOf(back)));
        DocTest::closeAll();
        QVERIFY(QDir(dir.filePath("recovery")).entryList(QDir::Files).isEmpty());
        QVERIFY(!log.content().contains("Error"));
    }
    void largeDocumentSnapshot() {
        // 100,000 entries: the check-point's own work (the snapshot) is reported, the writing runs
        // on a worker; the copy reads back whole.
        QTemporaryDir dir;
        modRecovery::SetFolder(dir.filePath("recovery"));
        std::mt19937 random(3);
        Document *doc = DocTest::generatedDocument(100000, random);
        doc->m_bDataChanged = true;
        QElapsedTimer clock;
        clock.start();
        modRecovery::CheckPoint(true);
        const qint64 ms = clock.elapsed();
        modRecovery::WaitForWrites();
        qInfo("snapshot of 100000 entries on the calling thread: %lld ms", ms);
        Document *copy = DocTest::loadBytes(ReadFileBytes(modRecovery::CopyOf(doc)), "copy.mvd");
        QCOMPARE(copy->trvOutline().Count(), 100000);
        DocTest::closeAll();
    }
};

QTEST_GUILESS_MAIN(TestRecovery)
#include "tst_recovery.moc"
