// The settings store, its text forms, and the options, fonts and window placement kept in it.
#include "app/modMain.h"
#include "app/modSettings.h"
#include "editor/modFont.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "util/ErrorLog.h"
#include "util/modGlobals.h"

#include <QtTest>

using namespace modSettings;
using namespace modGlobals;
using namespace Qt::StringLiterals;

namespace {

// The options in a fixed order: MaxMRUFiles, AutoLabelEdit, AutoSplit, Backup, PreserveSettings,
// StartWithNewDocument, StartWithLatestDocuments, ViewStatusbar, ViewToolbar.
QString options() {
    QStringList out{QString::number(MaxMRUFiles)};
    for (bool b : {AutoLabelEdit, AutoSplit, Backup, PreserveSettings, StartWithNewDocument,
                   StartWithLatestDocuments, ViewStatusbar, ViewToolbar}) {
        out << BoolText(b);
    }
    return out.join(u' ');
}

// "name size" and the styles set, e.g. "Arial 10 bold italic".
QString fontText(const clsFont &f) {
    QStringList out{f.Name(), QString::number(f.Size())};
    const std::pair<bool, const char *> styles[] = {{f.Bold(), "bold"},
                                                    {f.Italic(), "italic"},
                                                    {f.Underline(), "underline"},
                                                    {f.StrikeThrough(), "strike"}};
    for (const auto &[on, name] : styles) {
        if (on) {
            out << QString::fromLatin1(name);
        }
    }
    return out.join(u' ');
}

} // namespace

