#include "editor/frmDocument.h"

#include "document/modFile.h"
#include "editor/OutlineDragUi.h"
#include "editor/OutlineModel.h"
#include "editor/WindowTextBuffer.h"
#include "editor/modView.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfReader.h"
#include "richtext/clsFont.h"
#include "search/modSearch.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QFrame>
#include <QHash>
#include <QHeaderView>
#include <QIcon>
#include <QKeyEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QScrollBar>
#include <QStyleOptionViewItem>
#include <QTextCursor>
#include <QTextEdit>
#include <QTreeView>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace modNodes;

// The outline: a tree view that can put off laying out its rows until the next paint, so that
// a run of expansions costs one layout.
class OutlineTreeView : public QTreeView {
public:
    using QTreeView::QTreeView;
    void scheduleLayout() { scheduleDelayedItemsLayout(); }
};

namespace {

// The grip's width (twips).
constexpr double kGripWidth = 40;

// The outline's icons: the theme's folders when it has them, else drawn here; a tagged entry's
// folder carries a red tag.
QIcon drawnFolder(bool open, bool tagged) {
    QPixmap pm(16, 16);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    const QIcon theme =
        QIcon::fromTheme(open ? QStringLiteral("folder-open") : QStringLiteral("folder"));
    if (!theme.isNull()) {
        p.drawPixmap(0, 0, theme.pixmap(16, 16));
    } else {
        p.setPen(QColor(150, 110, 20));
        p.setBrush(QColor(open ? 250 : 235, open ? 215 : 190, open ? 110 : 70));
        QPainterPath path;
        path.moveTo(1.5, 3.5);
        path.lineTo(6.5, 3.5);
        path.lineTo(8, 5.5);
        path.lineTo(14.5, 5.5);
        path.lineTo(14.5, 13.5);
        path.lineTo(1.5, 13.5);
        path.closeSubpath();
        p.drawPath(path);
        if (open) {
            p.setBrush(QColor(255, 235, 160));
            QPainterPath flap;
            flap.moveTo(1.5, 13.5);
            flap.lineTo(4, 8);
            flap.lineTo(15.5, 8);
            flap.lineTo(14.5, 13.5);
            flap.closeSubpath();
            p.drawPath(flap);
        }
    }
    if (tagged) {
        p.setPen(QColor(120, 0, 0));
        p.setBrush(QColor(220, 30, 30));
        p.drawEllipse(QRectF(9, 0.5, 6.5, 6.5));
    }
    return QIcon(pm);
}

QIcon folderIcon(const QString &key) {
    static QHash<QString, QIcon> cache;
    auto it = cache.find(key);
    if (it == cache.end()) {
        const bool open = key.endsWith(QLatin1String("Selected"));
        const bool tagged = key.contains(QLatin1String("Tagged"));
        it = cache.insert(key, drawnFolder(open, tagged));
    }
    return *it;
}

} // namespace

