#pragma once

#include <QMainWindow>
#include <QPageLayout>

#include <functional>
#include <memory>

class PrintPages;
class QAction;
class QLabel;
class QScrollArea;
class QSpinBox;
class QTimer;
class PreviewStrip;

// The print preview: the printed pages one below the other, with page navigation, zoom, page
// setup and printing. The first page shows at once; the remaining pages are laid out in the
// background while the window is open, and the page count follows.
class frmPreview : public QMainWindow {
    Q_OBJECT
public:
    // Builds the pages for a page layout (again after a page setup or for another printer).
    using PagesFactory = std::function<std::unique_ptr<PrintPages>(const QPageLayout &)>;

    frmPreview(PagesFactory factory, const QPageLayout &layout, const QString &title,
               QWidget *parent = nullptr);
    ~frmPreview() override;

    PrintPages &pages() const { return *m_pages; }
    // 0-based page at the middle of the view.
    int currentPage() const;
    void setCurrentPage(int index);
    // Zoom in percent of the real size.
    int zoomPercent() const;
    void setZoomPercent(int percent);
    void fitWidth();
    void fitPage();
    // True once every page has been laid out.
    bool complete() const;

public slots:
    void printPages();
    void pageSetup();

private:
    void layoutSome();
    void refresh();
    void setPages(const QPageLayout &layout);

    PagesFactory m_factory;
    QString m_sTitle;
    std::unique_ptr<PrintPages> m_pages;
    QScrollArea *m_scroll;
    PreviewStrip *m_strip;
    QSpinBox *m_pageBox;
    QLabel *m_countLabel;
    QLabel *m_zoomLabel;
    QTimer *m_layoutTimer;
};
