#pragma once

#include "document/Clipboard.h"

// The system clipboard through Qt: plain text as text, rich text as "text/rtf" (also read from
// "text/richtext" and "application/rtf"). Needs a running QGuiApplication.
class SystemClipboard : public Clipboard {
public:
    void Clear() override;
    bool GetFormat(int format) const override;
    QString GetText() const override;
    QByteArray GetRichText() const override;
    void SetText(const QString &text) override;
    void SetRichText(const QByteArray &rtf) override;
};
