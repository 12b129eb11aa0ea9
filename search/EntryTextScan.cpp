#include "search/EntryTextScan.h"

#include "document/Document.h"
#include "document/modDocText.h"
#include "outline/Node.h"
#include "outline/modNodes.h"

#include <QByteArrayView>
#include <QLatin1StringView>

#include <algorithm>
#include <atomic>
#include <thread>
#include <unordered_map>

namespace {

// One entry's text, as scanned.
struct KeptText {
    QByteArray tag; // the stored text it was made from; holding it keeps its bytes alive,
                    // so the same bytes at the entry mean the same text
    bool valid = false;
    bool folded = false; // case-folded (for scans that ignore case)
    bool loose = false;  // folding made an ASCII letter of another character
    bool narrow = false; // every character fits in one byte: kept in `bytes`
    QByteArray bytes;
    QString wide;
};

} // namespace

struct EntryTextScan::Kept {
    std::unordered_map<const Node *, KeptText> texts;
};

namespace {

std::unordered_map<const Document *, EntryTextScan::Kept> &kept() {
    static std::unordered_map<const Document *, EntryTextScan::Kept> documents;
    return documents;
}

bool sameBytes(const QByteArray &a, const QByteArray &b) {
    return a.size() == b.size() && (a.size() == 0 || a.constData() == b.constData());
}

bool isWordChar(char16_t c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Folds the text in place, one code point at a time, as case-insensitive comparison does.
// Returns true when a character outside ASCII became an ASCII letter or digit.
bool foldInPlace(QString &text) {
    bool loose = false;
    QChar *p = text.data();
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = p[i].unicode();
        if (c < 0x80) {
            if (c >= 'A' && c <= 'Z') {
                p[i] = QChar(char16_t(c + 32));
            }
            continue;
        }
        if (QChar::isHighSurrogate(c) && i + 1 < n && p[i + 1].isLowSurrogate()) {
            const char32_t folded =
                QChar::toCaseFolded(QChar::surrogateToUcs4(c, p[i + 1].unicode()));
            if (QChar::requiresSurrogates(folded)) {
                p[i] = QChar(QChar::highSurrogate(folded));
                p[i + 1] = QChar(QChar::lowSurrogate(folded));
            }
            ++i;
            continue;
        }
        const char32_t folded = QChar::toCaseFolded(char32_t(c));
        if (!QChar::requiresSurrogates(folded)) {
            loose = loose || (folded < 0x80 && isWordChar(char16_t(folded)));
            p[i] = QChar(char16_t(folded));
        }
    }
    return loose;
}

// The expression in the form of the plain text: every paragraph break as CR LF (a lone CR or LF
// is one too, as the pane's Find reads it), a line break as "\v".
QString plainForm(const QString &expression) {
    QString out;
    out.reserve(expression.size());
    for (qsizetype i = 0; i < expression.size(); ++i) {
        const char16_t c = expression.at(i).unicode();
        if (c == u'\r' || c == u'\n' || c == 0x2029) {
            if (c == u'\r' && i + 1 < expression.size() && expression.at(i + 1) == u'\n') {
                ++i;
            }
            out += QLatin1String("\r\n");
        } else if (c == 0x2028) {
            out += QChar(0x0B);
        } else {
            out += QChar(c);
        }
    }
    return out;
}

// The kept texts of a document. Texts of documents that have closed go; so do all of a
// document's texts when those of removed entries have piled up.
EntryTextScan::Kept &keptTexts(Document *document) {
    auto &documents = kept();
    const auto &open = Documents::All();
    std::erase_if(documents, [&](const auto &entry) {
        return std::find(open.begin(), open.end(), entry.first) == open.end();
    });
    EntryTextScan::Kept &k = documents[document];
    if (k.texts.size() > size_t(document->trvOutline().Count()) * 2 + 1024) {
        k.texts.clear();
    }
    return k;
}

void decode(KeptText &t, const QByteArray &tag, bool folded) {
    QString plain = modDocText::PlainText(tag);
    t.valid = true;
    t.tag = tag;
    t.folded = folded;
    t.loose = folded && foldInPlace(plain);
    t.narrow =
        std::all_of(plain.cbegin(), plain.cend(), [](QChar c) { return c.unicode() < 0x100; });
    if (t.narrow) {
        t.bytes = plain.toLatin1();
        t.wide = QString();
    } else {
        t.bytes = QByteArray();
        t.wide = plain;
    }
}

bool needsDecoding(const KeptText &t, const QByteArray &tag, bool folded) {
    return !t.valid || t.folded != folded || !sameBytes(t.tag, tag);
}

// Decodes the texts on worker threads beside this one. A text that fails to decode there (or
// would be refused as too large, which is reported) stays undecoded for the scan to decode in
// the usual way on this thread.
void decodeInParallel(const std::vector<std::pair<KeptText *, QByteArray>> &jobs, bool folded) {
    constexpr size_t kPerThread = 16; // fewer texts are not worth a thread
    const size_t threads = std::min<size_t>({std::max(1U, std::thread::hardware_concurrency()), 8,
                                             (jobs.size() + kPerThread - 1) / kPerThread});
    std::atomic<size_t> next{0};
    const auto work = [&] {
        for (size_t i = next++; i < jobs.size(); i = next++) {
            KeptText &t = *jobs[i].first;
            if (modNodes::NodeTextRefused(jobs[i].second)) {
                continue;
            }
            try {
                decode(t, jobs[i].second, folded);
            } catch (...) {
                t.valid = false;
            }
        }
    };
    std::vector<std::jthread> pool;
    for (size_t k = 1; k < threads; ++k) {
        pool.emplace_back(work);
    }
    work();
}

} // namespace

