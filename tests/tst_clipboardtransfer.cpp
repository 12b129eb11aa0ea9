// Whole documents to and from the clipboard, on a fake clipboard and on the Qt clipboard
// (offscreen platform).
#include "document/Clipboard.h"
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "document/modDocClipboard.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QtTest>

using namespace DocTest;

namespace {

class FakeClipboard : public Clipboard {
public:
    void Clear() override {
        ++clears;
        hasText = hasRich = false;
        text.clear();
        rich.clear();
    }
    bool GetFormat(int format) const override {
        return format == PlainText ? hasText : format == RichText ? hasRich : false;
    }
    QString GetText() const override { return text; }
    QByteArray GetRichText() const override { return rich; }
    void SetText(const QString &t) override {
        ++sets;
        text = t;
        hasText = true;
    }
    void SetRichText(const QByteArray &r) override {
        rich = r;
        hasRich = true;
    }
    bool hasText = false;
    bool hasRich = false;
    QString text;
    QByteArray rich;
    int clears = 0;
    int sets = 0;
};

} // namespace

class TestClipboardTransfer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { modDocClipboard::SetClipboard(&m_clip); }
    void cleanup() {
        closeAll();
        modDocClipboard::SetClipboard(nullptr);
        m_clip = FakeClipboard();
    }
    void import_data();
    void import();
    void export_data();
    void exportText();
    void exportWithoutClipboardIsReported();

private:
    FakeClipboard m_clip;
};

void TestClipboardTransfer::import_data() {
    QTest::addColumn<bool>("system");
    QTest::addColumn<bool>("hasText");
    QTest::addColumn<bool>("hasRich");
    QTest::addColumn<QByteArray>("stored");
    for (bool system : {false, true}) {
        const QString on = system ? " (system)" : "";
        QTest::newRow(qPrintable("plain preferred over rich" + on))
            << system << true << true << QByteArray("plain \xe9\r\nline");
        QTest::newRow(qPrintable("rich only" + on))
            << system << false << true << QByteArray("{\\rtf1 rich}");
        QTest::newRow(qPrintable("empty clipboard" + on))
            << system << false << false << QByteArray();
    }
}

void TestClipboardTransfer::import() {
    QFETCH(bool, system);
    QFETCH(bool, hasText);
    QFETCH(bool, hasRich);
    QFETCH(QByteArray, stored);
    const QString text = QString::fromUtf8("plain \u00e9\r\nline");
    SystemClipboard sys;
    if (system) {
        auto *data = new QMimeData;
        if (hasText) {
            data->setText(text);
        }
        if (hasRich) {
            data->setData("text/rtf", "{\\rtf1 rich}");
        }
        QGuiApplication::clipboard()->setMimeData(data);
        if (hasText && !sys.GetFormat(Clipboard::PlainText)) {
            QSKIP("the platform has no clipboard");
        }
        QCOMPARE(sys.GetFormat(Clipboard::RichText), hasRich);
        modDocClipboard::SetClipboard(&sys);
    } else {
        if (hasText) {
            m_clip.SetText(text);
        }
        if (hasRich) {
            m_clip.SetRichText("{\\rtf1 rich}");
        }
    }
    Document *doc = newDocument();
    modDocClipboard::DocImport();
    QCOMPARE(doc->trvOutline().Count(), 1);
    Node *root = doc->trvOutline().Item(1);
    QCOMPARE(root->Text(), QString("Text"));
    QCOMPARE(root->Tag(), stored);
    QCOMPARE(doc->trvOutline().SelectedItem(), root);
    QVERIFY(!modNodes::g_bDocTransfer);
}

void TestClipboardTransfer::export_data() {
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
    m_clip.SetText("old");
    m_clip.sets = 0;
    if (document == 1) {
        Document *doc = newDocument();
        Node *root = add(doc, nullptr, "Projects");
        add(doc, add(doc, root, "Garden"), "Beds");
        add(doc, root, "House");
    } else if (document == 2) {
        exampleDocument();
    }
    modDocClipboard::DocExport();
    QCOMPARE(m_clip.clears, 1);
    QCOMPARE(m_clip.GetFormat(Clipboard::PlainText), !text.isNull());
    QCOMPARE(m_clip.sets, text.isNull() ? 0 : 1); // set once
    QCOMPARE(m_clip.text, text.isNull() ? QString() : text);
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
