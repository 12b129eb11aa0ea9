// The plain-text path of the RTF reader gives exactly the characters of the rich-text buffer.
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfReader.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QTest>

namespace {

QByteArray pngHex() {
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png.toHex();
}

// Characters made visible in a failure message.
QString shown(const QString &s) {
    QString out;
    for (QChar c : s) {
        if (c.unicode() < 0x20 || c.unicode() > 0x7E)
            out += QStringLiteral("<%1>").arg(c.unicode(), 0, 16);
        else
            out += c;
    }
    return out;
}

} // namespace

class TestRtfPlainText : public QObject {
    Q_OBJECT
private slots:
    void sameAsBuffer_data();
    void sameAsBuffer();
    void corpus();

private:
    RichTextBuffer m_buffer;
};

void TestRtfPlainText::sameAsBuffer_data() {
    QTest::addColumn<QByteArray>("input");
    const QByteArray h = "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0 Arial;}"
                         "{\\f1\\fcharset2 Symbol;}{\\f2\\fcharset204 Arial Cyr;}"
                         "{\\f3\\fcharset128 MS Gothic;}}{\\colortbl ;\\red255\\green0\\blue0;}";
    auto row = [&](const char *name, const QByteArray &body) {
        QTest::newRow(name) << QByteArray(h + body + "}");
    };
    // Paragraphs, breaks and characters.
    row("empty document", "");
    row("one paragraph", "Hello world");
    row("paragraph mark at end", "Hello\\par");
    row("two paragraphs", "One\\par Two\\par");
    row("empty paragraphs", "\\par\\par A\\par\\par\\par");
    row("line and tab", "a\\line b\\tab c\\page d");
    row("raw line breaks in source", "a\r\nb\\\r\nc\\\nd");
    row("control symbols", "x\\~y\\-z\\_w \\{\\}\\\\");
    row("named characters", "\\bullet\\emdash\\endash\\lquote\\rquote\\ldblquote\\rdblquote");
    row("formatting runs", "{\\b bold} {\\i\\cf1 red} \\ul u\\ulnone\\plain\\fs40 big\\caps up");
    row("hidden text", "seen {\\v hidden} seen");
    // Unicode and code pages.
    row("unicode with fallback", "\\u8364?\\uc2\\u8364\\'80\\'80 x\\uc0\\u8364 y");
    row("negative unicode", "\\u-3913?z");
    row("unicode skipping a control", "\\uc1\\u8364\\par x");
    row("unicode line separator", "a\\u8232?b\\u8233?c\\u13?d\\u65532?");
    row("cp1252 bytes", "caf\\'e9 \\'80 \\'93q\\'94");
    row("carriage return byte", "a\\'0db\\'0d\\'0ac\\'0a");
    row("symbol font", "{\\f1 abg\\'b7}");
    row("cyrillic font", "{\\f2 \\'cf\\'f0\\'e8}");
    row("shift-jis font", "{\\f3 \\'82\\'a0\\'82\\'a2}");
    row("\\upr with \\ud", "{\\upr{ansi}{\\*\\ud{\\u1234?}}}");
    // Destinations and fields.
    row("ignorable destinations", "{\\*\\generator x;}{\\info{\\title t}}{\\*\\unknown q}A");
    row("stylesheet", "{\\stylesheet{\\s0 Normal;}}Text");
    row("hyperlink field",
        "{\\field{\\*\\fldinst{HYPERLINK \"http://x.org\"}}{\\fldrslt{\\ul link}}} after");
    row("other field", "{\\field{\\*\\fldinst PAGE}{\\fldrslt 7}}");
    row("footnote kept whole", "a{\\footnote note}b");
    // Lists, both dialects.
    row("richedit bullets",
        "{\\pntext\\f1\\'b7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'b7}}"
        "\\fi-360\\li720 One\\par{\\pntext\\f1\\'b7\\tab}Two\\par\\pard After");
    row("richedit numbering",
        "{\\pntext 1.\\tab}{\\*\\pn\\pnlvlbody\\pndec\\pnstart1{\\pntxta .}}A\\par"
        "{\\pntext 2.\\tab}B\\par");
    row("word lists",
        "{\\*\\listtable{\\list\\listid5{\\listlevel\\levelnfc0{\\leveltext\\'02\\'00.;}}}}"
        "{\\*\\listoverridetable{\\listoverride\\listid5\\ls1}}"
        "{\\listtext 1.\\tab}\\ls1\\ilvl0 First\\par{\\listtext 2.\\tab}Second\\par\\pard Plain");
    // Tables.
    row("table", "Before\\par\\trowd\\cellx1000\\cellx2000\\intbl A\\cell B\\cell\\row"
                 "\\trowd\\cellx1000\\cellx2000\\intbl C\\cell D\\cell\\row\\pard After\\par");
    row("table at start", "\\trowd\\cellx1000\\intbl X\\cell\\row\\pard Y");
    row("table at end", "Lead\\par\\trowd\\cellx900\\cellx1800\\intbl 1\\cell 2\\cell\\row");
    row("table growing columns",
        "\\trowd\\cellx1000\\intbl A\\cell B\\cell C\\cell\\row\\intbl D\\cell\\row\\pard E");
    row("paragraphs in cells",
        "\\trowd\\cellx1000\\cellx2000\\intbl a\\par b\\cell\\cell\\row\\pard\\par z");
    row("cell without row", "x\\cell y\\par");
    row("row without table", "x\\row y");
    row("table left without pard", "\\trowd\\cellx500\\intbl A\\cell\\row B\\par");
    // Pictures and objects.
    row("png picture", "a{\\pict\\pngblip\\picw3\\pich2 " + pngHex() + "}b");
    row("metafile placeholder", "a{\\pict\\wmetafile8\\picw10\\pich10 0102030405}b\\par");
    row("broken png", "{\\pict\\pngblip 00ff}x");
    row("shppict and nonshppict",
        "{\\*\\shppict{\\pict\\pngblip " + pngHex() + "}}{\\nonshppict{\\pict\\wmetafile8 00}}");
    row("embedded object",
        "x{\\object\\objemb{\\*\\objdata 0102}{\\result{\\pict\\wmetafile8 0}}}y");
    row("binary data", "a\\bin3 xyzb");
    // Malformed input.
    row("unclosed groups", "{\\b bold {\\i more");
    row("stray closing braces", "a}}}b");
    row("truncated control", "abc\\");
    row("truncated hex", "x\\'4");
    row("huge parameters", "\\fs999999999999 x\\u99999999999 y\\uc99999 z\\bin99999999");
    row("nul and controls", QByteArray("a\0b\x01"
                                       "c\td",
                                       8));
    QTest::newRow("text after the document") << QByteArray("{\\rtf1 a}trailing");
    QTest::newRow("leading blanks") << QByteArray("\r\n  {\\rtf1 x\\par}");
    QTest::newRow("just the header") << QByteArray("{\\rtf");
    // Plain text that is not RTF.
    QTest::newRow("plain empty") << QByteArray();
    QTest::newRow("plain CR LF") << QByteArray("one\r\ntwo\r\n");
    QTest::newRow("plain LF") << QByteArray("one\ntwo\n\nthree");
    QTest::newRow("plain CR") << QByteArray("one\rtwo\r");
    QTest::newRow("plain mixed") << QByteArray("a\r\r\nb\n\rc");
    QTest::newRow("plain cp1252") << QByteArray("caf\xe9 \x80\x93\x94\x0b");
    QTest::newRow("plain nul") << QByteArray("a\0b", 3);
    QTest::newRow("plain rtf-like") << QByteArray("x{\\rtf1 y}");
}

