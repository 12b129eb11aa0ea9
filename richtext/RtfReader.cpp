#include "richtext/RtfReader.h"

#include "richtext/RtfConventions.h"
#include "util/CodePage.h"

#include <QHash>
#include <QImage>
#include <QStringDecoder>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <QUrl>

#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

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

const std::unordered_map<std::string_view, KwEntry> &keywords() {
    static const std::unordered_map<std::string_view, KwEntry> table = [] {
        std::unordered_map<std::string_view, KwEntry> t;
        auto k = [&t](std::string_view n, Kw kw) { t.emplace(n, KwEntry{kw, 0}); };
        auto c = [&t](std::string_view n, char16_t ch) { t.emplace(n, KwEntry{K_char, ch}); };
        // clang-format off
        k("rtf", K_rtf); k("fonttbl", K_fonttbl); k("colortbl", K_colortbl);
        k("stylesheet", K_stylesheet); k("info", K_info); k("listtable", K_listtable);
        k("listoverridetable", K_listoverridetable); k("pntext", K_pntext);
        k("listtext", K_listtext); k("pn", K_pn); k("pict", K_pict); k("object", K_object);
        k("field", K_field); k("fldinst", K_fldinst); k("fldrslt", K_fldrslt); k("upr", K_upr);
        k("ud", K_ud); k("shppict", K_shppict); k("nonshppict", K_nonshppict);
        k("result", K_result);
        for (std::string_view n :
             {"revtbl", "rsidtbl", "xmlnstbl", "themedata", "colorschememapping",
              "latentstyles", "datastore", "pgdsctbl", "filetbl", "generator", "listpicture",
              "pntxta", "pntxtb", "template", "docvar", "bkmkstart", "bkmkend", "xe", "tc", "atnid",
              "atnauthor", "annotation", "comment", "mmathPr", "ftnsep", "ftnsepc", "aftnsep",
              "aftnsepc", "private"})
            k(n, K_skipdest);
        // Page content the pane cannot show: kept whole and shown as a placeholder.
        for (std::string_view n : {"header", "headerl", "headerr", "headerf"})
            k(n, K_header);
        for (std::string_view n : {"footer", "footerl", "footerr", "footerf"})
            k(n, K_footer);
        k("footnote", K_footnote);
        k("ansicpg", K_ansicpg); k("ansi", K_ansi); k("mac", K_mac); k("pc", K_pc); k("pca", K_pca);
        k("deff", K_deff); k("uc", K_uc); k("u", K_u); k("bin", K_bin); k("f", K_f);
        k("fcharset", K_fcharset); k("cpg", K_cpg); k("red", K_red); k("green", K_green);
        k("blue", K_blue); k("plain", K_plain); k("b", K_b); k("i", K_i); k("strike", K_strike);
        k("striked", K_strike); k("fs", K_fs); k("cf", K_cf); k("cb", K_cb); k("chcbpat", K_cb);
        k("highlight", K_highlight); k("super", K_super); k("sub", K_sub);
        k("nosupersub", K_nosupersub); k("up", K_up); k("dn", K_dn); k("v", K_v); k("caps", K_caps);
        k("scaps", K_scaps);
        for (std::string_view n :
             {"ul", "uld", "uldash", "uldashd", "uldashdd", "uldb", "ulhwave", "ulldash", "ulth",
              "ulthd", "ulthdash", "ulthdashd", "ulthdashdd", "ulthldash", "ululdbwave", "ulw",
              "ulwave"})
            k(n, K_ul);
        k("ulnone", K_ulnone); k("pard", K_pard); k("par", K_par); k("sect", K_par);
        k("column", K_par); k("line", K_line); k("tab", K_tab); k("page", K_page); k("ql", K_ql);
        k("qc", K_qc); k("qr", K_qr); k("qj", K_qj); k("qd", K_qj); k("li", K_li); k("lin", K_li);
        k("ri", K_ri); k("rin", K_ri); k("fi", K_fi); k("sb", K_sb); k("sa", K_sa);
        k("intbl", K_intbl); k("trowd", K_trowd); k("cellx", K_cellx); k("cell", K_cell);
        k("nestcell", K_cell); k("row", K_row); k("ls", K_ls); k("ilvl", K_ilvl);
        k("pnlvlblt", K_pnlvlblt); k("pnlvlbody", K_pnlvlbody); k("pnlvlcont", K_pnlvlcont);
        k("pnlvl", K_pnlvl); k("pndec", K_pndec); k("pnlcltr", K_pnlcltr); k("pnucltr", K_pnucltr);
        k("pnlcrm", K_pnlcrm); k("pnucrm", K_pnucrm); k("pnstart", K_pnstart); k("list", K_list);
        k("listid", K_listid); k("listlevel", K_listlevel); k("levelnfc", K_levelnfc);
        k("levelnfcn", K_levelnfc); k("pngblip", K_pngblip); k("jpegblip", K_jpegblip);
        k("wmetafile", K_wmetafile); k("emfblip", K_emfblip); k("macpict", K_macpict);
        k("dibitmap", K_dibitmap); k("wbitmap", K_wbitmap); k("picw", K_picw); k("pich", K_pich);
        k("picwgoal", K_picwgoal); k("pichgoal", K_pichgoal); k("picscalex", K_picscalex);
        k("picscaley", K_picscaley); c("bullet", 0x2022); c("emdash", 0x2014); c("endash", 0x2013);
        c("emspace", 0x2003); c("enspace", 0x2002); c("qmspace", 0x2005); c("lquote", 0x2018);
        c("rquote", 0x2019); c("ldblquote", 0x201C); c("rdblquote", 0x201D); c("zwj", 0x200D);
        c("zwnj", 0x200C); c("ltrmark", 0x200E); c("rtlmark", 0x200F); c("zwbo", 0x200B);
        // clang-format on
        return t;
    }();
    return table;
}

