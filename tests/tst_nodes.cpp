// The entry tree model and the tree primitives: inserts, keys, copies, deletion, selection,
// expansion, sorting, tags, batching, collection indexes, weak references and notifications.
#include "app/modMain.h"
#include "document/Document.h"
#include "outline/Node.h"
#include "outline/modNodes.h"
#include "support/FakeDocument.h"
#include "support/TestSupport.h"

#include <QRandomGenerator>
#include <QtTest>

#include <functional>
#include <set>

using namespace modNodes;

namespace {

// "root(a(c) b)": labels in pre-order, children in brackets.
QString shape(Node *node) {
    if (!node) {
        return QStringLiteral("-");
    }
    QString s = node->Text();
    if (node->Children() > 0) {
        QStringList parts;
        for (Node *c = node->Child(); c; c = c->Next()) {
            parts << shape(c);
        }
        s += QLatin1Char('(') + parts.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return s;
}

QString keys(Node *node) {
    QStringList out;
    std::function<void(Node *)> walk = [&](Node *n) {
        out << n->Text() + QLatin1Char('=') + n->Key();
        for (Node *c = n->Child(); c; c = c->Next()) {
            walk(c);
        }
    };
    walk(node);
    return out.join(QLatin1Char(' '));
}

Node *find(Nodes &nodes, const QString &label) {
    for (Node *n : nodes) {
        if (n->Text() == label) {
            return n;
        }
    }
    return nullptr;
}

const char *kSample = "root\n"
                      "  a\n"
                      "    a1\n"
                      "    a2\n"
                      "  b\n"
                      "    b1\n"
                      "      b11\n"
                      "  c\n";

} // namespace

class TestNodes : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void insertRedirections_data();
    void insertRedirections();
    void firstInsertIsRootWithKey();
    void setKeys_data();
    void setKeys();
    void keysDuringTransferMatchRenumbering();
    void manyChildrenAreKeyed();
    void duplicateCopiesSubtreeAndTags();
    void duplicateIntoOwnSubtreeStops();
    void paste_data();
    void paste();
    void pasteMovesAndClearsReference();
    void deleteCollapsesEmptiedParent();
    void selectFullAndTransferSelect();
    void goDown_data();
    void goDown();
    void collapseAndExpandAll();
    void expandToLevel_data();
    void expandToLevel();
    void sortIgnoresCase();
    void sortedParentPlacesInsertsAndRenames();
    void tags();
    void batchingCounter();
    void indexClosesGapsAfterRemovals();
    void weakReferencesAndRemovedNodes();
    void observerFollowsTheTree();
    void initialiseNamesAndStartsEdit();

private:
    std::unique_ptr<ScopedLog> m_log;
};

void TestNodes::init() {
    m_log = std::make_unique<ScopedLog>();
    g_iActionDepth = 0;
    g_bDocTransfer = false;
    g_bLoadingText = false;
    g_nodCurrent.reset();
    Documents::SetActive(nullptr);
}

void TestNodes::cleanup() {
    g_nodCurrent.reset();
    m_log.reset();
}

// ---- Inserts and keys ----------------------------------------------------------------------

void TestNodes::insertRedirections_data() {
    QTest::addColumn<QString>("relative");
    QTest::addColumn<int>("relationship");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no relative") << "" << int(relFirst) << "root(a(a1 a2) b(b1(b11)) c new)";
    QTest::newRow("next of root") << "root" << int(relNext) << "root(a(a1 a2) b(b1(b11)) c new)";
    QTest::newRow("previous of root")
        << "root" << int(relPrevious) << "root(a(a1 a2) b(b1(b11)) c new)";
    QTest::newRow("first of root") << "root" << int(relFirst) << "root(a(a1 a2) b(b1(b11)) c new)";
    QTest::newRow("child of root") << "root" << int(relChild) << "root(a(a1 a2) b(b1(b11)) c new)";
    QTest::newRow("first") << "a2" << int(relFirst) << "root(a(new a1 a2) b(b1(b11)) c)";
    QTest::newRow("last") << "a1" << int(relLast) << "root(a(a1 a2 new) b(b1(b11)) c)";
    QTest::newRow("next") << "a" << int(relNext) << "root(a(a1 a2) new b(b1(b11)) c)";
    QTest::newRow("previous") << "b" << int(relPrevious) << "root(a(a1 a2) new b(b1(b11)) c)";
    QTest::newRow("child") << "b1" << int(relChild) << "root(a(a1 a2) b(b1(b11 new)) c)";
}

