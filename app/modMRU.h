#pragma once

#include <QString>
#include <QStringList>

// The recently used files of the File menu: a list kept in memory, persisted in the settings
// section "MRU" (key = position counted from 1), newest first. Empty elements may occur (a list
// loaded from the store starts with one); they are never shown.
namespace modMRU {

// The list as it stands, index 0 first.
const QStringList &List();
// Replaces the list (tests) and shows it.
void SetList(const QStringList &list);

// Fills the list from the section "MRU" (each key's number is the element's index) and shows it.
void LoadMRUFiles();
// Rewrites the section "MRU" from the list, empty elements included.
void SaveMRUFiles();

// Puts the file at the top of the list (trimmed), dropping other spellings of it (case and
// surrounding blanks ignored), empty elements and what goes beyond MaxMRUFiles; with `remove`
// the file is only taken out.
void UpdateMRUFile(const QString &file, bool remove);

// Rebuilds the menu items: the caption of item N (counted from 1, item 0 is never used) is "&",
// N modulo 10, a blank and the file name. The main window shows them (item 0 excluded).
void ShowMRUFiles();
// The captions of the menu items as ShowMRUFiles made them; element 0 is the unused item 0.
const QStringList &MenuCaptions();

// The file name behind menu item `index`: its caption without the accelerator, trimmed; "" for
// an item that does not exist.
QString MenuFile(int index);

} // namespace modMRU
