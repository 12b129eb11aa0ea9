// The RTF reader (its plain-text path gives exactly the buffer's characters) and the RTF writer.
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfConventions.h"
#include "richtext/RtfReader.h"
#include "richtext/RtfWriter.h"

#include <QtGui>
#include <QtTest>

#include <functional>

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
    c.setPosition(c.selectionStart() + 1);
    return c.charFormat();
}

QTextBlock blockWith(const QTextDocument &doc, const QString &text) {
    return doc.find(text).block();
}

QByteArray rtf(const QByteArray &body, const QByteArray &fonts = "{\\f0\\fnil\\fcharset0 Arial;}") {
    return "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl" + fonts +
           "}\r\n{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n" + body + "}";
}

using Build = std::function<void(QTextCursor &)>;

void prepare(QTextDocument &doc) {
    doc.setDefaultFont(QFont(QStringLiteral("Arial"), 10));
}

QByteArray written(const Build &build) {
    QTextDocument doc;
    prepare(doc);
    QTextCursor c(&doc);
    build(c);
    return RtfWriter::write(&doc);
}

// The body: what follows "\viewkind4\uc1".
QByteArray body(const QByteArray &rtf) {
    const qsizetype at = rtf.indexOf("\\viewkind4\\uc1");
    return at < 0 ? QByteArray() : rtf.mid(at + 14);
}

QTextCharFormat fmt(const std::function<void(QTextCharFormat &)> &set) {
    QTextCharFormat f;
    set(f);
    return f;
}
} // namespace

Q_DECLARE_METATYPE(Build)

