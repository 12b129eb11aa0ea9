#include "util/SettingsStore.h"

#include "util/ErrorLog.h"

#include <QDir>
#include <QLocale>
#include <QSettings>
#include <QStandardPaths>

#include <charconv>
#include <cmath>
#include <memory>

namespace modSettings {

namespace {

QString g_sSettingsFileOverride;

const QString kApp = QStringLiteral("Mavrolen");

std::unique_ptr<QSettings> Store() {
    return std::make_unique<QSettings>(SettingsFile(), QSettings::IniFormat);
}

QString ValueText(const QVariant &value) {
    // An unquoted value with commas comes back from an INI file as a list.
    if (value.typeId() == QMetaType::QStringList) {
        return value.toStringList().join(QLatin1Char(','));
    }
    return value.toString();
}

void CheckWritten(QSettings &store) {
    store.sync();
    if (store.status() != QSettings::NoError) {
        modMain::Raise(modMain::errPathFileAccess);
    }
}

bool IsNumericKey(const QString &key) {
    if (key.isEmpty()) {
        return false;
    }
    for (const QChar c : key) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return false;
        }
    }
    return true;
}

// Numeric comparison of digit strings of any length.
bool NumericLess(const QString &a, const QString &b) {
    auto strip = [](const QString &s) {
        qsizetype i = 0;
        while (i + 1 < s.size() && s[i] == QLatin1Char('0')) {
            ++i;
        }
        return s.mid(i);
    };
    const QString x = strip(a);
    const QString y = strip(b);
    if (x.size() != y.size()) {
        return x.size() < y.size();
    }
    if (x != y) {
        return x < y;
    }
    return a.size() < b.size();
}

// A number in the user's notation, or else in the neutral one.
bool ParseNumber(const QString &text, double &value) {
    const QString t = text.trimmed();
    if (t.isEmpty()) {
        return false;
    }
    bool ok = false;
    value = QLocale().toDouble(t, &ok);
    if (!ok) {
        value = QLocale::c().toDouble(t, &ok);
    }
    return ok && std::isfinite(value);
}

QString WithUserSeparator(QString text) {
    const QString point = QLocale().decimalPoint();
    if (point != QStringLiteral(".")) {
        text.replace(QLatin1Char('.'), point);
    }
    return text;
}

} // namespace

QString SettingsFile() {
    if (!g_sSettingsFileOverride.isEmpty()) {
        return g_sSettingsFileOverride;
    }
    QString dir = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (dir.isEmpty()) {
        dir = QDir::homePath() + QStringLiteral("/.config");
    }
    return dir + QLatin1Char('/') + kApp + QLatin1Char('/') + kApp + QStringLiteral(".ini");
}

void SetSettingsFile(const QString &path) {
    g_sSettingsFileOverride = path;
}

QString GetSetting(const QString &section, const QString &key, const QString &defaultValue) {
    PROC("modSettings GetSetting");
    auto store = Store();
    const QString path = section + QLatin1Char('/') + key;
    if (!store->contains(path)) {
        return defaultValue;
    }
    return ValueText(store->value(path));
}

void SaveSetting(const QString &section, const QString &key, const QString &value) {
    PROC("modSettings SaveSetting");
    if (section.isEmpty() || key.isEmpty()) {
        modMain::Raise(modMain::errInvalidProcedureCall);
    }
    auto store = Store();
    store->setValue(section + QLatin1Char('/') + key, value);
    CheckWritten(*store);
}

QList<QPair<QString, QString>> GetAllSettings(const QString &section) {
    PROC("modSettings GetAllSettings");
    auto store = Store();
    store->beginGroup(section);
    const QStringList keys = store->childKeys();
    QStringList numeric;
    QStringList other;
    for (const QString &key : keys) {
        (IsNumericKey(key) ? numeric : other).append(key);
    }
    std::stable_sort(numeric.begin(), numeric.end(), NumericLess);
    QList<QPair<QString, QString>> pairs;
    for (const QString &key : numeric + other) {
        pairs.append({key, ValueText(store->value(key))});
    }
    store->endGroup();
    return pairs;
}

void DeleteSetting(const QString &section, const QString &key) {
    PROC("modSettings DeleteSetting");
    auto store = Store();
    store->remove(section + QLatin1Char('/') + key);
    CheckWritten(*store);
}

void DeleteSection(const QString &section) {
    PROC("modSettings DeleteSection");
    if (section.isEmpty()) {
        modMain::Raise(modMain::errInvalidProcedureCall);
    }
    auto store = Store();
    store->remove(section);
    CheckWritten(*store);
}

QString BoolText(bool value) {
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

bool BoolValue(const QString &text) {
    const QString t = text.trimmed();
    if (t.compare(QStringLiteral("True"), Qt::CaseInsensitive) == 0) {
        return true;
    }
    if (t.compare(QStringLiteral("False"), Qt::CaseInsensitive) == 0) {
        return false;
    }
    double number = 0;
    if (!ParseNumber(t, number)) {
        modMain::Raise(modMain::errTypeMismatch);
    }
    return number != 0.0;
}

qint32 IntValue(const QString &text) {
    double number = 0;
    if (!ParseNumber(text, number)) {
        modMain::Raise(modMain::errTypeMismatch);
    }
    const double rounded = std::nearbyint(number); // halves to even
    if (rounded < -2147483648.0 || rounded > 2147483647.0) {
        modMain::Raise(modMain::errOverflow);
    }
    return qint32(rounded);
}

QString SizeText(double points) {
    QString text = QString::number(std::llround(points * 10000.0) / 10000.0, 'f', 4);
    while (text.endsWith(QLatin1Char('0'))) {
        text.chop(1);
    }
    if (text.endsWith(QLatin1Char('.'))) {
        text.chop(1);
    }
    if (text == QStringLiteral("-0")) {
        text = QStringLiteral("0");
    }
    return WithUserSeparator(text);
}

double SizeValue(const QString &text) {
    double number = 0;
    if (!ParseNumber(text, number)) {
        modMain::Raise(modMain::errTypeMismatch);
    }
    return number;
}

QString TwipsText(float twips) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, twips);
    return WithUserSeparator(QString::fromLatin1(buffer, result.ptr - buffer));
}

float TwipsValue(const QString &text) {
    double number = 0;
    if (!ParseNumber(text, number)) {
        modMain::Raise(modMain::errTypeMismatch);
    }
    if (std::fabs(number) > 3.4028234663852886e38) {
        modMain::Raise(modMain::errOverflow);
    }
    return float(number);
}

} // namespace modSettings
