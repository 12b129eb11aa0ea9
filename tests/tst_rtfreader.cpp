// The RTF reader: text, character and paragraph formats, lists, tables, pictures, broken input; its
// plain-text path must give exactly the characters of the rich-text buffer.
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfConventions.h"
#include "richtext/RtfPlaceholder.h"
#include "richtext/RtfReader.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextList>
#include <QTextTable>

namespace {

// The document's text, paragraphs joined with '\n' (table cells included, each a paragraph).
QString plain(const QTextDocument &doc) {
    QStringList lines;
    for (QTextBlock b = doc.begin(); b.isValid(); b = b.next())
        lines << b.text();
    return lines.join(u'\n');
}

// The character format at the first occurrence of the text.
QTextCharFormat formatAt(const QTextDocument &doc, const QString &text) {
    QTextCursor c = doc.find(text, 0, QTextDocument::FindWholeWords);
    if (c.isNull())
        return {};
    QTextCursor at(const_cast<QTextDocument *>(&doc));
    at.setPosition(c.selectionStart() + 1);
    return at.charFormat();
}

QTextBlock blockWith(const QTextDocument &doc, const QString &text) {
    QTextCursor c = doc.find(text);
    return c.isNull() ? QTextBlock() : c.block();
}

// Characters made visible in a failure message.
QString shown(const QString &s) {
    QString out;
    for (QChar c : s)
        out += c.unicode() < 0x20 || c.unicode() > 0x7E
                   ? QStringLiteral("<%1>").arg(c.unicode(), 0, 16)
                   : QString(c);
    return out;
}

QByteArray rtf(const QByteArray &body, const QByteArray &fonts = "{\\f0\\fnil\\fcharset0 Arial;}") {
    return "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl" + fonts +
           "}\r\n{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n" + body + "}";
}

} // namespace

class TestRtfReader : public QObject {
    Q_OBJECT

private slots:
    void text_data();
    void text();
    void characterFormat_data();
    void characterFormat();
    void paragraphFormat();
    void lists_data();
    void lists();
    void tableAndLink();
    void pictures();
    void plainTextFallback();
    void corpus();
};