class TestRtfReader : public QObject {
    Q_OBJECT

private slots:
    void text_data() {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QString>("expected"); // "*": only compared with the plain-text path
        const auto row = [](const char *name, const QByteArray &input, const QString &expected) {
            QTest::newRow(name) << input << expected;
        };
        const QByteArray czech = "{\\f0\\fnil\\fcharset0 Arial;}{\\f1\\fnil\\fcharset238 Arial;}";
        row("richedit paragraphs", rtf("\\viewkind4\\uc1\\pard\\f0\\fs22 one\\par\r\ntwo\\par\r\n"),
            "one\ntwo");
        row("text after last par", rtf("\\pard a\\par b"), "a\nb");
        row("empty control", rtf("\\viewkind4\\uc1\\pard\\f0\\fs17\\par\r\n"), "");
        row("double par keeps empty line", rtf("a\\par\\par b\\par"), "a\n\nb");
        row("line and tab", rtf("a\\line b\\tab c"), "a\u2028b\tc");
        row("special characters",
            rtf("\\bullet\\emdash\\endash\\lquote\\rquote\\ldblquote\\rdblquote\\~\\-\\_\\{\\}"
                "\\\\"),
            "\u2022\u2014\u2013\u2018\u2019\u201c\u201d\u00a0\u00ad\u2011{}\\");
        row("hex in document code page", rtf("caf\\'e9 \\'80"), "café €");
        row("hex through font charset (Czech)", rtf("\\f1 \\'c8esk\\'e1", czech), "Česká");
        row("cyrillic via ansicpg",
            "{\\rtf1\\ansi\\ansicpg1251{\\fonttbl{\\f0\\fnil Arial;}}\\f0 \\'cf\\'f0}", "Пр");
        row("shift-jis pair", rtf("\\f1 \\'83\\'6f", "{\\f1\\fnil\\fcharset128 MS Gothic;}"), "バ");
        row("symbol font bullet", rtf("\\f1 \\'b7 a", "{\\f1\\fnil\\fcharset2 Symbol;}"), "• α");
        row("unicode hex fallback", rtf("\\u26580\\'3f!"), "\u67d4!");
        row("uc2 skips two bytes", rtf("\\uc2\\u24180\\'94\\'4e."), "\u5e74.");
        row("negative surrogates", rtf("\\u-10179?\\u-9047?"), "💩");
        row("skip stops at group end", rtf("{\\uc3\\u233 a}bc"), "ébc");
        row("metadata skipped",
            rtf("{\\stylesheet{\\s0 Normal;}}{\\info{\\title T}{\\author A}}"
                "{\\*\\generator Riched20 10.0.19041}{\\*\\unknownthing junk}{\\*\\htmltag84 <p>}"
                "\\pard body"),
            "body");
        row("fallback labels are not text",
            rtf("{\\pntext\\f0 1.\\tab}{\\*\\pn\\pnlvlbody\\pndec{\\pntxta.}}x\\par"
                "{\\listtext\\'b7\\tab}y"),
            "x\ny");
        row("backslash newline is par", rtf("a\\\nb\\\r\nc"), "a\nb\nc");
        row("raw line breaks ignored", rtf("a\r\nb\nc\rd"), "abcd");
        row("field result shown", rtf("{\\field{\\*\\fldinst PAGE}{\\fldrslt 7}} of"), "7 of");
        row("hidden text kept", rtf("a{\\v secret}b"), "asecretb");
        row("upr takes unicode part", rtf("{\\upr{\\f0 ansi}{\\*\\ud{\\f0 uni}}}"), "uni");
        // Broken input loads without crashing, keeping what text it can.
        row("malformed: truncated control word", "{\\rtf1 abc\\", "abc");
        row("malformed: truncated hex", "{\\rtf1 abc\\'4", "abc");
        row("malformed: truncated unicode", "{\\rtf1 abc\\u", "abc");
        row("malformed: extra closing braces", "{\\rtf1 a}}}}b", "a");
        row("malformed: unbalanced opening", "{\\rtf1 a{{{{b", "ab");
        row("malformed: huge bin", "{\\rtf1 a{\\pict\\bin999999999 xyz}}", "a\uFFFC");
        row("malformed: negative bin", "{\\rtf1 a\\bin-5 b}", "ab");
        row("malformed: deep nesting",
            "{\\rtf1 " + QByteArray(100000, '{') + "x" + QByteArray(100000, '}') + "y}", "xy");
        static const char garbage[] = "{\\rtf1 a\0b\x01\xff\\'zz\\'\\\\c}";
        row("malformed: nuls and garbage", QByteArray::fromRawData(garbage, sizeof(garbage) - 1),
            "abÿzz\\c");
        row("malformed: huge parameters",
            "{\\rtf1\\fs99999999999\\uc99999\\u99999999 \\li-99999999999\\cf99999 a}", "*");
        row("malformed: cell outside table", "{\\rtf1 a\\cell b\\row c\\cell}", "*");
        row("malformed: pn outside paragraph", "{\\rtf1{\\fonttbl{\\*\\pn\\pndec}}a}", "a");
        row("malformed: long control word", "{\\rtf1 \\" + QByteArray(5000, 'a') + "}", "*");
        row("malformed: nested pictures", "{\\rtf1{\\pict{\\pict\\pngblip 00}ff}}", "*");
        row("malformed: lf only", "{\\rtf1\n{\\fonttbl{\\f0 A;}}\na\\par\nb\\par\n}\n", "a\nb");

        // Rows for the plain-text path.
        const auto any = [&](const char *name, const QByteArray &body) {
            row(name, rtf(body), "*");
        };
        any("page break", "a\\line b\\tab c\\page d");
        any("formatting runs",
            "{\\b bold} {\\i\\cf1 red} \\ul u\\ulnone\\plain\\fs40 big\\caps up");
        any("unicode skipping a control", "\\uc1\\u8364\\par x");
        any("unicode line separator", "a\\u8232?b\\u8233?c\\u13?d\\u65532?");
        any("carriage return byte", "a\\'0db\\'0d\\'0ac\\'0a");
        any("word lists",
            "{\\*\\listtable{\\list\\listid5{\\listlevel\\levelnfc0{\\leveltext\\'02\\'00.;}}}}"
            "{\\*\\listoverridetable{\\listoverride\\listid5\\ls1}}"
            "{\\listtext 1.\\tab}\\ls1\\ilvl0 First\\par{\\listtext 2.\\tab}Second\\par\\pard "
            "Plain");
        any("table", "Before\\par\\trowd\\cellx1000\\cellx2000\\intbl A\\cell B\\cell\\row"
                     "\\trowd\\cellx1000\\cellx2000\\intbl C\\cell D\\cell\\row\\pard After\\par");
        any("table at start", "\\trowd\\cellx1000\\intbl X\\cell\\row\\pard Y");
        any("table at end", "Lead\\par\\trowd\\cellx900\\cellx1800\\intbl 1\\cell 2\\cell\\row");
        any("table growing columns",
            "\\trowd\\cellx1000\\intbl A\\cell B\\cell C\\cell\\row\\intbl D\\cell\\row\\pard E");
        any("paragraphs in cells",
            "\\trowd\\cellx1000\\cellx2000\\intbl a\\par b\\cell\\cell\\row\\pard\\par z");
        any("table left without pard", "\\trowd\\cellx500\\intbl A\\cell\\row B\\par");
        any("broken png", "{\\pict\\pngblip 00ff}x");
        any("shppict and nonshppict",
            "{\\*\\shppict{\\pict\\pngblip 00}}{\\nonshppict{\\pict\\wmetafile8 00}}");
        row("just the header", "{\\rtf", "*");
        // Plain text that is not RTF: line breaks are paragraphs, bytes are in the file code page.
        row("plain empty", QByteArray(), "");
        row("plain line ends", "a\r\r\nb\n\rc\r\nd\ne\r", "a\n\nb\n\nc\nd\ne\n");
        row("plain cp1252", "caf\xe9 \x80\x93\x94\x0b", "café €\u201c\u201d\v");
        row("plain nul", QByteArray("a\0b", 3), "ab");
        row("plain rtf-like", "x{\\rtf1 y}", "x{\\rtf1 y}");
        row("plain after blanks", "\r\n  {rtf1 x}", "\n  {rtf1 x}");
        row("rtf after blanks", "\r\n  {\\rtf1 x}", "x");
    }
    void text() {
        QFETCH(QByteArray, input);
        QFETCH(QString, expected);
        QTextDocument doc;
        QCOMPARE(RtfReader::read(input, &doc), RtfReader::looksLikeRtf(input));
        QVERIFY(RtfReader::looksLikeRtf(input) || doc.isEmpty());
        RtfReader::readAny(input, &doc);
        if (expected != "*")
            QCOMPARE(plain(doc), expected);
        // The plain-text path gives exactly what the buffer holds after loading the same bytes.
        RichTextBuffer buffer;
        buffer.SetTextRTF(input);
        QCOMPARE(RtfReader::plainText(input), buffer.Text());
    }
    void characterFormat_data() {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QString>("probe"); // a word of the text
        QTest::addColumn<QString>("what");  // the property read there
        QTest::addColumn<QString>("value");
        const auto row = [](const char *name, const QByteArray &input, const char *probe,
                            const char *what, const QString &value) {
            QTest::newRow(name) << input << probe << what << value;
        };
        const QByteArray diff = rtf("This \\fs44 is\\fs22  a \\b simple \\ul five \\i paragraph "
                                    "\\ulnone\\b0 document\\i0 .");
        const QByteArray link = "{\\field{\\*\\fldinst{HYPERLINK \"http://x.org/\"}}";
        row("size", diff, "is", "size", "22");
        row("bold", diff, "simple", "bold", "true");
        row("bold off", diff, "document", "bold", "false");
        row("underline", diff, "five", "underline", "true");
        row("underline off", diff, "document", "underline", "false");
        row("italic kept", diff, "document", "italic", "true");
        row("group restores", rtf("{\\b x}y"), "y", "bold", "false");
        row("plain resets", rtf("\\b\\i x\\plain y"), "y", "italic", "false");
        row("auto colour", rtf("\\cf1 red\\cf0  auto"), "auto", "fg", "");
        row("highlight", rtf("\\highlight2 hi"), "hi", "bg", "#0000ff");
        row("superscript", rtf("x \\super 2\\nosupersub"), "2", "super", "true");
        row("subscript", rtf("H {\\sub 2} O"), "2", "sub", "true");
        row("hex font name", rtf("\\f1 x", "{\\f1\\fnil\\fcharset134 \\'cb\\'ce\\'cc\\'e5;}"), "x",
            "family", "宋体");
        row("hidden", rtf("a {\\v secret} b"), "secret", "hidden", "true");
        row("link", rtf(link + "{\\fldrslt{\\cf1\\ul site}}}\\cf0\\ulnone  after"), "site", "href",
            "http://x.org/");
        row("no link after field", rtf(link + "{\\fldrslt site}}  after"), "after", "href", "");
    }
    void characterFormat() {
        QFETCH(QByteArray, input);
        QFETCH(QString, probe);
        QFETCH(QString, what);
        QTextDocument doc;
        QVERIFY(RtfReader::read(input, &doc));
        QVERIFY2(!doc.find(probe).isNull(), qPrintable(plain(doc)));
        const QTextCharFormat f = formatAt(doc, probe);
        const auto colour = [&](QTextFormat::Property p, const QBrush &b) {
            return f.hasProperty(p) ? b.color().name() : QString();
        };
        const QHash<QString, QVariant> got = {
            {"size", f.fontPointSize()},
            {"bold", f.fontWeight() == QFont::Bold},
            {"italic", f.fontItalic()},
            {"underline", f.fontUnderline()},
            {"fg", colour(QTextFormat::ForegroundBrush, f.foreground())},
            {"bg", colour(QTextFormat::BackgroundBrush, f.background())},
            {"super", f.verticalAlignment() == QTextCharFormat::AlignSuperScript},
            {"sub", f.verticalAlignment() == QTextCharFormat::AlignSubScript},
            {"family", f.fontFamilies().toStringList().value(0)},
            {"hidden", f.boolProperty(RtfConventions::HiddenProperty)},
            {"href", f.anchorHref()}};
        QVERIFY(got.contains(what));
        QTEST(got[what].toString(), "value");
    }
    void paragraphFormat() {
        QTextDocument doc;
        QVERIFY(RtfReader::read(
            rtf("\\pard\\qc centred\\par\\pard\\li720\\ri300\\fi-360\\sb120\\sa200 indented\\par"
                "\\pard\\qr right\\par\\qj just\\line more\\pard\\qc\\par {\\pard\\qr grouped\\par}"
                "after\\par"),
            &doc));
        const auto align = [&](const char *text) {
            return blockWith(doc, text).blockFormat().alignment() & Qt::AlignHorizontal_Mask;
        };
        QCOMPARE(align("centred"), Qt::AlignHCenter);
        const QTextBlockFormat ind = blockWith(doc, "indented").blockFormat();
        QCOMPARE(QList<qreal>({ind.leftMargin(), ind.rightMargin(), ind.textIndent(),
                               ind.topMargin(), ind.bottomMargin()}),
                 QList<qreal>({48, 20, -24, 8, 200 / 15.0}));
        QVERIFY(align("right") & Qt::AlignRight);
        // Paragraph properties as they stand at the paragraph mark apply to the whole paragraph.
        QCOMPARE(align("just"), Qt::AlignHCenter);
        QVERIFY(align("grouped") & Qt::AlignRight);
        QCOMPARE(align("after"), Qt::AlignHCenter);
    }
    void lists_data() {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QStringList>("items");
        QTest::addColumn<int>("style");
        QTest::addColumn<QString>("outside");
        const auto row = [](const char *name, const QByteArray &input, const QStringList &items,
                            QTextListFormat::Style style, const char *outside) {
            QTest::newRow(name) << input << items << int(style) << QString(outside);
        };
        row("richedit bullets",
            rtf("\\pard{\\pntext\\f1\\'B7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'B7}}"
                "\\fi-360\\li720 Bullet\\par{\\pntext\\f1\\'B7\\tab}Bullet 2\\par\\pard plain\\par",
                "{\\f0 Arial;}{\\f1\\fnil\\fcharset2 Symbol;}"),
            {"Bullet", "Bullet 2"}, QTextListFormat::ListDisc, "plain");
        row("richedit numbering",
            rtf("\\pard{\\pntext\\f0 1.\\tab}{\\*\\pn\\pnlvlbody\\pnf0\\pnindent0\\pnstart1\\pndec"
                "{\\pntxta.}}\\fi-360\\li720 List 1\\par{\\pntext\\f0 2.\\tab}List 2\\par\\pard "
                "end"),
            {"List 1", "List 2"}, QTextListFormat::ListDecimal, "end");
        row("richedit letters",
            rtf("\\pard{\\*\\pn\\pnlvlbody\\pnlcltr{\\pntxta)}}a1\\par b1\\par\\pard end"),
            {"a1", "b1"}, QTextListFormat::ListLowerAlpha, "end");
        const QByteArray word =
            "{\\*\\listtable{\\list\\listtemplateid1{\\listlevel\\levelnfc0{\\leveltext\\'02\\'00.;"
            "}"
            "{\\levelnumbers\\'01;}}\\listid77}{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01"
            "\\u-3913 ?;}}\\listid88}}{\\*\\listoverridetable{\\listoverride\\listid77"
            "\\listoverridecount0\\ls1}{\\listoverride\\listid88\\ls2}}";
        row("word numbered",
            rtf(word +
                "\\pard\\ls1{\\listtext 1.\\tab}one\\par{\\listtext 2.\\tab}two\\par\\pard no"),
            {"one", "two"}, QTextListFormat::ListDecimal, "no");
        row("word bullets",
            rtf(word + "\\pard\\ls2{\\listtext\\'b7\\tab}one\\par\\ls2 two\\par\\pard no"),
            {"one", "two"}, QTextListFormat::ListDisc, "no");
    }
    void lists() {
        QFETCH(QByteArray, input);
        QFETCH(QStringList, items);
        QTextDocument doc;
        QVERIFY(RtfReader::read(input, &doc));
        QTextList *list = blockWith(doc, items.first()).textList();
        QVERIFY2(list, qPrintable(plain(doc)));
        QTEST(int(list->format().style()), "style");
        QCOMPARE(list->count(), items.size());
        for (int i = 0; i < items.size(); ++i)
            QCOMPARE(list->item(i).text(), items[i]);
        QFETCH(QString, outside);
        QVERIFY(!blockWith(doc, outside).textList());
    }
    void table() {
        QTextDocument doc;
        QVERIFY(RtfReader::read(
            rtf("before\\par\\trowd\\trgaph108\\cellx2000\\cellx4000\\pard\\intbl a\\cell "
                "b\\cell\\row"
                "\\trowd\\cellx2000\\cellx4000\\pard\\intbl c\\cell d\\par e\\cell\\row\\pard "
                "after\\par"),
            &doc));
        QTextTable *table = qobject_cast<QTextTable *>(doc.rootFrame()->childFrames().value(0));
        QVERIFY(table);
        QCOMPARE(table->rows(), 2);
        QCOMPARE(table->columns(), 2);
        QStringList cells;
        for (int i = 0; i < 4; ++i) {
            const QTextTableCell cell = table->cellAt(i / 2, i % 2);
            QTextCursor cur = cell.firstCursorPosition();
            cur.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
            cells << cur.selectedText();
        }
        QCOMPARE(cells, QStringList({"a", "b", "c", "d\u2029e"}));
        QVERIFY(!QTextCursor(blockWith(doc, "after")).currentTable());
        QVERIFY(!QTextCursor(blockWith(doc, "before")).currentTable());
    }
    void pictures() {
        const QByteArray png = QByteArray::fromBase64( // 4 x 3 red pixels
            "iVBORw0KGgoAAAANSUhEUgAAAAQAAAADCAIAAAA7ljmRAAAAEElEQVR42mP4z8AARww4OQD1MQv13XpUDQAAAA"
            "BJRU5ErkJggg==");
        const QByteArray pict =
            "{\\pict\\pngblip\\picw4\\pich3\\picwgoal600\\pichgoal450 " + png.toHex() + "}";
        // Groups kept whole behind a placeholder, with its label; page content (headers, footnotes)
        // is kept the same way.
        const std::pair<QByteArray, QString> kept[] = {
            {"{\\pict\\wmetafile8\\picw100\\pich100 0100090000}", "Picture (Windows metafile)"},
            {"{\\object\\objemb{\\*\\objclass PBrush}{\\*\\objdata 0102}{\\result x}}",
             "Embedded object"},
            {"{\\pict\\wmetafile8\\bin4 }}\xff}}", "Picture (Windows metafile)"},
            {"{\\footnote \\pard {\\super\\chftn} see page {\\b 4}\\par}", "Footnote"},
            {"{\\headerl \\pard\\qc Chapter\\par}", "Header"}};
        QByteArray body = "a" + pict + "b";
        for (const auto &[raw, label] : kept)
            body += raw + char(body.back() + 1);
        QTextDocument doc;
        QVERIFY(RtfReader::read(rtf(body), &doc));
        QCOMPARE(plain(doc), QString("a\uFFFCb\uFFFCc\uFFFCd\uFFFCe\uFFFCf\uFFFCg"));
        auto formatOf = [&](int pos) {
            QTextCursor c(&doc);
            c.setPosition(pos + 1);
            return c.charFormat();
        };
        QTextImageFormat image = formatOf(1).toImageFormat();
        QCOMPARE(image.width(), 40.0);
        QCOMPARE(image.height(), 30.0);
        QVERIFY(!doc.resource(QTextDocument::ImageResource, QUrl(image.name())).isNull());
        QCOMPARE(image.property(RtfConventions::RawGroupProperty).toByteArray(), pict);
        for (int i = 0; i < 5; ++i) {
            QTextCharFormat f = formatOf(3 + 2 * i);
            QCOMPARE(f.objectType(), RtfConventions::PlaceholderObjectType);
            QCOMPARE(f.property(RtfConventions::RawGroupProperty).toByteArray(), kept[i].first);
            QCOMPARE(f.stringProperty(RtfConventions::PlaceholderTextProperty), kept[i].second);
        }
    }
    void emptyDocumentIsComplete() {
        QTextDocument doc;
        QFont f(QStringLiteral("Microsoft Sans Serif"));
        f.setPointSizeF(8.25);
        doc.setDefaultFont(f);
        QCOMPARE(
            RtfWriter::write(&doc),
            QByteArray(
                "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang1033{\\fonttbl{\\f0\\fnil\\fcharset0 "
                "Microsoft Sans Serif;}}\r\n\\viewkind4\\uc1\\pard\\f0\\fs17\\par\r\n}\r\n"));
        // No document at all still gives a complete RTF.
        const QByteArray none = RtfWriter::write(nullptr);
        QVERIFY(none.startsWith("{\\rtf1\\ansi\\ansicpg1252"));
        QVERIFY(none.endsWith("\\par\r\n}\r\n"));
    }
    void fontAndColourTables() {
        const QByteArray rtf = written([](QTextCursor &c) {
            c.insertText("a", fmt([](auto &f) { f.setFontFamilies({"Times New Roman"}); }));
            c.insertText("b", fmt([](auto &f) { f.setForeground(QColor(0, 0, 255)); }));
            c.insertText("c", fmt([](auto &f) { f.setBackground(QColor(1, 2, 3)); }));
            c.insertText("d", fmt([](auto &f) { f.setForeground(QColor(0, 0, 255)); }));
            c.insertText("e",
                         fmt([](auto &f) { f.setFontFamilies({QString::fromUtf8("Gr\u00fcn")}); }));
        });
        QVERIFY2(
            rtf.startsWith("{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang1033{\\fonttbl"
                           "{\\f0\\fnil\\fcharset0 Arial;}{\\f1\\fnil\\fcharset0 Times New Roman;}"
                           "{\\f2\\fnil\\fcharset0 Gr\\'fcn;}}\r\n"
                           "{\\colortbl ;\\red0\\green0\\blue255;\\red1\\green2\\blue3;}\r\n"
                           "\\viewkind4\\uc1\\pard"),
            rtf.constData());
        // Without colours there is no colour table at all.
        QVERIFY(!written([](QTextCursor &c) { c.insertText("plain"); }).contains("colortbl"));
    }
    void contents_data() {
        QTest::addColumn<Build>("build");
        QTest::addColumn<QByteArray>("expected"); // in the body
        const auto text = [](const char *name, const QString &text, const QByteArray &expected) {
            QTest::newRow(name) << Build([text](QTextCursor &c) { c.insertText(text); })
                                << expected;
        };
        text("braces and backslash", "a{b}\\c", " a\\{b\\}\\\\c\\par");
        text("code page", "caf\u00e9 \u20ac5", " caf\\'e9 \\'805\\par");
        text("outside code page", "\u03a9\u4e2d", "\\fs20\\u937?\\u20013?\\par");
        text("surrogate pair", "\U0001F4A9", "\\fs20\\u-10179?\\u-9047?\\par");
        text("tab and line", "a\tb\u2028c", " a\\tab b\\line c\\par");
        text("digits after control word", "\t12", "\\tab 12\\par");
        text("control characters dropped", QString("a") + QChar(1) + "b", " ab\\par");
        text("paragraphs", "one\ntwo", " one\\par\r\ntwo\\par\r\n}");

        // "y" formatted between plain "x" and " z": the switch on before it, off after it.
        const auto format = [](const char *name, const char *on, const char *off,
                               const std::function<void(QTextCharFormat &)> &set) {
            QTest::newRow(name) << Build([f = fmt(set)](QTextCursor &c) {
                c.insertText("x");
                c.insertText("y", f);
                c.insertText(" z", QTextCharFormat());
            }) << "x" + QByteArray(on) + " y" + off + "  z";
        };
        format("bold", "\\b", "\\b0", [](auto &f) { f.setFontWeight(QFont::Bold); });
        format("italic", "\\i", "\\i0", [](auto &f) { f.setFontItalic(true); });
        format("underline", "\\ul", "\\ulnone", [](auto &f) { f.setFontUnderline(true); });
        format("strike", "\\strike", "\\strike0", [](auto &f) { f.setFontStrikeOut(true); });
        format("super", "\\super", "\\nosupersub",
               [](auto &f) { f.setVerticalAlignment(QTextCharFormat::AlignSuperScript); });
        format("sub", "\\sub", "\\nosupersub",
               [](auto &f) { f.setVerticalAlignment(QTextCharFormat::AlignSubScript); });
        format("size 8.25 rounds", "\\fs17", "\\fs20", [](auto &f) { f.setFontPointSize(8.25); });
        format("font", "\\f1", "\\f0", [](auto &f) { f.setFontFamilies({"Courier New"}); });
        format("colour", "\\cf1", "\\cf0", [](auto &f) { f.setForeground(QColor(255, 0, 0)); });
        format("highlight", "\\highlight1", "\\highlight0",
               [](auto &f) { f.setBackground(QColor(255, 255, 0)); });
        format("hidden", "\\v", "\\v0",
               [](auto &f) { f.setProperty(RtfConventions::HiddenProperty, true); });

        // Two paragraphs of one format (one \pard), then a plain one.
        const auto paragraph = [](const char *name, Qt::Alignment alignment, const char *expected,
                                  const std::function<void(QTextBlockFormat &)> &set = {}) {
            QTextBlockFormat format;
            format.setAlignment(alignment);
            if (set) {
                set(format);
            }
            QTest::newRow(name) << Build([format](QTextCursor &c) {
                c.setBlockFormat(format);
                c.insertText("one");
                c.insertBlock();
                c.insertText("two");
                c.insertBlock(QTextBlockFormat());
                c.insertText("three");
            }) << QByteArray(expected);
        };
        paragraph(
            "all, in order", Qt::AlignHCenter,
            "\\pard\\fi-360\\li720\\ri300\\sb120\\sa200\\qc\\f0\\fs20 one\\par\r\ntwo\\par\r\n"
            "\\pard three\\par",
            [](QTextBlockFormat &f) {
                f.setTextIndent(-24);
                f.setLeftMargin(48);
                f.setRightMargin(20);
                f.setTopMargin(8);
                f.setBottomMargin(13.3333);
            });
        paragraph("right", Qt::AlignRight,
                  "\\pard\\qr\\f0\\fs20 one\\par\r\ntwo\\par\r\n\\pard three");
        paragraph("justify", Qt::AlignJustify,
                  "\\pard\\qj\\f0\\fs20 one\\par\r\ntwo\\par\r\n\\pard three");
        paragraph("left writes nothing", Qt::AlignLeft,
                  "\\pard\\f0\\fs20 one\\par\r\ntwo\\par\r\nthree\\par\r\n}");

        const auto html = [](const char *name, const char *html, const QByteArray &expected) {
            QTest::newRow(name) << Build([=](QTextCursor &c) { c.insertHtml(html); }) << expected;
        };
        html("lists",
             "<ul style=\"margin:0\"><li>Bullet</li><li>Bullet 2</li></ul>"
             "<ol style=\"margin:0\"><li>List 1</li><li>List 2</li></ol>end",
             "\\pard{\\pntext\\f1\\'B7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'B7}}"
             "\\f0\\fs20 Bullet\\par\r\n{\\pntext\\f1\\'B7\\tab}Bullet 2\\par\r\n"
             "\\pard{\\pntext\\f0 1.\\tab}{\\*\\pn\\pnlvlbody\\pnf0\\pnindent0\\pnstart1"
             "\\pndec{\\pntxta.}}List 1\\par\r\n{\\pntext\\f0 2.\\tab}List 2\\par\r\n"
             "\\pard end\\par");
        html("link", "see <a href=\"http://example.com/a&quot;b\">here</a> now",
             "see {\\field{\\*\\fldinst{HYPERLINK \"http://example.com/a%22b\"}}"
             "{\\fldrslt{\\ul\\cf1 here}}} now\\par");
        // A table always has a paragraph behind it.
        const QByteArray row = "\\trowd\\trgaph108\\trleft-108\\cellx4680\\cellx9360";
        html("table",
             "before<table><tr><td>a</td><td>b{</td></tr><tr><td>c</td>"
             "<td><p style=\"margin:0\">d1</p><p style=\"margin:0\">d2</p></td></tr></table>",
             row + "\\pard\\intbl a\\cell b\\{\\cell\\row\r\n" + row +
                 "\\pard\\intbl c\\cell d1\\par d2\\cell\\row\r\n\\pard\\par\r\n}");
        // A kept group goes out as it came in; a pasted image as PNG.
        const QByteArray rawGroup = "{\\pict\\wmetafile8\\picw10\\pich10 0102}";
        QTest::newRow("pictures")
            << Build([=](QTextCursor &c) {
                   c.insertText("a");
                   QTextCharFormat placeholder;
                   placeholder.setObjectType(RtfConventions::PlaceholderObjectType);
                   placeholder.setProperty(RtfConventions::RawGroupProperty, rawGroup);
                   placeholder.setProperty(RtfConventions::PlaceholderTextProperty, "Picture");
                   c.insertText(QString(QChar::ObjectReplacementCharacter), placeholder);
                   QImage image(2, 3, QImage::Format_RGB32);
                   image.fill(Qt::red);
                   c.document()->addResource(QTextDocument::ImageResource, QUrl("pasted"), image);
                   QTextImageFormat img;
                   img.setName("pasted");
                   c.insertImage(img);
                   c.insertText("b", QTextCharFormat());
               })
            << " a" + rawGroup +
                   "{\\pict\\pngblip\\picw2\\pich3\\picwgoal30\\pichgoal45\r\n89504e47";
        // An empty paragraph keeps the formatting of its paragraph mark.
        QTest::newRow("empty paragraph's mark") << Build([](QTextCursor &c) {
            c.insertText("a");
            QTextCharFormat big;
            big.setFontPointSize(20);
            c.insertBlock(QTextBlockFormat(), big);
            c.insertBlock(QTextBlockFormat(), QTextCharFormat());
            c.insertText("b");
        }) << QByteArray(" a\\par\r\n\\fs40\\par\r\n\\fs20 b\\par");
    }
    void contents() {
        QFETCH(Build, build);
        QFETCH(QByteArray, expected);
        QTextDocument doc;
        prepare(doc);
        QTextCursor c(&doc);
        build(c);
        const QByteArray rtf = RtfWriter::write(&doc);
        QVERIFY2(body(rtf).contains(expected), rtf.constData());
        for (char ch : rtf) {
            QVERIFY(static_cast<unsigned char>(ch) < 0x80); // 7-bit markup only
        }
        QVERIFY(!rtf.contains("\\plain") && !rtf.contains("\\ql"));
        if (expected.contains("\\f1\\'B7")) { // the bullet's font is in the table
            QVERIFY(rtf.contains("{\\f1\\fnil\\fcharset2 Symbol;}"));
        }
        // The same document built again, or a clone of it, gives the same bytes.
        QCOMPARE(written(build), rtf);
        QCOMPARE(RtfWriter::write(std::unique_ptr<QTextDocument>(doc.clone()).get()), rtf);
    }
    void ranges_data() {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<QByteArray>("expected");
        // "abc" "def" "gh": positions a0 b1 c2 |3 d4 e5 f6 |7 g8 h9
        QTest::newRow("inside one paragraph") << 1 << 3 << QByteArray("\\pard\\f0\\fs20 bc}\r\n");
        QTest::newRow("across a break")
            << 2 << 5 << QByteArray("\\pard\\f0\\fs20 c\\par\r\nd}\r\n");
        QTest::newRow("whole paragraph with break")
            << 4 << 8 << QByteArray("\\pard\\f0\\fs20 def\\par\r\n}\r\n");
        QTest::newRow("reversed") << 5 << 2 << QByteArray("\\pard\\f0\\fs20 c\\par\r\nd}\r\n");
        QTest::newRow("empty") << 4 << 4 << QByteArray("\\uc1}\r\n");
        QTest::newRow("clamped") << -5 << 1000 << QByteArray("abc\\par\r\ndef\\par\r\ngh}\r\n");
    }
    void ranges() {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(QByteArray, expected);
        QTextDocument doc;
        prepare(doc);
        QTextCursor(&doc).insertText("abc\ndef\ngh");
        const QByteArray rtf = RtfWriter::write(&doc, from, to);
        QVERIFY2(rtf.endsWith(expected), rtf.constData());
        QVERIFY(rtf.startsWith("{\\rtf1"));
    }
    // Reads every .rtf below the folder named by MAVROLEN_RTF_CORPUS: each must load with text, no
    // markup may leak into it, and the plain-text path must give the buffer's characters. With
    // MAVROLEN_RTF_DUMP set, writes each text and a rendering there.
    void corpus() {
        const QString dir = qEnvironmentVariable("MAVROLEN_RTF_CORPUS");
        if (dir.isEmpty())
            QSKIP("MAVROLEN_RTF_CORPUS not set");
        const QString dump = qEnvironmentVariable("MAVROLEN_RTF_DUMP");
        QStringList differing;
        RichTextBuffer buffer;
        static const QRegularExpression leak(
            R"(\\[a-z]{2,}|\\'|fcharset|\{\\|;\}|Msftedit|Riched20|[0-9a-f]{24})");
        int count = 0;
        for (QDirIterator it(dir, {"*.rtf"}, QDir::Files, QDirIterator::Subdirectories);
             it.hasNext(); ++count) {
            const QFileInfo fi = it.nextFileInfo();
            QFile f(fi.filePath());
            QVERIFY(f.open(QIODevice::ReadOnly));
            const QByteArray raw = f.readAll();
            QTextDocument doc;
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
        QVERIFY(count > 0);
        QVERIFY2(differing.isEmpty(), qPrintable(differing.join(u'\n')));
    }
};

QTEST_MAIN(TestRtfReader)
#include "tst_rtfreader.moc"
