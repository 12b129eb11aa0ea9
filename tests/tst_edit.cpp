// The Edit commands on the text pane of a headless document: case rules, attribute toggles,
// indents, the clipboard (a fake one) and the undo history.
#include "app/MainWindowHost.h"
#include "document/Clipboard.h"
#include "document/Document.h"
#include "editor/RichTextBuffer.h"
#include "editor/modEdit.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

#include <functional>

namespace {

class FakeClipboard : public Clipboard {
public:
    void Clear() override { *this = FakeClipboard(); }
    bool GetFormat(int format) const override {
        return format == PlainText  ? !text.isNull() && !own
               : format == RichText ? !rich.isNull()
               : format == Html     ? !html.isNull()
                                    : false;
    }
    QString GetText() const override { return text; }
    QByteArray GetRichText() const override { return rich; }
    QString GetHtml() const override { return html; }
    void SetText(const QString &t) override { text = t; }
    void SetRichText(const QByteArray &r) override { rich = r; }
    void SetRichCopy(const QByteArray &r, const QString &h, const QString &p) override {
        rich = r;
        html = h;
        text = p;
        own = true;
    }
    QString text;
    QByteArray rich;
    QString html;
    bool own = false;
};

using Command = void (*)();

// A document whose selected entry holds "text" with the characters [boldFrom, boldTo) bold, as
// loaded from the entry (no undo history, not changed).
struct Fixture {
    Fixture(const QString &text, int boldFrom = 0, int boldTo = 0) {
        doc = DocTest::newDocument();
        doc->setTextPane(std::make_unique<RichTextBuffer>());
        pane = static_cast<RichTextBuffer *>(doc->txtRTF());
        RichTextBuffer scratch;
        scratch.Select(0, 0);
        scratch.SetSelText(text);
        scratch.Select(boldFrom, boldTo);
        scratch.SetSelBold(true);
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
    std::optional<bool> boldAt(int start, int length) {
        const int s = pane->SelStart(), l = pane->SelLength();
        select(start, length);
        const auto b = pane->SelBold();
        select(s, l);
        return b;
    }
    Document *doc;
    RichTextBuffer *pane;
    Node *entry;
};

QString boolText(std::optional<bool> v) {
    return v ? (*v ? "on" : "off") : "mixed";
}

} // namespace

class TestEdit : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { modDocClipboard::SetClipboard(&m_clip); }
    void cleanup() {
        modDocClipboard::SetClipboard(nullptr);
        m_clip.Clear();
        modMain::ClearMsgBoxAnswers();
    }
    void caseCommands_data();
    void caseCommands();
    void caseKeepsFormatting();
    void attributeToggles_data();
    void attributeToggles();
    void indents_data();
    void indents();
    void clipboard_data();
    void clipboard();
    void clearEntryText_data();
    void clearEntryText();
    void undoSteps_data();
    void undoSteps();

private:
    FakeClipboard m_clip;
};

void TestEdit::caseCommands_data() {
    QTest::addColumn<Command>("command");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("selLength"); // after the command
    const Command proper = modEdit::EditCaseProper, toggle = modEdit::EditCaseToggle;
    QTest::newRow("proper: words") << proper << "HELLO wORLD" << 0 << 11 << "Hello World" << 0;
    QTest::newRow("proper: tab no start") << proper << "a\tb" << 0 << 3 << "A\tb" << 0;
    QTest::newRow("proper: digit starts") << proper << "x1y 2nd" << 0 << 7 << "X1Y 2Nd" << 0;
    QTest::newRow("proper: punctuation")
        << proper << "o'neil-smith" << 0 << 12 << "O'neil-smith" << 0;
    QTest::newRow("proper: line ends") << proper << "one\r\ntwo" << 0 << 7 << "One\r\nTwo" << 0;
    QTest::newRow("proper: blank at end") << proper << "ab cd " << 3 << 3 << "ab Cd " << 0;
    QTest::newRow("proper: mid word") << proper << "abcdef" << 2 << 2 << "abCdef" << 0;
    QTest::newRow("lower") << Command(modEdit::EditCaseLower) << "MiXeD" << 1 << 3 << "MixeD" << 0;
    QTest::newRow("upper") << Command(modEdit::EditCaseUpper) << "abc def" << 4 << 3 << "abc DEF"
                           << 0;
    QTest::newRow("upper: sharp s grows")
        << Command(modEdit::EditCaseUpper) << "straße" << 0 << 6 << "STRASSE" << 0;
    QTest::newRow("upper: nothing selected")
        << Command(modEdit::EditCaseUpper) << "abc" << 1 << 0 << "abc" << 0;
    QTest::newRow("toggle: lower to proper") << toggle << "abc abc" << 0 << 7 << "Abc Abc" << 7;
    QTest::newRow("toggle: proper to upper") << toggle << "Abc" << 0 << 3 << "ABC" << 3;
    QTest::newRow("toggle: upper to lower") << toggle << "xABCx" << 1 << 3 << "xabcx" << 3;
    QTest::newRow("toggle: no letters") << toggle << "1-2" << 0 << 3 << "1-2" << 3;
}

