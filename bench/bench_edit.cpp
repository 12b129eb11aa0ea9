// The Edit commands on large texts, each with the storing of the text into the entry: bold on a
// whole 100 KB text, select all and upper case on 100 KB, and pasting 1 MB of RTF.

#include "document/Clipboard.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "editor/modEdit.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

// Ordinary notes of about `chars` characters: lines of plain, bold and italic words.
QByteArray notes(qsizetype chars) {
    QByteArray rtf = "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}\\f0\\fs20 ";
    for (qsizetype text = 0, line = 0; text < chars; ++line) {
        const QByteArray number = QByteArray::number(line);
        rtf += "Line " + number +
               ": the quick brown fox jumps over the lazy dog, \\b bold words\\b0  and "
               "\\i italic ones\\i0 , then plain text to the end.\\par ";
        text += 5 + number.size() + 105;
    }
    rtf += "}";
    return rtf;
}

class BenchClipboard : public Clipboard {
public:
    void Clear() override { rich.clear(); }
    bool GetFormat(int format) const override { return format == RichText && !rich.isEmpty(); }
    QString GetText() const override { return {}; }
    QByteArray GetRichText() const override { return rich; }
    void SetText(const QString &) override {}
    void SetRichText(const QByteArray &r) override { rich = r; }
    QByteArray rich;
};

// A document whose selected entry holds the text.
struct Doc {
    explicit Doc(const QByteArray &rtf) {
        doc = modDoc::DocInit();
        doc->setTextPane(std::make_unique<RichTextBuffer>());
        pane = static_cast<RichTextBuffer *>(doc->txtRTF());
        entry = modNodes::NodeInsert(doc, relFirst, nullptr);
        modNodes::NodeSelect(doc, entry);
        load(rtf);
    }
    ~Doc() { modDoc::DocClose(doc); }
    void load(const QByteArray &rtf) {
        modNodes::g_bLoadingText = true;
        pane->SetTextRTF(rtf);
        modNodes::g_bLoadingText = false;
    }
    Document *doc;
    RichTextBuffer *pane;
    Node *entry;
};

void BM_BoldWhole100KB(benchmark::State &state) {
    Doc d(notes(100 * 1024));
    modEdit::EditSelectAll();
    for (auto _ : state) {
        modEdit::EditFormatBold(); // mixed: plain; then all plain: bold; and so on
    }
    state.counters["chars"] = double(d.pane->document()->characterCount());
}
BENCHMARK(BM_BoldWhole100KB)->Unit(benchmark::kMillisecond);

void BM_SelectAllUpper100KB(benchmark::State &state) {
    const QByteArray rtf = notes(100 * 1024);
    Doc d(rtf);
    for (auto _ : state) {
        state.PauseTiming();
        d.load(rtf);
        state.ResumeTiming();
        modEdit::EditSelectAll();
        modEdit::EditCaseUpper();
    }
}
BENCHMARK(BM_SelectAllUpper100KB)->Unit(benchmark::kMillisecond);

void BM_Paste1MBRtf(benchmark::State &state) {
    BenchClipboard clip;
    clip.rich = notes(900 * 1024); // 1 MB of RTF
    modDocClipboard::SetClipboard(&clip);
    Doc d("");
    for (auto _ : state) {
        state.PauseTiming();
        d.load("");
        state.ResumeTiming();
        modEdit::EditPaste();
    }
    state.counters["rtfBytes"] = double(clip.rich.size());
    modDocClipboard::SetClipboard(nullptr);
}
BENCHMARK(BM_Paste1MBRtf)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
