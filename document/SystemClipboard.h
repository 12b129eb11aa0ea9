#pragma once

#include "document/Clipboard.h"

// The system clipboard through Qt: plain text as text, rich text as "text/rtf" (also read from
// "text/richtext" and "application/rtf"), HTML as "text/html". Mavrolen's own rich copy also
// carries the type kOwnRichCopy. Needs a running QGuiApplication.
class SystemClipboard : public Clipboard {
public:
    static constexpr const char *kOwnRichCopy = "application/x-mavrolen-rtf-only";

    void Clear() override;
    bool GetFormat(int format) const override;
    QString GetText() const override;
    QByteArray GetRichText() const override;
    void SetText(const QString &text) override;
    void SetRichText(const QByteArray &rtf) override;
    QString GetHtml() const override;
    void SetRichCopy(const QByteArray &rtf, const QString &html, const QString &plain) override;
};
