#include "editor/OutlineDragUi.h"

#include "document/Document.h"
#include "editor/OutlineModel.h"
#include "outline/modDrag.h"
#include "util/ErrorLog.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {

int ButtonNumber(Qt::MouseButton button) {
    return button == Qt::LeftButton    ? modDrag::kLeftButton
           : button == Qt::RightButton ? modDrag::kRightButton
                                       : 0;
}

} // namespace

OutlineDragHandler::OutlineDragHandler(QTreeView *tree, OutlineModel *model, Document *document,
                                       QObject *parent)
    : QObject(parent), m_pTree(tree), m_pModel(model), m_pDoc(document) {
    m_pTree->setDragEnabled(false);
    m_clickTimer.setSingleShot(true);
    connect(&m_clickTimer, &QTimer::timeout, this, [this] {
        // The entry may have gone, or another may have been selected, meanwhile.
        Node *selected = m_pDoc->trvOutline().SelectedItem();
        if (selected && selected == m_nodPressed) {
            emit selectedEntryClicked(selected);
        }
    });
    m_pTree->viewport()->installEventFilter(this);
    m_pTree->installEventFilter(this);
}

OutlineDragHandler::~OutlineDragHandler() {
    if (m_bDragging) {
        modDrag::ResetDraggingFlags();
    }
}

Node *OutlineDragHandler::nodeAt(const QPoint &viewportPos) const {
    if (!m_pTree->viewport()->rect().contains(viewportPos)) {
        return nullptr;
    }
    return m_pModel->nodeFromIndex(m_pTree->indexAt(viewportPos));
}

bool OutlineDragHandler::eventFilter(QObject *watched, QEvent *event) {
    if (watched == m_pTree) {
        if (event->type() == QEvent::KeyPress && m_bArmed &&
            static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
            cancel();
            return true;
        }
        return false;
    }
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return press(static_cast<QMouseEvent *>(event));
    case QEvent::MouseMove:
        return move(static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
        return release(static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonDblClick:
        m_clickTimer.stop(); // a double click expands or collapses; it does not rename
        return false;
    default:
        return false;
    }
}

bool OutlineDragHandler::press(QMouseEvent *event) {
    const int button = ButtonNumber(event->button());
    if (!button || m_bArmed) {
        return false;
    }
    const QPoint pos = event->position().toPoint();
    Node *hit = nodeAt(pos);
    m_clickTimer.stop();
    m_bWasSelected = hit && hit == m_pDoc->trvOutline().SelectedItem();
    m_nodPressed = hit;
    modDrag::DragPress(m_pDoc, hit, button);
    if (hit && button == modDrag::kLeftButton) {
        emit entryClicked(hit);
    }
    m_press = pos;
    m_iButton = button;
    m_bArmed = hit != nullptr;
    m_bDragging = false;
    m_iValid = -1;
    // The left button also reaches the outline (the expand arrows); the right one selects only.
    return button == modDrag::kRightButton;
}

bool OutlineDragHandler::move(QMouseEvent *event) {
    if (!m_bArmed) {
        return false;
    }
    PROC("frmDocument trvOutline_MouseMove");
    const QPoint pos = event->position().toPoint();
    if (!m_bDragging) {
        const double dpiX = m_pTree->logicalDpiX() > 0 ? m_pTree->logicalDpiX() : 96;
        const double dpiY = m_pTree->logicalDpiY() > 0 ? m_pTree->logicalDpiY() : 96;
        if (!modDrag::DragThresholdPassed(m_press, pos, dpiX, dpiY)) {
            return true;
        }
        const bool ctrl = event->modifiers() & Qt::ControlModifier;
        if (!modDrag::DragStart(nodeAt(pos), pos.x() > m_press.x(), ctrl, m_iButton)) {
            m_bArmed = false;
            return true;
        }
        m_bDragging = true;
    }
    showValidity(nodeAt(pos));
    return true;
}

void OutlineDragHandler::showValidity(Node *over) {
    PROC("frmDocument trvOutline_DragOver");
    Node *source = modDrag::g_nodDragSource.get();
    if (!modDrag::g_bDragProceed || !source) {
        return;
    }
    m_pDoc->trvOutline().setDropHighlight(over);
    const int valid = modDrag::DropValid(source, over, modDrag::g_bDragIndentRight) ? 1 : 0;
    if (valid == m_iValid) {
        return;
    }
    m_iValid = valid;
    const QCursor cursor(!valid                 ? Qt::ForbiddenCursor
                         : modDrag::g_bDragCopy ? Qt::DragCopyCursor
                                                : Qt::DragMoveCursor);
    if (QGuiApplication::overrideCursor()) {
        QGuiApplication::changeOverrideCursor(cursor);
    } else {
        QGuiApplication::setOverrideCursor(cursor);
    }
}

bool OutlineDragHandler::release(QMouseEvent *event) {
    if (!m_bArmed) {
        return false;
    }
    const bool wasDragging = m_bDragging;
    const QPoint pos = event->position().toPoint();
    m_bArmed = m_bDragging = false;
    if (wasDragging) {
        // The target stays highlighted while the confirmation menu asks about it.
        modDrag::DragDrop(m_pDoc, nodeAt(pos));
        finish();
        return true;
    }
    finish();
    modDrag::ResetDraggingFlags();
    if (m_iButton == modDrag::kLeftButton && m_bWasSelected && nodeAt(pos) == m_nodPressed) {
        m_clickTimer.start(QApplication::doubleClickInterval());
    }
    // A right click without dragging offers the Outline menu of the main window.
    if (m_iButton == modDrag::kRightButton) {
        if (QMenu *menu = m_pTree->window()->findChild<QMenu *>(u"mnuoutline"_s)) {
            menu->exec(event->globalPosition().toPoint());
        }
        return true;
    }
    return false;
}

void OutlineDragHandler::cancel() {
    finish();
    modDrag::ResetDraggingFlags();
}

void OutlineDragHandler::finish() {
    m_bArmed = false;
    m_bDragging = false;
    m_iValid = -1;
    m_pDoc->trvOutline().setDropHighlight(nullptr);
}
