#include "demo/Codes.h"
#include "demo/Stories.h"

namespace demo {
namespace {

constexpr wchar_t kAuditState[] =
    L"SELECT FInterID, FBOMNumber, FStatus, FUseStatus, FCheckID, FCheckerID, FAudDate, FBeenChecked "
    L"FROM ICBOM WHERE FInterID IN (1002, 1003) ORDER BY FInterID";

// A method of CBomCheck for the BOM, in the name of `user` where it asks for one.
void Check(Stage& stage, const std::wstring& method, const wchar_t* bom, const wchar_t* number,
           const User& user, const wchar_t* language) {
  std::vector<Stage::Argument> arguments{{L"lInterID", bom}, {L"sBillNo", number}};
  if (method == L"BomCheck" || method == L"BomUndoCheck")
    arguments.push_back({L"lEmpID", std::to_wstring(user.id)});
  stage.Call(L"CBomCheck." + method, arguments, user, language);
}

void Audit(Stage& stage) {
  stage.Chapter(L"An audit takes two",
                {codes::kStatus, codes::kUseStatus, codes::kAuditor, codes::kBomCheck});
  stage.Say(L"The engineer made the mountain bike's BOM 1003 and tries to audit it himself.");
  stage.Show(L"The BOMs before:", kAuditState);
  for (const wchar_t* language : {L"chs", L"cht", L"en"})
    Check(stage, L"BomCheck", L"1003", L"BOM000003", kEngineer, language);
  stage.Say(L"The auditor may. A second time it is too late.");
  Check(stage, L"BomCheck", L"1003", L"BOM000003", kAuditor, L"chs");
  Check(stage, L"BomCheck", L"1003", L"BOM000003", kAuditor, L"en");
  stage.Show(L"The BOMs after:", kAuditState);
}

void TakeBack(Stage& stage) {
  stage.Chapter(L"Who may take an audit back", {codes::kStatus, codes::kUseStatus, codes::kBomUndoCheck});
  stage.Say(L"IC/SameUserApprovalAndUnApproval is 1: only the auditor himself. The planner is refused.");
  for (const wchar_t* language : {L"chs", L"cht", L"en"})
    Check(stage, L"BomUndoCheck", L"1003", L"BOM000003", kPlanner, language);
  Check(stage, L"BomUndoCheck", L"1003", L"BOM000003", kAuditor, L"en");
  stage.Show(L"The audit is gone, and the BOM out of use:", kAuditState);
  stage.Say(L"With General/SingleMan set to 1 the engineer may audit what he made.");
  stage.Execute(
      L"UPDATE t_SystemProfile SET FValue = '1' WHERE FCategory = 'General' AND FKey = 'SingleMan'");
  Check(stage, L"BomCheck", L"1003", L"BOM000003", kEngineer, L"en");
  stage.Execute(
      L"UPDATE t_SystemProfile SET FValue = '0' WHERE FCategory = 'General' AND FKey = 'SingleMan'");
}

void References(Stage& stage) {
  stage.Chapter(L"What is in use stays as it is", {codes::kBomUndoCheck, codes::kDelInfo});
  stage.Say(L"Sales orders refer to the city bike's BOM 1002: no un-audit, no deletion, no modification.");
  for (const wchar_t* language : {L"chs", L"cht", L"en"})
    Check(stage, L"BomUndoCheck", L"1002", L"BOM000002", kAuditor, language);
  Check(stage, L"GetBomDelInfo", L"1002", L"BOM000002", kAuditor, L"en");
  Check(stage, L"GetBomModifyInfo", L"1002", L"BOM000002", kAuditor, L"en");
  stage.Say(L"Nothing refers to the draft 1009: its message is the question that the client asks its user.");
  Check(stage, L"GetBomDelInfo", L"1009", L"BOM000009", kAuditor, L"en");
  stage.Show(
      L"The BOMs at the end. Un-auditing has put 1003 out of use, and auditing it again has not put it back in "
      L"use: that is for a user to do.",
      kAuditState);
}

void NumberAndCopy(Stage& stage) {
  stage.Chapter(L"A new BOM from an old one", {codes::kStatus, codes::kUseStatus, codes::kAuditor});
  stage.Say(
      L"The rule for BOM numbers gives the next one, and the copy of the city bike's BOM gets it. CopyBom "
      L"answers the copy's id.");
  stage.Call(L"CBomFunction.GetBomCodeNumEx", {{L"lItemId", L"101"}}, kEngineer, L"en");
  stage.Call(L"CBomFunction.CopyBom",
             {{L"Bom", LR"({"FInterID":1002,"FBOMNumber":"BOM000012","FParentID":2,"FCheckID":16401,)"
                       LR"("FOperatorID":16401})"}},
             kEngineer, L"en");
  stage.Show(
      L"The original and its copy, not in use and not audited; of a copy FCheckerID is 0 and not NULL:",
      L"SELECT FInterID, FBOMNumber, FVersion, FUseStatus, FStatus, FCheckerID, FAudDate, FEnterTime FROM ICBOM WHERE FItemID = 101 AND FBOMNumber IN ('BOM000002', 'BOM000012') ORDER BY FInterID");
}

} // namespace

void TellAuditStory(Stage& stage) {
  Audit(stage);
  TakeBack(stage);
  References(stage);
  NumberAndCopy(stage);
}

} // namespace demo