frmDocument::frmDocument(QWidget *parent) : QWidget(parent) {
    PROC("frmDocument Form_Load");
    setObjectName(QStringLiteral("frmDocument"));
    OutlineModel::setIconProvider(folderIcon);

    m_pModel = new OutlineModel(m_doc.trvOutline(), this);
    m_pTree = new OutlineTreeView(this);
    m_pTree->setObjectName(QStringLiteral("trvOutline"));
    m_pTree->setUniformRowHeights(true);
    m_pTree->setHeaderHidden(true);
    m_pTree->setModel(m_pModel);
    m_pTree->setSelectionMode(QAbstractItemView::SingleSelection);
    // The view scrolls only where the tree asks: scrolling to a selection inside a collapsed
    // branch would expand the branch behind the tree's back.
    m_pTree->setAutoScroll(false);
    // Labels are edited only when asked: the rename command, or a click on the selected entry
    // with automatic label editing (the click handling below, not the view's own triggers: the
    // press selects the entry before the view sees it).
    m_pTree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // The one column fills the outline. (Sizing it to its contents would measure rows on every
    // change, which a large outline cannot afford; the splitter fitting measures labels itself.)
    m_pTree->header()->setStretchLastSection(true);

    auto buffer = std::make_unique<WindowTextBuffer>();
    buffer->aboutToLoad = [this](const QByteArray &rtf) {
        // A long text will want the vertical scroll bar. Shown before the text arrives, the text
        // is laid out once, at the narrower width, instead of again when the bar appears.
        if (rtf.size() >= RtfReader::LongText && m_pText->isVisible() &&
            !m_pText->verticalScrollBar()->isVisible()) {
            m_pText->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
            m_bBarHeld = true;
        }
    };
    buffer->loaded = [this] { textLoaded(); };
    WindowTextBuffer *shown = buffer.get();
    m_pBuffer = shown;
    m_doc.setTextPane(std::move(buffer));
    m_pText = new QTextEdit(this);
    m_pText->setObjectName(QStringLiteral("txtRTF"));
    shown->showIn(m_pText);
    connect(m_pBuffer, &RichTextBuffer::TextCompleted, this, [this] { releaseBar(); });

    m_pGrip = new QWidget(this);
    m_pGrip->setObjectName(QStringLiteral("imgSplitter"));
    m_pGrip->setCursor(Qt::SplitHCursor);
    m_pBar = new QFrame(this);
    m_pBar->setObjectName(QStringLiteral("picSplitter"));
    m_pBar->setAutoFillBackground(true);
    QPalette pal = m_pBar->palette();
    pal.setColor(QPalette::Window, QColor(96, 96, 96));
    m_pBar->setPalette(pal);
    m_pBar->setFocusPolicy(Qt::ClickFocus);
    m_pBar->hide();

    m_pTree->installEventFilter(this);
    m_pDrag = new OutlineDragHandler(m_pTree, m_pModel, &m_doc, this);
    // A click selects the entry (the press already did) and marks the document changed.
    connect(m_pDrag, &OutlineDragHandler::entryClicked, this, [this](Node *node) {
        modMain::Guarded([&] {
            PROC("frmDocument trvOutline_NodeClick");
            if (!busy() && node) {
                m_doc.m_bDataChanged = true;
                ViewAutoFitSplit();
            }
        });
    });
    connect(m_pDrag, &OutlineDragHandler::selectedEntryClicked, this, [this](Node *node) {
        if (m_doc.m_bLabelEditAutomatic && !m_doc.bReadOnly) {
            StartLabelEdit(node);
        }
    });
    m_pText->installEventFilter(this);
    m_pBar->installEventFilter(this);
    m_pGrip->installEventFilter(this);

    // Anything that can change the showing labels invalidates the last fit's measurement.
    const auto outlineChanged = [this] { ++m_uOutlineGeneration; };
    connect(m_pModel, &QAbstractItemModel::modelReset, this, outlineChanged);
    connect(m_pModel, &QAbstractItemModel::layoutChanged, this, outlineChanged);
    connect(m_pModel, &QAbstractItemModel::rowsInserted, this, outlineChanged);
    connect(m_pModel, &QAbstractItemModel::rowsRemoved, this, outlineChanged);
    // Of the changes to an entry only its label counts (not its icon or highlight).
    connect(m_pModel, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex &, const QModelIndex &, const QList<int> &roles) {
                if (roles.isEmpty() || roles.contains(Qt::DisplayRole)) {
                    ++m_uOutlineGeneration;
                }
            });
    connect(m_pTree, &QTreeView::expanded, this, outlineChanged);
    connect(m_pTree, &QTreeView::collapsed, this, outlineChanged);
    connect(m_pModel, &OutlineModel::nodeExpandedChanged, this,
            &frmDocument::onNodeExpandedChanged);
    connect(m_pModel, &OutlineModel::nodeSelected, this, &frmDocument::onNodeSelected);
    connect(m_pModel, &OutlineModel::ensureVisibleRequested, this, &frmDocument::onEnsureVisible);
    connect(m_pModel, &OutlineModel::batchEnded, this, &frmDocument::onBatchEnded);
    connect(m_pTree, &QTreeView::expanded, this, [this](const QModelIndex &index) {
        if (!m_bSyncing) {
            trvOutline_Expand(m_pModel->nodeFromIndex(index));
        }
    });
    connect(m_pTree, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        if (!m_bSyncing) {
            trvOutline_Collapse(m_pModel->nodeFromIndex(index));
        }
    });
    connect(m_pTree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) {
                if (!m_bSyncing && current.isValid()) {
                    m_pTree->scrollTo(current);
                    trvOutline_NodeClick(m_pModel->nodeFromIndex(current));
                }
            });
    connect(m_pTree->itemDelegate(), &QAbstractItemDelegate::closeEditor, this,
            [this] { trvOutline_AfterLabelEdit(); });
    connect(m_pBuffer, &RichTextBuffer::Change, this, [this] { txtRTF_Change(); });
    // The buffer's selection follows the pane's cursor, for the commands that act on it, and the
    // pane shows the selection the commands leave in the buffer.
    connect(m_pText, &QTextEdit::cursorPositionChanged, this, [this] {
        const QTextCursor c = m_pText->textCursor();
        m_pBuffer->Select(c.anchor(), c.position());
        txtRTF_SelChange();
    });
    connect(m_pText, &QTextEdit::currentCharFormatChanged, this, [this] { txtRTF_SelChange(); });
    connect(m_pBuffer, &RichTextBuffer::SelChange, this, [this] {
        const QTextCursor &c = m_pBuffer->cursor();
        const QTextCursor shown = m_pText->textCursor();
        if (c.anchor() != shown.anchor() || c.position() != shown.position()) {
            m_pText->setTextCursor(c);
        }
    });
    // Both the right button and the context-menu key pop up the main window's Edit menu, never
    // the pane's own, so that its rules for copying and cutting hold there too.
    m_pText->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_pText, &QWidget::customContextMenuRequested, this, [this](const QPoint &at) {
        modMain::Host().PopupBarMenu(QStringLiteral("mnuEdit"),
                                     m_pText->viewport()->mapToGlobal(at));
    });

    m_doc.setView(this);
    m_doc.m_fntOutlineFont = clsFont();
    m_doc.m_fntTextFont = clsFont();
    if (!Documents::Active()) {
        Documents::SetActive(&m_doc);
    }
    resize(640, 420);
}

