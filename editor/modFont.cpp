#include "editor/modFont.h"

#include "document/Document.h"
#include "richtext/RichTextBuffer.h"
#include "richtext/clsFont.h"
#include "util/ErrorLog.h"

#include <cmath>

namespace modFont {

namespace {

// The one dialog of the program keeps its values between uses.
FontDialogValues g_dlg;

bool ShowFont() {
    return modMain::Host().ChooseFont(g_dlg);
}

// Offers a font to the dialog; with onlySet, an unset name or size keeps the dialog's own.
void Offer(const QString &name, double size, bool bold, bool italic, bool underline, bool strike,
           bool onlySet) {
    if (!onlySet || !name.isEmpty()) {
        g_dlg.FontName = name;
    }
    if (!onlySet || size > 0) {
        g_dlg.FontSize = size;
    }
    g_dlg.FontBold = bold;
    g_dlg.FontItalic = italic;
    g_dlg.FontUnderline = underline;
    g_dlg.FontStrikethru = strike;
    g_dlg.Color.reset();
}

void CopyBack(clsFont &font) {
    font.setName(g_dlg.FontName);
    font.setSize(g_dlg.FontSize);
    font.setBold(g_dlg.FontBold);
    font.setItalic(g_dlg.FontItalic);
    font.setUnderline(g_dlg.FontUnderline);
    font.setStrikeThrough(g_dlg.FontStrikethru);
}

RichTextBuffer *ActivePane(Document *&doc) {
    if (!modMain::DocumentActive(doc)) {
        return nullptr;
    }
    return dynamic_cast<RichTextBuffer *>(doc->txtRTF());
}

} // namespace

QFont FontOf(const FontDialogValues &values, QFont base) {
    if (!values.FontName.isEmpty()) {
        base.setFamily(values.FontName);
    }
    if (values.FontSize > 0) {
        base.setPointSizeF(values.FontSize);
    }
    base.setBold(values.FontBold);
    base.setItalic(values.FontItalic);
    base.setUnderline(values.FontUnderline);
    base.setStrikeOut(values.FontStrikethru);
    return base;
}

clsFont g_fntOutlineFont;
clsFont g_fntTextFont;
clsFont g_fntCurrentFont;
clsFont g_fntDocumentFont;

void CreateFontRecords() {
    PROC("modGlobals CreateFontRecords");
    g_fntOutlineFont = clsFont();
    g_fntTextFont = clsFont();
    g_fntCurrentFont = clsFont();
    g_fntDocumentFont = clsFont();
}

bool ChangeFontDetails(clsFont &font) {
    PROC("modFont ChangeFontDetails");
    Offer(font.Name(), font.Size(), font.Bold(), font.Italic(), font.Underline(),
          font.StrikeThrough(), false);
    if (!ShowFont()) {
        return false;
    }
    CopyBack(font);
    return true;
}

bool ChangeTreeviewFont(clsFont &font) {
    PROC("modFont ChangeTreeviewFont");
    Offer(font.Name(), font.Size(), font.Bold(), font.Italic(), font.Underline(),
          font.StrikeThrough(), true);
    if (!ShowFont()) {
        return false;
    }
    CopyBack(font);
    Document *doc = nullptr;
    if (modMain::DocumentActive(doc) && doc->view()) {
        // The window applies the record to its outline.
        doc->view()->DocumentStateChanged();
    }
    return true;
}

bool ChangeRTFFont(RichTextBuffer &pane) {
    PROC("modFont ChangeRTFFont");
    const QFont base = pane.Font();
    Offer(base.family(), base.pointSizeF(), base.bold(), base.italic(), base.underline(),
          base.strikeOut(), true);
    if (!ShowFont()) {
        return false;
    }
    pane.SetFont(FontOf(g_dlg, base));
    return true;
}

bool ChangeRTFSelFont(RichTextBuffer &pane) {
    PROC("modFont ChangeRTFSelFont");
    // A mixed attribute leaves the dialog's value as it was.
    if (const auto v = pane.SelFontName()) {
        g_dlg.FontName = *v;
    }
    if (const auto v = pane.SelFontSize()) {
        g_dlg.FontSize = *v;
    }
    if (const auto v = pane.SelBold()) {
        g_dlg.FontBold = *v;
    }
    if (const auto v = pane.SelItalic()) {
        g_dlg.FontItalic = *v;
    }
    if (const auto v = pane.SelUnderline()) {
        g_dlg.FontUnderline = *v;
    }
    if (const auto v = pane.SelStrikeThru()) {
        g_dlg.FontStrikethru = *v;
    }
    g_dlg.Color = pane.SelColor().value_or(QColor(Qt::black));
    if (!ShowFont()) {
        return false;
    }
    if (!g_dlg.FontName.isEmpty()) {
        pane.SetSelFontName(g_dlg.FontName);
    }
    if (g_dlg.FontSize > 0) {
        pane.SetSelFontSize(g_dlg.FontSize);
    }
    pane.SetSelBold(g_dlg.FontBold);
    pane.SetSelItalic(g_dlg.FontItalic);
    pane.SetSelUnderline(g_dlg.FontUnderline);
    pane.SetSelStrikeThru(g_dlg.FontStrikethru);
    if (g_dlg.Color) {
        pane.SetSelColor(*g_dlg.Color);
    }
    return true;
}

void ChangeDocumentTextFontDetails(bool allDocuments) {
    PROC("modFont ChangeDocumentTextFontDetails");
    Document *active = Documents::Active();
    for (Document *doc : Documents::All()) {
        if (!allDocuments && doc != active) {
            continue;
        }
        auto *pane = dynamic_cast<RichTextBuffer *>(doc->txtRTF());
        if (!pane) {
            continue;
        }
        const int start = pane->SelStart();
        const int length = pane->SelLength();
        pane->SetBaseFont(doc->m_fntTextFont.ToPaneFont());
        pane->SetSelStart(start);
        pane->SetSelLength(length);
    }
}

void ChangeSelectedFontSize(RichTextBuffer &pane, bool larger) {
    PROC("modFont ChangeSelectedFontSize");
    const auto size = pane.SelFontSize();
    if (!size) {
        return;
    }
    const int direction = larger ? 1 : -1;
    const double start = std::nearbyint(*size);
    int k = 0;
    // The buffer may round a requested size back: the step grows until the size changes.
    for (int tries = 0; tries < 64; ++tries) {
        k += direction;
        const double current = pane.SelFontSize().value_or(*size);
        if (current + k <= 0) {
            return;
        }
        pane.SetSelFontSize(current + k);
        if (pane.SelFontSize().value_or(start) != start) {
            return;
        }
    }
}

void EditCurrentFont() {
    modMain::Guarded([] {
        PROC("modEdit EditCurrentFont");
        Document *doc = nullptr;
        RichTextBuffer *pane = ActivePane(doc);
        if (!pane) {
            return;
        }
        if (pane->SelLength() > 0) {
            ChangeRTFSelFont(*pane);
        } else {
            ChangeRTFFont(*pane);
        }
    });
}

void EditDocumentFont() {
    modMain::Guarded([] {
        PROC("modEdit EditDocumentFont");
        Document *doc = nullptr;
        RichTextBuffer *pane = ActivePane(doc);
        if (!pane) {
            return;
        }
        pane->SetVisible(false);
        clsFont working;
        doc->m_fntTextFont.CopyTo(working);
        if (ChangeFontDetails(working)) {
            working.CopyTo(doc->m_fntTextFont);
            ChangeDocumentTextFontDetails(false);
        }
        pane->SetVisible(true);
    });
}

} // namespace modFont