void TestRtfReader::text_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("expected");

    QTest::newRow("richedit paragraphs") << rtf("\\viewkind4\\uc1\\pard\\f0\\fs22 one\\par\r\n"
                                                "two\\par\r\n")
                                         << "one\ntwo";
    QTest::newRow("text after last par") << rtf("\\pard a\\par b") << "a\nb";
    QTest::newRow("empty control") << rtf("\\viewkind4\\uc1\\pard\\f0\\fs17\\par\r\n") << "";
    QTest::newRow("double par keeps empty line") << rtf("a\\par\\par b\\par") << "a\n\nb";
    QTest::newRow("line and tab") << rtf("a\\line b\\tab c") << QString("a\u2028b\tc");
    QTest::newRow("special characters")
        << rtf("\\bullet\\emdash\\endash\\lquote\\rquote\\ldblquote\\rdblquote\\~\\-\\_\\{\\}\\\\")
        << QString::fromUtf8("\u2022\u2014\u2013\u2018\u2019\u201c\u201d\u00a0\u00ad\u2011{}\\");
    QTest::newRow("hex in document code page")
        << rtf("caf\\'e9 \\'80") << QString::fromUtf8("café €");
    QTest::newRow("hex through font charset (Czech)")
        << rtf("\\f1 \\'c8esk\\'e1",
               "{\\f0\\fnil\\fcharset0 Arial;}{\\f1\\fnil\\fcharset238 Arial;}")
        << QString::fromUtf8("Česká");
    QTest::newRow("greek charset")
        << rtf("\\f1 \\'e1\\'e2", "{\\f1\\fnil\\fcharset161 Arial;}") << QString::fromUtf8("αβ");
    QTest::newRow("cyrillic via ansicpg")
        << QByteArray("{\\rtf1\\ansi\\ansicpg1251{\\fonttbl{\\f0\\fnil Arial;}}\\f0 \\'cf\\'f0}")
        << QString::fromUtf8("Пр");
    QTest::newRow("shift-jis pair")
        << rtf("\\f1 \\'83\\'6f", "{\\f1\\fnil\\fcharset128 MS Gothic;}")
        << QString::fromUtf8("バ");
    QTest::newRow("symbol font bullet")
        << rtf("\\f1 \\'b7 a", "{\\f1\\fnil\\fcharset2 Symbol;}") << QString::fromUtf8("• α");
    QTest::newRow("unicode skips fallback") << rtf("\\uc1\\u8364?x") << QString::fromUtf8("€x");
    QTest::newRow("unicode hex fallback") << rtf("\\u26580\\'3f!") << QString::fromUtf8("\u67d4!");
    QTest::newRow("uc2 skips two bytes")
        << rtf("\\uc2\\u24180\\'94\\'4e.") << QString::fromUtf8("\u5e74.");
    QTest::newRow("uc0") << rtf("\\uc0\\u233 x") << QString::fromUtf8("éx");
    QTest::newRow("negative surrogates") << rtf("\\u-10179?\\u-9047?") << QString::fromUtf8("💩");
    QTest::newRow("skip stops at group end")
        << rtf("{\\uc3\\u233 a}bc") << QString::fromUtf8("ébc");
    QTest::newRow("metadata skipped")
        << rtf("{\\stylesheet{\\s0 Normal;}}{\\info{\\title T}{\\author A}}"
               "{\\*\\generator Riched20 10.0.19041}{\\*\\unknownthing junk}{\\*\\htmltag84 <p>}"
               "\\pard body")
        << "body";
    QTest::newRow("fallback labels are not text")
        << rtf("{\\pntext\\f0 1.\\tab}{\\*\\pn\\pnlvlbody\\pndec{\\pntxta.}}x\\par"
               "{\\listtext\\'b7\\tab}y")
        << "x\ny";
    QTest::newRow("backslash newline is par") << rtf("a\\\nb\\\r\nc") << "a\nb\nc";
    QTest::newRow("raw line breaks ignored") << rtf("a\r\nb\nc\rd") << "abcd";
    QTest::newRow("field result shown")
        << rtf("{\\field{\\*\\fldinst PAGE}{\\fldrslt 7}} of") << "7 of";
    QTest::newRow("hidden text kept") << rtf("a{\\v secret}b") << "asecretb";
    QTest::newRow("upr takes unicode part")
        << rtf("{\\upr{\\f0 ansi}{\\*\\ud{\\f0 uni}}}") << "uni";
    // Broken input loads without crashing, keeping what text it can; "*": any text.
    QTest::newRow("malformed: truncated") << QByteArray("{\\rtf1 abc\\b de") << "abcde";
    QTest::newRow("malformed: truncated control word") << QByteArray("{\\rtf1 abc\\") << "abc";
    QTest::newRow("malformed: truncated hex") << QByteArray("{\\rtf1 abc\\'4") << "abc";
    QTest::newRow("malformed: truncated unicode") << QByteArray("{\\rtf1 abc\\u") << "abc";
    QTest::newRow("malformed: extra closing braces") << QByteArray("{\\rtf1 a}}}}b") << "a";
    QTest::newRow("malformed: unbalanced opening") << QByteArray("{\\rtf1 a{{{{b") << "ab";
    QTest::newRow("malformed: huge bin")
        << QByteArray("{\\rtf1 a{\\pict\\bin999999999 xyz}}") << "a\uFFFC";
    QTest::newRow("malformed: negative bin") << QByteArray("{\\rtf1 a\\bin-5 b}") << "ab";
    QTest::newRow("malformed: deep nesting")
        << QByteArray("{\\rtf1 ") + QByteArray(100000, '{') + "x" + QByteArray(100000, '}') + "y}"
        << "xy";
    static const char garbage[] = "{\\rtf1 a\0b\x01\xff\\'zz\\'\\\\c}";
    QTest::newRow("malformed: nuls and garbage")
        << QByteArray::fromRawData(garbage, sizeof(garbage) - 1) << QString::fromUtf8("abÿzz\\c");
    QTest::newRow("malformed: huge parameters")
        << QByteArray("{\\rtf1\\fs99999999999\\uc99999\\u99999999 "
                      "\\li-99999999999\\cf99999 a}")
        << "*";
    QTest::newRow("malformed: cell outside table")
        << QByteArray("{\\rtf1 a\\cell b\\row c\\cell}") << "*";
    QTest::newRow("malformed: pn outside paragraph")
        << QByteArray("{\\rtf1{\\fonttbl{\\*\\pn\\pndec}}a}") << "a";
    QTest::newRow("malformed: long control word")
        << QByteArray("{\\rtf1 \\") + QByteArray(5000, 'a') + "}"
        << "*";
    QTest::newRow("malformed: nested pictures")
        << QByteArray("{\\rtf1{\\pict{\\pict\\pngblip 00}ff}}") << "*";
    QTest::newRow("malformed: lf only")
        << QByteArray("{\\rtf1\n{\\fonttbl{\\f0 A;}}\na\\par\nb\\par\n}\n") << "a\nb";
    QTest::newRow("malformed: cr only")
        << QByteArray("{\\rtf1\r{\\fonttbl{\\f0 A;}}\ra\\par\rb\\par\r}\r") << "a\nb";

    // Rows for the plain-text path ("*": only compared with the buffer).
    const QByteArray h = "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0 Arial;}"
                         "{\\f1\\fcharset2 Symbol;}{\\f2\\fcharset204 Arial Cyr;}"
                         "{\\f3\\fcharset128 MS Gothic;}}{\\colortbl ;\\red255\\green0\\blue0;}";
    auto row = [&](const char *name, const QByteArray &body) {
        QTest::newRow(name) << QByteArray(h + body + "}") << "*";
    };
    row("empty paragraphs", "\\par\\par A\\par\\par\\par");
    row("page break", "a\\line b\\tab c\\page d");
    row("formatting runs", "{\\b bold} {\\i\\cf1 red} \\ul u\\ulnone\\plain\\fs40 big\\caps up");
    row("unicode skipping a control", "\\uc1\\u8364\\par x");
    row("unicode line separator", "a\\u8232?b\\u8233?c\\u13?d\\u65532?");
    row("cp1252 quotes", "\\'93q\\'94");
    row("carriage return byte", "a\\'0db\\'0d\\'0ac\\'0a");
    row("hyperlink field",
        "{\\field{\\*\\fldinst{HYPERLINK \"http://x.org\"}}{\\fldrslt{\\ul link}}} after");
    row("richedit bullets",
        "{\\pntext\\f1\\'b7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'b7}}"
        "\\fi-360\\li720 One\\par{\\pntext\\f1\\'b7\\tab}Two\\par\\pard After");
    row("word lists",
        "{\\*\\listtable{\\list\\listid5{\\listlevel\\levelnfc0{\\leveltext\\'02\\'00.;}}}}"
        "{\\*\\listoverridetable{\\listoverride\\listid5\\ls1}}"
        "{\\listtext 1.\\tab}\\ls1\\ilvl0 First\\par{\\listtext 2.\\tab}Second\\par\\pard Plain");
    row("table", "Before\\par\\trowd\\cellx1000\\cellx2000\\intbl A\\cell B\\cell\\row"
                 "\\trowd\\cellx1000\\cellx2000\\intbl C\\cell D\\cell\\row\\pard After\\par");
    row("table at start", "\\trowd\\cellx1000\\intbl X\\cell\\row\\pard Y");
    row("table at end", "Lead\\par\\trowd\\cellx900\\cellx1800\\intbl 1\\cell 2\\cell\\row");
    row("table growing columns",
        "\\trowd\\cellx1000\\intbl A\\cell B\\cell C\\cell\\row\\intbl D\\cell\\row\\pard E");
    row("paragraphs in cells",
        "\\trowd\\cellx1000\\cellx2000\\intbl a\\par b\\cell\\cell\\row\\pard\\par z");
    row("table left without pard", "\\trowd\\cellx500\\intbl A\\cell\\row B\\par");
    row("broken png", "{\\pict\\pngblip 00ff}x");
    row("shppict and nonshppict",
        "{\\*\\shppict{\\pict\\pngblip 00}}{\\nonshppict{\\pict\\wmetafile8 00}}");
    QTest::newRow("text after the document") << QByteArray("{\\rtf1 a}trailing") << "*";
    QTest::newRow("just the header") << QByteArray("{\\rtf") << "*";
    // Plain text that is not RTF.
    QTest::newRow("plain empty") << QByteArray() << "";
    QTest::newRow("plain line ends") << QByteArray("a\r\r\nb\n\rc\r\nd\ne\r") << "*";
    QTest::newRow("plain cp1252") << QByteArray("caf\xe9 \x80\x93\x94\x0b") << "*";
    QTest::newRow("plain nul") << QByteArray("a\0b", 3) << "*";
    QTest::newRow("plain rtf-like") << QByteArray("x{\\rtf1 y}") << "*";
}

