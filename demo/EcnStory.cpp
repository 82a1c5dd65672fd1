#include "demo/Codes.h"
#include "demo/Stories.h"

namespace demo {
namespace {

// The lines of notice `id`, with what EndSave has kept of the lines that they change.
std::wstring NoticeLines(const wchar_t* id) {
  return std::wstring(
             L"SELECT t1.FEntryID, CASE t1.FChangeType WHEN 11021 THEN 'added' WHEN 11022 THEN 'altered' ELSE "
             L"'deleted' END AS FChange, t2.FName AS FItem, t1.FPercent, t3.FName AS FOldItem, t1.FOldPercent "
             L"FROM IcEcnEntry t1 INNER JOIN t_ICItem t2 ON t1.FItemID = t2.FItemID LEFT JOIN t_ICItem t3 ON "
             L"t1.FOldItemID = t3.FItemID WHERE t1.FInterID = ") +
         id + L" ORDER BY t1.FEntryID";
}

constexpr wchar_t kNotice6[] = L"SELECT FInterID, FBillNo, FStatus, FBomInterID, FCBomInterID, FCBomNumber, "
                               L"FStarUperID, FStarUpDate FROM "
                               L"IcEcn WHERE FInterID = 6";

constexpr wchar_t kCityBikes[] =
    L"SELECT FInterID, FBOMNumber, FStatus, FUseStatus, FEnterTime, FCheckerID, FAudDate, FEcnInterID FROM "
    L"ICBOM WHERE FItemID = 101 ORDER BY FInterID";

void Saving(Stage& stage) {
  stage.Chapter(L"A change notice is checked when it is saved", {codes::kSaveRetCode, codes::kChangeType});
  stage.Say(L"Change 7 of the planning BOM 2002 (60 and 40 %) has only the city bike's new share, 50 %.");
  const wchar_t* save = LR"([{"FInterID":7}])";
  for (const wchar_t* language : kLanguages) stage.Save(L"CEcnInfo.EndSave", save, kPlanner, language);
  stage.Say(L"The form adds the line for made-to-order bikes, 10 %, and saves again.");
  stage.Execute(
      L"INSERT INTO IcEcnEntry (FInterID, FEntryID, FChildID, FChangeType, FItemID, FUnitID, FAuxQty, "
      L"FQty, FPercent, FStockID) VALUES (7, 2, 0, 11021, 103, 101, 1, 1, 10, 803)");
  stage.Save(L"CEcnInfo.EndSave", save, kPlanner, L"en");
  stage.Show(L"Its lines, each with the values that the BOM's line had:", NoticeLines(L"7"));

  stage.Say(L"Change 6 of the city bike's BOM 1002 adds a bell, alters the saddle and deletes the basket. By "
            L"mistake it adds the handlebar as well, which is there already.");
  stage.Execute(
      L"INSERT INTO IcEcnEntry (FInterID, FEntryID, FChildID, FChangeType, FItemID, FUnitID, FAuxQty, "
      L"FQty, FOperSN, FOperID) VALUES (6, 4, 0, 11021, 301, 101, 1, 1, 20, 40004)");
  for (const wchar_t* language : kLanguages)
    stage.Save(L"CEcnInfo.EndSave", LR"([{"FInterID":6}])", kEngineer, language);
  stage.Say(L"Without that line it is saved.");
  stage.Execute(L"DELETE FROM IcEcnEntry WHERE FInterID = 6 AND FEntryID = 4");
  stage.Save(L"CEcnInfo.EndSave", LR"([{"FInterID":6}])", kEngineer, L"en");
  stage.Show(L"Its lines:", NoticeLines(L"6"));
}

void StartUp(Stage& stage) {
  stage.Chapter(L"The change is started: a new version of the BOM",
                {codes::kNotice, codes::kStatus, codes::kUseStatus});
  stage.Show(L"The notice before:", kNotice6);
  stage.Show(L"The city bike's BOMs before:", kCityBikes);
  stage.Call(L"CEcnInfo.GetThenCheckCBomNumber", {{L"BomNumber", L"BOM000011"}}, kAuditor, L"en");
  stage.Call(L"CEcnInfo.GetCheckCBomNoChecked", {{L"BomInterId", L"1002"}}, kAuditor, L"en");
  stage.Say(
      L"False is good news from both: no BOM has the number, and the BOM is not one that was not audited. The "
      L"auditor starts the change.");
  stage.Call(L"CEcnInfo.StarUpEcn",
             {{L"BomInterId", L"1002"}, {L"EcnInterId", L"6"}, {L"UserID", std::to_wstring(kAuditor.id)}},
             kAuditor, L"en");
  stage.Show(L"The notice after:", kNotice6);
  stage.Show(L"The new version is audited and in use, every other one of the item is not:", kCityBikes);
  stage.Show(
      L"The lines of the old version and of the new one, numbered afresh. The bell is first: it takes no other "
      L"line's place, so its old number is 0.",
      L"SELECT a.FEntryID AS FOldLine, a.FAuxQty AS FOldQty, i.FName AS FItemName, b.FEntryID AS FNewLine, "
      L"b.FAuxQty AS FNewQty FROM t_ICItem i LEFT JOIN ICBOMChild a ON a.FItemID = i.FItemID AND "
      L"a.FInterID = 1002 LEFT JOIN ICBOMChild b ON b.FItemID = i.FItemID AND b.FInterID IN (SELECT "
      L"FCBomInterID FROM IcEcn WHERE FInterID = 6) WHERE a.FEntryID > 0 OR b.FEntryID > 0 ORDER BY "
      L"ISNULL(b.FEntryID, a.FEntryID), b.FEntryID");
}

void Cancellation(Stage& stage) {
  stage.Chapter(L"A start-up is taken back",
                {codes::kBomUsed, codes::kNotice, codes::kStatus, codes::kUseStatus});
  stage.Say(L"Change 5 has made BOM000008, which production has taken up already.");
  for (const wchar_t* language : kLanguages)
    stage.Call(L"CEcnInfo.CheckBomUsed", {{L"EcnInterId", L"5"}, {L"BomNumber", L"BOM000008"}}, kAuditor,
               language);
  stage.Say(L"Nothing uses BOM000011 yet; change 6 is cancelled.");
  stage.Call(L"CEcnInfo.CheckBomUsed", {{L"EcnInterId", L"6"}, {L"BomNumber", L"BOM000011"}}, kAuditor,
             L"en");
  stage.Call(L"CEcnInfo.UnStarUpEcn", {{L"EcnInterId", L"6"}}, kAuditor, L"en");
  stage.Show(L"The notice is no longer started; FStarUperID is 0 then and not NULL:", kNotice6);
  stage.Show(L"The new version is gone. The old one stays out of use until somebody puts it in use again:",
             kCityBikes);
}

} // namespace

void TellEcnStory(Stage& stage) {
  Saving(stage);
  StartUp(stage);
  Cancellation(stage);
}

} // namespace demo
