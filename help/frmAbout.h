#pragma once

#include <QDialog>
#include <QList>

class QLabel;
class QPushButton;

// The About box, which also serves as the start-up splash (then without its OK button).
class frmAbout : public QDialog {
    Q_OBJECT

public:
    explicit frmAbout(bool splash, QWidget *parent = nullptr);

    // "Version " and major.minor.revision, in decimal without padding.
    static QString VersionText(int major, int minor, int revision);

    QLabel *picIcon = nullptr;
    QList<QLabel *> lblControl; // by index; 0, 1, 2, 7 and 8 carry text
    QPushButton *cmdOK = nullptr;

private:
    void Form_Load();
    void cmdOK_Click();
};
