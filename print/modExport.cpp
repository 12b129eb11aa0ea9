// HTML and Markdown of an outline and its rich texts.
#include "print/modExport.h"

#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocText.h"
#include "document/modFile.h"
#include "outline/Node.h"
#include "outline/modNodes.h"
#include "print/PrintPages.h"
#include "richtext/RtfConventions.h"
#include "util/ErrorLog.h"
#include "util/modString.h"

#include <QBuffer>
#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>

#include <algorithm>
#include <memory>

namespace modExport {

namespace {

bool isOrdered(const QTextList *list) {
    const QTextListFormat::Style s = list->format().style();
    return s != QTextListFormat::ListDisc && s != QTextListFormat::ListCircle &&
           s != QTextListFormat::ListSquare;
}

bool hidden(const QTextCharFormat &f) {
    return f.property(RtfConventions::HiddenProperty).toBool();
}

bool bold(const QTextCharFormat &f) {
    return f.hasProperty(QTextFormat::FontWeight) && f.fontWeight() > QFont::Medium;
}

// A picture of the document as a data URL; empty when the document does not hold it.
QString dataUrl(const QTextDocument &doc, const QString &name) {
    const QVariant v = doc.resource(QTextDocument::ImageResource, QUrl(name));
    QImage image = v.value<QImage>();
    if (image.isNull() && v.canConvert<QPixmap>()) {
        image = v.value<QPixmap>().toImage();
    }
    if (image.isNull()) {
        return {};
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(png.toBase64());
}

QString placeholderText(const QTextCharFormat &f) {
    const QString what = f.property(RtfConventions::PlaceholderTextProperty).toString();
    return QLatin1Char('[') + (what.isEmpty() ? QStringLiteral("Object") : what) + QLatin1Char(']');
}

QString cssColor(const QColor &c) {
    return c.name(QColor::HexRgb);
}

QString escapeHtml(const QString &text) {
    QString out;
    out.reserve(text.size() + 8);
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '&':
            out += QLatin1String("&amp;");
            break;
        case '<':
            out += QLatin1String("&lt;");
            break;
        case '>':
            out += QLatin1String("&gt;");
            break;
        case '"':
            out += QLatin1String("&quot;");
            break;
        case QChar::LineSeparator:
            out += QLatin1String("<br>");
            break;
        case QChar::Nbsp:
            out += QLatin1String("&nbsp;");
            break;
        default:
            out += c;
        }
    }
    return out;
}

// Writes a rich text as HTML: paragraphs, lists, tables and the formatting of every run.
class HtmlWriter {
public:
    explicit HtmlWriter(const QTextDocument &doc) : m_doc(doc) {}
    // The font most of the text has goes on one division around it; runs name only the fonts
    // that differ from it.
    QString run() {
        QHash<QString, int> families;
        QHash<qreal, int> sizes;
        for (QTextBlock b = m_doc.begin(); b.isValid(); b = b.next()) {
            for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
                const QTextCharFormat f = it.fragment().charFormat();
                families[family(f)] += it.fragment().length();
                sizes[f.hasProperty(QTextFormat::FontPointSize) ? f.fontPointSize() : 0] +=
                    it.fragment().length();
            }
        }
        m_family = mostUsed(families);
        m_size = mostUsed(sizes);
        flow(m_doc.rootFrame()->begin(), m_doc.rootFrame()->end());
        QStringList css;
        if (!m_family.isEmpty()) {
            css << QStringLiteral("font-family:'%1'").arg(escapeHtml(m_family));
        }
        if (m_size > 0) {
            css << QStringLiteral("font-size:%1pt").arg(m_size);
        }
        if (css.isEmpty()) {
            return m_out;
        }
        return QStringLiteral("<div style=\"%1\">\n").arg(css.join(u';')) + m_out +
               QLatin1String("</div>\n");
    }

private:
    void flow(QTextFrame::iterator it, const QTextFrame::iterator &end) {
        const QTextList *open = nullptr;
        auto close = [&] {
            if (open) {
                m_out += isOrdered(open) ? QLatin1String("</ol>\n") : QLatin1String("</ul>\n");
                open = nullptr;
            }
        };
        for (; it != end; ++it) {
            if (QTextFrame *frame = it.currentFrame()) {
                close();
                if (auto *t = qobject_cast<QTextTable *>(frame)) {
                    table(t);
                } else {
                    flow(frame->begin(), frame->end());
                }
                continue;
            }
            const QTextBlock b = it.currentBlock();
            const QTextList *list = b.textList();
            if (list && b.length() <= 1) {
                continue; // an empty item has nothing to show
            }
            if (list != open) {
                close();
                if (list) {
                    m_out += isOrdered(list) ? QStringLiteral("<ol%1>\n").arg(listType(list))
                                             : QStringLiteral("<ul>\n");
                    open = list;
                }
            }
            const QString tag = list ? QStringLiteral("li") : QStringLiteral("p");
            QString body = inlines(b);
            if (body.isEmpty()) {
                body = QStringLiteral("<br>");
            }
            m_out += QLatin1Char('<') + tag + blockStyle(b.blockFormat(), bool(list)) +
                     QLatin1Char('>') + body + QLatin1String("</") + tag + QLatin1String(">\n");
        }
        close();
    }

