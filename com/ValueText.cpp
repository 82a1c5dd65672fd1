#include "com/ValueText.h"

#include <oleauto.h>

#include <array>
#include <cwchar>

#include "com/ComError.h"

namespace com {
namespace {

std::wstring DateText(const Variant& value) {
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(value.raw().date, &time)) throw ComError::FromSystem(DISP_E_OVERFLOW);
  std::array<wchar_t, 32> text{};
  std::swprintf(text.data(), text.size(), L"%04d-%02d-%02d", time.wYear, time.wMonth, time.wDay);
  std::wstring result = text.data();
  if (time.wHour || time.wMinute || time.wSecond) {
    std::swprintf(text.data(), text.size(), L" %02d:%02d:%02d", time.wHour, time.wMinute, time.wSecond);
    result += text.data();
  }
  return result;
}

} // namespace

std::wstring ToText(const Variant& value) {
  switch (value.type()) {
  case VT_EMPTY:
  case VT_NULL: return {};
  case VT_BOOL: return value.AsBool() ? L"True" : L"False";
  case VT_DATE: return DateText(value);
  case VT_DISPATCH:
  case VT_UNKNOWN: throw ComError::FromSystem(DISP_E_TYPEMISMATCH);
  default: return value.AsText();
  }
}

} // namespace com
