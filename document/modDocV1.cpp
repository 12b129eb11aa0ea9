// The native format on a document: writing the tree, and building it back from the file's bytes.
#include "document/modDocV1.h"

#include "document/DocFiles.h"
#include "document/Document.h"
#include "outline/modNodes.h"
#include "util/ByteChain.h"
#include "util/CodePage.h"
#include "util/ErrorLog.h"

#include <QHash>

#include <charconv>
#include <vector>

namespace modDocV1 {

namespace {

QByteArray boolText(bool value) {
    return value ? QByteArrayLiteral("True") : QByteArrayLiteral("False");
}

QByteArray sizeText(double points) {
    return QByteArray::number(points, 'g', 15);
}

void saveFont(QByteArray &out, const char *prefix, const clsFont &font) {
    const QByteArray p(prefix);
    DocSaveNodeTag(out, p + "fontname", CodePage::fromUnicode(font.Name()));
    DocSaveNodeTag(out, p + "fontsize", sizeText(font.Size()));
    DocSaveNodeTag(out, p + "fontbold", boolText(font.Bold()));
    DocSaveNodeTag(out, p + "fontitalic", boolText(font.Italic()));
    DocSaveNodeTag(out, p + "fontstrikethrough", boolText(font.StrikeThrough()));
    DocSaveNodeTag(out, p + "fontunderline", boolText(font.Underline()));
}

// The bytes as Latin-1 characters in `out`, in the room `out` already has when it is its own.
void setLatin1(QString &out, QByteArrayView bytes) {
    out.resize(bytes.size());
    char16_t *to = reinterpret_cast<char16_t *>(out.data());
    for (const char c : bytes) {
        *to++ = char16_t(uchar(c));
    }
}

// The characters as Latin-1 bytes in `out` ('?' for those beyond it, as QString::toLatin1 gives),
// in the room `out` already has when it is its own.
void setLatin1(QByteArray &out, QStringView text) {
    out.resize(text.size());
    char *to = out.data();
    for (const QChar c : text) {
        *to++ = c.unicode() > 0xff ? '?' : char(c.unicode());
    }
}

// True when `whole` is `prefix` followed by `rest`.
bool isPrefixed(QStringView whole, QStringView prefix, QStringView rest) {
    return whole.size() == prefix.size() + rest.size() && whole.startsWith(prefix) &&
           whole.sliced(prefix.size()) == rest;
}

// Logs one problem of a file being read and carries on.
void reportDamage(qint32 number, const QString &what) {
    PROC("modDocV1 DocLoadVersion");
    modMain::Guarded(
        [&] { modMain::Raise(number, modMain::ErrorDescription(number) + " (" + what + ')'); });
}

void loadFont(const QByteArray &text, const char *prefix, clsFont &font) {
    const QByteArray p(prefix);
    font.setName(CodePage::toUnicode(modDoc::DocLoadTag(text, p + "fontname")));
    const QByteArray size = modDoc::DocLoadTag(text, p + "fontsize");
    bool ok = false;
    const double points = size.trimmed().toDouble(&ok);
    if (ok && points >= 0 && points < 1e6) {
        font.setSize(points);
    } else {
        reportDamage(modMain::errTypeMismatch,
                     QStringLiteral("%1fontsize \"%2\"")
                         .arg(QLatin1String(p), CodePage::toUnicode(size.left(40))));
    }
    font.setBold(modDoc::DocLoadTag(text, p + "fontbold") == "True");
    font.setItalic(modDoc::DocLoadTag(text, p + "fontitalic") == "True");
    font.setStrikeThrough(modDoc::DocLoadTag(text, p + "fontstrikethrough") == "True");
    font.setUnderline(modDoc::DocLoadTag(text, p + "fontunderline") == "True");
}

} // namespace

void DocSaveNodeAll(Node *node, ByteChain &out) {
    PROC("modDocV1 DocSaveNodeAll");
    if (!node) {
        return;
    }
    // Pre-order with an explicit stack: an entry is showing when its parent shows and is expanded.
    bool rootShowing = true;
    for (Node *a = node->Parent(); a; a = a->Parent()) {
        rootShowing = rootShowing && a->Expanded();
    }
    std::vector<std::pair<Node *, bool>> stack;
    stack.emplace_back(node, rootShowing);
    // Made in the same room for every entry.
    QByteArray key;
    QByteArray label;
    while (!stack.empty()) {
        auto [n, showing] = stack.back();
        stack.pop_back();
        setLatin1(key, n->Key());
        CodePage::fromUnicode(n->Text(), label);
        // The stored text is written from where it is held (the node or the file as read).
        DocSaveEntry(out,
                     key.startsWith("KEY") ? QByteArrayView(key).sliced(3) : QByteArrayView(key),
                     label, modNodes::NodeTagged(n), showing, n->TagView());
        const auto &children = n->childList();
        const bool childShowing = showing && n->Expanded();
        for (auto it = children.rbegin(); it != children.rend(); ++it) {
            stack.emplace_back(*it, childShowing);
        }
    }
}

void DocSaveVersion(Document &doc, ByteChain &out) {
    PROC("modDocV1 DocSaveVersion");
    Node *root = nullptr;
    modNodes::NodeGetRoot(&doc, root);
    if (!root && doc.trvOutline().Count() > 0) {
        root = doc.trvOutline().Item(1)->Root();
    }
    if (!root) {
        return;
    }
    modNodes::NodeSetKeys(root, QStringLiteral("KEY0"));
    PROC("modDocV1 DocSaveVersion");
    Node *selected = doc.trvOutline().SelectedItem();
    QByteArray header;
    DocSaveHeader(header, doc, selected ? selected->Key().toLatin1() : QByteArray());
    out.append(header);
    DocSaveNodeAll(root, out);
}

QByteArray DocSaveVersion(Document &doc) {
    ByteChain out;
    DocSaveVersion(doc, out);
    return out.joined();
}

void DocSaveHeader(QByteArray &out, const Document &doc, const QByteArray &selectedKey) {
    DocSaveNodeTag(out, "formatversion", "1");
    DocSaveNodeTag(out, "selecteditemkey", selectedKey);
    saveFont(out, "outline", doc.m_fntOutlineFont);
    saveFont(out, "text", doc.m_fntTextFont);
}

QString DocLoadVersion(Document &doc, const QByteArray &text, QList<bool> &taggedByIndex,
                       QList<bool> &showingByIndex) {
    PROC("modDocV1 DocLoadVersion");
    (void)modDoc::DocLoadTag(text, "formatversion");
    const QString selectedKey = CodePage::toUnicode(modDoc::DocLoadTag(text, "selecteditemkey"));
    loadFont(text, "outline", doc.m_fntOutlineFont);
    loadFont(text, "text", doc.m_fntTextFont);
    // The text pane's base font is the outline font after loading; the text font is only kept.
    if (TextPane *pane = doc.txtRTF()) {
        pane->SetBaseFont(doc.m_fntOutlineFont.ToPaneFont());
    }

    // The relative of an entry is found on the path of the entry read last (root first): in a
    // file written in pre-order, a first child's parent and a later sibling's predecessor are
    // both on it. Only a file out of that order needs the entries indexed by key, which is
    // then built once and kept up to date.
    std::vector<Node *> path;
    QHash<QString, Node *> byKey;
    bool indexed = false;
    auto lookup = [&](const QString &key) -> Node * {
        if (!indexed) {
            const auto depth = size_t(key.count(QLatin1Char('.')));
            if (depth < path.size() && path[depth] && !path[depth]->isRemoved() &&
                path[depth]->Key() == key) {
                return path[depth];
            }
            byKey.reserve(doc.trvOutline().Count() + 16);
            for (Node *n : doc.trvOutline()) {
                byKey.insert(n->Key(), n);
            }
            indexed = true;
        }
        Node *n = byKey.value(key);
        return (n && !n->isRemoved() && n->Key() == key) ? n : nullptr;
    };
    // Keys the tree changed when an entry went in before existing siblings.
    auto rekey = [&](Node *from) {
        std::vector<Node *> stack;
        for (Node *s = from; s; s = s->Next()) {
            stack.push_back(s);
        }
        while (!stack.empty()) {
            Node *n = stack.back();
            stack.pop_back();
            byKey.insert(n->Key(), n);
            for (Node *c : n->childList()) {
                stack.push_back(c);
            }
        }
    };

    // The entries' stored texts stay in the file's bytes, shared, until one is read or changed.
    const auto file = std::make_shared<const QByteArray>(text);
    const QString prefix = QStringLiteral("KEY");
    // Reused from entry to entry: most entries then cost no allocation for their keys.
    QString key;
    QString relativeKey;
    ScanEntries(
        text,
        [&](EntryRecord &rec) {
            setLatin1(key, rec.Key);
            Node *relative = nullptr;
            int relationship = relChild;
            relativeKey.resize(0);
            if (key.endsWith(QStringLiteral(".1"))) {
                relativeKey.append(prefix).append(QStringView(key).chopped(2));
            } else {
                const qsizetype dot = key.lastIndexOf(QLatin1Char('.'));
                if (dot >= 0) {
                    relationship = relNext;
                    bool ok = false;
                    const qint64 number = QStringView(key).sliced(dot + 1).toLongLong(&ok);
                    relativeKey.append(prefix).append(QStringView(key).first(dot + 1));
                    // Only a positive number has a predecessor (and no overflow at the boundary).
                    if (ok && number > 0) {
                        char digits[24];
                        const auto end = std::to_chars(digits, digits + sizeof digits, number - 1);
                        relativeKey.append(QLatin1StringView(digits, end.ptr - digits));
                    } else {
                        relativeKey.append(QLatin1Char('?'));
                    }
                }
            }
            if (!relativeKey.isEmpty()) {
                relative = lookup(relativeKey);
                if (!relative) {
                    reportDamage(modMain::errSubscriptOutOfRange,
                                 QStringLiteral("entry \"%1\": no entry \"%2\" to place it by")
                                     .arg(key.left(40), relativeKey.left(40)));
                }
            }
            if (relativeKey.isEmpty() && doc.trvOutline().Count() > 0) {
                reportDamage(modMain::errSubscriptOutOfRange,
                             QStringLiteral("entry \"%1\": a second top entry").arg(key.left(40)));
            }
            Node *node = modNodes::NodeInsert(&doc, relationship, relative);
            PROC("modDocV1 DocLoadVersion");
            if (!node) {
                reportDamage(
                    modMain::errInvalidProcedureCall,
                    QStringLiteral("entry \"%1\" could not be inserted").arg(key.left(40)));
                return;
            }
            if (indexed && node->Next()) {
                rekey(node);
            } else if (indexed) {
                byKey.insert(node->Key(), node);
            }
            size_t depth = 0;
            for (Node *p = node->Parent(); p; p = p->Parent()) {
                ++depth;
            }
            // The path becomes the entry's ancestors and the entry; it changes at its end only.
            path.resize(depth + 1, nullptr);
            for (Node *p = node; p && path[depth] != p; p = p->Parent(), --depth) {
                path[depth] = p;
                if (depth == 0) {
                    break;
                }
            }
            if (relative && !isPrefixed(node->Key(), prefix, key)) {
                reportDamage(modMain::errSubscriptOutOfRange,
                             QStringLiteral("entry \"%1\" out of order, read as \"%2\"")
                                 .arg(key.left(40), node->Key().mid(3).left(40)));
            }
            if (rec.TextTruncated) {
                reportDamage(
                    modMain::errInputPastEnd,
                    QStringLiteral("the text of entry \"%1\" is cut short").arg(key.left(40)));
            }
            DocLoadVersionNodeSet(&doc, node, rec, taggedByIndex, showingByIndex, file);
        },
        nullptr, false);
    return selectedKey;
}

void DocLoadVersionNodeSet(Document *doc, Node *node, EntryRecord &rec, QList<bool> &taggedByIndex,
                           QList<bool> &showingByIndex,
                           const std::shared_ptr<const QByteArray> &file) {
    PROC("modDocV1 DocLoadVersionNodeSet");
    node->setText(CodePage::toUnicode(rec.Label));
    if (rec.Text.isEmpty() && rec.TextLength > 0 && file) {
        node->setTagShared(file, rec.TextFrom, rec.TextLength);
    } else {
        node->setTag(std::move(rec.Text));
    }
    rec.Text = QByteArray();
    modNodes::NodeSelect(doc, node);
    const int index = node->Index();
    // Grown geometrically: entries arrive one index at a time.
    if (taggedByIndex.size() <= index) {
        taggedByIndex.resize(qMax<qsizetype>(index + 1, taggedByIndex.size() * 2));
    }
    if (showingByIndex.size() <= index) {
        showingByIndex.resize(qMax<qsizetype>(index + 1, showingByIndex.size() * 2));
    }
    taggedByIndex[index] = rec.Tagged;
    showingByIndex[index] = rec.Showing;
}

} // namespace modDocV1