void TestNodes::insertRedirections() {
    QFETCH(QString, relative);
    QFETCH(int, relationship);
    QFETCH(QString, expected);
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    Node *rel = relative.isEmpty() ? nullptr : find(t.nodes(), relative);
    Node *added = NodeInsert(&t.doc, relationship, rel);
    QVERIFY(added);
    QVERIFY(added->Text().isEmpty());
    QCOMPARE(added->Image(), QStringLiteral("Folder"));
    QCOMPARE(added->SelectedImage(), QStringLiteral("FolderSelected"));
    QVERIFY(added->Key().isEmpty()); // no bulk transfer: keyed at the next renumbering
    added->setText(QStringLiteral("new"));
    QCOMPARE(shape(t.nodes().Item(1)), expected);
    QCOMPARE(t.nodes().topNodes().size(), size_t(1));
}

void TestNodes::firstInsertIsRootWithKey() {
    for (int rel : {relFirst, relLast, relNext, relPrevious, relChild}) {
        TestDocument t;
        Node *root = NodeInsert(&t.doc, rel, nullptr);
        QVERIFY(root);
        QCOMPARE(root->Key(), QStringLiteral("KEY0"));
        QCOMPARE(root->Index(), 1);
        QCOMPARE(root->Root(), root);
        QVERIFY(!root->Parent());
    }
}

void TestNodes::setKeys_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");
    QTest::newRow("KEY0") << "KEY0"
                          << "root=KEY0 a=KEY0.1 a1=KEY0.1.1 a2=KEY0.1.2 b=KEY0.2 b1=KEY0.2.1 "
                             "b11=KEY0.2.1.1 c=KEY0.3";
    QTest::newRow("KEY") << "KEY"
                         << "root=KEY a=KEY1 a1=KEY1.1 a2=KEY1.2 b=KEY2 b1=KEY2.1 b11=KEY2.1.1 "
                            "c=KEY3";
    QTest::newRow("empty") << ""
                           << "root= a= a1= a2= b= b1= b11= c=";
    QTest::newRow("other") << "X"
                           << "root=X a=X.1 a1=X.1.1 a2=X.1.2 b=X.2 b1=X.2.1 b11=X.2.1.1 c=X.3";
}

void TestNodes::setKeys() {
    QFETCH(QString, key);
    QFETCH(QString, expected);
    TestDocument t;
    auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
    NodeSetKeys(made[0], key);
    QCOMPARE(keys(made[0]), expected);
    NodeSetKeys(nullptr, key); // nothing happens
}

void TestNodes::keysDuringTransferMatchRenumbering() {
    // Keys assigned while inserting in bulk must equal a whole renumbering from the root, also
    // for inserts in the middle and under a sorted parent.
    TestDocument t;
    auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
    g_bDocTransfer = true;
    Node *mid = NodeInsert(&t.doc, relPrevious, find(t.nodes(), QStringLiteral("a")));
    mid->setText(QStringLiteral("m"));
    Node *first = NodeInsert(&t.doc, relFirst, find(t.nodes(), QStringLiteral("b11")));
    first->setText(QStringLiteral("b10"));
    NodeSortAll(find(t.nodes(), QStringLiteral("b")), true);
    Node *sortedIn = NodeInsert(&t.doc, relChild, find(t.nodes(), QStringLiteral("b")));
    g_bDocTransfer = false;
    QCOMPARE(sortedIn->row(), 0); // an empty label sorts first
    const QString incremental = keys(made[0]);
    NodeSetKeys(made[0], QStringLiteral("KEY0"));
    QCOMPARE(incremental, keys(made[0]));
    QCOMPARE(mid->Key(), QStringLiteral("KEY0.1"));
    QCOMPARE(find(t.nodes(), QStringLiteral("c"))->Key(), QStringLiteral("KEY0.4"));
}

