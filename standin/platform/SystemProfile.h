// SystemProfile: the system settings of the shared base library (QorvaneWoskBase.SystemProfile).
#pragma once

#include <string>

#include "com/Variant.h"

namespace standin {

class SystemProfile {
 public:
  // The setting's value; Null when there is no such setting.
  com::Variant GetProfile(const std::wstring& dsn, const std::wstring& category,
                          const std::wstring& key) const;
};

} // namespace standin
