#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

class Document;
class Node;

// Scans entry texts for an expression without loading them into a text pane. Each stored text is
// decoded to its plain characters once (the reader's plain-text path, no text document) and kept
// per document, as long as the entry keeps the same stored text. Case-insensitive scans keep the
// texts case-folded, so both kinds of scan run as plain comparisons.
//
// The plain text writes a paragraph break as CR LF where the pane counts one position; the scan
// puts the expression in the same form, so it finds exactly what the pane's Find finds from the
// start of the text.
class EntryTextScan {
public:
    enum Result { No, Yes, Maybe };

    // keep false: texts are decoded for this scan only (a tool that reads each entry once).
    EntryTextScan(const QString &expression, bool matchCase, bool wholeWord, bool keep = true);
    ~EntryTextScan();
    EntryTextScan(const EntryTextScan &) = delete;
    EntryTextScan &operator=(const EntryTextScan &) = delete;

    // No when the entry's text holds no match, Yes when it does; Maybe when a whole-word test
    // cannot be told from the folded text (a character outside ASCII folded to a letter).
    Result scan(Document *document, Node *node);

    // Decodes the texts of these entries of the document ahead of their scans, on every core.
    // Without keeping, only the texts of the latest call are held.
    void prepare(Document *document, const std::vector<Node *> &nodes);

    // Drops every kept text.
    static void forget();

    struct Kept; // the kept texts of one document

private:
    Kept &keptOf(Document *document);

    bool m_bMatchCase;
    bool m_bWholeWord;
    bool m_bKeep;
    QString m_sNeedle;     // plain form, folded unless case is matched
    QByteArray m_baNeedle; // the same in one byte a character, when it fits
    bool m_bNeedleFits = false;
    Document *m_pDocument = nullptr;
    Kept *m_pKept = nullptr;
    std::unique_ptr<Kept> m_pAhead; // without keeping: the texts decoded by prepare()
};
