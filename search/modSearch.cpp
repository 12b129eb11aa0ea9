#include "search/modSearch.h"

#include "document/Document.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "search/EntryTextScan.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"
#include "util/modString.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace modSearch {

QString g_sFindText;
QString g_sReplaceText;
bool g_bMatchCase = false;
bool g_bWholeWord = false;
bool g_bBackwards = false;
QString g_sSearchWhere;
QString g_sSearchWhereText;
qint32 g_iSearchMode = 0;

clsHistory g_hisFind;
clsHistory g_hisReplace;

namespace {

RichTextBuffer *paneOf(Document *document) {
    return document ? dynamic_cast<RichTextBuffer *>(document->txtRTF()) : nullptr;
}

Document *activeDocument() {
    Document *document = nullptr;
    return modMain::DocumentActive(document) ? document : nullptr;
}

bool isWordChar(QChar c) {
    return modString::StringAlphanumeric(QString(c));
}

// The word test of a label's occurrence at the 0-based index: the characters around it are not
// letters or digits. A single last character behind the occurrence counts as a blank.
bool labelWordAt(const QString &label, qsizetype index) {
    const QChar before = index == 0 ? QLatin1Char(' ') : label.at(index - 1);
    const qsizetype behind = index + g_sFindText.size(); // 0-based; 1-based it is one more
    const QChar after = behind + 1 < label.size() ? label.at(behind) : QLatin1Char(' ');
    return !isWordChar(before) && !isWordChar(after);
}

Qt::CaseSensitivity labelCase(int compare) {
    return compare == 0 ? Qt::CaseSensitive : Qt::CaseInsensitive;
}

// The forward and backward steps in the pane, for the current entry (oneOfAll false) or as one
// entry of a scan of all texts: that one starts at the text's start when nothing is selected and
// never searches a second time from the start.
bool searchPane(RichTextBuffer &pane, bool oneOfAll) {
    const int options = SearchOptions();
    if (!g_bBackwards) {
        const bool selection = pane.SelLength() > 0;
        const int start = (oneOfAll && !selection) ? 0 : pane.SelStart() + pane.SelLength();
        int position = pane.Find(g_sFindText, start, -1, options);
        // A search from a bare caret covers only the text behind it.
        if (position < 0 && selection && !oneOfAll) {
            pane.SetSelStart(0);
            position = pane.Find(g_sFindText, 0, -1, options);
        }
        return position >= 0;
    }
    int position = -1;
    int previous = -1;
    SearchTextBackwards(options, pane.SelStart(), position, previous);
    if (previous < 0) {
        if (pane.SelLength() > 0) {
            pane.SetSelStart(0);
        }
        SearchTextBackwards(options, int(pane.Text().size()), position, previous);
    }
    if (previous >= 0) {
        pane.SetSelStart(previous);
        pane.SetSelLength(int(g_sFindText.size()));
    }
    // Found only when a match also lies at or behind the limit: never after the wrap.
    return position >= 0;
}

void openDialog(qint32 mode) {
    struct Rest {
        ~Rest() { g_iSearchMode = 0; }
    } rest;
    if (Document *document = activeDocument()) {
        RichTextBuffer *pane = paneOf(document);
        if (pane && pane->SelLength() > 0) {
            g_sFindText = pane->SelText();
        }
    }
    g_iSearchMode = mode;
    modMain::Host().ShowSearchDialog();
    g_iSearchMode = 0;
    // A scan of all entries may have left another entry's text in the pane.
    modNodes::NodeTextGetSelected();
}

// How many replacements a Replace All may make at most: the characters of the scope when it
// begins. A replacement that builds new matches out of its neighbours could otherwise go on
// (almost) for ever.
qint64 replaceAllBudget(Document *document) {
    qint64 budget = 1;
    if (RichTextBuffer *pane = paneOf(document)) {
        budget += pane->Text().size();
    }
    for (Node *node : document->trvOutline()) {
        budget += node->Text().size();
        if (g_sSearchWhere == "1"_L1) {
            // A stored text starts with the length of its rich text, which is never shorter
            // than its characters.
            const QByteArray &tag = node->Tag();
            const qsizetype comma = tag.indexOf(',');
            bool ok = false;
            const qint64 length = comma > 0 ? tag.left(comma).toLongLong(&ok) : 0;
            budget += qMax<qint64>(ok ? length : 0, tag.size());
        }
    }
    return budget;
}

} // namespace