frmDocument::~frmDocument() {
    m_doc.setView(nullptr);
    // The model lets go of the tree before the document (and its tree) goes.
    m_pTree->setModel(nullptr);
    delete m_pModel;
    m_pModel = nullptr;
    m_pText->setDocument(nullptr);
    if (Documents::Active() == &m_doc) {
        Documents::SetActive(nullptr);
    }
}

QTreeView *frmDocument::trvOutline() const {
    return m_pTree;
}

bool frmDocument::busy() const {
    return g_bDocTransfer;
}

// Twips.

double frmDocument::twipsPerPixel() const {
    const double dpi = logicalDpiX();
    return dpi > 0 ? 1440.0 / dpi : 15.0;
}

int frmDocument::toPixels(double twips) const {
    return static_cast<int>(std::lround(twips / twipsPerPixel()));
}

double frmDocument::toTwips(int pixels) const {
    return pixels * twipsPerPixel();
}

double frmDocument::InnerWidth() const {
    return toTwips(width());
}

double frmDocument::InnerHeight() const {
    return toTwips(height());
}

double frmDocument::textLeft() const {
    return m_fSplit + modSplit::kTextOffset;
}

double frmDocument::textWidth() const {
    return std::max(0.0, InnerWidth() - (m_fSplit + modSplit::kWidthAllowance));
}

// The panes, for modSplit.

void frmDocument::PlacePanes(double outlineWidth, double gripLeft, double textLeft,
                             double textWidth) {
    m_fSplit = outlineWidth;
    m_fGripTwips = gripLeft;
    const int h = height();
    m_pTree->setGeometry(0, 0, std::max(0, toPixels(outlineWidth)), h);
    m_pGrip->setGeometry(toPixels(gripLeft), 0, std::max(1, toPixels(kGripWidth)), h);
    m_pText->setGeometry(toPixels(textLeft), 0, toPixels(textWidth), h);
}

void frmDocument::SetGripLeft(double left) {
    m_fGripTwips = left;
    m_pGrip->move(toPixels(left), m_pGrip->y());
}

void frmDocument::SetBarLeft(double left) {
    m_fBarTwips = left;
    m_pBar->move(toPixels(left), m_pBar->y());
}

void frmDocument::ShowBar() {
    m_pBar->setGeometry(m_pGrip->x(), m_pGrip->y(), std::max(2, m_pGrip->width() / 2),
                        std::max(1, m_pGrip->height() - toPixels(20)));
    m_pBar->show();
    m_pBar->raise();
    m_pBar->setFocus(Qt::OtherFocusReason);
}

void frmDocument::HideBar() {
    m_pBar->hide();
}

