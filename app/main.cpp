#include <QApplication>
#include <QHeaderView>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTextEdit>
#include <QTreeView>

int main(int argc, char *argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Mavrolen"));

    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Mavrolen"));
    auto *area = new QMdiArea(&window);
    window.setCentralWidget(area);

    auto *splitter = new QSplitter;
    auto *model = new QStandardItemModel(splitter);
    model->appendRow(new QStandardItem(QString()));
    auto *tree = new QTreeView;
    tree->setModel(model);
    tree->header()->hide();
    tree->setUniformRowHeights(true);
    splitter->addWidget(tree);
    splitter->addWidget(new QTextEdit);
    QMdiSubWindow *sub = area->addSubWindow(splitter);
    sub->setWindowTitle(QStringLiteral("Document 1"));
    sub->resize(560, 360);

    window.resize(800, 560);
    window.show();
    return app.exec();
}
