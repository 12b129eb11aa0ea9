#include "search/frmSearch.h"

#include "search/modSearch.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"
#include "util/modString.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using namespace modSearch;

frmSearch::frmSearch(QWidget *parent) : QDialog(parent) {
    setObjectName(u"frmSearch"_s);
    setWindowTitle(u"Search"_s);
    setModal(true);

    const QString labels[3] = {u"Fi&nd expression"_s, u"Re&place expression"_s, u"W&here?"_s};
    const QString checks[3] = {u"&Match case?"_s, u"Match &whole word?"_s,
                               u"Direction &backwards?"_s};
    const QString buttons[4] = {u"&Find"_s, u"&Replace"_s, u"Replace &All"_s, u"&Close"_s};

    auto *grid = new QGridLayout;
    for (int i = 0; i < 3; ++i) {
        lblInput[i] = new QLabel(labels[i], this);
        lblInput[i]->setObjectName(u"lblInput%1"_s.arg(i));
        cmbInput[i] = new QComboBox(this);
        cmbInput[i]->setObjectName(u"cmbInput%1"_s.arg(i));
        cmbInput[i]->setEditable(i < 2);
        cmbInput[i]->setMinimumContentsLength(28);
        if (i < 2) {
            // A typed expression is not added to the list: the histories fill it.
            cmbInput[i]->setInsertPolicy(QComboBox::NoInsert);
        }
        lblInput[i]->setBuddy(cmbInput[i]);
        grid->addWidget(lblInput[i], i, 0);
        grid->addWidget(cmbInput[i], i, 1);
    }
    for (int i = 0; i < 3; ++i) {
        chkInput[i] = new QCheckBox(checks[i], this);
        chkInput[i]->setObjectName(u"chkInput%1"_s.arg(i));
        grid->addWidget(chkInput[i], 3 + i, 1);
    }
    auto *column = new QVBoxLayout;
    for (int i = 0; i < 4; ++i) {
        cmdInput[i] = new QPushButton(buttons[i], this);
        cmdInput[i]->setObjectName(u"cmdInput%1"_s.arg(i));
        cmdInput[i]->setAutoDefault(false);
        column->addWidget(cmdInput[i]);
        connect(cmdInput[i], &QPushButton::clicked, this, [this, i] { cmdInput_Click(i); });
    }
    cmdInput[0]->setDefault(true);
    column->addStretch();
    auto *layout = new QGridLayout(this);
    layout->addLayout(grid, 0, 0);
    layout->addLayout(column, 0, 1);

    for (int i = 0; i < 2; ++i) {
        connect(cmbInput[i], &QComboBox::editTextChanged, this, [this, i] { cmbInput_Change(i); });
        connect(cmbInput[i], &QComboBox::activated, this, [this, i] { cmbInput_Click(i); });
    }
    connect(cmbInput[2], &QComboBox::currentIndexChanged, this, [this] { cmbInput_Click(2); });
    for (int i = 0; i < 3; ++i) {
        connect(chkInput[i], &QCheckBox::clicked, this, [this, i] { chkInput_Click(i); });
    }
    Form_Load();
}

void frmSearch::ShowModal() {
    frmSearch dialog(QApplication::activeWindow());
    dialog.exec();
}

void frmSearch::Form_Load() {
    modMain::Guarded([&] {
        PROC("frmSearch Form_Load");
        m_bLoading = true;
        struct Loaded {
            bool &flag;
            ~Loaded() { flag = false; }
        } loaded{m_bLoading};
        const bool replacing = g_iSearchMode == 2;
        lblInput[1]->setVisible(replacing);
        cmbInput[1]->setVisible(replacing);
        cmdInput[1]->setVisible(replacing);
        cmdInput[2]->setVisible(replacing);
        LoadFindAndReplaceLists();
        cmbInput[2]->clear();
        cmbInput[2]->addItems(
            {u"Current entry text"_s, u"All entry texts"_s, u"All entry names"_s});
        chkInput[0]->setChecked(g_bMatchCase);
        chkInput[1]->setChecked(g_bWholeWord);
        chkInput[2]->setChecked(g_bBackwards);
        cmbInput[0]->setEditText(g_sFindText);
        cmbInput[1]->setEditText(g_sReplaceText);
        cmbInput[2]->setCurrentIndex(cmbInput[2]->findText(g_sSearchWhereText, Qt::MatchExactly));
        EnableControls();
    });
}

