#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <functional>

class ByteChain;

// What the document formats need of files and of the settings, below the document lifecycle
// (modDoc) so that the formats do not depend on it.
namespace modDoc {

// The Backup option: keep the old file's content as ".bak" when saving.
bool BackupOn();

// True when the file exists and is read-only: its owner write bit is clear, or the user may not
// write it.
bool FileReadOnly(const QString &path);
// The backup name of a file: the name without extension, ".bak".
QString BackupName(const QString &path);

// Reads a whole regular file. Raises 53 when it does not exist, 75 for anything but a regular
// file (a folder, a device, a pipe: nothing is read from it), and an error described by the
// system's reason when reading fails or ends short.
QByteArray ReadWholeFile(const QString &path);
// Writes a whole file atomically: the bytes go to a temporary file in the same folder, which is
// flushed to the disk; only then, with `backup`, does the old file's content become the backup
// (BackupName; a read-only backup is left alone and none is made), and the new file takes the
// old one's place with its permissions. On any failure the old file and the older backup are
// untouched, nothing is left over, and an error is raised whose description is the system's
// reason (61 disk full, 70 permission denied, 76 path not found, 57 device error, 75 others).
void WriteWholeFile(const QString &path, const QByteArray &bytes, bool backup = false);
// The same with the bytes made while they are written: `fill` appends them to the chain.
void WriteWholeFile(const QString &path, const std::function<void(ByteChain &)> &fill,
                    bool backup = false);
// The reason of the last failed load or save ("No space left on device"), for the window's
// message.
QString LastFailureReason();

// The value of the first tag `name` anywhere in the text, "" when there is none.
QByteArray DocLoadTag(QByteArrayView text, QByteArrayView name);
// Whether the tag `name` begins at `position` (0-based offset of its opener); when it does,
// closePosition is the offset of the first "}" at or after it (the text's size when there is
// none) and value the bytes between the blank after the name and that brace. Both are defined
// with the native format's scanner, which owns the tag opener.
bool DocLoadTagAtPosition(QByteArrayView text, QByteArrayView name, qsizetype position,
                          qsizetype &closePosition, QByteArray &value);

} // namespace modDoc
