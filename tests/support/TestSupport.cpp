#include "support/TestSupport.h"

#include "util/CodePage.h"
#include "util/ErrorLog.h"

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

QByteArray ReadFileBytes(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

void WriteFileBytes(const QString &path, const QByteArray &bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

ScopedFileSizeLimit::ScopedFileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &m_saved);
    m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = m_saved;
    small.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &small);
}

ScopedFileSizeLimit::~ScopedFileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &m_saved);
    std::signal(SIGXFSZ, m_oldHandler);
}
