// The document window with large outlines: first showing, expanding and collapsing everything,
// and moving the selection to an entry with a long text.

#include "app/frmMain.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "editor/OutlineModel.h"
#include "editor/frmDocument.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMdiArea>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QTreeView>

#include <benchmark/benchmark.h>

#include <memory>

using namespace modNodes;

namespace {

constexpr int kEntries = 100000;

// A root with 1000 children of 99 children each (100,000 entries), built as a document load is.
Node *buildLargeTree(frmDocument &w) {
    Document &doc = w.document();
    Documents::SetActive(&doc);
    g_bDocTransfer = true;
    NodeActionStart();
    Node *root = NodeInsert(&doc, relChild, nullptr);
    root->setText(QStringLiteral("Root"));
    int made = 1;
    for (int i = 0; made < kEntries; ++i) {
        Node *top = NodeInsert(&doc, relChild, root);
        top->setText(QStringLiteral("Chapter %1").arg(i));
        ++made;
        for (int j = 0; j < 99 && made < kEntries; ++j, ++made) {
            NodeInsert(&doc, relChild, top)->setText(QStringLiteral("Section %1.%2").arg(i).arg(j));
        }
    }
    NodeActionEnd();
    g_bDocTransfer = false;
    return root;
}

// About 10 KB of rich text in lines of mixed formatting.
QByteArray tenKBText() {
    QByteArray rtf = "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}\\f0\\fs20 ";
    while (rtf.size() < 10 * 1024) {
        rtf +=
            "The quick brown fox jumps over the lazy dog. \\b bold\\b0  and \\i italic\\i0 .\\par ";
    }
    rtf += "}";
    return rtf;
}

// Lets the window lay out and paint what it shows.
void settle(frmDocument &w) {
    QApplication::processEvents();
    w.trvOutline()->viewport()->repaint();
    QApplication::processEvents();
}

void BM_ShowLargeTree(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto w = std::make_unique<frmDocument>();
        w->resize(800, 600);
        buildLargeTree(*w);
        state.ResumeTiming();
        w->show();
        settle(*w);
        state.PauseTiming();
        w.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_ShowLargeTree)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_ExpandCollapseAll(benchmark::State &state) {
    const bool expand = state.range(0) != 0;
    frmDocument w;
    w.resize(800, 600);
    Node *root = buildLargeTree(w);
    w.show();
    settle(w);
    for (auto _ : state) {
        state.PauseTiming();
        if (expand) {
            NodeCollapseAll(root);
        } else {
            NodeExpandAll(root);
        }
        settle(w);
        state.ResumeTiming();
        if (expand) {
            NodeExpandAll(root);
        } else {
            NodeCollapseAll(root);
        }
        settle(w);
    }
    if (w.trvOutline()->isExpanded(w.model()->indexFromNode(root)) != expand) {
        state.SkipWithError("the outline is out of step with the tree");
    }
}
BENCHMARK(BM_ExpandCollapseAll)
    ->ArgName("expand")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

// The large tree, wholly expanded, in a window that has painted it; returns the root.
Node *shownLargeTree(frmDocument &w) {
    w.resize(800, 600);
    Node *root = buildLargeTree(w);
    NodeExpandAll(root);
    w.show();
    settle(w);
    return root;
}

QByteArray storedText(const QByteArray &rtf) {
    QByteArray stored;
    NodeTextCompressIfRequired(rtf, stored);
    return stored;
}

// Selects the entry as a click in the outline does and lets the window paint what changed;
// false when the selection did not follow.
bool selectAndPaint(frmDocument &w, Node *node) {
    w.trvOutline()->setCurrentIndex(w.model()->indexFromNode(node));
    QApplication::processEvents();
    QApplication::processEvents();
    return w.document().trvOutline().SelectedItem() == node;
}

void BM_SelectEntryWith10KBText(benchmark::State &state) {
    frmDocument w;
    Node *root = shownLargeTree(w);
    // Two neighbouring entries with about 10 KB of text each.
    Node *first = root->Child()->Child();
    Node *second = first->Next();
    first->setTag(storedText(tenKBText()));
    second->setTag(first->Tag());
    bool toFirst = false;
    for (auto _ : state) {
        Node *target = toFirst ? first : second;
        toFirst = !toFirst;
        if (!selectAndPaint(w, target)) {
            state.SkipWithError("the selection did not follow");
            break;
        }
    }
}
BENCHMARK(BM_SelectEntryWith10KBText)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// About 100 KB of rich text whose format changes at almost every word.
QByteArray hundredKBText() {
    QByteArray rtf = "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}{\\f1 Courier New;}}"
                     "{\\colortbl ;\\red200\\green0\\blue0;}\\f0\\fs20 ";
    static const char *const kFormats[] = {"\\b ",       "\\b0\\i ",  "\\i0\\cf1 ",
                                           "\\cf0\\f1 ", "\\f0\\ul ", "\\ulnone "};
    for (int word = 0; rtf.size() < 100 * 1024; ++word) {
        rtf += kFormats[word % 6];
        rtf += "word" + QByteArray::number(word) + (word % 12 == 11 ? "\\par " : " ");
    }
    rtf += "}";
    return rtf;
}

// Selecting an entry whose 100 KB text is formatted word by word (with the first argument 1: the
// 10 KB text repeated, a few formats to a paragraph), from one with a short text, until the pane
// has painted. The pane shows a long text's first screenful first; with the second argument 1
// the time runs on until the whole text is read and painted (as when the user types at once).
void BM_SelectEntryWith100KBFormattedText(benchmark::State &state) {
    frmDocument w;
    Node *root = shownLargeTree(w);
    Node *small = root->Child()->Child();
    Node *large = small->Next();
    QByteArray rtf = hundredKBText();
    if (state.range(0) == 1) {
        const QByteArray ten = tenKBText().chopped(1); // without the closing brace
        rtf = ten;
        while (rtf.size() < 100 * 1024) {
            rtf += ten.mid(ten.indexOf("The quick"));
        }
        rtf += '}';
    }
    large->setTag(storedText(rtf));
    // Once before timing: the first text shown loads the fonts.
    selectAndPaint(w, large);
    for (auto _ : state) {
        state.PauseTiming();
        selectAndPaint(w, small);
        state.ResumeTiming();
        if (!selectAndPaint(w, large)) {
            state.SkipWithError("the selection did not follow");
            break;
        }
        if (state.range(1) == 1) {
            w.buffer()->CompleteText();
            QApplication::processEvents();
        }
    }
}
BENCHMARK(BM_SelectEntryWith100KBFormattedText)
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);

