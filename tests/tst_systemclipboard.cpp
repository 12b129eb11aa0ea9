// The Qt clipboard behind the document transfers (offscreen platform).
#include "document/Document.h"
#include "document/SystemClipboard.h"
#include "document/modDocClipboard.h"
#include "support/DocTestSupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QtTest>

class TestSystemClipboard : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void formatsAndPreference();
};

void TestSystemClipboard::formatsAndPreference() {
    SystemClipboard clip;
    modDocClipboard::SetClipboard(&clip);
    auto *both = new QMimeData;
    both->setText("plain");
    both->setData("text/rtf", "{\\rtf1 rich}");
    QGuiApplication::clipboard()->setMimeData(both);
    if (!QGuiApplication::clipboard()->mimeData() ||
        !QGuiApplication::clipboard()->mimeData()->hasText()) {
        QSKIP("the platform has no clipboard");
    }
    QVERIFY(clip.GetFormat(Clipboard::PlainText));
    QVERIFY(clip.GetFormat(Clipboard::RichText));
    QCOMPARE(clip.GetRichText(), QByteArray("{\\rtf1 rich}"));

    Document *doc = DocTest::newDocument();
    modDocClipboard::DocImport();
    QCOMPARE(doc->trvOutline().Item(1)->Tag(), QByteArray("plain"));

    clip.Clear();
    QVERIFY(!clip.GetFormat(Clipboard::PlainText));
    clip.SetRichText("{\\rtf1 only}");
    QVERIFY(!clip.GetFormat(Clipboard::PlainText));
    Document *doc2 = DocTest::newDocument();
    modDocClipboard::DocImport();
    QCOMPARE(doc2->trvOutline().Item(1)->Tag(), QByteArray("{\\rtf1 only}"));

    // Mavrolen's own copy: other programs get RTF, HTML and plain text, the import sees only RTF.
    clip.SetRichCopy("{\\rtf1 own}", "<b>own</b>", "own");
    const QMimeData *own = QGuiApplication::clipboard()->mimeData();
    for (const char *type : {"text/rtf", "text/html", "text/plain"}) {
        QVERIFY2(own->hasFormat(type), type);
    }
    QVERIFY(!clip.GetFormat(Clipboard::PlainText));
    QVERIFY(clip.GetFormat(Clipboard::Html));
    QCOMPARE(clip.GetText(), QString("own"));
    QVERIFY(clip.GetHtml().contains("<b>own</b>"));
    Document *doc3 = DocTest::newDocument();
    modDocClipboard::DocImport();
    QCOMPARE(doc3->trvOutline().Item(1)->Tag(), QByteArray("{\\rtf1 own}"));
    modDocClipboard::SetClipboard(nullptr);
    DocTest::closeAll();
}

QTEST_MAIN(TestSystemClipboard)
#include "tst_systemclipboard.moc"
