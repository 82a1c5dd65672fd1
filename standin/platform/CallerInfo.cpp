#include "standin/platform/CallerInfo.h"

#include "com/DispatchObject.h"

template <>
const com::DispatchTable& com::TableOf<standin::CallerInfo>() {
  using standin::CallerInfo;
  static const DispatchTable table(IID_NULL, {PropertyGet<&CallerInfo::CallerKey>(kNextId, L"CallerKey")});
  return table;
}
