// Saving never destroys the previous file: safe whole-file writes, the backup rule, the read-only
// rule, and the format an extension implies.
#include "document/modDoc.h"
#include "support/TestSupport.h"
#include "util/ErrorLog.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

class TestDocSave : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void versionFromExtension_data();
    void versionFromExtension();
    void writeReplacesWholeFile();
    void failedWriteKeepsOldFile_data();
    void failedWriteKeepsOldFile();
    void backupRule_data();
    void backupRule();
    void readOnlyRule();
};

void TestDocSave::versionFromExtension_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("version");
    AddRows({
        {"native", "/x/notes.mvd", "1"},
        {"native upper case", "/x/notes.MVD", "1"},
        {"text", "notes.txt", "-1"},
        {"text upper case", "notes.TXT", "-1"},
        {"other extension", "notes.doc", "-1"},
        {"no extension", "notes", "-1"},
        {"double extension", "notes.mvd.txt", "-1"},
    });
}

void TestDocSave::versionFromExtension() {
    QFETCH(QString, path);
    QFETCH(QString, version);
    QCOMPARE(modDoc::DocDefaultVersionFromExt(path), version);
}

void TestDocSave::writeReplacesWholeFile() {
    QTemporaryDir dir;
    const QString path = dir.filePath("a.mvd");
    WriteFileBytes(path, QByteArray(1000, 'x'));
    modDoc::WriteWholeFile(path, "short");
    QCOMPARE(ReadFileBytes(path), QByteArray("short"));
    // No temporary file is left beside it.
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{"a.mvd"});
}

void TestDocSave::failedWriteKeepsOldFile_data() {
    QTest::addColumn<QString>("target"); // relative to the temporary folder
    // A file-size limit makes the write fail part way, as a full disk does, even for root.
    QTest::addColumn<bool>("diskFull");
    QTest::newRow("folder missing") << "nowhere/a.mvd" << false;
    QTest::newRow("folder is a file") << "old.mvd/a.mvd" << false;
    QTest::newRow("target is a folder") << "sub" << false;
    QTest::newRow("disk full") << "old.mvd" << true;
}

void TestDocSave::failedWriteKeepsOldFile() {
    QFETCH(QString, target);
    QFETCH(bool, diskFull);
    ScopedLog log;
    QTemporaryDir dir;
    const QString old = dir.filePath("old.mvd");
    WriteFileBytes(old, "old contents");
    QDir(dir.path()).mkdir("sub");
    int raised = 0;
    try {
        std::optional<ScopedFileSizeLimit> limit;
        if (diskFull) {
            limit.emplace(4096);
        }
        modDoc::WriteWholeFile(dir.filePath(target), QByteArray(1 << 20, 'n'));
    } catch (const modMain::RuntimeError &e) {
        raised = e.Number;
    }
    if (diskFull) {
        QCOMPARE(raised, int(modMain::errDiskFull));
    } else {
        QVERIFY(raised == modMain::errPathFileAccess || raised == modMain::errPathNotFound ||
                raised == modMain::errPermissionDenied);
    }
    QCOMPARE(ReadFileBytes(old), QByteArray("old contents"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{"old.mvd"}); // nothing left over
}

void TestDocSave::backupRule_data() {
    QTest::addColumn<bool>("hadBackup");
    QTest::addColumn<bool>("backupReadOnly");
    QTest::addColumn<QByteArray>("backupAfter");
    QTest::addColumn<bool>("fileStays");
    QTest::newRow("first backup") << false << false << QByteArray("current") << false;
    QTest::newRow("old backup replaced") << true << false << QByteArray("current") << false;
    QTest::newRow("read-only backup kept") << true << true << QByteArray("older") << true;
}

void TestDocSave::backupRule() {
    QFETCH(bool, hadBackup);
    QFETCH(bool, backupReadOnly);
    QFETCH(QByteArray, backupAfter);
    QFETCH(bool, fileStays);
    QTemporaryDir dir;
    const QString path = dir.filePath("plan.mvd");
    const QString backup = dir.filePath("plan.bak");
    WriteFileBytes(path, "current");
    if (hadBackup) {
        WriteFileBytes(backup, "older");
        if (backupReadOnly) {
            QFile::setPermissions(backup, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
        }
    }
    modDoc::DocBackup(path);
    QCOMPARE(ReadFileBytes(backup), backupAfter);
    QCOMPARE(QFile::exists(path), fileStays);
    QFile::setPermissions(backup, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

void TestDocSave::readOnlyRule() {
    QTemporaryDir dir;
    const QString path = dir.filePath("a.mvd");
    QVERIFY(!modDoc::FileReadOnly(path)); // missing
    WriteFileBytes(path, "x");
    QVERIFY(!modDoc::FileReadOnly(path));
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    QVERIFY(modDoc::FileReadOnly(path));
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

QTEST_GUILESS_MAIN(TestDocSave)
#include "tst_docsave.moc"
