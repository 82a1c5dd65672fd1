#include "demo/Codes.h"
#include "demo/Stories.h"

namespace demo {
namespace {

std::wstring HeadersWhere(const std::wstring& condition) {
  return L"SELECT FInterID, FBomType, FStatus, FUseStatus, FOperatorID, FEnterTime, FCheckID, FCheckDate FROM "
         L"ICBOM WHERE " +
         condition + L" ORDER BY FInterID";
}

// The lines with the given columns; t1 are they themselves, t2 their items, t3 their units.
std::wstring LinesOf(const wchar_t* table, const wchar_t* id, const wchar_t* columns) {
  return std::wstring(L"SELECT t1.FEntryID, t2.FName AS FItemName, t1.FAuxQty, t3.FName AS FUnitName, ") +
         columns + L" FROM " + table + L" t1 INNER JOIN t_ICItem t2 ON t1.FItemID = t2.FItemID " +
         L"LEFT JOIN t_MeasureUnit t3 ON t1.FUnitID = t3.FItemID WHERE t1.FInterID = " + id +
         L" ORDER BY t1.FEntryID";
}

std::wstring QuantitiesOf(const wchar_t* table, const wchar_t* id) {
  return LinesOf(table, id, L"t3.FCoefficient, t3.FScale, t1.FQty");
}

void OrdinaryBom(Stage& stage) {
  stage.Chapter(L"An ordinary BOM, its use status changed",
                {codes::kBomType, codes::kStatus, codes::kUseStatus, codes::kTransType});
  stage.Say(
      L"The engineer puts the front wheel's BOM 1005 out of use and in use again. Its lines have odd units: "
      L"dozens, a set without a factor, a roll with an addition to its factor, and none at all.");
  const std::wstring headers = HeadersWhere(L"FItemID = 202");
  const wchar_t* save = LR"([{"FInterID":1005,"FTransType":50},{"UseStatusChange":true,"FItemID":202}])";
  stage.Show(L"The BOMs of item 202 before:", headers);
  stage.Show(L"The lines of BOM 1005 before:", QuantitiesOf(L"ICBOMChild", L"1005"));

  stage.Save(L"BomUpdate.BeginSave", save, kEngineer, L"chs");
  stage.Show(L"BeginSave took every BOM of the item out of use:", headers);
  stage.Say(L"Now the bill's form writes BOM 1005, in use, and calls EndSave.");
  stage.Execute(L"UPDATE ICBOM SET FUseStatus = 1072 WHERE FInterID = 1005");

  stage.Save(L"BomUpdate.EndSave", save, kEngineer, L"chs");
  stage.Show(L"The header after, with operator and date:", headers);
  stage.Show(
      L"The lines after: FQty = FAuxQty x (FCoefficient + FScale). A factor that is missing counts as 1, an "
      L"addition that is missing as 0; line 5 has no unit and keeps the quantity that it had.",
      QuantitiesOf(L"ICBOMChild", L"1005"));
}

void CustomerBom(Stage& stage) {
  stage.Chapter(L"A customer BOM (transaction type 53)",
                {codes::kBomType, codes::kStatus, codes::kUseStatus, codes::kTransType});
  stage.Say(L"The planner saves customer BOM 3001, made from the configuration BOM 2001.");
  const std::wstring header = HeadersWhere(L"FInterID = 3001");
  stage.Show(L"The header before:", header);
  stage.Show(L"The customer lines before:", QuantitiesOf(L"ICCustBOMChild", L"3001"));

  stage.Save(L"BomUpdate.EndSave", LR"([{"FInterID":3001,"FTransType":53,"StateParm":{"FParentID":2001}}])",
             kPlanner, L"cht");
  stage.Show(
      L"The header after: with the planner as its maker, and not in use. That it was audited stays so; saving "
      L"takes no audit back.",
      header);
  stage.Show(L"The customer lines after:", QuantitiesOf(L"ICCustBOMChild", L"3001"));
}

void Refusal(Stage& stage) {
  stage.Chapter(L"A BOM under engineering-change control is refused",
                {codes::kEcn, codes::kTransType, codes::kSaveRetCode});
  const std::wstring header =
      L"SELECT FInterID, FBOMNumber, FVersion, FOperatorID, FEnterTime, FEcnInterID FROM ICBOM WHERE FInterID = 1008";
  stage.Show(L"The rear wheel's BOM before; engineering change 5 made it:", header);
  for (const wchar_t* language : {L"chs", L"cht", L"en"})
    stage.Save(L"BomUpdate.EndSave", LR"([{"FInterID":1008,"FTransType":50}])", kEngineer, language);
  stage.Say(L"The message speaks of audits though a save was refused: one text serves for both.");
  stage.Show(L"And after, untouched:", header);
}

void RolledBack(Stage& stage) {
  stage.Chapter(L"A failure is rolled back", {codes::kBomType, codes::kStatus, codes::kUseStatus});
  stage.Say(
      L"Planning BOM 2002 is saved, but the demo makes the last statement of EndSave fail, as a server that "
      L"takes too long would. EndSave votes to abort, and the host rolls the earlier statements back. It "
      L"answers False without a message, as for every failure that is no refusal.");
  const std::wstring header = HeadersWhere(L"FInterID = 2002");
  const std::wstring lines = LinesOf(L"ICBOMChild", L"2002", L"t1.FQty, t1.FBeginDay, t1.FEndDay");
  stage.Show(L"The header before:", header);
  stage.Show(L"The lines before:", lines);

  const wchar_t* planning = LR"([{"FInterID":2002,"FTransType":50}])";
  const com::Object faults = com::Object::Create(L"ErpStandIn.Faults");
  constexpr auto kTimeOut = static_cast<int32_t>(0x80040E31);
  faults.Call(L"Fail", L"Execute", 4, kTimeOut, L"Timeout expired");
  stage.Failing(L"BomUpdate.EndSave", {{L"SaveVect", planning}}, kPlanner, L"en");
  faults.Call(L"Clear");
  stage.Show(L"The header after the failure, as it was:", header);
  stage.Show(L"The lines after the failure, as they were:", lines);

  stage.Say(L"The same save without the failure:");
  stage.Save(L"BomUpdate.EndSave", planning, kPlanner, L"en");
  stage.Show(L"The header after, with operator and date:", header);
  stage.Show(L"The lines after, valid without end, as for every BOM that is not ordinary:", lines);
}

} // namespace

void TellSaveStory(Stage& stage) {
  OrdinaryBom(stage);
  CustomerBom(stage);
  Refusal(stage);
  RolledBack(stage);
}

} // namespace demo
