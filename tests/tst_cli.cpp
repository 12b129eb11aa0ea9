// mavrolen-cli, run as a separate program: outputs, files written and exit codes.
#include "document/modDocV1.h"
#include "support/DocTestSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

class TestCli : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void usageErrors_data();
    void usageErrors();
    void helpAndEncodings_data();
    void helpAndEncodings();
    void tree();
    void cat_data();
    void cat();
    void convert_data();
    void convert();
    void convertFailure();
    void convertByExtension_data();
    void convertByExtension();
    void exportTextOfEmptyTexts();
    void richTexts();
    void check_data();
    void check();

private:
    struct Result {
        int code = -1;
        QByteArray out;
        QByteArray err;
    };
    Result run(const QStringList &args);
    QString write(const QString &name, const QByteArray &bytes);
    QTemporaryDir m_dir;
    QString m_program;
};

void TestCli::initTestCase() {
    m_program = QCoreApplication::applicationDirPath() + "/mavrolen-cli";
    QVERIFY2(QFile::exists(m_program), qPrintable(m_program));
}

TestCli::Result TestCli::run(const QStringList &args) {
    QProcess p;
    p.setWorkingDirectory(m_dir.path());
    p.start(m_program, args);
    if (!p.waitForFinished(60000)) {
        return {};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            p.readAllStandardError()};
}

QString TestCli::write(const QString &name, const QByteArray &bytes) {
    const QString path = m_dir.filePath(name);
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write(bytes);
    return path;
}

static QByteArray readFile(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

void TestCli::usageErrors_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("message");
    QTest::newRow("nothing") << QStringList{} << "no command given";
    QTest::newRow("unknown") << QStringList{"frobnicate", "x"} << "unknown command \"frobnicate\"";
    QTest::newRow("too few") << QStringList{"cat", "a.mvd"} << "cat takes 2 arguments";
    QTest::newRow("too many") << QStringList{"tree", "a", "b"} << "tree takes 1 argument";
    QTest::newRow("missing file") << QStringList{"tree", "none.mvd"} << "cannot open none.mvd";
    QTest::newRow("folder") << QStringList{"check", "."} << "cannot open .";
    QTest::newRow("unknown encoding")
        << QStringList{"convert", "a", "b", "--encoding", "latin9"} << "unknown encoding";
    QTest::newRow("encoding of a reading command")
        << QStringList{"tree", "a.mvd", "--encoding=utf-8"} << "--encoding applies to";
    QTest::newRow("unknown extension")
        << QStringList{"convert", "a.mvd", "b.docx"} << "cannot convert to b.docx";
    QTest::newRow("subtree without key")
        << QStringList{"convert", "a.mvd", "b.mvd", "--subtree"} << "--subtree needs a key";
}

void TestCli::usageErrors() {
    QFETCH(QStringList, args);
    QFETCH(QString, message);
    const Result r = run(args);
    QCOMPARE(r.code, 2);
    QVERIFY2(r.err.contains(message.toUtf8()), r.err.constData());
    QCOMPARE(r.out, QByteArray());
    QCOMPARE(r.err.count('\n'), 1);
}

void TestCli::helpAndEncodings_data() {
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("Windows-1252 by default") << QStringList{}
                                             << QByteArray("Gr\xfc\xdf"
                                                           "e \x80");
    QTest::newRow("UTF-8 asked for") << QStringList{"--encoding", "utf-8"}
                                     << QByteArray("Gr\xc3\xbc\xc3\x9f"
                                                   "e \xe2\x82\xac");
}

void TestCli::helpAndEncodings() {
    QFETCH(QStringList, options);
    QFETCH(QByteArray, expected);
    const Result help = run({"--help"});
    QCOMPARE(help.code, 0);
    QVERIFY(help.out.startsWith("Usage: mavrolen-cli") && help.err.isEmpty());
    // A UTF-8 file in, through both commands that write text.
    const QString in = write("u.txt", "Gr\xc3\xbc\xc3\x9f"
                                      "e \xe2\x82\xac\n");
    for (const char *command : {"convert", "export-text"}) {
        const Result r = run(QStringList{command, in, "u-out.txt"} + options);
        QCOMPARE(r.code, 0);
        QCOMPARE(readFile(m_dir.filePath("u-out.txt")), "0 Text\r\n" + expected + "\r\n\r\n");
    }
}

