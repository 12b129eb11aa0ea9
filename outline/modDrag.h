#pragma once

#include "outline/Node.h"

#include <QPointF>
#include <QString>

class Document;

// Dragging entries inside the outline pane: the drag state, the rules that decide where a
// dragged entry may go, and the drop itself. The pane's mouse handlers feed it; nothing here
// needs a widget.
namespace modDrag {

// ---- State (one drag at a time for the application) ----

extern NodeRef g_nodDragSource; // the entry pressed on; null when no drag is possible
extern bool g_bDragProceed;     // the drop is carried out only while set
extern bool g_bDragCopy;        // copy rather than move
extern int g_iDragRelationship; // relNext, relPrevious or relChild relative to the target
extern bool g_bDragIndentRight; // a drop onto the source itself: indent (else unindent)
extern int g_iDragButton;       // the button that started the drag: 1 left, 2 right

inline constexpr int kLeftButton = 1;
inline constexpr int kRightButton = 2;

// Clears the source and restores the default pointer.
void ResetDraggingFlags();

// ---- Rules ----

// The placements a drop onto a target other than the source permits.
struct DropPlacements {
    bool previous = false;
    bool next = false;
    bool child = false;
    bool any() const { return previous || next || child; }
    bool operator==(const DropPlacements &) const = default;
};
DropPlacements PermittedPlacements(const Node *source, const Node *target);

// What a drop onto the source itself may do.
struct IndentPermissions {
    bool right = false; // indent
    bool left = false;  // unindent
    bool operator==(const IndentPermissions &) const = default;
};
IndentPermissions PermittedIndents(const Node *source);

// True when the node is the ancestor or the node itself.
bool InSubtreeOf(const Node *node, const Node *ancestor);

// The validity shown while dragging over a target (null: over no entry, valid): over the source
// it follows the indent permissions for the direction, elsewhere the source's own subtree is out.
bool DropValid(const Node *source, const Node *target, bool indentRight);

// The place a left-button drop takes among the permitted ones: after, else before, else child.
int LeftButtonRelationship(const DropPlacements &permitted);

// The drag starts once the pointer has left the press point by more than 100 twips (100/1440 inch)
// horizontally or vertically; the pane measures in pixels at its DPI.
double DragThresholdPixels(double dpi);
bool DragThresholdPassed(QPointF press, QPointF now, double dpiX, double dpiY);

// The file of the drag icon for the current state (in the program's folder).
QString DragIconFile(bool valid);

// ---- The confirmation popup of a right-button drop ----

// The items the popup makes available.
struct ConfirmMenu {
    bool copyPrevious = false, copyNext = false, copyChild = false;
    bool movePrevious = false, moveNext = false, moveChild = false;
    bool indentLeft = false, indentRight = false;
    bool operator==(const ConfirmMenu &) const = default;
};
ConfirmMenu ConfirmMenuFor(const DropPlacements &permitted);
ConfirmMenu ConfirmMenuFor(const IndentPermissions &permitted);

enum class ConfirmChoice {
    CopyChild,
    CopyNext,
    CopyPrevious,
    MoveChild,
    MoveNext,
    MovePrevious,
    IndentLeft,
    IndentRight,
    Cancel
};
// What a popup item does to the drag state.
void Confirm(ConfirmChoice choice);

// A right-button drop asks the main window's pop-up menu (MainWindowHost::PopupMenu) and reports
// the choice through Confirm; without a main window it is cancelled.

// ---- The mouse, as the pane reports it ----

// A button went down on an entry (or on no entry): it becomes the source and is selected.
void DragPress(Document *document, Node *hit, int button);
// The pointer left the threshold square: the drag starts. over: the entry now under the pointer;
// movedRight: the pointer is now strictly right of the press point; ctrl: the Ctrl key is held.
// Returns false when there is no source to drag.
bool DragStart(Node *over, bool movedRight, bool ctrl, int button);
// The drop onto a target entry (null: onto no entry, which does nothing).
void DragDrop(Document *document, Node *target);

} // namespace modDrag
