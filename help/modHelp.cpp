#include "help/modHelp.h"

#include "app/MainWindowHost.h"
#include "util/ErrorLog.h"

namespace modHelp {

void HelpAbout() {
    PROC("modHelp HelpAbout");
    if (modMain::MainWindowHost *frm = modMain::MainWindow()) {
        frm->ShowAbout();
    }
}

} // namespace modHelp