// The Symbol font's letters as the Greek letters and signs it draws.
char16_t symbolChar(unsigned char b) {
    static const char16_t upper[26] = {
        0x391, 0x392, 0x3A7, 0x394, 0x395, 0x3A6, 0x393, 0x397, 0x399, 0x3D1, 0x39A, 0x39B, 0x39C,
        0x39D, 0x39F, 0x3A0, 0x398, 0x3A1, 0x3A3, 0x3A4, 0x3A5, 0x3C2, 0x3A9, 0x39E, 0x3A8, 0x396};
    static const char16_t lower[26] = {
        0x3B1, 0x3B2, 0x3C7, 0x3B4, 0x3B5, 0x3C6, 0x3B3, 0x3B7, 0x3B9, 0x3D5, 0x3BA, 0x3BB, 0x3BC,
        0x3BD, 0x3BF, 0x3C0, 0x3B8, 0x3C1, 0x3C3, 0x3C4, 0x3C5, 0x3D6, 0x3C9, 0x3BE, 0x3C8, 0x3B6};
    if (b >= 'A' && b <= 'Z')
        return upper[b - 'A'];
    if (b >= 'a' && b <= 'z')
        return lower[b - 'a'];
    switch (b) {
    case 0xB7:
        return 0x2022;
    case 0xA7:
        return 0x2663;
    case 0xA8:
        return 0x2666;
    case 0xA9:
        return 0x2665;
    case 0xAA:
        return 0x2660;
    case 0xAE:
        return 0x2192;
    case 0xAC:
        return 0x2190;
    case 0xAD:
        return 0x2191;
    case 0xAF:
        return 0x2193;
    case 0xB0:
        return 0x00B0;
    case 0xB1:
        return 0x00B1;
    case 0xB4:
        return 0x00D7;
    case 0xB8:
        return 0x00F7;
    case 0xA5:
        return 0x221E;
    case 0xB9:
        return 0x2260;
    case 0xA3:
        return 0x2264;
    case 0xB3:
        return 0x2265;
    case 0xD6:
        return 0x221A;
    case 0xE5:
        return 0x2211;
    case 0xF2:
        return 0x222B;
    case 0xBC:
        return 0x2026;
    case 0xF0:
        return 0xF0F0;
    default:
        return CodePage::toChar(b);
    }
}

int charsetCodePage(int charset, int ansiCp) {
    switch (charset) {
    case 0:
        return 1252;
    case 2:
        return kSymbolCodePage;
    case 77:
        return 10000;
    case 128:
        return 932;
    case 129:
        return 949;
    case 130:
        return 1361;
    case 134:
        return 936;
    case 136:
        return 950;
    case 161:
        return 1253;
    case 162:
        return 1254;
    case 163:
        return 1258;
    case 177:
        return 1255;
    case 178:
        return 1256;
    case 186:
        return 1257;
    case 204:
        return 1251;
    case 222:
        return 874;
    case 238:
        return 1250;
    case 254:
        return 437;
    case 255:
        return 850;
    default:
        return ansiCp;
    }
}

QByteArray codecName(int cp) {
    switch (cp) {
    case 932:
        return "Shift_JIS";
    case 936:
        return "GBK";
    case 949:
        return "windows-949";
    case 950:
        return "Big5";
    case 1361:
        return "johab";
    case 10000:
        return "macintosh";
    case 437:
        return "IBM437";
    case 850:
        return "IBM850";
    case 874:
        return "windows-874";
    default:
        return "windows-" + QByteArray::number(cp);
    }
}

QTextListFormat::Style nfcStyle(int nfc) {
    switch (nfc) {
    case 1:
        return QTextListFormat::ListUpperRoman;
    case 2:
        return QTextListFormat::ListLowerRoman;
    case 3:
        return QTextListFormat::ListUpperAlpha;
    case 4:
        return QTextListFormat::ListLowerAlpha;
    case 23:
    case 255:
        return QTextListFormat::ListDisc;
    default:
        return QTextListFormat::ListDecimal;
    }
}

// Appends text as a text document stores it and RichTextBuffer::Text reads it back: CR LF, a
// lone CR or LF, and the paragraph and frame marks start a new paragraph (CR LF); a line
// separator is a line break ("\v").
void appendPlain(QString &out, QStringView s) {
    // Plain stretches go in one piece; only the marks are rewritten.
    qsizetype from = 0;
    for (qsizetype i = 0; i < s.size(); ++i) {
        const char16_t c = s[i].unicode();
        const bool mark = c < 0x20 ? (c == u'\r' || c == u'\n')
                                   : (c == 0x2028 || c == 0x2029 || c == 0xFDD0 || c == 0xFDD1);
        if (!mark)
            continue;
        out.append(s.sliced(from, i - from));
        if (c == 0x2028) {
            out += QChar(0x0B);
        } else {
            if (c == u'\r' && i + 1 < s.size() && s[i + 1] == u'\n')
                ++i;
            out += QLatin1String("\r\n");
        }
        from = i + 1;
    }
    out.append(s.sliced(from));
}

