#include "app/modCommands.h"

#include "app/modMain.h"
#include "app/modWindow.h"
#include "document/modFile.h"
#include "help/modHelp.h"
#include "outline/modOutline.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace modCommands {

namespace {

// The View menu's "MDI taskbar" item deliberately does nothing.
void ViewMDITaskbar(int) {}

// Every procedure an item or button can reach. Null: not part of the program yet; the items that
// route to it stay disabled.
QHash<QString, Procedure> &Procedures() {
    static QHash<QString, Procedure> table = {
        {u"FileNew"_s, [](int) { modFile::FileNew(); }},
        {u"FileOpen"_s, [](int) { modFile::FileOpen(); }},
        {u"FileClose"_s, [](int) { modFile::FileClose(); }},
        {u"FileSave"_s, [](int) { modFile::FileSave(); }},
        {u"FileSaveAs"_s, [](int) { modFile::FileSaveAs(); }},
        {u"FileSaveAll"_s, [](int) { modFile::FileSaveAll(); }},
        {u"FileImportClipboard"_s, [](int) { modFile::FileImportClipboard(); }},
        {u"FileImportText"_s, [](int) { modFile::FileImportText(); }},
        {u"FileExportClipboard"_s, [](int) { modFile::FileExportClipboard(); }},
        {u"FileExportText"_s, [](int) { modFile::FileExportText(); }},
        {u"FilePrintSetup"_s, nullptr},
        {u"FilePrintPreview"_s, nullptr}, // argument: current entry only
        {u"FilePrint"_s, nullptr},        // argument: current entry only
        {u"FileMRU"_s, nullptr},          // argument: the item's index
        {u"FileExit"_s, [](int) { modFile::FileExit(); }},
        {u"OutlineInsertAbove"_s, [](int) { modOutline::OutlineInsertAbove(); }},
        {u"OutlineInsertBelow"_s, [](int) { modOutline::OutlineInsertBelow(); }},
        {u"OutlineInsertChild"_s, [](int) { modOutline::OutlineInsertChild(); }},
        {u"OutlineIndent"_s, [](int) { modOutline::OutlineIndent(); }},
        {u"OutlineUnindent"_s, [](int) { modOutline::OutlineUnindent(); }},
        {u"OutlineMoveUp"_s, [](int) { modOutline::OutlineMoveUp(); }},
        {u"OutlineMoveDown"_s, [](int) { modOutline::OutlineMoveDown(); }},
        {u"OutlineMoveFirst"_s, [](int) { modOutline::OutlineMoveFirst(); }},
        {u"OutlineMoveLast"_s, [](int) { modOutline::OutlineMoveLast(); }},
        {u"OutlineExpand"_s, [](int) { modOutline::OutlineExpand(); }},
        {u"OutlineExpandToLevel"_s,
         [](int level) { modOutline::OutlineExpandToLevel(level); }}, // argument: the level
        {u"OutlineExpandAll"_s, [](int) { modOutline::OutlineExpandAll(); }},
        {u"OutlineCollapse"_s, [](int) { modOutline::OutlineCollapse(); }},
        {u"OutlineCollapseAll"_s, [](int) { modOutline::OutlineCollapseAll(); }},
        {u"OutlineCopy"_s, [](int) { modOutline::OutlineCopy(); }},
        {u"OutlinePaste"_s, [](int) { modOutline::OutlinePaste(); }},
        {u"OutlinePasteAndDelete"_s, [](int) { modOutline::OutlinePasteAndDelete(); }},
        {u"OutlineDelete"_s, [](int) { modOutline::OutlineDelete(); }},
        {u"OutlineRename"_s, [](int) { modOutline::OutlineRename(); }},
        {u"OutlineSortCurrent"_s, [](int) { modOutline::OutlineSortCurrent(); }},
        {u"OutlineSortAll"_s, [](int) { modOutline::OutlineSortAll(); }},
        {u"OutlineTaggedEntry"_s, [](int) { modOutline::OutlineTaggedEntry(); }},
        {u"OutlinePasteTaggedEntries"_s, [](int) { modOutline::OutlinePasteTaggedEntries(); }},
        {u"OutlineDeleteTaggedEntries"_s, [](int) { modOutline::OutlineDeleteTaggedEntries(); }},
        {u"OutlineFont"_s, [](int) { modOutline::OutlineFont(); }},
        {u"EditCut"_s, nullptr},
        {u"EditCopy"_s, nullptr},
        {u"EditPaste"_s, nullptr},
        {u"EditPasteSpecial"_s, nullptr},
        {u"EditDelete"_s, nullptr},
        {u"EditSelectAll"_s, nullptr},
        {u"EditClearEntryText"_s, nullptr},
        {u"EditInsertTab"_s, nullptr},
        {u"EditInsertLongDate"_s, nullptr},
        {u"EditInsertShortDate"_s, nullptr},
        {u"EditInsertTime"_s, nullptr},
        {u"EditCaseLower"_s, nullptr},
        {u"EditCaseProper"_s, nullptr},
        {u"EditCaseUpper"_s, nullptr},
        {u"EditCaseToggle"_s, nullptr},
        {u"EditFormatBold"_s, nullptr},
        {u"EditFormatItalic"_s, nullptr},
        {u"EditFormatStrikeThrough"_s, nullptr},
        {u"EditFormatUnderline"_s, nullptr},
        {u"EditFormatLeft"_s, nullptr},
        {u"EditFormatCentre"_s, nullptr},
        {u"EditFormatRight"_s, nullptr},
        {u"EditFormatBullet"_s, nullptr},
        {u"EditFormatIndent"_s, nullptr},
        {u"EditFormatUnindent"_s, nullptr},
        {u"EditCurrentFont"_s, nullptr},
        {u"EditDocumentFont"_s, nullptr},
        {u"SearchFind"_s, nullptr},
        {u"SearchReplace"_s, nullptr},
        {u"SearchRepeat"_s, nullptr},
        {u"ViewToolbar"_s, nullptr},
        {u"ViewMDITaskbar"_s, &ViewMDITaskbar},
        {u"ViewStatusBar"_s, nullptr},
        {u"ViewGoToOutline"_s, nullptr},
        {u"ViewGoToText"_s, nullptr},
        {u"ViewMaximiseLeft"_s, nullptr},
        {u"ViewMaximiseRight"_s, nullptr},
        {u"ViewEqualiseLeftAndRight"_s, nullptr},
        {u"ViewFitSplit"_s, nullptr},
        {u"ViewMoveSplit"_s, nullptr},
        {u"ViewOptionsBackupOnSave"_s, nullptr},
        {u"ViewOptionsAutoFitSplit"_s, nullptr},
        {u"ViewOptionsStartWithNewDoc"_s, nullptr},
        {u"ViewOptionsStartWithPrevDocs"_s, nullptr},
        {u"ViewOptionsClickToRenameEntry"_s, nullptr},
        {u"WindowCascade"_s, [](int) { modWindow::WindowCascade(); }},
        {u"WindowTileHorizontal"_s, [](int) { modWindow::WindowTileHorizontal(); }},
        {u"WindowTileVertical"_s, [](int) { modWindow::WindowTileVertical(); }},
        {u"WindowArrangeIcons"_s, [](int) { modWindow::WindowArrangeIcons(); }},
        {u"HelpContents"_s, nullptr},
        {u"HelpSearch"_s, nullptr},
        {u"HelpAbout"_s, [](int) { modHelp::HelpAbout(); }},
        // Choices of the confirmation menus of entry dragging.
        {u"ConfirmCopyPrevious"_s, nullptr},
        {u"ConfirmCopyNext"_s, nullptr},
        {u"ConfirmCopyChild"_s, nullptr},
        {u"ConfirmMovePrevious"_s, nullptr},
        {u"ConfirmMoveNext"_s, nullptr},
        {u"ConfirmMoveChild"_s, nullptr},
        {u"ConfirmCancel"_s, nullptr},
        {u"ConfirmIndentRight"_s, nullptr},
        {u"ConfirmIndentLeft"_s, nullptr},
        {u"ConfirmIndentCancel"_s, nullptr},
    };
    return table;
}

} // namespace

