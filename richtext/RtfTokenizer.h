#pragma once

#include <QByteArrayView>

#include <string_view>

// Splits RTF bytes into groups, control words, control symbols and runs of text. It knows nothing
// of what the words mean; the reader pulls one token at a time and may step over bytes the
// tokens do not describe (the data of \bin).
class RtfTokenizer {
public:
    enum Kind : unsigned char {
        End,        // no more input
        GroupOpen,  // "{"
        GroupClose, // "}"
        Word,       // "\word" with an optional numeric parameter
        Symbol,     // "\" and one character that is not a letter (not "\'")
        Hex,        // "\'hh": value is the byte, or -1 when the digits are missing
        Control,    // a control character other than CR, LF and NUL, which are dropped
        Text,       // a run of other bytes
    };

    struct Token {
        Kind kind = End;
        char symbol = 0;         // Symbol, Control
        bool hasParam = false;   // Word
        int value = 0;           // Word: the parameter (0 when none); Hex: the byte
        std::string_view word{}; // Word
        QByteArrayView text{};   // Text
        qsizetype start = 0;     // offset of the token's first byte
    };

    // Starts at the first "{" of the input; anything before it is ignored.
    explicit RtfTokenizer(QByteArrayView in);

    Token next();

    QByteArrayView input() const { return m_in; }
    qsizetype pos() const { return m_pos; }
    // Steps over bytes the reader has taken itself.
    void skip(qsizetype count) { m_pos += count; }

private:
    Token word(qsizetype start);
    Token symbol(qsizetype start);

    QByteArrayView m_in;
    qsizetype m_pos = 0;
};
