// mavrolen-cli, run as a separate program: outputs, files written and exit codes.
#include "document/modDocV1.h"
#include "support/DocTestSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <zlib.h>

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
    void failures_data();
    void failures();
    void convertByExtension_data();
    void convertByExtension();
    void exportTextOfEmptyTexts();
    void richTexts();
    void check_data();
    void check();
    void hostileFiles_data();
    void hostileFiles();
    void find_data();
    void find();

private:
    struct Result {
        int code = -1;
        QByteArray out;
        QByteArray err;
    };
    Result run(const QStringList &args, const QStringList &env = {});
    QString write(const QString &name, const QByteArray &bytes);
    QTemporaryDir m_dir;
    QString m_program;
};

void TestCli::initTestCase() {
    m_program = QCoreApplication::applicationDirPath() + "/mavrolen-cli";
    QVERIFY2(QFile::exists(m_program), qPrintable(m_program));
}

TestCli::Result TestCli::run(const QStringList &args, const QStringList &env) {
    QProcess p;
    p.setWorkingDirectory(m_dir.path());
    if (!env.isEmpty()) {
        // The read-failing shim comes before the sanitizers' runtime in the preload order.
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        e.insert("LD_PRELOAD", QCoreApplication::applicationDirPath() + "/libmavrolen_readfail.so");
        e.insert("ASAN_OPTIONS", e.value("ASAN_OPTIONS") + ":verify_asan_link_order=0");
        for (const QString &pair : env) {
            e.insert(pair.section('=', 0, 0), m_dir.filePath(pair.section('=', 1)));
        }
        p.setProcessEnvironment(e);
    }
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
    QTest::newRow("find without text") << QStringList{"find", "a.mvd"} << "find takes a file and";
    QTest::newRow("find option") << QStringList{"find", "a", "b", "--x"} << "unknown option --x";
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

void TestCli::failures_data() {
    // Files that cannot be read or written: exit 1 at once with the system's reason, and the
    // input file is left as it was (also when it is the output).
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QStringList>("env"); // the shim's variable = a file of the folder
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::newRow("read fails") << QStringList{"convert", "f.mvd", "f.mvd"}
                                << QStringList{"MAVROLEN_FAIL_READ=f.mvd"} << 1
                                << "cannot read f.mvd: error 57 - Input/output error";
    QTest::newRow("read ends short")
        << QStringList{"convert", "f.mvd", "f.mvd"} << QStringList{"MAVROLEN_SHORT_READ=f.mvd"} << 1
        << "error 57 - Short read: 0 of";
    QTest::newRow("check read fails")
        << QStringList{"check", "f.mvd"} << QStringList{"MAVROLEN_FAIL_READ=f.mvd"} << 1
        << "Input/output error";
    QTest::newRow("folder") << QStringList{"check", "."} << QStringList{} << 1
                            << "cannot read .: error 75 - Is a directory";
    QTest::newRow("pipe") << QStringList{"tree", "fifo"} << QStringList{} << 1
                          << "error 75 - Not a regular file";
    QTest::newRow("device") << QStringList{"tree", "/dev/zero"} << QStringList{} << 1
                            << "error 75 - Not a regular file";
    QTest::newRow("no such folder")
        << QStringList{"convert", "f.mvd", "no/such/dir/x.mvd"} << QStringList{} << 1
        << "cannot write no/such/dir/x.mvd: error 76 - No such file or directory";
    QTest::newRow("read-only output keeps its mode")
        << QStringList{"convert", "f.mvd", "ro.mvd"} << QStringList{} << 0 << "";
}

void TestCli::failures() {
    QFETCH(QStringList, args);
    QFETCH(QStringList, env);
    QFETCH(int, code);
    QFETCH(QString, message);
    const QString in = write("f.mvd", DocTest::exampleFile());
    const QString ro = write("ro.mvd", "old");
    QFile::setPermissions(ro, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    QFile::remove(m_dir.filePath("fifo"));
    QVERIFY(QProcess::execute("mkfifo", {m_dir.filePath("fifo")}) == 0);
    const Result r = run(args, env);
    QCOMPARE(r.code, code);
    QVERIFY2(r.err.contains(message.toUtf8()), r.err.constData());
    QCOMPARE(readFile(in), DocTest::exampleFile());
    const auto ownerGroupOther = QFile::permissions(ro) & ~QFileDevice::Permissions(0x0f00);
    QCOMPARE(ownerGroupOther, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    QFile::setPermissions(ro, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
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

namespace {

QByteArray entryLines(const QByteArray &key, const QByteArray &label, const QByteArray &text) {
    return "{\\ttf_nodekey " + key + "}\r\n{\\ttf_nodelabel " + label +
           "}\r\n{\\ttf_nodetagged False}\r\n{\\ttf_nodevisible True}\r\n{\\ttf_nodetext " + text +
           "}\r\n";
}

// A stored text that inflates to `size` bytes of rich text, with its true length prefix.
QByteArray inflating(qint64 size) {
    QByteArray raw(size, 'a');
    raw.prepend("{\\rtf1\\ansi ");
    raw.append("}");
    uLongf n = compressBound(uLong(raw.size()));
    QByteArray out(qsizetype(n), '\0');
    compress(reinterpret_cast<Bytef *>(out.data()), &n,
             reinterpret_cast<const Bytef *>(raw.constData()), uLong(raw.size()));
    out.truncate(qsizetype(n));
    return QByteArray::number(raw.size()) + ',' + out;
}

} // namespace

void TestCli::hostileFiles_data() {
    // Each file is read by the tool in a process of its own: the result is clean (done, or a
    // reported failure; never a signal) and the peak memory a bounded multiple of the file.
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("commands"); // each run with the file (and the key 0.1)
    QTest::addColumn<int>("code");             // of the last command
    const QByteArray head = "{\\ttf_formatversion 1}\r\n";
    const QByteArray root = entryLines("0", "Root", "");
    QTest::newRow("length prefix of 2,000,000,000")
        << head + root + entryLines("0.1", "A", "2000000000," + inflating(100).mid(4))
        << QStringList{"check", "tree", "cat"} << 1;
    QByteArray gigabytes = head + root;
    const QByteArray huge = inflating(qint64(200) << 20);
    for (int i = 1; i <= 5; ++i) {
        gigabytes += entryLines("0." + QByteArray::number(i), "Big", huge);
    }
    QTest::newRow("texts inflating to a gigabyte")
        << gigabytes << QStringList{"tree", "export-text", "cat"} << 1;
    QByteArray deep = head + root;
    QByteArray key = "0";
    for (int i = 0; i < 5000; ++i) {
        key += ".1";
        deep += entryLines(key, "L", "");
    }
    QTest::newRow("5,000 levels") << deep << QStringList{"tree", "check", "cat"} << 0;
    QTest::newRow("10 MB label") << head + root + entryLines("0.1", QByteArray(10 << 20, 'x'), "")
                                 << QStringList{"tree", "cat"} << 0;
    QTest::newRow("key at the 64-bit boundary beside an intact entry")
        << head + root + entryLines("0.1", "Fine", "{\\rtf1 intact}") +
               entryLines("0.-9223372036854775808", "X", "50,garbage")
        << QStringList{"tree", "cat"} << 0;
    QByteArray garbage(1 << 20, '\0');
    quint32 x = 12345;
    for (char &c : garbage) {
        x = x * 1103515245u + 12345u;
        c = char(x >> 24);
    }
    QTest::newRow("garbage") << garbage << QStringList{"check", "tree"} << 0;
    QTest::newRow("truncated")
        << (head + root + entryLines("0.1", "A", inflating(5000))).chopped(30)
        << QStringList{"check", "cat"} << 0;
    QTest::newRow("rich text nested 100,000 deep")
        << head + root +
               entryLines("0.1", "A",
                          "{\\rtf1 " + QByteArray(100000, '{') + "x" + QByteArray(100000, '}') +
                              "}")
        << QStringList{"cat", "compact"} << 0;
    QTest::newRow("rich text with huge numbers")
        << head + root +
               entryLines("0.1", "A",
                          "{\\rtf1\\fs-9223372036854775808\\li99999999999999999999\\u-2147483649 "
                          "x\\bin2000000000 }")
        << QStringList{"cat", "compact"} << 0;
}

void TestCli::hostileFiles() {
    QFETCH(QByteArray, file);
    QFETCH(QStringList, commands);
    QFETCH(int, code);
    const QString path = write("hostile.mvd", file);
    for (qsizetype i = 0; i < commands.size(); ++i) {
        const QString command = commands.at(i);
        QStringList args{command, path};
        if (command == "cat") {
            args << "0.1";
        } else if (command != "tree" && command != "check") {
            args << m_dir.filePath("out.txt");
        }
        // Run through time(1): a child forked from this process would count this process's
        // own peak as its own.
        const QString peakFile = m_dir.filePath("peak.txt");
        QProcess p;
        p.start("/usr/bin/time", QStringList{"-f", "%M", "-o", peakFile, m_program} + args);
        QVERIFY(p.waitForFinished(300000));
        const int status = p.exitCode();
        const qint64 peak = readFile(peakFile).trimmed().split('\n').last().toLongLong() * 1024;
        QVERIFY2(p.exitStatus() == QProcess::NormalExit && status <= 1, qPrintable(command));
        if (i == commands.size() - 1) {
            QCOMPARE(status, code);
        }
        // The sanitizers' own memory is the base; the rest is a small multiple of the file.
        const qint64 bound = (qint64(300) << 20) + 20 * qint64(file.size());
        QVERIFY2(peak < bound, qPrintable(QString("%1: %2 MB").arg(command).arg(peak >> 20)));
    }
}

void TestCli::find_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("out");
    QTest::newRow("one entry") << QStringList{"plans"} << 0 << "0\tProjects\n";
    QTest::newRow("case ignored, outline order")
        << QStringList{"THE"} << 0 << "0\tProjects\n0.2\tHouse\n";
    QTest::newRow("case matched") << QStringList{"THE", "--case"} << 1 << "";
    QTest::newRow("not a whole word") << QStringList{"--word", "hal"} << 1 << "";
    QTest::newRow("whole word") << QStringList{"hall", "--word"} << 0 << "0.2\tHouse\n";
    QTest::newRow("labels, unicode case")
        << QStringList{"PI\u00d1ATA", "--labels"} << 0 << "0.1\tPi\u00f1ata\n";
    QTest::newRow("labels only") << QStringList{"plans", "--labels"} << 1 << "";
}

void TestCli::find() {
    QFETCH(QStringList, args);
    QFETCH(int, code);
    QFETCH(QString, out);
    QByteArray file = DocTest::exampleFile();
    file.replace("{\\ttf_nodelabel Garden}", "{\\ttf_nodelabel Pi\xf1"
                                             "ata}");
    const Result r = run(QStringList{"find", write("f.mvd", file)} + args);
    QCOMPARE(r.code, code);
    QCOMPARE(QString::fromUtf8(r.out), out);
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
