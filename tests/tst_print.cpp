// Printing and publishing: what a print run includes, the printed pages (read back from the PDF)
// and the HTML and Markdown of a text with every kind of formatting.
#include "document/Document.h"
#include "document/modFile.h"
#include "print/PrintPages.h"
#include "print/modExport.h"
#include "print/modPrint.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/SettingsStore.h"

#include <QtGui>
#include <QtTest>

class TestPrint : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { modSettings::SetSettingsFile(m_dir.filePath("settings.ini")); }
    void cleanup() { DocTest::closeAll(); }
    void includeChoices_data() {
        QTest::addColumn<QString>("choice");   // "entry" or "document", then "+children", "+texts"
        QTest::addColumn<QString>("selected"); // label of the selected entry, "" for none
        QTest::addColumn<QString>("expected"); // heading:depth, in order
        AddRows({
            {"whole document", "document", "Beds",
             "0 Projects:0|0.1 Garden:1|0.1.1 Beds:2|0.1.2 Tools:2|0.2 House:1"},
            {"whole document ignores children", "document-children", "Garden",
             "0 Projects:0|0.1 Garden:1|0.1.1 Beds:2|0.1.2 Tools:2|0.2 House:1"},
            {"entry with children", "entry", "Garden", "0.1 Garden:0|0.1.1 Beds:1|0.1.2 Tools:1"},
            {"entry alone", "entry-children", "Garden", "0.1 Garden:0"},
            {"no entry selected", "entry", "", ""},
        });
    }
    void includeChoices() {
        QFETCH(QString, choice);
        QFETCH(QString, selected);
        Document *doc = DocTest::newDocument();
        Node *root = DocTest::add(doc, nullptr, "Projects");
        Node *garden = DocTest::add(doc, root, "Garden");
        DocTest::add(doc, garden, "Beds");
        DocTest::add(doc, garden, "Tools");
        DocTest::add(doc, root, "House");
        doc->trvOutline().setSelectedItem(FindEntry(doc->trvOutline(), selected));
        modPrint::PrintChoice c;
        c.CurrentEntryOnly = choice.startsWith("entry");
        c.Children = !choice.contains("-children");
        QStringList got;
        for (const modPrint::PrintEntry &e : modPrint::PrintEntries(*doc, c)) {
            got << e.Heading + ":" + QString::number(e.Depth);
        }
        QTEST(got.join('|'), "expected");
    }
    void printedPages_data() {
        QTest::addColumn<QString>("lines"); // text lines of each entry (children of the first)
        QTest::addColumn<bool>("texts");
        QTest::addColumn<int>("minPages");
        QTest::newRow("texts of every length")
            << "3,0,12,5,1,0,9,2,14,7,4,1,0,6,11,3,8" << true << 4;
        QTest::newRow("labels only") << "3,0,12,5,1,0,9,2,14,7,4,1,0,6,11,3,8" << false << 1;
        QTest::newRow("a text longer than pages") << "2,90,1" << true << 4;
        QTest::newRow("forced page break") << "4,p3,2" << true << 2;
    }
    // The pages read back from the PDF: every heading and text line once and in outline order,
    // headers and footers on every page, and no heading left at the foot of a page without the
    // first line of its text.
    void printedPages() {
        QFETCH(QString, lines);
        QFETCH(bool, texts);
        QFETCH(int, minPages);
        if (QStandardPaths::findExecutable("pdftotext").isEmpty()) {
            QSKIP("pdftotext is not installed");
        }
        Document *doc = DocTest::newDocument();
        doc->m_sFile = "/some/folder/Plans.mvd";
        Node *root = DocTest::add(doc, nullptr, "Outline");
        QStringList expected{"0 Outline"};
        QSet<QString> withText;
        const QStringList counts = lines.split(',');
        for (int i = 0; i < counts.size(); ++i) {
            const bool page = counts[i].startsWith('p');
            const int count = QString(counts[i]).remove('p').toInt();
            QStringList text;
            for (int k = 1; k <= count; ++k) {
                text << QString("Line %1 of entry %2").arg(k).arg(i + 1);
                if (page && k == 1) {
                    text << "\\page";
                }
            }
            const QString heading = QString("0.%1 Entry %1").arg(i + 1);
            const QString rtf = "{\\rtf1\\ansi " + text.join("\\par ") + "\\par }";
            DocTest::add(doc, root, QString("Entry %1").arg(i + 1),
                         text.isEmpty() ? QByteArray()
                                        : rtf.toLatin1().replace("\\page\\par ", "\\page "));
            expected << heading;
            if (texts && !text.isEmpty()) {
                withText << heading;
                text.removeAll("\\page");
                expected << text;
            }
        }
        const QPageLayout a6(QPageSize(QPageSize::A6), QPageLayout::Portrait,
                             QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
        const QString pdf = m_dir.filePath("pages.pdf");
        const std::vector<modPrint::PrintEntry> entries = modPrint::PrintEntries(*doc, {});
        QVERIFY(modPrint::WritePdf(*doc, entries, texts, pdf, a6));
        QProcess p;
        p.start("pdftotext", {pdf, "-"});
        QVERIFY(p.waitForFinished(120000));
        const QStringList pages =
            QString::fromUtf8(p.readAllStandardOutput()).split('\f', Qt::SkipEmptyParts);
        PrintPages counted(entries, texts, "", QFont(), a6);
        QCOMPARE(pages.size(), counted.pageCount());
        QVERIFY2(pages.size() >= minPages, qPrintable(QString::number(pages.size())));
        QStringList body;
        bool forced = false; // a page starts where the text asked for it
        for (int i = 0; i < pages.size(); ++i) {
            QStringList pageLines = pages[i].split('\n', Qt::SkipEmptyParts);
            QCOMPARE(pageLines.takeFirst(), QString("Plans.mvd"));
            QCOMPARE(pageLines.takeLast(), QString("Page %1 of %2").arg(i + 1).arg(pages.size()));
            QVERIFY2(!withText.contains(pageLines.last()), qPrintable(pageLines.last()));
            forced |= pageLines.first() == "Line 2 of entry 2";
            body << pageLines;
        }
        QCOMPARE(body, expected);
        QCOMPARE(forced, lines.contains('p'));
    }
    void pageSetupKept_data() {
        QTest::addColumn<QString>("stored"); // settings "key=value;...", or a layout saved first
        QTest::addColumn<QString>("paper");  // expected paper size in mm, orientation, margins
        const char *fallback = QLocale::system().measurementSystem() == QLocale::ImperialUSSystem
                                   ? "215.9x279.4 Portrait 20,20,20,20"
                                   : "210x297 Portrait 20,20,20,20";
        AddRows({
            {"nothing kept", "", fallback},
            {"saved A5 landscape", "save:A5,Landscape,5,10,15,20", "148x210 Landscape 5,10,15,20"},
            {"saved custom paper", "save:Custom,Portrait,10,10,10,10",
             "150x200 Portrait 10,10,10,10"},
            {"margins wider than the paper",
             "PaperSize=A6;MarginLeft=80;MarginTop=1;MarginRight=80;MarginBottom=1", fallback},
            {"margin not a number",
             "PaperSize=A4;MarginLeft=x;MarginTop=1;MarginRight=1;MarginBottom=1", fallback},
            {"unknown paper",
             "PaperSize=Napkin;MarginLeft=1;MarginTop=1;MarginRight=1;MarginBottom=1", fallback},
        });
    }
    void pageSetupKept() {
        QFETCH(QString, stored);
        modSettings::DeleteSection("PageSetup");
        if (stored.startsWith("save:")) {
            const QStringList v = stored.mid(5).split(',');
            modPrint::PageLayoutSave(QPageLayout(
                v[0] == "A5" ? QPageSize(QPageSize::A5)
                             : QPageSize(QSizeF(150, 200), QPageSize::Millimeter, "Custom"),
                v[1] == "Landscape" ? QPageLayout::Landscape : QPageLayout::Portrait,
                QMarginsF(v[2].toDouble(), v[3].toDouble(), v[4].toDouble(), v[5].toDouble()),
                QPageLayout::Millimeter));
        } else {
            for (const QString &pair : stored.split(';', Qt::SkipEmptyParts)) {
                modSettings::SaveSetting("PageSetup", pair.section('=', 0, 0),
                                         pair.section('=', 1));
            }
        }
        const QPageLayout layout = modPrint::PageLayoutLoad();
        const QMarginsF m = layout.margins(QPageLayout::Millimeter);
        const QSizeF sheet = layout.pageSize().size(QPageSize::Millimeter);
        const bool landscape = layout.orientation() == QPageLayout::Landscape;
        QTEST(QString::asprintf("%gx%g %s %g,%g,%g,%g", sheet.width(), sheet.height(),
                                landscape ? "Landscape" : "Portrait", m.left(), m.top(), m.right(),
                                m.bottom()),
              "paper");
    }
    void richTextPublished_data() {
        QTest::addColumn<QString>("html"); // in the exported page
        QTest::addColumn<QString>("md");   // in the Markdown
        QTest::addColumn<QString>(
            "pandoc"); // in pandoc's HTML of the Markdown ("" nothing to check)
        AddRows({
            {"child heading", "<h2>0.1 Rich &amp; rare</h2>", "## 0.1 Rich \\& rare",
             "0.1 Rich &amp; rare</h2>"},
            {"deeper than six levels", "<h6>0.1.1.1.1.1.1 Deep</h6>", "###### 0.1.1.1.1.1.1 Deep",
             "0.1.1.1.1.1.1 Deep</h6>"},
            {"the text's own font once",
             "<div style=\"font-family:'Arial';font-size:12pt\">\n<p>Plain", "Plain", ""},
            {"bold", "<b>bold words</b>", "**bold words**", "<strong>bold words</strong>"},
            {"italic", "<i>italic</i>", "*italic*", "<em>italic</em>"},
            {"underline", "<u>under</u>", "<u>under</u>", "<u>under</u>"},
            {"strike", "<s>struck</s>", "~~struck~~", "<del>struck</del>"},
            {"bold italic", "<b><i>both</i></b>", "***both***", "<strong><em>both</em></strong>"},
            {"colour", "<span style=\"color:#ff0000\">red</span>", "red", ""},
            {"centred", "<p style=\"text-align:center\">Centred line</p>", "Centred line", ""},
            {"escaping", "a &lt;tag&gt; *star*", "a \\<tag\\> \\*star\\*", "a &lt;tag&gt; *star*"},
            {"bullets", "<ul>\n<li>first bullet</li>\n<li>second bullet</li>\n</ul>",
             "- first bullet\n- second bullet\n", "<li>first bullet</li>"},
            {"numbering", "<ol>\n<li>one</li>\n<li>two</li>\n</ol>", "1. one\n2. two\n",
             "<ol type=\"1\">"},
            {"table", "<table>\n<tr><td>a1</td><td>b1</td></tr>\n<tr><td>a2</td><td>b2</td></tr>",
             "| a1 | b1 |\n| --- | --- |\n| a2 | b2 |", "<td>b2</td>"},
            {"picture", "<img src=\"data:image/png;base64,", "![](data:image/png;base64,",
             "src=\"data:image/png;base64,"},
            {"empty text has only its heading", "<h2>0.2 Empty</h2>\n</body>", "## 0.2 Empty\n",
             ""},
        });
    }
    // One document with every kind of formatting, exported once to each format; each row looks for
    // one feature in the HTML page, in the Markdown and in pandoc's reading of the Markdown.
    void richTextPublished() {
        QFETCH(QString, html);
        QFETCH(QString, md);
        QFETCH(QString, pandoc);
        const QByteArray png = QByteArray::fromBase64( // 4 x 3 red pixels
            "iVBORw0KGgoAAAANSUhEUgAAAAQAAAADCAIAAAA7ljmRAAAAEElEQVR42mP4z8AARww4OQD1MQv13XpUDQAAAA"
            "BJRU5ErkJggg==");
        const QByteArray rtf =
            "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}{\\colortbl;\\red255\\green0\\blue0;}\n"
            "\\pard Plain {\\b bold words} and {\\i italic} and {\\ul under} and {\\strike struck} "
            "and {\\b\\i both} and {\\cf1 red}.\\par\n"
            "\\pard\\qc Centred line\\par\n"
            "\\pard a <tag> *star*\\par\n"
            "\\pard{\\*\\pn\\pnlvlblt{\\pntxtb\\'b7}}\\fi-360\\li360 first bullet\\par\n"
            "second bullet\\par\n"
            "\\pard{\\*\\pn\\pnlvlbody\\pndec}\\fi-360\\li360 one\\par\n"
            "two\\par\n"
            "\\pard\\trowd\\cellx2000\\cellx4000\\intbl a1\\cell b1\\cell\\row\n"
            "\\trowd\\cellx2000\\cellx4000\\intbl a2\\cell b2\\cell\\row\n"
            "\\pard Picture {\\pict\\pngblip\\picw4\\pich3 " +
            png.toHex() + "}\\par\n}";
        Document *doc = DocTest::newDocument();
        Node *root = DocTest::add(doc, nullptr, "Notes");
        Node *deep = DocTest::add(doc, root, "Rich & rare", rtf);
        for (int i = 0; i < 5; ++i) {
            deep = DocTest::add(doc, deep, i == 4 ? "Deep" : "Level");
        }
        DocTest::add(doc, root, "Empty", "{\\rtf1\\ansi \\par\\par }");
        const QString htmlPath = m_dir.filePath("rich.html");
        const QString mdPath = m_dir.filePath("rich.md");
        QVERIFY(modExport::ExportHtml(*doc, htmlPath));
        QVERIFY(modExport::ExportMarkdown(*doc, mdPath));
        const QString page = QString::fromUtf8(ReadFileBytes(htmlPath));
        const QString markdown = QString::fromUtf8(ReadFileBytes(mdPath));
        QVERIFY2(page.contains(html), qPrintable(page));
        QVERIFY2(markdown.contains(md), qPrintable(markdown));
        // The page reads back as one document with the texts in outline order.
        QTextDocument parsed;
        parsed.setHtml(page);
        QVERIFY(parsed.toPlainText().contains(
            QRegularExpression("0 Notes\\n0\\.1 Rich & rare\\nPlain bold words.*\\n0\\.1\\.1 Level",
                               QRegularExpression::DotMatchesEverythingOption)));
        if (pandoc.isEmpty()) {
            return;
        }
        if (QStandardPaths::findExecutable("pandoc").isEmpty()) {
            QSKIP("pandoc is not installed");
        }
        QProcess p;
        p.start("pandoc", {"-f", "markdown", "-t", "html", mdPath});
        QVERIFY(p.waitForFinished(60000));
        const QString read = QString::fromUtf8(p.readAllStandardOutput());
        QVERIFY2(read.contains(pandoc), qPrintable(read));
    }
    void exportCommands_data() {
        QTest::addColumn<QString>("ext");
        QTest::addColumn<QString>("start"); // of the written file
        AddRows({{"html", "html", "<!DOCTYPE html>"},
                 {"markdown", "md", "# 0 Projects"},
                 {"pdf", "pdf", "%PDF-"},
                 {"cancelled", "html", ""}});
    }
    // The File > Export items ask for a name (the document's, with the format's extension) and
    // write the active document there; a cancelled dialog writes nothing.
    void exportCommands() {
        QFETCH(QString, ext);
        QFETCH(QString, start);
        Document *doc = DocTest::exampleDocument();
        doc->m_sFile = m_dir.filePath("plans.mvd");
        const QString target = m_dir.filePath(QTest::currentDataTag() + QString(".") + ext);
        FakeMainWindow frm;
        frm.FileNames << (start.isEmpty() ? std::nullopt : std::optional<QString>(target));
        (ext == "md"    ? modExport::FileExportMarkdown
         : ext == "pdf" ? modExport::FileExportPdf
                        : modExport::FileExportHtml)();
        QCOMPARE(frm.FileRequests.size(), 1);
        QCOMPARE(frm.FileRequests[0].DefaultExt + " " + frm.FileRequests[0].FileName,
                 ext + " " + m_dir.filePath("plans"));
        QVERIFY2(ReadFileBytes(target).startsWith(start.isEmpty() ? "<missing>" : start.toUtf8()),
                 ReadFileBytes(target).left(40).constData());
    }

private:
    QTemporaryDir m_dir;
};

QTEST_MAIN(TestPrint)
#include "tst_print.moc"
