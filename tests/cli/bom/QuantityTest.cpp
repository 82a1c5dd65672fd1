#include "cli/bom/Quantity.h"

#include <gtest/gtest.h>

namespace bomcall::bom {
namespace {

std::wstring ReadBack(const wchar_t* text) {
  const auto quantity = Quantity::Parse(text);
  return quantity ? quantity->Text() : L"(none)";
}

TEST(Quantity, ReadsDecimalNumbers) {
  EXPECT_EQ(ReadBack(L"0"), L"0");
  EXPECT_EQ(ReadBack(L"007.50"), L"7.5");
  EXPECT_EQ(ReadBack(L"-0.0000000001"), L"-0.0000000001");
  EXPECT_EQ(ReadBack(L"0.0333333333"), L"0.0333333333");
  EXPECT_EQ(ReadBack(L"123456789012345678.0123456789"), L"123456789012345678.0123456789");
  for (const wchar_t* text : {L"", L"-", L".", L"1e3", L"1,5", L"x", L"1.2.3", L" 1", L"--1"})
    EXPECT_EQ(ReadBack(text), L"(none)") << text;
}

TEST(Quantity, IsReadFromDigitsAndAScale) {
  EXPECT_EQ(Quantity::Scaled(0, 10, false).Text(), L"0");
  EXPECT_EQ(Quantity::Scaled(0, 0, true).Text(), L"0");
  EXPECT_EQ(Quantity::Scaled(10000000000, 10, false).Text(), L"1");
  EXPECT_EQ(Quantity::Scaled(333333333, 10, true).Text(), L"-0.0333333333");
  EXPECT_EQ(Quantity::Scaled(18446744073709551615u, 10, false).Text(), L"1844674407.3709551615");
  EXPECT_EQ(Quantity::Scaled(25, 1, false), *Quantity::Parse(L"2.5"));
}

TEST(Quantity, StaysExact) {
  const Quantity third = Quantity::One() / *Quantity::Parse(L"3");
  EXPECT_EQ((third * *Quantity::Parse(L"3")).Text(), L"1");
  EXPECT_EQ(third.Text(), L"0.33333333333333333333");
  EXPECT_EQ((third + third).Text(), L"0.66666666666666666667");
  // Twelve levels of 0.1 and back.
  Quantity product = Quantity::One();
  for (int i = 0; i < 12; ++i) product = product * *Quantity::Parse(L"0.0333333333");
  for (int i = 0; i < 12; ++i) product = product / *Quantity::Parse(L"0.0333333333");
  EXPECT_EQ(product, Quantity::One());
}

TEST(Quantity, TimesOneAndByOneIsTheSame) {
  const Quantity third = Quantity::One() / *Quantity::Parse(L"3");
  EXPECT_EQ(third * Quantity::One(), third);
  EXPECT_EQ(Quantity::One() * third, third);
  EXPECT_EQ(third / Quantity::One(), third);
  const Quantity minusOne = *Quantity::Parse(L"-1");
  EXPECT_EQ((third * minusOne).Text(), L"-0.33333333333333333333");
  EXPECT_EQ((third / minusOne).Text(), L"-0.33333333333333333333");
  EXPECT_TRUE((third * Quantity()).IsZero());
  EXPECT_FALSE(third.IsZero());
}

TEST(Quantity, ShowsWholeNumbersOfAnySize) {
  for (const wchar_t* text :
       {L"9223372036854775807", L"-9223372036854775807", L"9223372036854775808", L"-9223372036854775808",
        L"18446744073709551616", L"-100000000000000000000000000000"})
    EXPECT_EQ(ReadBack(text), text);
}

TEST(Quantity, RoundsOnlyWhatIsShown) {
  EXPECT_EQ((Quantity::One() / *Quantity::Parse(L"200000000000000000000")).Text(), L"0.00000000000000000001");
  EXPECT_EQ((Quantity::One() / *Quantity::Parse(L"300000000000000000000")).Text(), L"0");
  EXPECT_EQ((Quantity::One() / *Quantity::Parse(L"-300000000000000000000")).Text(), L"0");
}

} // namespace
} // namespace bomcall::bom
