#pragma once

#include "print/modPrint.h"

#include <QByteArray>
#include <QString>

#include <vector>

class Document;
class Node;
class QTextDocument;

// Publishing an outline for other programs: one self-contained HTML page, or Markdown. Every
// entry becomes a heading by its depth (numbered with its key, as printed), followed by its text
// with the formatting the format can hold.
namespace modExport {

// The body of a rich text: HTML with semantic tags (b, i, u, s, ul/ol, table, img with the
// picture as a data URL), and Markdown (**bold**, *italic*, ~~strike~~, <u>underline</u>, - and
// 1. lists, pipe tables, pictures as data URLs).
QString HtmlOf(const QTextDocument &doc);
QString MarkdownOf(const QTextDocument &doc);

// A whole page of the entries (UTF-8), and the same as Markdown.
QByteArray Html(const QString &title, const QString &fontFamily,
                const std::vector<modPrint::PrintEntry> &entries, bool texts);
QByteArray Markdown(const std::vector<modPrint::PrintEntry> &entries, bool texts);

// Writes the document, or the subtree of `top` when given, renumbering keys from the root first.
// Return false after reporting the error.
bool ExportHtml(Document &doc, const QString &path, Node *top = nullptr);
bool ExportMarkdown(Document &doc, const QString &path, Node *top = nullptr);
// The printed pages of the document (or the subtree) as PDF, with the kept page setup.
bool ExportPdf(Document &doc, const QString &path, Node *top = nullptr);

// The File > Export items beyond plain text: ask for a file name (the document's name with the
// format's extension) and write the active document.
void FileExportHtml();
void FileExportMarkdown();
void FileExportPdf();

} // namespace modExport