void TestNodes::manyChildrenAreKeyed() {
    TestDocument t(false);
    g_bDocTransfer = true;
    Node *root = NodeInsert(&t.doc, relChild, nullptr);
    Node *last = nullptr;
    for (int i = 0; i < 40000; ++i) {
        last = NodeInsert(&t.doc, relChild, root);
    }
    g_bDocTransfer = false;
    QCOMPARE(root->Children(), 40000);
    QCOMPARE(last->Key(), QStringLiteral("KEY0.40000"));
    QCOMPARE(last->row(), 39999);
    NodeSetKeys(root, QStringLiteral("KEY0"));
    QCOMPARE(root->childAt(32767)->Key(), QStringLiteral("KEY0.32768"));
    QCOMPARE(last->Key(), QStringLiteral("KEY0.40000"));
    QVERIFY(m_log->content().isEmpty());
}

// ---- Duplicate, paste, delete --------------------------------------------------------------

void TestNodes::duplicateCopiesSubtreeAndTags() {
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    Node *b = find(t.nodes(), QStringLiteral("b"));
    Node *b11 = find(t.nodes(), QStringLiteral("b11"));
    b->setTag(QByteArray("5,stored"));
    b->setExpanded(true);
    NodeTagOn(b);
    NodeTagOn(b11);
    Node *copy = NodeDuplicate(&t.doc, b, find(t.nodes(), QStringLiteral("c")), relNext);
    QVERIFY(copy && copy != b);
    QCOMPARE(shape(t.nodes().Item(1)), QStringLiteral("root(a(a1 a2) b(b1(b11)) c b(b1(b11)))"));
    QCOMPARE(copy->Tag(), QByteArray("5,stored"));
    QVERIFY(copy->Tag().isSharedWith(b->Tag())); // copied without re-encoding
    QVERIFY(copy->Expanded());
    QVERIFY(NodeTagged(copy));
    QVERIFY(!NodeTagged(copy->Child()));
    QVERIFY(NodeTagged(copy->Child()->Child()));
    QCOMPARE(t.nodes().Count(), 11);
    QCOMPARE(g_iActionDepth, 0);
    QVERIFY(t.view.outlineVisible && t.pane->Visible());

    // A null target copies only with relationship 0, as a last child of the root.
    QVERIFY(!NodeDuplicate(&t.doc, b, nullptr, relNext));
    Node *appended = NodeDuplicate(&t.doc, find(t.nodes(), QStringLiteral("c")), nullptr, relFirst);
    QCOMPARE(appended->Parent(), t.nodes().Item(1));
    QCOMPARE(appended, t.nodes().Item(1)->Child()->LastSibling());
    QVERIFY(!NodeDuplicate(&t.doc, nullptr, b, relNext));
}

void TestNodes::duplicateIntoOwnSubtreeStops() {
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    Node *a = find(t.nodes(), QStringLiteral("a"));
    Node *copy = NodeDuplicate(&t.doc, a, a, relChild);
    QVERIFY(copy);
    QCOMPARE(shape(a), QStringLiteral("a(a1 a2 a(a1 a2))"));
}

void TestNodes::paste_data() {
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("copied");
    QTest::addColumn<QString>("expected");
    QTest::newRow("root selected") << "root"
                                   << "c"
                                   << "root(c a(a1 a2) b(b1(b11)) c)";
    QTest::newRow("root selected, copied is first child") << "root"
                                                          << "a"
                                                          << "root(a(a1 a2) b(b1(b11)) c a(a1 a2))";
    QTest::newRow("entry selected") << "a1"
                                    << "b"
                                    << "root(a(a1 b(b1(b11)) a2) b(b1(b11)) c)";
    QTest::newRow("nothing selected") << ""
                                      << "a1"
                                      << "root(a(a1 a2) b(b1(b11)) c a1)";
}

