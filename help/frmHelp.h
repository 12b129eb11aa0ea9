#pragma once

#include <QPointer>
#include <QWidget>

class QHelpEngine;
class QTabWidget;
class QTextBrowser;
class QUrl;

// The help window, "Mavrolen Help": the guide's contents tree, its index and a full-text search
// beside the page they lead to. One window at a time, opened by the Help menu.
class frmHelp : public QWidget {
    Q_OBJECT

public:
    // The window over an opened collection (see Open).
    frmHelp(QHelpEngine *engine, const QString &file);

    // Opens the collection `file` (a full path) and shows the page of `context`, reusing the open
    // window when it shows the same file. Returns the error's description when the collection
    // cannot be opened (then no window is shown), else empty text.
    static QString Open(const QString &file, int context);
    // The open window, or null.
    static frmHelp *Instance();
    // The next click on a control of a document window shows that control's help.
    static void EnterWhatsThisMode();
    // Binds Shift+F1 to what's-this for the whole application.
    static void InstallWhatsThisKey();

    QString CollectionFile() const { return m_sFile; }
    QHelpEngine *Engine() const { return m_pEngine; }
    QTextBrowser *Browser() const { return m_pBrowser; }
    QTabWidget *Tabs() const { return m_pTabs; }

    // Shows the page of a context number (the contents page for one that is unknown).
    void ShowContext(int context);
    void ShowPage(const QUrl &url);
    // Marks the page's item in the contents tree (none when the page has none).
    void SelectInContents(const QUrl &url);

private:
    QHelpEngine *m_pEngine;
    QString m_sFile;
    QTabWidget *m_pTabs = nullptr;
    QTextBrowser *m_pBrowser = nullptr;

    static QPointer<frmHelp> s_instance;
};
