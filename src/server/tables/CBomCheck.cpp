#include "src/bom/CBomCheck.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::CBomCheck>() {
  using mbom::CBomCheck;
  static const DispatchTable table(
      DIID__CBomCheck,
      {
          PropertyGet<&CBomCheck::TransMode>(1, L"TransMode"),
          Method<&CBomCheck::BomCheck>(2, L"BomCheck",
                                       {L"sDsn", L"lInterID", L"sBillNo", L"lEmpID", L"strMsg"}),
          Method<&CBomCheck::BomUndoCheck>(
              3, L"BomUndoCheck",
              {L"sDsn", L"lInterID", L"sBillNo", L"lEmpID", {L"lType", 0}, {L"strMsg", Variant::Missing()}}),
          Method<&CBomCheck::GetBomDelInfo>(4, L"GetBomDelInfo",
                                            {L"sDsn", L"lInterID", L"sBillNo", L"strMsg"}),
          Method<&CBomCheck::GetBomModifyInfo>(5, L"GetBomModifyInfo",
                                               {L"sDsn", L"lInterID", L"sBillNo", L"strMsg"}),
      });
  return table;
}
