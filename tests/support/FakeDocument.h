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

// Builds a tree from an indented outline: one label per line, two blanks per level.
// Returns the nodes in line order. Keys are assigned as during loading.
std::vector<Node *> BuildOutline(Document &document, const QString &outline);