void frmSearch::LoadFindAndReplaceLists() {
    modMain::Guarded([&] {
        PROC("frmSearch LoadFindAndReplaceLists");
        clsHistory *histories[2] = {&g_hisFind, &g_hisReplace};
        for (int i = 0; i < 2; ++i) {
            cmbInput[i]->clear();
            histories[i]->Load();
            bool atEnd = false;
            for (QString entry = histories[i]->FirstEntry(atEnd); !atEnd;
                 entry = histories[i]->NextEntry(atEnd)) {
                cmbInput[i]->addItem(entry);
            }
        }
    });
}

void frmSearch::ApplySettings() {
    modMain::Guarded([&] {
        PROC("frmSearch ApplySettings");
        g_bMatchCase = chkInput[0]->isChecked();
        g_bWholeWord = chkInput[1]->isChecked();
        g_bBackwards = chkInput[2]->isChecked();
        g_sFindText = modString::Trim(cmbInput[0]->currentText());
        g_sReplaceText = modString::Trim(cmbInput[1]->currentText());
        g_sSearchWhereText = modString::Trim(cmbInput[2]->currentText());
        g_sSearchWhere = QString::number(cmbInput[2]->currentIndex());
    });
}

void frmSearch::EnableControls() {
    modMain::Guarded([&] {
        PROC("frmSearch EnableControls");
        const bool find = FindEnabled();
        if (cmdInput[0]->isEnabled() != find) {
            cmdInput[0]->setEnabled(find);
        }
        cmdInput[1]->setEnabled(false);
        cmdInput[2]->setEnabled(ReplaceAllEnabled());
    });
}

void frmSearch::cmbInput_Change(int index) {
    PROC("frmSearch cmbInput_Change");
    Q_UNUSED(index);
    if (!m_bLoading) {
        ApplySettings();
        EnableControls();
    }
}

void frmSearch::cmbInput_Click(int index) {
    PROC("frmSearch cmbInput_Click");
    Q_UNUSED(index);
    if (!m_bLoading) {
        ApplySettings();
        EnableControls();
    }
}

void frmSearch::chkInput_Click(int index) {
    PROC("frmSearch chkInput_Click");
    Q_UNUSED(index);
    if (!m_bLoading) {
        ApplySettings();
        EnableControls();
    }
}

void frmSearch::cmdInput_Click(int index) {
    modMain::Guarded([&] {
        PROC("frmSearch cmdInput_Click");
        BusyPointer busy;
        cmdInput[index]->setEnabled(false);
        QCoreApplication::processEvents();
        g_hisFind.Store(g_sFindText);
        if (!g_sReplaceText.isEmpty()) {
            g_hisReplace.Store(g_sReplaceText);
        }
        switch (index) {
        case 0: {
            cmdInput[1]->setEnabled(false);
            cmdInput[2]->setEnabled(false);
            ApplySettings();
            modMain::Host().SaveSettings();
            const bool found = SearchPerform();
            EnableControls();
            if (g_iSearchMode == 2) {
                cmdInput[1]->setEnabled(ReplaceEnabledAfterFind(found));
            }
            cmdInput[0]->setEnabled(true);
            break;
        }
        case 1:
            SearchPerformReplace();
            cmdInput[1]->setEnabled(false);
            cmdInput[2]->setEnabled(false);
            break;
        case 2:
            SearchReplaceAll();
            cmdInput[1]->setEnabled(false);
            cmdInput[2]->setEnabled(false);
            break;
        case 3:
            g_hisFind.Save();
            g_hisReplace.Save();
            accept();
            break;
        default:
            break;
        }
    });
}

void frmSearch::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        cmdInput[3]->click();
        return;
    }
    QDialog::keyPressEvent(event);
}