void TestNodes::paste() {
    QFETCH(QString, selected);
    QFETCH(QString, copied);
    QFETCH(QString, expected);
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    t.nodes().setSelectedItem(selected.isEmpty() ? nullptr : find(t.nodes(), selected));
    NodeRef ref = find(t.nodes(), copied);
    NodePaste(&t.doc, ref, false);
    QCOMPARE(shape(t.nodes().Item(1)), expected);
    QVERIFY(ref);
    Node *sel = t.nodes().SelectedItem();
    QVERIFY(sel && sel != ref.get());
    QCOMPARE(sel->Text(), copied);
    QCOMPARE(g_iActionDepth, 0);
}

void TestNodes::pasteMovesAndClearsReference() {
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    t.nodes().setSelectedItem(find(t.nodes(), QStringLiteral("c")));
    NodeRef ref = find(t.nodes(), QStringLiteral("a"));
    NodePaste(&t.doc, ref, true);
    QCOMPARE(shape(t.nodes().Item(1)), QStringLiteral("root(b(b1(b11)) c a(a1 a2))"));
    QVERIFY(!ref);
    QCOMPARE(t.nodes().SelectedItem()->Text(), QStringLiteral("a"));
    QCOMPARE(t.nodes().Count(), 8);

    // Moving a node into its own subtree removes the copy with it; nothing dangles.
    t.nodes().setSelectedItem(find(t.nodes(), QStringLiteral("b11")));
    ref = find(t.nodes(), QStringLiteral("b"));
    NodePaste(&t.doc, ref, true);
    QCOMPARE(shape(t.nodes().Item(1)), QStringLiteral("root(c a(a1 a2))"));
    NodeRef none;
    NodePaste(&t.doc, none, true); // nothing to paste
    QCOMPARE(g_iActionDepth, 0);
}

void TestNodes::deleteCollapsesEmptiedParent() {
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    Node *a = find(t.nodes(), QStringLiteral("a"));
    Node *b = find(t.nodes(), QStringLiteral("b"));
    a->setExpanded(true);
    b->setExpanded(true);
    NodeDelete(&t.doc, find(t.nodes(), QStringLiteral("a1")));
    QVERIFY(a->Expanded());
    NodeDelete(&t.doc, find(t.nodes(), QStringLiteral("a2")));
    QVERIFY(!a->Expanded());
    NodeDelete(&t.doc, find(t.nodes(), QStringLiteral("b1"))); // with its subtree
    QVERIFY(!b->Expanded());
    QCOMPARE(t.nodes().Count(), 4);
    QCOMPARE(shape(t.nodes().Item(1)), QStringLiteral("root(a b c)"));
    NodeDelete(&t.doc, nullptr);
    QCOMPARE(g_iActionDepth, 0);
}

// ---- Selection -----------------------------------------------------------------------------

void TestNodes::selectFullAndTransferSelect() {
    TestDocument t;
    auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
    Node *b11 = find(t.nodes(), QStringLiteral("b11"));
    b11->setTag(QByteArray("{\\rtf1 plain}"));
    t.nodes().setDropHighlight(made[1]);
    MirrorObserver mirror(t.nodes());

    g_bDocTransfer = true;
    NodeSelect(&t.doc, b11);
    QVERIFY(b11->Selected());
    QCOMPARE(t.pane->loads, 0); // light form: pane and status bar untouched
    QVERIFY(t.view.statusNodes.empty());
    QVERIFY(!g_nodCurrent);
    g_bDocTransfer = false;

    NodeSelect(&t.doc, made[1]);
    QCOMPARE(g_nodCurrent.get(), made[1]);
    QVERIFY(made[1]->Selected() && !b11->Selected());
    QVERIFY(!t.nodes().DropHighlight());
    QCOMPARE(t.view.statusNodes, std::vector<Node *>{made[1]});
    QCOMPARE(t.view.menuRefreshes, 1);

    NodeSelectFull(&t.doc, b11);
    QCOMPARE(t.pane->TextRTF(), QByteArray("{\\rtf1 plain}"));
    QVERIFY(find(t.nodes(), QStringLiteral("b"))->Expanded()); // shown: ancestors expanded
    QVERIFY(find(t.nodes(), QStringLiteral("b1"))->Expanded());
    QCOMPARE(mirror.scrolledTo.back(), b11);

    NodeSelectFull(&t.doc, nullptr); // commands are still re-evaluated
    QCOMPARE(t.view.menuRefreshes, 3);
    QCOMPARE(g_nodCurrent.get(), b11);
}

