// File access of documents: whole-file reads, safe whole-file writes, the backup rule, the format
// an extension implies and the text-format warning.
#include "document/modDoc.h"

#include "util/ErrorLog.h"
#include "util/modString.h"

namespace modDoc {

QString TextFormatWarning() {
    return QStringLiteral("Warning - you are saving this document in text format.  ") +
           QStringLiteral("Although the text itself will be retained, any rich text formatting "
                          "and organisation into entries will be lost if the file is reloaded.  ") +
           QStringLiteral("Normally you should save the file as text only if you wish to load it "
                          "into another application that does not recognise the native "
                          "formatting.  ") +
           QStringLiteral("Do you want to continue?");
}

QString DocDefaultVersionFromExt(const QString &path) {
    PROC("modDocClipboard DocDefaultVersionFromExt");
    const QString ext = modString::FileExt(path).toLower();
    if (ext == QStringLiteral("mvd")) {
        return QStringLiteral("1");
    }
    // Plain text for "txt" and for every other extension alike.
    return QStringLiteral("-1");
}

} // namespace modDoc
