#include "support/FakeDocument.h"

#include "outline/modNodes.h"

void FakeTextPane::SetTextRTF(const QByteArray &rtf) {
    m_rtf = rtf;
    ++loads;
    if (m_bVisible) {
        ++loadsWhileVisible;
    }
    if (changed) {
        changed();
    }
}

void FakeTextPane::ApplyFontToAll(const PaneFont &font) {
    m_rtf += "{\\font " + font.name.toLatin1() + ' ' + QByteArray::number(font.size) + '}';
}

TestDocument::TestDocument(bool active) {
    auto p = std::make_unique<FakeTextPane>();
    pane = p.get();
    doc.setTextPane(std::move(p));
    doc.setView(&view);
    if (active) {
        Documents::SetActive(&doc);
    }
}

TestDocument::~TestDocument() = default;

MirrorObserver::MirrorObserver(Nodes &nodes) : m_nodes(nodes) {
    rebuild(nullptr);
    m_nodes.setObserver(this);
}

MirrorObserver::~MirrorObserver() {
    m_nodes.setObserver(nullptr);
}

const std::vector<Node *> &MirrorObserver::actual(Node *parent) const {
    return parent ? parent->childList() : m_nodes.topNodes();
}

void MirrorObserver::rebuild(Node *parent) {
    m_mirror[parent] = actual(parent);
    for (Node *child : actual(parent)) {
        rebuild(child);
    }
}

void MirrorObserver::beforeInsert(Node *parent, int row) {
    if (!m_pending.isEmpty()) {
        protocolErrors << QStringLiteral("insert inside %1").arg(m_pending);
    }
    if (row < 0 || size_t(row) > m_mirror[parent].size()) {
        protocolErrors << QStringLiteral("insert at bad row %1").arg(row);
    }
    m_pending = QStringLiteral("insert");
}

void MirrorObserver::afterInsert(Node *parent, int row) {
    if (m_pending != QLatin1String("insert")) {
        protocolErrors << QStringLiteral("afterInsert without beforeInsert");
    }
    m_pending.clear();
    auto &list = m_mirror[parent];
    Node *added = actual(parent).at(size_t(row));
    list.insert(list.begin() + row, added);
    m_mirror[added] = added->childList();
}

void MirrorObserver::beforeRemove(Node *parent, int row, int count) {
    if (!m_pending.isEmpty()) {
        protocolErrors << QStringLiteral("remove inside %1").arg(m_pending);
    }
    auto &list = m_mirror[parent];
    if (row < 0 || count < 1 || size_t(row + count) > list.size()) {
        protocolErrors << QStringLiteral("remove of bad rows %1+%2").arg(row).arg(count);
        return;
    }
    // What is removed must be what the tree has there right now.
    for (int i = 0; i < count; ++i) {
        if (list[size_t(row + i)] != actual(parent).at(size_t(row + i))) {
            protocolErrors << QStringLiteral("removed row %1 differs").arg(row + i);
        }
    }
    list.erase(list.begin() + row, list.begin() + row + count);
    m_pending = QStringLiteral("remove");
}

void MirrorObserver::afterRemove(Node *, int, int) {
    if (m_pending != QLatin1String("remove")) {
        protocolErrors << QStringLiteral("afterRemove without beforeRemove");
    }
    m_pending.clear();
}

void MirrorObserver::dataChanged(Node *node, NodeRole role) {
    if (!node || node->isRemoved()) {
        protocolErrors << QStringLiteral("dataChanged for a removed node");
    }
    ++changes[role];
}

void MirrorObserver::beforeReorder(Node *) {
    if (!m_pending.isEmpty()) {
        protocolErrors << QStringLiteral("reorder inside %1").arg(m_pending);
    }
    m_pending = QStringLiteral("reorder");
}

void MirrorObserver::afterReorder(Node *parent) {
    if (m_pending != QLatin1String("reorder")) {
        protocolErrors << QStringLiteral("afterReorder without beforeReorder");
    }
    m_pending.clear();
    auto &list = m_mirror[parent];
    std::vector<Node *> now = actual(parent);
    std::vector<Node *> a = list, b = now;
    std::sort(a.begin(), a.end());
    std::sort(b.begin(), b.end());
    if (a != b) {
        protocolErrors << QStringLiteral("reorder changed the set of children");
    }
    list = now;
}

void MirrorObserver::beforeReset() {
    m_pending = QStringLiteral("reset");
}

void MirrorObserver::afterReset() {
    m_pending.clear();
    m_mirror.clear();
    rebuild(nullptr);
}

QStringList MirrorObserver::differences() const {
    QStringList out = protocolErrors;
    std::vector<Node *> stack{nullptr};
    while (!stack.empty()) {
        Node *parent = stack.back();
        stack.pop_back();
        auto it = m_mirror.find(parent);
        const std::vector<Node *> &real = actual(parent);
        if (it == m_mirror.end() || it->second != real) {
            out << QStringLiteral("children of %1 differ")
                       .arg(parent ? parent->Text() : QStringLiteral("<top>"));
            continue;
        }
        stack.insert(stack.end(), real.begin(), real.end());
    }
    return out;
}

std::vector<Node *> BuildOutline(Document &document, const QString &outline) {
    std::vector<Node *> made;
    std::vector<Node *> levels; // the last node made at each level
    const bool transfer = modNodes::g_bDocTransfer;
    modNodes::g_bDocTransfer = true;
    for (const QString &line : outline.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        qsizetype blanks = 0;
        while (blanks < line.size() && line[blanks] == QLatin1Char(' ')) {
            ++blanks;
        }
        const size_t level = size_t(blanks / 2);
        levels.resize(level);
        Node *parent = levels.empty() ? nullptr : levels.back();
        Node *node = modNodes::NodeInsert(&document, relChild, parent);
        node->setText(line.mid(blanks));
        levels.push_back(node);
        made.push_back(node);
    }
    modNodes::g_bDocTransfer = transfer;
    return made;
}
