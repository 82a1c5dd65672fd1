// What the compiler's stack protector asks for: the value that it puts behind arrays on the stack, and the
// end of a process in which an array was written over its end.
//
// The compiler's own library would take the value from a cryptography provider, which loads further DLLs
// while this one is being loaded. The value here is made of what differs from process to process and from
// load to load, as Windows' own compilers make theirs.
#include <windows.h>

#include <cstdint>

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the compiler's names
uintptr_t __stack_chk_guard = 0;

[[noreturn]] void __stack_chk_fail() {
  // What is on the stack cannot be trusted, so nobody is asked: FAST_FAIL_STACK_COOKIE_CHECK_FAILURE.
  asm volatile("int $0x29" : : "c"(2));
  __builtin_unreachable();
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

// Before all other static objects, and itself without a guard: it changes the value.
[[gnu::constructor(101), gnu::no_stack_protector, gnu::noinline]] void TakeGuard() {
  LARGE_INTEGER counter{};
  FILETIME time{};
  QueryPerformanceCounter(&counter);
  GetSystemTimeAsFileTime(&time);
  uint64_t value = static_cast<uint64_t>(counter.QuadPart) ^ (uint64_t{time.dwHighDateTime} << 32U) ^
                   time.dwLowDateTime ^ (uint64_t{GetCurrentProcessId()} << 32U) ^ GetCurrentThreadId() ^
                   reinterpret_cast<uintptr_t>(&counter) ^ reinterpret_cast<uintptr_t>(&TakeGuard);
  // Each bit depends on all of them.
  value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
  value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
  value ^= value >> 31U;
  // A zero in its first byte, which no overlong text writes.
  __stack_chk_guard = static_cast<uintptr_t>(value) & ~uintptr_t{0xFF};
}

} // namespace
