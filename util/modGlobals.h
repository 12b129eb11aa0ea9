#pragma once

#include <QtGlobal>

// Options shared by the whole program for the life of the session, loaded from and saved to the
// settings store (modSettings).
namespace modGlobals {

// Section "Settings".
extern qint32 MaxMRUFiles;
extern bool AutoLabelEdit;
extern bool AutoSplit;
extern bool Backup;
extern bool PreserveSettings;
extern bool StartWithNewDocument;
extern bool StartWithLatestDocuments;
extern bool ViewStatusbar;
extern bool ViewToolbar;

// Period of the main window's focus timer, in milliseconds.
extern qint32 TimerInterval;

// The option defaults, before the settings are read.
void InitialiseDefaults();

} // namespace modGlobals
