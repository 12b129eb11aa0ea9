#pragma once

#include "document/Document.h"
#include "outline/Node.h"
#include "richtext/TextPane.h"
#include "richtext/clsFont.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <map>
#include <vector>

// A text pane that holds its rich text in memory and records what was done to it.
class FakeTextPane : public TextPane {
public:
    QByteArray TextRTF() const override { return m_rtf; }
    void SetTextRTF(const QByteArray &rtf) override;
    bool Visible() const override { return m_bVisible; }
    void SetVisible(bool visible) override { m_bVisible = visible; }
    void SetBaseFont(const PaneFont &font) override { baseFont = font; }
    // Marks the text with the font's name and size, as a real pane would restyle every run.
    void ApplyFontToAll(const PaneFont &font) override;

    PaneFont baseFont;
    int loads = 0;                 // SetTextRTF calls
    int loadsWhileVisible = 0;     // ... made while the pane was drawn
    std::function<void()> changed; // the pane's change event, raised by every SetTextRTF

private:
    QByteArray m_rtf;
    bool m_bVisible = true;
};

// A document window stand-in that counts the pane effects.
class FakeView : public DocumentView {
public:
    void SetOutlineVisible(bool visible) override { outlineVisible = visible; }
    void StartLabelEdit(Node *node) override { labelEdits.push_back(node); }
    void ViewAutoFitSplit() override { ++autoFits; }
    void UpdateStatusBar(Node *node) override { statusNodes.push_back(node); }
    void MenuEnableDynamic() override { ++menuRefreshes; }
    void ActivateWindow() override { ++activations; }
    bool CloseWindow() override { return false; }

    bool outlineVisible = true;
    std::vector<Node *> labelEdits;
    int autoFits = 0;
    std::vector<Node *> statusNodes;
    int menuRefreshes = 0;
    int activations = 0;
};

// A document with a fake pane and view, made the active one for its lifetime.
class TestDocument {
public:
    explicit TestDocument(bool active = true);
    ~TestDocument();
    Document doc;
    FakeTextPane *pane;
    FakeView view;
    Nodes &nodes() { return doc.trvOutline(); }
};

// Mirrors a tree from the observer's notifications alone, as an item model would, so that tests
// can check the notifications against the real tree.
class MirrorObserver : public NodesObserver {
public:
    explicit MirrorObserver(Nodes &nodes);
    ~MirrorObserver() override;
    void beforeInsert(Node *parent, int row) override;
    void afterInsert(Node *parent, int row) override;
    void beforeRemove(Node *parent, int row, int count) override;
    void afterRemove(Node *parent, int row, int count) override;
    void dataChanged(Node *node, NodeRole role) override;
    void beforeReorder(Node *parent) override;
    void afterReorder(Node *parent) override;
    void beforeReset() override;
    void afterReset() override;
    void ensureVisible(Node *node) override { scrolledTo.push_back(node); }
    void visibleChanged(bool visible) override { visibleChanges.push_back(visible); }

    // An empty list when the mirror matches the tree, else the differences.
    QStringList differences() const;

    std::vector<Node *> scrolledTo;
    std::vector<bool> visibleChanges;
    std::map<NodeRole, int> changes;
    QStringList protocolErrors; // before/after calls out of pairs, bad rows

private:
    const std::vector<Node *> &actual(Node *parent) const;
    void rebuild(Node *parent);
    Nodes &m_nodes;
    std::map<Node *, std::vector<Node *>> m_mirror; // parent (null: top) -> children
    QString m_pending;
};

// Builds a tree from an indented outline: one label per line, two blanks per level.
// Returns the nodes in line order. Keys are assigned as during loading.
std::vector<Node *> BuildOutline(Document &document, const QString &outline);
