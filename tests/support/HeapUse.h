// What the process has allocated from all its heaps: what C++ allocates is among it.
#pragma once

#include <windows.h>

#include <bit>
#include <stdexcept>
#include <vector>

namespace com::test {

struct HeapUse {
  size_t blocks = 0;
  size_t bytes = 0;

  // Throws std::runtime_error where Wine cannot walk a heap to its end: when two regions of a heap lie side
  // by side, it takes the end of the first for the beginning of the second and gives the same entries for
  // ever.
  static HeapUse Now() {
    HeapUse use;
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    for (HANDLE heap : heaps) use.Add(heap);
    return use;
  }

 private:
  void Add(HANDLE heap) {
    PROCESS_HEAP_ENTRY entry{};
    // A walk in circles comes back to an entry that is remembered at each power of two of the steps.
    PROCESS_HEAP_ENTRY remembered{};
    bool walksInCircles = false;
    HeapLock(heap);
    for (size_t step = 1; !walksInCircles && HeapWalk(heap, &entry); ++step) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
        ++blocks;
        bytes += entry.cbData;
      }
      walksInCircles = entry.lpData == remembered.lpData && entry.wFlags == remembered.wFlags;
      if (std::has_single_bit(step)) remembered = entry;
    }
    HeapUnlock(heap);
    if (walksInCircles) throw std::runtime_error("a heap cannot be walked to its end here");
  }
};

} // namespace com::test
