// Saving and loading never lose the user's file: atomic whole-file writes with the backup rule,
// failed writes and reads (full disks, missing folders, pipes, devices), permissions kept, a kill
// in the middle of a save; recovery copies of changed documents, offered after their process is
// gone and opened as changed documents under their original names.
#include "document/DocFiles.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocV1.h"
#include "document/modFile.h"
#include "document/modRecovery.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"
#include "util/ErrorLog.h"
#include "util/modGlobals.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <optional>
#include <random>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The files of a folder, hidden ones included (a temporary file left over would show).
QStringList filesIn(const QString &path) {
    return QDir(path).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

mode_t modeOf(const QString &path) {
    struct stat st {};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_mode & 07777 : 0;
}

// A small tmpfs mounted on a folder for the life of the object, when the system lets us.
struct SmallDisk {
    QByteArray at;
    explicit SmallDisk(const QString &folder) {
        QDir().mkpath(folder);
        const QByteArray f = QFile::encodeName(folder);
        if (::mount("tmpfs", f.constData(), "tmpfs", 0, "size=64k") == 0) {
            at = f;
        }
    }
    ~SmallDisk() {
        if (!at.isEmpty()) {
            ::umount2(at.constData(), MNT_DETACH);
        }
    }
};

constexpr const char *kHelperVariable = "MAVROLEN_SAVE_HELPER";

// The helper process of the kill test: saves a large generated document with backups on over
// the file named in the variable, telling the test when the save starts.
int saveHelper() {
    std::mt19937 random(7);
    Document *doc = DocTest::generatedDocument(8000, random);
    modGlobals::Backup = true;
    std::fputs("go\n", stdout);
    std::fflush(stdout);
    return modDoc::DocSaveDocument(*doc, qEnvironmentVariable(kHelperVariable), true) ? 0 : 1;
}

} // namespace

