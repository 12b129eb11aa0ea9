#pragma once

#include <QtGlobal>

#include <atomic>
#include <thread>

// Building a large document makes hundreds of thousands of small allocations. Left alone, the
// heap grows a page at a time and every new page costs a fault. A reserve lets the heap grow once,
// ahead of them, by about the given size, backed by huge pages where the system has them. Only the
// part asked to be made ready ahead is touched at once (by another processor, while the caller
// goes on); the rest takes no memory until it is used. While the reserve stands, freed memory
// stays with the heap; afterwards the heap gives its unused top back to the system again.
class HeapReserve {
public:
    // `ahead`: how much of the room, from its bottom, is made ready at once.
    explicit HeapReserve(qsizetype bytes, qsizetype ahead = 0);
    ~HeapReserve();
    HeapReserve(const HeapReserve &) = delete;
    HeapReserve &operator=(const HeapReserve &) = delete;

private:
    bool m_bHeld = false;
    std::atomic<bool> m_stop{false};
    std::thread m_populating;
};
