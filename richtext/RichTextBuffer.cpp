#include "richtext/RichTextBuffer.h"

#include "richtext/RtfPlaceholder.h"
#include "richtext/RtfReader.h"
#include "richtext/RtfWriter.h"
#include "util/ErrorLog.h"
#include "util/modString.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextList>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <vector>

namespace {

bool isBreak(QChar c) {
    const char16_t u = c.unicode();
    return u == 0x2029 || u == 0xFDD0 || u == 0xFDD1;
}

// The document's characters as the plain text shows them.
QString plainOf(QStringView raw) {
    QString out;
    out.reserve(raw.size() + raw.size() / 16);
    for (QChar c : raw) {
        if (isBreak(c)) {
            out += QLatin1String("\r\n");
        } else if (c.unicode() == 0x2028) {
            out += QChar(0x0B);
        } else {
            out += c;
        }
    }
    return out;
}

bool isWordChar(QChar c) {
    return modString::StringAlphanumeric(QString(c));
}

bool isBold(const QTextCharFormat &f) {
    return f.fontWeight() >= QFont::DemiBold;
}

} // namespace

RichTextBuffer::RichTextBuffer(QObject *parent)
    : QObject(parent), m_doc(new QTextDocument(this)), m_cursor(m_doc),
      m_completer(new QTimer(this)) {
    // Objects the pane cannot show are drawn as labelled boxes.
    installPlaceholderHandler(m_doc);
    connect(m_doc, &QTextDocument::contentsChanged, this, &RichTextBuffer::onContentsChanged);
    // The rest of a text shown in part is read once the view has painted its start (a view
    // paints within a few milliseconds of a change; its own layout waits as long).
    m_completer->setSingleShot(true);
    m_completer->setInterval(10);
    connect(m_completer, &QTimer::timeout, this, &RichTextBuffer::CompleteText);
}

RichTextBuffer::~RichTextBuffer() = default;

int RichTextBuffer::lastPosition() const {
    return qMax(0, m_doc->characterCount() - 1);
}

void RichTextBuffer::onContentsChanged() {
    if (m_quiet == 0) {
        emit Change();
        notifySelection();
    }
}

void RichTextBuffer::notifySelection() {
    if (m_cursor.anchor() != m_lastAnchor || m_cursor.position() != m_lastPosition) {
        m_lastAnchor = m_cursor.anchor();
        m_lastPosition = m_cursor.position();
        emit SelChange();
    }
}

void RichTextBuffer::setSelection(int anchor, int position) {
    // A view mirrors its caret here even when it has not moved; only a move needs the whole text.
    if (anchor != m_cursor.anchor() || position != m_cursor.position()) {
        settle();
    }
    const int last = lastPosition();
    m_cursor.setPosition(std::clamp(anchor, 0, last));
    m_cursor.setPosition(std::clamp(position, 0, last), QTextCursor::KeepAnchor);
    notifySelection();
}

void RichTextBuffer::Select(int anchor, int position) {
    setSelection(anchor, position);
}

QString RichTextBuffer::Text() const {
    settle();
    const QString raw = m_doc->toRawText();
    return plainOf(QStringView(raw).left(lastPosition()));
}

QByteArray RichTextBuffer::TextRTF() const {
    settle();
    return RtfWriter::write(m_doc);
}

void RichTextBuffer::SetTextRTF(const QByteArray &rtf) {
    PROC("RichTextBuffer SetTextRTF");
    replace(rtf, m_iPreviewCharacters > 0 && rtf.size() >= RtfReader::LongText);
    emit Change();
}

void RichTextBuffer::replace(const QByteArray &rtf, bool preview) {
    // One edit block around the whole replacement: a view's layout follows the new text once,
    // lazily for a long one, and the views' carets, which the inserted text pushed along, are
    // back at the start (where the selection notice puts them) before the view hears of it.
    QTextCursor block(m_doc);
    ++m_quiet;
    block.beginEditBlock();
    load(rtf, preview);
    m_lastAnchor = -1;
    notifySelection();
    block.endEditBlock();
    --m_quiet;
}

