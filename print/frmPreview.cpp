// The print preview window.
#include "print/frmPreview.h"

#include "print/PrintPages.h"
#include "print/PrintUi.h"
#include "util/ErrorLog.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QIcon>
#include <QKeySequence>
#include <QLabel>
#include <QPageSetupDialog>
#include <QPaintEvent>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QTimer>
#include <QToolBar>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kGap = 14; // pixels around and between the pages
constexpr int kCachedPages = 12;

} // namespace

// The pages of the preview, one below the other, each drawn when it comes into view.
class PreviewStrip : public QWidget {
public:
    explicit PreviewStrip(QWidget *parent) : QWidget(parent) {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

    void setPages(PrintPages *pages) {
        m_pages = pages;
        m_cache.clear();
        resizeToPages();
    }
    qreal zoom() const { return m_zoom; }
    void setZoom(qreal zoom) {
        m_zoom = std::clamp(zoom, 0.1, 5.0);
        m_cache.clear();
        resizeToPages();
    }
    // The page's size on the screen at 100 %.
    QSizeF realSize() const {
        const QSizeF page = m_pages->pageSize();
        const qreal dpiX = logicalDpiX(), dpiY = logicalDpiY();
        return QSizeF(page.width() * dpiX / PrintPages::Resolution,
                      page.height() * dpiY / PrintPages::Resolution);
    }
    QSize pagePixels() const {
        const QSizeF real = realSize();
        return QSize(std::max(1, qRound(real.width() * m_zoom)),
                     std::max(1, qRound(real.height() * m_zoom)));
    }
    int pageTop(int index) const { return kGap + index * (pagePixels().height() + kGap); }
    int pageAt(int y) const {
        const int step = pagePixels().height() + kGap;
        return std::clamp((y - kGap / 2) / step, 0, std::max(0, m_pages->pagesKnown() - 1));
    }
    // Follows the pages found so far; the footers change once the total is known.
    void resizeToPages() {
        if (!m_pages) {
            return;
        }
        const QSize page = pagePixels();
        const int count = std::max(1, m_pages->pagesKnown());
        resize(page.width() + 2 * kGap, kGap + count * (page.height() + kGap));
        update();
    }
    void totalKnown() {
        m_cache.clear();
        update();
    }

protected:
    void paintEvent(QPaintEvent *event) override {
        QPainter painter(this);
        painter.fillRect(event->rect(), QColor(128, 128, 128));
        if (!m_pages) {
            return;
        }
        const QSize page = pagePixels();
        const int x = (width() - page.width()) / 2;
        const int first = pageAt(event->rect().top());
        const int total = m_pages->complete() ? m_pages->pagesKnown() : 0;
        for (int i = first; i < m_pages->pagesKnown(); ++i) {
            const QRect r(x, pageTop(i), page.width(), page.height());
            if (r.top() > event->rect().bottom()) {
                break;
            }
            painter.fillRect(r.translated(3, 3), QColor(70, 70, 70));
            painter.drawImage(r.topLeft(), image(i, total, page.width()));
        }
    }

private:
    QImage image(int index, int total, int width) {
        auto it = m_cache.find(index);
        if (it != m_cache.end()) {
            return *it;
        }
        if (m_cache.size() >= kCachedPages) {
            m_cache.clear();
        }
        const QImage img =
            modMain::Guarded([&] { return m_pages->renderPage(index, total, width); }, QImage());
        m_cache.insert(index, img);
        return img;
    }

    PrintPages *m_pages = nullptr;
    qreal m_zoom = 1.0;
    QHash<int, QImage> m_cache;
};

frmPreview::frmPreview(PagesFactory factory, const QPageLayout &layout, const QString &title,
                       QWidget *parent)
    : QMainWindow(parent, Qt::Window), m_factory(std::move(factory)), m_sTitle(title) {
    setObjectName(QStringLiteral("frmPreview"));
    setWindowTitle(QStringLiteral("Print preview - ") + title);
    setAttribute(Qt::WA_DeleteOnClose);
    resize(900, 900);

    m_scroll = new QScrollArea(this);
    m_scroll->setAlignment(Qt::AlignHCenter);
    m_scroll->setBackgroundRole(QPalette::Dark);
    m_strip = new PreviewStrip(m_scroll);
    m_scroll->setWidget(m_strip);
    setCentralWidget(m_scroll);

    QToolBar *bar = addToolBar(QStringLiteral("Preview"));
    bar->setMovable(false);
    QAction *print = bar->addAction(QStringLiteral("&Print..."), this, &frmPreview::printPages);
    print->setShortcut(QKeySequence::Print);
    bar->addAction(QStringLiteral("Page set&up..."), this, &frmPreview::pageSetup);
    bar->addSeparator();
    bar->addAction(QStringLiteral("First"), this, [this] { setCurrentPage(0); });
    QAction *previous = bar->addAction(QStringLiteral("Previous"), this,
                                       [this] { setCurrentPage(currentPage() - 1); });
    previous->setShortcut(QKeySequence(Qt::Key_PageUp));
    m_pageBox = new QSpinBox(bar);
    m_pageBox->setRange(1, 1);
    m_pageBox->setKeyboardTracking(false);
    bar->addWidget(m_pageBox);
    m_countLabel = new QLabel(bar);
    bar->addWidget(m_countLabel);
    QAction *next =
        bar->addAction(QStringLiteral("Next"), this, [this] { setCurrentPage(currentPage() + 1); });
    next->setShortcut(QKeySequence(Qt::Key_PageDown));
    bar->addAction(QStringLiteral("Last"), this, [this] {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        modMain::Guarded([this] { m_pages->pageCount(); });
        QApplication::restoreOverrideCursor();
        refresh();
        setCurrentPage(m_pages->pagesKnown() - 1);
    });
    bar->addSeparator();
    QAction *out = bar->addAction(QStringLiteral("Zoom out"), this,
                                  [this] { setZoomPercent(zoomPercent() * 4 / 5); });
    out->setShortcut(QKeySequence::ZoomOut);
    m_zoomLabel = new QLabel(bar);
    m_zoomLabel->setMinimumWidth(48);
    m_zoomLabel->setAlignment(Qt::AlignCenter);
    bar->addWidget(m_zoomLabel);
    QAction *in = bar->addAction(QStringLiteral("Zoom in"), this,
                                 [this] { setZoomPercent(zoomPercent() * 5 / 4 + 1); });
    in->setShortcut(QKeySequence::ZoomIn);
    bar->addAction(QStringLiteral("Fit width"), this, &frmPreview::fitWidth);
    bar->addAction(QStringLiteral("Whole page"), this, &frmPreview::fitPage);
    bar->addSeparator();
    QAction *close = bar->addAction(QStringLiteral("&Close"), this, &QWidget::close);
    close->setShortcut(QKeySequence(Qt::Key_Escape));
    // The desktop's icons where its theme has them; the captions otherwise.
    static const std::pair<const char *, const char *> icons[] = {
        {"&Print...", "document-print"},
        {"Page set&up...", "document-page-setup"},
        {"First", "go-first"},
        {"Previous", "go-previous"},
        {"Next", "go-next"},
        {"Last", "go-last"},
        {"Zoom out", "zoom-out"},
        {"Zoom in", "zoom-in"},
        {"Fit width", "zoom-fit-width"},
        {"Whole page", "zoom-fit-best"},
        {"&Close", "window-close"}};
    for (QAction *action : bar->actions()) {
        for (const auto &[text, theme] : icons) {
            if (action->text() == QLatin1String(text)) {
                action->setIcon(QIcon::fromTheme(QLatin1String(theme)));
                action->setToolTip(QString(action->text()).remove(u'&'));
            }
        }
    }

    connect(m_pageBox, &QSpinBox::valueChanged, this,
            [this](int page) { setCurrentPage(page - 1); });
    connect(m_scroll->verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        const QSignalBlocker block(m_pageBox);
        m_pageBox->setValue(currentPage() + 1);
    });

