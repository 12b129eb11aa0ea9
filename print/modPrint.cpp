// Printing without widgets: the entries of a print run, their texts, the page setup and PDF.
#include "print/modPrint.h"

#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocText.h"
#include "outline/modNodes.h"
#include "print/PrintPages.h"
#include "richtext/RtfReader.h"
#include "util/ErrorLog.h"
#include "util/SettingsStore.h"

#include <QBuffer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocale>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QtNumeric>

#include <algorithm>

namespace modPrint {

namespace {

const QString kPageSetup = QStringLiteral("PageSetup");
const QString kPrint = QStringLiteral("Print");

QString number(qreal value) {
    return QString::number(value, 'g', 6);
}

// A millimetre value of the page setup; NaN when missing or not a number.
qreal millimetres(const QString &key) {
    bool ok = false;
    const qreal v = modSettings::GetSetting(kPageSetup, key).toDouble(&ok);
    return ok ? v : qQNaN();
}

} // namespace

std::vector<PrintEntry> SubtreeEntries(Node *top, bool children) {
    PROC("modPrint SubtreeEntries");
    std::vector<PrintEntry> entries;
    if (!top) {
        return entries;
    }
    std::vector<std::pair<Node *, int>> stack{{top, 0}};
    while (!stack.empty()) {
        const auto [node, depth] = stack.back();
        stack.pop_back();
        entries.push_back({HeadingText(node), node->Tag(), depth});
        if (!children) {
            break;
        }
        const auto &list = node->childList();
        for (auto it = list.rbegin(); it != list.rend(); ++it) {
            stack.emplace_back(*it, depth + 1);
        }
    }
    return entries;
}

std::vector<PrintEntry> PrintEntries(Document &doc, const PrintChoice &choice) {
    PROC("modPrint PrintEntries");
    Node *root = modDocText::DocRoot(doc);
    if (!root) {
        return {};
    }
    modNodes::NodeSetKeys(root, QStringLiteral("KEY0"));
    if (!choice.CurrentEntryOnly) {
        return SubtreeEntries(root, true);
    }
    return SubtreeEntries(doc.trvOutline().SelectedItem(), choice.Children);
}

QString DocumentTitle(const Document &doc) {
    if (!doc.m_sFile.isEmpty()) {
        return QFileInfo(doc.m_sFile).fileName();
    }
    return doc.m_sCaption;
}

QString HeadingText(const Node *entry) {
    QString key = entry->Key();
    if (key.startsWith(QLatin1String("KEY"))) {
        key.remove(0, 3);
    }
    return key.isEmpty() ? entry->Text() : key + QLatin1Char(' ') + entry->Text();
}

int HeadingLevel(int depth) {
    return std::clamp(depth + 1, 1, 6);
}

bool EntryTextDocument(const QByteArray &stored, QTextDocument *doc) {
    PROC("modPrint EntryTextDocument");
    QByteArray text;
    modNodes::NodeTextDecompressIfRequired(stored, text);
    if (text.isEmpty()) {
        doc->clear();
        return false;
    }
    RtfReader::readAny(text, doc);
    // Empty paragraphs at the end print as nothing but space.
    QTextFrame *root = doc->rootFrame();
    for (QTextBlock last = doc->lastBlock(); last.length() <= 1; last = doc->lastBlock()) {
        const QTextBlock before = last.previous();
        if (!before.isValid() || doc->frameAt(before.position()) != root ||
            doc->frameAt(last.position()) != root) {
            break;
        }
        QTextCursor cursor(doc);
        cursor.setPosition(before.position() + before.length() - 1);
        cursor.setPosition(last.position(), QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
    }
    return !(doc->characterCount() <= 1 && doc->rootFrame()->childFrames().isEmpty());
}

QFont TextFont(const Document &doc) {
    QFont font = QGuiApplication::font();
    doc.m_fntTextFont.SetFont(font);
    return font;
}

QPageLayout PageLayoutDefault() {
    const bool inches = QLocale::system().measurementSystem() == QLocale::ImperialUSSystem;
    return QPageLayout(QPageSize(inches ? QPageSize::Letter : QPageSize::A4), QPageLayout::Portrait,
                       QMarginsF(20, 20, 20, 20), QPageLayout::Millimeter);
}

QPageLayout PageLayoutLoad() {
    PROC("modPrint PageLayoutLoad");
    QPageLayout layout = PageLayoutDefault();
    const QString key = modSettings::GetSetting(kPageSetup, QStringLiteral("PaperSize"));
    if (key.isEmpty()) {
        return layout;
    }
    QPageSize size;
    for (int id = 0; id <= int(QPageSize::LastPageSize); ++id) {
        if (QPageSize::key(QPageSize::PageSizeId(id)) == key) {
            size = QPageSize(QPageSize::PageSizeId(id));
        }
    }
    const qreal width = millimetres(QStringLiteral("PaperWidth"));
    const qreal height = millimetres(QStringLiteral("PaperHeight"));
    if (!size.isValid() && width > 0 && height > 0) {
        size = QPageSize(QSizeF(width, height), QPageSize::Millimeter, key);
    }
    const qreal left = millimetres(QStringLiteral("MarginLeft"));
    const qreal top = millimetres(QStringLiteral("MarginTop"));
    const qreal right = millimetres(QStringLiteral("MarginRight"));
    const qreal bottom = millimetres(QStringLiteral("MarginBottom"));
    if (!size.isValid() || !(left >= 0 && top >= 0 && right >= 0 && bottom >= 0)) {
        return layout;
    }
    const bool landscape = modSettings::GetSetting(kPageSetup, QStringLiteral("Orientation")) ==
                           QLatin1String("Landscape");
    QPageLayout kept(size, landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                     QMarginsF(left, top, right, bottom), QPageLayout::Millimeter);
    // Margins that leave no room on the paper are not kept.
    const bool fits = kept.isValid() && kept.margins() == QMarginsF(left, top, right, bottom) &&
                      !kept.paintRect().isEmpty();
    return fits ? kept : layout;
}

void PageLayoutSave(const QPageLayout &layout) {
    PROC("modPrint PageLayoutSave");
    const QPageSize size = layout.pageSize();
    const QSizeF mmSize = size.size(QPageSize::Millimeter);
    const QMarginsF m = layout.margins(QPageLayout::Millimeter);
    modSettings::SaveSetting(kPageSetup, QStringLiteral("PaperSize"), size.key());
    modSettings::SaveSetting(kPageSetup, QStringLiteral("PaperWidth"), number(mmSize.width()));
    modSettings::SaveSetting(kPageSetup, QStringLiteral("PaperHeight"), number(mmSize.height()));
    modSettings::SaveSetting(kPageSetup, QStringLiteral("Orientation"),
                             layout.orientation() == QPageLayout::Landscape
                                 ? QStringLiteral("Landscape")
                                 : QStringLiteral("Portrait"));
    modSettings::SaveSetting(kPageSetup, QStringLiteral("MarginLeft"), number(m.left()));
    modSettings::SaveSetting(kPageSetup, QStringLiteral("MarginTop"), number(m.top()));
    modSettings::SaveSetting(kPageSetup, QStringLiteral("MarginRight"), number(m.right()));
    modSettings::SaveSetting(kPageSetup, QStringLiteral("MarginBottom"), number(m.bottom()));
}

void PrintChoiceLoad(PrintChoice &choice) {
    PROC("modPrint PrintChoiceLoad");
    // Anything but "False" keeps the default (yes) for both answers.
    choice.Children =
        modSettings::GetSetting(kPrint, QStringLiteral("Children")) != QLatin1String("False");
    choice.Texts =
        modSettings::GetSetting(kPrint, QStringLiteral("Texts")) != QLatin1String("False");
}

void PrintChoiceSave(const PrintChoice &choice) {
    PROC("modPrint PrintChoiceSave");
    modSettings::SaveSetting(kPrint, QStringLiteral("Children"),
                             modSettings::BoolText(choice.Children));
    modSettings::SaveSetting(kPrint, QStringLiteral("Texts"), modSettings::BoolText(choice.Texts));
}

bool WritePdf(Document &doc, const std::vector<PrintEntry> &entries, bool texts,
              const QString &path, const QPageLayout &layout, const Progress &progress) {
    return modMain::Guarded(
        [&] {
            PROC("modPrint WritePdf");
            PrintPages pages(entries, texts, DocumentTitle(doc), TextFont(doc), layout);
            while (!pages.layoutMore(4)) {
                if (progress && !progress(pages.pagesKnown(), 0)) {
                    return false;
                }
            }
            const int total = pages.pageCount();
            QBuffer buffer;
            buffer.open(QIODevice::WriteOnly);
            {
                QPdfWriter writer(&buffer);
                writer.setResolution(PrintPages::Resolution);
                writer.setPageLayout(layout);
                writer.setTitle(DocumentTitle(doc));
                writer.setCreator(QStringLiteral("Mavrolen"));
                QPainter painter;
                if (!painter.begin(&writer)) {
                    modMain::Raise(modMain::errDeviceIO);
                }
                for (int i = 0; i < total; ++i) {
                    if (i > 0) {
                        writer.newPage();
                    }
                    pages.paintPage(painter, i, total);
                    if (progress && !progress(i + 1, total)) {
                        return false;
                    }
                }
                painter.end();
            }
            modDoc::WriteWholeFile(path, buffer.data());
            return true;
        },
        false);
}

} // namespace modPrint
