#include "outline/modNodes.h"

#include "document/Document.h"
#include "editor/clsFont.h"
#include "outline/modCompress.h"
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

// The prefix followed by the number in decimal, in one allocation.
QString numberedKey(const QString &prefix, size_t number) {
    char16_t digits[24];
    int n = 0;
    do {
        digits[n++] = char16_t(u'0' + number % 10);
        number /= 10;
    } while (number > 0);
    QString key(prefix.size() + n, Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(key.data());
    std::copy(prefix.utf16(), prefix.utf16() + prefix.size(), out);
    for (int i = 0; i < n; ++i) {
        out[prefix.size() + i] = digits[n - 1 - i];
    }
    return key;
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

int s_iDuplicateDepth = 0;
std::unordered_set<const Node *> s_made;

void expandToLevel(Node *node, int level, int depth) {
    if (node->Children() == 0) {
        return;
    }
    NodeActionStart();
    const bool expand = depth < level;
    if (node->Expanded() != expand) {
        node->setExpanded(expand);
    }
    if (expand) {
        for (Node *child = node->Child(); child; child = child->Next()) {
            Guarded([&] {
                PROC("modNodes NodeExpandToLevel");
                expandToLevel(child, level, depth + 1);
            });
        }
    }
    NodeActionEnd();
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
                const QString prefix = childKeyPrefix(parentKey);
                const int from = node->row();
                const auto &siblings = parent->childList();
                for (size_t i = size_t(from); i < siblings.size(); ++i) {
                    NodeSetKeys(siblings[i], numberedKey(prefix, i + 1));
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
        const bool tagged = NodeTagged(source);
        // The children as they are before the copy exists: a copy placed inside its own source
        // is not copied again.
        const std::vector<Node *> children = source->childList();
        // Copies made by this duplication are never sources themselves, else a node copied
        // into its own subtree would be copied again and again.
        struct Depth {
            Depth() { ++s_iDuplicateDepth; }
            ~Depth() {
                if (--s_iDuplicateDepth == 0) {
                    s_made.clear();
                }
            }
        } depth;
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
        s_made.insert(copy);
        const bool expanded = source->Expanded();
        const QString label = source->Text();
        const QByteArray stored = source->Tag();
        for (Node *child : children) {
            if (!s_made.contains(child)) {
                NodeDuplicate(document, child, copy, relChild);
            }
        }
        NodeSelect(document, copy);
        copy->setText(label);
        copy->setTag(stored);
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
                    children[i]->setKey(numberedKey(prefix, i + 1));
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
        node->setExpanded(false);
        if (node->Children() > 0) {
            NodeActionStart();
            for (Node *child = node->Child(); child; child = child->Next()) {
                NodeCollapseAll(child);
            }
            NodeActionEnd();
        }
    });
}

void NodeExpandAll(Node *node) {
    Guarded([&] {
        PROC("modNodes NodeExpandAll");
        if (!node || node->Children() == 0) {
            return;
        }
        NodeActionStart();
        node->setExpanded(true);
        for (Node *child = node->Child(); child; child = child->Next()) {
            NodeExpandAll(child);
        }
        NodeActionEnd();
    });
}

void NodeExpandToLevel(Node *node, int level) {
    Guarded([&] {
        PROC("modNodes NodeExpandToLevel");
        if (!node) {
            return;
        }
        int depth = 0;
        for (Node *a = node; a; a = a->Parent()) {
            ++depth;
        }
        expandToLevel(node, level, depth);
    });
}

void NodeSortAll(Node *node, bool sorted) {
    Guarded([&] {
        PROC("modNodes NodeSortAll");
        if (!node) {
            return;
        }
        node->setSorted(sorted);
        for (Node *child = node->Child(); child; child = child->Next()) {
            NodeSortAll(child, sorted);
        }
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
        NodeTextGet(document, node);
        const bool visible = pane->Visible();
        pane->SetVisible(false);
        pane->ApplyFontToAll(font.ToPaneFont());
        NodeTextPut(document, node);
        pane->SetVisible(visible);
        for (Node *child = node->Child(); child; child = child->Next()) {
            NodeSetFontAll(document, child, font);
        }
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
        if (!pane) {
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

void NodeTextDecompressIfRequired(const QByteArray &stored, QByteArray &text) {
    text = stored;
    Guarded([&] {
        PROC("modNodes NodeTextDecompressIfRequired");
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
