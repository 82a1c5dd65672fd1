#include "src/bom/CBomFunction.h"
#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::CBomFunction>() {
  using mbom::CBomFunction;
  static const DispatchTable table(DIID__CBomFunction,
                                   {
                                       PropertyGet<&CBomFunction::TransMode>(1, L"TransMode"),
                                   });
  return table;
}
