#include "util/ErrorLog.h"

#include "util/CodePage.h"
#include "util/MainWindowHost.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QMutex>
#include <QStandardPaths>
#include <QThread>

namespace modMain {

thread_local QString CurrentProcName;
thread_local PendingError Err;

namespace {
QString g_sLogPathOverride;
constexpr qsizetype kLogLimit = 8192;

// An existing file that can be opened for reading.
bool ReadableFile(const QString &path) {
    if (QFileInfo(path).isDir()) {
        return false;
    }
    QFile file(path);
    return file.open(QIODevice::ReadOnly);
}
} // namespace

RuntimeError::RuntimeError(qint32 number, QString description, QString source)
    : Number(number), Description(description.isEmpty() ? ErrorDescription(number) : description),
      Source(source.isEmpty() ? QStringLiteral("Mavrolen") : source), m_what(Description.toUtf8()) {
}

const char *RuntimeError::what() const noexcept {
    return m_what.constData();
}

QString ErrorDescription(qint32 number) {
    switch (number) {
    case 5:
        return QStringLiteral("Invalid procedure call or argument");
    case 6:
        return QStringLiteral("Overflow");
    case 7:
        return QStringLiteral("Out of memory");
    case 9:
        return QStringLiteral("Subscript out of range");
    case 13:
        return QStringLiteral("Type mismatch");
    case 51:
        return QStringLiteral("Internal error");
    case 52:
        return QStringLiteral("Bad file name or number");
    case 53:
        return QStringLiteral("File not found");
    case 54:
        return QStringLiteral("Bad file mode");
    case 57:
        return QStringLiteral("Device I/O error");
    case 58:
        return QStringLiteral("File already exists");
    case 61:
        return QStringLiteral("Disk full");
    case 62:
        return QStringLiteral("Input past end of file");
    case 70:
        return QStringLiteral("Permission denied");
    case 75:
        return QStringLiteral("Path/File access error");
    case 76:
        return QStringLiteral("Path not found");
    case 424:
        return QStringLiteral("Object required");
    default:
        return QStringLiteral("Application-defined or object-defined error");
    }
}

void Raise(qint32 number, const QString &description) {
    throw RuntimeError(number, description, QStringLiteral("Mavrolen"));
}

void ReportError() {
    QString first = QStringLiteral("Error ");
    if (Err.Number == errObjectBase) {
        first +=
            QStringLiteral("returned by VB object ") + QString::number(Err.Number - errObjectBase);
    } else {
        first += QString::number(Err.Number);
    }
    static QMutex writing;
    {
        const QMutexLocker lock(&writing);
        WriteLog(first + QStringLiteral(" - ") + Err.Description + QStringLiteral("\r\n") +
                 Err.Source + QLatin1Char(' ') + CurrentProcName);
    }
    const QCoreApplication *app = QCoreApplication::instance();
    if (!app || QThread::currentThread() == app->thread()) {
        Host().ResetPointer();
    }
}

QString ProgramDirectory() {
    if (QCoreApplication::instance()) {
        return QCoreApplication::applicationDirPath();
    }
    return QFileInfo(QStringLiteral("/proc/self/exe"))
        .canonicalFilePath()
        .section(QLatin1Char('/'), 0, -2);
}

QString LogPath() {
    if (!g_sLogPathOverride.isEmpty()) {
        return g_sLogPathOverride;
    }
    static const QString path = [] {
        const QString dir = ProgramDirectory();
        if (QFileInfo(dir).isWritable()) {
            return dir + QStringLiteral("/Mavrolen.log");
        }
        QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        if (data.isEmpty()) {
            data = QDir::homePath();
        }
        data += QStringLiteral("/Mavrolen");
        QDir().mkpath(data);
        return data + QStringLiteral("/Mavrolen.log");
    }();
    return path;
}

void SetLogPath(const QString &path) {
    g_sLogPathOverride = path;
}

void WriteLog(const QString &message) {
    PROC("modMain WriteLog");
    // A log that cannot be read or written ends this procedure early; reporting that failure
    // would only come back here, so it is dropped.
    const QString path = LogPath();
    QString content;
    if (ReadableFile(path)) {
        QFile in(path);
        if (!in.open(QIODevice::ReadOnly)) {
            return;
        }
        content = CodePage::toUnicode(in.readAll());
    }
    content += message;
    while (content.size() > kLogLimit) {
        const qsizetype crlf = content.indexOf(QStringLiteral("\r\n"));
        if (crlf < 0) {
            content = content.right(kLogLimit);
            break;
        }
        content.remove(0, crlf + 2);
    }
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return;
    }
    out.write(CodePage::fromUnicode(content + QStringLiteral("\r\n")));
}

QString NowText() {
    const QDateTime now = QDateTime::currentDateTime();
    const QLocale locale = QLocale::system();
    return locale.toString(now.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(now.time(), QStringLiteral("HH:mm:ss"));
}

} // namespace modMain
