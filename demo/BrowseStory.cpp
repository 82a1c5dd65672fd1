#include "demo/Codes.h"
#include "demo/Stories.h"

namespace demo {
namespace {

void Tree(Stage& stage) {
  stage.Chapter(L"Browsing: the tree of BOM groups", {codes::kLevel, codes::kTree, codes::kIcon});
  stage.Say(
      L"The groups 7 and 5 are chosen on the filter screen; the groups above them come along, parents first:");
  stage.Call(L"BomView.GetBomGroupList",
             {{L"GroupVect", LR"([{"Key":7},{"Key":5}])"},
              {L"FilterDict", LR"({"BomNumber":"BOM0000"})"},
              {L"bLongNumber", L"true"},
              {L"bBomView", L"false"}},
             kEngineer, L"en");
  stage.Say(L"The whole browser in one list, from its root, whose caption follows the language:");
  for (const wchar_t* language : kLanguages)
    stage.Call(L"BomView.GetBomList",
               {{L"sFilter", L"FType=0 OR FRelative IN ('ga','gb2')"}, {L"sOrder", L"FKey"}}, kEngineer,
               language, {L"--columns", L"FKey,FRelative,FText,FImgNormal,FTag"});
}

void Lists(Stage& stage) {
  stage.Chapter(L"Browsing: a lookup list", {codes::kTree, codes::kItemClass});
  stage.Say(
      L"The audited BOMs of made items, with the groups above them. A customer BOM, as KH0002, hangs under the BOM that it was made from, here the configuration BOM 2001, which is not of a made item:");
  stage.Call(L"BomView.GetBomSimplifyListEx",
             {{L"sFilter", L"t2.FErpClsID=2"}, {L"sOrder", L"FKey"}, {L"sLookType", L"EcnLookup"}}, kEngineer,
             L"en", {L"--columns", L"FKey,FRelative,FText,FNumber,FModel,FErpClsName"});
  stage.Say(L"Is there any engineering change at all?");
  stage.Call(L"BomView.ExistsEcnBill", {}, kEngineer, L"en");
}

void Ledgers(Stage& stage) {
  stage.Chapter(L"Browsing: the ledgers");
  for (const wchar_t* language : kLanguages) {
    stage.Say(L"The titles of the header ledger, the user-defined ones after the fixed ones, and its rows:");
    stage.Call(L"BomView.GetBomTitle", {}, kEngineer, language, {L"--columns", L"FOrder,FName,FCaption"});
    stage.Call(L"BomView.GetBomLdgInfo", {{L"sFilter", L"FItemID IN (101,201)"}, {L"sOrder", L"FInterID"}},
               kEngineer, language, {L"--columns", L"FBOMNumber,FName,FStatus,FUseStatus,FHeadSelfZ0141"});
    stage.Say(
        L"The lines of BOM 1002; what is valid on no day of 2025 is drawn in another colour (FAlterBackColor "
        L"1). The last column is a user-defined one:");
    stage.Call(L"BomView.GetBomEntryLdgInfo",
               {{L"sFilter", L"a.FInterID=1002"},
                {L"sOrder", L"a.FEntryID"},
                {L"dctFilter", LR"({"BItemTime":"2025-01-01","EItemTime":"2025-12-31"})"}},
               kEngineer, language,
               {L"--columns", L"FEntryID,FItemName,FAuxQty,FIsKeyItem,FAlterBackColor,FEntrySelfZ0131"});
  }
}

} // namespace

void TellBrowseStory(Stage& stage) {
  Tree(stage);
  Lists(stage);
  Ledgers(stage);
}

} // namespace demo
