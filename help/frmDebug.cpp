#include "help/frmDebug.h"

#include "document/Document.h"
#include "help/DebugDetails.h"
#include "util/ErrorLog.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
QPointer<frmDebug> g_frmDebug;
} // namespace

frmDebug *frmDebug::Open(QWidget *parent) {
    if (!g_frmDebug) {
        g_frmDebug = new frmDebug(parent);
    }
    g_frmDebug->show();
    g_frmDebug->raise();
    g_frmDebug->activateWindow();
    g_frmDebug->ShowDetails();
    return g_frmDebug;
}

frmDebug *frmDebug::Instance() {
    return g_frmDebug;
}

frmDebug::frmDebug(QWidget *parent) : QDialog(parent) {
    setObjectName(u"frmDebug"_s);
    setWindowTitle(u"Debug"_s);
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    txtDisplay = new QTextEdit(this);
    txtDisplay->setObjectName(u"txtDisplay"_s);
    txtFormat = new QTextEdit(this);
    txtFormat->setObjectName(u"txtFormat"_s);
    layout->addWidget(txtDisplay, 3);
    layout->addWidget(txtFormat, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    const QString captions[] = {u"&Refresh"_s, u"Close"_s};
    for (int i = 0; i < 2; ++i) {
        auto *button = new QPushButton(captions[i], this);
        button->setObjectName(u"cmdInput"_s + QString::number(i));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, i] { cmdInput_Click(i); });
        cmdInput.append(button);
        buttons->addWidget(button);
    }
    layout->addLayout(buttons);
    resize(560, 420);
    Form_Load();
}

frmDebug::~frmDebug() = default;

void frmDebug::Form_Load() {
    PROC("frmDebug Form_Load");
    // Both boxes show what they are given, literally, and cannot be typed into.
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (QTextEdit *box : {txtDisplay, txtFormat}) {
        box->setReadOnly(true);
        box->setAcceptRichText(false);
        box->setFont(fixed);
        box->setLineWrapMode(QTextEdit::WidgetWidth);
    }
    // Room for the six detail lines without scrolling.
    txtFormat->setMinimumHeight(QFontMetrics(fixed).lineSpacing() * 7 +
                                2 * txtFormat->frameWidth() +
                                int(txtFormat->document()->documentMargin() * 2));
}

void frmDebug::ShowDetails() {
    PROC("frmDebug ShowDetails");
    modMain::Guarded([this] {
        PROC("frmDebug ShowDetails");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        // The box breaks lines at LF; a CR before it would show as a stray mark.
        const auto shown = [](QString text) { return text.replace(u"\r\n"_s, u"\n"_s); };
        txtDisplay->setPlainText(shown(DebugDetails::RichTextSource(*doc)));
        txtFormat->setPlainText(shown(DebugDetails::DetailsText(*doc)));
    });
}

void frmDebug::cmdInput_Click(int index) {
    PROC("frmDebug cmdInput_Click");
    if (index == 0) {
        ShowDetails();
    } else if (index == 1) {
        close(); // the window is deleted, which releases the reference
    }
}
