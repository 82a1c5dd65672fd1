// Benchmarks of whole calls: each beside the statements that it sends, run on a connection that is open, in a
// file. Short calls on the factory's data, in a host and without one; and calls for a BOM of 1,800 lines.
//
// calls_bench FACTORY [FOLDER]: FACTORY is the factory's database, of which a copy is used; the databases are
// made in FOLDER, by default in build/bench.
#include <stdexcept>
#include <vector>

#include "bench/SideBySide.h"
#include "bench/UnderCom.h"
#include "bench/calls/Caller.h"
#include "bench/calls/OneBom.h"
#include "bench/view/BrowserData.h"
#include "com/Text.h"

namespace bench {
namespace {

using com::Object;

void ShortCalls(const std::wstring& factory, const std::wstring& folder) {
  const std::wstring file = folder + L"\\calls.db";
  for (const wchar_t* suffix : {L"-wal", L"-shm"}) DeleteFileW((file + suffix).c_str());
  if (!CopyFileW(factory.c_str(), file.c_str(), FALSE))
    throw std::runtime_error("the factory's database cannot be copied");
  const Data data(file);
  const Object header = Object::Create(L"ruvo10.Dictionary");
  header.Put(L"Value", L"FInterID", 1005);
  header.Put(L"Value", L"FTransType", 50);
  const Object save = Object::Create(L"ruvo10.Vector");
  save.Call(L"Add", header);
  const std::vector<Call> calls{
      {"ExistsEcnBill", L"BomView", L"ExistsEcnBill", {}},
      {"GetBomTitle", L"BomView", L"GetBomTitle", {}},
      {"EndSave", L"BomUpdate", L"EndSave", {save, L""}},
      {"BomCheck",
       L"CBomCheck",
       L"BomCheck",
       {1003, L"BOM000003", 16402, L""},
       L"UPDATE ICBOM SET FStatus = 0, FCheckerID = NULL WHERE FInterID = 1003"},
      {"GetMaxNum", L"CBomFunction", L"GetMaxNum", {L"ICBOM"}},
  };
  for (const Call& call : calls)
    for (const bool hosted : {true, false}) Compare(call, data, hosted);
}

// Notice 1 changes the BOM: it adds a line, alters one and deletes one.
void AddNotice(const Data& data, int32_t bom) {
  data.Run(
      L"INSERT INTO IcEcn (FInterID, FBillNo, FStatus, FBomInterID, FCBomNumber) VALUES (1, 'ECN1', 1, " +
      std::to_wstring(bom) + L", 'CHANGED')");
  data.Run(
      L"INSERT INTO IcEcnEntry (FBrNo, FInterID, FEntryID, FChildID, FChangeType, FItemID, FAuxQty, FQty, "
      L"FUnitID) VALUES ('', 1, 1, 0, 11021, 7, 4, 4, 1), ('', 1, 2, 3, 11022, 8, 5, 5, 1), ('', 1, 3, 2, "
      L"11023, 9, 6, 6, 1)");
}

Call StartOfNotice(int32_t bom) {
  return {"StarUpEcn, 1800 lines",
          L"CEcnInfo",
          L"StarUpEcn",
          {bom, 1, 16402},
          NoneAbove(bom) + L" UPDATE IcEcn SET FStatus = 1, FCBomInterID = 0",
          1,
          {.ratio = 1.2}};
}

// Makes `bom` a customer's, with as many lines as `source` has; and the rule for the numbers of such BOMs.
void AddCustomerBom(const Data& data, int32_t bom, int32_t source) {
  data.Run(L"UPDATE ICBOM SET FBomType = 3 WHERE FInterID = " + std::to_wstring(bom));
  data.Run(L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FUnitID, FQty, FAuxQty) SELECT " +
           std::to_wstring(bom) + L", FEntryID, FItemID, FUnitID, 1, 1 FROM ICBOMChild WHERE FInterID = " +
           std::to_wstring(source));
  data.Run(L"INSERT INTO ICBillNo (FBillID, FBillName, FPreLetter, FSufLetter, FFormat, FCurNo) VALUES (53, "
           L"'Customer BOM', 'KH', '', '0000', 8)");
}

Call CopyOfCustomerBom(int32_t bom, int32_t highest) {
  return {"CopyPasteCustBom, 1800 lines",
          L"clsMCustBOM",
          L"CopyPasteCustBom",
          {std::to_wstring(bom), L"en"},
          NoneAbove(highest) + L" DELETE FROM ICCustBOMChild WHERE FInterID > " + std::to_wstring(highest),
          1,
          {.ratio = 1.2}};
}

void LargeBom(const std::wstring& folder) {
  constexpr int32_t kBoms = 1000;
  const std::wstring file = folder + L"\\large.db";
  Build(file, {.boms = kBoms, .lineFields = 6, .largeBom = 1800});
  const Data data(file);
  for (const Call& call : CallsOfOneBom(kBoms + 1, ", 1800 lines", {.ratio = 1.2})) Compare(call, data, true);
  AddNotice(data, kBoms + 1);
  Compare(StartOfNotice(kBoms + 1), data, true);
  AddCustomerBom(data, kBoms, kBoms + 1);
  Compare(CopyOfCustomerBom(kBoms, kBoms + 1), data, true);
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  return bench::UnderCom(argc, argv, 1, [&](const std::wstring& folder) {
    bench::ShortCalls(com::FromUtf8(argv[1]), folder);
    bench::LargeBom(folder);
  });
}
