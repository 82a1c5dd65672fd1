#include "standin/host/Faults.h"

#include "com/DispatchObject.h"
#include "standin/host/ThreadState.h"

namespace standin {

void Faults::Fail(const std::wstring& kind, int32_t nth, int32_t hr, const std::wstring& description) {
  CurrentThread().events.Arm(kind, nth, hr, description);
}

void Faults::Clear() {
  CurrentThread().events.Disarm();
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Faults>() {
  using standin::Faults;
  static const DispatchTable table(
      IID_NULL, {
                    Method<&Faults::Fail>(kNextId, L"Fail", {L"Kind", L"Nth", L"HResult", L"Description"}),
                    Method<&Faults::Clear>(kNextId, L"Clear"),
                });
  return table;
}
