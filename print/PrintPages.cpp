// The printed pages: entry headings and texts stacked, cut into pages at line boundaries.
#include "print/PrintPages.h"

#include "document/DocFiles.h"
#include "richtext/RtfPlaceholder.h"
#include "util/ErrorLog.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFontMetricsF>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextLayout>
#include <QTextTable>

#include <algorithm>
#include <limits>

namespace {

// Half a pixel at 1200 dpi: positions closer than this are the same.
constexpr qreal kEps = 0.5;
// Piece documents kept for painting; the rest are built again when a page needs them.
constexpr size_t kCachedPieces = 48;

qreal mm(qreal millimetres) {
    return millimetres * PrintPages::Resolution / 25.4;
}

// A font of the given point size whose pixel size is fixed at the layout resolution, so that it
// measures and paints the same on every device.
QFont bandFont(const QFont &base, qreal points) {
    QFont f(base);
    f.setPixelSize(qRound(points * PrintPages::Resolution / 72.0));
    f.setBold(false);
    f.setItalic(false);
    f.setUnderline(false);
    f.setStrikeOut(false);
    return f;
}

} // namespace

PrintPages::PrintPages(std::vector<modPrint::PrintEntry> entries, bool texts, QString title,
                       QFont textFont, const QPageLayout &layout)
    : m_entries(std::move(entries)), m_bTexts(texts), m_sTitle(std::move(title)),
      m_textFont(std::move(textFont)), m_layout(layout),
      m_device(1, 1, QImage::Format_ARGB32_Premultiplied) {
    const int dpm = qRound(Resolution / 0.0254);
    m_device.setDotsPerMeterX(dpm);
    m_device.setDotsPerMeterY(dpm);
    m_paint = QSizeF(m_layout.paintRectPixels(Resolution).size());
    const QFontMetricsF fm(bandFont(m_textFont, 9));
    m_headerHeight = fm.height() + mm(4);
    m_footerHeight = fm.height() + mm(4);
    // Margins that leave no room for the bands still leave half the page for the text.
    m_bodyHeight = std::max(m_paint.height() - m_headerHeight - m_footerHeight,
                            std::max(m_paint.height() / 2, mm(10)));
}

PrintPages::~PrintPages() = default;

QSizeF PrintPages::pageSize() const {
    return QSizeF(m_layout.fullRectPixels(Resolution).size());
}

QPointF PrintPages::paintOffset() const {
    return QPointF(m_layout.paintRectPixels(Resolution).topLeft());
}

std::unique_ptr<QTextDocument> PrintPages::build(const Piece &piece) {
    auto doc = std::make_unique<QTextDocument>();
    installPlaceholderHandler(doc.get());
    doc->setUndoRedoEnabled(false);
    doc->setDocumentMargin(0);
    doc->setDefaultFont(m_textFont);
    const modPrint::PrintEntry &entry = m_entries[size_t(piece.entry)];
    if (!piece.heading) {
        if (!modPrint::EntryTextDocument(entry.Stored, doc.get())) {
            return nullptr;
        }
    } else {
        const int level = modPrint::HeadingLevel(entry.Depth);
        static const qreal sizes[] = {16, 14, 12.5, 11.5, 11, 10.5};
        QTextBlockFormat bf;
        bf.setHeadingLevel(level);
        bf.setTopMargin(level == 1 ? 18 : 12);
        bf.setBottomMargin(6);
        QTextCharFormat cf;
        cf.setFontFamilies(QStringList{m_textFont.family()});
        cf.setFontPointSize(sizes[level - 1]);
        cf.setFontWeight(QFont::Bold);
        QTextCursor cursor(doc.get());
        cursor.setBlockFormat(bf);
        cursor.setBlockCharFormat(cf);
        cursor.insertText(entry.Heading, cf);
    }
    // Paragraph indents are pixels at 96 dpi; the layout takes them as pixels of its device (it
    // scales fonts, pictures, list indents and the spacing above and below paragraphs itself).
    const qreal scale = Resolution / 96.0;
    QTextCursor cursor(doc.get());
    for (QTextBlock b = doc->begin(); b.isValid(); b = b.next()) {
        QTextBlockFormat f = b.blockFormat();
        if (f.leftMargin() == 0 && f.rightMargin() == 0 && f.textIndent() == 0) {
            continue;
        }
        f.setLeftMargin(f.leftMargin() * scale);
        f.setRightMargin(f.rightMargin() * scale);
        f.setTextIndent(f.textIndent() * scale);
        cursor.setPosition(b.position());
        cursor.setBlockFormat(f);
    }
    // Laid out once, now that the text is complete.
    doc->documentLayout()->setPaintDevice(&m_device);
    doc->setTextWidth(m_paint.width());
    return doc;
}