void RichTextBuffer::load(const QByteArray &rtf, bool preview) {
    // A text still shown in part is replaced, not finished.
    m_pending = QByteArray();
    m_completer->stop();
    const QFont base = m_doc->defaultFont();
    m_doc->setUndoRedoEnabled(false);
    // Every cursor on the document is adjusted after each piece the reader inserts: the buffer's
    // own goes while the text is read (the reader keeps the layout to one pass itself).
    m_cursor = QTextCursor();
    const RtfReader::Outcome read =
        preview ? RtfReader::readStart(rtf, m_doc, m_iPreviewCharacters, m_iPreviewParagraphs)
                : RtfReader::NotRtf;
    if (read == RtfReader::NotRtf) {
        RtfReader::readAny(rtf, m_doc);
    }
    m_doc->setUndoRedoEnabled(true);
    // Setting the default font lays the whole text out again, even when it is the same font.
    if (m_doc->defaultFont() != base) {
        m_doc->setDefaultFont(base);
    }
    m_cursor = QTextCursor(m_doc);
    if (read == RtfReader::Partly) {
        m_pending = rtf;
        m_completer->start();
    }
}

void RichTextBuffer::SetPreviewSize(int characters, int paragraphs) {
    m_iPreviewCharacters = qMax(0, characters);
    m_iPreviewParagraphs = qMax(1, paragraphs);
}

void RichTextBuffer::CompleteText() {
    if (m_pending.isNull()) {
        return;
    }
    PROC("RichTextBuffer CompleteText");
    // The same text, whole: nothing changed that anyone would store, and the caret stays at the
    // start, where the load put it.
    replace(QByteArray(m_pending), false);
    emit TextCompleted();
}

int RichTextBuffer::SelStart() const {
    return m_cursor.selectionStart();
}

void RichTextBuffer::SetSelStart(int position) {
    setSelection(position, position);
}

int RichTextBuffer::SelLength() const {
    return m_cursor.selectionEnd() - m_cursor.selectionStart();
}

void RichTextBuffer::SetSelLength(int length) {
    const int start = SelStart();
    setSelection(start, start + qMax(0, length));
}

namespace {

// Plain text (CR LF, CR or LF paragraph breaks, "\v" line breaks) as the document holds it.
QString documentChars(const QString &text) {
    QString t = text;
    t.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    t.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    t.replace(QChar(0x0B), QChar(QChar::LineSeparator));
    t.replace(QChar(QChar::ParagraphSeparator), QLatin1Char('\n'));
    return t;
}

} // namespace

QString RichTextBuffer::SelText() const {
    settle();
    const QString raw = m_doc->toRawText();
    return plainOf(QStringView(raw).mid(SelStart(), SelLength()));
}

void RichTextBuffer::SetSelText(const QString &text) {
    PROC("RichTextBuffer SetSelText");
    settle();
    m_cursor.insertText(documentChars(text));
    notifySelection();
}

void RichTextBuffer::SetSelTextInPlace(const QString &text) {
    PROC("RichTextBuffer SetSelTextInPlace");
    settle();
    const int s = SelStart();
    const int e = s + SelLength();
    const QString chars = documentChars(text);
    const QString old = m_doc->toRawText().mid(s, e - s);
    bool same = chars.size() == old.size();
    for (qsizetype i = 0; same && i < old.size(); ++i) {
        same = isBreak(old[i]) == (chars[i] == QLatin1Char('\n'));
    }
    if (!same) {
        SetSelText(text);
        return;
    }
    // Only the runs that really change are rewritten, each with its own format; paragraph breaks,
    // pictures and unchanged runs stay as they are.
    struct Piece {
        int from;
        int to;
        QTextCharFormat format;
    };
    std::vector<Piece> pieces;
    for (QTextBlock b = m_doc->findBlock(s); b.isValid() && b.position() < e; b = b.next()) {
        for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
            const QTextFragment frag = it.fragment();
            const int from = qMax(s, frag.position());
            const int to = qMin(e, frag.position() + frag.length());
            if (from < to && QStringView(old).mid(from - s, to - from) !=
                                 QStringView(chars).mid(from - s, to - from)) {
                pieces.push_back({from, to, frag.charFormat()});
            }
        }
    }
    QTextCursor c(m_doc);
    c.beginEditBlock();
    for (const Piece &p : pieces) {
        c.setPosition(p.from);
        c.setPosition(p.to, QTextCursor::KeepAnchor);
        c.insertText(chars.mid(p.from - s, p.to - p.from), p.format);
    }
    c.endEditBlock();
    m_cursor.setPosition(e);
    notifySelection();
}

