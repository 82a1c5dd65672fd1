#include "cli/bom/Pictures.h"

#include <gtest/gtest.h>

#include "tests/cli/bom/Bike.h"

namespace bomcall::bom {
namespace {

Graph Marked() {
  Graph graph;
  graph.Add(Unit{1, L"pcs", Quantity::One()});
  for (Id id = 1; id <= 3; ++id) graph.Add(MakeItem(id));
  graph.Add(Item{4, L"a<b", L"\"q\" & \\", 1});
  graph.Add(MakeBom(1));
  graph.Add(MakeBom(2));
  graph.Add(MakeLine(1, 1, 2, L"2"));
  graph.Add(MakeLine(1, 2, 4));
  graph.Add(MakeLine(2, 1, 4, L"3"));
  graph.Finish();
  return graph;
}

TEST(Pictures, OfGraphvizHaveANodeAnItem) {
  const Graph graph = Marked();
  EXPECT_EQ(DotOf(graph, *graph.BomOf(1), 0), L"digraph bom {\n"
                                              L"  rankdir=LR;\n"
                                              L"  node [shape=box];\n"
                                              L"  i1 [label=\"I1\\nname 1\"];\n"
                                              L"  i2 [label=\"I2\\nname 2\"];\n"
                                              L"  i1 -> i2 [label=\"2 pcs\"];\n"
                                              L"  i4 [label=\"a<b\\n\\\"q\\\" & \\\\\"];\n"
                                              L"  i1 -> i4 [label=\"1 pcs\"];\n"
                                              L"  i2 -> i4 [label=\"3 pcs\"];\n"
                                              L"}\n");
}

TEST(Pictures, OfAPageNestAndEscape) {
  const Graph graph = Marked();
  const std::wstring page = HtmlOf(graph, *graph.BomOf(1), Of(L"5"), 0);
  EXPECT_NE(page.find(L"<ul>\n"
                      L"<li><details open><summary><b>5</b> pcs I1 name 1 (B1)</summary><ul>\n"
                      L"<li><details open><summary><b>10</b> pcs I2 name 2 (B2)</summary><ul>\n"
                      L"<li><span><b>30</b> pcs a&lt;b \"q\" &amp; \\</span></li>\n"
                      L"</ul></details></li>\n"
                      L"<li><span><b>5</b> pcs a&lt;b \"q\" &amp; \\</span></li>\n"
                      L"</ul></details></li>\n"
                      L"</ul>\n</body>"),
            std::wstring::npos);
  EXPECT_EQ(HtmlOf(graph, *graph.BomOf(1), Of(L"1"), 1).find(L"a&lt;b"),
            HtmlOf(graph, *graph.BomOf(1), Of(L"1"), 1).rfind(L"a&lt;b"));
}

} // namespace
} // namespace bomcall::bom
