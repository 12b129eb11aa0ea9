// The find and replace dialog: captions, what it shows for finding and for replacing, and which
// buttons it enables as the user types.
#include "search/frmSearch.h"
#include "search/modSearch.h"
#include "support/TestSupport.h"
#include "util/SettingsStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace modSearch;

class TestSearchDialog : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void captionsAndEnabling();

private:
    ScopedLog m_log;
    QTemporaryDir m_dir;
};

void TestSearchDialog::captionsAndEnabling() {
    modSettings::SetSettingsFile(m_dir.filePath("settings.ini"));
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
        QCOMPARE(dialog.windowTitle(), "Search");
        QVERIFY(dialog.cmbInput[1]->isHidden() && dialog.cmdInput[1]->isHidden() &&
                dialog.cmdInput[2]->isHidden() && dialog.lblInput[1]->isHidden());
        QCOMPARE(dialog.cmbInput[2]->count(), 3);
        QCOMPARE(dialog.cmbInput[2]->itemText(2), "All entry names");
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

QTEST_MAIN(TestSearchDialog)
#include "tst_searchdialog.moc"
