#include "cli/Grid.h"

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "cli/Json.h"

namespace bomcall {
namespace {

TEST(Grid, KeepsEqualNamesApart) {
  EXPECT_EQ(DistinctNames({L"a", L"b", L"A", L"a", L"", L"a_2"}),
            (std::vector<std::wstring>{L"a", L"b", L"A_3", L"a_4", L"column5", L"a_2"}));
}

TEST(Grid, OfAVectorHasTheKeysOfAllOfItsDictionaries) {
  const auto grid = GridOf(ReadJson(R"([{"a": 1}, {"B": 2, "A": null}, 5])"));
  ASSERT_TRUE(grid.has_value());
  EXPECT_EQ(TableOf(*grid, 0, false), L"a     B  item\n"
                                      L"----  -  ----\n"
                                      L"1\n"
                                      L"NULL  2\n"
                                      L"         5\n");
}

TEST(Grid, OfAPlainValueIsNone) {
  EXPECT_FALSE(GridOf(com::Variant(5)).has_value());
  EXPECT_FALSE(GridOf(com::Variant(com::Object())).has_value());
}

TEST(Grid, PicksColumns) {
  const auto grid = GridOf(ReadJson(R"([{"a": 1, "b": 2, "c": 3}])"));
  EXPECT_EQ(CsvOf(WithColumns(*grid, {L"C", L"a"})), L"c,a\r\n3,1\r\n");
  try {
    WithColumns(*grid, {L"d"});
    FAIL();
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "there is no column d; there are a, b, c");
  }
}

TEST(Grid, QuotesWhatCsvWouldNotTellApart) {
  const auto grid = GridOf(ReadJson(R"([{"a": "x,y", "b": "say \"hi\"", "c": "two\nlines", "d": null}])"));
  EXPECT_EQ(CsvOf(*grid), L"a,b,c,d\r\n\"x,y\",\"say \"\"hi\"\"\",\"two\nlines\",\r\n");
}

TEST(Grid, ShowsALineForEachValue) {
  const auto grid = GridOf(ReadJson(R"([{"名": 1, "long": null}, {"名": "x"}])"));
  EXPECT_EQ(VerticalOf(*grid), L"-- row 1\n名:   1\nlong: NULL\n-- row 2\n名:   x\nlong: \n");
  EXPECT_EQ(VerticalOf(Grid({L"a"})), L"(no rows)\n");
}

} // namespace
} // namespace bomcall
