#include "src/frame/Convert.h"

#include "com/ComError.h"

namespace mbom {
namespace {

using com::Variant;

// A Boolean stands for the number it is; the words of one are no numbers, but compare as the Boolean they
// name.
double Number(const Variant& value) {
  if (value.type() == VT_BOOL) return value.AsBool() ? VARIANT_TRUE : VARIANT_FALSE;
  if (value.type() == VT_DISPATCH || value.type() == VT_UNKNOWN)
    throw com::ComError::FromSystem(DISP_E_TYPEMISMATCH);
  return value.AsDouble();
}

} // namespace

bool Equals(const Variant& value, int32_t number) {
  return !value.IsNull() && Number(value) == number;
}

bool IsGreater(const Variant& value, int32_t number) {
  return !value.IsNull() && Number(value) > number;
}

bool IsTrue(const Variant& value) {
  if (value.type() == VT_BSTR) return value.AsBool();
  return Equals(value, VARIANT_TRUE);
}

std::wstring Trim(const std::wstring& text) {
  const size_t first = text.find_first_not_of(L' ');
  if (first == std::wstring::npos) return {};
  return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

} // namespace mbom
