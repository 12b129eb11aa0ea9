// The plain-text format: reading any text file into one entry, writing headings and texts, and
// whole documents to and from the clipboard.
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "document/modDoc.h"
#include "document/modDocClipboard.h"
#include "document/modDocText.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace DocTest;

class TestDocText : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        put("probe", {});
        m_clipboard = m_clip.GetFormat(Clipboard::PlainText);
        modDocClipboard::SetClipboard(m_clipboard ? &m_clip : nullptr);
    }
    void cleanup() {
        closeAll();
        modDocClipboard::SetClipboard(nullptr);
    }
    void linesToStoredText_data() {
        const auto row = [](const char *name, const QByteArray &in, const QByteArray &out) {
            QTest::newRow(name) << in << out;
        };
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("stored");
        row("empty", {}, {});
        row("one line without break", "abc", "abc\r\n");
        row("CR LF kept", "a\r\nb\r\n", "a\r\nb\r\n");
        row("LF becomes CR LF", "a\nb\n", "a\r\nb\r\n");
        row("lone CR ends a line", "a\rb", "a\r\nb\r\n");
        row("blank lines", "\r\n\r\nx", "\r\n\r\nx\r\n");
        row("LF CR is two breaks", "a\n\rb", "a\r\n\r\nb\r\n");
        // The encoding: UTF-8 when the bytes are valid UTF-8, UTF-16 by its mark, else
        // Windows-1252.
        row("not UTF-8: Windows-1252", "caf\xe9", "caf\xe9\r\n");
        row("UTF-8 cut off: Windows-1252", "caf\xc3", "caf\xc3\r\n");
        row("UTF-8",
            "Gr\xc3\xbc\xc3\x9f"
            "e \xe2\x82\xac",
            "Gr\xfc\xdf"
            "e \x80\r\n");
        row("UTF-8 with mark", "\xef\xbb\xbf\xc3\xa9\n", "\xe9\r\n");
        row("UTF-16 LE with mark", QByteArray("\xff\xfeG\0\xfc\0\n\0\xac\x20", 10),
            "G\xfc\r\n\x80\r\n");
        row("UTF-16 BE with mark", QByteArray("\xfe\xff\0G\0\r\0\n\0\xfc", 10), "G\r\n\xfc\r\n");
        // Characters the code page lacks keep their lines as rich text.
        row("beyond the code page", "\xd0\x96\n\xe2\x82\xac", "rtf:\xd0\x96\r\n\xe2\x82\xac\r\n");
        row("tag opener is just text", "{\\ttf_nodekey 0}", "{\\ttf_nodekey 0}\r\n");
    }
    void linesToStoredText() {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, stored);
        const QByteArray got = modDocText::TextFileAsStoredText(file);
        if (stored.startsWith("rtf:")) {
            QVERIFY2(got.startsWith("{\\rtf"), got.constData());
            QCOMPARE(modDocText::PlainText(got), QString::fromUtf8(stored.mid(4)));
        } else {
            QCOMPARE(got, stored);
        }
    }
    // Export to a file, then import and load that file back: one entry holding the whole text.
    void exportThenImport() {
        QTemporaryDir dir;
        Document *doc = newDocument();
        Node *root = add(doc, nullptr, "Projects");
        add(doc, add(doc, root, "Garden"), "Beds");
        add(doc, root, "");
        doc->m_sFile = "/somewhere/a.mvd";
        doc->m_bDataChanged = true;
        const QByteArray text =
            "0 Projects\r\n\r\n0.1 Garden\r\n\r\n0.1.1 Beds\r\n\r\n0.2 \r\n\r\n";
        const QString path = dir.filePath("x.txt");
        QVERIFY(modDocText::DocExport(*doc, path));
        QCOMPARE(ReadFileBytes(path), text);
        // The export leaves the document's file, format and changed flag alone.
        QCOMPARE(doc->m_sFile, QString("/somewhere/a.mvd"));
        QCOMPARE(doc->m_iFileFormatVersion, 1);
        QVERIFY(doc->m_bDataChanged);

        Document *in = newDocument();
        QVERIFY(modDocText::DocImport(*in, path));
        QCOMPARE(in->trvOutline().Count(), 1);
        Node *only = in->trvOutline().Item(1);
        QCOMPARE(only->Text(), QString("Text"));
        QCOMPARE(only->Tag(), text);
        QCOMPARE(only->Key(), QString("KEY0"));
        QVERIFY(only->Selected() && !modNodes::g_bDocTransfer);
        QCOMPARE(in->m_sFile, QString()); // an import names nothing
    }
    void failuresAreReported() {
        ScopedLog log;
        QTemporaryDir dir;
        Document *doc = newDocument();
        QVERIFY(!modDocText::DocImport(*doc, dir.filePath("none.txt")));
        QCOMPARE(doc->trvOutline().Count(), 0);
        QVERIFY(log.content().contains("Error 53 - "));
        add(doc, nullptr, "Only");
        QVERIFY(!modDocText::DocExport(*doc, dir.filePath("missing/x.txt")));
        QVERIFY(log.content().contains("modDoc WriteWholeFile"));
        QVERIFY(!modNodes::g_bDocTransfer);
    }
    void exportOfRichTexts_data() {
        const auto row = [](const char *name, const QByteArray &in, const QByteArray &out) {
            QTest::newRow(name) << in << out;
        };
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QByteArray>("lines"); // what the entry contributes after its heading
        row("one paragraph", "{\\rtf1\\ansi Plans for the year\\par }",
            "Plans for the year\r\n\r\n");
        row("trailing breaks dropped", "{\\rtf1\\ansi abc\\par\\par\\par }", "abc\r\n\r\n");
        row("inner breaks kept", "{\\rtf1\\ansi a\\par\\par {\\b b}\\par }", "a\r\n\r\nb\r\n\r\n");
        row("code page", "{\\rtf1\\ansi caf\\'e9 \\'80}", "caf\xe9 \x80\r\n\r\n");
        row("only breaks", "{\\rtf1\\ansi \\par\\par }", "\r\n");
        row("plain stored text", "not rich\r\n", "not rich\r\n\r\n");
    }
    void exportOfRichTexts() {
        QFETCH(QByteArray, rtf);
        QFETCH(QByteArray, lines);
        for (bool compressed : {false, true}) {
            Document *doc = newDocument();
            QByteArray stored = rtf;
            if (compressed) {
                modNodes::NodeTextCompressIfRequired(rtf, stored);
                QVERIFY(stored != rtf);
            }
            add(doc, nullptr, "R", stored);
            QCOMPARE(modDocText::DocSaveVersion(*doc), "0 R\r\n" + lines);
        }
    }
    void import_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("rich");
        QTest::addColumn<bool>("own"); // put as Mavrolen's own rich copy
        QTest::addColumn<QByteArray>("stored");
        QTest::newRow("plain preferred over rich")
            << QString::fromUtf8("plain \u00e9\r\nline") << QByteArray("{\\rtf1 rich}") << false
            << QByteArray("plain \xe9\r\nline");
        QTest::newRow("rich only")
            << QString() << QByteArray("{\\rtf1 rich}") << false << QByteArray("{\\rtf1 rich}");
        QTest::newRow("empty clipboard") << QString() << QByteArray() << false << QByteArray();
        // Other programs get RTF, HTML and plain text; the import sees only the RTF.
        QTest::newRow("own rich copy")
            << "own" << QByteArray("{\\rtf1 own}") << true << QByteArray("{\\rtf1 own}");
    }
    void import() {
        if (!m_clipboard) {
            QSKIP("the platform has no clipboard");
        }
        QFETCH(QString, text);
        QFETCH(QByteArray, rich);
        QFETCH(bool, own);
        if (own) {
            m_clip.SetRichCopy(rich, "<b>own</b>", text);
            const QMimeData *data = QGuiApplication::clipboard()->mimeData();
            for (const char *type : {"text/rtf", "text/html", "text/plain"}) {
                QVERIFY2(data->hasFormat(type), type);
            }
            QVERIFY(!m_clip.GetFormat(Clipboard::PlainText));
            QVERIFY(m_clip.GetFormat(Clipboard::Html));
            QCOMPARE(m_clip.GetText(), text);
            QVERIFY(m_clip.GetHtml().contains("<b>own</b>"));
        } else {
            put(text, rich);
        }
        QCOMPARE(m_clip.GetFormat(Clipboard::RichText), !rich.isNull());
        Document *doc = newDocument();
        modDocClipboard::DocImport();
        QCOMPARE(doc->trvOutline().Count(), 1);
        Node *root = doc->trvOutline().Item(1);
        QCOMPARE(root->Text(), QString("Text"));
        QTEST(root->Tag(), "stored");
        QCOMPARE(doc->trvOutline().SelectedItem(), root);
        QVERIFY(!modNodes::g_bDocTransfer);
    }
    void exportText_data() {
        QTest::addColumn<int>("document"); // 0 none, 1 empty texts, 2 the example
        QTest::addColumn<QString>("text"); // null: the clipboard is left empty
        // Keys and texts only: labels are not exported.
        QTest::newRow("no document clears") << 0 << QString();
        QTest::newRow("empty texts") << 1 << "0 \r\n0.1 \r\n0.1.1 \r\n0.2 \r\n";
        QTest::newRow("example") << 2 << "0 Plans for the year\r\n0.1 \r\n0.2 Paint the hall\r\n";
    }
    void exportText() {
        if (!m_clipboard) {
            QSKIP("the platform has no clipboard");
        }
        QFETCH(int, document);
        QFETCH(QString, text);
        put("old", "{\\rtf1 old}");
        if (document == 1) {
            Document *doc = newDocument();
            Node *root = add(doc, nullptr, "Projects");
            add(doc, add(doc, root, "Garden"), "Beds");
            add(doc, root, "House");
        } else if (document == 2) {
            exampleDocument();
        }
        QSignalSpy changes(QGuiApplication::clipboard(), &QClipboard::dataChanged);
        modDocClipboard::DocExport();
        QCOMPARE(changes.count(), text.isNull() ? 1 : 2); // cleared, then set once
        QVERIFY(!m_clip.GetFormat(Clipboard::RichText));
        QCOMPARE(m_clip.GetFormat(Clipboard::PlainText), !text.isNull());
        QCOMPARE(m_clip.GetText(), text.isNull() ? QString() : text);
    }
    void exportWithoutClipboardIsReported() {
        ScopedLog log;
        modDocClipboard::SetClipboard(nullptr);
        newDocument();
        modDocClipboard::DocExport();
        QVERIFY(log.content().contains("Error 424"));
        QVERIFY(log.content().contains("modDocClipboard DocExport"));
    }

private:
    // Puts plain text and/or RTF on the clipboard at once.
    void put(const QString &text, const QByteArray &rich) {
        auto *data = new QMimeData;
        if (!text.isNull()) {
            data->setText(text);
        }
        if (!rich.isNull()) {
            data->setData("text/rtf", rich);
        }
        QGuiApplication::clipboard()->setMimeData(data);
    }
    SystemClipboard m_clip;
    bool m_clipboard = false; // the platform has one
};

QTEST_MAIN(TestDocText)
#include "tst_doctext.moc"
