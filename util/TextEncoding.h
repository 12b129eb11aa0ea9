#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

// Character encodings of plain-text files. Reading recognises UTF-8 (with or without its byte
// order mark) and UTF-16 with a byte order mark, and takes anything else as the single-byte file
// code page (util/CodePage.h). Writing uses the code page unless UTF-8 is asked for.
namespace TextEncoding {

enum class Encoding { CodePage, Utf8 };

// The encoding a file's bytes are read in, as DecodeText decides it.
enum class Detected { CodePage, Utf8, Utf8Bom, Utf16LE, Utf16BE };
Detected Detect(QByteArrayView bytes);

// The file's text: UTF-16 by its mark, UTF-8 by its mark or when the bytes are valid UTF-8,
// otherwise one character per byte of the code page.
QString DecodeText(QByteArrayView bytes);

// The text in the encoding, without a byte order mark. Characters the code page lacks become '?'.
QByteArray EncodeText(QStringView text, Encoding encoding);

// "utf-8" or "windows-1252" (any case; also "utf8", "cp1252"); false for any other name.
bool EncodingFromName(const QString &name, Encoding &encoding);

} // namespace TextEncoding
