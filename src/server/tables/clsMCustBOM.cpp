#include "src/custbom/clsMCustBOM.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::clsMCustBOM>() {
  using mbom::clsMCustBOM;
  const auto optional = [](const wchar_t* name) { return Parameter(name, Variant::Missing()); };
  static const DispatchTable table(
      DIID__clsMCustBOM,
      {
          PropertyGet<&clsMCustBOM::TransMode>(1, L"TransMode"),
          Method<&clsMCustBOM::UpdateAuditFlag>(2, L"UpdateAuditFlag",
                                                {L"sDsn",
                                                 L"strCustBomInterID",
                                                 L"b_AuditFlag",
                                                 {L"strCurCustBomNo", L""},
                                                 optional(L"strMsg")}),
          Method<&clsMCustBOM::GetUsedCustBomNumber>(3, L"GetUsedCustBomNumber",
                                                     {L"sDsn", L"strCustBomInterID"}),
          Method<&clsMCustBOM::UpdateDisableStatus>(4, L"UpdateDisableStatus",
                                                    {L"sDsn", L"strCustBomInterID", L"b_Status"}),
          Method<&clsMCustBOM::CheckCustBOMIsAssisted>(
              5, L"CheckCustBOMIsAssisted", {L"sDsn", L"s_CustBOMNo", L"s_CurCustBOMNo", L"strMsg"}),
          Method<&clsMCustBOM::GenBomTreeDataSQL>(
              6, L"GenBomTreeDataSQL", {L"sDsn", L"sFilter", L"sFilter1", L"sOrder", L"sLookType"}),
          Method<&clsMCustBOM::GetTreeViewDataM>(7, L"GetTreeViewDataM",
                                                 {L"sDsn", optional(L"sFilter"), optional(L"sFilter1"),
                                                  optional(L"sOrder"), optional(L"sLookType")}),
          Method<&clsMCustBOM::GenRightTopDataSQL>(8, L"GenRightTopDataSQL",
                                                   {L"sDsn", L"sInterID", L"sBomType", optional(L"sFilter"),
                                                    optional(L"sFilter1"), optional(L"sOrder")}),
          Method<&clsMCustBOM::GetRightTopDataM>(9, L"GetRightTopDataM",
                                                 {L"sDsn", L"sInterID", L"sBomType", optional(L"sFilter"),
                                                  optional(L"sFilter1"), optional(L"sOrder")}),
          Method<&clsMCustBOM::GenRightBottomSQL>(
              10, L"GenRightBottomSQL",
              {L"sDsn", optional(L"sBomType"), {L"aType", 0}, optional(L"sFilter"), optional(L"sOrder")}),
          Method<&clsMCustBOM::GetRightBottomDataM>(
              11, L"GetRightBottomDataM",
              {L"sDsn", optional(L"sBomType"), {L"aType", 0}, optional(L"sFilter"), optional(L"sOrder")}),
          Method<&clsMCustBOM::bGetBillNoInfo>(
              12, L"bGetBillNoInfo",
              {L"sDsn", L"sPrefixion", L"sSuffix", L"sFormat", L"lCurNo", L"strLanguage"}),
          Method<&clsMCustBOM::GetBillNoNew>(13, L"GetBillNoNew",
                                             {L"sDsn",
                                              L"lBillTransType",
                                              {L"bMoreBill", false},
                                              {L"lBillNumber", 1},
                                              {L"bUpdate", true},
                                              optional(L"vDict")}),
          Method<&clsMCustBOM::CopyPasteCustBom>(14, L"CopyPasteCustBom",
                                                 {L"sDsn", L"strCustBOMID", L"strLanguage"}),
          Method<&clsMCustBOM::SetCustBOM>(
              15, L"SetCustBOM", {L"sDsn", L"strCustBomCode", L"strParentCustBomInterID", L"strItemID"}),
          Method<&clsMCustBOM::GetItemFNumber>(16, L"GetItemFNumber", {L"sDsn", L"strItemID"}),
          Method<&clsMCustBOM::GetBOMItems>(17, L"GetBOMItems"),
          Method<&clsMCustBOM::GetRecordSet>(18, L"GetRecordSet", {L"sDsn", L"s_SQL"}),
          Method<&clsMCustBOM::GetRuleByItem>(19, L"GetRuleByItem",
                                              {L"sDsn", L"strFItemID", L"strFItemGroupID", L"strRel"}),
          Method<&clsMCustBOM::GetTeZhenSubItems>(20, L"GetTeZhenSubItems", {L"sDsn", L"strTeZhenItemID"}),
      });
  return table;
}
