// mavrolen-helpdoc: makes the help document (a native document file) from the user guide's help
// project: one entry per page of its table of contents, in its order and nesting, each holding
// the page's formatted text.
//
//   mavrolen-helpdoc GUIDE.qhp OUT.mvd
#include "document/Document.h"
#include "document/modDoc.h"
#include "outline/modNodes.h"
#include "richtext/RtfWriter.h"
#include "util/ErrorLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTextDocument>
#include <QUrl>
#include <QXmlStreamReader>

#include <cstdio>

namespace {

int fail(const QString &message) {
    std::fputs(("mavrolen-helpdoc: " + message + u'\n').toUtf8().constData(), stderr);
    return 1;
}

// The page as the text of an entry: its HTML laid out and written as RTF, stored compressed.
QByteArray PageText(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        modMain::Raise(modMain::errFileNotFound, path);
    }
    QTextDocument page;
    // The page's style sheet link is found from its own folder.
    page.setBaseUrl(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
    page.setHtml(QString::fromUtf8(file.readAll()));
    QByteArray stored;
    modNodes::NodeTextCompressIfRequired(RtfWriter::write(&page), stored);
    return stored;
}

// Reads the <toc> of the help project into the document's tree. Sections that point into a
// page (ref with '#') are places on their parent's page, not pages of their own.
void ReadContents(QXmlStreamReader &xml, const QDir &base, Document *doc) {
    QList<Node *> parents; // the open sections; null for a skipped one
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement() && xml.name() == u"toc") {
            return;
        }
        if (xml.isStartElement() && xml.name() == u"section") {
            const QString ref = xml.attributes().value(QStringLiteral("ref")).toString();
            Node *parent = parents.isEmpty() ? nullptr : parents.last();
            Node *node = nullptr;
            if (!ref.contains(u'#') && (parents.isEmpty() || parent)) {
                node = parent ? modNodes::NodeInsert(doc, relChild, parent)
                              : modNodes::NodeInsert(doc, relFirst, nullptr);
                node->setText(xml.attributes().value(QStringLiteral("title")).toString());
                node->setTag(PageText(base.filePath(ref)));
            }
            parents.append(node);
        } else if (xml.isEndElement() && xml.name() == u"section") {
            parents.removeLast();
        }
    }
}

} // namespace

int main(int argc, char **argv) {
    QGuiApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 3) {
        return fail(QStringLiteral("usage: mavrolen-helpdoc GUIDE.qhp OUT.mvd"));
    }
    QFile project(args.at(1));
    if (!project.open(QIODevice::ReadOnly)) {
        return fail(QStringLiteral("cannot read ") + args.at(1));
    }
    modMain::SetLogPath(QDir::temp().filePath(QStringLiteral("mavrolen-helpdoc.log")));
    Document *doc = modDoc::DocInit();
    for (clsFont *font : {&doc->m_fntOutlineFont, &doc->m_fntTextFont}) {
        font->setName(QStringLiteral("Sans Serif"));
        font->setSize(10);
    }
    const QDir base = QFileInfo(args.at(1)).absoluteDir();
    QXmlStreamReader xml(&project);
    const bool read = modMain::Guarded(
        [&] {
            while (xml.readNextStartElement()) {
                if (xml.name() == u"toc") {
                    ReadContents(xml, base, doc);
                } else if (xml.name() != u"QtHelpProject" && xml.name() != u"filterSection") {
                    xml.skipCurrentElement();
                }
            }
            return true;
        },
        false);
    if (!read || xml.hasError()) {
        return fail(QStringLiteral("cannot read the guide: ") +
                    (xml.hasError() ? xml.errorString() : modMain::Err.Description));
    }
    const auto &top = doc->trvOutline().topNodes();
    if (top.empty()) {
        return fail(QStringLiteral("the guide has no pages"));
    }
    top.front()->setExpanded(true);
    top.front()->setSelected(true);
    if (!modDoc::DocSaveDocument(*doc, args.at(2), false)) {
        return fail(QStringLiteral("cannot write ") + args.at(2) + QStringLiteral(": ") +
                    modMain::Err.Description);
    }
    return 0;
}
