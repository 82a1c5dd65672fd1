// Benchmark of imports: ten thousand BOMs of one line, one by one in a host, beside the statements that they
// send, each BOM in a transaction of its own.
//
// imports_bench [FOLDER]: the databases are made in FOLDER, by default in build/bench.
#include "bench/UnderCom.h"
#include "bench/calls/Caller.h"
#include "bench/view/BrowserData.h"

namespace bench {
namespace {

using com::Object;
using com::Variant;
using Statements = std::vector<std::wstring>;

constexpr int kBoms = 10000;
constexpr int kTurnsOfImports = 9; // and one that does not count
constexpr int kBomsOfATurn = kBoms / (kTurnsOfImports + 1);

Object Filled(std::initializer_list<std::pair<const wchar_t*, Variant>> values) {
  Object dictionary = Object::Create(L"ruvo10.Dictionary");
  for (const auto& [name, value] : values) dictionary.Put(L"Value", name, value);
  return dictionary;
}

Object Bom(int number) {
  const Object line = Filled({{L"EntryItem", 1 + number % 1000},
                              {L"Qty", 2},
                              {L"Scrap", 0},
                              {L"Oper", 0},
                              {L"MachinePos", L""},
                              {L"Note", L"imported"},
                              {L"MaterielType", 371},
                              {L"MarshalType", 385},
                              {L"Percent", 100},
                              {L"OffSetDay", 0},
                              {L"BackFlush", 1059},
                              {L"Stock", 801},
                              {L"SP", 0}});
  Object lines = Object::Create(L"ruvo10.Vector");
  lines.Call(L"Add", line);
  return Filled({{L"BOMNumber", L"IMP" + std::to_wstring(1000000 + number)},
                 {L"UseStatus", 1072},
                 {L"Version", L"1"},
                 {L"Parent", 1},
                 {L"Item", 1 + number % 1000},
                 {L"Qty", 1},
                 {L"Yield", 100},
                 {L"Routing", 0},
                 {L"BOMType", 0},
                 {L"Note", L""},
                 {L"Entry", lines}});
}

// A database that imports go into, by the component or by their statements.
class Target {
 public:
  explicit Target(const std::wstring& file) : data_(Made(file)) {}

  void Import(const Object& bom) const { import_.Call(L"UpdateBOM", data_.Dsn(), bom); }
  void Run(const Statements& statements) const {
    data_.Begin();
    for (const std::wstring& statement : statements) data_.Run(statement);
    data_.Commit();
  }

 private:
  static std::wstring Made(const std::wstring& file) {
    Build(file, {});
    return file;
  }

  Data data_;
  Object import_ = Create(L"BOMImport", true);
};

void RunAll(const std::wstring& folder) {
  std::vector<Object> boms;
  std::vector<Statements> statements;
  const Target first(folder + L"\\imports-statements.db");
  for (int i = 0; i < kBoms; ++i) {
    boms.push_back(Bom(i));
    statements.push_back(StatementsOf([&] { first.Import(boms.back()); }));
  }
  const Target imports(folder + L"\\imports.db");
  const Target engine(folder + L"\\imports-engine.db");
  size_t imported = 0;
  size_t executed = 0;
  SideBySide(
      {"10000 imports one by one, hosted", "their statements", {.ratio = 1.3}}, kTurnsOfImports, kBomsOfATurn,
      [&] {
        return SecondsOf([&] {
          for (int i = 0; i < kBomsOfATurn; ++i) imports.Import(boms[imported++]);
          return 0;
        });
      },
      [&] {
        return SecondsOf([&] {
          for (int i = 0; i < kBomsOfATurn; ++i) engine.Run(statements[executed++]);
          return 0;
        });
      });
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  return bench::UnderCom(argc, argv, 0, bench::RunAll);
}
