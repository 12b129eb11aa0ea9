#include "help/frmHelp.h"

#include "help/modHelp.h"
#include "util/ErrorLog.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHelpContentModel>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpIndexWidget>
#include <QHelpLink>
#include <QHelpSearchEngine>
#include <QHelpSearchQueryWidget>
#include <QHelpSearchResultWidget>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScreen>
#include <QSplitter>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTextBrowser>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWhatsThis>

using namespace Qt::StringLiterals;

QPointer<frmHelp> frmHelp::s_instance;

namespace {

// Pages come from the collection; links elsewhere go to the desktop's browser.
class HelpBrowser : public QTextBrowser {
public:
    HelpBrowser(QHelpEngine *engine, QWidget *parent) : QTextBrowser(parent), m_pEngine(engine) {
        setOpenLinks(false);
        connect(this, &QTextBrowser::anchorClicked, this, [this](const QUrl &url) {
            if (url.scheme() == u"qthelp"_s || url.isRelative()) {
                setSource(source().resolved(url));
            } else {
                QDesktopServices::openUrl(url);
            }
        });
    }

    QVariant loadResource(int type, const QUrl &name) override {
        const QUrl url = name.isRelative() ? source().resolved(name) : name;
        if (url.scheme() == u"qthelp"_s) {
            return m_pEngine->fileData(url);
        }
        return QTextBrowser::loadResource(type, url);
    }

private:
    QHelpEngine *m_pEngine;
};

// The search index is kept beside the collection. An installed collection sits in a folder the
// user cannot write, so it is read from a copy (with its documentation files) in the cache.
QString WritableCollection(const QString &file) {
    const QFileInfo info(file);
    if (QFileInfo(info.absolutePath()).isWritable()) {
        return file;
    }
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                          u"/Mavrolen/help"_s;
    if (!QDir().mkpath(cache)) {
        return file;
    }
    const QDir source = info.absoluteDir();
    QStringList names = source.entryList({u"*.qch"_s}, QDir::Files);
    names << info.fileName();
    for (const QString &name : names) {
        const QFileInfo from(source.filePath(name));
        const QFileInfo to(cache + u'/' + name);
        if (!to.exists() || to.size() != from.size() || to.lastModified() < from.lastModified()) {
            QFile::remove(to.filePath());
            if (!QFile::copy(from.filePath(), to.filePath())) {
                return file;
            }
            QFile(to.filePath()).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        }
    }
    return cache + u'/' + info.fileName();
}

// The pop-up help of a document window's controls, given on entering what's-this mode.
void GiveDocumentWindowHelp() {
    auto *area = qobject_cast<QMdiArea *>(
        QApplication::activeWindow() ? QApplication::activeWindow()->findChild<QMdiArea *>()
                                     : nullptr);
    QMdiSubWindow *sub = area ? area->activeSubWindow() : nullptr;
    if (!sub) {
        return;
    }
    const QList<std::pair<QString, QString>> texts = {
        {u"trvOutline"_s,
         u"<b>Outline</b><br>The document's entries. Click an entry to show its text; Alt+A, "
         "Alt+B and Alt+I insert entries, Alt with the arrow keys moves them, F2 renames one. "
         "Drag an entry to move it (hold Ctrl to copy it)."_s},
        {u"txtRTF"_s, u"<b>Text</b><br>The selected entry's text. Everything typed here is kept "
                      "with the entry; the Edit menu formats it."_s},
        {u"imgSplitter"_s, u"<b>Splitter</b><br>Drag it to share the window between the outline "
                           "and the text; double-click it to fit the outline to its labels."_s},
    };
    for (const auto &[name, text] : texts) {
        if (QWidget *w = sub->findChild<QWidget *>(name)) {
            if (w->whatsThis().isEmpty()) {
                w->setWhatsThis(text);
            }
        }
    }
}

// Shift+F1, the desktop's key for pop-up help, anywhere in the program.
class WhatsThisKey : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
            const auto *key = static_cast<QKeyEvent *>(event);
            if (key->key() == Qt::Key_F1 && key->modifiers() == Qt::ShiftModifier &&
                !QWhatsThis::inWhatsThisMode()) {
                event->accept();
                if (event->type() == QEvent::KeyPress) {
                    modHelp::HelpWhatsThis();
                }
                return true;
            }
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

frmHelp::frmHelp(QHelpEngine *engine, const QString &file)
    : QWidget(nullptr, Qt::Window), m_pEngine(engine), m_sFile(file) {
    setObjectName(u"frmHelp"_s);
    setWindowTitle(u"Mavrolen Help"_s);
    setWindowIcon(QApplication::windowIcon());
    setAttribute(Qt::WA_DeleteOnClose);
    // The program ends when its main window closes, also while the help is open.
    setAttribute(Qt::WA_QuitOnClose, false);
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { delete this; });
    engine->setParent(this);

