// Trace (ErpStandIn.Trace) and Faults (ErpStandIn.Faults): the calling thread's event log for clients.
#pragma once

#include <cstdint>
#include <string>

namespace standin {

class Trace {
 public:
  void Start();
  void Stop();
  void Clear();
  int32_t Count() const;
  std::wstring Item(int32_t index) const; // counted from 1; run-time error 9 when out of range
};

class Faults {
 public:
  void Fail(const std::wstring& kind, int32_t nth, int32_t hr, const std::wstring& description);
  void Clear();
};

} // namespace standin
