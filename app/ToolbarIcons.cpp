#include "app/ToolbarIcons.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

using namespace Qt::StringLiterals;

namespace {

constexpr int kSize = 24;

enum class Group { File, View, Entry, Level, Text };

Group GroupOf(const QString &key) {
    if (key.endsWith(u" File"_s)) {
        return Group::File;
    }
    if (key.startsWith(u"Go To"_s)) {
        return Group::View;
    }
    if (key.startsWith(u"Expand to level"_s) || key == u"Expand all levels"_s) {
        return Group::Level;
    }
    if (key.endsWith(u" Text"_s)) {
        return Group::Text;
    }
    return Group::Entry;
}

QColor ColourOf(Group g) {
    switch (g) {
    case Group::File:
        return QColor(0x5a, 0x6b, 0x7d);
    case Group::View:
        return QColor(0x7b, 0x52, 0x94);
    case Group::Entry:
        return QColor(0x2f, 0x6d, 0xb5);
    case Group::Level:
        return QColor(0x2e, 0x8b, 0x7a);
    case Group::Text:
        return QColor(0x3c, 0x8d, 0x3a);
    }
    return Qt::darkGray;
}

// An arrow from the centre in one direction, optionally ending in a bar.
void Arrow(QPainter &p, double angle, bool bar) {
    p.save();
    p.translate(kSize / 2.0, kSize / 2.0);
    p.rotate(angle);
    QPen pen(Qt::white, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    p.drawLine(QPointF(0, 6), QPointF(0, -5));
    QPainterPath head;
    head.moveTo(-5, -1);
    head.lineTo(0, -6);
    head.lineTo(5, -1);
    p.drawPath(head);
    if (bar) {
        p.drawLine(QPointF(-6, -8.5), QPointF(6, -8.5));
    }
    p.restore();
}

void Glyph(QPainter &p, const QString &text, bool bold, bool italic, bool underline,
           int pixelSize = 15) {
    QFont f(u"DejaVu Sans"_s);
    f.setPixelSize(pixelSize);
    f.setBold(bold);
    f.setItalic(italic);
    f.setUnderline(underline);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRect(0, 0, kSize, kSize), Qt::AlignCenter, text);
}

void Lines(QPainter &p, Qt::Alignment align) {
    p.setPen(QPen(Qt::white, 2));
    const int widths[] = {16, 10, 16, 8};
    for (int i = 0; i < 4; ++i) {
        const int w = widths[i];
        int x = 4;
        if (align == Qt::AlignRight) {
            x = kSize - 4 - w;
        } else if (align == Qt::AlignHCenter) {
            x = (kSize - w) / 2;
        }
        const int y = 6 + i * 4;
        p.drawLine(x, y, x + w, y);
    }
}

void Page(QPainter &p) {
    p.setPen(QPen(Qt::white, 1.6));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(6.5, 4.5, 11, 15));
}

void Printer(QPainter &p) {
    p.setPen(QPen(Qt::white, 1.6));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(8.5, 4.5, 7, 5));
    p.drawRoundedRect(QRectF(4.5, 9.5, 15, 7), 1.5, 1.5);
    p.setBrush(Qt::white);
    p.drawRect(QRectF(8.5, 14.5, 7, 5));
}

