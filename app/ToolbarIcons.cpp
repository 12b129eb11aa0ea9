#include "app/ToolbarIcons.h"

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

// Draws the button: the group's rounded square, then the parts of the drawing, separated by ";":
// "text <glyph> [bold] [italic] [underline] [<pixel size>]", "arrow <angle> [bar]",
// "lines left|centre|right", "page", "printer", "dot" (the mark of an entry's command). An empty
// drawing shows the key's first letter.
void Draw(QPainter &p, const QString &key, const QString &drawing) {
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(ColourOf(GroupOf(key)));
    p.drawRoundedRect(QRectF(1, 1, kSize - 2, kSize - 2), 4, 4);
    if (drawing.trimmed().isEmpty()) {
        Glyph(p, key.left(1).toUpper(), true, false, false);
        return;
    }
    for (const QString &part : drawing.split(u';')) {
        const QStringList words = part.split(u' ', Qt::SkipEmptyParts);
        if (words.isEmpty()) {
            continue;
        }
        const QString &shape = words.first();
        if (shape == u"text"_s && words.size() > 1) {
            bool sized = false;
            const int size = words.last().toInt(&sized);
            Glyph(p, words[1], words.contains(u"bold"_s), words.contains(u"italic"_s),
                  words.contains(u"underline"_s), sized && words.size() > 2 ? size : 15);
        } else if (shape == u"arrow"_s && words.size() > 1) {
            Arrow(p, words[1].toDouble(), words.contains(u"bar"_s));
        } else if (shape == u"lines"_s && words.size() > 1) {
            Lines(p, words[1] == u"right"_s    ? Qt::AlignRight
                     : words[1] == u"centre"_s ? Qt::AlignHCenter
                                               : Qt::AlignLeft);
        } else if (shape == u"page"_s) {
            Page(p);
        } else if (shape == u"printer"_s) {
            Printer(p);
        } else if (shape == u"dot"_s) {
            p.setPen(Qt::NoPen);
            p.setBrush(QColor(0xff, 0xd0, 0x40));
            p.drawEllipse(QRectF(15, 15, 7, 7));
        }
    }
}

} // namespace

QIcon DrawnToolbarIcon(const QString &key, const QString &drawing) {
    QIcon icon;
    for (const int scale : {1, 2}) {
        QPixmap pm(kSize * scale, kSize * scale);
        pm.setDevicePixelRatio(scale);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        Draw(p, key, drawing);
        p.end();
        icon.addPixmap(pm);
    }
    return icon;
}

QIcon ToolbarIcon(const QString &key, const QString &theme, const QString &drawing) {
    if (!theme.isEmpty() && QIcon::hasThemeIcon(theme)) {
        const QIcon themed = QIcon::fromTheme(theme);
        if (!themed.isNull() && !themed.availableSizes().isEmpty()) {
            return themed;
        }
    }
    return DrawnToolbarIcon(key, drawing);
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
