// The native format: the example byte for byte, round trips, damaged files, the choice of format
// when loading and saving, and the byte scanner with its tag readers and damage check. The
// plain-text format: any text file read into one entry, headings and texts written, and whole
// documents to and from the clipboard.
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "document/modDoc.h"
#include "document/modDocClipboard.h"
#include "document/modDocText.h"
#include "document/modDocV1.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/FakeDocument.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/ErrorLog.h"
#include "util/modGlobals.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace DocTest;
using modDocV1::EntryRecord;

// Tags of one entry and of the header, for the byte scanner and the damage check.
static QByteArray entryTags(const QByteArray &key, const QByteArray &label, const QByteArray &text,
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

class TestNative : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        put("probe", {});
        m_clipboard = m_clip.GetFormat(Clipboard::PlainText);
        modDocClipboard::SetClipboard(m_clipboard ? &m_clip : nullptr);
    }
    void cleanup() {
        closeAll();
        modDocClipboard::SetClipboard(nullptr);
    }
    void exampleByteForByte() {
        Document *made = exampleDocument();
        QCOMPARE(modDocV1::DocSaveVersion(*made), exampleFile());
        // Saving renumbered the keys of the live tree.
        QCOMPARE(made->trvOutline().SelectedItem()->Key(), QString("KEY0.2"));
        // Read back, it is the same document and writes the same bytes.
        Document *doc = loadBytes(exampleFile(), "example.mvd");
        QCOMPARE(outline(doc), QString("Projects+={\\rtf1\\ansi Plans for the year\\par }\n"
                                       "  Garden*=\n"
                                       "  House={\\rtf1\\ansi Paint the hall\\par }\n"));
        QCOMPARE(doc->trvOutline().SelectedItem()->Text(), QString("House"));
        QCOMPARE(doc->m_iFileFormatVersion, 1);
        QCOMPARE(modDocV1::DocSaveVersion(*doc), exampleFile());
    }
    void onlyRootWritesNineteenLines() {
        Document *doc = newDocument();
        add(doc, nullptr, "Only");
        const QByteArray file = modDocV1::DocSaveVersion(*doc);
        QCOMPARE(file.count("\r\n"), 19);
        QVERIFY(file.endsWith("{\\ttf_nodekey 0}\r\n{\\ttf_nodelabel Only}\r\n{\\ttf_nodetagged "
                              "False}\r\n{\\ttf_nodevisible True}\r\n{\\ttf_nodetext }\r\n"));
        QVERIFY(file.contains("{\\ttf_selecteditemkey }\r\n")); // nothing selected
        Document *empty = newDocument();
        QCOMPARE(modDocV1::DocSaveVersion(*empty), QByteArray());
    }
    void generatedRoundTrip_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<unsigned>("seed");
        QTest::newRow("small") << 5 << 1u;
        QTest::newRow("large") << 3000 << 3u;
    }
    void generatedRoundTrip() {
        QFETCH(int, count);
        QFETCH(unsigned, seed);
        std::mt19937 random(seed);
        Document *doc = generatedDocument(count, random);
        const QByteArray first = modDocV1::DocSaveVersion(*doc);
        QVERIFY2(!modDocV1::CheckFile(first).damaged(),
                 qPrintable(modDocV1::CheckFile(first).Problems.join('\n')));
        Document *again = loadBytes(first, "x.mvd");
        QCOMPARE(modDocV1::DocSaveVersion(*again), first); // fonts and entries included
        // Saved to a file, written as it is made, the same bytes.
        QTemporaryDir dir;
        QVERIFY(modDoc::DocSaveDocument(*again, dir.filePath("x.mvd"), false));
        QCOMPARE(ReadFileBytes(dir.filePath("x.mvd")), first);
    }
    void relativeKeys_data() {
        // Entries given by key in file order, and the outline they give (labels are the keys).
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("shape");
        AddRows({
            {"tenth and eleventh child", "0 0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 0.10 0.11",
             "0(0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 0.10 0.11)"},
            {"deep first children", "0 0.1 0.1.1 0.1.1.1 0.2 0.2.1",
             "0(0.1(0.1.1(0.1.1.1)) 0.2(0.2.1))"},
            {"orphan goes last under the root", "0 0.1 0.5 0.2", "0(0.1 0.2 0.5)"},
            {"orphan child", "0 0.1 0.7.1 0.2", "0(0.1 0.2 0.7.1)"},
            {"child after its sibling's subtree", "0 0.1 0.2 0.1.1", "0(0.1(0.1.1) 0.2)"},
            {"second root", "0 0.1 0", "0(0.1 0)"},
            {"no root first", "0.1 0.1.1", "0.1(0.1.1)"},
            {"bad number", "0 0.x 0.1", "0(0.x 0.1)"},
        });
    }
    void relativeKeys() {
        QFETCH(QString, keys);
        ScopedLog log;
        QByteArray file;
        const QStringList list = keys.split(' ');
        for (const QString &k : list) {
            modDocV1::DocSaveNodeTag(file, "nodekey", k.toLatin1());
            modDocV1::DocSaveNodeTag(file, "nodelabel", k.toLatin1());
            modDocV1::DocSaveNodeTag(file, "nodetext", "");
        }
        Document *doc = loadBytes(file, "k.mvd");
        QCOMPARE(doc->trvOutline().Count(), int(list.size()));
        QCOMPARE(doc->trvOutline().topNodes().size(), size_t(1));
        QTEST(TreeShape(doc->trvOutline().topNodes().front()), "shape");
    }
    void damaged_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("outline");
        QTest::addColumn<QStringList>("logged");
        const QByteArray head = exampleFile().left(exampleFile().indexOf("{\\ttf_nodekey"));
        QTest::newRow("truncated last text")
            << exampleFile().chopped(10)
            << QString("Projects+={\\rtf1\\ansi Plans for the year\\par }\n"
                       "  Garden*=\n  House={\\rtf1\\ansi Paint the \n")
            << QStringList{"Error 62", "cut short"};
        QTest::newRow("orphan")
            << head + "{\\ttf_nodekey 0}{\\ttf_nodelabel R}{\\ttf_nodekey 0.3}{\\ttf_nodelabel O}"
            << QString("R=\n  O=\n") << QStringList{"Error 9", "no entry \"KEY0.2\""};
        QTest::newRow("missing header")
            << QByteArray("{\\ttf_nodekey 0}\r\n{\\ttf_nodelabel R}\r\n") << QString("R=\n")
            << QStringList{"Error 13", "outlinefontsize", "Error 13", "textfontsize"};
        QTest::newRow("binary garbage")
            << QByteArray("\x00\xff{\\ttf_\x01{\\ttf_nodekey\x00}}{{\\ttf_nodetext ", 34)
            << QString() << QStringList{"Error 13"};
        QTest::newRow("empty file") << QByteArray() << QString() << QStringList{"Error 13"};
    }
    void damaged() {
        QFETCH(QByteArray, file);
        QFETCH(QString, outline);
        QFETCH(QStringList, logged);
        ScopedLog log;
        Document *doc = loadBytes(file, "d.mvd");
        QCOMPARE(DocTest::outline(doc), outline);
        const QString text = log.content();
        qsizetype at = 0;
        for (const QString &piece : logged) {
            at = text.indexOf(piece, at);
            QVERIFY2(at >= 0, qPrintable(piece + " not in log: " + text));
        }
        if (logged.isEmpty()) {
            QCOMPARE(text, QString());
        }
        // Whatever was read can be written and read again.
        Document *again = loadBytes(modDocV1::DocSaveVersion(*doc), "e.mvd");
        // (Selecting the saved selection may expand its parent.)
        QCOMPARE(DocTest::outline(again).remove('+'), QString(outline).remove('+'));
    }
    void fontsAndSelection() {
        QByteArray file = exampleFile();
        file.replace("{\\ttf_outlinefontsize 10}", "{\\ttf_outlinefontsize 8.25}");
        file.replace("{\\ttf_textfontbold False}", "{\\ttf_textfontbold true}");
        file.replace("{\\ttf_outlinefontitalic False}", "{\\ttf_outlinefontitalic True}");
        file.replace("KEY0.2}", "KEY0.1}");
        file += "{\\ttf_textfontname Ignored}\r\n"; // the first tag of a name wins
        Document *doc = loadBytes(file, "f.mvd");
        QCOMPARE(doc->m_fntOutlineFont.Size(), 8.25);
        QVERIFY(doc->m_fntOutlineFont.Italic());
        QVERIFY(!doc->m_fntTextFont.Bold()); // only "True" is true
        QCOMPARE(doc->m_fntTextFont.Name(), QString("Times New Roman"));
        QCOMPARE(doc->trvOutline().SelectedItem()->Text(), QString("Garden"));
        QVERIFY(modDocV1::DocSaveVersion(*doc).contains("{\\ttf_outlinefontsize 8.25}\r\n"));

        // No selected key: the root is selected. Header after the entries: still found.
        QByteArray late = exampleFile();
        const QByteArray header = late.left(late.indexOf("{\\ttf_nodekey"));
        late = late.mid(header.size()) + header;
        late.replace("{\\ttf_selecteditemkey KEY0.2}", "");
        Document *d2 = loadBytes(late, "g.mvd");
        QCOMPARE(d2->trvOutline().SelectedItem()->Text(), QString("Projects"));
        QCOMPARE(d2->m_fntTextFont.Name(), QString("Times New Roman"));
    }
    void paneAfterLoad() {
        // The pane's base font after loading is the outline font, not the text font; the selected
        // entry's text is in the pane and the load's busy flag is off again.
        TestDocument t;
        t.doc.m_sFile = "p.mvd";
        modDoc::DocLoadBytes(t.doc, exampleFile());
        QCOMPARE(t.pane->baseFont.name, QString("Arial"));
        QCOMPARE(t.doc.m_fntTextFont.Name(), QString("Times New Roman"));
        QCOMPARE(t.pane->TextRTF(), QByteArray("{\\rtf1\\ansi Paint the hall\\par }"));
        QVERIFY(t.view.outlineVisible && t.pane->Visible());
    }
    void loadDispatch_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("version");
        QTest::addColumn<int>("entries");
        QTest::newRow("native by extension") << "a.mvd" << exampleFile() << 1 << 3;
        QTest::newRow("native upper-case extension") << "a.MVD" << exampleFile() << 1 << 3;
        QTest::newRow("tag wins over txt") << "a.txt" << exampleFile() << 1 << 3;
        QTest::newRow("mvd without tag is native") << "a.mvd" << exampleFile().mid(24) << 1 << 3;
        QByteArray two = exampleFile();
        two.replace("{\\ttf_formatversion 1}", "{\\ttf_formatversion 2}");
        QTest::newRow("tag 2 loads as text") << "a.mvd" << two << 2 << 1;
        QTest::newRow("text file") << "a.txt" << QByteArray("hello\r\nworld") << -1 << 1;
        QTest::newRow("unnumeric tag ignored")
            << "a.txt" << QByteArray("{\\ttf_formatversion x}") << -1 << 1;
    }
    void loadDispatch() {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(int, entries);
        QTemporaryDir dir;
        const QString path = dir.filePath(name);
        WriteFileBytes(path, content);
        Document *doc = modDoc::DocLoad(path);
        QVERIFY(doc);
        QTEST(doc->m_iFileFormatVersion, "version");
        QCOMPARE(doc->trvOutline().Count(), entries);
        QCOMPARE(doc->m_sCaption, path);
        QVERIFY(!modNodes::g_bDocTransfer);
        if (entries == 1) {
            QCOMPARE(doc->trvOutline().Item(1)->Text(), QString("Text"));
        }
    }
    void saveDispatchAndWarning_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("oneEntry");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("asked");
        QTest::addColumn<QByteArray>("starts"); // "" when nothing is written
        QTest::newRow("native") << "n.mvd" << false << int(modMain::vbNo) << false
                                << QByteArray("{\\ttf_formatversion 1}");
        QTest::newRow("TXT asks, yes")
            << "n.TXT" << false << int(modMain::vbYes) << true << QByteArray("0 Projects\r\n");
        QTest::newRow("no extension asks, no")
            << "notes" << false << int(modMain::vbNo) << true << QByteArray();
        QTest::newRow("doc asks, cancel")
            << "n.doc" << false << int(modMain::vbCancel) << true << QByteArray();
        QTest::newRow("one entry asks nothing")
            << "n.txt" << true << int(modMain::vbNo) << false << QByteArray("0 Projects\r\n");
    }
    void saveDispatchAndWarning() {
        QFETCH(QString, name);
        QFETCH(bool, oneEntry);
        QFETCH(int, answer);
        QFETCH(bool, asked);
        QFETCH(QByteArray, starts);
        QTemporaryDir dir;
        Document *doc = newDocument();
        Node *root = add(doc, nullptr, "Projects");
        if (!oneEntry) {
            add(doc, root, "Garden");
        }
        FakeMainWindow frm;
        frm.Answers << modMain::MsgBoxResult(answer);
        const QString path = dir.filePath(name);
        const bool written = modDoc::DocSave(path);
        QCOMPARE(frm.Asked, asked ? QStringList{modDoc::TextFormatWarning()} : QStringList());
        QCOMPARE(written, !starts.isEmpty());
        QCOMPARE(QFile::exists(path), !starts.isEmpty());
        if (written && !starts.contains("formatversion") && !oneEntry) {
            return; // plain text needs the rich-text buffer for entry texts; checked elsewhere
        }
        if (written) {
            QVERIFY(ReadFileBytes(path).startsWith(starts));
        }
        // The new name and version took effect even when the save was abandoned.
        QCOMPARE(doc->m_sFile, path);
        QCOMPARE(doc->m_iFileFormatVersion, modDoc::DocDefaultVersionFromExt(path).toInt());
        QVERIFY(!modNodes::g_bDocTransfer);
    }
    void readOnlyFile() {
        QTemporaryDir dir;
        const QString path = dir.filePath("ro.mvd");
        WriteFileBytes(path, exampleFile());
        QFile::setPermissions(path, QFileDevice::ReadOwner);
        for (bool autoEdit : {true, false}) {
            modGlobals::AutoLabelEdit = autoEdit;
            Document *doc = modDoc::DocLoad(path);
            QVERIFY(doc->bReadOnly && doc->m_bTextLocked);
            QCOMPARE(doc->m_bLabelEditAutomatic, autoEdit); // the setting wins over read-only
        }
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    void captionsAndCounter() {
        const int before = modDoc::OpenDocumentCount();
        Document *a = modDoc::DocNew();
        modDoc::DocClose(modDoc::DocNew());
        Document *c = modDoc::DocNew(); // the closed one's number is given again
        QCOMPARE(a->m_sCaption + ", " + c->m_sCaption,
                 QString("Document %1, Document %2").arg(before + 1).arg(before + 2));
        QVERIFY(a->m_bDataChanged);
        QCOMPARE(a->m_iFileFormatVersion, 1);
    }
    void loadTag_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        AddRows({
            {"first line", "{\\ttf_formatversion 1}\r\n", "formatversion", "1"},
            {"first of two", "{\\ttf_a 1}{\\ttf_a 2}", "a", "1"},
            {"missing", "{\\ttf_b 1}", "a", ""},
            {"no closing brace", "{\\ttf_a 1", "a", ""},
            {"longer name does not match", "{\\ttf_ab 1}{\\ttf_a 2}", "a", "2"},
            {"empty value", "{\\ttf_a }", "a", ""},
            {"blanks kept", "{\\ttf_a  Times New Roman }", "a", " Times New Roman "},
        });
    }
    void loadTag() {
        QFETCH(QString, text);
        QFETCH(QString, name);
        QTEST(QString::fromLatin1(modDoc::DocLoadTag(text.toLatin1(), name.toLatin1())), "value");
    }
    void scanEntries_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QList<QByteArray>>("fields"); // key|label|tagged|showing|text per entry
        QTest::newRow("two entries")
            << header() + entryTags("0", "Projects", "{\\rtf1 x\\par }") +
                   entryTags("0.1", "Garden", "", true)
            << QList<QByteArray>{"0|Projects|0|1|{\\rtf1 x\\par }", "0.1|Garden|1|1|"};
        QTest::newRow("text with braces, line breaks and stray bytes")
            << entryTags("0", "R", QByteArray("12,\x01}\r\n{\x00\xff}", 12), false, false)
            << QList<QByteArray>{QByteArray("0|R|0|0|12,\x01}\r\n{\x00\xff}", 20)};
        QTest::newRow("label cut at brace")
            << entryTags("0", "a}b", "t") << QList<QByteArray>{"0|a|0|1|t"};
        QTest::newRow("lower-case true is false")
            << QByteArray("{\\ttf_nodekey 0}{\\ttf_nodetagged true}{\\ttf_nodevisible True}")
            << QList<QByteArray>{"0||0|1|"};
        QTest::newRow("text stops at an opener inside it")
            << entryTags("0", "R", "ab{\\ttf_zz}cd") << QList<QByteArray>{"0|R|0|1|"};
        QTest::newRow("truncated last text loses three bytes")
            << QByteArray("{\\ttf_nodekey 0}\r\n{\\ttf_nodetext abcdef")
            << QList<QByteArray>{"0||0|0|abc"};
        QTest::newRow("header after entries and unknown tags")
            << entryTags("0", "R", "t") + "{\\ttf_weird v}\r\n" + header()
            << QList<QByteArray>{"0|R|0|1|t"};
        QTest::newRow("unclosed unknown tag ends the scan")
            << entryTags("0", "R", "t") + "{\\ttf_weird" << QList<QByteArray>{"0|R|0|1|t"};
        QTest::newRow("garbage") << QByteArray("\x00\x01{\\ttf{\\ttf_}}}{{", 16)
                                 << QList<QByteArray>{};
    }
    void scanEntries() {
        QFETCH(QByteArray, file);
        QList<QByteArray> got;
        modDocV1::ScanEntries(file, [&](EntryRecord &r) {
            got.append(r.Key + '|' + r.Label + '|' + (r.Tagged ? '1' : '0') + '|' +
                       (r.Showing ? '1' : '0') + '|' + r.Text);
        });
        QTEST(got, "fields");
    }
    void check_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("problems"); // substrings, one per expected problem, in order
        QTest::newRow("clean") << header() + entryTags("0", "R", "") + entryTags("0.1", "A", "") +
                                      entryTags("0.1.1", "C", "") + entryTags("0.2", "B", "")
                               << QStringList{};
        QTest::newRow("missing parent")
            << header() + entryTags("0", "R", "") + entryTags("0.3.1", "X", "")
            << QStringList{"orphan, no entry \"0.3\""};
        QTest::newRow("child not after parent")
            << header() + entryTags("0", "R", "") + entryTags("0.1", "A", "") +
                   entryTags("0.2", "B", "") + entryTags("0.1.1", "C", "")
            << QStringList{"key \"0.1.1\"): out of order"};
        QTest::newRow("undecodable text") << header() + entryTags("0", "R", "25,x\x9cgarbage")
                                          << QStringList{"cannot be decoded"};
        QTest::newRow("text stored as is, digits and comma first")
            << header() + entryTags("0", "R", "3, apples") + entryTags("0.1", "A", "12,x")
            << QStringList{};
        QStringList missing; // every header tag, in order
        for (const QByteArray &name : modDocV1::HeaderTagNames()) {
            missing << "missing header tag \"" + QString::fromLatin1(name) + '"';
        }
        QTest::newRow("missing header") << entryTags("0", "R", "") << missing;
        QTest::newRow("truncated")
            << header() + entryTags("0", "R", "").chopped(3) << QStringList{"cut short"};
    }
    void check() {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, problems);
        const modDocV1::CheckReport report = modDocV1::CheckFile(file);
        QCOMPARE(report.Problems.size(), problems.size());
        for (qsizetype i = 0; i < problems.size(); ++i) {
            QVERIFY2(report.Problems.at(i).contains(problems.at(i)),
                     qPrintable(report.Problems.at(i)));
        }
        QCOMPARE(report.damaged(), !problems.isEmpty());
    }
    void linesToStoredText_data() {
        const auto row = [](const char *name, const QByteArray &in, const QByteArray &out) {
            QTest::newRow(name) << in << out;
        };
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("stored");
        row("empty", {}, {});
        row("one line without break", "abc", "abc\r\n");
        row("CR LF kept", "a\r\nb\r\n", "a\r\nb\r\n");
        row("LF becomes CR LF", "a\nb\n", "a\r\nb\r\n");
        row("lone CR ends a line", "a\rb", "a\r\nb\r\n");
        row("LF CR is two breaks", "a\n\rb", "a\r\n\r\nb\r\n");
        // The encoding: UTF-8 when the bytes are valid UTF-8, UTF-16 by its mark, else
        // Windows-1252.
        row("not UTF-8: Windows-1252", "caf\xe9", "caf\xe9\r\n");
        row("UTF-8 with mark", "\xef\xbb\xbf\xc3\xa9\n", "\xe9\r\n");
        row("UTF-16 LE with mark", QByteArray("\xff\xfeG\0\xfc\0\n\0\xac\x20", 10),
            "G\xfc\r\n\x80\r\n");
        row("UTF-16 BE with mark", QByteArray("\xfe\xff\0G\0\r\0\n\0\xfc", 10), "G\r\n\xfc\r\n");
        // Characters the code page lacks keep their lines as rich text.
        row("beyond the code page", "\xd0\x96\n\xe2\x82\xac", "rtf:\xd0\x96\r\n\xe2\x82\xac\r\n");
        row("tag opener is just text", "{\\ttf_nodekey 0}", "{\\ttf_nodekey 0}\r\n");
    }
    void linesToStoredText() {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, stored);
        const QByteArray got = modDocText::TextFileAsStoredText(file);
        if (stored.startsWith("rtf:")) {
            QVERIFY2(got.startsWith("{\\rtf"), got.constData());
            QCOMPARE(modDocText::PlainText(got), QString::fromUtf8(stored.mid(4)));
        } else {
            QCOMPARE(got, stored);
        }
    }
    // Export to a file, then import and load that file back: one entry holding the whole text.
    void exportThenImport() {
        QTemporaryDir dir;
        Document *doc = newDocument();
        Node *root = add(doc, nullptr, "Projects");
        add(doc, add(doc, root, "Garden"), "Beds");
        add(doc, root, "");
        doc->m_sFile = "/somewhere/a.mvd";
        doc->m_bDataChanged = true;
        const QByteArray text =
            "0 Projects\r\n\r\n0.1 Garden\r\n\r\n0.1.1 Beds\r\n\r\n0.2 \r\n\r\n";
        const QString path = dir.filePath("x.txt");
        QVERIFY(modDocText::DocExport(*doc, path));
        QCOMPARE(ReadFileBytes(path), text);
        // The export leaves the document's file, format and changed flag alone.
        QCOMPARE(doc->m_sFile, QString("/somewhere/a.mvd"));
        QCOMPARE(doc->m_iFileFormatVersion, 1);
        QVERIFY(doc->m_bDataChanged);

        Document *in = newDocument();
        QVERIFY(modDocText::DocImport(*in, path));
        QCOMPARE(in->trvOutline().Count(), 1);
        Node *only = in->trvOutline().Item(1);
        QCOMPARE(only->Text(), QString("Text"));
        QCOMPARE(only->Tag(), text);
        QCOMPARE(only->Key(), QString("KEY0"));
        QVERIFY(only->Selected() && !modNodes::g_bDocTransfer);
        QCOMPARE(in->m_sFile, QString()); // an import names nothing
    }
    void failuresAreReported() {
        ScopedLog log;
        QTemporaryDir dir;
        Document *doc = newDocument();
        QVERIFY(!modDocText::DocImport(*doc, dir.filePath("none.txt")));
        QCOMPARE(doc->trvOutline().Count(), 0);
        QVERIFY(log.content().contains("Error 53 - "));
        add(doc, nullptr, "Only");
        QVERIFY(!modDocText::DocExport(*doc, dir.filePath("missing/x.txt")));
        QVERIFY(log.content().contains("modDoc WriteWholeFile"));
        QVERIFY(!modNodes::g_bDocTransfer);
    }
    void exportOfRichTexts_data() {
        const auto row = [](const char *name, const QByteArray &in, const QByteArray &out) {
            QTest::newRow(name) << in << out;
        };
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QByteArray>("lines"); // what the entry contributes after its heading
        row("trailing breaks dropped", "{\\rtf1\\ansi abc\\par\\par\\par }", "abc\r\n\r\n");
        row("inner breaks kept", "{\\rtf1\\ansi a\\par\\par {\\b b}\\par }", "a\r\n\r\nb\r\n\r\n");
        row("code page", "{\\rtf1\\ansi caf\\'e9 \\'80}", "caf\xe9 \x80\r\n\r\n");
        row("only breaks", "{\\rtf1\\ansi \\par\\par }", "\r\n");
        row("plain stored text", "not rich\r\n", "not rich\r\n\r\n");
    }
    void exportOfRichTexts() {
        QFETCH(QByteArray, rtf);
        QFETCH(QByteArray, lines);
        for (bool compressed : {false, true}) {
            Document *doc = newDocument();
            QByteArray stored = rtf;
            if (compressed) {
                modNodes::NodeTextCompressIfRequired(rtf, stored);
                QVERIFY(stored != rtf);
            }
            add(doc, nullptr, "R", stored);
            QCOMPARE(modDocText::DocSaveVersion(*doc), "0 R\r\n" + lines);
        }
    }
    void import_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("rich");
        QTest::addColumn<bool>("own"); // put as Mavrolen's own rich copy
        QTest::addColumn<QByteArray>("stored");
        QTest::newRow("plain preferred over rich")
            << QString::fromUtf8("plain \u00e9\r\nline") << QByteArray("{\\rtf1 rich}") << false
            << QByteArray("plain \xe9\r\nline");
        QTest::newRow("rich only")
            << QString() << QByteArray("{\\rtf1 rich}") << false << QByteArray("{\\rtf1 rich}");
        QTest::newRow("empty clipboard") << QString() << QByteArray() << false << QByteArray();
        // Other programs get RTF, HTML and plain text; the import sees only the RTF.
        QTest::newRow("own rich copy")
            << "own" << QByteArray("{\\rtf1 own}") << true << QByteArray("{\\rtf1 own}");
    }
    void import() {
        if (!m_clipboard) {
            QSKIP("the platform has no clipboard");
        }
        QFETCH(QString, text);
        QFETCH(QByteArray, rich);
        QFETCH(bool, own);
        if (own) {
            m_clip.SetRichCopy(rich, "<b>own</b>", text);
        } else {
            put(text, rich);
        }
        QCOMPARE(m_clip.GetFormat(Clipboard::RichText), !rich.isNull());
        Document *doc = newDocument();
        modDocClipboard::DocImport();
        QCOMPARE(doc->trvOutline().Count(), 1);
        Node *root = doc->trvOutline().Item(1);
        QCOMPARE(root->Text(), QString("Text"));
        QTEST(root->Tag(), "stored");
        QCOMPARE(doc->trvOutline().SelectedItem(), root);
        QVERIFY(!modNodes::g_bDocTransfer);
    }
    void exportText_data() {
        QTest::addColumn<int>("document"); // 0 none, 1 empty texts, 2 the example
        QTest::addColumn<QString>("text"); // null: the clipboard is left empty
        // Keys and texts only: labels are not exported.
        QTest::newRow("no document clears") << 0 << QString();
        QTest::newRow("empty texts") << 1 << "0 \r\n0.1 \r\n0.1.1 \r\n0.2 \r\n";
        QTest::newRow("example") << 2 << "0 Plans for the year\r\n0.1 \r\n0.2 Paint the hall\r\n";
    }
    void exportText() {
        if (!m_clipboard) {
            QSKIP("the platform has no clipboard");
        }
        QFETCH(int, document);
        QFETCH(QString, text);
        put("old", "{\\rtf1 old}");
        if (document == 1) {
            Document *doc = newDocument();
            Node *root = add(doc, nullptr, "Projects");
            add(doc, add(doc, root, "Garden"), "Beds");
            add(doc, root, "House");
        } else if (document == 2) {
            exampleDocument();
        }
        QSignalSpy changes(QGuiApplication::clipboard(), &QClipboard::dataChanged);
        modDocClipboard::DocExport();
        QCOMPARE(changes.count(), text.isNull() ? 1 : 2); // cleared, then set once
        QVERIFY(!m_clip.GetFormat(Clipboard::RichText));
        QCOMPARE(m_clip.GetFormat(Clipboard::PlainText), !text.isNull());
        QCOMPARE(m_clip.GetText(), text.isNull() ? QString() : text);
    }
    void exportWithoutClipboardIsReported() {
        ScopedLog log;
        modDocClipboard::SetClipboard(nullptr);
        newDocument();
        modDocClipboard::DocExport();
        QVERIFY(log.content().contains("Error 424"));
        QVERIFY(log.content().contains("modDocClipboard DocExport"));
    }

private:
    // Puts plain text and/or RTF on the clipboard at once.
    void put(const QString &text, const QByteArray &rich) {
        auto *data = new QMimeData;
        if (!text.isNull()) {
            data->setText(text);
        }
        if (!rich.isNull()) {
            data->setData("text/rtf", rich);
        }
        QGuiApplication::clipboard()->setMimeData(data);
    }
    SystemClipboard m_clip;
    bool m_clipboard = false; // the platform has one
};

QTEST_MAIN(TestNative)
#include "tst_native.moc"
