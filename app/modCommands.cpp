#include "app/modCommands.h"

#include "app/modCommandState.h"
#include "app/modMain.h"
#include "app/modWindow.h"
#include "document/Document.h"
#include "document/modFile.h"
#include "editor/modEdit.h"
#include "editor/modFont.h"
#include "editor/modView.h"
#include "help/modHelp.h"
#include "outline/modOutline.h"
#include "print/modExport.h"
#include "richtext/RichTextBuffer.h"
#include "search/modSearch.h"
#include "util/MainWindowHost.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace modCommands {

namespace {

// A procedure without an argument, as a row calls it.
template <void (*F)()> void Call(int) {
    F();
}

// Printing and the diagnostic window are windows of their own: the main window shows them.
void PrintSetup(int) {
    modMain::Host().PrintSetup();
}
void Print(int currentEntryOnly) {
    modMain::Host().Print(currentEntryOnly != 0);
}
void PrintPreview(int currentEntryOnly) {
    modMain::Host().PrintPreview(currentEntryOnly != 0);
}
void ShowDebug(int) {
    modMain::Host().ShowDebug();
}

// The View menu's "MDI taskbar" item deliberately does nothing.
void ViewMDITaskbar(int) {}

void OutlineFont(int) {
    modOutline::OutlineFont(&modFont::ChangeTreeviewFont);
}

// One step larger (argument 1) or smaller for the selection of the active document's text; an
// empty selection does nothing.
void FontSizeStep(int larger) {
    Document *doc = nullptr;
    if (!modMain::DocumentActive(doc)) {
        return;
    }
    if (auto *pane = dynamic_cast<RichTextBuffer *>(doc->txtRTF()); pane && pane->SelLength() > 0) {
        modFont::ChangeSelectedFontSize(*pane, larger != 0);
    }
}

Command Menu(QString name, QString caption, int depth, unsigned needs = None) {
    Command c;
    c.Name = std::move(name);
    c.Caption = std::move(caption);
    c.Depth = depth;
    c.Kind = ItemKind::Menu;
    c.Needs = needs;
    return c;
}

Command Bar(QString name, int depth) {
    Command c;
    c.Name = std::move(name);
    c.Depth = depth;
    c.Kind = ItemKind::Separator;
    return c;
}

Command Item(QString name, QString caption, int depth, Procedure proc, unsigned needs,
             int argument = 0) {
    Command c;
    c.Name = std::move(name);
    c.Caption = std::move(caption);
    c.Depth = depth;
    c.Proc = proc;
    c.Needs = needs;
    c.Argument = argument;
    return c;
}

Command Key(QString name, Procedure proc, int argument, unsigned needs = None) {
    Command c;
    c.Name = std::move(name);
    c.Depth = -1;
    c.Kind = ItemKind::Key;
    c.Proc = proc;
    c.Argument = argument;
    c.Needs = needs;
    return c;
}

// The key without the modifiers that do not tell commands apart.
QKeyCombination Significant(QKeyCombination key, bool keypad) {
    Qt::KeyboardModifiers mods =
        key.keyboardModifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    if (keypad) {
        mods |= Qt::KeypadModifier;
    }
    return QKeyCombination(mods, key.key());
}

} // namespace

