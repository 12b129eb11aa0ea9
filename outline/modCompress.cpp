#include "outline/modCompress.h"

#include "util/ErrorLog.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>

namespace modCompress {

namespace {
// zlib never expands by more than about 1032 to 1 (deflate's longest match per bit pair); a
// claimed length beyond that bound plus slack cannot be the text of these compressed bytes.
constexpr qint64 kMaxRatio = 1032;
constexpr qint64 kSlack = 64;

// One decompressor for each thread (the search decodes texts on several).
libdeflate_decompressor &decompressor() {
    thread_local const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor *)>
        d(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    if (!d) {
        throw std::bad_alloc();
    }
    return *d;
}
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
    QByteArray buffer(size, Qt::Uninitialized); // the decompressor writes what is kept
    size_t outLen = 0;
    const libdeflate_result result =
        libdeflate_zlib_decompress(&decompressor(), compressed.constData(),
                                   size_t(compressed.size()), buffer.data(), size_t(size), &outLen);
    if (result != LIBDEFLATE_SUCCESS) {
        // zlib's numbers: the stream is damaged, or it holds more than the room allowed.
        text.clear();
        return result == LIBDEFLATE_INSUFFICIENT_SPACE ? Z_BUF_ERROR : Z_DATA_ERROR;
    }
    buffer.truncate(qsizetype(std::min<size_t>(outLen, size_t(size))));
    text = buffer;
    return Z_OK;
}

} // namespace modCompress
