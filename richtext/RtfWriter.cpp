#include "richtext/RtfWriter.h"

#include "richtext/RtfConventions.h"
#include "util/CodePage.h"

#include <QBuffer>
#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <QUrl>

#include <algorithm>

namespace {

// Width of the text area that tables without fixed column widths are spread over, in twips.
constexpr int kTableWidthTwips = 9360;

// Character formatting as the RTF stream knows it at a point of the output.
struct CharState {
    int font = -1;
    int halfPoints = -1;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    bool hidden = false;
    int vertical = 0; // 0 normal, 1 superscript, 2 subscript
    int foreground = 0;
    int background = 0;
};

struct FontEntry {
    QString name;
    int charset = 0;
};

int twips(qreal pixels) {
    return qRound(pixels * 15.0);
}

void appendNumber(QByteArray &out, qint64 n) {
    out += QByteArray::number(n);
}

const char kHex[] = "0123456789abcdef";

class Writer {
public:
    Writer(const QTextDocument *doc, int from, int to) : m_doc(doc), m_from(from), m_to(to) {
        m_defaultFamily = doc->defaultFont().family();
        const qreal pt = doc->defaultFont().pointSizeF();
        m_defaultPoints = pt > 0 ? pt : 12.0;
        fontIndex(m_defaultFamily, 0); // \deff0
    }

    QByteArray run() {
        m_body.reserve(qMax(256, (m_to - m_from) * 2));
        writeFrame(m_doc->rootFrame());
        closeLink();
        return assemble();
    }

private:
    // --- tables of fonts and colours, filled in order of first use -------------------------

    int fontIndex(const QString &name, int charset) {
        const QString key = name + QChar(0) + QString::number(charset);
        auto it = m_fontIndex.constFind(key);
        if (it != m_fontIndex.constEnd()) {
            return *it;
        }
        const int index = int(m_fonts.size());
        m_fonts.append({name, charset});
        m_fontIndex.insert(key, index);
        return index;
    }

    int colorIndex(const QBrush &brush) {
        if (brush.style() == Qt::NoBrush) {
            return 0;
        }
        const QRgb rgb = brush.color().rgb() & 0xFFFFFFu;
        auto it = m_colorIndex.constFind(rgb);
        if (it != m_colorIndex.constEnd()) {
            return *it;
        }
        m_colors.append(rgb);
        const int index = int(m_colors.size()); // entry 0 is "automatic"
        m_colorIndex.insert(rgb, index);
        return index;
    }

    // --- low-level output -------------------------------------------------------------------

    void word(const char *controlWord) {
        m_body += controlWord;
        m_delim = true;
    }
    void word(const char *controlWord, qint64 n) {
        m_body += controlWord;
        appendNumber(m_body, n);
        m_delim = true;
    }
    void literal(char c) {
        if (m_delim) {
            m_body += ' ';
            m_delim = false;
        }
        m_body += c;
    }
    void raw(QByteArrayView bytes) {
        m_body += bytes;
        m_delim = false;
    }

    // Text characters, escaped. Used for body text and for names in the tables.
    static void escapeTo(QByteArray &out, bool &delim, QStringView text) {
        const char16_t *p = reinterpret_cast<const char16_t *>(text.data());
        const qsizetype n = text.size();
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t c = p[i];
            if (c >= 0x20 && c < 0x80) {
                if (delim) {
                    out += ' ';
                    delim = false;
                }
                // A run of plain characters goes out in one piece.
                qsizetype j = i;
                while (j < n && p[j] >= 0x20 && p[j] < 0x80 && p[j] != '\\' && p[j] != '{' &&
                       p[j] != '}') {
                    ++j;
                }
                if (j > i) {
                    const qsizetype at = out.size();
                    out.resize(at + (j - i));
                    char *dst = out.data() + at;
                    for (qsizetype k = i; k < j; ++k) {
                        *dst++ = char(p[k]);
                    }
                    i = j - 1;
                    continue;
                }
                out += '\\';
                out += char(c);
                continue;
            }
            if (c == '\t') {
                out += "\\tab";
                delim = true;
                continue;
            }
            if (c == 0x2028) {
                out += "\\line";
                delim = true;
                continue;
            }
            if (c < 0x20 || c == 0x2029 || c == 0xFDD0 || c == 0xFDD1 || c == 0xFFFC) {
                continue; // structure, not text
            }
            const int byte = CodePage::toByte(c);
            if (byte >= 0x80) {
                out += "\\'";
                out += kHex[(byte >> 4) & 0xF];
                out += kHex[byte & 0xF];
                delim = false;
                continue;
            }
            out += "\\u";
            appendNumber(out, qint16(c));
            out += '?';
            delim = false;
        }
    }

