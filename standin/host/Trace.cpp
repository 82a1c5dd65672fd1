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
  if (index < 1 || index > Count()) com::Raise(com::RuntimeError::SubscriptOutOfRange, L"ErpStandIn");
  return CurrentThread().events.events()[static_cast<size_t>(index) - 1];
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
