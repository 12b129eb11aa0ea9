#pragma once

#include <QColor>
#include <QFont>
#include <QString>

#include <functional>
#include <optional>

class clsFont;
class RichTextBuffer;

// The font commands: the font dialog applied to a font record, to the outline of the active
// document, to a text pane's base font or selection, and the one-step size keys.
namespace modFont {

// What the one font dialog of the program shows and returns. A value left unset before the
// dialog keeps whatever the dialog last held.
struct FontDialogValues {
    QString FontName;
    double FontSize = 0; // points
    bool FontBold = false;
    bool FontItalic = false;
    bool FontUnderline = false;
    bool FontStrikethru = false;
    std::optional<QColor> Color; // the selection's colour, when the dialog is asked for it
};

// The font the values describe: the base font with the name (when set), the size (when set)
// and the four styles of the values.
QFont FontOf(const FontDialogValues &values, QFont base = QFont());

// Shows the dialog: true when confirmed (the values then hold the choice), false when cancelled.
// Without a handler every dialog is cancelled.
using FontDialogHandler = std::function<bool(FontDialogValues &values)>;
void SetFontDialogHandler(FontDialogHandler handler);

// Each returns true when the user confirmed the dialog.
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