class TestDocSave : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writeReplacesWholeFile_data() {
        QTest::addColumn<QString>("mode");      // of the old file, in octal; empty: there is none
        QTest::addColumn<QString>("backup");    // the option
        QTest::addColumn<QString>("hadBackup"); // empty: none; "!" after it: read-only
        QTest::addColumn<QString>("backupAfter");
        AddRows({
            {"new file", "", "yes", "", ""},
            {"no backup", "644", "", "", ""},
            {"old backup replaced", "600", "yes", "older", "current"},
            {"read-only backup kept", "640", "yes", "older!", "older"},
        });
    }
    void writeReplacesWholeFile() {
        QFETCH(QString, mode);
        QFETCH(QString, backup);
        QFETCH(QString, hadBackup);
        QFETCH(QString, backupAfter);
        QTemporaryDir dir;
        const QString path = dir.filePath("plan.mvd");
        const QString bak = dir.filePath("plan.bak");
        const mode_t mask = ::umask(0);
        ::umask(mask);
        if (!mode.isEmpty()) {
            WriteFileBytes(path, "current");
            ::chmod(QFile::encodeName(path).constData(), mode_t(mode.toInt(nullptr, 8)));
        }
        if (!hadBackup.isEmpty()) {
            WriteFileBytes(bak, QString(hadBackup).remove('!').toLatin1());
            ::chmod(QFile::encodeName(bak).constData(), hadBackup.endsWith('!') ? 0444 : 0644);
        }
        modDoc::WriteWholeFile(path, "new contents", !backup.isEmpty());
        QCOMPARE(ReadFileBytes(path), QByteArray("new contents"));
        QCOMPARE(ReadFileBytes(bak),
                 backupAfter.isEmpty() ? QByteArray("<missing>") : backupAfter.toLatin1());
        QCOMPARE(int(modeOf(path)), mode.isEmpty() ? int(0666 & ~mask) : mode.toInt(nullptr, 8));
        // No temporary file is left beside it.
        QCOMPARE(filesIn(dir.path()).join(' '),
                 backupAfter.isEmpty() ? "plan.mvd" : "plan.bak plan.mvd");
        ::chmod(QFile::encodeName(bak).constData(), 0644);
    }
    void failedWriteKeepsOldFile_data() {
        QTest::addColumn<QString>("target"); // relative to the temporary folder
        // "fsize": a file-size limit makes the write fail part way (also for root); "tmpfs": a full
        // 64 KB file system; "locked": a folder the user may not write.
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("reason");
        QTest::newRow("folder is a file")
            << "old.mvd/a.mvd"
            << "" << int(modMain::errPathNotFound) << "Not a directory";
        QTest::newRow("target is a folder")
            << "sub"
            << "" << int(modMain::errPathFileAccess) << "Is a directory";
        QTest::newRow("file size limit")
            << "old.mvd"
            << "fsize" << int(modMain::errDiskFull) << "File too large";
        QTest::newRow("full disk")
            << "disk/old.mvd"
            << "tmpfs" << int(modMain::errDiskFull) << "No space left on device";
        QTest::newRow("folder not writable")
            << "locked/old.mvd"
            << "locked" << int(modMain::errPermissionDenied) << "Permission denied";
    }
    void failedWriteKeepsOldFile() {
        QFETCH(QString, target);
        QFETCH(QString, fault);
        if (fault == "locked" && ::geteuid() == 0) {
            QSKIP("the superuser may write any folder");
        }
        ScopedLog log;
        QTemporaryDir dir;
        std::optional<SmallDisk> disk;
        if (fault == "tmpfs") {
            disk.emplace(dir.filePath("disk"));
            if (disk->at.isEmpty()) {
                QSKIP("cannot mount a small tmpfs here");
            }
        }
        // The old file beside the target when its folder is there, else in the temporary folder.
        QDir().mkpath(dir.filePath("locked"));
        QDir(dir.path()).mkdir("sub");
        const QString old =
            fault == "tmpfs" || fault == "locked" ? dir.filePath(target) : dir.filePath("old.mvd");
        const QString bak = modDoc::BackupName(old);
        WriteFileBytes(old, "old contents");
        WriteFileBytes(bak, "older backup");
        if (fault == "locked") {
            ::chmod(QFile::encodeName(dir.filePath("locked")).constData(), 0555);
        }
        int raised = 0;
        QString description;
        try {
            std::optional<ScopedFileSizeLimit> limit;
            if (fault == "fsize") {
                limit.emplace(4096);
            }
            modDoc::WriteWholeFile(dir.filePath(target), QByteArray(1 << 20, 'n'), true);
        } catch (const modMain::RuntimeError &e) {
            raised = e.Number;
            description = e.Description;
        }
        ::chmod(QFile::encodeName(dir.filePath("locked")).constData(), 0755);
        QTEST(raised, "number");
        QTEST(description, "reason");
        QCOMPARE(ReadFileBytes(old), QByteArray("old contents"));
        QCOMPARE(ReadFileBytes(bak), QByteArray("older backup"));
        QCOMPARE(filesIn(QFileInfo(old).path()).size(), 2); // nothing left over
    }
    void failedSaveKeepsDocumentChanged() {
        // Save clears the changed mark first; a save that fails puts it back, keeps the document's
        // name, and leaves the system's reason for the window's message.
        ScopedLog log;
        QTemporaryDir dir;
        Document *doc = DocTest::exampleDocument();
        const QString good = dir.filePath("good.mvd");
        doc->m_sFile = good;
        doc->m_bDataChanged = true;
        modFile::FileSave();
        QVERIFY(!doc->m_bDataChanged);
        doc->m_bDataChanged = true;
        {
            ScopedFileSizeLimit limit(64);
            modFile::FileSave();
        }
        QVERIFY(doc->m_bDataChanged);
        QCOMPARE(modDoc::LastFailureReason(), QString("File too large"));
        QVERIFY(
            log.content().contains("Error 61 - File too large\r\nMavrolen modDoc WriteWholeFile"));
        QVERIFY(!modDoc::DocSaveDocument(*doc, dir.filePath("none/x.mvd"), true));
        QCOMPARE(doc->m_sFile, good);
        DocTest::closeAll();
    }
    void unreadableFilesOpenNothing_data() {
        QTest::addColumn<QString>("name"); // in the temporary folder
        QTest::addColumn<int>("number");   // 0: missing, silently nothing
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing") << "none.mvd" << 0 << "";
        QTest::newRow("folder") << "sub" << int(modMain::errPathFileAccess) << "Is a directory";
        QTest::newRow("pipe") << "fifo" << int(modMain::errPathFileAccess) << "Not a regular file";
    }
    void unreadableFilesOpenNothing() {
        // Nothing is read, nothing waits, and no empty document stands in under the name.
        QFETCH(QString, name);
        ScopedLog log;
        QTemporaryDir dir;
        QDir(dir.path()).mkdir("sub");
        ::mkfifo(QFile::encodeName(dir.filePath("fifo")).constData(), 0600);
        const int before = modDoc::OpenDocumentCount();
        modMain::Err = {};
        QCOMPARE(modDoc::DocLoad(QDir(dir.path()).filePath(name)), nullptr);
        QCOMPARE(modDoc::OpenDocumentCount(), before);
        QTEST(int(modMain::Err.Number), "number");
        QTEST(modMain::Err.Description, "reason");
    }
    void recoveryCopies_data() {
        QTest::addColumn<bool>("named"); // a document with a file, or a new "Document n"
        QTest::newRow("named") << true;
        QTest::newRow("never saved") << false;
    }
    void recoveryCopies() {
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
        // Opening and discarding it are checked through the whole program.
        QVERIFY(!log.content().contains("Error"));
    }
    void killDuringSave() {
        // A save killed at random points leaves either the old file and the older backup, or the
        // new file with the old one as its backup; never a missing or partial file.
        const int kills = qEnvironmentVariableIntValue("MAVROLEN_KILLS") > 0
                              ? qEnvironmentVariableIntValue("MAVROLEN_KILLS")
                              : 10;
        QTemporaryDir dir;
        const QString path = dir.filePath("big.mvd");
        const QString bak = dir.filePath("big.bak");
        auto start = [&](QProcess &p) {
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(kHelperVariable, path);
            p.setProcessEnvironment(env);
            p.start(QCoreApplication::applicationFilePath(), {});
            QVERIFY(p.waitForReadyRead(120000));
        };
        // One whole save gives the new contents and how long the save takes.
        WriteFileBytes(path, "old");
        QElapsedTimer clock;
        {
            QProcess p;
            start(p);
            clock.start();
            QVERIFY(p.waitForFinished(120000));
            QCOMPARE(p.exitCode(), 0);
        }
        const qint64 saveMs = qMax<qint64>(clock.elapsed(), 1);
        const QByteArray fresh = ReadFileBytes(path);
        QVERIFY(fresh.size() > (1 << 18));
        std::mt19937 random(11);
        for (int i = 0; i < kills; ++i) {
            // Fresh files: a save killed after making the backup leaves it a second name of the
            // file, which writing "older" into would change too.
            for (const QString &f : filesIn(dir.path())) {
                QFile::remove(dir.filePath(f));
            }
            WriteFileBytes(path, "old");
            WriteFileBytes(bak, "older");
            QProcess p;
            start(p);
            QThread::msleep(random() % quint64(saveMs * 5 / 4 + 1));
            ::kill(pid_t(p.processId()), SIGKILL);
            p.waitForFinished(10000);
            const QByteArray now = ReadFileBytes(path);
            const QByteArray backup = ReadFileBytes(bak);
            if (now == "old") {
                QVERIFY(backup == "older" || backup == "old");
            } else {
                QCOMPARE(now, fresh);
                QCOMPARE(backup, QByteArray("old"));
            }
        }
    }
};

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    if (qEnvironmentVariableIsSet(kHelperVariable)) {
        return saveHelper();
    }
    TestDocSave test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_docsave.moc"
