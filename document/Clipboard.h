#pragma once

#include <QByteArray>
#include <QString>

// What documents need of the system clipboard. The application implements it on QClipboard;
// tests use a fake.
class Clipboard {
public:
    enum Format {
        PlainText = 1,    // the platform's plain text
        RichText = -16639 // rich text (RTF), registered format 0xBF01 as a signed 16-bit value
    };

    virtual ~Clipboard() = default;

    virtual void Clear() = 0;
    virtual bool GetFormat(int format) const = 0;
    virtual QString GetText() const = 0;        // plain text
    virtual QByteArray GetRichText() const = 0; // RTF bytes
    virtual void SetText(const QString &text) = 0;
    virtual void SetRichText(const QByteArray &rtf) = 0;
};

namespace modDocClipboard {
// The clipboard the transfers use; null means there is none (the transfers then do nothing).
void SetClipboard(Clipboard *clipboard);
Clipboard *ActiveClipboard();
} // namespace modDocClipboard
