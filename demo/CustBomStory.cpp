#include "demo/Codes.h"
#include "demo/Stories.h"

namespace demo {
namespace {

// The number that the copy of the club's bike gets, and the query for its id.
constexpr wchar_t kIdOfTheCopy[] = L"SELECT FInterID FROM ICBOM WHERE FBOMNumber = 'KH0004'";

// BOMs as the screen's list shows them.
constexpr wchar_t kCustomerBoms[] =
    L"SELECT FInterID, FBOMNumber, FItemID, FCustID, FUseStatus, FStatus, FCheckerID, FForbid FROM ICBOM "
    L"WHERE FBomType = 3 ORDER BY FInterID";

void Configure(Stage& stage) {
  stage.Chapter(L"A customer's bicycle: what may be chosen", {codes::kRelation});
  stage.Say(
      L"The made-to-order bike has two features, the colour 501 and the saddle 504. Their options, by the "
      L"features' BOMs:");
  stage.Call(L"clsMCustBOM.GetTeZhenSubItems", {{L"strTeZhenItemID", L"501"}}, kPlanner, L"en");
  stage.Call(L"clsMCustBOM.GetTeZhenSubItems", {{L"strTeZhenItemID", L"504"}}, kPlanner, L"en");
  stage.Say(L"Red (502) goes with the comfort saddle; blue (503) excludes the basket.");
  stage.Call(L"clsMCustBOM.GetRuleByItem",
             {{L"strFItemID", L"502"}, {L"strFItemGroupID", L"13"}, {L"strRel", L"Rel"}}, kPlanner, L"en",
             {L"--columns", L"FNumber,FName,FRuleID,FEntryFNumber,FEntryFName"});
  stage.Call(L"clsMCustBOM.GetRuleByItem",
             {{L"strFItemID", L"502,503"}, {L"strFItemGroupID", L""}, {L"strRel", L"Mut"}}, kPlanner, L"en",
             {L"--columns", L"FNumber,FName,FRuleID,FEntryFNumber,FEntryFName"});
  stage.Call(L"clsMBOMRule.GetICItemParent", {{L"s_ItemID", L"505"}}, kPlanner, L"en");
}

void Browse(Stage& stage) {
  stage.Chapter(L"A customer's bicycle: the screen", {codes::kIcon});
  stage.Call(L"clsMCustBOM.GetTreeViewDataM", {}, kPlanner, L"en");
  for (const wchar_t* language : {L"chs", L"cht", L"en"})
    stage.Call(
        L"clsMCustBOM.GetRightTopDataM",
        {{L"sInterID", L"3001,3002"}, {L"sBomType", L"-1"}, {L"sFilter", L"node"}, {L"sOrder", L"FInterID"}},
        kPlanner, language, {L"--columns", L"FInterID,FBOMNumber,FName,FStatus,FUseStatus,FUnitID"});
  stage.Say(L"Everything that the list knows of the first one:");
  stage.Call(L"clsMCustBOM.GetRightTopDataM",
             {{L"sInterID", L"3001"}, {L"sBomType", L"-1"}, {L"sFilter", L"node"}, {L"sOrder", L"FInterID"}},
             kPlanner, L"en", {L"--vertical"});
  stage.Say(L"The club's bike: its frame is a customer BOM of its own, KH0002.");
  stage.Call(L"clsMCustBOM.GetRightBottomDataM",
             {{L"sBomType", L"3"}, {L"sFilter", L"FInterID = 3001"}, {L"sOrder", L"FEntryID"}}, kPlanner,
             L"en",
             {L"--columns", L"FEntryID,FNumber,FItemName,FAuxQty,FunitID,FQty,FBaseUnitID,FBomNumber"});
}

void CopyAndLink(Stage& stage) {
  stage.Chapter(L"A customer's bicycle: one more like it",
                {codes::kStatus, codes::kUseStatus, codes::kForbid});
  stage.Say(L"The planner copies the club's bike 3001; the rule for customer BOMs gives the number.");
  stage.Show(L"The customer BOMs before:", kCustomerBoms);
  stage.Call(L"clsMCustBOM.CopyPasteCustBom", {{L"strCustBOMID", L"3001"}, {L"strLanguage", L"en"}}, kPlanner,
             L"en");
  stage.Show(L"And after, the copy not in use and not audited:", kCustomerBoms);
  stage.Say(L"He takes another customer's frame: the lines with item 201 are to be built from 3003.");
  stage.Call(L"clsMCustBOM.SetCustBOM",
             {{L"strCustBomCode", L"3003"},
              {L"strParentCustBomInterID", stage.Value(kIdOfTheCopy)},
              {L"strItemID", L"201"}},
             kPlanner, L"en");
}

void AuditAndDisable(Stage& stage) {
  const std::wstring copy = stage.Value(kIdOfTheCopy);
  stage.Chapter(L"A customer's bicycle: audit and disabling",
                {codes::kDisable, codes::kStatus, codes::kUseStatus, codes::kForbid});
  stage.Say(
      L"The auditor audits the copy, which puts it in use too. Then 3003 cannot change its status: what is "
      L"built from it is audited.");
  stage.Call(L"clsMCustBOM.UpdateAuditFlag", {{L"strCustBomInterID", copy}, {L"b_AuditFlag", L"True"}},
             kAuditor, L"en");
  for (const wchar_t* language : {L"chs", L"cht", L"en"})
    stage.Call(L"clsMCustBOM.UpdateAuditFlag", {{L"strCustBomInterID", L"3003"}, {L"b_AuditFlag", L"False"}},
               kAuditor, language);
  stage.Say(L"3001 is in an order and a batch: its audit stays, and it cannot be disabled. 3002 is part of "
            L"others.");
  stage.Call(L"clsMCustBOM.UpdateAuditFlag",
             {{L"strCustBomInterID", L"3001"}, {L"b_AuditFlag", L"False"}, {L"strCurCustBomNo", L"3001"}},
             kAuditor, L"en");
  stage.Call(L"clsMCustBOM.UpdateDisableStatus", {{L"strCustBomInterID", L"3001"}, {L"b_Status", L"True"}},
             kAuditor, L"en");
  stage.Call(L"clsMCustBOM.UpdateDisableStatus", {{L"strCustBomInterID", L"3002"}, {L"b_Status", L"True"}},
             kAuditor, L"en");
  stage.Say(L"Nothing refers to the copy: it can.");
  stage.Call(L"clsMCustBOM.UpdateDisableStatus", {{L"strCustBomInterID", copy}, {L"b_Status", L"True"}},
             kAuditor, L"en");
  stage.Show(
      L"The customer BOMs at the end. The copy is audited, in use and disabled: each is said by itself.",
      kCustomerBoms);
}

} // namespace

void TellCustBomStory(Stage& stage) {
  Configure(stage);
  Browse(stage);
  CopyAndLink(stage);
  AuditAndDisable(stage);
}

} // namespace demo
