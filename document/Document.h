#pragma once

#include "outline/Node.h"
#include "richtext/TextPane.h"
#include "richtext/clsFont.h"

#include <QString>

#include <memory>
#include <vector>

class Node;

// What a document needs of the window that shows it. A headless document has none. (Scrolling
// to a node goes through the tree's observer.)
class DocumentView {
public:
    virtual ~DocumentView() = default;
    // Shows or hides the outline pane (hidden during a batch of tree changes).
    virtual void SetOutlineVisible(bool visible) = 0;
    // Starts editing the node's label in place.
    virtual void StartLabelEdit(Node *node) = 0;
    // Re-fits the splitter between the outline and the text.
    virtual void ViewAutoFitSplit() = 0;
    // Shows the node's details in the status bar.
    virtual void UpdateStatusBar(Node *node) = 0;
    // Re-evaluates which commands are enabled.
    virtual void MenuEnableDynamic() = 0;
    // The caption, the label editing mode or the text lock of the document changed.
    virtual void DocumentStateChanged() {}
    // Makes the window the active one of the frame.
    virtual void ActivateWindow() = 0;
    // Closes the window, which asks the closing question. Returns whether it closed.
    virtual bool CloseWindow() = 0;
};

// One open document: its entry tree, its text pane and the state kept with it.
class Document {
public:
    Document();
    ~Document();
    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;

    // The entry tree (the outline pane's model).
    Nodes &trvOutline() { return m_nodes; }
    const Nodes &trvOutline() const { return m_nodes; }

    // The text pane; null until one is set.
    TextPane *txtRTF() const { return m_pTextPane.get(); }
    void setTextPane(std::unique_ptr<TextPane> pane) { m_pTextPane = std::move(pane); }

    // The window showing this document; null when headless. Not owned.
    DocumentView *view() const { return m_pView; }
    void setView(DocumentView *view) { m_pView = view; }

    // Outline pane visibility: the tree's flag, passed on to the view.
    void setOutlineVisible(bool visible);

    QString m_sFile;
    bool m_bDataChanged = false;
    bool bReadOnly = false;
    int m_iFileFormatVersion = 1; // 1 native, -1 plain text
    clsFont m_fntOutlineFont;
    clsFont m_fntTextFont;
    int m_iExpansionLevel = 0;
    bool m_bOutlineHasFocus = false;
    bool m_bTextHasFocus = false;
    bool m_bMovingSplit = false;
    float m_fSplitPosition = 0.0f;
    // The window's caption ("Document 1", or the file name).
    QString m_sCaption;
    // Made by Documents::Adopt: the list owns it.
    bool m_bOwnedByList = false;
    // The document agreed to close; its window goes at the next turn of the event loop.
    bool m_bClosing = false;
    // Labels are edited by clicking (automatic) or only by the rename command (manual).
    bool m_bLabelEditAutomatic = true;
    // The text pane refuses typing (a read-only document).
    bool m_bTextLocked = false;

private:
    Nodes m_nodes;
    std::unique_ptr<TextPane> m_pTextPane;
    DocumentView *m_pView = nullptr;
};

// The open documents and the active one: the program's one list of them. Documents register
// themselves on construction and leave on destruction; the main window (or a tool, or a test)
// chooses the active one. A document without a window is owned by the list.
namespace Documents {
const std::vector<Document *> &All(); // in opening order
Document *Active();
void SetActive(Document *document); // null: no active document
// A new document without a window, owned by the list until Release.
Document *Adopt();
// Destroys a document the list owns; false (and nothing happens) for any other.
bool Release(Document *document);
} // namespace Documents

namespace modMain {
// The active document, and true; or null and false when there is none.
bool DocumentActive(Document *&document);
} // namespace modMain
