#include "src/frame/globals/CurrentUser.h"

#include "src/frame/OutsideNames.h"
#include "src/frame/globals/ServerObject.h"

namespace mbom {

using com::Object;
using com::Variant;

int32_t GetCurrentUserId(const Frame& frame) {
  const Object security = CreateServerObject(outside::security::kProgId);
  const Object callerInfo = frame.context().Call(outside::context::kGetCallerInfo).AsObject();
  const Variant callerKey = callerInfo.Get(outside::callerInfo::kCallerKey);
  return security.Call(outside::security::kGetCurrentUserID, callerKey).AsLong();
}

} // namespace mbom
