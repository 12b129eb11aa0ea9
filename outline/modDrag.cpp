#include "outline/modDrag.h"

#include "document/Document.h"
#include "outline/modNodes.h"
#include "outline/modOutline.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <cmath>
#include <span>
#include <utility>

using modMain::Guarded;
using namespace modNodes;

namespace modDrag {

NodeRef g_nodDragSource;
bool g_bDragProceed = false;
bool g_bDragCopy = false;
int g_iDragRelationship = relNext;
bool g_bDragIndentRight = false;
int g_iDragButton = kLeftButton;

namespace {

struct ConfirmItem {
    const char *name;
    bool ConfirmMenu::*available;
    ConfirmChoice choice;
};

// The items of the two confirmation menus (the main window's pop-up menus "mnuConfirm" and
// "mnuConfirmIndent") that record a choice; Cancel is always available.
const ConfirmItem kPlaceItems[] = {
    {"mnuConfirmCopyPrevious", &ConfirmMenu::copyPrevious, ConfirmChoice::CopyPrevious},
    {"mnuConfirmCopyNext", &ConfirmMenu::copyNext, ConfirmChoice::CopyNext},
    {"mnuConfirmCopyChild", &ConfirmMenu::copyChild, ConfirmChoice::CopyChild},
    {"mnuConfirmMovePrevious", &ConfirmMenu::movePrevious, ConfirmChoice::MovePrevious},
    {"mnuConfirmMoveNext", &ConfirmMenu::moveNext, ConfirmChoice::MoveNext},
    {"mnuConfirmMoveChild", &ConfirmMenu::moveChild, ConfirmChoice::MoveChild},
    {"mnuConfirmCancel", nullptr, ConfirmChoice::Cancel},
};
const ConfirmItem kIndentItems[] = {
    {"mnuConfirmIndentRight", &ConfirmMenu::indentRight, ConfirmChoice::IndentRight},
    {"mnuConfirmIndentLeft", &ConfirmMenu::indentLeft, ConfirmChoice::IndentLeft},
    {"mnuConfirmIndentCancel", nullptr, ConfirmChoice::Cancel},
};

// Shows the menu that fits the drop (the main window's, modal) and records the choice; no choice
// cancels.
void askConfirmation(const ConfirmMenu &menu) {
    const bool indent = menu.indentLeft || menu.indentRight;
    const auto &items = indent ? std::span<const ConfirmItem>(kIndentItems)
                               : std::span<const ConfirmItem>(kPlaceItems);
    QStringList available;
    for (const ConfirmItem &i : items) {
        if (!i.available || menu.*(i.available)) {
            available.append(QString::fromLatin1(i.name));
        }
    }
    const QString chosen = modMain::Host().PopupMenu(
        indent ? QStringLiteral("mnuConfirmIndent") : QStringLiteral("mnuConfirm"), available);
    for (const ConfirmItem &i : items) {
        if (chosen == QLatin1String(i.name) && available.contains(chosen)) {
            Confirm(i.choice);
            return;
        }
    }
    Confirm(ConfirmChoice::Cancel);
}

void letPendingEventsRun() {
    if (QCoreApplication::instance()) {
        QCoreApplication::processEvents();
    }
}

// A drop onto another entry: the placement, then the copy and, for a move, the removal.
void dropOnto(Document *doc, Node *source, Node *target) {
    const DropPlacements permitted = PermittedPlacements(source, target);
    if (!permitted.any()) {
        g_bDragProceed = false;
    } else if (g_iDragButton == kRightButton) {
        g_bDragProceed = false;
        askConfirmation(ConfirmMenuFor(permitted));
    } else {
        g_iDragRelationship = LeftButtonRelationship(permitted);
    }
    if (!g_bDragProceed) {
        return;
    }
    Node *place = target;
    int relationship = g_iDragRelationship;
    if (!target->Parent()) {
        Node *first = target->Child();
        if (first && first != source) {
            place = first;
            relationship = relPrevious;
        } else {
            relationship = relChild;
        }
    }
    Node *copy = NodeDuplicate(doc, source, place, relationship);
    letPendingEventsRun();
    if (copy && !g_bDragCopy) {
        source->tree()->Remove(source->Index());
    }
    NodeSelect(doc, copy);
}

// A drop onto the source itself indents or unindents it.
void dropOntoItself(Node *source) {
    g_bDragCopy = false;
    const IndentPermissions permitted = PermittedIndents(source);
    if (!permitted.right && !permitted.left) {
        g_bDragProceed = false;
        return;
    }
    if (g_iDragButton == kRightButton) {
        g_bDragProceed = false;
        askConfirmation(ConfirmMenuFor(permitted));
        if (!g_bDragProceed) {
            return;
        }
    }
    // The direction taken when the drag started (or chosen in the popup) must be permitted.
    if (g_bDragIndentRight ? !permitted.right : !permitted.left) {
        return;
    }
    if (g_bDragIndentRight) {
        modOutline::OutlineIndent();
    } else {
        modOutline::OutlineUnindent();
    }
}

} // namespace

void ResetDraggingFlags() {
    PROC("modMain ResetDraggingFlags");
    g_nodDragSource.reset();
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        while (QGuiApplication::overrideCursor()) {
            QGuiApplication::restoreOverrideCursor();
        }
    }
}

