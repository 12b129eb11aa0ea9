#pragma once

// The Window menu: arrangements of the document windows in the main window.
namespace modWindow {

void WindowCascade();
void WindowTileHorizontal(); // one above the other
void WindowTileVertical();   // side by side
void WindowArrangeIcons();   // line up the minimised windows

} // namespace modWindow
