#include "tests/standin/Support.h"

namespace standin::test {
namespace {

std::wstring Format(const wchar_t* text, std::initializer_list<Variant> values) {
  return New(L"ruvo10.Global")
      .Call(L"FormatText", text, Variant::Array(values.begin(), values.size()))
      .AsText();
}

TEST(FormatText, ReplacesMarkersByTheValuesInOrder) {
  EXPECT_EQ(Format(L"%2 of %1: %1", {L"a", L"b"}), L"b of a: a");
  EXPECT_EQ(Format(L"物料[%1]的BOM%2", {L"电机", 12}), L"物料[电机]的BOM12");
  EXPECT_EQ(Format(L"nothing", {L"a"}), L"nothing");
}

TEST(FormatText, TakesAllDigitsOfAMarker) {
  EXPECT_EQ(Format(L"%10|%1|%11", {1, 2, 3, 4, 5, 6, 7, 8, 9, L"ten"}), L"ten|1|%11");
  EXPECT_EQ(Format(L"%99999999999999999999", {1}), L"%99999999999999999999");
}

TEST(FormatText, LeavesWhatIsNoMarkerAsItIs) {
  EXPECT_EQ(Format(L"100%, %%1 %2 %0 %01 %x %", {L"a"}), L"100%, %%1 %2 %0 %01 %x %");
  EXPECT_EQ(Format(L"%1", {}), L"%1");
}

TEST(FormatText, ConvertsValuesWithoutALocale) {
  EXPECT_EQ(Format(L"[%1][%2]", {Variant::Null(), Variant()}), L"[][]");
  EXPECT_EQ(Format(L"%1 %2", {1.5, true}), L"1.5 True");
  EXPECT_EQ(Format(L"%1 / %2", {Variant::Date(43831), Variant::Date(43831.5)}),
            L"2020-01-01 / 2020-01-01 12:00:00");
  EXPECT_EQ(Format(L"%1", {L"%2"}), L"%2");
}

TEST(FormatText, TakesAnArrayOfTextsAndRefusesWhatIsNone) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 5, 2);
  for (LONG i = 5; i <= 6; ++i) {
    BSTR text = SysAllocString(i == 5 ? L"five" : L"six");
    SafeArrayPutElement(array, &i, text);
    SysFreeString(text);
  }
  VARIANT raw{};
  raw.vt = VT_ARRAY | VT_BSTR;
  raw.parray = array;
  const Variant values = Variant::Attach(raw);
  EXPECT_EQ(New(L"ruvo10.Global").Call(L"FormatText", L"%1-%2", values), Variant(L"five-six"));
  EXPECT_EQ(RaisedBy([] { New(L"ruvo10.Global").Call(L"FormatText", L"%1", L"a"); }).code, Numbered(13));
}

} // namespace
} // namespace standin::test
