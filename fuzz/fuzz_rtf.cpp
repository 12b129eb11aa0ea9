// libFuzzer target: the RTF reader must survive any input without crashing, hanging or
// growing without bound.
#include "richtext/RtfReader.h"

#include <QGuiApplication>
#include <QTextDocument>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "fuzz_rtf";
    static char *argv[] = {name, nullptr};
    static QGuiApplication app(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    QTextDocument doc;
    RtfReader::readAny(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)), &doc);
    // Lay the result out too: the document must be consistent enough to draw.
    doc.setTextWidth(400);
    (void)doc.size();
    return 0;
}