    m_layoutTimer = new QTimer(this);
    m_layoutTimer->setInterval(0);
    connect(m_layoutTimer, &QTimer::timeout, this, &frmPreview::layoutSome);
    setPages(layout);
    const QSizeF real = m_strip->realSize();
    setZoomPercent(std::min(100, int(100 * (width() - 60 - 2 * kGap) / real.width())));
}

frmPreview::~frmPreview() = default;

void frmPreview::setPages(const QPageLayout &layout) {
    m_layoutTimer->stop();
    m_strip->setPages(nullptr);
    m_pages = m_factory(layout);
    // The first page at once; the rest in the background.
    modMain::Guarded([this] { m_pages->ensurePage(0); });
    m_strip->setPages(m_pages.get());
    refresh();
    if (!m_pages->complete()) {
        m_layoutTimer->start();
    }
}

bool frmPreview::complete() const {
    return m_pages->complete();
}

void frmPreview::layoutSome() {
    QElapsedTimer clock;
    clock.start();
    bool done = false;
    const bool ok = modMain::Guarded(
        [&] {
            while (!done && clock.elapsed() < 40) {
                done = m_pages->layoutMore(1);
            }
            return true;
        },
        false);
    if (done || !ok) {
        m_layoutTimer->stop();
        m_strip->totalKnown();
    }
    refresh();
}