const QList<MenuItem> &MenuItems() {
    static const QList<MenuItem> items = {
        {u"mnuFile"_s, u"&File"_s, 0, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuFileNew"_s, u"&New"_s, 1, ItemKind::Command, u"FileNew"_s, 0, None, false},
        {u"mnuFileOpen"_s, u"&Open"_s, 1, ItemKind::Command, u"FileOpen"_s, 0, None, false},
        {u"mnuFileClose"_s, u"&Close"_s, 1, ItemKind::Command, u"FileClose"_s, 0, DocOpen, false},
        {u"mnuFileBar1"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuFileSave"_s, u"&Save"_s, 1, ItemKind::Command, u"FileSave"_s, 0, Writable, false},
        {u"mnuFileSaveAs"_s, u"Save &as..."_s, 1, ItemKind::Command, u"FileSaveAs"_s, 0, DocOpen,
         false},
        {u"mnuFileSaveAll"_s, u"Save a&ll"_s, 1, ItemKind::Command, u"FileSaveAll"_s, 0,
         DocOpen | AnyChanged, false},
        {u"mnuFileBar2"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuFileImport"_s, u"&Import new document"_s, 1, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuFileImportClipboard"_s, u"From &clipboard"_s, 2, ItemKind::Command,
         u"FileImportClipboard"_s, 0, None, false},
        {u"mnuFileImportText"_s, u"From &text file..."_s, 2, ItemKind::Command, u"FileImportText"_s,
         0, None, false},
        {u"mnuFileExport"_s, u"&Export this document"_s, 1, ItemKind::Menu, u""_s, 0, DocOpen,
         false},
        {u"mnuFileExportClipboard"_s, u"To &clipboard"_s, 2, ItemKind::Command,
         u"FileExportClipboard"_s, 0, DocOpen, false},
        {u"mnuFileExportText"_s, u"To &text file..."_s, 2, ItemKind::Command, u"FileExportText"_s,
         0, DocOpen, false},
        {u"mnuFileBar3"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuFilePrintSetup"_s, u"Print set&up..."_s, 1, ItemKind::Command, u"FilePrintSetup"_s, 0,
         None, false},
        {u"mnuFilePrintPreview"_s, u"Print pre&view..."_s, 1, ItemKind::Command,
         u"FilePrintPreview"_s, 0, DocOpen, false},
        {u"mnuFilePrint"_s, u"&Print..."_s, 1, ItemKind::Command, u"FilePrint"_s, 0, DocOpen,
         false},
        {u"mnuFilePrintEntry"_s, u"Print &current entry..."_s, 1, ItemKind::Command, u"FilePrint"_s,
         1, DocOpen | Entry, false},
        {u"mnuFilePrintPreviewEntry"_s, u"Print preview current &entry..."_s, 1, ItemKind::Command,
         u"FilePrintPreview"_s, 1, DocOpen | Entry, false},
        {u"mnuFileBarMRU"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuFileBar4"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuFileExit"_s, u"E&xit                Alt+F4"_s, 1, ItemKind::Command, u"FileExit"_s, 0,
         None, false},
        {u"mnuoutline"_s, u"&Outline"_s, 0, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuOutlineInsertAbove"_s, u"Insert &above     Alt+A"_s, 1, ItemKind::Command,
         u"OutlineInsertAbove"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineInsertBelow"_s, u"Insert &below      Alt+B"_s, 1, ItemKind::Command,
         u"OutlineInsertBelow"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineInsertChild"_s, u"&Insert child        Alt+I"_s, 1, ItemKind::Command,
         u"OutlineInsertChild"_s, 0, Writable | Entry, false},
        {u"mnuOutlineBar1"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuOutlineIndent"_s, u"Inden&t               Alt+Right"_s, 1, ItemKind::Command,
         u"OutlineIndent"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineUnindent"_s, u"&Unindent           Alt+Left"_s, 1, ItemKind::Command,
         u"OutlineUnindent"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineMove"_s, u"&Move"_s, 1, ItemKind::Menu, u""_s, 0, Writable, false},
        {u"mnuOutlineMoveUp"_s, u"Mo&ve up           Alt+Up"_s, 2, ItemKind::Command,
         u"OutlineMoveUp"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineMoveDown"_s, u"Move do&wn      Alt+Down"_s, 2, ItemKind::Command,
         u"OutlineMoveDown"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineMoveFirst"_s, u"Move &first         Alt+Home"_s, 2, ItemKind::Command,
         u"OutlineMoveFirst"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineMoveLast"_s, u"Move &last        Alt+End"_s, 2, ItemKind::Command,
         u"OutlineMoveLast"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineBar2"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuOutlineExpand"_s, u"&Expand             Plus"_s, 1, ItemKind::Command,
         u"OutlineExpand"_s, 0, DocOpen | Entry, false},
        {u"mnuOutlineExpandLevel"_s, u"Expa&nd to level"_s, 1, ItemKind::Menu, u""_s, 0, DocOpen,
         false},
        {u"mnuOutlineExpandLevel1"_s, u"&1"_s, 2, ItemKind::Command, u"OutlineExpandToLevel"_s, 1,
         DocOpen, false},
        {u"mnuOutlineExpandLevel2"_s, u"&2"_s, 2, ItemKind::Command, u"OutlineExpandToLevel"_s, 2,
         DocOpen, false},
        {u"mnuOutlineExpandLevel3"_s, u"&3"_s, 2, ItemKind::Command, u"OutlineExpandToLevel"_s, 3,
         DocOpen, false},
        {u"mnuOutlineExpandLevel4"_s, u"&4"_s, 2, ItemKind::Command, u"OutlineExpandToLevel"_s, 4,
         DocOpen, false},
        {u"mnuOutlineExpandLevel5"_s, u"&5"_s, 2, ItemKind::Command, u"OutlineExpandToLevel"_s, 5,
         DocOpen, false},
        {u"mnuOutlineExpandLevel6"_s, u"&6"_s, 2, ItemKind::Command, u"OutlineExpandToLevel"_s, 6,
         DocOpen, false},
        {u"mnuOutlineExpandLevel7"_s, u"&7"_s, 2, ItemKind::Command, u"OutlineExpandToLevel"_s, 7,
         DocOpen, false},
        {u"mnuOutlineExpandAll"_s, u"E&xpand all"_s, 1, ItemKind::Command, u"OutlineExpandAll"_s, 0,
         DocOpen, false},
        {u"mnuOutlineCollapse"_s, u"&Collapse            Minus"_s, 1, ItemKind::Command,
         u"OutlineCollapse"_s, 0, DocOpen | Entry, false},
        {u"mnuOutlineCollapseAll"_s, u"C&ollapse all"_s, 1, ItemKind::Command,
         u"OutlineCollapseAll"_s, 0, DocOpen, false},
        {u"mnuOutlineBar4"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuOutlineCopy"_s, u"&Copy                 Alt+C"_s, 1, ItemKind::Command,
         u"OutlineCopy"_s, 0, DocOpen | Entry, false},
        {u"mnuOutlinePaste"_s, u"&Paste                Alt+P"_s, 1, ItemKind::Command,
         u"OutlinePaste"_s, 0, Writable | Entry, false},
        {u"mnuOutlinePasteAndDelete"_s, u"Paste &and delete"_s, 1, ItemKind::Command,
         u"OutlinePasteAndDelete"_s, 0, Writable | Entry, false},
        {u"mnuOutlineDelete"_s, u"&Delete               Alt+Delete"_s, 1, ItemKind::Command,
         u"OutlineDelete"_s, 0, Writable | Entry | NotRoot, false},
        {u"mnuOutlineRename"_s, u"&Rename            F2"_s, 1, ItemKind::Command,
         u"OutlineRename"_s, 0, Writable | Entry, false},
        {u"mnuOutlineBar5"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuOutlineSortCurrent"_s, u"Sort current &entry"_s, 1, ItemKind::Command,
         u"OutlineSortCurrent"_s, 0, Writable | Entry, false},
        {u"mnuOutlineSortAll"_s, u"&Sort all entries"_s, 1, ItemKind::Command, u"OutlineSortAll"_s,
         0, Writable, false},
        {u"mnuOutlineBar6"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuOutlineTaggedEntry"_s, u"Ta&g / untag entry    Alt+T"_s, 1, ItemKind::Command,
         u"OutlineTaggedEntry"_s, 0, Writable | Entry, false},
        {u"mnuOutlinePasteTaggedEntries"_s, u"Paste tagged entries"_s, 1, ItemKind::Command,
         u"OutlinePasteTaggedEntries"_s, 0, Writable | Entry | TaggedExist, false},
        {u"mnuOutlineDeleteTaggedEntries"_s, u"Delete tagged entries"_s, 1, ItemKind::Command,
         u"OutlineDeleteTaggedEntries"_s, 0, Writable | TaggedExist, false},
        {u"mnuOutlineBar7"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuOutlineFont"_s, u"&Font..."_s, 1, ItemKind::Command, u"OutlineFont"_s, 0, Writable,
         false},
        {u"mnuEdit"_s, u"&Edit"_s, 0, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuEditCut"_s, u"Cu&t               Ctrl+X"_s, 1, ItemKind::Command, u"EditCut"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditCopy"_s, u"&Copy            Ctrl+C"_s, 1, ItemKind::Command, u"EditCopy"_s, 0,
         DocOpen | TextFocus, false},
        {u"mnuEditPaste"_s, u"&Paste           Ctrl+V"_s, 1, ItemKind::Command, u"EditPaste"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditPasteSpecial"_s, u"Paste &special"_s, 1, ItemKind::Command, u"EditPasteSpecial"_s,
         0, Writable | TextFocus, false},
        {u"mnuEditDelete"_s, u"&Delete          Del"_s, 1, ItemKind::Command, u"EditDelete"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditSelectAll"_s, u"Select &all      Ctrl+A"_s, 1, ItemKind::Command,
         u"EditSelectAll"_s, 0, DocOpen | TextFocus, false},
        {u"mnuEditClearEntryText"_s, u"Cl&ear entry text"_s, 1, ItemKind::Command,
         u"EditClearEntryText"_s, 0, Writable | Entry, false},
        {u"mnuEditBar1"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuEditInsert"_s, u"&Insert"_s, 1, ItemKind::Menu, u""_s, 0, Writable, false},
        {u"mnuEditInsertTab"_s, u"Insert &tab             Ctrl+Tab"_s, 2, ItemKind::Command,
         u"EditInsertTab"_s, 0, Writable | TextFocus, false},
        {u"mnuEditInsertLongDate"_s, u"Insert &long date"_s, 2, ItemKind::Command,
         u"EditInsertLongDate"_s, 0, Writable | TextFocus, false},
        {u"mnuEditInsertShortDate"_s, u"Insert &short date  Ctrl+D"_s, 2, ItemKind::Command,
         u"EditInsertShortDate"_s, 0, Writable | TextFocus, false},
        {u"mnuEditInsertTime"_s, u"Insert ti&me            Ctrl+M"_s, 2, ItemKind::Command,
         u"EditInsertTime"_s, 0, Writable | TextFocus, false},
        {u"mnuEditBar2"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuEditCase"_s, u"Ca&se"_s, 1, ItemKind::Menu, u""_s, 0, Writable, false},
        {u"mnuEditCaseLower"_s, u"&Lower"_s, 2, ItemKind::Command, u"EditCaseLower"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditCaseProperName"_s, u"&Proper name"_s, 2, ItemKind::Command, u"EditCaseProper"_s,
         0, Writable | TextFocus, false},
        {u"mnuEditCaseUpper"_s, u"&Upper"_s, 2, ItemKind::Command, u"EditCaseUpper"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditCaseToggle"_s, u"&Toggle"_s, 2, ItemKind::Command, u"EditCaseToggle"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditBar3"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuEditFormat"_s, u"F&ormat"_s, 1, ItemKind::Menu, u""_s, 0, Writable, false},
        {u"mnuEditFormatBold"_s, u"&Bold"_s, 2, ItemKind::Command, u"EditFormatBold"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditFormatItalic"_s, u"&Italic"_s, 2, ItemKind::Command, u"EditFormatItalic"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditFormatStrikeThrough"_s, u"Stri&kethrough"_s, 2, ItemKind::Command,
         u"EditFormatStrikeThrough"_s, 0, Writable | TextFocus, false},
        {u"mnuEditFormatUnderline"_s, u"&Underline"_s, 2, ItemKind::Command,
         u"EditFormatUnderline"_s, 0, Writable | TextFocus, false},
        {u"mnuEditFormatBar1"_s, u""_s, 2, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuEditFormatLeft"_s, u"&Left"_s, 2, ItemKind::Command, u"EditFormatLeft"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditFormatCentre"_s, u"C&entre"_s, 2, ItemKind::Command, u"EditFormatCentre"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditFormatRight"_s, u"&Right"_s, 2, ItemKind::Command, u"EditFormatRight"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditFormatBar2"_s, u""_s, 2, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuEditFormatBullet"_s, u"Bulle&ts"_s, 2, ItemKind::Command, u"EditFormatBullet"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditFormatIndent"_s, u"In&dent"_s, 2, ItemKind::Command, u"EditFormatIndent"_s, 0,
         Writable | TextFocus, false},
        {u"mnuEditFormatUnindent"_s, u"Unind&ent"_s, 2, ItemKind::Command, u"EditFormatUnindent"_s,
         0, Writable | TextFocus, false},
        {u"mnuEditBar5"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuEditCurrentFont"_s, u"Change current &font..."_s, 1, ItemKind::Command,
         u"EditCurrentFont"_s, 0, Writable | TextFocus, false},
        {u"mnuEditDocumentFont"_s, u"Change document fo&nt..."_s, 1, ItemKind::Command,
         u"EditDocumentFont"_s, 0, Writable, false},
        {u"mnuSearch"_s, u"&Search"_s, 0, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuSearchFind"_s, u"&Find"_s, 1, ItemKind::Command, u"SearchFind"_s, 0, DocOpen, false},
        {u"mnuSearchReplace"_s, u"Find and &replace"_s, 1, ItemKind::Command, u"SearchReplace"_s, 0,
         Writable, false},
        {u"mnuSearchRepeat"_s, u"Repeat &last find"_s, 1, ItemKind::Command, u"SearchRepeat"_s, 0,
         DocOpen, false},
        {u"mnuView"_s, u"&View"_s, 0, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuViewToolbar"_s, u"&Toolbar"_s, 1, ItemKind::Command, u"ViewToolbar"_s, 0, None,
         false},
        {u"mnuViewMDITaskbar"_s, u"&MDI taskbar"_s, 1, ItemKind::Command, u"ViewMDITaskbar"_s, 0,
         None, false},
        {u"mnuViewStatusBar"_s, u"Status &bar"_s, 1, ItemKind::Command, u"ViewStatusBar"_s, 0, None,
         false},
        {u"mnuViewBar1"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuViewGoToOutline"_s, u"Go to &outline"_s, 1, ItemKind::Command, u"ViewGoToOutline"_s,
         0, DocOpen, false},
        {u"mnuViewGoToText"_s, u"Go to &text"_s, 1, ItemKind::Command, u"ViewGoToText"_s, 0,
         DocOpen, false},
        {u"mnuViewBar2"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuViewMaximiseLeft"_s, u"Maximise &left"_s, 1, ItemKind::Command, u"ViewMaximiseLeft"_s,
         0, DocOpen, false},
        {u"mnuViewMaximiseRight"_s, u"Maximise &right"_s, 1, ItemKind::Command,
         u"ViewMaximiseRight"_s, 0, DocOpen, false},
        {u"mnuViewEqualiseLeftAndRight"_s, u"Equalise left &and right"_s, 1, ItemKind::Command,
         u"ViewEqualiseLeftAndRight"_s, 0, DocOpen, false},
        {u"mnuViewFitSplit"_s, u"&Fit split"_s, 1, ItemKind::Command, u"ViewFitSplit"_s, 0, DocOpen,
         false},
        {u"mnuViewMoveSplit"_s, u"Move &split"_s, 1, ItemKind::Command, u"ViewMoveSplit"_s, 0,
         DocOpen, false},
        {u"mnuViewBar3"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuViewOptions"_s, u"O&ptions..."_s, 1, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuViewOptionsBackupOnSave"_s, u"&Back up on saving"_s, 2, ItemKind::Command,
         u"ViewOptionsBackupOnSave"_s, 0, None, false},
        {u"mnuViewOptionsAutoFitSplit"_s, u"&Fit split automatically"_s, 2, ItemKind::Command,
         u"ViewOptionsAutoFitSplit"_s, 0, None, false},
        {u"mnuViewOptionsStartWithNewDoc"_s, u"Start with &new document"_s, 2, ItemKind::Command,
         u"ViewOptionsStartWithNewDoc"_s, 0, None, false},
        {u"mnuViewOptionsStartWithPrevDocs"_s, u"Start with &previous documents"_s, 2,
         ItemKind::Command, u"ViewOptionsStartWithPrevDocs"_s, 0, None, false},
        {u"mnuViewOptionsClickToRenameEntry"_s, u"Click to &rename entry"_s, 2, ItemKind::Command,
         u"ViewOptionsClickToRenameEntry"_s, 0, None, false},
        {u"mnuWindow"_s, u"&Window"_s, 0, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuWindowNewWindow"_s, u"&New window"_s, 1, ItemKind::Command, u""_s, 0, DocOpen, false},
        {u"mnuWindowCascade"_s, u"&Cascade"_s, 1, ItemKind::Command, u"WindowCascade"_s, 0, DocOpen,
         false},
        {u"mnuWindowTileHorizontal"_s, u"Tile &horizontal"_s, 1, ItemKind::Command,
         u"WindowTileHorizontal"_s, 0, DocOpen, false},
        {u"mnuWindowTileVertical"_s, u"Tile &vertical"_s, 1, ItemKind::Command,
         u"WindowTileVertical"_s, 0, DocOpen, false},
        {u"mnuWindowArrangeIcons"_s, u"&Arrange icons"_s, 1, ItemKind::Command,
         u"WindowArrangeIcons"_s, 0, DocOpen, false},
        {u"mnuHelp"_s, u"&Help"_s, 0, ItemKind::Menu, u""_s, 0, None, false},
        {u"mnuHelpContents"_s, u"&Contents"_s, 1, ItemKind::Command, u"HelpContents"_s, 0, None,
         false},
        {u"mnuHelpSearch"_s, u"&Search for help on..."_s, 1, ItemKind::Command, u"HelpSearch"_s, 0,
         None, false},
        {u"mnuHelpBar1"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, false},
        {u"mnuHelpAbout"_s, u"&About Mavrolen..."_s, 1, ItemKind::Command, u"HelpAbout"_s, 0, None,
         false},
        {u"mnuConfirm"_s, u"Confirm"_s, 0, ItemKind::Menu, u""_s, 0, None, true},
        {u"mnuConfirmCopyPrevious"_s, u"Copy &before highlighted entry"_s, 1, ItemKind::Command,
         u"ConfirmCopyPrevious"_s, 0, None, true},
        {u"mnuConfirmCopyNext"_s, u"Copy &after highlighted entry"_s, 1, ItemKind::Command,
         u"ConfirmCopyNext"_s, 0, None, true},
        {u"mnuConfirmCopyChild"_s, u"Copy as &child of highlighted entry"_s, 1, ItemKind::Command,
         u"ConfirmCopyChild"_s, 0, None, true},
        {u"mnuConfirmBar1"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, true},
        {u"mnuConfirmMovePrevious"_s, u"Move b&efore highlighted entry"_s, 1, ItemKind::Command,
         u"ConfirmMovePrevious"_s, 0, None, true},
        {u"mnuConfirmMoveNext"_s, u"Move a&fter highlighted entry"_s, 1, ItemKind::Command,
         u"ConfirmMoveNext"_s, 0, None, true},
        {u"mnuConfirmMoveChild"_s, u"Move as c&hild of highlighted entry"_s, 1, ItemKind::Command,
         u"ConfirmMoveChild"_s, 0, None, true},
        {u"mnuConfirmBar2"_s, u""_s, 1, ItemKind::Separator, u""_s, 0, None, true},
        {u"mnuConfirmCancel"_s, u"Cancel"_s, 1, ItemKind::Command, u"ConfirmCancel"_s, 0, None,
         true},
        {u"mnuConfirmIndent"_s, u"ConfirmIndent"_s, 0, ItemKind::Menu, u""_s, 0, None, true},
        {u"mnuConfirmIndentRight"_s, u"&Indent"_s, 1, ItemKind::Command, u"ConfirmIndentRight"_s, 0,
         None, true},
        {u"mnuConfirmIndentLeft"_s, u"&Unindent"_s, 1, ItemKind::Command, u"ConfirmIndentLeft"_s, 0,
         None, true},
        {u"mnuConfirmIndentCancel"_s, u"Cancel"_s, 1, ItemKind::Command, u"ConfirmIndentCancel"_s,
         0, None, true},
    };
    return items;
}

const QList<ToolbarButton> &ToolbarButtons() {
    static const QList<ToolbarButton> buttons = {
        {u"New File"_s, u"mnuFileNew"_s},
        {u"Open File"_s, u"mnuFileOpen"_s},
        {u"Save File"_s, u"mnuFileSave"_s},
        {u"Print File"_s, u"mnuFilePrint"_s},
        {u"Preview File"_s, u"mnuFilePrintPreview"_s},
        {u"Go To Outline"_s, u"mnuViewGoToOutline"_s},
        {u"Go To Text"_s, u"mnuViewGoToText"_s},
        {u"Copy Entry"_s, u"mnuOutlineCopy"_s},
        {u"Paste Entry"_s, u"mnuOutlinePaste"_s},
        {u"Delete Entry"_s, u"mnuOutlineDelete"_s},
        {u"Print Entry"_s, u"mnuFilePrintEntry"_s},
        {u"Preview Entry"_s, u"mnuFilePrintPreviewEntry"_s},
        {u"New Entry Above"_s, u"mnuOutlineInsertAbove"_s},
        {u"New Entry Below"_s, u"mnuOutlineInsertBelow"_s},
        {u"New Entry As Child"_s, u"mnuOutlineInsertChild"_s},
        {u"Move Entry Up"_s, u"mnuOutlineMoveUp"_s},
        {u"Move Entry Down"_s, u"mnuOutlineMoveDown"_s},
        {u"Move Entry First"_s, u"mnuOutlineMoveFirst"_s},
        {u"Move Entry Last"_s, u"mnuOutlineMoveLast"_s},
        {u"Indent Entry"_s, u"mnuOutlineIndent"_s},
        {u"Unindent Entry"_s, u"mnuOutlineUnindent"_s},
        {u"Tag Entry"_s, u"mnuOutlineTaggedEntry"_s},
        {u"Sort Entry"_s, u"mnuOutlineSortCurrent"_s},
        {u"Expand Entry"_s, u"mnuOutlineExpand"_s},
        {u"Contract Entry"_s, u"mnuOutlineCollapse"_s},
        {u"Expand to level 1"_s, u"mnuOutlineExpandLevel1"_s},
        {u"Expand to level 2"_s, u"mnuOutlineExpandLevel2"_s},
        {u"Expand to level 3"_s, u"mnuOutlineExpandLevel3"_s},
        {u"Expand to level 4"_s, u"mnuOutlineExpandLevel4"_s},
        {u"Expand to level 5"_s, u"mnuOutlineExpandLevel5"_s},
        {u"Expand to level 6"_s, u"mnuOutlineExpandLevel6"_s},
        {u"Expand to level 7"_s, u"mnuOutlineExpandLevel7"_s},
        {u"Expand all levels"_s, u"mnuOutlineExpandAll"_s},
        {u"Cut Text"_s, u"mnuEditCut"_s},
        {u"Copy Text"_s, u"mnuEditCopy"_s},
        {u"Paste Text"_s, u"mnuEditPaste"_s},
        {u"Delete Text"_s, u"mnuEditDelete"_s},
        {u"Bold Text"_s, u"mnuEditFormatBold"_s},
        {u"Italic Text"_s, u"mnuEditFormatItalic"_s},
        {u"Underline Text"_s, u"mnuEditFormatUnderline"_s},
        {u"Bullet Text"_s, u"mnuEditFormatBullet"_s},
        {u"Indent Text"_s, u"mnuEditFormatIndent"_s},
        {u"Unindent Text"_s, u"mnuEditFormatUnindent"_s},
        {u"Left Align Text"_s, u"mnuEditFormatLeft"_s},
        {u"Centre Align Text"_s, u"mnuEditFormatCentre"_s},
        {u"Right Align Text"_s, u"mnuEditFormatRight"_s},
    };
    return buttons;
}

const MenuItem *FindItem(const QString &name) {
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

void SetProcedure(const QString &procName, Procedure procedure) {
    Procedures().insert(procName, procedure);
}

Procedure FindProcedure(const QString &procName) {
    return Procedures().value(procName, nullptr);
}

bool HasProcedure(const QString &itemName) {
    const MenuItem *item = FindItem(itemName);
    return item && item->Kind == ItemKind::Command && FindProcedure(item->ProcName) != nullptr;
}

bool RunItem(const QString &itemName) {
    const MenuItem *item = FindItem(itemName);
    if (!item || item->Kind != ItemKind::Command) {
        return false;
    }
    const Procedure proc = FindProcedure(item->ProcName);
    if (!proc) {
        return false;
    }
    const int argument = item->Argument;
    modMain::Guarded([&] { proc(argument); });
    return true;
}

QString TagCaption(bool tagged) {
    return tagged ? u"Unta&g entry    Alt+T"_s : u"Ta&g entry      Alt+T"_s;
}

QString TagToolTip(bool tagged) {
    return tagged ? u"Untag entry"_s : u"Tag entry"_s;
}

} // namespace modCommands
