#include "src/bom/CBomFunction.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::CBomFunction>() {
  using mbom::CBomFunction;
  static const DispatchTable table(
      DIID__CBomFunction,
      {
          PropertyGet<&CBomFunction::TransMode>(1, L"TransMode"),
          Method<&CBomFunction::GetMaxNum>(2, L"GetMaxNum", {L"strName"}),
          Method<&CBomFunction::GetBomCodeNum>(3, L"GetBomCodeNum", {L"sToParse", L"ErrInfo"}),
          Method<&CBomFunction::GetBomCodeNumEx>(4, L"GetBomCodeNumEx", {L"sDsn", {L"lItemId", 0}}),
          Method<&CBomFunction::UpdateBomNumber>(5, L"UpdateBomNumber",
                                                 {L"sToParse", L"FInterID", L"BomNumber", L"EffInfo"}),
          Method<&CBomFunction::CopyBom>(6, L"CopyBom", {L"sToParse", L"Bom"}),
          Method<&CBomFunction::GetRoutingData>(7, L"GetRoutingData",
                                                {L"sToParse", L"LongNumber", L"FInterID", L"ErrInfo"}),
          Method<&CBomFunction::UpdateBomRouting>(8, L"UpdateBomRouting", {L"sToParse", L"VectInfo"}),
          Method<&CBomFunction::UpdateBomGroup>(9, L"UpdateBomGroup",
                                                {L"sToParse", L"BomInterId", L"BomGroupID", L"FOperatorID"}),
          Method<&CBomFunction::UpdateBomGroupName>(10, L"UpdateBomGroupName",
                                                    {L"sToParse", L"FInterID", L"BomGroupName"}),
      });
  return table;
}
