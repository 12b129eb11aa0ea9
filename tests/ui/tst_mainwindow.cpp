// The main window: menus, toolbar, closing, drops, Window arrangements, the find and
// replace dialog, the help commands with and without the guide's help collection, the question
// what to print, the preview and printing on a PDF printer.
#include "app/frmMain.h"
#include "app/modMain.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modFile.h"
#include "editor/frmDocument.h"
#include "help/frmHelp.h"
#include "help/modHelp.h"
#include "outline/modNodes.h"
#include "print/PrintPages.h"
#include "print/PrintUi.h"
#include "print/frmPreview.h"
#include "search/frmSearch.h"
#include "search/modSearch.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"

#include <QPrinter>
#include <QtHelp>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class TestMainWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        m_settings = new ScopedSettings;
        m_log = new ScopedLog;
    }

    void cleanup() {
        modHelp::g_bUseHelpDocument = false;
        delete frmHelp::Instance();
        DocTest::closeAll();
        delete m_log;
        delete m_settings;
    }

    void menusToolbarAndStatesWithNoDocument() {
        frmMain frm;
        frm.MDIForm_Load();
        QVERIFY(!frm.Item(u"mnuFileBarMRU"_s)->isVisible());
        // The pop-up menus stay off the bar.
        for (QAction *a : frm.menuBar()->actions()) {
            QVERIFY(!a->text().startsWith(u"Confirm"_s));
        }
        // Every button has its picture; of the buttons only New and Open work without a document.
        for (QAction *a : frm.tbToolBar()->actions()) {
            const bool free = a->objectName() == u"New File"_s || a->objectName() == u"Open File"_s;
            QVERIFY2(a->isSeparator() || (!a->icon().pixmap(24, 24).isNull() && a->isVisible() &&
                                          a->isEnabled() == free),
                     qPrintable(a->objectName()));
        }
        // A click on a button without a procedure does nothing and still refreshes.
        frm.tbToolBar_ButtonClick(u"Bold Text"_s);
        frm.tbToolBar_ButtonClick(u"No Such Key"_s);
        QVERIFY(!m_log->content().contains(u"Error"_s));
        // Only items that have a procedure and need no document are available.
        QVERIFY(frm.Item(u"mnuHelpAbout"_s)->isEnabled());
        QVERIFY(frm.Item(u"mnuViewMDITaskbar"_s)->isEnabled());
        for (const QString &name : {u"mnuWindowCascade"_s, u"mnuFileSave"_s,
                                    u"mnuOutlineInsertChild"_s, u"mnuEditFormatBold"_s}) {
            QVERIFY2(!frm.Item(name)->isEnabled(), qPrintable(name));
        }
        // With no document open the program closes without a question, writing its settings.
        FakeMainWindow fake(&frm);
        QVERIFY(frm.close());
        QVERIFY(fake.Asked.isEmpty());
        QVERIFY(m_log->content().contains(u"Session ended at "_s));
        QCOMPARE(modSettings::GetSetting(u"Settings"_s, u"MaxMRUFiles"_s), u"10"_s);
    }

    void dropsOpenFiles_data() {
        QTest::addColumn<QString>("format"); // "urls": the data are names in the current folder
        QTest::addColumn<QString>("data");   // joined by "|"
        QTest::addColumn<QString>("opened"); // the names opened, joined by "|"
        AddRows({
            {"three files in order", "urls", "c.mvd|a.mvd|b b.mvd", "c.mvd|a.mvd|b b.mvd"},
            {"plain text is one name", "text/plain", "not a file name", "not a file name"},
            {"rich text is one name too", "text/rtf", "{\\rtf1 x}", "{\\rtf1 x}"},
            {"image only", "image/png", "\x89PNG", ""},
        });
    }
    void dropsOpenFiles() {
        QFETCH(QString, format);
        QFETCH(QString, data);
        QFETCH(QString, opened);
        // Every name of the table is a file of the current folder, so that it opens.
        QTemporaryDir dir;
        const QString home = QDir::currentPath();
        QDir::setCurrent(dir.path());
        for (const QString &name :
             {u"c.mvd"_s, u"a.mvd"_s, u"b b.mvd"_s, u"not a file name"_s, u"{\\rtf1 x}"_s}) {
            WriteFileBytes(name, "{\\ttf_formatversion 1}\r\n");
        }
        frmMain frm;
        QMimeData mime;
        QList<QUrl> urls;
        for (const QString &name : data.split(u'|')) {
            urls << QUrl::fromLocalFile(dir.filePath(name));
        }
        format == u"urls"_s ? mime.setUrls(urls) : mime.setData(format, data.toUtf8());
        frm.MDIForm_OLEDragDrop(&mime);
        QStringList got, want;
        for (const Document *doc : Documents::All()) {
            got << doc->m_sFile;
        }
        for (const QString &name : opened.split(u'|', Qt::SkipEmptyParts)) {
            want << modMain::FullPathName(name);
        }
        QDir::setCurrent(home);
        QCOMPARE(got, want);
    }

    void arrangements() {
        frmMain frm;
        frm.resize(900, 700);
        frm.MDIForm_Load();
        frm.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frm));
        for (int i = 0; i < 3; ++i) {
            modDoc::DocInit();
        }
        const QList<QMdiSubWindow *> subs = frm.mdiArea()->subWindowList(QMdiArea::CreationOrder);
        QCOMPARE(subs.size(), 3);
        const QRect area = frm.mdiArea()->viewport()->rect();

        for (const bool horizontal : {true, false}) {
            frm.Item(horizontal ? u"mnuWindowTileHorizontal"_s : u"mnuWindowTileVertical"_s)
                ->trigger();
            // Full width, one under the other in creation order; side by side checked as mirrored.
            auto turn = [&](QRect r) {
                return horizontal ? r : QRect(r.y(), r.x(), r.height(), r.width());
            };
            const QRect all = turn(area);
            int next = all.top();
            for (QMdiSubWindow *s : subs) {
                const QRect g = turn(s->geometry());
                QCOMPARE(QList<int>({g.left(), g.width(), g.top()}),
                         QList<int>({all.left(), all.width(), next}));
                next = g.bottom() + 1;
            }
            QCOMPARE(next, all.bottom() + 1);
        }
        frm.Item(u"mnuWindowCascade"_s)->trigger();
        QSet<int> lefts;
        for (QMdiSubWindow *s : subs) {
            lefts.insert(s->geometry().left());
        }
        QCOMPARE(lefts.size(), 3);

        subs[0]->showMinimized();
        subs[2]->showMinimized();
        subs[0]->move(300, 10);
        frm.Item(u"mnuWindowArrangeIcons"_s)->trigger();
        QCOMPARE(subs[0]->geometry().left(), area.left());
        QCOMPARE(subs[0]->geometry().bottom(), area.bottom());
        QCOMPARE(subs[2]->geometry().top(), subs[0]->geometry().top());
        QCOMPARE(subs[2]->geometry().left(), subs[0]->geometry().right() + 1);
        // Tiling leaves the row of minimised windows free.
        frm.Item(u"mnuWindowTileHorizontal"_s)->trigger();
        QVERIFY(subs[1]->geometry().bottom() < subs[0]->geometry().top());
    }
    // Text typed into a new document, formatted and changed through the Edit menu, undone with the
    // pane's key, the recent files of the File menu, and the saved file holding the formatting.
    void editingThroughTheMenus() {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"notes.mvd"_s);
        frmMain frm;
        frm.resize(900, 700);
        frm.MDIForm_Load();
        frm.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frm));
        modFile::FileNew();
        auto *window = qobject_cast<frmDocument *>(frm.mdiArea()->activeSubWindow()->widget());
        QVERIFY(window);
        QTextEdit *pane = window->txtRTF();
        pane->setFocus();
        QTRY_VERIFY(frm.Item(u"mnuEditFormatBold"_s)->isEnabled());
        QTest::keyClicks(pane, u"Paint the hall"_s);
        QTextCursor c = pane->textCursor();
        c.setPosition(6);
        c.setPosition(9, QTextCursor::KeepAnchor);
        pane->setTextCursor(c);

        frm.Item(u"mnuEditFormatBold"_s)->trigger();
        QVERIFY(frm.Button(u"Bold Text"_s)->isChecked());
        frm.Item(u"mnuEditCaseToggle"_s)->trigger();
        QCOMPARE(pane->toPlainText(), u"Paint The hall"_s);
        QCOMPARE(pane->textCursor().selectedText(), u"The"_s); // the pane shows the selection kept
        QTest::keyClick(pane, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(pane->toPlainText(), u"Paint the hall"_s);
        c.setPosition(0);
        pane->setTextCursor(c);
        QVERIFY(!frm.Button(u"Bold Text"_s)->isChecked()); // the toolbar follows the caret

        FakeMainWindow fake(&frm);
        fake.FileNames << path;
        frm.Item(u"mnuFileSaveAs"_s)->trigger();
        Document *saved = DocTest::loadBytes(ReadFileBytes(path), path);
        QByteArray rtf;
        modNodes::NodeTextDecompressIfRequired(saved->trvOutline().topNodes().front()->Tag(), rtf);
        QVERIFY2(rtf.contains("\\b the\\b0"), rtf.constData());
        QCOMPARE(frm.Item(u"mnuFileMRU1"_s)->text(), u"&1 "_s + path);
        QVERIFY(frm.Item(u"mnuFileBarMRU"_s)->isVisible());
    }

    void searchDialog() {
        using namespace modSearch;
        CreateHistories();
        InitialiseHistories();
        g_hisFind.Store("apple");
        g_hisFind.Save();
        g_sFindText = "cat";
        g_sReplaceText.clear();
        g_sSearchWhereText.clear();

        // Opened for finding: no replace controls, and no scope kept yet.
        g_iSearchMode = 1;
        {
            frmSearch dialog;
            QVERIFY(dialog.cmbInput[1]->isHidden() && dialog.cmdInput[1]->isHidden() &&
                    dialog.cmdInput[2]->isHidden() && dialog.lblInput[1]->isHidden());
            QCOMPARE(dialog.cmbInput[2]->count(), 3);
            // The history loads behind an empty entry; the kept expression is in the box.
            QCOMPARE(dialog.cmbInput[0]->count(), 2);
            QCOMPARE(dialog.cmbInput[0]->itemText(1), "apple");
            QCOMPARE(dialog.cmbInput[0]->currentText(), "cat");
            QVERIFY(!dialog.cmdInput[0]->isEnabled());
            dialog.cmbInput[2]->setCurrentIndex(1);
            QVERIFY(dialog.cmdInput[0]->isEnabled());
            QCOMPARE(g_sSearchWhere, "1");
            QVERIFY(!dialog.cmdInput[2]->isEnabled());
        }

        // Opened for replacing: Replace All follows the replace expression.
        g_iSearchMode = 2;
        frmSearch dialog;
        QVERIFY(!dialog.cmbInput[1]->isHidden());
        QCOMPARE(dialog.cmbInput[2]->currentIndex(), 1); // the kept scope
        QVERIFY(!dialog.cmdInput[2]->isEnabled());
        dialog.cmbInput[0]->setEditText(" a ");
        dialog.cmbInput[1]->setEditText("ba");
        QCOMPARE(g_sFindText, "a");
        QVERIFY(!dialog.cmdInput[2]->isEnabled());
        dialog.cmbInput[1]->setEditText("b");
        QVERIFY(dialog.cmdInput[2]->isEnabled());
        QVERIFY(!dialog.cmdInput[1]->isEnabled());
        // Escape presses "&Close", which saves the histories.
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(modSettings::GetSetting("FindHistory", "1"), "a");
        QCOMPARE(modSettings::GetSetting("ReplaceHistory", "1"), "b");
    }

    void helpContentsAndSearch_data() {
        QTest::addColumn<QString>("file"); // "guide": the collection built beside the program
        QTest::addColumn<bool>("search");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("icon");
        const QString none = u"There is no Help associated with this project."_s;
        QTest::newRow("no help: contents")
            << u""_s << false << u"Unable to display Help Contents. "_s + none
            << int(modMain::vbInformation);
        QTest::newRow("no help: search")
            << u""_s << true << u"Unable to display Help Search. "_s + none
            << int(modMain::vbInformation);
        QTest::newRow("guide: contents") << u"guide"_s << false << u""_s << 0;
        QTest::newRow("guide: search") << u"guide"_s << true << u""_s << 0;
        QTest::newRow("missing file")
            << u"/nowhere/Mavrolen.qhc"_s << false
            << u"The help file /nowhere/Mavrolen.qhc does not exist."_s << int(modMain::vbNoIcon);
        QTest::newRow("not a collection") << u"notes"_s << true << u"*"_s << int(modMain::vbNoIcon);
    }
    void helpContentsAndSearch() {
        QFETCH(QString, file);
        QFETCH(bool, search);
        QFETCH(QString, message);
        QFETCH(int, icon);
        QTemporaryDir dir;
        if (file == u"guide"_s) {
            file = modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpFileName));
        } else if (file == u"notes"_s) {
            file = dir.filePath(u"Mavrolen.qhc"_s);
            WriteFileBytes(file, "not a help collection");
        }
        modHelp::SetHelpFile(file);
        frmMain main;
        FakeMainWindow frm(&main);
        search ? modHelp::HelpSearch() : modHelp::HelpContents();
        const QStringList &asked = frm.Asked;
        QCOMPARE(frm.AskedIcons, QList<int>(asked.size(), icon));
        if (message == u"*"_s) { // the engine's own description of the error
            QCOMPARE(asked.size(), 1);
            QVERIFY(!asked.first().isEmpty());
        } else {
            QCOMPARE(asked, message.isEmpty() ? QStringList() : QStringList{message});
        }
        frmHelp *window = frmHelp::Instance();
        QCOMPARE(window != nullptr, message.isEmpty());
        if (window) {
            QVERIFY(window->isVisible());
            // Contents and Search both open the contents page, and the tree lists the guide.
            QCOMPARE(window->Browser()->source().fileName(), u"index.html"_s);
            QVERIFY(window->Browser()->toPlainText().contains(u"Keyboard shortcuts"_s));
            QHelpContentModel *contents = window->Engine()->contentModel();
            QTRY_VERIFY(!contents->isCreatingContents() && contents->rowCount() == 1);
            QVERIFY(contents->rowCount(contents->index(0, 0)) >= 10);
            QHelpIndexModel *index = window->Engine()->indexModel();
            QTRY_VERIFY(!index->isCreatingIndex() && index->stringList().contains(u"backup"_s));
            // Asking again reuses the window.
            modHelp::HelpContents();
            QCOMPARE(frmHelp::Instance(), window);
        }
    }

    void helpDocumentOpensOnce() {
        modHelp::g_bUseHelpDocument = true;
        modHelp::SetHelpFile({});
        modHelp::HelpContents();
        modHelp::HelpSearch();
        QCOMPARE(Documents::All().size(), size_t(1));
        Document *doc = Documents::All().front();
        QCOMPARE(doc->m_sFile,
                 modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpDocumentName)));
        const auto &top = doc->trvOutline().topNodes();
        QCOMPARE(top.size(), size_t(1));
        QCOMPARE(top.front()->Text(), u"Mavrolen Help"_s);
        QVERIFY(top.front()->childList().size() >= 10);
        QVERIFY(m_log->content().isEmpty());
    }

    void printChoiceDialog_data() {
        QTest::addColumn<QString>("asked");  // the command's flag and whether an entry is selected
        QTest::addColumn<QString>("answer"); // what the user changes before OK
        QTest::addColumn<QString>("expected"); // the choice, and the answers kept for the next time
        AddRows({
            {"current entry preselected", "entry,selected", "",
             "entry children texts|children texts"},
            {"whole document preselected", "document,selected", "",
             "document children texts|children texts"},
            {"nothing selected", "entry,none", "", "document children texts|children texts"},
            {"user picks the entry alone", "document,selected", "entry,-children",
             "entry texts|texts"},
            {"labels only remembered", "entry,selected", "-texts", "entry children|children"},
        });
    }
    // The dialog as the command shows it, answered the way the row says.
    void printChoiceDialog() {
        QFETCH(QString, asked);
        QFETCH(QString, answer);
        QFETCH(QString, expected);
        modPrint::PrintChoice choice;
        modPrint::PrintChoiceLoad(choice);
        choice.CurrentEntryOnly = asked.startsWith("entry");
        bool whileShown = false;
        QTimer::singleShot(0, this, [&] {
            auto *dialog = qobject_cast<PrintChoiceDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            // Child entries are a choice for the current entry only.
            whileShown = dialog->childrenBox()->isEnabled() == dialog->entryButton()->isChecked() &&
                         dialog->entryButton()->isEnabled() == asked.endsWith("selected");
            for (const QString &a : answer.split(',', Qt::SkipEmptyParts)) {
                if (a == "entry") {
                    dialog->entryButton()->setChecked(true);
                } else if (a == "-children") {
                    dialog->childrenBox()->setChecked(false);
                } else if (a == "-texts") {
                    dialog->textsBox()->setChecked(false);
                }
            }
            dialog->accept();
        });
        QVERIFY(modPrint::AskPrintChoice(choice, asked.endsWith(",selected"), nullptr));
        QVERIFY(whileShown);
        modPrint::PrintChoice kept;
        modPrint::PrintChoiceLoad(kept);
        auto words = [](const modPrint::PrintChoice &c) {
            QStringList out;
            for (const auto &[on, word] : {std::pair{c.Children, "children"}, {c.Texts, "texts"}}) {
                if (on) {
                    out << word;
                }
            }
            return out.join(' ');
        };
        QCOMPARE((choice.CurrentEntryOnly ? "entry " : "document ") + words(choice) + '|' +
                     words(kept),
                 expected);
    }

    void printPreviewAndPrint() {
        Document *doc = DocTest::newDocument();
        Node *root = DocTest::add(doc, nullptr, "Root");
        for (int i = 0; i < 400; ++i) {
            DocTest::add(doc, root, QString("Entry %1").arg(i),
                         "{\\rtf1\\ansi One line\\par Another {\\b bold} line\\par A third\\par }");
        }
        const auto entries = modPrint::PrintEntries(*doc, {});
        frmPreview preview(
            [&](const QPageLayout &layout) {
                return std::make_unique<PrintPages>(entries, true, "Long", QFont(), layout);
            },
            modPrint::PageLayoutDefault(), "Long");
        preview.show();
        QVERIFY(QTest::qWaitForWindowExposed(&preview));
        QVERIFY(!preview.complete());
        QCOMPARE(preview.currentPage(), 0);
        preview.setCurrentPage(5);
        QCOMPARE(preview.currentPage(), 5);
        QTRY_VERIFY_WITH_TIMEOUT(preview.complete(), 120000);
        const int count = preview.pages().pageCount();
        QVERIFY(count > 10);
        QCOMPARE(preview.findChild<QSpinBox *>()->maximum(), count);
        preview.setZoomPercent(40);
        QCOMPARE(preview.currentPage(), 5); // zooming keeps the page
        preview.fitWidth();
        auto *scroll = preview.findChild<QScrollArea *>();
        QVERIFY(scroll->widget()->width() <= scroll->viewport()->width() + 1);
        preview.setCurrentPage(count + 10);
        QCOMPARE(preview.currentPage(), count - 1);

        // Every page, then pages 2 to 3.
        QTemporaryDir dir;
        for (const int from : {0, 2}) {
            QPrinter printer(QPrinter::HighResolution);
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(dir.filePath("printed.pdf"));
            modPrint::ApplyPageLayout(printer, preview.pages().pageLayout());
            if (from > 0) {
                printer.setPrintRange(QPrinter::PageRange);
                printer.setFromTo(from, 3);
            }
            QVERIFY(modPrint::PrintOn(printer, preview.pages(), nullptr));
            const QByteArray bytes = ReadFileBytes(dir.filePath("printed.pdf"));
            QCOMPARE(int(bytes.count("/Type /Page\n")) + int(bytes.count("/Type /Page\r")),
                     from > 0 ? 2 : count);
        }
    }

private:
    ScopedSettings *m_settings = nullptr;
    ScopedLog *m_log = nullptr;
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
