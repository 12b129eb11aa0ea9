// The rich-text buffer: positions and plain text, selection attributes (uniform and mixed), Find,
// signals, fonts, and the round trip through RTF.
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfConventions.h"
#include "richtext/RtfReader.h"
#include "richtext/RtfWriter.h"
#include "richtext/clsFont.h"
#include "support/TestSupport.h"

#include <QImage>
#include <QSignalSpy>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <QtTest>

#include <functional>

namespace {

using Build = std::function<void(RichTextBuffer &)>;

void setText(RichTextBuffer &b, const QString &text) {
    b.Select(0, 1 << 30);
    b.SetSelText(text);
}

void select(RichTextBuffer &b, int start, int length) {
    b.SetSelStart(start);
    b.SetSelLength(length);
}

// A buffer with "Alpha beta\r\nGamma delta\r\nend" and one attribute on "beta\r\nGamma".
void formatted(RichTextBuffer &b, const std::function<void(RichTextBuffer &)> &set) {
    b.SetFont(QFont(QStringLiteral("Arial"), 10));
    setText(b, "Alpha beta\r\nGamma delta\r\nend");
    select(b, 6, 10);
    set(b);
}

} // namespace

Q_DECLARE_METATYPE(Build)

class TestRichTextBuffer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void positionsAndPlainText_data();
    void positionsAndPlainText();
    void characterAttributes_data();
    void characterAttributes();
    void paragraphAttributes();
    void find_data();
    void find();
    void changeSignals();
    void fonts();
    void roundTrip_data();
    void roundTrip();
    void roundTripRandom_data();
    void roundTripRandom();
    void plainTextAsRtf();
};

void TestRichTextBuffer::positionsAndPlainText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("length");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("insert");
    QTest::addColumn<QString>("result"); // after the selection was replaced by `insert`
    AddRows({
        {"first paragraph", "ab\r\ncd", "0", "2", "ab", "X", "X\r\ncd"},
        {"break counts one", "ab\r\ncd", "1", "3", "b\r\nc", "Y", "aYd"},
        {"after the break", "ab\r\ncd", "3", "2", "cd", "", "ab\r\n"},
        {"insert a break", "12\r\n34", "2", "0", "", "a\r\nb", "12a\r\nb\r\n34"},
        {"append", "12\r\n34", "5", "0", "", "\r\n", "12\r\n34\r\n"},
        {"empty paragraphs", "a\r\n\r\n\r\nb", "1", "4", "\r\n\r\n\r\nb", "", "a"},
        {"lone LF and CR are breaks", "a\nb\rc", "2", "3", "b\r\nc", "", "a\r\n"},
        {"line break is one", "a\vb", "0", "3", "a\vb", "", ""},
        {"length clamped", "abc", "1", "99", "bc", "", "a"},
        {"start clamped", "abc", "99", "5", "", "d", "abcd"},
    });
}

void TestRichTextBuffer::positionsAndPlainText() {
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
    QVERIFY(caret <= normal.size() - normal.count("\r\n"));
    b.SetSelText(insert);
    QCOMPARE(b.Text(), result);
    QCOMPARE(b.SelStart(), caret + insert.size() - insert.count("\r\n"));
    QCOMPARE(b.SelLength(), 0);
}

