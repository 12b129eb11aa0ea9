// The byte scanner of the native format and the damage check built on it. Neither needs a
// document, so the command-line checker and the fuzzer use them directly.
#include "document/DocFiles.h"
#include "document/modDocV1.h"

#include "util/ByteChain.h"
#include "util/ErrorLog.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <cstring>

#include <zlib.h>

namespace modDoc {

QByteArray DocLoadTag(QByteArrayView text, QByteArrayView name) {
    PROC("modDoc DocLoadTag");
    QByteArray search;
    search.reserve(modDocV1::TagOpener.size() + name.size() + 1);
    search.append(modDocV1::TagOpener).append(name).append(' ');
    const qsizetype at = text.indexOf(search);
    if (at < 0) {
        return {};
    }
    const qsizetype from = at + search.size();
    const qsizetype close = text.indexOf('}', from);
    if (close < 0) {
        return {};
    }
    return text.sliced(from, close - from).toByteArray();
}

bool DocLoadTagAtPosition(QByteArrayView text, QByteArrayView name, qsizetype position,
                          qsizetype &closePosition, QByteArray &value) {
    PROC("modDoc DocLoadTagAtPosition");
    QByteArrayView found;
    const bool ok = modDocV1::TagValueAt(text, name, position, closePosition, found);
    value = found.isEmpty() ? QByteArray() : found.toByteArray();
    return ok;
}

} // namespace modDoc

