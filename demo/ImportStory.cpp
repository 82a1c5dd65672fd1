#include "demo/Codes.h"
#include "demo/Stories.h"

namespace demo {
namespace {

// A call with the record of a file in demo/import. The record comes back as it was and is not shown.
void Import(Stage& stage, const wchar_t* method, const wchar_t* file) {
  stage.Call(method, {{L"tDict", std::wstring(L"@demo/import/") + file}}, kPlanner, L"en", {},
             Stage::Part::Result);
}

} // namespace

void TellImportStory(Stage& stage) {
  stage.Chapter(L"Import from files", {codes::kUseStatus});
  stage.Say(
      L"A group, a BOM and a production order come from another system as JSON files. These methods always "
      L"answer False, also when all went well, as here: a failure is a COM error.");
  Import(stage, L"BOMImport.UpdateBomGroup", L"group.json");
  stage.Show(L"The group has the next identifier:",
             L"SELECT FInterID, FNumber, FName, FParentID FROM ICBOMGroup WHERE FNumber = '02.02'");
  Import(stage, L"BOMImport.UpdateBOM", L"bom.json");
  stage.Show(L"The BOM:",
             L"SELECT FInterID, FBOMNumber, FItemID, FParentID, FVersion, FUseStatus, FNote FROM ICBOM WHERE "
             L"FBOMNumber = 'IMP000001'");
  stage.Show(
      L"The file has two lines. The import writes the last one only, as it always has:",
      L"SELECT t1.FInterID, t1.FEntryID, t1.FItemID, t1.FAuxQty FROM ICBOMChild t1 INNER JOIN ICBOM t2 ON "
      L"t1.FInterID = t2.FInterID WHERE t2.FBOMNumber = 'IMP000001'");
  Import(stage, L"PPorderImort.UpdatePPOrder", L"order.json");
  stage.Show(
      L"The second order is the imported one. It is without its number, FC000009: the import uses it to find "
      L"an earlier order and does not write it. Checker and check date are swapped: FCheckerID has the date, "
      L"and FCheckDate the user 16402, read as a number of days since 1900-01-01.",
      L"SELECT FInterID, FBillNo, FDate, FBillerID, FCheckerID, FCheckDate FROM PPOrder ORDER BY FInterID");
}

} // namespace demo