void frmDocument::FocusOutline() {
    if (m_pTree->isEnabled()) {
        m_pTree->setFocus(Qt::OtherFocusReason);
    }
}

void frmDocument::FocusText() {
    if (m_pText->isEnabled()) {
        m_pText->setFocus(Qt::OtherFocusReason);
    }
}

double frmDocument::RequiredOutlineWidth() const {
    const QScrollBar *vbar = m_pTree->verticalScrollBar();
    const bool barShown = vbar && vbar->isVisible();
    // The fit runs after every click; the showing labels rarely change between two clicks.
    if (m_fitCache.generation == m_uOutlineGeneration && m_fitCache.barShown == barShown &&
        m_fitCache.font == m_pTree->font()) {
        return m_fitCache.width;
    }
    if (m_fitCache.font != m_pTree->font()) {
        m_labelWidths.clear();
    }
    const QFontMetrics fm(m_pTree->font());
    const int indent = m_pTree->indentation();
    const int icon = m_pTree->iconSize().isValid() ? m_pTree->iconSize().width()
                                                   : style()->pixelMetric(QStyle::PM_SmallIconSize);
    // What a row needs besides its label: the icon, the spacing and the margins, as the view's
    // delegate lays the first row out in the outline's font.
    int overhead = icon + 8;
    if (const QModelIndex first = m_pModel->index(0, 0); first.isValid()) {
        QStyleOptionViewItem option;
        option.initFrom(m_pTree);
        option.font = m_pTree->font();
        option.fontMetrics = fm;
        option.decorationSize = QSize(icon, icon);
        const int row = m_pTree->itemDelegate()->sizeHint(option, first).width();
        overhead = std::max(overhead, row - fm.horizontalAdvance(first.data().toString()));
    }
    // Labels keep their measured width. Long outlines hold many labels that differ only in their
    // numbers ("Entry 12", "2024-05-01"); in a font whose digits are all as wide, they are as wide.
    const QFontMetricsF exact(m_pTree->font());
    bool evenDigits = true;
    for (char16_t d = u'1'; d <= u'9'; ++d) {
        evenDigits = evenDigits &&
                     exact.horizontalAdvance(QChar(d)) == exact.horizontalAdvance(QLatin1Char('0'));
    }
    QString digitless;
    auto labelWidth = [&](const Node *node) {
        const QString *key = &node->Text();
        if (evenDigits && std::any_of(key->cbegin(), key->cend(),
                                      [](QChar c) { return c >= u'1' && c <= u'9'; })) {
            digitless = *key;
            for (QChar &c : digitless) {
                if (c >= u'1' && c <= u'9') {
                    c = u'0';
                }
            }
            key = &digitless;
        }
        auto it = m_labelWidths.constFind(*key);
        if (it == m_labelWidths.cend()) {
            it = m_labelWidths.insert(*key, fm.horizontalAdvance(*key));
        }
        return *it;
    };
    if (m_labelWidths.size() > 2 * qsizetype(m_doc.trvOutline().Count()) + 1024) {
        m_labelWidths.clear(); // mostly labels that have gone
    }
    int widest = 0;
    // Walks the showing rows only: the children of expanded entries.
    std::vector<std::pair<Node *, int>> stack;
    const auto &top = m_doc.trvOutline().topNodes();
    for (auto it = top.rbegin(); it != top.rend(); ++it) {
        stack.emplace_back(*it, 0);
    }
    while (!stack.empty()) {
        auto [node, depth] = stack.back();
        stack.pop_back();
        widest = std::max(widest, (depth + 1) * indent + overhead + labelWidth(node));
        if (node->Expanded()) {
            const auto &children = node->childList();
            for (auto it = children.rbegin(); it != children.rend(); ++it) {
                stack.emplace_back(*it, depth + 1);
            }
        }
    }
    // The view elides a label that only just fits: one character's room more keeps it whole.
    const int frame =
        2 * m_pTree->frameWidth() + (barShown ? vbar->width() : 0) + fm.averageCharWidth();
    m_fitCache = {m_uOutlineGeneration, barShown, m_pTree->font(), toTwips(widest + frame)};
    return m_fitCache.width;
}

// DocumentView.

void frmDocument::SetOutlineVisible(bool visible) {
    // The outline keeps its place and the focus; only its drawing stops.
    m_pTree->setUpdatesEnabled(visible);
}

