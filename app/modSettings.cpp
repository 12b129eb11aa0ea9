#include "app/modSettings.h"

#include "editor/modFont.h"
#include "util/ErrorLog.h"
#include "util/MainWindowHost.h"
#include "util/modGlobals.h"

#include <cmath>

namespace modSettings {

namespace {

const QString kSettings = QStringLiteral("Settings");
const QString kOutlineFont = QStringLiteral("OutlineFont");

void ReadFont(clsFont &font) {
    font.setBold(BoolValue(GetSetting(kOutlineFont, QStringLiteral("Bold"), BoolText(false))));
    font.setItalic(BoolValue(GetSetting(kOutlineFont, QStringLiteral("Italic"), BoolText(false))));
    font.setName(GetSetting(kOutlineFont, QStringLiteral("Name"), QString()));
    font.setSize(SizeValue(GetSetting(kOutlineFont, QStringLiteral("Size"), SizeText(10))));
    font.setStrikeThrough(
        BoolValue(GetSetting(kOutlineFont, QStringLiteral("StrikeThrough"), BoolText(false))));
    font.setUnderline(
        BoolValue(GetSetting(kOutlineFont, QStringLiteral("Underline"), BoolText(false))));
}

void WriteFont(const clsFont &font) {
    SaveSetting(kOutlineFont, QStringLiteral("Bold"), BoolText(font.Bold()));
    SaveSetting(kOutlineFont, QStringLiteral("Italic"), BoolText(font.Italic()));
    SaveSetting(kOutlineFont, QStringLiteral("Name"), font.Name());
    SaveSetting(kOutlineFont, QStringLiteral("Size"), SizeText(font.Size()));
    SaveSetting(kOutlineFont, QStringLiteral("StrikeThrough"), BoolText(font.StrikeThrough()));
    SaveSetting(kOutlineFont, QStringLiteral("Underline"), BoolText(font.Underline()));
}

bool ReadBool(const QString &key, bool defaultValue) {
    return BoolValue(GetSetting(kSettings, key, BoolText(defaultValue)));
}

int TwipsToPixels(float twips, double dpi) {
    return int(std::lround(double(twips) * dpi / 1440.0));
}

float PixelsToTwips(int pixels, double dpi) {
    return float(double(pixels) * 1440.0 / dpi);
}

} // namespace

void LoadSettings() {
    PROC("modMain LoadSettings");
    using namespace modGlobals;
    modMain::Guarded([] {
        // Both records live in the one section on purpose: the last one saved wins for both.
        ReadFont(modFont::g_fntOutlineFont);
        ReadFont(modFont::g_fntTextFont);
        MaxMRUFiles =
            IntValue(GetSetting(kSettings, QStringLiteral("MaxMRUFiles"), QStringLiteral("10")));
        AutoLabelEdit = ReadBool(QStringLiteral("AutoLabelEdit"), false);
        AutoSplit = ReadBool(QStringLiteral("AutoSplit"), true);
        Backup = ReadBool(QStringLiteral("Backup"), true);
        PreserveSettings = ReadBool(QStringLiteral("PreserveSettings"), true);
        StartWithNewDocument = ReadBool(QStringLiteral("StartWithNewDocument"), false);
        StartWithLatestDocuments = ReadBool(QStringLiteral("StartWithLatestDocuments"), true);
        ViewStatusbar = ReadBool(QStringLiteral("ViewStatusbar"), true);
        ViewToolbar = ReadBool(QStringLiteral("ViewToolbar"), true);
        if (!PreserveSettings) {
            return;
        }
        modMain::MainWindowHost *frm = modMain::MainWindow();
        const float left =
            TwipsValue(GetSetting(kSettings, QStringLiteral("MainLeft"), QStringLiteral("1000")));
        if (frm) {
            frm->SetLeft(TwipsToPixels(left, frm->LogicalDpiX()));
        }
        const float top =
            TwipsValue(GetSetting(kSettings, QStringLiteral("MainTop"), QStringLiteral("1000")));
        if (frm) {
            frm->SetTop(TwipsToPixels(top, frm->LogicalDpiY()));
        }
        const float width =
            TwipsValue(GetSetting(kSettings, QStringLiteral("MainWidth"), QStringLiteral("6500")));
        if (frm) {
            frm->SetWidth(TwipsToPixels(width, frm->LogicalDpiX()));
        }
        const float height =
            TwipsValue(GetSetting(kSettings, QStringLiteral("MainHeight"), QStringLiteral("6500")));
        if (frm) {
            frm->SetHeight(TwipsToPixels(height, frm->LogicalDpiY()));
        }
    });
}

void SaveSettings() {
    PROC("modMain SaveSettings");
    using namespace modGlobals;
    modMain::Guarded([] {
        WriteFont(modFont::g_fntOutlineFont);
        WriteFont(modFont::g_fntTextFont);
        SaveSetting(kSettings, QStringLiteral("MaxMRUFiles"), QString::number(MaxMRUFiles));
        SaveSetting(kSettings, QStringLiteral("AutoLabelEdit"), BoolText(AutoLabelEdit));
        SaveSetting(kSettings, QStringLiteral("AutoSplit"), BoolText(AutoSplit));
        SaveSetting(kSettings, QStringLiteral("Backup"), BoolText(Backup));
        SaveSetting(kSettings, QStringLiteral("PreserveSettings"), BoolText(PreserveSettings));
        SaveSetting(kSettings, QStringLiteral("StartWithNewDocument"),
                    BoolText(StartWithNewDocument));
        SaveSetting(kSettings, QStringLiteral("StartWithLatestDocuments"),
                    BoolText(StartWithLatestDocuments));
        SaveSetting(kSettings, QStringLiteral("ViewStatusbar"), BoolText(ViewStatusbar));
        SaveSetting(kSettings, QStringLiteral("ViewToolbar"), BoolText(ViewToolbar));
        modMain::MainWindowHost *frm = modMain::MainWindow();
        if (!frm || frm->IsMinimised()) {
            return;
        }
        const QRect r = frm->Placement();
        SaveSetting(kSettings, QStringLiteral("MainLeft"),
                    TwipsText(PixelsToTwips(r.x(), frm->LogicalDpiX())));
        SaveSetting(kSettings, QStringLiteral("MainTop"),
                    TwipsText(PixelsToTwips(r.y(), frm->LogicalDpiY())));
        SaveSetting(kSettings, QStringLiteral("MainWidth"),
                    TwipsText(PixelsToTwips(r.width(), frm->LogicalDpiX())));
        SaveSetting(kSettings, QStringLiteral("MainHeight"),
                    TwipsText(PixelsToTwips(r.height(), frm->LogicalDpiY())));
    });
}

} // namespace modSettings
