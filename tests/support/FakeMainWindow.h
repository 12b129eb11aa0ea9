#pragma once

#include "app/MainWindowHost.h"

#include <QHash>
#include <QStringList>
#include <QTemporaryDir>

// A main window without widgets: records what the core sets on it.
class FakeMainWindow : public modMain::MainWindowHost {
public:
    FakeMainWindow();
    ~FakeMainWindow() override;

    QRect Geometry{0, 0, 100, 100};
    bool Minimised = false;
    double Dpi = 96.0;
    QHash<QString, bool> ItemEnabled;
    QHash<QString, bool> ItemChecked;
    QHash<QString, QString> ItemCaption;
    QHash<QString, bool> ButtonEnabled;
    QHash<QString, bool> ButtonVisible;
    QHash<QString, QString> ButtonToolTip;
    QHash<QString, int> ButtonValue;
    QStringList Calls; // placement setters in call order
    int Refreshes = 0;
    int Children = 0;

    QRect Placement() const override { return Geometry; }
    void SetLeft(int x) override;
    void SetTop(int y) override;
    void SetWidth(int w) override;
    void SetHeight(int h) override;
    bool IsMinimised() const override { return Minimised; }
    double LogicalDpiX() const override { return Dpi; }
    double LogicalDpiY() const override { return Dpi; }
    modMain::MsgBoxResult ShowMessage(const QString &, modMain::MsgBoxButtons,
                                      modMain::MsgBoxIcon) override {
        return modMain::vbCancel;
    }
    void SetItemEnabled(const QString &n, bool v) override { ItemEnabled[n] = v; }
    void SetItemChecked(const QString &n, bool v) override { ItemChecked[n] = v; }
    void SetItemCaption(const QString &n, const QString &c) override { ItemCaption[n] = c; }
    void SetButtonEnabled(const QString &k, bool v) override { ButtonEnabled[k] = v; }
    void SetButtonVisible(const QString &k, bool v) override { ButtonVisible[k] = v; }
    void SetButtonToolTip(const QString &k, const QString &t) override { ButtonToolTip[k] = t; }
    void SetButtonValue(const QString &k, int v) override { ButtonValue[k] = v; }
    void RefreshToolbar() override { ++Refreshes; }
    void Arrange(modMain::Arrangement) override {}
    int ChildWindowCount() const override { return Children; }
    void ShowAbout() override {}
};

// Points the settings store at a file of a temporary folder for the life of the object.
class ScopedSettings {
public:
    ScopedSettings();
    ~ScopedSettings();
    QString path() const;

private:
    QTemporaryDir m_dir;
};