void frmDocument::StartLabelEdit(Node *node) {
    if (!node || node->isRemoved() || !m_pModel->editable()) {
        return;
    }
    if (m_pModel->inBatch()) {
        // The rebuild at the end of the batch would close the editor: open it after that.
        m_nodPendingEdit = node;
        return;
    }
    node->EnsureVisible();
    const QModelIndex index = m_pModel->indexFromNode(node);
    const bool was = m_bSyncing;
    m_bSyncing = true;
    m_pTree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_bSyncing = was;
    m_pTree->scrollTo(index);
    m_pTree->edit(index);
}

void frmDocument::ViewAutoFitSplit() {
    modView::ViewAutoFitSplit(*this);
}

void frmDocument::UpdateStatusBar(Node *node) {
    if (!busy() && node) {
        modMain::UpdateStatusBarText(node->Text());
    }
}

void frmDocument::MenuEnableDynamic() {
    modMain::Host().RefreshCommands(false);
}

void frmDocument::ActivateWindow() {
    Documents::SetActive(&m_doc);
    if (auto *sub = qobject_cast<QMdiSubWindow *>(parentWidget())) {
        if (QMdiArea *area = sub->mdiArea()) {
            area->setActiveSubWindow(sub);
        }
    } else {
        activateWindow();
    }
}

bool frmDocument::CloseWindow() {
    QWidget *frame = qobject_cast<QMdiSubWindow *>(parentWidget());
    return frame ? frame->close() : close();
}

// Keeping the view in step with the tree.

void frmDocument::onNodeExpandedChanged(const QModelIndex &index, bool expanded) {
    ++m_uOutlineGeneration;
    const bool was = m_bSyncing;
    m_bSyncing = true;
    m_pTree->scheduleLayout();
    m_pTree->setExpanded(index, expanded);
    m_bSyncing = was;
}

void frmDocument::onNodeSelected(const QModelIndex &index) {
    const bool was = m_bSyncing;
    m_bSyncing = true;
    if (index.isValid()) {
        m_pTree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    } else {
        m_pTree->selectionModel()->clear();
    }
    m_bSyncing = was;
}

void frmDocument::onEnsureVisible(const QModelIndex &index) {
    if (index.isValid()) {
        m_pTree->scrollTo(index);
    }
}

void frmDocument::onBatchEnded() {
    const bool was = m_bSyncing;
    m_bSyncing = true;
    m_pTree->scheduleLayout();
    for (Node *node : m_doc.trvOutline()) {
        if (node->Expanded() && node->Children() > 0) {
            m_pTree->setExpanded(m_pModel->indexFromNode(node), true);
        }
    }
    if (Node *selected = m_doc.trvOutline().SelectedItem()) {
        const QModelIndex index = m_pModel->indexFromNode(selected);
        m_pTree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        bool showing = true;
        for (Node *p = selected->Parent(); p && showing; p = p->Parent()) {
            showing = p->Expanded();
        }
        if (showing) {
            m_pTree->scrollTo(index);
        }
    }
    m_bSyncing = was;
    if (Node *edit = m_nodPendingEdit.get()) {
        m_nodPendingEdit.reset();
        StartLabelEdit(edit);
    }
}

// Events.

void frmDocument::Form_Activate() {
    PROC("frmDocument Form_Activate");
    if (busy()) {
        return;
    }
    UpdateStatusBar(m_doc.trvOutline().SelectedItem());
    ViewAutoFitSplit();
}

void frmDocument::trvOutline_NodeClick(Node *node) {
    modMain::Guarded([&] {
        PROC("frmDocument trvOutline_NodeClick");
        if (busy() || !node) {
            return;
        }
        m_doc.m_bDataChanged = true;
        NodeSelect(&m_doc, node);
        ViewAutoFitSplit();
    });
}

void frmDocument::trvOutline_Expand(Node *node) {
    modMain::Guarded([&] {
        PROC("frmDocument trvOutline_Expand");
        if (node) {
            node->setExpanded(true);
        }
        if (busy()) {
            return;
        }
        m_doc.m_bDataChanged = true;
        m_doc.m_iExpansionLevel = -1;
        MenuEnableDynamic();
        ViewAutoFitSplit();
    });
}

