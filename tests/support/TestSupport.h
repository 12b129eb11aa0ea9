#pragma once

#include <QString>
#include <QTemporaryDir>

#include <initializer_list>

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
