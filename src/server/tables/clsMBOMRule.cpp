#include "src/custbom/clsMBOMRule.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::clsMBOMRule>() {
  using mbom::clsMBOMRule;
  static const DispatchTable table(
      DIID__clsMBOMRule,
      {
          PropertyGet<&clsMBOMRule::TransMode>(1, L"TransMode"),
          Method<&clsMBOMRule::GetICItemParent>(2, L"GetICItemParent", {L"sDsn", L"s_ItemID"}),
          Method<&clsMBOMRule::GetRecordSet>(3, L"GetRecordSet", {L"sDsn", L"s_SQL"}),
      });
  return table;
}
