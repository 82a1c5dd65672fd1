#include "src/custbom/clsMCustBOM.h"
#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::clsMCustBOM>() {
  using mbom::clsMCustBOM;
  static const DispatchTable table(DIID__clsMCustBOM,
                                   {
                                       PropertyGet<&clsMCustBOM::TransMode>(1, L"TransMode"),
                                   });
  return table;
}
