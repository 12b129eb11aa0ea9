#include "richtext/RtfTokenizer.h"

#include <QtGlobal>

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

int hexDigit(char x) {
    if (x >= '0' && x <= '9')
        return x - '0';
    if (x >= 'a' && x <= 'f')
        return x - 'a' + 10;
    if (x >= 'A' && x <= 'F')
        return x - 'A' + 10;
    return -1;
}

// Bytes that end a run of text: the three RTF specials and the control characters (bytes of
// 0x80 and above are text).
bool endsText(char x) {
    return x == '\\' || x == '{' || x == '}' || (x >= 0 && x < 0x20);
}

} // namespace

RtfTokenizer::RtfTokenizer(QByteArrayView in) : m_in(in) {
    while (m_pos < m_in.size() && m_in[m_pos] != '{')
        ++m_pos;
}

RtfTokenizer::Token RtfTokenizer::next() {
    const char *d = m_in.data();
    const qsizetype n = m_in.size();
    while (m_pos < n) {
        const qsizetype start = m_pos;
        const char ch = d[m_pos];
        switch (ch) {
        case '{':
            ++m_pos;
            return {.kind = GroupOpen, .start = start};
        case '}':
            ++m_pos;
            return {.kind = GroupClose, .start = start};
        case '\\':
            ++m_pos;
            if (m_pos >= n)
                return {};
            if (isLetter(d[m_pos]))
                return word(start);
            return symbol(start);
        case '\r':
        case '\n':
        case 0:
            ++m_pos;
            continue;
        default:
            if (ch > 0 && ch < 0x20) {
                ++m_pos;
                return {.kind = Control, .symbol = ch, .start = start};
            }
            while (m_pos < n && !endsText(d[m_pos]))
                ++m_pos;
            return {.kind = Text, .text = m_in.sliced(start, m_pos - start), .start = start};
        }
    }
    return {};
}

RtfTokenizer::Token RtfTokenizer::word(qsizetype start) {
    const char *d = m_in.data();
    const qsizetype n = m_in.size();
    const qsizetype ws = m_pos;
    while (m_pos < n && m_pos - ws < 32 && isLetter(d[m_pos]))
        ++m_pos;
    Token t{.kind = Word, .word = std::string_view(d + ws, size_t(m_pos - ws)), .start = start};
    bool neg = false;
    qint64 value = 0;
    if (m_pos + 1 < n && d[m_pos] == '-' && d[m_pos + 1] >= '0' && d[m_pos + 1] <= '9') {
        neg = true;
        ++m_pos;
    }
    while (m_pos < n && d[m_pos] >= '0' && d[m_pos] <= '9') {
        t.hasParam = true;
        if (value < 100000000)
            value = value * 10 + (d[m_pos] - '0');
        ++m_pos;
    }
    if (m_pos < n && d[m_pos] == ' ')
        ++m_pos;
    t.value = int(qBound(qint64(-100000000), neg ? -value : value, qint64(100000000)));
    return t;
}

RtfTokenizer::Token RtfTokenizer::symbol(qsizetype start) {
    const char *d = m_in.data();
    const qsizetype n = m_in.size();
    const char c = d[m_pos++];
    if (c != '\'')
        return {.kind = Symbol, .symbol = c, .start = start};
    const int hi = m_pos < n ? hexDigit(d[m_pos]) : -1;
    const int lo = m_pos + 1 < n ? hexDigit(d[m_pos + 1]) : -1;
    Token t{.kind = Hex, .value = -1, .start = start};
    if (hi >= 0 && lo >= 0) {
        m_pos += 2;
        t.value = hi * 16 + lo;
    } else if (hi >= 0) {
        m_pos += 1;
    }
    return t;
}
