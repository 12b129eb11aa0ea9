// The RTF reader (its plain-text path gives exactly the buffer's characters), the RTF writer, and
// the rich-text buffer: positions, selection attributes, Find, signals, fonts, the round trip.
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfConventions.h"
#include "richtext/RtfReader.h"
#include "richtext/RtfWriter.h"
#include "richtext/clsFont.h"
#include "support/TestSupport.h"

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

using Fill = std::function<void(RichTextBuffer &)>;

void setText(RichTextBuffer &b, const QString &text) {
    b.Select(0, 1 << 30);
    b.SetSelText(text);
}

void select(RichTextBuffer &b, int start, int length) {
    b.SetSelStart(start);
    b.SetSelLength(length);
}

template <typename T> QString shown(const std::optional<T> &value) {
    return value ? QVariant::fromValue(*value).toString() : QStringLiteral("-");
}

// The selection's attributes, "-" where they are mixed: bold, italic, underline, strike, font
// name, size and colour, then bullet, indent and alignment.
QString attributes(RichTextBuffer &b, int start, int length) {
    select(b, start, length);
    return QStringList{shown(b.SelBold()),       shown(b.SelItalic()),   shown(b.SelUnderline()),
                       shown(b.SelStrikeThru()), shown(b.SelFontName()), shown(b.SelFontSize()),
                       shown(b.SelColor()),      shown(b.SelBullet()),   shown(b.SelIndent()),
                       shown(b.SelAlignment())}
        .join(u',');
}

// Random runs of text with random attributes and paragraph formats.
void randomText(QTextDocument &doc, quint32 seed) {
    QRandomGenerator rng(seed);
    const QStringList pieces =
        QString::fromUtf8("word |x|\u00e9t\u00e9 |{}\\|\u4e2d|\t|\u2028|12 |-| ").split(u'|');
    const QStringList families = {"Arial", "Courier New", "Times New Roman"};
    QTextCursor c(&doc);
    for (int i = 0; i < 200; ++i) {
        if (rng.bounded(12) == 0) {
            QTextBlockFormat b;
            b.setAlignment(QList<Qt::Alignment>{Qt::AlignLeft, Qt::AlignRight, Qt::AlignHCenter,
                                                Qt::AlignJustify}[rng.bounded(4)]);
            b.setLeftMargin(rng.bounded(4) * 20);
            b.setTopMargin(rng.bounded(2) * 8);
            c.insertBlock(b);
            continue;
        }
        QTextCharFormat f;
        f.setFontWeight(rng.bounded(2) ? QFont::Bold : QFont::Normal);
        f.setFontItalic(rng.bounded(2));
        f.setFontUnderline(rng.bounded(3) == 0);
        f.setFontStrikeOut(rng.bounded(4) == 0);
        f.setFontPointSize(8 + rng.bounded(8) * 0.5);
        f.setFontFamilies({families[rng.bounded(families.size())]});
        if (rng.bounded(3) == 0) {
            f.setForeground(QColor(rng.bounded(256), rng.bounded(256), rng.bounded(256)));
        }
        if (rng.bounded(6) == 0) {
            f.setBackground(QColor(255, 255, rng.bounded(256)));
        }
        c.insertText(pieces[rng.bounded(pieces.size())], f);
    }
}

} // namespace