    void text(QStringView s) { escapeTo(m_body, m_delim, s); }

    // Whether text right behind a control word needs the blank that ends the word.
    static bool needsDelimiter(const QString &s) {
        if (s.isEmpty()) {
            return false;
        }
        const char16_t c = s.front().unicode();
        return c == ' ' || c == '-' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
               (c >= 'A' && c <= 'Z');
    }

    // --- character formatting -----------------------------------------------------------------

    QString familyOf(const QTextCharFormat &f) const {
        const QVariant families = f.property(QTextFormat::FontFamilies);
        if (families.isValid()) {
            const QStringList list = families.toStringList();
            if (!list.isEmpty() && !list.first().isEmpty()) {
                return list.first();
            }
        }
        const QString family = f.property(QTextFormat::FontFamily).toString();
        return family.isEmpty() ? m_defaultFamily : family;
    }

    CharState stateOf(const QTextCharFormat &f) {
        CharState s;
        s.font = fontIndex(familyOf(f), 0);
        const qreal pt = f.hasProperty(QTextFormat::FontPointSize) && f.fontPointSize() > 0
                             ? f.fontPointSize()
                             : m_defaultPoints;
        s.halfPoints = qMax(1, qRound(pt * 2.0));
        s.bold = f.fontWeight() >= QFont::DemiBold;
        s.italic = f.fontItalic();
        s.underline = f.underlineStyle() != QTextCharFormat::NoUnderline;
        s.strike = f.fontStrikeOut();
        s.hidden = f.boolProperty(RtfConventions::HiddenProperty);
        switch (f.verticalAlignment()) {
        case QTextCharFormat::AlignSuperScript:
            s.vertical = 1;
            break;
        case QTextCharFormat::AlignSubScript:
            s.vertical = 2;
            break;
        default:
            s.vertical = 0;
        }
        s.foreground = f.hasProperty(QTextFormat::ForegroundBrush) ? colorIndex(f.foreground()) : 0;
        s.background = f.hasProperty(QTextFormat::BackgroundBrush) ? colorIndex(f.background()) : 0;
        return s;
    }

    // What a character format of the document means here, worked out once per format.
    struct CachedFormat {
        CharState state;
        QString href;
    };

    const CachedFormat &formatOf(const QTextFragment &frag) {
        const int index = frag.charFormatIndex();
        auto it = m_formatCache.constFind(index);
        if (it != m_formatCache.constEnd()) {
            return *it;
        }
        const QTextCharFormat f = frag.charFormat();
        CachedFormat c;
        c.state = stateOf(f);
        if (f.isAnchor()) {
            c.href = f.anchorHref();
        }
        return *m_formatCache.insert(index, c);
    }

    void applyState(const CharState &s) {
        CharState &c = m_state;
        if (c.font != s.font) {
            word("\\f", s.font);
        }
        if (c.halfPoints != s.halfPoints) {
            word("\\fs", s.halfPoints);
        }
        if (c.bold != s.bold) {
            word(s.bold ? "\\b" : "\\b0");
        }
        if (c.italic != s.italic) {
            word(s.italic ? "\\i" : "\\i0");
        }
        if (c.underline != s.underline) {
            word(s.underline ? "\\ul" : "\\ulnone");
        }
        if (c.strike != s.strike) {
            word(s.strike ? "\\strike" : "\\strike0");
        }
        if (c.vertical != s.vertical) {
            word(s.vertical == 1 ? "\\super" : s.vertical == 2 ? "\\sub" : "\\nosupersub");
        }
        if (c.foreground != s.foreground) {
            word("\\cf", s.foreground);
        }
        if (c.background != s.background) {
            word("\\highlight", s.background);
        }
        if (c.hidden != s.hidden) {
            word(s.hidden ? "\\v" : "\\v0");
        }
        c = s;
    }

    // --- links ----------------------------------------------------------------------------------

    void openLink(const QString &href) {
        m_linkState = m_state;
        m_linkHref = href;
        raw("{\\field{\\*\\fldinst{HYPERLINK \"");
        QString target = href;
        target.replace(QLatin1Char('"'), QLatin1String("%22"));
        bool delim = false;
        escapeTo(m_body, delim, target);
        raw("\"}}{\\fldrslt{");
    }

