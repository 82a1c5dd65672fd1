// Benchmarks of BOM browsing: how long the calls take, and how their conversion of rows into collections
// stands between a floor (the same rows put into the same collections by direct calls) and a plain late-bound
// loop by names. Everything in one run, and the best of several rounds, so that the ratios can be compared.
//
// view_bench [FOLDER]: the databases are made there, by default in build/bench.
#include <objbase.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "bench/view/BrowserData.h"
#include "com/ComError.h"
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

constexpr int kRounds = 3;
constexpr int kTurns = 15;

double Milliseconds() {
  LARGE_INTEGER now;
  LARGE_INTEGER frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// The shortest of several runs; `prepare` is not timed.
template <class Prepare, class Work>
double Best(const Prepare& prepare, const Work& work, int rounds = kRounds) {
  double best = 0;
  for (int i = 0; i < rounds; ++i) {
    auto input = prepare();
    const double start = Milliseconds();
    {
      // What the work returns is held while the clock runs, its release is not timed.
      const auto result = work(input);
      const double time = Milliseconds() - start;
      if (i == 0 || time < best) best = time;
    }
  }
  return best;
}

template <class Work>
double Best(const Work& work) {
  return Best([] { return 0; }, [&work](int /*none*/) { return work(); });
}

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

struct Limit {
  const char* what;
  double value;
  double limit;
  bool atLeast;
};

void Judge(const Limit& limit) {
  const bool holds = limit.atLeast ? limit.value >= limit.limit : limit.value <= limit.limit;
  std::printf("    %-46s %7.2f  (%s %.2f) %s\n", limit.what, limit.value,
              limit.atLeast ? "at least" : "at most", limit.limit, holds ? "ok" : "MISSED");
}

// A call of the component under the host.
struct Reading {
  const char* name;
  const wchar_t* method;
  std::vector<Variant> arguments;  // after sDsn
  const char* notLinear = nullptr; // why doubled work may take more than twice the time
};

class Database {
 public:
  Database(const std::wstring& folder, const wchar_t* name, const Size& size) : file_(folder + L"\\" + name) {
    const double start = Milliseconds();
    Build(file_, size);
    std::printf("%-34s built in %.1f s\n", com::ToUtf8(name).c_str(), (Milliseconds() - start) / 1000);
  }

  std::wstring Dsn() const { return L"Provider=Embedded;Data Source=" + file_ + L";Language=en;SubID=SC"; }

  Object Read(const Reading& reading) const {
    std::vector<Variant> arguments{Dsn()};
    arguments.insert(arguments.end(), reading.arguments.begin(), reading.arguments.end());
    return view_.CallWith(reading.method, arguments).AsObject();
  }
  double TimeOf(const Reading& reading) const {
    return Best([&] { return Read(reading); });
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

// One call at two sizes, and its conversion at the larger one.
void Compare(const Reading& reading, const Database& half, const Database& whole) {
  const double halfTime = half.TimeOf(reading);
  const double time = whole.TimeOf(reading);
  const std::wstring statement = whole.StatementOf(reading);
  const double query = Best([&] { return whole.Open(statement); });
  const auto convert = [](const Object& rows) { return mbom::RecordsetToVector(mbom::Recordset(rows)); };
  Object recordset = whole.Open(statement);
  const auto fromFirst = [&recordset] {
    recordset.Call(L"MoveFirst");
    return recordset;
  };
  const auto rows = whole.Rows(statement);
  // In turns: what slows the machine down for a while slows both.
  double conversion = 0;
  double floor = 0;
  for (int i = 0; i < kTurns; ++i) {
    const double converted = Best(fromFirst, convert, 1);
    const double put = Best([] { return 0; }, [&rows](int /*none*/) { return PutDirectly(*rows); }, 1);
    conversion = i == 0 ? converted : std::min(conversion, converted);
    floor = i == 0 ? put : std::min(floor, put);
  }
  // It takes so long that once is enough.
  const double plain = Best(fromFirst, PutByName, 1);
  recordset = Object();

  // What is held at the most: the rows and the collections, just before the rows are released.
  const double before = MegabytesInUse();
  recordset = whole.Open(statement);
  const Object collections = convert(recordset);
  const double peak = MegabytesInUse() - before;
  recordset = Object();
  const double held = MegabytesInUse() - before;

  std::printf("\n%s: %zu rows, %zu columns\n", reading.name, rows->rowCount(), rows->columns().size());
  std::printf(
      "    call %.0f ms (half the size %.0f ms), query %.0f ms, conversion %.1f ms, floor %.1f ms, plain "
      "loop %.0f ms, memory %.1f of %.1f MB\n",
      time, halfTime, query, conversion, floor, plain, held, peak);
  Judge({"conversion to floor", conversion / floor, 1.25, false});
  Judge({"plain loop to conversion", plain / conversion, 8, true});
  if (reading.notLinear)
    std::printf("    %-46s %7.2f  (%s)\n", "doubled work", time / halfTime, reading.notLinear);
  else
    Judge({"doubled work", time / halfTime, 2.2, false});
  Judge({"peak memory to the collections", peak / held, 1.5, false});
}

void RunAll(const std::wstring& folder) {
  const Object none = Object::Create(L"ruvo10.Dictionary");
  const Object noGroups = Object::Create(L"ruvo10.Vector");
  {
    const Database half(folder, L"boms10000.db", {.boms = 10000});
    const Database whole(folder, L"boms20000.db", {.boms = 20000});
    Compare({"GetBomLdgInfo", L"GetBomLdgInfo", {}}, half, whole);
    Compare({"GetBomLstInfo", L"GetBomLstInfo", {noGroups, none, true}}, half, whole);
  }
  {
    const Database half(folder, L"lines5000.db", {.boms = 100, .linesPerBom = 50, .lineFields = 6});
    const Database whole(folder, L"lines10000.db", {.boms = 200, .linesPerBom = 50, .lineFields = 6});
    Compare({"GetBomEntryLdgInfo, 6 user-defined fields", L"GetBomEntryLdgInfo", {}}, half, whole);
  }
  {
    const Database half(folder, L"groups1000.db", {.groups = 1000});
    const Database whole(folder, L"groups2000.db", {.groups = 2000});
    Compare({"GetBomGroupList",
             L"GetBomGroupList",
             {noGroups, none, true, true},
             "its batch goes through all groups once for each group"},
            half, whole);
  }
  {
    constexpr int32_t kLines = 1800;
    const Database few(folder, L"few.db", {.boms = 1000, .largeBom = kLines});
    const Database many(folder, L"many.db", {.boms = 470000, .largeBom = kLines});
    const auto ledgerOf = [](const wchar_t* bom) {
      return Reading{"", L"GetBomEntryLdgInfo", {0, L"a.FInterID=" + std::wstring(bom), L"a.FEntryID"}};
    };
    const double fewTime = few.TimeOf(ledgerOf(L"1001"));
    const double manyTime = many.TimeOf(ledgerOf(L"470001"));
    std::printf(
        "\nGetBomEntryLdgInfo of one BOM of %d lines\n    among 1,000 BOMs %.1f ms, among 470,000 %.1f ms\n",
        kLines, fewTime, manyTime);
    Judge({"470,000 BOMs to 1,000", manyTime / fewTime, 1.5, false});
  }
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  if (argc > 2) {
    std::fputs("usage: view_bench [FOLDER]\n", stderr);
    return 2;
  }
  const std::wstring folder = argc == 2 ? com::FromUtf8(argv[1]) : L"build\\bench";
  CreateDirectoryW(folder.c_str(), nullptr);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int status = 0;
  try {
    bench::RunAll(folder);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "view_bench: %s\n", error.what());
    status = 2;
  }
  CoUninitialize();
  return status;
}
