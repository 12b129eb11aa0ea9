#pragma once

// What the RTF reader's parts share: the state of a group, the tables read from the header, the
// control words the reader knows, and the reader itself. Only the reader's own files include it.
#include "richtext/RtfTokenizer.h"

#include <QByteArray>
#include <QColor>
#include <QHash>
#include <QString>
#include <QStringDecoder>
#include <QTextCharFormat>
#include <QTextCursor>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

class QTextDocument;
class QTextList;
class QTextTable;

namespace RtfReaderPrivate {

// Groups deeper than this are counted but share the state of the deepest kept group.
constexpr int kMaxDepth = 2000;
constexpr int kSymbolCodePage = -2;

enum class Dest : unsigned char {
    Text,       // document text
    Skip,       // ignored (metadata, fallback labels, unknown ignorable destinations)
    FontTable,  // \fonttbl and its font entries
    ColorTable, // \colortbl
    ListTable,  // \listtable
    Overrides,  // \listoverridetable
    PnDef,      // {\*\pn ...}: bullet / numbering definition of the paragraph
    Pict,       // \pict: hex or \bin picture data
    Object,     // \object: kept raw, shown as a placeholder
    FldInst,    // field instruction text
};

struct CharProps {
    int font = -1;
    int fs = 24;
    int fg = 0;
    int bg = 0;
    int href = -1;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    bool hidden = false;
    bool caps = false;
    bool scaps = false;
    signed char vert = 0; // 1 superscript, -1 subscript
    bool operator==(const CharProps &) const = default;
};

struct ParaProps {
    int align = 0; // 0 left, 1 centre, 2 right, 3 justify
    int li = 0, ri = 0, fi = 0, sb = 0, sa = 0;
    bool intbl = false;
    int pnStyle = 0; // QTextListFormat::Style of RichEdit bullets/numbering, 0 = none
    int pnStart = 1;
    int ls = 0; // Word list override number, 0 = none
    int ilvl = 0;
};

struct State {
    Dest dest = Dest::Text;
    bool uprChild = false; // a group inside \upr: skipped unless it is the Unicode \ud part
    bool inUpr = false;
    unsigned char uc = 1;
    int paraOwner = -1; // for PnDef: index of the group whose paragraph the definition is for
    int field = -1;     // index into fields of the innermost field
    qsizetype start = 0;
    CharProps ch;
    ParaProps para;
};

struct Font {
    QString name;
    int codePage = 0; // 0 = document code page
};

struct Field {
    QString inst;
};

struct WordList {
    int id = 0;
    std::vector<int> nfc; // \levelnfc per level
};

// clang-format off
enum Kw : int {
    K_unknown,
    // destinations
    K_rtf, K_fonttbl, K_colortbl, K_stylesheet, K_info, K_listtable, K_listoverridetable, K_pntext,
    K_listtext, K_pn, K_pict, K_object, K_field, K_fldinst, K_fldrslt, K_upr, K_ud, K_shppict,
    K_nonshppict, K_skipdest, K_result, K_header, K_footer, K_footnote,
    // document
    K_ansicpg, K_ansi, K_mac, K_pc, K_pca, K_deff, K_uc, K_u, K_bin,
    // fonts and colours
    K_f, K_fcharset, K_cpg, K_red, K_green, K_blue,
    // character
    K_plain, K_b, K_i, K_ul, K_ulnone, K_strike, K_fs, K_cf, K_cb, K_highlight, K_super, K_sub,
    K_nosupersub, K_up, K_dn, K_v, K_caps, K_scaps,
    // paragraph
    K_pard, K_par, K_line, K_tab, K_page, K_ql, K_qc, K_qr, K_qj, K_li, K_ri, K_fi, K_sb, K_sa,
    K_intbl, K_trowd, K_cellx, K_cell, K_row, K_ls, K_ilvl,
    // numbering
    K_pnlvlblt, K_pnlvlbody, K_pnlvlcont, K_pnlvl, K_pndec, K_pnlcltr, K_pnucltr, K_pnlcrm,
    K_pnucrm, K_pnstart,
    // Word lists
    K_list, K_listid, K_listlevel, K_levelnfc,
    // pictures
    K_pngblip, K_jpegblip, K_wmetafile, K_emfblip, K_macpict, K_dibitmap, K_wbitmap, K_picw, K_pich,
    K_picwgoal, K_pichgoal, K_picscalex, K_picscaley,
    // characters
    K_char,
};
// clang-format on

struct KwEntry {
    Kw kw;
    char16_t ch;
};

// Every control word the reader knows: what it is, and for K_char the character it stands for.
const std::unordered_map<std::string_view, KwEntry> &keywords();

class Reader {
public:
    // Reads into the document.
    Reader(QByteArrayView in, QTextDocument *doc)
        : m_in(in), m_tok(in), m_doc(doc), m_cursor(doc) {}
    // Reads only the characters: out receives the text the document would hold, as
    // RichTextBuffer::Text gives it (paragraph breaks CR LF, line breaks "\v").
    Reader(QByteArrayView in, QString *out) : m_in(in), m_tok(in), m_doc(nullptr), m_plain(out) {}
    // Stops at the first paragraph end, outside a table, where the document holds at least the
    // given characters (paragraph breaks included) or paragraphs.
    void stopAfter(int characters, int paragraphs) {
        m_stopCharacters = characters;
        m_stopParagraphs = paragraphs;
    }
    void run();
    // True when run() stopped as stopAfter asked, before the end of the text.
    bool stopped() const { return m_stopped; }

private:
    State &top() { return m_stack.back(); }
    void pushGroup(qsizetype pos);
    void popGroup(qsizetype pos);
    // The tokens (RtfReader.cpp).
    void controlSymbol(unsigned char c);
    void controlCharacter(char c);
    void textRun(QByteArrayView run);
    // Control words, by the destination they belong to, and the bytes of each destination
    // (RtfDestinations.cpp).
    void controlWord(const RtfTokenizer::Token &t);
    void binaryData(State &st, bool hasParam, int param, qsizetype start);
    bool destinationWord(Kw kw, State &st);
    void fieldResult(State &st);
    bool tableWord(Kw kw, int param, State &st);
    void numberingWord(Kw kw, int param, State &st);
    void pictureWord(Kw kw, int param);
    bool characterWord(Kw kw, bool hasParam, int param, char16_t ch, State &st);
    void paragraphWord(Kw kw, bool hasParam, int param, State &st);
    void byte(unsigned char b);
    void text(QStringView s);
    void character(char16_t c);
    void flushBytes();
    void flushRun();
    void startRun(); // ends the run when the characters that follow are formatted otherwise
    void prepareInsert();
    void paragraph();
    void applyBlockFormat();
    void endCell();
    void endRow();
    void leaveTable();
    void finish();
    void finishPicture(qsizetype end);
    void insertPlaceholder(const QByteArray &raw, const QString &what);
    QTextCharFormat charFormat(const CharProps &p);
    QTextCharFormat makeCharFormat(const CharProps &p) const;
    int codePageOf(const CharProps &p) const;
    QString decode(const QByteArray &bytes, int cp);
    QTextList *listFor(const ParaProps &p);
    bool inTable() const { return m_table || m_plainTable; }
    QString &plainTarget();
    void plainPrepareTable();
    void plainLeaveTable();

