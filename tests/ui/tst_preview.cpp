// The print windows: the question what to print, the preview and printing on a PDF printer.
#include "document/Document.h"
#include "print/PrintPages.h"
#include "print/PrintUi.h"
#include "print/frmPreview.h"
#include "support/DocTestSupport.h"
#include "support/TestSupport.h"
#include "util/SettingsStore.h"

#include <QApplication>
#include <QCheckBox>
#include <QPrinter>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

class TestPreview : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void choiceDialog_data();
    void choiceDialog();
    void previewAndPrint_data();
    void previewAndPrint();

private:
    QTemporaryDir m_dir;
};

void TestPreview::initTestCase() {
    modSettings::SetSettingsFile(m_dir.filePath("settings.ini"));
}

void TestPreview::choiceDialog_data() {
    QTest::addColumn<QString>("asked");    // the command's flag and whether an entry is selected
    QTest::addColumn<QString>("answer");   // what the user changes before OK
    QTest::addColumn<QString>("expected"); // the choice, and the answers kept for the next time
    AddRows({
        {"current entry preselected", "entry,selected", "", "entry children texts|children texts"},
        {"whole document preselected", "document,selected", "",
         "document children texts|children texts"},
        {"nothing selected", "entry,none", "", "document children texts|children texts"},
        {"user picks the entry alone", "document,selected", "entry,-children", "entry texts|texts"},
        {"labels only remembered", "entry,selected", "-texts", "entry children|children"},
    });
}

// The dialog as the command shows it, answered the way the row says.
void TestPreview::choiceDialog() {
    QFETCH(QString, asked);
    QFETCH(QString, answer);
    QFETCH(QString, expected);
    modSettings::DeleteSection("Print");
    modPrint::PrintChoice choice;
    modPrint::PrintChoiceLoad(choice);
    choice.CurrentEntryOnly = asked.startsWith("entry");
    bool whileShown = false;
    QTimer::singleShot(0, this, [&] {
        auto *dialog = qobject_cast<PrintChoiceDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        // Child entries are a choice for the current entry only.
        whileShown = dialog->childrenBox()->isEnabled() == dialog->entryButton()->isChecked() &&
                     dialog->entryButton()->isEnabled() == asked.endsWith("selected");
        for (const QString &a : answer.split(',', Qt::SkipEmptyParts)) {
            if (a == "entry") {
                dialog->entryButton()->setChecked(true);
            } else if (a == "-children") {
                dialog->childrenBox()->setChecked(false);
            } else if (a == "-texts") {
                dialog->textsBox()->setChecked(false);
            }
        }
        dialog->accept();
    });
    QVERIFY(modPrint::AskPrintChoice(choice, asked.endsWith(",selected"), nullptr));
    QVERIFY(whileShown);
    modPrint::PrintChoice kept;
    modPrint::PrintChoiceLoad(kept);
    auto words = [](const modPrint::PrintChoice &c) {
        QStringList out;
        for (const auto &[on, word] : {std::pair{c.Children, "children"}, {c.Texts, "texts"}}) {
            if (on) {
                out << word;
            }
        }
        return out.join(' ');
    };
    QCOMPARE((choice.CurrentEntryOnly ? "entry " : "document ") + words(choice) + '|' + words(kept),
             expected);
}

void TestPreview::previewAndPrint_data() {
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("every page") << 0 << 0;
    QTest::newRow("pages 2 to 3") << 2 << 3;
}

// A long document: the first page shows before the rest is laid out, the page count follows in
// the background, the view moves and zooms, and the pages print on a PDF printer.
void TestPreview::previewAndPrint() {
    QFETCH(int, from);
    QFETCH(int, to);
    Document *doc = DocTest::newDocument();
    Node *root = DocTest::add(doc, nullptr, "Root");
    for (int i = 0; i < 400; ++i) {
        DocTest::add(doc, root, QString("Entry %1").arg(i),
                     "{\\rtf1\\ansi One line\\par Another {\\b bold} line\\par A third\\par }");
    }
    const auto entries = modPrint::PrintEntries(*doc, {});
    frmPreview preview(
        [&](const QPageLayout &layout) {
            return std::make_unique<PrintPages>(entries, true, "Long", QFont(), layout);
        },
        modPrint::PageLayoutDefault(), "Long");
    preview.show();
    QVERIFY(QTest::qWaitForWindowExposed(&preview));
    QVERIFY(!preview.complete());
    QCOMPARE(preview.currentPage(), 0);
    preview.setCurrentPage(5);
    QCOMPARE(preview.currentPage(), 5);
    QTRY_VERIFY_WITH_TIMEOUT(preview.complete(), 120000);
    const int count = preview.pages().pageCount();
    QVERIFY(count > 10);
    QCOMPARE(preview.findChild<QSpinBox *>()->maximum(), count);
    preview.setZoomPercent(40);
    QCOMPARE(preview.zoomPercent(), 40);
    QCOMPARE(preview.currentPage(), 5);
    preview.fitWidth();
    auto *scroll = preview.findChild<QScrollArea *>();
    QVERIFY(scroll->widget()->width() <= scroll->viewport()->width() + 1);
    preview.setCurrentPage(count + 10);
    QCOMPARE(preview.currentPage(), count - 1);

    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    const QString pdf = m_dir.filePath("printed.pdf");
    printer.setOutputFileName(pdf);
    modPrint::ApplyPageLayout(printer, preview.pages().pageLayout());
    if (from > 0) {
        printer.setPrintRange(QPrinter::PageRange);
        printer.setFromTo(from, to);
    }
    QVERIFY(modPrint::PrintOn(printer, preview.pages(), nullptr));
    const QByteArray bytes = ReadFileBytes(pdf);
    QCOMPARE(int(bytes.count("/Type /Page\n")) + int(bytes.count("/Type /Page\r")),
             from > 0 ? to - from + 1 : count);
    DocTest::closeAll();
}

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
