// The document window: outline, text pane and splitter kept in step with the entry tree, and
// entries dragged in the outline with real mouse events.

#include "document/modDocText.h"
#include "editor/OutlineDragUi.h"
#include "editor/OutlineModel.h"
#include "editor/frmDocument.h"
#include "editor/modSplit.h"
#include "editor/modView.h"
#include "outline/modDrag.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "richtext/RtfReader.h"
#include "support/FakeDocument.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "support/TreeText.h"
#include "util/MainWindowHost.h"
#include "util/modGlobals.h"

#include <QtTest>
#include <QtWidgets>

using namespace modNodes;
using namespace Qt::StringLiterals;

namespace {

QString storedPlain(Node *node) {
    return modDocText::PlainTextStripped(node->Tag()).trimmed();
}

// The labels of the rows the outline shows, top to bottom, indented two blanks per level.
QStringList shownRows(QTreeView *view) {
    QStringList out;
    for (QModelIndex i = view->model()->index(0, 0); i.isValid(); i = view->indexBelow(i)) {
        int depth = 0;
        for (QModelIndex p = i.parent(); p.isValid(); p = p.parent()) {
            ++depth;
        }
        out << QString(depth * 2, QLatin1Char(' ')) + i.data().toString();
    }
    return out;
}

// The rows the tree says are showing: the children of expanded entries.
void treeRows(Node *node, int depth, QStringList &out) {
    for (; node; node = node->Next()) {
        out << QString(depth * 2, QLatin1Char(' ')) + node->Text();
        if (node->Expanded()) {
            treeRows(node->Child(), depth + 1, out);
        }
    }
}

// A shown document window holding a small outline, the active document.
struct Window {
    frmDocument w;
    explicit Window(const QString &outline = "root\n  a\n    a1\n  b\n  c\n") {
        BuildOutline(w.document(), outline);
        w.resize(600, 300);
        w.show();
        Documents::SetActive(&w.document());
        QVERIFY(QTest::qWaitForWindowExposed(&w));
    }
    Nodes &tree() { return w.document().trvOutline(); }
    QModelIndex index(const QString &label) {
        return w.model()->indexFromNode(FindEntry(tree(), label));
    }
};

// A window whose outline is fully expanded, dragged with real mouse events; the main window
// picks the confirmation menu's answer and records what it offered.
struct DragWindow : Window {
    FakeMainWindow frm;
    explicit DragWindow(const QString &answer = QString()) {
        w.resize(600, 400);
        w.trvOutline()->expandAll();
        frm.MenuPicks << answer;
    }
    ~DragWindow() { Documents::SetActive(nullptr); }
    QString shape() { return TreeShape(tree().topNodes().front()); }
    QPoint at(const QString &label, int dx = 0) {
        const QRect r = w.trvOutline()->visualRect(index(label));
        return QPoint(r.left() + 12 + dx, r.center().y());
    }
    void send(QEvent::Type type, QPoint pos, Qt::MouseButton button, Qt::MouseButtons held,
              Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QWidget *vp = w.trvOutline()->viewport();
        QMouseEvent e(type, pos, vp->mapToGlobal(pos), button, held, mods);
        QCoreApplication::sendEvent(vp, &e);
    }
};

} // namespace

