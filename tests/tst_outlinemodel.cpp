// The item model over the entry tree, checked by Qt's model tester while the tree changes.

#include "editor/OutlineModel.h"
#include "outline/modNodes.h"
#include "support/FakeDocument.h"
#include "support/TreeText.h"

#include <QAbstractItemModelTester>
#include <QPixmap>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <memory>

using namespace modNodes;

namespace {

// Depth-first list of labels as the model shows them ("a", "  b" ...).
QStringList modelOutline(const QAbstractItemModel &m, const QModelIndex &parent = {},
                         int depth = 0) {
    QStringList out;
    for (int r = 0; r < m.rowCount(parent); ++r) {
        const QModelIndex i = m.index(r, 0, parent);
        out << QString(depth * 2, QLatin1Char(' ')) + i.data().toString();
        out << modelOutline(m, i, depth + 1);
    }
    return out;
}

QStringList treeOutline(Node *node, int depth = 0) {
    QStringList out;
    for (; node; node = node->Next()) {
        out << QString(depth * 2, QLatin1Char(' ')) + node->Text();
        out << treeOutline(node->Child(), depth + 1);
    }
    return out;
}

const char *kOutline = "root\n"
                       "  b\n"
                       "    b1\n"
                       "    b2\n"
                       "  a\n"
                       "  c\n"
                       "    c1\n";

} // namespace

class TestOutlineModel : public QObject {
    Q_OBJECT
private slots:
    void changesKeepModelValid_data();
    void changesKeepModelValid();
    void batchCollapsesIntoOneReset();
    void rolesAndFlags();
    void reorderKeepsPersistentIndexes();
    void modelLeavesTreeWhenDestroyed();
};

using Change = std::function<void(Document &, Nodes &)>;
Q_DECLARE_METATYPE(Change)

void TestOutlineModel::changesKeepModelValid_data() {
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("batched");

    const Change insertMany = [](Document &d, Nodes &n) {
        Node *b = FindEntry(n, "b");
        NodeInsert(&d, relChild, b)->setText("b3");
        NodeInsert(&d, relPrevious, FindEntry(n, "b1"))->setText("b0");
        NodeInsert(&d, relFirst, FindEntry(n, "c1"))->setText("c0");
        NodeInsert(&d, relNext, FindEntry(n, "a"))->setText("a2");
        NodeInsert(&d, relChild, FindEntry(n, "a2"))->setText("a21");
    };
    const Change moveWithPaste = [](Document &d, Nodes &n) {
        n.setSelectedItem(FindEntry(n, "c1"));
        NodeRef copied = FindEntry(n, "b");
        NodePaste(&d, copied, true);
    };
    const Change sortAll = [](Document &, Nodes &n) { NodeSortAll(n.topNodes().front(), true); };
    const Change renameUnderSorted = [](Document &, Nodes &n) {
        NodeSortAll(n.topNodes().front(), true);
        FindEntry(n, "a")->setText("zz");
        FindEntry(n, "b2")->setText("0");
    };
    const Change deleteSome = [](Document &d, Nodes &n) {
        NodeDelete(&d, FindEntry(n, "b1"));
        NodeDelete(&d, FindEntry(n, "c"));
        NodeDelete(&d, FindEntry(n, "b"));
    };
    const Change clearAndRebuild = [](Document &d, Nodes &n) {
        n.Clear();
        BuildOutline(d, "x\n  y\n  z\n");
    };
    const Change tagExpandSelect = [](Document &d, Nodes &n) {
        NodeTagOn(FindEntry(n, "b2"));
        NodeExpandAll(n.topNodes().front());
        NodeSelectFull(&d, FindEntry(n, "c1"));
        NodeCollapseAll(n.topNodes().front());
    };

    const struct {
        const char *name;
        Change change;
    } rows[] = {{"insert", insertMany},
                {"move", moveWithPaste},
                {"sort", sortAll},
                {"rename under sorted", renameUnderSorted},
                {"delete", deleteSome},
                {"clear", clearAndRebuild},
                {"tag expand select", tagExpandSelect}};
    for (const auto &row : rows) {
        QTest::newRow(row.name) << row.change << false;
        QTest::newRow(qPrintable(QString(row.name) + " in batch")) << row.change << true;
    }
}