    void closeLink() {
        if (m_linkHref.isEmpty()) {
            return;
        }
        raw("}}}");
        m_state = m_linkState; // the groups restore what was before them
        m_linkHref.clear();
    }

    // --- objects --------------------------------------------------------------------------------

    void writeObject(const QTextCharFormat &f) {
        const QVariant rawGroup = f.property(RtfConventions::RawGroupProperty);
        if (rawGroup.isValid() && !rawGroup.toByteArray().isEmpty()) {
            raw(rawGroup.toByteArray());
            return;
        }
        if (!f.isImageFormat()) {
            return;
        }
        const QTextImageFormat imageFormat = f.toImageFormat();
        const QVariant res =
            m_doc->resource(QTextDocument::ImageResource, QUrl(imageFormat.name()));
        QImage image;
        if (res.typeId() == QMetaType::QImage) {
            image = res.value<QImage>();
        } else if (res.typeId() == QMetaType::QPixmap) {
            image = res.value<QPixmap>().toImage();
        } else if (res.typeId() == QMetaType::QByteArray) {
            image.loadFromData(res.toByteArray());
        }
        if (image.isNull()) {
            return;
        }
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        const qreal w = imageFormat.width() > 0 ? imageFormat.width() : image.width();
        const qreal h = imageFormat.height() > 0 ? imageFormat.height() : image.height();
        raw("{\\pict\\pngblip\\picw");
        appendNumber(m_body, image.width());
        m_body += "\\pich";
        appendNumber(m_body, image.height());
        m_body += "\\picwgoal";
        appendNumber(m_body, twips(w));
        m_body += "\\pichgoal";
        appendNumber(m_body, twips(h));
        m_body += "\r\n";
        m_body.reserve(m_body.size() + png.size() * 2 + png.size() / 64 * 2 + 4);
        for (qsizetype i = 0; i < png.size(); ++i) {
            const auto b = static_cast<unsigned char>(png[i]);
            m_body += kHex[b >> 4];
            m_body += kHex[b & 0xF];
            if (i % 64 == 63 && i + 1 < png.size()) {
                m_body += "\r\n";
            }
        }
        raw("}");
    }

    // --- paragraphs -----------------------------------------------------------------------------

    QByteArray paragraphProperties(const QTextBlock &block, bool inTable) const {
        const QTextBlockFormat f = block.blockFormat();
        QByteArray p;
        if (inTable) {
            p += "\\intbl";
        }
        auto number = [&p](const char *w, int v) {
            if (v != 0) {
                p += w;
                appendNumber(p, v);
            }
        };
        number("\\fi", twips(f.textIndent()));
        number("\\li", twips(f.leftMargin()));
        number("\\ri", twips(f.rightMargin()));
        number("\\sb", twips(f.topMargin()));
        number("\\sa", twips(f.bottomMargin()));
        switch (f.alignment() & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute) {
        case Qt::AlignHCenter:
            p += "\\qc";
            break;
        case Qt::AlignRight:
            p += "\\qr";
            break;
        case Qt::AlignJustify:
            p += "\\qj";
            break;
        default:
            break;
        }
        return p;
    }

    static bool isBulletStyle(QTextListFormat::Style s) {
        return s == QTextListFormat::ListDisc || s == QTextListFormat::ListCircle ||
               s == QTextListFormat::ListSquare;
    }

    void listLabel(const QTextBlock &block, const QTextList *list) {
        const QTextListFormat lf = list->format();
        if (isBulletStyle(lf.style())) {
            raw("{\\pntext\\f");
            appendNumber(m_body, symbolFont());
            raw("\\'B7\\tab}");
        } else {
            raw("{\\pntext\\f0");
            m_delim = true;
            QString label = list->itemText(block);
            text(label);
            raw("\\tab}");
        }
    }

    int symbolFont() { return fontIndex(QStringLiteral("Symbol"), 2); }

