#pragma once

#include "outline/Node.h"

#include <vector>

class Document;
class clsFont;

// The Outline menu's commands. Each works on the active document and its selected entry, does
// nothing without an active document, shows the busy pointer while it runs and reports its own
// run-time errors.
namespace modOutline {

// The entry last copied with OutlineCopy; reads as null once that entry has left its tree.
extern NodeRef g_nodCopied;

// Structure.
void OutlineInsertAbove();
void OutlineInsertBelow();
void OutlineInsertChild();
void OutlineDelete();
void OutlineDeleteTaggedEntries();
void OutlineCopy();
void OutlinePaste();
void OutlinePasteAndDelete();
void OutlinePasteTaggedEntries();
void OutlineTaggedEntry();
void OutlineRename();

// Moves and levels.
void OutlineMoveUp();
void OutlineMoveDown();
void OutlineMoveFirst();
void OutlineMoveLast();
void OutlineIndent();
void OutlineUnindent();

// Sorting, once.
void OutlineSortAll();
void OutlineSortCurrent();

// Expansion.
void OutlineExpand();
void OutlineCollapse();
void OutlineExpandAll();
void OutlineCollapseAll();
void OutlineExpandToLevel(int level);

// Opens the outline-font choice for the document's outline font: `choose` (the font commands'
// dialog for an outline) returns true when the user confirmed.
void OutlineFont(bool (*choose)(clsFont &font));

// The topmost tagged entries of the tree other than the root, in collection order: a tagged
// entry inside the subtree of another tagged entry is left out.
std::vector<Node *> TopmostTaggedEntries(const Nodes &nodes);

} // namespace modOutline
