#include "help/DebugDetails.h"

#include "document/Document.h"
#include "richtext/RichTextBuffer.h"
#include "util/CodePage.h"
#include "util/ErrorLog.h"

using namespace Qt::StringLiterals;

namespace DebugDetails {

namespace {

const RichTextBuffer &pane(const Document &doc) {
    const auto *buffer = dynamic_cast<const RichTextBuffer *>(doc.txtRTF());
    if (!buffer) {
        modMain::Raise(modMain::errObjectRequired);
    }
    return *buffer;
}

QString number(double value) {
    return QString::number(value);
}

} // namespace

QString RichTextSource(const Document &doc) {
    return CodePage::toUnicode(pane(doc).TextRTF());
}

QString DetailsText(const Document &doc) {
    const RichTextBuffer &buffer = pane(doc);
    const QString end = u"\r\n"_s;
    QString text;
    text += u"Font name "_s + buffer.Font().family() + end;
    text += u"Font size "_s + number(buffer.Font().pointSizeF()) + end;
    const auto selName = buffer.SelFontName();
    text += u"Selected font name "_s + selName.value_or(QString()) + end;
    const auto selSize = buffer.SelFontSize();
    text += u"Selected font size "_s + (selSize ? number(*selSize) : QString()) + end;
    const Node *selected = doc.trvOutline().SelectedItem();
    if (!selected) {
        modMain::Raise(modMain::errObjectRequired);
    }
    text += u"Index "_s + QString::number(selected->Index()) + end;
    text += u"Key "_s + selected->Key() + end;
    return text;
}

} // namespace DebugDetails
