// Benchmarks of BOM browsing: the conversion of rows into collections beside a floor (the same rows put into
// the same collections by direct calls) and a plain late-bound loop by names; calls beside their queries, at
// two sizes, with user-defined fields and without, among few BOMs and many.
//
// view_bench [FOLDER]: the databases are made there, by default in build/bench.
#include <windows.h>

#include <array>
#include <vector>

#include "bench/SideBySide.h"
#include "bench/UnderCom.h"
#include "bench/view/BrowserData.h"
#include "com/DispatchObject.h"
#include "com/Text.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/globals/RowConversion.h"
#include "standin/ado/Connection.h"
#include "standin/foundation/Dictionary.h"
#include "standin/foundation/Vector.h"

namespace bench {
namespace {

using com::Object;
using com::Variant;

constexpr int kTurns = 11;
constexpr int kFewTurns = 3; // of what takes long

// The bytes in use in all heaps of the process.
double MegabytesInUse() {
  std::array<HANDLE, 64> heaps{};
  const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
  double bytes = 0;
  for (DWORD i = 0; i < count && i < heaps.size(); ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry))
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData + entry.cbOverhead;
    HeapUnlock(heaps[i]);
  }
  return bytes / (1024.0 * 1024.0);
}

// A call of the component under the host.
struct Reading {
  const char* name;
  const wchar_t* method;
  std::vector<Variant> arguments; // after sDsn
  bool isLinear = true;           // whether doubled work should take twice the time
};

class Database {
 public:
  Database(const std::wstring& folder, const wchar_t* name, const Size& size) : file_(folder + L"\\" + name) {
    Build(file_, size);
  }

  std::wstring Dsn() const { return L"Provider=Embedded;Data Source=" + file_ + L";Language=en;SubID=SC"; }

  Object Read(const Reading& reading) const {
    std::vector<Variant> arguments{Dsn()};
    arguments.insert(arguments.end(), reading.arguments.begin(), reading.arguments.end());
    return view_.CallWith(reading.method, arguments).AsObject();
  }
  double TimeOf(const Reading& reading) const {
    return SecondsOf([&] { return Read(reading); });
  }
  // The statement whose rows the call returns.
  std::wstring StatementOf(const Reading& reading) const {
    const Object trace = Object::Create(L"ErpStandIn.Trace");
    trace.Call(L"Clear");
    trace.Call(L"Start");
    Read(reading);
    trace.Call(L"Stop");
    std::wstring longest;
    for (int32_t i = 1; i <= trace.Get(L"Count").AsLong(); ++i) {
      const std::wstring event = trace.Get(L"Item", i).AsText();
      const size_t tab = event.find(L'\t');
      if ((event.starts_with(L"Open") || event.starts_with(L"Execute")) &&
          event.size() - tab > longest.size())
        longest = event.substr(tab + 1);
    }
    trace.Call(L"Clear");
    return longest;
  }

  Object Open(const std::wstring& statement) const {
    Object rows = Object::Create(L"ADODB.Recordset");
    rows.Put(L"CursorLocation", 3);
    rows.Call(L"Open", statement, Dsn());
    rows.Put(L"ActiveConnection", Object());
    return rows;
  }
  // The same rows without any object around them.
  std::shared_ptr<const standin::ado::RowSet> Rows(const std::wstring& statement) const {
    const auto connection = com::Make<standin::ado::Connection>();
    connection->object().Open(Dsn(), Variant::Missing(), Variant::Missing(), -1);
    return connection->object().Run(statement, standin::ado::CommandType::Text).Take(true).rows;
  }

 private:
  std::wstring file_;
  Object view_ =
      Object::Create(L"ErpStandIn.Host").Call(L"CreateObject", L"QorvaneMBomBill.BomView").AsObject();
};

// The floor: direct calls, no dispatch.
Object PutDirectly(const standin::ado::RowSet& rows) {
  const auto vector = com::Make<standin::Vector>();
  std::vector<Variant> names;
  for (const standin::ado::RowColumn& column : rows.columns()) names.emplace_back(column.name);
  for (size_t i = 0; i < rows.rowCount(); ++i) {
    const auto row = com::Make<standin::Dictionary>();
    for (size_t column = 0; column < names.size(); ++column)
      row->object().PutValue(names[column], rows.Value(i, column));
    vector->object().Add(com::ToObject(row));
  }
  return com::ToObject(vector);
}

// The plain loop: every member by its name, every field by its name, as a script would.
Object PutByName(const Object& recordset) {
  Object vector = Object::Create(L"ruvo10.Vector");
  const Object fields = recordset.Get(L"Fields").AsObject();
  const int32_t count = fields.Get(L"Count").AsLong();
  for (; !recordset.Get(L"EOF").AsBool(); recordset.Call(L"MoveNext")) {
    const Object row = Object::Create(L"ruvo10.Dictionary");
    for (int32_t i = 0; i < count; ++i) {
      const std::wstring name =
          recordset.Get(L"Fields").AsObject().Get(L"Item", i).AsObject().Get(L"Name").AsText();
      row.Put(L"Value", name,
              recordset.Get(L"Fields").AsObject().Get(L"Item", name).AsObject().Get(L"Value"));
    }
    vector.Call(L"Add", row);
  }
  return vector;
}