void TestRtfReader::text() {
    QFETCH(QByteArray, input);
    QFETCH(QString, expected);
    QTextDocument doc;
    QVERIFY(RtfReader::read(input, &doc) || !RtfReader::looksLikeRtf(input));
    if (expected != "*")
        QCOMPARE(plain(doc), expected);
    // The plain-text path gives exactly what the buffer holds after loading the same bytes.
    RichTextBuffer buffer;
    buffer.SetTextRTF(input);
    const QString actual = RtfReader::plainText(input);
    if (actual != buffer.Text())
        qWarning().noquote() << "buffer" << shown(buffer.Text()) << "\n plain" << shown(actual);
    QCOMPARE(actual, buffer.Text());
}

void TestRtfReader::characterFormat_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("probe");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("what");

    QByteArray diff = rtf("This \\fs44 is\\fs22  a \\b simple \\ul five \\i paragraph \\ulnone\\b0 "
                          "document\\i0 .");
    QTest::newRow("size") << diff << "is" << QVariant(22.0) << "size";
    QTest::newRow("bold") << diff << "simple" << QVariant(true) << "bold";
    QTest::newRow("bold off") << diff << "document" << QVariant(false) << "bold";
    QTest::newRow("underline") << diff << "five" << QVariant(true) << "underline";
    QTest::newRow("underline off") << diff << "document" << QVariant(false) << "underline";
    QTest::newRow("italic kept") << diff << "document" << QVariant(true) << "italic";
    QTest::newRow("group restores") << rtf("{\\b x}y") << "y" << QVariant(false) << "bold";
    QTest::newRow("plain resets") << rtf("\\b\\i x\\plain y") << "y" << QVariant(false) << "italic";
    QTest::newRow("strike") << rtf("\\strike s\\strike0  t") << "s" << QVariant(true) << "strike";
    QTest::newRow("colour") << rtf("\\cf1 red\\cf0  auto") << "red" << QVariant("#ff0000") << "fg";
    QTest::newRow("auto colour") << rtf("\\cf1 red\\cf0  auto") << "auto" << QVariant("") << "fg";
    QTest::newRow("highlight") << rtf("\\highlight2 hi") << "hi" << QVariant("#0000ff") << "bg";
    QTest::newRow("superscript") << rtf("x \\super 2\\nosupersub") << "2"
                                 << QVariant(int(QTextCharFormat::AlignSuperScript)) << "vert";
    QTest::newRow("subscript") << rtf("H {\\sub 2} O") << "2"
                               << QVariant(int(QTextCharFormat::AlignSubScript)) << "vert";
    QTest::newRow("font family") << rtf("\\f1 x", "{\\f0 Arial;}{\\f1\\froman Times New Roman;}")
                                 << "x" << QVariant("Times New Roman") << "family";
    QTest::newRow("hex font name")
        << rtf("\\f1 x", "{\\f1\\fnil\\fcharset134 \\'cb\\'ce\\'cc\\'e5;}") << "x"
        << QVariant(QString::fromUtf8("宋体")) << "family";
    QTest::newRow("hidden") << rtf("a {\\v secret} b") << "secret" << QVariant(true) << "hidden";
    QTest::newRow("link") << rtf("{\\field{\\*\\fldinst{HYPERLINK \"http://x.org/\"}}"
                                 "{\\fldrslt{\\cf1\\ul site}}}\\cf0\\ulnone  after")
                          << "site" << QVariant("http://x.org/") << "href";
    QTest::newRow("no link after field") << rtf("{\\field{\\*\\fldinst{HYPERLINK \"http://x/\"}}"
                                                "{\\fldrslt site}}  after")
                                         << "after" << QVariant("") << "href";
}

