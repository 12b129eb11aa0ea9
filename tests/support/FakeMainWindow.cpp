#include "support/FakeMainWindow.h"

#include "app/modSettings.h"

FakeMainWindow::FakeMainWindow() {
    modMain::SetMainWindow(this);
}

FakeMainWindow::~FakeMainWindow() {
    if (modMain::MainWindow() == this) {
        modMain::SetMainWindow(nullptr);
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

ScopedSettings::ScopedSettings() {
    modSettings::SetSettingsFile(path());
}

ScopedSettings::~ScopedSettings() {
    modSettings::SetSettingsFile(QString());
}

QString ScopedSettings::path() const {
    return m_dir.filePath(QStringLiteral("Mavrolen.ini"));
}
