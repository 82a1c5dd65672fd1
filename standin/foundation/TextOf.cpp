#include "standin/foundation/TextOf.h"

#include <oleauto.h>

#include <array>
#include <cwchar>

namespace standin {
namespace {

std::wstring DateText(double date) {
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(date, &time)) return {};
  std::array<wchar_t, 32> text{};
  int length = swprintf(text.data(), text.size(), L"%04d-%02d-%02d", time.wYear, time.wMonth, time.wDay);
  if (time.wHour || time.wMinute || time.wSecond)
    length += swprintf(text.data() + length, text.size() - static_cast<size_t>(length), L" %02d:%02d:%02d",
                       time.wHour, time.wMinute, time.wSecond);
  return {text.data(), static_cast<size_t>(length)};
}

} // namespace

std::wstring TextOf(const com::Variant& value) {
  if (value.IsEmpty() || value.IsNull() || value.IsMissing()) return {};
  if (value.type() == VT_DATE) return DateText(value.raw().date);
  return value.AsText();
}

} // namespace standin
