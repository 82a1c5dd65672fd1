#include "standin/platform/ObjectFactory.h"

#include "com/DispatchObject.h"
#include "standin/host/EventLog.h"

namespace standin {

using com::Object;
using com::Variant;

Object ObjectFactory::CreateServerObject(const std::wstring& progId, const Variant& /*server*/) {
  Event(EventKind::CreateServerObject, progId);
  auto known = classes_.find(progId);
  if (known == classes_.end()) known = classes_.emplace(progId, com::ObjectClass(progId.c_str())).first;
  // A class of its own: another call may come in while a server in another process is waited for.
  const com::ObjectClass wanted = known->second;
  try {
    return wanted.Create();
  } catch (...) {
    // Its server may have gone: the next call looks for it again.
    classes_.erase(progId);
    throw;
  }
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::ObjectFactory>() {
  using standin::ObjectFactory;
  static const DispatchTable table(
      IID_NULL, {Method<&ObjectFactory::CreateServerObject>(kNextId, L"CreateServerObject",
                                                            {L"ProgID", {L"Server", Variant::Missing()}})});
  return table;
}
