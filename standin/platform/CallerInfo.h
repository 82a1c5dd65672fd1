// CallerInfo: who called, as a data context tells it.
#pragma once

#include <string>

namespace standin {

class CallerInfo {
 public:
  explicit CallerInfo(std::wstring callerKey) : callerKey_(std::move(callerKey)) {}
  // The current user's id as text.
  std::wstring CallerKey() const { return callerKey_; }

 private:
  std::wstring callerKey_;
};

} // namespace standin