    void listDefinition(const QTextList *list) {
        const QTextListFormat lf = list->format();
        if (isBulletStyle(lf.style())) {
            raw("{\\*\\pn\\pnlvlblt\\pnf");
            appendNumber(m_body, symbolFont());
            raw("\\pnindent0{\\pntxtb\\'B7}}");
            return;
        }
        raw("{\\*\\pn\\pnlvlbody\\pnf0\\pnindent0\\pnstart");
        m_body += '1';
        switch (lf.style()) {
        case QTextListFormat::ListLowerAlpha:
            raw("\\pnlcltr");
            break;
        case QTextListFormat::ListUpperAlpha:
            raw("\\pnucltr");
            break;
        case QTextListFormat::ListLowerRoman:
            raw("\\pnlcrm");
            break;
        case QTextListFormat::ListUpperRoman:
            raw("\\pnucrm");
            break;
        default:
            raw("\\pndec");
            break;
        }
        if (!lf.numberPrefix().isEmpty()) {
            raw("{\\pntxtb");
            m_delim = needsDelimiter(lf.numberPrefix());
            text(lf.numberPrefix());
            raw("}");
        }
        const QString suffix =
            lf.hasProperty(QTextFormat::ListNumberSuffix) ? lf.numberSuffix() : QStringLiteral(".");
        raw("{\\pntxta");
        m_delim = needsDelimiter(suffix);
        text(suffix);
        raw("}}");
    }

    void beginParagraph(const QTextBlock &block, bool inTable) {
        const QByteArray props = paragraphProperties(block, inTable);
        const QTextList *list = block.textList();
        if (!m_pardValid || props != m_pard || list != m_pardList) {
            word("\\pard");
            if (inTable) {
                word("\\intbl");
            }
            if (list) {
                listLabel(block, list);
                listDefinition(list);
            }
            const QByteArray own = props.mid(inTable ? 6 : 0);
            if (!own.isEmpty()) {
                m_body += own;
                m_delim = true;
            }
            m_pard = props;
            m_pardList = list;
            m_pardValid = true;
        } else if (list) {
            listLabel(block, list);
        }
    }

