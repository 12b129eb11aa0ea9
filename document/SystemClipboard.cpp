#include "document/SystemClipboard.h"

#include "util/ErrorLog.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QStringList>

namespace {

QClipboard *clipboard() {
    QClipboard *c = qobject_cast<QGuiApplication *>(QCoreApplication::instance())
                        ? QGuiApplication::clipboard()
                        : nullptr;
    if (!c) {
        // The clipboard cannot be reached (no graphical session).
        modMain::Raise(modMain::errPermissionDenied, QStringLiteral("Can't open Clipboard"));
    }
    return c;
}

const QStringList &richTypes() {
    static const QStringList types{QStringLiteral("text/rtf"), QStringLiteral("text/richtext"),
                                   QStringLiteral("application/rtf")};
    return types;
}

} // namespace

void SystemClipboard::Clear() {
    clipboard()->clear();
}

bool SystemClipboard::GetFormat(int format) const {
    const QMimeData *data = clipboard()->mimeData();
    if (!data) {
        return false;
    }
    if (format == PlainText) {
        return data->hasText() && !data->hasFormat(QLatin1String(kOwnRichCopy));
    }
    if (format == Html) {
        return data->hasHtml();
    }
    if (format == RichText) {
        for (const QString &type : richTypes()) {
            if (data->hasFormat(type)) {
                return true;
            }
        }
    }
    return false;
}

QString SystemClipboard::GetText() const {
    return clipboard()->text();
}

QByteArray SystemClipboard::GetRichText() const {
    const QMimeData *data = clipboard()->mimeData();
    if (!data) {
        return {};
    }
    for (const QString &type : richTypes()) {
        if (data->hasFormat(type)) {
            return data->data(type);
        }
    }
    return {};
}

void SystemClipboard::SetText(const QString &text) {
    clipboard()->setText(text);
}

void SystemClipboard::SetRichText(const QByteArray &rtf) {
    auto *data = new QMimeData;
    data->setData(QStringLiteral("text/rtf"), rtf);
    clipboard()->setMimeData(data);
}

QString SystemClipboard::GetHtml() const {
    const QMimeData *data = clipboard()->mimeData();
    return data ? data->html() : QString();
}

void SystemClipboard::SetRichCopy(const QByteArray &rtf, const QString &html,
                                  const QString &plain) {
    auto *data = new QMimeData;
    data->setData(QStringLiteral("text/rtf"), rtf);
    data->setHtml(html);
    data->setText(plain);
    data->setData(QLatin1String(kOwnRichCopy), QByteArray("1"));
    clipboard()->setMimeData(data);
}