void TestEdit::caseCommands() {
    QFETCH(Command, command);
    QFETCH(QString, text);
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(QString, expected);
    QFETCH(int, selLength);
    Fixture f(text);
    f.select(start, length);
    command();
    QCOMPARE(f.pane->Text(), expected);
    QCOMPARE(f.pane->SelLength(), selLength);
    if (selLength > 0) {
        QCOMPARE(f.pane->SelStart(), start);
    }
    QCOMPARE(f.doc->m_bDataChanged, expected != text);
    QVERIFY(f.stored());
}

void TestEdit::caseKeepsFormatting() {
    // "alpha BETA gamma" with BETA bold: each run keeps its format; one undo step restores all.
    Fixture f("alpha beta gamma", 6, 10);
    const QByteArray before = f.pane->TextRTF();
    f.select(0, 16);
    modEdit::EditCaseUpper();
    QCOMPARE(f.pane->Text(), QString("ALPHA BETA GAMMA"));
    QCOMPARE(boolText(f.boldAt(6, 4)), QString("on"));
    QCOMPARE(boolText(f.boldAt(0, 5)), QString("off"));
    QCOMPARE(boolText(f.boldAt(11, 5)), QString("off"));
    modEdit::EditUndo();
    QCOMPARE(f.pane->TextRTF(), before);
}

void TestEdit::attributeToggles_data() {
    QTest::addColumn<Command>("command");
    QTest::addColumn<int>("boldTo"); // of "one two" the first boldTo characters start bold
    QTest::addColumn<QString>("expected");
    struct Attr {
        const char *name;
        Command command;
    } attrs[] = {{"italic", modEdit::EditFormatItalic},
                 {"underline", modEdit::EditFormatUnderline},
                 {"strike", modEdit::EditFormatStrikeThrough},
                 {"bullet", modEdit::EditFormatBullet}};
    // Bold: the fixture formats the text; a half-bold selection becomes plain.
    QTest::newRow("bold: none") << Command(modEdit::EditFormatBold) << 0 << "on";
    QTest::newRow("bold: all") << Command(modEdit::EditFormatBold) << 7 << "off";
    QTest::newRow("bold: half") << Command(modEdit::EditFormatBold) << 3 << "off";
    // The others from plain: on, and a second toggle off again.
    for (const Attr &a : attrs) {
        QTest::addRow("%s: twice", a.name) << a.command << -1 << "off";
        QTest::addRow("%s: once", a.name) << a.command << -2 << "on";
    }
}

