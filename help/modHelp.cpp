#include "help/modHelp.h"

#include "app/modMain.h"
#include "util/MainWindowHost.h"

namespace modHelp {

void HelpAbout() {
    PROC("modHelp HelpAbout");
    modMain::Host().ShowAbout();
}

} // namespace modHelp
