// Feeds arbitrary bytes to the native document reader: the damage check and a full load into a
// document. Neither may crash, hang or leak out an exception.
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocV1.h"
#include "util/ErrorLog.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static int argc = 1;
    static char arg0[] = "fuzz_native";
    static char *argv[] = {arg0, nullptr};
    static QCoreApplication app(argc, argv);
    static QTemporaryDir logDir;
    static const bool logSet = [] {
        modMain::SetLogPath(logDir.filePath(QStringLiteral("fuzz.log")));
        return true;
    }();
    (void)logSet;

    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    (void)modDocV1::CheckFile(bytes);
    Document *doc = modDoc::DocInit();
    doc->m_sFile = QStringLiteral("fuzz.mvd");
    modMain::Guarded([&] {
        modDoc::DocLoadBytes(*doc, bytes);
        const QByteArray saved = modDocV1::DocSaveVersion(*doc);
        // And what was written reads again. (Not necessarily to the same tree: the format has no
        // escaping, so a label holding a tag opener reads back as more than one entry.)
        Document *again = modDoc::DocInit();
        again->m_sFile = QStringLiteral("again.mvd");
        modDoc::DocLoadBytes(*again, saved);
        modDoc::DocClose(again);
    });
    modDoc::DocClose(doc);
    return 0;
}
