#include "util/HeapReserve.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <mutex>
#include <vector>

namespace HeapReserve {

void Reserve(qsizetype bytes) {
    // Pieces below the largest size the allocator serves from its heap rather than by mapping.
    constexpr qsizetype kPiece = qsizetype(16) << 20;
    constexpr qsizetype kMost = qsizetype(1) << 30;
    if (bytes < kPiece) {
        return;
    }
    bytes = qMin(bytes, kMost);
    static std::mutex busy;
    const std::lock_guard<std::mutex> lock(busy);
    // Served from the heap, and kept by it once freed, so that the small allocations that follow
    // are carved out of the reserved room.
    static const bool tuned = [] {
        return mallopt(M_MMAP_THRESHOLD, int(2 * kPiece)) == 1 &&
               mallopt(M_TRIM_THRESHOLD, int(kMost)) == 1;
    }();
    if (!tuned) {
        return;
    }
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
}

} // namespace HeapReserve
