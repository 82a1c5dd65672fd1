// The blocks in use in all heaps of the process: what C++ allocates is among them.
#pragma once

#include <windows.h>

namespace mbom::test {

inline long HeapBlocks() {
  HANDLE heaps[64];
  const DWORD count = GetProcessHeaps(64, heaps);
  long blocks = 0;
  for (DWORD i = 0; i < count && i < 64; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry))
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) ++blocks;
    HeapUnlock(heaps[i]);
  }
  return blocks;
}

} // namespace mbom::test
