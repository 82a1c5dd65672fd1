// Trace (ErpStandIn.Trace): the calling thread's event log for clients.
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

} // namespace standin