class TestDocumentWindow : public QObject {
    Q_OBJECT
private slots:
    void selectionAndTextInStep() {
        Window t;
        FindEntry(t.tree(), "b")->setTag("{\\rtf1\\ansi text of b}");
        FindEntry(t.tree(), "a1")->setTag("{\\rtf1\\ansi text of a1}");

        // Making an entry current selects it, loads its text and marks the document changed.
        t.w.document().m_bDataChanged = false;
        t.w.trvOutline()->setCurrentIndex(t.index("b"));
        QCOMPARE(t.w.buffer()->Text().trimmed(), QString("text of b"));
        QVERIFY(t.w.document().m_bDataChanged);

        // Selecting through the tree moves the view's selection and shows a hidden entry.
        NodeSelectFull(&t.w.document(), FindEntry(t.tree(), "a1"));
        QCOMPARE(t.w.trvOutline()->currentIndex(), t.index("a1"));
        QVERIFY(t.w.trvOutline()->isExpanded(t.index("a")));
        QCOMPARE(t.w.buffer()->Text().trimmed(), QString("text of a1"));

        // Typing stores the text back into the selected entry; the other entry keeps its own.
        QTextCursor c = t.w.txtRTF()->textCursor();
        c.movePosition(QTextCursor::End);
        t.w.txtRTF()->setTextCursor(c);
        QTest::keyClicks(t.w.txtRTF(), " more");
        QCOMPARE(storedPlain(FindEntry(t.tree(), "a1")), QString("text of a1 more"));
        QCOMPARE(storedPlain(FindEntry(t.tree(), "b")), QString("text of b"));

        // While a document is being transferred, changes are neither stored nor marked.
        t.w.document().m_bDataChanged = false;
        g_bDocTransfer = true;
        QTest::keyClicks(t.w.txtRTF(), "X");
        g_bDocTransfer = false;
        QVERIFY(!t.w.document().m_bDataChanged);
        QCOMPARE(storedPlain(FindEntry(t.tree(), "a1")), QString("text of a1 more"));

        // A long text shows its first screenful, and the rest follows by itself, storing nothing;
        // a key typed before then waits for the whole text and goes where the caret is.
        QByteArray rtf = "{\\rtf1\\ansi ";
        for (int i = 0; rtf.size() < RtfReader::LongText; ++i) {
            rtf += "line " + QByteArray::number(i) + "\\par ";
        }
        rtf += "the end}";
        Node *longer = FindEntry(t.tree(), "c");
        longer->setTag(rtf);
        t.w.trvOutline()->setCurrentIndex(t.index("c"));
        QVERIFY(t.w.buffer()->Partial());
        QTRY_VERIFY(!t.w.buffer()->Partial());
        QCOMPARE(longer->Tag(), rtf);
        t.w.trvOutline()->setCurrentIndex(t.index("b"));
        t.w.trvOutline()->setCurrentIndex(t.index("c"));
        QVERIFY(t.w.buffer()->Partial());
        QTest::keyClicks(t.w.txtRTF(), "X");
        QVERIFY(!t.w.buffer()->Partial());
        QVERIFY(storedPlain(longer).startsWith(u"Xline 0"_s));
        QVERIFY(storedPlain(longer).endsWith(u"the end"_s));
    }

    void clickToRename_data() {
        // "b" is selected; one click on `clicked`, with automatic label editing or not.
        QTest::addColumn<bool>("automatic");
        QTest::addColumn<QString>("clicked");
        QTest::addColumn<bool>("edits");
        QTest::newRow("manual, another entry") << false << "c" << false;
        QTest::newRow("manual, the selected entry") << false << "b" << false;
        QTest::newRow("automatic, another entry") << true << "c" << false;
        QTest::newRow("automatic, the selected entry") << true << "b" << true;
    }
    void clickToRename() {
        QFETCH(bool, automatic);
        QFETCH(QString, clicked);
        Window t;
        t.w.document().m_bLabelEditAutomatic = automatic;
        NodeSelectFull(&t.w.document(), FindEntry(t.tree(), "b"));
        t.w.document().m_bDataChanged = false;
        QWidget *viewport = t.w.trvOutline()->viewport();
        QTest::mouseClick(viewport, Qt::LeftButton, {},
                          t.w.trvOutline()->visualRect(t.index(clicked)).center());
        // A click selects and marks the document changed (the selection is saved with it).
        QCOMPARE(t.tree().SelectedItem(), FindEntry(t.tree(), clicked));
        QVERIFY(t.w.document().m_bDataChanged);
        QTest::qWait(QApplication::doubleClickInterval() + 50);
        auto *editor = viewport->findChild<QLineEdit *>();
        QTEST(editor && editor->isVisible(), "edits");
    }

    // The user's expansion in the view reaches the tree (the tree's own reaches the view when an
    // entry is selected, above).
    void expandCollapseInStep() {
        Window t;
        QTreeView *view = t.w.trvOutline();
        Node *a = FindEntry(t.tree(), "a");
        t.w.document().m_bDataChanged = false;
        t.w.document().m_iExpansionLevel = 3;
        view->expand(t.index("root"));
        view->expand(t.index("a"));
        QVERIFY(FindEntry(t.tree(), "root")->Expanded() && a->Expanded());
        QCOMPARE(shownRows(view), QStringList({"root", "  a", "    a1", "  b", "  c"}));
        QVERIFY(t.w.document().m_bDataChanged);
        QCOMPARE(t.w.document().m_iExpansionLevel, -1);
        // Collapsing takes the selection out of the hidden branch.
        NodeSelectFull(&t.w.document(), FindEntry(t.tree(), "a1"));
        view->collapse(t.index("a"));
        QCOMPARE(t.tree().SelectedItem(), a);
        QVERIFY(!a->Expanded());
        QCOMPARE(shownRows(view), QStringList({"root", "  a", "  b", "  c"}));
    }

