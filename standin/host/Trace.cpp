#include "standin/host/Trace.h"

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "standin/host/ThreadState.h"

namespace standin {

void Trace::Start() {
  CurrentThread().events.Start();
}

void Trace::Stop() {
  CurrentThread().events.Stop();
}

void Trace::Clear() {
  CurrentThread().events.Clear();
}

int32_t Trace::Count() const {
  return static_cast<int32_t>(CurrentThread().events.events().size());
}

std::wstring Trace::Item(int32_t index) const {
  if (index < 1 || index > Count()) com::RaiseRuntimeError(9, L"ErpStandIn", L"Subscript out of range");
  return CurrentThread().events.events()[static_cast<size_t>(index) - 1];
}

void Faults::Fail(const std::wstring& kind, int32_t nth, int32_t hr, const std::wstring& description) {
  CurrentThread().events.Arm(kind, nth, hr, description);
}

void Faults::Clear() {
  CurrentThread().events.Disarm();
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Trace>() {
  using standin::Trace;
  static const DispatchTable table(IID_NULL, {
                                                 Method<&Trace::Start>(kNextId, L"Start"),
                                                 Method<&Trace::Stop>(kNextId, L"Stop"),
                                                 Method<&Trace::Clear>(kNextId, L"Clear"),
                                                 PropertyGet<&Trace::Count>(kNextId, L"Count"),
                                                 PropertyGet<&Trace::Item>(DISPID_VALUE, L"Item", {L"Index"}),
                                             });
  return table;
}

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
