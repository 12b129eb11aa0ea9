#pragma once

#include <QString>

// Commands of the Help menu.
namespace modHelp {

// The help collection's file name, beside the program or in the installed data folder.
inline constexpr char kHelpFileName[] = "Mavrolen.qhc";
// The help document, an ordinary document file.
inline constexpr char kHelpDocumentName[] = "Help.mvd";
// Context number of the contents page.
inline constexpr int kContentsContext = 10;

// Where a file shipped with the program lives: beside the program when it is there (a build
// folder), else in the installed data folder (../share/mavrolen from the program); beside the
// program when neither has it.
QString ShippedFile(const QString &name);

// The application's help file (full path); empty means no help is associated.
QString HelpFile();
void SetHelpFile(const QString &path);

// Selects the help document instead of the help collection for Contents and Search. Off at
// start-up and set by no command.
extern bool g_bUseHelpDocument;

void HelpContents();
void HelpSearch();
void HelpWhatsThis();
// Shows the About box, modal, owned by the main window.
void HelpAbout();
// Focuses the open help document, or opens it.
void LoadHelpMVDFile();

} // namespace modHelp
