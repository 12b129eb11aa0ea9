#pragma once

#include <QDialog>
#include <QList>

class QPushButton;
class QTextEdit;

// The diagnostic window "Debug": the active document's rich-text source and the details of its
// text pane and selected entry. It changes nothing in the document. One instance at a time.
class frmDebug : public QDialog {
    Q_OBJECT

public:
    // Shows the one window (made when there is none) with the details of the active document.
    static frmDebug *Open(QWidget *parent = nullptr);
    // The open window, or null.
    static frmDebug *Instance();

    explicit frmDebug(QWidget *parent = nullptr);
    ~frmDebug() override;

    // Fills both boxes from the active document window; nothing without one.
    void ShowDetails();
    // 0 "&Refresh", 1 "Close".
    void cmdInput_Click(int index);

    QTextEdit *txtDisplay = nullptr;
    QTextEdit *txtFormat = nullptr;
    QList<QPushButton *> cmdInput;

private:
    void Form_Load();
};
