// The Edit commands on the text pane of a headless document: case rules, attribute toggles,
// indents, the clipboard (the test platform's), the undo history, and the font commands with the
// dialog answered by the test. Texts are written with "*" around bold runs.
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "editor/modEdit.h"
#include "editor/modFont.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "richtext/clsFont.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "util/MainWindowHost.h"

#include <QtGui>
#include <QtTest>

#include <functional>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QByteArray kMixed =
    "{\\rtf1\\ansi{\\fonttbl{\\f0 Serif;}}\\f0\\fs21 small \\fs40 large\\par }";

using Command = void (*)();
using Fn = std::function<void()>;

// The pane's text with "*" around bold runs.
QString marked(const RichTextBuffer &pane) {
    QString out;
    for (QTextBlock b = pane.document()->begin(); b.isValid(); b = b.next()) {
        out += b == pane.document()->begin() ? "" : "\r\n";
        for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
            const bool bold = it.fragment().charFormat().fontWeight() >= QFont::DemiBold;
            out += bold ? "*" + it.fragment().text() + "*" : it.fragment().text();
        }
    }
    return out.replace("**", "");
}

// A document whose selected entry holds the marked text, as loaded from the entry (no undo
// history, not changed).
struct Fixture {
    explicit Fixture(const QString &markedText) {
        doc = DocTest::newDocument();
        doc->setTextPane(std::make_unique<RichTextBuffer>());
        pane = static_cast<RichTextBuffer *>(doc->txtRTF());
        RichTextBuffer scratch;
        const QStringList parts = markedText.split('*');
        for (int i = 0; i < parts.size(); ++i) {
            const int from = scratch.SelStart();
            scratch.SetSelText(parts[i]);
            scratch.Select(from, scratch.SelStart());
            scratch.SetSelBold(i % 2);
            scratch.SetSelStart(scratch.SelStart() + scratch.SelLength());
        }
        QByteArray stored;
        modNodes::NodeTextCompressIfRequired(scratch.TextRTF(), stored);
        entry = DocTest::add(doc, nullptr, "Entry", stored);
        modNodes::NodeSelect(doc, entry);
        doc->m_bDataChanged = false;
    }
    ~Fixture() { DocTest::closeAll(); }
    void select(int start, int length) {
        pane->SetSelStart(start);
        pane->SetSelLength(length);
    }
    // The pane's text is what the entry holds.
    bool stored() const {
        QByteArray expected;
        modNodes::NodeTextCompressIfRequired(pane->TextRTF(), expected);
        return entry->Tag() == expected;
    }
    Document *doc;
    RichTextBuffer *pane;
    Node *entry;
};

} // namespace

