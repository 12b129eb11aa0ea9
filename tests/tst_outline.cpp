// The outline commands and dragged entries: inserts, deletes with each answer, copy and paste,
// tags, moves with their climbing rules, indent and unindent, sorting once, expansion levels,
// the drop rules and drops with each placement.
#include "app/modMain.h"
#include "document/Document.h"
#include "outline/modDrag.h"
#include "outline/modNodes.h"
#include "outline/modOutline.h"
#include "support/FakeDocument.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"

#include <QGuiApplication>
#include <QtTest>

#include <functional>
#include <map>

using namespace modNodes;
using namespace modOutline;

namespace {

const char *kSample = "root\n"
                      "  a\n"
                      "    a1\n"
                      "    a2\n"
                      "  b\n"
                      "    b1\n"
                      "      b11\n"
                      "  c\n";
const QString kSampleShape = QStringLiteral("root(a(a1 a2) b(b1(b11)) c)");

using Command = std::function<void()>;

const std::map<QString, Command> &commands() {
    static const std::map<QString, Command> table{
        {QStringLiteral("up"), OutlineMoveUp},
        {QStringLiteral("down"), OutlineMoveDown},
        {QStringLiteral("first"), OutlineMoveFirst},
        {QStringLiteral("last"), OutlineMoveLast},
        {QStringLiteral("indent"), OutlineIndent},
        {QStringLiteral("unindent"), OutlineUnindent},
        {QStringLiteral("above"), OutlineInsertAbove},
        {QStringLiteral("below"), OutlineInsertBelow},
        {QStringLiteral("child"), OutlineInsertChild},
        {QStringLiteral("paste"), OutlinePaste},
        {QStringLiteral("move"), OutlinePasteAndDelete},
    };
    return table;
}

} // namespace

