// The entry tree and its primitives: inserts, keys, copies, deletion, selection, sorting, tags,
// batching, collection indexes, weak references and deep trees; entry texts (the stored form,
// compression, loading and storing through the text pane); the item model over the tree, checked
// by Qt's model tester while the tree changes.
#include "document/Document.h"
#include "editor/OutlineModel.h"
#include "outline/Node.h"
#include "outline/modCompress.h"
#include "outline/modNodes.h"
#include "support/FakeDocument.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/ErrorLog.h"

#include <QAbstractItemModelTester>
#include <QPixmap>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <set>

#include <zlib.h>

using namespace modNodes;

namespace {

const char *kSample = "root\n"
                      "  a\n"
                      "    a1\n"
                      "    a2\n"
                      "  b\n"
                      "    b1\n"
                      "      b11\n"
                      "  c\n";

// A test document holding an outline; entries are looked up by label.
struct Sample : TestDocument {
    explicit Sample(const char *outline = kSample)
        : made(BuildOutline(doc, QString::fromLatin1(outline))) {}
    Node *operator[](const QString &label) { return FindEntry(nodes(), label); }
    QString shape() { return TreeShape(nodes().Item(1)); }
    std::vector<Node *> made;
};

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

class TestNodes : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        m_log = std::make_unique<ScopedLog>();
        g_iActionDepth = 0;
        g_bDocTransfer = false;
        g_bLoadingText = false;
        g_nodCurrent.reset();
        Documents::SetActive(nullptr);
    }
    void cleanup() {
        g_nodCurrent.reset();
        m_log.reset();
    }

    void insertRedirections_data() {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<int>("relationship");
        QTest::addColumn<QString>("expected");
        // Without a relative, and for any sibling relationship of the root, a new entry is a last
        // child of the root: there is only one top entry.
        const QString atEnd = QStringLiteral("root(a(a1 a2) b(b1(b11)) c new)");
        QTest::newRow("no relative") << "" << int(relFirst) << atEnd;
        QTest::newRow("next of root") << "root" << int(relNext) << atEnd;
        QTest::newRow("first") << "a2" << int(relFirst) << "root(a(new a1 a2) b(b1(b11)) c)";
        QTest::newRow("last") << "a1" << int(relLast) << "root(a(a1 a2 new) b(b1(b11)) c)";
    }
    void insertRedirections() {
        QFETCH(QString, relative);
        QFETCH(int, relationship);
        Sample s;
        Node *added = NodeInsert(&s.doc, relationship, relative.isEmpty() ? nullptr : s[relative]);
        QVERIFY(added);
        QVERIFY(added->Key().isEmpty()); // no bulk transfer: keyed at the next renumbering
        added->setText(QStringLiteral("new"));
        QTEST(s.shape(), "expected");
        QCOMPARE(s.nodes().topNodes().size(), size_t(1));
    }
    void setKeys_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        AddRows({
            {"KEY0", "KEY0",
             "root=KEY0 a=KEY0.1 a1=KEY0.1.1 a2=KEY0.1.2 b=KEY0.2 b1=KEY0.2.1 b11=KEY0.2.1.1 "
             "c=KEY0.3"},
            {"KEY", "KEY",
             "root=KEY a=KEY1 a1=KEY1.1 a2=KEY1.2 b=KEY2 b1=KEY2.1 b11=KEY2.1.1 c=KEY3"},
            {"empty", "", "root= a= a1= a2= b= b1= b11= c="},
        });
    }
    void setKeys() {
        QFETCH(QString, key);
        Sample s;
        NodeSetKeys(s.made[0], key);
        QTEST(TreeKeys(s.made[0]), "expected");
        NodeSetKeys(nullptr, key); // nothing happens
    }
    void keysDuringTransferMatchRenumbering() {
        // Keys assigned while inserting in bulk must equal a whole renumbering from the root, also
        // for inserts in the middle and under a sorted parent.
        Sample s;
        g_bDocTransfer = true;
        Node *mid = NodeInsert(&s.doc, relPrevious, s["a"]);
        mid->setText(QStringLiteral("m"));
        NodeInsert(&s.doc, relFirst, s["b11"])->setText(QStringLiteral("b10"));
        NodeSortAll(s["b"], true);
        Node *sortedIn = NodeInsert(&s.doc, relChild, s["b"]);
        g_bDocTransfer = false;
        QCOMPARE(sortedIn->row(), 0); // an empty label sorts first
        const QString incremental = TreeKeys(s.made[0]);
        NodeSetKeys(s.made[0], QStringLiteral("KEY0"));
        QCOMPARE(incremental, TreeKeys(s.made[0]));
    }
    void duplicateCopiesSubtreeAndTags() {
        Sample s;
        Node *b = s["b"];
        b->setTag(QByteArray("5,stored"));
        b->setExpanded(true);
        NodeTagOn(b);
        NodeTagOn(s["b11"]);
        Node *copy = NodeDuplicate(&s.doc, b, s["c"], relNext);
        QCOMPARE(s.shape(), QStringLiteral("root(a(a1 a2) b(b1(b11)) c b(b1(b11)))"));
        QCOMPARE(copy->Tag(), QByteArray("5,stored"));
        QVERIFY(copy->Tag().isSharedWith(b->Tag())); // copied without re-encoding
        QVERIFY(copy->Expanded());
        QCOMPARE(TreeShapeTagged(copy), QStringLiteral("b*(b1(b11*))"));

        // A null target copies only with relationship 0, as a last child of the root.
        QVERIFY(!NodeDuplicate(&s.doc, b, nullptr, relNext));
        Node *appended = NodeDuplicate(&s.doc, s["c"], nullptr, relFirst);
        QCOMPARE(appended->Parent(), s.nodes().Item(1));
        QCOMPARE(appended, s.nodes().Item(1)->Child()->LastSibling());
        QVERIFY(!NodeDuplicate(&s.doc, nullptr, b, relNext));

        // Copying into the entry's own subtree copies the subtree as it was.
        Node *a = s["a"];
        QVERIFY(NodeDuplicate(&s.doc, a, a, relChild));
        QCOMPARE(TreeShape(a), QStringLiteral("a(a1 a2 a(a1 a2))"));

        // A text shared with a file's bytes outlives the reader's buffer and reaches copies; a
        // buffer that does not own its bytes is copied at once.
        auto file = std::make_shared<const QByteArray>(QByteArray("xx5,textyy"));
        Node *c = s["c"];
        c->setTagShared(file, 2, 6);
        file.reset();
        Node *cc = NodeDuplicate(&s.doc, c, c, relNext);
        QCOMPARE(cc->TagView(), QByteArrayView("5,text"));
        QCOMPARE(c->Tag(), QByteArray("5,text"));
        static const char raw[] = "ab5,rawcd";
        c->setTagShared(std::make_shared<const QByteArray>(QByteArray::fromRawData(raw, 9)), 2, 5);
        QCOMPARE(c->TagView(), QByteArrayView("5,raw"));
        QVERIFY(c->TagView().data() != raw + 2);
    }
    void pasteCopiesAndMoves() {
        Sample s;
        NodeRef copied = s["a1"];
        NodePaste(&s.doc, copied, false); // nothing selected: a last child of the root
        QCOMPARE(s.shape(), QStringLiteral("root(a(a1 a2) b(b1(b11)) c a1)"));
        QVERIFY(copied && s.nodes().SelectedItem() != copied.get());
        QCOMPARE(s.nodes().SelectedItem()->Text(), QStringLiteral("a1"));

        // Moving a node into its own subtree removes the copy with it; nothing dangles.
        s.nodes().setSelectedItem(s["b11"]);
        NodeRef ref = s["b"];
        NodePaste(&s.doc, ref, true);
        QCOMPARE(s.shape(), QStringLiteral("root(a(a1 a2) c a1)"));
        NodeRef none;
        NodePaste(&s.doc, none, true); // nothing to paste
        QCOMPARE(g_iActionDepth, 0);
    }
    void selectFullAndTransferSelect() {
        Sample s;
        Node *b11 = s["b11"];
        b11->setTag(QByteArray("{\\rtf1 plain}"));
        s.nodes().setDropHighlight(s.made[1]);
        OutlineModel model(s.nodes());
        QSignalSpy scrolled(&model, &OutlineModel::ensureVisibleRequested);

        g_bDocTransfer = true;
        NodeSelect(&s.doc, b11);
        QVERIFY(b11->Selected());
        QCOMPARE(s.pane->loads, 0); // light form: pane and status bar untouched
        QVERIFY(s.view.statusNodes.empty());
        QVERIFY(!g_nodCurrent);
        g_bDocTransfer = false;

        NodeSelect(&s.doc, s.made[1]);
        QCOMPARE(g_nodCurrent.get(), s.made[1]);
        QVERIFY(s.made[1]->Selected() && !b11->Selected());
        QVERIFY(!s.nodes().DropHighlight());
        QCOMPARE(s.view.statusNodes, std::vector<Node *>{s.made[1]});
        QCOMPARE(s.view.menuRefreshes, 1);

        NodeSelectFull(&s.doc, b11);
        QCOMPARE(s.pane->TextRTF(), QByteArray("{\\rtf1 plain}"));
        QVERIFY(s["b"]->Expanded() && s["b1"]->Expanded()); // shown: ancestors expanded
        QCOMPARE(scrolled.last().at(0).value<QModelIndex>(), model.indexFromNode(b11));

        NodeSelectFull(&s.doc, nullptr); // commands are still re-evaluated
        QCOMPARE(s.view.menuRefreshes, 3);
        QCOMPARE(g_nodCurrent.get(), b11);
    }
    void goDown_data() {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        AddRows({
            {"next sibling", "a", "b"},
            {"deep last child climbs twice", "b11", "c"},
            {"last of all stays", "c", "c"},
            {"root goes to first child", "root", "a"},
            {"nothing selected", "", ""},
        });
    }
    void goDown() {
        QFETCH(QString, from);
        Sample s;
        s.nodes().setSelectedItem(from.isEmpty() ? nullptr : s[from]);
        NodeGoDown(&s.doc);
        Node *sel = s.nodes().SelectedItem();
        QTEST(sel ? sel->Text() : QString(), "to");
        Node *root = nullptr; // untouched when nothing is selected
        NodeGetRoot(&s.doc, root);
        QCOMPARE(root, sel ? s.nodes().Item(1) : nullptr);
    }
    void sorting() {
        // A sorted parent places inserts and renamed children, ignoring case.
        Sample s("root\n  b\n  d\n");
        NodeSortAll(s.made[0], true);
        Node *n = NodeInsert(&s.doc, relNext, s.made[2]);
        n->setText(QStringLiteral("C"));
        QCOMPARE(s.shape(), QStringLiteral("root(b C d)"));
        n->setText(QStringLiteral("a"));
        QCOMPARE(s.shape(), QStringLiteral("root(a b d)"));
        s.made[2]->setText(QStringLiteral("E"));
        s.made[1]->setText(QStringLiteral("F"));
        QCOMPARE(s.shape(), QStringLiteral("root(a E F)"));
        QCOMPARE(s.made[1]->row(), 2);
        QCOMPARE(s.made[1]->Previous(), s.made[2]);
    }
    void tags() {
        Sample t;
        QVERIFY(!NodesTaggedExist());
        NodeTagToggle(t["b"]);
        QVERIFY(NodesTaggedExist());
        Documents::SetActive(nullptr);
        QVERIFY(!NodesTaggedExist()); // no active document
        Documents::SetActive(&t.doc);
        NodeTagToggle(t["b"]);
        QVERIFY(!NodesTaggedExist());
        t["b11"]->setImage(QStringLiteral("FolderTagged")); // the icon key alone carries the tag
        QVERIFY(NodeTagged(t["b11"]) && NodesTaggedExist() && !NodeTagged(nullptr));
        modMain::Guarded([&] { t["root"]->setImage(QStringLiteral("Nonsense")); });
        QVERIFY(m_log->content().startsWith(QStringLiteral("Error 5 - ")));
        QCOMPARE(t["root"]->Image(), QStringLiteral("Folder"));
    }
    void batchingCounter() {
        TestDocument t;
        // Outline, tree and pane shown; the depth; the re-fits (one at every level).
        const auto state = [&] {
            return QStringLiteral("%1%2%3 %4 %5")
                .arg(int(t.view.outlineVisible))
                .arg(int(t.nodes().Visible()))
                .arg(int(t.pane->Visible()))
                .arg(g_iActionDepth)
                .arg(t.view.autoFits);
        };
        NodeActionStart();
        NodeActionStart();
        QCOMPARE(state(), "000 2 0");
        NodeActionEnd();
        QCOMPARE(state(), "000 1 1");
        NodeActionEnd();
        QCOMPARE(state(), "111 0 2");
        // Without an active document Start still counts, End does not.
        Documents::SetActive(nullptr);
        NodeActionStart();
        NodeActionEnd();
        QCOMPARE(state(), "111 1 2");
        Documents::SetActive(&t.doc);
        NodeActionEnd();
        QCOMPARE(g_iActionDepth, 0);

        // A batch primitive on a removed node reports the error and leaves the panes hidden.
        auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
        NodeRef gone = made[1];
        t.nodes().Remove(made[1]->Index());
        QVERIFY(!gone);
        QVERIFY(!NodeDuplicate(&t.doc, made[1], made[4], relNext));
        QVERIFY(m_log->content().startsWith(QStringLiteral("Error 35605")));
        QCOMPARE(g_iActionDepth, 1);
        QVERIFY(!t.pane->Visible());
        NodeDelete(&t.doc, made[1]);
        QCOMPARE(g_iActionDepth, 2);
        QCOMPARE(m_log->content().count(QStringLiteral("Error 35605")), 2);
        NodeActionEnd();
        NodeActionEnd();
        QVERIFY(t.pane->Visible());
    }
    void indexClosesGapsAfterRemovals() {
        TestDocument t(false);
        Nodes &nodes = t.nodes();
        QRandomGenerator rng(7);
        std::vector<Node *> order; // expected collection order
        Node *root = nodes.Add();
        order.push_back(root);
        for (int round = 0; round < 6; ++round) {
            for (int i = 0; i < 700; ++i) {
                Node *rel = order[rng.bounded(int(order.size()))];
                Node *n = nodes.Add(rel, rel == root ? relChild : int(rng.bounded(5)));
                order.push_back(n);
            }
            for (int i = 0; i < 300 && nodes.Count() > 1; ++i) {
                Node *victim = nodes.Item(2 + int(rng.bounded(nodes.Count() - 1)));
                // The subtree goes too, in collection order.
                std::set<Node *> gone;
                std::vector<Node *> stack{victim};
                while (!stack.empty()) {
                    Node *n = stack.back();
                    stack.pop_back();
                    gone.insert(n);
                    stack.insert(stack.end(), n->childList().begin(), n->childList().end());
                }
                nodes.Remove(victim->Index());
                std::erase_if(order, [&](Node *n) { return gone.count(n) > 0; });
            }
            QCOMPARE(nodes.Count(), int(order.size()));
            int i = 1;
            for (Node *n : nodes) {
                QCOMPARE(n, order[size_t(i - 1)]);
                QCOMPARE(n->Index(), i);
                QCOMPARE(nodes.Item(i), n);
                ++i;
            }
        }
        modMain::Guarded([&] { nodes.Item(nodes.Count() + 1); });
        QVERIFY(m_log->content().startsWith(QStringLiteral("Error 9 - ")));
    }
    void weakReferencesAndRemovedNodes() {
        NodeRef survivor;
        {
            Sample t;
            auto &made = t.made;
            NodeRef b = made[4];
            NodeRef b11 = made[6];
            g_nodCurrent = made[6];
            Node *raw = b11.get();
            NodeRef copy = b; // copies count as holders too
            NodeDelete(&t.doc, made[4]);
            QVERIFY(!b && !b11 && !copy && !g_nodCurrent);
            QVERIFY(raw->isRemoved());
            QCOMPARE(raw->Text(), QStringLiteral("b11")); // still readable memory

            // Relations and changes of a removed node are run-time errors.
            modMain::Guarded([&] { raw->Index(); });
            QVERIFY(m_log->content().contains(QStringLiteral("Error 35605")));
            QCOMPARE(NodeInsert(&t.doc, relNext, raw), nullptr);
            QVERIFY(m_log->content().contains(QStringLiteral("modNodes NodeInsert")));
            QCOMPARE(t.nodes().Count(), 5);
            NodeDelete(&t.doc, nullptr); // nothing to delete
            QCOMPARE(t.nodes().Count(), 5);

            survivor = made[1];
            QVERIFY(survivor);
        }
        QVERIFY(!survivor); // the tree went away with its document
    }
    void deepTreeWalks() {
        // 100,000 levels: every whole-subtree walk finishes without exhausting the call stack, and
        // each change of content raises the tree's revision.
        TestDocument t;
        Document *doc = &t.doc;
        Node *root = NodeInsert(doc, relFirst, nullptr);
        Node *n = root;
        for (int i = 0; i < 100000; ++i) {
            n = doc->trvOutline().Add(n, relChild);
        }
        Node *deepest = n;
        NodeExpandAll(root);
        QVERIFY(deepest->Parent()->Expanded());
        NodeCollapseAll(root);
        QVERIFY(!deepest->Parent()->Expanded());
        NodeExpandToLevel(root, 50000);
        NodeSortAll(root, true);
        quint64 revision = doc->trvOutline().Revision();
        Node *copy = NodeDuplicate(doc, root->Child(), root, relChild);
        QVERIFY(copy);
        QCOMPARE(doc->trvOutline().Count(), 200001);
        QVERIFY(doc->trvOutline().Revision() > revision);
        revision = doc->trvOutline().Revision();
        deepest->setTag("5,x");
        QVERIFY(doc->trvOutline().Revision() > revision);
        NodeDelete(doc, copy);
        NodeDelete(doc, root->Child());
        QCOMPARE(doc->trvOutline().Count(), 1);
        QVERIFY(!m_log->content().contains("Error"));
    }
    void roundTrip_data() {
        QTest::addColumn<QByteArray>("text");
        QByteArray noise(70000, '\0');
        QRandomGenerator rng(3);
        for (char &c : noise) {
            c = char(rng.bounded(256));
        }
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
        row("not a number", "abc,def", "abc,def");
        row("negative", "-5,xyz", "-5,xyz");
        row("blanks inside the number", " 1 2,xyz", "xyz");
        row("trailing garbage", "7abc,xyz", "xyz");
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
        t.nodes().setSelectedItem(nullptr);
        NodeTextGetSelected(); // nothing selected: the pane is emptied
        QVERIFY(t.pane->TextRTF().isEmpty());
        Documents::SetActive(nullptr);
        t.pane->SetTextRTF("{\\rtf1 kept}");
        NodeTextGetSelected(); // no active document: nothing
        QCOMPARE(t.pane->TextRTF(), QByteArray("{\\rtf1 kept}"));
    }
    // The model follows the tree from its notifications alone, checked by Qt's model tester through
    // random changes, every fourth run of ten in one nested batch; a persistent index keeps its
    // entry through every change up to the next reset.
    void followsTheTree() {
        TestDocument t;
        BuildOutline(t.doc, "root\n  a\n    a1\n    a2\n  b\n    b1\n      b11\n  c\n");
        OutlineModel model(t.nodes());
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        QRandomGenerator rng(11);
        NodeRef tracked;
        QPersistentModelIndex trackedIndex; // until the next reset
        qsizetype trackedResets = 0;
        qsizetype signalsBefore = 0;
        for (int step = 0; step < 600; ++step) {
            const int count = t.nodes().Count();
            if (!tracked || resets.count() != trackedResets) {
                tracked = t.nodes().Item(1 + int(rng.bounded(count)));
                trackedIndex = model.indexFromNode(tracked.get());
                trackedResets = resets.count();
            }
            const bool batched = step % 40 >= 30;
            if (step % 40 == 30) {
                NodeActionStart();
                NodeActionStart(); // nested: only the outermost pair counts
                signalsBefore = inserted.count() + changes.count();
            }
            Node *n = t.nodes().Item(1 + int(rng.bounded(count)));
            switch (rng.bounded(9)) {
            case 0:
            case 1:
                NodeInsert(&t.doc, int(rng.bounded(5)), n)
                    ->setText(QString::number(rng.bounded(50)));
                break;
            case 2:
                if (n->Parent() && count > 20) {
                    NodeDelete(&t.doc, n);
                }
                break;
            case 3:
                if (n->Parent() && count < 200) {
                    NodeDuplicate(&t.doc, n, t.nodes().Item(1 + int(rng.bounded(count))), relNext);
                }
                break;
            case 4:
                n->setSorted(rng.bounded(2) == 0);
                break;
            case 5:
                n->setText(QString::number(rng.bounded(50)));
                break;
            case 6: // moved after the selected entry
                if (n->Parent() && count > 20) {
                    NodeRef moved = n;
                    NodePaste(&t.doc, moved, true);
                }
                break;
            case 7:
                rng.bounded(2) ? NodeExpandAll(n) : NodeCollapseAll(n);
                break;
            default:
                NodeSelectFull(&t.doc, n);
                NodeTagToggle(n);
                break;
            }
            if (step % 40 == 39) { // the batch sends no row signals and ends in one reset
                QVERIFY(model.inBatch());
                QCOMPARE(inserted.count() + changes.count(), signalsBefore);
                const qsizetype before = resets.count();
                NodeActionEnd();
                QCOMPARE(resets.count(), before);
                NodeActionEnd();
                QVERIFY(!model.inBatch());
                QCOMPARE(resets.count(), before + 1);
            } else if (batched) {
                continue;
            }
            QVERIFY(!QTest::currentTestFailed());
            QCOMPARE(ModelShape(model), TreeShape(t.nodes().Item(1)->Root()));
            if (tracked && resets.count() == trackedResets) {
                QVERIFY(trackedIndex == model.indexFromNode(tracked.get()));
            }
        }
        QVERIFY(changes.count() > 100);
        t.nodes().Clear();
        QCOMPARE(model.rowCount(), 0);
        BuildOutline(t.doc, "x\n  y\n");
        QCOMPARE(ModelShape(model), QString("x(y)"));
    }
    void rolesAndFlags() {
        QString asked;
        OutlineModel::setIconProvider([&](const QString &key) {
            asked = key;
            QPixmap p(4, 4);
            p.fill(Qt::red);
            return QIcon(p);
        });
        TestDocument t;
        BuildOutline(t.doc, "root\n  x\n");
        OutlineModel model(t.nodes());
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        Node *x = FindEntry(t.nodes(), "x");
        const QModelIndex ix = model.indexFromNode(x);
        // Each change of tag or selection is announced and shown with its icon.
        const struct {
            bool tagged, selected;
            const char *icon;
        } rows[] = {{false, false, "Folder"},
                    {false, true, "FolderSelected"},
                    {true, true, "FolderTaggedSelected"},
                    {true, false, "FolderTagged"}};
        for (const auto &row : rows) {
            changed.clear();
            if (row.tagged != NodeTagged(x)) {
                NodeTagToggle(x);
            }
            t.nodes().setSelectedItem(row.selected ? x : nullptr);
            QCOMPARE(changed.isEmpty(), !row.tagged && !row.selected);
            QVERIFY(!ix.data(Qt::DecorationRole).value<QIcon>().isNull());
            QCOMPARE(asked, QString(row.icon));
        }
        OutlineModel::setIconProvider({});
        // Renaming through the model renames the entry.
        QVERIFY(ix.flags() & Qt::ItemIsEditable);
        QVERIFY(model.setData(ix, QString("renamed")));
        QCOMPARE(ix.data(Qt::EditRole).toString(), QString("renamed"));
    }

private:
    std::unique_ptr<ScopedLog> m_log;
};

QTEST_MAIN(TestNodes)
#include "tst_nodes.moc"