void TestEdit::attributeToggles() {
    QFETCH(Command, command);
    QFETCH(int, boldTo);
    QFETCH(QString, expected);
    Fixture f("one two", 0, qMax(0, boldTo));
    f.select(0, 7);
    command();
    if (boldTo == -1) {
        command();
    }
    const std::map<Command, std::function<std::optional<bool>()>> read = {
        {modEdit::EditFormatBold, [&] { return f.pane->SelBold(); }},
        {modEdit::EditFormatItalic, [&] { return f.pane->SelItalic(); }},
        {modEdit::EditFormatUnderline, [&] { return f.pane->SelUnderline(); }},
        {modEdit::EditFormatStrikeThrough, [&] { return f.pane->SelStrikeThru(); }},
        {modEdit::EditFormatBullet, [&] { return f.pane->SelBullet(); }}};
    QCOMPARE(boolText(read.at(command)()), expected);
    QVERIFY(f.doc->m_bDataChanged);
    QVERIFY(f.stored());
}

void TestEdit::indents_data() {
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

void TestEdit::indents() {
    QFETCH(Command, command);
    QFETCH(int, first);
    QFETCH(int, second);
    QFETCH(QString, expected);
    Fixture f("one\r\ntwo");
    f.select(0, 0);
    f.pane->SetSelIndent(first);
    f.select(4, 0);
    f.pane->SetSelIndent(second);
    f.select(1, 5);
    command();
    f.select(0, 0);
    const int a = f.pane->SelIndent().value_or(-1);
    f.select(4, 0);
    const int b = f.pane->SelIndent().value_or(-1);
    QCOMPARE(QString("%1 %2").arg(a).arg(b), expected);
}

void TestEdit::clipboard_data() {
    // "plain BOLD" with "BOLD" bold: "BOLD" is taken by the command "take", then pasted at the
    // start of the text.
    QTest::addColumn<Command>("take");
    QTest::addColumn<std::function<void(FakeClipboard &)>>("offer"); // after the take
    QTest::addColumn<Command>("paste");
    QTest::addColumn<QString>("offered"); // the formats on the clipboard after the take
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("pastedBold");
    using Offer = std::function<void(FakeClipboard &)>;
    const Offer none = [](FakeClipboard &) {};
    const Offer html = [](FakeClipboard &c) {
        c.Clear();
        c.html = "<p><i>x</i><b>Web</b></p>";
    };
    const Offer plain = [](FakeClipboard &c) {
        c.Clear();
        c.text = "a\nb";
    };
    const Offer empty = [](FakeClipboard &c) { c.Clear(); };
    const Command copy = modEdit::EditCopy, cut = modEdit::EditCut, paste = modEdit::EditPaste,
                  special = modEdit::EditPasteSpecial, del = modEdit::EditDelete;
    // clang-format off
    QTest::newRow("copy, paste keeps bold") << copy << none << paste << "rich html" << "BOLDplain BOLD" << "on";
    QTest::newRow("cut, paste loses bold") << cut << none << paste << "plain" << "BOLDplain " << "off";
    QTest::newRow("copy, paste special") << copy << none << special << "rich html" << "BOLDplain BOLD" << "off";
    QTest::newRow("html of others") << copy << html << paste << "html" << "xWebplain BOLD" << "mixed";
    QTest::newRow("plain of others") << copy << plain << paste << "plain" << "a\r\nbplain BOLD" << "off";
    QTest::newRow("nothing to paste") << copy << empty << paste << "" << "plain BOLD" << "off";
    QTest::newRow("delete, clipboard kept") << del << none << paste << "plain" << "left overplain " << "off";
    // clang-format on
}

void TestEdit::clipboard() {
    QFETCH(Command, take);
    QFETCH(std::function<void(FakeClipboard &)>, offer);
    QFETCH(Command, paste);
    QFETCH(QString, offered);
    QFETCH(QString, expected);
    QFETCH(QString, pastedBold);
    Fixture f("plain BOLD", 6, 10);
    m_clip.text = "left over";
    f.select(6, 4);
    take();
    offer(m_clip);
    QStringList formats;
    if (m_clip.GetFormat(Clipboard::PlainText)) {
        formats << "plain";
    }
    if (m_clip.GetFormat(Clipboard::RichText)) {
        formats << "rich";
    }
    if (m_clip.GetFormat(Clipboard::Html)) {
        formats << "html";
    }
    QCOMPARE(formats.join(' '), offered);
    if (m_clip.own) {
        // What other programs get beside the RTF.
        QCOMPARE(m_clip.text, QString("BOLD"));
        QVERIFY(m_clip.html.contains("BOLD"));
    }
    const int before = int(f.pane->Text().size());
    f.select(0, 0);
    paste();
    QCOMPARE(f.pane->Text(), expected);
    const int pasted = int(f.pane->Text().size()) - before;
    QCOMPARE(boolText(pasted > 0 ? f.boldAt(0, pasted) : std::optional<bool>(false)), pastedBold);
    QVERIFY(f.stored());
}

void TestEdit::clearEntryText_data() {
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("expected");
    QTest::newRow("yes") << int(modMain::vbYes) << "";
    QTest::newRow("no") << int(modMain::vbNo) << "some text";
    QTest::newRow("cancel") << int(modMain::vbCancel) << "some text";
}

void TestEdit::clearEntryText() {
    QFETCH(int, answer);
    QFETCH(QString, expected);
    Fixture f("some text", 0, 4);
    modMain::PushMsgBoxAnswer(modMain::MsgBoxResult(answer));
    modEdit::EditClearEntryText();
    QCOMPARE(modMain::AskedMessages(),
             QStringList{"Are you sure that you want to delete all the text for this entry?"});
    QCOMPARE(f.pane->Text(), expected);
    QCOMPARE(f.doc->m_bDataChanged, expected.isEmpty());
    if (expected.isEmpty()) {
        f.pane->SetSelText("x");
        QCOMPARE(boolText(f.pane->SelBold()), QString("off")); // the formatting went too
        modEdit::EditUndo();
        modEdit::EditUndo();
        QCOMPARE(f.pane->Text(), QString("some text"));
        QCOMPARE(boolText(f.boldAt(0, 4)), QString("on"));
    }
}

void TestEdit::undoSteps_data() {
    QTest::addColumn<std::function<void()>>("setup"); // before the step
    QTest::addColumn<std::function<void()>>("command");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    using Fn = std::function<void()>;
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
    // clang-format off
    QTest::newRow("bold") << none << Fn(modEdit::EditFormatBold) << 0 << 9;
    QTest::newRow("bullet") << none << bullet << 0 << 9;
    QTest::newRow("bullet after undo") << bulletUndone << bullet << 0 << 9;
    QTest::newRow("bullet off") << bullet << bullet << 0 << 9;
    QTest::newRow("centre") << none << Fn(modEdit::EditFormatCentre) << 3 << 0;
    QTest::newRow("indent") << none << Fn(modEdit::EditFormatIndent) << 3 << 0;
    QTest::newRow("toggle case") << none << Fn(modEdit::EditCaseToggle) << 0 << 3;
    QTest::newRow("time") << none << Fn(modEdit::EditInsertTime) << 2 << 3;
    QTest::newRow("tab") << none << Fn(modEdit::EditInsertTab) << 2 << 0;
    QTest::newRow("paste") << copyAll << Fn(modEdit::EditPaste) << 0 << 3;
    QTest::newRow("cut") << none << Fn(modEdit::EditCut) << 1 << 7;
    // clang-format on
}

void TestEdit::undoSteps() {
    QFETCH(std::function<void()>, setup);
    QFETCH(std::function<void()>, command);
    QFETCH(int, start);
    QFETCH(int, length);
    Fixture f("abc\r\ndefg", 4, 6);
    // Loading the entry is no step: nothing to undo.
    QVERIFY(!f.pane->CanUndo());
    {
        // ... also when the loading runs inside an edit block of its own, as in a window.
        QTextCursor block(f.pane->document());
        block.beginEditBlock();
        f.pane->SetTextRTF(f.pane->TextRTF());
        block.endEditBlock();
        QVERIFY(!f.pane->CanUndo());
    }
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
    // A new entry's text starts a new history.
    Node *other = DocTest::add(f.doc, f.entry, "Other");
    modNodes::NodeSelect(f.doc, other);
    QVERIFY(!f.pane->CanUndo());
}

QTEST_MAIN(TestEdit)
#include "tst_edit.moc"
