#include "editor/OutlineModel.h"

#include "util/ErrorLog.h"

#include <QBrush>
#include <QGuiApplication>
#include <QPalette>

namespace {
OutlineModel::IconProvider &iconProvider() {
    static OutlineModel::IconProvider provider;
    return provider;
}
} // namespace

void OutlineModel::setIconProvider(IconProvider provider) {
    iconProvider() = std::move(provider);
}

OutlineModel::OutlineModel(Nodes &nodes, QObject *parent)
    : QAbstractItemModel(parent), m_nodes(nodes) {
    m_nodes.setObserver(this);
}

OutlineModel::~OutlineModel() {
    if (m_nodes.observer() == this) {
        m_nodes.setObserver(nullptr);
    }
}

Node *OutlineModel::nodeFromIndex(const QModelIndex &index) const {
    if (!index.isValid() || index.model() != this) {
        return nullptr;
    }
    return static_cast<Node *>(index.internalPointer());
}

QModelIndex OutlineModel::indexFromNode(Node *node) const {
    if (!node || node->isRemoved() || node->tree() != &m_nodes) {
        return {};
    }
    return createIndex(node->row(), 0, node);
}

QModelIndex OutlineModel::parentIndex(Node *parent) const {
    return parent ? indexFromNode(parent) : QModelIndex();
}

const std::vector<Node *> &OutlineModel::childrenOf(Node *parent) const {
    return parent ? parent->childList() : m_nodes.topNodes();
}

QModelIndex OutlineModel::index(int row, int column, const QModelIndex &parent) const {
    if (column != 0 || row < 0 || (parent.isValid() && parent.column() != 0)) {
        return {};
    }
    const std::vector<Node *> &children = childrenOf(nodeFromIndex(parent));
    if (row >= static_cast<int>(children.size())) {
        return {};
    }
    return createIndex(row, 0, children[static_cast<size_t>(row)]);
}

QModelIndex OutlineModel::parent(const QModelIndex &child) const {
    Node *node = nodeFromIndex(child);
    if (!node || node->isRemoved()) {
        return {};
    }
    return parentIndex(node->Parent());
}

int OutlineModel::rowCount(const QModelIndex &parent) const {
    if (parent.isValid() && parent.column() != 0) {
        return 0;
    }
    return static_cast<int>(childrenOf(nodeFromIndex(parent)).size());
}

int OutlineModel::columnCount(const QModelIndex &) const {
    return 1;
}

bool OutlineModel::hasChildren(const QModelIndex &parent) const {
    return rowCount(parent) > 0;
}

QVariant OutlineModel::data(const QModelIndex &index, int role) const {
    Node *node = nodeFromIndex(index);
    if (!node || node->isRemoved()) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return node->Text();
    case Qt::DecorationRole: {
        const IconProvider &provider = iconProvider();
        if (!provider) {
            return {};
        }
        return provider(node->Selected() ? node->SelectedImage() : node->Image());
    }
    case Qt::BackgroundRole:
        // The entry a dragged entry would be dropped on.
        if (node == m_nodes.DropHighlight()) {
            QColor c = QGuiApplication::palette().color(QPalette::Highlight);
            c.setAlpha(90);
            return QBrush(c);
        }
        return {};
    default:
        return {};
    }
}

bool OutlineModel::setData(const QModelIndex &index, const QVariant &value, int role) {
    Node *node = nodeFromIndex(index);
    if (!node || role != Qt::EditRole || !m_bEditable) {
        return false;
    }
    return modMain::Guarded([&] {
        PROC("OutlineModel setData");
        node->setText(value.toString());
        return true;
    });
}

Qt::ItemFlags OutlineModel::flags(const QModelIndex &index) const {
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (m_bEditable) {
        f |= Qt::ItemIsEditable;
    }
    return f;
}

// Notifications from the tree. Inside a batch every one of them is covered by the open reset.

void OutlineModel::beforeInsert(Node *parent, int row) {
    if (!m_bInBatch) {
        beginInsertRows(parentIndex(parent), row, row);
    }
}

void OutlineModel::afterInsert(Node *, int) {
    if (!m_bInBatch) {
        endInsertRows();
    }
}

void OutlineModel::beforeRemove(Node *parent, int row, int count) {
    if (!m_bInBatch) {
        beginRemoveRows(parentIndex(parent), row, row + count - 1);
    }
}

void OutlineModel::afterRemove(Node *, int, int) {
    if (!m_bInBatch) {
        endRemoveRows();
    }
}

void OutlineModel::dataChanged(Node *node, NodeRole role) {
    if (m_bInBatch) {
        return;
    }
    const QModelIndex idx = indexFromNode(node);
    if (!idx.isValid()) {
        return;
    }
    switch (role) {
    case NodeRole::Label:
        emit QAbstractItemModel::dataChanged(idx, idx, {Qt::DisplayRole, Qt::EditRole});
        break;
    case NodeRole::Icon:
        emit QAbstractItemModel::dataChanged(idx, idx, {Qt::DecorationRole});
        break;
    case NodeRole::Selected:
        emit QAbstractItemModel::dataChanged(idx, idx, {Qt::DecorationRole});
        if (node == m_nodes.SelectedItem()) {
            emit nodeSelected(idx);
        } else if (!m_nodes.SelectedItem()) {
            emit nodeSelected(QModelIndex());
        }
        break;
    case NodeRole::Expanded:
        emit nodeExpandedChanged(idx, node->Expanded());
        break;
    case NodeRole::DropHighlight:
        emit QAbstractItemModel::dataChanged(idx, idx, {Qt::BackgroundRole});
        break;
    }
}

void OutlineModel::beforeReorder(Node *parent) {
    if (m_bInBatch) {
        return;
    }
    QList<QPersistentModelIndex> parents;
    if (parent) {
        parents.append(QPersistentModelIndex(parentIndex(parent)));
    }
    emit layoutAboutToBeChanged(parents, QAbstractItemModel::VerticalSortHint);
    m_reorderFrom.clear();
    m_reorderNodes.clear();
    for (const QModelIndex &p : persistentIndexList()) {
        Node *node = nodeFromIndex(p);
        if (node && node->Parent() == parent) {
            m_reorderFrom.append(p);
            m_reorderNodes.append(node);
        }
    }
}

void OutlineModel::afterReorder(Node *parent) {
    if (m_bInBatch) {
        return;
    }
    QModelIndexList to;
    to.reserve(m_reorderNodes.size());
    for (Node *node : m_reorderNodes) {
        to.append(indexFromNode(node));
    }
    changePersistentIndexList(m_reorderFrom, to);
    m_reorderFrom.clear();
    m_reorderNodes.clear();
    QList<QPersistentModelIndex> parents;
    if (parent) {
        parents.append(QPersistentModelIndex(parentIndex(parent)));
    }
    emit layoutChanged(parents, QAbstractItemModel::VerticalSortHint);
}

void OutlineModel::beforeReset() {
    if (!m_bInBatch) {
        beginResetModel();
    }
}

void OutlineModel::afterReset() {
    if (!m_bInBatch) {
        endResetModel();
        emit batchEnded();
    }
}

void OutlineModel::ensureVisible(Node *node) {
    if (!m_bInBatch) {
        emit ensureVisibleRequested(indexFromNode(node));
    }
}

void OutlineModel::visibleChanged(bool visible) {
    if (!visible && !m_bInBatch) {
        m_bInBatch = true;
        beginResetModel();
    } else if (visible && m_bInBatch) {
        m_bInBatch = false;
        endResetModel();
        emit batchEnded();
    }
}
