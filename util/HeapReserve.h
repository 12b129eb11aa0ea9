#pragma once

#include <QtGlobal>

// Building a large document makes hundreds of thousands of small allocations. Left alone, the
// heap grows a page at a time and every new page costs a fault. A reserve lets the heap grow once,
// ahead of them, by about the given size, backed by huge pages where the system has them; what is
// never used is never touched and takes no memory. While the reserve stands, freed memory stays
// with the heap; afterwards the heap gives its unused top back to the system again.
class HeapReserve {
public:
    explicit HeapReserve(qsizetype bytes);
    ~HeapReserve();
    HeapReserve(const HeapReserve &) = delete;
    HeapReserve &operator=(const HeapReserve &) = delete;

private:
    bool m_bHeld = false;
};
