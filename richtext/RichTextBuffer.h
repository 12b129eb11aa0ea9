#pragma once

#include "richtext/TextPane.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QTextCursor>

#include <optional>

class QTextDocument;
class QTimer;

// The rich text of the text pane, without a widget: a text document and the selection in it,
// with the operations of the rich-edit control. A view shows document() and mirrors the
// selection through Select().
//
// Positions (SelStart, SelLength, Find) are 0-based and are the document's cursor positions:
// every character counts one, and so does every paragraph break (as in rich-edit 2.0 and later).
// The plain texts (Text, SelText) write each paragraph break as CR LF, so a position p maps to
// the text index p plus the number of paragraph breaks before p. A line break inside a paragraph
// (\line) is one position and reads as "\v" (vertical tab); an embedded object or picture is one
// position and reads as U+FFFC. Table cell boundaries count like paragraph breaks.
//
// Sel* attribute reads look at the characters of the selection; with an empty selection (or
// one made only of paragraph breaks) they give the format that typed text would get. Paragraph
// attributes look at every paragraph that the selection touches. Mixed values read as nullopt.
// Writes apply to the whole selection, or to the text typed next when it is empty.
//
// Locked only tells the view to refuse the user's edits; the operations here still change the
// text, as the control's programmatic calls do.
class RichTextBuffer : public QObject, public TextPane {
    Q_OBJECT
public:
    // Options of Find (a sum of them).
    enum FindOption { FindWholeWord = 2, FindMatchCase = 4, FindNoHighlight = 8 };

    explicit RichTextBuffer(QObject *parent = nullptr);
    ~RichTextBuffer() override;

    // The document with the whole text (a text shown in part is read to its end first).
    QTextDocument *document() const {
        settle();
        return m_doc;
    }
    // The document as it stands, for a view to show.
    QTextDocument *documentAsShown() const { return m_doc; }
    // The selection as a cursor (anchor and position).
    const QTextCursor &cursor() const { return m_cursor; }
    // Selects from anchor to position (clamped to the text); a view mirrors its caret this way.
    void Select(int anchor, int position);

    // Plain text, paragraph breaks as CR LF, no break after the last paragraph.
    QString Text() const;
    QByteArray TextRTF() const override;
    // Replaces the whole content (RTF, or plain text in the file code page). Emits Change before
    // it returns; the caret goes to the start.
    void SetTextRTF(const QByteArray &rtf) override;
    // A view asks for a long text (RtfReader::LongText bytes of RTF or more) to be shown a
    // screenful first: SetTextRTF then reads only the paragraphs that hold about the given
    // characters or paragraphs, and the rest shortly after, when the view has painted them, or
    // at once when anything reads or changes the text or the selection (CompleteText). The
    // getters of the caret's format and the selection's bounds answer from the start as it is.
    // Characters 0 (the default) reads every text whole.
    void SetPreviewSize(int characters, int paragraphs);
    // True while the document holds only the start of the text last set.
    bool Partial() const { return !m_pending.isNull(); }
    // Reads the whole of a text shown in part; nothing when it is whole.
    void CompleteText();

    int SelStart() const;
    // Moves the caret, emptying the selection.
    void SetSelStart(int position);
    int SelLength() const;
    // Extends the selection from SelStart.
    void SetSelLength(int length);
    QString SelText() const;
    // Replaces the selection by plain text (CR LF, CR or LF make paragraph breaks, "\v" a line
    // break); the caret ends behind the inserted text.
    void SetSelText(const QString &text);
    QByteArray SelRTF() const;
    // Replaces the selection by rich text; the last paragraph of the inserted text joins the text
    // behind the selection.
    void SetSelRTF(const QByteArray &rtf);
    // Replaces the selection by a text of the same length character for character (a change of
    // case), each character keeping its own format; a text of another length, or with paragraph
    // breaks elsewhere, replaces the selection as SetSelText does. The caret ends behind it.
    void SetSelTextInPlace(const QString &text);
    // The selection as HTML, for other programs.
    QString SelHtml() const;
    // Empties the text and drops all formatting, as one change that can be undone.
    void Clear();