void TestRtfReader::characterFormat() {
    QFETCH(QByteArray, input);
    QFETCH(QString, probe);
    QFETCH(QString, what);
    QFETCH(QVariant, value);
    QTextDocument doc;
    QVERIFY(RtfReader::read(input, &doc));
    QTextCharFormat f = formatAt(doc, probe);
    QVERIFY2(!doc.find(probe).isNull(), qPrintable(plain(doc)));
    QVariant got;
    if (what == "size")
        got = f.fontPointSize();
    else if (what == "bold")
        got = f.fontWeight() == QFont::Bold;
    else if (what == "italic")
        got = f.fontItalic();
    else if (what == "underline")
        got = f.fontUnderline();
    else if (what == "strike")
        got = f.fontStrikeOut();
    else if (what == "fg")
        got = f.hasProperty(QTextFormat::ForegroundBrush) ? f.foreground().color().name() : "";
    else if (what == "bg")
        got = f.hasProperty(QTextFormat::BackgroundBrush) ? f.background().color().name() : "";
    else if (what == "vert")
        got = int(f.verticalAlignment());
    else if (what == "family")
        got = f.fontFamilies().toStringList().value(0);
    else if (what == "hidden")
        got = f.boolProperty(RtfConventions::HiddenProperty);
    else if (what == "href")
        got = f.anchorHref();
    QCOMPARE(got.toString(), value.toString());
}

