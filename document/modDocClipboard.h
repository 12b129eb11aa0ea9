#pragma once

#include "document/Clipboard.h"

class Document;
class Node;

// A whole document to and from the clipboard as plain text. Export gives, for every entry in
// pre-order, its key without "KEY", a blank, its plain text without trailing line breaks, and
// CR LF (labels are not exported). Import makes one entry "Text" from the clipboard's plain text,
// else its rich text.
namespace modDocClipboard {

// The export text of a document (keys renumbered from the root first); empty without a root.
QString DocExportText(Document &doc);
// Appends one entry's piece and, recursively, its children's.
void DocSaveNodeAll(Node *node, QString &out);

// Clears the clipboard, then puts the active document on it (nothing more without one).
void DocExport();
// Fills the active document, just created, from the clipboard.
void DocImport();

} // namespace modDocClipboard
