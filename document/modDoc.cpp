// The document lifecycle: new documents, loading and saving with the choice of format, captions,
// the read-only state and the open-document counter.
#include "document/modDoc.h"

#include "app/MainWindowHost.h"
#include "document/Document.h"
#include "document/modDocText.h"
#include "document/modDocV1.h"
#include "outline/BusyPointer.h"
#include "outline/modNodes.h"
#include "util/ErrorLog.h"
#include "util/modString.h"

#include <QHash>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace modDoc {

namespace {

int g_iDocumentCount = 0;
DocumentFactory g_documentFactory;
std::function<void(const QString &)> g_recentFileRule;
clsFont g_defaultOutlineFont;
clsFont g_defaultTextFont;
std::vector<std::unique_ptr<Document>> g_ownedDocuments;

// The busy flag of a whole-document transfer, cleared however the transfer ends.
struct Transfer {
    Transfer() { modNodes::g_bDocTransfer = true; }
    ~Transfer() { modNodes::g_bDocTransfer = false; }
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;
};

void menuEnableDynamic(Document *doc) {
    if (doc && doc->view()) {
        doc->view()->MenuEnableDynamic();
    }
}

void stateChanged(Document &doc) {
    if (doc.view()) {
        doc.view()->DocumentStateChanged();
    }
}

// The version a "formatversion" value gives, when it is a number.
bool numericVersion(const QByteArray &value, int &version) {
    bool ok = false;
    const double v = value.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v)) {
        return false;
    }
    const double r = std::nearbyint(v);
    version = r > std::numeric_limits<int>::max()   ? std::numeric_limits<int>::max()
              : r < std::numeric_limits<int>::min() ? std::numeric_limits<int>::min()
                                                    : int(r);
    return true;
}

} // namespace

void SetDocumentFactory(DocumentFactory factory) {
    g_documentFactory = std::move(factory);
}
void SetRecentFileRule(std::function<void(const QString &)> rule) {
    g_recentFileRule = std::move(rule);
}
void SetDefaultFonts(const clsFont &outline, const clsFont &text) {
    g_defaultOutlineFont = outline;
    g_defaultTextFont = text;
}

int OpenDocumentCount() {
    return g_iDocumentCount;
}

void DocumentClosed() {
    if (g_iDocumentCount > 0) {
        --g_iDocumentCount;
    }
}

void DocClose(Document *doc) {
    PROC("modDoc DocClose");
    if (!doc) {
        return;
    }
    DocumentClosed();
    for (auto it = g_ownedDocuments.begin(); it != g_ownedDocuments.end(); ++it) {
        if (it->get() == doc) {
            g_ownedDocuments.erase(it);
            return;
        }
    }
}

Document *DocInit() {
    PROC("modDoc DocInit");
    Document *doc = nullptr;
    if (g_documentFactory) {
        doc = g_documentFactory();
    } else {
        g_ownedDocuments.push_back(std::make_unique<Document>());
        doc = g_ownedDocuments.back().get();
    }
    if (!doc) {
        modMain::Raise(modMain::errObjectRequired);
    }
    ++g_iDocumentCount;
    doc->m_sCaption = QStringLiteral("Document ") + QString::number(g_iDocumentCount);
    Documents::SetActive(doc);
    stateChanged(*doc);
    return doc;
}

Document *DocNew() {
    return modMain::Guarded([]() -> Document * {
        PROC("modDoc DocNew");
        Document *doc = DocInit();
        modMain::UpdateStatusBarText(QString());
        doc->setOutlineVisible(false);
        if (TextPane *pane = doc->txtRTF()) {
            pane->SetBaseFont(g_defaultTextFont.ToPaneFont());
        }
        g_defaultOutlineFont.CopyTo(doc->m_fntOutlineFont);
        g_defaultTextFont.CopyTo(doc->m_fntTextFont);
        doc->m_bDataChanged = true;
        doc->m_iFileFormatVersion = 1;
        doc->setOutlineVisible(true);
        stateChanged(*doc);
        menuEnableDynamic(doc);
        return doc;
    });
}

bool DocReadOnly(const Document &doc) {
    PROC("modDoc DocReadOnly");
    if (modString::Trim(doc.m_sFile).isEmpty()) {
        return false;
    }
    return FileReadOnly(doc.m_sFile);
}

