#pragma once

#include "outline/Node.h"

#include <QByteArray>
#include <QString>

class Document;
class clsFont;

// The primitives through which every command creates, copies, removes, selects, tags, keys,
// sorts and expands entries, and through which entry texts reach the text pane.
// Every primitive reports its own run-time errors and then returns its default value.
// A null node (or document) makes a primitive do nothing unless said otherwise.
namespace modNodes {

// True while a whole document is built or walked in bulk (load, save, import, export).
extern bool g_bDocTransfer;
// Nesting depth of NodeActionStart/NodeActionEnd, one for the whole application.
extern int g_iActionDepth;
// The entry most recently selected through NodeSelectFull.
extern NodeRef g_nodCurrent;
// True while NodeTextGet fills the text pane; NodeTextPut does nothing meanwhile.
extern bool g_bLoadingText;

// Batching: the outermost Start hides the active document's panes, the outermost End shows them
// again. Start always counts; End counts (and re-fits the splitter) only with an active document.
void NodeActionStart();
void NodeActionEnd();

// Adds a node (icons untagged, label empty). Inserts beside the root or without a relative become
// a last child of the root; the first insert makes the root, keyed "KEY0". During a bulk transfer
// the new node is keyed from its parent.
Node *NodeInsert(Document *document, int relationship, Node *relative);
// Selects a fresh node, labels it "New Entry", starts its label edit and sets the text font.
void NodeInitialise(Document *document, Node *node);
// Copies the source and its subtree relative to the target; returns the copy.
Node *NodeDuplicate(Document *document, Node *source, Node *target, int relationship);
// Places a copy of the copied node next to the selection; with deleteSource, removes the
// original and clears the reference.
void NodePaste(Document *document, NodeRef &copied, bool deleteSource);
// Removes the node and its subtree; a parent left without children is collapsed.
void NodeDelete(Document *document, Node *node);

// Selects the node: only the flag during a bulk transfer, else NodeSelectFull.
void NodeSelect(Document *document, Node *node);
// Selects the node, shows it, loads its text and updates the status bar and commands.
void NodeSelectFull(Document *document, Node *node);
// The root of the selected entry's tree; root is left untouched when nothing is selected.
void NodeGetRoot(Document *document, Node *&root);
// Moves the selection to the entry that follows the selected one.
void NodeGoDown(Document *document);

// Renumbers the keys of the node's subtree: the node gets key, its i-th child key + "." + i
// ("KEY" + i under "KEY"); an empty key blanks the subtree.
void NodeSetKeys(Node *node, const QString &key);

void NodeCollapseAll(Node *node);
// Expands the node and every descendant that has children; leaves are not touched.
void NodeExpandAll(Node *node);
// Expands the subtree down to the level (the root is level 1) and collapses below it.
void NodeExpandToLevel(Node *node, int level);
// Sets Sorted on the node and every descendant.
void NodeSortAll(Node *node, bool sorted);
// Applies the font to the whole body text of the node and every descendant.
void NodeSetFontAll(Document *document, Node *node, const clsFont &font);

void NodeTagOn(Node *node);
void NodeTagOff(Node *node);
void NodeTagToggle(Node *node);
bool NodeTagged(Node *node);
// True when an entry of the active document is tagged.
bool NodesTaggedExist();

// Entry texts: the node's stored text, decoded, into the pane (empty for a null node) ...
void NodeTextGet(Document *document, Node *node);
// ... and the pane's text, encoded, into the node's Tag.
void NodeTextPut(Document *document, Node *node);
void NodeTextGetSelected();
void NodeTextPutSelected();
// Stored form: decimal length, ",", the compressed bytes; the plain text if compression fails.
void NodeTextCompressIfRequired(const QByteArray &text, QByteArray &stored);
// Decodes a stored form. A failed decode yields what follows the first comma; no comma or a
// length that is not positive yields the stored string unchanged.
void NodeTextDecompressIfRequired(const QByteArray &stored, QByteArray &text);

// The largest text an entry may inflate to (64 MB of rich text). A stored text that states a
// larger length, or a plain stored text larger than this, is refused: decoding it yields
// TextRefusedNotice() instead, reports what was refused through the error convention, and
// NodeTextPut leaves its stored bytes as they are, so that saving writes them back unchanged.
inline constexpr qint64 kTextLimit = qint64(64) << 20;
// The text's decoded length as its stored form states it (the stored size for a plain form).
qint64 NodeTextStatedLength(const QByteArray &stored);
bool NodeTextRefused(const QByteArray &stored);
QByteArray TextRefusedNotice(qint64 length);

// A bound on what all the decodes of one whole-document walk (an export, a search through every
// entry) may inflate together, for the life of the object: a text beyond what is left of it is
// refused as above. Budgets nest; the innermost counts.
class InflateBudget {
public:
    explicit InflateBudget(qint64 bytes);
    ~InflateBudget();
    InflateBudget(const InflateBudget &) = delete;
    InflateBudget &operator=(const InflateBudget &) = delete;
    // The budget for a document read from `fileSize` bytes: 64 times that, at least 256 MB.
    static qint64 ForFileSize(qint64 fileSize);

private:
    qint64 m_lSaved;
};

} // namespace modNodes
