// File access of documents: whole-file reads, safe whole-file writes, the read-only test and the
// backup, and the settings loading and saving follow.
#include "document/DocFiles.h"

#include "util/ByteChain.h"
#include "util/ErrorLog.h"
#include "util/MemoryPages.h"
#include "util/modGlobals.h"
#include "util/modString.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace modDoc {

bool BackupOn() {
    return modGlobals::Backup;
}

namespace {

QString systemReason(int e) {
    char buffer[256];
    return QString::fromLocal8Bit(strerror_r(e, buffer, sizeof buffer));
}

// The classic number of a system error.
qint32 errorNumberFor(int e) {
    switch (e) {
    case ENOSPC:
    case EFBIG:
    case EDQUOT:
        return modMain::errDiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
        return modMain::errPermissionDenied;
    case ENOENT:
    case ENOTDIR:
        return modMain::errPathNotFound;
    case EIO:
        return modMain::errDeviceIO;
    default:
        return modMain::errPathFileAccess;
    }
}

// Raises the error of a failed system call, described by the system's own reason.
[[noreturn]] void raiseErrno(int e) {
    modMain::Raise(errorNumberFor(e), systemReason(e));
}

// A descriptor closed however the procedure ends.
struct Fd {
    int fd = -1;
    ~Fd() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
    int release() {
        const int f = fd;
        fd = -1;
        return f;
    }
};

// A file in a folder removed at the end unless kept.
struct TempName {
    QByteArray name;
    ~TempName() {
        if (!name.isEmpty()) {
            ::unlink(name.constData());
        }
    }
};

mode_t processUmask() {
    static const mode_t mask = [] {
        const mode_t m = ::umask(022);
        ::umask(m);
        return m;
    }();
    return mask;
}

// Writes the pieces in order, many to a call; returns how many bytes that was.
qsizetype writeAll(int fd, const std::vector<QByteArrayView> &pieces) {
    constexpr size_t kBatch = 512;
    constexpr size_t kMaxCall = size_t(1) << 24;
    iovec batch[kBatch];
    size_t next = 0;    // the first piece not wholly written
    size_t written = 0; // bytes of that piece already written
    while (next < pieces.size()) {
        size_t count = 0;
        size_t bytes = 0;
        for (size_t i = next; i < pieces.size() && count < kBatch && bytes < kMaxCall; ++i) {
            const size_t skip = i == next ? written : 0;
            const size_t length = qMin(size_t(pieces[i].size()) - skip, kMaxCall - bytes);
            batch[count++] = {const_cast<char *>(pieces[i].data()) + skip, length};
            bytes += length;
        }
        ssize_t n = ::writev(fd, batch, int(count));
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            raiseErrno(errno);
        }
        if (n == 0 && bytes > 0) {
            raiseErrno(EIO);
        }
        while (n > 0) {
            const auto left = ssize_t(size_t(pieces[next].size()) - written);
            if (n < left) {
                written += size_t(n);
                break;
            }
            n -= left;
            ++next;
            written = 0;
        }
        // Skip empty pieces so the loop ends.
        while (next < pieces.size() && pieces[next].isEmpty()) {
            ++next;
        }
    }
    qsizetype total = 0;
    for (const QByteArrayView piece : pieces) {
        total += piece.size();
    }
    return total;
}

// A new unique file beside `path`, open for writing.
int createBeside(const QByteArray &path, const char *suffix, TempName &temp) {
    const qsizetype slash = path.lastIndexOf('/');
    QByteArray pattern = path.left(slash + 1) + '.' + path.mid(slash + 1) + suffix + "-XXXXXX";
    const int fd = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (fd < 0) {
        raiseErrno(errno);
    }
    temp.name = pattern;
    return fd;
}

void syncFolderOf(const QByteArray &path) {
    const qsizetype slash = path.lastIndexOf('/');
    const QByteArray folder = slash <= 0 ? QByteArray(slash == 0 ? "/" : ".") : path.left(slash);
    const int fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

// The old file's content under the backup name, replacing an older backup in one step: a hard
// link where the file system has them, else a copy.
void makeBackup(const QByteArray &path, const QByteArray &backup) {
    TempName temp;
    {
        Fd probe;
        probe.fd = createBeside(backup, ".new", temp);
    }
    ::unlink(temp.name.constData());
    if (::link(path.constData(), temp.name.constData()) != 0) {
        QFile::remove(QFile::decodeName(temp.name));
        if (!QFile::copy(QFile::decodeName(path), QFile::decodeName(temp.name))) {
            raiseErrno(errno ? errno : EIO);
        }
    }
    if (::rename(temp.name.constData(), backup.constData()) != 0) {
        raiseErrno(errno);
    }
    temp.name.clear();
}

} // namespace

QString LastFailureReason() {
    return modMain::Err.Description.isEmpty() ? modMain::ErrorDescription(modMain::Err.Number)
                                              : modMain::Err.Description;
}

QString BackupName(const QString &path) {
    return modString::FileWithoutExt(path) + QStringLiteral(".bak");
}

namespace {

// Buffers from this size on get their pages made at once, in large pieces where the system has
// them.
constexpr qsizetype kLargeRead = qsizetype(4) << 20;

// Reads the file's bytes [from, to) into the same place of `data`, making the pages first when
// there are many. Returns 0, the errno of a failed read, or -1 with `from` where the file ended.
int readPart(int fd, char *data, qsizetype &from, qsizetype to) {
    if (to - from >= kLargeRead) {
        MemoryPages::Make(data + from, data + to);
    }
    while (from < to) {
        const ssize_t n =
            ::pread(fd, data + from, size_t(qMin<qsizetype>(to - from, qsizetype(1) << 24)), from);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        if (n == 0) {
            return -1;
        }
        from += n;
    }
    return 0;
}

} // namespace