void CreateHistories() {
    PROC("modSearch CreateHistories");
    g_hisFind = clsHistory();
    g_hisReplace = clsHistory();
}

void InitialiseHistories() {
    PROC("modSearch InitialiseHistories");
    g_hisFind.setMaxEntries(10);
    g_hisFind.setSection(u"FindHistory"_s);
    g_hisReplace.setMaxEntries(10);
    g_hisReplace.setSection(u"ReplaceHistory"_s);
}

void SearchFind() {
    modMain::Guarded([] {
        PROC("modSearch SearchFind");
        openDialog(1);
    });
}

void SearchReplace() {
    modMain::Guarded([] {
        PROC("modSearch SearchReplace");
        openDialog(2);
    });
}

void SearchRepeat() {
    modMain::Guarded([] {
        PROC("modSearch SearchRepeat");
        struct Rest {
            ~Rest() { g_iSearchMode = 0; }
        } rest;
        g_iSearchMode = 1;
        SearchPerform();
    });
}

int SearchOptions() {
    int options = 0;
    if (g_bMatchCase) {
        options += RichTextBuffer::FindMatchCase;
    }
    if (g_bWholeWord) {
        options += RichTextBuffer::FindWholeWord;
    }
    if (g_bBackwards) {
        options += RichTextBuffer::FindNoHighlight;
    }
    return options;
}

bool SearchPerform() {
    bool ran = false;
    const bool found = modMain::Guarded([&] {
        PROC("modSearch SearchPerform");
        if (!activeDocument()) {
            return false;
        }
        ran = true;
        if (g_sSearchWhere == "0"_L1) {
            return SearchText();
        }
        if (g_sSearchWhere == "1"_L1) {
            return SearchAllTexts();
        }
        if (g_sSearchWhere == "2"_L1) {
            return SearchLabels();
        }
        return false;
    });
    if (ran && !found) {
        modMain::MsgBox(u"Search completed"_s, modMain::vbOKOnly);
    }
    return found;
}

bool SearchPerformReplace() {
    return modMain::Guarded([] {
        PROC("modSearch SearchPerformReplace");
        Document *document = activeDocument();
        if (!document || document->bReadOnly) {
            return false;
        }
        if (g_sSearchWhere == "0"_L1 || g_sSearchWhere == "1"_L1) {
            RichTextBuffer *pane = paneOf(document);
            if (!pane || pane->SelLength() <= 0) {
                return false;
            }
            SearchReplaceText();
            return true;
        }
        if (g_sSearchWhere == "2"_L1) {
            if (!document->trvOutline().SelectedItem()) {
                return false;
            }
            SearchReplaceLabel();
            return true;
        }
        return false;
    });
}

void SearchReplaceAll() {
    modMain::Guarded([] {
        PROC("modSearch SearchReplaceAll");
        Document *document = activeDocument();
        if (!document) {
            return;
        }
        BusyPointer busy;
        qint64 budget = replaceAllBudget(document);
        while (budget-- > 0 && SearchPerformReplace()) {
            if (!SearchPerform()) {
                break;
            }
        }
    });
}

bool SearchText() {
    return modMain::Guarded([] {
        PROC("modSearch SearchText");
        RichTextBuffer *pane = paneOf(activeDocument());
        return pane ? searchPane(*pane, false) : false;
    });
}

void SearchTextBackwards(int options, int limit, int &position, int &previous) {
    position = -1;
    previous = -1;
    modMain::Guarded([&] {
        PROC("modSearch SearchTextBackwards");
        RichTextBuffer *pane = paneOf(activeDocument());
        if (!pane) {
            return;
        }
        do {
            previous = position;
            position = pane->Find(g_sFindText, position + 1, -1,
                                  options | RichTextBuffer::FindNoHighlight);
        } while (position != -1 && position < limit);
    });
}

bool SearchAllText() {
    return modMain::Guarded([] {
        PROC("modSearch SearchAllText");
        RichTextBuffer *pane = paneOf(activeDocument());
        return pane ? searchPane(*pane, true) : false;
    });
}

