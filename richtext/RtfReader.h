#pragma once

#include <QByteArrayView>
#include <QString>

class QTextDocument;

// Reads rich text (RTF) into a text document, as RichEdit, WordPad, Word, LibreOffice and other
// programs write it. Malformed input never crashes; what can be read is kept.
class RtfReader {
public:
    // True when the bytes start like an RTF document ("{\rtf", after leading blanks and line
    // breaks).
    static bool looksLikeRtf(QByteArrayView bytes);

    // Replaces the document's content with the RTF. Returns false (and leaves the document empty)
    // only when the input is not RTF at all. A text of LongText bytes or more is put into an
    // emptied document, which a layout lays out lazily (what is shown first).
    static bool read(QByteArrayView rtf, QTextDocument *doc);
    static constexpr qsizetype LongText = 32 * 1024;

    // As read, but only the start of the text: the paragraphs up to the first paragraph end
    // (outside a table) where the document holds at least the given characters or paragraphs.
    // A view shows that much while the whole text is read later. Characters 0 reads it all.
    enum Outcome { NotRtf, Whole, Partly };
    static Outcome readStart(QByteArrayView rtf, QTextDocument *doc, int characters,
                             int paragraphs);

    // RTF when it looks like RTF; otherwise plain text in the file code page, line breaks (CR LF,
    // LF or CR) kept as paragraphs.
    static void readAny(QByteArrayView bytes, QTextDocument *doc);

    // The characters readAny would put into a document, as RichTextBuffer::Text reads them
    // (paragraph breaks CR LF, line breaks "\v", pictures and objects U+FFFC), without
    // building the document.
    static QString plainText(QByteArrayView bytes);
};