void TestCli::tree() {
    QByteArray file = DocTest::exampleFile();
    file.replace("{\\ttf_nodelabel House}", "{\\ttf_nodelabel Caf\xe9 \x80}");
    const Result r = run({"tree", write("t.mvd", file)});
    QCOMPARE(r.code, 0);
    QCOMPARE(QString::fromUtf8(r.out),
             QString("0\t-\tProjects\n0.1\tT\tGarden\n0.2\t-\tCaf\u00e9 \u20ac\n"));
    // A plain-text file is one entry.
    const Result t = run({"tree", write("t.txt", "one\ntwo\n")});
    QCOMPARE(t.out, QByteArray("0\t-\tText\n"));
}

void TestCli::cat_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("out");
    QTest::newRow("empty text") << "0.1" << 0 << QByteArray();
    QTest::newRow("with prefix") << "KEY0.1" << 0 << QByteArray();
    QTest::newRow("missing") << "0.7" << 1 << QByteArray();
}

void TestCli::cat() {
    QFETCH(QString, key);
    QFETCH(int, code);
    QFETCH(QByteArray, out);
    const Result r = run({"cat", write("c.mvd", DocTest::exampleFile()), key});
    QCOMPARE(r.code, code);
    QCOMPARE(r.out, out);
    QCOMPARE(r.err.isEmpty(), code == 0);
}

void TestCli::convert_data() {
    QTest::addColumn<QString>("target");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("native to native") << "out.mvd" << DocTest::exampleFile();
    QTest::newRow("extension case") << "out.MVD" << DocTest::exampleFile();
}

void TestCli::convert() {
    QFETCH(QString, target);
    QFETCH(QByteArray, expected);
    const Result r = run({"convert", write("in.mvd", DocTest::exampleFile()), target});
    QCOMPARE(r.code, 0);
    QCOMPARE(readFile(m_dir.filePath(target)), expected);
    QVERIFY(!QFile::exists(m_dir.filePath("out.bak")));
}

void TestCli::convertFailure() {
    const Result r = run({"convert", write("in.mvd", DocTest::exampleFile()), "no/such/dir/x.mvd"});
    QCOMPARE(r.code, 1);
    QVERIFY2(r.err.startsWith("mavrolen-cli: cannot write no/such/dir/x.mvd: error 75"),
             r.err.constData());
}

void TestCli::convertByExtension_data() {
    QTest::addColumn<QStringList>("args"); // after the input file
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("contains"); // in the written file
    QTest::addColumn<QString>("lacks");
    QTest::newRow("html")
        << QStringList{"o.html"} << 0
        << "<p>Plans for the year</p>\n</div>\n<h2>0.1 Garden</h2>\n<h2>0.2 House</h2>"
        << "";
    QTest::newRow("markdown") << QStringList{"o.md"} << 0
                              << "# 0 Projects\n\nPlans for the year\n\n## 0.1 Garden\n\n## "
                                 "0.2 House\n\nPaint the hall\n"
                              << "";
    QTest::newRow("pdf") << QStringList{"o.pdf"} << 0 << "%PDF-"
                         << "";
    QTest::newRow("subtree html") << QStringList{"o2.html", "--subtree", "0.2"} << 0
                                  << "<h1>0.2 House</h1>"
                                  << "Garden";
    QTest::newRow("subtree text") << QStringList{"--subtree", "0.2", "o.txt"} << 0
                                  << "0.2 House\r\nPaint the hall\r\n\r\n"
                                  << "Garden";
    QTest::newRow("subtree native") << QStringList{"o2.mvd", "--subtree", "KEY0.2"} << 0
                                    << "{\\ttf_nodekey 0}\r\n{\\ttf_nodelabel House}"
                                    << "Garden";
    QTest::newRow("no such subtree") << QStringList{"o3.md", "--subtree", "0.9"} << 1 << ""
                                     << "";
}