QTextDocument *PrintPages::piece(int index) {
    for (auto it = m_cache.begin(); it != m_cache.end(); ++it) {
        if (it->first == index) {
            m_cache.splice(m_cache.begin(), m_cache, it);
            return m_cache.front().second.get();
        }
    }
    std::unique_ptr<QTextDocument> doc = build(m_pieces[size_t(index)]);
    if (!doc) {
        // The text decoded to nothing this time; an empty document paints nothing.
        doc = std::make_unique<QTextDocument>();
    }
    m_cache.emplace_front(index, std::move(doc));
    if (m_cache.size() > kCachedPieces) {
        m_cache.pop_back();
    }
    return m_cache.front().second.get();
}

bool PrintPages::addPiece() {
    while (m_iNextEntry < int(m_entries.size())) {
        Piece p{m_iNextEntry, !m_bNextIsText, m_end, 0};
        if (p.heading && m_bTexts) {
            m_bNextIsText = true;
        } else {
            m_bNextIsText = false;
            ++m_iNextEntry;
        }
        std::unique_ptr<QTextDocument> doc = build(p);
        if (!doc) {
            continue; // an entry without text
        }
        p.height = doc->documentLayout()->documentSize().height();
        cutsOf(doc.get(), p.top, !p.heading);
        m_pieces.push_back(p);
        m_end += p.height;
        m_cache.emplace_front(int(m_pieces.size()) - 1, std::move(doc));
        if (m_cache.size() > kCachedPieces) {
            m_cache.pop_back();
        }
        return true;
    }
    return false;
}

void PrintPages::cutsOf(QTextDocument *doc, qreal top, bool keepFirstLine) {
    QAbstractTextDocumentLayout *layout = doc->documentLayout();
    bool first = true;
    // Every line top is recorded: the first one on a page tells where its content begins, and
    // the allowed ones are where the page may end.
    auto add = [&](qreal y, bool forced, bool allowed) {
        if (first && keepFirstLine) {
            allowed = false;
        }
        first = false;
        const Cut cut{top + y, forced && allowed, allowed};
        if (!m_cuts.empty() && m_cuts.back().y >= cut.y - kEps) {
            m_cuts.back().forced = m_cuts.back().forced || cut.forced;
            m_cuts.back().allowed = m_cuts.back().allowed && allowed;
        } else {
            m_cuts.push_back(cut);
        }
    };
    const bool heading = !keepFirstLine;
    for (QTextFrame::iterator it = doc->rootFrame()->begin(); !it.atEnd(); ++it) {
        if (QTextFrame *frame = it.currentFrame()) {
            const QRectF bounds = layout->frameBoundingRect(frame);
            add(bounds.top(), false, true);
            auto *table = qobject_cast<QTextTable *>(frame);
            if (!table) {
                continue;
            }
            // Between rows: half way from the lowest text of the row above to the highest of
            // the row below, unless a cell spans the boundary.
            for (int r = 1; r < table->rows(); ++r) {
                qreal above = -std::numeric_limits<qreal>::max();
                qreal below = std::numeric_limits<qreal>::max();
                bool spanned = false;
                for (int c = 0; c < table->columns() && !spanned; ++c) {
                    const QTextTableCell cell = table->cellAt(r, c);
                    if (cell.row() < r) {
                        spanned = true;
                    } else if (cell.column() == c) {
                        below = std::min(
                            below,
                            layout->blockBoundingRect(cell.firstCursorPosition().block()).top());
                    }
                    const QTextTableCell up = table->cellAt(r - 1, c);
                    if (up.column() == c && up.row() + up.rowSpan() - 1 == r - 1) {
                        above = std::max(
                            above,
                            layout->blockBoundingRect(up.lastCursorPosition().block()).bottom());
                    }
                }
                if (!spanned && above < below) {
                    add((above + below) / 2, false, true);
                }
            }
            continue;
        }
        const QTextBlock block = it.currentBlock();
        QTextLayout *tl = block.layout();
        if (!block.isVisible() || !tl || tl->lineCount() == 0) {
            continue;
        }
        const QRectF rect = layout->blockBoundingRect(block);
        const qreal firstLine = tl->lineAt(0).y();
        const bool forced =
            block.blockFormat().pageBreakPolicy().testFlag(QTextFormat::PageBreak_AlwaysBefore);
        for (int i = 0; i < tl->lineCount(); ++i) {
            // A heading is never cut: only its first line may begin a page.
            add(rect.top() + tl->lineAt(i).y() - firstLine, forced && i == 0,
                !heading || (i == 0 && block == doc->firstBlock()));
        }
    }
}

