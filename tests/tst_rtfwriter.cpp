// The RTF writer: header and tables, escaping, character and paragraph formatting, lists, links,
// tables, pictures, ranges, determinism.
#include "richtext/RtfConventions.h"
#include "richtext/RtfWriter.h"

#include <QtGui>
#include <QtTest>

#include <functional>

namespace {

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

class TestRtfWriter : public QObject {
    Q_OBJECT
private Q_SLOTS:
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
        text("plain", "Hello world", "\\fs20 Hello world\\par");
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
        format("size 14", "\\fs28", "\\fs20", [](auto &f) { f.setFontPointSize(14); });
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
};

QTEST_MAIN(TestRtfWriter)
#include "tst_rtfwriter.moc"
