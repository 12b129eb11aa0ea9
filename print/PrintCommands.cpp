// The print commands: page setup, printing and the preview.
#include "print/PrintCommands.h"

#include "document/Document.h"
#include "print/PrintPages.h"
#include "print/PrintUi.h"
#include "print/frmPreview.h"
#include "util/ErrorLog.h"

#include <QApplication>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrinter>

namespace modPrint {

namespace {

// What to print from the active document, asked with the last answers: false when there is no
// document or the question was cancelled.
bool AskWhatToPrint(bool currentEntryOnly, Document *&doc, PrintChoice &choice, QWidget *parent) {
    if (!modMain::DocumentActive(doc)) {
        return false;
    }
    PrintChoiceLoad(choice);
    choice.CurrentEntryOnly = currentEntryOnly;
    return AskPrintChoice(choice, doc->trvOutline().SelectedItem() != nullptr, parent);
}

} // namespace

void FilePrintSetup() {
    modMain::Guarded([] {
        PROC("modPrint FilePrintSetup");
        QPrinter printer(QPrinter::HighResolution);
        ApplyPageLayout(printer, PageLayoutLoad());
        QPageSetupDialog dialog(&printer, QApplication::activeWindow());
        if (dialog.exec() == QDialog::Accepted) {
            PageLayoutSave(printer.pageLayout());
        }
    });
}

void FilePrint(bool currentEntryOnly) {
    modMain::Guarded([currentEntryOnly] {
        PROC("modPrint FilePrint");
        QWidget *parent = QApplication::activeWindow();
        Document *doc = nullptr;
        PrintChoice choice;
        if (!AskWhatToPrint(currentEntryOnly, doc, choice, parent)) {
            return;
        }
        std::vector<PrintEntry> entries = PrintEntries(*doc, choice);
        const QString title = DocumentTitle(*doc);
        QPrinter printer(QPrinter::HighResolution);
        ApplyPageLayout(printer, PageLayoutLoad());
        printer.setDocName(title);
        QPrintDialog dialog(&printer, parent);
        dialog.setMinMax(1, 99999);
        dialog.setOption(QAbstractPrintDialog::PrintPageRange, true);
        if (dialog.exec() != QDialog::Accepted) {
            return;
        }
        PrintPages pages(std::move(entries), choice.Texts, title, TextFont(*doc),
                         printer.pageLayout());
        PrintOn(printer, pages, parent);
    });
}

void FilePrintPreview(bool currentEntryOnly) {
    modMain::Guarded([currentEntryOnly] {
        PROC("modPrint FilePrintPreview");
        QWidget *parent = QApplication::activeWindow();
        Document *doc = nullptr;
        PrintChoice choice;
        if (!AskWhatToPrint(currentEntryOnly, doc, choice, parent)) {
            return;
        }
        const std::vector<PrintEntry> entries = PrintEntries(*doc, choice);
        const QString title = DocumentTitle(*doc);
        const QFont font = TextFont(*doc);
        const bool texts = choice.Texts;
        auto *preview = new frmPreview(
            [=](const QPageLayout &layout) {
                return std::make_unique<PrintPages>(entries, texts, title, font, layout);
            },
            PageLayoutLoad(), title, parent);
        preview->show();
    });
}

} // namespace modPrint
