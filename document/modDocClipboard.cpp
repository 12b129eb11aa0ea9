// Clipboard transfer of whole documents.
#include "document/modDocClipboard.h"

#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocText.h"
#include "outline/modNodes.h"
#include "util/CodePage.h"
#include "util/ErrorLog.h"
#include "util/modGlobals.h"

namespace modDocClipboard {

namespace {
Clipboard *g_pClipboard = nullptr;
} // namespace

void SetClipboard(Clipboard *clipboard) {
    g_pClipboard = clipboard;
}
Clipboard *ActiveClipboard() {
    return g_pClipboard;
}

void DocSaveNodeAll(Node *node, QString &out) {
    PROC("modDocClipboard DocSaveNodeAll");
    modDocText::ForEachPreOrder(node, [&](Node *n) {
        QStringView key(n->Key());
        if (key.startsWith(QLatin1String("KEY"))) {
            key = key.sliced(3);
        }
        out.append(key).append(QLatin1Char(' '));
        out.append(modDocText::PlainTextStripped(n->Tag()));
        out.append(QLatin1String("\r\n"));
    });
}

QString DocExportText(Document &doc) {
    PROC("modDocClipboard DocExportText");
    Node *root = modDocText::DocRoot(doc);
    if (!root) {
        return {};
    }
    modNodes::NodeSetKeys(root, QStringLiteral("KEY0"));
    QString out;
    out.reserve(qsizetype(doc.trvOutline().Count()) * 64);
    DocSaveNodeAll(root, out);
    return out;
}

void DocExport() {
    modMain::Guarded([] {
        PROC("modDocClipboard DocExport");
        Clipboard *clipboard = g_pClipboard;
        if (!clipboard) {
            modMain::Raise(modMain::errObjectRequired);
        }
        clipboard->Clear();
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        // Built once and set at the end: the same content as growing it entry by entry.
        const QString text = DocExportText(*doc);
        if (modDocText::DocRoot(*doc)) {
            clipboard->SetText(text);
        }
    });
}

void DocImport() {
    modMain::Guarded([] {
        PROC("modDocClipboard DocImport");
        Document *doc = nullptr;
        if (!modMain::DocumentActive(doc)) {
            return;
        }
        Node *node = nullptr;
        {
            modNodes::g_bDocTransfer = true;
            struct Clear {
                ~Clear() { modNodes::g_bDocTransfer = false; }
            } clear;
            doc->setOutlineVisible(false);
            node = modNodes::NodeInsert(doc, relFirst, nullptr);
            if (!node) {
                return;
            }
            node->setText(QStringLiteral("Text"));
            if (Clipboard *clipboard = g_pClipboard) {
                if (clipboard->GetFormat(Clipboard::PlainText)) {
                    node->setTag(CodePage::fromUnicode(clipboard->GetText()));
                } else if (clipboard->GetFormat(Clipboard::RichText)) {
                    node->setTag(clipboard->GetRichText());
                }
            }
        }
        doc->setOutlineVisible(true);
        doc->m_bLabelEditAutomatic = modGlobals::AutoLabelEdit;
        if (doc->view()) {
            doc->view()->DocumentStateChanged();
        }
        modNodes::NodeSelect(doc, node);
        if (doc->view()) {
            doc->view()->ViewAutoFitSplit();
        }
    });
}

} // namespace modDocClipboard
