// The question what to print and printing on a printer with a progress dialog.
#include "print/PrintUi.h"

#include "print/PrintPages.h"
#include "util/ErrorLog.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QPainter>
#include <QPrinter>
#include <QProgressDialog>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

PrintChoiceDialog::PrintChoiceDialog(const modPrint::PrintChoice &choice, bool hasCurrentEntry,
                                     QWidget *parent)
    : QDialog(parent) {
    setWindowTitle(QStringLiteral("Print"));
    auto *layout = new QVBoxLayout(this);
    auto *what = new QGroupBox(QStringLiteral("Print"), this);
    auto *whatLayout = new QVBoxLayout(what);
    m_entry = new QRadioButton(QStringLiteral("The &current entry"), what);
    m_document = new QRadioButton(QStringLiteral("The &whole document"), what);
    whatLayout->addWidget(m_entry);
    whatLayout->addWidget(m_document);
    layout->addWidget(what);
    m_children = new QCheckBox(QStringLiteral("With c&hild entries"), this);
    m_texts = new QCheckBox(QStringLiteral("With entry &texts"), this);
    layout->addWidget(m_children);
    layout->addWidget(m_texts);
    auto *buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    m_entry->setEnabled(hasCurrentEntry);
    (choice.CurrentEntryOnly && hasCurrentEntry ? m_entry : m_document)->setChecked(true);
    m_children->setChecked(choice.Children);
    m_texts->setChecked(choice.Texts);
    // The whole document always has all its entries.
    auto follow = [this] { m_children->setEnabled(m_entry->isChecked()); };
    connect(m_entry, &QRadioButton::toggled, this, follow);
    follow();
}

modPrint::PrintChoice PrintChoiceDialog::choice() const {
    modPrint::PrintChoice c;
    c.CurrentEntryOnly = m_entry->isChecked();
    c.Children = m_children->isChecked();
    c.Texts = m_texts->isChecked();
    return c;
}

namespace modPrint {

void ApplyPageLayout(QPrinter &printer, const QPageLayout &layout) {
    if (printer.setPageLayout(layout)) {
        return;
    }
    // The printer cannot print that close to the edge: its own smallest margins instead.
    printer.setPageSize(layout.pageSize());
    printer.setPageOrientation(layout.orientation());
    printer.setPageMargins(layout.margins(), layout.units());
}

bool AskPrintChoice(PrintChoice &choice, bool hasCurrentEntry, QWidget *parent) {
    PROC("modPrint AskPrintChoice");
    PrintChoiceDialog dialog(choice, hasCurrentEntry, parent);
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    choice = dialog.choice();
    PrintChoiceSave(choice);
    return true;
}

bool PrintOn(QPrinter &printer, PrintPages &pages, QWidget *parent) {
    return modMain::Guarded(
        [&] {
            PROC("modPrint PrintOn");
            QProgressDialog progress(QStringLiteral("Laying out the pages..."),
                                     QStringLiteral("Cancel"), 0, pages.entryCount(), parent);
            progress.setWindowTitle(QStringLiteral("Print"));
            progress.setWindowModality(Qt::WindowModal);
            progress.setMinimumDuration(400);
            while (!pages.layoutMore(4)) {
                progress.setValue(pages.entriesDone());
                if (progress.wasCanceled()) {
                    return false;
                }
            }
            const int total = pages.pageCount();
            int from = 1;
            int to = total;
            if (printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0) {
                from = printer.fromPage();
                to = std::min(total, printer.toPage() > 0 ? printer.toPage() : total);
            }
            progress.setRange(0, std::max(1, to - from + 1));
            progress.setValue(0);
            QPainter painter;
            if (from > to) {
                return true;
            }
            if (!painter.begin(&printer)) {
                modMain::Raise(modMain::errDeviceIO);
            }
            const qreal scale = qreal(printer.resolution()) / PrintPages::Resolution;
            for (int i = from - 1; i < to; ++i) {
                if (i > from - 1) {
                    printer.newPage();
                }
                progress.setLabelText(
                    QStringLiteral("Printing page %1 of %2...").arg(i + 1).arg(total));
                painter.save();
                painter.scale(scale, scale);
                pages.paintPage(painter, i, total);
                painter.restore();
                progress.setValue(i - from + 2);
                if (progress.wasCanceled()) {
                    printer.abort();
                    return false;
                }
            }
            painter.end();
            return true;
        },
        false);
}

} // namespace modPrint
