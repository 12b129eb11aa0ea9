#pragma once

#include "search/clsHistory.h"

#include <QString>

#include <vector>

class Document;
class Node;

// Find and replace in the active document: in the selected entry's text, in every entry's text
// or in the entry labels. The search state below is filled by the dialog and kept for the whole
// session, so that a repeated search and a reopened dialog start from the last settings.
//
// Text positions are those of the text pane (RichTextBuffer); label positions are 1-based.
// Without an active document every operation ends at once and finds nothing.
namespace modSearch {

extern QString g_sFindText;    // trimmed
extern QString g_sReplaceText; // trimmed
extern bool g_bMatchCase;
extern bool g_bWholeWord;
extern bool g_bBackwards;
// The scope as the position chosen in the scope list: "0" the current entry text, "1" all entry
// texts, "2" all entry names. Anything else searches nothing.
extern QString g_sSearchWhere;
extern QString g_sSearchWhereText; // the scope's caption, for the dialog
// 0 at rest; 1 while the dialog is open for finding, or during a repeat; 2 while it is open for
// replacing. While it is not 0 the text pane's changes are not stored by the document window:
// the search stores its own replacements.
extern qint32 g_iSearchMode;

// The find and the replace history.
extern clsHistory g_hisFind;
extern clsHistory g_hisReplace;

// Start-up: fresh histories, then their sections ("FindHistory", "ReplaceHistory") and sizes.
void CreateHistories();
void InitialiseHistories();

// Menu commands: the dialog for finding or replacing (the pane's selection becomes the find
// expression), and a repeat of the last search without the dialog.
void SearchFind();
void SearchReplace();
void SearchRepeat();

// One search step in the chosen scope; shows "Search completed" when nothing was found.
bool SearchPerform();
// Replaces the current match in the chosen scope. False when nothing could be replaced (no
// selection or entry, a read-only document).
bool SearchPerformReplace();
// Replace and search again for as long as something is found.
void SearchReplaceAll();

// The steps, per scope.
bool SearchText();
void SearchTextBackwards(int options, int limit, int &position, int &previous);
bool SearchAllText();
bool SearchAllTexts();
// compare: 0 exact, 1 ignoring case.
bool SearchLabel(const QString &label, int compare);
bool SearchLabels();
void SearchReplaceText();
void SearchReplaceLabel();
void SearchNodeSelect(Node *node);

// The options word of the text pane's Find for the current state.
int SearchOptions();

// The dialog's rules. The replace expression holds the find expression (ignoring case unless
// case is matched); then replacing could go on for ever.
bool ReplaceHoldsFind();
// "&Find" needs a find expression and a scope.
bool FindEnabled();
// "Replace &All" needs the dialog opened for replacing and a replace expression that does not
// hold the find expression.
bool ReplaceAllEnabled();
// "&Replace" after a find.
bool ReplaceEnabledAfterFind(bool found);

// The entries of the list whose text holds the find expression, with the state's case and
// whole-word settings, as the text pane would find it; in the list's order. The texts are decoded
// on every core and not kept (a tool that reads each entry once).
std::vector<Node *> EntriesHolding(Document *document, const std::vector<Node *> &nodes);
// Drops the decoded texts of every document.
void ForgetTexts();

} // namespace modSearch
