#pragma once

#include <QByteArray>

// One-shot zlib compression of code-page byte strings, as entry texts are stored.
namespace modCompress {

// Compresses the source into an output buffer of n + n*0.01 + 12 bytes (rounded half to even) and
// returns the first output-length bytes of it, whatever the outcome. Returns zlib's code (0: ok).
qint32 CompressString(const QByteArray &source, QByteArray &compressed);

// Decompresses into a buffer sized for the expected length the same way. Returns zlib's code;
// a length that the compressed bytes cannot possibly hold is Z_DATA_ERROR without allocating.
qint32 DecompressString(const QByteArray &compressed, qint32 length, QByteArray &text);

// The buffer size for a text of n bytes: n + n*0.01 + 12, rounded to nearest, halves to even.
// More than 32-bit raises error 6 (Overflow).
qint32 BufferSize(qint64 n);

} // namespace modCompress
