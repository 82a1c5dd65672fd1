#include "src/frame/Convert.h"

#include <gtest/gtest.h>

#include "com/Object.h"
#include "com/Text.h"
#include "com/ValueText.h"
#include "src/frame/Sql.h"
#include "tests/support/Client.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

constexpr double kDay = 43895; // 2020-03-05

TEST(Convert, ComparesLateBoundValuesWithNumbers) {
  EXPECT_TRUE(Equals(53, 53));
  EXPECT_TRUE(Equals(L"53", 53));
  EXPECT_TRUE(Equals(L" 53.0 ", 53));
  EXPECT_TRUE(Equals(53.0, 53));
  EXPECT_TRUE(Equals(Variant(), 0));
  EXPECT_TRUE(Equals(true, -1));
  EXPECT_FALSE(Equals(52.5, 53));
  EXPECT_FALSE(Equals(Variant::Null(), 0));
  EXPECT_EQ(RaisedBy([] { Equals(L"abc", 53); }).code, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(RaisedBy([] { Equals(Object(), 53); }).code, DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(IsGreater(0.5, 0));
  EXPECT_FALSE(IsGreater(0, 0));
  EXPECT_FALSE(IsGreater(Variant::Null(), 0));
  EXPECT_FALSE(IsGreater(Variant(), 0));
}

TEST(Convert, ComparesDecimalsToTheirLastDigit) {
  // 100 and a little: with fewer digits it would be 100.
  VARIANT decimal{};
  decimal.decVal.Hi32 = 54210108;
  decimal.decVal.Lo64 = 11515845246265065473u; // 54210108 x 2^64 + this = 10^27 + 1
  decimal.decVal.scale = 25;
  decimal.vt = VT_DECIMAL;
  const Variant aboveHundred = Variant::Attach(decimal);
  EXPECT_FALSE(Equals(aboveHundred, 100));
  EXPECT_TRUE(IsGreater(aboveHundred, 100));

  decimal.decVal.Lo64 -= 1;
  const Variant hundred = Variant::Attach(decimal);
  EXPECT_TRUE(Equals(hundred, 100));
  EXPECT_FALSE(IsGreater(hundred, 100));
  EXPECT_FALSE(Equals(hundred, -1));
}

TEST(Convert, KnowsTrueFromOtherNumbers) {
  EXPECT_TRUE(IsTrue(true));
  EXPECT_TRUE(IsTrue(-1));
  EXPECT_TRUE(IsTrue(L"True"));
  EXPECT_TRUE(IsTrue(L"-1"));
  EXPECT_FALSE(IsTrue(L"1"));
  EXPECT_FALSE(IsTrue(L"2"));
  EXPECT_FALSE(IsTrue(L"0"));
  EXPECT_FALSE(IsTrue(L"False"));
  EXPECT_FALSE(IsTrue(1));
  EXPECT_FALSE(IsTrue(false));
  EXPECT_FALSE(IsTrue(Variant()));
  EXPECT_FALSE(IsTrue(Variant::Null()));
  EXPECT_EQ(RaisedBy([] { IsTrue(L"maybe"); }).code, DISP_E_TYPEMISMATCH);
}

TEST(Convert, ReadsTheNumberThatATextBeginsWith) {
  EXPECT_EQ(LeadingNumber(L"1"), 1);
  EXPECT_EQ(LeadingNumber(L"  -12.5 kg"), -12.5);
  EXPECT_EQ(LeadingNumber(L"+7"), 7);
  EXPECT_EQ(LeadingNumber(L".5"), 0.5);
  EXPECT_EQ(LeadingNumber(L"5.x"), 5);
  EXPECT_EQ(LeadingNumber(L"2e3"), 2000);
  EXPECT_EQ(LeadingNumber(L"2E+3 m"), 2000);
  EXPECT_EQ(LeadingNumber(L"25e-1"), 2.5);
  for (const wchar_t* two : {L"2e", L"2E", L"2e-", L"2e+", L"2ex", L"2x", L"2:", L"2."})
    EXPECT_EQ(LeadingNumber(two), 2) << com::ToUtf8(two);
  EXPECT_EQ(LeadingNumber(L"1,5"), 1);
  for (const wchar_t* none : {L"", L" ", L"-", L".", L"e5", L"abc", L"inf", L"nan", L"- 1", L"１"})
    EXPECT_EQ(LeadingNumber(none), 0) << com::ToUtf8(none);
}

TEST(Convert, NullIsNoNumber) {
  EXPECT_EQ(NumberIn(Variant::Null()), std::nullopt);
  EXPECT_EQ(NumberIn(L"2.5"), 2.5);
  VARIANT unknown{};
  unknown.vt = VT_UNKNOWN;
  EXPECT_EQ(RaisedBy([&] { NumberIn(Variant(unknown)); }).code, DISP_E_TYPEMISMATCH);
}

TEST(Convert, StampsDatesOnly) {
  EXPECT_EQ(TimeStamp(Variant::Date(kDay + 0.75)), L"2020/03/05 18:00:00");
  for (const Variant& none : {Variant(L"2020-03-05"), Variant(kDay), Variant::Date(1e9), Variant()})
    EXPECT_EQ(RaisedBy([&] { TimeStamp(none); }).code, DISP_E_TYPEMISMATCH);
}

TEST(Convert, TrimsBlanksOnly) {
  EXPECT_EQ(Trim(L"  a b\t "), L"a b\t");
  EXPECT_EQ(Trim(L"   "), L"");
  EXPECT_EQ(Trim(L"\x3000x\x3000"), L"\x3000x\x3000"); // an ideographic blank is a character
}

TEST(ToText, WritesValuesAsStatementsNeedThem) {
  EXPECT_EQ(com::ToText(Variant()), L"");
  EXPECT_EQ(com::ToText(Variant::Null()), L"");
  EXPECT_EQ(com::ToText(12), L"12");
  EXPECT_EQ(com::ToText(-0.5), L"-0.5");
  EXPECT_EQ(com::ToText(true), L"True");
  EXPECT_EQ(com::ToText(false), L"False");
  EXPECT_EQ(com::ToText(L"O'Neil"), L"O'Neil");
  EXPECT_EQ(com::ToText(Variant::Date(kDay)), L"2020-03-05");
  EXPECT_EQ(com::ToText(Variant::Date(kDay + 0.75)), L"2020-03-05 18:00:00");
  EXPECT_EQ(RaisedBy([] { com::ToText(Object()); }).code, DISP_E_TYPEMISMATCH);
}

TEST(Sql, TakesEverythingAsItStands) {
  EXPECT_EQ((Sql() << L"a='" << std::wstring(L"O'Neil") << L"', b=" << 7 << L", c=" << Variant(1.5) << L", d="
                   << Variant() << L"\r\n")
                .text(),
            L"a='O'Neil', b=7, c=1.5, d=\r\n");
}

} // namespace
} // namespace mbom::test
