#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <functional>
#include <memory>
#include <vector>

// A file's content as a run of byte pieces, written out without first being joined. Short pieces
// are copied into blocks of the chain's own; long pieces given with appendKept are only referred
// to, so they must stay unchanged and alive until the chain has been written.
//
// With a sink, the chain hands its pieces over whenever its block is full and starts again in the
// same block, so that a file of any size is written through a small, reused buffer.
class ByteChain {
public:
    using Sink = std::function<void(const std::vector<QByteArrayView> &)>;

    ByteChain() = default;
    explicit ByteChain(Sink sink) : m_sink(std::move(sink)) {}
    ByteChain(const ByteChain &) = delete;
    ByteChain &operator=(const ByteChain &) = delete;

    ByteChain &append(QByteArrayView bytes);
    ByteChain &append(char c) { return append(QByteArrayView(&c, 1)); }
    // Refers to the bytes where they are when they are long enough to be worth it.
    ByteChain &appendKept(QByteArrayView bytes);
    // Hands what is left to the sink.
    void flush();

    // All bytes appended so far, handed over or not.
    qsizetype size() const { return m_iSize; }
    // The pieces not yet handed over.
    const std::vector<QByteArrayView> &pieces() const { return m_pieces; }
    QByteArray joined() const;

private:
    static constexpr qsizetype kBlock = qsizetype(1) << 18;
    static constexpr qsizetype kKeptFrom = 512;
    static constexpr size_t kMaxPieces = 4096;
    void startBlock(qsizetype atLeast);

    Sink m_sink;
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char *m_pFree = nullptr; // the unused part of the last block
    qsizetype m_iRoom = 0;
    std::vector<QByteArrayView> m_pieces;
    qsizetype m_iSize = 0;
};