void TestRichTextBuffer::characterAttributes_data() {
    QTest::addColumn<Build>("set");
    QTest::addColumn<Build>("check"); // QCOMPAREs inside
    // The attribute read back on the changed run, on the untouched "Alpha" and on a selection
    // across both (mixed, so no value); flags also at the caret inside the run.
    auto attribute = [](const char *name, Build set, auto get, auto changed, auto plain) {
        QTest::newRow(name) << set << Build([=](RichTextBuffer &b) {
            using Value = decltype(get(b));
            select(b, 7, 3);
            QCOMPARE(get(b), Value(changed));
            select(b, 0, 5);
            QCOMPARE(get(b), Value(plain));
            select(b, 2, 8);
            QCOMPARE(get(b), Value(std::nullopt));
            if constexpr (std::is_same_v<Value, std::optional<bool>>) {
                select(b, 8, 0); // typing format inside the run
                QCOMPARE(get(b), Value(changed));
            }
        });
    };
    auto flag = [&](const char *name, void (RichTextBuffer::*set)(bool),
                    std::optional<bool> (RichTextBuffer::*get)() const) {
        attribute(
            name, [set](RichTextBuffer &b) { (b.*set)(true); },
            [get](const RichTextBuffer &b) { return (b.*get)(); }, true, false);
    };
    flag("bold", &RichTextBuffer::SetSelBold, &RichTextBuffer::SelBold);
    flag("italic", &RichTextBuffer::SetSelItalic, &RichTextBuffer::SelItalic);
    flag("underline", &RichTextBuffer::SetSelUnderline, &RichTextBuffer::SelUnderline);
    flag("strike", &RichTextBuffer::SetSelStrikeThru, &RichTextBuffer::SelStrikeThru);
    attribute(
        "font name", [](RichTextBuffer &b) { b.SetSelFontName("Courier New"); },
        [](const RichTextBuffer &b) { return b.SelFontName(); }, QString("Courier New"),
        QString("Arial"));
    attribute(
        "font size rounds to half points", [](RichTextBuffer &b) { b.SetSelFontSize(10.3); },
        [](const RichTextBuffer &b) { return b.SelFontSize(); }, 10.5, 10.0);
    attribute(
        "colour", [](RichTextBuffer &b) { b.SetSelColor(QColor(200, 0, 0)); },
        [](const RichTextBuffer &b) { return b.SelColor(); }, QColor(200, 0, 0), QColor(Qt::black));
}

void TestRichTextBuffer::characterAttributes() {
    QFETCH(Build, set);
    QFETCH(Build, check);
    RichTextBuffer b;
    formatted(b, set);
    check(b);
    // The same after the text went through RTF.
    RichTextBuffer copy;
    copy.SetFont(b.Font());
    copy.SetTextRTF(b.TextRTF());
    check(copy);
    QCOMPARE(copy.TextRTF(), b.TextRTF());
}

void TestRichTextBuffer::paragraphAttributes() {
    RichTextBuffer b;
    setText(b, "one\r\ntwo\r\nthree");
    select(b, 0, 0);
    QCOMPARE(b.SelBullet(), std::optional<bool>(false));
    QCOMPARE(b.SelIndent(), std::optional<int>(0));
    QCOMPARE(b.SelAlignment(), std::optional<int>(0));

    select(b, 5, 1); // "two"
    b.SetSelBullet(true);
    b.SetSelIndent(300);
    b.SetSelAlignment(2);
    QCOMPARE(b.SelBullet(), std::optional<bool>(true));
    QCOMPARE(b.SelIndent(), std::optional<int>(300));
    QCOMPARE(b.SelAlignment(), std::optional<int>(2));

    // A selection ending right behind a break does not touch the next paragraph.
    select(b, 0, 4);
    QCOMPARE(b.SelAlignment(), std::optional<int>(0));
    select(b, 0, 5);
    QCOMPARE(b.SelBullet(), std::nullopt);
    QCOMPARE(b.SelIndent(), std::nullopt);
    QCOMPARE(b.SelAlignment(), std::nullopt);

    select(b, 0, 100);
    b.SetSelAlignment(1);
    QCOMPARE(b.SelAlignment(), std::optional<int>(1));
    b.SetSelBullet(false);
    QCOMPARE(b.SelBullet(), std::optional<bool>(false));
    QCOMPARE(b.Text(), QString("one\r\ntwo\r\nthree"));
    QVERIFY_THROWS_EXCEPTION(std::exception, b.SetSelAlignment(7));
}

void TestRichTextBuffer::find_data() {
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<int>("options");
    QTest::addColumn<int>("expected");
    // "The cat scattered\r\nCATS and cat." : T0 ... c4 ... s8 | 17 C18 ... c27
    QTest::newRow("first match") << "cat" << 0 << -1 << 0 << 4;
    QTest::newRow("from a start") << "cat" << 5 << -1 << 0 << 9;
    QTest::newRow("ignores case") << "CAT" << 12 << -1 << 0 << 18;
    QTest::newRow("match case") << "CAT" << 0 << -1 << 4 << 18;
    QTest::newRow("match case none") << "Cat" << 0 << -1 << 4 << -1;
    QTest::newRow("whole word") << "cat" << 5 << -1 << 2 << 27;
    QTest::newRow("whole word and case") << "CATS" << 0 << -1 << 6 << 18;
    QTest::newRow("end limits the match") << "cat" << 5 << 11 << 0 << -1;
    QTest::newRow("end just fits") << "cat" << 5 << 12 << 0 << 9;
    QTest::newRow("across the break") << "scattered\r\ncats" << 0 << -1 << 0 << 8;
    QTest::newRow("no highlight") << "and" << 0 << -1 << 8 << 23;
    QTest::newRow("empty pattern") << "" << 0 << -1 << 0 << -1;
    QTest::newRow("start past end") << "cat" << 500 << -1 << 0 << -1;
}

