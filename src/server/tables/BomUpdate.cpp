#include "src/bom/BomUpdate.h"
#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::BomUpdate>() {
  using mbom::BomUpdate;
  static const DispatchTable table(
      DIID__BomUpdate,
      {
          PropertyGet<&BomUpdate::TransMode>(1, L"TransMode"),
          Method<&BomUpdate::BeginSave>(2, L"BeginSave", {L"sDsn", L"SaveVect", L"ReturnMsg"}),
          Method<&BomUpdate::EndSave>(3, L"EndSave", {L"sDsn", L"SaveVect", L"ReturnMsg"}),
          Method<&BomUpdate::UpdateIcBomStatus>(4, L"UpdateIcBomStatus", {L"sDsn", L"lBomNumber"}),
      });
  return table;
}