    static QString listType(const QTextList *list) {
        switch (list->format().style()) {
        case QTextListFormat::ListLowerAlpha:
            return QStringLiteral(" type=\"a\"");
        case QTextListFormat::ListUpperAlpha:
            return QStringLiteral(" type=\"A\"");
        case QTextListFormat::ListLowerRoman:
            return QStringLiteral(" type=\"i\"");
        case QTextListFormat::ListUpperRoman:
            return QStringLiteral(" type=\"I\"");
        default:
            return {};
        }
    }

    static QString blockStyle(const QTextBlockFormat &f, bool listItem) {
        QStringList css;
        switch (f.alignment() & Qt::AlignHorizontal_Mask) {
        case Qt::AlignHCenter:
            css << QStringLiteral("text-align:center");
            break;
        case Qt::AlignRight:
            css << QStringLiteral("text-align:right");
            break;
        case Qt::AlignJustify:
            css << QStringLiteral("text-align:justify");
            break;
        default:
            break;
        }
        // Lengths are pixels at 96 dpi, as CSS pixels are.
        if (!listItem && f.leftMargin() > 0) {
            css << QStringLiteral("margin-left:%1px").arg(qRound(f.leftMargin()));
        }
        if (!listItem && f.textIndent() != 0) {
            css << QStringLiteral("text-indent:%1px").arg(qRound(f.textIndent()));
        }
        if (f.topMargin() > 0) {
            css << QStringLiteral("margin-top:%1px").arg(qRound(f.topMargin()));
        }
        if (f.bottomMargin() > 0) {
            css << QStringLiteral("margin-bottom:%1px").arg(qRound(f.bottomMargin()));
        }
        return css.isEmpty() ? QString() : QStringLiteral(" style=\"%1\"").arg(css.join(u';'));
    }

    void table(QTextTable *t) {
        m_out += QLatin1String("<table>\n");
        for (int r = 0; r < t->rows(); ++r) {
            m_out += QLatin1String("<tr>");
            for (int c = 0; c < t->columns(); ++c) {
                const QTextTableCell cell = t->cellAt(r, c);
                if (cell.row() != r || cell.column() != c) {
                    continue; // covered by a spanning cell
                }
                m_out += QLatin1String("<td");
                if (cell.columnSpan() > 1) {
                    m_out += QStringLiteral(" colspan=\"%1\"").arg(cell.columnSpan());
                }
                if (cell.rowSpan() > 1) {
                    m_out += QStringLiteral(" rowspan=\"%1\"").arg(cell.rowSpan());
                }
                m_out += QLatin1Char('>');
                // A cell of one plain paragraph holds its text without a paragraph around it.
                QTextFrame::iterator only = cell.begin();
                const QTextBlock single = only.currentBlock();
                if (single.isValid() && !single.textList() && ++only == cell.end() &&
                    blockStyle(single.blockFormat(), false).isEmpty()) {
                    m_out += inlines(single);
                } else {
                    flow(cell.begin(), cell.end());
                }
                m_out += QLatin1String("</td>");
            }
            m_out += QLatin1String("</tr>\n");
        }
        m_out += QLatin1String("</table>\n");
    }