void TestRichTextBuffer::find() {
    QFETCH(QString, pattern);
    QFETCH(int, start);
    QFETCH(int, end);
    QFETCH(int, options);
    QFETCH(int, expected);
    RichTextBuffer b;
    setText(b, "The cat scattered\r\nCATS and cat.");
    select(b, 1, 1);
    QCOMPARE(b.Find(pattern, start, end, options), expected);
    if (expected >= 0 && !(options & RichTextBuffer::FindNoHighlight)) {
        QCOMPARE(b.SelStart(), expected);
        QCOMPARE(b.SelText().toLower(), pattern.toLower());
    } else {
        QCOMPARE(b.SelStart(), 1);
        QCOMPARE(b.SelLength(), 1);
    }
}

void TestRichTextBuffer::changeSignals() {
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

void TestRichTextBuffer::fonts() {
    RichTextBuffer b;
    b.SetFont(QFont(QStringLiteral("Arial"), 10));
    setText(b, "one two\r\nthree");
    select(b, 4, 3);
    b.SetSelFontSize(20);
    select(b, 2, 5);

    clsFont f;
    f.setBold(true);
    f.setUnderline(true);
    f.setName("Times New Roman");
    f.SetRTFSelFont(b);
    QCOMPARE(b.SelStart(), 2);
    QCOMPARE(b.SelLength(), 5);
    select(b, 0, 100);
    QCOMPARE(b.SelBold(), std::optional<bool>(true));
    QCOMPARE(b.SelUnderline(), std::optional<bool>(true));
    QCOMPARE(b.SelItalic(), std::optional<bool>(false));
    QCOMPARE(b.SelFontName(), std::optional<QString>("Times New Roman"));
    QCOMPARE(b.SelFontSize(), std::nullopt); // no size set: sizes kept

    clsFont g;
    g.setItalic(true);
    g.setSize(14);
    b.ApplyFontToAll(g.ToPaneFont());
    select(b, 0, 100);
    QCOMPARE(b.SelBold(), std::optional<bool>(false));
    QCOMPARE(b.SelItalic(), std::optional<bool>(true));
    QCOMPARE(b.SelFontSize(), std::optional<double>(14.0));
    QCOMPARE(b.SelFontName(), std::optional<QString>("Times New Roman")); // no name set
    QCOMPARE(b.Font().family(), QString("Arial")); // the base font is not the text's
}

void TestRichTextBuffer::roundTrip_data() {
    QTest::addColumn<Build>("build");
    auto doc = [](const char *name, Build build) { QTest::newRow(name) << build; };
    doc("empty", [](RichTextBuffer &) {});
    // Runs of plain, formatted and aligned text are covered by the random round trip below and
    // by the attribute table above; these rows hold what neither makes.
    doc("code page and unicode", [](RichTextBuffer &b) {
        setText(b, QString::fromUtf8("{x} \\ caf\u00e9 \u20ac \U0001F4A9\tt\vline\r\n\r\n"));
    });
    doc("bullets and numbers", [](RichTextBuffer &b) {
        setText(b, "intro\r\nb1\r\nb2\r\nn1\r\nn2\r\nend");
        select(b, 6, 5), b.SetSelBullet(true);
        QTextCursor c(b.document());
        c.setPosition(12);
        c.setPosition(17, QTextCursor::KeepAnchor);
        c.createList(QTextListFormat::ListDecimal);
    });
    doc("link", [](RichTextBuffer &b) {
        setText(b, "go ");
        QTextCursor c(b.document());
        c.movePosition(QTextCursor::End);
        QTextCharFormat link;
        link.setAnchor(true);
        link.setAnchorHref("https://example.org/x");
        c.insertText("there", link);
        c.insertText(" now", QTextCharFormat());
    });
    doc("pasted picture and kept object", [](RichTextBuffer &b) {
        setText(b, "ab");
        QImage image(3, 2, QImage::Format_RGB32);
        image.fill(Qt::blue);
        b.document()->addResource(QTextDocument::ImageResource, QUrl("pasted"), image);
        QTextCursor c(b.document());
        c.setPosition(1);
        QTextImageFormat img;
        img.setName("pasted");
        c.insertImage(img);
        QTextCharFormat object;
        object.setObjectType(RtfConventions::PlaceholderObjectType);
        object.setProperty(RtfConventions::RawGroupProperty,
                           QByteArray("{\\object\\objemb{\\*\\objclass PBrush}{\\*\\objdata 01}}"));
        c.insertText(QString(QChar::ObjectReplacementCharacter), object);
    });
    doc("table", [](RichTextBuffer &b) {
        // As RTF puts it: a paragraph, then the table in the next (empty) one.
        setText(b, "before\r\n");
        QTextCursor c(b.document());
        c.movePosition(QTextCursor::End);
        QTextTable *t = c.insertTable(2, 3);
        t->cellAt(1, 2).firstCursorPosition().insertText("x");
    });
}

void TestRichTextBuffer::roundTrip() {
    QFETCH(Build, build);
    RichTextBuffer b;
    b.SetFont(QFont(QStringLiteral("Arial"), 10));
    build(b);
    const QByteArray first = b.TextRTF();

    // Writing, reading and writing again gives the same bytes.
    QTextDocument doc;
    doc.setDefaultFont(b.Font());
    QVERIFY(RtfReader::read(first, &doc));
    QCOMPARE(RtfWriter::write(&doc), first);

    // SetTextRTF(TextRTF()) keeps TextRTF, the plain text and every attribute at every position.
    RichTextBuffer copy;
    copy.SetFont(b.Font());
    copy.SetTextRTF(first);
    QCOMPARE(copy.TextRTF(), first);
    QCOMPARE(copy.Text(), b.Text());
    const int n = b.Text().size() - b.Text().count("\r\n");
    for (int p = 0; p < n; ++p) {
        select(b, p, 1);
        select(copy, p, 1);
        QCOMPARE(copy.SelBold(), b.SelBold());
        QCOMPARE(copy.SelItalic(), b.SelItalic());
        QCOMPARE(copy.SelUnderline(), b.SelUnderline());
        QCOMPARE(copy.SelStrikeThru(), b.SelStrikeThru());
        QCOMPARE(copy.SelFontName(), b.SelFontName());
        QCOMPARE(copy.SelFontSize(), b.SelFontSize());
        QCOMPARE(copy.SelColor(), b.SelColor());
        QCOMPARE(copy.SelBullet(), b.SelBullet());
        QCOMPARE(copy.SelIndent(), b.SelIndent());
        QCOMPARE(copy.SelAlignment(), b.SelAlignment());
    }
}

void TestRichTextBuffer::roundTripRandom_data() {
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 12; ++seed) {
        QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }
}

