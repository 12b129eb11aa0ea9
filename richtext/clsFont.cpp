#include "richtext/clsFont.h"

#include "richtext/RichTextBuffer.h"
#include "util/ErrorLog.h"

#include <cmath>

void clsFont::setSize(double points) {
    PROC("clsFont Size");
    if (!std::isfinite(points) || std::fabs(points) > 922337203685477.0) {
        modMain::Raise(modMain::errOverflow);
    }
    m_lSize = std::llround(points * 10000.0);
}

void clsFont::CopyTo(clsFont &other) const {
    PROC("clsFont CopyTo");
    other = *this;
}

void clsFont::GetFont(const QFont &font) {
    PROC("clsFont GetFont");
    m_sName = font.family();
    setSize(font.pointSizeF() > 0 ? font.pointSizeF() : 0.0);
    m_bBold = font.bold();
    m_bItalic = font.italic();
    m_bStrikeThrough = font.strikeOut();
    m_bUnderline = font.underline();
}

void clsFont::SetFont(QFont &font) const {
    PROC("clsFont SetFont");
    font.setBold(m_bBold);
    font.setItalic(m_bItalic);
    if (!m_sName.isEmpty()) {
        font.setFamily(m_sName);
    }
    if (m_lSize > 0) {
        font.setPointSizeF(Size());
    }
    font.setStrikeOut(m_bStrikeThrough);
    font.setUnderline(m_bUnderline);
}

PaneFont clsFont::ToPaneFont() const {
    return {m_sName,   m_lSize > 0 ? Size() : 0.0, m_bBold,
            m_bItalic, m_bStrikeThrough,           m_bUnderline};
}

void clsFont::SetRTFSelFont(RichTextBuffer &pane) const {
    PROC("clsFont SetRTFSelFont");
    const int start = pane.SelStart();
    const int length = pane.SelLength();
    pane.SetSelStart(0);
    pane.SetSelLength(pane.Text().size());
    pane.SetSelBold(m_bBold);
    pane.SetSelItalic(m_bItalic);
    if (!m_sName.isEmpty()) {
        pane.SetSelFontName(m_sName);
    }
    if (m_lSize > 0) {
        pane.SetSelFontSize(Size());
    }
    pane.SetSelStrikeThru(m_bStrikeThrough);
    pane.SetSelUnderline(m_bUnderline);
    PROC("clsFont SetRTFSelFont");
    pane.SetSelStart(start);
    pane.SetSelLength(length);
}
