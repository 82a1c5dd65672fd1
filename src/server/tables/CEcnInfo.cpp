#include "src/ecn/CEcnInfo.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::CEcnInfo>() {
  using mbom::CEcnInfo;
  static const DispatchTable table(
      DIID__CEcnInfo,
      {
          PropertyGet<&CEcnInfo::TransMode>(1, L"TransMode"),
          Method<&CEcnInfo::BeginSave>(2, L"BeginSave", {L"sDsn", L"SaveVect", L"ReturnMsg"}),
          Method<&CEcnInfo::EndSave>(3, L"EndSave", {L"sDsn", L"SaveVect", L"ReturnMsg"}),
          Method<&CEcnInfo::CheckECN>(4, L"CheckECN", {L"sDsn", L"lEcnInterID"}),
          Method<&CEcnInfo::GetThenCheckCBomNumber>(5, L"GetThenCheckCBomNumber", {L"sDsn", L"BomNumber"}),
          Method<&CEcnInfo::GetCheckCBomNoChecked>(6, L"GetCheckCBomNoChecked", {L"sDsn", L"BomInterId"}),
          Method<&CEcnInfo::ReturnEcnStatus>(7, L"ReturnEcnStatus", {L"sDsn", L"EcnInterId"}),
          Method<&CEcnInfo::ReturnEcnStatusByNumber>(8, L"ReturnEcnStatusByNumber", {L"sDsn", L"EcnNumber"}),
          Method<&CEcnInfo::CheckBomUsed>(9, L"CheckBomUsed",
                                          {L"sDsn", L"EcnInterId", L"BomNumber", L"strInfo"}),
          Method<&CEcnInfo::CheckEcnBom>(10, L"CheckEcnBom", {L"sDsn", L"FBomInterID"}),
          Method<&CEcnInfo::StarUpEcn>(11, L"StarUpEcn", {L"sDsn", L"BomInterId", L"EcnInterId", L"UserID"}),
          Method<&CEcnInfo::UnStarUpEcn>(12, L"UnStarUpEcn", {L"sDsn", L"EcnInterId"}),
          Method<&CEcnInfo::GetEcnBomHead>(13, L"GetEcnBomHead", {L"sDsn", L"lBomInterID"}),
          Method<&CEcnInfo::GetEcnBomEntry>(14, L"GetEcnBomEntry",
                                            {L"sDsn", L"lBomInterID", {L"FilterEntryID", L""}}),
          Method<&CEcnInfo::AnalyseBomNumber>(15, L"AnalyseBomNumber", {L"sDsn", L"SQL"}),
      });
  return table;
}
