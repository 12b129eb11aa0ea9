#include "outline/modNodes.h"

#include "document/Document.h"
#include "outline/modCompress.h"
#include "richtext/clsFont.h"
#include "util/ErrorLog.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <unordered_set>
#include <utility>
#include <vector>

using modMain::Guarded;

namespace modNodes {

bool g_bDocTransfer = false;
int g_iActionDepth = 0;
NodeRef g_nodCurrent;
bool g_bLoadingText = false;

namespace {

const QString kFolder = QStringLiteral("Folder");
const QString kFolderSelected = QStringLiteral("FolderSelected");
const QString kFolderTagged = QStringLiteral("FolderTagged");
const QString kFolderTaggedSelected = QStringLiteral("FolderTaggedSelected");

// The prefix of the children's keys under a key.
QString childKeyPrefix(const QString &key) {
    return key == QLatin1String("KEY") ? key : key + QLatin1Char('.');
}

// What comes between a key and its children's numbers.
QStringView childKeySeparator(const QString &key) {
    return key == QLatin1String("KEY") ? QStringView() : QStringView(u".");
}

// The prefix (in two parts) followed by the number in decimal, in one allocation.
QString numberedKey(QStringView prefix, QStringView separator, size_t number) {
    char16_t digits[24];
    int n = 0;
    do {
        digits[n++] = char16_t(u'0' + number % 10);
        number /= 10;
    } while (number > 0);
    QString key(prefix.size() + separator.size() + n, Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(key.data());
    out = std::copy(prefix.utf16(), prefix.utf16() + prefix.size(), out);
    out = std::copy(separator.utf16(), separator.utf16() + separator.size(), out);
    for (int i = 0; i < n; ++i) {
        out[i] = digits[n - 1 - i];
    }
    return key;
}

// Whether the key already is the prefix followed by the number (no key needs to be made).
bool isNumberedKey(const QString &key, const QString &prefix, size_t number) {
    qsizetype end = key.size();
    do {
        if (end <= prefix.size() || key.at(end - 1) != QChar(char16_t(u'0' + number % 10))) {
            return false;
        }
        --end;
        number /= 10;
    } while (number > 0);
    return end == prefix.size() && QStringView(key).left(end) == prefix;
}

// A lenient numeric parse: blanks, tabs and line feeds are skipped anywhere; then an optional
// sign, digits, a decimal point and an exponent (E or D); "&H" and "&O" give hexadecimal and
// octal. It stops at the first character that does not fit; nothing parsable gives 0.
double lenientNumber(const QByteArray &s) {
    QByteArray clean;
    clean.reserve(s.size());
    for (char c : s) {
        if (c != ' ' && c != '\t' && c != '\n') {
            clean.append(c);
        }
    }
    if (clean.size() >= 2 && clean[0] == '&') {
        const char kind = char(clean[1] | 0x20);
        const int base = kind == 'h' ? 16 : kind == 'o' ? 8 : 0;
        if (base == 0) {
            return 0;
        }
        qint64 value = 0;
        for (qsizetype i = 2; i < clean.size(); ++i) {
            const uchar c = uchar(clean[i]);
            int d = -1;
            if (std::isdigit(c)) {
                d = c - '0';
            } else if (base == 16 && std::isxdigit(c)) {
                d = (c | 0x20) - 'a' + 10;
            }
            if (d < 0 || d >= base || value > (qint64(1) << 40)) {
                break;
            }
            value = value * base + d;
        }
        return double(value);
    }
    QByteArray number;
    qsizetype i = 0;
    if (i < clean.size() && (clean[i] == '+' || clean[i] == '-')) {
        number.append(clean[i++]);
    }
    bool digits = false;
    while (i < clean.size() && std::isdigit(uchar(clean[i]))) {
        number.append(clean[i++]);
        digits = true;
    }
    if (i < clean.size() && clean[i] == '.') {
        number.append(clean[i++]);
        while (i < clean.size() && std::isdigit(uchar(clean[i]))) {
            number.append(clean[i++]);
            digits = true;
        }
    }
    if (!digits) {
        return 0;
    }
    if (i < clean.size() &&
        (clean[i] == 'e' || clean[i] == 'E' || clean[i] == 'd' || clean[i] == 'D')) {
        QByteArray exponent("e");
        qsizetype j = i + 1;
        if (j < clean.size() && (clean[j] == '+' || clean[j] == '-')) {
            exponent.append(clean[j++]);
        }
        const qsizetype firstDigit = j;
        while (j < clean.size() && std::isdigit(uchar(clean[j]))) {
            exponent.append(clean[j++]);
        }
        if (j > firstDigit) {
            number += exponent;
        }
    }
    const double value = std::strtod(number.constData(), nullptr);
    if (std::isinf(value)) {
        modMain::Raise(modMain::errOverflow);
    }
    return value;
}

// A number rounded to 32 bits, halves to even; out of range is an overflow.
qint32 toLong(double value) {
    const double r = std::nearbyint(value);
    if (!(r >= double(std::numeric_limits<qint32>::min()) &&
          r <= double(std::numeric_limits<qint32>::max()))) {
        modMain::Raise(modMain::errOverflow);
    }
    return qint32(r);
}

// Walks a subtree in pre-order with an explicit stack (deep outlines cannot exhaust the call
// stack); `visit` returns whether to go below the node.
template <class F> void preOrder(Node *top, F &&visit) {
    std::vector<Node *> stack{top};
    while (!stack.empty()) {
        Node *n = stack.back();
        stack.pop_back();
        if (!visit(n)) {
            continue;
        }
        const auto &children = n->childList();
        stack.insert(stack.end(), children.rbegin(), children.rend());
    }
}

} // namespace

void NodeActionStart() {
    Guarded([] {
        PROC("modNodes NodeActionStart");
        Document *doc = nullptr;
        if (modMain::DocumentActive(doc) && g_iActionDepth == 0) {
            doc->setOutlineVisible(false);
            if (TextPane *pane = doc->txtRTF()) {
                pane->SetVisible(false);
            }
        }
        ++g_iActionDepth;
    });
}

void NodeActionEnd() {
    Guarded([] {
        PROC("modNodes NodeActionEnd");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        --g_iActionDepth;
        if (g_iActionDepth == 0) {
            doc->setOutlineVisible(true);
            if (TextPane *pane = doc->txtRTF()) {
                pane->SetVisible(true);
            }
        }
        if (DocumentView *view = doc->view()) {
            view->ViewAutoFitSplit();
        }
    });
}

Node *NodeInsert(Document *document, int relationship, Node *relative) {
    return Guarded([&]() -> Node * {
        PROC("modNodes NodeInsert");
        if (!document) {
            return nullptr;
        }
        Nodes &nodes = document->trvOutline();
        if (nodes.Count() > 0 && (!relative || relative->Parent() == nullptr)) {
            relative = nodes.Item(1)->Root();
            relationship = relChild;
        }
        Node *node = nodes.Add(relative, relationship);
        node->setImage(kFolder);
        node->setSelectedImage(kFolderSelected);
        Node *parent = node->Parent();
        if (!parent) {
            node->setKey(QStringLiteral("KEY0"));
        } else if (g_bDocTransfer) {
            const QString &parentKey = parent->Key();
            if (parentKey.isEmpty()) {
                NodeSetKeys(parent, parentKey); // blanks the whole subtree
            } else {
                // Only this node and the siblings after it change; an append keys itself alone.
                const QStringView separator = childKeySeparator(parentKey);
                const int from = node->row();
                const auto &siblings = parent->childList();
                for (size_t i = size_t(from); i < siblings.size(); ++i) {
                    NodeSetKeys(siblings[i], numberedKey(parentKey, separator, i + 1));
                }
            }
        }
        return node;
    });
}

void NodeInitialise(Document *document, Node *node) {
    Guarded([&] {
        PROC("modNodes NodeInitialise");
        if (!document || !node) {
            return;
        }
        NodeSelect(document, node);
        node->setText(QStringLiteral("New Entry"));
        Node *selected = document->trvOutline().SelectedItem();
        if (selected && document->view()) {
            document->view()->StartLabelEdit(selected);
        }
        if (TextPane *pane = document->txtRTF()) {
            pane->SetBaseFont(document->m_fntTextFont.ToPaneFont());
        }
    });
}

Node *NodeDuplicate(Document *document, Node *source, Node *target, int relationship) {
    return Guarded([&]() -> Node * {
        PROC("modNodes NodeDuplicate");
        if (!source || !document) {
            return nullptr;
        }
        NodeActionStart();
        source->checkAlive();
        Node *copy = nullptr;
        if (!target) {
            if (relationship == relFirst) {
                copy = NodeInsert(document, relFirst, nullptr);
            }
        } else {
            copy = NodeInsert(document, relationship, target);
        }
        if (!copy) {
            NodeActionEnd();
            return nullptr;
        }
        NodeRef keep(copy); // the copy may be removed by a failure below
        // The subtree is copied with an explicit stack, in pre-order so that the children's
        // copies are appended in the source's order. Each source's children are taken as they
        // are before its copy exists, and copies made here are never sources themselves: a node
        // copied into its own subtree is not copied again and again.
        std::unordered_set<const Node *> made{copy};
        struct Pending {
            Node *source;
            Node *copy;
        };
        std::vector<Pending> stack{{source, copy}};
        std::vector<std::pair<Node *, bool>> expansions;
        while (!stack.empty()) {
            const Pending p = stack.back();
            stack.pop_back();
            const std::vector<Node *> children = p.source->childList();
            if (p.copy != copy) {
                p.copy->setText(p.source->Text());
                p.copy->setTagFrom(*p.source);
                if (NodeTagged(p.source)) {
                    NodeTagOn(p.copy);
                }
            }
            expansions.emplace_back(p.copy, p.source->Expanded());
            std::vector<Pending> below;
            for (Node *child : children) {
                if (made.contains(child)) {
                    continue;
                }
                Node *c = NodeInsert(document, relChild, p.copy);
                PROC("modNodes NodeDuplicate");
                if (!c) {
                    continue;
                }
                made.insert(c);
                below.push_back({child, c});
            }
            stack.insert(stack.end(), below.rbegin(), below.rend());
        }
        // Expanded once the children are there, deepest first.
        for (auto it = expansions.rbegin(); it != expansions.rend(); ++it) {
            if (it->first != copy) {
                it->first->setExpanded(it->second);
            }
        }
        const bool tagged = NodeTagged(source);
        const bool expanded = source->Expanded();
        NodeSelect(document, copy);
        copy->setText(source->Text());
        copy->setTagFrom(*source);
        copy->setExpanded(expanded);
        NodeTextGet(document, copy);
        if (tagged) {
            NodeTagOn(copy);
        }
        NodeActionEnd();
        return copy;
    });
}

void NodePaste(Document *document, NodeRef &copied, bool deleteSource) {
    Guarded([&] {
        PROC("modNodes NodePaste");
        Node *source = copied.get();
        if (!source || !document) {
            return;
        }
        NodeActionStart();
        Node *selected = document->trvOutline().SelectedItem();
        NodeRef copy;
        if (!selected) {
            copy = NodeDuplicate(document, source, nullptr, relFirst);
        } else if (selected->Parent() == nullptr) {
            Node *first = selected->Child();
            if (first && first != source) {
                copy = NodeDuplicate(document, source, first, relPrevious);
            } else {
                copy = NodeDuplicate(document, source, selected, relChild);
            }
        } else {
            copy = NodeDuplicate(document, source, selected, relNext);
        }
        if (deleteSource) {
            source->tree()->Remove(source->Index());
            copied.reset();
        }
        NodeSelect(document, copy.get());
        NodeActionEnd();
    });
}

void NodeDelete(Document *document, Node *node) {
    Guarded([&] {
        PROC("modNodes NodeDelete");
        if (!node || !document) {
            return;
        }
        NodeActionStart();
        Node *parent = node->Parent();
        node->tree()->Remove(node->Index());
        if (parent && parent->Children() == 0) {
            parent->setExpanded(false);
        }
        NodeActionEnd();
    });
}

void NodeSelect(Document *document, Node *node) {
    Guarded([&] {
        PROC("modNodes NodeSelect");
        if (!node) {
            return;
        }
        if (g_bDocTransfer) {
            if (!node->Selected()) {
                node->setSelected(true);
            }
        } else {
            NodeSelectFull(document, node);
        }
    });
}

void NodeSelectFull(Document *document, Node *node) {
    Guarded([&] {
        PROC("modNodes NodeSelectFull");
        if (!document) {
            return;
        }
        if (node) {
            g_nodCurrent = node;
            if (!node->Selected()) {
                node->setSelected(true);
            }
            if (document->trvOutline().Visible()) {
                node->EnsureVisible();
            }
            NodeTextGet(document, node);
            document->trvOutline().setDropHighlight(nullptr);
            if (DocumentView *view = document->view()) {
                view->UpdateStatusBar(node);
            }
        }
        if (DocumentView *view = document->view()) {
            view->MenuEnableDynamic();
        }
    });
}

void NodeGetRoot(Document *document, Node *&root) {
    Guarded([&] {
        PROC("modNodes NodeGetRoot");
        if (!document) {
            return;
        }
        if (Node *selected = document->trvOutline().SelectedItem()) {
            root = selected->Root();
        }
    });
}

void NodeGoDown(Document *document) {
    Guarded([&] {
        PROC("modNodes NodeGoDown");
        if (!document) {
            return;
        }
        Node *s = document->trvOutline().SelectedItem();
        if (!s) {
            return;
        }
        Node *target = nullptr;
        if (s == s->LastSibling()) {
            for (Node *a = s->Parent(); a; a = a->Parent()) {
                if (Node *next = a->Next()) {
                    target = next;
                    break;
                }
            }
        } else {
            target = s->Next();
        }
        if (!target) {
            target = s->Next();
            if (!target) {
                target = s->Child();
            }
        }
        if (target) {
            target->setSelected(true);
        }
    });
}

void NodeSetKeys(Node *node, const QString &key) {
    Guarded([&] {
        PROC("modNodes NodeSetKeys");
        if (!node) {
            return;
        }
        // Each node is keyed by its parent; walked with an explicit stack, so that deep
        // outlines cannot exhaust the call stack.
        node->setKey(key);
        if (node->childList().empty()) {
            return;
        }
        std::vector<Node *> stack{node};
        while (!stack.empty()) {
            Node *n = stack.back();
            stack.pop_back();
            const auto &children = n->childList();
            if (children.empty()) {
                continue;
            }
            const QString &k = n->Key();
            if (k.isEmpty()) {
                for (Node *child : children) {
                    child->setKey(QString());
                }
            } else {
                const QString prefix = childKeyPrefix(k);
                for (size_t i = 0; i < children.size(); ++i) {
                    if (!isNumberedKey(children[i]->Key(), prefix, i + 1)) {
                        children[i]->setKey(numberedKey(prefix, {}, i + 1));
                    }
                }
            }
            stack.insert(stack.end(), children.begin(), children.end());
        }
    });
}

void NodeCollapseAll(Node *node) {
    Guarded([&] {
        PROC("modNodes NodeCollapseAll");
        if (!node) {
            return;
        }
        NodeActionStart();
        preOrder(node, [](Node *n) {
            n->setExpanded(false);
            return true;
        });
        NodeActionEnd();
    });
}

void NodeExpandAll(Node *node) {
    Guarded([&] {
        PROC("modNodes NodeExpandAll");
        if (!node || node->Children() == 0) {
            return;
        }
        // Leaves keep their own Expanded value.
        NodeActionStart();
        preOrder(node, [](Node *n) {
            if (n->Children() == 0) {
                return false;
            }
            n->setExpanded(true);
            return true;
        });
        NodeActionEnd();
    });
}

void NodeExpandToLevel(Node *node, int level) {
    Guarded([&] {
        PROC("modNodes NodeExpandToLevel");
        if (!node || node->Children() == 0) {
            return;
        }
        int depth = 0;
        for (Node *a = node; a; a = a->Parent()) {
            ++depth;
        }
        // A node is expanded exactly when its depth is below the level; the subtrees of the
        // nodes that collapse are not visited.
        NodeActionStart();
        std::vector<std::pair<Node *, int>> stack{{node, depth}};
        while (!stack.empty()) {
            const auto [n, d] = stack.back();
            stack.pop_back();
            if (n->Children() == 0) {
                continue;
            }
            const bool expand = d < level;
            if (n->Expanded() != expand) {
                n->setExpanded(expand);
            }
            if (expand) {
                for (Node *child : n->childList()) {
                    stack.emplace_back(child, d + 1);
                }
            }
        }
        NodeActionEnd();
    });
}

void NodeSortAll(Node *node, bool sorted) {
    Guarded([&] {
        PROC("modNodes NodeSortAll");
        if (!node) {
            return;
        }
        preOrder(node, [sorted](Node *n) {
            n->setSorted(sorted);
            return true;
        });
    });
}

void NodeSetFontAll(Document *document, Node *node, const clsFont &font) {
    Guarded([&] {
        PROC("modNodes NodeSetFontAll");
        if (!document || !node) {
            return;
        }
        TextPane *pane = document->txtRTF();
        if (!pane) {
            return;
        }
        preOrder(node, [&](Node *n) {
            NodeTextGet(document, n);
            const bool visible = pane->Visible();
            pane->SetVisible(false);
            pane->ApplyFontToAll(font.ToPaneFont());
            NodeTextPut(document, n);
            pane->SetVisible(visible);
            return true;
        });
    });
}

void NodeTagOn(Node *node) {
    Guarded([&] {
        PROC("modNodes NodeTagOn");
        if (node) {
            node->setImage(kFolderTagged);
            node->setSelectedImage(kFolderTaggedSelected);
        }
    });
}

void NodeTagOff(Node *node) {
    Guarded([&] {
        PROC("modNodes NodeTagOff");
        if (node) {
            node->setImage(kFolder);
            node->setSelectedImage(kFolderSelected);
        }
    });
}

void NodeTagToggle(Node *node) {
    Guarded([&] {
        PROC("modNodes NodeTagToggle");
        if (NodeTagged(node)) {
            NodeTagOff(node);
        } else {
            NodeTagOn(node);
        }
    });
}

bool NodeTagged(Node *node) {
    PROC("modNodes NodeTagged");
    return node && node->ImageTagged();
}

bool NodesTaggedExist() {
    return Guarded([] {
        PROC("modNodes NodesTaggedExist");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return false;
        }
        for (Node *node : doc->trvOutline()) {
            if (NodeTagged(node)) {
                return true;
            }
        }
        return false;
    });
}

// ---- Entry texts ---------------------------------------------------------------------------

void NodeTextGet(Document *document, Node *node) {
    // The loading flag never outlives the load, even when it fails.
    struct Loading {
        Loading() { g_bLoadingText = true; }
        ~Loading() { g_bLoadingText = false; }
    } loading;
    Guarded([&] {
        PROC("modNodes NodeTextGet");
        TextPane *pane = document ? document->txtRTF() : nullptr;
        if (!pane) {
            return;
        }
        const bool visible = pane->Visible();
        if (visible) {
            pane->SetVisible(false);
        }
        if (node) {
            QByteArray text;
            NodeTextDecompressIfRequired(node->Tag(), text);
            pane->SetTextRTF(text);
        } else {
            pane->SetTextRTF(QByteArray());
        }
        if (visible) {
            pane->SetVisible(true);
        }
    });
}

void NodeTextPut(Document *document, Node *node) {
    Guarded([&] {
        PROC("modNodes NodeTextPut");
        if (g_bLoadingText || !document || !node) {
            return;
        }
        TextPane *pane = document->txtRTF();
        // A refused text's stored bytes are kept as they are: the pane never held it.
        if (!pane || NodeTextRefused(node->Tag())) {
            return;
        }
        QByteArray stored;
        NodeTextCompressIfRequired(pane->TextRTF(), stored);
        node->setTag(stored);
    });
}

void NodeTextGetSelected() {
    Guarded([] {
        PROC("modNodes NodeTextGetSelected");
        Document *doc = nullptr;
        if (modMain::DocumentActive(doc)) {
            NodeTextGet(doc, doc->trvOutline().SelectedItem());
        }
    });
}

void NodeTextPutSelected() {
    Guarded([] {
        PROC("modNodes NodeTextPutSelected");
        Document *doc = nullptr;
        if (modMain::DocumentActive(doc)) {
            NodeTextPut(doc, doc->trvOutline().SelectedItem());
        }
    });
}

void NodeTextCompressIfRequired(const QByteArray &text, QByteArray &stored) {
    stored = text;
    Guarded([&] {
        PROC("modNodes NodeTextCompressIfRequired");
        QByteArray compressed;
        if (modCompress::CompressString(text, compressed) == 0) {
            stored = QByteArray::number(text.size()) + ',' + compressed;
        }
    });
}

namespace {
qint64 s_lInflateLeft = -1; // what the running budget still allows; -1 without a budget
} // namespace

InflateBudget::InflateBudget(qint64 bytes) : m_lSaved(s_lInflateLeft) {
    s_lInflateLeft = qMax<qint64>(0, bytes);
}
InflateBudget::~InflateBudget() {
    s_lInflateLeft = m_lSaved;
}
qint64 InflateBudget::ForFileSize(qint64 fileSize) {
    return qMax<qint64>(qint64(256) << 20, qMin<qint64>(fileSize, qint64(1) << 40) * 64);
}

qint64 NodeTextStatedLength(const QByteArray &stored) {
    const qsizetype comma = stored.indexOf(',');
    if (comma > 0) {
        // The digits of the prefix, saturating far above any limit.
        qint64 length = 0;
        qsizetype i = 0;
        while (i < comma && (stored.at(i) == ' ' || stored.at(i) == '\t')) {
            ++i;
        }
        const qsizetype first = i;
        while (i < comma && stored.at(i) >= '0' && stored.at(i) <= '9') {
            length = qMin<qint64>(length * 10 + (stored.at(i) - '0'), qint64(1) << 50);
            ++i;
        }
        if (i > first && length > 0) {
            return length;
        }
    }
    return stored.size();
}

bool NodeTextRefused(const QByteArray &stored) {
    return NodeTextStatedLength(stored) > kTextLimit;
}

QByteArray TextRefusedNotice(qint64 length) {
    return QByteArrayLiteral("{\\rtf1\\ansi This entry's text (") + QByteArray::number(length) +
           QByteArrayLiteral(" bytes) is too large to be shown. It is kept unchanged in the "
                             "document.\\par }");
}

void NodeTextDecompressIfRequired(const QByteArray &stored, QByteArray &text) {
    text = stored;
    Guarded([&] {
        PROC("modNodes NodeTextDecompressIfRequired");
        const qint64 stated = NodeTextStatedLength(stored);
        const bool overBudget = s_lInflateLeft >= 0 && stated > s_lInflateLeft;
        if (stated > kTextLimit || overBudget) {
            text = TextRefusedNotice(stated);
            modMain::Raise(modMain::errOutOfMemory,
                           QStringLiteral("Text too large: an entry text of %1 bytes was not "
                                          "decoded (the limit is %2 bytes)")
                               .arg(stated)
                               .arg(overBudget ? s_lInflateLeft : kTextLimit));
        }
        if (s_lInflateLeft >= 0) {
            s_lInflateLeft -= stated;
        }
        const qsizetype comma = stored.indexOf(',');
        if (comma < 0) {
            return;
        }
        const qint32 length = toLong(lenientNumber(stored.left(comma)));
        if (length <= 0) {
            return;
        }
        const QByteArray compressed = stored.mid(comma + 1);
        QByteArray decoded;
        if (modCompress::DecompressString(compressed, length, decoded) == 0) {
            text = decoded;
        } else {
            text = compressed;
        }
    });
}

} // namespace modNodes
