// The Edit and Search commands on the text pane of headless documents. Edit: case rules, attribute
// toggles, indents, the clipboard (the test platform's), the undo history, and the font commands
// with the dialog answered by the test; texts are written with "*" around bold runs. Search: the
// scopes, directions, wraps and word rules, replacing, the dialog's rules, the histories, and the
// scan of all texts against loading every entry into the pane.
#include "app/modMain.h"
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "document/modDocText.h"
#include "editor/modEdit.h"
#include "editor/modFont.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfReader.h"
#include "richtext/clsFont.h"
#include "search/modSearch.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/MainWindowHost.h"
#include "util/SettingsStore.h"

#include <QtGui>
#include <QtTest>

#include <functional>
#include <memory>
#include <optional>
#include <random>

using namespace modSearch;
using namespace Qt::StringLiterals;

namespace {

// The tables here have string columns only, added and read by name.
void columns(std::initializer_list<const char *> names) {
    for (const char *name : names) {
        QTest::addColumn<QString>(name);
    }
}

QString column(const char *name) {
    return *static_cast<QString *>(QTest::qData(name, QMetaType::QString));
}

// The stored text of a plain text in which "|" is a paragraph break.
QByteArray storedOf(const QString &plain) {
    RichTextBuffer b;
    b.SetSelText(QString(plain).replace(u'|', "\r\n"));
    QByteArray stored;
    modNodes::NodeTextCompressIfRequired(b.TextRTF(), stored);
    return stored;
}

// A document with a real text pane from lines "label=text", two blanks of indentation a level.
Document *build(const QString &outline) {
    Document *doc = DocTest::newDocument();
    doc->setTextPane(std::make_unique<RichTextBuffer>());
    std::vector<Node *> parents;
    for (const QString &line : outline.split(u'\n', Qt::SkipEmptyParts)) {
        const qsizetype depth = (line.size() - line.trimmed().size()) / 2;
        const QString item = line.trimmed();
        const qsizetype eq = item.indexOf(u'=');
        parents.resize(size_t(depth));
        Node *n = DocTest::add(doc, depth ? parents.back() : nullptr, item.left(eq),
                               eq < 0 ? QByteArray() : storedOf(item.mid(eq + 1)));
        parents.push_back(n);
    }
    return doc;
}

RichTextBuffer *pane(Document *doc) {
    return static_cast<RichTextBuffer *>(doc->txtRTF());
}

// Selects "label@start,length" (the entry, then the pane's selection).
void selectAt(Document *doc, const QString &where) {
    const qsizetype at = where.indexOf(u'@');
    modNodes::NodeSelect(doc, FindEntry(doc->trvOutline(), where.left(at)));
    const QStringList sel = where.mid(at + 1).split(u',');
    pane(doc)->SetSelStart(sel.at(0).toInt());
    pane(doc)->SetSelLength(sel.at(1).toInt());
}

// "label@start,length" of the selected entry and the pane's selection.
QString state(Document *doc) {
    Node *s = doc->trvOutline().SelectedItem();
    return (s ? s->Text() : QString()) +
           QString("@%1,%2").arg(pane(doc)->SelStart()).arg(pane(doc)->SelLength());
}

// Every entry as label=text, in collection order.
QString texts(Document *doc) {
    QStringList out;
    for (Node *n : doc->trvOutline()) {
        out << n->Text() + u'=' + modDocText::PlainTextStripped(n->Tag()).replace("\r\n", "|");
    }
    return out.join(u';');
}

void setState(const QString &find, const QString &flags, const QString &where) {
    g_sFindText = QString(find).replace(u'|', "\r\n");
    g_bMatchCase = flags.contains(u'c');
    g_bWholeWord = flags.contains(u'w');
    g_bBackwards = flags.contains(u'b');
    g_sSearchWhere = where;
}

// The scan of all texts as it reads without shortcuts: every entry but the first loaded into the
// pane and searched there.
bool referenceAllTexts(Document *doc) {
    Nodes &nodes = doc->trvOutline();
    Node *selected = nodes.SelectedItem();
    const int first = selected ? selected->Index() : 1;
    Node *found = nullptr;
    const auto visit = [&](int index) {
        if (index != first || !selected) {
            modNodes::NodeTextGet(doc, nodes.Item(index));
        }
        if (SearchAllText()) {
            found = nodes.Item(index);
        }
    };
    for (int i = first; i <= nodes.Count() && !found; ++i) {
        visit(i);
    }
    for (int i = 1; i < first && !found; ++i) {
        visit(i);
    }
    if (found) {
        SearchNodeSelect(found);
    } else {
        modNodes::NodeTextGetSelected();
    }
    return found;
}

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

class TestEditSearch : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        modSettings::SetSettingsFile(m_dir.filePath(QStringLiteral("settings.ini")));
        modDocClipboard::SetClipboard(&m_clip);
        m_frm.reset();
        m_frm = std::make_unique<FakeMainWindow>();
        g_iSearchMode = 0;
        g_sReplaceText.clear();
    }
    void cleanup() {
        DocTest::closeAll();
        ForgetTexts();
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
    // A long text goes into an emptied document (so that it can be laid out lazily): it reads as
    // into a fresh pane, keeping nothing of the old text and its paragraph, nor any history.
    void longTextReplacesOld() {
        QByteArray rtf = "{\\rtf1\\ansi ";
        while (rtf.size() < RtfReader::LongText) {
            rtf += "plain words \\i slanted\\i0\\par ";
        }
        rtf += "}";
        RichTextBuffer fresh;
        fresh.SetFont(QFont(u"Mono"_s, 14));
        fresh.SetTextRTF(rtf);
        RichTextBuffer pane;
        pane.SetFont(fresh.Font());
        pane.SetTextRTF("{\\rtf1\\ansi\\qc\\fs40\\b old centred\\par }");
        pane.Select(0, 3);
        pane.SetSelBold(false);
        pane.SetTextRTF(rtf);
        QCOMPARE(pane.TextRTF(), fresh.TextRTF());
        QCOMPARE(pane.Font(), fresh.Font());
        QVERIFY(!pane.CanUndo());
        // And a short one after it replaces it whole as well.
        pane.SetTextRTF("{\\rtf1\\ansi short\\par }");
        QCOMPARE(pane.Text(), u"short"_s);

        // Shown a screenful first: the start alone, whose caret format and selection read as the
        // whole text's, until the text is read or changed; then exactly the text read whole, with
        // no change reported. A new text drops what was still to come; left alone, it comes.
        pane.SetPreviewSize(300, 10);
        QSignalSpy changes(&pane, &RichTextBuffer::Change);
        pane.SetTextRTF(rtf);
        QVERIFY(pane.Partial());
        QCOMPARE(pane.documentAsShown()->blockCount(), 10);
        QCOMPARE(pane.SelItalic(), std::optional<bool>(false));
        pane.Select(0, 0);
        QVERIFY(pane.Partial());
        QCOMPARE(pane.TextRTF(), fresh.TextRTF());
        QVERIFY(!pane.Partial());
        QCOMPARE(changes.count(), 1);
        pane.SetTextRTF(rtf);
        pane.SetTextRTF("{\\rtf1\\ansi short\\par }");
        QVERIFY(!pane.Partial());
        QCOMPARE(pane.Text(), u"short"_s);
        pane.SetTextRTF(rtf);
        pane.Select(0, 7);
        QCOMPARE(pane.SelText(), u"plain w"_s);
        QCOMPARE(pane.Text(), fresh.Text());
        pane.SetTextRTF(rtf);
        QTRY_VERIFY(!pane.Partial());
        QCOMPARE(pane.document()->characterCount(), fresh.document()->characterCount());
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
    void find_data() {
        columns({"outline", "select", "find", "flags", "where", "expect"});
        const char *one = "A=cat dog cat";
        const char *all = "R=alpha\n  A=cat one\n  B=dog\n  C=cat two|cat three";
        const char *names = "Root\n  the cat\n  catsup\n  Cats";
        AddRows({
            // The current entry's text.
            {"bare caret does not wrap", "A=cat dog", "A@4,0", "cat", "", "0", "no A@4,0"},
            {"selection wraps", "A=cat dog", "A@4,3", "cat", "", "0", "yes A@0,3"},
            {"paragraph break is one position", "A=one|cat", "A@0,0", "cat", "", "0", "yes A@4,3"},
            {"match case", "A=Cat cat", "A@0,0", "cat", "c", "0", "yes A@4,3"},
            {"ignoring case", "A=Cat cat", "A@0,0", "cat", "", "0", "yes A@0,3"},
            {"whole word skips inner", "A=cat concat cats", "A@1,0", "cat", "w", "0", "no A@1,0"},
            {"whole word at text end", "A=concat cat", "A@0,0", "cat", "w", "0", "yes A@7,3"},
            {"backward, match before and behind", "A=cat cat cat", "A@5,0", "cat", "b", "0",
             "yes A@4,3"},
            {"backward, only behind: wraps", "A=dog cat", "A@0,0", "cat", "b", "0", "no A@4,3"},
            {"backward, just after the only", "A=cat dog", "A@3,0", "cat", "b", "0", "no A@0,3"},
            // All entry texts, in collection order from the selected entry.
            {"all: next entry", all, "B@0,0", "cat", "", "1", "yes C@0,3"},
            {"all: on in the same entry", all, "C@0,3", "cat", "", "1", "yes C@8,3"},
            {"all: wraps to the first entries", all, "C@8,3", "cat", "", "1", "yes A@0,3"},
            {"all: nothing found reloads", all, "B@2,1", "owl", "", "1", "no B@0,0"},
            {"all: backward in the entry", all, "C@8,3", "cat", "b", "1", "yes C@0,3"},
            {"all: backward never leaves it", all, "C@0,3", "cat", "b", "1", "no C@0,0"},
            {"all: whole word", "R=x\n  A=concat\n  B=a cat", "R@0,0", "cat", "w", "1",
             "yes B@2,3"},
            {"all: whole word beside a sign folding to a letter", "R=x\n  A=\u212acat", "R@0,0",
             "cat", "w", "1", "yes A@1,3"},
            {"all: unicode case", "R=x\n  A=PI\u00d1ATA", "R@0,0", "pi\u00f1ata", "", "1",
             "yes A@0,6"},
            // All entry names, starting below the selected entry.
            {"names: whole word at label end", names, "Root@0,0", "cat", "w", "2",
             "yes the cat@0,0"},
            {"names: cat matches cats", names, "the cat@0,0", "cat", "w", "2", "yes Cats@0,0"},
            {"names: match case wraps", names, "the cat@0,0", "cat", "cw", "2", "yes the cat@0,0"},
            {"names: last entry tests itself", names, "Cats@0,0", "cats", "", "2", "yes Cats@0,0"},
            {"names: none", names, "the cat@0,0", "dog", "", "2", "no the cat@0,0"},
            {"unknown scope", one, "A@0,0", "cat", "", "", "no A@0,0"},
        });
    }
    void find() {
        Document *doc = build(column("outline"));
        selectAt(doc, column("select"));
        setState(column("find"), column("flags"), column("where"));
        const bool found = SearchPerform();
        QTEST((found ? "yes " : "no ") + state(doc), "expect");
        // "Search completed" is the one message, and only when nothing was found.
        QCOMPARE(m_frm->Asked,
                 found ? QStringList() : QStringList{QStringLiteral("Search completed")});
        QVERIFY(pane(doc)->Visible());
    }
    void replace_data() {
        columns({"outline", "select", "find", "replace", "flags", "expect"});
        const char *fruit = "A=Apple pie";
        const char *all = "R=a cat\n  A=cat and cat\n  B=dog\n  C=Cat|cat";
        AddRows({
            // Replace once ("once"), or find then Replace All ("all"); a "-" file is read-only.
            {"once: case follows the match", fruit, "A@0,5", "apple", "pear", "",
             "A=Pear pie @0,4"},
            {"once: a blank keeps it", fruit, "A@0,5", "apple", "red pear", "",
             "A=red pear pie @0,8"},
            {"once: match case keeps it", fruit, "A@0,5", "apple", "pear", "c", "A=pear pie @0,4"},
            {"once: empty replacement deletes", fruit, "A@0,6", "apple", "", "", "A=pie @0,0"},
            {"once: no selection, no change", fruit, "A@2,0", "apple", "pear", "",
             "A=Apple pie @2,0"},
            {"all texts", all, "R@0,0", "cat", "dog", "", "R=a dog;A=dog and dog;B=dog;C=Dog|dog"},
            {"all texts backward", all, "C@3,0", "cat", "dog", "b",
             "R=a cat;A=cat and cat;B=dog;C=Dog|cat"},
            {"all labels", "R\n  cat cat\n  catcat", "R@0,0", "cat", "x", "n", "R=;x x=;xx="},
            {"labels, whole word stops", "R\n  cat cats\n  cats cat", "R@0,0", "cat", "x", "wn",
             "R=;x xs=;cats cat="},
            {"read-only", all, "R@0,0", "cat", "dog", "-", "R=a cat;A=cat and cat;B=dog;C=Cat|cat"},
        });
    }
    void replace() {
        const QString outline = column("outline"), flags = column("flags");
        Document *doc = build(outline);
        doc->bReadOnly = flags.contains(u'-');
        selectAt(doc, column("select"));
        doc->m_bDataChanged = false;
        const bool once = QString(QTest::currentDataTag()).startsWith("once");
        setState(column("find"), flags, flags.contains(u'n') ? "2" : once ? "0" : "1");
        g_sReplaceText = column("replace");
        g_iSearchMode = 2;
        if (once) {
            SearchPerformReplace();
            QTEST(texts(doc) + u' ' + state(doc).mid(1), "expect");
        } else {
            SearchPerform();
            SearchReplaceAll();
            QTEST(texts(doc), "expect");
            QCOMPARE(m_frm->Asked.size(), doc->bReadOnly ? 0 : 1);
        }
        QCOMPARE(doc->m_bDataChanged, texts(doc) != texts(build(outline)));
    }
    void dialogRules_data() {
        columns({"find", "replace", "flags",
                 "expect"}); // expect: Find, Replace All, Replace after a find
        AddRows({
            {"empty replacement", "a", "", "2", "find replace"},
            {"held ignoring case", "Apple", "red apple", "2", "find"},
            {"not held matching case", "Apple", "red apple", "2c", "find all replace"},
            {"opened for finding", "cat", "dog", "1", "find"},
            {"no scope", "cat", "dog", "2-", "all replace"},
            {"no expression", "", "dog", "2", ""},
        });
    }
    void dialogRules() {
        const QString flags = column("flags");
        g_sFindText = column("find");
        g_sReplaceText = column("replace");
        g_bMatchCase = flags.contains(u'c');
        g_iSearchMode = flags.contains(u'2') ? 2 : 1;
        g_sSearchWhereText = flags.contains(u'-') ? QString() : "All entry texts";
        const QStringList on = {FindEnabled() ? "find" : "", ReplaceAllEnabled() ? "all" : "",
                                ReplaceEnabledAfterFind(true) ? "replace" : ""};
        QTEST(on.join(' ').simplified(), "expect");
        QVERIFY(!ReplaceEnabledAfterFind(false));
    }
    void history() {
        clsHistory h;
        h.setMaxEntries(10);
        h.setSection("FindHistory");
        const auto list = [&] {
            QStringList out;
            bool atEnd = false;
            for (QString e = h.FirstEntry(atEnd); !atEnd; e = h.NextEntry(atEnd)) {
                out << e;
            }
            return out.join('/');
        };
        for (int i = 1; i <= 11; ++i) {
            h.Store(QStringLiteral(" e%1 ").arg(i));
        }
        QCOMPARE(list(), "e11/e10/e9/e8/e7/e6/e5/e4/e3/e2"); // trimmed, the oldest dropped
        h.Store("e5");
        QCOMPARE(list(), "e5/e11/e10/e9/e8/e7/e6/e4/e3/e2");
        h.Store("E5");
        QCOMPARE(list(), "E5/e5/e11/e10/e9/e8/e7/e6/e4/e3");

        // Loaded one place further on, behind an empty entry (saving: with the dialog's test).
        for (const char *entry : {"a", "b", "c"}) {
            modSettings::SaveSetting("ReplaceHistory", QString::number(entry[0] - 'a' + 1), entry);
        }
        h.setSection("ReplaceHistory");
        h.Load();
        QCOMPARE(list(), "/a/b/c");
        h.Store("d"); // the empty entry goes again
        QCOMPARE(list(), "d/a/b/c");
        h.Save();
        h.Load();
        QCOMPARE(list(), "/d/a/b/c");
        // A value name that is not an index leaves the list as it was (and is reported).
        modSettings::SaveSetting("ReplaceHistory", "x", "bad");
        h.Load();
        QCOMPARE(list(), "/d/a/b/c");
        QVERIFY(m_log.content().contains("clsHistory Load"));
    }
    // Over whole passes through random documents, the search of all texts finds the same entries,
    // positions and selections as loading every entry into the pane would, also after texts change.
    void scanEqualsPaneSearch() {
        const QStringList words = {"cat",         "Cat",     "CAT",         "concat",
                                   "cats",        "dog",     "pi\u00f1ata", "PI\u00d1ATA",
                                   "stra\u00dfe", "\u212a9", "\u212a",      "k9",
                                   "a-b",         "|",       "\u00b5m"};
        std::mt19937 random(20240611);
        const auto pick = [&](const QStringList &from) {
            return from.at(int(random() % from.size()));
        };
        const QStringList patterns = {"cat", "k9",  "pi\u00f1ata", "\u00b5m", "dog|cat",
                                      "CAT", "a-b", "stra\u00dfe", "owl",     "t c"};
        int hits = 0;
        for (int round = 0; round < 16; ++round) {
            QString outline = QStringLiteral("R=%1\n").arg(pick(words));
            const int count = 4 + int(random() % 12);
            for (int i = 0; i < count; ++i) {
                QString text;
                const int length = int(random() % 9);
                for (int w = 0; w < length; ++w) {
                    text += pick(words) + (random() % 3 ? " " : "");
                }
                const int depth = i == 0 ? 1 : 1 + int(random() % 2);
                outline +=
                    QStringLiteral("%1E%2=%3\n").arg(QString(2 * depth, ' ')).arg(i).arg(text);
            }
            const QString find = pick(patterns);
            const QString flags = QString(random() % 2 ? "c" : "") + (random() % 2 ? "w" : "") +
                                  (random() % 4 == 0 ? "b" : "");
            const int start = 1 + int(random() % (count + 1));
            const int changed = 1 + int(random() % (count + 1));
            QStringList seen[2];
            for (int run = 0; run < 2; ++run) {
                Document *doc = build(outline);
                modNodes::NodeSelect(doc, doc->trvOutline().Item(start));
                setState(find, flags, "1");
                for (int step = 0; step < 2 * count + 6; ++step) {
                    if (step == count + 3) {
                        // A text changes half way: the kept texts must follow it.
                        doc->trvOutline().Item(changed)->setTag(storedOf("x " + find));
                    }
                    const bool found = run == 0 ? SearchAllTexts() : referenceAllTexts(doc);
                    seen[run] << (found ? "+" : "-") + state(doc);
                }
                DocTest::closeAll();
            }
            hits += int(seen[0].filter("+").size());
            QVERIFY2(seen[0] == seen[1], qPrintable(find + " " + flags + "\n" + outline + "\n" +
                                                    seen[0].join(' ') + "\n" + seen[1].join(' ')));
        }
        QVERIFY(hits > 40);
    }

private:
    ScopedLog m_log;
    QTemporaryDir m_dir;
    SystemClipboard m_clip;
    std::unique_ptr<FakeMainWindow> m_frm; // answers the questions, records what was asked
};

QTEST_MAIN(TestEditSearch)
#include "tst_edit.moc"
