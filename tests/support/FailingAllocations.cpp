#include "tests/support/FailingAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace test {
namespace {

std::atomic<bool> g_armed{false};
std::atomic<bool> g_staysShort{false};
std::atomic<int64_t> g_left{0};

} // namespace

FailingAllocations::FailingAllocations(int64_t nth, Then then) {
  g_left = nth;
  g_staysShort = then == Then::StaysShort;
  g_armed = true;
}

FailingAllocations::~FailingAllocations() {
  g_armed = false;
}

bool FailingAllocations::HasFailed() const {
  return g_left <= 0;
}

bool FailingAllocations::Allow() {
  if (!g_armed) return true;
  const int64_t left = --g_left;
  return left > 0 || (left < 0 && !g_staysShort);
}

} // namespace test

void* operator new(std::size_t size) {
  void* const memory = test::FailingAllocations::Allow() ? std::malloc(size > 0 ? size : 1) : nullptr;
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return test::FailingAllocations::Allow() ? std::malloc(size > 0 ? size : 1) : nullptr;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
