#include "richtext/RtfReader.h"

#include "richtext/RtfConventions.h"
#include "richtext/RtfReaderPrivate.h"
#include "util/CodePage.h"

#include <QImage>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <QUrl>

namespace RtfReaderPrivate {

namespace {

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

} // namespace

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
    if (m_bytesCp == 1252 && top().dest == Dest::Text) {
        // Most text: decoded straight into the run.
        startRun();
        CodePage::appendUnicode(m_run, m_bytes);
        m_bytes.resize(0); // keeps its room for the next bytes
        return;
    }
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
    startRun();
    m_run.append(s);
}

void Reader::startRun() {
    const State &st = top();
    if (!m_run.isEmpty() && !(m_runProps == st.ch))
        flushRun();
    if (m_run.isEmpty())
        m_runProps = st.ch;
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
    if (m_stopCharacters > 0 && m_doc && !inTable() &&
        (m_cursor.position() >= m_stopCharacters || m_doc->blockCount() >= m_stopParagraphs)) {
        m_stopped = true;
        m_done = true;
    }
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

void Reader::run() {
    m_stack.reserve(64);
    m_stack.push_back(State{});
    while (!m_done) {
        const RtfTokenizer::Token t = m_tok.next();
        if (t.kind == RtfTokenizer::End)
            break;
        switch (t.kind) {
        case RtfTokenizer::GroupOpen:
            pushGroup(t.start);
            break;
        case RtfTokenizer::GroupClose:
            popGroup(t.start);
            break;
        case RtfTokenizer::Word:
            controlWord(t);
            break;
        case RtfTokenizer::Symbol:
            controlSymbol(static_cast<unsigned char>(t.symbol));
            break;
        case RtfTokenizer::Hex:
            m_firstInGroup = false;
            if (t.value >= 0)
                byte(static_cast<unsigned char>(t.value));
            break;
        case RtfTokenizer::Control:
            controlCharacter(t.symbol);
            break;
        case RtfTokenizer::Text:
            textRun(t.text);
            break;
        case RtfTokenizer::End:
            break;
        }
    }
    flushBytes();
    // Close what a truncated file left open: pictures and objects still show.
    m_overflow = 0;
    while (!m_done && m_stack.size() > 2)
        popGroup(m_in.size() - 1);
    if (!m_done && m_stack.size() == 2)
        finish();
}

// A backslash and one character that is not a letter.
void Reader::controlSymbol(unsigned char c) {
    if (c != '*')
        m_firstInGroup = false;
    switch (c) {
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
}

// A control character in the input: only a tab counts.
void Reader::controlCharacter(char c) {
    if (top().dest == Dest::Skip || top().dest == Dest::Object)
        return;
    m_firstInGroup = false;
    if (c != '\t')
        return;
    if (m_skip > 0)
        --m_skip;
    else
        character(u'\t');
}

// Bytes between control words: document text is taken in one piece once no fallback characters
// of \u are left to skip; the other destinations take them byte by byte.
void Reader::textRun(QByteArrayView run) {
    for (qsizetype i = 0; i < run.size(); ++i) {
        if (top().dest == Dest::Skip || top().dest == Dest::Object)
            return;
        m_firstInGroup = false;
        if (top().dest == Dest::Text && m_skip == 0) {
            const int cp = codePageOf(top().ch);
            if (!m_bytes.isEmpty() && cp != m_bytesCp)
                flushBytes();
            m_bytesCp = cp;
            m_bytes.append(run.data() + i, run.size() - i);
            return;
        }
        byte(static_cast<unsigned char>(run[i]));
    }
}

} // namespace RtfReaderPrivate

using RtfReaderPrivate::appendPlain;
using RtfReaderPrivate::Reader;

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
    return readStart(rtf, doc, 0, 0) != NotRtf;
}

RtfReader::Outcome RtfReader::readStart(QByteArrayView rtf, QTextDocument *doc, int characters,
                                        int paragraphs) {
    bool undo = doc->isUndoRedoEnabled();
    doc->setUndoRedoEnabled(false);
    if (!looksLikeRtf(rtf)) {
        doc->clear();
        doc->setUndoRedoEnabled(undo);
        return NotRtf;
    }
    bool partly = false;
    {
        // One edit block: the layout follows the whole text once, not every insertion. A short
        // old text goes inside the block too, so that a view does not lay out (and resize its
        // scroll bars for) an empty document in between. Before a long text the old one goes
        // first, on its own: a layout that then sees a whole new text arrive lays out only what
        // is shown, and the rest a piece at a time while the program is idle.
        if (rtf.size() >= LongText) {
            doc->clear();
        }
        QTextCursor batch(doc);
        batch.beginEditBlock();
        batch.select(QTextCursor::Document);
        batch.removeSelectedText();
        batch.setBlockFormat(QTextBlockFormat());
        batch.setBlockCharFormat(QTextCharFormat());
        batch.setCharFormat(QTextCharFormat());
        Reader reader(rtf, doc);
        if (characters > 0) {
            reader.stopAfter(characters, qMax(1, paragraphs));
        }
        reader.run();
        batch.endEditBlock();
        partly = reader.stopped();
    }
    doc->setUndoRedoEnabled(undo);
    doc->setModified(false);
    return partly ? Partly : Whole;
}

QString RtfReader::plainText(QByteArrayView bytes) {
    QString out;
    if (looksLikeRtf(bytes)) {
        // The characters are never more than the bytes they are read from.
        out.reserve(bytes.size());
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
