#include "support/TestSupport.h"

#include "app/modMain.h"
#include "util/CodePage.h"

#include <QFile>

ScopedLog::ScopedLog() {
    modMain::SetLogPath(path());
}

ScopedLog::~ScopedLog() {
    modMain::SetLogPath(QString());
}

QString ScopedLog::path() const {
    return m_dir.filePath(QStringLiteral("Mavrolen.log"));
}

QString ScopedLog::content() const {
    QFile f(path());
    if (!f.open(QIODevice::ReadOnly)) {
        return {};
    }
    return CodePage::toUnicode(f.readAll());
}