// One call at two sizes, and its query and its conversion at the larger one.
void Compare(const Reading& reading, const Database& half, double halfSize, const Database& whole) {
  const std::string name = reading.name;
  const std::wstring statement = whole.StatementOf(reading);
  const auto convert = [](const Object& rows) { return mbom::RecordsetToVector(mbom::Recordset(rows)); };
  Object recordset = whole.Open(statement);
  const auto ofAll = [&recordset](const auto& work) {
    recordset.Call(L"MoveFirst");
    return SecondsOf([&] { return work(recordset); });
  };
  const auto rows = whole.Rows(statement);
  const std::string what = name + ", " + std::to_string(rows->rowCount()) + " rows to collections";
  SideBySide(
      {what, "put in by direct calls", {.ratio = 1.08}}, kTurns, 1, [&] { return ofAll(convert); },
      [&] { return SecondsOf([&] { return PutDirectly(*rows); }); });
  SideBySide(
      {what + ", plainly by names", "the component's way", {.ratio = 10, .isLeast = true}}, 1, 1,
      [&] { return ofAll(PutByName); }, [&] { return ofAll(convert); });
  recordset = Object();

  // What is held at the most: the rows and the collections, just before the rows are released.
  const double before = MegabytesInUse();
  recordset = whole.Open(statement);
  const Object collections = convert(recordset);
  const double peak = MegabytesInUse() - before;
  recordset = Object();
  const double held = MegabytesInUse() - before;
  PrintValue({name + ", memory at its peak", "what is returned", {.ratio = 1.15}}, peak, held);

  std::vector<double> halfTimes;
  std::vector<double> times;
  for (int turn = 0; turn < kFewTurns; ++turn) {
    halfTimes.push_back(half.TimeOf(reading));
    times.push_back(whole.TimeOf(reading));
  }
  PrintRow({name + ", twice the size", "half of it", {.ratio = reading.isLinear ? 2.2 : 0}}, times,
           halfTimes);
  PrintPoint(name, halfSize, Median(halfTimes));
  PrintPoint(name, 2 * halfSize, Median(times));
}

// The tree's call beside its batch.
void CompareTree(const Reading& reading, const Database& database, int32_t groups) {
  const std::wstring statement = database.StatementOf(reading);
  SideBySide(
      {std::string(reading.name) + ", " + std::to_string(groups) + " groups",
       "its batch on the engine",
       {.ratio = 1.1}},
      kFewTurns, 1, [&] { return database.TimeOf(reading); },
      [&] { return SecondsOf([&] { return database.Open(statement); }); });
}

void RunAll(const std::wstring& folder) {
  const Object none = Object::Create(L"ruvo10.Dictionary");
  const Object noGroups = Object::Create(L"ruvo10.Vector");
  {
    const Database half(folder, L"boms10000.db", {.boms = 10000});
    const Database whole(folder, L"boms20000.db", {.boms = 20000});
    Compare({"GetBomLdgInfo", L"GetBomLdgInfo", {}}, half, 10000, whole);
    Compare({"GetBomLstInfo", L"GetBomLstInfo", {noGroups, none, true}}, half, 10000, whole);
  }
  {
    const Database half(folder, L"lines5000.db", {.boms = 100, .linesPerBom = 50, .lineFields = 6});
    const Database whole(folder, L"lines10000.db", {.boms = 200, .linesPerBom = 50, .lineFields = 6});
    const Reading ledger{"GetBomEntryLdgInfo", L"GetBomEntryLdgInfo", {}};
    Compare(ledger, half, 5000, whole);
    const Database without(folder, L"plain10000.db", {.boms = 200, .linesPerBom = 50});
    SideBySide(
        {"GetBomEntryLdgInfo, 10000 lines with 6 user-defined fields", "without them", {.ratio = 2}},
        kFewTurns, 1, [&] { return whole.TimeOf(ledger); }, [&] { return without.TimeOf(ledger); });
  }
  {
    const Database half(folder, L"groups1000.db", {.groups = 1000});
    const Database whole(folder, L"groups2000.db", {.groups = 2000});
    // Its batch goes through all groups once for each group.
    const Reading tree{"GetBomGroupList", L"GetBomGroupList", {noGroups, none, true, true}, false};
    Compare(tree, half, 1000, whole);
    CompareTree(tree, half, 1000);
    CompareTree(tree, whole, 2000);
    const Database twice(folder, L"groups4000.db", {.groups = 4000});
    CompareTree(tree, twice, 4000);
  }
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  return bench::UnderCom(argc, argv, 0, bench::RunAll);
}
