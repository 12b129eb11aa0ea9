// The document lifecycle: new documents, loading and saving with the choice of format, captions,
// the read-only state and the open-document counter.
#include "document/modDoc.h"

#include "document/Document.h"
#include "document/modDocText.h"
#include "document/modDocV1.h"
#include "document/modRecovery.h"
#include "outline/modNodes.h"
#include "util/ByteChain.h"
#include "util/ErrorLog.h"
#include "util/HeapReserve.h"
#include "util/MainWindowHost.h"
#include "util/modGlobals.h"
#include "util/modString.h"

#include <QFileInfo>
#include <QHash>

#include <cmath>
#include <limits>

namespace modDoc {

namespace {

clsFont g_defaultOutlineFont;
clsFont g_defaultTextFont;
QString g_sSaveFailure; // why the last save failed

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

void SetDefaultFonts(const clsFont &outline, const clsFont &text) {
    g_defaultOutlineFont = outline;
    g_defaultTextFont = text;
}

int OpenDocumentCount() {
    int count = 0;
    for (const Document *doc : Documents::All()) {
        count += doc->m_bClosing ? 0 : 1;
    }
    return count;
}

void DocClose(Document *doc) {
    PROC("modDoc DocClose");
    if (!doc) {
        return;
    }
    modRecovery::Forget(doc);
    doc->m_bClosing = true;
    if (Documents::Active() == doc) {
        Documents::SetActive(nullptr);
    }
    Documents::Release(doc);
}

Document *DocInit() {
    PROC("modDoc DocInit");
    Document *doc = modMain::Host().NewDocumentWindow();
    if (!doc) {
        doc = Documents::Adopt();
    }
    doc->m_sCaption = QStringLiteral("Document ") + QString::number(OpenDocumentCount());
    // Labels are renamed by clicking only when the option says so.
    doc->m_bLabelEditAutomatic = modGlobals::AutoLabelEdit;
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
    // The showing and tagged marks go on while the outline is hidden (the collapse's batch has
    // shown it again): the view reads the expansion once when it shows, and scrolls once, to the
    // selection.
    doc.setOutlineVisible(false);
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
    doc.setOutlineVisible(true);
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
    doc.m_bLabelEditAutomatic = modGlobals::AutoLabelEdit;
    stateChanged(doc);
    modNodes::NodeSelectFull(&doc, select);
}

Document *DocLoad(const QString &path) {
    PROC("modDoc DocLoad");
    // A missing file is silent; a folder or anything else that is not a readable file is an
    // error (ReadWholeFile reports it).
    if (!QFileInfo::exists(path)) {
        Document *active = nullptr;
        modMain::DocumentActive(active);
        menuEnableDynamic(active);
        return nullptr;
    }
    // The file is read whole before a document exists: a read that fails leaves no document
    // standing in for the file.
    QByteArray bytes;
    const bool read = modMain::Guarded(
        [&] {
            PROC("modDoc DocLoad");
            bytes = ReadWholeFile(path);
            return true;
        },
        false);
    if (!read) {
        modMain::MsgBox(QStringLiteral("The file ") + path +
                            QStringLiteral(" could not be opened:\n") + LastFailureReason(),
                        modMain::vbOKOnly, modMain::vbExclamation);
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
        DocLoadBytes(*doc, std::exchange(bytes, QByteArray()));
    });
    if (doc) {
        if (doc->view()) {
            doc->view()->ViewAutoFitSplit();
        }
        modMain::Host().UpdateMRUFile(path, false);
        menuEnableDynamic(doc);
    }
    return doc;
}

void DocLoadBytes(Document &doc, const QByteArray &bytes) {
    PROC("modDoc DocLoadBytes");
    const Transfer transfer;
    // The outline stays hidden until the whole tree is built and marked (DocFinishLoad).
    doc.setOutlineVisible(false);
    int version = DocDefaultVersionFromExt(doc.m_sFile).toInt();
    int tagged = 0;
    if (numericVersion(DocLoadTag(bytes, "formatversion"), tagged)) {
        version = tagged;
    }
    doc.m_iFileFormatVersion = version;
    // Room for the entries ahead of their allocations, reckoned from the file's size: the entries
    // take about a third of it. The first quarter is made ready at once, on another processor;
    // the rest costs nothing until it is used.
    const HeapReserve reserve(bytes.size() / 2, bytes.size() / 4);
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

QString SaveFailure() {
    return g_sSaveFailure;
}

bool DocSaveDocument(Document &doc, const QString &path, bool backupAndAsk) {
    const QString oldFile = doc.m_sFile;
    const int oldVersion = doc.m_iFileFormatVersion;
    bool failed = false;
    g_sSaveFailure.clear();
    // 1 written, 0 declined by the user, -1 failed.
    const int outcome = modMain::Guarded(
        [&] {
            PROC("modDoc DocSave");
            const BusyPointer busy;
            const Transfer transfer;
            doc.m_sFile = path;
            doc.m_iFileFormatVersion = DocDefaultVersionFromExt(path).toInt();
            // Declining the warning leaves the old file where it is; the backup is made only once
            // the new file is complete (WriteWholeFile).
            if (doc.m_iFileFormatVersion == -1 && doc.trvOutline().Count() > 1 && backupAndAsk &&
                modMain::MsgBox(TextFormatWarning(), modMain::vbYesNoCancel, modMain::vbQuestion) !=
                    modMain::vbYes) {
                return 0;
            }
            QByteArray text;
            if (doc.m_iFileFormatVersion == -1) {
                text = modDocText::DocSaveVersion(doc);
            }
            PROC("modDoc DocSave");
            failed = true;
            WriteWholeFile(
                path,
                [&](ByteChain &out) {
                    if (doc.m_iFileFormatVersion == -1) {
                        out.appendKept(text);
                    } else {
                        modDocV1::DocSaveVersion(doc, out);
                    }
                },
                backupAndAsk && BackupOn());
            failed = false;
            doc.m_sCaption = doc.m_sFile;
            stateChanged(doc);
            menuEnableDynamic(&doc);
            modMain::Host().UpdateMRUFile(path, false);
            return 1;
        },
        -1);
    if (outcome < 0) {
        g_sSaveFailure = LastFailureReason();
    }
    if (failed) {
        // Nothing was written: the document keeps the name of the file that holds it.
        doc.m_sFile = oldFile;
        doc.m_iFileFormatVersion = oldVersion;
    }
    return outcome > 0;
}

Document *DocOpenRecovered(const modRecovery::Recovered &copy) {
    PROC("modDoc DocOpenRecovered");
    QByteArray bytes;
    const bool read = modMain::Guarded(
        [&] {
            PROC("modDoc DocOpenRecovered");
            bytes = ReadWholeFile(copy.CopyPath);
            return true;
        },
        false);
    if (!read) {
        return nullptr;
    }
    Document *doc = modMain::Guarded([&]() -> Document * {
        PROC("modDoc DocOpenRecovered");
        Document *d = DocInit();
        const QString caption = d->m_sCaption;
        d->m_sFile = copy.OriginalFile;
        const bool transfer = modNodes::g_bDocTransfer;
        modNodes::g_bDocTransfer = true;
        DocLoadBytes(*d, bytes);
        modNodes::g_bDocTransfer = transfer;
        if (d->m_sFile.isEmpty()) {
            d->m_sCaption = caption;
        }
        d->m_bDataChanged = true;
        return d;
    });
    if (doc && modRecovery::WriteNow(*doc)) {
        modRecovery::Discard(copy); // this process's copy of the document replaces it
    }
    return doc;
}

} // namespace modDoc
