#pragma once

#include <QString>
#include <QtGlobal>

// The Edit menu and the text buttons of the toolbar: commands on the text pane of the active
// document. Each command is one step of the pane's undo history; when it changes the text it
// marks the document changed and stores the text into the selected entry, as typing does.
namespace modEdit {

// The step of the indent commands, in twips.
extern qint32 g_lIndentStep;

void EditCaseLower();
void EditCaseUpper();
void EditCaseProper();
void EditCaseToggle();
void EditClearEntryText();

// Copy carries the formatting (rich text) and Cut does not (plain text): deliberately.
void EditCopy();
void EditCut();
void EditDelete();
// Rich text when the clipboard has it (RTF, else HTML), else plain text.
void EditPaste();
void EditPasteSpecial();
void EditSelectAll();

// A mixed selection becomes plain: the attribute is switched off.
void EditFormatBold();
void EditFormatItalic();
void EditFormatUnderline();
void EditFormatStrikeThrough();
void EditFormatBullet();
void EditFormatLeft();
void EditFormatRight();
void EditFormatCentre();
// Indent leaves paragraphs of different indents alone; unindent sets them to one step less than
// none, that is 0.
void EditFormatIndent();
void EditFormatUnindent();

void EditInsertLongDate();
void EditInsertShortDate();
void EditInsertTime();
void EditInsertTab();

void EditCurrentFont();
void EditDocumentFont();

// The pane's undo history (Ctrl+Z; Ctrl+Y and Ctrl+Shift+Z).
void EditUndo();
void EditRedo();

// Proper case: lower case with an upper-case letter at the start and after every blank, digit,
// carriage return and line feed (not after a tab, a hyphen or an apostrophe).
QString ProperCase(const QString &text);

} // namespace modEdit
