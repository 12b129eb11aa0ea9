// The plain-text format: headings with keys, unformatted texts, blank lines; and reading any text
// file into one entry.
#include "document/modDocText.h"

#include "document/DocFiles.h"
#include "document/Document.h"
#include "outline/modNodes.h"
#include "richtext/RichTextBuffer.h"
#include "util/CodePage.h"
#include "util/ErrorLog.h"
#include "util/modGlobals.h"

#include <vector>

namespace modDocText {

namespace {

struct Transfer {
    Transfer() { modNodes::g_bDocTransfer = true; }
    ~Transfer() { modNodes::g_bDocTransfer = false; }
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;
};

QByteArray keyWithoutPrefix(const QString &key) {
    QByteArray k = key.toLatin1();
    if (k.startsWith("KEY")) {
        k.remove(0, 3);
    }
    return k;
}

} // namespace

Node *DocRoot(Document &doc) {
    Node *root = nullptr;
    modNodes::NodeGetRoot(&doc, root);
    if (!root && doc.trvOutline().Count() > 0) {
        root = doc.trvOutline().Item(1)->Root();
    }
    return root;
}

void ForEachPreOrder(Node *node, const std::function<void(Node *)> &visit) {
    if (!node) {
        return;
    }
    std::vector<Node *> stack{node};
    while (!stack.empty()) {
        Node *n = stack.back();
        stack.pop_back();
        visit(n);
        const auto &children = n->childList();
        for (auto it = children.rbegin(); it != children.rend(); ++it) {
            stack.push_back(*it);
        }
    }
}

void DocSaveNodeAll(Node *node, QByteArray &out, TextEncoding::Encoding encoding) {
    PROC("modDocText DocSaveNodeAll");
    ForEachPreOrder(node, [&](Node *n) {
        out.append(keyWithoutPrefix(n->Key()))
            .append(' ')
            .append(TextEncoding::EncodeText(n->Text(), encoding));
        out.append("\r\n");
        const QByteArray text = TextEncoding::EncodeText(PlainTextStripped(n->Tag()), encoding);
        out.append(text).append("\r\n");
        if (!text.isEmpty()) {
            out.append("\r\n");
        }
    });
}

QByteArray DocSaveVersion(Document &doc, TextEncoding::Encoding encoding) {
    PROC("modDocText DocSaveVersion");
    // All the texts together may inflate to a bounded multiple of what the document holds.
    qint64 held = 0;
    for (Node *n : doc.trvOutline()) {
        held += n->TagView().size() + n->Text().size();
    }
    const modNodes::InflateBudget budget(modNodes::InflateBudget::ForFileSize(held));
    Node *root = DocRoot(doc);
    if (!root) {
        return {};
    }
    modNodes::NodeSetKeys(root, QStringLiteral("KEY0"));
    QByteArray out;
    out.reserve(qsizetype(doc.trvOutline().Count()) * 64);
    DocSaveNodeAll(root, out, encoding);
    return out;
}

QByteArray TextFileAsStoredText(QByteArrayView bytes) {
    PROC("modDocText TextFileAsStoredText");
    const QString file = TextEncoding::DecodeText(bytes);
    QString text;
    text.reserve(file.size() + file.size() / 32 + 2);
    qsizetype i = 0;
    const qsizetype n = file.size();
    while (i < n) {
        qsizetype end = i;
        while (end < n && file.at(end) != u'\r' && file.at(end) != u'\n') {
            ++end;
        }
        text.append(QStringView(file).sliced(i, end - i)).append(u"\r\n");
        if (end < n && file.at(end) == u'\r' && end + 1 < n && file.at(end + 1) == u'\n') {
            end += 2;
        } else if (end < n) {
            end += 1;
        }
        i = end;
    }
    if (CodePage::canEncode(text)) {
        return CodePage::fromUnicode(text);
    }
    // Characters the code page lacks survive only in rich text. Its last paragraph mark does not
    // count as a line break, so the text's own last break makes one more (empty) paragraph.
    RichTextBuffer buffer;
    buffer.SetSelText(text);
    return buffer.TextRTF();
}

void DocLoadVersion(Document &doc, QByteArrayView bytes) {
    PROC("modDocText DocLoadVersion");
    const QByteArray text = TextFileAsStoredText(bytes);
    Node *node = modNodes::NodeInsert(&doc, relFirst, nullptr);
    if (!node) {
        return;
    }
    node->setText(QStringLiteral("Text"));
    node->setTag(text);
    modNodes::NodeSelect(&doc, node);
}

bool DocExport(Document &doc, const QString &path, TextEncoding::Encoding encoding) {
    return modMain::Guarded([&] {
        PROC("modDocText DocExport");
        const Transfer transfer;
        const QByteArray bytes = DocSaveVersion(doc, encoding);
        modDoc::WriteWholeFile(path, bytes);
        return true;
    });
}

bool DocImport(Document &doc, const QString &path) {
    return modMain::Guarded([&] {
        PROC("modDocText DocImport");
        {
            const Transfer transfer;
            doc.setOutlineVisible(false);
            const QByteArray bytes = modDoc::ReadWholeFile(path);
            DocLoadVersion(doc, bytes);
            doc.setOutlineVisible(true);
            Node *select = DocRoot(doc);
            doc.m_bLabelEditAutomatic = modGlobals::AutoLabelEdit;
            if (doc.view()) {
                doc.view()->DocumentStateChanged();
            }
            modNodes::NodeSelect(&doc, select);
        }
        // Now that the transfer is over, the pane shows the selected entry's text, so that what
        // is typed there goes into the text the user sees.
        modNodes::NodeSelectFull(&doc, doc.trvOutline().SelectedItem());
        if (doc.view()) {
            doc.view()->ViewAutoFitSplit();
        }
        return true;
    });
}

} // namespace modDocText
