#include "editor/modEdit.h"

#include "document/Clipboard.h"
#include "document/Document.h"
#include "editor/modFont.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfWriter.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"

#include <QDateTime>
#include <QLocale>
#include <QTextDocument>

#include <optional>

namespace modEdit {

qint32 g_lIndentStep = 300;

namespace {

// One command on the active document's text pane: one undo step; a change of the text marks the
// document changed and goes into the selected entry when the command ends.
class Step {
public:
    explicit Step(bool undoGroup = true) {
        if (modMain::DocumentActive(m_doc)) {
            m_pane = dynamic_cast<RichTextBuffer *>(m_doc->txtRTF());
        }
        if (m_pane) {
            m_pane->BeginStep(undoGroup);
        }
    }
    ~Step() {
        if (m_pane && m_pane->EndStep() && !modNodes::g_bDocTransfer && !modNodes::g_bLoadingText) {
            m_doc->m_bDataChanged = true;
            modNodes::NodeTextPut(m_doc, m_doc->trvOutline().SelectedItem());
        }
    }
    Step(const Step &) = delete;
    Step &operator=(const Step &) = delete;

    RichTextBuffer *pane() const { return m_pane; }

private:
    Document *m_doc = nullptr;
    RichTextBuffer *m_pane = nullptr;
};

// Plain text for other programs: line feeds only.
QString plainForOthers(QString text) {
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return text;
}

Clipboard *clipboard() {
    Clipboard *c = modDocClipboard::ActiveClipboard();
    if (!c) {
        modMain::Raise(modMain::errObjectRequired);
    }
    return c;
}

enum class Case { Lower, Upper, Proper };

QString changeCase(const QString &text, Case to) {
    switch (to) {
    case Case::Lower:
        return text.toLower();
    case Case::Upper:
        return text.toUpper();
    case Case::Proper:
        break;
    }
    return ProperCase(text);
}

void setCase(RichTextBuffer &pane, Case to) {
    const QString text = pane.SelText();
    if (!text.isEmpty()) {
        pane.SetSelTextInPlace(changeCase(text, to));
    }
}

using Get = std::optional<bool> (RichTextBuffer::*)() const;
using Set = void (RichTextBuffer::*)(bool);

// A mixed selection (no value) becomes false, deliberately, and a uniform one the opposite.
void toggle(RichTextBuffer &pane, Get get, Set set) {
    const std::optional<bool> value = (pane.*get)();
    (pane.*set)(value ? !*value : false);
}

void insert(const QString &text) {
    Step step;
    if (RichTextBuffer *pane = step.pane()) {
        pane->SetSelText(text);
    }
}

} // namespace

QString ProperCase(const QString &text) {
    QString s = text.toLower();
    if (s.isEmpty()) {
        return s;
    }
    // A copy marks the word starts: digits and line ends count as blanks.
    QString starts = s;
    for (QChar &c : starts) {
        if ((c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('\r') ||
            c == QLatin1Char('\n')) {
            c = QLatin1Char(' ');
        }
    }
    s.replace(0, 1, s.at(0).toUpper());
    for (qsizetype blank = starts.indexOf(QLatin1Char(' ')); blank >= 0 && blank < s.size() - 1;
         blank = starts.indexOf(QLatin1Char(' '), blank + 1)) {
        s[blank + 1] = s.at(blank + 1).toUpper();
    }
    return s;
}

void EditCaseLower() {
    modMain::Guarded([] {
        PROC("modEdit EditCaseLower");
        Step step;
        if (step.pane()) {
            setCase(*step.pane(), Case::Lower);
        }
    });
}

void EditCaseUpper() {
    modMain::Guarded([] {
        PROC("modEdit EditCaseUpper");
        Step step;
        if (step.pane()) {
            setCase(*step.pane(), Case::Upper);
        }
    });
}

void EditCaseProper() {
    modMain::Guarded([] {
        PROC("modEdit EditCaseProper");
        Step step;
        if (step.pane()) {
            setCase(*step.pane(), Case::Proper);
        }
    });
}

void EditCaseToggle() {
    modMain::Guarded([] {
        PROC("modEdit EditCaseToggle");
        Step step;
        RichTextBuffer *pane = step.pane();
        if (!pane) {
            return;
        }
        const QString text = pane->SelText();
        if (text.isEmpty()) {
            return;
        }
        const int start = pane->SelStart();
        const int length = pane->SelLength();
        // lower -> Proper -> UPPER -> lower; text without letters counts as lower case.
        if (text == text.toLower()) {
            setCase(*pane, Case::Proper);
        } else if (text == text.toUpper()) {
            setCase(*pane, Case::Lower);
        } else {
            setCase(*pane, Case::Upper);
        }
        pane->SetSelStart(start);
        pane->SetSelLength(length);
    });
}

void EditClearEntryText() {
    modMain::Guarded([] {
        PROC("modEdit EditClearEntryText");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc) || !dynamic_cast<RichTextBuffer *>(doc->txtRTF())) {
            return;
        }
        if (modMain::MsgBox(
                QStringLiteral("Are you sure that you want to delete all the text for this entry?"),
                modMain::vbYesNoCancel, modMain::vbQuestion) != modMain::vbYes) {
            return;
        }
        Step step;
        step.pane()->Clear();
    });
}

void EditCopy() {
    modMain::Guarded([] {
        PROC("modEdit EditCopy");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        Clipboard *board = clipboard();
        board->Clear();
        if (auto *pane = dynamic_cast<RichTextBuffer *>(doc->txtRTF())) {
            board->SetRichCopy(pane->SelRTF(), pane->SelHtml(), plainForOthers(pane->SelText()));
        }
    });
}

