#include "cli/bom/WhereUsed.h"

#include <gtest/gtest.h>

#include "tests/cli/bom/Bike.h"

namespace bomcall::bom {
namespace {

std::vector<std::wstring> Shown(const std::vector<Use>& uses) {
  std::vector<std::wstring> result;
  result.reserve(uses.size());
  for (const Use& use : uses)
    result.push_back(std::to_wstring(use.level) + L" " + (use.bom ? use.bom->number : L"none"));
  return result;
}

using Uses = std::vector<std::wstring>;

// 5 is used in 3 and 4, both in 1 (also directly); 2 uses 3 but is not in use; 6 uses 2.
Graph Used() {
  Graph graph;
  for (Id id = 1; id <= 6; ++id) {
    if (id == 5) continue;
    Bom bom = MakeBom(id);
    bom.inUse = id != 2;
    graph.Add(bom);
  }
  for (const auto& [bom, item] :
       std::vector<std::pair<Id, Id>>{{3, 5}, {4, 5}, {1, 3}, {1, 4}, {1, 5}, {2, 3}, {6, 2}, {77, 5}})
    graph.Add(MakeLine(bom, item, item));
  graph.Finish();
  return graph;
}

TEST(WhereUsed, ShowsEachLineOnceTheNearestFirst) {
  const Graph graph = Used();
  EXPECT_EQ(Shown(UsesOf(graph, 5)), (Uses{L"1 B1", L"1 B3", L"1 B4", L"1 none", L"2 B1", L"2 B2", L"2 B1"}));
}

TEST(WhereUsed, FindsTheTopsInUse) {
  const Graph graph = Used();
  EXPECT_EQ(Shown(TopsOf(graph, UsesOf(graph, 5))), (Uses{L"1 B1"}));
  EXPECT_TRUE(UsesOf(graph, 1).empty());
}

TEST(WhereUsed, EndsInACycle) {
  Graph graph;
  graph.Add(MakeBom(1));
  graph.Add(MakeBom(2));
  graph.Add(MakeLine(1, 1, 2));
  graph.Add(MakeLine(2, 1, 1));
  graph.Finish();
  EXPECT_EQ(Shown(UsesOf(graph, 1)), (Uses{L"1 B2", L"2 B1"}));
}

} // namespace
} // namespace bomcall::bom
