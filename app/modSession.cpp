#include "app/modSession.h"

#include "app/modCommandState.h"
#include "app/modMRU.h"
#include "app/modMain.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modFile.h"
#include "editor/modFont.h"
#include "help/modHelp.h"
#include "search/modSearch.h"
#include "util/modGlobals.h"
#include "util/modString.h"

using namespace Qt::StringLiterals;

namespace modMain {

namespace {
const QString kWorkspace = u"Workspace"_s;
} // namespace

void Initialise() {
    PROC("modMain Initialise");
    Guarded([] {
        WriteLog(u"Session started at "_s + NowText());
        modHelp::SetHelpFile(modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpFileName)));
        modFont::CreateFontRecords();
        modSearch::CreateHistories();
        modGlobals::InitialiseDefaults();
        modHelp::g_bUseHelpDocument = false;
        modSearch::InitialiseHistories();
        modSettings::LoadSettings();
        modDoc::SetDefaultFonts(modFont::g_fntOutlineFont, modFont::g_fntTextFont);
        modMRU::LoadMRUFiles();
        LoadInitialFiles();
        MenuEnable(modDoc::OpenDocumentCount());
        MenuEnableDynamic();
    });
}

void Finalise() {
    PROC("modMain Finalise");
    Guarded([] {
        modSettings::SaveSettings();
        modMRU::SaveMRUFiles();
        SaveWorkingFiles();
        WriteLog(u"Session ended at "_s + NowText());
    });
}

void LoadInitialFiles() {
    PROC("modMain LoadInitialFiles");
    Guarded([] {
        bool usedCommandLine = false;
        for (const QString &file : GetCommandLineFiles()) {
            const QString full = FullPathName(file);
            if (!full.isEmpty()) {
                // Counted before loading: a file that then fails still counts.
                usedCommandLine = true;
                modDoc::DocLoad(full);
            }
        }
        if (usedCommandLine) {
            return;
        }
        if (modGlobals::StartWithLatestDocuments) {
            LoadWorkingFiles();
        }
        if (modGlobals::StartWithNewDocument) {
            modFile::FileNew();
        }
    });
}

void LoadWorkingFiles() {
    PROC("modMain LoadWorkingFiles");
    Guarded([] {
        for (const auto &[key, value] : modSettings::GetAllSettings(kWorkspace)) {
            const QString full = FullPathName(value);
            if (!full.isEmpty() && modString::FileExists(full)) {
                modDoc::DocLoad(full);
            }
        }
    });
}

void SaveWorkingFiles() {
    PROC("modMain SaveWorkingFiles");
    Guarded([] {
        for (const auto &pair : modSettings::GetAllSettings(kWorkspace)) {
            modSettings::DeleteSetting(kWorkspace, pair.first);
        }
        int counter = 0;
        for (const Document *doc : Documents::All()) {
            if (!doc->m_bClosing) {
                ++counter;
                modSettings::SaveSetting(kWorkspace, QString::number(counter), doc->m_sFile);
            }
        }
    });
}

} // namespace modMain
