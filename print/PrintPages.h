#pragma once

#include "print/modPrint.h"

#include <QFont>
#include <QImage>
#include <QPageLayout>
#include <QSizeF>
#include <QString>

#include <list>
#include <memory>
#include <utility>
#include <vector>

class QPainter;
class QTextDocument;

// The printed pages of a list of entries, laid out lazily: each entry is a heading and, with
// texts, its text, each held in a text document of its own and stacked one below the other; a
// page takes what fits of that stack and ends at a line boundary (a table row boundary in a
// table), never between a heading and the first line of its text, and at a forced page break of
// a text. Pages are found one after the other as they are asked for, so the first page is ready
// long before a large document is laid out to its end.
//
// All sizes are pixels at Resolution dots per inch; pages are painted in the coordinates of the
// page layout's paint rectangle (the page inside its margins).
class PrintPages {
public:
    static constexpr int Resolution = 1200;

    PrintPages(std::vector<modPrint::PrintEntry> entries, bool texts, QString title, QFont textFont,
               const QPageLayout &layout);
    ~PrintPages();
    PrintPages(const PrintPages &) = delete;
    PrintPages &operator=(const PrintPages &) = delete;

    const QPageLayout &pageLayout() const { return m_layout; }
    // The paint rectangle's size, and the whole page's.
    QSizeF paintSize() const { return m_paint; }
    QSizeF pageSize() const;
    // The paint rectangle's offset on the page (the left and top margins).
    QPointF paintOffset() const;

    // Lays out until the page (0-based) is found or the entries end; true when it exists.
    bool ensurePage(int index);
    // Finds at most `pages` more pages; true once every page is known.
    bool layoutMore(int pages);
    bool complete() const { return m_bComplete; }
    // The pages found so far; all of them once complete.
    int pagesKnown() const { return int(m_pages.size()); }
    // Lays everything out and returns the number of pages (at least 1).
    int pageCount();
    // How far the layout has come through the entries.
    int entriesDone() const { return m_iNextEntry; }
    int entryCount() const { return int(m_entries.size()); }

    // Paints the page: header, body and footer "Page N of M" (just "Page N" while the total is
    // not known, total < 1). The painter's scale must map Resolution to its device.
    void paintPage(QPainter &painter, int index, int total);
    // The page as an image of the given width, white paper with the margins.
    QImage renderPage(int index, int total, int width);

private:
    // A piece of the stack: an entry's heading or its text.
    struct Piece {
        int entry;
        bool heading;
        qreal top;
        qreal height;
    };
    // The top of a line (of a table row, of a piece's end). allowed: a page may begin there;
    // forced: a page must begin there.
    struct Cut {
        qreal y;
        bool forced;
        bool allowed;
    };

    std::unique_ptr<QTextDocument> build(const Piece &piece);
    QTextDocument *piece(int index);
    // Lays out the next piece; false when there is none.
    bool addPiece();
    void cutsOf(QTextDocument *doc, qreal top, bool keepFirstLine);
    bool findNextPage();
    void paintBand(QPainter &painter, int index, int total);

    std::vector<modPrint::PrintEntry> m_entries;
    bool m_bTexts;
    QString m_sTitle;
    QFont m_textFont;
    QPageLayout m_layout;
    QImage m_device; // 1-pixel image at Resolution: the layout's measuring device
    QSizeF m_paint;
    qreal m_headerHeight = 0;
    qreal m_footerHeight = 0;
    qreal m_bodyHeight = 0;

    std::vector<Piece> m_pieces;
    std::vector<Cut> m_cuts; // ascending, beyond the last page found
    int m_iNextEntry = 0;
    bool m_bNextIsText = false;
    qreal m_end = 0; // bottom of the last piece laid out
    std::vector<std::pair<qreal, qreal>> m_pages;
    bool m_bComplete = false;
    // Recently used piece documents, most recent first.
    std::list<std::pair<int, std::unique_ptr<QTextDocument>>> m_cache;
};

namespace modPrint {

// Writes the printed pages of the entries as a PDF file. Returns false after reporting an error
// (the file cannot be written) or when cancelled through the progress function.
bool WritePdf(Document &doc, const std::vector<PrintEntry> &entries, bool texts,
              const QString &path, const QPageLayout &layout, const Progress &progress = {});

} // namespace modPrint