    QString inlines(const QTextBlock &b) const {
        QString out;
        for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
            const QTextFragment frag = it.fragment();
            const QTextCharFormat f = frag.charFormat();
            if (hidden(f)) {
                continue;
            }
            QString text;
            if (f.isImageFormat()) {
                const QTextImageFormat img = f.toImageFormat();
                const QString url = dataUrl(m_doc, img.name());
                if (url.isEmpty()) {
                    text = escapeHtml(QStringLiteral("[Picture]"));
                } else {
                    text = QStringLiteral("<img src=\"%1\" alt=\"\"").arg(url);
                    if (img.width() > 0) {
                        text += QStringLiteral(" width=\"%1\"").arg(qRound(img.width()));
                    }
                    if (img.height() > 0) {
                        text += QStringLiteral(" height=\"%1\"").arg(qRound(img.height()));
                    }
                    text += QLatin1Char('>');
                }
            } else if (f.objectType() == RtfConventions::PlaceholderObjectType) {
                text = escapeHtml(placeholderText(f));
            } else {
                text = escapeHtml(frag.text());
            }
            out += wrap(f, text);
        }
        return out;
    }

    template <class T> static T mostUsed(const QHash<T, int> &counts) {
        T best{};
        int most = 0;
        for (auto it = counts.begin(); it != counts.end(); ++it) {
            if (it.value() > most) {
                most = it.value();
                best = it.key();
            }
        }
        return best;
    }

    static QString family(const QTextCharFormat &f) {
        const QStringList families = f.fontFamilies().toStringList();
        QString name = families.isEmpty() ? QString() : families.first();
        return name.remove(u'\'').remove(u'"');
    }

    QString wrap(const QTextCharFormat &f, QString text) const {
        if (f.fontStrikeOut()) {
            text = QLatin1String("<s>") + text + QLatin1String("</s>");
        }
        if (f.fontUnderline() && !f.isAnchor()) {
            text = QLatin1String("<u>") + text + QLatin1String("</u>");
        }
        if (f.fontItalic()) {
            text = QLatin1String("<i>") + text + QLatin1String("</i>");
        }
        if (bold(f)) {
            text = QLatin1String("<b>") + text + QLatin1String("</b>");
        }
        QStringList css;
        const QString name = family(f);
        if (!name.isEmpty() && name != m_family) {
            css << QStringLiteral("font-family:'%1'").arg(escapeHtml(name));
        }
        if (f.hasProperty(QTextFormat::FontPointSize) && f.fontPointSize() > 0 &&
            f.fontPointSize() != m_size) {
            css << QStringLiteral("font-size:%1pt").arg(f.fontPointSize());
        }
        if (f.hasProperty(QTextFormat::ForegroundBrush) && f.foreground().style() != Qt::NoBrush) {
            css << QStringLiteral("color:") + cssColor(f.foreground().color());
        }
        if (f.hasProperty(QTextFormat::BackgroundBrush) && f.background().style() != Qt::NoBrush) {
            css << QStringLiteral("background-color:") + cssColor(f.background().color());
        }
        if (!css.isEmpty()) {
            text = QStringLiteral("<span style=\"%1\">").arg(css.join(u';')) + text +
                   QLatin1String("</span>");
        }
        if (f.isAnchor() && !f.anchorHref().isEmpty()) {
            text = QStringLiteral("<a href=\"%1\">").arg(escapeHtml(f.anchorHref())) + text +
                   QLatin1String("</a>");
        }
        return text;
    }

    const QTextDocument &m_doc;
    QString m_out;
    QString m_family;
    qreal m_size = 0;
};

