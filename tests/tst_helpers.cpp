// String and file-name helpers, the code page, the error report, the session log, the command line.
#include "app/modMain.h"
#include "support/TestSupport.h"
#include "util/ByteChain.h"
#include "util/CodePage.h"
#include "util/modString.h"

#include <QtTest>

using namespace modString;

class TestHelpers : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void codePage() {
        QByteArray all;
        for (int b = 0; b < 256; ++b) {
            all.append(char(b));
        }
        const QString text = CodePage::toUnicode(all);
        QCOMPARE(QSet<QChar>(text.begin(), text.end()).size(), 256);
        QCOMPARE(CodePage::fromUnicode(text), all);
        // The euro sign, and an unassigned byte that maps to itself.
        QCOMPARE(text.mid(0x80, 2), QStringView(u"\u20AC\u0081").toString());
        QCOMPARE(CodePage::fromUnicode(u"a\u0416b\u20AC"), QByteArray("a?b\x80"));
        QVERIFY(!CodePage::canEncode(u"\u0416"));
        QVERIFY(CodePage::canEncode(u"caf\u00E9 \u2014"));
        QCOMPARE(CodePage::toByte(0x0080), -1); // U+0080 is not the euro byte's character
    }
    void byteChainWritesPiecesInOrder() {
        // Short pieces copied, long ones referred to; with a sink, handed over in several rounds
        // without a byte lost or moved: first because the list of pieces is full (long texts),
        // then because the block is (short ones).
        QList<QByteArray> texts;
        QByteArray expected;
        for (int i = 0; i < 20000; ++i) {
            texts.append(QByteArray(i < 10000 ? 700 : 300, char('a' + i % 26)));
        }
        QByteArray written;
        int rounds = 0;
        ByteChain chain([&](const std::vector<QByteArrayView> &pieces) {
            ++rounds;
            for (const QByteArrayView piece : pieces) {
                written.append(piece);
            }
        });
        ByteChain whole;
        for (const QByteArray &text : texts) {
            const QByteArray head = "<" + QByteArray::number(expected.size()) + ">";
            expected += head + text;
            chain.append(head).appendKept(text);
            whole.append(head).appendKept(text);
        }
        chain.flush();
        QVERIFY(rounds > 2);
        QCOMPARE(written, expected);
        QCOMPARE(whole.joined(), expected);
        QCOMPARE(chain.size(), expected.size());
    }
    void fileNameParts_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("ext");
        QTest::addColumn<QString>("without");
        AddRows({
            {"trailing dot", "notes.", "", "notes"},
            {"no dot", " readme ", "", "readme"},
            {"dot in folder", "C:\\my.dir\\readme", "dir\\readme", "C:\\my"},
            {"blanks trimmed", " a . txt ", "txt", "a"},
        });
    }
    void fileNameParts() {
        QFETCH(QString, path);
        QTEST(FileExt(path), "ext");
        QTEST(FileWithoutExt(path), "without");
    }
    // The word and case checks of the search.
    void keyPredicates() {
        QVERIFY(StringAlphanumeric("") && StringAlphanumeric("abcXYZ09"));
        QVERIFY(!StringAlphanumeric("ab_c") && !StringAlphanumeric(QStringLiteral("caf\u00E9")));
        QVERIFY(StringUpperCaseAlpha("") && StringUpperCaseAlpha("KEY"));
        QVERIFY(!StringUpperCaseAlpha("KEy") && !StringUpperCaseAlpha("KEY0"));
    }
    void errorReport() {
        ScopedLog log;
        int reached = 0;
        const int result = modMain::Guarded([&]() -> int {
            PROC("modDoc DocLoad");
            ++reached;
            modMain::Raise(modMain::errFileNotFound);
            ++reached;
            return 7;
        });
        QCOMPARE(result, 0); // ends early with the default value
        QCOMPARE(reached, 1);
        QCOMPARE(log.content(),
                 QString("Error 53 - File not found\r\nMavrolen modDoc DocLoad\r\n"));

        QFile::remove(log.path());
        modMain::Guarded([] {
            PROC("modDoc DocLoad");
            throw modMain::RuntimeError(-2147221504, "Automation error", "Shell");
        });
        QCOMPARE(log.content(), QString("Error returned by VB object 0 - Automation error\r\n"
                                        "Shell modDoc DocLoad\r\n"));
        QFile::remove(log.path());
        modMain::Guarded([] { throw modMain::RuntimeError(-2147221503, "Other", "Shell"); });
        QVERIFY(log.content().startsWith("Error -2147221503 - Other\r\n"));
    }
    // The log keeps at most 8192 characters, dropping whole old lines while there are any.
    void logKeepsNewestWholeLines() {
        ScopedLog log;
        QByteArray existing; // 8190 characters in lines of 88 characters and CR LF
        for (int i = 0; i < 91; ++i) {
            existing += QByteArray(88, char('a' + i % 26)) + "\r\n";
        }
        WriteFileBytes(log.path(), existing);
        modMain::WriteLog(QString(30, QLatin1Char('z')));
        QString content = log.content();
        QVERIFY(content.endsWith(QString(30, QLatin1Char('z')) + "\r\n"));
        QCOMPARE(content.size(), 8190 - 90 + 32); // exactly the oldest line went
        QVERIFY(content.startsWith(QString(88, QLatin1Char('b'))));

        WriteFileBytes(log.path(), QByteArray(8000, 'x')); // no line breaks: cut in the middle
        modMain::WriteLog(QString(500, QLatin1Char('y')));
        content = log.content();
        QCOMPARE(content.size(), 8192 + 2);
        QVERIFY(content.startsWith(QString(7692, QLatin1Char('x')) + "y"));
        modMain::WriteLog("Session started at now"); // now whole lines are dropped
        QCOMPARE(log.content(), QString("Session started at now\r\n"));
    }
    void commandLineNamesEachArgument() {
        QTemporaryDir dir;
        const QString a = dir.filePath("a.mvd");
        const QString b = dir.filePath("b.mvd");
        const QString spaced = dir.filePath("my notes.mvd");
        for (const QString &name : {a, b, spaced}) {
            WriteFileBytes(name, {});
        }
        const QString saved = QDir::currentPath();
        QDir::setCurrent(dir.path());
        QCOMPARE(
            modMain::GetCommandLineFiles({"a.mvd", "my notes.mvd", "missing.mvd", "", "b.mvd"}),
            QStringList({a, spaced, b}));
        QCOMPARE(modMain::GetCommandLineFiles({"my", "notes.mvd"}), QStringList());
        QCOMPARE(modMain::FullPathName("sub/../a.mvd"), a);
        QCOMPARE(modMain::FullPathName(""), QString());
        QCOMPARE(modMain::FullPathName(QString(300, 'n')).size(), dir.path().size() + 301);
        QDir::setCurrent(saved);
    }
};

QTEST_GUILESS_MAIN(TestHelpers)
#include "tst_helpers.moc"
