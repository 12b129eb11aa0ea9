// Whole documents to and from the clipboard (the Qt clipboard of the offscreen platform).
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "document/modDocClipboard.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QtTest>

using namespace DocTest;

class TestClipboardTransfer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() {
        closeAll();
        modDocClipboard::SetClipboard(nullptr);
    }
    void import_data();
    void import();
    void exportText_data();
    void exportText();
    void exportWithoutClipboardIsReported();

private:
    // Puts plain text and/or RTF on the clipboard at once.
    void put(const QString &text, const QByteArray &rich);
    SystemClipboard m_clip;
};

void TestClipboardTransfer::put(const QString &text, const QByteArray &rich) {
    auto *data = new QMimeData;
    if (!text.isNull()) {
        data->setText(text);
    }
    if (!rich.isNull()) {
        data->setData("text/rtf", rich);
    }
    QGuiApplication::clipboard()->setMimeData(data);
}

void TestClipboardTransfer::init() {
    put("probe", {});
    if (!m_clip.GetFormat(Clipboard::PlainText)) {
        QSKIP("the platform has no clipboard");
    }
    modDocClipboard::SetClipboard(&m_clip);
}

void TestClipboardTransfer::import_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("rich");
    QTest::addColumn<bool>("own"); // put as Mavrolen's own rich copy
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("plain preferred over rich")
        << QString::fromUtf8("plain \u00e9\r\nline") << QByteArray("{\\rtf1 rich}") << false
        << QByteArray("plain \xe9\r\nline");
    QTest::newRow("rich only") << QString() << QByteArray("{\\rtf1 rich}") << false
                               << QByteArray("{\\rtf1 rich}");
    QTest::newRow("empty clipboard") << QString() << QByteArray() << false << QByteArray();
    // Other programs get RTF, HTML and plain text; the import sees only the RTF.
    QTest::newRow("own rich copy")
        << "own" << QByteArray("{\\rtf1 own}") << true << QByteArray("{\\rtf1 own}");
}

void TestClipboardTransfer::import() {
    QFETCH(QString, text);
    QFETCH(QByteArray, rich);
    QFETCH(bool, own);
    QFETCH(QByteArray, stored);
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
    QCOMPARE(root->Tag(), stored);
    QCOMPARE(doc->trvOutline().SelectedItem(), root);
    QVERIFY(!modNodes::g_bDocTransfer);
}

void TestClipboardTransfer::exportText_data() {
    QTest::addColumn<int>("document"); // 0 none, 1 empty texts, 2 the example
    QTest::addColumn<QString>("text"); // null: the clipboard is left empty
    // Keys and texts only: labels are not exported.
    QTest::newRow("no document clears") << 0 << QString();
    QTest::newRow("empty texts") << 1 << "0 \r\n0.1 \r\n0.1.1 \r\n0.2 \r\n";
    QTest::newRow("example") << 2 << "0 Plans for the year\r\n0.1 \r\n0.2 Paint the hall\r\n";
}

void TestClipboardTransfer::exportText() {
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

void TestClipboardTransfer::exportWithoutClipboardIsReported() {
    ScopedLog log;
    modDocClipboard::SetClipboard(nullptr);
    newDocument();
    modDocClipboard::DocExport();
    QVERIFY(log.content().contains("Error 424"));
    QVERIFY(log.content().contains("modDocClipboard DocExport"));
}

QTEST_MAIN(TestClipboardTransfer)
#include "tst_clipboardtransfer.moc"
