#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

// The find and replace dialog, captioned "Search". It edits the search state of modSearch, runs
// the search and replace steps and keeps the find and replace histories. Opened for finding
// (search mode 1) it hides the replace controls.
class frmSearch : public QDialog {
    Q_OBJECT
public:
    explicit frmSearch(QWidget *parent = nullptr);

    // Shows the dialog modally over the active window.
    static void ShowModal();

    // Labels of the find box, the replace box and the scope list.
    QLabel *lblInput[3] = {};
    // The find box, the replace box (both editable lists) and the scope list.
    QComboBox *cmbInput[3] = {};
    // Match case, whole word, backwards.
    QCheckBox *chkInput[3] = {};
    // "&Find", "&Replace", "Replace &All", "&Close".
    QPushButton *cmdInput[4] = {};

    void Form_Load();
    void LoadFindAndReplaceLists();
    void ApplySettings();
    void EnableControls();
    void cmbInput_Change(int index);
    void cmbInput_Click(int index);
    void chkInput_Click(int index);
    void cmdInput_Click(int index);

protected:
    // Escape presses "&Close", the cancel button.
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool m_bLoading = false;
};
