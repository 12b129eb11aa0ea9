#pragma once

#include <QString>
#include <QStringList>

// A bounded list of recently used expressions, the most recent first, kept in one section of the
// settings store. Save writes the entries as values "1", "2", ...; Load puts value k at index k,
// so a saved list comes back behind an empty entry at index 0 (the next Store drops it again).
class clsHistory {
public:
    // The entry at the cursor, after moving the cursor to the first (or the next) entry; "" and
    // atEnd true once the cursor is past the last entry.
    QString FirstEntry(bool &atEnd);
    QString NextEntry(bool &atEnd);

    void Load();
    void Save();

    int MaxEntries() const { return m_iMaxEntries; }
    void setMaxEntries(int maxEntries) { m_iMaxEntries = maxEntries; }
    const QString &Section() const { return m_sSection; }
    void setSection(const QString &section) { m_sSection = section; }

    // Puts the entry, trimmed, at the head; drops empty entries and older copies of it, and
    // whatever no longer fits.
    void Store(const QString &entry);

    const QStringList &entries() const { return m_entries; }

private:
    QString entryAtCursor(bool &atEnd) const;

    QStringList m_entries;
    int m_iCursor = 0;
    int m_iMaxEntries = 0;
    QString m_sSection;
};
