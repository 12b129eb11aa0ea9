#include "util/MemoryPages.h"

#include <QtGlobal>

#include <sys/mman.h>
#include <unistd.h>

namespace MemoryPages {
namespace {

void advise(char *begin, char *end, [[maybe_unused]] int advice) {
    const auto page = quintptr(sysconf(_SC_PAGESIZE));
    const auto first = (quintptr(begin) + page - 1) & ~(page - 1);
    const auto last = quintptr(end) & ~(page - 1);
    if (last > first) {
        (void)madvise(reinterpret_cast<void *>(first), last - first, advice);
    }
}

} // namespace

void AskHuge([[maybe_unused]] char *begin, [[maybe_unused]] char *end) {
#ifdef MADV_HUGEPAGE
    advise(begin, end, MADV_HUGEPAGE);
#endif
}

void Make([[maybe_unused]] char *begin, [[maybe_unused]] char *end) {
#ifdef MADV_POPULATE_WRITE
    advise(begin, end, MADV_POPULATE_WRITE);
#endif
}

} // namespace MemoryPages
