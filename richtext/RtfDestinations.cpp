// The control words of each destination, and the bytes each destination takes.
#include "richtext/RtfReaderPrivate.h"

#include <QTextListFormat>

namespace RtfReaderPrivate {

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

namespace {

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

} // namespace

void Reader::controlWord(const RtfTokenizer::Token &t) {
    const auto &kws = keywords();
    auto it = kws.find(t.word);
    Kw kw = it == kws.end() ? K_unknown : it->second.kw;
    const bool hasParam = t.hasParam;
    const int param = t.value;
    // Text so far belongs to the formatting before this word.
    flushBytes();
    State &st = top();
    bool ignorable = m_ignorable;
    bool first = m_firstInGroup;
    m_ignorable = false;
    m_firstInGroup = false;

    if (kw == K_bin) {
        binaryData(st, hasParam, param, t.start);
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

    if (destinationWord(kw, st))
        return;
    if (ignorable && kw == K_unknown) {
        flushBytes();
        st.dest = Dest::Skip;
        return;
    }
    if (kw == K_unknown)
        return;
    if (tableWord(kw, param, st))
        return;
    if (characterWord(kw, hasParam, param, it->second.ch, st))
        return;
    paragraphWord(kw, hasParam, param, st);
}

// \binN: N raw bytes follow the word. A picture takes them; in the text they are kept whole and
// shown as a placeholder.
void Reader::binaryData(State &st, bool hasParam, int param, qsizetype start) {
    flushBytes();
    const qsizetype pos = m_tok.pos();
    qsizetype n = hasParam ? qBound(qsizetype(0), qsizetype(param), m_in.size() - pos) : 0;
    if (st.dest == Dest::Pict)
        m_pictData.append(m_in.sliced(pos, n).toByteArray());
    else if (st.dest == Dest::Text && n > 0)
        insertPlaceholder(m_in.sliced(start, pos + n - start).toByteArray(),
                          QStringLiteral("Binary data"));
    m_tok.skip(n);
    m_skip = 0;
}

// The words that open a destination (or mark one): the group's destination changes. False for
// every other word.
bool Reader::destinationWord(Kw kw, State &st) {
    switch (kw) {
    case K_fonttbl:
        flushBytes();
        st.dest = Dest::FontTable;
        return true;
    case K_colortbl:
        flushBytes();
        st.dest = Dest::ColorTable;
        return true;
    case K_stylesheet:
    case K_info:
    case K_pntext:
    case K_listtext:
    case K_skipdest:
    case K_nonshppict:
        flushBytes();
        st.dest = Dest::Skip;
        return true;
    case K_listtable:
        st.dest = Dest::ListTable;
        return true;
    case K_listoverridetable:
        st.dest = Dest::Overrides;
        return true;
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
        return true;
    case K_pict:
        flushBytes();
        if (st.dest != Dest::Text || m_pictDepth >= 0) {
            st.dest = Dest::Skip;
            return true;
        }
        st.dest = Dest::Pict;
        m_pictDepth = int(m_stack.size()) - 1;
        m_pictData.clear();
        m_pictHi = -1;
        m_pictType = 0;
        m_picw = m_pich = m_picwgoal = m_pichgoal = 0;
        m_scalex = m_scaley = 100;
        return true;
    case K_object:
    case K_header:
    case K_footer:
    case K_footnote:
        flushBytes();
        if (st.dest != Dest::Text || m_objectDepth >= 0) {
            st.dest = Dest::Skip;
            return true;
        }
        st.dest = Dest::Object;
        m_objectDepth = int(m_stack.size()) - 1;
        m_objectWhat = kw == K_object   ? QStringLiteral("Embedded object")
                       : kw == K_header ? QStringLiteral("Header")
                       : kw == K_footer ? QStringLiteral("Footer")
                                        : QStringLiteral("Footnote");
        return true;
    case K_field:
        flushBytes();
        m_fields.push_back(Field{});
        st.field = int(m_fields.size()) - 1;
        return true;
    case K_fldinst:
        flushBytes();
        st.dest = st.field >= 0 ? Dest::FldInst : Dest::Skip;
        return true;
    case K_fldrslt:
        fieldResult(st);
        return true;
    case K_upr:
        st.inUpr = true;
        return true;
    case K_shppict:
    case K_result:
    case K_ud:
        return true;
    case K_rtf:
        return true;
    default:
        return false;
    }
}

// \fldrslt: the result of the innermost field. A HYPERLINK field makes the result a link.
void Reader::fieldResult(State &st) {
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
}

// Words inside the tables of the header, list definitions, numbering definitions and pictures.
// False when the group is none of these.
bool Reader::tableWord(Kw kw, int param, State &st) {
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
        return true;
    case Dest::ColorTable:
        if (kw == K_red)
            m_r = param;
        else if (kw == K_green)
            m_g = param;
        else if (kw == K_blue)
            m_b = param;
        return true;
    case Dest::ListTable:
        if (kw == K_list)
            m_lists.push_back(WordList{});
        else if (kw == K_listid && !m_lists.empty())
            m_lists.back().id = param;
        else if (kw == K_listlevel && !m_lists.empty())
            m_lists.back().nfc.push_back(0);
        else if (kw == K_levelnfc && !m_lists.empty() && !m_lists.back().nfc.empty())
            m_lists.back().nfc.back() = param;
        return true;
    case Dest::Overrides:
        if (kw == K_listid)
            m_ovListId = param;
        else if (kw == K_ls)
            m_overrides.insert(param, m_ovListId);
        return true;
    case Dest::PnDef:
        numberingWord(kw, param, st);
        return true;
    case Dest::Pict:
        pictureWord(kw, param);
        return true;
    default:
        return false;
    }
}

// {\*\pn ...}: the bullet or numbering of the paragraph that owns the definition.
void Reader::numberingWord(Kw kw, int param, State &st) {
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
}

// The picture's format, size and scaling.
void Reader::pictureWord(Kw kw, int param) {
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
}

// Words of the document text that set the code page, read characters or change the character
// formatting. False for every other word.
bool Reader::characterWord(Kw kw, bool hasParam, int param, char16_t ch, State &st) {
    CharProps &c = st.ch;
    const bool on = !hasParam || param != 0;
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
        character(ch);
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
    default:
        return false;
    }
    return true;
}

// Words of the document text that end paragraphs, cells and rows or change the paragraph
// formatting.
void Reader::paragraphWord(Kw kw, bool hasParam, int param, State &st) {
    ParaProps &p = st.para;
    const bool on = !hasParam || param != 0;
    switch (kw) {
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

} // namespace RtfReaderPrivate