void TestNodes::goDown_data() {
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::newRow("next sibling") << "a"
                                  << "b";
    QTest::newRow("last child climbs") << "a2"
                                       << "b";
    QTest::newRow("deep last child climbs twice") << "b11"
                                                  << "c";
    QTest::newRow("last of all stays") << "c"
                                       << "c";
    QTest::newRow("root goes to first child") << "root"
                                              << "a";
    QTest::newRow("nothing selected") << ""
                                      << "";
}

void TestNodes::goDown() {
    QFETCH(QString, from);
    QFETCH(QString, to);
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    t.nodes().setSelectedItem(from.isEmpty() ? nullptr : find(t.nodes(), from));
    NodeGoDown(&t.doc);
    Node *sel = t.nodes().SelectedItem();
    QCOMPARE(sel ? sel->Text() : QString(), to);
    Node *root = nullptr; // untouched when nothing is selected
    NodeGetRoot(&t.doc, root);
    QCOMPARE(root, sel ? t.nodes().Item(1) : nullptr);
}

// ---- Expansion and sorting -----------------------------------------------------------------

void TestNodes::collapseAndExpandAll() {
    TestDocument t;
    auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
    Node *c = find(t.nodes(), QStringLiteral("c"));
    Node *b11 = find(t.nodes(), QStringLiteral("b11"));
    NodeExpandAll(made[0]);
    QVERIFY(made[0]->Expanded() && made[1]->Expanded() && find(t.nodes(), "b1")->Expanded());
    QVERIFY(!c->Expanded() && !b11->Expanded()); // leaves untouched
    c->setExpanded(true);
    NodeExpandAll(c);
    QVERIFY(c->Expanded());
    NodeCollapseAll(made[0]);
    for (Node *n : t.nodes()) {
        QVERIFY2(!n->Expanded(), qPrintable(n->Text())); // leaves collapsed too
    }
    QCOMPARE(g_iActionDepth, 0);
}

void TestNodes::expandToLevel_data() {
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("expanded");
    QTest::newRow("1: root collapsed") << 1 << "b1";
    QTest::newRow("2: root open") << 2 << "root b1";
    QTest::newRow("3: collapsed below") << 3 << "root a b";
    QTest::newRow("9") << 9 << "root a b b1";
}

void TestNodes::expandToLevel() {
    QFETCH(int, level);
    QFETCH(QString, expanded);
    TestDocument t;
    auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
    find(t.nodes(), QStringLiteral("b1"))->setExpanded(true); // hidden below a collapsed node
    NodeExpandToLevel(made[0], level);
    QStringList open;
    for (Node *n : t.nodes()) {
        if (n->Expanded()) {
            open << n->Text();
        }
    }
    QCOMPARE(open.join(QLatin1Char(' ')), expanded);
    QCOMPARE(g_iActionDepth, 0);
}

