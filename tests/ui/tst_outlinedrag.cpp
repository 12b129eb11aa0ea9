// Dragging entries in a document window's outline with real mouse events.
#include "document/Document.h"
#include "editor/OutlineDragUi.h"
#include "editor/OutlineModel.h"
#include "editor/frmDocument.h"
#include "outline/modDrag.h"
#include "support/FakeDocument.h"
#include "support/FakeMainWindow.h"
#include "support/TreeText.h"

#include <QTreeView>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

// A shown window with "root(a(a1) b c)" fully expanded, the active document.
struct Window {
    frmDocument w;
    FakeMainWindow frm; // picks the confirmation menu's answer, records what it offered
    explicit Window(const QString &answer = QString()) {
        BuildOutline(w.document(), u"root\n  a\n    a1\n  b\n  c\n"_s);
        w.resize(600, 400);
        w.show();
        Documents::SetActive(&w.document());
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        w.trvOutline()->expandAll();
        frm.MenuPicks << answer;
    }
    ~Window() { Documents::SetActive(nullptr); }
    QString shape() { return TreeShape(w.document().trvOutline().topNodes().front()); }
    QPoint at(const QString &label, int dx = 0) {
        Node *n = FindEntry(w.document().trvOutline(), label);
        const QRect r = w.trvOutline()->visualRect(w.model()->indexFromNode(n));
        return QPoint(r.left() + 12 + dx, r.center().y());
    }
    void send(QEvent::Type type, QPoint pos, Qt::MouseButton button, Qt::MouseButtons held,
              Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QWidget *vp = w.trvOutline()->viewport();
        QMouseEvent e(type, pos, vp->mapToGlobal(pos), button, held, mods);
        QCoreApplication::sendEvent(vp, &e);
    }
    // Presses on one entry, moves in steps to the drop point and releases there.
    void drag(const QString &from, QPoint to, Qt::MouseButton button,
              Qt::KeyboardModifiers mods = Qt::NoModifier) {
        const QPoint start = at(from);
        send(QEvent::MouseButtonPress, start, button, button, mods);
        send(QEvent::MouseMove, (start + to) / 2, Qt::NoButton, button, mods);
        send(QEvent::MouseMove, to, Qt::NoButton, button, mods);
        send(QEvent::MouseButtonRelease, to, button, Qt::NoButton, mods);
    }
};

} // namespace

class TestOutlineDrag : public QObject {
    Q_OBJECT
private slots:
    void leftDrags_data();
    void leftDrags();
    void staysWithinThreshold();
    void escapeCancels();
    void rightDragAsks_data();
    void rightDragAsks();
};

void TestOutlineDrag::leftDrags_data() {
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("onto");
    QTest::addColumn<int>("dx"); // horizontal offset of the drop from the target's label
    QTest::addColumn<bool>("ctrl");
    QTest::addColumn<QString>("expected");
    QTest::newRow("move after the target") << "c"
                                           << "a1" << 0 << false << "root(a(a1 c) b)";
    QTest::newRow("ctrl at the start copies") << "c"
                                              << "a1" << 0 << true << "root(a(a1 c) b c)";
    QTest::newRow("onto its own child: nothing") << "a"
                                                 << "a1" << 0 << false << "root(a(a1) b c)";
    QTest::newRow("onto the root: first under it") << "c"
                                                   << "root" << 0 << false << "root(c a(a1) b)";
    QTest::newRow("onto itself, moved right: indent") << "b"
                                                      << "b" << 40 << false << "root(a(a1 b) c)";
}

void TestOutlineDrag::leftDrags() {
    QFETCH(QString, from);
    QFETCH(QString, onto);
    QFETCH(int, dx);
    QFETCH(bool, ctrl);
    QFETCH(QString, expected);
    Window t;
    t.drag(from, t.at(onto, dx), Qt::LeftButton, ctrl ? Qt::ControlModifier : Qt::NoModifier);
    QCOMPARE(t.shape(), expected);
    QVERIFY(!modDrag::g_nodDragSource.get());
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestOutlineDrag::staysWithinThreshold() {
    Window t;
    // 100 twips are about 7 pixels at 96 dpi: a shorter move is a click, not a drag.
    const QPoint start = t.at(u"c"_s);
    t.send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    t.send(QEvent::MouseMove, start + QPoint(5, -5), Qt::NoButton, Qt::LeftButton);
    QVERIFY(!t.w.findChild<OutlineDragHandler *>()->dragging());
    t.send(QEvent::MouseButtonRelease, start + QPoint(5, -5), Qt::LeftButton, Qt::NoButton);
    QCOMPARE(t.shape(), u"root(a(a1) b c)"_s);
    QCOMPARE(t.w.document().trvOutline().SelectedItem()->Text(), u"c"_s);
}

void TestOutlineDrag::escapeCancels() {
    Window t;
    const QPoint start = t.at(u"c"_s), to = t.at(u"a1"_s);
    t.send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    t.send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
    QVERIFY(t.w.findChild<OutlineDragHandler *>()->dragging());
    QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::DragMoveCursor);
    QTest::keyClick(t.w.trvOutline(), Qt::Key_Escape);
    t.send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    QCOMPARE(t.shape(), u"root(a(a1) b c)"_s);
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestOutlineDrag::rightDragAsks_data() {
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("onto");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("offered");
    QTest::addColumn<QString>("expected");
    const QString all = u"mnuConfirmCopyPrevious mnuConfirmCopyNext mnuConfirmCopyChild "
                        "mnuConfirmMovePrevious mnuConfirmMoveNext mnuConfirmMoveChild "
                        "mnuConfirmCancel"_s;
    QTest::newRow("copy as child") << "c"
                                   << "a1"
                                   << "mnuConfirmCopyChild" << all << "root(a(a1(c)) b c)";
    QTest::newRow("cancel changes nothing") << "c"
                                            << "a1"
                                            << "mnuConfirmCancel" << all << "root(a(a1) b c)";
    // b's next sibling is c: the placements before c and its copies are withdrawn.
    QTest::newRow("only permitted places offered")
        << "c"
        << "b"
        << "mnuConfirmMovePrevious"
        << "mnuConfirmCopyPrevious mnuConfirmCopyChild mnuConfirmMovePrevious "
           "mnuConfirmMoveChild mnuConfirmCancel"
        << "root(a(a1) c b)";
}

void TestOutlineDrag::rightDragAsks() {
    QFETCH(QString, from);
    QFETCH(QString, onto);
    QFETCH(QString, answer);
    QFETCH(QString, offered);
    QFETCH(QString, expected);
    Window t(answer);
    t.drag(from, t.at(onto), Qt::RightButton);
    QCOMPARE(t.frm.MenusShown, QStringList{u"mnuConfirm: "_s + offered});
    QCOMPARE(t.shape(), expected);
}

QTEST_MAIN(TestOutlineDrag)
#include "tst_outlinedrag.moc"