void frmDocument::trvOutline_Collapse(Node *node) {
    modMain::Guarded([&] {
        PROC("frmDocument trvOutline_Collapse");
        if (node) {
            node->setExpanded(false);
        }
        if (busy() || !node) {
            return;
        }
        m_doc.m_bDataChanged = true;
        NodeSelect(&m_doc, node);
        if (node->Parent()) {
            m_doc.m_iExpansionLevel = -1;
        }
        MenuEnableDynamic();
        ViewAutoFitSplit();
    });
}

void frmDocument::trvOutline_AfterLabelEdit() {
    PROC("frmDocument trvOutline_AfterLabelEdit");
    ViewAutoFitSplit();
}

void frmDocument::trvOutline_GotFocus() {
    PROC("frmDocument trvOutline_GotFocus");
    m_doc.m_bOutlineHasFocus = true;
    m_doc.m_bTextHasFocus = false;
    MenuEnableDynamic();
}

void frmDocument::txtRTF_Change() {
    modMain::Guarded([&] {
        PROC("frmDocument txtRTF_Change");
        // A running search stores its own replacements.
        if (busy() || g_bLoadingText || modSearch::g_iSearchMode != 0) {
            return;
        }
        Node *selected = m_doc.trvOutline().SelectedItem();
        if (selected != m_nodShown.get()) {
            // The pane does not hold the selected entry's text (a transfer selected it without
            // showing it): storing the pane would replace a text the user never saw. The pane
            // shows the entry's own text instead, once this change is over.
            QMetaObject::invokeMethod(
                this,
                [this] {
                    if (!busy()) {
                        NodeTextGet(&m_doc, m_doc.trvOutline().SelectedItem());
                    }
                },
                Qt::QueuedConnection);
            return;
        }
        m_doc.m_bDataChanged = true;
        NodeTextPut(&m_doc, selected);
    });
}

void frmDocument::textLoaded() {
    // A text shown in part holds the bar until the rest is in.
    if (!m_pBuffer->Partial()) {
        releaseBar();
    }
    m_nodShown = m_doc.trvOutline().SelectedItem();
    updateTextLock();
}

void frmDocument::releaseBar() {
    if (std::exchange(m_bBarHeld, false)) {
        m_pText->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    }
}

void frmDocument::updateTextLock() {
    // A text refused for its size shows a notice in its place; the pane is locked for that entry
    // so that nothing typed there could stand for the stored bytes.
    Node *shown = m_nodShown.get();
    m_pText->setReadOnly(m_doc.m_bTextLocked || (shown && NodeTextRefused(shown->Tag())));
}

void frmDocument::txtRTF_SelChange() {
    if (!busy() && !g_bLoadingText) {
        modMain::Host().TextSelectionChanged();
    }
}

void frmDocument::txtRTF_GotFocus() {
    PROC("frmDocument txtRTF_GotFocus");
    m_doc.m_bOutlineHasFocus = false;
    m_doc.m_bTextHasFocus = true;
    MenuEnableDynamic();
}

bool frmDocument::Form_KeyDown(QKeyEvent *event) {
    PROC("frmDocument Form_KeyDown");
    const int key = event->key();
    const Qt::KeyboardModifiers mods =
        event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);

    if (m_doc.m_bMovingSplit) {
        if (key == Qt::Key_Left && mods == Qt::NoModifier) {
            modSplit::SplitMove(*this, m_fBarTwips - modSplit::kKeyboardStep);
            return true;
        }
        if (key == Qt::Key_Right && mods == Qt::NoModifier) {
            modSplit::SplitMove(*this, m_fBarTwips + modSplit::kKeyboardStep);
            return true;
        }
        if (key == Qt::Key_Escape) {
            modSplit::SplitMoveCancel(*this);
            return true;
        }
        modSplit::SplitMoveEnd(*this);
    }
    if (mods == Qt::NoModifier && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        modSplit::SplitMoveEnd(*this);
        return false;
    }
    if (mods == Qt::ControlModifier && key == Qt::Key_F6) {
        activateNextDocument();
        return true;
    }
    // The keys of the command table.
    if (modMain::Host().WindowKey(event->keyCombination())) {
        return true;
    }
    if (mods == Qt::NoModifier && key == Qt::Key_F2) {
        // Without a main window the rename is the label edit of the selected entry.
        if (!m_doc.bReadOnly) {
            StartLabelEdit(m_doc.trvOutline().SelectedItem());
        }
        return true;
    }
    return false;
}