QString RichTextBuffer::SelHtml() const {
    settle();
    return m_cursor.selection().toHtml();
}

void RichTextBuffer::Clear() {
    PROC("RichTextBuffer Clear");
    settle();
    QTextCursor all(m_doc);
    all.beginEditBlock();
    all.select(QTextCursor::Document);
    all.removeSelectedText();
    all.setBlockFormat(QTextBlockFormat());
    all.setBlockCharFormat(QTextCharFormat());
    all.setCharFormat(QTextCharFormat());
    all.endEditBlock();
    m_cursor = QTextCursor(m_doc);
    notifySelection();
}

void RichTextBuffer::BeginStep(bool undoGroup) {
    settle();
    if (m_step++ > 0) {
        return;
    }
    m_stepGrouped = undoGroup;
    m_stepUndoSteps = m_doc->availableUndoSteps();
    ++m_quiet;
    if (undoGroup) {
        m_cursor.beginEditBlock(); // the caret goes back here when the step is undone
    }
}

bool RichTextBuffer::EndStep() {
    if (m_step == 0 || --m_step > 0) {
        return false;
    }
    if (m_stepGrouped) {
        // The document reports the group's changes here, while the buffer is still quiet.
        QTextCursor(m_doc).endEditBlock();
    }
    --m_quiet;
    // Every change of text or format is an entry of the undo history, and undoing or redoing
    // moves through it; an empty group leaves it as it was.
    const bool changed = m_doc->availableUndoSteps() != m_stepUndoSteps;
    if (changed) {
        // The views' own cursors moved with the text: they are told the selection again, even
        // where it ends where it began.
        m_lastAnchor = -1;
    }
    notifySelection();
    return changed;
}

bool RichTextBuffer::CanUndo() const {
    return m_doc->isUndoAvailable();
}

bool RichTextBuffer::CanRedo() const {
    return m_doc->isRedoAvailable();
}

void RichTextBuffer::Undo() {
    settle();
    m_doc->undo(&m_cursor);
    notifySelection();
}

void RichTextBuffer::Redo() {
    settle();
    m_doc->redo(&m_cursor);
    notifySelection();
}

QByteArray RichTextBuffer::SelRTF() const {
    settle();
    return RtfWriter::write(m_doc, m_cursor.selectionStart(), m_cursor.selectionEnd());
}

void RichTextBuffer::SetSelRTF(const QByteArray &rtf) {
    PROC("RichTextBuffer SetSelRTF");
    settle();
    QTextDocument incoming;
    incoming.setDefaultFont(m_doc->defaultFont());
    {
        QTextCursor batch(&incoming);
        batch.beginEditBlock();
        RtfReader::readAny(rtf, &incoming);
        batch.endEditBlock();
    }
    // Pictures are resources of their document: carry them over.
    for (QTextBlock b = incoming.begin(); b.isValid(); b = b.next()) {
        for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat f = it.fragment().charFormat();
            if (f.isImageFormat()) {
                const QString name = f.toImageFormat().name();
                const QVariant res = incoming.resource(QTextDocument::ImageResource, QUrl(name));
                if (res.isValid()) {
                    m_doc->addResource(QTextDocument::ImageResource, QUrl(name), res);
                }
            }
        }
    }
    m_cursor.beginEditBlock();
    m_cursor.removeSelectedText();
    if (m_doc->characterCount() <= 1 && incoming.rootFrame()->childFrames().isEmpty()) {
        copyInto(incoming, m_cursor);
    } else {
        m_cursor.insertFragment(QTextDocumentFragment(&incoming));
    }
    m_cursor.endEditBlock();
    notifySelection();
}

