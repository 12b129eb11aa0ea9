// Entry texts as plain characters, through the rich-text buffer.
#include "document/modDocText.h"

#include "app/modMain.h"
#include "outline/modNodes.h"

#if __has_include("editor/RichTextBuffer.h")
#include "editor/RichTextBuffer.h"
#define MAVROLEN_HAVE_RICH_TEXT_BUFFER 1
#endif

namespace modDocText {

QString PlainText(const QByteArray &storedText) {
    PROC("modDocText PlainText");
    QByteArray rtf;
    modNodes::NodeTextDecompressIfRequired(storedText, rtf);
    if (rtf.isEmpty()) {
        return {};
    }
#ifdef MAVROLEN_HAVE_RICH_TEXT_BUFFER
    static RichTextBuffer buffer;
    buffer.SetTextRTF(rtf);
    return buffer.Text();
#else
    modMain::Raise(modMain::errInternal,
                   QStringLiteral("Plain text of rich text needs the rich-text buffer"));
#endif
}

QString PlainTextStripped(const QByteArray &storedText) {
    QString text = PlainText(storedText);
    while (text.endsWith(QStringLiteral("\r\n"))) {
        text.chop(2);
    }
    return text;
}

} // namespace modDocText
