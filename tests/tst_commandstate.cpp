// The routing table and the refresh of the command states.
#include "app/modCommandState.h"
#include "app/modCommands.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "util/ErrorLog.h"

#include <QRegularExpression>
#include <QSet>
#include <QtTest>

using namespace modCommands;
using namespace modMain;
using namespace Qt::StringLiterals;

namespace {

// The inputs with one document open and active, nothing else.
CommandInputs oneDocument() {
    CommandInputs in;
    in.OpenDocuments = 1;
    in.ActiveDocument = true;
    return in;
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

} // namespace

class TestCommandState : public QObject {
    Q_OBJECT
private Q_SLOTS:
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
        QTest::newRow("keypad Minus") << (pad | Qt::Key_Minus) << u"mnuOutlineCollapse"_s;
        QTest::newRow("Shift+F2") << (shift | Qt::Key_F2) << u""_s;
        QTest::newRow("Ctrl+Shift+<") << (ctrl | shift | Qt::Key_Less) << u"keyFontSizeStep"_s;
        QTest::newRow("Ctrl+Shift+.") << (ctrl | shift | Qt::Key_Period) << u"keyFontSizeStep"_s;
        QTest::newRow("Alt+F4") << (alt | Qt::Key_F4) << u""_s;
    }
    void windowKeys() {
        QFETCH(int, key);
        const Command *c = FindWindowKey(QKeyCombination::fromCombined(key));
        QTEST(c ? c->Name : QString(), "item");
        if (c && c->Kind == ItemKind::Key) {
            QCOMPARE(c->Argument, 0); // both size keys make the text smaller
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
        QTest::newRow("print read-only") << u"mnuFilePrint"_s << u"dr"_s << true;
        QTest::newRow("save read-only") << u"mnuFileSave"_s << u"dre"_s << false;
        QTest::newRow("save writable") << u"mnuFileSave"_s << u"d"_s << true;
        QTest::newRow("insert child of root") << u"mnuOutlineInsertChild"_s << u"deR"_s << true;
        QTest::newRow("insert above root") << u"mnuOutlineInsertAbove"_s << u"deR"_s << false;
        QTest::newRow("move up no entry") << u"mnuOutlineMoveUp"_s << u"d"_s << false;
        QTest::newRow("move up entry") << u"mnuOutlineMoveUp"_s << u"de"_s << true;
        QTest::newRow("copy entry read-only") << u"mnuOutlineCopy"_s << u"dre"_s << true;
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
        CommandInputs all = oneDocument();
        all.OpenDocuments = 2;
        all.EntrySelected = all.TextHasFocus = all.OutlineHasFocus = all.TaggedExist = true;
        all.AnyDocumentChanged = true;
        for (const Command &item : MenuItems()) {
            if (item.Kind == ItemKind::Command) {
                QCOMPARE(ItemEnabled(item.Name, all), item.Proc != nullptr);
            }
        }
    }

    void tagCaptionAndLevelFollowSelection() {
        FakeMainWindow frm;
        CommandInputs in = oneDocument();
        in.EntrySelected = in.SelectionTagged = true;
        MenuEnableDynamic(in);
        QCOMPARE(frm.ItemCaption.value(u"mnuOutlineTaggedEntry"_s), u"Unta&g entry    Alt+T"_s);
        QCOMPARE(frm.ButtonToolTip.value(u"Tag Entry"_s), u"Untag entry"_s);
        in.SelectionTagged = false;
        MenuEnableDynamic(in);
        QCOMPARE(frm.ItemCaption.value(u"mnuOutlineTaggedEntry"_s), u"Ta&g entry      Alt+T"_s);
        QCOMPARE(frm.ButtonToolTip.value(u"Tag Entry"_s), u"Tag entry"_s);
        // A tag left over without a selection does not show as tagged.
        in.SelectionTagged = true;
        in.EntrySelected = false;
        frm.ButtonToolTip.clear();
        MenuEnableDynamic(in);
        QCOMPARE(frm.ButtonToolTip.value(u"Tag Entry"_s), u"Tag entry"_s);
        // The level last expanded to shows on its command and button.
        in.ExpansionLevel = 3;
        MenuEnableDynamic(in);
        QVERIFY(frm.ItemChecked.value(u"mnuOutlineExpandLevel3"_s));
        QVERIFY(!frm.ItemChecked.value(u"mnuOutlineExpandLevel2"_s));
        QCOMPARE(pressed(frm), u".... 00100000"_s);
    }

    void buttonValues_data() {
        // d: a document is active; b bold, p plain (else mixed); L, C, R the alignment (else
        // mixed); x the root is expanded. Every expansion button is pressed before the refresh.
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("expected"); // as pressed() gives it
        AddRows({
            {"bold centred", "dbC", "1010 10000000"},
            {"plain left", "dpL", "0100 10000000"},
            {"mixed everything", "d", "0000 10000000"},
            {"right", "dpR", "0001 10000000"},
            {"expanded root keeps the levels", "dpLx", "0100 11111111"},
            {"no document changes nothing", "bx", ".... 11111111"},
        });
    }
    void buttonValues() {
        QFETCH(QString, state);
        FakeMainWindow frm;
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
            frm.ButtonValue[u"Expand to level "_s + QString::number(n)] = 1;
        }
        frm.ButtonValue[u"Expand all levels"_s] = 1;
        UpdateToolbarStatus(in);
        QTEST(pressed(frm), "expected");
        QCOMPARE(frm.Refreshes, int(in.ActiveDocument));
    }
};

QTEST_GUILESS_MAIN(TestCommandState)
#include "tst_commandstate.moc"