bool PrintPages::findNextPage() {
    if (m_bComplete) {
        return false;
    }
    const qreal start = m_pages.empty() ? 0.0 : m_pages.back().second;
    const qreal limit = start + m_bodyHeight;
    bool laidOut = false;
    while (!laidOut && (m_cuts.empty() || m_cuts.back().y <= limit)) {
        if (!addPiece()) {
            laidOut = true;
        }
    }
    if (laidOut && (m_cuts.empty() || m_cuts.back().y < m_end - kEps)) {
        m_cuts.push_back(Cut{m_end, false, true}); // the end of the last piece
    }
    // The first page's content begins at its first line (a heading's space above goes).
    const qreal content = m_pages.empty() && !m_cuts.empty() ? m_cuts.front().y : start;
    qreal end = -1;
    bool beyond = false;
    for (const Cut &c : m_cuts) {
        if (c.y <= std::max(start, content) + kEps || !c.allowed) {
            continue;
        }
        if (c.y > limit + kEps) {
            beyond = true;
            break;
        }
        end = c.y;
        if (c.forced) {
            break;
        }
    }
    if (end < 0) {
        if (!beyond) {
            m_bComplete = true;
            m_cuts.clear();
            if (m_pages.empty()) {
                m_pages.emplace_back(0.0, 0.0);
                return true;
            }
            return false;
        }
        end = limit; // nothing fits whole: cut where the page ends
    }
    m_pages.emplace_back(start, end);
    const auto used =
        std::find_if(m_cuts.begin(), m_cuts.end(), [&](const Cut &c) { return c.y > end + kEps; });
    m_cuts.erase(m_cuts.begin(), used);
    if (m_cuts.empty() && m_iNextEntry >= int(m_entries.size()) && end >= m_end - kEps) {
        m_bComplete = true;
    }
    return true;
}

bool PrintPages::ensurePage(int index) {
    while (index >= pagesKnown() && findNextPage()) {
    }
    return index >= 0 && index < pagesKnown();
}

bool PrintPages::layoutMore(int pages) {
    for (int i = 0; i < pages && findNextPage(); ++i) {
    }
    return m_bComplete;
}

int PrintPages::pageCount() {
    while (findNextPage()) {
    }
    return std::max(1, pagesKnown());
}

