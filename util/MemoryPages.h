#pragma once

// Hints to the system about how a range of memory is backed. Only the whole pages inside the
// range are concerned; a system without the hint ignores it.
namespace MemoryPages {

// Backs the range with huge pages where the system has them. Changing how a mapping is backed
// waits for every fault in progress on it to end: ask before the pages are made.
void AskHuge(char *begin, char *end);
// Makes the range's pages now rather than at their first use.
void Make(char *begin, char *end);

} // namespace MemoryPages
