#include "cli/bom/Day.h"

#include <gtest/gtest.h>

namespace bomcall::bom {
namespace {

TEST(Day, IsReadFromADate) {
  EXPECT_EQ(DayText(DayOf(0)), L"1899-12-30");
  EXPECT_EQ(DayText(DayOf(2)), L"1900-01-01");
  EXPECT_EQ(DayText(DayOf(46023)), L"2026-01-01");
  EXPECT_EQ(DayText(DayOf(73051)), L"2100-01-01");
  EXPECT_EQ(DayText(DayOf(-53688)), L"1753-01-01");
  EXPECT_EQ(DayText(DayOf(2958465)), L"9999-12-31");
}

TEST(Day, HasNoTime) {
  EXPECT_EQ(DayText(DayOf(2.75)), L"1900-01-01");
  EXPECT_EQ(DayText(DayOf(-1.75)), L"1899-12-29");
}

TEST(Day, ComesBehindNone) {
  EXPECT_LT(Day(), DayOf(-53688));
  EXPECT_LT(DayOf(2), DayOf(3));
  EXPECT_EQ(DayText(Day()), L"");
}

} // namespace
} // namespace bomcall::bom