void EditCut() {
    modMain::Guarded([] {
        PROC("modEdit EditCut");
        Step step;
        if (RichTextBuffer *pane = step.pane()) {
            Clipboard *board = clipboard();
            board->Clear();
            board->SetText(plainForOthers(pane->SelText()));
            pane->SetSelText(QString());
        }
    });
}

void EditDelete() {
    modMain::Guarded([] {
        PROC("modEdit EditDelete");
        Step step;
        if (RichTextBuffer *pane = step.pane()) {
            pane->SetSelText(QString());
        }
    });
}

void EditPaste() {
    modMain::Guarded([] {
        PROC("modEdit EditPaste");
        Step step;
        RichTextBuffer *pane = step.pane();
        if (!pane) {
            return;
        }
        Clipboard *board = clipboard();
        if (board->GetFormat(Clipboard::RichText)) {
            pane->SetSelRTF(board->GetRichText());
        } else if (board->GetFormat(Clipboard::Html)) {
            // Browsers and office programs that offer no RTF: their HTML read as a text document,
            // which then arrives as rich text like any other.
            QTextDocument html;
            html.setDefaultFont(pane->Font());
            html.setHtml(board->GetHtml());
            pane->SetSelRTF(RtfWriter::write(&html, 0, html.characterCount() - 1));
        } else if (board->GetFormat(Clipboard::PlainText)) {
            pane->SetSelText(board->GetText());
        }
    });
}

void EditPasteSpecial() {
    modMain::Guarded([] {
        PROC("modEdit EditPasteSpecial");
        Step step;
        if (RichTextBuffer *pane = step.pane()) {
            pane->SetSelText(clipboard()->GetText());
        }
    });
}

void EditSelectAll() {
    modMain::Guarded([] {
        PROC("modEdit EditSelectAll");
        Step step(false);
        if (RichTextBuffer *pane = step.pane()) {
            pane->SetSelStart(0);
            pane->SetSelLength(int(pane->document()->characterCount()));
        }
    });
}

void EditFormatBold() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatBold");
        Step step;
        if (step.pane()) {
            toggle(*step.pane(), &RichTextBuffer::SelBold, &RichTextBuffer::SetSelBold);
        }
    });
}

void EditFormatItalic() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatItalic");
        Step step;
        if (step.pane()) {
            toggle(*step.pane(), &RichTextBuffer::SelItalic, &RichTextBuffer::SetSelItalic);
        }
    });
}

void EditFormatUnderline() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatUnderline");
        Step step;
        if (step.pane()) {
            toggle(*step.pane(), &RichTextBuffer::SelUnderline, &RichTextBuffer::SetSelUnderline);
        }
    });
}

void EditFormatStrikeThrough() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatStrikeThrough");
        Step step;
        if (step.pane()) {
            toggle(*step.pane(), &RichTextBuffer::SelStrikeThru, &RichTextBuffer::SetSelStrikeThru);
        }
    });
}

void EditFormatBullet() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatBullet");
        Step step;
        if (step.pane()) {
            toggle(*step.pane(), &RichTextBuffer::SelBullet, &RichTextBuffer::SetSelBullet);
        }
    });
}

void EditFormatLeft() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatLeft");
        Step step;
        if (step.pane()) {
            step.pane()->SetSelAlignment(0);
        }
    });
}

void EditFormatRight() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatRight");
        Step step;
        if (step.pane()) {
            step.pane()->SetSelAlignment(1);
        }
    });
}

void EditFormatCentre() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatCentre");
        Step step;
        if (step.pane()) {
            step.pane()->SetSelAlignment(2);
        }
    });
}

void EditFormatIndent() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatIndent");
        Step step;
        if (RichTextBuffer *pane = step.pane()) {
            if (const std::optional<int> indent = pane->SelIndent()) {
                pane->SetSelIndent(*indent + g_lIndentStep);
            }
        }
    });
}

void EditFormatUnindent() {
    modMain::Guarded([] {
        PROC("modEdit EditFormatUnindent");
        Step step;
        if (RichTextBuffer *pane = step.pane()) {
            // A mixed selection counts as indent 0: all its paragraphs end at 0.
            pane->SetSelIndent(qMax(0, pane->SelIndent().value_or(0) - g_lIndentStep));
        }
    });
}

void EditInsertLongDate() {
    modMain::Guarded([] {
        PROC("modEdit EditInsertLongDate");
        insert(QLocale().toString(QDate::currentDate(), QLocale::LongFormat));
    });
}

void EditInsertShortDate() {
    modMain::Guarded([] {
        PROC("modEdit EditInsertShortDate");
        insert(QLocale().toString(QDate::currentDate(), QLocale::ShortFormat));
    });
}

void EditInsertTime() {
    modMain::Guarded([] {
        PROC("modEdit EditInsertTime");
        insert(QLocale().toString(QTime::currentTime(), QLocale::ShortFormat));
    });
}

void EditInsertTab() {
    modMain::Guarded([] {
        PROC("modEdit EditInsertTab");
        insert(QStringLiteral("\t"));
    });
}

void EditCurrentFont() {
    Step step;
    modFont::EditCurrentFont();
}

void EditDocumentFont() {
    modFont::EditDocumentFont();
}

void EditUndo() {
    modMain::Guarded([] {
        PROC("modEdit EditUndo");
        Step step(false);
        if (step.pane()) {
            step.pane()->Undo();
        }
    });
}

void EditRedo() {
    modMain::Guarded([] {
        PROC("modEdit EditRedo");
        Step step(false);
        if (step.pane()) {
            step.pane()->Redo();
        }
    });
}

} // namespace modEdit
