#include "support/FakeDocument.h"

#include "outline/modNodes.h"

void FakeTextPane::SetTextRTF(const QByteArray &rtf) {
    m_rtf = rtf;
    ++loads;
    if (m_bVisible) {
        ++loadsWhileVisible;
    }
    if (changed) {
        changed();
    }
}

void FakeTextPane::ApplyFontToAll(const PaneFont &font) {
    m_rtf += "{\\font " + font.name.toLatin1() + ' ' + QByteArray::number(font.size) + '}';
}

TestDocument::TestDocument(bool active) {
    auto p = std::make_unique<FakeTextPane>();
    pane = p.get();
    doc.setTextPane(std::move(p));
    doc.setView(&view);
    if (active) {
        Documents::SetActive(&doc);
    }
}

TestDocument::~TestDocument() = default;

std::vector<Node *> BuildOutline(Document &document, const QString &outline) {
    std::vector<Node *> made;
    std::vector<Node *> levels; // the last node made at each level
    const bool transfer = modNodes::g_bDocTransfer;
    modNodes::g_bDocTransfer = true;
    for (const QString &line : outline.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        qsizetype blanks = 0;
        while (blanks < line.size() && line[blanks] == QLatin1Char(' ')) {
            ++blanks;
        }
        const size_t level = size_t(blanks / 2);
        levels.resize(level);
        Node *parent = levels.empty() ? nullptr : levels.back();
        Node *node = modNodes::NodeInsert(&document, relChild, parent);
        node->setText(line.mid(blanks));
        levels.push_back(node);
        made.push_back(node);
    }
    modNodes::g_bDocTransfer = transfer;
    return made;
}
