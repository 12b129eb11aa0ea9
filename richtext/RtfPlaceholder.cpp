#include "richtext/RtfPlaceholder.h"

#include "richtext/RtfConventions.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextDocument>

namespace {

class PlaceholderHandler : public QObject, public QTextObjectInterface {
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)

public:
    explicit PlaceholderHandler(QObject *parent) : QObject(parent) {}

    static QString label(const QTextFormat &format) {
        QString text = format.property(RtfConventions::PlaceholderTextProperty).toString();
        return text.isEmpty() ? QStringLiteral("Object") : text;
    }

    QSizeF intrinsicSize(QTextDocument *doc, int, const QTextFormat &format) override {
        QFont font = format.toCharFormat().font();
        if (doc && font.pointSizeF() <= 0)
            font = doc->defaultFont();
        QFontMetricsF fm(font);
        return QSizeF(fm.horizontalAdvance(label(format)) + 12, fm.height() + 6);
    }

    void drawObject(QPainter *painter, const QRectF &rect, QTextDocument *, int,
                    const QTextFormat &format) override {
        painter->save();
        QRectF box = rect.adjusted(0.5, 0.5, -0.5, -0.5);
        painter->setPen(QPen(QColor(120, 120, 120), 1, Qt::DashLine));
        painter->setBrush(QColor(240, 240, 240));
        painter->drawRect(box);
        painter->setPen(QColor(60, 60, 60));
        painter->setFont(format.toCharFormat().font());
        painter->drawText(box, Qt::AlignCenter, label(format));
        painter->restore();
    }
};

} // namespace

void installPlaceholderHandler(QTextDocument *doc) {
    if (!doc)
        return;
    QAbstractTextDocumentLayout *layout = doc->documentLayout();
    if (layout->handlerForObject(RtfConventions::PlaceholderObjectType))
        return;
    layout->registerHandler(RtfConventions::PlaceholderObjectType, new PlaceholderHandler(layout));
}

#include "RtfPlaceholder.moc"
