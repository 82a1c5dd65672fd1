#include "src/frame/globals/ServerObject.h"

#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"

namespace mbom {

using com::Variant;

com::Object CreateServerObject(const wchar_t* progId) {
  return ObjectFactory().Call(outside::factory::kCreateServerObject, progId, Variant::Missing()).AsObject();
}

} // namespace mbom
