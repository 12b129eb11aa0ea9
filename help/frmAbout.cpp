#include "help/frmAbout.h"

#include "app/ToolbarIcons.h"
#include "util/ErrorLog.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVersionNumber>

using namespace Qt::StringLiterals;

frmAbout::frmAbout(bool splash, QWidget *parent) : QDialog(parent) {
    setObjectName(u"frmAbout"_s);
    setWindowTitle(u"About Mavrolen"_s);
    if (splash) {
        setWindowFlags(Qt::SplashScreen | Qt::WindowStaysOnTopHint);
    }
    auto *grid = new QGridLayout(this);
    picIcon = new QLabel(this);
    picIcon->setObjectName(u"picIcon"_s);
    picIcon->setPixmap(ApplicationIcon().pixmap(64, 64));
    picIcon->setAlignment(Qt::AlignTop);
    grid->addWidget(picIcon, 0, 0, 2, 1);
    auto *column = new QVBoxLayout;
    for (int i = 0; i <= 8; ++i) {
        auto *label = new QLabel(this);
        label->setObjectName(u"lblControl"_s + QString::number(i));
        lblControl.append(label);
        column->addWidget(label);
    }
    grid->addLayout(column, 0, 1);
    cmdOK = new QPushButton(u"OK"_s, this);
    cmdOK->setObjectName(u"cmdOK"_s);
    cmdOK->setDefault(true);
    cmdOK->setVisible(!splash);
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    grid->addWidget(cmdOK, 1, 1, Qt::AlignRight | Qt::AlignBottom);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    Form_Load();
}

QString frmAbout::VersionText(int major, int minor, int revision) {
    return u"Version "_s + QString::number(major) + u'.' + QString::number(minor) + u'.' +
           QString::number(revision);
}

void frmAbout::Form_Load() {
    PROC("frmAbout Form_Load");
    const QVersionNumber version = QVersionNumber::fromString(QStringLiteral(MAVROLEN_VERSION));
    lblControl[0]->setText(u"Mavrolen"_s);
    QFont title = lblControl[0]->font();
    title.setBold(true);
    title.setPointSizeF(title.pointSizeF() * 1.4);
    lblControl[0]->setFont(title);
    lblControl[1]->setText(u"An outliner: a tree of entries, each with its own formatted text."_s);
    lblControl[2]->setText(
        VersionText(version.majorVersion(), version.minorVersion(), version.microVersion()));
    // The platform line.
    lblControl[7]->setText(u"Linux, Qt "_s + QString::fromLatin1(qVersion()));
    lblControl[8]->setText(u"Free software by the Mavrolen developers."_s);
    for (int i : {3, 4, 5, 6}) {
        lblControl[i]->hide();
    }
}

void frmAbout::cmdOK_Click() {
    PROC("frmAbout cmdOK_Click");
    accept();
}
