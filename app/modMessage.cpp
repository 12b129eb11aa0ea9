#include "app/modMessage.h"

#include <utility>

namespace modMain {

namespace {
MsgBoxHandler &handler() {
    static MsgBoxHandler h;
    return h;
}
} // namespace

void SetMsgBoxHandler(MsgBoxHandler h) {
    handler() = std::move(h);
}

int MsgBox(const QString &text, int buttons, int icon) {
    if (const MsgBoxHandler &h = handler()) {
        return h(text, buttons, icon);
    }
    return buttons == vbOKOnly ? vbOK : vbCancel;
}

} // namespace modMain
