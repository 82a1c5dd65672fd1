#include "standin/platform/GlobalObject.h"

#include "com/DispatchObject.h"
#include "standin/host/EventLog.h"
#include "standin/platform/DataContext.h"

namespace standin {

com::Object GlobalObject::GetDataContext() const {
  Event(EventKind::GetDataContext);
  return com::ToObject(com::Make<DataContext>());
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::GlobalObject>() {
  using standin::GlobalObject;
  static const DispatchTable table(IID_NULL,
                                   {Method<&GlobalObject::GetDataContext>(kNextId, L"GetDataContext")});
  return table;
}
