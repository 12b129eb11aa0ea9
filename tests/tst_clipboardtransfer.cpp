// Whole documents to and from the clipboard, on a fake clipboard.
#include "document/Clipboard.h"
#include "document/Document.h"
#include "document/modDocClipboard.h"
#include "outline/modNodes.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"

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
    void exportWithoutDocumentClears();
    void exportOfEmptyTexts();
    void exportOfExample();
    void exportWithoutClipboardIsReported();

private:
    FakeClipboard m_clip;
};

void TestClipboardTransfer::import_data() {
    QTest::addColumn<bool>("hasText");
    QTest::addColumn<bool>("hasRich");
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("plain preferred over rich") << true << true << QByteArray("plain \xe9\r\nline");
    QTest::newRow("rich only") << false << true << QByteArray("{\\rtf1 rich}");
    QTest::newRow("empty clipboard") << false << false << QByteArray();
}

void TestClipboardTransfer::import() {
    QFETCH(bool, hasText);
    QFETCH(bool, hasRich);
    QFETCH(QByteArray, stored);
    if (hasText) {
        m_clip.SetText(QString::fromUtf8("plain \u00e9\r\nline"));
    }
    if (hasRich) {
        m_clip.SetRichText("{\\rtf1 rich}");
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

void TestClipboardTransfer::exportWithoutDocumentClears() {
    m_clip.SetText("old");
    modDocClipboard::DocExport();
    QCOMPARE(m_clip.clears, 1);
    QVERIFY(!m_clip.GetFormat(Clipboard::PlainText));
}

void TestClipboardTransfer::exportOfEmptyTexts() {
    Document *doc = newDocument();
    Node *root = add(doc, nullptr, "Projects");
    Node *a = add(doc, root, "Garden");
    add(doc, a, "Beds");
    add(doc, root, "House");
    modDocClipboard::DocExport();
    // Keys and texts only: labels are not exported. Set once.
    QCOMPARE(m_clip.text, QString("0 \r\n0.1 \r\n0.1.1 \r\n0.2 \r\n"));
    QCOMPARE(m_clip.sets, 1);
    QCOMPARE(m_clip.clears, 1);
}

void TestClipboardTransfer::exportOfExample() {
    exampleDocument();
    modDocClipboard::DocExport();
    QCOMPARE(m_clip.text, QString("0 Plans for the year\r\n0.1 \r\n0.2 Paint the hall\r\n"));
}

void TestClipboardTransfer::exportWithoutClipboardIsReported() {
    ScopedLog log;
    modDocClipboard::SetClipboard(nullptr);
    newDocument();
    modDocClipboard::DocExport();
    QVERIFY(log.content().contains("Error 424"));
    QVERIFY(log.content().contains("modDocClipboard DocExport"));
}

QTEST_GUILESS_MAIN(TestClipboardTransfer)
#include "tst_clipboardtransfer.moc"