    void splitterClamps_data() {
        QTest::addColumn<QString>("widthTwips");
        QTest::addColumn<QString>("position"); // empty: fitted to the labels, b's label given
        QTest::addColumn<QString>("label");    // b's label: a letter repeated, "400W"
        // "low" 1500, "high" inner - 1500, "same" the position, "between": the narrowest width in
        // steps of 100 that holds every showing label
        QTest::addColumn<QString>("expected");
        AddRows({
            {"wide, in range", "9000", "4000", "", "same"},
            {"wide, too far left", "9000", "200", "", "low"},
            {"wide, too far right", "9000", "8800", "", "high"},
            {"narrow window, low position", "2000", "0", "", "high"},
            {"fit: short labels", "12000", "", "1x", "low"},
            {"fit: very long label", "12000", "", "400W", "high"},
            {"fit: medium label", "12000", "", "40m", "between"},
        });
    }
    void splitterClamps() {
        QFETCH(QString, widthTwips);
        QFETCH(QString, label);
        QFETCH(QString, expected);
        QFETCH(QString, position);
        const bool fit = position.isEmpty();
        Window t;
        t.w.resize(t.w.toPixels(widthTwips.toDouble()), 300);
        const double inner = t.w.InnerWidth();
        if (!fit) {
            modSplit::SplitSizeControls(t.w, position.toDouble());
        } else {
            FindEntry(t.tree(), "b")->setText(QString(label.chopped(1).toInt(), label.back()));
            FindEntry(t.tree(), "root")->setExpanded(true);
            modView::ViewFitSplit(t.w);
        }
        const double got = t.w.OutlineWidth();
        if (expected == "between") {
            QVERIFY(got > 1500 && got < inner - 1500);
            QCOMPARE(std::fmod(got, 100.0), 0.0);
            QVERIFY(t.w.RequiredOutlineWidth() <= got && t.w.RequiredOutlineWidth() > got - 100);
        } else {
            QCOMPARE(got, expected == "low"    ? 1500
                          : expected == "high" ? inner - 1500
                                               : position.toDouble());
        }
        QCOMPARE(t.w.trvOutline()->width(), std::max(0, t.w.toPixels(got)));
        QCOMPARE(t.w.txtRTF()->x(), t.w.toPixels(got + 40));
        QCOMPARE(t.w.textWidth(), std::max(0.0, inner - (got + 140)));
        if (fit) {
            // With the option on, expanding by hand re-fits; while it is off nothing moves.
            modSplit::SplitSizeControls(t.w, 5000);
            modGlobals::AutoSplit = false;
            t.w.trvOutline()->collapse(t.index("root"));
            QCOMPARE(t.w.OutlineWidth(), 5000.0);
            modGlobals::AutoSplit = true;
            t.w.trvOutline()->expand(t.index("root"));
            modGlobals::AutoSplit = false;
            QCOMPARE(t.w.OutlineWidth(), got);
        }
        // The maximising commands go to the clamped ends.
        modView::ViewMaximiseLeft();
        QCOMPARE(t.w.OutlineWidth(), inner - 1500);
        modView::ViewMaximiseRight();
        QCOMPARE(t.w.OutlineWidth(), inner < 3000 ? inner - 1500 : 1500.0);
    }

    void splitterKeyboardMove_data() {
        QTest::addColumn<QString>(
            "keys"); // l Left, r Right (100 twips each), e Enter, x X, s Escape
        QTest::addColumn<QString>(
            "outcome"); // the panes follow the bar, stay, or it is still moving
        AddRows({{"right twice, enter", "rre", "applied"},
                 {"left, other key", "lx", "applied"},
                 {"right, escape", "rs", "cancelled"},
                 {"right only", "r", "moving"}});
    }
    void splitterKeyboardMove() {
        QFETCH(QString, keys);
        QFETCH(QString, outcome);
        const QHash<QChar, Qt::Key> key{{u'l', Qt::Key_Left},
                                        {u'r', Qt::Key_Right},
                                        {u'e', Qt::Key_Return},
                                        {u'x', Qt::Key_X},
                                        {u's', Qt::Key_Escape}};
        Window t;
        modSplit::SplitSizeControls(t.w, 3000);
        const double start = t.w.OutlineWidth(),
                     moved = start + 100 * (keys.count(u'r') - keys.count(u'l'));
        const int startGrip = t.w.imgSplitter()->x();
        modView::ViewMoveSplit();
        QVERIFY(t.w.document().m_bMovingSplit && t.w.picSplitter()->isVisible());
        for (const QChar k : keys) {
            QTest::keyClick(t.w.picSplitter(), key[k]);
        }
        const bool moving = outcome == u"moving"_s;
        QCOMPARE(t.w.document().m_bMovingSplit, moving);
        QCOMPARE(t.w.picSplitter()->isVisible(), moving);
        QCOMPARE(t.w.BarLeft(), moved);
        QCOMPARE(t.w.OutlineWidth(), outcome == u"applied"_s ? moved : start);
        if (outcome != u"applied"_s) {
            QCOMPARE(t.w.imgSplitter()->x(), startGrip);
        }
    }

