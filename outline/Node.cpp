#include "outline/Node.h"

#include "util/ErrorLog.h"

#include <QCollator>

#include <algorithm>

namespace {

const QString kFolder = QStringLiteral("Folder");
const QString kFolderTagged = QStringLiteral("FolderTagged");
const QString kFolderSelected = QStringLiteral("FolderSelected");
const QString kFolderTaggedSelected = QStringLiteral("FolderTaggedSelected");

// One collator for every sorted node: the user's locale, case ignored.
const QCollator &labelCollator() {
    static const QCollator collator = [] {
        QCollator c;
        c.setCaseSensitivity(Qt::CaseInsensitive);
        return c;
    }();
    return collator;
}

int lowBit(int i) {
    return i & -i;
}

} // namespace

// ---- Node ----------------------------------------------------------------------------------

void Node::checkAlive() const {
    if (!m_pTree) {
        modMain::Raise(errNodeRemoved, QStringLiteral("The entry has been removed"));
    }
}

int Node::repairRowsUpTo(const Node *child) const {
    // Rows before m_iDirtyFrom are right; renumber from there up to the child only, so that a
    // walk from front to back (deleting tagged entries, say) repairs each row once.
    const int n = int(m_children.size());
    for (int i = m_iDirtyFrom; i < n; ++i) {
        Node *c = m_children[size_t(i)];
        c->m_iRow = i;
        if (c == child) {
            m_iDirtyFrom = i + 1 < n ? i + 1 : INT32_MAX;
            return i;
        }
    }
    m_iDirtyFrom = INT32_MAX;
    return -1;
}

void Node::setText(const QString &text) {
    checkAlive();
    if (text == m_sText) {
        return;
    }
    m_sText = text;
    m_pTree->touch();
    if (NodesObserver *o = m_pTree->m_pObserver) {
        o->dataChanged(this, NodeRole::Label);
    }
    if (m_pParent->m_bSorted) {
        m_pTree->reposition(this);
    }
}

void Node::setTag(const QByteArray &tag) {
    m_baTag = tag;
    m_pShared.reset();
    if (m_pTree) {
        m_pTree->touch();
    }
}

void Node::setTagShared(const std::shared_ptr<const QByteArray> &buffer, qsizetype from,
                        qsizetype length) {
    if (!buffer) {
        setTag(QByteArray());
        return;
    }
    from = qBound<qsizetype>(0, from, buffer->size());
    length = qBound<qsizetype>(0, length, buffer->size() - from);
    // Only a buffer that owns its bytes is kept alive by holding it.
    if (length == 0 || !QByteArray(*buffer).data_ptr().isMutable()) {
        setTag(buffer->sliced(from, length));
        return;
    }
    m_baTag = QByteArray();
    m_pShared = buffer;
    m_iSharedFrom = from;
    m_iSharedLength = length;
    if (m_pTree) {
        m_pTree->touch();
    }
}

void Node::setTagFrom(const Node &source) {
    if (!source.m_pShared) {
        setTag(source.m_baTag);
        return;
    }
    m_baTag = QByteArray();
    m_pShared = source.m_pShared;
    m_iSharedFrom = source.m_iSharedFrom;
    m_iSharedLength = source.m_iSharedLength;
    if (m_pTree) {
        m_pTree->touch();
    }
}

void Node::unshareTag() const {
    m_baTag = m_pShared->sliced(m_iSharedFrom, m_iSharedLength);
    m_pShared.reset();
}

QString Node::Image() const {
    return m_bImageTagged ? kFolderTagged : kFolder;
}

void Node::setImage(const QString &key) {
    checkAlive();
    bool tagged;
    if (key == kFolder) {
        tagged = false;
    } else if (key == kFolderTagged) {
        tagged = true;
    } else {
        modMain::Raise(modMain::errInvalidProcedureCall);
    }
    if (tagged != m_bImageTagged) {
        m_bImageTagged = tagged;
        m_pTree->touch();
        if (NodesObserver *o = m_pTree->m_pObserver) {
            o->dataChanged(this, NodeRole::Icon);
        }
    }
}

QString Node::SelectedImage() const {
    return m_bSelectedImageTagged ? kFolderTaggedSelected : kFolderSelected;
}

void Node::setSelectedImage(const QString &key) {
    checkAlive();
    bool tagged;
    if (key == kFolderSelected) {
        tagged = false;
    } else if (key == kFolderTaggedSelected) {
        tagged = true;
    } else {
        modMain::Raise(modMain::errInvalidProcedureCall);
    }
    if (tagged != m_bSelectedImageTagged) {
        m_bSelectedImageTagged = tagged;
        if (NodesObserver *o = m_pTree->m_pObserver) {
            o->dataChanged(this, NodeRole::Icon);
        }
    }
}

