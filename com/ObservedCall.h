// ObservedCall: a late-bound call of an object of a public class, while somebody watches the module's calls.
//
// Nobody does as a rule, and then none of these is made.
#pragma once

#include <oaidl.h>

namespace com {

class ObservedCall {
 public:
  // `member` lives as long as the module.
  ObservedCall(REFCLSID classId, const wchar_t* member) noexcept;
  ~ObservedCall();
  ObservedCall(const ObservedCall&) = delete;
  ObservedCall& operator=(const ObservedCall&) = delete;

  const CLSID& classId() const noexcept { return classId_; }
  const wchar_t* member() const noexcept { return member_; }
  // Of QueryPerformanceCounter, when the call began.
  long long start() const noexcept { return start_; }

  // The innermost call of this thread; null outside.
  static const ObservedCall* Current() noexcept;

 private:
  CLSID classId_;
  const wchar_t* member_;
  long long start_;
  ObservedCall* outer_;
};

// Who watches. Both are called on the thread of the call, and throw nothing.
struct CallObserver {
  void (*begins)(const ObservedCall& call) noexcept;
  // With the call's answer, and its error where the caller gets one; null otherwise.
  void (*ends)(const ObservedCall& call, HRESULT answer, const EXCEPINFO* error) noexcept;
};

// Sets who watches; null for nobody. What it points to lives as long as the module.
void ObserveCalls(const CallObserver* observer) noexcept;
const CallObserver* ObserverOfCalls() noexcept;

} // namespace com
