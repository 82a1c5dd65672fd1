// Faults (ErpStandIn.Faults): the failures that clients arm in the calling thread's events.
#pragma once

#include <cstdint>
#include <string>

namespace standin {

class Faults {
 public:
  void Fail(const std::wstring& kind, int32_t nth, int32_t hr, const std::wstring& description);
  void Clear();
};

} // namespace standin
