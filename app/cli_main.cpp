// mavrolen-cli: documents from the command line, without windows.
#include "app/modMain.h"
#include "document/Document.h"
#include "document/modDoc.h"
#include "document/modDocText.h"
#include "document/modDocV1.h"
#include "outline/modNodes.h"
#include "print/modExport.h"
#include "richtext/RichTextBuffer.h"
#include "search/modSearch.h"
#include "util/TextEncoding.h"
#include "util/modString.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QStringList>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

void out(const QString &text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

int fail(int code, const QString &message) {
    std::fflush(stdout);
    const QByteArray bytes =
        (QStringLiteral("mavrolen-cli: ") + message + QLatin1Char('\n')).toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    return code;
}

QString usage() {
    return QStringLiteral(
        "Usage: mavrolen-cli COMMAND ARGUMENTS [--encoding NAME]\n"
        "  tree FILE             one line per entry in outline order: key, tab, T (tagged) or -,\n"
        "                        tab, label\n"
        "  cat FILE KEY          the plain text of the entry with that key (as `tree` shows it)\n"
        "  export-text FILE OUT  the document as a plain-text file, as File > Export writes it\n"
        "  convert IN OUT [--subtree KEY]\n"
        "                        saves IN under OUT in the format of OUT's extension: .mvd "
        "native,\n"
        "                        .txt plain text, .pdf printed pages, .html one web page, .md\n"
        "                        Markdown; with --subtree only that entry and its descendants;\n"
        "                        no backup, no questions\n"
        "  compact IN OUT        every entry text rewritten by this program's rich-text writer "
        "and\n"
        "                        stored compressed, then saved as `convert` does\n"
        "  check FILE            reports damage of a native file (orphan or out-of-order keys,\n"
        "                        compressed texts that do not decode, unknown tags); exit 1 when\n"
        "                        damaged\n"
        "  find FILE TEXT [--case] [--word] [--labels]\n"
        "                        one line per entry whose text (with --labels: label) holds TEXT,\n"
        "                        in outline order: key, tab, label; case is ignored unless "
        "--case,\n"
        "                        --word matches whole words only; exit 1 when nothing is found\n"
        "  --help                this text\n"
        "Text files are read as UTF-8 (with or without a byte order mark), UTF-16 with a byte\n"
        "order mark, or else Windows-1252. export-text and convert to a plain-text file write\n"
        "Windows-1252, or UTF-8 with --encoding utf-8 (NAME: utf-8 or windows-1252).\n"
        "Exit status: 0 done, 1 the command failed (a file that cannot be read or written) or "
        "found\ndamage, 2 usage error or missing file.\n"
        "Output is UTF-8.\n");
}

// The last error reported, as one line.
QString lastError() {
    return QStringLiteral("error %1 - %2").arg(modMain::Err.Number).arg(modMain::Err.Description);
}

bool exists(const QString &path) {
    return QFileInfo::exists(path);
}

// Loads a document; null (after an error line) when it cannot be read. With `keyed`, the keys
// are made to match the outline (a damaged file may have put entries elsewhere than its keys
// say), for a command that shows or takes keys; saving makes its own.
Document *load(const QString &path, bool keyed = true) {
    modMain::Err = {};
    Document *doc = modDoc::DocLoad(path);
    if (doc && keyed) {
        Node *root = modDocText::DocRoot(*doc);
        if (root) {
            modNodes::NodeSetKeys(root, QStringLiteral("KEY0"));
        }
    }
    return doc;
}

QString shortKey(const QString &key) {
    return key.startsWith(QLatin1String("KEY")) ? key.mid(3) : key;
}

int cmdTree(Document *doc) {
    QString text;
    modDocText::ForEachPreOrder(modDocText::DocRoot(*doc), [&](Node *n) {
        text += shortKey(n->Key()) + QLatin1Char('\t') +
                (modNodes::NodeTagged(n) ? QLatin1Char('T') : QLatin1Char('-')) +
                QLatin1Char('\t') + n->Text() + QLatin1Char('\n');
    });
    out(text);
    return kOk;
}

int cmdCat(Document *doc, const QString &key) {
    const QString wanted = QStringLiteral("KEY") + shortKey(key);
    Node *found = nullptr;
    modDocText::ForEachPreOrder(modDocText::DocRoot(*doc), [&](Node *n) {
        if (!found && n->Key() == wanted) {
            found = n;
        }
    });
    if (!found) {
        return fail(kFailed, QStringLiteral("no entry with key %1").arg(shortKey(key)));
    }
    // Damage elsewhere in the file, reported while loading, does not concern this entry.
    modMain::Err = {};
    const QString text =
        modMain::Guarded([&] { return modDocText::PlainTextStripped(found->Tag()); }, QString());
    if (modMain::Err.Number != 0) {
        return fail(kFailed, QStringLiteral("cannot read the entry text: ") + lastError());
    }
    QString shown = text;
    shown.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    out(shown.isEmpty() ? shown : shown + QLatin1Char('\n'));
    return kOk;
}

int cmdExportText(Document *doc, const QString &target, TextEncoding::Encoding encoding) {
    modMain::Err = {};
    if (!modDocText::DocExport(*doc, target, encoding)) {
        return fail(kFailed, QStringLiteral("cannot export to %1: ").arg(target) + lastError());
    }
    return kOk;
}

int cmdConvert(Document *doc, const QString &target, TextEncoding::Encoding encoding) {
    if (encoding != TextEncoding::Encoding::CodePage &&
        modDoc::DocDefaultVersionFromExt(target).toInt() == -1) {
        return cmdExportText(doc, target, encoding);
    }
    modMain::Err = {};
    if (!modDoc::DocSaveDocument(*doc, target, false)) {
        return fail(kFailed, QStringLiteral("cannot write %1: ").arg(target) + lastError());
    }
    return kOk;
}

// The formats `convert` writes, by the target's extension.
enum class Target { Unknown, Native, Text, Pdf, Html, Markdown };

Target targetOf(const QString &path) {
    const QString ext = QFileInfo(path).suffix().toLower();
    return ext == QLatin1String("mvd")    ? Target::Native
           : ext == QLatin1String("txt")  ? Target::Text
           : ext == QLatin1String("pdf")  ? Target::Pdf
           : ext == QLatin1String("html") ? Target::Html
           : ext == QLatin1String("md")   ? Target::Markdown
                                          : Target::Unknown;
}

Node *entryWithKey(Document *doc, const QString &key) {
    const QString wanted = QStringLiteral("KEY") + shortKey(key);
    Node *found = nullptr;
    modDocText::ForEachPreOrder(modDocText::DocRoot(*doc), [&](Node *n) {
        if (!found && n->Key() == wanted) {
            found = n;
        }
    });
    return found;
}

// A new document holding a copy of the entry and its descendants, the entry as its root.
std::unique_ptr<Document> subtreeDocument(Document *doc, Node *top) {
    auto copy = std::make_unique<Document>();
    copy->m_fntOutlineFont = doc->m_fntOutlineFont;
    copy->m_fntTextFont = doc->m_fntTextFont;
    std::vector<std::pair<Node *, Node *>> stack{{top, nullptr}};
    while (!stack.empty()) {
        const auto [from, parent] = stack.back();
        stack.pop_back();
        Node *to = copy->trvOutline().Add(parent, parent ? relChild : relLast);
        to->setText(from->Text());
        to->setTagFrom(*from);
        if (modNodes::NodeTagged(from)) {
            modNodes::NodeTagOn(to);
        }
        to->setExpanded(from->Expanded());
        const auto &children = from->childList();
        for (auto it = children.rbegin(); it != children.rend(); ++it) {
            stack.emplace_back(*it, to);
        }
    }
    copy->trvOutline().setSelectedItem(copy->trvOutline().topNodes().front());
    return copy;
}

int cmdConvertTo(Document *doc, const QString &target, const QString &subtree,
                 TextEncoding::Encoding encoding) {
    Node *top = nullptr;
    if (!subtree.isEmpty()) {
        top = entryWithKey(doc, subtree);
        if (!top) {
            return fail(kFailed, QStringLiteral("no entry with key %1").arg(shortKey(subtree)));
        }
    }
    modMain::Err = {};
    bool written = true;
    switch (targetOf(target)) {
    case Target::Pdf:
        written = modExport::ExportPdf(*doc, target, top);
        break;
    case Target::Html:
        written = modExport::ExportHtml(*doc, target, top);
        break;
    case Target::Markdown:
        written = modExport::ExportMarkdown(*doc, target, top);
        break;
    case Target::Text:
        if (top) {
            written = modMain::Guarded([&] {
                QByteArray bytes;
                modDocText::DocSaveNodeAll(top, bytes, encoding);
                modDoc::WriteWholeFile(target, bytes);
                return true;
            });
            break;
        }
        return cmdConvert(doc, target, encoding);
    default:
        if (top) {
            const std::unique_ptr<Document> copy = subtreeDocument(doc, top);
            return cmdConvert(copy.get(), target, encoding);
        }
        return cmdConvert(doc, target, encoding);
    }
    if (!written) {
        return fail(kFailed, QStringLiteral("cannot write %1: ").arg(target) + lastError());
    }
    return kOk;
}

int cmdCompact(Document *doc, const QString &target) {
    RichTextBuffer buffer;
    bool ok = true;
    modDocText::ForEachPreOrder(modDocText::DocRoot(*doc), [&](Node *n) {
        if (modNodes::NodeTextRefused(n->Tag())) {
            return; // too large to decode: kept as stored
        }
        ok = modMain::Guarded(
                 [&] {
                     QByteArray rtf;
                     modNodes::NodeTextDecompressIfRequired(n->Tag(), rtf);
                     buffer.SetTextRTF(rtf);
                     QByteArray stored;
                     modNodes::NodeTextCompressIfRequired(buffer.TextRTF(), stored);
                     n->setTag(stored);
                     return true;
                 },
                 false) &&
             ok;
    });
    if (!ok) {
        return fail(kFailed, QStringLiteral("cannot rewrite the entry texts: ") + lastError());
    }
    return cmdConvert(doc, target, TextEncoding::Encoding::CodePage);
}

int cmdCheck(const QString &path) {
    QByteArray bytes;
    modMain::Err = {};
    const bool read = modMain::Guarded(
        [&] {
            bytes = modDoc::ReadWholeFile(path);
            return true;
        },
        false);
    if (!read) {
        return fail(kFailed, QStringLiteral("cannot read %1: ").arg(path) + lastError());
    }
    int version = modDoc::DocDefaultVersionFromExt(path).toInt();
    bool isNumber = false;
    const int tagged = modDoc::DocLoadTag(bytes, "formatversion").trimmed().toInt(&isNumber);
    if (isNumber) {
        version = tagged;
    }
    if (version != 1) {
        out(QStringLiteral("%1: plain text (format version %2), read as one entry\n")
                .arg(path)
                .arg(version));
        return kOk;
    }
    const modDocV1::CheckReport report = modDocV1::CheckFile(bytes);
    QString text;
    for (const QString &problem : report.Problems) {
        text += path + QStringLiteral(": ") + problem + QLatin1Char('\n');
    }
    text += QStringLiteral("%1: %2 entries, %3\n")
                .arg(path)
                .arg(report.Entries)
                .arg(report.damaged() ? QStringLiteral("%1 problems").arg(report.Problems.size())
                                      : QStringLiteral("no damage found"));
    out(text);
    return report.damaged() ? kFailed : kOk;
}

int cmdFind(Document *doc, const QString &text, bool matchCase, bool wholeWord, bool labels) {
    modSearch::g_sFindText = text;
    modSearch::g_bMatchCase = matchCase;
    modSearch::g_bWholeWord = wholeWord;
    std::vector<Node *> nodes;
    modDocText::ForEachPreOrder(modDocText::DocRoot(*doc), [&](Node *n) { nodes.push_back(n); });
    if (labels) {
        std::erase_if(
            nodes, [&](Node *n) { return !modSearch::SearchLabel(n->Text(), matchCase ? 0 : 1); });
    } else {
        nodes = modSearch::EntriesHolding(doc, nodes);
    }
    QString lines;
    for (const Node *n : nodes) {
        lines += shortKey(n->Key()) + QLatin1Char('\t') + n->Text() + QLatin1Char('\n');
    }
    out(lines);
    return lines.isEmpty() ? kFailed : kOk;
}

// find FILE TEXT [--case] [--word] [--labels], the options anywhere after the command.
int runFind(const QStringList &args) {
    QStringList positional;
    bool matchCase = false;
    bool wholeWord = false;
    bool labels = false;
    for (const QString &arg : args.mid(1)) {
        if (arg == QLatin1String("--case")) {
            matchCase = true;
        } else if (arg == QLatin1String("--word")) {
            wholeWord = true;
        } else if (arg == QLatin1String("--labels")) {
            labels = true;
        } else if (arg.startsWith(QLatin1String("--"))) {
            return fail(kUsage, QStringLiteral("find: unknown option %1 (try --help)").arg(arg));
        } else {
            positional.append(arg);
        }
    }
    if (positional.size() != 2) {
        return fail(kUsage, QStringLiteral("find takes a file and a text (try --help)"));
    }
    if (positional.at(1).isEmpty()) {
        return fail(kUsage, QStringLiteral("find: the text to find is empty"));
    }
    const QString file = positional.at(0);
    if (!exists(file)) {
        return fail(kUsage, QStringLiteral("cannot open %1: no such readable file").arg(file));
    }
    Document *doc = load(file);
    if (!doc) {
        return fail(kUsage, QStringLiteral("cannot read %1: ").arg(file) + lastError());
    }
    return cmdFind(doc, positional.at(1), matchCase, wholeWord, labels);
}

int run(QStringList args) {
    if (args.contains(QLatin1String("--help")) || args.contains(QLatin1String("-h")) ||
        (!args.isEmpty() && args.first() == QLatin1String("help"))) {
        out(usage());
        return kOk;
    }
    TextEncoding::Encoding encoding = TextEncoding::Encoding::CodePage;
    bool encodingGiven = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        QString value;
        if (args.at(i) == QLatin1String("--encoding")) {
            if (i + 1 >= args.size()) {
                return fail(kUsage, QStringLiteral("--encoding needs a name (try --help)"));
            }
            value = args.at(i + 1);
            args.remove(i, 2);
        } else if (args.at(i).startsWith(QLatin1String("--encoding="))) {
            value = args.at(i).mid(11);
            args.remove(i, 1);
        } else {
            continue;
        }
        if (!TextEncoding::EncodingFromName(value, encoding)) {
            return fail(kUsage, QStringLiteral("unknown encoding \"%1\" (try --help)").arg(value));
        }
        encodingGiven = true;
        --i;
    }
    if (args.isEmpty()) {
        return fail(kUsage, QStringLiteral("no command given (try --help)"));
    }
    const QString command = args.first();
    if (encodingGiven && command != QLatin1String("export-text") &&
        command != QLatin1String("convert")) {
        return fail(kUsage,
                    QStringLiteral("--encoding applies to export-text and convert (try --help)"));
    }
    if (command == QLatin1String("find")) {
        return runFind(args);
    }
    struct Command {
        const char *name;
        int arguments;
    };
    static const Command commands[] = {{"tree", 1},    {"cat", 2},     {"export-text", 2},
                                       {"convert", 2}, {"compact", 2}, {"check", 1}};
    const Command *known = nullptr;
    for (const Command &s : commands) {
        if (command == QLatin1String(s.name)) {
            known = &s;
        }
    }
    if (!known) {
        return fail(kUsage, QStringLiteral("unknown command \"%1\" (try --help)").arg(command));
    }
    QStringList rest = args;
    QString subtree;
    if (command == QLatin1String("convert")) {
        const qsizetype at = rest.indexOf(QStringLiteral("--subtree"));
        if (at > 0) {
            if (at + 1 >= rest.size()) {
                return fail(kUsage, QStringLiteral("--subtree needs a key (try --help)"));
            }
            subtree = rest.at(at + 1);
            rest.remove(at, 2);
        }
        if (rest.size() == 3 && targetOf(rest.at(2)) == Target::Unknown) {
            return fail(kUsage, QStringLiteral("cannot convert to %1: the extension must be .mvd, "
                                               ".txt, .pdf, .html or .md")
                                    .arg(rest.at(2)));
        }
    }
    if (rest.size() - 1 != known->arguments) {
        return fail(kUsage, QStringLiteral("%1 takes %2 argument%3 (try --help)")
                                .arg(command)
                                .arg(known->arguments)
                                .arg(known->arguments == 1 ? "" : "s"));
    }
    const QString file = args.at(1);
    if (!exists(file)) {
        return fail(kUsage, QStringLiteral("cannot open %1: no such file").arg(file));
    }
    if (command == QLatin1String("check")) {
        return cmdCheck(file);
    }
    const bool keyed =
        command == QLatin1String("tree") || command == QLatin1String("cat") || !subtree.isEmpty();
    Document *doc = load(file, keyed);
    if (!doc) {
        return fail(kFailed, QStringLiteral("cannot read %1: ").arg(file) + lastError());
    }
    if (command == QLatin1String("tree")) {
        return cmdTree(doc);
    }
    if (command == QLatin1String("cat")) {
        return cmdCat(doc, args.at(2));
    }
    if (command == QLatin1String("export-text")) {
        return cmdExportText(doc, args.at(2), encoding);
    }
    if (command == QLatin1String("convert")) {
        return cmdConvertTo(doc, rest.at(2), subtree, encoding);
    }
    return cmdCompact(doc, args.at(2));
}

} // namespace

int main(int argc, char **argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // Qt's own notices (platform set-up and the like) would clutter the one-line messages.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &msg) {
        if (type == QtFatalMsg) {
            std::fputs((msg + QLatin1Char('\n')).toUtf8().constData(), stderr);
        }
    });
    auto *app = new QGuiApplication(argc, argv);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    const int status = run(args);
    // Everything is written and the system takes the memory back at once. Taking the document
    // and the application apart first would only cost time: the font set-up is even read in at
    // that point, just to be released.
    std::fflush(stdout);
    std::fflush(stderr);
    (void)app;
    std::_Exit(status);
}