// Random runs of text with random attributes and paragraph formats: written, read and written
// again, the bytes do not change.
void TestRichTextBuffer::roundTripRandom() {
    QFETCH(quint32, seed);
    QRandomGenerator rng(seed);
    const QStringList pieces =
        QString::fromUtf8("word |x|\u00e9t\u00e9 |{}\\|\u4e2d|\t|\u2028|12 |-| ")
            .split(QLatin1Char('|'));
    const QStringList families = {"Arial", "Courier New", "Times New Roman"};
    QTextDocument doc;
    doc.setDefaultFont(QFont("Arial", 10));
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
    const QByteArray first = RtfWriter::write(&doc);
    QTextDocument again;
    again.setDefaultFont(doc.defaultFont());
    QVERIFY(RtfReader::read(first, &again));
    const QByteArray second = RtfWriter::write(&again);
    QCOMPARE(second, first);
    QCOMPARE(again.toRawText(), doc.toRawText());
}

void TestRichTextBuffer::plainTextAsRtf() {
    RichTextBuffer b;
    b.SetTextRTF(QByteArray("plain\r\ncaf\xe9"));
    QCOMPARE(b.Text(), QString::fromUtf8("plain\r\ncaf\u00e9"));
    b.SetTextRTF(QByteArray());
    QCOMPARE(b.Text(), QString());
    QVERIFY(b.TextRTF().endsWith("\\par\r\n}\r\n"));
}

QTEST_MAIN(TestRichTextBuffer)
#include "tst_richtextbuffer.moc"