    // Writes one paragraph's characters inside [m_from, m_to) and, when its end lies inside the
    // range (or always, in a table), the terminator.
    void writeBlock(const QTextBlock &block, bool inTable, const char *terminator) {
        const int start = block.position();
        const int end = start + block.length() - 1; // position of the paragraph break
        const int a = inTable ? start : qMax(start, m_from);
        const int b = inTable ? end : qMin(end, m_to);
        const bool withBreak = inTable || (end >= m_from && end < m_to);
        if (a >= b && !withBreak) {
            return;
        }
        if (a > b) {
            return;
        }
        if (!inTable && start == end && tableStartsAt(end + 1)) {
            // The empty paragraph a table was put into: RTF has no paragraph there.
            return;
        }
        beginParagraph(block, inTable);
        const QString blockText = block.text();
        // Fragments follow each other without gaps: their positions are counted along rather
        // than asked for (which walks the document's tree each time).
        int next = start;
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment frag = it.fragment();
            if (!frag.isValid()) {
                continue;
            }
            const int fs = next;
            const int fe = fs + frag.length();
            next = fe;
            const int s = qMax(fs, a);
            const int e = qMin(fe, b);
            if (s >= e) {
                continue;
            }
            const CachedFormat &cached = formatOf(frag);
            if (cached.href != m_linkHref) {
                closeLink();
                if (!cached.href.isEmpty()) {
                    openLink(cached.href);
                }
            }
            applyState(cached.state);
            const QStringView view = QStringView(blockText).mid(s - start, e - s);
            if (view.contains(QChar::ObjectReplacementCharacter)) {
                const QTextCharFormat f = frag.charFormat();
                for (QChar c : view) {
                    if (c == QChar::ObjectReplacementCharacter) {
                        writeObject(f);
                    } else {
                        text(QStringView(&c, 1));
                    }
                }
            } else {
                text(view);
            }
        }
        closeLink();
        if (withBreak) {
            if (a == b) {
                // An empty paragraph keeps the formatting of its paragraph mark.
                applyState(stateOf(block.charFormat()));
            }
            const QTextBlock next = block.next();
            const bool page =
                !inTable && next.isValid() &&
                (next.blockFormat().pageBreakPolicy() & QTextFormat::PageBreak_AlwaysBefore);
            word(page ? "\\page" : terminator);
            if (!inTable) {
                raw("\r\n");
            }
        }
    }

    bool tableStartsAt(int position) const {
        auto *table = qobject_cast<QTextTable *>(m_doc->frameAt(position));
        return table && table->firstPosition() == position;
    }

    void writeTable(QTextTable *table) {
        closeLink();
        const int rows = table->rows();
        const int cols = table->columns();
        const QList<QTextLength> widths = table->format().columnWidthConstraints();
        QList<int> cellx;
        int x = 0;
        for (int c = 0; c < cols; ++c) {
            int w = kTableWidthTwips / qMax(1, cols);
            if (c < widths.size()) {
                const QTextLength &l = widths[c];
                if (l.type() == QTextLength::FixedLength && l.rawValue() > 0) {
                    w = twips(l.rawValue());
                } else if (l.type() == QTextLength::PercentageLength && l.rawValue() > 0) {
                    w = qRound(kTableWidthTwips * l.rawValue() / 100.0);
                }
            }
            x += w;
            cellx.append(x);
        }
        for (int r = 0; r < rows; ++r) {
            word("\\trowd\\trgaph108\\trleft-108");
            for (int c = 0; c < cols; ++c) {
                word("\\cellx", cellx[c]);
            }
            m_pardValid = false;
            for (int c = 0; c < cols; ++c) {
                const QTextTableCell cell = table->cellAt(r, c);
                if (!cell.isValid() || cell.row() != r || cell.column() != c) {
                    // Covered by a spanning cell: an empty cell keeps the grid.
                    if (!m_pardValid || m_pard != "\\intbl" || m_pardList) {
                        word("\\pard\\intbl");
                        m_pard = "\\intbl";
                        m_pardList = nullptr;
                        m_pardValid = true;
                    }
                    word("\\cell");
                    continue;
                }
                QTextFrame::iterator it = cell.begin();
                while (!it.atEnd()) {
                    const QTextBlock block = it.currentBlock();
                    ++it;
                    if (block.isValid()) {
                        writeBlock(block, true, it.atEnd() ? "\\cell" : "\\par");
                    }
                }
            }
            word("\\row");
            raw("\r\n");
        }
        m_pardValid = false;
    }

    void writeFrame(QTextFrame *frame) {
        for (QTextFrame::iterator it = frame->begin(); !it.atEnd(); ++it) {
            if (QTextFrame *child = it.currentFrame()) {
                if (child->lastPosition() < m_from - 1 || child->firstPosition() > m_to + 1) {
                    continue;
                }
                auto *table = qobject_cast<QTextTable *>(child);
                if (table && m_from < table->firstPosition() && table->lastPosition() < m_to) {
                    writeTable(table);
                } else {
                    writeFrame(child);
                }
            } else {
                writeBlock(it.currentBlock(), false, "\\par");
            }
        }
    }

    QByteArray assemble() {
        QByteArray out;
        out.reserve(m_body.size() + 256);
        out += "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang1033{\\fonttbl";
        for (qsizetype i = 0; i < m_fonts.size(); ++i) {
            out += "{\\f";
            appendNumber(out, i);
            out += "\\fnil\\fcharset";
            appendNumber(out, m_fonts[i].charset);
            bool delim = true;
            escapeTo(out, delim, m_fonts[i].name);
            out += ";}";
        }
        out += "}\r\n";
        if (!m_colors.isEmpty()) {
            out += "{\\colortbl ;";
            for (QRgb c : m_colors) {
                out += "\\red";
                appendNumber(out, qRed(c));
                out += "\\green";
                appendNumber(out, qGreen(c));
                out += "\\blue";
                appendNumber(out, qBlue(c));
                out += ';';
            }
            out += "}\r\n";
        }
        out += "\\viewkind4\\uc1";
        out += m_body;
        out += "}\r\n";
        return out;
    }

    const QTextDocument *m_doc;
    int m_from;
    int m_to;
    QString m_defaultFamily;
    qreal m_defaultPoints = 12.0;

    QList<FontEntry> m_fonts;
    QHash<QString, int> m_fontIndex;
    QList<QRgb> m_colors;
    QHash<QRgb, int> m_colorIndex;
    QHash<int, CachedFormat> m_formatCache;

    QByteArray m_body;
    bool m_delim = false;
    CharState m_state;
    QByteArray m_pard;
    const QTextList *m_pardList = nullptr;
    bool m_pardValid = false;
    QString m_linkHref;
    CharState m_linkState;
};

} // namespace

QByteArray RtfWriter::write(const QTextDocument *doc) {
    if (!doc) {
        QTextDocument empty;
        return Writer(&empty, 0, empty.characterCount()).run();
    }
    return Writer(doc, 0, doc->characterCount()).run();
}

QByteArray RtfWriter::write(const QTextDocument *doc, int from, int to) {
    if (!doc) {
        QTextDocument empty;
        return Writer(&empty, 0, 0).run();
    }
    const int last = qMax(0, doc->characterCount() - 1);
    from = std::clamp(from, 0, last);
    to = std::clamp(to, 0, last);
    if (from > to) {
        std::swap(from, to);
    }
    return Writer(doc, from, to).run();
}
