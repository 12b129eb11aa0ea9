// The application shell's small parts: the recently used files, the status bar's panels and the
// diagnostic window's details.
#include "app/StatusPanels.h"
#include "app/modMRU.h"
#include "app/modMain.h"
#include "app/modSettings.h"
#include "document/Document.h"
#include "document/modFile.h"
#include "help/DebugDetails.h"
#include "richtext/RichTextBuffer.h"
#include "support/DocTestSupport.h"
#include "support/FakeMainWindow.h"
#include "support/TestSupport.h"
#include "util/modGlobals.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

QStringList split(const QString &text) {
    return text.isEmpty() ? QStringList{} : text.split(u'|');
}

} // namespace

class TestShell : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        m_settings = new ScopedSettings;
        modGlobals::MaxMRUFiles = 10;
        m_frm = new FakeMainWindow;
        modMRU::SetList({});
    }

    void cleanup() {
        delete m_frm;
        DocTest::closeAll();
        delete m_settings;
    }

    void updateList_data() {
        QTest::addColumn<QString>("before"); // elements joined by "|"
        QTest::addColumn<QString>("max");
        QTest::addColumn<QString>("file"); // added, or removed when the row says "remove"
        QTest::addColumn<QString>("remove");
        QTest::addColumn<QString>("menu"); // the captions shown, joined by "|"
        AddRows({
            {"newest first", "/a|/b", "10", "/c", "", "&1 /c|&2 /a|&3 /b"},
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
        QCOMPARE(modSettings::GetAllSettings(u"MRU"_s).size(), 5);
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
        FakeMainWindow frm;
        // Picks an item: the message shown, the active document's file and the list after it.
        auto pick = [&](int item, const QString &asked, const QString &active,
                        const QStringList &list) {
            frm.Asked.clear();
            modFile::FileMRU(item);
            QCOMPARE(frm.Asked.join(u'|'), asked);
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
        QTest::newRow("all off") << false << false << false << "CAPS- NUM- INS";
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

private:
    ScopedSettings *m_settings = nullptr;
    FakeMainWindow *m_frm = nullptr; // shows the recent files' captions
};

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
