#include "app/KeyStateUi.h"

#include <QGuiApplication>

#if defined(MAVROLEN_HAVE_X11)
// Xlib defines short names (None, Bool, Status, ...) that collide with Qt's: it comes last.
#include <X11/XKBlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#endif

namespace KeyStateUi {

#if defined(MAVROLEN_HAVE_X11)

namespace {

Display *display() {
    auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    if (!app) {
        return nullptr;
    }
    auto *x11 = app->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->display() : nullptr;
}

} // namespace

bool ReadLocks(bool &capsLock, bool &numLock) {
    capsLock = false;
    numLock = false;
    Display *d = display();
    if (!d) {
        return false;
    }
    XkbStateRec state{};
    if (XkbGetState(d, XkbUseCoreKbd, &state) != Success) {
        return false;
    }
    capsLock = (state.locked_mods & LockMask) != 0;
    const unsigned numMask = XkbKeysymToModifiers(d, XK_Num_Lock);
    numLock = numMask != 0 && (state.locked_mods & numMask) != 0;
    return true;
}

bool ToggleLock(int virtualKey) {
    Display *d = display();
    if (!d || (virtualKey != 20 && virtualKey != 144)) {
        return false;
    }
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    if (!XTestQueryExtension(d, &event, &error, &major, &minor)) {
        return false;
    }
    const KeyCode code = XKeysymToKeycode(d, virtualKey == 20 ? XK_Caps_Lock : XK_Num_Lock);
    if (code == 0) {
        return false;
    }
    XTestFakeKeyEvent(d, code, True, CurrentTime);
    XTestFakeKeyEvent(d, code, False, CurrentTime);
    XFlush(d);
    return true;
}

#else

bool ReadLocks(bool &capsLock, bool &numLock) {
    capsLock = false;
    numLock = false;
    return false;
}

bool ToggleLock(int) {
    return false;
}

#endif

} // namespace KeyStateUi