void TestRtfReader::paragraphFormat() {
    QTextDocument doc;
    QVERIFY(RtfReader::read(
        rtf("\\pard\\qc centred\\par\\pard\\li720\\ri300\\fi-360\\sb120\\sa200 indented\\par"
            "\\pard\\qr right\\par\\qj just\\line more\\pard\\qc\\par {\\pard\\qr grouped\\par}"
            "after\\par"),
        &doc));
    QCOMPARE(blockWith(doc, "centred").blockFormat().alignment() & Qt::AlignHorizontal_Mask,
             Qt::AlignHCenter);
    QTextBlockFormat ind = blockWith(doc, "indented").blockFormat();
    QCOMPARE(ind.leftMargin(), 48.0);
    QCOMPARE(ind.rightMargin(), 20.0);
    QCOMPARE(ind.textIndent(), -24.0);
    QCOMPARE(ind.topMargin(), 8.0);
    QCOMPARE(ind.bottomMargin(), 200 / 15.0);
    QVERIFY(blockWith(doc, "right").blockFormat().alignment() & Qt::AlignRight);
    // Paragraph properties as they stand at the paragraph mark apply to the whole paragraph.
    QCOMPARE(blockWith(doc, "just").blockFormat().alignment() & Qt::AlignHorizontal_Mask,
             Qt::AlignHCenter);
    QVERIFY(blockWith(doc, "grouped").blockFormat().alignment() & Qt::AlignRight);
    QCOMPARE(blockWith(doc, "after").blockFormat().alignment() & Qt::AlignHorizontal_Mask,
             Qt::AlignHCenter);
}

void TestRtfReader::lists_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<int>("style");
    QTest::addColumn<QString>("outside");

    QTest::newRow("richedit bullets")
        << rtf("\\pard{\\pntext\\f1\\'B7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'B7}}"
               "\\fi-360\\li720 Bullet\\par{\\pntext\\f1\\'B7\\tab}Bullet 2\\par\\pard plain\\par",
               "{\\f0 Arial;}{\\f1\\fnil\\fcharset2 Symbol;}")
        << QStringList{"Bullet", "Bullet 2"} << int(QTextListFormat::ListDisc) << "plain";
    QTest::newRow("richedit numbering")
        << rtf("\\pard{\\pntext\\f0 1.\\tab}{\\*\\pn\\pnlvlbody\\pnf0\\pnindent0\\pnstart1\\pndec"
               "{\\pntxta.}}\\fi-360\\li720 List 1\\par{\\pntext\\f0 2.\\tab}List 2\\par\\pard end")
        << QStringList{"List 1", "List 2"} << int(QTextListFormat::ListDecimal) << "end";
    QTest::newRow("richedit letters")
        << rtf("\\pard{\\*\\pn\\pnlvlbody\\pnlcltr{\\pntxta)}}a1\\par b1\\par\\pard end")
        << QStringList{"a1", "b1"} << int(QTextListFormat::ListLowerAlpha) << "end";
    QByteArray word =
        "{\\*\\listtable{\\list\\listtemplateid1{\\listlevel\\levelnfc0{\\leveltext\\'02\\'00.;}"
        "{\\levelnumbers\\'01;}}\\listid77}{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01\\u-"
        "3913 ?;}"
        "}\\listid88}}{\\*\\listoverridetable{\\listoverride\\listid77\\listoverridecount0\\ls1}"
        "{\\listoverride\\listid88\\ls2}}";
    QTest::newRow("word numbered")
        << rtf(word +
               "\\pard\\ls1{\\listtext 1.\\tab}one\\par{\\listtext 2.\\tab}two\\par\\pard no")
        << QStringList{"one", "two"} << int(QTextListFormat::ListDecimal) << "no";
    QTest::newRow("word bullets")
        << rtf(word + "\\pard\\ls2{\\listtext\\'b7\\tab}one\\par\\ls2 two\\par\\pard no")
        << QStringList{"one", "two"} << int(QTextListFormat::ListDisc) << "no";
}

