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
  EXPECT_EQ(DisplayWidth(L"\xD83D\xDEB2"), 2u); // U+1F6B2, a bicycle
  EXPECT_EQ(DisplayWidth(L"\x231A"), 2u);       // a watch
  EXPECT_EQ(DisplayWidth(L"\x20DD\x0E31\xFE0F"),
            0u); // a ring, a Thai vowel and a variant, over what is before
  EXPECT_EQ(DisplayWidth(L"\x1112\x1161\x11AB"), 2u); // a syllable of three Hangul letters
  EXPECT_EQ(DisplayWidth(L"\x00AD"), 1u);
  EXPECT_EQ(DisplayWidth(L"\x303F"), 1u); // within a wide block, but narrow
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

TEST(Table, IsCutToTheWidthOfATerminal) {
  EXPECT_EQ(
      FormatTable({L"id", L"text"}, {{L"1", L"a long text that goes on"}, {L"2", L"车架车架车架车架"}}, 14),
      L"id  text\n"
      L"--  ----------\n"
      L"1   a long te…\n"
      L"2   车架车架…\n");
  // Columns of 8 stay.
  EXPECT_EQ(FormatTable({L"a", L"b"}, {{L"12345678", L"123456789"}}, 5), L"a         b\n"
                                                                         L"--------  --------\n"
                                                                         L"12345678  1234567…\n");
}

TEST(Table, HasABoldHeaderInColour) {
  EXPECT_EQ(FormatTable({L"a"}, {{L"x"}}, 0, true), L"\x1b[1ma\x1b[0m\n-\nx\n");
}

TEST(Table, OfNoRowsIsItsHeader) {
  EXPECT_EQ(FormatTable({L"a", L"b"}, {}), L"a  b\n-  -\n");
}

} // namespace
} // namespace bomcall
