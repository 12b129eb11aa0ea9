#pragma once

#include "richtext/TextPane.h"

#include <QFont>
#include <QString>

class RichTextBuffer;

// A plain font description, carried by every document for its outline and its texts and kept in
// the settings.
class clsFont {
public:
    bool Underline() const { return m_bUnderline; }
    void setUnderline(bool v) { m_bUnderline = v; }
    bool StrikeThrough() const { return m_bStrikeThrough; }
    void setStrikeThrough(bool v) { m_bStrikeThrough = v; }
    // Size in points, fixed-point with four decimals; 0 or less means no size is set.
    double Size() const { return double(m_lSize) / 10000.0; }
    void setSize(double points);
    // Face name; "" means no face is set.
    const QString &Name() const { return m_sName; }
    void setName(const QString &v) { m_sName = v; }
    bool Italic() const { return m_bItalic; }
    void setItalic(bool v) { m_bItalic = v; }
    bool Bold() const { return m_bBold; }
    void setBold(bool v) { m_bBold = v; }

    void CopyTo(clsFont &other) const;
    // Reads all six fields from a font.
    void GetFont(const QFont &font);
    // Writes to a font: bold, italic, the name only when set, the size only when set,
    // strikethrough, underline.
    void SetFont(QFont &font) const;
    // The same six fields as a text pane takes them.
    PaneFont ToPaneFont() const;
    // Writes the six fields to the text pane's whole text through its selection attributes
    // (the name only when set, the size only when set); the caret position and then the
    // selection length are restored afterwards.
    void SetRTFSelFont(RichTextBuffer &pane) const;

    bool operator==(const clsFont &) const = default;

private:
    bool m_bBold = false;
    bool m_bItalic = false;
    QString m_sName;
    qint64 m_lSize = 0; // ten-thousandths of a point
    bool m_bStrikeThrough = false;
    bool m_bUnderline = false;
};
