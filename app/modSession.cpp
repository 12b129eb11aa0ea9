#include "app/modSession.h"

#include "app/modCommandState.h"
#include "app/modGlobals.h"
#include "app/modMRU.h"
#include "app/modMain.h"
#include "app/modSettings.h"
#include "document/modDoc.h"
#include "help/modHelp.h"
#include "util/modString.h"

using namespace Qt::StringLiterals;

namespace modMain {

namespace {
DocumentHooks g_documents;
const QString kWorkspace = u"Workspace"_s;
} // namespace

void SetDocumentHooks(DocumentHooks hooks) {
    g_documents = std::move(hooks);
}

const DocumentHooks &Documents() {
    return g_documents;
}

bool OpenDocument(const QString &file) {
    if (!g_documents.DocLoad) {
        return false;
    }
    g_documents.DocLoad(file);
    return true;
}

void Initialise() {
    PROC("modMain Initialise");
    Guarded([] {
        WriteLog(u"Session started at "_s + NowText());
        modHelp::SetHelpFile(modHelp::ShippedFile(QString::fromLatin1(modHelp::kHelpFileName)));
        modGlobals::CreateFontRecords();
        modGlobals::InitialiseDefaults();
        modSettings::LoadSettings();
        modDoc::SetDefaultFonts(modGlobals::g_fntOutlineFont, modGlobals::g_fntTextFont);
        modMRU::LoadMRUFiles();
        // Every load, and every save that writes its file, goes to the top of the list.
        modDoc::SetRecentFileRule([](const QString &path) { modMRU::UpdateMRUFile(path, false); });
        LoadInitialFiles();
        const int open =
            g_documents.OpenDocumentFiles ? int(g_documents.OpenDocumentFiles().size()) : 0;
        MenuEnable(open);
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
                OpenDocument(full);
            }
        }
        if (usedCommandLine) {
            return;
        }
        if (modGlobals::StartWithLatestDocuments) {
            LoadWorkingFiles();
        }
        if (modGlobals::StartWithNewDocument && g_documents.FileNew) {
            g_documents.FileNew();
        }
    });
}

void LoadWorkingFiles() {
    PROC("modMain LoadWorkingFiles");
    Guarded([] {
        for (const auto &[key, value] : modSettings::GetAllSettings(kWorkspace)) {
            const QString full = FullPathName(value);
            if (!full.isEmpty() && modString::FileExists(full)) {
                OpenDocument(full);
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
        if (!g_documents.OpenDocumentFiles) {
            return;
        }
        int counter = 0;
        for (const QString &file : g_documents.OpenDocumentFiles()) {
            ++counter;
            modSettings::SaveSetting(kWorkspace, QString::number(counter), file);
        }
    });
}

} // namespace modMain
