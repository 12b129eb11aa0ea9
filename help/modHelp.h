#pragma once

// Commands of the Help menu.
namespace modHelp {

// Shows the About box, modal, owned by the main window.
void HelpAbout();

} // namespace modHelp
