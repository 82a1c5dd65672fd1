#include "standin/platform/SecurityInfo.h"

#include "com/ComError.h"
#include "com/DispatchObject.h"

namespace standin {

using com::Variant;

int32_t SecurityInfo::GetCurrentUserID(const std::wstring& callerKey) const {
  try {
    return Variant(callerKey).AsLong();
  } catch (const com::ComError&) {
    com::Raise(com::RuntimeError::TypeMismatch, L"QorvaneWoskBase", L"The caller key names no user.");
  }
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::SecurityInfo>() {
  using standin::SecurityInfo;
  static const DispatchTable table(
      IID_NULL, {Method<&SecurityInfo::GetCurrentUserID>(kNextId, L"GetCurrentUserID", {L"CallerKey"})});
  return table;
}