const QList<Command> &MenuItems() {
    static const QList<Command> items = {
        Menu(u"mnuFile"_s, u"&File"_s, 0),
        Item(u"mnuFileNew"_s, u"&New"_s, 1, &Call<modFile::FileNew>, None)
            .Keys({Qt::CTRL | Qt::Key_N})
            .Tool(u"New File"_s, 1, u"document-new"_s, u"page; text + bold 11"_s),
        Item(u"mnuFileOpen"_s, u"&Open"_s, 1, &Call<modFile::FileOpen>, None)
            .Keys({Qt::CTRL | Qt::Key_O})
            .Tool(u"Open File"_s, 2, u"document-open"_s, u"arrow 0"_s),
        Item(u"mnuFileClose"_s, u"&Close"_s, 1, &Call<modFile::FileClose>, DocOpen)
            .Keys({Qt::CTRL | Qt::Key_W}),
        Bar(u"mnuFileBar1"_s, 1),
        Item(u"mnuFileSave"_s, u"&Save"_s, 1, &Call<modFile::FileSave>, Writable)
            .Keys({Qt::CTRL | Qt::Key_S})
            .Tool(u"Save File"_s, 3, u"document-save"_s, u"arrow 180 bar"_s),
        Item(u"mnuFileSaveAs"_s, u"Save &as..."_s, 1, &Call<modFile::FileSaveAs>, DocOpen)
            .Keys({Qt::CTRL | Qt::SHIFT | Qt::Key_S}),
        Item(u"mnuFileSaveAll"_s, u"Save a&ll"_s, 1, &Call<modFile::FileSaveAll>,
             DocOpen | AnyChanged),
        Bar(u"mnuFileBar2"_s, 1),
        Menu(u"mnuFileImport"_s, u"&Import new document"_s, 1),
        Item(u"mnuFileImportClipboard"_s, u"From &clipboard"_s, 2,
             &Call<modFile::FileImportClipboard>, None),
        Item(u"mnuFileImportText"_s, u"From &text file..."_s, 2, &Call<modFile::FileImportText>,
             None),
        Menu(u"mnuFileExport"_s, u"&Export this document"_s, 1, DocOpen),
        Item(u"mnuFileExportClipboard"_s, u"To &clipboard"_s, 2,
             &Call<modFile::FileExportClipboard>, DocOpen),
        Item(u"mnuFileExportText"_s, u"To &text file..."_s, 2, &Call<modFile::FileExportText>,
             DocOpen),
        Item(u"mnuFileExportHtml"_s, u"To &HTML file..."_s, 2, &Call<modExport::FileExportHtml>,
             DocOpen),
        Item(u"mnuFileExportMarkdown"_s, u"To &Markdown file..."_s, 2,
             &Call<modExport::FileExportMarkdown>, DocOpen),
        Item(u"mnuFileExportPdf"_s, u"To P&DF file..."_s, 2, &Call<modExport::FileExportPdf>,
             DocOpen),
        Bar(u"mnuFileBar3"_s, 1),
        Item(u"mnuFilePrintSetup"_s, u"Print set&up..."_s, 1, &PrintSetup, None),
        Item(u"mnuFilePrintPreview"_s, u"Print pre&view..."_s, 1, &PrintPreview, DocOpen)
            .Tool(u"Preview File"_s, 5, u"document-print-preview"_s, u"text ◎ 16"_s, GroupEnd),
        Item(u"mnuFilePrint"_s, u"&Print..."_s, 1, &Print, DocOpen)
            .Tool(u"Print File"_s, 4, u"document-print"_s, u"printer"_s),
        Item(u"mnuFilePrintEntry"_s, u"Print &current entry..."_s, 1, &Print, DocOpen | Entry, 1)
            .Tool(u"Print Entry"_s, 11, u""_s, u"printer; dot"_s),
        Item(u"mnuFilePrintPreviewEntry"_s, u"Print preview current &entry..."_s, 1, &PrintPreview,
             DocOpen | Entry, 1)
            .Tool(u"Preview Entry"_s, 12, u""_s, u"text ◎ 16; dot"_s, GroupEnd),
        Bar(u"mnuFileBarMRU"_s, 1),
        Bar(u"mnuFileBar4"_s, 1),
        Item(u"mnuFileExit"_s, u"E&xit                Alt+F4"_s, 1, &Call<modFile::FileExit>, None)
            .Keys({Qt::CTRL | Qt::Key_Q}),
        Menu(u"mnuoutline"_s, u"&Outline"_s, 0),
        Item(u"mnuOutlineInsertAbove"_s, u"Insert &above     Alt+A"_s, 1,
             &Call<modOutline::OutlineInsertAbove>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_A})
            .Window({Qt::ALT | Qt::Key_A})
            .Tool(u"New Entry Above"_s, 13, u""_s, u"text +↑ bold 13"_s),
        Item(u"mnuOutlineInsertBelow"_s, u"Insert &below      Alt+B"_s, 1,
             &Call<modOutline::OutlineInsertBelow>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_B})
            .Window({Qt::ALT | Qt::Key_B})
            .Tool(u"New Entry Below"_s, 14, u""_s, u"text +↓ bold 13"_s),
        Item(u"mnuOutlineInsertChild"_s, u"&Insert child        Alt+I"_s, 1,
             &Call<modOutline::OutlineInsertChild>, Writable | Entry)
            .Keys({Qt::ALT | Qt::Key_I})
            .Window({Qt::ALT | Qt::Key_I})
            .Tool(u"New Entry As Child"_s, 15, u""_s, u"text +→ bold 13"_s),
        Bar(u"mnuOutlineBar1"_s, 1),
        Item(u"mnuOutlineIndent"_s, u"Inden&t               Alt+Right"_s, 1,
             &Call<modOutline::OutlineIndent>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_Right})
            .Window({Qt::ALT | Qt::Key_Right})
            .Tool(u"Indent Entry"_s, 20, u""_s, u"arrow 90"_s),
        Item(u"mnuOutlineUnindent"_s, u"&Unindent           Alt+Left"_s, 1,
             &Call<modOutline::OutlineUnindent>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_Left})
            .Window({Qt::ALT | Qt::Key_Left})
            .Tool(u"Unindent Entry"_s, 21, u""_s, u"arrow -90"_s, GroupEnd),
        Menu(u"mnuOutlineMove"_s, u"&Move"_s, 1, Writable),
        Item(u"mnuOutlineMoveUp"_s, u"Mo&ve up           Alt+Up"_s, 2,
             &Call<modOutline::OutlineMoveUp>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_Up})
            .Window({Qt::ALT | Qt::Key_Up})
            .Tool(u"Move Entry Up"_s, 16, u"go-up"_s, u"arrow 0"_s),
        Item(u"mnuOutlineMoveDown"_s, u"Move do&wn      Alt+Down"_s, 2,
             &Call<modOutline::OutlineMoveDown>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_Down})
            .Window({Qt::ALT | Qt::Key_Down})
            .Tool(u"Move Entry Down"_s, 17, u"go-down"_s, u"arrow 180"_s),
        Item(u"mnuOutlineMoveFirst"_s, u"Move &first         Alt+Home"_s, 2,
             &Call<modOutline::OutlineMoveFirst>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_Home})
            .Window({Qt::ALT | Qt::Key_Home})
            .Tool(u"Move Entry First"_s, 18, u"go-top"_s, u"arrow 0 bar"_s),
        Item(u"mnuOutlineMoveLast"_s, u"Move &last        Alt+End"_s, 2,
             &Call<modOutline::OutlineMoveLast>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_End})
            .Window({Qt::ALT | Qt::Key_End})
            .Tool(u"Move Entry Last"_s, 19, u"go-bottom"_s, u"arrow 180 bar"_s),
        Bar(u"mnuOutlineBar2"_s, 1),
        Item(u"mnuOutlineExpand"_s, u"&Expand             Plus"_s, 1,
             &Call<modOutline::OutlineExpand>, DocOpen | Entry)
            .Window({Qt::KeypadModifier | Qt::Key_Plus})
            .Tool(u"Expand Entry"_s, 24, u""_s, u"text + bold 18"_s),
        Menu(u"mnuOutlineExpandLevel"_s, u"Expa&nd to level"_s, 1, DocOpen),
        Item(u"mnuOutlineExpandLevel1"_s, u"&1"_s, 2, &modOutline::OutlineExpandToLevel, DocOpen, 1)
            .Check()
            .Tool(u"Expand to level 1"_s, 26, u""_s, u"text 1 bold"_s, Toggle),
        Item(u"mnuOutlineExpandLevel2"_s, u"&2"_s, 2, &modOutline::OutlineExpandToLevel, DocOpen, 2)
            .Check()
            .Tool(u"Expand to level 2"_s, 27, u""_s, u"text 2 bold"_s, Toggle),
        Item(u"mnuOutlineExpandLevel3"_s, u"&3"_s, 2, &modOutline::OutlineExpandToLevel, DocOpen, 3)
            .Check()
            .Tool(u"Expand to level 3"_s, 28, u""_s, u"text 3 bold"_s, Toggle),
        Item(u"mnuOutlineExpandLevel4"_s, u"&4"_s, 2, &modOutline::OutlineExpandToLevel, DocOpen, 4)
            .Check()
            .Tool(u"Expand to level 4"_s, 29, u""_s, u"text 4 bold"_s, Toggle),
        Item(u"mnuOutlineExpandLevel5"_s, u"&5"_s, 2, &modOutline::OutlineExpandToLevel, DocOpen, 5)
            .Check()
            .Tool(u"Expand to level 5"_s, 30, u""_s, u"text 5 bold"_s, Toggle),
        Item(u"mnuOutlineExpandLevel6"_s, u"&6"_s, 2, &modOutline::OutlineExpandToLevel, DocOpen, 6)
            .Check()
            .Tool(u"Expand to level 6"_s, 31, u""_s, u"text 6 bold"_s, Toggle),
        Item(u"mnuOutlineExpandLevel7"_s, u"&7"_s, 2, &modOutline::OutlineExpandToLevel, DocOpen, 7)
            .Check()
            .Tool(u"Expand to level 7"_s, 32, u""_s, u"text 7 bold"_s, Toggle),
        Item(u"mnuOutlineExpandAll"_s, u"E&xpand all"_s, 1, &Call<modOutline::OutlineExpandAll>,
             DocOpen)
            .Check()
            .Tool(u"Expand all levels"_s, 33, u""_s, u"text ∗ bold 18"_s, Toggle | GroupEnd),
        Item(u"mnuOutlineCollapse"_s, u"&Collapse            Minus"_s, 1,
             &Call<modOutline::OutlineCollapse>, DocOpen | Entry)
            .Window({Qt::KeypadModifier | Qt::Key_Minus})
            .Tool(u"Contract Entry"_s, 25, u""_s, u"text − bold 18"_s, GroupEnd),
        Item(u"mnuOutlineCollapseAll"_s, u"C&ollapse all"_s, 1,
             &Call<modOutline::OutlineCollapseAll>, DocOpen),
        Bar(u"mnuOutlineBar4"_s, 1),
        Item(u"mnuOutlineCopy"_s, u"&Copy                 Alt+C"_s, 1,
             &Call<modOutline::OutlineCopy>, DocOpen | Entry)
            .Keys({Qt::ALT | Qt::Key_C})
            .Window({Qt::ALT | Qt::Key_C})
            .Tool(u"Copy Entry"_s, 8, u""_s, u"text C bold"_s),
        Item(u"mnuOutlinePaste"_s, u"&Paste                Alt+P"_s, 1,
             &Call<modOutline::OutlinePaste>, Writable | Entry)
            .Keys({Qt::ALT | Qt::Key_P})
            .Window({Qt::ALT | Qt::Key_P})
            .Tool(u"Paste Entry"_s, 9, u""_s, u"text P bold"_s),
        Item(u"mnuOutlinePasteAndDelete"_s, u"Paste &and delete"_s, 1,
             &Call<modOutline::OutlinePasteAndDelete>, Writable | Entry),
        Item(u"mnuOutlineDelete"_s, u"&Delete               Alt+Delete"_s, 1,
             &Call<modOutline::OutlineDelete>, Writable | Entry | NotRoot)
            .Keys({Qt::ALT | Qt::Key_Delete})
            .Window({Qt::ALT | Qt::Key_Delete})
            .Tool(u"Delete Entry"_s, 10, u""_s, u"text ✕ bold 15"_s),
        Item(u"mnuOutlineRename"_s, u"&Rename            F2"_s, 1, &Call<modOutline::OutlineRename>,
             Writable | Entry)
            .Keys({Qt::Key_F2})
            .Window({Qt::Key_F2}),
        Bar(u"mnuOutlineBar5"_s, 1),
        Item(u"mnuOutlineSortCurrent"_s, u"Sort current &entry"_s, 1,
             &Call<modOutline::OutlineSortCurrent>, Writable | Entry)
            .Tool(u"Sort Entry"_s, 23, u"view-sort-ascending"_s, u"text AZ bold 10"_s),
        Item(u"mnuOutlineSortAll"_s, u"&Sort all entries"_s, 1, &Call<modOutline::OutlineSortAll>,
             Writable),
        Bar(u"mnuOutlineBar6"_s, 1),
        Item(u"mnuOutlineTaggedEntry"_s, u"Ta&g / untag entry    Alt+T"_s, 1,
             &Call<modOutline::OutlineTaggedEntry>, Writable | Entry)
            .Keys({Qt::ALT | Qt::Key_T})
            .Window({Qt::ALT | Qt::Key_T})
            .Tool(u"Tag Entry"_s, 22, u""_s, u"text ✓ bold 16"_s),
        Item(u"mnuOutlinePasteTaggedEntries"_s, u"Paste tagged entries"_s, 1,
             &Call<modOutline::OutlinePasteTaggedEntries>, Writable | Entry | TaggedExist),
        Item(u"mnuOutlineDeleteTaggedEntries"_s, u"Delete tagged entries"_s, 1,
             &Call<modOutline::OutlineDeleteTaggedEntries>, Writable | TaggedExist),
        Bar(u"mnuOutlineBar7"_s, 1),
        Item(u"mnuOutlineFont"_s, u"&Font..."_s, 1, &OutlineFont, Writable),
        Menu(u"mnuEdit"_s, u"&Edit"_s, 0),
        Item(u"mnuEditCut"_s, u"Cu&t               Ctrl+X"_s, 1, &Call<modEdit::EditCut>,
             Writable | TextFocus)
            .Keys({Qt::CTRL | Qt::Key_X})
            .Window({Qt::CTRL | Qt::Key_X})
            .Tool(u"Cut Text"_s, 34, u"edit-cut"_s, u"text ✂ 16"_s),
        Item(u"mnuEditCopy"_s, u"&Copy            Ctrl+C"_s, 1, &Call<modEdit::EditCopy>,
             DocOpen | TextFocus)
            .Keys({Qt::CTRL | Qt::Key_C})
            .Window({Qt::CTRL | Qt::Key_C})
            .Tool(u"Copy Text"_s, 35, u"edit-copy"_s, u"text C bold"_s),
        Item(u"mnuEditPaste"_s, u"&Paste           Ctrl+V"_s, 1, &Call<modEdit::EditPaste>,
             Writable | TextFocus)
            .Keys({Qt::CTRL | Qt::Key_V})
            .Window({Qt::CTRL | Qt::Key_V})
            .Tool(u"Paste Text"_s, 36, u"edit-paste"_s, u"text P bold"_s),
        Item(u"mnuEditPasteSpecial"_s, u"Paste &special"_s, 1, &Call<modEdit::EditPasteSpecial>,
             Writable | TextFocus),
        Item(u"mnuEditDelete"_s, u"&Delete          Del"_s, 1, &Call<modEdit::EditDelete>,
             Writable | TextFocus)
            .Tool(u"Delete Text"_s, 37, u"edit-delete"_s, u"text ✕ bold 15"_s, GroupEnd),
        Item(u"mnuEditSelectAll"_s, u"Select &all      Ctrl+A"_s, 1, &Call<modEdit::EditSelectAll>,
             DocOpen | TextFocus)
            .Keys({Qt::CTRL | Qt::Key_A})
            .Window({Qt::CTRL | Qt::Key_A}),
        Item(u"mnuEditClearEntryText"_s, u"Cl&ear entry text"_s, 1,
             &Call<modEdit::EditClearEntryText>, Writable | Entry),
        Bar(u"mnuEditBar1"_s, 1),
        Menu(u"mnuEditInsert"_s, u"&Insert"_s, 1, Writable),
        Item(u"mnuEditInsertTab"_s, u"Insert &tab             Ctrl+Tab"_s, 2,
             &Call<modEdit::EditInsertTab>, Writable | TextFocus)
            .Keys({Qt::CTRL | Qt::Key_Tab})
            .Window({Qt::CTRL | Qt::Key_Tab}),
        Item(u"mnuEditInsertLongDate"_s, u"Insert &long date"_s, 2,
             &Call<modEdit::EditInsertLongDate>, Writable | TextFocus),
        Item(u"mnuEditInsertShortDate"_s, u"Insert &short date  Ctrl+D"_s, 2,
             &Call<modEdit::EditInsertShortDate>, Writable | TextFocus)
            .Keys({Qt::CTRL | Qt::Key_D})
            .Window({Qt::CTRL | Qt::Key_D}),
        Item(u"mnuEditInsertTime"_s, u"Insert ti&me            Ctrl+M"_s, 2,
             &Call<modEdit::EditInsertTime>, Writable | TextFocus)
            .Keys({Qt::CTRL | Qt::Key_M})
            .Window({Qt::CTRL | Qt::Key_M}),
        Bar(u"mnuEditBar2"_s, 1),
        Menu(u"mnuEditCase"_s, u"Ca&se"_s, 1, Writable),
        Item(u"mnuEditCaseLower"_s, u"&Lower"_s, 2, &Call<modEdit::EditCaseLower>,
             Writable | TextFocus),
        Item(u"mnuEditCaseProperName"_s, u"&Proper name"_s, 2, &Call<modEdit::EditCaseProper>,
             Writable | TextFocus),
        Item(u"mnuEditCaseUpper"_s, u"&Upper"_s, 2, &Call<modEdit::EditCaseUpper>,
             Writable | TextFocus),
        Item(u"mnuEditCaseToggle"_s, u"&Toggle"_s, 2, &Call<modEdit::EditCaseToggle>,
             Writable | TextFocus),
        Bar(u"mnuEditBar3"_s, 1),
        Menu(u"mnuEditFormat"_s, u"F&ormat"_s, 1, Writable),
        Item(u"mnuEditFormatBold"_s, u"&Bold"_s, 2, &Call<modEdit::EditFormatBold>,
             Writable | TextFocus)
            .Tool(u"Bold Text"_s, 38, u"format-text-bold"_s, u"text B bold"_s, Toggle),
        Item(u"mnuEditFormatItalic"_s, u"&Italic"_s, 2, &Call<modEdit::EditFormatItalic>,
             Writable | TextFocus)
            .Tool(u"Italic Text"_s, 39, u"format-text-italic"_s, u"text I italic"_s, Toggle),
        Item(u"mnuEditFormatStrikeThrough"_s, u"Stri&kethrough"_s, 2,
             &Call<modEdit::EditFormatStrikeThrough>, Writable | TextFocus),
        Item(u"mnuEditFormatUnderline"_s, u"&Underline"_s, 2, &Call<modEdit::EditFormatUnderline>,
             Writable | TextFocus)
            .Tool(u"Underline Text"_s, 40, u"format-text-underline"_s, u"text U underline"_s,
                  Toggle),
        Bar(u"mnuEditFormatBar1"_s, 2),
        Item(u"mnuEditFormatLeft"_s, u"&Left"_s, 2, &Call<modEdit::EditFormatLeft>,
             Writable | TextFocus)
            .Tool(u"Left Align Text"_s, 44, u"format-justify-left"_s, u"lines left"_s, Toggle),
        Item(u"mnuEditFormatCentre"_s, u"C&entre"_s, 2, &Call<modEdit::EditFormatCentre>,
             Writable | TextFocus)
            .Tool(u"Centre Align Text"_s, 45, u"format-justify-center"_s, u"lines centre"_s,
                  Toggle),
        Item(u"mnuEditFormatRight"_s, u"&Right"_s, 2, &Call<modEdit::EditFormatRight>,
             Writable | TextFocus)
            .Tool(u"Right Align Text"_s, 46, u"format-justify-right"_s, u"lines right"_s, Toggle),
        Bar(u"mnuEditFormatBar2"_s, 2),
        Item(u"mnuEditFormatBullet"_s, u"Bulle&ts"_s, 2, &Call<modEdit::EditFormatBullet>,
             Writable | TextFocus)
            .Tool(u"Bullet Text"_s, 41, u""_s, u"text •≡ bold 13"_s),
        Item(u"mnuEditFormatIndent"_s, u"In&dent"_s, 2, &Call<modEdit::EditFormatIndent>,
             Writable | TextFocus)
            .Tool(u"Indent Text"_s, 42, u"format-indent-more"_s, u"arrow 90"_s),
        Item(u"mnuEditFormatUnindent"_s, u"Unind&ent"_s, 2, &Call<modEdit::EditFormatUnindent>,
             Writable | TextFocus)
            .Tool(u"Unindent Text"_s, 43, u"format-indent-less"_s, u"arrow -90"_s, GroupEnd),
        Bar(u"mnuEditBar5"_s, 1),
        Item(u"mnuEditCurrentFont"_s, u"Change current &font..."_s, 1,
             &Call<modEdit::EditCurrentFont>, Writable | TextFocus),
        Item(u"mnuEditDocumentFont"_s, u"Change document fo&nt..."_s, 1,
             &Call<modEdit::EditDocumentFont>, Writable),
        Menu(u"mnuSearch"_s, u"&Search"_s, 0),
        Item(u"mnuSearchFind"_s, u"&Find"_s, 1, &Call<modSearch::SearchFind>, DocOpen),
        Item(u"mnuSearchReplace"_s, u"Find and &replace"_s, 1, &Call<modSearch::SearchReplace>,
             Writable),
        Item(u"mnuSearchRepeat"_s, u"Repeat &last find"_s, 1, &Call<modSearch::SearchRepeat>,
             DocOpen),
        Menu(u"mnuView"_s, u"&View"_s, 0),
        Item(u"mnuViewToolbar"_s, u"&Toolbar"_s, 1, &Call<modView::ViewToolbar>, None).Check(),
        Item(u"mnuViewMDITaskbar"_s, u"&MDI taskbar"_s, 1, &ViewMDITaskbar, None),
        Item(u"mnuViewStatusBar"_s, u"Status &bar"_s, 1, &Call<modView::ViewStatusBar>, None)
            .Check(),
        Bar(u"mnuViewBar1"_s, 1),
        Item(u"mnuViewGoToOutline"_s, u"Go to &outline"_s, 1, &Call<modView::ViewGoToOutline>,
             DocOpen)
            .Tool(u"Go To Outline"_s, 6, u""_s, u"text ☰ 16"_s),
        Item(u"mnuViewGoToText"_s, u"Go to &text"_s, 1, &Call<modView::ViewGoToText>, DocOpen)
            .Tool(u"Go To Text"_s, 7, u""_s, u"text ¶ bold 16"_s, GroupEnd),
        Bar(u"mnuViewBar2"_s, 1),
        Item(u"mnuViewMaximiseLeft"_s, u"Maximise &left"_s, 1, &Call<modView::ViewMaximiseLeft>,
             DocOpen),
        Item(u"mnuViewMaximiseRight"_s, u"Maximise &right"_s, 1, &Call<modView::ViewMaximiseRight>,
             DocOpen),
        Item(u"mnuViewEqualiseLeftAndRight"_s, u"Equalise left &and right"_s, 1,
             &Call<modView::ViewEqualiseLeftAndRight>, DocOpen),
        Item(u"mnuViewFitSplit"_s, u"&Fit split"_s, 1, &Call<modView::ViewFitSplit>, DocOpen),
        Item(u"mnuViewMoveSplit"_s, u"Move &split"_s, 1, &Call<modView::ViewMoveSplit>, DocOpen),
        Bar(u"mnuViewBar3"_s, 1),
        Menu(u"mnuViewOptions"_s, u"O&ptions..."_s, 1),
        Item(u"mnuViewOptionsBackupOnSave"_s, u"&Back up on saving"_s, 2,
             &Call<modView::ViewOptionsBackupOnSave>, None)
            .Check(),
        Item(u"mnuViewOptionsAutoFitSplit"_s, u"&Fit split automatically"_s, 2,
             &Call<modView::ViewOptionsAutoFitSplit>, None)
            .Check(),
        Item(u"mnuViewOptionsStartWithNewDoc"_s, u"Start with &new document"_s, 2,
             &Call<modView::ViewOptionsStartWithNewDoc>, None)
            .Check(),
        Item(u"mnuViewOptionsStartWithPrevDocs"_s, u"Start with &previous documents"_s, 2,
             &Call<modView::ViewOptionsStartWithPrevDocs>, None)
            .Check(),
        Item(u"mnuViewOptionsClickToRenameEntry"_s, u"Click to &rename entry"_s, 2,
             &Call<modView::ViewOptionsClickToRenameEntry>, None)
            .Check(),
        Menu(u"mnuWindow"_s, u"&Window"_s, 0),
        Item(u"mnuWindowNewWindow"_s, u"&New window"_s, 1, nullptr, DocOpen),
        Item(u"mnuWindowCascade"_s, u"&Cascade"_s, 1, &Call<modWindow::WindowCascade>, DocOpen),
        Item(u"mnuWindowTileHorizontal"_s, u"Tile &horizontal"_s, 1,
             &Call<modWindow::WindowTileHorizontal>, DocOpen),
        Item(u"mnuWindowTileVertical"_s, u"Tile &vertical"_s, 1,
             &Call<modWindow::WindowTileVertical>, DocOpen),
        Item(u"mnuWindowArrangeIcons"_s, u"&Arrange icons"_s, 1,
             &Call<modWindow::WindowArrangeIcons>, DocOpen),
        Menu(u"mnuHelp"_s, u"&Help"_s, 0),
        Item(u"mnuHelpContents"_s, u"&Contents"_s, 1, &Call<modHelp::HelpContents>, None),
        Item(u"mnuHelpSearch"_s, u"&Search for help on..."_s, 1, &Call<modHelp::HelpSearch>, None),
        Bar(u"mnuHelpBar1"_s, 1),
        Item(u"mnuHelpAbout"_s, u"&About Mavrolen..."_s, 1, &Call<modHelp::HelpAbout>, None),
        Menu(u"mnuConfirm"_s, u"Confirm"_s, 0).Pop(),
        Item(u"mnuConfirmCopyPrevious"_s, u"Copy &before highlighted entry"_s, 1, nullptr, None)
            .Pop(),
        Item(u"mnuConfirmCopyNext"_s, u"Copy &after highlighted entry"_s, 1, nullptr, None).Pop(),
        Item(u"mnuConfirmCopyChild"_s, u"Copy as &child of highlighted entry"_s, 1, nullptr, None)
            .Pop(),
        Bar(u"mnuConfirmBar1"_s, 1).Pop(),
        Item(u"mnuConfirmMovePrevious"_s, u"Move b&efore highlighted entry"_s, 1, nullptr, None)
            .Pop(),
        Item(u"mnuConfirmMoveNext"_s, u"Move a&fter highlighted entry"_s, 1, nullptr, None).Pop(),
        Item(u"mnuConfirmMoveChild"_s, u"Move as c&hild of highlighted entry"_s, 1, nullptr, None)
            .Pop(),
        Bar(u"mnuConfirmBar2"_s, 1).Pop(),
        Item(u"mnuConfirmCancel"_s, u"Cancel"_s, 1, nullptr, None).Pop(),
        Menu(u"mnuConfirmIndent"_s, u"ConfirmIndent"_s, 0).Pop(),
        Item(u"mnuConfirmIndentRight"_s, u"&Indent"_s, 1, nullptr, None).Pop(),
        Item(u"mnuConfirmIndentLeft"_s, u"&Unindent"_s, 1, nullptr, None).Pop(),
        Item(u"mnuConfirmIndentCancel"_s, u"Cancel"_s, 1, nullptr, None).Pop(),
        // Keys of the document window without a menu item: Ctrl+Shift+< and > both make the
        // selection one step smaller (the key is dropped before the two are told apart).
        Key(u"keyFontSizeStep"_s, &FontSizeStep, 0)
            .Window({Qt::CTRL | Qt::SHIFT | Qt::Key_Comma, Qt::CTRL | Qt::SHIFT | Qt::Key_Period,
                     Qt::CTRL | Qt::SHIFT | Qt::Key_Less, Qt::CTRL | Qt::SHIFT | Qt::Key_Greater}),
        // The text pane's undo history.
        Key(u"keyEditUndo"_s, &Call<modEdit::EditUndo>, 0, Writable | TextFocus)
            .Window({Qt::CTRL | Qt::Key_Z}),
        Key(u"keyEditRedo"_s, &Call<modEdit::EditRedo>, 0, Writable | TextFocus)
            .Window({Qt::CTRL | Qt::Key_Y, Qt::CTRL | Qt::SHIFT | Qt::Key_Z}),
        // The diagnostic window of the selected entry.
        Key(u"keyDebug"_s, &ShowDebug, 0, DocOpen).Window({Qt::CTRL | Qt::SHIFT | Qt::Key_D}),
    };
    return items;
}