void Node::setExpanded(bool expanded) {
    checkAlive();
    if (expanded == m_bExpanded) {
        return;
    }
    m_bExpanded = expanded;
    if (NodesObserver *o = m_pTree->m_pObserver) {
        o->dataChanged(this, NodeRole::Expanded);
    }
}

void Node::setSorted(bool sorted) {
    checkAlive();
    m_bSorted = sorted;
    if (sorted) {
        m_pTree->sortChildren(this);
    }
}

bool Node::Selected() const {
    return m_pTree && m_pTree->m_pSelected == this;
}

void Node::setSelected(bool selected) {
    checkAlive();
    if (selected) {
        m_pTree->setSelectedItem(this);
    } else if (m_pTree->m_pSelected == this) {
        m_pTree->setSelectedItem(nullptr);
    }
}

int Node::Index() const {
    checkAlive();
    return m_pTree->indexOf(this);
}

Node *Node::Parent() const {
    checkAlive();
    return m_pTree->externalParent(m_pParent);
}

int Node::Children() const {
    checkAlive();
    return int(m_children.size());
}

Node *Node::Child() const {
    checkAlive();
    return m_children.empty() ? nullptr : m_children.front();
}

int Node::row() const {
    checkAlive();
    const auto &siblings = m_pParent->m_children;
    if (size_t(m_iRow) < siblings.size() && siblings[size_t(m_iRow)] == this) {
        return m_iRow;
    }
    return m_pParent->repairRowsUpTo(this);
}

Node *Node::childAt(int row) const {
    return (row >= 0 && size_t(row) < m_children.size()) ? m_children[size_t(row)] : nullptr;
}

Node *Node::Next() const {
    return m_pParent->childAt(row() + 1);
}

Node *Node::Previous() const {
    return m_pParent->childAt(row() - 1);
}

Node *Node::FirstSibling() const {
    checkAlive();
    return m_pParent->m_children.front();
}

Node *Node::LastSibling() const {
    checkAlive();
    return m_pParent->m_children.back();
}

Node *Node::Root() const {
    checkAlive();
    const Node *n = this;
    while (n->m_pParent != m_pTree->m_top) {
        n = n->m_pParent;
    }
    return const_cast<Node *>(n);
}

void Node::EnsureVisible() {
    checkAlive();
    for (Node *a = m_pParent; a != m_pTree->m_top; a = a->m_pParent) {
        a->setExpanded(true);
    }
    if (NodesObserver *o = m_pTree->m_pObserver) {
        o->ensureVisible(this);
    }
}

// ---- NodeRef -------------------------------------------------------------------------------

NodeRef::NodeRef(Node *node) : m_pNode(node) {
    if (m_pNode) {
        ++m_pNode->m_iRefs;
    }
}

NodeRef::NodeRef(const NodeRef &other) : NodeRef(other.m_pNode) {}

NodeRef &NodeRef::operator=(const NodeRef &other) {
    return *this = other.m_pNode;
}

NodeRef &NodeRef::operator=(Node *node) {
    if (node != m_pNode) {
        if (node) {
            ++node->m_iRefs;
        }
        release();
        m_pNode = node;
    }
    return *this;
}

NodeRef::~NodeRef() {
    release();
}

void NodeRef::release() {
    if (m_pNode && --m_pNode->m_iRefs == 0 && m_pNode->isRemoved()) {
        delete m_pNode;
    }
    m_pNode = nullptr;
}

// ---- Nodes ---------------------------------------------------------------------------------

Nodes::Nodes() : m_top(new Node) {
    m_top->m_pTree = this;
    m_fenwick.push_back(0);
}

Nodes::~Nodes() {
    for (Node *n : m_slots) {
        if (n) {
            release(n);
        }
    }
    m_top->m_children.clear();
    delete m_top;
}

int Nodes::fenwickPrefix(qint64 slot) const {
    int sum = 0;
    for (int i = int(slot) + 1; i > 0; i -= lowBit(i)) {
        sum += m_fenwick[size_t(i)];
    }
    return sum;
}

void Nodes::fenwickAdd(qint64 slot, int delta) {
    const int n = int(m_fenwick.size()) - 1;
    for (int i = int(slot) + 1; i <= n; i += lowBit(i)) {
        m_fenwick[size_t(i)] += delta;
    }
}

int Nodes::indexOf(const Node *node) const {
    return fenwickPrefix(node->m_lSeq);
}

