// The statements of BomInfo, BomUpdate, CBomCheck and CBomFunction.
#include "tests/src/statements/Cases.h"
#include "tests/support/Client.h"

namespace mbom::test {
namespace {

com::Object SavedBom(int32_t interId) {
  return MakeVector({MakeDictionary({{L"FInterID", interId}, {L"FTransType", 50}})});
}

com::Object SavedCustomerBom(int32_t interId, int32_t parent) {
  return MakeVector({MakeDictionary({{L"FInterID", interId},
                                     {L"FTransType", 53},
                                     {L"StateParm", MakeDictionary({{L"FParentID", parent}})}})});
}

com::Object Group(const wchar_t* number, const wchar_t* name, int32_t parent) {
  return MakeDictionary({{L"FNumber", number}, {L"FName", name}, {L"FParentID", parent}});
}

com::Object Field(const wchar_t* name, const wchar_t* value) {
  return MakeDictionary({{L"FFieldID", name}, {L"FValue", value}});
}

StatementCases InfoCases() {
  return {
      {L"BomInfo", L"GetBomInfo", "", {}, {"BomInfo.GetBomInfo"}},
      {L"BomInfo",
       L"GetBomInfo",
       "of another table",
       {L"FErpClsID IN (2,6) AND FName LIKE '%轮%'", L"FNumber DESC", L"t_ICItem"},
       {"BomInfo.GetBomInfo.table"}},
      {L"BomInfo", L"GetBomEntryInfo", "", {L"FInterID=1002", L"FEntryID"}, {"BomInfo.GetBomEntryInfo"}},
      {L"BomInfo", L"GetBomGroupInfo", "", {L"", L"FNumber"}, {"BomInfo.GetBomGroupInfo"}},
      {L"BomInfo", L"GetInfo", "", {kCallersStatement}, {"Shared.CallersStatement"}},
      {L"BomInfo", L"GetItemForbitNumber", "", {1001}, {"BomInfo.GetItemForbitNumber"}},
      {L"BomInfo", L"GetBomInfoByItemNumber", "", {L"01.001"}, {"BomInfo.GetBomInfoByItemNumber"}},
      {L"BomInfo", L"GetBomInfoByBomNumber", "", {L"BOM000002"}, {"BomInfo.GetBomInfoByBomNumber"}},
      {L"BomInfo", L"GetBomInfoByItemNumber1", "", {L"CSZXC"}, {"BomInfo.GetBomInfoByItemNumber1"}},
      {L"BomInfo", L"SelectBomInfoByItemNumber", "", {L"101"}, {"BomInfo.SelectBomInfoByItemNumber"}},
      {L"BomInfo", L"GetBomInfoLikeInfo", "", {L"02"}, {"BomInfo.GetBomInfoLikeInfo"}},
      {L"BomInfo", L"GetBomInfoByItemID", "", {L"203"}, {"BomInfo.GetBomInfoByItemID"}},
      {L"BomInfo", L"GetBomList", "", {L"2"}, {"BomInfo.GetBomList"}},
      {L"BomInfo", L"GetAllBomList", "of one item", {L"02.003"}, {"BomInfo.GetAllBomList"}},
      {L"BomInfo", L"GetAllBomList", "of all items", {L""}, {"BomInfo.GetAllBomList.all"}},
      {L"BomInfo", L"GetChildBomInfoByBomNo", "", {L"BOM000005"}, {"BomInfo.GetChildBomInfoByBomNo"}},
      {L"BomInfo", L"GetChildBomInfoByItemID", "", {L"203"}, {"BomInfo.GetChildBomInfoByItemID"}},
  };
}

StatementCases UpdateCases() {
  return {
      {L"BomUpdate",
       L"BeginSave",
       "the BOM gets into use",
       {MakeVector({MakeDictionary({{L"FInterID", 1001}}),
                    MakeDictionary({{L"UseStatusChange", true}, {L"FItemID", 101}})}),
        L""},
       {"BomUpdate.BeginSave"}},
      {L"BomUpdate",
       L"BeginSave",
       "the use stays",
       {MakeVector({MakeDictionary({{L"FInterID", 1001}}),
                    MakeDictionary({{L"UseStatusChange", false}, {L"FItemID", 101}})}),
        L""},
       {}},
      {L"BomUpdate",
       L"EndSave",
       "",
       {SavedBom(1005), L""},
       {"BomUpdate.EndSave.read", "BomUpdate.EndSave.stamp", "BomUpdate.EndSave.quantity",
        "BomUpdate.EndSave.validity"}},
      {L"BomUpdate",
       L"EndSave",
       "a planning BOM",
       {SavedBom(2002), L""},
       {"BomUpdate.EndSave.planning.read", "BomUpdate.EndSave.planning.stamp",
        "BomUpdate.EndSave.planning.quantity", "BomUpdate.EndSave.planning.validity"}},
      {L"BomUpdate",
       L"EndSave",
       "a customer BOM",
       {SavedCustomerBom(3001, 2001), L""},
       {"BomUpdate.EndSave.customer.read", "BomUpdate.EndSave.customer.stamp",
        "BomUpdate.EndSave.customer.quantity", "BomUpdate.EndSave.customer.validity"}},
      {L"BomUpdate", L"UpdateIcBomStatus", "", {L"BOM000003"}, {"BomUpdate.UpdateIcBomStatus"}},
      {L"BomUpdate",
       L"UpdateIcBomStatus",
       "a quote in the number",
       {L"BOM'3"},
       {"BomUpdate.UpdateIcBomStatus.quote"}},
      {L"BomUpdate",
       L"AddBomGroup",
       "at the top",
       {Group(L"04", L"备件 Spare parts", 0)},
       {"BomUpdate.AddBomGroup.top"}},
      {L"BomUpdate",
       L"AddBomGroup",
       "in a group",
       {Group(L"01.02.02", L"儿童车 Children", 3)},
       {"BomUpdate.AddBomGroup.child"}},
      {L"BomUpdate",
       L"AddBomGroup",
       "a quote in the name",
       {Group(L"05", L"it's", 0)},
       {"BomUpdate.AddBomGroup.quote"}},
      {L"BomUpdate",
       L"UpdateBomGroup",
       "",
       {Group(L"01.03", L"城市车 City", 1), L"FInterID=2"},
       {"BomUpdate.UpdateBomGroup"}},
      {L"BomUpdate",
       L"UpdateBomGroup",
       "nothing to update",
       {MakeDictionary({}), L"FInterID=2"},
       {"BomUpdate.UpdateBomGroup.none"}},
      {L"BomUpdate",
       L"UpdateBomGroup",
       "one field of all groups",
       {MakeDictionary({{L"FName", L"组 Group"}}), L""},
       {"BomUpdate.UpdateBomGroup.all"}},
      {L"BomUpdate", L"DeleteBom", "", {L"FInterID=1001"}, {"BomUpdate.DeleteBom"}},
      {L"BomUpdate",
       L"DeleteBom",
       "one of them is audited",
       {L"FInterID IN (1001,1002)"},
       {"BomUpdate.DeleteBom.audited"}},
      {L"BomUpdate", L"DeleteBom", "without a filter", {L""}, {"BomUpdate.DeleteBom.noFilter"}},
      {L"BomUpdate", L"DeleteBomGroup", "", {L"FInterID=7"}, {"BomUpdate.DeleteBomGroup"}},
      {L"BomUpdate", L"DeleteBomGroup", "all groups", {L""}, {"BomUpdate.DeleteBomGroup.all"}},
      {L"BomUpdate",
       L"UpdateBOM",
       "",
       {MakeVector({Field(L"FVersion", L"'2.1'"), Field(L"FNote", L"N'改 Changed'")}), L"FInterID=1002"},
       {"BomUpdate.UpdateBOM"}},
      {L"BomUpdate",
       L"UpdateBOM",
       "one field of all BOMs",
       {MakeVector({Field(L"FCancellation", L"0")}), L""},
       {"BomUpdate.UpdateBOM.all"}},
      {L"BomUpdate", L"CheckBomUsed", "", {1002, L""}, {"BomUpdate.CheckBomUsed"}},
      {L"BomUpdate", L"SetVisibelBySysProfile", "", {L"0"}, {"BomUpdate.SetVisibelBySysProfile"}},
  };
}

StatementCases CheckCases() {
  const char* const singleMan = "Shared.SystemProfile\t=General\t=SingleMan";
  const char* const sameUser = "Shared.SystemProfile\t=IC\t=SameUserApprovalAndUnApproval";
  return {
      {L"CBomCheck",
       L"BomCheck",
       "",
       {1005, L"BOM000005", 16402, L""},
       {"CBomCheck.BomCheck.read", "CBomCheck.BomCheck.audit"}},
      {L"CBomCheck",
       L"BomCheck",
       "by the maker",
       {1005, L"BOM000005", 16401, L""},
       {"CBomCheck.BomCheck.read", singleMan}},
      {L"CBomCheck",
       L"BomUndoCheck",
       "whatever uses it",
       {1006, L"BOM000006", 16402, 1, L""},
       {"CBomCheck.BomUndoCheck.read", sameUser, "CBomCheck.BomUndoCheck.undo"}},
      {L"CBomCheck",
       L"BomUndoCheck",
       "by the maker",
       {1006, L"BOM000006", 16401, 1, L""},
       {"CBomCheck.BomUndoCheck.read", sameUser, singleMan},
       {.data = L"UPDATE t_SystemProfile SET FValue='0' WHERE FKey='SameUserApprovalAndUnApproval'"}},
      {L"CBomCheck",
       L"BomUndoCheck",
       "documents use it",
       {1002, L"BOM000002", 16402, 0, L""},
       {"CBomCheck.BomUndoCheck.used.read", sameUser, "Shared.BomUsed"}},
      {L"CBomCheck",
       L"GetBomDelInfo",
       "documents use the customer BOM",
       {3001, L"KH0001", L""},
       {"CBomCheck.GetBomDelInfo.customer", "Shared.CustomerBomUsed"}},
      {L"CBomCheck",
       L"GetBomDelInfo",
       "customer BOMs were made from it",
       {2001, L"CFG000001", L""},
       {"CBomCheck.GetBomDelInfo.configuration", "CBomCheck.GetBomDelInfo.used",
        "CBomCheck.GetBomDelInfo.children"}},
      {L"CBomCheck",
       L"GetBomModifyInfo",
       "documents use the customer BOM",
       {3001, L"KH0001", L""},
       {"CBomCheck.GetBomModifyInfo.customer", "Shared.CustomerBomUsed"}},
      {L"CBomCheck",
       L"GetBomModifyInfo",
       "documents use the BOM",
       {1002, L"BOM000002", L""},
       {"CBomCheck.GetBomModifyInfo.ordinary", "Shared.BomUsed"}},
  };
}

StatementCases FunctionCases() {
  const char* const nextBom = "Shared.GetICMaxNum\t@TableName=ICBOM";
  return {
      {L"CBomFunction", L"GetMaxNum", "", {L"ICBOM"}, {nextBom}, {.descriptor = false, .bound = true}},
      {L"CBomFunction",
       L"GetBomCodeNum",
       "the first number is taken",
       {L"BOM00000"},
       {"CBomFunction.GetBomCodeNum.rule", "CBomFunction.GetBomCodeNum.taken",
        "CBomFunction.GetBomCodeNum.free", "CBomFunction.GetBomCodeNum.raise"},
       {.data = L"UPDATE ICBillNo SET FCurNo=9 WHERE FBillID=50"}},
      {L"CBomFunction", L"GetBomCodeNumEx", "the rules are asked", {101}, {}},
      {L"CBomFunction",
       L"UpdateBomNumber",
       "",
       {1009, L"BOM000099", L""},
       {"CBomFunction.UpdateBomNumber.check", "CBomFunction.UpdateBomNumber"}},
      {L"CBomFunction",
       L"UpdateBomNumber",
       "another BOM has the number",
       {1009, L"BOM000002", L""},
       {"CBomFunction.UpdateBomNumber.taken.check", "CBomFunction.UpdateBomNumber.taken"}},
      {L"CBomFunction",
       L"CopyBom",
       "",
       {MakeDictionary({{L"FInterID", 1002},
                        {L"FBOMNumber", L"BOM000012"},
                        {L"FParentID", 3},
                        {L"FCheckID", 16403},
                        {L"FOperatorID", 16403}})},
       {nextBom, "CBomFunction.CopyBom.head", "CBomFunction.CopyBom.headAll", "CBomFunction.CopyBom.line",
        "CBomFunction.CopyBom.lineAll", "CBomFunction.CopyBom"}},
      {L"CBomFunction", L"GetRoutingData", "of all BOMs", {true, -1, L""}, {"CBomFunction.GetRoutingData"}},
      {L"CBomFunction",
       L"GetRoutingData",
       "of one BOM",
       {true, 1009, L""},
       {"CBomFunction.GetRoutingData.one"}},
      {L"CBomFunction",
       L"UpdateBomRouting",
       "a line, then a header",
       {MakeVector(
           {MakeDictionary({{L"FBomType", 1}, {L"FInterID", 1004}, {L"FItemID", 401}, {L"GetUserID", 16403}}),
            MakeDictionary({{L"FBomType", 0}, {L"FInterID", 1009}, {L"GetUserID", 16403}})})},
       {"CBomFunction.UpdateBomRouting.line", "CBomFunction.UpdateBomRouting.head"}},
      {L"CBomFunction", L"UpdateBomGroup", "", {1009, 7, 16403}, {"CBomFunction.UpdateBomGroup"}},
      {L"CBomFunction",
       L"UpdateBomGroupName",
       "",
       {7, L"样车 Prototype"},
       {"CBomFunction.UpdateBomGroupName"}},
  };
}

} // namespace

StatementCases BomCases() {
  StatementCases all;
  for (const StatementCases& cases : {InfoCases(), UpdateCases(), CheckCases(), FunctionCases()})
    all.insert(all.end(), cases.begin(), cases.end());
  return all;
}

} // namespace mbom::test