const QList<ToolbarButton> &ToolbarButtons() {
    static const QList<ToolbarButton> buttons = [] {
        QList<ToolbarButton> list;
        for (const Command &c : MenuItems()) {
            if (!c.Toolbar.Key.isEmpty()) {
                list.append({c.Toolbar.Key, c.Name, &c});
            }
        }
        std::stable_sort(list.begin(), list.end(),
                         [](const ToolbarButton &a, const ToolbarButton &b) {
                             return a.Row->Toolbar.Order < b.Row->Toolbar.Order;
                         });
        return list;
    }();
    return buttons;
}

const Command *FindItem(const QString &name) {
    static const QHash<QString, qsizetype> index = [] {
        QHash<QString, qsizetype> h;
        for (qsizetype i = 0; i < MenuItems().size(); ++i) {
            h.insert(MenuItems()[i].Name, i);
        }
        return h;
    }();
    const auto it = index.constFind(name);
    return it == index.constEnd() ? nullptr : &MenuItems()[*it];
}

const ToolbarButton *FindButton(const QString &key) {
    for (const ToolbarButton &b : ToolbarButtons()) {
        if (b.Key == key) {
            return &b;
        }
    }
    return nullptr;
}

const Command *FindWindowKey(QKeyCombination key) {
    static const QHash<int, const Command *> index = [] {
        QHash<int, const Command *> h;
        for (const Command &c : MenuItems()) {
            for (const QKeyCombination k : c.WindowKeys) {
                h.insert(k.toCombined(), &c);
            }
        }
        return h;
    }();
    // A key of the keypad also answers for its twin of the main keys (the arrows, Home, End),
    // but a key listed for the keypad only (Plus, Minus) needs the keypad.
    const bool keypad = key.keyboardModifiers() & Qt::KeypadModifier;
    if (const Command *c = index.value(Significant(key, keypad).toCombined())) {
        return c;
    }
    return keypad ? index.value(Significant(key, false).toCombined()) : nullptr;
}

bool HasProcedure(const QString &itemName) {
    const Command *item = FindItem(itemName);
    return item && (item->Kind == ItemKind::Command || item->Kind == ItemKind::Key) && item->Proc;
}

bool RunItem(const QString &itemName) {
    if (!HasProcedure(itemName)) {
        return false;
    }
    const Command *item = FindItem(itemName);
    modMain::Guarded([item] { item->Proc(item->Argument); });
    return true;
}

bool RunWindowKey(QKeyCombination key) {
    const Command *c = FindWindowKey(key);
    if (!c) {
        return false;
    }
    if (modMain::ItemEnabled(c->Name, modMain::CurrentCommandInputs())) {
        RunItem(c->Name);
    }
    modMain::UpdateToolbarStatus();
    return true;
}

QString TagCaption(bool tagged) {
    return tagged ? u"Unta&g entry    Alt+T"_s : u"Ta&g entry      Alt+T"_s;
}

QString TagToolTip(bool tagged) {
    return tagged ? u"Untag entry"_s : u"Tag entry"_s;
}

} // namespace modCommands