void RichTextBuffer::copyInto(const QTextDocument &source, QTextCursor &cursor) {
    // An empty text takes the source as it is, every paragraph with its format: one copy, where
    // a fragment would copy the source twice. (Tables take the fragment's way.)
    std::unordered_map<const QTextList *, QTextList *> lists;
    bool first = true;
    for (QTextBlock b = source.begin(); b.isValid(); b = b.next()) {
        QTextBlockFormat bf = b.blockFormat();
        bf.setObjectIndex(-1);
        if (first) {
            cursor.setBlockFormat(bf);
            cursor.setBlockCharFormat(b.charFormat());
            first = false;
        } else {
            cursor.insertBlock(bf, b.charFormat());
        }
        if (const QTextList *from = b.textList()) {
            auto it = lists.find(from);
            if (it == lists.end()) {
                lists.emplace(from, cursor.createList(from->format()));
            } else {
                it->second->add(cursor.block());
            }
        }
        for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
            const QTextFragment frag = it.fragment();
            cursor.insertText(frag.text(), frag.charFormat());
        }
    }
}

template <class T, class Get> std::optional<T> RichTextBuffer::uniformChar(Get get) const {
    const int s = m_cursor.selectionStart();
    const int e = m_cursor.selectionEnd();
    std::optional<T> value;
    if (s < e) {
        for (QTextBlock b = m_doc->findBlock(s); b.isValid() && b.position() < e; b = b.next()) {
            for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
                const QTextFragment frag = it.fragment();
                if (frag.position() + frag.length() <= s || frag.position() >= e) {
                    continue;
                }
                const T v = get(frag.charFormat());
                if (!value) {
                    value = v;
                } else if (!(*value == v)) {
                    return std::nullopt;
                }
            }
        }
    }
    if (!value) {
        value = get(m_cursor.charFormat());
    }
    return value;
}

template <class T, class Get> std::optional<T> RichTextBuffer::uniformBlock(Get get) const {
    const int s = m_cursor.selectionStart();
    const int e = m_cursor.selectionEnd();
    const QTextBlock last = m_doc->findBlock(e > s ? e - 1 : s);
    std::optional<T> value;
    for (QTextBlock b = m_doc->findBlock(s); b.isValid(); b = b.next()) {
        const T v = get(b);
        if (!value) {
            value = v;
        } else if (!(*value == v)) {
            return std::nullopt;
        }
        if (b == last) {
            break;
        }
    }
    return value;
}

void RichTextBuffer::mergeSelCharFormat(const QTextCharFormat &format) {
    settle();
    m_cursor.mergeCharFormat(format);
}

std::optional<bool> RichTextBuffer::SelBold() const {
    return uniformChar<bool>([](const QTextCharFormat &f) { return isBold(f); });
}

void RichTextBuffer::SetSelBold(bool on) {
    QTextCharFormat f;
    f.setFontWeight(on ? QFont::Bold : QFont::Normal);
    mergeSelCharFormat(f);
}

std::optional<bool> RichTextBuffer::SelItalic() const {
    return uniformChar<bool>([](const QTextCharFormat &f) { return f.fontItalic(); });
}

void RichTextBuffer::SetSelItalic(bool on) {
    QTextCharFormat f;
    f.setFontItalic(on);
    mergeSelCharFormat(f);
}

std::optional<bool> RichTextBuffer::SelUnderline() const {
    return uniformChar<bool>([](const QTextCharFormat &f) {
        return f.underlineStyle() != QTextCharFormat::NoUnderline;
    });
}

void RichTextBuffer::SetSelUnderline(bool on) {
    QTextCharFormat f;
    f.setFontUnderline(on);
    mergeSelCharFormat(f);
}

std::optional<bool> RichTextBuffer::SelStrikeThru() const {
    return uniformChar<bool>([](const QTextCharFormat &f) { return f.fontStrikeOut(); });
}

void RichTextBuffer::SetSelStrikeThru(bool on) {
    QTextCharFormat f;
    f.setFontStrikeOut(on);
    mergeSelCharFormat(f);
}