namespace modDocV1 {

bool TagValueAt(QByteArrayView text, QByteArrayView name, qsizetype position,
                qsizetype &closePosition, QByteArrayView &value) {
    value = {};
    const qsizetype head = TagOpener.size() + name.size() + 1;
    if (position < 0 || position + head > text.size()) {
        return false;
    }
    const QByteArrayView at = text.sliced(position);
    if (!at.startsWith(TagOpener) || at.sliced(TagOpener.size(), name.size()) != name ||
        at.at(TagOpener.size() + name.size()) != ' ') {
        return false;
    }
    // A tag cut short by the end of the file runs to the end.
    qsizetype close = text.indexOf('}', position);
    if (close < 0) {
        close = text.size();
    }
    closePosition = close;
    const qsizetype from = position + head;
    if (close > from) {
        value = text.sliced(from, close - from);
    }
    return true;
}

QList<QByteArray> HeaderTagNames() {
    return {"formatversion",
            "selecteditemkey",
            "outlinefontname",
            "outlinefontsize",
            "outlinefontbold",
            "outlinefontitalic",
            "outlinefontstrikethrough",
            "outlinefontunderline",
            "textfontname",
            "textfontsize",
            "textfontbold",
            "textfontitalic",
            "textfontstrikethrough",
            "textfontunderline"};
}

namespace {

// The name of the tag whose opener is at `p`: the bytes up to the first blank or brace.
QByteArray tagNameAt(QByteArrayView text, qsizetype p) {
    const qsizetype from = p + TagOpener.size();
    qsizetype end = from;
    while (end < text.size() && end - from < 64 && text.at(end) != ' ' && text.at(end) != '}' &&
           text.at(end) != '\r' && text.at(end) != '\n') {
        ++end;
    }
    return text.sliced(from, end - from).toByteArray();
}

// The bytes of `value` in `out`, in the room `out` already has when it is its own.
void setBytes(QByteArray &out, QByteArrayView value) {
    out.resize(value.size());
    if (!value.isEmpty()) {
        std::memcpy(out.data(), value.data(), size_t(value.size()));
    }
}

// The offset of the next tag opener at or after `from`, -1 when there is none. Found by its
// brace first: stored texts are mostly compressed bytes, in which a brace is rare.
qsizetype nextOpener(QByteArrayView text, qsizetype from) {
    const qsizetype n = TagOpener.size();
    const char *begin = text.data();
    // Up to the last place an opener fits.
    for (qsizetype at = from; at <= text.size() - n; ++at) {
        const void *brace = std::memchr(begin + at, '{', size_t(text.size() - n - at + 1));
        if (!brace) {
            break;
        }
        at = static_cast<const char *>(brace) - begin;
        if (std::memcmp(begin + at + 1, TagOpener.data() + 1, size_t(n - 1)) == 0) {
            return at;
        }
    }
    return -1;
}

} // namespace

void ScanEntries(QByteArrayView text, const std::function<void(EntryRecord &)> &finish,
                 ScanNotes *notes, bool copyTexts) {
    PROC("modDocV1 ScanEntries");
    const qsizetype n = text.size();
    EntryRecord rec;
    bool pending = false;
    bool textMode = false;
    qsizetype start = 0;
    static const QSet<QByteArray> headerNames = [] {
        QSet<QByteArray> s;
        for (const QByteArray &name : HeaderTagNames()) {
            s.insert(name);
        }
        return s;
    }();

    auto finishPending = [&] {
        if (pending) {
            finish(rec);
            if (notes) {
                ++notes->Entries;
            }
        }
        pending = false;
        rec.Label.resize(0);
        rec.Text.clear();
        rec.TextFrom = 0;
        rec.TextLength = 0;
        rec.Tagged = false;
        rec.Showing = false;
        rec.TextTruncated = false;
    };

    while (true) {
        qsizetype p = nextOpener(text, start);
        if (p < 0) {
            p = n;
        }
        if (textMode) {
            // The text ends three bytes before the next opener: "}", CR, LF close its line.
            const qsizetype len = p - 3 - start;
            rec.TextFrom = start;
            rec.TextLength = qMax<qsizetype>(len, 0);
            rec.Text = len > 0 && copyTexts ? text.sliced(start, len).toByteArray() : QByteArray();
            rec.TextTruncated = !(p - 3 >= start && text.sliced(p - 3, 3) == "}\r\n");
            textMode = false;
        }
        if (p >= n) {
            break;
        }
        qsizetype close = 0;
        QByteArrayView value;
        if (TagValueAt(text, "nodekey", p, close, value)) {
            finishPending();
            setBytes(rec.Key, value);
            rec.KeyPosition = p;
            pending = true;
            start = close + 1;
        } else if (TagValueAt(text, "nodelabel", p, close, value)) {
            setBytes(rec.Label, value);
            start = close + 1;
        } else if (TagValueAt(text, "nodetagged", p, close, value)) {
            rec.Tagged = value == "True";
            start = close + 1;
        } else if (TagValueAt(text, "nodevisible", p, close, value)) {
            rec.Showing = value == "True";
            start = close + 1;
        } else if (text.sliced(p).startsWith("{\\ttf_nodetext ")) {
            textMode = true;
            start = p + 15;
        } else {
            if (notes && !headerNames.contains(tagNameAt(text, p))) {
                notes->UnknownTags.append({p, tagNameAt(text, p)});
            }
            const qsizetype brace = text.indexOf('}', p);
            if (brace < 0) {
                break;
            }
            start = brace + 1;
        }
        if (start > n) {
            start = n;
        }
    }
    finishPending();
}

void DocSaveNodeTag(QByteArray &out, QByteArrayView name, QByteArrayView value) {
    out.append(TagOpener).append(name).append(' ').append(value).append("}\r\n");
}

void DocSaveNodeTag(ByteChain &out, QByteArrayView name, QByteArrayView value) {
    out.append(TagOpener).append(name).append(' ').append(value).append("}\r\n");
}

void DocSaveEntry(ByteChain &out, QByteArrayView key, QByteArrayView label, bool tagged,
                  bool showing, QByteArrayView text) {
    DocSaveNodeTag(out, "nodekey", key);
    DocSaveNodeTag(out, "nodelabel", label);
    DocSaveNodeTag(out, "nodetagged", tagged ? "True" : "False");
    DocSaveNodeTag(out, "nodevisible", showing ? "True" : "False");
    // The stored text is written from where it is held.
    out.append(TagOpener).append("nodetext ").appendKept(text).append("}\r\n");
}

namespace {

// A stored text in the compressed form ("length,data", the data beginning with a zlib header)
// whose data does not decode. A text stored as is (its compression failed, or it came from a
// text file) is valid even when it begins with digits and a comma.
bool undecodable(const QByteArray &stored) {
    const qsizetype comma = stored.indexOf(',');
    if (comma <= 0) {
        return false;
    }
    qint64 length = 0;
    qsizetype i = 0;
    while (i < comma && stored.at(i) >= '0' && stored.at(i) <= '9') {
        // Saturates: any length this large is beyond every buffer.
        length = std::min<qint64>(length * 10 + (stored.at(i) - '0'), qint64(1) << 40);
        ++i;
    }
    // The writer's prefix is digits only.
    if (i != comma || length <= 0) {
        return false;
    }
    // zlib's header: compression method 8, and the two bytes a multiple of 31.
    if (stored.size() < comma + 3) {
        return false;
    }
    const auto cmf = static_cast<unsigned char>(stored.at(comma + 1));
    const auto flg = static_cast<unsigned char>(stored.at(comma + 2));
    if ((cmf & 0x0F) != 8 || (cmf >> 4) > 7 || (cmf * 256 + flg) % 31 != 0) {
        return false;
    }
    // Inflated in slices into one small buffer: the file's claims never size an allocation.
    const qint64 capacity = qint64(double(length) + double(length) * 0.01 + 12);
    const qint64 input = stored.size() - comma - 1;
    if (capacity > (qint64(1) << 31) || length > input * 1032 + 64) {
        return true;
    }
    z_stream zs{};
    if (inflateInit(&zs) != Z_OK) {
        return true;
    }
    zs.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(stored.constData() + comma + 1));
    zs.avail_in = uInt(input);
    char slice[1 << 16];
    qint64 produced = 0;
    int rc = Z_OK;
    while (rc == Z_OK) {
        zs.next_out = reinterpret_cast<Bytef *>(slice);
        zs.avail_out = sizeof slice;
        rc = inflate(&zs, Z_NO_FLUSH);
        produced += qint64(sizeof slice - zs.avail_out);
        if (produced > capacity) {
            break;
        }
    }
    inflateEnd(&zs);
    return rc != Z_STREAM_END || produced > capacity;
}

// Whether a key is a well-formed path: "0", then ".n" parts with n a number from 1 without
// leading zeros.
bool wellFormedKey(const QByteArray &key) {
    const QList<QByteArray> parts = key.split('.');
    if (parts.isEmpty() || parts.first() != "0") {
        return false;
    }
    for (qsizetype i = 1; i < parts.size(); ++i) {
        const QByteArray &part = parts.at(i);
        if (part.isEmpty() || part.at(0) == '0' || part.size() > 9) {
            return false;
        }
        for (char c : part) {
            if (c < '0' || c > '9') {
                return false;
            }
        }
    }
    return true;
}

QString shown(const QByteArray &bytes) {
    QByteArray cut = bytes.left(40);
    for (char &c : cut) {
        if (static_cast<unsigned char>(c) < 0x20) {
            c = '?';
        }
    }
    return QString::fromLatin1(cut) + (bytes.size() > 40 ? QStringLiteral("...") : QString());
}

} // namespace