    void batchShowsRightTree() {
        Window t("root\n  a\n  b\n");
        QAbstractItemModelTester tester(t.w.model(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        Node *root = FindEntry(t.tree(), "root");
        NodeSelectFull(&t.w.document(), FindEntry(t.tree(), "b"));

        NodeActionStart();
        QVERIFY(!t.w.trvOutline()->updatesEnabled());
        Node *parent = root;
        for (int i = 0; i < 3000; ++i) {
            Node *n = NodeInsert(&t.w.document(), i % 50 == 0 ? relChild : relLast,
                                 i % 50 == 0 ? root : parent);
            n->setText(QString("n%1").arg(i));
            if (i % 50 == 0) {
                NodeInsert(&t.w.document(), relChild, n)->setText(QString("n%1 child").arg(i));
                parent = n->Child();
            }
        }
        NodeDelete(&t.w.document(), FindEntry(t.tree(), "a"));
        NodeExpandAll(root);
        FindEntry(t.tree(), "n50")->setExpanded(false);
        NodeSelectFull(&t.w.document(), FindEntry(t.tree(), "n2999"));
        NodeActionEnd();

        QVERIFY(t.w.trvOutline()->updatesEnabled());
        QStringList expected;
        treeRows(root, 0, expected);
        QCOMPARE(shownRows(t.w.trvOutline()), expected);
        QCOMPARE(t.w.trvOutline()->currentIndex(), t.index("n2999"));
        QVERIFY(!t.w.trvOutline()->isExpanded(t.index("n50")));
    }

    void drags_data() {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("onto");
        QTest::addColumn<QString>("dx"); // horizontal offset of the drop from the target's label
        // "left", "ctrl", "escape" (pressed before the release), "short" (a move of 5 pixels: 100
        // twips are about 7, so it is a click), or the right button's menu choice.
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("offered"); // by the right button's menu
        QTest::addColumn<QString>("expected");
        AddRows({
            {"move after the target", "c", "a1", "0", "left", "", "root(a(a1 c) b)"},
            {"ctrl at the start copies", "c", "a1", "0", "ctrl", "", "root(a(a1 c) b c)"},
            {"onto its own child: nothing", "a", "a1", "0", "left", "", "root(a(a1) b c)"},
            {"onto itself, moved right: indent", "b", "b", "40", "left", "", "root(a(a1 b) c)"},
            {"escape cancels", "c", "a1", "0", "escape", "", "root(a(a1) b c)"},
            {"within the threshold: a click", "c", "c", "0", "short", "", "root(a(a1) b c)"},
            // b's next sibling is c: the placements before c and its copies are withdrawn.
            {"right: only permitted places offered", "c", "b", "0", "mnuConfirmMovePrevious",
             "mnuConfirmCopyPrevious mnuConfirmCopyChild mnuConfirmMovePrevious "
             "mnuConfirmMoveChild "
             "mnuConfirmCancel",
             "root(a(a1) c b)"},
        });
    }
    void drags() {
        QFETCH(QString, from);
        QFETCH(QString, onto);
        QFETCH(QString, dx);
        QFETCH(QString, how);
        QFETCH(QString, offered);
        const bool right = how.startsWith(u"mnu"_s);
        DragWindow t(right ? how : QString());
        const Qt::MouseButton button = right ? Qt::RightButton : Qt::LeftButton;
        const Qt::KeyboardModifiers mods = how == u"ctrl"_s ? Qt::ControlModifier : Qt::NoModifier;
        const QPoint start = t.at(from);
        const QPoint to = how == u"short"_s ? start + QPoint(5, -5) : t.at(onto, dx.toInt());
        t.send(QEvent::MouseButtonPress, start, button, button, mods);
        t.send(QEvent::MouseMove, (start + to) / 2, Qt::NoButton, button, mods);
        t.send(QEvent::MouseMove, to, Qt::NoButton, button, mods);
        QCOMPARE(t.w.findChild<OutlineDragHandler *>()->dragging(), how != u"short"_s);
        if (how == u"escape"_s) {
            QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::DragMoveCursor);
            QTest::keyClick(t.w.trvOutline(), Qt::Key_Escape);
        }
        t.send(QEvent::MouseButtonRelease, to, button, Qt::NoButton, mods);
        QTEST(t.shape(), "expected");
        QCOMPARE(t.frm.MenusShown,
                 right ? QStringList{u"mnuConfirm: "_s + offered} : QStringList());
        QCOMPARE(t.tree().SelectedItem()->Text(), from);
        QVERIFY(!modDrag::g_nodDragSource.get());
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(TestDocumentWindow)
#include "tst_documentwindow.moc"
