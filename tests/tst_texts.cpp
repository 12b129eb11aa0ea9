// Entry texts: the stored form, compression, and the loading and storing through the text pane.
#include "document/Document.h"
#include "outline/modCompress.h"
#include "outline/modNodes.h"
#include "support/FakeDocument.h"
#include "support/TestSupport.h"
#include "util/ErrorLog.h"

#include <QRandomGenerator>
#include <QtTest>

#include <zlib.h>

using namespace modNodes;

namespace {

QByteArray sampleRtf(int paragraphs) {
    QByteArray rtf("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}\\f0\\fs20 ");
    for (int i = 0; i < paragraphs; ++i) {
        rtf += "Paragraph " + QByteArray::number(i) +
               " with \\b bold\\b0  and caf\\'e9 text.\\par\r\n";
    }
    return rtf + '}';
}

QByteArray stored(const QByteArray &text) {
    QByteArray s;
    NodeTextCompressIfRequired(text, s);
    return s;
}

QByteArray decoded(const QByteArray &s) {
    QByteArray t;
    NodeTextDecompressIfRequired(s, t);
    return t;
}

} // namespace

class TestTexts : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        m_log = std::make_unique<ScopedLog>();
        g_bLoadingText = false;
        g_bDocTransfer = false;
        g_iActionDepth = 0;
        Documents::SetActive(nullptr);
    }
    void cleanup() {
        g_nodCurrent.reset();
        m_log.reset();
    }

    void roundTrip_data() {
        QTest::addColumn<QByteArray>("text");
        QByteArray all;
        for (int b = 0; b < 256; ++b) {
            all += char(b);
        }
        QByteArray noise(70000, '\0');
        QRandomGenerator rng(3);
        for (char &c : noise) {
            c = char(rng.bounded(256));
        }
        QTest::newRow("rich text") << sampleRtf(3);
        QTest::newRow("every byte value") << all;
        QTest::newRow("long rich text") << sampleRtf(5000);
        QTest::newRow("incompressible") << noise; // stored in under n*1.01+12 bytes still
        QTest::newRow("commas and digits") << QByteArray("12,34,56");
    }
    void roundTrip() {
        QFETCH(QByteArray, text);
        const QByteArray s = stored(text);
        QVERIFY(s.startsWith(QByteArray::number(text.size()) + ','));
        QCOMPARE(decoded(s), text);

        TestDocument t;
        Node *root = NodeInsert(&t.doc, relChild, nullptr);
        t.pane->SetTextRTF(text);
        NodeTextPut(&t.doc, root);
        QCOMPARE(root->Tag(), s);
        t.pane->SetTextRTF("other");
        NodeTextGet(&t.doc, root);
        QCOMPARE(t.pane->TextRTF(), text);
        QVERIFY(m_log->content().isEmpty());
    }
    void decodeEdgeCases_data() {
        const auto row = [](const char *name, const QByteArray &in, const QByteArray &out) {
            QTest::newRow(name) << in << out;
        };
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QByteArray>("text");
        row("no comma", "{\\rtf1 plain}", "{\\rtf1 plain}");
        row("empty", {}, {});
        row("digits and comma: prefix dropped", "3, apples", " apples");
        row("zero prefix", "0,abc", "0,abc");
        row("not a number", "abc,def", "abc,def");
        row("negative", "-5,xyz", "-5,xyz");
        row("comma first", ",xyz", ",xyz");
        row("blanks inside the number", " 1 2,xyz", "xyz");
        row("trailing garbage", "7abc,xyz", "xyz");
        row("fraction rounds to zero", "0.4,xyz", "0.4,xyz");
        row("fraction rounds half to even", "0.5,xyz", "0.5,xyz");
        row("fraction rounds up", "1.5,xyz", "xyz");
        row("exponent", "1e2,xyz", "xyz");
        row("hexadecimal", "&H1F,xyz", "xyz");
        row("second comma kept", "4,a,b", "a,b");

        const QByteArray text = sampleRtf(2);
        const QByteArray good = stored(text);
        row("valid", good, text);
        row("truncated data", good.left(good.size() - 5),
            good.mid(good.indexOf(',') + 1).chopped(5));

        QByteArray farComma(40000, 'x');
        farComma += ",tail";
        row("comma beyond 32767", farComma, farComma);

        // The buffer holds the stated length plus 1% and 12 bytes: a slightly larger text still
        // decodes, a much larger one fails and keeps its prefix off. Lengths that the compressed
        // bytes cannot hold fail at once, without a huge buffer.
        QByteArray thousand;
        QCOMPARE(modCompress::CompressString(QByteArray(1000, 'a'), thousand), Z_OK);
        row("stated slightly short", "980," + thousand, QByteArray(1000, 'a'));
        row("stated much too short", "900," + thousand, thousand);
        // Lengths beyond what a text may hold are refused: the pane shows a notice, the log says
        // so.
        row("huge stated length", "2147483647," + thousand, "refused");
        row("length overflow", "99999999999,data", "refused");
    }
    void decodeEdgeCases() {
        QFETCH(QByteArray, stored);
        QFETCH(QByteArray, text);
        if (text == "refused") {
            QVERIFY(decoded(stored).contains("is too large to be shown"));
            QVERIFY(m_log->content().startsWith("Error 7 - "));
        } else {
            QCOMPARE(decoded(stored), text);
            QVERIFY(m_log->content().isEmpty());
        }
    }
    void loadAndStoreThroughPane() {
        TestDocument t;
        Node *root = NodeInsert(&t.doc, relChild, nullptr);
        root->setTag(QByteArray("{\\rtf1 legacy plain text}"));
        NodeTextGet(&t.doc, root);
        QCOMPARE(t.pane->TextRTF(), QByteArray("{\\rtf1 legacy plain text}"));
        QCOMPARE(t.pane->loadsWhileVisible, 0); // filled while hidden ...
        QVERIFY(t.pane->Visible());             // ... and shown again
        QVERIFY(!g_bLoadingText);

        t.pane->SetVisible(false);
        NodeTextGet(&t.doc, nullptr); // a null node empties the pane
        QVERIFY(t.pane->TextRTF().isEmpty());
        QVERIFY(!t.pane->Visible()); // a hidden pane stays hidden

        // Storing does not mark the document changed and needs a node and a document.
        t.pane->SetTextRTF(sampleRtf(1));
        NodeTextPut(&t.doc, root);
        QCOMPARE(decoded(root->Tag()), sampleRtf(1));
        QVERIFY(!t.doc.m_bDataChanged);
        NodeTextPut(nullptr, root);
        NodeTextPut(&t.doc, nullptr);
        NodeTextGet(nullptr, root);

        Document headless; // no pane: nothing to load or store
        Node *other = NodeInsert(&headless, relChild, nullptr);
        NodeTextGet(&headless, other);
        NodeTextPut(&headless, other);
        QVERIFY(other->Tag().isEmpty());
        QVERIFY(m_log->content().isEmpty());
    }
    void storeIgnoredWhileLoading() {
        // The pane's change event stores the text back; while a text is loaded that must not
        // happen.
        TestDocument t;
        auto made = BuildOutline(t.doc, QStringLiteral("root\n  a\n"));
        t.nodes().setSelectedItem(made[1]);
        made[1]->setTag(stored("{\\rtf1 a}"));
        const QByteArray before = made[1]->Tag();
        int events = 0;
        t.pane->changed = [&] {
            ++events;
            NodeTextPutSelected();
        };
        NodeTextGet(&t.doc, made[1]);
        QCOMPARE(events, 1);
        QVERIFY(made[1]->Tag().isSharedWith(before)); // untouched, not even re-stored
        t.pane->SetTextRTF("{\\rtf1 typed}");         // a real edit is stored at once
        QCOMPARE(decoded(made[1]->Tag()), QByteArray("{\\rtf1 typed}"));
        t.pane->changed = nullptr;
    }
    void selectedEntryTexts() {
        TestDocument t(false);
        auto made = BuildOutline(t.doc, QStringLiteral("root\n  a\n  b\n"));
        made[2]->setTag(stored("{\\rtf1 b}"));
        t.nodes().setSelectedItem(made[2]);
        NodeTextGetSelected(); // no active document: nothing
        QCOMPARE(t.pane->loads, 0);
        Documents::SetActive(&t.doc);
        NodeTextGetSelected();
        QCOMPARE(t.pane->TextRTF(), QByteArray("{\\rtf1 b}"));
        t.pane->SetTextRTF("{\\rtf1 b2}");
        NodeTextPutSelected();
        QCOMPARE(decoded(made[2]->Tag()), QByteArray("{\\rtf1 b2}"));
        t.nodes().setSelectedItem(nullptr);
        NodeTextGetSelected(); // nothing selected: the pane is emptied
        QVERIFY(t.pane->TextRTF().isEmpty());
    }
    void fontAppliedToAllTexts() {
        TestDocument t;
        auto made = BuildOutline(t.doc, QStringLiteral("root\n  a\n    a1\n  b\n"));
        for (Node *n : made) {
            n->setTag(stored("{\\rtf1 " + n->Text().toLatin1() + '}'));
        }
        clsFont font;
        font.setName(QStringLiteral("Mono"));
        font.setSize(9);
        NodeSetFontAll(&t.doc, made[1], font); // a and its subtree only
        QCOMPARE(decoded(made[1]->Tag()), QByteArray("{\\rtf1 a}{\\font Mono 9}"));
        QCOMPARE(decoded(made[2]->Tag()), QByteArray("{\\rtf1 a1}{\\font Mono 9}"));
        QCOMPARE(decoded(made[0]->Tag()), QByteArray("{\\rtf1 root}"));
        QCOMPARE(decoded(made[3]->Tag()), QByteArray("{\\rtf1 b}"));
        QVERIFY(t.pane->Visible());
    }

private:
    std::unique_ptr<ScopedLog> m_log;
};

QTEST_GUILESS_MAIN(TestTexts)
#include "tst_texts.moc"