void Draw(QPainter &p, const QString &key) {
    const Group g = GroupOf(key);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(ColourOf(g));
    p.drawRoundedRect(QRectF(1, 1, kSize - 2, kSize - 2), 4, 4);

    if (key.startsWith(u"Expand to level "_s)) {
        Glyph(p, key.right(1), true, false, false);
    } else if (key == u"Expand all levels"_s) {
        Glyph(p, u"∗"_s, true, false, false, 18);
    } else if (key == u"Bold Text"_s) {
        Glyph(p, u"B"_s, true, false, false);
    } else if (key == u"Italic Text"_s) {
        Glyph(p, u"I"_s, false, true, false);
    } else if (key == u"Underline Text"_s) {
        Glyph(p, u"U"_s, false, false, true);
    } else if (key == u"Left Align Text"_s) {
        Lines(p, Qt::AlignLeft);
    } else if (key == u"Centre Align Text"_s) {
        Lines(p, Qt::AlignHCenter);
    } else if (key == u"Right Align Text"_s) {
        Lines(p, Qt::AlignRight);
    } else if (key == u"Bullet Text"_s) {
        Glyph(p, u"•≡"_s, true, false, false, 13);
    } else if (key == u"Indent Text"_s || key == u"Indent Entry"_s) {
        Arrow(p, 90, false);
    } else if (key == u"Unindent Text"_s || key == u"Unindent Entry"_s) {
        Arrow(p, -90, false);
    } else if (key == u"Move Entry Up"_s) {
        Arrow(p, 0, false);
    } else if (key == u"Move Entry Down"_s) {
        Arrow(p, 180, false);
    } else if (key == u"Move Entry First"_s) {
        Arrow(p, 0, true);
    } else if (key == u"Move Entry Last"_s) {
        Arrow(p, 180, true);
    } else if (key == u"New Entry Above"_s) {
        Glyph(p, u"+↑"_s, true, false, false, 13);
    } else if (key == u"New Entry Below"_s) {
        Glyph(p, u"+↓"_s, true, false, false, 13);
    } else if (key == u"New Entry As Child"_s) {
        Glyph(p, u"+→"_s, true, false, false, 13);
    } else if (key == u"Expand Entry"_s) {
        Glyph(p, u"+"_s, true, false, false, 18);
    } else if (key == u"Contract Entry"_s) {
        Glyph(p, u"−"_s, true, false, false, 18);
    } else if (key == u"Tag Entry"_s) {
        Glyph(p, u"✓"_s, true, false, false, 16);
    } else if (key == u"Sort Entry"_s) {
        Glyph(p, u"AZ"_s, true, false, false, 10);
    } else if (key == u"Copy Entry"_s || key == u"Copy Text"_s) {
        Glyph(p, u"C"_s, true, false, false);
    } else if (key == u"Paste Entry"_s || key == u"Paste Text"_s) {
        Glyph(p, u"P"_s, true, false, false);
    } else if (key == u"Delete Entry"_s || key == u"Delete Text"_s) {
        Glyph(p, u"✕"_s, true, false, false, 15);
    } else if (key == u"Cut Text"_s) {
        Glyph(p, u"✂"_s, false, false, false, 16);
    } else if (key == u"Go To Outline"_s) {
        Glyph(p, u"☰"_s, false, false, false, 16);
    } else if (key == u"Go To Text"_s) {
        Glyph(p, u"¶"_s, true, false, false, 16);
    } else if (key == u"New File"_s) {
        Page(p);
        Glyph(p, u"+"_s, true, false, false, 11);
    } else if (key == u"Open File"_s) {
        Arrow(p, 0, false);
    } else if (key == u"Save File"_s) {
        Arrow(p, 180, true);
    } else if (key == u"Print File"_s || key == u"Print Entry"_s) {
        Printer(p);
    } else if (key == u"Preview File"_s || key == u"Preview Entry"_s) {
        Glyph(p, u"◎"_s, false, false, false, 16);
    } else {
        // A key without a picture of its own still shows its first letter.
        Glyph(p, key.left(1).toUpper(), true, false, false);
    }
    if (key.endsWith(u" Entry"_s) && (key.startsWith(u"Print"_s) || key.startsWith(u"Preview"_s))) {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0xff, 0xd0, 0x40));
        p.drawEllipse(QRectF(15, 15, 7, 7));
    }
}

const QHash<QString, QString> &ThemeNames() {
    static const QHash<QString, QString> names = {
        {u"New File"_s, u"document-new"_s},
        {u"Open File"_s, u"document-open"_s},
        {u"Save File"_s, u"document-save"_s},
        {u"Print File"_s, u"document-print"_s},
        {u"Preview File"_s, u"document-print-preview"_s},
        {u"Cut Text"_s, u"edit-cut"_s},
        {u"Copy Text"_s, u"edit-copy"_s},
        {u"Paste Text"_s, u"edit-paste"_s},
        {u"Delete Text"_s, u"edit-delete"_s},
        {u"Bold Text"_s, u"format-text-bold"_s},
        {u"Italic Text"_s, u"format-text-italic"_s},
        {u"Underline Text"_s, u"format-text-underline"_s},
        {u"Indent Text"_s, u"format-indent-more"_s},
        {u"Unindent Text"_s, u"format-indent-less"_s},
        {u"Left Align Text"_s, u"format-justify-left"_s},
        {u"Centre Align Text"_s, u"format-justify-center"_s},
        {u"Right Align Text"_s, u"format-justify-right"_s},
        {u"Sort Entry"_s, u"view-sort-ascending"_s},
        {u"Move Entry Up"_s, u"go-up"_s},
        {u"Move Entry Down"_s, u"go-down"_s},
        {u"Move Entry First"_s, u"go-top"_s},
        {u"Move Entry Last"_s, u"go-bottom"_s},
    };
    return names;
}

} // namespace

QIcon DrawnToolbarIcon(const QString &key) {
    QIcon icon;
    for (const int scale : {1, 2}) {
        QPixmap pm(kSize * scale, kSize * scale);
        pm.setDevicePixelRatio(scale);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        Draw(p, key);
        p.end();
        icon.addPixmap(pm);
    }
    return icon;
}

QIcon ToolbarIcon(const QString &key) {
    const QString name = ThemeNames().value(key);
    if (!name.isEmpty() && QIcon::hasThemeIcon(name)) {
        const QIcon themed = QIcon::fromTheme(name);
        if (!themed.isNull() && !themed.availableSizes().isEmpty()) {
            return themed;
        }
    }
    return DrawnToolbarIcon(key);
}

QIcon ApplicationIcon() {
    // Drawn: an outline of three entries on a page.
    QPixmap pm(64, 64);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x2f, 0x6d, 0xb5));
    p.drawRoundedRect(QRectF(2, 2, 60, 60), 10, 10);
    p.setBrush(Qt::white);
    p.drawRoundedRect(QRectF(10, 12, 10, 10), 2, 2);
    p.drawRoundedRect(QRectF(22, 14, 32, 6), 2, 2);
    p.drawRoundedRect(QRectF(20, 28, 8, 8), 2, 2);
    p.drawRoundedRect(QRectF(32, 30, 22, 5), 2, 2);
    p.drawRoundedRect(QRectF(20, 42, 8, 8), 2, 2);
    p.drawRoundedRect(QRectF(32, 44, 18, 5), 2, 2);
    p.end();
    return QIcon(pm);
}
