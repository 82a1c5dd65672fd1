// Matrix: the values of a two-dimensional array of variants, read in place.
//
// The first dimension runs fastest, as Automation lays arrays out: a column of the array is a row here. The
// array must outlive the Matrix and is locked meanwhile. Anything but such an array is a type mismatch
// (DISP_E_TYPEMISMATCH).
#pragma once

#include <oaidl.h>
#include <oleauto.h>

#include <cstddef>
#include <type_traits>

#include "com/ComError.h"
#include "com/Variant.h"

namespace com {

class Matrix {
 public:
  explicit Matrix(const Variant& array) : array_(array.raw().parray) {
    if (array.type() != (VT_ARRAY | VT_VARIANT) || SafeArrayGetDim(array_) != 2)
      throw ComError::FromSystem(DISP_E_TYPEMISMATCH);
    void* values = nullptr;
    Check(SafeArrayAccessData(array_, &values));
    values_ = static_cast<const Variant*>(values);
    // The bounds are kept in reverse, the last dimension's first.
    rowCount_ = array_->rgsabound[0].cElements;
    columnCount_ = array_->rgsabound[1].cElements;
  }
  ~Matrix() { SafeArrayUnaccessData(array_); }
  Matrix(const Matrix&) = delete;
  Matrix& operator=(const Matrix&) = delete;

  size_t rowCount() const noexcept { return rowCount_; }
  size_t columnCount() const noexcept { return columnCount_; }
  const Variant& At(size_t row, size_t column) const { return values_[row * columnCount_ + column]; }

 private:
  // A Variant is a VARIANT and nothing else.
  static_assert(sizeof(Variant) == sizeof(VARIANT) && std::is_standard_layout_v<Variant>);

  SAFEARRAY* array_;
  const Variant* values_ = nullptr;
  size_t rowCount_ = 0;
  size_t columnCount_ = 0;
};

} // namespace com
