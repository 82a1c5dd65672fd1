#include "cli/bom/Difference.h"

#include <gtest/gtest.h>

#include "tests/cli/bom/Bike.h"

namespace bomcall::bom {
namespace {

TEST(Difference, TellsAddedRemovedAndChangedLines) {
  Graph graph;
  graph.Add(MakeBom(1));
  graph.Add(MakeBom(2));
  graph.Add(Unit{1, L"pcs", Quantity::One()});
  graph.Add(MakeLine(1, 1, 10));
  graph.Add(MakeLine(1, 2, 11, L"2"));
  graph.Add(MakeLine(1, 3, 12));
  Line changed = MakeLine(2, 7, 11, L"2.5");
  changed.scrap = L"5";
  changed.operation = 10;
  changed.unit = 9;
  graph.Add(changed);
  graph.Add(MakeLine(2, 8, 10));
  graph.Add(MakeLine(2, 9, 13));
  graph.Finish();
  const auto differences = DifferencesOf(graph, *graph.BomOf(1), *graph.BomOf(2));
  ASSERT_EQ(differences.size(), 3u);
  EXPECT_EQ(differences[0].what,
            L"quantity 2 -> 2.5; unit pcs -> 9; base quantity 2 -> 2.5; operation 0 -> 10; scrap 0 -> 5");
  EXPECT_EQ(differences[1].before->item, 12);
  EXPECT_EQ(differences[1].after, nullptr);
  EXPECT_EQ(differences[2].before, nullptr);
  EXPECT_EQ(differences[2].after->item, 13);
}

TEST(Difference, MatchesLinesOfOneItemByOperationThenInOrder) {
  Graph graph;
  graph.Add(MakeBom(1));
  graph.Add(MakeBom(2));
  const auto add = [&](Id bom, int32_t entry, int32_t operation, const wchar_t* quantity) {
    Line line = MakeLine(bom, entry, 10, quantity);
    line.operation = operation;
    graph.Add(line);
  };
  add(1, 1, 10, L"1");
  add(1, 2, 20, L"2");
  add(1, 3, 30, L"3");
  add(2, 1, 20, L"2");
  add(2, 2, 10, L"1");
  add(2, 3, 40, L"3");
  add(2, 4, 40, L"9");
  graph.Finish();
  const auto differences = DifferencesOf(graph, *graph.BomOf(1), *graph.BomOf(2));
  ASSERT_EQ(differences.size(), 2u);
  EXPECT_EQ(differences[0].what, L"operation 30 -> 40");
  EXPECT_EQ(differences[1].after->entry, 4);
}

TEST(Difference, OfABomFromItselfIsNone) {
  Graph graph;
  graph.Add(MakeBom(1));
  graph.Add(MakeLine(1, 1, 10));
  graph.Add(MakeLine(1, 2, 10));
  graph.Finish();
  EXPECT_TRUE(DifferencesOf(graph, *graph.BomOf(1), *graph.BomOf(1)).empty());
}

} // namespace
} // namespace bomcall::bom
