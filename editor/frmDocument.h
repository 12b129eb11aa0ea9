#pragma once

#include "editor/modSplit.h"

#include <QFont>
#include <QHash>
#include <QPointer>
#include <QWidget>

#include <utility>

class OutlineDragHandler;
class OutlineModel;
class OutlineTreeView;
class RichTextBuffer;
class QFrame;
class QModelIndex;
class QTextEdit;
class QTreeView;
class QKeyEvent;

// One open document: the outline on the left, the selected entry's text on the right and the
// splitter between them. The window owns its Document and is that document's view.
// Splitter positions and widths are in twips (1440 per inch at the screen's logical DPI).
class frmDocument : public QWidget, public DocumentWindow {
    Q_OBJECT
public:
    explicit frmDocument(QWidget *parent = nullptr);
    ~frmDocument() override;

    QSize sizeHint() const override { return {640, 420}; }

    Document &document() override { return m_doc; }
    OutlineModel *model() const { return m_pModel; }
    QTreeView *trvOutline() const;
    QTextEdit *txtRTF() const { return m_pText; }
    RichTextBuffer *buffer() const { return m_pBuffer; }
    QWidget *imgSplitter() const { return m_pGrip; }
    QWidget *picSplitter() const;

    // Twips and pixels of this window's screen.
    double twipsPerPixel() const;
    int toPixels(double twips) const;
    double toTwips(int pixels) const;
    double textLeft() const;
    double textWidth() const;

    // The window's keyboard shortcuts; true when the key was consumed.
    bool Form_KeyDown(QKeyEvent *event);
    // The window became the active one: the status bar and the splitter follow it.
    void Form_Activate();
    // The closing question; true when the window may close.
    bool Form_QueryUnload();
    // True once the window has agreed to close (it goes at the next turn of the event loop).
    bool unloaded() const { return m_doc.m_bClosing; }
    // Activates the next document window after this one (Ctrl+F6).
    void activateNextDocument();

    // DocumentView
    void SetOutlineVisible(bool visible) override;
    void StartLabelEdit(Node *node) override;
    void ViewAutoFitSplit() override;
    void UpdateStatusBar(Node *node) override;
    void MenuEnableDynamic() override;
    void DocumentStateChanged() override;
    void ActivateWindow() override;
    bool CloseWindow() override;

    // DocumentWindow
    double InnerWidth() const override;
    double InnerHeight() const override;
    void PlacePanes(double outlineWidth, double gripLeft, double textLeft,
                    double textWidth) override;
    double OutlineWidth() const override { return m_fSplit; }
    double GripLeft() const override { return m_fGripTwips; }
    void SetGripLeft(double left) override;
    double BarLeft() const override { return m_fBarTwips; }
    void SetBarLeft(double left) override;
    void ShowBar() override;
    void HideBar() override;
    double RequiredOutlineWidth() const override;
    void FocusOutline() override;
    void FocusText() override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void trvOutline_NodeClick(Node *node);
    void trvOutline_Expand(Node *node);
    void trvOutline_Collapse(Node *node);
    void trvOutline_AfterLabelEdit();
    void trvOutline_GotFocus();
    void txtRTF_Change();
    void txtRTF_GotFocus();
    // A text was put into the pane (a long one perhaps only its start): it now shows the
    // selected entry's.
    void textLoaded();
    // The vertical scroll bar held for a long text shows only as needed again.
    void releaseBar();
    void updateTextLock();
    // The selection moved or the format at the caret changed.
    void txtRTF_SelChange();

    void onNodeExpandedChanged(const QModelIndex &index, bool expanded);
    void onNodeSelected(const QModelIndex &index);
    void onEnsureVisible(const QModelIndex &index);
    void onBatchEnded();
    bool busy() const;

    Document m_doc;
    OutlineModel *m_pModel = nullptr;
    OutlineDragHandler *m_pDrag = nullptr;
    OutlineTreeView *m_pTree = nullptr;
    QTextEdit *m_pText = nullptr;
    RichTextBuffer *m_pBuffer = nullptr; // owned by the document as its text pane
    QWidget *m_pGrip = nullptr;
    QFrame *m_pBar = nullptr;
    double m_fSplit = 1500;     // current splitter position: the outline's width (twips)
    double m_fGripTwips = 1500; // the grip's position (twips)
    double m_fBarTwips = 1500;  // the moving bar's position (twips)
    bool m_bLaidOut = false;
    bool m_bSyncing = false;  // the view is being put in step with the tree
    NodeRef m_nodPendingEdit; // label edit asked for during a batch
    NodeRef m_nodShown;       // the entry whose text the pane was last given
    bool m_bBarHeld = false;  // the text pane's vertical scroll bar kept shown while a text loads
    // The measurement behind the splitter fitting, kept while the showing labels stay the same.
    quint64 m_uOutlineGeneration = 0;
    struct FitCache {
        quint64 generation = ~quint64(0);
        bool barShown = false;
        QFont font;
        double width = 0;
    };
    mutable FitCache m_fitCache;
    // Measured label widths, by label (digits as "0" when the font's digits are all as wide).
    mutable QHash<QString, int> m_labelWidths;
};
