#include "cli/Number.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include <limits>

namespace bomcall {
namespace {

using com::Variant;

std::wstring RoundTrip(std::string_view text) {
  const auto number = ParseDecimal(text);
  return number ? NumberText(*number).value_or(L"(no text)") : L"(none)";
}

TEST(Number, KeepsTheDigitsOfADecimal) {
  EXPECT_EQ(RoundTrip("0"), L"0");
  EXPECT_EQ(RoundTrip("100"), L"100");
  EXPECT_EQ(RoundTrip("-0.05"), L"-0.05");
  EXPECT_EQ(RoundTrip("10.50"), L"10.5");
  EXPECT_EQ(RoundTrip("5.00"), L"5");
  EXPECT_EQ(RoundTrip("79228162514264337593543950335"), L"79228162514264337593543950335");
  EXPECT_EQ(RoundTrip("0.0000000000000000000000000001"), L"0.0000000000000000000000000001");
}

TEST(Number, RefusesDigitsThatDoNotFit) {
  EXPECT_EQ(RoundTrip("79228162514264337593543950336"), L"(none)");
  EXPECT_EQ(RoundTrip("0.00000000000000000000000000001"), L"(none)");
}

TEST(Number, ShowsNumbersOfEveryType) {
  Variant money;
  money.raw().vt = VT_CY;
  money.raw().cyVal.int64 = std::numeric_limits<int64_t>::min();
  EXPECT_EQ(NumberText(money), L"-922337203685477.5808");
  EXPECT_EQ(NumberText(Variant(0.1)), L"0.1");
  EXPECT_EQ(NumberText(Variant(int16_t{-7})), L"-7");
  EXPECT_EQ(NumberText(Variant(std::numeric_limits<double>::infinity())), std::nullopt);
  EXPECT_EQ(NumberText(Variant(L"1")), std::nullopt);
  EXPECT_EQ(NumberText(Variant(true)), std::nullopt);
}

} // namespace
} // namespace bomcall
