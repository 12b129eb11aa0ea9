// mavrolen-cli, run as a separate program: outputs, files written and exit codes.
#include "document/modDocV1.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <zlib.h>

namespace {

// A run of the tool in the working folder on a file "in.mvd" (the example, unless the row gives
// another), and what it should do.
struct Expected {
    QStringList args;
    int code = 0;
    QByteArray out, err, written, lacks, file = DocTest::exampleFile();
    QString target, in = "in.mvd";
    QStringList env;
};

// A row of the command table, added to the table when the statement ends.
class Run {
public:
    // The exit code expected, and text that standard error contains.
    Run(const char *name, const char *args, int code = 0, const QByteArray &err = {})
        : m_name(name) {
        m_row.args = QString(args).split(' ', Qt::SkipEmptyParts);
        m_row.code = code, m_row.err = err;
    }
    ~Run() { QTest::newRow(m_name) << m_row; }
    Run &out(const QByteArray &o) { return m_row.out = o, *this; } // "*text": contains the text
    // A file the run writes and what it holds ("*text": contains; "<missing>": not written).
    Run &writes(const QString &target, const QByteArray &written, const QByteArray &lacks = {}) {
        m_row.target = target, m_row.written = written, m_row.lacks = lacks;
        return *this;
    }
    Run &file(const QByteArray &bytes, const QString &name = "in.mvd") {
        m_row.file = bytes, m_row.in = name;
        return *this;
    }
    // The read-failing shim's variable, naming "in.mvd".
    Run &failRead(const char *variable) {
        return m_row.env << QString(variable) + "=in.mvd", *this;
    }

private:
    const char *m_name;
    Expected m_row;
};

bool matches(const QByteArray &got, const QByteArray &expected) {
    return expected.startsWith('*') ? got.contains(expected.mid(1)) : got == expected;
}

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

Q_DECLARE_METATYPE(Expected)

class TestCli : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        m_program = QCoreApplication::applicationDirPath() + "/mavrolen-cli";
        QVERIFY2(QFile::exists(m_program), qPrintable(m_program));
        // A pipe and a read-only file that the rows may name.
        QVERIFY(QProcess::execute("mkfifo", {m_dir.filePath("fifo")}) == 0);
        QFile::setPermissions(write("ro.mvd", "old"),
                              QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    }