bool SearchAllTexts() {
    return modMain::Guarded([] {
        PROC("modSearch SearchAllTexts");
        Document *document = activeDocument();
        RichTextBuffer *pane = paneOf(document);
        if (!pane) {
            return false;
        }
        BusyPointer busy;
        struct Shown {
            RichTextBuffer *pane;
            ~Shown() { pane->SetVisible(true); }
        } shown{pane};
        pane->SetVisible(false);
        Nodes &nodes = document->trvOutline();
        Node *selected = nodes.SelectedItem();
        const int first = selected ? selected->Index() : 1;
        const int count = nodes.Count();
        EntryTextScan scan(g_sFindText, g_bMatchCase, g_bWholeWord);
        Node *found = nullptr;
        // The selected entry is searched in the pane as it stands. Every other entry would be
        // loaded into the pane and searched from its start; only the entries whose text holds
        // a match are loaded. (Backwards, a freshly loaded text is never found: its search
        // always wraps. So only the selected entry can be found backwards.)
        const auto visit = [&](int index) {
            Node *node = nodes.Item(index);
            if (index != first || !selected) {
                if (g_bBackwards || scan.scan(document, node) == EntryTextScan::No) {
                    return;
                }
                modNodes::NodeTextGet(document, node);
            }
            if (searchPane(*pane, true)) {
                found = node;
            }
        };
        // The texts are decoded ahead, a batch at a time, on every core; the batches grow, so a
        // match near the start costs little.
        qint64 batchSize = 64;
        std::vector<Node *> batch;
        const auto run = [&](int from, int to) {
            for (int index = from, ahead = from - 1; index <= to && !found; ++index) {
                if (!g_bBackwards && index > ahead) {
                    ahead = int(std::min<qint64>(to, index + batchSize - 1));
                    batch.clear();
                    for (int i = index; i <= ahead; ++i) {
                        batch.push_back(nodes.Item(i));
                    }
                    scan.prepare(document, batch);
                    batchSize = std::min<qint64>(batchSize * 2, 4096);
                }
                visit(index);
            }
        };
        run(first, count);
        run(1, first - 1);
        if (found) {
            SearchNodeSelect(found);
        } else {
            modNodes::NodeTextGetSelected();
        }
        return found != nullptr;
    });
}

bool SearchLabel(const QString &label, int compare) {
    return modMain::Guarded([&] {
        PROC("modSearch SearchLabel");
        if (label.isEmpty()) {
            return false;
        }
        const qsizetype index = label.indexOf(g_sFindText, 0, labelCase(compare));
        if (index < 0) {
            return false;
        }
        // Only the first occurrence counts, also when it fails the word test.
        return !g_bWholeWord || labelWordAt(label, index);
    });
}

bool SearchLabels() {
    return modMain::Guarded([] {
        PROC("modSearch SearchLabels");
        Document *document = activeDocument();
        if (!document) {
            return false;
        }
        const int compare = g_bMatchCase ? 0 : 1;
        Nodes &nodes = document->trvOutline();
        Node *remembered = nodes.SelectedItem();
        modNodes::NodeGoDown(document);
        Node *now = nodes.SelectedItem();
        const int first = now ? now->Index() : 1;
        const int count = nodes.Count();
        Node *match = nullptr;
        for (int index = first; index <= count && !match; ++index) {
            Node *node = nodes.Item(index);
            if (SearchLabel(node->Text(), compare)) {
                match = node;
            }
        }
        for (int index = 1; index < first && !match; ++index) {
            Node *node = nodes.Item(index);
            if (SearchLabel(node->Text(), compare)) {
                match = node;
            }
        }
        modNodes::NodeSelect(document, match ? match : remembered);
        return match != nullptr;
    });
}

void SearchReplaceText() {
    modMain::Guarded([] {
        PROC("modSearch SearchReplaceText");
        Document *document = activeDocument();
        RichTextBuffer *pane = paneOf(document);
        if (!pane || pane->SelLength() <= 0) {
            return;
        }
        const int start = pane->SelStart();
        const QString selected = pane->SelText();
        QString replacement = g_sReplaceText;
        if (!g_bMatchCase && !replacement.isEmpty() && !replacement.contains(QLatin1Char(' ')) &&
            modString::StringUpperCaseAlpha(selected.left(1))) {
            replacement[0] = replacement.at(0).toUpper();
        }
        pane->SetSelText(replacement);
        pane->SetSelStart(start);
        pane->SetSelLength(int(replacement.size()));
        document->m_bDataChanged = true;
        modNodes::NodeTextPutSelected();
    });
}

