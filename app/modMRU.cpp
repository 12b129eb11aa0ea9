#include "app/modMRU.h"

#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"
#include "util/SettingsStore.h"
#include "util/modGlobals.h"
#include "util/modString.h"

using namespace Qt::StringLiterals;

namespace modMRU {

namespace {

const QString kSection = u"MRU"_s;
constexpr qint32 kLongestList = 9999;
QStringList g_list;
// Item 0 exists from the start and is never used for a file.
QStringList g_captions{QString()};

} // namespace

const QStringList &List() {
    return g_list;
}

void SetList(const QStringList &list) {
    g_list = list;
    ShowMRUFiles();
}

const QStringList &MenuCaptions() {
    return g_captions;
}

void LoadMRUFiles() {
    PROC("modMRU LoadMRUFiles");
    modMain::Guarded([] {
        g_list = QStringList{QString()};
        for (const auto &[key, value] : modSettings::GetAllSettings(kSection)) {
            const qint32 index = modSettings::IntValue(key);
            // A key far beyond any list the menu could hold is damage, not a length to make.
            if (index < 0 || index > kLongestList) {
                modMain::Raise(modMain::errSubscriptOutOfRange);
            }
            // The last key read fixes the list's length.
            g_list.resize(qsizetype(index) + 1);
            g_list[index] = value;
        }
        ShowMRUFiles();
    });
}

void SaveMRUFiles() {
    PROC("modMRU SaveMRUFiles");
    modMain::Guarded([] {
        for (const auto &pair : modSettings::GetAllSettings(kSection)) {
            modSettings::DeleteSetting(kSection, pair.first);
        }
        for (qsizetype i = 0; i < g_list.size(); ++i) {
            modSettings::SaveSetting(kSection, QString::number(i + 1), g_list.at(i));
        }
    });
}

void UpdateMRUFile(const QString &file, bool remove) {
    PROC("modMRU UpdateMRUFile");
    modMain::Guarded([&] {
        QStringList list;
        qint64 counter = -1;
        if (!remove) {
            list.append(modString::Trim(file));
            counter = 0;
        }
        const QString wanted = modString::Trim(file).toLower();
        for (const QString &element : std::as_const(g_list)) {
            const QString e = modString::Trim(element).toLower();
            if (e.isEmpty() || e == wanted) {
                continue;
            }
            ++counter;
            if (counter < modGlobals::MaxMRUFiles) {
                list.resize(counter + 1);
                list[counter] = element;
            }
        }
        g_list = list;
        ShowMRUFiles();
    });
}

void ShowMRUFiles() {
    PROC("modMRU ShowMRUFiles");
    modMain::Guarded([] {
        // Items already made stay in the array, hidden, until a caption is set again.
        for (QString &caption : g_captions) {
            caption.clear();
        }
        int shown = 0;
        for (const QString &element : std::as_const(g_list)) {
            if (element.isEmpty()) {
                continue;
            }
            ++shown;
            if (shown >= g_captions.size()) {
                g_captions.resize(shown + 1);
            }
            g_captions[shown] = u"&"_s + QString::number(shown % 10) + u' ' + element;
        }
        modMain::Host().ShowMRUFiles(g_captions.mid(1, shown));
    });
}

QString MenuFile(int index) {
    if (index < 0 || index >= g_captions.size()) {
        return {};
    }
    return modString::Trim(g_captions.at(index).mid(3));
}

} // namespace modMRU