    void commands_data() {
        QTest::addColumn<Expected>("row");
        const QByteArray example = DocTest::exampleFile();

        // Usage errors: exit 2 with one line on standard error.
        Run("nothing", "", 2, "no command given");
        Run("unknown", "frobnicate x", 2, "unknown command \"frobnicate\"");
        Run("too few", "cat a.mvd", 2, "cat takes 2 arguments");
        Run("too many", "tree a b", 2, "tree takes 1 argument");
        Run("missing file", "tree none.mvd", 2, "cannot open none.mvd");
        Run("find without text", "find a.mvd", 2, "find takes a file and");
        Run("find option", "find a b --x", 2, "unknown option --x");
        Run("unknown encoding", "convert a b --encoding latin9", 2, "unknown encoding");
        Run("encoding of a reading command", "tree a.mvd --encoding=utf-8", 2,
            "--encoding applies to");
        Run("unknown extension", "convert a.mvd b.docx", 2, "cannot convert to b.docx");
        Run("subtree without key", "convert a.mvd b.mvd --subtree", 2, "--subtree needs a key");
        Run("help", "--help").out("*Usage: mavrolen-cli");

        // Text out: Windows-1252 by default, UTF-8 when asked for; a UTF-8 file in.
        const QByteArray utf8 = "Gr\xc3\xbc\xc3\x9f"
                                "e \xe2\x82\xac";
        const QByteArray cp1252 = "Gr\xfc\xdf"
                                  "e \x80";
        Run("convert, Windows-1252", "convert u.txt u-out.txt")
            .file(utf8 + "\n", "u.txt")
            .writes("u-out.txt", "0 Text\r\n" + cp1252 + "\r\n\r\n");
        Run("export-text, UTF-8", "export-text u.txt u-out.txt --encoding utf-8")
            .file(utf8 + "\n", "u.txt")
            .writes("u-out.txt", "0 Text\r\n" + utf8 + "\r\n\r\n");

        QByteArray cafe = example;
        cafe.replace("{\\ttf_nodelabel House}", "{\\ttf_nodelabel Caf\xe9 \x80}");
        Run("tree", "tree in.mvd")
            .file(cafe)
            .out("0\t-\tProjects\n0.1\tT\tGarden\n0.2\t-\tCaf\xc3\xa9 \xe2\x82\xac\n");
        Run("cat empty text", "cat in.mvd 0.1");
        Run("cat with prefix", "cat in.mvd KEY0.1");
        Run("cat missing", "cat in.mvd 0.7", 1);
        Run("cat rich text", "cat in.mvd 0.2").out("Paint the hall\n");
        Run("extension case", "convert in.mvd out.MVD").writes("out.MVD", example);

        // Files that cannot be read or written: exit 1 at once with the system's reason, and the
        // input file is left as it was (also when it is the output).
        Run("read fails", "convert in.mvd in.mvd", 1,
            "cannot read in.mvd: error 57 - Input/output error")
            .failRead("MAVROLEN_FAIL_READ");
        Run("read ends short", "convert in.mvd in.mvd", 1, "error 57 - Short read: 0 of")
            .failRead("MAVROLEN_SHORT_READ");
        Run("folder", "check .", 1, "cannot read .: error 75 - Is a directory");
        Run("pipe", "tree fifo", 1, "error 75 - Not a regular file");
        Run("no such folder", "convert in.mvd no/such/dir/x.mvd", 1,
            "cannot write no/such/dir/x.mvd: error 76 - No such file or directory");
        Run("read-only output keeps its mode", "convert in.mvd ro.mvd");

        // Conversion by the target's extension, of all or of a subtree.
        Run("html", "convert in.mvd o.html")
            .writes("o.html",
                    "*<p>Plans for the year</p>\n</div>\n<h2>0.1 Garden</h2>\n<h2>0.2 House</h2>");
        Run("markdown", "convert in.mvd o.md")
            .writes("o.md", "*# 0 Projects\n\nPlans for the year\n\n## 0.1 Garden\n\n## 0.2 "
                            "House\n\nPaint the hall\n");
        Run("pdf", "convert in.mvd o.pdf").writes("o.pdf", "*%PDF-");
        Run("subtree html", "convert in.mvd o.html --subtree 0.2")
            .writes("o.html", "*<h1>0.2 House</h1>", "Garden");
        Run("subtree text", "convert in.mvd --subtree 0.2 o.txt")
            .writes("o.txt", "*0.2 House\r\nPaint the hall\r\n\r\n", "Garden");
        Run("subtree native", "convert in.mvd o.mvd --subtree KEY0.2")
            .writes("o.mvd", "*{\\ttf_nodekey 0}\r\n{\\ttf_nodelabel House}", "Garden");
        Run("no such subtree", "convert in.mvd o.md --subtree 0.9", 1).writes("o.md", "<missing>");
        // Several entries to a text file: the warning is answered yes.
        QByteArray empty = example;
        empty.replace("{\\rtf1\\ansi Plans for the year\\par }", "");
        empty.replace("{\\rtf1\\ansi Paint the hall\\par }", "");
        const QByteArray emptyText = "0 Projects\r\n\r\n0.1 Garden\r\n\r\n0.2 House\r\n\r\n";
        Run("export-text of empty texts", "export-text in.mvd e.txt")
            .file(empty)
            .writes("e.txt", emptyText);

        // The damage check: the problems, then a summary line.
        Run("check clean", "check in.mvd").out("*3 entries, no damage found\n");
        QByteArray orphan = example;
        orphan.replace("{\\ttf_nodekey 0.2}", "{\\ttf_nodekey 0.5}");
        Run("check orphan", "check in.mvd", 1).file(orphan).out("*3 entries, 1 problems\n");
        Run("check unknown tag", "check in.mvd", 1)
            .file(example + "{\\ttf_x y}\r\n")
            .out("*1 problems\n");
        Run("check plain text", "check k.txt")
            .file("just text", "k.txt")
            .out("*read as one entry\n");

        QByteArray pinata = example;
        pinata.replace("{\\ttf_nodelabel Garden}", "{\\ttf_nodelabel Pi\xf1"
                                                   "ata}");
        Run("find: case ignored, outline order", "find in.mvd THE")
            .file(pinata)
            .out("0\tProjects\n0.2\tHouse\n");
        Run("find: case matched", "find in.mvd THE --case", 1).file(pinata);
        Run("find: not a whole word", "find in.mvd --word hal", 1).file(pinata);
        Run("find: whole word", "find in.mvd hall --word").file(pinata).out("0.2\tHouse\n");
        Run("find: labels, unicode case", "find in.mvd PI\u00d1ATA --labels")
            .file(pinata)
            .out("0.1\tPi\xc3\xb1"
                 "ata\n");
        Run("find: labels only", "find in.mvd plans --labels", 1).file(pinata);
    }
    void commands() {
        QFETCH(Expected, row);
        const auto &[args, code, out, err, written, lacks, file, target, in, env] = row;
        const QString input = write(in, file);
        const Result r = run(args, env);
        QVERIFY2(r.code == code, (QByteArray::number(r.code) + " " + r.err).constData());
        QVERIFY2(matches(r.out, out), r.out.constData());
        QVERIFY2(r.err.contains(err), r.err.constData());
        QVERIFY(code != 0 || r.err.isEmpty());
        if (code == 2) {
            QCOMPARE(r.err.count('\n'), 1);
        }
        if (!target.isEmpty()) {
            const QByteArray got = ReadFileBytes(m_dir.filePath(target));
            QVERIFY2(matches(got, written), got.constData());
            QVERIFY(lacks.isEmpty() || !got.contains(lacks));
            QFile::remove(m_dir.filePath(target));
        }
        if (args.value(0) == "check" && !r.out.isEmpty()) {
            QCOMPARE(r.out.count('\n') - 1,
                     code == 0 ? 0 : int(modDocV1::CheckFile(file).Problems.size()));
        }
        // The input is never changed, no backup is left beside a new file, and a read-only output
        // keeps its mode.
        QCOMPARE(ReadFileBytes(input), file);
        QVERIFY(!QFile::exists(m_dir.filePath("out.bak")));
        const auto ownerGroupOther =
            QFile::permissions(m_dir.filePath("ro.mvd")) & ~QFileDevice::Permissions(0x0f00);
        QCOMPARE(ownerGroupOther, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    }

    void compactedTextsReadTheSame() {
        // Compacting stores every text rewritten and compressed; the texts read the same.
        const QString in = write("r.mvd", DocTest::exampleFile());
        QCOMPARE(run({"compact", in, "c.mvd"}).code, 0);
        QVERIFY(!ReadFileBytes(m_dir.filePath("c.mvd")).contains("{\\ttf_nodetext {\\rtf1"));
        QCOMPARE(run({"check", "c.mvd"}).code, 0);
        QCOMPARE(run({"cat", "c.mvd", "0.2"}).out, QByteArray("Paint the hall\n"));
        QCOMPARE(run({"export-text", "c.mvd", "c.txt"}).code, 0);
        QCOMPARE(ReadFileBytes(m_dir.filePath("c.txt")),
                 QByteArray("0 Projects\r\nPlans for the year\r\n\r\n0.1 Garden\r\n\r\n"
                            "0.2 House\r\nPaint the hall\r\n\r\n"));
    }

    void hostileFiles_data() {
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
        QTest::newRow("10 MB label")
            << head + root + entryLines("0.1", QByteArray(10 << 20, 'x'), "")
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
                   entryLines(
                       "0.1", "A",
                       "{\\rtf1\\fs-9223372036854775808\\li99999999999999999999\\u-2147483649 "
                       "x\\bin2000000000 }")
            << QStringList{"cat", "compact"} << 0;
    }
    void hostileFiles() {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, commands);
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
            const qint64 peak =
                ReadFileBytes(peakFile).trimmed().split('\n').last().toLongLong() * 1024;
            QVERIFY2(p.exitStatus() == QProcess::NormalExit && status <= 1, qPrintable(command));
            if (i == commands.size() - 1) {
                QTEST(status, "code");
            }
            // The sanitizers' own memory is the base; the rest is a small multiple of the file.
            const qint64 bound = (qint64(300) << 20) + 20 * qint64(file.size());
            QVERIFY2(peak < bound, qPrintable(QString("%1: %2 MB").arg(command).arg(peak >> 20)));
        }
    }

private:
    struct Result {
        int code = -1;
        QByteArray out, err;
    };

    Result run(const QStringList &args, const QStringList &env = {}) {
        QProcess p;
        p.setWorkingDirectory(m_dir.path());
        if (!env.isEmpty()) {
            // The read-failing shim comes before the sanitizers' runtime in the preload order.
            QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
            e.insert("LD_PRELOAD",
                     QCoreApplication::applicationDirPath() + "/libmavrolen_readfail.so");
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
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                p.readAllStandardOutput(), p.readAllStandardError()};
    }

    QString write(const QString &name, const QByteArray &bytes) {
        WriteFileBytes(m_dir.filePath(name), bytes);
        return m_dir.filePath(name);
    }
    QTemporaryDir m_dir;
    QString m_program;
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