// Markdown text: every ASCII punctuation that could start markup is escaped.
QString escapeMarkdown(const QString &text) {
    static const QString special = QStringLiteral("\\`*_~[]<>|#&!");
    QString out;
    out.reserve(text.size() + 8);
    for (const QChar c : text) {
        if (c == QChar::LineSeparator) {
            out += QLatin1String("\\\n");
        } else if (c == QChar::Nbsp) {
            out += QLatin1String("&nbsp;");
        } else {
            if (special.contains(c)) {
                out += QLatin1Char('\\');
            }
            out += c;
        }
    }
    return out;
}

// A line that would read as a list item, a heading rule or a quote gets its first mark escaped.
QString escapeLineStart(const QString &line) {
    qsizetype i = 0;
    while (i < line.size() && line.at(i) == u' ') {
        ++i;
    }
    if (i < line.size() && (line.at(i) == u'-' || line.at(i) == u'+' || line.at(i) == u'=')) {
        return line.left(i) + QLatin1Char('\\') + line.mid(i);
    }
    qsizetype d = i;
    while (d < line.size() && line.at(d).isDigit()) {
        ++d;
    }
    if (d > i && d < line.size() && (line.at(d) == u'.' || line.at(d) == u')')) {
        return line.left(d) + QLatin1Char('\\') + line.mid(d);
    }
    return line;
}

// Writes a rich text as Markdown. Emphasis opens and closes around runs of text, keeping
// blanks outside the marks, since a mark next to a blank is not emphasis.
class MarkdownWriter {
public:
    explicit MarkdownWriter(const QTextDocument &doc) : m_doc(doc) {}
    QString run() {
        flow(m_doc.rootFrame()->begin(), m_doc.rootFrame()->end());
        while (m_out.endsWith(QLatin1String("\n\n"))) {
            m_out.chop(1);
        }
        return m_out;
    }

private:
    enum Mark { Bold, Italic, Strike, Underline, MarkCount };

    void flow(QTextFrame::iterator it, const QTextFrame::iterator &end) {
        bool inList = false;
        const QTextList *current = nullptr;
        for (; it != end; ++it) {
            if (QTextFrame *frame = it.currentFrame()) {
                if (inList) {
                    m_out += QLatin1Char('\n');
                    inList = false;
                }
                if (auto *t = qobject_cast<QTextTable *>(frame)) {
                    table(t);
                } else {
                    flow(frame->begin(), frame->end());
                }
                continue;
            }
            const QTextBlock b = it.currentBlock();
            const QTextList *list = b.textList();
            const QString text = inlines(b);
            if (list && text.trimmed().isEmpty()) {
                continue;
            }
            if (list && inList && list != current) {
                m_out += QLatin1Char('\n'); // the next list
            }
            current = list;
            if (list) {
                const QString marker = isOrdered(list)
                                           ? QStringLiteral("%1. ").arg(list->itemNumber(b) + 1)
                                           : QStringLiteral("- ");
                m_out += marker + text + QLatin1Char('\n');
                inList = true;
                continue;
            }
            if (inList) {
                m_out += QLatin1Char('\n');
                inList = false;
            }
            if (!text.trimmed().isEmpty()) {
                m_out += escapeLineStart(text) + QLatin1String("\n\n");
            }
        }
        if (inList) {
            m_out += QLatin1Char('\n');
        }
    }

