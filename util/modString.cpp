#include "util/modString.h"

#include "util/ErrorLog.h"

#include <QFile>
#include <QFileInfo>

#include <unistd.h>

namespace modString {

QString Trim(const QString &text) {
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && text.at(start) == QLatin1Char(' ')) {
        ++start;
    }
    while (end > start && text.at(end - 1) == QLatin1Char(' ')) {
        --end;
    }
    return (start == 0 && end == text.size()) ? text : text.mid(start, end - start);
}

bool FileExists(const QString &path) {
    PROC("modString FileExists");
    if (path.isEmpty() || QFileInfo(path).isDir()) {
        return false;
    }
    // Whether the file could be opened for reading, asked without opening it: opening a pipe
    // would wait for a writer.
    return ::access(QFile::encodeName(path).constData(), R_OK) == 0;
}

QString FileExt(const QString &path) {
    PROC("modString FileExt");
    QString before;
    QString after;
    StringSplitAtLastDelimiter(path, QStringLiteral("."), before, after);
    return Trim(after);
}

QString FileWithoutExt(const QString &path) {
    PROC("modString FileWithoutExt");
    QString before;
    QString after;
    StringSplitAtLastDelimiter(path, QStringLiteral("."), before, after);
    return Trim(before);
}

bool StringAlphanumeric(const QString &text) {
    PROC("modString StringAlphanumeric");
    for (QChar c : text) {
        const char16_t u = c.unicode();
        if (!((u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z'))) {
            return false;
        }
    }
    return true;
}

bool StringUpperCaseAlpha(const QString &text) {
    PROC("modString StringUpperCaseAlpha");
    for (QChar c : text) {
        if (c.unicode() < 'A' || c.unicode() > 'Z') {
            return false;
        }
    }
    return true;
}

bool StringEndsWith(const QString &text, const QString &suffix) {
    PROC("modString StringEndsWith");
    const qsizetype n = suffix.size();
    if (text.size() >= n) {
        return QStringView(text).right(n) == suffix;
    }
    // The text is padded on the left with n blanks before the comparison.
    const QString padded = QString(n, QLatin1Char(' ')) + text;
    return QStringView(padded).right(n) == suffix;
}

QString StringPrefixRemove(const QString &text, const QString &prefix) {
    PROC("modString StringPrefixRemove");
    if (text.indexOf(prefix) == 0) {
        return Trim(text.mid(prefix.size()));
    }
    return text;
}

QString StringSuffixRemove(const QString &text, const QString &suffix, bool &removed) {
    PROC("modString StringSuffixRemove");
    removed = false;
    if (StringEndsWith(text, suffix)) {
        removed = true;
        return text.left(qMax<qsizetype>(0, text.size() - suffix.size()));
    }
    return text;
}

void StringSplitAtLastDelimiter(const QString &text, const QString &delimiter, QString &before,
                                QString &after) {
    PROC("modString StringSplitAtLastDelimiter");
    qsizetype last = -1;
    if (!delimiter.isEmpty()) {
        last = text.lastIndexOf(delimiter);
    }
    if (last < 0) {
        before = text;
        after.clear();
        return;
    }
    before = text.left(last);
    after = text.mid(last + delimiter.size());
}

} // namespace modString