void TestNodes::sortIgnoresCase() {
    TestDocument t;
    auto made = BuildOutline(t.doc, QStringLiteral("root\n  delta\n  Bravo\n  alpha\n  Charlie\n"
                                                   "    z\n    Y\n    x\n"));
    MirrorObserver mirror(t.nodes());
    NodeSortAll(made[0], true);
    QCOMPARE(shape(made[0]), QStringLiteral("root(alpha Bravo Charlie(x Y z) delta)"));
    QVERIFY(find(t.nodes(), QStringLiteral("x"))->Sorted());
    NodeSortAll(made[0], false);
    NodeInsert(&t.doc, relPrevious, find(t.nodes(), QStringLiteral("alpha")))->setText("omega");
    QCOMPARE(shape(made[0]), QStringLiteral("root(omega alpha Bravo Charlie(x Y z) delta)"));
    QVERIFY(mirror.differences().isEmpty());
}

void TestNodes::sortedParentPlacesInsertsAndRenames() {
    TestDocument t;
    auto made = BuildOutline(t.doc, QStringLiteral("root\n  b\n  d\n"));
    MirrorObserver mirror(t.nodes());
    NodeSortAll(made[0], true);
    Node *n = NodeInsert(&t.doc, relNext, made[2]);
    n->setText(QStringLiteral("C"));
    QCOMPARE(shape(made[0]), QStringLiteral("root(b C d)"));
    n->setText(QStringLiteral("a"));
    QCOMPARE(shape(made[0]), QStringLiteral("root(a b d)"));
    made[2]->setText(QStringLiteral("E"));
    made[1]->setText(QStringLiteral("F"));
    QCOMPARE(shape(made[0]), QStringLiteral("root(a E F)"));
    QCOMPARE(made[1]->row(), 2);
    QCOMPARE(made[1]->Previous(), made[2]);
    QVERIFY(mirror.differences().isEmpty());
}

// ---- Tags ----------------------------------------------------------------------------------

void TestNodes::tags() {
    TestDocument t;
    auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
    QVERIFY(!NodesTaggedExist());
    NodeTagToggle(made[1]);
    QVERIFY(NodeTagged(made[1]));
    QCOMPARE(made[1]->Image(), QStringLiteral("FolderTagged"));
    QCOMPARE(made[1]->SelectedImage(), QStringLiteral("FolderTaggedSelected"));
    QVERIFY(!NodeTagged(made[2])); // children are not tagged with their parent
    QVERIFY(NodesTaggedExist());
    Documents::SetActive(nullptr);
    QVERIFY(!NodesTaggedExist()); // no active document
    Documents::SetActive(&t.doc);
    NodeTagToggle(made[1]);
    QCOMPARE(made[1]->Image(), QStringLiteral("Folder"));
    QCOMPARE(made[1]->SelectedImage(), QStringLiteral("FolderSelected"));
    QVERIFY(!NodesTaggedExist());
    // The icon key alone carries the tag.
    made[6]->setImage(QStringLiteral("FolderTagged"));
    QVERIFY(NodeTagged(made[6]) && NodesTaggedExist());
    QVERIFY(!NodeTagged(nullptr));
    modMain::Guarded([&] { made[0]->setImage(QStringLiteral("Nonsense")); });
    QVERIFY(m_log->content().startsWith(QStringLiteral("Error 5 - ")));
    QCOMPARE(made[0]->Image(), QStringLiteral("Folder"));
}

// ---- Batching ------------------------------------------------------------------------------

void TestNodes::batchingCounter() {
    TestDocument t;
    NodeActionStart();
    QVERIFY(!t.view.outlineVisible && !t.nodes().Visible() && !t.pane->Visible());
    NodeActionStart();
    QCOMPARE(g_iActionDepth, 2);
    NodeActionEnd();
    QVERIFY(!t.view.outlineVisible && !t.pane->Visible());
    QCOMPARE(t.view.autoFits, 1); // re-fitted at every level
    NodeActionEnd();
    QVERIFY(t.view.outlineVisible && t.nodes().Visible() && t.pane->Visible());
    QCOMPARE(t.view.autoFits, 2);
    QCOMPARE(g_iActionDepth, 0);

    // Without an active document Start still counts, End does not.
    Documents::SetActive(nullptr);
    NodeActionStart();
    QCOMPARE(g_iActionDepth, 1);
    QVERIFY(t.view.outlineVisible);
    NodeActionEnd();
    QCOMPARE(g_iActionDepth, 1);
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

// ---- Collection indexes and references -----------------------------------------------------

void TestNodes::indexClosesGapsAfterRemovals() {
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
        for (Node *n : order) {
            for (int r = 0; r < n->Children(); ++r) {
                QCOMPARE(n->childAt(r)->row(), r);
                QCOMPARE(n->childAt(r)->Parent(), n);
            }
        }
    }
    modMain::Guarded([&] { nodes.Item(nodes.Count() + 1); });
    QVERIFY(m_log->content().startsWith(QStringLiteral("Error 9 - ")));
}