void TestRtfReader::lists() {
    QFETCH(QByteArray, input);
    QFETCH(QStringList, items);
    QFETCH(int, style);
    QFETCH(QString, outside);
    QTextDocument doc;
    QVERIFY(RtfReader::read(input, &doc));
    QTextList *list = blockWith(doc, items.first()).textList();
    QVERIFY2(list, qPrintable(plain(doc)));
    QCOMPARE(int(list->format().style()), style);
    QCOMPARE(list->count(), items.size());
    for (int i = 0; i < items.size(); ++i)
        QCOMPARE(list->item(i).text(), items[i]);
    QVERIFY(!blockWith(doc, outside).textList());
}

void TestRtfReader::tableAndLink() {
    QTextDocument doc;
    QVERIFY(RtfReader::read(
        rtf("before\\par\\trowd\\trgaph108\\cellx2000\\cellx4000\\pard\\intbl a\\cell b\\cell\\row"
            "\\trowd\\cellx2000\\cellx4000\\pard\\intbl c\\cell d\\par e\\cell\\row\\pard "
            "after\\par"),
        &doc));
    QTextTable *table = nullptr;
    for (QTextFrame *f : doc.rootFrame()->childFrames())
        if ((table = qobject_cast<QTextTable *>(f)))
            break;
    QVERIFY(table);
    QCOMPARE(table->rows(), 2);
    QCOMPARE(table->columns(), 2);
    auto cellText = [&](int r, int c) {
        QTextTableCell cell = table->cellAt(r, c);
        QTextCursor cur = cell.firstCursorPosition();
        cur.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
        return cur.selectedText();
    };
    QCOMPARE(cellText(0, 0), "a");
    QCOMPARE(cellText(0, 1), "b");
    QCOMPARE(cellText(1, 0), "c");
    QCOMPARE(cellText(1, 1), QString("d\u2029e"));
    QVERIFY(blockWith(doc, "before").isValid());
    QVERIFY(!QTextCursor(blockWith(doc, "after")).currentTable());
    QVERIFY(!QTextCursor(blockWith(doc, "before")).currentTable());
}

void TestRtfReader::pictures() {
    QImage img(4, 3, QImage::Format_RGB32);
    img.fill(Qt::red);
    QByteArray png;
    QBuffer buf(&png);
    buf.open(QIODevice::WriteOnly);
    img.save(&buf, "PNG");
    QByteArray pict =
        "{\\pict\\pngblip\\picw4\\pich3\\picwgoal600\\pichgoal450 " + png.toHex() + "}";
    QByteArray wmf = "{\\pict\\wmetafile8\\picw100\\pich100 0100090000}";
    QByteArray obj = "{\\object\\objemb{\\*\\objclass PBrush}{\\*\\objdata 0102}{\\result x}}";
    QByteArray bin = "{\\pict\\wmetafile8\\bin4 }}\xff}}";
    // Page content (headers, footnotes) is kept the same way.
    QByteArray note = "{\\footnote \\pard {\\super\\chftn} see page {\\b 4}\\par}";
    QByteArray header = "{\\headerl \\pard\\qc Chapter\\par}";
    QTextDocument doc;
    installPlaceholderHandler(&doc);
    QVERIFY(RtfReader::read(
        rtf("a" + pict + "b" + wmf + "c" + obj + "d" + bin + "e" + note + "f" + header + "g"),
        &doc));
    QCOMPARE(plain(doc), QString("a\uFFFCb\uFFFCc\uFFFCd\uFFFCe\uFFFCf\uFFFCg"));
    auto formatOf = [&](int pos) {
        QTextCursor c(&doc);
        c.setPosition(pos + 1);
        return c.charFormat();
    };
    QTextImageFormat image = formatOf(1).toImageFormat();
    QVERIFY(image.isValid());
    QCOMPARE(image.width(), 40.0);
    QCOMPARE(image.height(), 30.0);
    QVERIFY(!doc.resource(QTextDocument::ImageResource, QUrl(image.name())).isNull());
    QCOMPARE(image.property(RtfConventions::RawGroupProperty).toByteArray(), pict);
    const QByteArray raws[] = {wmf, obj, bin, note, header};
    const char *labels[] = {"Picture (Windows metafile)", "Embedded object",
                            "Picture (Windows metafile)", "Footnote", "Header"};
    for (int i = 0; i < 5; ++i) {
        QTextCharFormat f = formatOf(3 + 2 * i);
        QCOMPARE(f.objectType(), RtfConventions::PlaceholderObjectType);
        QCOMPARE(f.property(RtfConventions::RawGroupProperty).toByteArray(), raws[i]);
        QCOMPARE(f.stringProperty(RtfConventions::PlaceholderTextProperty), labels[i]);
    }
    // The placeholder is drawn: the rendered page is not blank around it.
    QImage page(300, 100, QImage::Format_RGB32);
    page.fill(Qt::white);
    QPainter p(&page);
    doc.drawContents(&p);
    p.end();
    QVERIFY(doc.documentLayout()->handlerForObject(RtfConventions::PlaceholderObjectType));
}

