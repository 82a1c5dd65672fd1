#include "src/frame/Convert.h"

#include <oleauto.h>

#include <array>
#include <cwchar>

#include "com/ComError.h"

namespace mbom {
namespace {

using com::Variant;

std::wstring DateText(const Variant& value) {
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(value.raw().date, &time)) throw com::ComError::FromSystem(DISP_E_OVERFLOW);
  std::array<wchar_t, 32> text{};
  std::swprintf(text.data(), text.size(), L"%04d-%02d-%02d", time.wYear, time.wMonth, time.wDay);
  std::wstring result = text.data();
  if (time.wHour || time.wMinute || time.wSecond) {
    std::swprintf(text.data(), text.size(), L" %02d:%02d:%02d", time.wHour, time.wMinute, time.wSecond);
    result += text.data();
  }
  return result;
}

// A Boolean stands for the number it is; the words of one are no numbers, but compare as the Boolean they
// name.
double Number(const Variant& value) {
  if (value.type() == VT_BOOL) return value.AsBool() ? VARIANT_TRUE : VARIANT_FALSE;
  if (value.type() == VT_DISPATCH || value.type() == VT_UNKNOWN)
    throw com::ComError::FromSystem(DISP_E_TYPEMISMATCH);
  return value.AsDouble();
}

} // namespace

std::wstring ToText(const Variant& value) {
  switch (value.type()) {
  case VT_EMPTY:
  case VT_NULL: return {};
  case VT_BOOL: return value.AsBool() ? L"True" : L"False";
  case VT_DATE: return DateText(value);
  case VT_DISPATCH:
  case VT_UNKNOWN: throw com::ComError::FromSystem(DISP_E_TYPEMISMATCH);
  default: return value.AsText();
  }
}

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
