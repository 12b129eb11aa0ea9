#include "support/FakeMainWindow.h"

#include "document/modRecovery.h"

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

modMain::MsgBoxResult FakeMainWindow::ShowMessage(const QString &text,
                                                  modMain::MsgBoxButtons buttons,
                                                  modMain::MsgBoxIcon icon) {
    Asked << text;
    AskedButtons << buttons;
    AskedIcons << icon;
    AskedWhileBusy << (Busy > 0);
    return Answers.isEmpty() ? MainWindowHost::ShowMessage(text, buttons, icon)
                             : Answers.takeFirst();
}

bool FakeMainWindow::ChooseFile(modMain::FileDialogRequest &request) {
    FileRequests << request;
    const auto name = FileNames.isEmpty() ? std::nullopt : FileNames.takeFirst();
    if (name) {
        request.FileName = *name;
    }
    return name.has_value();
}

bool FakeMainWindow::ChooseFont(modMain::FontDialogValues &values) {
    FontsShown << values;
    const auto choice = FontChoices.isEmpty() ? std::nullopt : FontChoices.takeFirst();
    if (choice) {
        values = *choice;
    }
    return choice.has_value();
}

QString FakeMainWindow::PopupMenu(const QString &menu, const QStringList &available) {
    MenusShown << menu + QStringLiteral(": ") + available.join(QLatin1Char(' '));
    return MenuPicks.isEmpty() ? QString() : MenuPicks.takeFirst();
}

bool FakeMainWindow::WindowKey(QKeyCombination key) {
    Keys << key;
    return RunKeys ? modMain::RunWindowKey(key) : modCommands::FindWindowKey(key) != nullptr;
}

bool FakeMainWindow::Exit() {
    Calls << QStringLiteral("Exit");
    // Alone: the documents close one by one, as without windows.
    return m_real && m_real->Exit();
}

void FakeMainWindow::UpdateMRUFile(const QString &path, bool remove) {
    Calls << (remove ? QStringLiteral("MRU remove ") : QStringLiteral("MRU ")) + path;
    m_real ? m_real->UpdateMRUFile(path, remove) : modMRU::UpdateMRUFile(path, remove);
}

QString FakeMainWindow::MRUFile(int index) {
    return m_real ? m_real->MRUFile(index) : modMRU::MenuFile(index);
}

QString FakeMainWindow::ShowHelp(const QString &file, int context) {
    Calls << QStringLiteral("Help %1").arg(context);
    return m_real ? m_real->ShowHelp(file, context) : MainWindowHost::ShowHelp(file, context);
}

void FakeMainWindow::RefreshCommands(bool all) {
    if (all) {
        modMain::MenuEnable(modDoc::OpenDocumentCount());
    }
    modMain::MenuEnableDynamic();
    modMain::UpdateToolbarStatus();
}

ScopedSettings::ScopedSettings() {
    modSettings::SetSettingsFile(path());
    modRecovery::SetFolder(m_dir.filePath(QStringLiteral("recovery")));
}

ScopedSettings::~ScopedSettings() {
    modSettings::SetSettingsFile(QString());
    modRecovery::SetFolder(QString());
}

QString ScopedSettings::path() const {
    return m_dir.filePath(QStringLiteral("Mavrolen.ini"));
}
