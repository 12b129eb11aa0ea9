#pragma once

#include <QList>
#include <QString>
#include <QTime>

// The keyboard states the status bar shows.
struct KeyState {
    bool CapsLock = false;
    bool NumLock = false;
    bool Overwrite = false; // the active text pane types over its text
};

// One panel right of the status text.
struct StatusPanel {
    QString Key; // "Caps", "Num", "Ins" or "Time"
    QString Text;
    bool Enabled = true; // a lock key that is off shows greyed
    QString ToolTip;
};

// The status bar's panels: the lock keys, the typing mode and the time.
namespace StatusPanels {

QList<StatusPanel> Panels(const KeyState &keys, const QTime &now);

// The key a click on a panel toggles: 20 Caps Lock, 144 Num Lock, 45 Insert; 0 for any other
// panel.
int VirtualKey(const QString &panelKey);

} // namespace StatusPanels