void PrintPages::paintBand(QPainter &painter, int index, int total) {
    const QFont font = bandFont(m_textFont, 9);
    const QFontMetricsF fm(font);
    painter.save();
    painter.setFont(font);
    painter.setPen(QColor(80, 80, 80));
    const QRectF header(0, 0, m_paint.width(), fm.height());
    painter.drawText(header, Qt::AlignLeft | Qt::AlignTop,
                     fm.elidedText(m_sTitle, Qt::ElideMiddle, m_paint.width()));
    painter.setPen(QPen(QColor(160, 160, 160), mm(0.2)));
    const qreal rule = fm.height() + mm(1.5);
    painter.drawLine(QPointF(0, rule), QPointF(m_paint.width(), rule));
    painter.setPen(QColor(80, 80, 80));
    const QString footer = total > 0 ? QStringLiteral("Page %1 of %2").arg(index + 1).arg(total)
                                     : QStringLiteral("Page %1").arg(index + 1);
    const QRectF bottom(0, m_paint.height() - fm.height(), m_paint.width(), fm.height());
    painter.drawText(bottom, Qt::AlignHCenter | Qt::AlignBottom, footer);
    painter.restore();
}

void PrintPages::paintPage(QPainter &painter, int index, int total) {
    if (!ensurePage(index)) {
        return;
    }
    paintBand(painter, index, total);
    const auto [start, end] = m_pages[size_t(index)];
    auto first = std::upper_bound(m_pieces.begin(), m_pieces.end(), start,
                                  [](qreal y, const Piece &p) { return y < p.top; });
    if (first != m_pieces.begin()) {
        --first;
    }
    const QPointF offset = paintOffset();
    const qreal pageWidth = pageSize().width();
    painter.save();
    painter.translate(0, m_headerHeight);
    for (auto it = first; it != m_pieces.end() && it->top < end - kEps; ++it) {
        if (it->top + it->height <= start + kEps) {
            continue;
        }
        QTextDocument *doc = piece(int(it - m_pieces.begin()));
        painter.save();
        painter.translate(0, it->top - start);
        const QRectF clip(-offset.x(), start - it->top, pageWidth, end - start);
        painter.setClipRect(clip, Qt::IntersectClip);
        QAbstractTextDocumentLayout::PaintContext context;
        // The layout draws whatever touches its clip: lines that end where the page begins, or
        // begin where it ends, would be drawn invisibly but still be text of the page.
        context.clip = clip.adjusted(0, 2, 0, -2);
        context.palette.setColor(QPalette::Text, Qt::black);
        doc->documentLayout()->draw(&painter, context);
        painter.restore();
    }
    painter.restore();
}

QImage PrintPages::renderPage(int index, int total, int width) {
    const QSizeF page = pageSize();
    const qreal scale = width / page.width();
    QImage image(width, std::max(1, qRound(page.height() * scale)), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    painter.translate(paintOffset());
    paintPage(painter, index, total);
    return image;
}

namespace modPrint {

bool WritePdf(Document &doc, const std::vector<PrintEntry> &entries, bool texts,
              const QString &path, const QPageLayout &layout, const Progress &progress) {
    return modMain::Guarded(
        [&] {
            PROC("modPrint WritePdf");
            PrintPages pages(entries, texts, DocumentTitle(doc), TextFont(doc), layout);
            while (!pages.layoutMore(4)) {
                if (progress && !progress(pages.pagesKnown(), 0)) {
                    return false;
                }
            }
            const int total = pages.pageCount();
            QBuffer buffer;
            buffer.open(QIODevice::WriteOnly);
            {
                QPdfWriter writer(&buffer);
                writer.setResolution(PrintPages::Resolution);
                writer.setPageLayout(layout);
                writer.setTitle(DocumentTitle(doc));
                writer.setCreator(QStringLiteral("Mavrolen"));
                QPainter painter;
                if (!painter.begin(&writer)) {
                    modMain::Raise(modMain::errDeviceIO);
                }
                for (int i = 0; i < total; ++i) {
                    if (i > 0) {
                        writer.newPage();
                    }
                    pages.paintPage(painter, i, total);
                    if (progress && !progress(i + 1, total)) {
                        return false;
                    }
                }
                painter.end();
            }
            modDoc::WriteWholeFile(path, buffer.data());
            return true;
        },
        false);
}

} // namespace modPrint
