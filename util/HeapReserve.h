#pragma once

#include <QtGlobal>

// Building a large document makes hundreds of thousands of small allocations. Left alone, the
// heap grows a page at a time and every new page costs a fault. Reserve lets the heap grow once,
// ahead of them, by about the given size, backed by huge pages where the system has them; what is
// never used is never touched and takes no memory.
namespace HeapReserve {

void Reserve(qsizetype bytes);

} // namespace HeapReserve
