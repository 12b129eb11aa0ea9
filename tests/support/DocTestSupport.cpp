#include "support/DocTestSupport.h"

#include "document/Document.h"
#include "document/modDoc.h"
#include "outline/modNodes.h"

#include <vector>

namespace DocTest {

Document *newDocument() {
    return modDoc::DocInit();
}

void closeAll() {
    while (!Documents::All().empty()) {
        modDoc::DocClose(Documents::All().back());
    }
}

Node *add(Document *doc, Node *parent, const QString &label, const QByteArray &tag) {
    Node *n = parent ? modNodes::NodeInsert(doc, relChild, parent)
                     : modNodes::NodeInsert(doc, relFirst, nullptr);
    n->setText(label);
    n->setTag(tag);
    return n;
}

QString outline(Document *doc) {
    QString out;
    auto walk = [&](auto &self, const std::vector<Node *> &nodes, int depth) -> void {
        for (Node *n : nodes) {
            out += QString(depth * 2, QLatin1Char(' ')) + n->Text() +
                   (modNodes::NodeTagged(n) ? QStringLiteral("*") : QString()) +
                   (n->Expanded() ? QStringLiteral("+") : QString()) + QLatin1Char('=') +
                   QString::fromLatin1(n->Tag().toPercentEncoding(" {}\\,")) + QLatin1Char('\n');
            self(self, n->childList(), depth + 1);
        }
    };
    walk(walk, doc->trvOutline().topNodes(), 0);
    return out;
}

Document *exampleDocument() {
    Document *doc = newDocument();
    Node *root = add(doc, nullptr, "Projects", "{\\rtf1\\ansi Plans for the year\\par }");
    Node *garden = add(doc, root, "Garden");
    Node *house = add(doc, root, "House", "{\\rtf1\\ansi Paint the hall\\par }");
    modNodes::NodeTagOn(garden);
    root->setExpanded(true);
    house->setSelected(true);
    doc->m_fntOutlineFont.setName("Arial");
    doc->m_fntOutlineFont.setSize(10);
    doc->m_fntTextFont.setName("Times New Roman");
    doc->m_fntTextFont.setSize(10);
    return doc;
}

QByteArray exampleFile() {
    return "{\\ttf_formatversion 1}\r\n{\\ttf_selecteditemkey KEY0.2}\r\n"
           "{\\ttf_outlinefontname Arial}\r\n{\\ttf_outlinefontsize 10}\r\n"
           "{\\ttf_outlinefontbold False}\r\n{\\ttf_outlinefontitalic False}\r\n"
           "{\\ttf_outlinefontstrikethrough False}\r\n{\\ttf_outlinefontunderline False}\r\n"
           "{\\ttf_textfontname Times New Roman}\r\n{\\ttf_textfontsize 10}\r\n"
           "{\\ttf_textfontbold False}\r\n{\\ttf_textfontitalic False}\r\n"
           "{\\ttf_textfontstrikethrough False}\r\n{\\ttf_textfontunderline False}\r\n"
           "{\\ttf_nodekey 0}\r\n{\\ttf_nodelabel Projects}\r\n"
           "{\\ttf_nodetagged False}\r\n{\\ttf_nodevisible True}\r\n"
           "{\\ttf_nodetext {\\rtf1\\ansi Plans for the year\\par }}\r\n"
           "{\\ttf_nodekey 0.1}\r\n{\\ttf_nodelabel Garden}\r\n"
           "{\\ttf_nodetagged True}\r\n{\\ttf_nodevisible True}\r\n{\\ttf_nodetext }\r\n"
           "{\\ttf_nodekey 0.2}\r\n{\\ttf_nodelabel House}\r\n"
           "{\\ttf_nodetagged False}\r\n{\\ttf_nodevisible True}\r\n"
           "{\\ttf_nodetext {\\rtf1\\ansi Paint the hall\\par }}\r\n";
}

Document *generatedDocument(int count, std::mt19937 &random) {
    Document *doc = newDocument();
    std::vector<Node *> nodes;
    auto pick = [&](int n) { return int(random() % unsigned(n)); };
    for (int i = 0; i < count; ++i) {
        QString label = QStringLiteral("Entry %1 ").arg(i);
        label += QChar(char16_t(0xE0 + pick(20))); // an accented letter of the code page
        QByteArray tag;
        switch (pick(4)) {
        case 0:
            break;
        case 1:
            tag = "{\\rtf1\\ansi line one\\par\r\n{\\b two}}\r\n";
            break;
        case 2: {
            QByteArray rtf = "{\\rtf1\\ansi ";
            for (int k = pick(200); k > 0; --k) {
                rtf += "word" + QByteArray::number(pick(1000)) + ' ';
            }
            rtf += "\\par }";
            modNodes::NodeTextCompressIfRequired(rtf, tag);
            break;
        }
        default:
            for (int k = pick(300); k > 0; --k) {
                tag += char(pick(256));
            }
            tag.replace("{\\ttf_", "{\\ttX_");
            tag.prepend('x'); // not a length prefix
            break;
        }
        Node *parent = nodes.empty() ? nullptr : nodes[size_t(pick(int(nodes.size())))];
        Node *n = add(doc, parent, label, tag);
        if (pick(3) == 0) {
            modNodes::NodeTagOn(n);
        }
        nodes.push_back(n);
    }
    for (Node *n : nodes) {
        n->setExpanded(pick(2) == 0);
    }
    // As in the program, the selected entry shows.
    Node *selected = nodes[size_t(pick(int(nodes.size())))];
    selected->setSelected(true);
    selected->EnsureVisible();
    doc->m_fntOutlineFont.setName("DejaVu Sans");
    doc->m_fntOutlineFont.setSize(8.25);
    doc->m_fntOutlineFont.setBold(true);
    doc->m_fntTextFont.setName("Liberation Serif");
    doc->m_fntTextFont.setSize(11.5);
    doc->m_fntTextFont.setUnderline(true);
    doc->m_fntTextFont.setStrikeThrough(true);
    doc->m_fntTextFont.setItalic(true);
    return doc;
}

Document *loadBytes(const QByteArray &bytes, const QString &name) {
    Document *doc = newDocument();
    doc->m_sFile = name;
    modDoc::DocLoadBytes(*doc, bytes);
    return doc;
}

} // namespace DocTest