void TestRtfPlainText::sameAsBuffer() {
    QFETCH(QByteArray, input);
    m_buffer.SetTextRTF(input);
    const QString expected = m_buffer.Text();
    const QString actual = RtfReader::plainText(input);
    if (actual != expected)
        qWarning().noquote() << "expected" << shown(expected) << "\n   actual" << shown(actual);
    QCOMPARE(actual, expected);
}

void TestRtfPlainText::corpus() {
    const QString folder = qEnvironmentVariable("MAVROLEN_RTF_CORPUS");
    if (folder.isEmpty())
        QSKIP("MAVROLEN_RTF_CORPUS names no folder of .rtf files");
    QDirIterator it(folder, {QStringLiteral("*.rtf")}, QDir::Files, QDirIterator::Subdirectories);
    int files = 0;
    QStringList differing;
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
        const QByteArray bytes = file.readAll();
        m_buffer.SetTextRTF(bytes);
        if (RtfReader::plainText(bytes) != m_buffer.Text())
            differing << path;
        ++files;
    }
    qInfo("%d corpus files compared", files);
    QVERIFY2(files > 0, "no .rtf files in the corpus folder");
    QVERIFY2(differing.isEmpty(), qPrintable(differing.join(u'\n')));
}

QTEST_MAIN(TestRtfPlainText)
#include "tst_rtfplaintext.moc"