void frmPreview::refresh() {
    const int known = std::max(1, m_pages->pagesKnown());
    m_strip->resizeToPages();
    {
        const QSignalBlocker block(m_pageBox);
        m_pageBox->setRange(1, known);
        m_pageBox->setValue(currentPage() + 1);
    }
    m_countLabel->setText(m_pages->complete() ? QStringLiteral(" of %1 ").arg(known)
                                              : QStringLiteral(" of %1+ ").arg(known));
    m_zoomLabel->setText(QStringLiteral("%1%").arg(zoomPercent()));
}

int frmPreview::currentPage() const {
    const int middle = m_scroll->verticalScrollBar()->value() + m_scroll->viewport()->height() / 2;
    return m_strip->pageAt(middle);
}

void frmPreview::setCurrentPage(int index) {
    if (index < 0) {
        index = 0;
    }
    if (index >= m_pages->pagesKnown()) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        modMain::Guarded([&] { m_pages->ensurePage(index); });
        QApplication::restoreOverrideCursor();
        index = std::min(index, m_pages->pagesKnown() - 1);
        refresh();
    }
    m_scroll->verticalScrollBar()->setValue(m_strip->pageTop(index) - kGap / 2);
    const QSignalBlocker block(m_pageBox);
    m_pageBox->setValue(index + 1);
}

int frmPreview::zoomPercent() const {
    return qRound(m_strip->zoom() * 100);
}

void frmPreview::setZoomPercent(int percent) {
    const int page = currentPage();
    m_strip->setZoom(percent / 100.0);
    refresh();
    setCurrentPage(page);
}

void frmPreview::fitWidth() {
    const int room = m_scroll->viewport()->width() - 2 * kGap;
    setZoomPercent(int(100.0 * room / m_strip->realSize().width()));
}

void frmPreview::fitPage() {
    const QSizeF real = m_strip->realSize();
    const qreal w = (m_scroll->viewport()->width() - 2 * kGap) / real.width();
    const qreal h = (m_scroll->viewport()->height() - 2 * kGap) / real.height();
    setZoomPercent(int(100.0 * std::min(w, h)));
}

void frmPreview::printPages() {
    QPrinter printer(QPrinter::HighResolution);
    modPrint::ApplyPageLayout(printer, m_pages->pageLayout());
    printer.setDocName(m_sTitle);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    if (printer.pageLayout().fullRectPoints() == m_pages->pageLayout().fullRectPoints() &&
        printer.pageLayout().paintRectPoints() == m_pages->pageLayout().paintRectPoints()) {
        modPrint::PrintOn(printer, *m_pages, this);
        refresh();
        return;
    }
    // Another paper or printer margins: the pages are laid out for them.
    std::unique_ptr<PrintPages> other = m_factory(printer.pageLayout());
    modPrint::PrintOn(printer, *other, this);
}

void frmPreview::pageSetup() {
    QPrinter printer(QPrinter::HighResolution);
    modPrint::ApplyPageLayout(printer, m_pages->pageLayout());
    QPageSetupDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    const QPageLayout layout = printer.pageLayout();
    modMain::Guarded([&] { modPrint::PageLayoutSave(layout); });
    setPages(layout);
}