void DocFinishLoad(Document &doc, const QString &selectedKey, const QList<bool> &taggedByIndex,
                   const QList<bool> &showingByIndex) {
    PROC("modDoc DocFinishLoad");
    Nodes &nodes = doc.trvOutline();
    doc.m_sCaption = doc.m_sFile;
    doc.bReadOnly = DocReadOnly(doc);
    if (doc.bReadOnly) {
        doc.m_sCaption += QStringLiteral(" (read-only)");
        doc.m_bLabelEditAutomatic = false;
        doc.m_bTextLocked = true;
    }
    Node *root = nodes.Count() > 0 ? nodes.Item(1)->Root() : nullptr;
    if (root) {
        modNodes::NodeCollapseAll(root);
    }
    doc.setOutlineVisible(true);
    const qsizetype count = nodes.Count();
    for (qsizetype i = 1; i < showingByIndex.size() && i <= count; ++i) {
        if (showingByIndex.at(i)) {
            nodes.Item(int(i))->EnsureVisible();
        }
    }
    for (qsizetype i = 1; i < taggedByIndex.size() && i <= count; ++i) {
        if (taggedByIndex.at(i)) {
            modNodes::NodeTagOn(nodes.Item(int(i)));
        }
    }
    Node *select = nullptr;
    if (!selectedKey.isEmpty()) {
        for (Node *n : nodes) {
            if (n->Key() == selectedKey) {
                select = n;
                break;
            }
        }
    } else {
        select = root;
    }
    // After the read-only rule, and overriding it: labels follow the setting.
    doc.m_bLabelEditAutomatic = AutoLabelEditOn();
    stateChanged(doc);
    modNodes::NodeSelectFull(&doc, select);
}

Document *DocLoad(const QString &path) {
    PROC("modDoc DocLoad");
    if (!modString::FileExists(path)) {
        Document *active = nullptr;
        modMain::DocumentActive(active);
        menuEnableDynamic(active);
        return nullptr;
    }
    Document *doc = nullptr;
    modMain::Guarded([&] {
        PROC("modDoc DocLoad");
        const BusyPointer busy;
        modMain::UpdateStatusBarText(QString());
        const Transfer transfer;
        doc = DocInit();
        doc->setOutlineVisible(false);
        doc->m_sFile = path;
        const QByteArray bytes = ReadWholeFile(path);
        DocLoadBytes(*doc, bytes);
    });
    if (doc) {
        if (doc->view()) {
            doc->view()->ViewAutoFitSplit();
        }
        if (g_recentFileRule) {
            g_recentFileRule(path);
        }
        menuEnableDynamic(doc);
    }
    return doc;
}

void DocLoadBytes(Document &doc, const QByteArray &bytes) {
    PROC("modDoc DocLoadBytes");
    const Transfer transfer;
    int version = DocDefaultVersionFromExt(doc.m_sFile).toInt();
    int tagged = 0;
    if (numericVersion(DocLoadTag(bytes, "formatversion"), tagged)) {
        version = tagged;
    }
    doc.m_iFileFormatVersion = version;
    QList<bool> taggedByIndex(1, false);
    QList<bool> showingByIndex(1, false);
    QString selectedKey;
    if (version == 1) {
        selectedKey = modDocV1::DocLoadVersion(doc, bytes, taggedByIndex, showingByIndex);
    } else {
        modDocText::DocLoadVersion(doc, bytes);
    }
    DocFinishLoad(doc, selectedKey, taggedByIndex, showingByIndex);
}

bool DocSave(const QString &path) {
    PROC("modDoc DocSave");
    Document *doc = nullptr;
    if (!modMain::DocumentActive(doc)) {
        return false;
    }
    return DocSaveDocument(*doc, path, true);
}

bool DocSaveDocument(Document &doc, const QString &path, bool backupAndAsk) {
    return modMain::Guarded([&] {
        PROC("modDoc DocSave");
        const BusyPointer busy;
        const Transfer transfer;
        doc.m_sFile = path;
        doc.m_iFileFormatVersion = DocDefaultVersionFromExt(path).toInt();
        if (backupAndAsk && BackupOn()) {
            DocBackup(path);
        }
        if (doc.m_iFileFormatVersion == -1 && doc.trvOutline().Count() > 1 && backupAndAsk &&
            AskQuestion(TextFormatWarning()) != Yes) {
            return false;
        }
        const QByteArray bytes = doc.m_iFileFormatVersion == -1 ? modDocText::DocSaveVersion(doc)
                                                                : modDocV1::DocSaveVersion(doc);
        PROC("modDoc DocSave");
        WriteWholeFile(path, bytes);
        doc.m_sCaption = doc.m_sFile;
        stateChanged(doc);
        menuEnableDynamic(&doc);
        if (g_recentFileRule) {
            g_recentFileRule(path);
        }
        return true;
    });
}

} // namespace modDoc