Node *Nodes::Item(int index) const {
    if (index < 1 || index > m_iCount) {
        modMain::Raise(modMain::errSubscriptOutOfRange);
    }
    // Binary descent: the smallest slot whose prefix count reaches index.
    const int n = int(m_fenwick.size()) - 1;
    int step = 1;
    while (step * 2 <= n) {
        step *= 2;
    }
    int pos = 0;
    int rest = index;
    for (; step > 0; step /= 2) {
        if (pos + step <= n && m_fenwick[size_t(pos + step)] < rest) {
            pos += step;
            rest -= m_fenwick[size_t(pos)];
        }
    }
    return m_slots[size_t(pos)];
}

void Nodes::compact() {
    std::vector<Node *> live;
    live.reserve(size_t(m_iCount));
    for (Node *n : m_slots) {
        if (n) {
            n->m_lSeq = qint64(live.size());
            live.push_back(n);
        }
    }
    m_slots.swap(live);
    // Every slot is live: the Fenwick cell i covers lowBit(i) slots.
    m_fenwick.assign(m_slots.size() + 1, 0);
    for (size_t i = 1; i < m_fenwick.size(); ++i) {
        m_fenwick[i] = lowBit(int(i));
    }
}

int Nodes::sortedRow(const Node *parent, const QString &label) const {
    const QCollator &c = labelCollator();
    const auto &ch = parent->m_children;
    auto it = std::upper_bound(ch.begin(), ch.end(), label, [&](const QString &l, const Node *n) {
        return c.compare(l, n->m_sText) < 0;
    });
    return int(it - ch.begin());
}

void Nodes::insertChild(Node *parent, Node *child, int row) {
    touch();
    Node *ext = externalParent(parent);
    if (m_pObserver) {
        m_pObserver->beforeInsert(ext, row);
    }
    child->m_pParent = parent;
    auto &ch = parent->m_children;
    ch.insert(ch.begin() + row, child);
    if (size_t(row) + 1 == ch.size()) {
        child->m_iRow = row;
    } else {
        parent->m_iDirtyFrom = std::min(parent->m_iDirtyFrom, row);
    }
    if (m_pObserver) {
        m_pObserver->afterInsert(ext, row);
    }
}

Node *Nodes::Add(Node *relative, int relationship) {
    Node *parent = m_top;
    int row = 0;
    if (relative) {
        relative->checkAlive();
        if (relative->m_pTree != this) {
            modMain::Raise(modMain::errInvalidProcedureCall);
        }
        switch (relationship) {
        case relFirst:
            parent = relative->m_pParent;
            row = 0;
            break;
        case relLast:
            parent = relative->m_pParent;
            row = int(parent->m_children.size());
            break;
        case relNext:
            parent = relative->m_pParent;
            row = relative->row() + 1;
            break;
        case relPrevious:
            parent = relative->m_pParent;
            row = relative->row();
            break;
        case relChild:
            parent = relative;
            row = int(parent->m_children.size());
            break;
        default:
            modMain::Raise(modMain::errInvalidProcedureCall);
        }
    } else {
        row = int(m_top->m_children.size());
    }
    if (parent->m_bSorted) {
        row = sortedRow(parent, QString());
    }

    Node *node = new Node;
    node->m_pTree = this;
    node->m_lSeq = qint64(m_slots.size());
    m_slots.push_back(node);
    // Append one Fenwick cell: it covers the slots (i - lowBit(i), i].
    const int i = int(m_slots.size());
    m_fenwick.push_back(1 + fenwickPrefix(i - 2) - fenwickPrefix(i - lowBit(i) - 1));
    ++m_iCount;
    insertChild(parent, node, row);
    return node;
}

void Nodes::detach(Node *node) {
    touch();
    Node *parent = node->m_pParent;
    const int row = node->row();
    Node *ext = externalParent(parent);

    // The selection moves off a removed subtree: next sibling, else previous, else the parent.
    Node *newSelection = nullptr;
    bool selectionLost = false;
    for (Node *s = m_pSelected; s && s != m_top; s = s->m_pParent) {
        if (s == node) {
            selectionLost = true;
            newSelection = parent->childAt(row + 1);
            if (!newSelection) {
                newSelection = parent->childAt(row - 1);
            }
            if (!newSelection) {
                newSelection = ext;
            }
            break;
        }
    }

    if (m_pObserver) {
        m_pObserver->beforeRemove(ext, row, 1);
    }
    auto &ch = parent->m_children;
    ch.erase(ch.begin() + row);
    if (size_t(row) < ch.size()) {
        parent->m_iDirtyFrom = std::min(parent->m_iDirtyFrom, row);
    }
    if (selectionLost) {
        m_pSelected = nullptr;
    }
    release(node);
    if (m_pObserver) {
        m_pObserver->afterRemove(ext, row, 1);
    }
    if (selectionLost && newSelection) {
        setSelectedItem(newSelection);
    }
}

