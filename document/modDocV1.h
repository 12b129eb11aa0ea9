#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class ByteChain;
class Document;
class Node;

// The native document format: one tagged line per value, "{\ttf_" name, a blank, the value, "}"
// and CR LF, in the file code page. Fourteen header tags, then five tags for every entry in
// pre-order. The reader scans the file's bytes once; entry texts run up to three bytes before the
// next tag opener, so they may hold any bytes, line breaks and braces included.
namespace modDocV1 {

inline constexpr QByteArrayView TagOpener = "{\\ttf_";

// The header tag names, in the order they are written.
QList<QByteArray> HeaderTagNames();

// One entry as the file holds it, handed out when its last tag has been read.
struct EntryRecord {
    QByteArray Key;   // "0", "0.1", ... (the value of "nodekey", without the "KEY" prefix)
    QByteArray Label; // file code page
    bool Tagged = false;
    bool Showing = false;
    QByteArray Text;        // stored text, exactly as in the file (unless not copied)
    qsizetype TextFrom = 0; // where the stored text stands in the file
    qsizetype TextLength = 0;
    qsizetype KeyPosition = 0;  // offset of the entry's "nodekey" opener
    bool TextTruncated = false; // the text did not end with "}" CR LF before the next tag
};

// What a scan met besides entries: tags outside the format (with their offsets), and whether the
// last tag of the file was cut short.
struct ScanNotes {
    QList<QPair<qsizetype, QByteArray>> UnknownTags;
    qsizetype Entries = 0;
};

// The value of the tag `name` when its opener is at `position`, as DocLoadTagAtPosition gives
// it, seen in place.
bool TagValueAt(QByteArrayView text, QByteArrayView name, qsizetype position,
                qsizetype &closePosition, QByteArrayView &value);

// Scans the whole file once and calls `finish` for every entry, in file order. Header tags
// (wherever they stand) and unknown tags are skipped whole. Without `copyTexts` the records give
// only the place of each stored text (Text stays empty).
void ScanEntries(QByteArrayView text, const std::function<void(EntryRecord &)> &finish,
                 ScanNotes *notes = nullptr, bool copyTexts = true);

// Appends one tag line: opener, name, one blank, value, "}", CR LF.
void DocSaveNodeTag(QByteArray &out, QByteArrayView name, QByteArrayView value);
void DocSaveNodeTag(ByteChain &out, QByteArrayView name, QByteArrayView value);
// Appends one entry's tag lines: key (without "KEY"), label (file code page), tagged, visible and
// the stored text, which must stay alive until the chain is written.
void DocSaveEntry(ByteChain &out, QByteArrayView key, QByteArrayView label, bool tagged,
                  bool showing, QByteArrayView text);

// The whole native file of a document: keys renumbered from the root first. Empty when the
// document has no root. The chain refers to the entries' stored texts: it is written before the
// document changes.
void DocSaveVersion(Document &doc, ByteChain &out);
QByteArray DocSaveVersion(Document &doc);
// The header lines: the format version, the selected entry's key and the two fonts.
void DocSaveHeader(QByteArray &out, const Document &doc, const QByteArray &selectedKey);

// Writes one entry and, recursively, its children.
void DocSaveNodeAll(Node *node, ByteChain &out);

// Builds the document's entries from the file's bytes and sets both fonts; returns the selected
// key ("selecteditemkey", with its "KEY" prefix). The two lists, indexed by the tree's entry
// index, receive the tagged and showing marks (index 0 unused). Damage (an entry whose relative is
// missing, keys out of order, a text cut short, a font value that is not a number) is written to
// the session log and the load goes on with what can be read.
QString DocLoadVersion(Document &doc, const QByteArray &text, QList<bool> &taggedByIndex,
                       QList<bool> &showingByIndex);

// Gives a freshly inserted entry its label and stored text, selects it and records its tagged and
// showing marks at its index (growing the lists as needed). A record without its text copied
// takes it from `file`, shared.
void DocLoadVersionNodeSet(Document *doc, Node *node, EntryRecord &rec, QList<bool> &taggedByIndex,
                           QList<bool> &showingByIndex,
                           const std::shared_ptr<const QByteArray> &file = {});

// A damage report of a native file, without building a document.
struct CheckReport {
    QStringList Problems; // one line each
    qsizetype Entries = 0;
    bool damaged() const { return !Problems.isEmpty(); }
};
CheckReport CheckFile(const QByteArray &text);

} // namespace modDocV1
