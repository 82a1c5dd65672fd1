// Benchmarks of scale: calls for one BOM of 1,800 lines among 470,000 BOMs, beside the same among 1,000.
//
// scale_bench LINES [FOLDER]: every other BOM has so many lines; 43 make 20 million of them, and a file of
// several gigabytes. The databases are made in FOLDER, by default in build/bench.
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "bench/UnderCom.h"
#include "bench/calls/OneBom.h"
#include "bench/view/BrowserData.h"
#include "com/ComError.h"

namespace bench {
namespace {

using com::Object;

constexpr int32_t kFew = 1000;
constexpr int32_t kMany = 470000;
constexpr double kSecondsToMake = 600; // at most

std::vector<Call> AllCalls(int32_t bom) {
  const std::wstring id = std::to_wstring(bom);
  const std::wstring itsRow = L"FInterID=" + id;
  const Object header = Object::Create(L"ruvo10.Dictionary");
  header.Put(L"Value", L"FInterID", bom);
  header.Put(L"Value", L"FTransType", 50);
  const Object save = Object::Create(L"ruvo10.Vector");
  save.Call(L"Add", header);
  const std::wstring named = L"UPDATE ICBOM SET FBOMNumber = 'LARGE' WHERE FInterID = " + id;
  const std::wstring audited = L"UPDATE ICBOM SET FStatus = 1, FCheckerID = 16402 WHERE FInterID = " + id;
  std::vector<Call> calls = CallsOfOneBom(bom, "", {});
  const std::vector<Call> further{
      {"GetBomInfo", L"BomInfo", L"GetBomInfo", {itsRow, L"", L""}},
      {"GetBomEntryInfo", L"BomInfo", L"GetBomEntryInfo", {itsRow, L"FEntryID"}, L"", 1},
      {"GetItemForbitNumber", L"BomInfo", L"GetItemForbitNumber", {bom}, L"", 1},
      {"GetBomInfoByBomNumber", L"BomInfo", L"GetBomInfoByBomNumber", {L"LARGE"}},
      {"GetChildBomInfoByBomNo", L"BomInfo", L"GetChildBomInfoByBomNo", {L"LARGE"}, L"", 1},
      {"GetBomLdgInfo", L"BomView", L"GetBomLdgInfo", {itsRow, L"FInterID"}},
      {"EndSave", L"BomUpdate", L"EndSave", {save, L""}},
      {"UpdateIcBomStatus", L"BomUpdate", L"UpdateIcBomStatus", {L"LARGE"}},
      {"BomUndoCheck", L"CBomCheck", L"BomUndoCheck", {bom, L"LARGE", 16402, 0, L""}, audited},
      {"GetBomModifyInfo", L"CBomCheck", L"GetBomModifyInfo", {bom, L"LARGE", L""}},
      {"UpdateBomNumber", L"CBomFunction", L"UpdateBomNumber", {bom, L"RENAMED", L""}, named},
      {"UpdateBomGroup", L"CBomFunction", L"UpdateBomGroup", {bom, 2, 16402}},
      {"GetRoutingData", L"CBomFunction", L"GetRoutingData", {false, bom, L""}, L"", 1},
      {"CheckEcnBom", L"CEcnInfo", L"CheckEcnBom", {bom}},
      {"GetThenCheckCBomNumber", L"CEcnInfo", L"GetThenCheckCBomNumber", {L"LARGE"}},
      {"GetCheckCBomNoChecked", L"CEcnInfo", L"GetCheckCBomNoChecked", {bom}},
      {"GetEcnBomHead", L"CEcnInfo", L"GetEcnBomHead", {id}},
      {"GetEcnBomEntry", L"CEcnInfo", L"GetEcnBomEntry", {id, L""}, L"", 1},
  };
  calls.insert(calls.end(), further.begin(), further.end());
  return calls;
}

// How many rows a recordset or a Vector has.
int32_t RowsIn(const Object& rows) {
  try {
    int32_t count = 0;
    for (; !rows.Get(L"EOF").AsBool(); rows.Call(L"MoveNext")) ++count;
    return count;
  } catch (const com::ComError&) {
    return rows.Get(L"Count").AsLong();
  }
}

// What can be said of a call's result whatever the number of its BOM is.
std::string ShapeOf(const com::Variant& result, int32_t bom) {
  if (result.IsObject()) return std::to_string(RowsIn(result.AsObject())) + " rows";
  const int32_t number = result.AsLong();
  return number > bom ? "the BOM's number and " + std::to_string(number - bom) : std::to_string(number);
}

// A call that fails, or that finds nothing in one of the databases, would measure nothing.
void RequireAlike(const Call& call, const com::Variant& few, const com::Variant& many) {
  const std::string amongFew = ShapeOf(few, kFew + 1);
  const std::string amongMany = ShapeOf(many, kMany + 1);
  if (amongFew != amongMany)
    throw std::runtime_error(call.name + " answers " + amongFew + " among few and " + amongMany +
                             " among many");
}

void RunAll(const std::wstring& folder, int32_t lines) {
  const std::wstring fewFile = folder + L"\\few.db";
  const std::wstring manyFile = folder + L"\\many.db";
  Build(fewFile, {.boms = kFew, .linesPerBom = lines, .largeBom = 1800});
  const std::string many =
      std::to_string(kMany) + " BOMs of " + std::to_string(lines) + (lines == 1 ? " line" : " lines");
  PrintValue({"making " + many, "ten minutes", {.ratio = 1}}, SecondsOf([&] {
               Build(manyFile, {.boms = kMany, .linesPerBom = lines, .largeBom = 1800});
               return 0;
             }),
             kSecondsToMake);
  const Data fewData(fewFile);
  const Data manyData(manyFile);
  const std::vector<Call> fewCalls = AllCalls(kFew + 1);
  const std::vector<Call> manyCalls = AllCalls(kMany + 1);
  for (size_t i = 0; i < fewCalls.size(); ++i) {
    const Caller fewCaller(fewCalls[i], fewData, true);
    const Caller manyCaller(manyCalls[i], manyData, true);
    RequireAlike(fewCalls[i], fewCaller.MakeAnew(), manyCaller.MakeAnew());
    SideBySide(
        {fewCalls[i].name + " among " + many, "among " + std::to_string(kFew), {.ratio = 1.2}}, kTurns, 1,
        [&] { return manyCaller.Seconds(); }, [&] { return fewCaller.Seconds(); });
  }
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  return bench::UnderCom(argc, argv, 1, [&](const std::wstring& folder) {
    bench::RunAll(folder, std::atoi(argv[1])); // NOLINT(cert-err34-c)
  });
}
