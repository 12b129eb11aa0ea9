#pragma once
// Generated documents for the benchmarks: entries with formatted rich texts of a few hundred to a
// few thousand characters, stored compressed, in three shapes of outline.
#include "document/Document.h"
#include "document/modDoc.h"
#include "outline/modNodes.h"

#include <QByteArray>
#include <QString>

#include <random>
#include <vector>

namespace benchdocs {

enum class Shape {
    Balanced,  // breadth-first, up to 12 children an entry (about 5 levels)
    Flat,      // every entry a child of the root
    Realistic, // chapters and sections of uneven size and depth, as people write them
};

inline const char *ShapeName(Shape shape) {
    switch (shape) {
    case Shape::Flat:
        return "flat";
    case Shape::Realistic:
        return "realistic";
    case Shape::Balanced:
        break;
    }
    return "balanced";
}

// A formatted rich text of roughly `words` words: fonts, colours, bold and italic runs.
inline QByteArray RichText(std::mt19937 &random, int words) {
    static const char *vocabulary[] = {"garden", "house",  "paint",   "plans",   "water",
                                       "window", "letter", "north",   "winter",  "budget",
                                       "review", "travel", "caf\xe9", "meeting", "notes"};
    QByteArray rtf =
        "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\froman "
        "Times New Roman;}}{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue128;}"
        "\\viewkind4\\uc1\\pard\\f0\\fs20 ";
    for (int i = 0; i < words; ++i) {
        const unsigned r = random();
        if (r % 23 == 0) {
            rtf += "\\par\r\n";
        }
        if (r % 17 == 0) {
            rtf += "{\\b ";
        } else if (r % 19 == 0) {
            rtf += "{\\i\\cf1 ";
        } else if (r % 29 == 0) {
            rtf += "{\\f1\\fs24\\cf2 ";
        }
        rtf += vocabulary[r % 15];
        rtf += QByteArray::number(r % 1000);
        if (r % 17 == 0 || r % 19 == 0 || r % 29 == 0) {
            rtf += '}';
        }
        rtf += ' ';
    }
    rtf += "\\par\r\n}\r\n";
    return rtf;
}

// Picks the parent of the next entry of a realistic outline: mostly a sibling of the last entry,
// often its first child, sometimes a step or two back up.
class RealisticParents {
public:
    Node *next(std::mt19937 &random, Node *root, Node *last) {
        if (!last) {
            return root;
        }
        if (m_path.empty()) {
            m_path.push_back(root);
        }
        const unsigned r = random() % 100;
        if (r < 22 && m_path.size() < 9) {
            m_path.push_back(last); // a first child of the last entry
        } else if (r >= 85 && m_path.size() > 1) {
            m_path.pop_back(); // back up to the parent's level
            if (r >= 95 && m_path.size() > 1) {
                m_path.pop_back();
            }
        }
        return m_path.back();
    }

private:
    std::vector<Node *> m_path;
};

// Builds a document of `count` entries in the shape into `doc`. About a third of the entries that
// have children are expanded; one entry deep in the outline is selected.
inline void Build(Document &doc, int count, Shape shape) {
    std::mt19937 random{unsigned(count) + unsigned(shape)};
    const bool transfer = modNodes::g_bDocTransfer;
    modNodes::g_bDocTransfer = false; // keys are numbered when the document is saved
    std::vector<Node *> nodes;
    nodes.reserve(size_t(count));
    size_t parent = 0;
    RealisticParents realistic;
    for (int i = 0; i < count; ++i) {
        Node *n = nullptr;
        if (nodes.empty()) {
            n = modNodes::NodeInsert(&doc, relFirst, nullptr);
        } else if (shape == Shape::Flat) {
            n = modNodes::NodeInsert(&doc, relChild, nodes.front());
        } else if (shape == Shape::Balanced) {
            if (nodes[parent]->Children() >= 12) {
                ++parent;
            }
            n = modNodes::NodeInsert(&doc, relChild, nodes[parent]);
        } else {
            n = modNodes::NodeInsert(&doc, relChild,
                                     realistic.next(random, nodes.front(), nodes.back()));
        }
        n->setText(QStringLiteral("Entry %1 about the garden").arg(i));
        QByteArray stored;
        modNodes::NodeTextCompressIfRequired(RichText(random, 40 + int(random() % 400)), stored);
        n->setTag(stored);
        if (random() % 5 == 0) {
            modNodes::NodeTagOn(n);
        }
        nodes.push_back(n);
    }
    modNodes::g_bDocTransfer = transfer;
    for (Node *n : nodes) {
        if (n->Children() > 0 && (n == nodes.front() || random() % 3 == 0)) {
            n->setExpanded(true);
        }
    }
    if (!nodes.empty()) {
        nodes[nodes.size() * 2 / 3]->setSelected(true);
    }
}

// Writes a generated document to `path`.
inline bool Write(const QString &path, int count, Shape shape) {
    Document *doc = modDoc::DocInit();
    Build(*doc, count, shape);
    const bool saved = modDoc::DocSaveDocument(*doc, path, false);
    modDoc::DocClose(doc);
    return saved;
}

} // namespace benchdocs
