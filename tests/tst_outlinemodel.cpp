// The item model over the entry tree, checked by Qt's model tester while the tree changes.

#include "editor/OutlineModel.h"
#include "outline/modNodes.h"
#include "support/FakeDocument.h"
#include "support/TreeText.h"

#include <QAbstractItemModelTester>
#include <QPixmap>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace modNodes;

class TestOutlineModel : public QObject {
    Q_OBJECT
private slots:
    // The model follows the tree from its notifications alone, checked by Qt's model tester through
    // random changes, every fourth run of ten in one batch; a persistent index keeps its entry
    // through every change up to the next reset.
    void followsTheTree() {
        TestDocument t;
        BuildOutline(t.doc, "root\n  a\n    a1\n    a2\n  b\n    b1\n      b11\n  c\n");
        OutlineModel model(t.nodes());
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        QRandomGenerator rng(11);
        NodeRef tracked;
        QPersistentModelIndex trackedIndex; // until the next reset
        qsizetype trackedResets = 0;
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
            if (step % 40 == 39) { // the batch ends in one reset
                QVERIFY(model.inBatch());
                const qsizetype before = resets.count();
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
    void batchCollapsesIntoOneReset() {
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
        QCOMPARE(inserted.count() + changed.count(), 0);
        QCOMPARE(resets.count(), 1);
        QCOMPARE(ended.count(), 1);
        QCOMPARE(model.rowCount(model.index(0, 0)), 10000);
        QCOMPARE(model.index(9999, 0, model.index(0, 0)).data().toString(), QString("9999"));
        // Outside a batch every insert is its own signal again.
        NodeInsert(&t.doc, relChild, root);
        QCOMPARE(inserted.count(), 1);
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
        // Renaming through the model renames the entry; a read-only document refuses.
        QVERIFY(ix.flags() & Qt::ItemIsEditable);
        QVERIFY(model.setData(ix, QString("renamed")));
        QCOMPARE(ix.data(Qt::EditRole).toString(), QString("renamed"));
        model.setEditable(false);
        QVERIFY(!(ix.flags() & Qt::ItemIsEditable));
        QVERIFY(!model.setData(ix, QString("again")));
        QCOMPARE(x->Text(), QString("renamed"));
    }
    void modelLeavesTreeWhenDestroyed() {
        auto nodes = std::make_unique<Nodes>();
        std::make_unique<OutlineModel>(*nodes).reset();
        QCOMPARE(nodes->observer(), nullptr);
    }
};

QTEST_MAIN(TestOutlineModel)
#include "tst_outlinemodel.moc"