class Reader {
public:
    // Reads into the document.
    Reader(QByteArrayView in, QTextDocument *doc) : m_in(in), m_doc(doc), m_cursor(doc) {}
    // Reads only the characters: out receives the text the document would hold, as
    // RichTextBuffer::Text gives it (paragraph breaks CR LF, line breaks "\v").
    Reader(QByteArrayView in, QString *out) : m_in(in), m_doc(nullptr), m_plain(out) {}
    void run();

private:
    State &top() { return m_stack.back(); }
    void pushGroup(qsizetype pos);
    void popGroup(qsizetype pos);
    void controlWord(std::string_view word, bool hasParam, int param, qsizetype start,
                     qsizetype &pos);
    void byte(unsigned char b);
    void text(QStringView s);
    void character(char16_t c);
    void flushBytes();
    void flushRun();
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

int Reader::codePageOf(const CharProps &p) const {
    auto it = m_fonts.constFind(p.font < 0 ? m_deff : p.font);
    if (it != m_fonts.constEnd() && it->codePage != 0)
        return it->codePage;
    return m_ansiCp;
}

QString Reader::decode(const QByteArray &bytes, int cp) {
    if (cp == 1252)
        return CodePage::toUnicode(bytes);
    if (cp == kSymbolCodePage) {
        QString s;
        s.reserve(bytes.size());
        for (char b : bytes)
            s.append(QChar(symbolChar(static_cast<unsigned char>(b))));
        return s;
    }
    QStringDecoder *d = m_decoders.value(cp);
    if (!d) {
        auto owned = std::make_unique<QStringDecoder>(codecName(cp).constData());
        if (!owned->isValid())
            owned = std::make_unique<QStringDecoder>("windows-1252");
        d = owned.get();
        m_decoderStore.push_back(std::move(owned));
        m_decoders.insert(cp, d);
    }
    d->resetState();
    if (!d->isValid())
        return CodePage::toUnicode(bytes);
    return d->decode(bytes);
}

void Reader::flushBytes() {
    if (m_bytes.isEmpty())
        return;
    QByteArray b;
    b.swap(m_bytes);
    text(decode(b, m_bytesCp));
}

QTextCharFormat Reader::charFormat(const CharProps &p) {
    // Runs mostly alternate between a handful of formats.
    for (const auto &[props, format] : m_formatCache)
        if (props == p)
            return format;
    QTextCharFormat f = makeCharFormat(p);
    if (m_formatCache.size() >= 16)
        m_formatCache.erase(m_formatCache.begin());
    m_formatCache.emplace_back(p, f);
    return f;
}

QTextCharFormat Reader::makeCharFormat(const CharProps &p) const {
    QTextCharFormat f;
    auto it = m_fonts.constFind(p.font < 0 ? m_deff : p.font);
    if (it != m_fonts.constEnd() && !it->name.isEmpty())
        f.setFontFamilies(QStringList{it->name});
    f.setFontPointSize(p.fs > 0 ? p.fs / 2.0 : 12.0);
    if (p.bold)
        f.setFontWeight(QFont::Bold);
    if (p.italic)
        f.setFontItalic(true);
    if (p.underline)
        f.setFontUnderline(true);
    if (p.strike)
        f.setFontStrikeOut(true);
    if (p.caps)
        f.setFontCapitalization(QFont::AllUppercase);
    else if (p.scaps)
        f.setFontCapitalization(QFont::SmallCaps);
    if (p.fg > 0 && p.fg < int(m_colors.size()) && m_colors[p.fg].isValid())
        f.setForeground(m_colors[p.fg]);
    if (p.bg > 0 && p.bg < int(m_colors.size()) && m_colors[p.bg].isValid())
        f.setBackground(m_colors[p.bg]);
    if (p.vert > 0)
        f.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    else if (p.vert < 0)
        f.setVerticalAlignment(QTextCharFormat::AlignSubScript);
    if (p.hidden)
        f.setProperty(RtfConventions::HiddenProperty, true);
    if (p.href >= 0) {
        f.setAnchor(true);
        f.setAnchorHref(m_hrefs[p.href]);
    }
    return f;
}

void Reader::text(QStringView s) {
    if (s.isEmpty())
        return;
    State &st = top();
    if (st.dest == Dest::FldInst) {
        if (st.field >= 0)
            m_fields[st.field].inst.append(s);
        return;
    }
    if (st.dest != Dest::Text)
        return;
    if (!m_run.isEmpty() && !(m_runProps == st.ch))
        flushRun();
    if (m_run.isEmpty())
        m_runProps = st.ch;
    m_run.append(s);
}

void Reader::character(char16_t c) {
    flushBytes();
    QChar ch(c);
    text(QStringView(&ch, 1));
}

void Reader::flushRun() {
    if (m_run.isEmpty())
        return;
    prepareInsert();
    if (m_plain)
        appendPlain(plainTarget(), m_run);
    else
        m_cursor.insertText(m_run, charFormat(m_runProps));
    m_run.resize(0); // keeps its room for the next run
    m_blockStarted = true;
}

QTextList *Reader::listFor(const ParaProps &p) {
    if (p.ls > 0) {
        int id = m_overrides.value(p.ls, 0);
        int level = qBound(0, p.ilvl, 8);
        int nfc = 23;
        for (const WordList &l : m_lists)
            if (l.id == id && level < int(l.nfc.size()))
                nfc = l.nfc[level];
        if (nfc == 255 && m_lists.empty())
            nfc = 23;
        qint64 key = (qint64(p.ls) << 8) | level;
        QTextList *list = m_wordLists.value(key);
        if (!list) {
            QTextListFormat lf;
            lf.setStyle(nfcStyle(nfc));
            // The label goes left of the first line; give it room when the paragraph's
            // own indents leave none.
            lf.setIndent((p.li + p.fi) / 15 < 20 ? 1 : 0);
            list = m_cursor.createList(lf);
            m_wordLists.insert(key, list);
        } else {
            list->add(m_cursor.block());
        }
        m_pnList = nullptr;
        return list;
    }
    if (p.pnStyle != 0) {
        if (m_pnList && m_pnListStyle == p.pnStyle) {
            // Only consecutive paragraphs share a list.
            QTextBlock prev = m_cursor.block().previous();
            if (prev.isValid() && prev.textList() == m_pnList) {
                m_pnList->add(m_cursor.block());
                return m_pnList;
            }
        }
        QTextListFormat lf;
        lf.setStyle(QTextListFormat::Style(p.pnStyle));
        // The label goes left of the first line; give it room when the paragraph's
        // own indents leave none.
        lf.setIndent((p.li + p.fi) / 15 < 20 ? 1 : 0);
        m_pnList = m_cursor.createList(lf);
        m_pnListStyle = p.pnStyle;
        return m_pnList;
    }
    return nullptr;
}

void Reader::applyBlockFormat() {
    if (m_plain)
        return; // formats and lists add no characters
    const ParaProps &p = top().para;
    QTextBlockFormat bf;
    static const Qt::Alignment aligns[] = {Qt::AlignLeft | Qt::AlignAbsolute, Qt::AlignHCenter,
                                           Qt::AlignRight | Qt::AlignAbsolute, Qt::AlignJustify};
    if (p.align > 0)
        bf.setAlignment(aligns[p.align]);
    if (p.li)
        bf.setLeftMargin(p.li / 15.0);
    if (p.ri)
        bf.setRightMargin(p.ri / 15.0);
    if (p.fi)
        bf.setTextIndent(p.fi / 15.0);
    if (p.sb)
        bf.setTopMargin(p.sb / 15.0);
    if (p.sa)
        bf.setBottomMargin(p.sa / 15.0);
    if (m_pageBreak) {
        bf.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        m_pageBreak = false;
    }
    m_cursor.setBlockFormat(bf);
    if (m_cursor.block().length() <= 1)
        m_cursor.setBlockCharFormat(charFormat(top().ch));
    if (top().dest == Dest::Text)
        listFor(p);
}

QString &Reader::plainTarget() {
    return m_plainTable ? m_plainCells[size_t(m_row)][size_t(m_col)] : *m_plain;
}

// The table moves of prepareInsert, on the cell texts.
void Reader::plainPrepareTable() {
    if (top().para.intbl) {
        if (!m_plainTable) {
            if (m_pendingBlock || m_blockStarted) {
                *m_plain += QLatin1String("\r\n");
                m_pendingBlock = false;
            }
            m_plainTable = true;
            m_plainCells.assign(1, std::vector<QString>(qMax<size_t>(1, m_cellx.size())));
            m_row = m_col = 0;
        } else if (m_cellEnded && !m_rowEnded) {
            ++m_col;
            if (m_col >= int(m_plainCells[0].size()))
                for (auto &row : m_plainCells)
                    row.emplace_back();
        } else if (m_rowEnded) {
            m_plainCells.emplace_back(m_plainCells[0].size());
            ++m_row;
            m_col = 0;
        } else {
            return;
        }
        m_cellEnded = false;
        m_rowEnded = false;
        m_pendingBlock = false;
        m_blockStarted = false;
    } else if (m_plainTable) {
        plainLeaveTable();
    }
}

// Writes the table as the document holds it: a frame mark, the cells row by row with a
// paragraph mark between them, and the closing frame mark.
void Reader::plainLeaveTable() {
    if (!m_plainTable)
        return;
    QString &out = *m_plain;
    out += QLatin1String("\r\n");
    bool first = true;
    for (const auto &row : m_plainCells)
        for (const QString &cell : row) {
            if (!first)
                out += QLatin1String("\r\n");
            first = false;
            out += cell;
        }
    out += QLatin1String("\r\n");
    m_plainTable = false;
    m_plainCells.clear();
    m_rowEnded = false;
    m_cellEnded = false;
    m_pendingBlock = false;
    m_blockStarted = false;
}

void Reader::leaveTable() {
    if (m_plain) {
        plainLeaveTable();
        return;
    }
    if (!m_table)
        return;
    m_cursor = m_table->lastCursorPosition();
    m_cursor.movePosition(QTextCursor::NextBlock);
    m_table = nullptr;
    m_rowEnded = false;
    m_cellEnded = false;
    m_pendingBlock = false;
    m_blockStarted = false;
}

void Reader::prepareInsert() {
    if (m_plain) {
        plainPrepareTable();
        if (m_pendingBlock) {
            plainTarget() += QLatin1String("\r\n");
            m_pendingBlock = false;
            m_blockStarted = false;
        }
        return;
    }
    if (top().para.intbl) {
        if (!m_table) {
            if (m_pendingBlock || m_blockStarted) {
                m_cursor.insertBlock();
                m_pendingBlock = false;
            }
            QTextTableFormat tf;
            tf.setCellPadding(3);
            tf.setBorder(1);
            tf.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
            tf.setBorderCollapse(true);
            QList<QTextLength> widths;
            int prev = 0;
            for (int x : m_cellx) {
                widths.append(QTextLength(QTextLength::FixedLength, qMax(8.0, (x - prev) / 15.0)));
                prev = x;
            }
            if (!widths.isEmpty())
                tf.setColumnWidthConstraints(widths);
            m_table = m_cursor.insertTable(1, qMax<int>(1, int(m_cellx.size())), tf);
            m_row = m_col = 0;
            m_cellEnded = false;
            m_rowEnded = false;
            m_pendingBlock = false;
            m_blockStarted = false;
            m_cursor = m_table->cellAt(0, 0).firstCursorPosition();
        } else if (m_cellEnded && !m_rowEnded) {
            ++m_col;
            if (m_col >= m_table->columns())
                m_table->appendColumns(1);
            m_cellEnded = false;
            m_pendingBlock = false;
            m_blockStarted = false;
            m_cursor = m_table->cellAt(m_row, m_col).firstCursorPosition();
        } else if (m_rowEnded) {
            m_cellEnded = false;
            m_table->appendRows(1);
            ++m_row;
            m_col = 0;
            m_rowEnded = false;
            m_pendingBlock = false;
            m_blockStarted = false;
            m_cursor = m_table->cellAt(m_row, 0).firstCursorPosition();
        }
    } else if (m_table) {
        leaveTable();
    }
    if (m_pendingBlock) {
        m_cursor.insertBlock();
        m_pendingBlock = false;
        m_blockStarted = false;
    }
}

void Reader::paragraph() {
    flushBytes();
    flushRun();
    prepareInsert();
    applyBlockFormat();
    m_pendingBlock = true;
    m_blockStarted = false;
}

void Reader::endCell() {
    flushBytes();
    flushRun();
    if (!inTable()) {
        // A cell mark outside a row definition: read it as a table of its own.
        bool intbl = top().para.intbl;
        top().para.intbl = true;
        prepareInsert();
        top().para.intbl = intbl;
    } else {
        bool intbl = top().para.intbl;
        top().para.intbl = true;
        prepareInsert();
        top().para.intbl = intbl;
    }
    if (!inTable())
        return;
    applyBlockFormat();
    m_cellEnded = true;
    m_pendingBlock = false;
    m_blockStarted = false;
}

void Reader::endRow() {
    flushBytes();
    flushRun();
    if (!inTable())
        return;
    m_rowEnded = true;
    m_pendingBlock = false;
}

void Reader::insertPlaceholder(const QByteArray &raw, const QString &what) {
    flushBytes();
    flushRun();
    prepareInsert();
    if (m_plain) {
        plainTarget() += QChar(QChar::ObjectReplacementCharacter);
        m_blockStarted = true;
        return;
    }
    QTextCharFormat f = charFormat(top().ch);
    f.setObjectType(RtfConventions::PlaceholderObjectType);
    f.setProperty(RtfConventions::RawGroupProperty, raw);
    f.setProperty(RtfConventions::PlaceholderTextProperty, what);
    m_cursor.insertText(QString(QChar::ObjectReplacementCharacter), f);
    m_blockStarted = true;
}

void Reader::finishPicture(qsizetype end) {
    if (m_plain) {
        // A picture is one object character, shown or not.
        m_pictDepth = -1;
        m_pictData.clear();
        insertPlaceholder({}, {});
        return;
    }
    const State &st = m_stack.back();
    QByteArray raw = m_in.sliced(st.start, end - st.start + 1).toByteArray();
    m_pictDepth = -1;
    QImage image;
    if (m_pictType == K_pngblip || m_pictType == K_jpegblip || m_pictType == K_dibitmap ||
        m_pictType == K_wbitmap)
        image.loadFromData(m_pictData, m_pictType == K_pngblip    ? "PNG"
                                       : m_pictType == K_jpegblip ? "JPEG"
                                                                  : nullptr);
    m_pictData.clear();
    // Write to the enclosing group: the picture group itself is about to be popped.
    if (image.isNull()) {
        QString what;
        switch (m_pictType) {
        case K_wmetafile:
            what = QStringLiteral("Picture (Windows metafile)");
            break;
        case K_emfblip:
            what = QStringLiteral("Picture (enhanced metafile)");
            break;
        case K_macpict:
            what = QStringLiteral("Picture (Macintosh PICT)");
            break;
        case K_dibitmap:
        case K_wbitmap:
            what = QStringLiteral("Picture (bitmap)");
            break;
        default:
            what = QStringLiteral("Picture");
        }
        insertPlaceholder(raw, what);
        return;
    }
    flushBytes();
    flushRun();
    prepareInsert();
    double w = m_picwgoal > 0 ? m_picwgoal / 15.0 : image.width();
    double h = m_pichgoal > 0 ? m_pichgoal / 15.0 : image.height();
    w = w * qBound(1, m_scalex, 10000) / 100.0;
    h = h * qBound(1, m_scaley, 10000) / 100.0;
    QString name = QStringLiteral("rtfpict%1").arg(++m_imageCount);
    m_doc->addResource(QTextDocument::ImageResource, QUrl(name), image);
    QTextImageFormat f;
    f.setName(name);
    f.setWidth(w);
    f.setHeight(h);
    f.setProperty(RtfConventions::RawGroupProperty, raw);
    m_cursor.insertImage(f);
    m_blockStarted = true;
}

void Reader::pushGroup(qsizetype pos) {
    flushBytes();
    m_skip = 0;
    if (int(m_stack.size()) >= kMaxDepth) {
        ++m_overflow;
        return;
    }
    State child = top();
    child.start = pos;
    child.uprChild = false;
    if (child.inUpr) {
        child.inUpr = false;
        child.uprChild = true;
        child.dest = Dest::Skip;
    }
    m_stack.push_back(child);
    m_firstInGroup = true;
    m_ignorable = false;
}

void Reader::popGroup(qsizetype pos) {
    flushBytes();
    m_skip = 0;
    m_ignorable = false;
    if (m_overflow > 0) {
        --m_overflow;
        return;
    }
    State &st = top();
    int depth = int(m_stack.size()) - 1;
    if (st.dest == Dest::FontTable && m_fontIndex >= 0 && !m_fontName.isEmpty()) {
        // A font entry without its closing semicolon.
        byte(';');
    }
    if (depth == 1) {
        // The document group closes.
        finish();
        return;
    }
    if (st.dest == Dest::Pict && depth == m_pictDepth) {
        finishPicture(pos);
    } else if (st.dest == Dest::Object && depth == m_objectDepth) {
        m_objectDepth = -1;
        QByteArray raw = m_in.sliced(st.start, pos - st.start + 1).toByteArray();
        m_stack.pop_back();
        insertPlaceholder(raw, m_objectWhat);
        return;
    }
    m_stack.pop_back();
}

void Reader::finish() {
    flushBytes();
    flushRun();
    // RichEdit ends the text with the mark of its final paragraph, which does not start a new
    // one; text after the last mark is a paragraph of its own.
    if (!m_pendingBlock && !inTable())
        applyBlockFormat();
    if (m_plain)
        plainLeaveTable(); // the table closes the text
    m_done = true;
}

void Reader::byte(unsigned char b) {
    if (m_skip > 0) {
        --m_skip;
        return;
    }
    State &st = top();
    switch (st.dest) {
    case Dest::Text:
    case Dest::FldInst: {
        int cp = codePageOf(st.ch);
        if (!m_bytes.isEmpty() && cp != m_bytesCp)
            flushBytes();
        m_bytesCp = cp;
        m_bytes.append(char(b));
        break;
    }
    case Dest::FontTable:
        if (b == ';') {
            if (m_fontIndex >= 0) {
                int cp = m_fontCpg > 0 ? m_fontCpg : charsetCodePage(m_fontCharset, m_ansiCp);
                if (m_fontCharset < 0 && m_fontCpg <= 0)
                    cp = 0;
                Font f;
                f.codePage = cp == m_ansiCp && m_fontCharset < 0 ? 0 : cp;
                f.name =
                    decode(m_fontName, cp == kSymbolCodePage || cp == 0 ? m_ansiCp : cp).trimmed();
                m_fonts.insert(m_fontIndex, f);
                m_formatCache.clear();
            }
            m_fontName.clear();
            m_fontIndex = -1;
        } else {
            m_fontName.append(char(b));
        }
        break;
    case Dest::ColorTable:
        if (b == ';') {
            m_formatCache.clear();
            if (m_r < 0 && m_g < 0 && m_b < 0)
                m_colors.push_back(QColor());
            else
                m_colors.push_back(
                    QColor(qBound(0, m_r, 255), qBound(0, m_g, 255), qBound(0, m_b, 255)));
            m_r = m_g = m_b = -1;
        }
        break;
    case Dest::Pict: {
        int v = -1;
        if (b >= '0' && b <= '9')
            v = b - '0';
        else if (b >= 'a' && b <= 'f')
            v = b - 'a' + 10;
        else if (b >= 'A' && b <= 'F')
            v = b - 'A' + 10;
        if (v < 0)
            break;
        if (m_pictHi < 0) {
            m_pictHi = v;
        } else {
            m_pictData.append(char((m_pictHi << 4) | v));
            m_pictHi = -1;
        }
        break;
    }
    default:
        break;
    }
}

void Reader::controlWord(std::string_view word, bool hasParam, int param, qsizetype start,
                         qsizetype &pos) {
    const auto &kws = keywords();
    auto it = kws.find(word);
    Kw kw = it == kws.end() ? K_unknown : it->second.kw;
    // Text so far belongs to the formatting before this word.
    flushBytes();
    State &st = top();
    bool ignorable = m_ignorable;
    bool first = m_firstInGroup;
    m_ignorable = false;
    m_firstInGroup = false;

    if (kw == K_bin) {
        flushBytes();
        qsizetype n = hasParam ? qBound(qsizetype(0), qsizetype(param), m_in.size() - pos) : 0;
        if (st.dest == Dest::Pict)
            m_pictData.append(m_in.sliced(pos, n).toByteArray());
        else if (st.dest == Dest::Text && n > 0)
            insertPlaceholder(m_in.sliced(start, pos + n - start).toByteArray(),
                              QStringLiteral("Binary data"));
        pos += n;
        m_skip = 0;
        return;
    }
    if (st.uprChild && first && kw == K_ud) {
        st.dest = m_stack[m_stack.size() - 2].dest;
        st.uprChild = false;
        return;
    }
    if (st.dest == Dest::Skip || st.dest == Dest::Object)
        return;

    if (m_skip > 0 && kw != K_u && kw != K_uc) {
        --m_skip;
        return;
    }

    // Destinations.
    switch (kw) {
    case K_fonttbl:
        flushBytes();
        st.dest = Dest::FontTable;
        return;
    case K_colortbl:
        flushBytes();
        st.dest = Dest::ColorTable;
        return;
    case K_stylesheet:
    case K_info:
    case K_pntext:
    case K_listtext:
    case K_skipdest:
    case K_nonshppict:
        flushBytes();
        st.dest = Dest::Skip;
        return;
    case K_listtable:
        st.dest = Dest::ListTable;
        return;
    case K_listoverridetable:
        st.dest = Dest::Overrides;
        return;
    case K_pn:
        if (st.dest == Dest::Text) {
            st.paraOwner = m_stack.size() >= 2 ? int(m_stack.size()) - 2 : 0;
            st.dest = Dest::PnDef;
            ParaProps &p = m_stack[st.paraOwner].para;
            p.pnStyle = QTextListFormat::ListDisc;
            p.pnStart = 1;
        } else {
            st.dest = Dest::Skip;
        }
        return;
    case K_pict:
        flushBytes();
        if (st.dest != Dest::Text || m_pictDepth >= 0) {
            st.dest = Dest::Skip;
            return;
        }
        st.dest = Dest::Pict;
        m_pictDepth = int(m_stack.size()) - 1;
        m_pictData.clear();
        m_pictHi = -1;
        m_pictType = 0;
        m_picw = m_pich = m_picwgoal = m_pichgoal = 0;
        m_scalex = m_scaley = 100;
        return;
    case K_object:
    case K_header:
    case K_footer:
    case K_footnote:
        flushBytes();
        if (st.dest != Dest::Text || m_objectDepth >= 0) {
            st.dest = Dest::Skip;
            return;
        }
        st.dest = Dest::Object;
        m_objectDepth = int(m_stack.size()) - 1;
        m_objectWhat = kw == K_object   ? QStringLiteral("Embedded object")
                       : kw == K_header ? QStringLiteral("Header")
                       : kw == K_footer ? QStringLiteral("Footer")
                                        : QStringLiteral("Footnote");
        return;
    case K_field:
        flushBytes();
        m_fields.push_back(Field{});
        st.field = int(m_fields.size()) - 1;
        return;
    case K_fldinst:
        flushBytes();
        st.dest = st.field >= 0 ? Dest::FldInst : Dest::Skip;
        return;
    case K_fldrslt: {
        flushBytes();
        if (st.field < 0)
            return;
        QString inst = m_fields[st.field].inst.trimmed();
        if (inst.startsWith(QLatin1String("HYPERLINK"), Qt::CaseInsensitive)) {
            QString rest = inst.mid(9).trimmed();
            QString url;
            QString anchor;
            // HYPERLINK "url" [\l "anchor"] or an unquoted url.
            int i = 0;
            while (i < rest.size()) {
                if (rest[i] == u'"') {
                    int e = rest.indexOf(u'"', i + 1);
                    if (e < 0)
                        e = rest.size();
                    QString part = rest.mid(i + 1, e - i - 1);
                    if (url.isEmpty() && anchor.isNull() && i == 0)
                        url = part;
                    else if (anchor.isNull() && rest.mid(0, i).contains(QLatin1String("\\l")))
                        anchor = part;
                    i = e + 1;
                } else if (rest[i].isSpace()) {
                    ++i;
                } else {
                    int e = i;
                    while (e < rest.size() && !rest[e].isSpace())
                        ++e;
                    if (url.isEmpty() && i == 0)
                        url = rest.mid(i, e - i);
                    i = e;
                }
            }
            if (!anchor.isEmpty())
                url += u'#' + anchor;
            if (!url.isEmpty()) {
                m_hrefs.push_back(url);
                st.ch.href = int(m_hrefs.size()) - 1;
            }
        }
        return;
    }
    case K_upr:
        st.inUpr = true;
        return;
    case K_shppict:
    case K_result:
    case K_ud:
        return;
    case K_rtf:
        return;
    default:
        break;
    }
    if (ignorable && kw == K_unknown) {
        flushBytes();
        st.dest = Dest::Skip;
        return;
    }
    if (kw == K_unknown)
        return;

    // Tables of the header and list definitions.
    switch (st.dest) {
    case Dest::FontTable:
        switch (kw) {
        case K_f:
            m_fontIndex = param;
            m_fontName.clear();
            m_fontCharset = -1;
            m_fontCpg = 0;
            break;
        case K_fcharset:
            m_fontCharset = param;
            break;
        case K_cpg:
            m_fontCpg = param;
            break;
        case K_char:
            break;
        default:
            break;
        }
        return;
    case Dest::ColorTable:
        if (kw == K_red)
            m_r = param;
        else if (kw == K_green)
            m_g = param;
        else if (kw == K_blue)
            m_b = param;
        return;
    case Dest::ListTable:
        if (kw == K_list)
            m_lists.push_back(WordList{});
        else if (kw == K_listid && !m_lists.empty())
            m_lists.back().id = param;
        else if (kw == K_listlevel && !m_lists.empty())
            m_lists.back().nfc.push_back(0);
        else if (kw == K_levelnfc && !m_lists.empty() && !m_lists.back().nfc.empty())
            m_lists.back().nfc.back() = param;
        return;
    case Dest::Overrides:
        if (kw == K_listid)
            m_ovListId = param;
        else if (kw == K_ls)
            m_overrides.insert(param, m_ovListId);
        return;
    case Dest::PnDef: {
        ParaProps &p = m_stack[st.paraOwner].para;
        switch (kw) {
        case K_pnlvlblt:
            p.pnStyle = QTextListFormat::ListDisc;
            break;
        case K_pnlvlcont:
            break;
        case K_pndec:
            p.pnStyle = QTextListFormat::ListDecimal;
            break;
        case K_pnlcltr:
            p.pnStyle = QTextListFormat::ListLowerAlpha;
            break;
        case K_pnucltr:
            p.pnStyle = QTextListFormat::ListUpperAlpha;
            break;
        case K_pnlcrm:
            p.pnStyle = QTextListFormat::ListLowerRoman;
            break;
        case K_pnucrm:
            p.pnStyle = QTextListFormat::ListUpperRoman;
            break;
        case K_pnlvlbody:
        case K_pnlvl:
            if (p.pnStyle == QTextListFormat::ListDisc)
                p.pnStyle = QTextListFormat::ListDecimal;
            break;
        case K_pnstart:
            p.pnStart = param;
            break;
        default:
            break;
        }
        return;
    }
    case Dest::Pict:
        switch (kw) {
        case K_pngblip:
        case K_jpegblip:
        case K_wmetafile:
        case K_emfblip:
        case K_macpict:
        case K_dibitmap:
        case K_wbitmap:
            m_pictType = kw;
            break;
        case K_picw:
            m_picw = param;
            break;
        case K_pich:
            m_pich = param;
            break;
        case K_picwgoal:
            m_picwgoal = param;
            break;
        case K_pichgoal:
            m_pichgoal = param;
            break;
        case K_picscalex:
            m_scalex = param;
            break;
        case K_picscaley:
            m_scaley = param;
            break;
        default:
            break;
        }
        return;
    default:
        break;
    }

    // Document text.
    CharProps &c = st.ch;
    ParaProps &p = st.para;
    bool on = !hasParam || param != 0;
    switch (kw) {
    case K_ansicpg:
        if (param > 0)
            m_ansiCp = param;
        break;
    case K_ansi:
        m_ansiCp = 1252;
        break;
    case K_mac:
        m_ansiCp = 10000;
        break;
    case K_pc:
        m_ansiCp = 437;
        break;
    case K_pca:
        m_ansiCp = 850;
        break;
    case K_deff:
        m_deff = param;
        break;
    case K_uc:
        st.uc = static_cast<unsigned char>(qBound(0, param, 10));
        break;
    case K_u: {
        if (!hasParam)
            break;
        int v = param < 0 ? param + 65536 : param;
        character(char16_t(v & 0xFFFF));
        m_skip = st.uc;
        break;
    }
    case K_char:
        character(it->second.ch);
        break;
    case K_f:
        flushBytes();
        c.font = param;
        break;
    case K_plain:
        flushBytes();
        c = CharProps{};
        c.href = st.ch.href;
        break;
    case K_b:
        c.bold = on;
        break;
    case K_i:
        c.italic = on;
        break;
    case K_ul:
        c.underline = on;
        break;
    case K_ulnone:
        c.underline = false;
        break;
    case K_strike:
        c.strike = on;
        break;
    case K_fs:
        c.fs = hasParam ? qBound(1, param, 3276) : 24;
        break;
    case K_cf:
        c.fg = param;
        break;
    case K_cb:
    case K_highlight:
        c.bg = param;
        break;
    case K_super:
        c.vert = 1;
        break;
    case K_sub:
        c.vert = -1;
        break;
    case K_nosupersub:
        c.vert = 0;
        break;
    case K_up:
        c.vert = on ? 1 : 0;
        break;
    case K_dn:
        c.vert = on ? -1 : 0;
        break;
    case K_v:
        c.hidden = on;
        break;
    case K_caps:
        c.caps = on;
        break;
    case K_scaps:
        c.scaps = on;
        break;
    case K_pard:
        p = ParaProps{};
        break;
    case K_par:
        paragraph();
        break;
    case K_line:
        character(QChar::LineSeparator);
        break;
    case K_tab:
        character(u'\t');
        break;
    case K_page:
        paragraph();
        m_pageBreak = true;
        break;
    case K_ql:
        p.align = 0;
        break;
    case K_qc:
        p.align = 1;
        break;
    case K_qr:
        p.align = 2;
        break;
    case K_qj:
        p.align = 3;
        break;
    case K_li:
        p.li = param;
        break;
    case K_ri:
        p.ri = param;
        break;
    case K_fi:
        p.fi = param;
        break;
    case K_sb:
        p.sb = param;
        break;
    case K_sa:
        p.sa = param;
        break;
    case K_intbl:
        p.intbl = on;
        break;
    case K_trowd:
        flushBytes();
        m_cellx.clear();
        break;
    case K_cellx:
        if (m_cellx.size() < 64)
            m_cellx.push_back(param);
        break;
    case K_cell:
        endCell();
        break;
    case K_row:
        endRow();
        break;
    case K_ls:
        p.ls = param;
        break;
    case K_ilvl:
        p.ilvl = param;
        break;
    default:
        break;
    }
}

void Reader::run() {
    m_stack.reserve(64);
    m_stack.push_back(State{});
    const char *d = m_in.data();
    const qsizetype n = m_in.size();
    qsizetype pos = 0;
    // Skip to the opening brace of the document.
    while (pos < n && d[pos] != '{')
        ++pos;
    while (pos < n && !m_done) {
        unsigned char ch = static_cast<unsigned char>(d[pos]);
        switch (ch) {
        case '{':
            pushGroup(pos);
            ++pos;
            break;
        case '}':
            popGroup(pos);
            ++pos;
            break;
        case '\\': {
            qsizetype start = pos;
            ++pos;
            if (pos >= n)
                break;
            unsigned char c = static_cast<unsigned char>(d[pos]);
            if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
                qsizetype ws = pos;
                while (pos < n && pos - ws < 32 &&
                       ((d[pos] >= 'a' && d[pos] <= 'z') || (d[pos] >= 'A' && d[pos] <= 'Z')))
                    ++pos;
                std::string_view word(d + ws, size_t(pos - ws));
                bool neg = false, hasParam = false;
                qint64 value = 0;
                if (pos < n && d[pos] == '-' && pos + 1 < n && d[pos + 1] >= '0' &&
                    d[pos + 1] <= '9') {
                    neg = true;
                    ++pos;
                }
                while (pos < n && d[pos] >= '0' && d[pos] <= '9') {
                    hasParam = true;
                    if (value < 100000000)
                        value = value * 10 + (d[pos] - '0');
                    ++pos;
                }
                if (pos < n && d[pos] == ' ')
                    ++pos;
                int param =
                    int(qBound(qint64(-100000000), neg ? -value : value, qint64(100000000)));
                controlWord(word, hasParam, param, start, pos);
                break;
            }
            ++pos;
            if (c != '*')
                m_firstInGroup = false;
            switch (c) {
            case '\'': {
                auto hex = [](char x) {
                    if (x >= '0' && x <= '9')
                        return x - '0';
                    if (x >= 'a' && x <= 'f')
                        return x - 'a' + 10;
                    if (x >= 'A' && x <= 'F')
                        return x - 'A' + 10;
                    return -1;
                };
                int hi = pos < n ? hex(d[pos]) : -1;
                int lo = pos + 1 < n ? hex(d[pos + 1]) : -1;
                if (hi >= 0 && lo >= 0) {
                    pos += 2;
                    byte(static_cast<unsigned char>(hi * 16 + lo));
                } else if (hi >= 0) {
                    pos += 1;
                }
                break;
            }
            case '*':
                m_ignorable = true;
                break;
            case '\\':
            case '{':
            case '}':
                if (m_skip > 0) {
                    --m_skip;
                } else if (top().dest == Dest::Text || top().dest == Dest::FldInst ||
                           top().dest == Dest::FontTable) {
                    byte(c);
                }
                break;
            case '~':
                if (m_skip > 0)
                    --m_skip;
                else
                    character(0x00A0);
                break;
            case '-':
                if (m_skip > 0)
                    --m_skip;
                else
                    character(0x00AD);
                break;
            case '_':
                if (m_skip > 0)
                    --m_skip;
                else
                    character(0x2011);
                break;
            case '\r':
            case '\n':
                if (top().dest == Dest::Text)
                    paragraph();
                break;
            case '\t':
                character(u'\t');
                break;
            default:
                break;
            }
            break;
        }
        case '\r':
        case '\n':
        case 0:
            ++pos;
            break;
        default: {
            if (top().dest == Dest::Skip || top().dest == Dest::Object) {
                ++pos;
                break;
            }
            m_firstInGroup = false;
            if (ch < 0x20) {
                ++pos;
                if (ch != '\t')
                    break;
                if (m_skip > 0)
                    --m_skip;
                else
                    character(u'\t');
                break;
            }
            if (top().dest == Dest::Text && m_skip == 0) {
                // Plain text run: take it in one piece.
                qsizetype e = pos;
                while (e < n) {
                    char x = d[e];
                    if (x == '\\' || x == '{' || x == '}' || (x >= 0 && x < 0x20))
                        break;
                    ++e;
                }
                int cp = codePageOf(top().ch);
                if (!m_bytes.isEmpty() && cp != m_bytesCp)
                    flushBytes();
                m_bytesCp = cp;
                m_bytes.append(d + pos, e - pos);
                pos = e;
                break;
            }
            byte(ch);
            ++pos;
            break;
        }
        }
    }
    flushBytes();
    // Close what a truncated file left open: pictures and objects still show.
    m_overflow = 0;
    while (!m_done && m_stack.size() > 2)
        popGroup(n - 1);
    if (!m_done && m_stack.size() == 2)
        finish();
}

} // namespace

