#pragma once

#include <QByteArray>
#include <QString>

#include <random>

class Document;
class Node;

// Builds and inspects documents in tests.
namespace DocTest {

// A fresh headless document, made active.
Document *newDocument();
// Closes every headless document left over.
void closeAll();
// Appends an entry (a last child of `parent`, or the root when null) with a label and stored text.
Node *add(Document *doc, Node *parent, const QString &label, const QByteArray &tag = {});
// One line per entry in pre-order: indentation by depth, label, "*" when tagged, "+" when
// expanded, then "=" and the stored text.
QString outline(Document *doc);
// The three-entry example document: root Projects with Garden (tagged) and House (selected).
Document *exampleDocument();
// The example's native file.
QByteArray exampleFile();
// A generated document: `count` entries in a random shape, random labels, stored texts (some
// compressed, some with braces and line breaks), tags and expansion.
Document *generatedDocument(int count, std::mt19937 &random);
// Loads bytes as if read from a file of that name.
Document *loadBytes(const QByteArray &bytes, const QString &name);

} // namespace DocTest
