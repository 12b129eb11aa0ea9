// Start-up with files named on the command line: the program is started with two document
// files (and a name that does not exist) as its arguments.
#include "app/frmMain.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "editor/frmDocument.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "util/MainWindowHost.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {
QStringList g_files; // the arguments the program was started with
} // namespace

class TestStartup : public QObject {
    Q_OBJECT
private slots:
    void commandLineFilesOpenInOrder() {
        ScopedSettings settings;
        ScopedLog log;
        // A workspace and the new-document option are both ignored when files are named.
        modSettings::SaveSetting(u"Workspace"_s, u"1"_s, g_files[0]);
        modSettings::SaveSetting(u"Settings"_s, u"StartWithNewDocument"_s, u"True"_s);
        frmMain frm;
        FakeMainWindow fake(&frm);
        frm.MDIForm_Load();
        QStringList opened;
        for (QMdiSubWindow *s : frm.mdiArea()->subWindowList(QMdiArea::CreationOrder)) {
            opened << qobject_cast<frmDocument *>(s->widget())->document().m_sFile;
        }
        QCOMPARE(opened, (QStringList{g_files[0], g_files[1]}));
        QCOMPARE(Documents::Active()->m_sFile, g_files[1]);
        QCOMPARE(Documents::Active()->m_sCaption, g_files[1]);
        // The missing file was passed on, and failed quietly.
        QVERIFY(!log.content().contains(u"missing.mvd"_s));
        fake.Answers << modMain::vbYes;
        QVERIFY(frm.close());
    }
};

int main(int argc, char *argv[]) {
    QTemporaryDir dir;
    for (const char *name : {"first.mvd", "second.mvd"}) {
        QFile f(dir.filePath(QString::fromLatin1(name)));
        if (!f.open(QIODevice::WriteOnly)) {
            return 1;
        }
        f.write("{\\ttf_formatversion 1}\r\n{\\ttf_nodekey 0}\r\n{\\ttf_nodelabel Root}\r\n"
                "{\\ttf_nodetagged False}\r\n{\\ttf_nodevisible True}\r\n{\\ttf_nodetext }\r\n");
        g_files << f.fileName();
    }
    // The program sees the files as its arguments; the test framework sees only its own.
    QByteArray first = g_files[0].toLocal8Bit(), second = g_files[1].toLocal8Bit();
    QByteArray missing = dir.filePath(u"missing.mvd"_s).toLocal8Bit();
    char *programArgs[] = {argv[0], first.data(), second.data(), missing.data(), nullptr};
    int programArgc = 4;
    QApplication app(programArgc, programArgs);
    TestStartup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_startup.moc"
