#include "app/modWindow.h"

#include "app/modMain.h"
#include "util/MainWindowHost.h"

namespace modWindow {

namespace {
void ArrangeBy(modMain::Arrangement how) {
    modMain::Host().Arrange(how);
}
} // namespace

void WindowCascade() {
    PROC("modWindow WindowCascade");
    ArrangeBy(modMain::Arrangement::Cascade);
}

void WindowTileHorizontal() {
    PROC("modWindow WindowTileHorizontal");
    ArrangeBy(modMain::Arrangement::TileHorizontal);
}

void WindowTileVertical() {
    PROC("modWindow WindowTileVertical");
    ArrangeBy(modMain::Arrangement::TileVertical);
}

void WindowArrangeIcons() {
    PROC("modWindow WindowArrangeIcons");
    ArrangeBy(modMain::Arrangement::ArrangeIcons);
}

} // namespace modWindow
