#pragma once

#include "outline/Node.h"

#include <QAbstractItemModel>
#include <QString>
#include <QStringList>

// Compact text forms of an entry tree for comparisons in tests.

// "root(a(a1 a2) b)": labels in pre-order, children in brackets; "-" for null.
QString TreeShape(const Node *node);
// The same form of what an item model shows under its first top row.
QString ModelShape(const QAbstractItemModel &model, const QModelIndex &index = {});
// The shape with tag marks: a tagged entry's label is followed by "*".
QString TreeShapeTagged(const Node *node);
// "root=KEY0 a=KEY0.1 ...": label and key of every entry, in pre-order.
QString TreeKeys(const Node *node);
// The first entry with the label, in collection order; null when none.
Node *FindEntry(const Nodes &nodes, const QString &label);
// What is wrong with a tree after it was renumbered from its root with "KEY0", as a save does:
// entries in the collection that the walk from the root does not reach, keys that do not follow
// the positions, duplicate keys. Empty when all is well.
QStringList TreeProblemsAfterRenumbering(Nodes &nodes);
