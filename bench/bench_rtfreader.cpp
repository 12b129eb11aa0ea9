// Reading a megabyte of formatted RTF as RichEdit writes it.
#include "richtext/RtfReader.h"

#include <QGuiApplication>
#include <QTextDocument>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

QByteArray richEditDocument(qsizetype size) {
    QByteArray rtf = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\nouicompat\\deflang1033{\\fonttbl"
                     "{\\f0\\fnil\\fcharset0 Calibri;}{\\f1\\fnil\\fcharset238 Calibri;}"
                     "{\\f2\\fnil\\fcharset2 Symbol;}}\r\n"
                     "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n"
                     "{\\*\\generator Riched20 10.0.19041}\\viewkind4\\uc1 \r\n";
    int i = 0;
    while (rtf.size() < size) {
        switch (i++ % 5) {
        case 0:
            rtf += "\\pard\\sa200\\sl276\\slmult1\\f0\\fs22\\lang9 This \\fs44 is\\fs22  a \\b "
                   "simple \\ul five \\i paragraph \\ulnone\\b0 document\\i0 with caf\\'e9 and "
                   "\\ldblquote quotes\\rdblquote  and \\u8364? euro.\\par\r\n";
            break;
        case 1:
            rtf += "\\pard\\qc\\cf1 Centred red text in a longer line that goes on for a "
                   "while\\cf0 , then \\highlight2 highlighted\\highlight0  words.\\par\r\n";
            break;
        case 2:
            rtf +=
                "\\pard{\\pntext\\f2\\'B7\\tab}{\\*\\pn\\pnlvlblt\\pnf2\\pnindent0{\\pntxtb\\'B7}}"
                "\\fi-360\\li720\\sa200 Bullet item with \\f1\\'c8esk\\'e1\\f0  text\\par\r\n"
                "{\\pntext\\f2\\'B7\\tab}Second bullet item\\par\r\n";
            break;
        case 3:
            rtf += "\\pard\\li720\\ri1608\\qj Justified and indented paragraph text of a "
                   "reasonable length, written by a user of the outliner.\\line Next line "
                   "after a soft break.\\tab Tabbed.\\par\r\n";
            break;
        default:
            rtf += "\\pard\\sa200 {\\field{\\*\\fldinst{HYPERLINK \"http://example.org/\"}}"
                   "{\\fldrslt{\\ul\\cf2 a link}}}\\f0\\fs22  in a paragraph.\\par\r\n";
            break;
        }
    }
    rtf += "}\r\n";
    return rtf;
}

void BM_ReadRichEdit1MB(benchmark::State &state) {
    const QByteArray rtf = richEditDocument(1 << 20);
    for (auto _ : state) {
        auto doc = std::make_unique<QTextDocument>();
        RtfReader::read(rtf, doc.get());
        benchmark::DoNotOptimize(doc->blockCount());
        // Freeing the document is not part of reading.
        state.PauseTiming();
        doc.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * rtf.size());
}
BENCHMARK(BM_ReadRichEdit1MB)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
