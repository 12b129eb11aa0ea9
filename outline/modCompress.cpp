#include "outline/modCompress.h"

#include "util/ErrorLog.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace modCompress {

namespace {
// zlib never expands by more than about 1032 to 1 (deflate's longest match per bit pair); a
// claimed length beyond that bound plus slack cannot be the text of these compressed bytes.
constexpr qint64 kMaxRatio = 1032;
constexpr qint64 kSlack = 64;
} // namespace

qint32 BufferSize(qint64 n) {
    const double size = std::nearbyint(double(n) + double(n) * 0.01 + 12.0); // ties to even
    if (size > double(std::numeric_limits<qint32>::max()) ||
        size < double(std::numeric_limits<qint32>::min())) {
        modMain::Raise(modMain::errOverflow);
    }
    return qint32(size);
}

qint32 CompressString(const QByteArray &source, QByteArray &compressed) {
    PROC("modCompress CompressString");
    const qint32 size = BufferSize(source.size());
    QByteArray buffer(size, Qt::Uninitialized); // zlib writes what is kept
    uLongf outLen = uLongf(size);
    const int rc =
        compress(reinterpret_cast<Bytef *>(buffer.data()), &outLen,
                 reinterpret_cast<const Bytef *>(source.constData()), uLong(source.size()));
    buffer.truncate(qsizetype(std::min<uLongf>(outLen, uLongf(size))));
    compressed = buffer;
    return rc;
}

qint32 DecompressString(const QByteArray &compressed, qint32 length, QByteArray &text) {
    PROC("modCompress DecompressString");
    if (length < 0) {
        modMain::Raise(modMain::errInvalidProcedureCall);
    }
    if (qint64(length) > qint64(compressed.size()) * kMaxRatio + kSlack) {
        text.clear();
        return Z_DATA_ERROR;
    }
    const qint32 size = BufferSize(length);
    QByteArray buffer(size, Qt::Uninitialized); // zlib writes what is kept
    uLongf outLen = uLongf(size);
    const int rc = uncompress(reinterpret_cast<Bytef *>(buffer.data()), &outLen,
                              reinterpret_cast<const Bytef *>(compressed.constData()),
                              uLong(compressed.size()));
    buffer.truncate(qsizetype(std::min<uLongf>(outLen, uLongf(size))));
    text = buffer;
    return rc;
}

} // namespace modCompress
