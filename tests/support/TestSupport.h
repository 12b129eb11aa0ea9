#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <csignal>
#include <initializer_list>
#include <sys/resource.h>

// Points the session log at a file of a temporary folder for the life of the object.
class ScopedLog {
public:
    ScopedLog();
    ~ScopedLog();
    QString path() const;
    QString content() const; // the log's text as written (lines end CR LF)

private:
    QTemporaryDir m_dir;
};

// Adds data rows whose columns are all strings: each row is its name, then one value per column.
void AddRows(std::initializer_list<std::initializer_list<const char *>> rows);

// A file's bytes, or "<missing>" when it cannot be read.
QByteArray ReadFileBytes(const QString &path);
// Replaces a file's contents (a test failure when the file cannot be opened).
void WriteFileBytes(const QString &path, const QByteArray &bytes);

// Limits the size of files this process may write, for the life of the object, so that a write
// fails part way as on a full disk (also for root). The size-limit signal is ignored meanwhile.
class ScopedFileSizeLimit {
public:
    explicit ScopedFileSizeLimit(rlim_t bytes);
    ~ScopedFileSizeLimit();
    ScopedFileSizeLimit(const ScopedFileSizeLimit &) = delete;
    ScopedFileSizeLimit &operator=(const ScopedFileSizeLimit &) = delete;

private:
    struct rlimit m_saved {};
    void (*m_oldHandler)(int) = nullptr;
};
