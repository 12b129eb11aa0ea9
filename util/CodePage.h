#pragma once

#include <QByteArray>
#include <QString>

// The single-byte code page of files and stored texts: Windows-1252, with the five bytes that
// code page leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) mapped to the C1 control characters of
// the same value, so that every byte value maps to its own character and back.
// This is the only place in the program that knows the mapping.
namespace CodePage {

// The character of one byte.
char16_t toChar(unsigned char byte);

// The byte of one character, or -1 when the code page has no byte for it.
int toByte(char16_t ch);

// Bytes to text, one character per byte.
QString toUnicode(QByteArrayView bytes);
// The same, appended to the text.
void appendUnicode(QString &text, QByteArrayView bytes);

// Text to bytes, one byte per character; characters outside the code page become '?'.
QByteArray fromUnicode(QStringView text);
// The same into `out`, in the room it already has when it is its own.
void fromUnicode(QStringView text, QByteArray &out);

// True when every character of the text has a byte in the code page.
bool canEncode(QStringView text);

} // namespace CodePage
