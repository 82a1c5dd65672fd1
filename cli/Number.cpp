#include "cli/Number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace bomcall {
namespace {

using com::Variant;

constexpr int kMostDecimals = 28;

// The 96 bits of a decimal's digits, the lowest 32 first.
using Digits = std::array<uint32_t, 3>;

// Whether the result still fits.
bool AppendDigit(Digits& digits, unsigned digit) {
  uint64_t carry = digit;
  for (uint32_t& part : digits) {
    carry += uint64_t{part} * 10;
    part = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
  return carry == 0;
}

unsigned TakeLastDigit(Digits& digits) {
  uint64_t rest = 0;
  for (size_t i = digits.size(); i-- > 0;) {
    rest = rest << 32 | digits[i];
    digits[i] = static_cast<uint32_t>(rest / 10);
    rest %= 10;
  }
  return static_cast<unsigned>(rest);
}

std::wstring DigitsText(Digits digits, int decimals, bool negative) {
  std::wstring reversed;
  bool significant = decimals == 0;
  for (int i = 0; digits != Digits{} || i <= decimals; ++i) {
    if (i == decimals && i > 0 && significant) reversed += L'.';
    significant = significant || i >= decimals;
    const unsigned digit = TakeLastDigit(digits);
    significant = significant || digit != 0;
    if (significant) reversed += static_cast<wchar_t>(L'0' + digit);
  }
  if (negative && reversed.find_first_not_of(L"0.") != std::wstring::npos) reversed += L'-';
  return {reversed.rbegin(), reversed.rend()};
}

template <class Float>
std::optional<std::wstring> ShortestText(Float value) {
  if (!std::isfinite(value)) return std::nullopt;
  std::array<char, 40> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return std::wstring(text.data(), end);
}

} // namespace

std::optional<Variant> ParseDecimal(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  const size_t point = text.find('.');
  if (point != std::string_view::npos) text = text.substr(0, text.find_last_not_of('0') + 1);
  Digits digits{};
  int decimals = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (i == point) continue;
    if (i > point && ++decimals > kMostDecimals) return std::nullopt;
    if (!AppendDigit(digits, static_cast<unsigned>(text[i] - '0'))) return std::nullopt;
  }
  Variant result;
  DECIMAL& decimal = result.raw().decVal;
  decimal.Lo32 = digits[0];
  decimal.Mid32 = digits[1];
  decimal.Hi32 = digits[2];
  decimal.scale = static_cast<BYTE>(decimals);
  decimal.sign = negative && digits != Digits{} ? DECIMAL_NEG : 0;
  result.raw().vt = VT_DECIMAL;
  return result;
}

std::optional<std::wstring> NumberText(const Variant& number) {
  const VARIANT& raw = number.raw();
  switch (number.type()) {
  case VT_I1:
  case VT_I2:
  case VT_I4:
  case VT_I8:
  case VT_INT:
  case VT_UI1:
  case VT_UI2:
  case VT_UI4:
  case VT_UI8:
  case VT_UINT: return number.AsText();
  case VT_R4: return ShortestText(raw.fltVal);
  case VT_R8: return ShortestText(raw.dblVal);
  case VT_DECIMAL:
    return DigitsText({raw.decVal.Lo32, raw.decVal.Mid32, raw.decVal.Hi32}, raw.decVal.scale,
                      (raw.decVal.sign & DECIMAL_NEG) != 0);
  case VT_CY: {
    const int64_t value = raw.cyVal.int64;
    const uint64_t size = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    return DigitsText({static_cast<uint32_t>(size), static_cast<uint32_t>(size >> 32), 0}, 4, value < 0);
  }
  default: return std::nullopt;
  }
}

} // namespace bomcall