    QByteArrayView m_in;
    RtfTokenizer m_tok;
    QTextDocument *m_doc;
    QTextCursor m_cursor;
    // Characters only: where they go, and the table being read (row by row, cell by cell;
    // written out when the table ends since a later row may add a column to earlier ones).
    QString *m_plain = nullptr;
    bool m_plainTable = false;
    std::vector<std::vector<QString>> m_plainCells;
    std::vector<State> m_stack;
    int m_overflow = 0;
    bool m_ignorable = false; // \* seen, waiting for the destination word
    bool m_firstInGroup = false;
    bool m_done = false;
    int m_stopCharacters = 0; // 0: read to the end
    int m_stopParagraphs = 0;
    bool m_stopped = false;
    int m_ansiCp = 1252;
    int m_deff = 0;
    int m_skip = 0; // characters still to skip after \u

    QHash<int, Font> m_fonts;
    int m_fontIndex = -1;
    QByteArray m_fontName;
    int m_fontCharset = -1;
    int m_fontCpg = 0;

    std::vector<QColor> m_colors;
    std::vector<std::pair<CharProps, QTextCharFormat>> m_formatCache;
    int m_r = -1, m_g = -1, m_b = -1;

    std::vector<WordList> m_lists;
    QHash<int, int> m_overrides; // \ls -> \listid
    int m_ovListId = 0;
    QHash<qint64, QTextList *> m_wordLists;
    QTextList *m_pnList = nullptr;
    int m_pnListStyle = 0;

    std::vector<Field> m_fields;
    std::vector<QString> m_hrefs;

    QByteArray m_bytes; // pending code-page bytes of the run
    int m_bytesCp = 0;
    QString m_run;
    CharProps m_runProps;
    QHash<int, QStringDecoder *> m_decoders;
    std::vector<std::unique_ptr<QStringDecoder>> m_decoderStore;

    bool m_pendingBlock = false;
    bool m_pageBreak = false;
    bool m_blockStarted = false;

    QTextTable *m_table = nullptr;
    int m_row = 0, m_col = 0;
    bool m_rowEnded = false;
    bool m_cellEnded = false;
    std::vector<int> m_cellx;

    // picture being read
    int m_pictDepth = -1;
    QByteArray m_pictData;
    int m_pictHi = -1;
    int m_pictType = 0;
    int m_picw = 0, m_pich = 0, m_picwgoal = 0, m_pichgoal = 0, m_scalex = 100, m_scaley = 100;
    int m_objectDepth = -1;
    QString m_objectWhat; // what the kept group is, for its placeholder
    int m_imageCount = 0;
};

} // namespace RtfReaderPrivate