class TestEdit : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        modDocClipboard::SetClipboard(&m_clip);
        m_frm = std::make_unique<FakeMainWindow>();
    }
    void cleanup() {
        modDocClipboard::SetClipboard(nullptr);
        m_frm.reset();
    }
    void textCommands_data() {
        QTest::addColumn<Command>("command");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("answer"); // to the question of the command
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("selLength"); // after the command
        const Command proper = modEdit::EditCaseProper, toggle = modEdit::EditCaseToggle,
                      upper = modEdit::EditCaseUpper, lower = modEdit::EditCaseLower,
                      bold = modEdit::EditFormatBold, clear = modEdit::EditClearEntryText;
        const int yes = modMain::vbYes, no = modMain::vbNo;
        // clang-format off
        QTest::newRow("proper: words") << proper << "HELLO wORLD" << 0 << 11 << 0 << "Hello World" << 0;
        QTest::newRow("proper: tab no start") << proper << "a\tb" << 0 << 3 << 0 << "A\tb" << 0;
        QTest::newRow("proper: digit starts") << proper << "x1y 2nd" << 0 << 7 << 0 << "X1Y 2Nd" << 0;
        QTest::newRow("proper: line ends") << proper << "one\r\ntwo" << 0 << 7 << 0 << "One\r\nTwo" << 0;
        QTest::newRow("proper: blank at end") << proper << "ab cd " << 3 << 3 << 0 << "ab Cd " << 0;
        QTest::newRow("proper: mid word") << proper << "abcdef" << 2 << 2 << 0 << "abCdef" << 0;
        QTest::newRow("lower") << lower << "MiXeD" << 1 << 3 << 0 << "MixeD" << 0;
        QTest::newRow("upper keeps formats") << upper << "al *beta* ga" << 0 << 10 << 0 << "AL *BETA* GA" << 0;
        QTest::newRow("upper: sharp s grows") << upper << "straße" << 0 << 6 << 0 << "STRASSE" << 0;
        QTest::newRow("upper: no selection") << upper << "abc" << 1 << 0 << 0 << "abc" << 0;
        QTest::newRow("toggle: lower") << toggle << "abc abc" << 0 << 7 << 0 << "Abc Abc" << 7;
        QTest::newRow("toggle: proper") << toggle << "*Abc*" << 0 << 3 << 0 << "*ABC*" << 3;
        QTest::newRow("toggle: upper") << toggle << "xABCx" << 1 << 3 << 0 << "xabcx" << 3;
        QTest::newRow("bold: plain") << bold << "one two" << 0 << 7 << 0 << "*one two*" << 7;
        QTest::newRow("bold: all") << bold << "*one two*" << 0 << 7 << 0 << "one two" << 7;
        QTest::newRow("bold: mixed to plain") << bold << "*one* two" << 0 << 7 << 0 << "one two" << 7;
        QTest::newRow("clear: yes") << clear << "*some* text" << 1 << 0 << yes << "" << 0;
        QTest::newRow("clear: no") << clear << "*some* text" << 1 << 0 << no << "*some* text" << 0;
        // clang-format on
    }
    void textCommands() {
        QFETCH(Command, command);
        QFETCH(QString, text);
        QFETCH(int, start);
        QFETCH(int, length);
        QFETCH(int, answer);
        QFETCH(QString, expected);
        QFETCH(int, selLength);
        Fixture f(text);
        f.select(start, length);
        if (answer) {
            m_frm->Answers << modMain::MsgBoxResult(answer);
        }
        command();
        QCOMPARE(marked(*f.pane), expected);
        QCOMPARE(f.pane->SelLength(), selLength);
        if (selLength > 0) {
            QCOMPARE(f.pane->SelStart(), start);
        }
        QCOMPARE(f.doc->m_bDataChanged, expected != text);
        QVERIFY(f.stored());
        if (answer) {
            QCOMPARE(
                m_frm->Asked,
                QStringList{"Are you sure that you want to delete all the text for this entry?"});
            // The cleared text drops its formatting too: new text is plain.
            f.pane->SetSelText("x");
            QCOMPARE(marked(*f.pane).left(1), QString(answer == modMain::vbYes ? "x" : "*"));
        }
    }
    void indents_data() {
        QTest::addColumn<Command>("command");
        QTest::addColumn<int>("first"); // indents of the two paragraphs before, twips
        QTest::addColumn<int>("second");
        QTest::addColumn<QString>("expected"); // after: "first second"
        const Command in = modEdit::EditFormatIndent, out = modEdit::EditFormatUnindent;
        QTest::newRow("indent") << in << 0 << 0 << "300 300";
        QTest::newRow("indent again") << in << 300 << 300 << "600 600";
        QTest::newRow("indent mixed: nothing") << in << 0 << 300 << "0 300";
        QTest::newRow("unindent") << out << 600 << 600 << "300 300";
        QTest::newRow("unindent below 0") << out << 200 << 200 << "0 0";
        QTest::newRow("unindent mixed: all to 0") << out << 300 << 900 << "0 0";
    }
    void indents() {
        QFETCH(Command, command);
        QFETCH(int, first);
        QFETCH(int, second);
        QFETCH(QString, expected);
        Fixture f("one\r\ntwo");
        const auto indentAt = [&](int position, std::optional<int> set = {}) {
            f.select(position, 0);
            if (set) {
                f.pane->SetSelIndent(*set);
            }
            return f.pane->SelIndent().value_or(-1);
        };
        indentAt(0, first);
        indentAt(4, second);
        f.select(1, 5);
        command();
        QCOMPARE(QString("%1 %2").arg(indentAt(0)).arg(indentAt(4)), expected);
    }
    void clipboard_data() {
        // "BOLD" of "plain *BOLD*" is taken by the command "take", then pasted at the start.
        QTest::addColumn<Command>("take");
        QTest::addColumn<QString>(
            "offer"); // by another program after the take: html, text, nothing
        QTest::addColumn<Command>("paste");
        QTest::addColumn<QString>("offered"); // the formats on the clipboard after the take
        QTest::addColumn<QString>("expected");
        const Command copy = modEdit::EditCopy, cut = modEdit::EditCut, paste = modEdit::EditPaste,
                      special = modEdit::EditPasteSpecial, del = modEdit::EditDelete;
        // clang-format off
        QTest::newRow("copy, paste keeps bold") << copy << "" << paste << "rich html" << "*BOLD*plain *BOLD*";
        QTest::newRow("cut, paste loses bold") << cut << "" << paste << "plain" << "BOLDplain ";
        QTest::newRow("copy, paste special") << copy << "" << special << "rich html" << "BOLDplain *BOLD*";
        QTest::newRow("html of others") << copy << "html" << paste << "html" << "x*Web*plain *BOLD*";
        QTest::newRow("plain of others") << copy << "text" << paste << "plain" << "a\r\nbplain *BOLD*";
        QTest::newRow("nothing to paste") << copy << "nothing" << paste << "" << "plain *BOLD*";
        QTest::newRow("delete, clipboard kept") << del << "" << paste << "plain" << "left overplain ";
        // clang-format on
    }
    void clipboard() {
        QFETCH(Command, take);
        QFETCH(QString, offer);
        QFETCH(Command, paste);
        QFETCH(QString, expected);
        Fixture f("plain *BOLD*");
        m_clip.SetText("left over");
        f.select(6, 4);
        take();
        if (!offer.isEmpty()) {
            auto *data = new QMimeData;
            if (offer == "html") {
                data->setHtml("<p><i>x</i><b>Web</b></p>");
            } else if (offer == "text") {
                data->setText("a\nb");
            }
            QGuiApplication::clipboard()->setMimeData(data);
        }
        QStringList formats;
        const std::pair<int, const char *> kinds[] = {{Clipboard::PlainText, "plain"},
                                                      {Clipboard::RichText, "rich"},
                                                      {Clipboard::Html, "html"}};
        for (auto [format, name] : kinds) {
            if (m_clip.GetFormat(format)) {
                formats << name;
            }
        }
        QTEST(formats.join(' '), "offered");
        if (formats.contains("rich")) {
            // What other programs get beside the RTF.
            QCOMPARE(m_clip.GetText(), QString("BOLD"));
            QVERIFY(m_clip.GetHtml().contains("BOLD"));
        }
        f.select(0, 0);
        paste();
        QCOMPARE(marked(*f.pane), expected);
        QVERIFY(f.stored());
    }
    void undoSteps_data() {
        QTest::addColumn<Fn>("setup"); // before the step
        QTest::addColumn<Fn>("command");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("length");
        const Fn none = [] {};
        const Fn bulletUndone = [] {
            modEdit::EditFormatBullet();
            modEdit::EditUndo();
        };
        const Fn copyAll = [] {
            modEdit::EditCopy();
            modEdit::EditSelectAll();
        };
        const Fn bullet = modEdit::EditFormatBullet;
        const Fn clear = [this] {
            m_frm->Answers << modMain::vbYes;
            modEdit::EditClearEntryText();
        };
        // clang-format off
        QTest::newRow("italic") << none << Fn(modEdit::EditFormatItalic) << 0 << 9;
        QTest::newRow("bullet") << none << bullet << 0 << 9;
        QTest::newRow("bullet after undo") << bulletUndone << bullet << 0 << 9;
        QTest::newRow("bullet off") << bullet << bullet << 0 << 9;
        QTest::newRow("centre") << none << Fn(modEdit::EditFormatCentre) << 3 << 0;
        QTest::newRow("indent") << none << Fn(modEdit::EditFormatIndent) << 3 << 0;
        QTest::newRow("toggle case") << none << Fn(modEdit::EditCaseToggle) << 0 << 9;
        QTest::newRow("time") << none << Fn(modEdit::EditInsertTime) << 2 << 3;
        QTest::newRow("paste") << copyAll << Fn(modEdit::EditPaste) << 0 << 3;
        QTest::newRow("cut") << none << Fn(modEdit::EditCut) << 1 << 7;
        QTest::newRow("clear entry text") << none << clear << 1 << 0;
        // clang-format on
    }
    void undoSteps() {
        QFETCH(Fn, setup);
        QFETCH(Fn, command);
        QFETCH(int, start);
        QFETCH(int, length);
        Fixture f("abc\r\n*de*fg");
        // Loading the entry is no step: nothing to undo, also when the loading runs inside an edit
        // block of its own, as in a window.
        QVERIFY(!f.pane->CanUndo());
        QTextCursor block(f.pane->document());
        block.beginEditBlock();
        f.pane->SetTextRTF(f.pane->TextRTF());
        block.endEditBlock();
        QVERIFY(!f.pane->CanUndo());

        f.select(start, length);
        setup();
        const QByteArray before = f.pane->TextRTF();
        command();
        const QByteArray after = f.pane->TextRTF();
        QVERIFY(after != before);
        QVERIFY(f.stored());
        f.doc->m_bDataChanged = false;
        modEdit::EditUndo();
        QCOMPARE(f.pane->TextRTF(), before);
        QVERIFY(f.stored());
        QVERIFY(f.doc->m_bDataChanged);
        modEdit::EditRedo();
        QCOMPARE(f.pane->TextRTF(), after);
        QVERIFY(f.stored());
        // Another entry's text starts a new history.
        modNodes::NodeSelect(f.doc, DocTest::add(f.doc, f.entry, "Other"));
        QVERIFY(!f.pane->CanUndo());
    }
    // A size step on a uniform size goes to the next size; mixed sizes are left alone.
    void sizeSteps() {
        const std::tuple<QByteArray, bool, std::optional<double>> steps[] = {
            {"{\\rtf1\\ansi\\fs21 text\\par }", true, 11.5},
            {"{\\rtf1\\ansi\\fs24 text\\par }", false, 11.0},
            {kMixed, true, std::nullopt}};
        for (const auto &[rtf, larger, expected] : steps) {
            RichTextBuffer pane;
            pane.SetTextRTF(rtf);
            pane.Select(0, int(pane.Text().size()));
            modFont::ChangeSelectedFontSize(pane, larger);
            QCOMPARE(pane.SelFontSize(), expected);
            pane.Select(0, 1);
            QCOMPARE(pane.SelFontSize(), expected ? expected : 10.5);
        }
    }
    // The text's font changes a selection's characters, else the pane's base font; the document's
    // font keeps the selection.
    void textFonts() {
        Document doc;
        doc.setTextPane(std::make_unique<RichTextBuffer>());
        auto *buffer = static_cast<RichTextBuffer *>(doc.txtRTF());
        Documents::SetActive(&doc);
        buffer->SetTextRTF(kMixed);
        const modFont::FontDialogValues mono{u"Mono"_s, 14, true, false, false, false, {}};
        m_frm->FontChoices = {
            mono, mono, modFont::FontDialogValues{u"Sans"_s, 9, false, true, false, false, {}}};

        // A selection: only its characters change, and the dialog starts from them.
        buffer->Select(0, 5);
        modFont::EditCurrentFont();
        QCOMPARE(m_frm->FontsShown.last().FontSize, 10.5);
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

        // The document's font: the record and the pane's base font change, the selection stays.
        buffer->Select(2, 4);
        modFont::EditDocumentFont();
        QCOMPARE(doc.m_fntTextFont.Name() + u' ' + QString::number(doc.m_fntTextFont.Size()) +
                     u' ' + buffer->Font().family(),
                 u"Sans 9 Sans"_s);
        QVERIFY(buffer->Font().italic() && !buffer->Font().bold());
        QCOMPARE(QList<int>({buffer->SelStart(), buffer->SelLength()}), QList<int>({2, 2}));
        QVERIFY(buffer->Visible());
        Documents::SetActive(nullptr);
        // The outline font offers an unset name or size as whatever the dialog last held.
        clsFont unset;
        QVERIFY(!modFont::ChangeTreeviewFont(unset));
        const modFont::FontDialogValues &last = m_frm->FontsShown.last();
        QCOMPARE(last.FontName + u' ' + QString::number(last.FontSize) + u' ' +
                     QString::number(last.FontBold),
                 u"Sans 9 0"_s);
    }

private:
    SystemClipboard m_clip;
    std::unique_ptr<FakeMainWindow> m_frm; // answers the questions, records what was asked
};

QTEST_MAIN(TestEdit)
#include "tst_edit.moc"