void SearchReplaceLabel() {
    modMain::Guarded([] {
        PROC("modSearch SearchReplaceLabel");
        Document *document = activeDocument();
        Node *node = document ? document->trvOutline().SelectedItem() : nullptr;
        if (!node || g_sFindText.isEmpty()) {
            return;
        }
        const Qt::CaseSensitivity cs = labelCase(g_bMatchCase ? 0 : 1);
        QString label = node->Text();
        // Every pass starts again at the label's first character. When the replacement holds
        // the expression itself that would never end: then each occurrence is replaced once,
        // from left to right. Passes are bounded for rules that rebuild matches endlessly.
        const bool once = g_sReplaceText.contains(g_sFindText, cs);
        qint64 passes = qint64(label.size() + 1) * (label.size() + 1);
        qsizetype from = 0;
        while (passes-- > 0) {
            const qsizetype index = label.indexOf(g_sFindText, once ? from : 0, cs);
            if (index < 0 || (g_bWholeWord && !labelWordAt(label, index))) {
                break;
            }
            label = label.left(index) + g_sReplaceText + label.mid(index + g_sFindText.size());
            from = index + g_sReplaceText.size();
        }
        node->setText(label);
        document->m_bDataChanged = true;
    });
}

void SearchNodeSelect(Node *node) {
    modMain::Guarded([&] {
        PROC("modSearch SearchNodeSelect");
        Document *document = activeDocument();
        if (node && !node->isRemoved()) {
            if (!node->Selected()) {
                node->setSelected(true);
            }
            node->EnsureVisible();
            if (document && document->view()) {
                document->view()->UpdateStatusBar(node);
            }
        }
        if (document && document->view()) {
            document->view()->MenuEnableDynamic();
        }
    });
}

bool ReplaceHoldsFind() {
    if (g_sReplaceText.isEmpty()) {
        return false;
    }
    if (g_bMatchCase) {
        return g_sReplaceText.contains(g_sFindText);
    }
    return g_sReplaceText.toLower().contains(g_sFindText.toLower());
}

bool FindEnabled() {
    return !g_sFindText.isEmpty() && !g_sSearchWhereText.isEmpty();
}

bool ReplaceAllEnabled() {
    return g_iSearchMode == 2 && !g_sReplaceText.isEmpty() && !ReplaceHoldsFind();
}

bool ReplaceEnabledAfterFind(bool found) {
    return g_iSearchMode == 2 && found && !ReplaceHoldsFind();
}

namespace {

// Decided by a text pane itself: whether the entry's text holds the find expression.
bool paneHolds(Node *node) {
    RichTextBuffer pane;
    QByteArray rtf;
    modNodes::NodeTextDecompressIfRequired(node->Tag(), rtf);
    pane.SetTextRTF(rtf);
    return pane.Find(g_sFindText, 0, -1, SearchOptions() | RichTextBuffer::FindNoHighlight) >= 0;
}

} // namespace

std::vector<Node *> EntriesHolding(Document *document, const std::vector<Node *> &nodes) {
    return modMain::Guarded([&] {
        PROC("modSearch EntriesHolding");
        std::vector<Node *> holding;
        EntryTextScan scan(g_sFindText, g_bMatchCase, g_bWholeWord, false);
        constexpr size_t kBatch = 4096;
        for (size_t from = 0; from < nodes.size(); from += kBatch) {
            const std::vector<Node *> batch(nodes.begin() + qsizetype(from),
                                            nodes.begin() +
                                                qsizetype(std::min(nodes.size(), from + kBatch)));
            scan.prepare(document, batch);
            for (Node *node : batch) {
                const EntryTextScan::Result result = scan.scan(document, node);
                if (result == EntryTextScan::Yes ||
                    (result == EntryTextScan::Maybe && paneHolds(node))) {
                    holding.push_back(node);
                }
            }
        }
        return holding;
    });
}

void ForgetTexts() {
    EntryTextScan::forget();
}

} // namespace modSearch
