#include "outline/modOutline.h"

#include "document/Document.h"
#include "outline/modNodes.h"
#include "richtext/clsFont.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"

#include <unordered_set>
#include <utility>

using modMain::Guarded;
using namespace modNodes;

namespace modOutline {

NodeRef g_nodCopied;

namespace {

// The common frame of a command: the active document (none: nothing to do), the busy pointer
// for the whole run, and the changed mark first when the command makes one.
template <class F> void onActiveDocument(bool marksChanged, F &&body) {
    Document *doc = nullptr;
    if (!modMain::DocumentActive(doc)) {
        return;
    }
    BusyPointer busy;
    if (marksChanged) {
        doc->m_bDataChanged = true;
    }
    body(doc);
}

Node *selectedEntry(Document *doc) {
    return doc->trvOutline().SelectedItem();
}

bool isRoot(const Node *node) {
    return node->Parent() == nullptr;
}

// One batch of tree changes, ended exactly once, also when the work inside fails.
class Batch {
public:
    Batch() { NodeActionStart(); }
    ~Batch() { end(); }
    Batch(const Batch &) = delete;
    Batch &operator=(const Batch &) = delete;
    void end() {
        if (!m_bEnded) {
            m_bEnded = true;
            NodeActionEnd();
        }
    }

private:
    bool m_bEnded = false;
};

// Moves an entry by copying it with its subtree to the place and removing the original.
// Returns the copy, or null when nothing was copied (the original then stays).
Node *copyAndRemove(Document *doc, Node *s, Node *target, int relationship) {
    Node *copy = NodeDuplicate(doc, s, target, relationship);
    if (copy) {
        s->tree()->Remove(s->Index());
    }
    return copy;
}

// Moves every child of one entry, in order, to the end of another's children.
void moveChildren(Document *doc, Node *from, Node *to) {
    const std::vector<Node *> children = from->childList();
    for (Node *child : children) {
        NodeDuplicate(doc, child, to, relChild);
        NodeDelete(doc, child);
    }
}

// The frame of every move: nothing with no selection or the root selected; otherwise, inside one
// batch, the place is found and the entry copied there and removed; then the copy is selected.
// place() returns false when there is no new place.
template <class Place> void moveSelected(Place &&place) {
    onActiveDocument(true, [&](Document *doc) {
        Node *s = selectedEntry(doc);
        if (!s || isRoot(s)) {
            return;
        }
        Node *copy = nullptr;
        {
            Batch batch;
            Node *target = nullptr;
            int relationship = relChild;
            if (place(doc, s, target, relationship)) {
                copy = copyAndRemove(doc, s, target, relationship);
            }
        }
        NodeSelect(doc, copy);
    });
}

void insertEntry(int relationship) {
    onActiveDocument(true, [&](Document *doc) {
        Node *node = NodeInsert(doc, relationship, selectedEntry(doc));
        NodeInitialise(doc, node);
    });
}

// After the outline was expanded or collapsed as a whole.
void afterWholeOutline(Document *doc) {
    if (DocumentView *view = doc->view()) {
        view->MenuEnableDynamic();
        view->ViewAutoFitSplit();
    }
}

const QString kAskDelete = QStringLiteral("Do you really want to delete the entry '");
const QString kAskDeleteTagged =
    QStringLiteral("Do you really want to delete the tagged entries, ");
const QString kAskDeleteTaggedEnd = QStringLiteral("including any children?");

} // namespace

std::vector<Node *> TopmostTaggedEntries(const Nodes &nodes) {
    PROC("modOutline TopmostTaggedEntries");
    // A walk of the tree from each top node finds the topmost tagged entries (their subtrees are
    // not entered); the collection order is then kept.
    std::unordered_set<const Node *> topmost;
    std::vector<Node *> stack;
    for (Node *top : nodes.topNodes()) {
        stack.insert(stack.end(), top->childList().begin(), top->childList().end());
    }
    while (!stack.empty()) {
        Node *n = stack.back();
        stack.pop_back();
        if (NodeTagged(n)) {
            topmost.insert(n);
        } else {
            stack.insert(stack.end(), n->childList().begin(), n->childList().end());
        }
    }
    std::vector<Node *> out;
    out.reserve(topmost.size());
    if (topmost.empty()) {
        return out;
    }
    for (Node *n : nodes) {
        if (topmost.contains(n)) {
            out.push_back(n);
        }
    }
    return out;
}

// ---- Structure -----------------------------------------------------------------------------

void OutlineInsertAbove() {
    Guarded([] {
        PROC("modOutline OutlineInsertAbove");
        insertEntry(relPrevious);
    });
}

void OutlineInsertBelow() {
    Guarded([] {
        PROC("modOutline OutlineInsertBelow");
        insertEntry(relNext);
    });
}

void OutlineInsertChild() {
    Guarded([] {
        PROC("modOutline OutlineInsertChild");
        insertEntry(relChild);
    });
}

void OutlineDelete() {
    Guarded([] {
        PROC("modOutline OutlineDelete");
        onActiveDocument(true, [](Document *doc) {
            Node *s = selectedEntry(doc);
            if (!s) {
                return;
            }
            const int answer = modMain::MsgBox(kAskDelete + s->Text() + QStringLiteral("'?"),
                                               modMain::vbYesNoCancel, modMain::vbQuestion);
            if (answer != modMain::vbYes) {
                return;
            }
            NodeRef after = s->Previous();
            if (!after) {
                after = s->Next();
            }
            if (!after) {
                after = s->Parent();
            }
            NodeDelete(doc, s);
            NodeSelect(doc, after.get());
            NodeTextGet(doc, after.get());
        });
    });
}

void OutlineDeleteTaggedEntries() {
    Guarded([] {
        PROC("modOutline OutlineDeleteTaggedEntries");
        onActiveDocument(true, [](Document *doc) {
            const int answer = modMain::MsgBox(kAskDeleteTagged + kAskDeleteTaggedEnd,
                                               modMain::vbYesNoCancel, modMain::vbQuestion);
            if (answer != modMain::vbYes) {
                return;
            }
            Nodes &nodes = doc->trvOutline();
            const std::vector<Node *> doomed = TopmostTaggedEntries(nodes);
            // The selection survives unless it lies in a deleted subtree; then the parent of
            // that subtree (never deleted: the root is never among them) takes its place.
            Node *after = nodes.SelectedItem();
            if (after) {
                for (Node *a = after; a; a = a->Parent()) {
                    if (NodeTagged(a) && a->Parent()) {
                        // The outermost tagged ancestor below the root decides.
                        after = a->Parent();
                    }
                }
            } else if (nodes.Count() > 0) {
                after = nodes.Item(1)->Root();
            }
            NodeRef keep(after);
            {
                Batch batch;
                for (Node *n : doomed) {
                    NodeDelete(doc, n);
                }
            }
            NodeSelect(doc, keep.get());
            NodeTextGet(doc, keep.get());
        });
    });
}

void OutlineCopy() {
    Guarded([] {
        PROC("modOutline OutlineCopy");
        onActiveDocument(false, [](Document *doc) { g_nodCopied = selectedEntry(doc); });
    });
}

void OutlinePaste() {
    Guarded([] {
        PROC("modOutline OutlinePaste");
        onActiveDocument(true, [](Document *doc) { NodePaste(doc, g_nodCopied, false); });
    });
}

void OutlinePasteAndDelete() {
    Guarded([] {
        PROC("modOutline OutlinePasteAndDelete");
        onActiveDocument(true, [](Document *doc) { NodePaste(doc, g_nodCopied, true); });
    });
}

void OutlinePasteTaggedEntries() {
    Guarded([] {
        PROC("modOutline OutlinePasteTaggedEntries");
        onActiveDocument(true, [](Document *doc) {
            const std::vector<Node *> tagged = TopmostTaggedEntries(doc->trvOutline());
            // Held by reference: a paste into a tagged subtree must not leave a stale entry.
            std::vector<NodeRef> sources(tagged.begin(), tagged.end());
            Batch batch;
            for (NodeRef &source : sources) {
                NodePaste(doc, source, false);
            }
        });
    });
}

void OutlineTaggedEntry() {
    Guarded([] {
        PROC("modOutline OutlineTaggedEntry");
        onActiveDocument(true, [](Document *doc) {
            Node *s = selectedEntry(doc);
            if (!s || isRoot(s)) {
                return;
            }
            NodeTagToggle(s);
            if (DocumentView *view = doc->view()) {
                view->MenuEnableDynamic();
            }
        });
    });
}

void OutlineRename() {
    Guarded([] {
        PROC("modOutline OutlineRename");
        onActiveDocument(true, [](Document *doc) {
            Node *s = selectedEntry(doc);
            if (s && doc->view()) {
                doc->view()->StartLabelEdit(s);
            }
        });
    });
}

// ---- Moves and levels ----------------------------------------------------------------------

void OutlineMoveUp() {
    Guarded([] {
        PROC("modOutline OutlineMoveUp");
        moveSelected([](Document *, Node *s, Node *&target, int &relationship) {
            if (Node *previous = s->Previous()) {
                target = previous;
                relationship = relPrevious;
                return true;
            }
            // The first child climbs: into the end of the nearest earlier entry of a higher
            // level, or, once the climb reaches the root, into the end of the root's first child.
            // The first child of the root itself has nowhere to go.
            Node *p = s->Parent();
            if (isRoot(p)) {
                return false;
            }
            for (;;) {
                if (Node *q = p->Previous()) {
                    target = q;
                    break;
                }
                p = p->Parent();
                if (isRoot(p)) {
                    target = p->Child();
                    break;
                }
            }
            relationship = relChild;
            return true;
        });
    });
}

void OutlineMoveDown() {
    Guarded([] {
        PROC("modOutline OutlineMoveDown");
        onActiveDocument(true, [](Document *doc) {
            Node *s = selectedEntry(doc);
            if (!s || isRoot(s)) {
                return;
            }
            Node *copy = nullptr;
            {
                Batch batch;
                if (Node *n = s->Next()) {
                    copy = copyAndRemove(doc, s, n, relNext);
                } else {
                    // The last child becomes the first child of its parent's next sibling q.
                    // With no way to insert a first child, q's children step aside into a
                    // temporary entry t and come back after the copy.
                    Node *p = s->Parent();
                    Node *q = isRoot(p) ? nullptr : p->Next();
                    if (q) {
                        NodeRef t = NodeInsert(doc, relNext, q);
                        moveChildren(doc, q, t.get());
                        copy = NodeDuplicate(doc, s, q, relChild);
                        moveChildren(doc, t.get(), q);
                        NodeDelete(doc, t.get());
                        if (copy) {
                            s->tree()->Remove(s->Index());
                        }
                    }
                }
            }
            NodeSelect(doc, copy);
        });
    });
}

void OutlineMoveFirst() {
    Guarded([] {
        PROC("modOutline OutlineMoveFirst");
        moveSelected([](Document *, Node *s, Node *&target, int &relationship) {
            target = s->FirstSibling();
            relationship = relPrevious;
            return true;
        });
    });
}

void OutlineMoveLast() {
    Guarded([] {
        PROC("modOutline OutlineMoveLast");
        moveSelected([](Document *, Node *s, Node *&target, int &relationship) {
            target = s->LastSibling();
            relationship = relNext;
            return true;
        });
    });
}

void OutlineIndent() {
    Guarded([] {
        PROC("modOutline OutlineIndent");
        moveSelected([](Document *, Node *s, Node *&target, int &relationship) {
            target = s->Previous();
            relationship = relChild;
            return target != nullptr;
        });
    });
}

void OutlineUnindent() {
    Guarded([] {
        PROC("modOutline OutlineUnindent");
        moveSelected([](Document *, Node *s, Node *&target, int &relationship) {
            Node *p = s->Parent();
            if (isRoot(p)) {
                return false;
            }
            target = p;
            relationship = relNext;
            return true;
        });
    });
}

// ---- Sorting -------------------------------------------------------------------------------

void OutlineSortAll() {
    Guarded([] {
        PROC("modOutline OutlineSortAll");
        onActiveDocument(true, [](Document *doc) {
            Nodes &nodes = doc->trvOutline();
            Node *root = nodes.Count() > 0 ? nodes.Item(1)->Root() : nullptr;
            nodes.setSorted(true);
            NodeSortAll(root, true);
            nodes.setSorted(false);
            NodeSortAll(root, false);
            doc->m_bDataChanged = true;
        });
    });
}

void OutlineSortCurrent() {
    Guarded([] {
        PROC("modOutline OutlineSortCurrent");
        onActiveDocument(true, [](Document *doc) {
            if (Node *s = selectedEntry(doc)) {
                s->setSorted(true);
                s->setSorted(false);
            }
            doc->m_bDataChanged = true;
        });
    });
}

// ---- Expansion -----------------------------------------------------------------------------

void OutlineExpand() {
    Guarded([] {
        PROC("modOutline OutlineExpand");
        onActiveDocument(true, [](Document *doc) {
            if (Node *s = selectedEntry(doc)) {
                s->setExpanded(true);
            }
        });
    });
}

void OutlineCollapse() {
    Guarded([] {
        PROC("modOutline OutlineCollapse");
        onActiveDocument(true, [](Document *doc) {
            if (Node *s = selectedEntry(doc)) {
                s->setExpanded(false);
            }
        });
    });
}

void OutlineCollapseAll() {
    Guarded([] {
        PROC("modOutline OutlineCollapseAll");
        onActiveDocument(true, [](Document *doc) {
            Node *root = nullptr;
            NodeGetRoot(doc, root);
            NodeSelect(doc, root);
            if (root) {
                NodeCollapseAll(root);
                NodeTextGet(doc, root);
                doc->m_iExpansionLevel = 1;
                afterWholeOutline(doc);
            }
        });
    });
}

void OutlineExpandAll() {
    Guarded([] {
        PROC("modOutline OutlineExpandAll");
        onActiveDocument(true, [](Document *doc) {
            Node *root = nullptr;
            NodeGetRoot(doc, root);
            if (root) {
                NodeExpandAll(root);
                doc->m_iExpansionLevel = -1;
                afterWholeOutline(doc);
            }
        });
    });
}

void OutlineExpandToLevel(int level) {
    Guarded([level] {
        PROC("modOutline OutlineExpandToLevel");
        onActiveDocument(true, [level](Document *doc) {
            Node *root = nullptr;
            NodeGetRoot(doc, root);
            if (root) {
                NodeExpandToLevel(root, level);
            }
            doc->m_iExpansionLevel = level;
            afterWholeOutline(doc);
        });
    });
}

// ---- Font ----------------------------------------------------------------------------------

void OutlineFont(bool (*choose)(clsFont &font)) {
    Guarded([choose] {
        PROC("modOutline OutlineFont");
        onActiveDocument(true, [choose](Document *doc) {
            if (choose) {
                choose(doc->m_fntOutlineFont);
            }
        });
    });
}

} // namespace modOutline
