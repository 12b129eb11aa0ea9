#include "document/Document.h"

#include "util/ErrorLog.h"

#include <algorithm>

namespace {
std::vector<Document *> g_documents;
Document *g_pActive = nullptr;
} // namespace

Document::Document() {
    g_documents.push_back(this);
}

Document::~Document() {
    g_documents.erase(std::remove(g_documents.begin(), g_documents.end(), this), g_documents.end());
    if (g_pActive == this) {
        g_pActive = nullptr;
    }
}

void Document::setOutlineVisible(bool visible) {
    m_nodes.setVisible(visible);
    if (m_pView) {
        m_pView->SetOutlineVisible(visible);
    }
}

namespace Documents {

const std::vector<Document *> &All() {
    return g_documents;
}

Document *Active() {
    return g_pActive;
}

void SetActive(Document *document) {
    if (document &&
        std::find(g_documents.begin(), g_documents.end(), document) == g_documents.end()) {
        return;
    }
    g_pActive = document;
}

Document *Adopt() {
    auto *document = new Document;
    document->m_bOwnedByList = true;
    return document;
}

bool Release(Document *document) {
    if (!document || !document->m_bOwnedByList ||
        std::find(g_documents.begin(), g_documents.end(), document) == g_documents.end()) {
        return false;
    }
    delete document; // leaves the list on destruction
    return true;
}

} // namespace Documents

namespace modMain {

bool DocumentActive(Document *&document) {
    PROC("modMain DocumentActive");
    document = Documents::Active();
    return document != nullptr;
}

} // namespace modMain
