#include "src/ecn/CEcnInfo.h"
#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::CEcnInfo>() {
  using mbom::CEcnInfo;
  static const DispatchTable table(DIID__CEcnInfo, {
                                                       PropertyGet<&CEcnInfo::TransMode>(1, L"TransMode"),
                                                   });
  return table;
}
