// PendingError: keeps the thread's COM error object over a stretch of code.
//
// A service that is called from inside an error handler (a text look-up, a log entry) must leave the
// handler's error as it found it, whatever happens meanwhile.
#pragma once

#include <oleauto.h>

#include "com/Ptr.h"

namespace com {

class PendingError {
 public:
  PendingError() noexcept { GetErrorInfo(0, info_.Out()); }
  ~PendingError() { SetErrorInfo(0, info_.Get()); }
  PendingError(const PendingError&) = delete;
  PendingError& operator=(const PendingError&) = delete;

 private:
  Ptr<IErrorInfo> info_;
};

} // namespace com