    // A pipe table; its first row is the header row Markdown requires.
    void table(QTextTable *t) {
        for (int r = 0; r < t->rows(); ++r) {
            QString row = QStringLiteral("|");
            for (int c = 0; c < t->columns(); ++c) {
                const QTextTableCell cell = t->cellAt(r, c);
                QStringList parts;
                if (cell.row() == r && cell.column() == c) {
                    for (auto it = cell.begin(); it != cell.end(); ++it) {
                        if (it.currentBlock().isValid()) {
                            const QString part = inlines(it.currentBlock()).trimmed();
                            if (!part.isEmpty()) {
                                parts << part;
                            }
                        }
                    }
                }
                QString text = parts.join(QLatin1String("<br>"));
                text.replace(QLatin1String("\\\n"), QLatin1String("<br>"));
                row += QLatin1Char(' ') + text + QLatin1String(" |");
            }
            m_out += row + QLatin1Char('\n');
            if (r == 0) {
                m_out += QLatin1Char('|') +
                         QString(QLatin1String(" --- |")).repeated(t->columns()) +
                         QLatin1Char('\n');
            }
        }
        m_out += QLatin1Char('\n');
    }

    static const char *open(int m) {
        static const char *marks[] = {"**", "*", "~~", "<u>"};
        return marks[m];
    }
    static const char *close(int m) {
        static const char *marks[] = {"**", "*", "~~", "</u>"};
        return marks[m];
    }

    QString inlines(const QTextBlock &b) const {
        QString out;
        std::vector<int> stack; // open marks, innermost last
        auto closeTo = [&](size_t depth) {
            qsizetype blanks = 0;
            while (blanks < out.size() && out.at(out.size() - 1 - blanks) == u' ') {
                ++blanks;
            }
            const QString tail = out.right(blanks);
            out.chop(blanks);
            while (stack.size() > depth) {
                out += QLatin1String(close(stack.back()));
                stack.pop_back();
            }
            out += tail;
        };
        for (QTextBlock::iterator it = b.begin(); !it.atEnd(); ++it) {
            const QTextFragment frag = it.fragment();
            const QTextCharFormat f = frag.charFormat();
            if (hidden(f)) {
                continue;
            }
            QString text;
            bool atom = false;
            if (f.isImageFormat()) {
                const QString url = dataUrl(m_doc, f.toImageFormat().name());
                text = url.isEmpty() ? escapeMarkdown(QStringLiteral("[Picture]"))
                                     : QStringLiteral("![](%1)").arg(url);
                atom = true;
            } else if (f.objectType() == RtfConventions::PlaceholderObjectType) {
                text = escapeMarkdown(placeholderText(f));
            } else {
                text = escapeMarkdown(frag.text());
            }
            if (!atom && text.trimmed().isEmpty()) {
                out += text; // blanks carry no marks of their own
                continue;
            }
            const bool want[MarkCount] = {bold(f), f.fontItalic(), f.fontStrikeOut(),
                                          f.fontUnderline()};
            size_t keep = 0;
            while (keep < stack.size() && want[stack[keep]]) {
                ++keep;
            }
            closeTo(keep);
            qsizetype lead = 0;
            while (!atom && lead < text.size() && text.at(lead).isSpace()) {
                ++lead;
            }
            out += text.left(lead);
            for (int m = 0; m < MarkCount; ++m) {
                if (want[m] && std::find(stack.begin(), stack.end(), m) == stack.end()) {
                    out += QLatin1String(open(m));
                    stack.push_back(m);
                }
            }
            out += text.mid(lead);
        }
        closeTo(0);
        return out;
    }

    const QTextDocument &m_doc;
    QString m_out;
};

std::vector<modPrint::PrintEntry> entriesOf(Document &doc, Node *top) {
    Node *root = modDocText::DocRoot(doc);
    if (!root) {
        return {};
    }
    modNodes::NodeSetKeys(root, QStringLiteral("KEY0"));
    return modPrint::SubtreeEntries(top ? top : root, true);
}

} // namespace

QString HtmlOf(const QTextDocument &doc) {
    return HtmlWriter(doc).run();
}

QString MarkdownOf(const QTextDocument &doc) {
    return MarkdownWriter(doc).run();
}

