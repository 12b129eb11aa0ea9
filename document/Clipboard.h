#pragma once

#include <QByteArray>
#include <QString>

// What documents need of the system clipboard. The application implements it on QClipboard;
// tests use a fake.
class Clipboard {
public:
    enum Format {
        PlainText = 1,     // the platform's plain text
        RichText = -16639, // rich text (RTF), registered format 0xBF01 as a signed 16-bit value
        Html = -2          // HTML, as browsers and office programs offer it
    };

    virtual ~Clipboard() = default;

    virtual void Clear() = 0;
    virtual bool GetFormat(int format) const = 0;
    virtual QString GetText() const = 0;        // plain text
    virtual QByteArray GetRichText() const = 0; // RTF bytes
    virtual void SetText(const QString &text) = 0;
    virtual void SetRichText(const QByteArray &rtf) = 0;

    virtual QString GetHtml() const { return {}; }
    // Mavrolen's own copy of formatted text: the RTF, and for other programs the same text as HTML
    // and as plain text. The copy counts as rich text only: while it is on the clipboard,
    // GetFormat(PlainText) is false, as on a clipboard that holds nothing but the rich-text
    // format; GetText still gives its plain text.
    virtual void SetRichCopy(const QByteArray &rtf, const QString &html, const QString &plain) {
        (void)html;
        (void)plain;
        SetRichText(rtf);
    }
};

namespace modDocClipboard {
// The clipboard the transfers use; null means there is none (the transfers then do nothing).
void SetClipboard(Clipboard *clipboard);
Clipboard *ActiveClipboard();
} // namespace modDocClipboard
