#include "support/TreeText.h"

#include "outline/modNodes.h"

#include <set>
#include <vector>

namespace {

QString shape(const Node *node, bool tags) {
    if (!node) {
        return QStringLiteral("-");
    }
    QString s = node->Text();
    if (tags && node->ImageTagged()) {
        s += QLatin1Char('*');
    }
    if (node->Children() > 0) {
        QStringList parts;
        for (const Node *c = node->Child(); c; c = c->Next()) {
            parts << shape(c, tags);
        }
        s += QLatin1Char('(') + parts.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return s;
}

} // namespace

QString ModelShape(const QAbstractItemModel &model, const QModelIndex &index) {
    const QModelIndex at = index.isValid() ? index : model.index(0, 0);
    if (!at.isValid()) {
        return QStringLiteral("-");
    }
    QStringList parts;
    for (int r = 0; r < model.rowCount(at); ++r) {
        parts << ModelShape(model, model.index(r, 0, at));
    }
    const QString label = at.data(Qt::EditRole).toString();
    return parts.isEmpty() ? label : label + '(' + parts.join(' ') + ')';
}

QString TreeShape(const Node *node) {
    return shape(node, false);
}

QString TreeShapeTagged(const Node *node) {
    return shape(node, true);
}

QString TreeKeys(const Node *node) {
    QStringList out;
    std::vector<const Node *> stack;
    if (node) {
        stack.push_back(node);
    }
    while (!stack.empty()) {
        const Node *n = stack.back();
        stack.pop_back();
        out << n->Text() + QLatin1Char('=') + n->Key();
        const auto &children = n->childList();
        stack.insert(stack.end(), children.rbegin(), children.rend());
    }
    return out.join(QLatin1Char(' '));
}

Node *FindEntry(const Nodes &nodes, const QString &label) {
    for (Node *n : nodes) {
        if (n->Text() == label) {
            return n;
        }
    }
    return nullptr;
}

QStringList TreeProblemsAfterRenumbering(Nodes &nodes) {
    QStringList problems;
    if (nodes.Count() == 0) {
        return problems;
    }
    Node *root = nodes.Item(1)->Root();
    modNodes::NodeSetKeys(root, QStringLiteral("KEY0"));
    int reached = 0;
    std::set<QString> keys;
    std::vector<std::pair<Node *, QString>> stack{{root, QStringLiteral("KEY0")}};
    while (!stack.empty()) {
        auto [n, expected] = stack.back();
        stack.pop_back();
        ++reached;
        if (n->Key() != expected) {
            problems
                << QStringLiteral("%1 keyed %2, expected %3").arg(n->Text(), n->Key(), expected);
        }
        if (!keys.insert(n->Key()).second) {
            problems << QStringLiteral("duplicate key %1").arg(n->Key());
        }
        int i = 0;
        for (Node *c : n->childList()) {
            stack.push_back({c, expected + QLatin1Char('.') + QString::number(++i)});
        }
    }
    if (reached != nodes.Count() || nodes.topNodes().size() != 1) {
        problems << QStringLiteral("%1 entries in the collection, %2 under the root")
                        .arg(nodes.Count())
                        .arg(reached);
    }
    return problems;
}
