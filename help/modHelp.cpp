#include "help/modHelp.h"

#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"

namespace modHelp {

void HelpAbout() {
    PROC("modHelp HelpAbout");
    modMain::Host().ShowAbout();
}

} // namespace modHelp
