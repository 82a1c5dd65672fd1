#include "src/bom/BomInfo.h"
#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::BomInfo>() {
  using mbom::BomInfo;
  static const DispatchTable table(DIID__BomInfo, {
                                                      PropertyGet<&BomInfo::TransMode>(1, L"TransMode"),
                                                  });
  return table;
}
