#pragma once

#include <QString>

// The lock keys of the keyboard, read and toggled through the window system. On X11 the state
// comes from the XKB extension and a toggle is a key press and release sent through XTest;
// elsewhere (or without those extensions) nothing is known and a toggle does nothing.
namespace KeyStateUi {

// Whether Caps Lock and Num Lock are on; false when the window system cannot tell.
bool ReadLocks(bool &capsLock, bool &numLock);

// Presses and releases the key of a virtual-key code: 20 Caps Lock or 144 Num Lock. False when
// the window system cannot send it.
bool ToggleLock(int virtualKey);

} // namespace KeyStateUi
