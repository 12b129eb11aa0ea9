#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

class Nodes;

// Insert positions of Nodes::Add, relative to an existing node.
enum NodeRelationship : int {
    relFirst = 0,    // first sibling of the relative
    relLast = 1,     // last sibling of the relative
    relNext = 2,     // right after the relative
    relPrevious = 3, // right before the relative
    relChild = 4,    // last child of the relative
};

// What changed in a node, for NodesObserver::dataChanged.
enum class NodeRole { Label, Icon, Expanded, Selected, DropHighlight };

// Run-time error raised by an operation on a node that has been removed from its tree.
inline constexpr qint32 errNodeRemoved = 35605;

// One entry of an outline: a label, its stored body text and its place in the tree.
// Nodes are created and owned by their Nodes collection. A removed node stays readable while a
// NodeRef holds it, but every relation and change raises errNodeRemoved.
class Node {
public:
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;

    const QString &Key() const { return m_sKey; }
    void setKey(const QString &key) { m_sKey = key; }

    // The label. Changing it under a sorted parent moves the node to its place.
    const QString &Text() const { return m_sText; }
    void setText(const QString &text);

    // The body text in stored form (code-page bytes); copying it is cheap.
    const QByteArray &Tag() const {
        if (m_pShared) {
            unshareTag();
        }
        return m_baTag;
    }
    // The same bytes without making them the node's own (for writing and measuring).
    QByteArrayView TagView() const {
        return m_pShared ? QByteArrayView(*m_pShared).sliced(m_iSharedFrom, m_iSharedLength)
                         : QByteArrayView(m_baTag);
    }
    void setTag(const QByteArray &tag);
    // The stored text held for reading elsewhere, on another thread too: the node's own bytes or
    // its piece of the shared buffer, kept alive by the holder whatever the node does next.
    struct TagHold {
        QByteArray own;
        std::shared_ptr<const QByteArray> buffer;
        qsizetype from = 0;
        qsizetype length = 0;
        QByteArrayView view() const {
            return buffer ? QByteArrayView(*buffer).sliced(from, length) : QByteArrayView(own);
        }
    };
    TagHold HoldTag() const {
        return m_pShared ? TagHold{{}, m_pShared, m_iSharedFrom, m_iSharedLength}
                         : TagHold{m_baTag, {}, 0, 0};
    }
    // The stored text as a piece of a larger buffer (a document file as read), which is shared,
    // not copied, until the text is first read through Tag().
    void setTagShared(const std::shared_ptr<const QByteArray> &buffer, qsizetype from,
                      qsizetype length);
    // The source's stored text, shared as the source holds it.
    void setTagFrom(const Node &source);

    // Icon keys: "Folder" / "FolderTagged" and "FolderSelected" / "FolderTaggedSelected".
    // Any other key raises error 5.
    QString Image() const;
    void setImage(const QString &key);
    QString SelectedImage() const;
    void setSelectedImage(const QString &key);
    bool ImageTagged() const { return m_bImageTagged; }

    bool Expanded() const { return m_bExpanded; }
    void setExpanded(bool expanded);

    // When set, the children are kept in ascending label order (ignoring case, user's locale).
    bool Sorted() const { return m_bSorted; }
    void setSorted(bool sorted);

    bool Selected() const;
    void setSelected(bool selected);

    // 1-based position in the collection, in insertion order; gaps close on removal.
    int Index() const;

    Node *Parent() const; // null for a top node
    int Children() const;
    Node *Child() const; // first child
    Node *Next() const;
    Node *Previous() const;
    Node *FirstSibling() const;
    Node *LastSibling() const;
    Node *Root() const; // the top node above this one (itself for a top node)

    // Expands every ancestor and asks the view to scroll to the node.
    void EnsureVisible();

    // Positional access for views: the row among the siblings (0-based) and the child at a row.
    int row() const;
    Node *childAt(int row) const;
    const std::vector<Node *> &childList() const { return m_children; }

    bool isRemoved() const { return m_pTree == nullptr; }
    // Raises errNodeRemoved for a removed node.
    void checkAlive() const;
    Nodes *tree() const { return m_pTree; }

private:
    friend class Nodes;
    friend class NodeRef;
    Node() = default;
    ~Node() = default;

    int repairRowsUpTo(const Node *child) const;
    void unshareTag() const;

    Nodes *m_pTree = nullptr;
    Node *m_pParent = nullptr; // the collection's hidden top for top nodes
    std::vector<Node *> m_children;
    mutable int m_iRow = 0;
    mutable int m_iDirtyFrom = INT32_MAX; // children from here on have stale rows
    qint64 m_lSeq = 0;                    // insertion sequence number (slot of the Index tree)
    int m_iRefs = 0;                      // NodeRefs holding this node
    bool m_bExpanded = false;
    bool m_bSorted = false;
    bool m_bImageTagged = false;
    bool m_bSelectedImageTagged = false;
    QString m_sKey;
    QString m_sText;
    mutable QByteArray m_baTag;
    // A shared stored text: the buffer that holds it (kept alive here), and where.
    mutable std::shared_ptr<const QByteArray> m_pShared;
    qsizetype m_iSharedFrom = 0;
    qsizetype m_iSharedLength = 0;
};