void Nodes::release(Node *node) {
    std::vector<Node *> stack{node};
    while (!stack.empty()) {
        Node *n = stack.back();
        stack.pop_back();
        stack.insert(stack.end(), n->m_children.begin(), n->m_children.end());
        n->m_children.clear();
        fenwickAdd(n->m_lSeq, -1);
        m_slots[size_t(n->m_lSeq)] = nullptr;
        --m_iCount;
        if (m_pSelected == n) {
            m_pSelected = nullptr;
        }
        if (m_pDropHighlight == n) {
            m_pDropHighlight = nullptr;
        }
        n->m_pTree = nullptr;
        n->m_pParent = nullptr;
        if (n->m_iRefs == 0) {
            delete n;
        }
    }
}

void Nodes::Remove(int index) {
    detach(Item(index));
    if (m_slots.size() > 1024 && m_slots.size() > 2 * size_t(m_iCount)) {
        compact();
    }
}

void Nodes::Clear() {
    touch();
    if (m_pObserver) {
        m_pObserver->beforeReset();
    }
    for (Node *n : m_slots) {
        if (n) {
            n->m_children.clear(); // every node is in the slots; release them one by one
            release(n);
        }
    }
    m_top->m_children.clear();
    m_top->m_iDirtyFrom = INT32_MAX;
    m_slots.clear();
    m_fenwick.assign(1, 0);
    if (m_pObserver) {
        m_pObserver->afterReset();
    }
}

void Nodes::setSelectedItem(Node *node) {
    if (node) {
        node->checkAlive();
    }
    if (node == m_pSelected) {
        return;
    }
    Node *old = m_pSelected;
    m_pSelected = node;
    if (m_pObserver) {
        if (old) {
            m_pObserver->dataChanged(old, NodeRole::Selected);
        }
        if (node) {
            m_pObserver->dataChanged(node, NodeRole::Selected);
        }
    }
}

void Nodes::setDropHighlight(Node *node) {
    if (node) {
        node->checkAlive();
    }
    if (node == m_pDropHighlight) {
        return;
    }
    Node *old = m_pDropHighlight;
    m_pDropHighlight = node;
    if (m_pObserver) {
        if (old) {
            m_pObserver->dataChanged(old, NodeRole::DropHighlight);
        }
        if (node) {
            m_pObserver->dataChanged(node, NodeRole::DropHighlight);
        }
    }
}

void Nodes::setVisible(bool visible) {
    if (visible == m_bVisible) {
        return;
    }
    m_bVisible = visible;
    if (m_pObserver) {
        m_pObserver->visibleChanged(visible);
    }
}

void Nodes::setSorted(bool sorted) {
    m_top->m_bSorted = sorted;
    if (sorted) {
        sortChildren(m_top);
    }
}

void Nodes::sortChildren(Node *parent) {
    touch();
    auto &ch = parent->m_children;
    if (ch.size() < 2) {
        return;
    }
    const QCollator &c = labelCollator();
    auto less = [&](const Node *a, const Node *b) { return c.compare(a->m_sText, b->m_sText) < 0; };
    if (std::is_sorted(ch.begin(), ch.end(), less)) {
        return;
    }
    if (m_pObserver) {
        m_pObserver->beforeReorder(externalParent(parent));
    }
    std::stable_sort(ch.begin(), ch.end(), less);
    parent->m_iDirtyFrom = 0;
    if (m_pObserver) {
        m_pObserver->afterReorder(externalParent(parent));
    }
}

void Nodes::reposition(Node *node) {
    touch();
    Node *parent = node->m_pParent;
    auto &ch = parent->m_children;
    const int from = node->row();
    const QCollator &c = labelCollator();
    // Already in place when it does not sort before its left neighbour nor after its right one.
    const bool leftOk = from == 0 || c.compare(ch[size_t(from - 1)]->m_sText, node->m_sText) <= 0;
    const bool rightOk = size_t(from) + 1 == ch.size() ||
                         c.compare(node->m_sText, ch[size_t(from + 1)]->m_sText) <= 0;
    if (leftOk && rightOk) {
        return;
    }
    if (m_pObserver) {
        m_pObserver->beforeReorder(externalParent(parent));
    }
    ch.erase(ch.begin() + from);
    const int to = sortedRow(parent, node->m_sText);
    ch.insert(ch.begin() + to, node);
    parent->m_iDirtyFrom = std::min({parent->m_iDirtyFrom, from, to});
    if (m_pObserver) {
        m_pObserver->afterReorder(externalParent(parent));
    }
}
