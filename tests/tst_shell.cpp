// The application shell: the settings store, its text forms and the options, fonts and window
// placement kept in it; the recently used files, the status bar's panels and the diagnostic
// window's details; the routing table and the refresh of the command states.
#include "app/StatusPanels.h"
#include "app/modCommandState.h"
#include "app/modCommands.h"
#include "app/modMRU.h"
#include "app/modMain.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "document/modFile.h"
#include "editor/modFont.h"
#include "help/DebugDetails.h"
#include "richtext/RichTextBuffer.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "util/ErrorLog.h"
#include "util/modGlobals.h"

#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

using namespace modCommands;
using namespace modMain;
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

// The pressed values of the Bold, Left, Centre and Right buttons, then of the expansion buttons
// (levels 1 to 7, then all); "." where none was set.
QString pressed(const FakeMainWindow &frm) {
    QStringList keys{u"Bold Text"_s, u"Left Align Text"_s, u"Centre Align Text"_s,
                     u"Right Align Text"_s};
    for (int n = 1; n <= 7; ++n) {
        keys << u"Expand to level "_s + QString::number(n);
    }
    keys << u"Expand all levels"_s;
    QString out;
    for (const QString &key : keys) {
        out += frm.ButtonValue.contains(key) ? QString::number(frm.ButtonValue[key]) : u"."_s;
    }
    return out.insert(4, u' ');
}

QStringList split(const QString &text) {
    return text.isEmpty() ? QStringList{} : text.split(u'|');
}

} // namespace

