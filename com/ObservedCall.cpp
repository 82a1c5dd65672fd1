#include "com/ObservedCall.h"

#include <windows.h>

#include <atomic>

namespace com {
namespace {

constinit std::atomic<const CallObserver*> g_observer{nullptr};
constinit thread_local ObservedCall* t_current = nullptr;

} // namespace

ObservedCall::ObservedCall(REFCLSID classId, const wchar_t* member) noexcept
    : classId_(classId), member_(member), outer_(t_current) {
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  start_ = now.QuadPart;
  t_current = this;
}

ObservedCall::~ObservedCall() {
  t_current = outer_;
}

const ObservedCall* ObservedCall::Current() noexcept {
  return t_current;
}

void ObserveCalls(const CallObserver* observer) noexcept {
  g_observer.store(observer);
}

const CallObserver* ObserverOfCalls() noexcept {
  return g_observer.load(std::memory_order_acquire);
}

} // namespace com