std::optional<QString> RichTextBuffer::SelFontName() const {
    const QString base = m_doc->defaultFont().family();
    return uniformChar<QString>([&base](const QTextCharFormat &f) {
        const QStringList families = f.property(QTextFormat::FontFamilies).toStringList();
        if (!families.isEmpty() && !families.first().isEmpty()) {
            return families.first();
        }
        const QString family = f.property(QTextFormat::FontFamily).toString();
        return family.isEmpty() ? base : family;
    });
}

void RichTextBuffer::SetSelFontName(const QString &name) {
    if (name.isEmpty()) {
        return;
    }
    QTextCharFormat f;
    f.setFontFamilies(QStringList{name});
    mergeSelCharFormat(f);
}

std::optional<double> RichTextBuffer::SelFontSize() const {
    const double base =
        m_doc->defaultFont().pointSizeF() > 0 ? m_doc->defaultFont().pointSizeF() : 12.0;
    return uniformChar<double>([base](const QTextCharFormat &f) {
        return f.hasProperty(QTextFormat::FontPointSize) && f.fontPointSize() > 0
                   ? f.fontPointSize()
                   : base;
    });
}

void RichTextBuffer::SetSelFontSize(double points) {
    PROC("RichTextBuffer SetSelFontSize");
    if (!std::isfinite(points) || points <= 0 || points > 1638.0) {
        modMain::Raise(modMain::errInvalidProcedureCall);
    }
    QTextCharFormat f;
    f.setFontPointSize(qMax(0.5, std::round(points * 2.0) / 2.0));
    mergeSelCharFormat(f);
}

std::optional<QColor> RichTextBuffer::SelColor() const {
    return uniformChar<QColor>([](const QTextCharFormat &f) {
        if (!f.hasProperty(QTextFormat::ForegroundBrush) || f.foreground().style() == Qt::NoBrush) {
            return QColor(Qt::black);
        }
        return QColor(f.foreground().color().rgb());
    });
}

void RichTextBuffer::SetSelColor(const QColor &color) {
    QTextCharFormat f;
    f.setForeground(QColor(color.rgb()));
    mergeSelCharFormat(f);
}

std::optional<bool> RichTextBuffer::SelBullet() const {
    return uniformBlock<bool>([](const QTextBlock &b) {
        const QTextList *l = b.textList();
        if (!l) {
            return false;
        }
        const auto style = l->format().style();
        return style == QTextListFormat::ListDisc || style == QTextListFormat::ListCircle ||
               style == QTextListFormat::ListSquare;
    });
}

void RichTextBuffer::SetSelBullet(bool on) {
    PROC("RichTextBuffer SetSelBullet");
    settle();
    if (on) {
        if (SelBullet() == std::optional<bool>(true)) {
            return;
        }
        QTextListFormat lf;
        lf.setStyle(QTextListFormat::ListDisc);
        lf.setIndent(0);
        m_cursor.createList(lf);
        return;
    }
    const int s = m_cursor.selectionStart();
    const int e = m_cursor.selectionEnd();
    const QTextBlock last = m_doc->findBlock(e > s ? e - 1 : s);
    m_cursor.beginEditBlock();
    for (QTextBlock b = m_doc->findBlock(s); b.isValid(); b = b.next()) {
        if (QTextList *l = b.textList()) {
            l->remove(b);
            QTextCursor c(b);
            QTextBlockFormat bf = b.blockFormat();
            bf.setIndent(0);
            bf.setObjectIndex(-1);
            c.setBlockFormat(bf);
        }
        if (b == last) {
            break;
        }
    }
    m_cursor.endEditBlock();
}

std::optional<int> RichTextBuffer::SelIndent() const {
    return uniformBlock<int>(
        [](const QTextBlock &b) { return qRound(b.blockFormat().leftMargin() * 15.0); });
}

void RichTextBuffer::SetSelIndent(int twips) {
    settle();
    QTextBlockFormat f;
    f.setLeftMargin(qMax(0, twips) / 15.0);
    m_cursor.mergeBlockFormat(f);
}