void TestNodes::weakReferencesAndRemovedNodes() {
    NodeRef survivor;
    {
        TestDocument t;
        auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
        NodeRef b = made[4];
        NodeRef b11 = made[6];
        g_nodCurrent = made[6];
        Node *raw = b11.get();
        NodeRef copy = b; // copies count as holders too
        NodeDelete(&t.doc, made[4]);
        QVERIFY(!b && !b11 && !copy && !g_nodCurrent);
        QVERIFY(b11 == nullptr);
        QVERIFY(raw->isRemoved());
        QCOMPARE(raw->Text(), QStringLiteral("b11")); // still readable memory

        // Relations and changes of a removed node are run-time errors.
        modMain::Guarded([&] { raw->Index(); });
        QVERIFY(m_log->content().contains(QStringLiteral("Error 35605")));
        QCOMPARE(NodeInsert(&t.doc, relNext, raw), nullptr);
        QVERIFY(m_log->content().contains(QStringLiteral("modNodes NodeInsert")));
        QCOMPARE(t.nodes().Count(), 5);

        survivor = made[1];
        QVERIFY(survivor);
    }
    QVERIFY(!survivor); // the tree went away with its document
}

// ---- Notifications -------------------------------------------------------------------------

void TestNodes::observerFollowsTheTree() {
    TestDocument t;
    auto made = BuildOutline(t.doc, QString::fromLatin1(kSample));
    MirrorObserver mirror(t.nodes());
    QRandomGenerator rng(11);
    for (int step = 0; step < 400; ++step) {
        const int count = t.nodes().Count();
        Node *n = t.nodes().Item(1 + int(rng.bounded(count)));
        switch (rng.bounded(7)) {
        case 0:
        case 1:
            NodeInsert(&t.doc, int(rng.bounded(5)), n)->setText(QString::number(rng.bounded(50)));
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
        default:
            NodeSelectFull(&t.doc, n);
            NodeTagToggle(n);
            break;
        }
        const QStringList diff = mirror.differences();
        QVERIFY2(diff.isEmpty(), qPrintable(diff.join(QLatin1String("; "))));
    }
    QVERIFY(mirror.changes[NodeRole::Label] > 0);
    QVERIFY(mirror.changes[NodeRole::Selected] > 0);
    QVERIFY(mirror.changes[NodeRole::Icon] > 0);
    t.nodes().Clear();
    QCOMPARE(t.nodes().Count(), 0);
    QVERIFY(mirror.differences().isEmpty());
    QVERIFY(!made.empty());
}

void TestNodes::initialiseNamesAndStartsEdit() {
    TestDocument t;
    BuildOutline(t.doc, QString::fromLatin1(kSample));
    t.doc.m_fntTextFont.setName(QStringLiteral("Serif"));
    t.doc.m_fntTextFont.setSize(13);
    Node *n = NodeInsert(&t.doc, relChild, nullptr);
    NodeInitialise(&t.doc, n);
    QCOMPARE(n->Text(), QStringLiteral("New Entry"));
    QVERIFY(n->Selected());
    QCOMPARE(t.view.labelEdits, std::vector<Node *>{n});
    QCOMPARE(t.pane->baseFont, t.doc.m_fntTextFont);
}

QTEST_GUILESS_MAIN(TestNodes)
#include "tst_nodes.moc"
