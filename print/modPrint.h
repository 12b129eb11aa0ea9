#pragma once

#include <QByteArray>
#include <QFont>
#include <QPageLayout>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class Document;
class Node;
class QTextDocument;

// Printing without widgets: which entries a print run includes, how an entry's heading and text
// become text documents, the remembered page setup and the printed pages written as PDF.
namespace modPrint {

// What the user chose to print.
struct PrintChoice {
    // The selected entry (with its subtree when Children is set), else the whole document.
    bool CurrentEntryOnly = false;
    // With the current entry's descendants; the whole document always has them.
    bool Children = true;
    // With the entry texts; without them the pages are an outline of the labels.
    bool Texts = true;
};

// One printed entry, taken from the tree when the print run begins: later changes of the
// document do not reach pages already being laid out. Depth 0 is the first entry printed.
struct PrintEntry {
    QString Heading;   // HeadingText of the entry
    QByteArray Stored; // the entry's stored text
    int Depth = 0;
};

// The entries of a print run in outline order, keys renumbered from the root first (they number
// the headings). Empty when the document has no root, or no selected entry for CurrentEntryOnly.
std::vector<PrintEntry> PrintEntries(Document &doc, const PrintChoice &choice);
// The entry and, with children, its subtree in pre-order, depths counted from it.
std::vector<PrintEntry> SubtreeEntries(Node *top, bool children);

// The name the page header shows: the file name without its folder, or the window caption of a
// document never saved.
QString DocumentTitle(const Document &doc);
// An entry's heading: its key without "KEY", a blank and its label ("0.2 House").
QString HeadingText(const Node *entry);
// Heading level 1 to 6 for a depth (deeper entries stay at 6).
int HeadingLevel(int depth);

// Decodes an entry's stored text into the document (rich text or plain text), dropping the
// empty paragraphs at its end. Returns false when nothing printable is left.
bool EntryTextDocument(const QByteArray &stored, QTextDocument *doc);

// The font entry texts start from: the document's text font over the application's default.
QFont TextFont(const Document &doc);

// The page setup kept in the settings store ("PageSetup"), or the default (A4, or Letter where
// the locale measures in inches; 20 mm margins) when none is kept or it cannot be read.
QPageLayout PageLayoutLoad();
void PageLayoutSave(const QPageLayout &layout);
QPageLayout PageLayoutDefault();

// The last include answers of the print dialog ("Print" section): children and texts.
void PrintChoiceLoad(PrintChoice &choice);
void PrintChoiceSave(const PrintChoice &choice);

// Called after each page is laid out or written: pages done, pages in all (0 while counting).
// Returning false cancels.
using Progress = std::function<bool(int done, int total)>;

} // namespace modPrint
