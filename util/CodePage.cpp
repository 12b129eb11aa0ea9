#include "util/CodePage.h"

#include <array>

namespace CodePage {
namespace {

// Characters of the bytes 0x80 to 0x9F; the rest of the code page equals Latin-1.
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

int highByte(char16_t ch) {
    for (int i = 0; i < 32; ++i) {
        if (kHigh[i] == ch) {
            return 0x80 + i;
        }
    }
    return -1;
}

} // namespace

char16_t toChar(unsigned char byte) {
    if (byte >= 0x80 && byte < 0xA0) {
        return kHigh[byte - 0x80];
    }
    return byte;
}

int toByte(char16_t ch) {
    if (ch < 0x80 || (ch >= 0xA0 && ch <= 0xFF)) {
        return ch;
    }
    return highByte(ch);
}

QString toUnicode(QByteArrayView bytes) {
    QString out(bytes.size(), Qt::Uninitialized);
    out.resize(0);
    appendUnicode(out, bytes);
    return out;
}

void appendUnicode(QString &text, QByteArrayView bytes) {
    const qsizetype from = text.size();
    text.resize(from + bytes.size());
    char16_t *dst = reinterpret_cast<char16_t *>(text.data()) + from;
    const auto *src = reinterpret_cast<const unsigned char *>(bytes.data());
    for (qsizetype i = 0, n = bytes.size(); i < n; ++i) {
        const unsigned char b = src[i];
        dst[i] = (b & 0x80) ? toChar(b) : char16_t(b);
    }
}

QByteArray fromUnicode(QStringView text) {
    QByteArray out;
    fromUnicode(text, out);
    return out;
}

void fromUnicode(QStringView text, QByteArray &out) {
    out.resize(text.size());
    char *dst = out.data();
    const char16_t *src = reinterpret_cast<const char16_t *>(text.utf16());
    for (qsizetype i = 0, n = text.size(); i < n; ++i) {
        const char16_t c = src[i];
        if (c < 0x80) {
            dst[i] = char(c);
        } else {
            const int b = toByte(c);
            dst[i] = b < 0 ? '?' : char(b);
        }
    }
}

bool canEncode(QStringView text) {
    for (QChar c : text) {
        if (toByte(c.unicode()) < 0) {
            return false;
        }
    }
    return true;
}

} // namespace CodePage