    m_pBrowser = new HelpBrowser(engine, this);
    m_pBrowser->setObjectName(u"txtPage"_s);

    auto *contents = engine->contentWidget();
    contents->setObjectName(u"trvContents"_s);
    connect(contents, &QHelpContentWidget::linkActivated, this, &frmHelp::ShowPage);
    // The guide's pages show at once; their sections stay folded.
    connect(engine->contentModel(), &QHelpContentModel::contentsCreated, contents, [this] {
        m_pEngine->contentWidget()->expandToDepth(0);
        SelectInContents(m_pBrowser->source());
    });

    auto *indexPage = new QWidget(this);
    auto *indexFilter = new QLineEdit(indexPage);
    indexFilter->setPlaceholderText(u"Type a keyword"_s);
    indexFilter->setClearButtonEnabled(true);
    QHelpIndexWidget *index = engine->indexWidget();
    index->setObjectName(u"lstIndex"_s);
    auto *indexLayout = new QVBoxLayout(indexPage);
    indexLayout->setContentsMargins(0, 0, 0, 0);
    indexLayout->addWidget(indexFilter);
    indexLayout->addWidget(index);
    connect(indexFilter, &QLineEdit::textChanged, index,
            [index](const QString &text) { index->filterIndices(text); });
    connect(indexFilter, &QLineEdit::returnPressed, index, &QHelpIndexWidget::activateCurrentItem);
    connect(index, &QHelpIndexWidget::documentActivated, this,
            [this](const QHelpLink &link, const QString &) { ShowPage(link.url); });
    connect(index, &QHelpIndexWidget::documentsActivated, this,
            [this](const QList<QHelpLink> &links, const QString &) {
                if (!links.isEmpty()) {
                    ShowPage(links.first().url);
                }
            });

    QHelpSearchEngine *search = engine->searchEngine();
    auto *searchPage = new QWidget(this);
    auto *searchLayout = new QVBoxLayout(searchPage);
    searchLayout->setContentsMargins(0, 0, 0, 0);
    QHelpSearchQueryWidget *query = search->queryWidget();
    searchLayout->addWidget(query);
    searchLayout->addWidget(search->resultWidget(), 1);
    connect(query, &QHelpSearchQueryWidget::search, search,
            [search, query] { search->search(query->searchInput()); });
    connect(search->resultWidget(), &QHelpSearchResultWidget::requestShowLink, this,
            &frmHelp::ShowPage);

    m_pTabs = new QTabWidget(this);
    m_pTabs->addTab(contents, u"&Contents"_s);
    m_pTabs->addTab(indexPage, u"&Index"_s);
    m_pTabs->addTab(searchPage, u"&Search"_s);