CheckReport CheckFile(const QByteArray &text) {
    PROC("modDocV1 CheckFile");
    CheckReport report;
    for (const QByteArray &name : HeaderTagNames()) {
        QByteArray search = QByteArray(TagOpener.data(), TagOpener.size()) + name + ' ';
        if (!text.contains(search)) {
            report.Problems.append(
                QStringLiteral("missing header tag \"%1\"").arg(QLatin1String(name)));
        }
    }
    QSet<QByteArray> seen;
    QByteArray previous;
    qsizetype index = 0;
    ScanNotes notes;
    ScanEntries(
        text,
        [&](EntryRecord &rec) {
            ++index;
            const QString where =
                QStringLiteral("entry %1 (key \"%2\")").arg(index).arg(shown(rec.Key));
            QByteArray relative;
            bool child = false;
            if (rec.Key.endsWith(".1")) {
                relative = rec.Key.chopped(2);
                child = true;
            } else {
                const qsizetype dot = rec.Key.lastIndexOf('.');
                if (dot >= 0) {
                    bool ok = false;
                    const qint64 n = rec.Key.mid(dot + 1).toLongLong(&ok);
                    relative = ok && n > 0 ? rec.Key.left(dot + 1) + QByteArray::number(n - 1)
                                           : QByteArray("?");
                }
            }
            if (!relative.isEmpty() && !seen.contains(relative)) {
                report.Problems.append(
                    where +
                    QStringLiteral(": orphan, no entry \"%1\" before it").arg(shown(relative)));
            } else if (!wellFormedKey(rec.Key) || seen.contains(rec.Key) ||
                       (index == 1) != (rec.Key == "0") || (child && previous != relative) ||
                       (!child && !relative.isEmpty() && previous != relative &&
                        !previous.startsWith(relative + '.'))) {
                report.Problems.append(where + QStringLiteral(": out of order"));
            }
            if (undecodable(rec.Text)) {
                report.Problems.append(where + QStringLiteral(": text cannot be decoded"));
            }
            if (rec.TextTruncated) {
                report.Problems.append(where + QStringLiteral(": text cut short"));
            }
            seen.insert(rec.Key);
            previous = rec.Key;
        },
        &notes);
    for (const auto &[position, name] : notes.UnknownTags) {
        report.Problems.append(
            QStringLiteral("unknown tag \"%1\" at byte %2").arg(shown(name)).arg(position));
    }
    report.Entries = notes.Entries;
    return report;
}

} // namespace modDocV1
