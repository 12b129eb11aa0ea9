#include "util/TextEncoding.h"

#include "util/CodePage.h"

#include <QStringDecoder>

namespace TextEncoding {

namespace {

bool startsWith(QByteArrayView bytes, std::initializer_list<unsigned char> mark) {
    if (bytes.size() < qsizetype(mark.size())) {
        return false;
    }
    qsizetype i = 0;
    for (unsigned char b : mark) {
        if (static_cast<unsigned char>(bytes.at(i++)) != b) {
            return false;
        }
    }
    return true;
}

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF, no sequence cut off.
bool validUtf8(QByteArrayView bytes) {
    const qsizetype n = bytes.size();
    qsizetype i = 0;
    while (i < n) {
        const auto b = static_cast<unsigned char>(bytes.at(i));
        int follow = 0;
        char32_t cp = 0;
        char32_t min = 0;
        if (b < 0x80) {
            ++i;
            continue;
        } else if ((b & 0xE0) == 0xC0) {
            follow = 1;
            cp = b & 0x1F;
            min = 0x80;
        } else if ((b & 0xF0) == 0xE0) {
            follow = 2;
            cp = b & 0x0F;
            min = 0x800;
        } else if ((b & 0xF8) == 0xF0) {
            follow = 3;
            cp = b & 0x07;
            min = 0x10000;
        } else {
            return false;
        }
        if (i + follow >= n) {
            return false; // cut off at the end
        }
        for (int k = 1; k <= follow; ++k) {
            const auto c = static_cast<unsigned char>(bytes.at(i + k));
            if ((c & 0xC0) != 0x80) {
                return false;
            }
            cp = (cp << 6) | (c & 0x3F);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            return false;
        }
        i += follow + 1;
    }
    return true;
}

QString decode(QStringConverter::Encoding encoding, QByteArrayView bytes) {
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    return decoder(bytes);
}

} // namespace

Detected Detect(QByteArrayView bytes) {
    if (startsWith(bytes, {0xEF, 0xBB, 0xBF})) {
        return Detected::Utf8Bom;
    }
    if (startsWith(bytes, {0xFF, 0xFE})) {
        return Detected::Utf16LE;
    }
    if (startsWith(bytes, {0xFE, 0xFF})) {
        return Detected::Utf16BE;
    }
    bool ascii = true;
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    }
    // Plain ASCII reads the same either way; the code page is the file format's own.
    return !ascii && validUtf8(bytes) ? Detected::Utf8 : Detected::CodePage;
}

QString DecodeText(QByteArrayView bytes) {
    switch (Detect(bytes)) {
    case Detected::Utf8Bom:
        return decode(QStringConverter::Utf8, bytes.sliced(3));
    case Detected::Utf8:
        return decode(QStringConverter::Utf8, bytes);
    case Detected::Utf16LE:
        return decode(QStringConverter::Utf16LE, bytes.sliced(2));
    case Detected::Utf16BE:
        return decode(QStringConverter::Utf16BE, bytes.sliced(2));
    case Detected::CodePage:
        break;
    }
    return CodePage::toUnicode(bytes);
}

QByteArray EncodeText(QStringView text, Encoding encoding) {
    if (encoding == Encoding::Utf8) {
        return text.toUtf8();
    }
    return CodePage::fromUnicode(text);
}

bool EncodingFromName(const QString &name, Encoding &encoding) {
    const QString n = name.toLower();
    if (n == QLatin1String("utf-8") || n == QLatin1String("utf8")) {
        encoding = Encoding::Utf8;
        return true;
    }
    if (n == QLatin1String("windows-1252") || n == QLatin1String("cp1252")) {
        encoding = Encoding::CodePage;
        return true;
    }
    return false;
}

} // namespace TextEncoding