bool InSubtreeOf(const Node *node, const Node *ancestor) {
    for (const Node *a = node; a; a = a->Parent()) {
        if (a == ancestor) {
            return true;
        }
    }
    return false;
}

DropPlacements PermittedPlacements(const Node *source, const Node *target) {
    DropPlacements p{true, true, true};
    if (!source || !target || source == target) {
        return {};
    }
    if (!target->Parent()) {
        p.previous = p.next = false;
    } else {
        if (target->Previous() == source) {
            p.previous = false;
        }
        if (target->Next() == source) {
            p.next = false;
        }
        if (target->Child() == source) {
            p = {};
        }
    }
    if (InSubtreeOf(target, source)) {
        p = {};
    }
    return p;
}

IndentPermissions PermittedIndents(const Node *source) {
    IndentPermissions p;
    if (!source || !source->Parent()) {
        return p;
    }
    p.right = source->Previous() != nullptr;
    p.left = source->Parent()->Parent() != nullptr;
    return p;
}

bool DropValid(const Node *source, const Node *target, bool indentRight) {
    if (!target) {
        return true;
    }
    if (target == source) {
        const IndentPermissions p = PermittedIndents(source);
        return indentRight ? p.right : p.left;
    }
    return !InSubtreeOf(target, source);
}

int LeftButtonRelationship(const DropPlacements &permitted) {
    if (permitted.next) {
        return relNext;
    }
    if (permitted.previous) {
        return relPrevious;
    }
    return relChild;
}

double DragThresholdPixels(double dpi) {
    return 100.0 * dpi / 1440.0;
}

bool DragThresholdPassed(QPointF press, QPointF now, double dpiX, double dpiY) {
    return std::abs(now.x() - press.x()) > DragThresholdPixels(dpiX) ||
           std::abs(now.y() - press.y()) > DragThresholdPixels(dpiY);
}

QString DragIconFile(bool valid) {
    const QString name = !valid        ? QStringLiteral("NoDrop.ico")
                         : g_bDragCopy ? QStringLiteral("FolderDragCopy.ico")
                                       : QStringLiteral("FolderDrag.ico");
    return modMain::ProgramDirectory() + QLatin1Char('/') + name;
}

ConfirmMenu ConfirmMenuFor(const DropPlacements &permitted) {
    ConfirmMenu m;
    m.copyPrevious = m.movePrevious = permitted.previous;
    m.copyNext = m.moveNext = permitted.next;
    m.copyChild = m.moveChild = permitted.child;
    return m;
}

ConfirmMenu ConfirmMenuFor(const IndentPermissions &permitted) {
    ConfirmMenu m;
    m.indentRight = permitted.right;
    m.indentLeft = permitted.left;
    return m;
}

void Confirm(ConfirmChoice choice) {
    auto place = [](bool copy, int relationship) {
        g_bDragCopy = copy;
        g_iDragRelationship = relationship;
        g_bDragProceed = true;
    };
    switch (choice) {
    case ConfirmChoice::CopyChild:
        place(true, relChild);
        break;
    case ConfirmChoice::CopyNext:
        place(true, relNext);
        break;
    case ConfirmChoice::CopyPrevious:
        place(true, relPrevious);
        break;
    case ConfirmChoice::MoveChild:
        place(false, relChild);
        break;
    case ConfirmChoice::MoveNext:
        place(false, relNext);
        break;
    case ConfirmChoice::MovePrevious:
        place(false, relPrevious);
        break;
    case ConfirmChoice::IndentLeft:
        g_bDragIndentRight = false;
        g_bDragProceed = true;
        break;
    case ConfirmChoice::IndentRight:
        g_bDragIndentRight = true;
        g_bDragProceed = true;
        break;
    case ConfirmChoice::Cancel:
        break;
    }
}

void DragPress(Document *document, Node *hit, int button) {
    Guarded([&] {
        PROC("frmDocument trvOutline_MouseDown");
        if (button != kLeftButton && button != kRightButton) {
            return;
        }
        g_nodDragSource = hit;
        if (hit) {
            NodeSelect(document, hit);
        }
    });
}

bool DragStart(Node *over, bool movedRight, bool ctrl, int button) {
    return Guarded([&] {
        PROC("frmDocument trvOutline_MouseMove");
        if (!g_nodDragSource || (button != kLeftButton && button != kRightButton)) {
            return false;
        }
        g_bDragProceed = true;
        if (over == g_nodDragSource.get()) {
            g_bDragIndentRight = movedRight;
        } else {
            g_bDragCopy = ctrl;
        }
        g_iDragButton = button;
        return true;
    });
}

void DragDrop(Document *document, Node *target) {
    Guarded([&] {
        PROC("frmDocument trvOutline_DragDrop");
        Node *source = g_nodDragSource.get();
        // Nothing changes a read-only document.
        if (!document || !g_bDragProceed || !source || document->bReadOnly) {
            return;
        }
        BusyPointer busy;
        // Whatever the drop changed marks the document changed.
        const quint64 before = document->trvOutline().Revision();
        struct MarkChanged {
            Document *doc;
            quint64 before;
            ~MarkChanged() {
                if (doc->trvOutline().Revision() != before) {
                    doc->m_bDataChanged = true;
                }
            }
        } mark{document, before};
        if (!target) {
            g_bDragProceed = false;
        } else if (target != source) {
            dropOnto(document, source, target);
        } else {
            dropOntoItself(source);
        }
    });
    ResetDraggingFlags();
}

} // namespace modDrag
