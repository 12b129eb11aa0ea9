#include "app/MainWindowHost.h"

#include "app/modMain.h"

#include <QList>
#include <QStringList>

namespace modMain {

namespace {
MainWindowHost *g_frmMain = nullptr;
QList<MsgBoxResult> g_answers;
QStringList g_asked;
MsgBoxHandler g_handler;
} // namespace

void SetMainWindow(MainWindowHost *host) {
    g_frmMain = host;
}

MainWindowHost *MainWindow() {
    return g_frmMain;
}

MsgBoxResult MsgBox(const QString &text, MsgBoxButtons buttons, MsgBoxIcon icon) {
    g_asked.append(text);
    if (g_asked.size() > 100) {
        g_asked.removeFirst();
    }
    if (!g_answers.isEmpty()) {
        return g_answers.takeFirst();
    }
    if (g_handler) {
        return MsgBoxResult(g_handler(text, buttons, icon));
    }
    if (g_frmMain) {
        return g_frmMain->ShowMessage(text, buttons, icon);
    }
    return buttons == vbOKOnly ? vbOK : vbCancel;
}

void PushMsgBoxAnswer(MsgBoxResult answer) {
    g_answers.append(answer);
}

void SetMsgBoxHandler(MsgBoxHandler handler) {
    g_handler = std::move(handler);
}

void ClearMsgBoxAnswers() {
    g_answers.clear();
    g_asked.clear();
}

QStringList AskedMessages() {
    return g_asked;
}

void UpdateStatusBarText(const QString &text) {
    if (MainWindowHost *frm = MainWindow()) {
        frm->SetStatusText(text);
    }
}

} // namespace modMain
