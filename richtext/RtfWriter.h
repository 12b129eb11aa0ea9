#pragma once

#include <QByteArray>

class QTextDocument;

// Writes a text document (or a range of it) as RTF in the dialect of the rich-edit control:
// header with code page 1252, a font table of the fonts used, a colour table when colours are
// used, character formatting as differences (no groups, no \plain), paragraphs ended "\par" and
// CR LF, bullets and numbering as \pn groups, links as HYPERLINK fields, tables as \trowd rows.
// Characters of the code page above 0x7F are written \'hh, everything else \uN?.
// The content is held as described in richtext/RtfConventions.h. The output depends only on the
// document: the same document always gives the same bytes.
class RtfWriter {
public:
    // The whole document. Every paragraph, the last one included, ends with \par, so an empty
    // document still gives a complete RTF with one empty paragraph.
    static QByteArray write(const QTextDocument *doc);

    // The characters between two document positions (as QTextCursor counts them; the order of
    // the two does not matter). A paragraph break inside the range is written \par; a range that
    // ends inside a paragraph ends without one. An empty range gives a header and no text.
    static QByteArray write(const QTextDocument *doc, int from, int to);
};
