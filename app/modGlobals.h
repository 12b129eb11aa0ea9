#pragma once

#include "editor/clsFont.h"

#include <QtGlobal>

// Options and font records shared by the whole program for the life of the session. The option
// flags are loaded from and saved to the settings store (modSettings).
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

// The four font records. The first two are kept in the settings: the outline font and the text
// font every new document starts with. The other two are working records of the font commands.
extern clsFont g_fntOutlineFont;
extern clsFont g_fntTextFont;
extern clsFont g_fntCurrentFont;
extern clsFont g_fntDocumentFont;

// Resets the font records to empty descriptions (start of a session).
void CreateFontRecords();

// The option defaults, before the settings are read.
void InitialiseDefaults();

} // namespace modGlobals