void frmDocument::activateNextDocument() {
    PROC("frmDocument activateNextDocument");
    // The next document after this one that has a window, wrapping round.
    const std::vector<Document *> &all = Documents::All();
    const auto self = std::find(all.begin(), all.end(), &m_doc);
    DocumentView *next = nullptr;
    for (auto it = self == all.end() ? all.begin() : self + 1; it != all.end() && !next; ++it) {
        next = (*it)->m_bClosing ? nullptr : (*it)->view();
    }
    for (auto it = all.begin(); it != self && it != all.end() && !next; ++it) {
        next = (*it)->m_bClosing ? nullptr : (*it)->view();
    }
    if (!next || next == this) {
        return;
    }
    next->ActivateWindow();
    if (auto *window = dynamic_cast<frmDocument *>(next)) {
        window->Form_Activate();
    }
}

bool frmDocument::Form_QueryUnload() {
    return modMain::Guarded([this] { return modFile::QueryUnload(m_doc); }, false);
}

void frmDocument::DocumentStateChanged() {
    // The caption shows on the frame of the document window.
    setWindowTitle(m_doc.m_sCaption);
    if (QWidget *frame = parentWidget()) {
        frame->setWindowTitle(m_doc.m_sCaption);
    }
    updateTextLock();
    // The outline shows in the document's outline font (a record without a face name keeps the
    // desktop's face).
    QFont outline = QApplication::font(m_pTree);
    m_doc.m_fntOutlineFont.SetFont(outline);
    if (outline != m_pTree->font()) {
        m_pTree->setFont(outline);
        ViewAutoFitSplit();
    }
}

// Qt events.

void frmDocument::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    if (!m_bLaidOut) {
        modSplit::SplitSizeControls(*this, modSplit::kMargin);
        modView::ViewInitialise(*this);
        m_bLaidOut = true;
        return;
    }
    modSplit::SplitSizeControls(*this, m_fSplit);
}

void frmDocument::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    Form_Activate();
}

void frmDocument::closeEvent(QCloseEvent *event) {
    if (m_doc.m_bClosing) {
        event->accept();
        return;
    }
    if (!Form_QueryUnload()) {
        event->ignore();
        return;
    }
    event->accept();
    modFile::DocumentUnloaded(m_doc);
}

bool frmDocument::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
    case QEvent::KeyPress:
        if (watched == m_pTree || watched == m_pText || watched == m_pBar) {
            if (Form_KeyDown(static_cast<QKeyEvent *>(event))) {
                return true;
            }
        }
        break;
    case QEvent::ContextMenu:
        // The context-menu key in the outline pops up the main window's Outline menu beside the
        // selected entry (the right button drags there).
        if (watched == m_pTree &&
            static_cast<QContextMenuEvent *>(event)->reason() == QContextMenuEvent::Keyboard) {
            const QRect at = m_pTree->visualRect(m_pTree->currentIndex());
            modMain::Host().PopupBarMenu(
                QStringLiteral("mnuoutline"),
                m_pTree->viewport()->mapToGlobal(at.isValid() ? at.center() : QPoint()));
            return true;
        }
        break;
    case QEvent::FocusIn:
        if (watched == m_pTree) {
            trvOutline_GotFocus();
        } else if (watched == m_pText) {
            txtRTF_GotFocus();
        }
        break;
    case QEvent::FocusOut:
        if (watched == m_pBar && m_doc.m_bMovingSplit) {
            modSplit::SplitMoveEnd(*this);
        }
        break;
    case QEvent::MouseButtonPress:
        if (watched == m_pGrip && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
            modSplit::SplitMoveStart(*this);
            return true;
        }
        break;
    case QEvent::MouseMove:
        if (watched == m_pGrip) {
            const auto *me = static_cast<QMouseEvent *>(event);
            modSplit::SplitMove(*this, toTwips(m_pGrip->mapTo(this, me->position().toPoint()).x()));
            return true;
        }
        break;
    case QEvent::MouseButtonRelease:
        if (watched == m_pGrip) {
            modSplit::SplitMoveEnd(*this);
            return true;
        }
        break;
    case QEvent::MouseButtonDblClick:
        if (watched == m_pGrip) {
            modView::ViewFitSplit(*this);
            return true;
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

QWidget *frmDocument::picSplitter() const {
    return m_pBar;
}