// A reference to a node that is held across commands. It reads as null once the node has been
// removed from its tree (or the tree destroyed); the memory stays valid while any NodeRef holds it.
class NodeRef {
public:
    NodeRef() = default;
    NodeRef(Node *node); // NOLINT: implicit on purpose
    NodeRef(const NodeRef &other);
    NodeRef &operator=(const NodeRef &other);
    NodeRef &operator=(Node *node);
    ~NodeRef();

    Node *get() const { return (m_pNode && !m_pNode->isRemoved()) ? m_pNode : nullptr; }
    Node *operator->() const { return get(); }
    explicit operator bool() const { return get() != nullptr; }
    bool operator==(const Node *node) const { return get() == node; }
    void reset() { *this = nullptr; }

private:
    void release();
    Node *m_pNode = nullptr;
};

// Receives every change of a Nodes collection, fine-grained enough to drive an item model.
// A null parent means the top level. Rows are 0-based positions among the siblings.
class NodesObserver {
public:
    virtual ~NodesObserver() = default;
    virtual void beforeInsert(Node *parent, int row) = 0;
    virtual void afterInsert(Node *parent, int row) = 0;
    virtual void beforeRemove(Node *parent, int row, int count) = 0;
    virtual void afterRemove(Node *parent, int row, int count) = 0;
    virtual void dataChanged(Node *node, NodeRole role) = 0;
    // The children of the parent changed order (sorting, a moved label); no child came or went.
    virtual void beforeReorder(Node *parent) = 0;
    virtual void afterReorder(Node *parent) = 0;
    virtual void beforeReset() = 0;
    virtual void afterReset() = 0;
    virtual void ensureVisible(Node *node) = 0;
    virtual void visibleChanged(bool visible) = 0;
};

// The entry tree of one document: owns its nodes, keeps their collection order, the selection
// and the drop highlight.
class Nodes {
public:
    Nodes();
    ~Nodes();
    Nodes(const Nodes &) = delete;
    Nodes &operator=(const Nodes &) = delete;

    int Count() const { return m_iCount; }
    // Raised by every change of the content: a node added, removed or moved, a label, a stored
    // text or a tag changed. Cheap to read; equal values mean nothing was changed in between.
    quint64 Revision() const { return m_lRevision; }
    void touch() { ++m_lRevision; }
    // The node at a 1-based Index; out of range raises error 9 (Subscript out of range).
    Node *Item(int index) const;
    Node *operator()(int index) const { return Item(index); }

    // Adds a node relative to another (null relative: a new last top node). Under a sorted
    // parent the node goes to its label's place. A bad relationship raises error 5.
    Node *Add(Node *relative = nullptr, int relationship = relLast);
    // Removes the node at a 1-based Index and its whole subtree.
    void Remove(int index);
    void Clear();

    // The top nodes, in order (the root is the first of them).
    const std::vector<Node *> &topNodes() const { return m_top->m_children; }

    Node *SelectedItem() const { return m_pSelected; }
    void setSelectedItem(Node *node);
    Node *DropHighlight() const { return m_pDropHighlight; }
    void setDropHighlight(Node *node);
    bool Visible() const { return m_bVisible; }
    void setVisible(bool visible);
    // Whether the top nodes are kept in label order (the tree-wide flag of the outline pane).
    bool Sorted() const { return m_top->m_bSorted; }
    void setSorted(bool sorted);

    void setObserver(NodesObserver *observer) { m_pObserver = observer; }
    NodesObserver *observer() const { return m_pObserver; }

    // Enumeration in collection order. Do not add or remove nodes while iterating.
    class const_iterator {
    public:
        Node *operator*() const { return (*m_slots)[m_i]; }
        const_iterator &operator++() {
            ++m_i;
            skip();
            return *this;
        }
        bool operator!=(const const_iterator &o) const { return m_i != o.m_i; }
        bool operator==(const const_iterator &o) const { return m_i == o.m_i; }

    private:
        friend class Nodes;
        const_iterator(const std::vector<Node *> *list, size_t i) : m_slots(list), m_i(i) {
            skip();
        }
        void skip() {
            while (m_i < m_slots->size() && !(*m_slots)[m_i]) {
                ++m_i;
            }
        }
        const std::vector<Node *> *m_slots;
        size_t m_i;
    };
    const_iterator begin() const { return const_iterator(&m_slots, 0); }
    const_iterator end() const { return const_iterator(&m_slots, m_slots.size()); }

private:
    friend class Node;

    int indexOf(const Node *node) const;
    void insertChild(Node *parent, Node *child, int row);
    int sortedRow(const Node *parent, const QString &label) const;
    void reposition(Node *node);
    void sortChildren(Node *parent);
    void detach(Node *node);
    void release(Node *node);
    void fenwickAdd(qint64 slot, int delta);
    int fenwickPrefix(qint64 slot) const;
    void compact();
    Node *externalParent(Node *node) const { return node == m_top ? nullptr : node; }

    Node *m_top;                 // hidden parent of the top nodes
    std::vector<Node *> m_slots; // by insertion sequence; null once removed
    std::vector<int> m_fenwick;  // 1-based Fenwick tree over live slots
    int m_iCount = 0;
    quint64 m_lRevision = 0;
    Node *m_pSelected = nullptr;
    Node *m_pDropHighlight = nullptr;
    bool m_bVisible = true;
    NodesObserver *m_pObserver = nullptr;
};
