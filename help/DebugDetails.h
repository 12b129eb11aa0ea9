#pragma once

#include <QString>

class Document;

// What the diagnostic window shows of a document: its text pane's rich-text source and a few
// font and entry details.
namespace DebugDetails {

// The pane's rich text (TextRTF) as characters, to be shown literally.
QString RichTextSource(const Document &doc);

// One line per item, each ended by CR LF: "Font name ", "Font size " (the pane's base font),
// "Selected font name ", "Selected font size " (empty when the selection mixes fonts), "Index "
// and "Key " of the selected entry. Raises 424 (Object required) when the document has no text
// pane or no selected entry.
QString DetailsText(const Document &doc);

} // namespace DebugDetails
