#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <functional>

// What the document formats need of files and of the settings, below the document lifecycle
// (modDoc) so that the formats do not depend on it.
namespace modDoc {

// The two settings documents follow: Backup (rename the old file to ".bak" before saving) and
// AutoLabelEdit (labels editable by clicking). Headless defaults: no backup, automatic editing.
void SetBackupRule(std::function<bool()> backup);
void SetAutoLabelEditRule(std::function<bool()> autoLabelEdit);
bool BackupOn();
bool AutoLabelEditOn();

// True when the file exists and is read-only: its owner write bit is clear, or the user may not
// write it.
bool FileReadOnly(const QString &path);
// Renames an existing file to its backup name (the name without extension, ".bak"), deleting an
// older backup first; a read-only backup is left alone and nothing is renamed.
void DocBackup(const QString &path);

// Reads a whole file; raises 53 when it does not exist and 75 when it cannot be read.
QByteArray ReadWholeFile(const QString &path);
// Writes a whole file safely: the bytes go to a temporary file in the same folder, which then
// replaces `path`. On any failure the old file is untouched and an error is raised (75 path or
// access, 61 disk full, 70 permission denied).
void WriteWholeFile(const QString &path, const QByteArray &bytes);

// The value of the first tag `name` anywhere in the text, "" when there is none.
QByteArray DocLoadTag(QByteArrayView text, QByteArrayView name);
// Whether the tag `name` begins at `position` (0-based offset of its opener); when it does,
// closePosition is the offset of the first "}" at or after it (the text's size when there is
// none) and value the bytes between the blank after the name and that brace. Both are defined
// with the native format's scanner, which owns the tag opener.
bool DocLoadTagAtPosition(QByteArrayView text, QByteArrayView name, qsizetype position,
                          qsizetype &closePosition, QByteArray &value);

} // namespace modDoc
