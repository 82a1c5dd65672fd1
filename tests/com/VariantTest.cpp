#include "com/Variant.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include <functional>

#include "com/ComError.h"
#include "com/Object.h"
#include "com/Text.h"
#include "tests/com/Probe.h"
#include "tests/support/Printing.h"

namespace com {
namespace {

TEST(Variant, HoldsWhatItWasMadeFrom) {
  EXPECT_EQ(Variant(true).type(), VT_BOOL);
  EXPECT_EQ(Variant(int16_t{3}).type(), VT_I2);
  EXPECT_EQ(Variant(3).type(), VT_I4);
  EXPECT_EQ(Variant(3.5).type(), VT_R8);
  EXPECT_EQ(Variant(L"x").type(), VT_BSTR);
  EXPECT_EQ(Variant(Object()).type(), VT_DISPATCH);
  EXPECT_TRUE(Variant::Missing().IsMissing());
  EXPECT_TRUE(Variant::Null().IsNull());
  EXPECT_TRUE(Variant().IsEmpty());
}

ULONG ReferencesTo(const Object& object) {
  object.pointer()->AddRef();
  return object.pointer()->Release();
}

TEST(Variant, TakesOverTheReferenceOfAnObjectThatIsGivenAway) {
  const Object probe = test::NewProbe();
  Object given = probe;
  ASSERT_EQ(ReferencesTo(probe), 2u);
  {
    const Variant value(std::move(given));
    EXPECT_EQ(value.raw().pdispVal, probe.pointer());
    EXPECT_EQ(ReferencesTo(probe), 2u);
  }
  EXPECT_EQ(ReferencesTo(probe), 1u);
}

TEST(Variant, ConvertsWithoutALocale) {
  EXPECT_EQ(Variant(1234.5).AsText(), L"1234.5");
  EXPECT_EQ(Variant(L"1234.5").AsDouble(), 1234.5);
  EXPECT_EQ(Variant(true).AsText(), L"True");
  EXPECT_EQ(Variant(L" 42 ").AsLong(), 42);
  EXPECT_EQ(Variant(2.5).AsLong(), 2);
  EXPECT_EQ(Variant(3.5).AsLong(), 4);
  EXPECT_EQ(Variant().AsText(), L"");
  EXPECT_EQ(Variant().AsLong(), 0);
}

HRESULT CodeOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const ComError& error) {
    return error.code();
  }
  return S_OK;
}

TEST(Variant, RefusesWhatDoesNotConvert) {
  EXPECT_EQ(CodeOf([] { Variant(L"abc").AsLong(); }), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(CodeOf([] { Variant::Null().AsText(); }), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(CodeOf([] { Variant(1e12).AsLong(); }), DISP_E_OVERFLOW);
  EXPECT_EQ(CodeOf([] { Variant(1).AsObject(); }), DISP_E_TYPEMISMATCH);
}

TEST(Variant, CopiesThroughReferences) {
  BSTR text = SysAllocString(L"referred");
  VARIANT reference{};
  reference.vt = VT_BYREF | VT_BSTR;
  reference.pbstrVal = &text;
  EXPECT_EQ(Variant(reference), Variant(L"referred"));
  SysFreeString(text);
}

TEST(Variant, MakesArraysOfVariants) {
  const Variant values[] = {Variant(1), Variant(L"two")};
  const Variant array = Variant::Array(values, 2);
  ASSERT_EQ(array.type(), VT_ARRAY | VT_VARIANT);
  LONG upper = 0;
  ASSERT_EQ(SafeArrayGetUBound(array.raw().parray, 1, &upper), S_OK);
  EXPECT_EQ(upper, 1);
  Variant second;
  LONG index = 1;
  ASSERT_EQ(SafeArrayGetElement(array.raw().parray, &index, second.Out()), S_OK);
  EXPECT_EQ(second, Variant(L"two"));
}

TEST(Variant, IsEqualByTypeAndValue) {
  const auto money = [](int64_t tenThousandths) {
    VARIANT value{};
    value.vt = VT_CY;
    value.cyVal.int64 = tenThousandths;
    return Variant(value);
  };
  EXPECT_EQ(money(10'000), money(10'000));
  EXPECT_NE(money(10'000), money(10'001));
  EXPECT_NE(money(10'000), Variant(1));
  // A decimal's value counts, not its digits behind the point.
  EXPECT_EQ(Variant(L"1.50").As(VT_DECIMAL), Variant(L"1.5").As(VT_DECIMAL));
  EXPECT_NE(Variant(L"1.50").As(VT_DECIMAL), Variant(L"1.51").As(VT_DECIMAL));
  const Variant one(1);
  const Variant array = Variant::Array(&one, 1);
  EXPECT_NE(array, array);
}

TEST(Text, ConvertsBetweenEncodings) {
  const std::wstring text = L"销售订单 \xD83D\xDE00";
  EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
  EXPECT_EQ(ToUtf8(L"单"), "\xE5\x8D\x95");
  EXPECT_EQ(FromUtf8("\xFF"), L"\xFFFD");
  EXPECT_EQ(FromUtf8(""), L"");
  EXPECT_EQ(ToUtf8(L""), "");
}

TEST(Text, ComparesWithoutCase) {
  EXPECT_TRUE(EqualsNoCase(L"FInterID", L"finterid"));
  EXPECT_TRUE(EqualsNoCase(L"\u00C4", L"\u00E4"));
  EXPECT_FALSE(EqualsNoCase(L"FInterID", L"FInterI"));
  EXPECT_EQ(Lower(L"LANGUAGE"), L"language");
}

TEST(Variant, IsReferredToAsItsOwnType) {
  Variant text(L"before");
  Variant number(7);
  const Variant toText = Variant::TypedReference(text);
  const Variant toNumber = Variant::TypedReference(number);
  EXPECT_EQ(toText.type(), VT_BYREF | VT_BSTR);
  EXPECT_EQ(toNumber.type(), VT_BYREF | VT_I4);
  EXPECT_EQ(Variant(toText.raw()), Variant(L"before"));
  *toNumber.raw().plVal = 8;
  EXPECT_EQ(number, Variant(8));
}

} // namespace
} // namespace com
