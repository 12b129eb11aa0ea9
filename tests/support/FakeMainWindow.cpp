#include "support/FakeMainWindow.h"

#include "app/modCommandState.h"
#include "app/modCommands.h"
#include "app/modMRU.h"
#include "document/modDoc.h"
#include "util/SettingsStore.h"

FakeMainWindow::FakeMainWindow(modMain::MainWindowHost *real)
    : m_real(real), m_previous(modMain::MainWindow()) {
    modMain::SetMainWindow(this);
}

FakeMainWindow::~FakeMainWindow() {
    if (modMain::MainWindow() == this) {
        modMain::SetMainWindow(m_previous);
    }
}

void FakeMainWindow::SetLeft(int x) {
    Geometry.moveLeft(x);
    Calls << QStringLiteral("Left");
}

void FakeMainWindow::SetTop(int y) {
    Geometry.moveTop(y);
    Calls << QStringLiteral("Top");
}

void FakeMainWindow::SetWidth(int w) {
    Geometry.setWidth(w);
    Calls << QStringLiteral("Width");
}

void FakeMainWindow::SetHeight(int h) {
    Geometry.setHeight(h);
    Calls << QStringLiteral("Height");
}

modMain::MsgBoxResult FakeMainWindow::ShowMessage(const QString &text,
                                                  modMain::MsgBoxButtons buttons,
                                                  modMain::MsgBoxIcon icon) {
    Asked << text;
    AskedButtons << buttons;
    AskedIcons << icon;
    AskedWhileBusy << (Busy > 0);
    if (!Answers.isEmpty()) {
        return Answers.takeFirst();
    }
    return MainWindowHost::ShowMessage(text, buttons, icon);
}

bool FakeMainWindow::ChooseFile(modMain::FileDialogRequest &request) {
    FileRequests << request;
    const std::optional<QString> name = FileNames.isEmpty() ? std::nullopt : FileNames.takeFirst();
    if (!name) {
        return false;
    }
    request.FileName = *name;
    return true;
}

bool FakeMainWindow::ChooseFont(modMain::FontDialogValues &values) {
    FontsShown << values;
    const auto choice = FontChoices.isEmpty() ? std::nullopt : FontChoices.takeFirst();
    if (!choice) {
        return false;
    }
    values = *choice;
    return true;
}

QString FakeMainWindow::PopupMenu(const QString &menu, const QStringList &available) {
    MenusShown << menu + QStringLiteral(": ") + available.join(QLatin1Char(' '));
    return MenuPicks.isEmpty() ? QString() : MenuPicks.takeFirst();
}

bool FakeMainWindow::WindowKey(QKeyCombination key) {
    Keys << key;
    return RunKeys ? modCommands::RunWindowKey(key) : modCommands::FindWindowKey(key) != nullptr;
}

bool FakeMainWindow::Exit() {
    Calls << QStringLiteral("Exit");
    // Alone: the documents close one by one, as without windows.
    return m_real && m_real->Exit();
}

void FakeMainWindow::Arrange(modMain::Arrangement how) {
    Calls << QStringLiteral("Arrange %1").arg(int(how));
    if (m_real) {
        m_real->Arrange(how);
    }
}

Document *FakeMainWindow::NewDocumentWindow() {
    return m_real ? m_real->NewDocumentWindow() : nullptr;
}

void FakeMainWindow::UpdateMRUFile(const QString &path, bool remove) {
    Calls << (remove ? QStringLiteral("MRU remove ") : QStringLiteral("MRU ")) + path;
    if (m_real) {
        m_real->UpdateMRUFile(path, remove);
    } else {
        modMRU::UpdateMRUFile(path, remove);
    }
}

QString FakeMainWindow::MRUFile(int index) {
    return m_real ? m_real->MRUFile(index) : modMRU::MenuFile(index);
}

void FakeMainWindow::ShowMRUFiles(const QStringList &captions) {
    MRUShown = captions;
    if (m_real) {
        m_real->ShowMRUFiles(captions);
    }
}

QString FakeMainWindow::ShowHelp(const QString &file, int context) {
    Calls << QStringLiteral("Help %1").arg(context);
    return m_real ? m_real->ShowHelp(file, context) : MainWindowHost::ShowHelp(file, context);
}

int FakeMainWindow::ChildWindowCount() const {
    return m_real ? m_real->ChildWindowCount() : Children;
}

void FakeMainWindow::SetItemEnabled(const QString &n, bool v) {
    ItemEnabled[n] = v;
    if (m_real) {
        m_real->SetItemEnabled(n, v);
    }
}

void FakeMainWindow::SetItemChecked(const QString &n, bool v) {
    ItemChecked[n] = v;
    if (m_real) {
        m_real->SetItemChecked(n, v);
    }
}

void FakeMainWindow::SetItemCaption(const QString &n, const QString &c) {
    ItemCaption[n] = c;
    if (m_real) {
        m_real->SetItemCaption(n, c);
    }
}

void FakeMainWindow::SetButtonEnabled(const QString &k, bool v) {
    ButtonEnabled[k] = v;
    if (m_real) {
        m_real->SetButtonEnabled(k, v);
    }
}

void FakeMainWindow::SetButtonVisible(const QString &k, bool v) {
    ButtonVisible[k] = v;
    if (m_real) {
        m_real->SetButtonVisible(k, v);
    }
}

void FakeMainWindow::SetButtonToolTip(const QString &k, const QString &t) {
    ButtonToolTip[k] = t;
    if (m_real) {
        m_real->SetButtonToolTip(k, t);
    }
}

void FakeMainWindow::SetButtonValue(const QString &k, int v) {
    ButtonValue[k] = v;
    if (m_real) {
        m_real->SetButtonValue(k, v);
    }
}

void FakeMainWindow::RefreshToolbar() {
    ++Refreshes;
    if (m_real) {
        m_real->RefreshToolbar();
    }
}

void FakeMainWindow::RefreshCommands(bool all) {
    if (all) {
        modMain::MenuEnable(modDoc::OpenDocumentCount());
    }
    modMain::MenuEnableDynamic();
    modMain::UpdateToolbarStatus();
}

void FakeMainWindow::SetToolbarVisible(bool v) {
    ToolbarShown = v;
    if (m_real) {
        m_real->SetToolbarVisible(v);
    }
}

void FakeMainWindow::SetStatusBarVisible(bool v) {
    StatusBarShown = v;
    if (m_real) {
        m_real->SetStatusBarVisible(v);
    }
}

void FakeMainWindow::SetStatusText(const QString &text) {
    StatusText = text;
    if (m_real) {
        m_real->SetStatusText(text);
    }
}

void FakeMainWindow::BeginBusy() {
    ++Busy;
    if (m_real) {
        m_real->BeginBusy();
    }
}

void FakeMainWindow::EndBusy() {
    Busy = Busy > 0 ? Busy - 1 : 0;
    if (m_real) {
        m_real->EndBusy();
    }
}

void FakeMainWindow::ResetPointer() {
    Busy = 0;
    if (m_real) {
        m_real->ResetPointer();
    }
}

ScopedSettings::ScopedSettings() {
    modSettings::SetSettingsFile(path());
}

ScopedSettings::~ScopedSettings() {
    modSettings::SetSettingsFile(QString());
}

QString ScopedSettings::path() const {
    return m_dir.filePath(QStringLiteral("Mavrolen.ini"));
}
