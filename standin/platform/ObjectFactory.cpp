#include "standin/platform/ObjectFactory.h"

#include "com/DispatchObject.h"
#include "standin/host/EventLog.h"

namespace standin {

using com::Object;
using com::Variant;

Object ObjectFactory::CreateServerObject(const std::wstring& progId, const Variant& /*server*/) const {
  Event(EventKind::CreateServerObject, progId);
  return Object::Create(progId.c_str());
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