    auto makeButton = [this](const QString &text, const QString &tip) {
        auto *b = new QToolButton(this);
        b->setText(text);
        b->setToolTip(tip);
        b->setAutoRaise(true);
        return b;
    };
    QToolButton *back = makeButton(u"\u25C0 Back"_s, u"Back (Alt+Left)"_s);
    QToolButton *forward = makeButton(u"Forward \u25B6"_s, u"Forward (Alt+Right)"_s);
    QToolButton *home = makeButton(u"Contents"_s, u"The contents page"_s);
    back->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Left));
    forward->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Right));
    back->setEnabled(false);
    forward->setEnabled(false);
    connect(back, &QToolButton::clicked, m_pBrowser, &QTextBrowser::backward);
    connect(forward, &QToolButton::clicked, m_pBrowser, &QTextBrowser::forward);
    connect(home, &QToolButton::clicked, this, [this] { ShowContext(modHelp::kContentsContext); });
    connect(m_pBrowser, &QTextBrowser::backwardAvailable, back, &QWidget::setEnabled);
    connect(m_pBrowser, &QTextBrowser::sourceChanged, this, &frmHelp::SelectInContents);
    connect(m_pBrowser, &QTextBrowser::forwardAvailable, forward, &QWidget::setEnabled);

    auto *pageSide = new QWidget(this);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(back);
    buttons->addWidget(forward);
    buttons->addWidget(home);
    buttons->addStretch();
    auto *pageLayout = new QVBoxLayout(pageSide);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->addLayout(buttons);
    pageLayout->addWidget(m_pBrowser, 1);

    auto *splitter = new QSplitter(this);
    splitter->addWidget(m_pTabs);
    splitter->addWidget(pageSide);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({240, 560});
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(splitter);

    QSize size(820, 600);
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        size = size.boundedTo(screen->availableSize() * 9 / 10);
    }
    resize(size);

    // The search index is built once for a collection and kept with it.
    search->scheduleIndexDocumentation();
}

QString frmHelp::Open(const QString &file, int context) {
    PROC("frmHelp Open");
    if (s_instance && s_instance->m_sFile == file) {
        s_instance->ShowContext(context);
        return {};
    }
    if (!QFileInfo(file).isFile()) {
        return u"The help file "_s + file + u" does not exist."_s;
    }
    auto *engine = new QHelpEngine(WritableCollection(file));
    QString error;
    if (!engine->setupData()) {
        error = engine->error();
    } else if (engine->registeredDocumentations().isEmpty()) {
        error = u"The help file "_s + file + u" holds no pages."_s;
    }
    if (!error.isEmpty()) {
        delete engine;
        return error;
    }
    if (s_instance) {
        s_instance->close();
    }
    s_instance = new frmHelp(engine, file);
    s_instance->ShowContext(context);
    return {};
}

frmHelp *frmHelp::Instance() {
    return s_instance;
}

void frmHelp::EnterWhatsThisMode() {
    GiveDocumentWindowHelp();
    QWhatsThis::enterWhatsThisMode();
}

void frmHelp::InstallWhatsThisKey() {
    static QPointer<WhatsThisKey> key;
    if (!key && qApp) {
        key = new WhatsThisKey(qApp);
        qApp->installEventFilter(key);
    }
}

void frmHelp::ShowContext(int context) {
    PROC("frmHelp ShowContext");
    QList<QHelpLink> links =
        m_pEngine->documentsForIdentifier(u"context"_s + QString::number(context));
    if (links.isEmpty()) {
        links = m_pEngine->documentsForIdentifier(u"context"_s +
                                                  QString::number(modHelp::kContentsContext));
    }
    if (!links.isEmpty()) {
        ShowPage(links.first().url);
    }
    m_pTabs->setCurrentIndex(0);
    show();
    raise();
    activateWindow();
}

void frmHelp::ShowPage(const QUrl &url) {
    m_pBrowser->setSource(url);
    SelectInContents(url);
}

void frmHelp::SelectInContents(const QUrl &url) {
    QHelpContentWidget *contents = m_pEngine->contentWidget();
    const QModelIndex at = contents->indexOf(url);
    if (at.isValid()) {
        contents->setCurrentIndex(at);
    } else {
        contents->selectionModel()->clearSelection();
    }
}
