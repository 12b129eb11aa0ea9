#include "app/StatusPanels.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace StatusPanels {

QList<StatusPanel> Panels(const KeyState &keys, const QTime &now) {
    const auto lock = [](const QString &key, const QString &name, bool on) {
        return StatusPanel{key, name.left(name.indexOf(u' ')).toUpper(), on,
                           name + (on ? u" is on"_s : u" is off"_s) + u" - click to toggle it"_s};
    };
    return {
        lock(u"Caps"_s, u"Caps Lock"_s, keys.CapsLock),
        lock(u"Num"_s, u"Num Lock"_s, keys.NumLock),
        StatusPanel{u"Ins"_s, keys.Overwrite ? u"OVR"_s : u"INS"_s, true,
                    keys.Overwrite ? u"Typing replaces the text - click or press Insert to insert"_s
                                   : u"Typing inserts text - click or press Insert to type over"_s},
        StatusPanel{u"Time"_s, QLocale::system().toString(now, QLocale::ShortFormat), true, {}},
    };
}

int VirtualKey(const QString &panelKey) {
    if (panelKey == u"Caps"_s) {
        return 20;
    }
    if (panelKey == u"Num"_s) {
        return 144;
    }
    if (panelKey == u"Ins"_s) {
        return 45;
    }
    return 0;
}

} // namespace StatusPanels