QByteArray ReadWholeFile(const QString &path) {
    PROC("modDoc ReadWholeFile");
    const QByteArray name = QFile::encodeName(path);
    Fd file;
    // Not blocking, so that opening a pipe returns at once; only regular files are read.
    file.fd = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file.fd < 0) {
        const int e = errno;
        modMain::Raise(e == ENOENT ? modMain::errFileNotFound : errorNumberFor(e), systemReason(e));
    }
    struct stat st {};
    if (::fstat(file.fd, &st) != 0) {
        raiseErrno(errno);
    }
    if (!S_ISREG(st.st_mode)) {
        modMain::Raise(modMain::errPathFileAccess, S_ISDIR(st.st_mode)
                                                       ? systemReason(EISDIR)
                                                       : QStringLiteral("Not a regular file"));
    }
    QByteArray bytes(qsizetype(st.st_size), Qt::Uninitialized);
    char *data = bytes.data();
    const qsizetype size = bytes.size();
    // Asked for the whole buffer, before either half is read.
    if (size >= kLargeRead) {
        MemoryPages::AskHuge(data, data + size);
    }
    // A large file is read in two halves at once, on two processors: the copying takes half the
    // time, and so does making the fresh buffer's pages where the system makes them in parallel.
    constexpr qsizetype kSplit = qsizetype(32) << 20;
    constexpr quintptr kAlign = quintptr(2) << 20;
    qsizetype half = size;
    if (size >= kSplit && std::thread::hardware_concurrency() > 1) {
        half = qsizetype(((quintptr(data) + quintptr(size / 2)) & ~(kAlign - 1)) - quintptr(data));
    }
    qsizetype firstEnd = 0;
    qsizetype secondEnd = half;
    int second = 0;
    std::thread other;
    if (half < size) {
        try {
            other = std::thread([&] { second = readPart(file.fd, data, secondEnd, size); });
        } catch (const std::system_error &) {
            half = size; // no thread to be had: read it all here
        }
    }
    int first = readPart(file.fd, data, firstEnd, half);
    if (other.joinable()) {
        other.join();
    }
    for (const auto &[result, end] : {std::pair{first, firstEnd}, std::pair{second, secondEnd}}) {
        if (result > 0) {
            raiseErrno(result);
        }
        if (result < 0) {
            // The file ended before its size: it was cut while being read.
            modMain::Raise(modMain::errDeviceIO,
                           QStringLiteral("Short read: %1 of %2 bytes").arg(end).arg(size));
        }
    }
    return bytes;
}

void WriteWholeFile(const QString &path, const QByteArray &bytes, bool backup) {
    WriteWholeFile(
        path, [&](ByteChain &out) { out.appendKept(bytes); }, backup);
}

void WriteWholeFile(const QString &path, const std::function<void(ByteChain &)> &fill,
                    bool backup) {
    PROC("modDoc WriteWholeFile");
    if (path.trimmed().isEmpty()) {
        raiseErrno(ENOENT);
    }
    const QByteArray name = QFile::encodeName(QFileInfo(path).absoluteFilePath());
    struct stat old {};
    const bool hadOld = ::stat(name.constData(), &old) == 0;
    if (hadOld && !S_ISREG(old.st_mode)) {
        modMain::Raise(modMain::errPathFileAccess, S_ISDIR(old.st_mode)
                                                       ? systemReason(EISDIR)
                                                       : QStringLiteral("Not a regular file"));
    }
    // The new content goes to a temporary file beside the old one and is on the disk before
    // anything else changes.
    TempName temp;
    Fd file;
    file.fd = createBeside(name, "", temp);
    {
        // The disk starts on what is written while the rest is being made, so that the flush
        // at the end has less left to wait for.
        constexpr off_t kStartEvery = off_t(8) << 20;
        off_t written = 0;
        off_t started = 0;
        ByteChain out([&](const std::vector<QByteArrayView> &pieces) {
            PROC("modDoc WriteWholeFile");
            written += off_t(writeAll(file.fd, pieces));
            if (written - started >= kStartEvery) {
                (void)::sync_file_range(file.fd, started, written - started, SYNC_FILE_RANGE_WRITE);
                started = written;
            }
        });
        fill(out);
        out.flush();
    }
    PROC("modDoc WriteWholeFile");
    // The old file's permissions and, for the superuser, its owner carry over.
    if (hadOld) {
        if (::geteuid() == 0) {
            (void)!::fchown(file.fd, old.st_uid, old.st_gid);
        }
        ::fchmod(file.fd, old.st_mode & 07777);
    } else {
        ::fchmod(file.fd, 0666 & ~processUmask());
    }
    if (::fsync(file.fd) != 0) {
        raiseErrno(errno);
    }
    if (::close(file.release()) != 0) {
        raiseErrno(errno);
    }
    if (backup && hadOld) {
        const QByteArray backupName = QFile::encodeName(BackupName(QFile::decodeName(name)));
        // A read-only backup is left alone and no backup is made.
        if (!FileReadOnly(QFile::decodeName(backupName))) {
            makeBackup(name, backupName);
        }
    }
    if (::rename(temp.name.constData(), name.constData()) != 0) {
        raiseErrno(errno);
    }
    temp.name.clear();
    syncFolderOf(name);
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

} // namespace modDoc
