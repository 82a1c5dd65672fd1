#include "com/RecordsetRows.h"

#include <oleauto.h>

#include "com/ComError.h"
#include "com/Variant.h"

namespace com {
namespace {

// Few enough for a block to stay in the processor's cache, and enough for the call to cost little.
constexpr int32_t kRowsAtATime = 100;

// Lends the elements of an array while it lives.
class ArrayElements {
 public:
  explicit ArrayElements(const Variant& array) : array_(array.raw().parray) {
    Check(SafeArrayAccessData(array_, reinterpret_cast<void**>(&first_)));
  }
  ~ArrayElements() { SafeArrayUnaccessData(array_); }
  ArrayElements(const ArrayElements&) = delete;
  ArrayElements& operator=(const ArrayElements&) = delete;
  const VARIANT* first() const { return first_; }

 private:
  SAFEARRAY* array_;
  VARIANT* first_ = nullptr;
};

size_t LengthOf(SAFEARRAY* array, UINT dimension) {
  LONG first = 0;
  LONG last = -1;
  Check(SafeArrayGetLBound(array, dimension, &first));
  Check(SafeArrayGetUBound(array, dimension, &last));
  return static_cast<size_t>(last - first) + 1;
}

} // namespace

void ForEachRow(const Object& recordset, const std::function<void(const VARIANT* values)>& visit) {
  while (!recordset.Get(L"EOF").AsBool()) {
    const Variant block = recordset.Call(L"GetRows", kRowsAtATime);
    SAFEARRAY* array = block.raw().parray;
    if (block.type() != (VT_ARRAY | VT_VARIANT) || SafeArrayGetDim(array) != 2)
      throw ComError::FromSystem(DISP_E_TYPEMISMATCH);
    const size_t columns = LengthOf(array, 1);
    const size_t rows = LengthOf(array, 2);
    const ArrayElements elements(block);
    for (size_t i = 0; i < rows; ++i) visit(elements.first() + i * columns);
  }
}

} // namespace com
