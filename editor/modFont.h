#pragma once

#include "richtext/clsFont.h"
#include "util/MainWindowHost.h"

#include <QFont>
#include <QString>

class RichTextBuffer;

// The font commands: the font dialog applied to a font record, to the outline of the active
// document, to a text pane's base font or selection, and the one-step size keys.
namespace modFont {

using modMain::FontDialogValues;

// The four font records, created at start-up. The first two are kept in the settings: the outline
// font and the text font every new document starts with. The other two are working records of
// the font commands.
extern clsFont g_fntOutlineFont;
extern clsFont g_fntTextFont;
extern clsFont g_fntCurrentFont;
extern clsFont g_fntDocumentFont;
// Resets the font records to empty descriptions (start of a session).
void CreateFontRecords();

// The font the values describe: the base font with the name (when set), the size (when set)
// and the four styles of the values.
QFont FontOf(const FontDialogValues &values, QFont base = QFont());

// The font dialog (the main window's) applied to a record, a pane or a selection. Each returns
// true when the user confirmed the dialog.
bool ChangeFontDetails(clsFont &font);
bool ChangeTreeviewFont(clsFont &font);
bool ChangeRTFFont(RichTextBuffer &pane);
bool ChangeRTFSelFont(RichTextBuffer &pane);
// Applies each document's text font to its text pane's base font: the active document, or all.
void ChangeDocumentTextFontDetails(bool allDocuments);
// One step larger or smaller for the selection; nothing for a selection of mixed sizes.
void ChangeSelectedFontSize(RichTextBuffer &pane, bool larger);

// The Edit menu's font commands on the active document.
void EditCurrentFont();
void EditDocumentFont();

} // namespace modFont
