#pragma once

#include <QList>
#include <QPair>
#include <QString>

// The per-user settings store: one INI file in the user's configuration folder under the
// application name "Mavrolen", sections of text values under text keys.
namespace modSettings {

// The store's file. SetSettingsFile points it elsewhere (tests); "" restores the default.
QString SettingsFile();
void SetSettingsFile(const QString &path);

QString GetSetting(const QString &section, const QString &key, const QString &defaultValue = {});
void SaveSetting(const QString &section, const QString &key, const QString &value);
// All key/value pairs of a section: keys made of digits in numeric order first ("2" before
// "10"), then the other keys in the store's order. A missing section gives an empty list.
QList<QPair<QString, QString>> GetAllSettings(const QString &section);
void DeleteSetting(const QString &section, const QString &key);
void DeleteSection(const QString &section);

// Text forms of the values. The readers raise 13 (Type mismatch) on text that does not convert
// and 6 (Overflow) on a number out of range.
QString BoolText(bool value);
bool BoolValue(const QString &text);
qint32 IntValue(const QString &text);
QString SizeText(double points);
double SizeValue(const QString &text);
QString TwipsText(float twips);
float TwipsValue(const QString &text);

} // namespace modSettings
