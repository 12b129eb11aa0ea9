// The native format's byte scanner, its tag readers and the damage check, without a document.
#include "document/modDoc.h"
#include "document/modDocV1.h"

#include <QtTest>

using modDocV1::EntryRecord;

class TestNativeScan : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void loadTag_data();
    void loadTag();
    void scanEntries_data();
    void scanEntries();
    void check_data();
    void check();
};

static QByteArray entry(const QByteArray &key, const QByteArray &label, const QByteArray &text,
                        bool tagged = false, bool showing = true) {
    QByteArray out;
    modDocV1::DocSaveNodeTag(out, "nodekey", key);
    modDocV1::DocSaveNodeTag(out, "nodelabel", label);
    modDocV1::DocSaveNodeTag(out, "nodetagged", tagged ? "True" : "False");
    modDocV1::DocSaveNodeTag(out, "nodevisible", showing ? "True" : "False");
    modDocV1::DocSaveNodeTag(out, "nodetext", text);
    return out;
}

static QByteArray header() {
    QByteArray out;
    for (const QByteArray &name : modDocV1::HeaderTagNames()) {
        modDocV1::DocSaveNodeTag(out, name, name == "formatversion" ? "1" : "x");
    }
    return out;
}

void TestNativeScan::loadTag_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("first line") << QByteArray("{\\ttf_formatversion 1}\r\n")
                                << QByteArray("formatversion") << QByteArray("1");
    QTest::newRow("after entries") << QByteArray("{\\ttf_nodekey 0}\r\n{\\ttf_textfontsize 12}\r\n")
                                   << QByteArray("textfontsize") << QByteArray("12");
    QTest::newRow("first of two") << QByteArray("{\\ttf_a 1}{\\ttf_a 2}") << QByteArray("a")
                                  << QByteArray("1");
    QTest::newRow("missing") << QByteArray("{\\ttf_b 1}") << QByteArray("a") << QByteArray();
    QTest::newRow("no closing brace")
        << QByteArray("{\\ttf_a 1") << QByteArray("a") << QByteArray();
    QTest::newRow("longer name does not match")
        << QByteArray("{\\ttf_ab 1}{\\ttf_a 2}") << QByteArray("a") << QByteArray("2");
    QTest::newRow("empty value") << QByteArray("{\\ttf_a }") << QByteArray("a") << QByteArray();
    QTest::newRow("blanks kept") << QByteArray("{\\ttf_a  Times New Roman }") << QByteArray("a")
                                 << QByteArray(" Times New Roman ");
}

void TestNativeScan::loadTag() {
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, value);
    QCOMPARE(modDoc::DocLoadTag(text, name), value);
}

void TestNativeScan::scanEntries_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QList<QByteArray>>("fields"); // key|label|tagged|showing|text per entry
    QTest::newRow("two entries") << header() + entry("0", "Projects", "{\\rtf1 x\\par }") +
                                        entry("0.1", "Garden", "", true)
                                 << QList<QByteArray>{"0|Projects|0|1|{\\rtf1 x\\par }",
                                                      "0.1|Garden|1|1|"};
    QTest::newRow("text with braces, line breaks and stray bytes")
        << entry("0", "R", QByteArray("12,\x01}\r\n{\x00\xff}", 12), false, false)
        << QList<QByteArray>{QByteArray("0|R|0|0|12,\x01}\r\n{\x00\xff}", 20)};
    QTest::newRow("label cut at brace") << entry("0", "a}b", "t") << QList<QByteArray>{"0|a|0|1|t"};
    QTest::newRow("lower-case true is false")
        << QByteArray("{\\ttf_nodekey 0}{\\ttf_nodetagged true}{\\ttf_nodevisible True}")
        << QList<QByteArray>{"0||0|1|"};
    QTest::newRow("text stops at an opener inside it")
        << entry("0", "R", "ab{\\ttf_zz}cd") << QList<QByteArray>{"0|R|0|1|"};
    QTest::newRow("truncated last text loses three bytes")
        << QByteArray("{\\ttf_nodekey 0}\r\n{\\ttf_nodetext abcdef")
        << QList<QByteArray>{"0||0|0|abc"};
    QTest::newRow("header after entries and unknown tags")
        << entry("0", "R", "t") + "{\\ttf_weird v}\r\n" + header()
        << QList<QByteArray>{"0|R|0|1|t"};
    QTest::newRow("no entries") << header() << QList<QByteArray>{};
    QTest::newRow("unclosed unknown tag ends the scan")
        << entry("0", "R", "t") + "{\\ttf_weird" << QList<QByteArray>{"0|R|0|1|t"};
    QTest::newRow("garbage") << QByteArray("\x00\x01{\\ttf{\\ttf_}}}{{", 16) << QList<QByteArray>{};
}

