#pragma once

#include <QString>

// Small text and file-name functions. They compare exactly (case-sensitive) and never fail on
// empty input.
namespace modString {

// Leading and trailing blanks (spaces only) removed.
QString Trim(const QString &text);

bool FileExists(const QString &path);
QString FileExt(const QString &path);
QString FileWithoutExt(const QString &path);
bool StringAlphanumeric(const QString &text);
bool StringUpperCaseAlpha(const QString &text);
bool StringEndsWith(const QString &text, const QString &suffix);
QString StringPrefixRemove(const QString &text, const QString &prefix);
QString StringSuffixRemove(const QString &text, const QString &suffix, bool &removed);
void StringSplitAtLastDelimiter(const QString &text, const QString &delimiter, QString &before,
                                QString &after);

} // namespace modString
