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
    modDocClipboard::SetClipboard(nullptr);
    DocTest::closeAll();
}

QTEST_MAIN(TestSystemClipboard)
#include "tst_systemclipboard.moc"
