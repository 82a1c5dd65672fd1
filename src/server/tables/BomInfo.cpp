#include "src/bom/BomInfo.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::BomInfo>() {
  using mbom::BomInfo;
  static const DispatchTable table(
      DIID__BomInfo,
      {
          PropertyGet<&BomInfo::TransMode>(1, L"TransMode"),
          Method<&BomInfo::GetBomInfo>(2, L"GetBomInfo",
                                       {L"sDsn",
                                        {L"sFilter", Variant::Missing()},
                                        {L"sOrder", Variant::Missing()},
                                        {L"sTableName", Variant::Missing()}}),
          Method<&BomInfo::GetBomEntryInfo>(
              3, L"GetBomEntryInfo",
              {L"sDsn", {L"sFilter", Variant::Missing()}, {L"sOrder", Variant::Missing()}}),
          Method<&BomInfo::GetBomGroupInfo>(
              4, L"GetBomGroupInfo",
              {L"sDsn", {L"sFilter", Variant::Missing()}, {L"sOrder", Variant::Missing()}}),
          Method<&BomInfo::GetInfo>(5, L"GetInfo", {L"sDsn", L"strSql"}),
          Method<&BomInfo::GetItemForbitNumber>(6, L"GetItemForbitNumber", {L"sDsn", L"BomInterId"}),
          Method<&BomInfo::GetBomInfoByItemNumber>(7, L"GetBomInfoByItemNumber", {L"sDsn", L"sItemNumber"}),
          Method<&BomInfo::GetBomInfoByBomNumber>(8, L"GetBomInfoByBomNumber", {L"sDsn", L"sBomNumber"}),
          Method<&BomInfo::GetBomInfoByItemNumber1>(9, L"GetBomInfoByItemNumber1", {L"sDsn", L"sItemNumber"}),
          Method<&BomInfo::SelectBomInfoByItemNumber>(10, L"SelectBomInfoByItemNumber",
                                                      {L"sDsn", L"sItemNumber"}),
          Method<&BomInfo::GetBomInfoLikeInfo>(11, L"GetBomInfoLikeInfo", {L"sDsn", L"sValue"}),
          Method<&BomInfo::GetBomInfoByItemID>(12, L"GetBomInfoByItemID", {L"sDsn", L"sItemID"}),
          Method<&BomInfo::GetBomList>(13, L"GetBomList", {L"sDsn", L"sParentID"}),
          Method<&BomInfo::GetAllBomList>(14, L"GetAllBomList", {L"sDsn", L"sFilter"}),
          Method<&BomInfo::GetChildBomInfoByBomNo>(15, L"GetChildBomInfoByBomNo", {L"sDsn", L"sBomNo"}),
          Method<&BomInfo::GetChildBomInfoByItemID>(16, L"GetChildBomInfoByItemID", {L"sDsn", L"sItemID"}),
      });
  return table;
}
