#include "help/frmAbout.h"

#include "util/ErrorLog.h"

#include <QApplication>
#include <QFrame>
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
        // Without a window frame the splash draws its own edge.
        setWindowFlags(Qt::SplashScreen | Qt::WindowStaysOnTopHint);
        setStyleSheet(u"QDialog#frmAbout { border: 1px solid palette(mid); }"_s);
    }
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(20, 20, 20, splash ? 20 : 14);
    grid->setHorizontalSpacing(20);
    picIcon = new QLabel(this);
    picIcon->setObjectName(u"picIcon"_s);
    // The application's icon, which start-up sets.
    picIcon->setPixmap(QApplication::windowIcon().pixmap(64, 64));
    picIcon->setAlignment(Qt::AlignTop);
    grid->addWidget(picIcon, 0, 0, 2, 1);
    auto *column = new QVBoxLayout;
    column->setSpacing(4);
    for (int i = 0; i <= 8; ++i) {
        auto *label = new QLabel(this);
        label->setObjectName(u"lblControl"_s + QString::number(i));
        lblControl.append(label);
        if (i == 7) {
            // The platform and the notice stand apart from the product's own lines.
            auto *line = new QFrame(this);
            line->setFrameShape(QFrame::HLine);
            line->setFrameShadow(QFrame::Sunken);
            column->addSpacing(6);
            column->addWidget(line);
            column->addSpacing(2);
        }
        column->addWidget(label);
    }
    grid->addLayout(column, 0, 1);
    cmdOK = new QPushButton(u"OK"_s, this);
    cmdOK->setObjectName(u"cmdOK"_s);
    cmdOK->setDefault(true);
    cmdOK->setMinimumWidth(88);
    cmdOK->setVisible(!splash);
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    grid->addWidget(cmdOK, 1, 1, Qt::AlignRight | Qt::AlignBottom);
    grid->setRowMinimumHeight(1, splash ? 0 : 36);
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
    title.setPointSizeF(title.pointSizeF() * 1.8);
    lblControl[0]->setFont(title);
    lblControl[1]->setText(u"An outliner: a tree of entries, each with its own formatted text."_s);
    lblControl[1]->setWordWrap(true);
    lblControl[1]->setFixedWidth(lblControl[1]->fontMetrics().averageCharWidth() * 42);
    lblControl[2]->setText(
        VersionText(version.majorVersion(), version.minorVersion(), version.microVersion()));
    // The platform line.
    lblControl[7]->setText(u"Linux, Qt "_s + QString::fromLatin1(qVersion()));
    lblControl[8]->setText(u"Free software by the Mavrolen developers."_s);
    for (int i : {3, 4, 5, 6}) {
        lblControl[i]->hide();
    }
    // The small print.
    for (int i : {7, 8}) {
        QFont small = lblControl[i]->font();
        small.setPointSizeF(small.pointSizeF() * 0.9);
        lblControl[i]->setFont(small);
        lblControl[i]->setForegroundRole(QPalette::PlaceholderText);
    }
}

void frmAbout::cmdOK_Click() {
    PROC("frmAbout cmdOK_Click");
    accept();
}