void TestOutlineModel::changesKeepModelValid() {
    QFETCH(Change, change);
    QFETCH(bool, batched);
    TestDocument t;
    BuildOutline(t.doc, kOutline);
    OutlineModel model(t.nodes());
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);

    if (batched) {
        NodeActionStart();
    }
    change(t.doc, t.nodes());
    if (batched) {
        QCOMPARE(model.inBatch(), true);
        NodeActionEnd();
        QCOMPARE(model.inBatch(), false);
    }
    QVERIFY(!QTest::currentTestFailed());
    QCOMPARE(modelOutline(model),
             treeOutline(t.nodes().topNodes().empty() ? nullptr : t.nodes().topNodes().front()));
    if (batched) {
        QCOMPARE(resets.count(), 1);
    }
}

void TestOutlineModel::batchCollapsesIntoOneReset() {
    TestDocument t;
    BuildOutline(t.doc, "root\n");
    OutlineModel model(t.nodes());
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy ended(&model, &OutlineModel::batchEnded);

    NodeActionStart();
    NodeActionStart(); // nested: only the outermost pair counts
    Node *root = t.nodes().topNodes().front();
    for (int i = 0; i < 10000; ++i) {
        NodeInsert(&t.doc, relChild, root)->setText(QString::number(i));
    }
    NodeActionEnd();
    QCOMPARE(resets.count(), 0);
    NodeActionEnd();

    QCOMPARE(inserted.count(), 0);
    QCOMPARE(changed.count(), 0);
    QCOMPARE(resets.count(), 1);
    QCOMPARE(ended.count(), 1);
    QCOMPARE(model.rowCount(model.index(0, 0)), 10000);
    QCOMPARE(model.index(9999, 0, model.index(0, 0)).data().toString(), QString("9999"));

    // Outside a batch every insert is its own signal again.
    NodeInsert(&t.doc, relChild, root);
    QCOMPARE(inserted.count(), 1);
}

void TestOutlineModel::rolesAndFlags() {
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

    // Renaming through the model renames the entry; a read-only document refuses.
    QVERIFY(ix.flags() & Qt::ItemIsEditable);
    QVERIFY(model.setData(ix, QString("renamed")));
    QCOMPARE(x->Text(), QString("renamed"));
    QCOMPARE(ix.data(Qt::EditRole).toString(), QString("renamed"));
    model.setEditable(false);
    QVERIFY(!(ix.flags() & Qt::ItemIsEditable));
    QVERIFY(!model.setData(ix, QString("again")));
    QCOMPARE(x->Text(), QString("renamed"));
}

void TestOutlineModel::reorderKeepsPersistentIndexes() {
    TestDocument t;
    BuildOutline(t.doc, kOutline);
    OutlineModel model(t.nodes());
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const QPersistentModelIndex pa = model.indexFromNode(FindEntry(t.nodes(), "a"));
    const QPersistentModelIndex pc1 = model.indexFromNode(FindEntry(t.nodes(), "c1"));
    QCOMPARE(pa.row(), 1);
    NodeSortAll(t.nodes().topNodes().front(), true);
    QCOMPARE(pa.row(), 0);
    QCOMPARE(pa.data().toString(), QString("a"));
    QCOMPARE(pc1.data().toString(), QString("c1"));
    QCOMPARE(pc1.parent().row(), 2);
}

void TestOutlineModel::modelLeavesTreeWhenDestroyed() {
    auto nodes = std::make_unique<Nodes>();
    std::make_unique<OutlineModel>(*nodes).reset();
    QCOMPARE(nodes->observer(), nullptr);
}

QTEST_MAIN(TestOutlineModel)
#include "tst_outlinemodel.moc"
