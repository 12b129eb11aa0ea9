// Entry texts as plain characters: what the text pane would show, without building its document.
#include "document/modDocText.h"

#include "outline/modNodes.h"
#include "util/ErrorLog.h"

#include "richtext/RtfReader.h"

namespace modDocText {

QString PlainText(const QByteArray &storedText) {
    PROC("modDocText PlainText");
    QByteArray rtf;
    modNodes::NodeTextDecompressIfRequired(storedText, rtf);
    if (rtf.isEmpty()) {
        return {};
    }
    return RtfReader::plainText(rtf);
}

QString PlainTextStripped(const QByteArray &storedText) {
    QString text = PlainText(storedText);
    while (text.endsWith(QStringLiteral("\r\n"))) {
        text.chop(2);
    }
    return text;
}

} // namespace modDocText
