#include "help/modHelp.h"

#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modFile.h"
#include "search/modSearch.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"

#include <QCoreApplication>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace modHelp {

bool g_bUseHelpDocument = false;

namespace {

QString g_sHelpFile;

// Contents and Search differ only in their message when no help is associated.
void ShowCompiledHelp(const QString &noHelpMessage) {
    if (g_sHelpFile.isEmpty()) {
        modMain::MsgBox(noHelpMessage, modMain::vbOKOnly, modMain::vbInformation);
        return;
    }
    const QString error = modMain::Host().ShowHelp(g_sHelpFile, kContentsContext);
    if (!error.isEmpty()) {
        modMain::MsgBox(error, modMain::vbOKOnly, modMain::vbNoIcon);
    }
}

} // namespace

QString ShippedFile(const QString &name) {
    const QString dir = modMain::ProgramDirectory();
    const QString beside = dir + u'/' + name;
    if (QFileInfo::exists(beside)) {
        return beside;
    }
    const QString installed = QFileInfo(dir + u"/../share/mavrolen/"_s + name).absoluteFilePath();
    return QFileInfo::exists(installed) ? installed : beside;
}

QString HelpFile() {
    return g_sHelpFile;
}

void SetHelpFile(const QString &path) {
    g_sHelpFile = path;
}

void HelpContents() {
    PROC("modHelp HelpContents");
    modMain::Guarded([] {
        if (g_bUseHelpDocument) {
            LoadHelpMVDFile();
            return;
        }
        ShowCompiledHelp(u"Unable to display Help Contents. There is no Help associated with this "
                         "project."_s);
    });
}

void HelpSearch() {
    PROC("modHelp HelpSearch");
    modMain::Guarded([] {
        if (g_bUseHelpDocument) {
            LoadHelpMVDFile();
            modSearch::SearchFind();
            return;
        }
        ShowCompiledHelp(u"Unable to display Help Search. There is no Help associated with this "
                         "project."_s);
    });
}

void HelpWhatsThis() {
    PROC("modHelp HelpWhatsThis");
    modMain::Guarded([] {
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        modMain::Host().EnterWhatsThisMode();
        if (QCoreApplication::instance()) {
            QCoreApplication::processEvents();
        }
    });
}

void HelpAbout() {
    PROC("modHelp HelpAbout");
    modMain::Host().ShowAbout();
}

void LoadHelpMVDFile() {
    PROC("modHelp LoadHelpMVDFile");
    modMain::Guarded([] {
        const QString path = ShippedFile(QString::fromLatin1(kHelpDocumentName));
        for (Document *doc : Documents::All()) {
            if (doc->m_sFile == path) {
                modFile::ActivateDocument(doc);
                return;
            }
        }
        modDoc::DocLoad(path);
    });
}

} // namespace modHelp
