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
          Method<&BomUpdate::AddBomGroup>(5, L"AddBomGroup", {L"sDsn", L"tDict", {L"NewGroupInterId", 0}}),
          Method<&BomUpdate::UpdateBomGroup>(6, L"UpdateBomGroup", {L"sDsn", L"tDict", L"sFilter"}),
          Method<&BomUpdate::DeleteBom>(7, L"DeleteBom", {L"sDsn", L"sFilter"}),
          Method<&BomUpdate::DeleteBomGroup>(8, L"DeleteBomGroup", {L"sDsn", L"sFilter"}),
          Method<&BomUpdate::UpdateBOM>(9, L"UpdateBOM", {L"sDsn", L"tVect", L"sFilter"}),
          Method<&BomUpdate::CheckBomUsed>(10, L"CheckBomUsed", {L"sDsn", L"FInterID", L"strInfo"}),
          Method<&BomUpdate::SetVisibelBySysProfile>(11, L"SetVisibelBySysProfile", {L"sDsn", L"sVal"}),
      });
  return table;
}