class TestOutline : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        m_log = std::make_unique<ScopedLog>();
        g_iActionDepth = 0;
        g_bDocTransfer = false;
        g_nodCopied.reset();
        m_doc = std::make_unique<TestDocument>();
        BuildOutline(m_doc->doc, QString::fromLatin1(kSample));
        NodeSelect(&m_doc->doc, root());
        m_doc->doc.m_bDataChanged = false;
    }
    void cleanup() {
        g_nodCopied.reset();
        g_nodCurrent.reset();
        modDrag::ResetDraggingFlags();
        m_doc.reset();
        Documents::SetActive(nullptr);
        m_log.reset();
    }

    void deletes_data() {
        QTest::addColumn<QString>(
            "tags"); // none: the selected entry is deleted, else the tagged ones
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("selectedAfter");
        const char *same = "root(a(a1 a2) b(b1(b11)) c)";
        AddRows({
            {"previous sibling before next", "", "b", "yes", "root(a(a1 a2) c)", "a"},
            {"first takes next", "", "a1", "yes", "root(a(a2) b(b1(b11)) c)", "a2"},
            {"only child takes parent", "", "b11", "yes", "root(a(a1 a2) b(b1) c)", "b1"},
            {"no", "", "b", "no", same, "b"},
            {"tagged: nested, selection inside", "b b11 a2", "b11", "yes", "root(a(a1) c)", "root"},
            {"tagged: selection survives", "a1 c", "b1", "yes", "root(a(a2) b(b1(b11)))", "b1"},
            {"tagged: tagged root stays", "root a", "a1", "yes", "root(b(b1(b11)) c)", "root"},
            {"tagged: no", "b b11", "a", "no", same, "a"},
        });
    }
    void deletes() {
        QFETCH(QString, tags);
        QFETCH(QString, selected);
        QFETCH(QString, answer);
        for (const QString &t : tags.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            NodeTagOn(entry(t));
        }
        FakeMainWindow q;
        q.Answers << (answer == QLatin1String("yes")  ? modMain::vbYes
                      : answer == QLatin1String("no") ? modMain::vbNo
                                                      : modMain::vbCancel);
        select(selected);
        if (tags.isEmpty()) {
            OutlineDelete();
            QCOMPARE(q.Asked,
                     QStringList{"Do you really want to delete the entry '" + selected + "'?"});
            QCOMPARE(q.AskedButtons, QList<int>{modMain::vbYesNoCancel});
        } else {
            OutlineDeleteTaggedEntries();
            QCOMPARE(q.Asked,
                     QStringList{"Do you really want to delete the tagged entries, including "
                                 "any children?"});
            QCOMPARE(q.AskedWhileBusy, QList<bool>{true});
        }
        QCOMPARE(q.AskedIcons, QList<int>{modMain::vbQuestion});
        QTEST(TreeShape(root()), "expected");
        QTEST(m_doc->nodes().SelectedItem()->Text(), "selectedAfter");
        QVERIFY(m_doc->doc.m_bDataChanged); // also when answered No
        if (selected == QLatin1String("b11") && tags.isEmpty() && answer == QLatin1String("yes")) {
            QVERIFY(!entry("b1")->Expanded()); // a parent left without children is collapsed
        }
        checkTreeWhole();
    }
    void tagging() {
        OutlineTaggedEntry(); // the root cannot be tagged
        QVERIFY(!NodeTagged(root()));
        QVERIFY(m_doc->doc.m_bDataChanged);
        select(QStringLiteral("b"));
        const int refreshes = m_doc->view.menuRefreshes;
        OutlineTaggedEntry();
        QVERIFY(NodeTagged(entry("b")) && !NodeTagged(entry("b1"))); // tags are per entry
        QCOMPARE(m_doc->view.menuRefreshes, refreshes + 1);
        OutlineTaggedEntry();
        QVERIFY(!NodeTagged(entry("b")));
        // Pasted in collection order (a1 before b), an entry inside a tagged one only with it.
        for (const char *label : {"b", "b11", "a1"}) {
            NodeTagOn(entry(label));
        }
        select(QStringLiteral("c"));
        m_doc->doc.m_bDataChanged = false;
        OutlinePasteTaggedEntries();
        QVERIFY(m_doc->doc.m_bDataChanged);
        QCOMPARE(TreeShapeTagged(root()),
                 QStringLiteral("root(a(a1* a2) b*(b1(b11*)) c a1* b*(b1(b11*)))"));
        checkTreeWhole();
    }
    void pasteRemovedOrMovedEntryDoesNothing() {
        // The copied entry is the live one: later edits are pasted.
        select(QStringLiteral("a2"));
        OutlineCopy();
        entry("a2")->setText(QStringLiteral("edited"));
        select(QStringLiteral("c"));
        OutlinePaste();
        QCOMPARE(TreeShape(root()), QStringLiteral("root(a(a1 edited) b(b1(b11)) c edited)"));
        // Once removed it counts as nothing.
        FakeMainWindow q;
        q.Answers << modMain::vbYes;
        select(QStringLiteral("a"));
        OutlineCopy();
        OutlineDelete();
        QVERIFY(!g_nodCopied);
        const QString before = TreeShape(root());
        OutlinePaste();
        OutlinePasteAndDelete();
        QCOMPARE(TreeShape(root()), before);
        // A move replaces the entry by a copy, so the copied reference no longer points into the
        // tree.
        select(QStringLiteral("b"));
        OutlineCopy();
        OutlineMoveDown();
        QVERIFY(!g_nodCopied);
        checkTreeWhole();
    }
    void insertsAndMoves_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("expected");
        const char *same = "root(a(a1 a2) b(b1(b11)) c)";
        AddRows({
            {"insert above root", "above", "root", "root(a(a1 a2) b(b1(b11)) c New Entry)"},
            {"insert above a2", "above", "a2", "root(a(a1 New Entry a2) b(b1(b11)) c)"},
            {"insert below a", "below", "a", "root(a(a1 a2) New Entry b(b1(b11)) c)"},
            {"insert child of b1", "child", "b1", "root(a(a1 a2) b(b1(b11 New Entry)) c)"},
            {"up before previous", "up", "b", "root(b(b1(b11)) a(a1 a2) c)"},
            {"up first of root's first: its last", "up", "a1", "root(a(a2 a1) b(b1(b11)) c)"},
            {"up climbs two levels", "up", "b11", "root(a(a1 a2 b11) b(b1) c)"},
            {"up first child of root", "up", "a", same},
            {"up root", "up", "root", same},
            {"down after next", "down", "a1", "root(a(a2 a1) b(b1(b11)) c)"},
            {"down into next parent, first", "down", "a2", "root(a(a1) b(a2 b1(b11)) c)"},
            {"down last of a last parent", "down", "b11", same},
            {"down last of root", "down", "c", same},
            {"first", "first", "c", "root(c a(a1 a2) b(b1(b11)))"},
            {"last", "last", "a", "root(b(b1(b11)) c a(a1 a2))"},
            {"indent", "indent", "b", "root(a(a1 a2 b(b1(b11))) c)"},
            {"indent first child", "indent", "a1", same},
            {"unindent keeps later siblings", "unindent", "a1", "root(a(a2) a1 b(b1(b11)) c)"},
            {"unindent child of root", "unindent", "a", same},
            // Copied first (the copied entry, then the selection).
            {"paste root's first: last", "paste a", "root", "root(a(a1 a2) b(b1(b11)) c a(a1 a2))"},
            {"move after selection", "move b1", "a1", "root(a(a1 b1(b11) a2) b c)"},
            {"move to root's first", "move c", "root", "root(c a(a1 a2) b(b1(b11)))"},
        });
    }
    void insertsAndMoves() {
        QFETCH(QString, command);
        QFETCH(QString, selected);
        QFETCH(QString, expected);
        const QString copied = command.section(' ', 1);
        if (!copied.isEmpty()) {
            select(copied);
            OutlineCopy();
            QVERIFY(!m_doc->doc.m_bDataChanged);
            QCOMPARE(g_nodCopied.get(), entry(copied));
        }
        select(selected);
        Node *before = entry(selected);
        commands().at(command.section(' ', 0, 0))();
        QCOMPARE(TreeShape(root()), expected);
        QVERIFY(m_doc->doc.m_bDataChanged); // also when nothing moved
        Node *now = m_doc->nodes().SelectedItem();
        if (QStringList{"above", "below", "child"}.contains(command)) {
            QCOMPARE(now->Text(), QStringLiteral("New Entry"));
            QCOMPARE(m_doc->view.labelEdits, std::vector<Node *>{now});
            QVERIFY(now->Key().isEmpty());
        } else {
            QCOMPARE(now->Text(), copied.isEmpty() ? selected : copied);
            if (expected != kSampleShape) {
                QVERIFY(now != before || selected == QLatin1String("root"));
                QVERIFY(now->Key().isEmpty()); // copies are keyed at the next renumbering
            }
        }
        if (!copied.isEmpty()) { // a moved entry is pasted once
            QCOMPARE(bool(g_nodCopied), !command.startsWith(QLatin1String("move")));
            if (!g_nodCopied) {
                OutlinePasteAndDelete();
                QCOMPARE(TreeShape(root()), expected);
            }
        }
        checkTreeWhole();
    }
    void moveDownKeepsChildrenOfParentMovedInto() {
        // They are re-created in order, with their texts, tags and expansion.
        NodeTagOn(entry("b11"));
        entry("b11")->setTag(QByteArray("stored b11"));
        entry("b1")->setExpanded(false);
        select(QStringLiteral("a2"));
        OutlineMoveDown();
        QCOMPARE(TreeShapeTagged(root()), QStringLiteral("root(a(a1) b(a2 b1(b11*)) c)"));
        QCOMPARE(entry("b11")->Tag(), QByteArray("stored b11"));
        QVERIFY(!entry("b1")->Expanded());
        checkTreeWhole();
    }
    void nothingWithoutActiveDocument() {
        select(QStringLiteral("b"));
        Documents::SetActive(nullptr);
        for (const auto &[name, command] : commands()) {
            command();
        }
        OutlineSortAll();
        OutlineExpandAll();
        QCOMPARE(TreeShape(root()), kSampleShape);
        QVERIFY(!m_doc->doc.m_bDataChanged);
        Documents::SetActive(&m_doc->doc);
        // With no one to answer, a question is cancelled.
        OutlineDelete();
        QCOMPARE(TreeShape(root()), kSampleShape);
    }
    void sorting() {
        m_doc->nodes().Clear();
        BuildOutline(m_doc->doc, QStringLiteral("root\n  delta\n    Zed\n    apple\n  Beta\n  "
                                                "alpha\n    c2\n    C1\n"));
        NodeSelect(&m_doc->doc, entry("alpha"));
        OutlineSortCurrent(); // the selected entry's children, only
        QCOMPARE(TreeShape(root()), QStringLiteral("root(delta(Zed apple) Beta alpha(C1 c2))"));
        OutlineSortAll();
        QCOMPARE(TreeShape(root()), QStringLiteral("root(alpha(C1 c2) Beta delta(apple Zed))"));
        // Sorting is not kept: a new entry stays where it is put.
        select(QStringLiteral("alpha"));
        OutlineInsertAbove();
        QCOMPARE(TreeShape(root()),
                 QStringLiteral("root(New Entry alpha(C1 c2) Beta delta(apple Zed))"));
        checkTreeWhole();
    }
    void expansion() {
        auto check = [&](const char *expanded, int level) {
            QStringList out;
            for (Node *n : m_doc->nodes()) {
                if (n->Expanded()) {
                    out << n->Text();
                }
            }
            QCOMPARE(out.join(QLatin1Char(' ')), QString::fromLatin1(expanded));
            QCOMPARE(m_doc->doc.m_iExpansionLevel, level);
        };
        select(QStringLiteral("b1"));
        OutlineCollapseAll();
        check("", 1);
        QCOMPARE(m_doc->nodes().SelectedItem(), root());
        OutlineExpandToLevel(2);
        check("root", 2);
        OutlineExpandToLevel(3);
        check("root a b", 3);
        OutlineExpandAll();
        check("root a b b1", -1);
        OutlineExpandToLevel(1);
        check("a b b1", 1); // collapsed subtrees keep their state
        select(QStringLiteral("c"));
        OutlineExpand(); // a leaf, as the command asks
        OutlineCollapse();
        select(QStringLiteral("a"));
        OutlineCollapse();
        // Selecting an entry shows it, which expands the root again; single entries leave the
        // level.
        check("root b b1", 1);
        QVERIFY(m_doc->view.menuRefreshes > 0);
        m_doc->nodes().Clear();
        OutlineExpandToLevel(4); // with an empty tree the level is still recorded
        check("", 4);
        QCOMPARE(g_iActionDepth, 0);
    }
    void dropRules_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("permitted"); // p(revious) n(ext) c(hild)
        AddRows({
            {"plain", "a1", "c", "pnc"},
            {"onto root", "a1", "root", "c"},
            {"target's next is source", "b", "a", "pc"},
            {"target's previous is source", "a", "b", "nc"},
            {"onto parent of first child", "a1", "a", ""},
            {"into own subtree", "b", "b11", ""},
        });
    }
    void dropRules() {
        QFETCH(QString, source);
        QFETCH(QString, target);
        const modDrag::DropPlacements p =
            modDrag::PermittedPlacements(entry(source), entry(target));
        QString got;
        got += p.previous ? "p" : "";
        got += p.next ? "n" : "";
        got += p.child ? "c" : "";
        QTEST(got, "permitted");
        // The pointer shows the same thing as the drop decides, but for the siblings' own places.
        QCOMPARE(modDrag::DropValid(entry(source), entry(target), false),
                 !modDrag::InSubtreeOf(entry(target), entry(source)));
        const modDrag::ConfirmMenu menu = modDrag::ConfirmMenuFor(p);
        QCOMPARE(menu.copyPrevious && menu.movePrevious, p.previous);
        QCOMPARE(menu.copyChild || menu.moveChild, p.child);
        QVERIFY(!menu.indentLeft && !menu.indentRight);
    }
    void drops_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("target"); // none: dropped onto itself
        // The button, then left+ctrl or the right button's popup choice; onto itself the direction
        // the pointer moved or the popup's indent.
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("expected");
        const char *same = "root(a(a1 a2) b(b1(b11)) c)";
        AddRows({
            {"left: after", "a1", "c", "left", "root(a(a2) b(b1(b11)) c a1)"},
            {"left+ctrl: copy after", "a1", "c", "left+ctrl", "root(a(a1 a2) b(b1(b11)) c a1)"},
            {"left: next is source, before", "b", "a", "left", "root(b(b1(b11)) a(a1 a2) c)"},
            {"left: onto root, first", "c", "root", "left", "root(c a(a1 a2) b(b1(b11)))"},
            {"left: root's first onto root", "a", "root", "left", "root(b(b1(b11)) c a(a1 a2))"},
            {"left: parent of first child", "a1", "a", "left", same},
            {"right: copy child", "c", "a1", "right CopyChild", "root(a(a1(c) a2) b(b1(b11)) c)"},
            {"right: move previous", "c", "a1", "right MovePrevious",
             "root(a(c a1 a2) b(b1(b11)))"},
            {"right: copy next", "b1", "a2", "right CopyNext",
             "root(a(a1 a2 b1(b11)) b(b1(b11)) c)"},
            {"right: move next", "a1", "b", "right MoveNext", "root(a(a2) b(b1(b11)) a1 c)"},
            {"right: cancel", "c", "a1", "right Cancel", same},
            {"itself, left: indent", "b", "", "left IndentRight", "root(a(a1 a2 b(b1(b11))) c)"},
            {"itself, left: unindent", "a2", "", "left IndentLeft", "root(a(a1) a2 b(b1(b11)) c)"},
            {"itself, left: indent not permitted", "a1", "", "left IndentRight", same},
            {"itself, left: root", "root", "", "left IndentRight", same},
            {"itself, right: indent", "a2", "", "right IndentRight",
             "root(a(a1(a2)) b(b1(b11)) c)"},
            {"itself, right: unindent", "b11", "", "right IndentLeft",
             "root(a(a1 a2) b(b1 b11) c)"},
        });
    }
    void drops() {
        QFETCH(QString, source);
        QFETCH(QString, target);
        QFETCH(QString, how);
        QFETCH(QString, expected);
        const bool itself = target.isEmpty();
        const bool left = how.startsWith(QLatin1String("left"));
        const bool right = how.endsWith(QLatin1String("Right")); // onto itself: the direction
        const int button = left ? modDrag::kLeftButton : modDrag::kRightButton;
        const bool changed = expected != kSampleShape;
        FakeMainWindow frm; // the confirmation menu picks the row's choice
        frm.MenuPicks << QStringLiteral("mnuConfirm") + how.section(QLatin1Char(' '), 1);
        Node *src = entry(source);
        Node *dst = itself ? src : entry(target);
        // The same drop on a read-only document changes nothing and asks nothing.
        m_doc->doc.bReadOnly = true;
        modDrag::DragPress(&m_doc->doc, src, button);
        modDrag::DragStart(dst, itself ? left && right : true, !left, button);
        modDrag::DragDrop(&m_doc->doc, dst);
        m_doc->doc.bReadOnly = false;
        QVERIFY(frm.MenusShown.isEmpty() && frm.Asked.isEmpty());
        QVERIFY(!m_doc->doc.m_bDataChanged);
        QCOMPARE(TreeShape(root()), kSampleShape);
        modDrag::g_bDragCopy = itself; // a drop onto itself never copies
        modDrag::DragPress(&m_doc->doc, src, button);
        QCOMPARE(m_doc->nodes().SelectedItem(), src);
        const modDrag::IndentPermissions p = modDrag::PermittedIndents(src);
        if (itself) { // over the source the pointer shows whether the direction is permitted
            QCOMPARE(modDrag::DropValid(src, src, right), right ? p.right : p.left);
        }
        // Ctrl counts when the drag starts; the popup's choice overrides it.
        const bool copyKey = itself ? true : how.endsWith(QLatin1String("ctrl")) || !left;
        QVERIFY(modDrag::DragStart(dst, itself ? left && right : true, copyKey, button));
        modDrag::DragDrop(&m_doc->doc, dst);
        QCOMPARE(TreeShape(root()), expected);
        QCOMPARE(frm.MenusShown.size(), left ? 0 : 1);
        QVERIFY(!modDrag::g_nodDragSource);
        QVERIFY(!itself || !modDrag::g_bDragCopy);
        // Every drop that changed the tree marks the document changed.
        QCOMPARE(m_doc->doc.m_bDataChanged, changed);
        if (itself && !left) {
            const modDrag::ConfirmMenu m = modDrag::ConfirmMenuFor(p);
            QCOMPARE(frm.MenusShown[0],
                     QStringLiteral("mnuConfirmIndent:") +
                         (m.indentRight ? QStringLiteral(" mnuConfirmIndentRight") : QString()) +
                         (m.indentLeft ? QStringLiteral(" mnuConfirmIndentLeft") : QString()) +
                         QStringLiteral(" mnuConfirmIndentCancel"));
        }
        checkTreeWhole();
    }
    void dropOntoAnotherDocumentIsReported() {
        TestDocument other(false);
        BuildOutline(other.doc, QStringLiteral("root\n  x\n"));
        modDrag::DragPress(&m_doc->doc, entry("b"), modDrag::kLeftButton);
        modDrag::DragStart(nullptr, true, false, modDrag::kLeftButton);
        modDrag::DragDrop(&m_doc->doc, FindEntry(other.nodes(), QStringLiteral("x")));
        QCOMPARE(TreeShape(root()), kSampleShape); // nothing copied, nothing removed
        QCOMPARE(TreeShape(other.nodes().Item(1)), QStringLiteral("root(x)"));
        QVERIFY(m_log->content().contains(QStringLiteral("Error 5 - ")));
        QVERIFY(!modDrag::g_nodDragSource);
        checkTreeWhole();
    }

private:
    std::unique_ptr<ScopedLog> m_log;
    std::unique_ptr<TestDocument> m_doc;
    Node *entry(const QString &label) { return FindEntry(m_doc->nodes(), label); }
    Node *root() { return m_doc->nodes().Item(1)->Root(); }
    void select(const QString &label) {
        if (!label.isEmpty()) {
            NodeSelect(&m_doc->doc, entry(label));
        }
    }
    void checkTreeWhole() {
        QCOMPARE(TreeProblemsAfterRenumbering(m_doc->nodes()), QStringList());
        QCOMPARE(g_iActionDepth, 0);
        QVERIFY(m_doc->nodes().Visible());
        QVERIFY(m_doc->pane->Visible());
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(TestOutline)
#include "tst_outline.moc"
