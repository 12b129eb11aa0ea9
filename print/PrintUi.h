#pragma once

#include "print/modPrint.h"

#include <QDialog>

class PrintPages;
class QCheckBox;
class QPrinter;
class QRadioButton;
class QWidget;

// The question what to print, and printing on a printer.
namespace modPrint {

// The answer of the question what to print; false when cancelled. The last children and texts
// answers are kept.
bool AskPrintChoice(PrintChoice &choice, bool hasCurrentEntry, QWidget *parent);

// Prints the pages on the printer (its page range respected) with a progress dialog that can
// cancel. False when cancelled or the printer failed.
bool PrintOn(QPrinter &printer, PrintPages &pages, QWidget *parent);

// The page layout the printer prints with, for pages laid out before it was chosen.
void ApplyPageLayout(QPrinter &printer, const QPageLayout &layout);

} // namespace modPrint

// What to print: the current entry or the whole document, with or without child entries and
// entry texts.
class PrintChoiceDialog : public QDialog {
    Q_OBJECT
public:
    PrintChoiceDialog(const modPrint::PrintChoice &choice, bool hasCurrentEntry,
                      QWidget *parent = nullptr);
    modPrint::PrintChoice choice() const;

    QRadioButton *entryButton() const { return m_entry; }
    QRadioButton *documentButton() const { return m_document; }
    QCheckBox *childrenBox() const { return m_children; }
    QCheckBox *textsBox() const { return m_texts; }

private:
    QRadioButton *m_entry;
    QRadioButton *m_document;
    QCheckBox *m_children;
    QCheckBox *m_texts;
};
