#include "util/ByteChain.h"

#include <cstring>

void ByteChain::startBlock(qsizetype atLeast) {
    if (m_sink) {
        flush();
        if (!m_blocks.empty() && atLeast <= kBlock) {
            // The pieces are written: the block is free again.
            m_pFree = m_blocks.front().get();
            m_iRoom = kBlock;
            return;
        }
        m_blocks.clear();
    }
    const qsizetype size = qMax(atLeast, kBlock);
    m_blocks.push_back(std::make_unique_for_overwrite<char[]>(size_t(size)));
    m_pFree = m_blocks.back().get();
    m_iRoom = size;
}

ByteChain &ByteChain::append(QByteArrayView bytes) {
    const qsizetype n = bytes.size();
    if (n == 0) {
        return *this;
    }
    if (n > m_iRoom) {
        startBlock(n);
    }
    std::memcpy(m_pFree, bytes.data(), size_t(n));
    // Bytes that follow the last piece in memory lengthen it.
    if (!m_pieces.empty() && m_pieces.back().data() + m_pieces.back().size() == m_pFree) {
        m_pieces.back() = QByteArrayView(m_pieces.back().data(), m_pieces.back().size() + n);
    } else {
        m_pieces.emplace_back(m_pFree, n);
    }
    m_pFree += n;
    m_iRoom -= n;
    m_iSize += n;
    return *this;
}

ByteChain &ByteChain::appendKept(QByteArrayView bytes) {
    if (bytes.size() < kKeptFrom) {
        return append(bytes);
    }
    m_pieces.push_back(bytes);
    m_iSize += bytes.size();
    if (m_sink && m_pieces.size() >= kMaxPieces) {
        // Nothing of the block is referred to any more once written.
        flush();
        if (!m_blocks.empty()) {
            m_pFree = m_blocks.front().get();
            m_iRoom = kBlock;
        }
    }
    return *this;
}

void ByteChain::flush() {
    if (m_sink && !m_pieces.empty()) {
        m_sink(m_pieces);
        m_pieces.clear();
    }
}

QByteArray ByteChain::joined() const {
    QByteArray out(m_iSize, Qt::Uninitialized);
    char *at = out.data();
    for (const QByteArrayView piece : m_pieces) {
        std::memcpy(at, piece.data(), size_t(piece.size()));
        at += piece.size();
    }
    return out;
}