class TestShell : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Each test has a store, a main window and recent files of its own, and the defaults.
    void init() {
        m_settings = new ScopedSettings;
        m_frm = new FakeMainWindow;
        modFont::CreateFontRecords();
        InitialiseDefaults();
        modMRU::SetList({});
    }

    void cleanup() {
        delete m_frm;
        DocTest::closeAll();
        delete m_settings;
    }

    void storeOperations() {
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
        AddRows({{"False", "False", "0"},
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
        m_frm->Dpi = 144.0; // 1000 twips = 100 pixels
        // Values left over from an earlier session must not survive an empty store.
        MaxMRUFiles = 4;
        AutoSplit = false;
        modFont::g_fntOutlineFont.setBold(true);
        modFont::g_fntOutlineFont.setName(u"Old"_s);
        LoadSettings();
        QCOMPARE(options(), u"10 False True True True False True True True"_s);
        QCOMPARE(fontText(modFont::g_fntOutlineFont), u" 10"_s);
        QCOMPARE(m_frm->Geometry, QRect(100, 100, 650, 650));
        QCOMPARE(m_frm->Calls, (QStringList{u"Left"_s, u"Top"_s, u"Width"_s, u"Height"_s}));
    }

    void roundTrip() {
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
        m_frm->Geometry = QRect(33, 44, 555, 666);
        SaveSettings();
        QCOMPARE(GetSetting(u"Settings"_s, u"MainLeft"_s), u"495"_s); // 33 px at 96 dpi

        modFont::CreateFontRecords();
        InitialiseDefaults();
        m_frm->Geometry = QRect();
        LoadSettings();
        QCOMPARE(options(), u"25 True False False True True False False False"_s);
        // Both fonts share one section and the text font is written last: both come back as it.
        const QString text = u"DejaVu Serif 11.25 bold italic underline strike"_s;
        QCOMPARE(fontText(modFont::g_fntTextFont), text);
        QCOMPARE(fontText(modFont::g_fntOutlineFont), text);
        QVERIFY(GetAllSettings(u"TextFont"_s).isEmpty());
        QCOMPARE(m_frm->Geometry, QRect(33, 44, 555, 666));
    }

    void valueThatDoesNotConvertStopsReading() {
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
        // Without PreserveSettings the stored place is not applied, but the current one is written.
        SaveSetting(u"Settings"_s, u"PreserveSettings"_s, u"False"_s);
        SaveSetting(u"Settings"_s, u"MainLeft"_s, u"3000"_s);
        m_frm->Geometry = QRect(7, 8, 300, 200);
        LoadSettings();
        QCOMPARE(PreserveSettings, false);
        QCOMPARE(m_frm->Geometry, QRect(7, 8, 300, 200));
        QVERIFY(m_frm->Calls.isEmpty());
        SaveSettings();
        QCOMPARE(GetSetting(u"Settings"_s, u"MainLeft"_s), u"105"_s);
        QCOMPARE(GetSetting(u"Settings"_s, u"MainWidth"_s), u"4500"_s);
        // A minimised window keeps the stored place; the options are written all the same.
        DeleteSection(u"Settings"_s);
        SaveSetting(u"Settings"_s, u"MainLeft"_s, u"1234"_s);
        m_frm->Minimised = true;
        SaveSettings();
        QCOMPARE(GetSetting(u"Settings"_s, u"MainLeft"_s), u"1234"_s);
        QCOMPARE(GetSetting(u"Settings"_s, u"MainTop"_s, u"none"_s), u"none"_s);
        QCOMPARE(GetSetting(u"Settings"_s, u"ViewToolbar"_s), u"True"_s);
    }

    void updateList_data() {
        QTest::addColumn<QString>("before"); // elements joined by "|"
        QTest::addColumn<QString>("max");
        QTest::addColumn<QString>("file"); // added, or removed when the row says "remove"
        QTest::addColumn<QString>("remove");
        QTest::addColumn<QString>("menu"); // the captions shown, joined by "|"
        AddRows({
            {"other spelling replaced", "/x|C:\\a.mvd |/y", "10", " c:\\A.mvd", "",
             "&1 c:\\A.mvd|&2 /x|&3 /y"},
            {"trimmed to the maximum", "/3|/2|/1", "3", "/4", "", "&1 /4|&2 /3|&3 /2"},
            {"maximum 0 keeps the new file", "/a", "0", "/b", "", "&1 /b"},
            {"empty elements go", "||/a||/b", "10", "/c", "", "&1 /c|&2 /a|&3 /b"},
            {"removed", "/a|/B |/c", "10", "/b", "remove", "&1 /a|&2 /c"},
            {"removing the last one hides the separator", "/a", "10", "/a", "remove", ""},
            {"accelerators run 1 to 9, 0, 1", "/b|/c|/d|/e|/f|/g|/h|/i|/j|/k", "20", "/a", "",
             "&1 /a|&2 /b|&3 /c|&4 /d|&5 /e|&6 /f|&7 /g|&8 /h|&9 /i|&0 /j|&1 /k"},
        });
    }
    void updateList() {
        QFETCH(QString, before);
        QFETCH(QString, max);
        QFETCH(QString, file);
        QFETCH(QString, remove);
        QFETCH(QString, menu);
        modGlobals::MaxMRUFiles = max.toInt();
        modMRU::SetList(split(before));
        modMRU::UpdateMRUFile(file, !remove.isEmpty());
        QCOMPARE(m_frm->MRUShown, split(menu));
        // Item 0 is never used; each item gives back its file.
        QCOMPARE(modMRU::MenuFile(0), QString());
        for (qsizetype i = 0; i < m_frm->MRUShown.size(); ++i) {
            QCOMPARE(modMRU::MenuFile(int(i + 1)), modMRU::List().at(i));
        }
    }

    void storeKeepsPositions() {
        // Keys count from 1 and the list from 0: each load and save adds an empty element in front.
        modSettings::SaveSetting(u"MRU"_s, u"1"_s, u"/a"_s);
        modSettings::SaveSetting(u"MRU"_s, u"2"_s, u"/b"_s);
        modSettings::SaveSetting(u"MRU"_s, u"4"_s, u"/d"_s);
        modMRU::LoadMRUFiles();
        QCOMPARE(modMRU::List(), (QStringList{"", "/a", "/b", "", "/d"}));
        QCOMPARE(m_frm->MRUShown, (QStringList{"&1 /a", "&2 /b", "&3 /d"}));
        modMRU::SaveMRUFiles();
        modMRU::LoadMRUFiles();
        QCOMPARE(modMRU::List(), (QStringList{"", "", "/a", "/b", "", "/d"}));
        modMRU::UpdateMRUFile(u"/e"_s, false);
        modMRU::SaveMRUFiles();
        QCOMPARE(
            modSettings::GetAllSettings(u"MRU"_s),
            (QList<QPair<QString, QString>>{{"1", "/e"}, {"2", "/a"}, {"3", "/b"}, {"4", "/d"}}));
        // A key that is not a number ends the loading; nothing else breaks.
        ScopedLog log;
        modSettings::SaveSetting(u"MRU"_s, u"x"_s, u"/z"_s);
        modMRU::LoadMRUFiles();
        QVERIFY(log.content().contains(u"Error 13 - Type mismatch"_s));
    }

    void openFromMenu() {
        QTemporaryDir dir;
        const QString open = dir.filePath(u"open.mvd"_s), gone = dir.filePath(u"gone.mvd"_s),
                      other = dir.filePath(u"other.mvd"_s), warning = u"Warning - the file "_s;
        WriteFileBytes(open, DocTest::exampleFile());
        WriteFileBytes(other, DocTest::exampleFile());
        DocTest::newDocument()->m_sFile = open;
        DocTest::newDocument();
        modMRU::SetList({open, gone, other});
        // Picks an item: the message shown, the active document's file and the list after it.
        auto pick = [&](int item, const QString &asked, const QString &active,
                        const QStringList &list) {
            m_frm->Asked.clear();
            modFile::FileMRU(item);
            QCOMPARE(m_frm->Asked.join(u'|'), asked);
            QCOMPARE(Documents::Active()->m_sFile, active);
            QCOMPARE(modMRU::List(), list);
        };
        pick(1, warning + open + u" is already loaded, so cannot be loaded again"_s, open,
             {open, gone, other});
        pick(2, warning + gone + u" no longer exists, so cannot be loaded"_s, open, {open, other});
        pick(2, {}, other, {other, open});
        pick(7, {}, other, {other, open}); // no such item
        QCOMPARE(Documents::All().size(), size_t(3));
    }

    void statusPanels_data() {
        QTest::addColumn<bool>("caps");
        QTest::addColumn<bool>("num");
        QTest::addColumn<bool>("overwrite");
        QTest::addColumn<QString>("shown"); // text of each lock panel, "-" after one shown greyed
        QTest::newRow("caps lock") << true << false << false << "CAPS NUM- INS";
        QTest::newRow("num lock, overwrite") << false << true << true << "CAPS- NUM OVR";
    }
    void statusPanels() {
        QFETCH(bool, caps);
        QFETCH(bool, num);
        QFETCH(bool, overwrite);
        const QList<StatusPanel> panels =
            StatusPanels::Panels(KeyState{caps, num, overwrite}, QTime(14, 5));
        QStringList texts;
        for (const StatusPanel &p : panels.mid(0, 3)) {
            texts << p.Text + (p.Enabled ? u""_s : u"-"_s);
            // The tool-tip tells what a click does.
            QCOMPARE(p.ToolTip.contains(u"click"_s), StatusPanels::VirtualKey(p.Key) != 0);
        }
        QTEST(texts.join(u' '), "shown");
        QCOMPARE(panels.at(3).Key, u"Time"_s);
        QVERIFY(panels.at(3).Text.contains(u"05"_s));
        QCOMPARE(StatusPanels::VirtualKey(u"Time"_s), 0);
    }

    void debugDetails_data() {
        QTest::addColumn<int>("selectFrom"); // -1: no entry selected
        QTest::addColumn<QString>("details");
        QTest::newRow("one font")
            << 0
            << "Font name Serif\r\nFont size 10.5\r\nSelected font name Arial\r\n"
               "Selected font size 12\r\nIndex 2\r\nKey KEY0.1\r\n";
        QTest::newRow("selection over two fonts")
            << 1
            << "Font name Serif\r\nFont size 10.5\r\nSelected font name \r\n"
               "Selected font size \r\nIndex 2\r\nKey KEY0.1\r\n";
        QTest::newRow("no entry selected") << -1 << "";
    }
    void debugDetails() {
        QFETCH(int, selectFrom);
        QFETCH(QString, details);
        ScopedLog log;
        Document *doc = DocTest::newDocument();
        auto *buffer = new RichTextBuffer;
        doc->setTextPane(std::unique_ptr<TextPane>(buffer));
        QFont base(u"Serif"_s);
        base.setPointSizeF(10.5);
        buffer->SetFont(base);
        buffer->SetTextRTF("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}{\\f1 Courier New;}}"
                           "\\f0\\fs24 ab\\f1\\fs21 cd\\par}");
        Node *root = DocTest::add(doc, nullptr, u"Root"_s);
        Node *child = DocTest::add(doc, root, u"Child"_s);
        root->setKey(u"KEY0"_s);
        child->setKey(u"KEY0.1"_s);
        if (selectFrom >= 0) {
            child->setSelected(true);
            buffer->Select(selectFrom, selectFrom + 2);
        }
        QVERIFY(DebugDetails::RichTextSource(*doc).startsWith(u"{\\rtf1"_s));
        const QString got = modMain::Guarded([&] {
            PROC("frmDebug ShowDetails");
            return DebugDetails::DetailsText(*doc);
        });
        QCOMPARE(got, details);
        QCOMPARE(log.content().contains(u"Error 424"_s), details.isEmpty());
    }

    void tableIsConsistent() {
        QSet<QString> names;
        QSet<int> keys;
        for (const Command &item : MenuItems()) {
            QVERIFY2(!names.contains(item.Name), qPrintable(item.Name));
            names.insert(item.Name);
            QVERIFY(item.Name.startsWith(item.Kind == ItemKind::Key ? u"key"_s : u"mnu"_s));
            static const QRegularExpression bar(u"Bar(\\d+|MRU)$"_s);
            QCOMPARE(item.Kind == ItemKind::Separator, bar.match(item.Name).hasMatch());
            QVERIFY2(item.Kind == ItemKind::Command || item.Toolbar.Key.isEmpty(),
                     qPrintable(item.Name));
            for (const QKeyCombination k : item.WindowKeys) { // one command a key
                QVERIFY2(!keys.contains(k.toCombined()), qPrintable(item.Name));
                keys.insert(k.toCombined());
            }
        }
        QSet<QString> buttonKeys;
        for (const ToolbarButton &b : ToolbarButtons()) {
            buttonKeys.insert(b.Key);
        }
        QCOMPARE(buttonKeys.size(), ToolbarButtons().size());
        // Buttons share the procedure and argument of their item.
        QCOMPARE(FindButton(u"Expand to level 6"_s)->Row->Argument, 6);
    }

    void windowKeys_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("item"); // "" for none
        const int alt = Qt::ALT, ctrl = Qt::CTRL, shift = Qt::SHIFT, pad = Qt::KeypadModifier;
        QTest::newRow("Alt+A") << (alt | Qt::Key_A) << u"mnuOutlineInsertAbove"_s;
        QTest::newRow("Alt+Up on the keypad") << (alt | pad | Qt::Key_Up) << u"mnuOutlineMoveUp"_s;
        QTest::newRow("keypad Plus") << (pad | Qt::Key_Plus) << u"mnuOutlineExpand"_s;
        QTest::newRow("main Plus") << int(Qt::Key_Plus) << u""_s;
        QTest::newRow("Shift+F2") << (shift | Qt::Key_F2) << u""_s;
        QTest::newRow("Ctrl+Shift+<") << (ctrl | shift | Qt::Key_Less) << u"keyFontSizeStep"_s;
    }
    void windowKeys() {
        QFETCH(int, key);
        const Command *c = FindWindowKey(QKeyCombination::fromCombined(key));
        QTEST(c ? c->Name : QString(), "item");
        if (c && c->Kind == ItemKind::Key) {
            QCOMPARE(c->Argument, 0); // the size key makes the text smaller
        }
    }

    void rules_data() {
        QTest::addColumn<QString>("item");
        // d: a document is open, r: it is read-only, e: an entry is selected, R: it is the root,
        // f: the text has the focus, t: tagged entries exist.
        QTest::addColumn<QString>("state");
        QTest::addColumn<bool>("expected");
        QTest::newRow("new without document") << u"mnuFileNew"_s << u""_s << true;
        QTest::newRow("close needs a document") << u"mnuFileClose"_s << u""_s << false;
        QTest::newRow("save read-only") << u"mnuFileSave"_s << u"dre"_s << false;
        QTest::newRow("insert child of root") << u"mnuOutlineInsertChild"_s << u"deR"_s << true;
        QTest::newRow("insert above root") << u"mnuOutlineInsertAbove"_s << u"deR"_s << false;
        QTest::newRow("move up no entry") << u"mnuOutlineMoveUp"_s << u"d"_s << false;
        QTest::newRow("move up entry") << u"mnuOutlineMoveUp"_s << u"de"_s << true;
        QTest::newRow("bold without text focus") << u"mnuEditFormatBold"_s << u"de"_s << false;
        QTest::newRow("bold with text focus") << u"mnuEditFormatBold"_s << u"def"_s << true;
        QTest::newRow("bold read-only") << u"mnuEditFormatBold"_s << u"dref"_s << false;
        QTest::newRow("copy text read-only") << u"mnuEditCopy"_s << u"dref"_s << true;
        QTest::newRow("delete tagged none")
            << u"mnuOutlineDeleteTaggedEntries"_s << u"de"_s << false;
        QTest::newRow("delete tagged some")
            << u"mnuOutlineDeleteTaggedEntries"_s << u"det"_s << true;
    }
    void rules() {
        QFETCH(QString, item);
        QFETCH(QString, state);
        CommandInputs in;
        in.OpenDocuments = state.contains(u'd') ? 1 : 0;
        in.ActiveDocument = state.contains(u'd');
        in.ReadOnly = state.contains(u'r');
        in.EntrySelected = state.contains(u'e');
        in.SelectionIsRoot = state.contains(u'R');
        in.TextHasFocus = state.contains(u'f');
        in.TaggedExist = state.contains(u't');
        const Command *mi = FindItem(item);
        QVERIFY(mi);
        QTEST(RuleHolds(mi->Needs, in, false), "expected");
    }

    void itemsWithoutProcedureStayDisabled() {
        CommandInputs all;
        all.OpenDocuments = 2;
        all.ActiveDocument = all.EntrySelected = all.TextHasFocus = all.OutlineHasFocus =
            all.TaggedExist = all.AnyDocumentChanged = true;
        for (const Command &item : MenuItems()) {
            if (item.Kind == ItemKind::Command) {
                QCOMPARE(ItemEnabled(item.Name, all), item.Proc != nullptr);
            }
        }
    }

    void tagCaptionAndLevelFollowSelection() {
        CommandInputs in;
        in.OpenDocuments = 1;
        in.ActiveDocument = in.EntrySelected = in.SelectionTagged = true;
        MenuEnableDynamic(in);
        QCOMPARE(m_frm->ItemCaption.value(u"mnuOutlineTaggedEntry"_s), u"Unta&g entry    Alt+T"_s);
        QCOMPARE(m_frm->ButtonToolTip.value(u"Tag Entry"_s), u"Untag entry"_s);
        in.SelectionTagged = false;
        MenuEnableDynamic(in);
        QCOMPARE(m_frm->ItemCaption.value(u"mnuOutlineTaggedEntry"_s), u"Ta&g entry      Alt+T"_s);
        QCOMPARE(m_frm->ButtonToolTip.value(u"Tag Entry"_s), u"Tag entry"_s);
        // A tag left over without a selection does not show as tagged.
        in.SelectionTagged = true;
        in.EntrySelected = false;
        m_frm->ButtonToolTip.clear();
        MenuEnableDynamic(in);
        QCOMPARE(m_frm->ButtonToolTip.value(u"Tag Entry"_s), u"Tag entry"_s);
        // The level last expanded to shows on its command and button.
        in.ExpansionLevel = 3;
        MenuEnableDynamic(in);
        QVERIFY(m_frm->ItemChecked.value(u"mnuOutlineExpandLevel3"_s));
        QCOMPARE(pressed(*m_frm), u".... 00100000"_s);
    }

    void buttonValues_data() {
        // d: a document is active; b bold, p plain (else mixed); L, C, R the alignment (else
        // mixed); x the root is expanded. Every expansion button is pressed before the refresh.
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("expected"); // as pressed() gives it
        AddRows({
            {"bold centred", "dbC", "1010 10000000"},
            {"mixed everything", "d", "0000 10000000"},
            {"right", "dpR", "0001 10000000"},
            {"expanded root keeps the levels", "dpLx", "0100 11111111"},
            {"no document changes nothing", "bx", ".... 11111111"},
        });
    }
    void buttonValues() {
        QFETCH(QString, state);
        CommandInputs in;
        in.OpenDocuments = in.ActiveDocument = state.contains(u'd');
        if (state.contains(u'b') || state.contains(u'p')) {
            in.SelBold = state.contains(u'b');
        }
        for (const auto &[letter, alignment] : {std::pair{u'L', Alignment::Left},
                                                {u'C', Alignment::Centre},
                                                {u'R', Alignment::Right}}) {
            if (state.contains(letter)) {
                in.SelAlignment = alignment;
            }
        }
        in.RootExists = in.RootExpanded = state.contains(u'x');
        for (int n = 1; n <= 7; ++n) {
            m_frm->ButtonValue[u"Expand to level "_s + QString::number(n)] = 1;
        }
        m_frm->ButtonValue[u"Expand all levels"_s] = 1;
        UpdateToolbarStatus(in);
        QTEST(pressed(*m_frm), "expected");
        QCOMPARE(m_frm->Refreshes, int(in.ActiveDocument));
    }

private:
    ScopedSettings *m_settings = nullptr;
    FakeMainWindow *m_frm = nullptr; // shows the recent files' captions
};

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
