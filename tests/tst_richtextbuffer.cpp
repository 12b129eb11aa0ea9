// The rich-text buffer: positions and plain text, selection attributes, Find, signals, fonts, and
// the round trip through the RTF writer and reader.
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

Q_DECLARE_METATYPE(Fill)

class TestRichTextBuffer : public QObject {
    Q_OBJECT

private slots:
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
};

QTEST_MAIN(TestRichTextBuffer)
#include "tst_richtextbuffer.moc"
