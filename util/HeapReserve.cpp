#include "util/HeapReserve.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

// Pieces below the largest size the allocator serves from its heap rather than by mapping.
constexpr qsizetype kPiece = qsizetype(16) << 20;
constexpr qsizetype kMost = qsizetype(1) << 30;
// The allocator's own defaults for giving back the top of the heap and for mapping a large
// block on its own.
constexpr int kTrimDefault = 128 * 1024;
constexpr int kMapDefault = 128 * 1024;

std::mutex g_busy;
int g_iHeld = 0;

} // namespace

HeapReserve::HeapReserve(qsizetype bytes, qsizetype ahead) {
    if (bytes < kPiece) {
        return;
    }
    bytes = qMin(bytes, kMost);
    const std::lock_guard<std::mutex> lock(g_busy);
    // Served from the heap, and kept by it once freed, so that the small allocations that follow
    // are carved out of the reserved room.
    if (mallopt(M_MMAP_THRESHOLD, int(2 * kPiece)) != 1 ||
        mallopt(M_TRIM_THRESHOLD, int(kMost)) != 1) {
        return;
    }
    m_bHeld = true;
    ++g_iHeld;
    const auto page = quintptr(sysconf(_SC_PAGESIZE));
    std::vector<void *> pieces;
    for (qsizetype done = 0; done < bytes; done += kPiece) {
        void *p = malloc(size_t(kPiece));
        if (!p) {
            break;
        }
        pieces.push_back(p);
#ifdef MADV_HUGEPAGE
        const auto begin = (quintptr(p) + page - 1) & ~(page - 1);
        const auto end = (quintptr(p) + quintptr(kPiece)) & ~(page - 1);
        (void)madvise(reinterpret_cast<void *>(begin), end - begin, MADV_HUGEPAGE);
#endif
    }
    for (auto it = pieces.rbegin(); it != pieces.rend(); ++it) {
        free(*it);
    }
    // The room is in the heap now; large blocks are mapped on their own again.
    mallopt(M_MMAP_THRESHOLD, kMapDefault);
#ifdef MADV_POPULATE_WRITE
    // The pages about to be used are made by another processor, ahead of the allocations that
    // need them, from the bottom of the room up.
    if (pieces.empty() || ahead <= 0 || std::thread::hardware_concurrency() < 2) {
        return;
    }
    // Only room the heap holds in one stretch, piece after piece, is made ready.
    qsizetype stretch = 1;
    while (stretch < qsizetype(pieces.size()) &&
           quintptr(pieces[stretch]) - quintptr(pieces[stretch - 1]) - quintptr(kPiece) < page) {
        ++stretch;
    }
    const auto begin = (quintptr(pieces.front()) + page - 1) & ~(page - 1);
    const auto end =
        begin + (quintptr(qMin(ahead, stretch * kPiece - qsizetype(page))) & ~(page - 1));
    try {
        m_populating = std::thread([this, begin, end] {
            constexpr quintptr kStep = quintptr(2) << 20;
            for (quintptr at = begin; at < end && !m_stop.load(std::memory_order_relaxed);
                 at += kStep) {
                (void)madvise(reinterpret_cast<void *>(at), qMin(kStep, end - at),
                              MADV_POPULATE_WRITE);
            }
        });
    } catch (const std::system_error &) {
        // Without a thread the pages are made as they are used.
    }
#endif
}

HeapReserve::~HeapReserve() {
    if (m_populating.joinable()) {
        m_stop = true;
        m_populating.join();
    }
    if (!m_bHeld) {
        return;
    }
    const std::lock_guard<std::mutex> lock(g_busy);
    if (--g_iHeld == 0) {
        mallopt(M_TRIM_THRESHOLD, kTrimDefault);
    }
}
