#include "demo/Stories.h"

namespace demo {
namespace {

void Tree(Stage& stage) {
  stage.Chapter(L"Browsing: the tree of BOM groups");
  stage.Say(L"Group 7 and 5 are chosen on the filter screen; their ancestors come along, parents first:");
  stage.Call(L"BomView.GetBomGroupList",
             {{L"GroupVect", LR"([{"Key":7},{"Key":5}])"},
              {L"FilterDict", LR"({"BomNumber":"BOM0000"})"},
              {L"bLongNumber", L"true"},
              {L"bBomView", L"false"}},
             kEngineer, L"en");
  stage.Say(L"The whole browser in one list, from its root, whose caption follows the language:");
  for (const wchar_t* language : kLanguages)
    stage.List(L"BomView.GetBomList",
               {{L"sFilter", L"FType=0 OR FRelative IN ('ga','gb2')"}, {L"sOrder", L"FKey"}},
               {L"FKey", L"FRelative", L"FText", L"FImgNormal", L"FTag"}, kEngineer, language);
}

void Lists(Stage& stage) {
  stage.Chapter(L"Browsing: a lookup list");
  stage.Say(L"The audited BOMs of made items, with the groups above them:");
  stage.List(L"BomView.GetBomSimplifyListEx",
             {{L"sFilter", L"t2.FErpClsID=2"}, {L"sOrder", L"FKey"}, {L"sLookType", L"EcnLookup"}},
             {L"FKey", L"FRelative", L"FText", L"FNumber", L"FModel", L"FErpClsName"}, kEngineer, L"en");
  stage.Call(L"BomView.ExistsEcnBill", {}, kEngineer, L"en");
}

void Ledgers(Stage& stage) {
  stage.Chapter(L"Browsing: the ledgers");
  for (const wchar_t* language : kLanguages) {
    stage.Say(L"The titles of the header ledger, the user-defined ones after the fixed ones, and its rows:");
    stage.List(L"BomView.GetBomTitle", {}, {L"FOrder", L"FName", L"FCaption"}, kEngineer, language);
    stage.List(L"BomView.GetBomLdgInfo", {{L"sFilter", L"FItemID IN (101,201)"}, {L"sOrder", L"FInterID"}},
               {L"FBOMNumber", L"FName", L"FStatus", L"FUseStatus", L"FGroupName", L"FHeadSelfZ0140",
                L"FHeadSelfZ0141"},
               kEngineer, language);
    stage.Say(L"The lines of BOM 1002; what is valid on no day of 2025 is drawn in another colour:");
    stage.List(L"BomView.GetBomEntryLdgInfo",
               {{L"sFilter", L"a.FInterID=1002"},
                {L"sOrder", L"a.FEntryID"},
                {L"dctFilter", LR"({"BItemTime":"2025-01-01","EItemTime":"2025-12-31"})"}},
               {L"FEntryID", L"FItemName", L"FAuxQty", L"FUnitID", L"FIsKeyItem", L"FAlterBackColor",
                L"FEntrySelfZ0130", L"FEntrySelfZ0131", L"FEntrySelfZ0132"},
               kEngineer, language);
  }
}

} // namespace

void TellBrowseStory(Stage& stage) {
  Tree(stage);
  Lists(stage);
  Ledgers(stage);
}

} // namespace demo
