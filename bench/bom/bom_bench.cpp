// Benchmarks of the console client's reports about BOMs: a tree of twelve levels and 100,000 lines, and where
// an item is used that 90,000 of them have, each beside reading the lines once.
//
// bom_bench [FOLDER]: the database is made in FOLDER, by default in build/bench.
#include "bench/UnderCom.h"
#include "bench/calls/Caller.h"
#include "bench/view/BrowserData.h"
#include "cli/Objects.h"
#include "cli/bom/Reader.h"
#include "cli/bom/Reports.h"
#include "cli/bom/Rows.h"

namespace bench {
namespace {

using bomcall::bom::Graph;
using bomcall::bom::Reader;
using bomcall::bom::RowView;

constexpr int kReportTurns = 5;

// Six BOMs of one line below each other, and below them 10,000 with ten lines each: the first ones lead to
// another BOM, the others all to the same screw.
void Fill(const Data& data) {
  data.Run(L"CREATE TABLE #n (i int NOT NULL)");
  data.Run(L"INSERT INTO #n VALUES (1)");
  for (int filled = 1; filled < 10006; filled *= 2)
    data.Run(L"INSERT INTO #n SELECT i + " + std::to_wstring(filled) + L" FROM #n WHERE i + " +
             std::to_wstring(filled) + L" <= 10006");
  data.Run(L"DELETE FROM t_ICItem");
  data.Run(
      L"INSERT INTO t_ICItem (FItemID, FNumber, FShortNumber, FName, FUnitID, FCUUnitID) SELECT i, '02.' + "
      L"CONVERT(VARCHAR, i), '', N'Part', 1, 1 FROM #n");
  data.Run(L"INSERT INTO t_ICItem (FItemID, FNumber, FShortNumber, FName, FUnitID, FCUUnitID) VALUES (20000, "
           L"'SCREW', '', N'Screw', 1, 1)");
  data.Run(
      L"INSERT INTO ICBOM (FInterID, FBOMNumber, FUseStatus, FVersion, FParentID, FItemID, FUnitID, FQty) "
      L"SELECT i, 'BOM' + CONVERT(VARCHAR, i), 1072, '1', 1, i, 1, 1 FROM #n");
  data.Run(
      L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty) SELECT i, 1, i + 1, 1, "
      L"1, 1 FROM #n WHERE i <= 6");
  data.Run(
      L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty) SELECT b.i, l.i, CASE "
      L"WHEN (b.i - 7) * 10 + l.i + 1 <= 10000 THEN (b.i - 7) * 10 + l.i + 7 ELSE 20000 END, 1, 1, 1 FROM "
      L"#n b, #n l WHERE b.i > 6 AND l.i <= 10");
}

double SecondsOfReading(const com::Object& connection) {
  return SecondsOf([&] {
    int64_t items = 0;
    bomcall::bom::ForEachRow(
        connection,
        L"SELECT FInterID, FEntryID, FItemID, FUnitID, FQty, FAuxQty, FScrap, FBeginDay, FEndDay, FOperSN, "
        L"FAuxPropID, FNote FROM ICBOMChild",
        [&](const RowView& row) { items += row.Number(2); });
    return items;
  });
}

void RunAll(const std::wstring& folder) {
  const std::wstring file = folder + L"\\levels.db";
  Build(file, {});
  const Data data(file);
  Fill(data);
  const com::Object context =
      bomcall::CreateObject(L"QorvaneGlobal.Global").Call(L"GetDataContext").AsObject();
  context.Call(L"BindDsn", data.Dsn());
  const com::Object connection = context.Call(L"GetConnectionObject").AsObject();
  const auto reading = [&] { return SecondsOfReading(connection); };
  SideBySide(
      {"bomcall bom tree, 100000 lines", "reading the lines once", {.ratio = 2}}, kReportTurns, 1,
      [&] {
        return SecondsOf([&] {
          const Graph graph = Reader(data.Dsn()).ReadBelow({L"BOM1"}, 0);
          return TreeGrid(graph, *graph.BomNumbered(L"BOM1"), bomcall::bom::Quantity::One(), 0, true);
        });
      },
      reading);
  SideBySide(
      {"bomcall bom where-used, 100000 lines", "reading the lines once", {.ratio = 2}}, kReportTurns, 1,
      [&] {
        return SecondsOf([&] {
          const Graph graph = Reader(data.Dsn()).ReadAbove(L"SCREW");
          return WhereUsedGrid(graph, *graph.ItemNumbered(L"SCREW"), false);
        });
      },
      reading);
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  return bench::UnderCom(argc, argv, 0, bench::RunAll);
}