void TestCli::convertByExtension() {
    QFETCH(QStringList, args);
    QFETCH(int, code);
    QFETCH(QString, contains);
    QFETCH(QString, lacks);
    const Result r = run(QStringList{"convert", write("x.mvd", DocTest::exampleFile())} + args);
    QCOMPARE(r.code, code);
    const QString target = *std::find_if(args.begin(), args.end(), [](const QString &a) {
        return a.contains('.') && !a.startsWith("KEY") && !a.front().isDigit();
    });
    const QByteArray written = readFile(m_dir.filePath(target));
    QCOMPARE(written == "<missing>", code != 0);
    QVERIFY2(written.contains(contains.toUtf8()), written.constData());
    QVERIFY(lacks.isEmpty() || !written.contains(lacks.toUtf8()));
}

void TestCli::exportTextOfEmptyTexts() {
    QByteArray file = DocTest::exampleFile();
    file.replace("{\\rtf1\\ansi Plans for the year\\par }", "");
    file.replace("{\\rtf1\\ansi Paint the hall\\par }", "");
    const QString in = write("e.mvd", file);
    const Result r = run({"export-text", in, "e.txt"});
    QCOMPARE(r.code, 0);
    QCOMPARE(readFile(m_dir.filePath("e.txt")),
             QByteArray("0 Projects\r\n\r\n0.1 Garden\r\n\r\n0.2 House\r\n\r\n"));
    // Several entries to a text file: the warning is answered yes.
    const Result c = run({"convert", in, "e2.txt"});
    QCOMPARE(c.code, 0);
    QCOMPARE(readFile(m_dir.filePath("e2.txt")), readFile(m_dir.filePath("e.txt")));
}

void TestCli::richTexts() {
    const QString in = write("r.mvd", DocTest::exampleFile());
    const Result cat = run({"cat", in, "0.2"});
    QCOMPARE(cat.code, 0);
    QCOMPARE(cat.out, QByteArray("Paint the hall\n"));
    const QByteArray expected("0 Projects\r\nPlans for the year\r\n\r\n0.1 Garden\r\n\r\n"
                              "0.2 House\r\nPaint the hall\r\n\r\n");
    QCOMPARE(run({"export-text", in, "r.txt"}).code, 0);
    QCOMPARE(readFile(m_dir.filePath("r.txt")), expected);
    QCOMPARE(run({"convert", in, "r2.txt"}).code, 0);
    QCOMPARE(readFile(m_dir.filePath("r2.txt")), expected);
    // Compacting stores every text rewritten and compressed; the texts read the same.
    QCOMPARE(run({"compact", in, "c.mvd"}).code, 0);
    const QByteArray compacted = readFile(m_dir.filePath("c.mvd"));
    QVERIFY(!compacted.contains("{\\ttf_nodetext {\\rtf1"));
    QCOMPARE(run({"check", m_dir.filePath("c.mvd")}).code, 0);
    QCOMPARE(run({"cat", m_dir.filePath("c.mvd"), "0.2"}).out, cat.out);
    QCOMPARE(run({"export-text", m_dir.filePath("c.mvd"), "c.txt"}).code, 0);
    QCOMPARE(readFile(m_dir.filePath("c.txt")), expected);
}

void TestCli::check_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("last");
    QTest::newRow("clean") << DocTest::exampleFile() << 0
                           << QByteArray("3 entries, no damage found\n");
    QByteArray orphan = DocTest::exampleFile();
    orphan.replace("{\\ttf_nodekey 0.2}", "{\\ttf_nodekey 0.5}");
    QTest::newRow("orphan") << orphan << 1 << QByteArray("3 entries, 1 problems\n");
    QTest::newRow("unknown tag") << DocTest::exampleFile() + "{\\ttf_x y}\r\n"
                                 << 1 << QByteArray("1 problems\n");
    QTest::newRow("plain text") << QByteArray("just text") << 0
                                << QByteArray("read as one entry\n");
}

void TestCli::check() {
    QFETCH(QByteArray, file);
    QFETCH(int, code);
    QFETCH(QByteArray, last);
    const QString name = file.startsWith("{") ? "k.mvd" : "k.txt";
    const Result r = run({"check", write(name, file)});
    QCOMPARE(r.code, code);
    QVERIFY2(r.out.endsWith(last), r.out.constData());
    QCOMPARE(r.out.count('\n') - 1, code == 0 ? 0 : int(modDocV1::CheckFile(file).Problems.size()));
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
