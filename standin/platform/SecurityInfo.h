// SecurityInfo: the security service of the shared base library (QorvaneWoskBase.SecurityInfo).
#pragma once

#include <cstdint>
#include <string>

namespace standin {

class SecurityInfo {
 public:
  // The id in a caller key. Throws run-time error 13 for a text that is no key.
  int32_t GetCurrentUserID(const std::wstring& callerKey) const;
};

} // namespace standin
