#pragma once

#include <QString>
#include <QTemporaryDir>

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
