// Entry texts as plain characters, through the rich-text buffer.
#include "document/modDocText.h"

#include "app/modMain.h"
#include "outline/modNodes.h"

#include "editor/RichTextBuffer.h"

namespace modDocText {

QString PlainText(const QByteArray &storedText) {
    PROC("modDocText PlainText");
    QByteArray rtf;
    modNodes::NodeTextDecompressIfRequired(storedText, rtf);
    if (rtf.isEmpty()) {
        return {};
    }
    // One buffer serves every entry: what the text pane shows of the entry, as plain text.
    static RichTextBuffer buffer;
    buffer.SetTextRTF(rtf);
    return buffer.Text();
}

QString PlainTextStripped(const QByteArray &storedText) {
    QString text = PlainText(storedText);
    while (text.endsWith(QStringLiteral("\r\n"))) {
        text.chop(2);
    }
    return text;
}

} // namespace modDocText