class TestSettings : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        modFont::CreateFontRecords();
        InitialiseDefaults();
    }

    void storeOperations() {
        ScopedSettings store;
        QCOMPARE(GetSetting(u"S"_s, u"k"_s, u"dflt"_s), u"dflt"_s);
        SaveSetting(u"S"_s, u"k"_s, u"a, b = c; d"_s);
        SaveSetting(u"S"_s, u"other"_s, u""_s);
        QCOMPARE(GetSetting(u"S"_s, u"k"_s), u"a, b = c; d"_s);
        // An empty value is a value, not a missing key.
        QCOMPARE(GetSetting(u"S"_s, u"other"_s, u"dflt"_s), u""_s);
        DeleteSetting(u"S"_s, u"k"_s);
        QCOMPARE(GetSetting(u"S"_s, u"k"_s, u"gone"_s), u"gone"_s);
    }

    void numericKeyOrder_data() {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("expected");
        QTest::newRow("beyond nine") << u"10 2 1 11 3"_s << u"1 2 3 10 11"_s;
        QTest::newRow("other keys after") << u"zeta 12 alpha 9"_s << u"9 12 alpha zeta"_s;
        QTest::newRow("longer than any integer")
            << u"123456789012345678901234 99999999999999999999 5"_s
            << u"5 99999999999999999999 123456789012345678901234"_s;
    }
    void numericKeyOrder() {
        QFETCH(QString, written);
        ScopedSettings store;
        for (const QString &key : written.split(u' ')) {
            SaveSetting(u"MRU"_s, key, u"value "_s + key);
        }
        QStringList keys;
        for (const auto &[key, value] : GetAllSettings(u"MRU"_s)) {
            QCOMPARE(value, u"value "_s + key);
            keys << key;
        }
        QTEST(keys.join(u' '), "expected");
    }

    void booleanReading_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected"); // "1" true, "0" false, "-1" type mismatch
        AddRows({{"True", "True", "1"},
                 {"False", "False", "0"},
                 {"lower case", "true", "1"},
                 {"zero", "0", "0"},
                 {"minus one", "-1", "1"},
                 {"fraction", "0.5", "1"},
                 {"word", "yes", "-1"},
                 {"empty", "", "-1"}});
    }
    void booleanReading() {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        ScopedLog log;
        const int got = modMain::Guarded([&] { return BoolValue(text) ? 1 : 0; }, -1);
        QCOMPARE(QString::number(got), expected);
        QCOMPARE(log.content().contains(u"Error 13 - Type mismatch"_s), expected == u"-1"_s);
    }

    void numberForms() {
        QLocale::setDefault(QLocale::c());
        for (const auto &[size, text] :
             {std::pair{10.0, u"10"_s}, {8.12345678, u"8.1235"_s}, {0.0, u"0"_s}}) {
            QCOMPARE(SizeText(size), text);
            QCOMPARE(SizeValue(text), text.toDouble());
        }
        // Coordinates come back exactly as single-precision numbers.
        for (const float twips : {1000.0f, 1234.5677f, -15.0f, 0.1f}) {
            QCOMPARE(TwipsValue(TwipsText(twips)), twips);
        }
        // A number too large for the stored kind is a mismatch, not a wrapped value.
        QVERIFY_THROWS_EXCEPTION(modMain::RuntimeError, IntValue(u"1e30"_s));
        // A user notation with a decimal comma is written and read back in that notation.
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(SizeText(10.5), u"10,5"_s);
        QCOMPARE(SizeValue(u"10,5"_s), 10.5);
        QCOMPARE(TwipsValue(TwipsText(1234.5f)), 1234.5f);
        QLocale::setDefault(QLocale::c());
    }

    void emptyStoreGivesDefaults() {
        ScopedSettings store;
        FakeMainWindow frm;
        frm.Dpi = 144.0; // 1000 twips = 100 pixels
        // Values left over from an earlier session must not survive an empty store.
        MaxMRUFiles = 4;
        AutoSplit = false;
        modFont::g_fntOutlineFont.setBold(true);
        modFont::g_fntOutlineFont.setName(u"Old"_s);
        LoadSettings();
        QCOMPARE(options(), u"10 False True True True False True True True"_s);
        QCOMPARE(fontText(modFont::g_fntOutlineFont), u" 10"_s);
        QCOMPARE(fontText(modFont::g_fntTextFont), u" 10"_s);
        QCOMPARE(frm.Geometry, QRect(100, 100, 650, 650));
        QCOMPARE(frm.Calls, (QStringList{u"Left"_s, u"Top"_s, u"Width"_s, u"Height"_s}));
    }

    void roundTrip() {
        ScopedSettings store;
        FakeMainWindow frm;
        MaxMRUFiles = 25;
        AutoLabelEdit = StartWithNewDocument = true;
        AutoSplit = Backup = StartWithLatestDocuments = ViewStatusbar = ViewToolbar = false;
        modFont::g_fntOutlineFont.setName(u"Outline Face"_s);
        modFont::g_fntTextFont.setName(u"DejaVu Serif"_s);
        modFont::g_fntTextFont.setSize(11.25);
        modFont::g_fntTextFont.setItalic(true);
        modFont::g_fntTextFont.setUnderline(true);
        modFont::g_fntTextFont.setStrikeThrough(true);
        modFont::g_fntTextFont.setBold(true);
        frm.Geometry = QRect(33, 44, 555, 666);
        SaveSettings();
        QCOMPARE(GetSetting(u"Settings"_s, u"MainLeft"_s), u"495"_s); // 33 px at 96 dpi

        init();
        frm.Geometry = QRect();
        LoadSettings();
        QCOMPARE(options(), u"25 True False False True True False False False"_s);
        // Both fonts share one section and the text font is written last: both come back as it.
        const QString text = u"DejaVu Serif 11.25 bold italic underline strike"_s;
        QCOMPARE(fontText(modFont::g_fntTextFont), text);
        QCOMPARE(fontText(modFont::g_fntOutlineFont), text);
        QVERIFY(GetAllSettings(u"TextFont"_s).isEmpty());
        QCOMPARE(frm.Geometry, QRect(33, 44, 555, 666));
    }

    void valueThatDoesNotConvertStopsReading() {
        ScopedSettings store;
        ScopedLog log;
        SaveSetting(u"OutlineFont"_s, u"Name"_s, u"Read Before"_s);
        SaveSetting(u"Settings"_s, u"MaxMRUFiles"_s, u"abc"_s);
        SaveSetting(u"Settings"_s, u"AutoSplit"_s, u"False"_s);
        SaveSetting(u"Settings"_s, u"ViewToolbar"_s, u"False"_s);
        LoadSettings();
        // The fonts come before the options and are read; nothing after the bad value is.
        QCOMPARE(modFont::g_fntOutlineFont.Name(), u"Read Before"_s);
        QCOMPARE(options(), u"10 False True True True False True True True"_s);
        QVERIFY(log.content().contains(u"Error 13 - Type mismatch\r\n"_s));
        SaveSetting(u"Settings"_s, u"MaxMRUFiles"_s, u"3"_s);
        LoadSettings();
        QCOMPARE(options(), u"3 False False True True False True True False"_s);
    }

    void placementKeptWithoutPreserveOrMinimised() {
        ScopedSettings store;
        FakeMainWindow frm;
        // Without PreserveSettings the stored place is not applied, but the current one is written.
        SaveSetting(u"Settings"_s, u"PreserveSettings"_s, u"False"_s);
        SaveSetting(u"Settings"_s, u"MainLeft"_s, u"3000"_s);
        frm.Geometry = QRect(7, 8, 300, 200);
        LoadSettings();
        QCOMPARE(PreserveSettings, false);
        QCOMPARE(frm.Geometry, QRect(7, 8, 300, 200));
        QVERIFY(frm.Calls.isEmpty());
        SaveSettings();
        QCOMPARE(GetSetting(u"Settings"_s, u"MainLeft"_s), u"105"_s);
        QCOMPARE(GetSetting(u"Settings"_s, u"MainWidth"_s), u"4500"_s);
        // A minimised window keeps the stored place; the options are written all the same.
        DeleteSection(u"Settings"_s);
        SaveSetting(u"Settings"_s, u"MainLeft"_s, u"1234"_s);
        frm.Minimised = true;
        SaveSettings();
        QCOMPARE(GetSetting(u"Settings"_s, u"MainLeft"_s), u"1234"_s);
        QCOMPARE(GetSetting(u"Settings"_s, u"MainTop"_s, u"none"_s), u"none"_s);
        QCOMPARE(GetSetting(u"Settings"_s, u"ViewToolbar"_s), u"True"_s);
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
