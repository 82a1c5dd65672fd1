// The shared base library (QorvaneWoskBase): object factory, security, system settings.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"

namespace standin {

class ObjectFactory {
 public:
  // A new object of the class; the server is the local one, whichever is named.
  com::Object CreateServerObject(const std::wstring& progId, const com::Variant& server) const;
};

class SecurityInfo {
 public:
  // The id in a caller key. Throws run-time error 13 for a key that is none.
  int32_t GetCurrentUserID(const std::wstring& callerKey) const;
};

class SystemProfile {
 public:
  // The setting's value; Null when there is no such setting.
  com::Variant GetProfile(const std::wstring& dsn, const std::wstring& category,
                          const std::wstring& key) const;
};

} // namespace standin
