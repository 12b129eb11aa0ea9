// File access of documents: whole-file reads, safe whole-file writes, the read-only test and the
// backup, and the settings loading and saving follow.
#include "document/DocFiles.h"

#include "util/ErrorLog.h"
#include "util/modString.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <unistd.h>

namespace modDoc {

namespace {
std::function<bool()> g_backupRule;
std::function<bool()> g_autoLabelEditRule;
} // namespace

void SetBackupRule(std::function<bool()> backup) {
    g_backupRule = std::move(backup);
}
void SetAutoLabelEditRule(std::function<bool()> rule) {
    g_autoLabelEditRule = std::move(rule);
}
bool BackupOn() {
    return g_backupRule ? g_backupRule() : false;
}
bool AutoLabelEditOn() {
    return g_autoLabelEditRule ? g_autoLabelEditRule() : true;
}

QByteArray ReadWholeFile(const QString &path) {
    PROC("modDoc ReadWholeFile");
    QFile file(path);
    if (!QFileInfo::exists(path)) {
        modMain::Raise(modMain::errFileNotFound);
    }
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        modMain::Raise(file.error() == QFileDevice::PermissionsError ? modMain::errPermissionDenied
                                                                     : modMain::errPathFileAccess);
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        modMain::Raise(modMain::errDeviceIO, file.errorString());
    }
    return bytes;
}

namespace {

[[noreturn]] void raiseForSaveFile(const QSaveFile &file, int savedErrno) {
    const QString detail = file.fileName() + QStringLiteral(": ") + file.errorString();
    if (savedErrno == ENOSPC || savedErrno == EFBIG || savedErrno == EDQUOT ||
        file.error() == QFileDevice::ResourceError) {
        modMain::Raise(modMain::errDiskFull, modMain::ErrorDescription(modMain::errDiskFull) +
                                                 QStringLiteral(" (") + detail + QLatin1Char(')'));
    }
    if (savedErrno == EACCES || savedErrno == EPERM || savedErrno == EROFS ||
        file.error() == QFileDevice::PermissionsError) {
        modMain::Raise(modMain::errPermissionDenied,
                       modMain::ErrorDescription(modMain::errPermissionDenied) +
                           QStringLiteral(" (") + detail + QLatin1Char(')'));
    }
    modMain::Raise(modMain::errPathFileAccess,
                   modMain::ErrorDescription(modMain::errPathFileAccess) + QStringLiteral(" (") +
                       detail + QLatin1Char(')'));
}

} // namespace

void WriteWholeFile(const QString &path, const QByteArray &bytes) {
    PROC("modDoc WriteWholeFile");
    if (path.trimmed().isEmpty() || QFileInfo(path).isDir()) {
        modMain::Raise(modMain::errPathFileAccess);
    }
    QSaveFile file(path);
    errno = 0;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        raiseForSaveFile(file, errno);
    }
    // Written in slices so that a failure is seen where it happens.
    constexpr qsizetype kSlice = qsizetype(1) << 22;
    for (qsizetype at = 0; at < bytes.size(); at += kSlice) {
        const qsizetype n = qMin(kSlice, bytes.size() - at);
        errno = 0;
        if (file.write(bytes.constData() + at, n) != n) {
            const int e = errno;
            file.cancelWriting();
            raiseForSaveFile(file, e);
        }
    }
    errno = 0;
    if (!file.commit()) {
        raiseForSaveFile(file, errno);
    }
}

bool FileReadOnly(const QString &path) {
    PROC("modDoc FileReadOnly");
    // The owner's write bit is the read-only attribute (it holds even for the superuser, whom the
    // system lets write anyway); a file the user cannot write is read-only as well.
    const QFileInfo info(path);
    if (!info.exists()) {
        return false;
    }
    return !(info.permissions() & QFileDevice::WriteOwner) ||
           ::access(QFile::encodeName(path).constData(), W_OK) != 0;
}

// The backup rule: the existing file becomes FileWithoutExt(path) + ".bak", unless a read-only
// backup is already there.
void DocBackup(const QString &path) {
    PROC("modDoc DocBackup");
    if (!modString::FileExists(path)) {
        return;
    }
    const QString backup = modString::FileWithoutExt(path) + QStringLiteral(".bak");
    if (QFileInfo::exists(backup)) {
        if (FileReadOnly(backup)) {
            return;
        }
        if (!QFile::remove(backup)) {
            modMain::Raise(modMain::errPathFileAccess);
        }
    }
    if (!QFile::rename(path, backup)) {
        modMain::Raise(modMain::errPathFileAccess);
    }
}

} // namespace modDoc
