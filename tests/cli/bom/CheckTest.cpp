#include "cli/bom/Check.h"

#include <gtest/gtest.h>

#include "cli/bom/Cycles.h"
#include "tests/cli/bom/Bike.h"

namespace bomcall::bom {
namespace {

// A graph whose items and units are all there.
Graph Sound(Id items) {
  Graph graph;
  graph.Add(Unit{1, L"pcs", Quantity::One()});
  for (Id id = 1; id <= items; ++id) graph.Add(MakeItem(id));
  return graph;
}

std::vector<std::wstring> Found(Graph& graph) {
  graph.Finish();
  std::vector<std::wstring> result;
  for (const Finding& finding : Check(graph))
    result.push_back(finding.kind + L" " + finding.bom + L"/" + std::to_wstring(finding.entry) + L": " +
                     finding.what);
  return result;
}

using Findings = std::vector<std::wstring>;

TEST(BomCheck, HasNothingToSayOfASoundBom) {
  Graph graph = Sound(3);
  graph.Add(MakeBom(1));
  graph.Add(MakeLine(1, 1, 2));
  graph.Add(MakeLine(1, 2, 3));
  EXPECT_EQ(Found(graph), Findings{});
}

TEST(BomCheck, FindsCyclesOfAnyLength) {
  Graph graph = Sound(6);
  for (Id id = 1; id <= 5; ++id) graph.Add(MakeBom(id));
  for (const auto& [bom, item] : std::vector<std::pair<Id, Id>>{{1, 2}, {2, 3}, {3, 1}, {4, 4}, {5, 6}})
    graph.Add(MakeLine(bom, 1, item));
  EXPECT_EQ(Found(graph), (Findings{L"cycle B1/0: B1 > B2 > B3 > B1", L"cycle B4/0: B4 > B4"}));
}

TEST(BomCheck, FindsADraftThatHoldsItsOwnItem) {
  Graph graph = Sound(1);
  Bom draft = MakeBom(1);
  draft.inUse = false;
  graph.Add(draft);
  graph.Add(MakeLine(1, 1, 1));
  EXPECT_EQ(Found(graph), Findings{L"cycle B1/1: the line is the BOM's own item, I1"});
}

TEST(BomCheck, FindsWhatIsNotThere) {
  Graph graph = Sound(1);
  Bom bom = MakeBom(1);
  bom.unit = 7;
  graph.Add(bom);
  Bom orphan = MakeBom(2);
  graph.Add(orphan);
  Line line = MakeLine(1, 3, 99);
  line.unit = 8;
  graph.Add(line);
  graph.Add(MakeLine(55, 1, 1));
  EXPECT_EQ(Found(graph),
            (Findings{L"missing unit B1/0: there is no unit 7", L"missing item B1/3: there is no item 99",
                      L"missing unit B1/3: there is no unit 8",
                      L"missing parent B2/0: there is no item 2 that it makes",
                      L"missing parent 55/1: there is no BOM 55 that the line belongs to"}));
}

TEST(BomCheck, FindsLinesOfOneItemThatAreValidOnTheSameDay) {
  using namespace std::chrono_literals;
  Graph graph = Sound(3);
  graph.Add(MakeBom(1));
  const auto add = [&](int32_t entry, Id item, Day from, Day to, int32_t operation = 0) {
    Line line = MakeLine(1, entry, item);
    line.beginDay = from;
    line.endDay = to;
    line.operation = operation;
    graph.Add(line);
  };
  add(1, 2, On(2026y / 1 / 1), On(2026y / 12 / 31));
  add(2, 2, On(2026y / 3 / 1), On(2026y / 3 / 31));
  add(3, 2, On(2026y / 12 / 31), On(2027y / 1 / 31));
  add(4, 2, On(2027y / 2 / 1), On(2027y / 2 / 28));
  add(5, 2, On(2026y / 1 / 1), On(2026y / 12 / 31), 10); // another operation
  add(6, 3, On(2026y / 6 / 1), On(2026y / 1 / 1));       // never valid
  add(7, 3, On(2026y / 1 / 1), On(2026y / 12 / 31));
  EXPECT_EQ(
      Found(graph),
      (Findings{
          L"overlap B1/2: I2 from 2026-03-01 to 2026-03-31 is valid with line 1, from 2026-01-01 to 2026-12-31",
          L"overlap B1/3: I2 from 2026-12-31 to 2027-01-31 is valid with line 1, from 2026-01-01 to "
          L"2026-12-31"}));
}

TEST(BomCheck, FindsItemsWithSeveralBomsInUse) {
  Graph graph = Sound(1);
  graph.Add(MakeBom(1));
  Bom second = MakeBom(2);
  second.item = 1;
  graph.Add(second);
  EXPECT_EQ(Found(graph), Findings{L"several in use B2/0: I1 is made by B1, B2"});
}

TEST(BomCheck, LeavesCancelledBomsAlone) {
  Graph graph = Sound(0);
  Bom bom = MakeBom(1);
  bom.cancelled = true;
  bom.inUse = false;
  graph.Add(bom);
  graph.Add(MakeLine(1, 1, 1));
  EXPECT_EQ(Found(graph), Findings{});
}

// A ring of 100,000 BOMs, which a recursion would not come round.
TEST(Cycles, AreFoundHoweverLongTheyAre) {
  constexpr Id kBoms = 100000;
  Graph graph;
  for (Id id = 1; id <= kBoms; ++id) {
    graph.Add(MakeBom(id));
    graph.Add(MakeLine(id, 1, id % kBoms + 1));
  }
  graph.Finish();
  const auto cycles = CyclesOf(graph);
  ASSERT_EQ(cycles.size(), 1u);
  EXPECT_EQ(cycles[0].size(), static_cast<size_t>(kBoms) + 1);
}

} // namespace
} // namespace bomcall::bom