Q_DECLARE_METATYPE(Build)
Q_DECLARE_METATYPE(Fill)

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
    void positionsAndPlainText_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("insert");
        QTest::addColumn<QString>("result"); // after the selection was replaced by `insert`
        AddRows({
            {"break counts one", "ab\r\ncd", "1", "3", "b\r\nc", "Y", "aYd"},
            {"after the break", "ab\r\ncd", "3", "2", "cd", "", "ab\r\n"},
            {"insert a break", "12\r\n34", "2", "0", "", "a\r\nb", "12a\r\nb\r\n34"},
            {"empty paragraphs", "a\r\n\r\n\r\nb", "1", "4", "\r\n\r\n\r\nb", "", "a"},
            {"lone LF and CR are breaks", "a\nb\rc", "2", "3", "b\r\nc", "", "a\r\n"},
            {"line break is one", "a\vb", "0", "3", "a\vb", "", ""},
            {"length clamped", "abc", "1", "99", "bc", "", "a"},
            {"start clamped", "abc", "99", "5", "", "d", "abcd"},
        });
    }
    void positionsAndPlainText() {
        QFETCH(QString, text);
        QFETCH(QString, start);
        QFETCH(QString, length);
        QFETCH(QString, selected);
        QFETCH(QString, insert);
        QFETCH(QString, result);
        RichTextBuffer b;
        setText(b, text);
        QString normal = text;
        normal.replace("\r\n", "\n").replace('\r', '\n').replace("\n", "\r\n");
        QCOMPARE(b.Text(), normal);
        select(b, start.toInt(), length.toInt());
        QCOMPARE(b.SelText(), selected);
        // Positions count a break once: the plain text minus one per break.
        const int caret = b.SelStart();
        QCOMPARE(b.SelLength(), selected.size() - selected.count("\r\n"));
        b.SetSelText(insert);
        QCOMPARE(b.Text(), result);
        QCOMPARE(b.SelStart(), caret + insert.size() - insert.count("\r\n"));
        QCOMPARE(b.SelLength(), 0);
    }
    void characterAttributes_data() {
        QTest::addColumn<Fill>("set");  // on "beta\r\nGamma"
        QTest::addColumn<int>("field"); // of attributes()
        QTest::addColumn<QString>("changed");
        QTest::addColumn<QString>("plain");
        const auto row = [](const char *name, Fill set, int field, const char *changed,
                            const char *plain) {
            QTest::newRow(name) << set << field << QString(changed) << QString(plain);
        };
        using B = RichTextBuffer &;
        // clang-format off
        row("bold", [](B b) { b.SetSelBold(true); }, 0, "true", "false");
        row("italic", [](B b) { b.SetSelItalic(true); }, 1, "true", "false");
        row("underline", [](B b) { b.SetSelUnderline(true); }, 2, "true", "false");
        row("strike", [](B b) { b.SetSelStrikeThru(true); }, 3, "true", "false");
        row("font name", [](B b) { b.SetSelFontName("Courier New"); }, 4, "Courier New", "Arial");
        row("size rounds to half points", [](B b) { b.SetSelFontSize(10.3); }, 5, "10.5", "10");
        row("colour", [](B b) { b.SetSelColor(QColor(200, 0, 0)); }, 6, "#c80000", "#000000");
        // clang-format on
    }
    // The attribute read back on the changed run, on the untouched "Alpha" and on a selection
    // across both.
    void characterAttributes() {
        QFETCH(Fill, set);
        QFETCH(int, field);
        QFETCH(QString, changed);
        QFETCH(QString, plain);
        RichTextBuffer b;
        b.SetFont(QFont(QStringLiteral("Arial"), 10));
        setText(b, "Alpha beta\r\nGamma delta\r\nend");
        select(b, 6, 10);
        set(b);
        const auto at = [&](int start, int length) {
            return attributes(b, start, length).section(u',', field, field);
        };
        QCOMPARE(at(7, 3), changed);
        QCOMPARE(at(0, 5), plain);
        QCOMPARE(at(2, 8), "-");
        if (field < 4) {
            QCOMPARE(at(8, 0), changed); // the typing format inside the run
        }
    }
    void paragraphAttributes() {
        RichTextBuffer b;
        setText(b, "one\r\ntwo\r\nthree");
        const auto paragraph = [&](int start, int length) {
            return attributes(b, start, length).section(u',', 7);
        };
        QCOMPARE(paragraph(0, 0), "false,0,0");
        select(b, 5, 1); // "two"
        b.SetSelBullet(true);
        b.SetSelIndent(300);
        b.SetSelAlignment(2);
        QCOMPARE(paragraph(5, 1), "true,300,2");
        // A selection ending right behind a break does not touch the next paragraph.
        QCOMPARE(paragraph(0, 4), "false,0,0");
        QCOMPARE(paragraph(0, 5), "-,-,-");
        select(b, 0, 100);
        b.SetSelAlignment(1);
        b.SetSelBullet(false);
        QCOMPARE(paragraph(0, 100), "false,-,1");
        QCOMPARE(b.Text(), QString("one\r\ntwo\r\nthree"));
        QVERIFY_THROWS_EXCEPTION(std::exception, b.SetSelAlignment(7));
    }
    // The search's own cases are tested with the search; here what it does not use.
    void find_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("options");
        QTest::addColumn<int>("expected");
        // "The cat scattered\r\nCATS and cat." : T0 ... c4 ... s8 | 17 C18 ... c27
        QTest::newRow("whole word and case") << "CATS" << 0 << 6 << 18;
        QTest::newRow("across the break") << "scattered\r\ncats" << 0 << 0 << 8;
        QTest::newRow("no highlight") << "and" << 0 << 8 << 23;
        QTest::newRow("empty pattern") << "" << 0 << 0 << -1;
        QTest::newRow("start past end") << "cat" << 500 << 0 << -1;
    }
    void find() {
        QFETCH(QString, pattern);
        QFETCH(int, start);
        QFETCH(int, options);
        QFETCH(int, expected);
        RichTextBuffer b;
        setText(b, "The cat scattered\r\nCATS and cat.");
        select(b, 1, 1);
        QCOMPARE(b.Find(pattern, start, -1, options), expected);
        if (expected >= 0 && !(options & RichTextBuffer::FindNoHighlight)) {
            QCOMPARE(b.SelStart(), expected);
            QCOMPARE(b.SelText().toLower(), pattern.toLower());
        } else {
            QCOMPARE(b.SelStart(), 1);
            QCOMPARE(b.SelLength(), 1);
        }
    }
    void changeSignals() {
        RichTextBuffer b;
        QSignalSpy change(&b, &RichTextBuffer::Change);
        QSignalSpy sel(&b, &RichTextBuffer::SelChange);
        setText(b, "abc");
        sel.clear();
        b.SetSelStart(1);
        b.SetSelStart(1); // unchanged selection: no signal
        QCOMPARE(sel.count(), 1);

        // SetTextRTF reports the change exactly once, before it returns.
        bool loading = true;
        int seenWhileLoading = 0;
        connect(&b, &RichTextBuffer::Change, &b, [&] { seenWhileLoading += loading ? 1 : 0; });
        change.clear();
        b.SetTextRTF(RtfWriter::write(b.document()));
        loading = false;
        QCOMPARE(seenWhileLoading, 1);
        QCOMPARE(change.count(), 1);
        QCOMPARE(b.SelStart(), 0);
    }
    void fonts() {
        RichTextBuffer b;
        b.SetFont(QFont(QStringLiteral("Arial"), 10));
        setText(b, "one two\r\nthree");
        select(b, 0, 100);
        b.SetSelBold(true);
        b.SetSelUnderline(true);
        b.SetSelFontName("Times New Roman");
        select(b, 4, 3);
        b.SetSelFontSize(20);
        clsFont g;
        g.setItalic(true);
        g.setSize(14);
        b.ApplyFontToAll(g.ToPaneFont());
        // No name set: the names are kept.
        QCOMPARE(attributes(b, 0, 100).section(u',', 0, 5),
                 "false,true,false,false,Times New Roman,14");
        QCOMPARE(b.Font().family(), QString("Arial")); // the base font is not the text's
    }
    void roundTrip_data() {
        QTest::addColumn<Fill>("build");
        auto doc = [](const char *name, Fill build) { QTest::newRow(name) << build; };
        for (quint32 seed = 1; seed <= 12; ++seed) {
            doc(qPrintable(QString("random %1").arg(seed)),
                [seed](RichTextBuffer &b) { randomText(*b.document(), seed); });
        }
        // What the random texts do not make.
        doc("pasted picture and kept object", [](RichTextBuffer &b) {
            QImage image(3, 2, QImage::Format_RGB32);
            image.fill(Qt::blue);
            b.document()->addResource(QTextDocument::ImageResource, QUrl("pasted"), image);
            QTextCursor c(b.document());
            c.insertHtml("a<img src=\"pasted\">");
            QTextCharFormat object;
            object.setObjectType(RtfConventions::PlaceholderObjectType);
            object.setProperty(
                RtfConventions::RawGroupProperty,
                QByteArray("{\\object\\objemb{\\*\\objclass PBrush}{\\*\\objdata 01}}"));
            c.insertText(QString(QChar::ObjectReplacementCharacter), object);
            c.insertText("b", QTextCharFormat());
        });
        doc("table", [](RichTextBuffer &b) {
            // As RTF puts it: a paragraph, then the table in the next (empty) one.
            setText(b, "before\r\n");
            QTextCursor c(b.document());
            c.movePosition(QTextCursor::End);
            c.insertTable(2, 3)->cellAt(1, 2).firstCursorPosition().insertText("x");
        });
    }
    void roundTrip() {
        QFETCH(Fill, build);
        RichTextBuffer b;
        b.SetFont(QFont(QStringLiteral("Arial"), 10));
        build(b);
        const QByteArray first = b.TextRTF();

        // Writing, reading and writing again gives the same bytes.
        QTextDocument doc;
        doc.setDefaultFont(b.Font());
        QVERIFY(RtfReader::read(first, &doc));
        QCOMPARE(RtfWriter::write(&doc), first);

        // SetTextRTF(TextRTF()) keeps TextRTF, the plain text and every attribute at every
        // position.
        RichTextBuffer copy;
        copy.SetFont(b.Font());
        copy.SetTextRTF(first);
        QCOMPARE(copy.TextRTF(), first);
        QCOMPARE(copy.Text(), b.Text());
        const int n = b.Text().size() - b.Text().count("\r\n");
        for (int p = 0; p < n; ++p) {
            QCOMPARE(attributes(copy, p, 1), attributes(b, p, 1));
        }
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
