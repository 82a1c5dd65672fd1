// FailingAllocations: memory that runs out, for test programs of their own: the source of this class replaces
// operator new in the whole program.
#pragma once

#include <cstdint>

namespace test {

class FailingAllocations {
 public:
  enum class Then : uint8_t { Recovers, StaysShort };

  // The nth allocation from now fails, counted from 1, and with StaysShort all that follow, while this object
  // lives. There is one at a time, for all threads.
  FailingAllocations(int64_t nth, Then then);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;

  // Whether an allocation has failed.
  bool HasFailed() const;

  // For an allocator: whether it may allocate this time.
  static bool Allow();
};

} // namespace test
