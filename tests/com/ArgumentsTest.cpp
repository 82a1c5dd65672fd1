#include "com/Arguments.h"

#include <gtest/gtest.h>

#include "tests/support/Raised.h"

namespace com::test {
namespace {

// A reference of type VT_BYREF | `type` to `place`.
VARIANTARG ReferenceTo(VARTYPE type, void* place) {
  VARIANTARG reference{};
  reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
  reference.byref = place;
  return reference;
}

TEST(WriteBack, ConvertsToTheTypeOfTheReference) {
  const Variant value(L"12");
  SHORT small = 0;
  LONG whole = 0;
  INT integer = 0;
  FLOAT single = 0;
  DOUBLE number = 0;
  DATE date = 0;
  CY money{};
  WriteBack(ReferenceTo(VT_I2, &small), value);
  WriteBack(ReferenceTo(VT_I4, &whole), value);
  WriteBack(ReferenceTo(VT_INT, &integer), value);
  WriteBack(ReferenceTo(VT_R4, &single), value);
  WriteBack(ReferenceTo(VT_R8, &number), value);
  WriteBack(ReferenceTo(VT_DATE, &date), Variant(12));
  WriteBack(ReferenceTo(VT_CY, &money), value);
  EXPECT_EQ(small, 12);
  EXPECT_EQ(whole, 12);
  EXPECT_EQ(integer, 12);
  EXPECT_EQ(single, 12);
  EXPECT_EQ(number, 12);
  EXPECT_EQ(date, 12);
  EXPECT_EQ(money.int64, 120'000); // in ten-thousandths
}

TEST(WriteBack, LeavesAPlaceThatItCannotFillAsItWas) {
  LONG whole = 5;
  EXPECT_EQ(RaisedBy([&] { WriteBack(ReferenceTo(VT_I4, &whole), Variant(L"many")); }).code,
            DISP_E_TYPEMISMATCH);
  EXPECT_EQ(whole, 5);
  BYTE byte = 5;
  EXPECT_EQ(RaisedBy([&] { WriteBack(ReferenceTo(VT_UI1, &byte), Variant(7)); }).code, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(byte, 5);
}

TEST(CanWriteBack, KnowsWhichReferencesTakeAType) {
  LONG whole = 0;
  EXPECT_TRUE(CanWriteBack(ReferenceTo(VT_I4, &whole), VT_I4));
  EXPECT_TRUE(CanWriteBack(ReferenceTo(VT_INT, &whole), VT_I4));
  EXPECT_FALSE(CanWriteBack(ReferenceTo(VT_INT, &whole), VT_BSTR));
  EXPECT_FALSE(CanWriteBack(ReferenceTo(VT_R8, &whole), VT_I4));
  EXPECT_TRUE(CanWriteBack(ReferenceTo(VT_R8, &whole), VT_VARIANT));
  IUnknown* object = nullptr;
  EXPECT_TRUE(CanWriteBack(ReferenceTo(VT_UNKNOWN, &object), VT_DISPATCH));
}

} // namespace
} // namespace com::test
