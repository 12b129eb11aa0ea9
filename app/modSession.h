#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// Start-up and shutdown of a session, and the workspace (the documents open at the last exit).
namespace modMain {

// The document procedures the session steps use. Until the document code installs them, the
// steps that open or list documents find nothing to do.
struct DocumentHooks {
    std::function<void(const QString &file)> DocLoad; // opens a document file
    std::function<void()> FileNew;                    // adds a new untitled document
    std::function<QStringList()>
        OpenDocumentFiles; // m_sFile of each document window, in load order
};
void SetDocumentHooks(DocumentHooks hooks);
const DocumentHooks &Documents();

// Opens a file through DocLoad when there is one; false when document loading is unavailable.
bool OpenDocument(const QString &file);

void Initialise();
void Finalise();
void LoadInitialFiles();
void LoadWorkingFiles();
void SaveWorkingFiles();

} // namespace modMain