std::optional<int> RichTextBuffer::SelAlignment() const {
    return uniformBlock<int>([](const QTextBlock &b) {
        switch (b.blockFormat().alignment() & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute) {
        case Qt::AlignRight:
            return 1;
        case Qt::AlignHCenter:
            return 2;
        case Qt::AlignJustify:
            return 3;
        default:
            return 0;
        }
    });
}

void RichTextBuffer::SetSelAlignment(int alignment) {
    PROC("RichTextBuffer SetSelAlignment");
    settle();
    static const Qt::Alignment kAlign[] = {Qt::AlignLeft, Qt::AlignRight, Qt::AlignHCenter,
                                           Qt::AlignJustify};
    if (alignment < 0 || alignment > 3) {
        modMain::Raise(modMain::errInvalidProcedureCall);
    }
    QTextBlockFormat f;
    f.setAlignment(kAlign[alignment]);
    m_cursor.mergeBlockFormat(f);
}

QFont RichTextBuffer::Font() const {
    return m_doc->defaultFont();
}

void RichTextBuffer::SetFont(const QFont &font) {
    settle();
    m_doc->setDefaultFont(font);
}

void RichTextBuffer::SetBaseFont(const PaneFont &font) {
    PROC("RichTextBuffer SetBaseFont");
    settle();
    QFont base = m_doc->defaultFont();
    base.setBold(font.bold);
    base.setItalic(font.italic);
    if (!font.name.isEmpty()) {
        base.setFamily(font.name);
    }
    if (font.size > 0) {
        base.setPointSizeF(font.size);
    }
    base.setStrikeOut(font.strikeThrough);
    base.setUnderline(font.underline);
    m_doc->setDefaultFont(base);
}

int RichTextBuffer::Find(const QString &text, int start, int end, int options) {
    PROC("RichTextBuffer Find");
    settle();
    if (text.isEmpty()) {
        return -1;
    }
    QString pattern = text;
    pattern.replace(QLatin1String("\r\n"), QString(QChar(QChar::ParagraphSeparator)));
    pattern.replace(QLatin1Char('\r'), QChar(QChar::ParagraphSeparator));
    pattern.replace(QLatin1Char('\n'), QChar(QChar::ParagraphSeparator));
    pattern.replace(QChar(0x0B), QChar(QChar::LineSeparator));

    const QString raw = m_doc->toRawText();
    const int length = lastPosition();
    const int limit = (end < 0 || end > length) ? length : end;
    const Qt::CaseSensitivity cs =
        (options & FindMatchCase) ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const bool wholeWord = options & FindWholeWord;
    qsizetype from = qMax(0, start);
    while (from <= limit - pattern.size()) {
        const qsizetype found = raw.indexOf(pattern, from, cs);
        if (found < 0 || found + pattern.size() > limit) {
            return -1;
        }
        const qsizetype behind = found + pattern.size();
        if (!wholeWord || ((found == 0 || !isWordChar(raw[found - 1])) &&
                           (behind >= length || !isWordChar(raw[behind])))) {
            if (!(options & FindNoHighlight)) {
                setSelection(int(found), int(behind));
            }
            return int(found);
        }
        from = found + 1;
    }
    return -1;
}

void RichTextBuffer::ApplyFontToAll(const PaneFont &font) {
    PROC("RichTextBuffer ApplyFontToAll");
    settle();
    QTextCharFormat f;
    f.setFontWeight(font.bold ? QFont::Bold : QFont::Normal);
    f.setFontItalic(font.italic);
    if (!font.name.isEmpty()) {
        f.setFontFamilies(QStringList{font.name});
    }
    if (font.size > 0) {
        f.setFontPointSize(std::round(font.size * 2.0) / 2.0);
    }
    f.setFontStrikeOut(font.strikeThrough);
    f.setFontUnderline(font.underline);
    QTextCursor all(m_doc);
    all.beginEditBlock();
    all.select(QTextCursor::Document);
    all.mergeCharFormat(f);
    all.mergeBlockCharFormat(f);
    all.endEditBlock();
    m_cursor.mergeCharFormat(f);
}
