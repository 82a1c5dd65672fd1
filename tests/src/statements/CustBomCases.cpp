// The statements of clsMCustBOM and clsMBOMRule.
#include "tests/src/statements/Cases.h"

namespace mbom::test {
namespace {

// The customer BOM 3001 stands alone: no document uses it, and it is not built from another one.
constexpr wchar_t kFreeCustomerBom[] = L"DELETE FROM SEOrderEntry WHERE FBomInterID=3001 "
                                       L"DELETE FROM IcorderBatchTrace WHERE FCustBomId=3001";

StatementCases StatusCases() {
  return {
      {L"clsMCustBOM",
       L"UpdateAuditFlag",
       "audited",
       {L"3003", true},
       {"clsMCustBOM.UpdateAuditFlag.audit.upper", "clsMCustBOM.UpdateAuditFlag.now",
        "clsMCustBOM.UpdateAuditFlag.audit"},
       {.user = L"16402"}},
      {L"clsMCustBOM",
       L"UpdateAuditFlag",
       "taken back",
       {L"3001,3002", false},
       {"clsMCustBOM.UpdateAuditFlag.undo.used", "clsMCustBOM.UpdateAuditFlag.undo.upper",
        "clsMCustBOM.UpdateAuditFlag.now", "clsMCustBOM.UpdateAuditFlag.undo"},
       {.user = L"16402", .data = kFreeCustomerBom}},
      {L"clsMCustBOM",
       L"UpdateAuditFlag",
       "an audited customer BOM is built from it",
       {L"3002", false},
       {"clsMCustBOM.UpdateAuditFlag.used", "clsMCustBOM.UpdateAuditFlag.upper",
        "clsMCustBOM.UpdateAuditFlag.now"}},
      {L"clsMCustBOM",
       L"UpdateAuditFlag",
       "documents use it",
       {L"3001", false, L"3001"},
       {"Shared.CustomerBomInDocuments"}},
      {L"clsMCustBOM", L"GetUsedCustBomNumber", "", {L"3002,3003"}, {"clsMCustBOM.GetUsedCustBomNumber"}},
      {L"clsMCustBOM",
       L"UpdateDisableStatus",
       "disabled",
       {L"3001", true},
       {"clsMCustBOM.UpdateDisableStatus.built", "Shared.CustomerBomInDocuments",
        "clsMCustBOM.UpdateDisableStatus"},
       {.data = kFreeCustomerBom}},
      {L"clsMCustBOM",
       L"UpdateDisableStatus",
       "documents use it",
       {L"3001", true},
       {"clsMCustBOM.UpdateDisableStatus.built", "Shared.CustomerBomInDocuments"}},
      {L"clsMCustBOM",
       L"UpdateDisableStatus",
       "enabled",
       {L"3001,3003", false},
       {"clsMCustBOM.UpdateDisableStatus.enable"}},
      {L"clsMCustBOM",
       L"CheckCustBOMIsAssisted",
       "one BOM",
       {L"", L"3001", L""},
       {"Shared.CustomerBomInDocuments"}},
      {L"clsMCustBOM",
       L"CheckCustBOMIsAssisted",
       "a list",
       {L"1002,3001", L"", L""},
       {"clsMCustBOM.CheckCustBOMIsAssisted.list"}},
      {L"clsMCustBOM",
       L"CheckCustBOMIsAssisted",
       "a list in the place of one BOM",
       {L"", L"3001,3002", L""},
       {"clsMCustBOM.CheckCustBOMIsAssisted.listAsOne"}},
  };
}

StatementCases PanelCases() {
  const char* const numbers = "Shared.UseShortNumber";
  return {
      {L"clsMCustBOM",
       L"GenBomTreeDataSQL",
       "makes a command and does not send it",
       {L"", L"", L"", L""},
       {}},
      {L"clsMCustBOM",
       L"GetTreeViewDataM",
       "filtered",
       {L"FBOMNumber LIKE 'KH%'", L"FStatus = 1"},
       {numbers, "clsMCustBOM.GetTreeViewDataM\t@p_FItemIDFrom=-1\t@p_FItemIDTo=-1\t@p_FErpClsID=5"
                 "\t@p_Term=FBOMNumber LIKE 'KH%' AND FStatus = 1\t@p_BomBill=BOM单"}},
      {L"clsMCustBOM",
       L"GetTreeViewDataM",
       "for a change notice",
       {L"", L"", L"", L"ECNLOOKUP"},
       {numbers, "clsMCustBOM.GetTreeViewDataM\t@p_FItemIDFrom=-1\t@p_FItemIDTo=-1\t@p_FErpClsID=-1"
                 "\t@p_Term=\t@p_BomBill=BOM单"}},
      {L"clsMCustBOM",
       L"GenRightTopDataSQL",
       "makes a text and does not send it",
       {L"1002", L"0"},
       {numbers}},
      {L"clsMCustBOM", L"GetRightTopDataM", "", {L"1002", L"0"}, {numbers, "clsMCustBOM.GetRightTopDataM"}},
      {L"clsMCustBOM",
       L"GetRightTopDataM",
       "one BOM, short numbers",
       {L"1002", L"0", L"FInterID=1002"},
       {numbers, "clsMCustBOM.GetRightTopDataM.one.shortNumber"},
       {.data = kShortNumbers}},
      {L"clsMCustBOM",
       L"GetRightTopDataM",
       "the BOMs of a node, sorted",
       {L"3001,3002", L"-1", L"FInterID>0", L"", L"FBOMNumber DESC"},
       {numbers, "clsMCustBOM.GetRightTopDataM.node"}},
      {L"clsMCustBOM",
       L"GetRightTopDataM",
       "the BOMs of the root, sorted",
       {L"3001,3002", L"-99", L"FInterID>0", L"", L"FBOMNumber DESC"},
       {numbers, "clsMCustBOM.GetRightTopDataM.node"}},
      {L"clsMCustBOM", L"GenRightBottomSQL", "makes a text and does not send it", {L"0"}, {numbers}},
      {L"clsMCustBOM",
       L"GetRightBottomDataM",
       "of an ordinary BOM",
       {L"0", 0, L"FInterID=1002", L"FEntryID"},
       {numbers, "clsMCustBOM.GetRightBottomDataM"}},
      {L"clsMCustBOM",
       L"GetRightBottomDataM",
       "of a customer BOM",
       {L"3", 0, L"FInterID=3001", L"FEntryID"},
       {numbers, "clsMCustBOM.GetRightBottomDataM.customer"}},
      {L"clsMCustBOM",
       L"GetRightBottomDataM",
       "every line, short numbers",
       {L"0"},
       {numbers, "clsMCustBOM.GetRightBottomDataM.all.shortNumber"},
       {.data = kShortNumbers}},
  };
}

StatementCases NumberCases() {
  return {
      {L"clsMCustBOM", L"bGetBillNoInfo", "", {L"", L"", L"", 0, L"chs"}, {"clsMCustBOM.bGetBillNoInfo"}},
      {L"clsMCustBOM", L"GetBillNoNew", "the rules are asked", {53}, {}},
      {L"clsMCustBOM",
       L"CopyPasteCustBom",
       "",
       {L"3001", L"chs"},
       {"Shared.BomCounter", "clsMCustBOM.CopyPasteCustBom"}},
      {L"clsMCustBOM", L"SetCustBOM", "", {L"3003", L"3001", L"202"}, {"clsMCustBOM.SetCustBOM"}},
      {L"clsMCustBOM", L"GetItemFNumber", "", {L"201"}, {"clsMCustBOM.GetItemFNumber"}},
      {L"clsMCustBOM", L"GetBOMItems", "does nothing", {}, {}, {.descriptor = false}},
  };
}

StatementCases RuleCases() {
  return {
      {L"clsMCustBOM", L"GetRecordSet", "", {kCallersStatement}, {"Shared.CallersStatement"}},
      {L"clsMCustBOM", L"GetRuleByItem", "every rule", {L"", L"", L""}, {"clsMCustBOM.GetRuleByItem.all"}},
      {L"clsMCustBOM",
       L"GetRuleByItem",
       "of items",
       {L"502,503", L"", L""},
       {"clsMCustBOM.GetRuleByItem.items"}},
      {L"clsMCustBOM",
       L"GetRuleByItem",
       "relations of items",
       {L"502,503", L"", L"REL"},
       {"clsMCustBOM.GetRuleByItem.related"}},
      {L"clsMCustBOM",
       L"GetRuleByItem",
       "exclusions of items in a group",
       {L"502,503", L"13", L"MUT"},
       {"clsMCustBOM.GetRuleByItem.group"}},
      {L"clsMCustBOM",
       L"GetRuleByItem",
       "relations of no item",
       {L"", L"", L"REL"},
       {"clsMCustBOM.GetRuleByItem.noItems"}},
      {L"clsMCustBOM", L"GetTeZhenSubItems", "", {L"501"}, {"clsMCustBOM.GetTeZhenSubItems"}},
      {L"clsMBOMRule", L"GetICItemParent", "", {L"301"}, {"clsMBOMRule.GetICItemParent"}},
      {L"clsMBOMRule", L"GetRecordSet", "", {kCallersStatement}, {"Shared.CallersStatement"}},
  };
}

} // namespace

StatementCases CustBomCases() {
  StatementCases all;
  for (const StatementCases& cases : {StatusCases(), PanelCases(), NumberCases(), RuleCases()})
    all.insert(all.end(), cases.begin(), cases.end());
  return all;
}

} // namespace mbom::test