namespace {

// Text that is not RTF: the file code page, every line break a paragraph break.
QString plainSource(QByteArrayView bytes) {
    QString text = CodePage::toUnicode(bytes);
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(u'\r', u'\n');
    text.remove(QChar(0));
    return text;
}

} // namespace

bool RtfReader::looksLikeRtf(QByteArrayView bytes) {
    qsizetype i = 0;
    while (i < bytes.size() && (bytes[i] == ' ' || bytes[i] == '\t' || bytes[i] == '\r' ||
                                bytes[i] == '\n' || bytes[i] == '\0'))
        ++i;
    return bytes.sliced(i).startsWith("{\\rtf");
}

bool RtfReader::read(QByteArrayView rtf, QTextDocument *doc) {
    bool undo = doc->isUndoRedoEnabled();
    doc->setUndoRedoEnabled(false);
    if (!looksLikeRtf(rtf)) {
        doc->clear();
        doc->setUndoRedoEnabled(undo);
        return false;
    }
    {
        // One edit block: the layout follows the whole text once, not every insertion. The old
        // text goes inside the block too, so that a view does not lay out (and resize its
        // scroll bars for) an empty document in between.
        QTextCursor batch(doc);
        batch.beginEditBlock();
        batch.select(QTextCursor::Document);
        batch.removeSelectedText();
        batch.setBlockFormat(QTextBlockFormat());
        batch.setBlockCharFormat(QTextCharFormat());
        batch.setCharFormat(QTextCharFormat());
        Reader reader(rtf, doc);
        reader.run();
        batch.endEditBlock();
    }
    doc->setUndoRedoEnabled(undo);
    doc->setModified(false);
    return true;
}

QString RtfReader::plainText(QByteArrayView bytes) {
    QString out;
    if (looksLikeRtf(bytes)) {
        Reader reader(bytes, &out);
        reader.run();
        return out;
    }
    appendPlain(out, plainSource(bytes));
    return out;
}

void RtfReader::readAny(QByteArrayView bytes, QTextDocument *doc) {
    if (read(bytes, doc))
        return;
    doc->setPlainText(plainSource(bytes));
    doc->setModified(false);
}
