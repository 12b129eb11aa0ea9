#include "search/clsHistory.h"

#include "util/ErrorLog.h"
#include "util/SettingsStore.h"
#include "util/modString.h"

namespace {
// The highest index a stored value name may give (the old lists were indexed by 16-bit numbers).
constexpr int kMaxIndex = 32767;
} // namespace

QString clsHistory::entryAtCursor(bool &atEnd) const {
    atEnd = m_iCursor >= m_entries.size();
    return atEnd ? QString() : m_entries.at(m_iCursor);
}

QString clsHistory::FirstEntry(bool &atEnd) {
    PROC("clsHistory FirstEntry");
    m_iCursor = 0;
    return entryAtCursor(atEnd);
}

QString clsHistory::NextEntry(bool &atEnd) {
    PROC("clsHistory NextEntry");
    if (m_iCursor <= m_entries.size()) {
        ++m_iCursor;
    }
    return entryAtCursor(atEnd);
}

void clsHistory::Load() {
    modMain::Guarded([&] {
        PROC("clsHistory Load");
        // Built aside, so that a value name that is not an index leaves the list as it was.
        QStringList list{QString()};
        const auto values = modSettings::GetAllSettings(m_sSection);
        PROC("clsHistory Load");
        for (const auto &[name, value] : values) {
            const qint32 k = modSettings::IntValue(name);
            if (k < 0) {
                modMain::Raise(modMain::errSubscriptOutOfRange);
            }
            if (k > kMaxIndex) {
                modMain::Raise(modMain::errOverflow);
            }
            list.resize(k + 1);
            list[k] = value;
        }
        m_entries = list;
        m_iCursor = 0;
    });
}

void clsHistory::Save() {
    modMain::Guarded([&] {
        PROC("clsHistory Save");
        for (const auto &pair : modSettings::GetAllSettings(m_sSection)) {
            modSettings::DeleteSetting(m_sSection, pair.first);
        }
        for (qsizetype i = 0; i < m_entries.size(); ++i) {
            modSettings::SaveSetting(m_sSection, QString::number(i + 1), m_entries.at(i));
        }
    });
}

void clsHistory::Store(const QString &entry) {
    modMain::Guarded([&] {
        PROC("clsHistory Store");
        const QString head = modString::Trim(entry);
        QStringList list{head};
        for (const QString &old : std::as_const(m_entries)) {
            const QString trimmed = modString::Trim(old);
            if (trimmed.isEmpty() || trimmed == head) {
                continue;
            }
            if (list.size() >= m_iMaxEntries) {
                break;
            }
            list.append(old);
        }
        m_entries = list;
    });
}
