#include "standin/host/Host.h"

#include "com/DispatchObject.h"
#include "standin/host/HostedObject.h"

namespace standin {

com::Object Host::CreateObject(const std::wstring& progId) const {
  return MakeHosted(com::Object::Create(progId.c_str()));
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Host>() {
  using standin::Host;
  static const DispatchTable table(IID_NULL,
                                   {Method<&Host::CreateObject>(kNextId, L"CreateObject", {L"ProgID"})});
  return table;
}