    // A group of changes made by one command: with undoGroup one step of the undo history. The
    // group raises no Change; EndStep tells whether the content changed, and whoever began the
    // group stores the text. Groups may nest; the outermost one counts.
    void BeginStep(bool undoGroup = true);
    bool EndStep();
    // The undo history of the current text. Replacing the whole text (SetTextRTF) is not a step
    // of it: it starts a new history.
    bool CanUndo() const;
    bool CanRedo() const;
    void Undo();
    void Redo();

    std::optional<bool> SelBold() const;
    void SetSelBold(bool on);
    std::optional<bool> SelItalic() const;
    void SetSelItalic(bool on);
    std::optional<bool> SelUnderline() const;
    void SetSelUnderline(bool on);
    std::optional<bool> SelStrikeThru() const;
    void SetSelStrikeThru(bool on);
    std::optional<bool> SelBullet() const;
    void SetSelBullet(bool on);
    // Left indent of the paragraphs in twips.
    std::optional<int> SelIndent() const;
    void SetSelIndent(int twips);
    // 0 left, 1 right, 2 centre; justified paragraphs read as 3 and 3 sets justified.
    std::optional<int> SelAlignment() const;
    void SetSelAlignment(int alignment);
    std::optional<QString> SelFontName() const;
    void SetSelFontName(const QString &name);
    // Points; sizes are kept in half points (as RTF holds them), so a set size may round.
    std::optional<double> SelFontSize() const;
    void SetSelFontSize(double points);
    // Text colour; text without a colour of its own reads as black.
    std::optional<QColor> SelColor() const;
    void SetSelColor(const QColor &color);

    // The base font: the default font of the document. Setting it does not rewrite the text.
    QFont Font() const;
    void SetFont(const QFont &font);
    bool Locked() const { return m_locked; }
    void SetLocked(bool locked) { m_locked = locked; }
    bool Visible() const override { return m_visible; }
    void SetVisible(bool visible) override { m_visible = visible; }

    // First match of text in [start, end) (end -1: to the end of the text), or -1. Without
    // FindNoHighlight a match becomes the selection.
    int Find(const QString &text, int start = 0, int end = -1, int options = 0);

    // The whole text takes the set fields of the font (name only when set, size only when set).
    void ApplyFontToAll(const PaneFont &font) override;
    // The base font takes the set fields of the font (name only when set, size only when set).
    void SetBaseFont(const PaneFont &font) override;

signals:
    void Change();
    void SelChange();
    // The whole of a text that was shown in part is in the document now.
    void TextCompleted();

private:
    int lastPosition() const;
    void setSelection(int anchor, int position);
    void notifySelection();
    void mergeSelCharFormat(const QTextCharFormat &format);
    template <class T, class Get> std::optional<T> uniformChar(Get get) const;
    template <class T, class Get> std::optional<T> uniformBlock(Get get) const;
    void onContentsChanged();
    // The text replaced, with the selection notice, as one quiet edit.
    void replace(const QByteArray &rtf, bool preview);
    void load(const QByteArray &rtf, bool preview);
    void settle() const {
        if (!m_pending.isNull()) {
            const_cast<RichTextBuffer *>(this)->CompleteText();
        }
    }
    static void copyInto(const QTextDocument &source, QTextCursor &cursor);

    QTextDocument *m_doc;
    QTextCursor m_cursor;
    bool m_locked = false;
    bool m_visible = true;
    int m_quiet = 0; // > 0 while a replacement is under way: one Change at its end
    int m_lastAnchor = 0;
    int m_lastPosition = 0;
    int m_step = 0;             // depth of BeginStep groups
    bool m_stepGrouped = false; // the outermost group is one undo step
    int m_stepUndoSteps = 0;    // the undo history's length when the group began
    QTimer *m_completer;        // reads the rest of a text shown in part
    QByteArray m_pending;       // that text, whole; null when the document holds all of it
    int m_iPreviewCharacters = 0;
    int m_iPreviewParagraphs = 1;
};
