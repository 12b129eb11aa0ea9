// The font commands with the dialog answered by the test: what reaches the dialog, what comes
// back, cancelling, and the one-step size keys.
#include "document/Document.h"
#include "editor/modFont.h"
#include "richtext/RichTextBuffer.h"
#include "richtext/clsFont.h"
#include "support/FakeMainWindow.h"

#include <QtTest>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QByteArray kMixed =
    "{\\rtf1\\ansi{\\fonttbl{\\f0 Serif;}}\\f0\\fs21 small \\fs40 large\\par }";

} // namespace

class TestFonts : public QObject {
    Q_OBJECT
private slots:
    void recordThroughDialog();
    void sizeSteps_data();
    void sizeSteps();
    void currentFontChoosesSelectionOrWholeText();
    void documentFontKeepsSelection();
};

void TestFonts::recordThroughDialog() {
    FakeMainWindow frm; // its font dialog cancels unless a choice is queued
    clsFont font;
    font.setName(u"Serif"_s);
    font.setSize(10.5);
    font.setItalic(true);
    // Cancelled: the record stays as it was.
    QVERIFY(!modFont::ChangeFontDetails(font));
    QCOMPARE(frm.FontsShown[0].FontName, u"Serif"_s);
    QCOMPARE(frm.FontsShown[0].FontSize, 10.5);
    QVERIFY(frm.FontsShown[0].FontItalic);
    QCOMPARE(font.Name(), u"Serif"_s);

    frm.FontChoices << modFont::FontDialogValues{u"Sans"_s, 12.25, true, false, true, true, {}};
    QVERIFY(modFont::ChangeFontDetails(font));
    QCOMPARE(font.Name(), u"Sans"_s);
    QCOMPARE(font.Size(), 12.25);
    QVERIFY(font.Bold() && !font.Italic() && font.Underline() && font.StrikeThrough());

    // The outline font offers an unset name or size as whatever the dialog last held.
    clsFont unset;
    QVERIFY(!modFont::ChangeTreeviewFont(unset));
    QCOMPARE(frm.FontsShown.last().FontName, u"Sans"_s);
    QCOMPARE(frm.FontsShown.last().FontSize, 12.25);
    QVERIFY(!frm.FontsShown.last().FontBold);
}

void TestFonts::sizeSteps_data() {
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<bool>("larger");
    QTest::addColumn<double>("expected"); // -1: unchanged (mixed sizes)
    QTest::newRow("10.5 larger") << QByteArray("{\\rtf1\\ansi\\fs21 text\\par }") << true << 11.5;
    QTest::newRow("12 smaller") << QByteArray("{\\rtf1\\ansi\\fs24 text\\par }") << false << 11.0;
    QTest::newRow("mixed sizes") << kMixed << true << -1.0;
}

void TestFonts::sizeSteps() {
    QFETCH(QByteArray, rtf);
    QFETCH(bool, larger);
    QFETCH(double, expected);
    RichTextBuffer pane;
    pane.SetTextRTF(rtf);
    pane.Select(0, int(pane.Text().size()));
    const auto before = pane.SelFontSize();
    modFont::ChangeSelectedFontSize(pane, larger);
    if (expected < 0) {
        QVERIFY(!pane.SelFontSize());
        pane.Select(0, 1);
        QCOMPARE(pane.SelFontSize(), std::optional<double>(10.5));
    } else {
        QVERIFY(before);
        QCOMPARE(pane.SelFontSize(), std::optional<double>(expected));
    }
}

void TestFonts::currentFontChoosesSelectionOrWholeText() {
    Document doc;
    auto pane = std::make_unique<RichTextBuffer>();
    RichTextBuffer *buffer = pane.get();
    doc.setTextPane(std::move(pane));
    Documents::SetActive(&doc);
    buffer->SetTextRTF(kMixed);
    FakeMainWindow frm;
    const modFont::FontDialogValues mono{u"Mono"_s, 14, true, false, false, false, {}};
    frm.FontChoices = {mono, mono};

    // A selection: only its characters change, and the dialog starts from them.
    buffer->Select(0, 5);
    modFont::EditCurrentFont();
    QCOMPARE(frm.FontsShown.last().FontSize, 10.5);
    QCOMPARE(buffer->SelFontName(), std::optional<QString>(u"Mono"_s));
    buffer->Select(6, 11);
    QCOMPARE(buffer->SelFontSize(), std::optional<double>(20));
    QCOMPARE(buffer->SelBold(), std::optional<bool>(false));

    // No selection: the pane's base font changes, the text keeps its own formatting.
    buffer->Select(3, 3);
    modFont::EditCurrentFont();
    QCOMPARE(buffer->Font().family(), u"Mono"_s);
    QVERIFY(buffer->Font().bold());
    buffer->Select(6, 11);
    QCOMPARE(buffer->SelFontSize(), std::optional<double>(20));
    Documents::SetActive(nullptr);
}

void TestFonts::documentFontKeepsSelection() {
    Document doc;
    doc.setTextPane(std::make_unique<RichTextBuffer>());
    auto *buffer = static_cast<RichTextBuffer *>(doc.txtRTF());
    Documents::SetActive(&doc);
    buffer->SetTextRTF(kMixed);
    buffer->Select(2, 4);
    FakeMainWindow frm;
    frm.FontChoices << modFont::FontDialogValues{u"Mono"_s, 9, false, true, false, false, {}};
    modFont::EditDocumentFont();
    QCOMPARE(doc.m_fntTextFont.Name(), u"Mono"_s);
    QCOMPARE(doc.m_fntTextFont.Size(), 9.0);
    QCOMPARE(buffer->Font().family(), u"Mono"_s);
    QVERIFY(buffer->Font().italic());
    QCOMPARE(buffer->SelStart(), 2);
    QCOMPARE(buffer->SelLength(), 2);
    QVERIFY(buffer->Visible());
    Documents::SetActive(nullptr);
}

QTEST_MAIN(TestFonts)
#include "tst_fonts.moc"