// The part of the above spent in the buffer: decoding and reading the stored text.
void BM_BufferLoad10KBText(benchmark::State &state) {
    RichTextBuffer buffer;
    const QByteArray rtf = tenKBText();
    for (auto _ : state) {
        buffer.SetTextRTF(rtf);
    }
}
BENCHMARK(BM_BufferLoad10KBText)->Unit(benchmark::kMillisecond);

// Opening a saved 100,000-entry document in a window of the program, until the outline shows.
void BM_OpenLargeDocumentInWindow(benchmark::State &state) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("large.mvd"));
    {
        frmDocument source;
        buildLargeTree(source);
        if (!modDoc::DocSaveDocument(source.document(), path, false)) {
            state.SkipWithError("the document could not be written");
            return;
        }
    }
    frmMain frm;
    frm.resize(1000, 800);
    frm.show();
    QApplication::processEvents();
    for (auto _ : state) {
        Document *doc = modDoc::DocLoad(path);
        auto *w = doc ? dynamic_cast<frmDocument *>(doc->view()) : nullptr;
        if (!w || doc->trvOutline().Count() != kEntries) {
            state.SkipWithError("the document did not open");
            break;
        }
        settle(*w);
        state.PauseTiming();
        doc->m_bDataChanged = false;
        frm.mdiArea()->closeAllSubWindows();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_OpenLargeDocumentInWindow)->Unit(benchmark::kMillisecond)->Iterations(3);

// Typing one character into an entry of about 100 KB of text: the pane's change, the encoding
// of the whole text and its store into the entry.
void BM_TypeIntoLargeText(benchmark::State &state) {
    frmDocument w;
    w.resize(800, 600);
    Node *root = buildLargeTree(w);
    Node *entry = root->Child()->Child();
    QByteArray rtf = tenKBText();
    rtf.chop(1);
    const QByteArray line = "The quick brown fox jumps over the lazy dog. \\b bold\\b0 .\\par ";
    while (rtf.size() < 100 * 1024) {
        rtf += line;
    }
    rtf += "}";
    QByteArray stored;
    NodeTextCompressIfRequired(rtf, stored);
    entry->setTag(stored);
    w.show();
    w.trvOutline()->setCurrentIndex(w.model()->indexFromNode(entry));
    settle(w);
    w.txtRTF()->setFocus();
    QKeyEvent toEnd(QEvent::KeyPress, Qt::Key_End, Qt::ControlModifier);
    QApplication::sendEvent(w.txtRTF(), &toEnd);
    for (auto _ : state) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
        QApplication::sendEvent(w.txtRTF(), &press);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
        QApplication::sendEvent(w.txtRTF(), &release);
        settle(w);
    }
    if (entry->Tag() == stored) {
        state.SkipWithError("the typed text was not stored");
    }
}
BENCHMARK(BM_TypeIntoLargeText)->Unit(benchmark::kMillisecond)->MinTime(1.0);

} // namespace

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