void TestNativeScan::scanEntries() {
    QFETCH(QByteArray, file);
    QFETCH(QList<QByteArray>, fields);
    QList<QByteArray> got;
    modDocV1::ScanEntries(file, [&](EntryRecord &r) {
        got.append(r.Key + '|' + r.Label + '|' + (r.Tagged ? '1' : '0') + '|' +
                   (r.Showing ? '1' : '0') + '|' + r.Text);
    });
    QCOMPARE(got, fields);
}

void TestNativeScan::check_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("problems"); // substrings, one per expected problem, in order
    const QByteArray good = header() + entry("0", "R", "") + entry("0.1", "A", "") +
                            entry("0.1.1", "C", "") + entry("0.2", "B", "") +
                            entry("0.10", "J", "");
    QTest::newRow("clean") << header() + entry("0", "R", "") + entry("0.1", "A", "") +
                                  entry("0.1.1", "C", "") + entry("0.2", "B", "")
                           << QStringList{};
    QTest::newRow("orphan") << good.left(good.indexOf("{\\ttf_nodekey 0.10}")) +
                                   entry("0.4", "X", "")
                            << QStringList{"key \"0.4\"): orphan"};
    QTest::newRow("missing parent") << header() + entry("0", "R", "") + entry("0.3.1", "X", "")
                                    << QStringList{"orphan, no entry \"0.3\""};
    QTest::newRow("child not after parent")
        << header() + entry("0", "R", "") + entry("0.1", "A", "") + entry("0.2", "B", "") +
               entry("0.1.1", "C", "")
        << QStringList{"key \"0.1.1\"): out of order"};
    QTest::newRow("duplicate key")
        << header() + entry("0", "R", "") + entry("0.1", "A", "") + entry("0.1", "B", "")
        << QStringList{"out of order"};
    QTest::newRow("root twice") << header() + entry("0", "R", "") + entry("0", "S", "")
                                << QStringList{"out of order"};
    QTest::newRow("undecodable text")
        << header() + entry("0", "R", "25,x\x9cgarbage") << QStringList{"cannot be decoded"};
    QTest::newRow("text stored as is, digits and comma first")
        << header() + entry("0", "R", "3, apples") + entry("0.1", "A", "12,x") << QStringList{};
    QStringList missing; // every header tag, in order
    for (const QByteArray &name : modDocV1::HeaderTagNames()) {
        missing << "missing header tag \"" + QString::fromLatin1(name) + '"';
    }
    QTest::newRow("missing header") << entry("0", "R", "") << missing;
    QTest::newRow("unknown tag") << header() + "{\\ttf_colour red}\r\n" + entry("0", "R", "")
                                 << QStringList{"unknown tag \"colour\""};
    QTest::newRow("truncated") << header() + entry("0", "R", "").chopped(3)
                               << QStringList{"cut short"};
}

void TestNativeScan::check() {
    QFETCH(QByteArray, file);
    QFETCH(QStringList, problems);
    const modDocV1::CheckReport report = modDocV1::CheckFile(file);
    QCOMPARE(report.Problems.size(), problems.size());
    for (qsizetype i = 0; i < problems.size(); ++i) {
        QVERIFY2(report.Problems.at(i).contains(problems.at(i)), qPrintable(report.Problems.at(i)));
    }
    QCOMPARE(report.damaged(), !problems.isEmpty());
}

QTEST_GUILESS_MAIN(TestNativeScan)
#include "tst_nativescan.moc"