EntryTextScan::EntryTextScan(const QString &expression, bool matchCase, bool wholeWord, bool keep)
    : m_bMatchCase(matchCase), m_bWholeWord(wholeWord), m_bKeep(keep),
      m_sNeedle(plainForm(expression)) {
    if (!matchCase) {
        foldInPlace(m_sNeedle);
    }
    m_bNeedleFits = std::all_of(m_sNeedle.cbegin(), m_sNeedle.cend(),
                                [](QChar c) { return c.unicode() < 0x100; });
    if (m_bNeedleFits) {
        m_baNeedle = m_sNeedle.toLatin1();
    }
}

EntryTextScan::~EntryTextScan() = default;

EntryTextScan::Kept &EntryTextScan::keptOf(Document *document) {
    if (document != m_pDocument) {
        m_pDocument = document;
        m_pKept = &keptTexts(document);
    }
    return *m_pKept;
}

EntryTextScan::Result EntryTextScan::scan(Document *document, Node *node) {
    if (!document || !node || m_sNeedle.isEmpty()) {
        return No;
    }
    const bool folded = !m_bMatchCase;
    KeptText once;
    KeptText *kept = &once;
    if (m_bKeep) {
        kept = &keptOf(document).texts[node];
    } else if (m_pAhead) {
        const auto ahead = m_pAhead->texts.find(node);
        if (ahead != m_pAhead->texts.end()) {
            kept = &ahead->second;
        }
    }
    if (needsDecoding(*kept, node->Tag(), folded)) {
        decode(*kept, node->Tag(), folded);
    }
    const KeptText &t = *kept;
    if (t.narrow && !m_bNeedleFits) {
        return No;
    }
    const qsizetype size = t.narrow ? t.bytes.size() : t.wide.size();
    const qsizetype length = m_sNeedle.size();
    const auto at = [&](qsizetype i) -> char16_t {
        return t.narrow ? char16_t(uchar(t.bytes.at(i))) : t.wide.at(i).unicode();
    };
    qsizetype from = 0;
    while (from <= size - length) {
        const qsizetype found =
            t.narrow ? QByteArrayView(t.bytes).indexOf(QByteArrayView(m_baNeedle), from)
                     : QStringView(t.wide).indexOf(QStringView(m_sNeedle), from);
        if (found < 0) {
            return No;
        }
        if (!m_bWholeWord) {
            return Yes;
        }
        const qsizetype behind = found + length;
        if ((found == 0 || !isWordChar(at(found - 1))) &&
            (behind >= size || !isWordChar(at(behind)))) {
            return Yes;
        }
        if (t.loose) {
            return Maybe;
        }
        from = found + 1;
    }
    return No;
}

void EntryTextScan::prepare(Document *document, const std::vector<Node *> &nodes) {
    if (!document || m_sNeedle.isEmpty()) {
        return;
    }
    const bool folded = !m_bMatchCase;
    Kept *kept = nullptr;
    if (m_bKeep) {
        kept = &keptOf(document);
    } else {
        if (!m_pAhead) {
            m_pAhead = std::make_unique<Kept>();
        }
        m_pAhead->texts.clear();
        kept = m_pAhead.get();
    }
    std::vector<std::pair<KeptText *, QByteArray>> jobs;
    jobs.reserve(nodes.size());
    for (Node *node : nodes) {
        KeptText &t = kept->texts[node];
        if (needsDecoding(t, node->Tag(), folded)) {
            jobs.emplace_back(&t, node->Tag());
        }
    }
    decodeInParallel(jobs, folded);
}

void EntryTextScan::forget() {
    kept().clear();
}
