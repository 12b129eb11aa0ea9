#pragma once

#include <QByteArray>
#include <QString>

// A font as a pane applies it: bold, italic, strikethrough and underline always; the face name and
// the size (in points) only when set ("" and 0 mean not set).
struct PaneFont {
    QString name;
    double size = 0;
    bool bold = false;
    bool italic = false;
    bool strikeThrough = false;
    bool underline = false;

    bool operator==(const PaneFont &) const = default;
};

// What the entry texts need of a document's text pane: its whole content as rich text, and
// whether it is drawn. The rich-text buffer implements it; the window shows that buffer.
// Rich text is held as bytes: RTF is 7-bit markup, and any byte above 0x7F is a character of the
// file code page (util/CodePage.h).
class TextPane {
public:
    virtual ~TextPane() = default;

    virtual QByteArray TextRTF() const = 0;
    virtual void SetTextRTF(const QByteArray &rtf) = 0;

    virtual bool Visible() const = 0;
    virtual void SetVisible(bool visible) = 0;

    // Sets the base font of the pane, in which new text is typed.
    virtual void SetBaseFont(const PaneFont &font) = 0;
    // Applies the font to the whole of the current text (every character, all six attributes).
    virtual void ApplyFontToAll(const PaneFont &font) = 0;
};