void TestRtfReader::plainTextFallback() {
    QVERIFY(RtfReader::looksLikeRtf("\r\n  {\\rtf1 x}"));
    QVERIFY(!RtfReader::looksLikeRtf("{rtf1 x}"));
    QVERIFY(!RtfReader::looksLikeRtf(""));
    QTextDocument doc;
    QVERIFY(!RtfReader::read("plain", &doc));
    QVERIFY(doc.isEmpty());
    RtfReader::readAny("line one\r\nline two\nthree\rfour caf\xe9 {\\b x}", &doc);
    QCOMPARE(plain(doc), QString::fromUtf8("line one\nline two\nthree\nfour café {\\b x}"));
    RtfReader::readAny("{\\rtf1 {\\b bold}}", &doc);
    QCOMPARE(plain(doc), "bold");
}

// Reads every .rtf below the folder named by MAVROLEN_RTF_CORPUS: each must load with text, no
// markup may leak into it, and the plain-text path must give the buffer's characters. With
// MAVROLEN_RTF_DUMP set, writes each text and a rendering there.
void TestRtfReader::corpus() {
    const QString dir = qEnvironmentVariable("MAVROLEN_RTF_CORPUS");
    if (dir.isEmpty())
        QSKIP("MAVROLEN_RTF_CORPUS not set");
    const QString dump = qEnvironmentVariable("MAVROLEN_RTF_DUMP");
    QFileInfoList files;
    for (QDirIterator it(dir, {"*.rtf"}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
        files << it.nextFileInfo();
    QVERIFY(!files.isEmpty());
    QStringList differing;
    RichTextBuffer buffer;
    static const QRegularExpression leak(
        R"(\\[a-z]{2,}|\\'|fcharset|\{\\|;\}|Msftedit|Riched20|[0-9a-f]{24})");
    for (const QFileInfo &fi : files) {
        QFile f(fi.filePath());
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray raw = f.readAll();
        QTextDocument doc;
        installPlaceholderHandler(&doc);
        QVERIFY2(RtfReader::read(raw, &doc), qPrintable(fi.fileName()));
        const QString text = doc.toPlainText();
        QVERIFY2(!text.trimmed().isEmpty(), qPrintable(fi.fileName()));
        buffer.SetTextRTF(raw);
        if (RtfReader::plainText(raw) != buffer.Text())
            differing << fi.filePath();
        for (auto it = leak.globalMatch(text); it.hasNext();) {
            const QString found = it.next().captured();
            // An escaped backslash in the file is a real backslash in the text.
            if (found.startsWith(u'\\') && raw.contains("\\" + found.toLatin1()))
                continue;
            QFAIL(qPrintable(fi.fileName() + ": " + found));
        }
        if (!dump.isEmpty()) {
            QFile out(dump + "/" + fi.completeBaseName() + ".txt");
            if (out.open(QIODevice::WriteOnly))
                out.write(text.toUtf8());
            doc.setTextWidth(700);
            QImage page(700, qMin(3000, int(doc.size().height()) + 10), QImage::Format_RGB32);
            page.fill(Qt::white);
            QPainter p(&page);
            doc.drawContents(&p);
            p.end();
            page.save(dump + "/" + fi.completeBaseName() + ".png");
        }
    }
    QVERIFY2(differing.isEmpty(), qPrintable(differing.join(u'\n')));
}

QTEST_MAIN(TestRtfReader)
#include "tst_rtfreader.moc"
