#include "util/HeapReserve.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <mutex>
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

HeapReserve::HeapReserve(qsizetype bytes) {
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
}

HeapReserve::~HeapReserve() {
    if (!m_bHeld) {
        return;
    }
    const std::lock_guard<std::mutex> lock(g_busy);
    if (--g_iHeld == 0) {
        mallopt(M_TRIM_THRESHOLD, kTrimDefault);
    }
}
