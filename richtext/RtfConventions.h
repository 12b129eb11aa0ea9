#pragma once

#include <QTextFormat>

// How rich text read from RTF is held in a QTextDocument, shared by the reader and the writer.
//
// Units: paragraph indents and spacing are QTextBlockFormat margins in pixels at 96 dpi:
// margin = twips / 15.0 (leftMargin <- \li, rightMargin <- \ri, textIndent <- \fi,
// topMargin <- \sb, bottomMargin <- \sa); the writer writes qRound(margin * 15.0).
// Font sizes are QTextCharFormat::fontPointSize (\fs / 2). Colours: foreground brush (\cf),
// background brush (\highlight, \cb). Families: QTextCharFormat::fontFamilies, first entry.
// Bullets and numbering: the block belongs to a QTextList (ListDisc for bullets, ListDecimal,
// ListLowerAlpha, ListUpperAlpha, ListLowerRoman, ListUpperRoman for numbering).
// \line is QChar::LineSeparator; \tab is '\t'; \page is a paragraph break with
// QTextFormat::PageBreakPolicy set to PageBreak_AlwaysBefore on the next block.
// Links: QTextCharFormat anchor with anchorHref.
namespace RtfConventions {

// On a character format: the raw RTF group (QByteArray, braces included) that this object
// character stands for. The writer writes it back unchanged instead of the character. Used for
// content the pane cannot render (metafile pictures, objects) and for pictures read from RTF.
constexpr int RawGroupProperty = QTextFormat::UserProperty + 1;

// On a character format: true for hidden text (\v).
constexpr int HiddenProperty = QTextFormat::UserProperty + 2;

// Object type of the visible placeholder drawn for content the pane cannot render. Its character
// (QChar::ObjectReplacementCharacter) carries RawGroupProperty and a short description in
// PlaceholderTextProperty ("Picture (Windows metafile)", "Embedded object", ...).
constexpr int PlaceholderObjectType = QTextFormat::UserObject + 1;
constexpr int PlaceholderTextProperty = QTextFormat::UserProperty + 3;

// Pictures that Qt can show are QTextImageFormat characters whose name is a resource of the
// document (QTextDocument::ImageResource, a QImage), with width/height in pixels at 96 dpi
// (twips / 15), and RawGroupProperty holding the original {\pict ...} group.

} // namespace RtfConventions
