#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <functional>

#include "util/TextEncoding.h"

class Document;
class Node;

// The plain-text format. Writing gives every entry in pre-order as a heading line (its positional
// key without "KEY", a blank, its label), its unformatted text without trailing line breaks, and
// one blank line. Reading puts the whole file into one entry labelled "Text".
namespace modDocText {

// The whole text file of a document (keys renumbered from the root first). Empty when the
// document has no root.
QByteArray DocSaveVersion(Document &doc,
                          TextEncoding::Encoding encoding = TextEncoding::Encoding::CodePage);
// Appends one entry and, recursively, its children.
void DocSaveNodeAll(Node *node, QByteArray &out,
                    TextEncoding::Encoding encoding = TextEncoding::Encoding::CodePage);

// The stored text a text file becomes: every line (ended by CR LF, LF or CR) followed by CR LF.
// The file is read as TextEncoding::DecodeText does. The result is plain text in the code page,
// or, when the text holds characters the code page lacks, rich text of the same lines.
QByteArray TextFileAsStoredText(QByteArrayView bytes);

// Fills the (empty) document with one entry "Text" holding the file's text.
void DocLoadVersion(Document &doc, QByteArrayView bytes);

// Writes the document as plain text to `path`, leaving its name, format and changed flag alone.
// Returns true when the file was written.
bool DocExport(Document &doc, const QString &path,
               TextEncoding::Encoding encoding = TextEncoding::Encoding::CodePage);
// Reads the text file into the document, which the caller has just created.
bool DocImport(Document &doc, const QString &path);

// The root of the document's tree (of the selected entry's tree), or null.
Node *DocRoot(Document &doc);
// Visits the node and its subtree in pre-order (without recursion).
void ForEachPreOrder(Node *node, const std::function<void(Node *)> &visit);

// An entry text as plain characters (paragraphs ended by CR LF); stored texts are decoded first.
QString PlainText(const QByteArray &storedText);
// An entry text as plain characters (formatting dropped, paragraphs ended by CR LF), with every
// trailing CR LF removed. Stored texts are decoded first.
QString PlainTextStripped(const QByteArray &storedText);

} // namespace modDocText
