#include "cli/Table.h"

#include <gtest/gtest.h>

namespace bomcall {
namespace {

TEST(Table, CountsWideCharactersTwice) {
  EXPECT_EQ(DisplayWidth(L"abc"), 3u);
  EXPECT_EQ(DisplayWidth(L"车架 Frame"), 10u);
  EXPECT_EQ(DisplayWidth(L"，"), 2u);
  EXPECT_EQ(DisplayWidth(L"\xD840\xDC00"), 2u); // a Chinese character outside the first plane
  EXPECT_EQ(DisplayWidth(L"e\x0301"), 1u);
  EXPECT_EQ(DisplayWidth(L""), 0u);
}

TEST(Table, AlignsItsColumns) {
  EXPECT_EQ(FormatTable({L"id", L"名称", L"n"}, {{L"1", L"车架", L"x"}, {L"1000", L"a", L""}}),
            L"id    名称  n\n"
            L"----  ----  -\n"
            L"1     车架  x\n"
            L"1000  a\n");
}

TEST(Table, KeepsARowOnOneLine) {
  EXPECT_EQ(FormatTable({L"text"}, {{L"a\r\nb\tc"}}), L"text\n-----\na b c\n");
}

TEST(Table, OfNoRowsIsItsHeader) {
  EXPECT_EQ(FormatTable({L"a", L"b"}, {}), L"a  b\n-  -\n");
}

} // namespace
} // namespace bomcall
