#include "com/RecordsetRows.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include <algorithm>
#include <vector>

#include "com/ComError.h"
#include "com/DispatchObject.h"

namespace com::test {

// Rows of two fields: their number, and ten times that.
class FakeRows {
 public:
  bool Eof() const { return next >= count; }
  Variant GetRows(int32_t rows) {
    if (isBroken) return {5};
    const int32_t given = std::min(rows, count - next);
    longest = std::max(longest, given);
    SAFEARRAYBOUND bounds[]{{2, 0}, {static_cast<ULONG>(given), 0}};
    Variant block;
    block.raw().vt = VT_ARRAY | VT_VARIANT;
    block.raw().parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    for (LONG row = 0; row < given; ++row, ++next) {
      for (LONG field = 0; field < 2; ++field) {
        LONG place[]{field, row};
        Variant value(field == 0 ? next : 10 * next);
        Check(SafeArrayPutElement(block.raw().parray, place, &value.raw()));
      }
    }
    return block;
  }

  int32_t next = 0;
  int32_t count = 0;
  int32_t longest = 0; // block that was handed out
  bool isBroken = false;
};

} // namespace com::test

template <>
const com::DispatchTable& com::TableOf<com::test::FakeRows>() {
  using com::test::FakeRows;
  static const DispatchTable table(IID_NULL, {
                                                 PropertyGet<&FakeRows::Eof>(kNextId, L"EOF"),
                                                 Method<&FakeRows::GetRows>(kNextId, L"GetRows", {L"Rows"}),
                                             });
  return table;
}

namespace com::test {
namespace {

TEST(RecordsetRows, AreAllVisitedInTheirOrder) {
  for (const int32_t count : {0, 1, 1999, 2000, 2001, 4500}) {
    const auto fake = Make<FakeRows>();
    fake->object().count = count;
    std::vector<int32_t> numbers;
    ForEachRow(ToObject(fake), [&](const VARIANT* values) {
      numbers.push_back(values[0].lVal);
      EXPECT_EQ(values[1].lVal, 10 * values[0].lVal);
    });
    ASSERT_EQ(numbers.size(), static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) ASSERT_EQ(numbers[static_cast<size_t>(i)], i);
  }
}

TEST(RecordsetRows, DoNotComeAllAtOnce) {
  const auto fake = Make<FakeRows>();
  fake->object().count = 100000;
  ForEachRow(ToObject(fake), [](const VARIANT* /*values*/) {});
  EXPECT_LT(fake->object().longest, 10000);
}

TEST(RecordsetRows, AreAnArrayOrAFailure) {
  const auto fake = Make<FakeRows>();
  fake->object().count = 1;
  fake->object().isBroken = true;
  try {
    ForEachRow(ToObject(fake), [](const VARIANT* /*values*/) { FAIL(); });
    FAIL() << "no failure";
  } catch (const ComError& error) {
    EXPECT_EQ(error.code(), DISP_E_TYPEMISMATCH);
  }
}

} // namespace
} // namespace com::test
