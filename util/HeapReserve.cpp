#include "util/HeapReserve.h"

#include "util/MemoryPages.h"

#include <malloc.h>

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
    std::vector<char *> pieces;
    for (qsizetype done = 0; done < bytes; done += kPiece) {
        auto *p = static_cast<char *>(malloc(size_t(kPiece)));
        if (!p) {
            break;
        }
        pieces.push_back(p);
        MemoryPages::AskHuge(p, p + kPiece);
    }
    for (auto it = pieces.rbegin(); it != pieces.rend(); ++it) {
        free(*it);
    }
    // The room is in the heap now; large blocks are mapped on their own again.
    mallopt(M_MMAP_THRESHOLD, kMapDefault);
    // The pages about to be used are made by another processor, ahead of the allocations that
    // need them, from the bottom of the room up.
    if (pieces.empty() || ahead <= 0 || std::thread::hardware_concurrency() < 2) {
        return;
    }
    // Only room the heap holds in one stretch, piece after piece (apart from the allocator's
    // few bytes between them), is made ready.
    constexpr quintptr kGap = 4096;
    qsizetype stretch = 1;
    while (stretch < qsizetype(pieces.size()) &&
           quintptr(pieces[stretch]) - quintptr(pieces[stretch - 1]) - quintptr(kPiece) < kGap) {
        ++stretch;
    }
    char *const begin = pieces.front();
    char *const end = begin + qMin(ahead, stretch * kPiece);
    try {
        m_populating = std::thread([this, begin, end] {
            // In steps that end on 2 MB boundaries, so that no page is split between two.
            constexpr quintptr kStep = quintptr(2) << 20;
            for (char *at = begin; at < end && !m_stop.load(std::memory_order_relaxed);) {
                char *const next = qMin(end, at + (kStep - (quintptr(at) & (kStep - 1))));
                MemoryPages::Make(at, next);
                at = next;
            }
        });
    } catch (const std::system_error &) {
        // Without a thread the pages are made as they are used.
    }
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
