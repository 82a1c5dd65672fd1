#include "cli/bom/Explosion.h"

#include <gtest/gtest.h>

#include "tests/cli/bom/Bike.h"

namespace bomcall::bom {
namespace {

// 1 is made of two 2 and half a 3; 2 of three 3 and a 4, for five of it; 4 is bought.
Graph Small() {
  Graph graph;
  for (Id id = 1; id <= 4; ++id) graph.Add(MakeItem(id));
  graph.Add(MakeBom(1));
  Bom forFive = MakeBom(2);
  forFive.quantity = Of(L"5");
  graph.Add(forFive);
  graph.Add(MakeLine(2, 2, 4));
  graph.Add(MakeLine(2, 1, 3, L"3"));
  graph.Add(MakeLine(1, 1, 2, L"2"));
  graph.Add(MakeLine(1, 2, 3, L"0.5"));
  graph.Finish();
  return graph;
}

std::vector<std::wstring> Exploded(const Graph& graph, Id bom, const wchar_t* quantity, int depth = 0) {
  std::vector<std::wstring> nodes;
  Explode(graph, *graph.BomOf(bom), Of(quantity), depth, [&](const Node& node) {
    nodes.push_back(std::to_wstring(node.level) + L" " + std::to_wstring(node.item) + L" x " +
                    node.quantity.Text() + (node.cycle ? L" cycle" : L""));
  });
  return nodes;
}

using Nodes = std::vector<std::wstring>;

TEST(Explosion, MultipliesByLevel) {
  EXPECT_EQ(Exploded(Small(), 1, L"10"),
            (Nodes{L"0 1 x 10", L"1 2 x 20", L"2 3 x 12", L"2 4 x 4", L"1 3 x 5"}));
  EXPECT_EQ(Exploded(Small(), 1, L"10", 1), (Nodes{L"0 1 x 10", L"1 2 x 20", L"1 3 x 5"}));
}

TEST(Explosion, AddsUpWhatIsBought) {
  const Graph graph = Small();
  const Totals totals = TotalsOf(graph, *graph.BomOf(1), Of(L"10"));
  ASSERT_EQ(totals.bought.size(), 2u);
  EXPECT_EQ(totals.bought[0].item, 3);
  EXPECT_EQ(totals.bought[0].quantity.Text(), L"17");
  EXPECT_EQ(totals.bought[1].quantity.Text(), L"4");
  EXPECT_FALSE(totals.cycle);
}

TEST(Explosion, SaysACycleAndGoesNoFurther) {
  Graph graph;
  graph.Add(MakeBom(1));
  graph.Add(MakeBom(2));
  graph.Add(MakeLine(1, 1, 2));
  graph.Add(MakeLine(2, 1, 1));
  graph.Add(MakeLine(2, 2, 9));
  graph.Finish();
  EXPECT_EQ(Exploded(graph, 1, L"1"), (Nodes{L"0 1 x 1", L"1 2 x 1", L"2 1 x 1 cycle", L"2 9 x 1"}));
  const Totals totals = TotalsOf(graph, *graph.BomOf(1), Of(L"1"));
  EXPECT_TRUE(totals.cycle);
  ASSERT_EQ(totals.bought.size(), 1u);
  EXPECT_EQ(totals.bought[0].item, 9);
}

TEST(Explosion, GoesOnInTheNewestBomInUseOrTheOneThatIsNamed) {
  Graph graph;
  graph.Add(MakeBom(1));
  for (const Id id : {21, 22, 23}) {
    Bom bom = MakeBom(id);
    bom.item = 2;
    bom.inUse = id != 23;
    graph.Add(bom);
    graph.Add(MakeLine(id, 1, id * 10));
  }
  Line named = MakeLine(1, 2, 2);
  named.customBom = 21;
  graph.Add(MakeLine(1, 1, 2));
  graph.Add(named);
  graph.Finish();
  EXPECT_EQ(Exploded(graph, 1, L"1"),
            (Nodes{L"0 1 x 1", L"1 2 x 1", L"2 220 x 1", L"1 2 x 1", L"2 210 x 1"}));
}

// A machine's stack would not hold such a depth.
TEST(Explosion, GoesAsDeepAsTheBomIs) {
  constexpr Id kLevels = 100000;
  Graph graph;
  for (Id id = 1; id <= kLevels; ++id) {
    graph.Add(MakeBom(id));
    graph.Add(MakeLine(id, 1, id + 1));
  }
  graph.Finish();
  int deepest = 0;
  Explode(graph, *graph.BomOf(1), Of(L"1"), 0, [&](const Node& node) { deepest = node.level; });
  EXPECT_EQ(deepest, kLevels);
  const Totals totals = TotalsOf(graph, *graph.BomOf(1), Of(L"2"));
  ASSERT_EQ(totals.bought.size(), 1u);
  EXPECT_EQ(totals.bought[0].quantity.Text(), L"2");
}

// Each of 40 levels uses the next one twice: 2^40 ways lead to the last, which are not walked one by one.
TEST(Explosion, AddsUpWithoutWalkingEveryWay) {
  Graph graph;
  for (Id id = 1; id <= 40; ++id) {
    graph.Add(MakeBom(id));
    graph.Add(MakeLine(id, 1, id + 1));
    graph.Add(MakeLine(id, 2, id + 1));
  }
  graph.Finish();
  const Totals totals = TotalsOf(graph, *graph.BomOf(1), Of(L"1"));
  ASSERT_EQ(totals.bought.size(), 1u);
  EXPECT_EQ(totals.bought[0].quantity.Text(), L"1099511627776");
  EXPECT_THROW(Explode(graph, *graph.BomOf(1), Of(L"1"), 0, [](const Node& /*node*/) {}), TooManyNodes);
}

} // namespace
} // namespace bomcall::bom
