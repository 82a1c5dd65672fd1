#include "src/bom/CBomCheck.h"
#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::CBomCheck>() {
  using mbom::CBomCheck;
  static const DispatchTable table(DIID__CBomCheck, {
                                                        PropertyGet<&CBomCheck::TransMode>(1, L"TransMode"),
                                                    });
  return table;
}
