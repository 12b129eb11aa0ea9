#pragma once

#include "outline/Node.h"

#include <QAbstractItemModel>
#include <QIcon>

#include <functional>

// Item model over one entry tree: a row per node, one column, the node itself behind every index.
// It follows the tree through its observer. While the tree is hidden (a batch of commands) the
// model is held inside one reset, so a batch of any size costs the views one rebuild.
class OutlineModel : public QAbstractItemModel, public NodesObserver {
    Q_OBJECT
public:
    // Icon for an icon key ("Folder", "FolderSelected", "FolderTagged", "FolderTaggedSelected").
    using IconProvider = std::function<QIcon(const QString &key)>;
    static void setIconProvider(IconProvider provider);

    explicit OutlineModel(Nodes &nodes, QObject *parent = nullptr);
    ~OutlineModel() override;

    Nodes &nodes() const { return m_nodes; }
    Node *nodeFromIndex(const QModelIndex &index) const;
    QModelIndex indexFromNode(Node *node) const;

    // Whether labels may be edited in place (false for a read-only document).
    void setEditable(bool editable) { m_bEditable = editable; }
    bool editable() const { return m_bEditable; }
    // True between the hiding of the tree and its showing again.
    bool inBatch() const { return m_bInBatch; }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    // The node's Expanded flag changed outside a batch.
    void nodeExpandedChanged(const QModelIndex &index, bool expanded);
    // The tree's selection moved (invalid index: nothing selected).
    void nodeSelected(const QModelIndex &index);
    // The tree asks to scroll to the node.
    void ensureVisibleRequested(const QModelIndex &index);
    // A batch ended and the model was rebuilt: views re-read expansion and selection.
    void batchEnded();

private:
    void beforeInsert(Node *parent, int row) override;
    void afterInsert(Node *parent, int row) override;
    void beforeRemove(Node *parent, int row, int count) override;
    void afterRemove(Node *parent, int row, int count) override;
    void dataChanged(Node *node, NodeRole role) override;
    void beforeReorder(Node *parent) override;
    void afterReorder(Node *parent) override;
    void beforeReset() override;
    void afterReset() override;
    void ensureVisible(Node *node) override;
    void visibleChanged(bool visible) override;

    QModelIndex parentIndex(Node *parent) const;
    const std::vector<Node *> &childrenOf(Node *parent) const;

    Nodes &m_nodes;
    bool m_bEditable = true;
    bool m_bInBatch = false;
    QModelIndexList m_reorderFrom; // persistent indexes under a parent being reordered
    QList<Node *> m_reorderNodes;
};
