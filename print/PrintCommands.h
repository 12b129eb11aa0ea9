#pragma once

// The print commands of the File menu.
namespace modPrint {

// Page setup: paper, orientation and margins, kept in the settings store.
void FilePrintSetup();
// Asks what to print (the current entry preselected when currentEntryOnly is set, else the
// whole document), then prints through the print dialog, or shows the preview.
void FilePrint(bool currentEntryOnly);
void FilePrintPreview(bool currentEntryOnly);

} // namespace modPrint