QByteArray Html(const QString &title, const QString &fontFamily,
                const std::vector<modPrint::PrintEntry> &entries, bool texts) {
    PROC("modExport Html");
    QString out =
        QStringLiteral("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"generator\" content=\"Mavrolen\">\n<title>%1</title>\n"
                       "<style>\n"
                       "body { font-family: '%2', sans-serif; max-width: 50em; margin: 2em auto; "
                       "padding: 0 1em; }\n"
                       "p, li, td { white-space: pre-wrap; }\n"
                       "p { margin: 0; }\n"
                       "table { border-collapse: collapse; margin: 0.5em 0; }\n"
                       "td { border: 1px solid #999; padding: 2px 6px; vertical-align: top; }\n"
                       "</style>\n</head>\n<body>\n")
            .arg(escapeHtml(title), escapeHtml(fontFamily));
    for (const modPrint::PrintEntry &e : entries) {
        const int level = modPrint::HeadingLevel(e.Depth);
        out += QStringLiteral("<h%1>%2</h%1>\n").arg(level).arg(escapeHtml(e.Heading));
        if (texts) {
            QTextDocument text;
            if (modPrint::EntryTextDocument(e.Stored, &text)) {
                out += HtmlOf(text);
            }
        }
    }
    out += QLatin1String("</body>\n</html>\n");
    return out.toUtf8();
}

QByteArray Markdown(const std::vector<modPrint::PrintEntry> &entries, bool texts) {
    PROC("modExport Markdown");
    QString out;
    for (const modPrint::PrintEntry &e : entries) {
        out += QString(modPrint::HeadingLevel(e.Depth), u'#') + QLatin1Char(' ') +
               escapeMarkdown(e.Heading) + QLatin1String("\n\n");
        if (texts) {
            QTextDocument text;
            if (modPrint::EntryTextDocument(e.Stored, &text)) {
                const QString body = MarkdownOf(text);
                if (!body.isEmpty()) {
                    out += body + QLatin1Char('\n');
                }
            }
        }
    }
    return out.toUtf8();
}

bool ExportHtml(Document &doc, const QString &path, Node *top) {
    return modMain::Guarded([&] {
        PROC("modExport ExportHtml");
        const QByteArray bytes = Html(modPrint::DocumentTitle(doc),
                                      modPrint::TextFont(doc).family(), entriesOf(doc, top), true);
        modDoc::WriteWholeFile(path, bytes);
        return true;
    });
}

bool ExportMarkdown(Document &doc, const QString &path, Node *top) {
    return modMain::Guarded([&] {
        PROC("modExport ExportMarkdown");
        modDoc::WriteWholeFile(path, Markdown(entriesOf(doc, top), true));
        return true;
    });
}

bool ExportPdf(Document &doc, const QString &path, Node *top) {
    const std::vector<modPrint::PrintEntry> entries =
        modMain::Guarded([&] { return entriesOf(doc, top); });
    const QPageLayout layout =
        modMain::Guarded([] { return modPrint::PageLayoutLoad(); }, modPrint::PageLayoutDefault());
    return modPrint::WritePdf(doc, entries, true, path, layout);
}

namespace {

// Asks for the file and writes the active document with the writer.
void exportAs(const char *proc, const QString &ext, const QString &filter,
              bool (*write)(Document &, const QString &, Node *)) {
    modMain::Guarded([&] {
        modMain::CurrentProcName = QString::fromLatin1(proc);
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        const auto name = modFile::ShowDialog(true, ext, modString::FileWithoutExt(doc->m_sFile),
                                              filter, modFile::kSaveFlags);
        if (name) {
            write(*doc, *name, nullptr);
        }
    });
}

} // namespace

void FileExportHtml() {
    exportAs("modExport FileExportHtml", QStringLiteral("html"),
             QStringLiteral("HTML Files (*.html)|*.html"), ExportHtml);
}

void FileExportMarkdown() {
    exportAs("modExport FileExportMarkdown", QStringLiteral("md"),
             QStringLiteral("Markdown Files (*.md)|*.md"), ExportMarkdown);
}

void FileExportPdf() {
    exportAs("modExport FileExportPdf", QStringLiteral("pdf"),
             QStringLiteral("PDF Files (*.pdf)|*.pdf"), ExportPdf);
}

} // namespace modExport
