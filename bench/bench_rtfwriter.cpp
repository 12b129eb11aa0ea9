// Speed of the RTF writer and of storing and reloading an entry text through the rich-text
// buffer (RTF plus zlib, as entry texts are kept).
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfWriter.h"

#include <QGuiApplication>
#include <QTextCursor>
#include <QTextDocument>

#include <benchmark/benchmark.h>
#include <zlib.h>

namespace {

// Fills a document with formatted paragraphs until its RTF reaches about the given size.
void fill(QTextDocument &doc, qsizetype targetBytes) {
    doc.setDefaultFont(QFont(QStringLiteral("Arial"), 10));
    QTextCursor c(&doc);
    const QStringList words = {QStringLiteral("outline"),      QStringLiteral("entry"),
                               QString::fromUtf8("caf\u00e9"), QStringLiteral("{braces}"),
                               QStringLiteral("text"),         QString::fromUtf8("\u03a9mega"),
                               QStringLiteral("notes"),        QStringLiteral("and")};
    int n = 0;
    c.beginEditBlock();
    while (true) {
        for (int w = 0; w < 60; ++w, ++n) {
            QTextCharFormat f;
            if (n % 5 == 1) {
                f.setFontWeight(QFont::Bold);
            }
            if (n % 7 == 2) {
                f.setFontItalic(true);
            }
            if (n % 11 == 3) {
                f.setForeground(QColor(n % 3 * 100, 0, 200));
            }
            if (n % 13 == 4) {
                f.setFontPointSize(14);
            }
            if (n % 17 == 5) {
                f.setFontFamilies({QStringLiteral("Courier New")});
            }
            c.insertText(words[n % words.size()], f);
            c.insertText(QStringLiteral(" "), QTextCharFormat());
        }
        QTextBlockFormat b;
        b.setAlignment(n % 3 == 0 ? Qt::AlignLeft : Qt::AlignHCenter);
        c.insertBlock(b);
        if (doc.characterCount() * 2 > targetBytes &&
            RtfWriter::write(&doc).size() >= targetBytes) {
            break;
        }
    }
    c.endEditBlock();
}

void BM_WriteFormatted1MB(benchmark::State &state) {
    QTextDocument doc;
    fill(doc, 1 << 20);
    qsizetype bytes = 0;
    for (auto _ : state) {
        const QByteArray rtf = RtfWriter::write(&doc);
        bytes = rtf.size();
        benchmark::DoNotOptimize(rtf.constData());
    }
    state.counters["rtf_bytes"] = double(bytes);
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_WriteFormatted1MB)->Unit(benchmark::kMillisecond);

QByteArray compressed(const QByteArray &raw) {
    uLongf size = compressBound(uLong(raw.size()));
    QByteArray out(qsizetype(size), Qt::Uninitialized);
    compress(reinterpret_cast<Bytef *>(out.data()), &size,
             reinterpret_cast<const Bytef *>(raw.constData()), uLong(raw.size()));
    out.resize(qsizetype(size));
    return out;
}

void BM_StoreEntry100KB(benchmark::State &state) {
    QTextDocument source;
    fill(source, 100 * 1024);
    RichTextBuffer buffer;
    buffer.SetFont(source.defaultFont());
    buffer.SetTextRTF(RtfWriter::write(&source));
    qsizetype bytes = 0;
    for (auto _ : state) {
        const QByteArray z = compressed(buffer.TextRTF());
        bytes = z.size();
        benchmark::DoNotOptimize(z.constData());
    }
    state.counters["rtf_bytes"] = double(buffer.TextRTF().size());
    state.counters["zlib_bytes"] = double(bytes);
}
BENCHMARK(BM_StoreEntry100KB)->Unit(benchmark::kMillisecond);

// Notes as people write them: sentences of plain words with now and then a bold or italic one.
void fillNotes(QTextDocument &doc, qsizetype targetBytes) {
    doc.setDefaultFont(QFont(QStringLiteral("Arial"), 10));
    QTextCursor c(&doc);
    c.beginEditBlock();
    const QString sentence = QStringLiteral("Call the builder about the roof and ask for a date ");
    for (int n = 0;; ++n) {
        c.insertText(sentence, QTextCharFormat());
        QTextCharFormat f;
        if (n % 2 == 0) {
            f.setFontWeight(QFont::Bold);
        } else {
            f.setFontItalic(true);
        }
        c.insertText(QStringLiteral("before Friday"), f);
        c.insertText(QStringLiteral(". "), QTextCharFormat());
        if (n % 4 == 3) {
            c.insertBlock();
            if (RtfWriter::write(&doc).size() >= targetBytes) {
                break;
            }
        }
    }
    c.endEditBlock();
}

void BM_LoadEntry100KB(benchmark::State &state) {
    QTextDocument source;
    if (state.range(0) == 0) {
        fill(source, 100 * 1024);
    } else {
        fillNotes(source, 100 * 1024);
    }
    const QByteArray rtf = RtfWriter::write(&source);
    const QByteArray z = compressed(rtf);
    RichTextBuffer buffer;
    buffer.SetFont(source.defaultFont());
    for (auto _ : state) {
        QByteArray raw(rtf.size(), Qt::Uninitialized);
        uLongf size = uLongf(raw.size());
        uncompress(reinterpret_cast<Bytef *>(raw.data()), &size,
                   reinterpret_cast<const Bytef *>(z.constData()), uLong(z.size()));
        buffer.SetTextRTF(raw);
        benchmark::DoNotOptimize(buffer.document());
    }
    state.counters["rtf_bytes"] = double(rtf.size());
}
// 0: formatting changing at nearly every word (the worst case); 1: ordinary notes.
BENCHMARK(BM_LoadEntry100KB)->ArgName("notes")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
