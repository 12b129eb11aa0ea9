#include "support/TestSupport.h"

#include "app/modMain.h"
#include "util/CodePage.h"

#include <QFile>
#include <QTest>

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

void AddRows(std::initializer_list<std::initializer_list<const char *>> rows) {
    for (const auto &row : rows) {
        auto it = row.begin();
        QTestData &data = QTest::newRow(*it++);
        for (; it != row.end(); ++it) {
            data << QString::fromUtf8(*it);
        }
    }
}
