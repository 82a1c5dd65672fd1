#include "com/Matrix.h"

#include <gtest/gtest.h>

#include "tests/support/Raised.h"

namespace com::test {
namespace {

// An array of `columns` by `rows` whose value at (column, row) is 10 * row + column.
Variant ArrayOf(LONG columns, LONG rows, VARTYPE type = VT_VARIANT) {
  SAFEARRAYBOUND bounds[]{{static_cast<ULONG>(columns), 0}, {static_cast<ULONG>(rows), 0}};
  VARIANT array;
  array.vt = static_cast<VARTYPE>(VT_ARRAY | type);
  array.parray = SafeArrayCreate(type, 2, bounds);
  for (LONG row = 0; type == VT_VARIANT && row < rows; ++row)
    for (LONG column = 0; column < columns; ++column) {
      LONG index[]{column, row};
      Variant value(static_cast<int32_t>(10 * row + column));
      SafeArrayPutElement(array.parray, index, &value.raw());
    }
  return Variant::Attach(array);
}

TEST(Matrix, ReadsTheValuesWhereTheyStand) {
  const Variant array = ArrayOf(3, 2);
  const Matrix matrix(array);
  EXPECT_EQ(matrix.columnCount(), 3u);
  EXPECT_EQ(matrix.rowCount(), 2u);
  for (size_t row = 0; row < 2; ++row)
    for (size_t column = 0; column < 3; ++column)
      EXPECT_EQ(matrix.At(row, column), Variant(static_cast<int32_t>(10 * row + column)));
}

TEST(Matrix, MayBeEmpty) {
  const Variant array = ArrayOf(3, 0);
  EXPECT_EQ(Matrix(array).rowCount(), 0u);
}

TEST(Matrix, LocksTheArrayWhileItReads) {
  const Variant array = ArrayOf(1, 1);
  {
    const Matrix matrix(array);
    EXPECT_EQ(SafeArrayDestroy(array.raw().parray), DISP_E_ARRAYISLOCKED);
  }
  EXPECT_EQ(array.raw().parray->cLocks, 0u);
}

TEST(Matrix, RefusesWhatIsNoMatrixOfVariants) {
  const Variant list = Variant::Array(nullptr, 0);
  for (const Variant& other : {Variant(5), Variant(), list, ArrayOf(1, 1, VT_I4)})
    EXPECT_EQ(RaisedBy([&] { const Matrix matrix(other); }).code, DISP_E_TYPEMISMATCH);
}

} // namespace
} // namespace com::test
