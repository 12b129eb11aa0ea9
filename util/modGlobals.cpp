#include "util/modGlobals.h"

#include "util/ErrorLog.h"

namespace modGlobals {

qint32 MaxMRUFiles = 10;
bool AutoLabelEdit = false;
bool AutoSplit = true;
bool Backup = true;
bool PreserveSettings = true;
bool StartWithNewDocument = false;
bool StartWithLatestDocuments = true;
bool ViewStatusbar = true;
bool ViewToolbar = true;
qint32 TimerInterval = 250;

void InitialiseDefaults() {
    PROC("modMain InitialiseDefaults");
    ViewStatusbar = true;
    ViewToolbar = true;
    TimerInterval = 250;
    // The rest start from the values the settings store falls back to, so that options after a
    // value that does not convert keep these.
    MaxMRUFiles = 10;
    AutoLabelEdit = false;
    AutoSplit = true;
    Backup = true;
    PreserveSettings = true;
    StartWithNewDocument = false;
    StartWithLatestDocuments = true;
}

} // namespace modGlobals
