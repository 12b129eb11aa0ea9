#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>

class Document;
class Node;
class OutlineModel;
class QMouseEvent;
class QTreeView;

// Entries dragged with the mouse inside the outline pane. The rules and the drop itself are the
// outline's (modDrag); this turns the pane's mouse and keys into them, shows the drop validity
// by the pointer. (The confirmation menu of a right-button drop is the main window's.)
class OutlineDragHandler : public QObject {
    Q_OBJECT
public:
    OutlineDragHandler(QTreeView *tree, OutlineModel *model, Document *document,
                       QObject *parent = nullptr);
    ~OutlineDragHandler() override;

    bool dragging() const { return m_bDragging; }

signals:
    // The left button went down on an entry (after it was selected).
    void entryClicked(Node *node);
    // A single click, not a double click, on the entry that was already selected.
    void selectedEntryClicked(Node *node);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Node *nodeAt(const QPoint &viewportPos) const;
    bool press(QMouseEvent *event);
    bool move(QMouseEvent *event);
    bool release(QMouseEvent *event);
    void cancel();
    void showValidity(Node *over);
    void finish();

    QTreeView *m_pTree;
    OutlineModel *m_pModel;
    Document *m_pDoc;
    QPoint m_press;
    int m_iButton = 0;
    bool m_bArmed = false;       // a button went down on an entry
    bool m_bDragging = false;    // ... and the pointer left the threshold square
    int m_iValid = -1;           // the validity the pointer shows (-1 none yet)
    bool m_bWasSelected = false; // the pressed entry was the selected one before the press
    Node *m_nodPressed = nullptr;
    // Waits out a possible second click before a click on the selected entry counts.
    QTimer m_clickTimer;
};
