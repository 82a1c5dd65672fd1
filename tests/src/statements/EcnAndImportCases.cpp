// The statements of CEcnInfo, BOMImport and PPorderImort.
#include "tests/src/statements/Cases.h"
#include "tests/support/Client.h"

namespace mbom::test {
namespace {

using com::Object;

// What is sent for a Vector of lines: only the last one is written.
Object ThirdOf(const Object& line) {
  return MakeVector({MakeDictionary({}), MakeDictionary({}), line});
}

Object BomLine() {
  return MakeDictionary({{L"EntryItem", 306},
                         {L"Qty", 1},
                         {L"Scrap", 2.5},
                         {L"Oper", 40004},
                         {L"MachinePos", L"A1"},
                         {L"Note", L""},
                         {L"MaterielType", 371},
                         {L"MarshalType", 385},
                         {L"Percent", 100},
                         {L"OffSetDay", 0},
                         {L"BackFlush", 1059},
                         {L"Stock", 802},
                         {L"SP", 0}});
}

Object BomLineWithoutQuantity() {
  Object line = BomLine();
  line.Call(L"Remove", L"Qty");
  return line;
}

Object ImportedBom(const Object& lines) {
  return MakeDictionary({{L"BOMNumber", L"BOM000006"},
                         {L"UseStatus", 1072},
                         {L"Version", L"1.1"},
                         {L"Parent", 5},
                         {L"Item", 203},
                         {L"Qty", 1},
                         {L"Yield", 98.5},
                         {L"Routing", 702},
                         {L"BOMType", 0},
                         {L"Note", L"导入 Imported"},
                         {L"Entry", lines}});
}

Object ImportedOrder(const Object& lines) {
  return MakeDictionary({{L"BillNo", L"FC000001"},
                         {L"Date", L"2026-05-01"},
                         {L"Biller", 16403},
                         {L"CheckDate", L"2026-05-02"},
                         {L"Checker", 16402},
                         {L"Entry", lines}});
}

Object OrderLine() {
  return MakeDictionary({{L"EntryItem", 102},
                         {L"Unit", 101},
                         {L"Qty", 30},
                         {L"NeedDate", L"2026-07-31"},
                         {L"Note", L"急 Urgent"},
                         {L"AuxQty", 30},
                         {L"CommitQty", 0},
                         {L"AuxCommitQty", 0}});
}

StatementCases EcnCases() {
  const Object saved = MakeVector({MakeDictionary({{L"FInterID", 6}})});
  return {
      {L"CEcnInfo", L"BeginSave", "does nothing", {saved, L""}, {}},
      {L"CEcnInfo",
       L"EndSave",
       "",
       {saved, L""},
       {"CEcnInfo.EndSave.duplicate", "CEcnInfo.EndSave.deleted", "CEcnInfo.EndSave.percent",
        "CEcnInfo.EndSave.snapshot"}},
      {L"CEcnInfo", L"CheckECN", "has no objection", {6}, {}},
      {L"CEcnInfo", L"GetThenCheckCBomNumber", "", {L"BOM000008"}, {"CEcnInfo.GetThenCheckCBomNumber"}},
      {L"CEcnInfo", L"GetCheckCBomNoChecked", "", {1005}, {"CEcnInfo.GetCheckCBomNoChecked"}},
      {L"CEcnInfo", L"ReturnEcnStatus", "", {5}, {"CEcnInfo.ReturnEcnStatus"}},
      {L"CEcnInfo", L"ReturnEcnStatusByNumber", "", {L"ECN000006"}, {"CEcnInfo.ReturnEcnStatusByNumber"}},
      {L"CEcnInfo",
       L"CheckBomUsed",
       "",
       {5, L"BOM000008", L""},
       {"CEcnInfo.CheckBomUsed.later", "CEcnInfo.CheckBomUsed.usage"}},
      {L"CEcnInfo", L"CheckEcnBom", "", {1006}, {"CEcnInfo.CheckEcnBom"}},
      {L"CEcnInfo", L"StarUpEcn", "", {1002, 6, 16402}, {"CEcnInfo.StarUpEcn"}},
      {L"CEcnInfo", L"UnStarUpEcn", "", {5}, {"CEcnInfo.UnStarUpEcn"}},
      {L"CEcnInfo", L"GetEcnBomHead", "", {L"1002"}, {"Shared.UseShortNumber", "CEcnInfo.GetEcnBomHead"}},
      {L"CEcnInfo",
       L"GetEcnBomHead",
       "short numbers",
       {L"1002"},
       {"Shared.UseShortNumber", "CEcnInfo.GetEcnBomHead.shortNumber"},
       {.data = kShortNumbers}},
      {L"CEcnInfo", L"GetEcnBomEntry", "every line", {L"1002"}, {"CEcnInfo.GetEcnBomEntry.all"}},
      {L"CEcnInfo",
       L"GetEcnBomEntry",
       "filtered",
       {L"1002", L" WHERE ICBomChild.FEntryID<5"},
       {"CEcnInfo.GetEcnBomEntry"}},
      {L"CEcnInfo", L"AnalyseBomNumber", "", {kCallersStatement}, {"Shared.CallersStatement"}},
  };
}

StatementCases ImportCases() {
  return {
      {L"BOMImport",
       L"UpdateBomGroup",
       "",
       {MakeDictionary({{L"Number", L"03"}, {L"Name", L"配置 Configuration"}, {L"Parent", 0}})},
       {"BOMImport.UpdateBomGroup.delete", "BOMImport.UpdateBomGroup.counter",
        "BOMImport.UpdateBomGroup.insert", "BOMImport.UpdateBomGroup.raise"}},
      {L"BOMImport",
       L"UpdateBOM",
       "",
       {ImportedBom(ThirdOf(BomLine()))},
       {"BOMImport.UpdateBOM.deleteLines", "BOMImport.UpdateBOM.deleteBom", "Shared.BomCounter",
        "BOMImport.UpdateBOM.insertBom", "BOMImport.UpdateBOM.insertLine", "BOMImport.UpdateBOM.raise"}},
      {L"BOMImport",
       L"UpdateBOM",
       "without lines the header is sent again",
       {ImportedBom(MakeVector({}))},
       {"BOMImport.UpdateBOM.deleteLines", "BOMImport.UpdateBOM.deleteBom", "Shared.BomCounter",
        "BOMImport.UpdateBOM.insertBom", "BOMImport.UpdateBOM.insertBom", "BOMImport.UpdateBOM.raise"}},
      {L"BOMImport",
       L"UpdateBOM",
       "a quantity is missing",
       {ImportedBom(ThirdOf(BomLineWithoutQuantity()))},
       {"BOMImport.UpdateBOM.deleteLines", "BOMImport.UpdateBOM.deleteBom", "Shared.BomCounter",
        "BOMImport.UpdateBOM.insertBom", "BOMImport.UpdateBOM.insertLine.noQuantity"}},
      {L"PPorderImort",
       L"UpdatePPOrder",
       "",
       {ImportedOrder(MakeVector({MakeDictionary({}), OrderLine()}))},
       {"PPorderImort.UpdatePPOrder.deleteLines", "PPorderImort.UpdatePPOrder.deleteOrder",
        "PPorderImort.UpdatePPOrder.counter", "PPorderImort.UpdatePPOrder.insertOrder",
        "PPorderImort.UpdatePPOrder.insertLine", "PPorderImort.UpdatePPOrder.raise"}},
  };
}

} // namespace

StatementCases EcnAndImportCases() {
  StatementCases all = EcnCases();
  for (const StatementCase& example : ImportCases()) all.push_back(example);
  return all;
}

} // namespace mbom::test
