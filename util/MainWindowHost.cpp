#include "util/MainWindowHost.h"

namespace modMain {

namespace {
MainWindowHost *g_frmMain = nullptr;
} // namespace

MsgBoxResult MainWindowHost::ShowMessage(const QString &, MsgBoxButtons buttons, MsgBoxIcon) {
    return buttons == vbOKOnly ? vbOK : vbCancel;
}

QString MainWindowHost::PopupMenu(const QString &, const QStringList &) {
    return {};
}

QString MainWindowHost::ShowHelp(const QString &, int) {
    return QStringLiteral("The help viewer is not available.");
}

void SetMainWindow(MainWindowHost *host) {
    g_frmMain = host;
}

MainWindowHost *MainWindow() {
    return g_frmMain;
}

MainWindowHost &Host() {
    static MainWindowHost headless;
    return g_frmMain ? *g_frmMain : headless;
}

MsgBoxResult MsgBox(const QString &text, MsgBoxButtons buttons, MsgBoxIcon icon) {
    return Host().ShowMessage(text, buttons, icon);
}

void UpdateStatusBarText(const QString &text) {
    Host().SetStatusText(text);
}

} // namespace modMain
