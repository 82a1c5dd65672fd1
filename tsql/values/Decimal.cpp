#include "tsql/values/Decimal.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

#include "tsql/values/BigNumber.h"
#include "tsql/values/PowersOfTen.h"

namespace tsql {
namespace {

BigNumber FromMagnitude(const Decimal& value) {
  BigNumber big;
  big[0] = static_cast<uint32_t>(value.low);
  big[1] = static_cast<uint32_t>(value.low >> 32U);
  big[2] = static_cast<uint32_t>(value.high);
  big[3] = static_cast<uint32_t>(value.high >> 32U);
  return big;
}

const BigNumber& MaxMagnitude() {
  static const BigNumber max = [] {
    BigNumber power;
    power[0] = 1;
    MultiplyPower(power, kMaxPrecision);
    BigNumber one;
    one[0] = 1;
    return Subtract(power, one);
  }();
  return max;
}

std::optional<Decimal> ToDecimal(const BigNumber& big, uint8_t scale, bool negative) {
  if (big.Length() > 4 || Compare(big, MaxMagnitude()) > 0) return std::nullopt;
  Decimal value;
  value.low = (uint64_t{big[1]} << 32U) | big[0];
  value.high = (uint64_t{big[3]} << 32U) | big[2];
  value.scale = scale;
  value.negative = negative && (value.low != 0 || value.high != 0);
  return value;
}

// Divides by 10^exponent; true when what was cut off is at least a half.
bool DividePower(BigNumber& big, int exponent) {
  uint32_t lastDigit = 0;
  while (exponent > 0) {
    // The last digit that is cut off decides the rounding, so it is taken alone.
    const int step = exponent > 9 ? 9 : exponent > 1 ? exponent - 1 : 1;
    const uint32_t rest = DivideSmall(big, static_cast<uint32_t>(PowerOfTen(step)));
    lastDigit = rest;
    exponent -= step;
  }
  return lastDigit >= 5;
}

BigNumber Scaled(const Decimal& value, uint8_t scale) {
  assert(scale >= value.scale);
  BigNumber big = FromMagnitude(value);
  MultiplyPower(big, scale - value.scale);
  return big;
}

std::optional<Decimal> RoundTo(BigNumber big, int fromScale, uint8_t scale, bool negative,
                               Rounding rounding) {
  if (fromScale < scale) {
    MultiplyPower(big, scale - fromScale);
  } else if (DividePower(big, fromScale - scale) && rounding == Rounding::HalfAwayFromZero) {
    AddSmall(big, 1);
  }
  return ToDecimal(big, scale, negative);
}

// The 128-bit product of two halves.
void MultiplyHalves(uint64_t left, uint64_t right, Decimal& product) {
  const uint64_t leftLow = left & UINT32_MAX;
  const uint64_t leftHigh = left >> 32U;
  const uint64_t rightLow = right & UINT32_MAX;
  const uint64_t rightHigh = right >> 32U;
  const uint64_t low = leftLow * rightLow;
  const uint64_t middle = leftHigh * rightLow + (low >> 32U);
  const uint64_t other = leftLow * rightHigh + (middle & UINT32_MAX);
  product.low = (other << 32U) | (low & UINT32_MAX);
  product.high = leftHigh * rightHigh + (middle >> 32U) + (other >> 32U);
}

// Whether the high half alone shows that the value has at most 38 digits.
bool IsSafelySmall(const Decimal& value) {
  constexpr uint64_t kLimit = 5421010862427522170U; // 10^38 / 2^64
  return value.high < kLimit;
}

// Rescales a value of one half without the long arithmetic, as nearly all are; false when the value needs it.
bool RescaleSmall(const Decimal& value, uint8_t scale, Rounding rounding, Decimal& result) {
  const int shift = int{scale} - value.scale;
  if (value.high != 0 || shift > kMaxPowerOfTen || shift < -kMaxPowerOfTen) return false;
  result.scale = scale;
  if (shift >= 0) {
    MultiplyHalves(value.low, static_cast<uint64_t>(PowerOfTen(shift)), result);
  } else {
    const uint64_t power = static_cast<uint64_t>(PowerOfTen(-shift));
    const bool up = rounding == Rounding::HalfAwayFromZero && value.low % power >= power / 2;
    result.low = value.low / power + (up ? 1 : 0);
    result.high = 0;
  }
  result.negative = value.negative && (result.low != 0 || result.high != 0);
  return IsSafelySmall(result);
}

} // namespace

std::optional<int64_t> DecimalToInteger(const Decimal& value) {
  const std::optional<Decimal> whole = Rescale(value, 0, Rounding::Truncate);
  constexpr uint64_t kLimit = uint64_t{1} << 63U;
  if (!whole || whole->high != 0 || whole->low > kLimit) return std::nullopt;
  if (whole->negative) return static_cast<int64_t>(~whole->low + 1);
  if (whole->low == kLimit) return std::nullopt;
  return static_cast<int64_t>(whole->low);
}

double DecimalToDouble(const Decimal& value) {
  // For what applications store both operands are exact, so that the quotient is the nearest double.
  constexpr double kTwo64 = 18446744073709551616.0;
  const double magnitude = static_cast<double>(value.high) * kTwo64 + static_cast<double>(value.low);
  const double result = magnitude / std::pow(10.0, value.scale);
  return value.negative ? -result : result;
}

std::optional<Decimal> DecimalFromDouble(double value, uint8_t scale) {
  if (!std::isfinite(value) || std::abs(value) >= 1e38) return std::nullopt;
  // The server takes the 17 significant digits of a float; further ones are noise.
  std::array<char, 32> digits{};
  const int length = std::snprintf(digits.data(), digits.size(), "%.16e", std::abs(value));
  assert(length > 0);
  const std::string_view text(digits.data(), static_cast<size_t>(length));
  const size_t mark = text.find('e');
  const int exponent = std::atoi(text.data() + mark + 1);
  BigNumber big;
  for (const char character : text.substr(0, mark)) {
    if (character == '.') continue;
    MultiplySmall(big, 10);
    AddSmall(big, static_cast<uint32_t>(character - '0'));
  }
  int digitScale = 16 - exponent;
  if (digitScale < 0) {
    MultiplyPower(big, -digitScale);
    digitScale = 0;
  }
  if (digitScale - scale > 60) return ToDecimal(BigNumber{}, scale, false);
  return RoundTo(big, digitScale, scale, value < 0, Rounding::HalfAwayFromZero);
}

std::optional<Decimal> ParseDecimal(std::string_view text) {
  bool negative = false;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  BigNumber big;
  int scale = -1;
  int digits = 0;
  for (const char character : text) {
    if (character == '.' && scale < 0) {
      scale = 0;
      continue;
    }
    if (character < '0' || character > '9') return std::nullopt;
    if (++digits > 100) return std::nullopt;
    // Digits beyond the largest scale cannot change a value of 38 digits.
    if (scale >= kMaxPrecision) continue;
    MultiplySmall(big, 10);
    AddSmall(big, static_cast<uint32_t>(character - '0'));
    if (scale >= 0) ++scale;
  }
  if (digits == 0) return std::nullopt;
  return ToDecimal(big, static_cast<uint8_t>(std::max(scale, 0)), negative);
}

std::string DecimalToText(const Decimal& value) {
  BigNumber big = FromMagnitude(value);
  std::string digits;
  // At least one digit stands before the point, and the point takes a place too.
  const size_t least = value.scale > 0 ? value.scale + 2U : 1U;
  while (big.Length() > 0 || digits.size() < least) {
    digits.push_back(static_cast<char>('0' + DivideSmall(big, 10)));
    if (digits.size() == value.scale) digits.push_back('.');
  }
  if (value.negative) digits.push_back('-');
  std::reverse(digits.begin(), digits.end());
  return digits;
}

std::optional<Decimal> Rescale(const Decimal& value, uint8_t scale, Rounding rounding) {
  if (scale == value.scale) return value;
  Decimal small;
  if (RescaleSmall(value, scale, rounding, small)) return small;
  return RoundTo(FromMagnitude(value), value.scale, scale, value.negative, rounding);
}

int DigitCount(const Decimal& value) {
  if (value.high == 0) {
    int digits = 0;
    for (uint64_t rest = value.low; rest > 0; rest /= 10) ++digits;
    return digits;
  }
  BigNumber big = FromMagnitude(value);
  int digits = 0;
  while (big.Length() > 0) {
    DivideSmall(big, 10);
    ++digits;
  }
  return digits;
}

bool FitsPrecision(const Decimal& value, int precision) {
  if (precision >= kMaxPrecision) return true;
  // One half holds less than 10^20.
  if (value.high == 0 && precision >= 20) return true;
  BigNumber limit;
  limit[0] = 1;
  MultiplyPower(limit, precision);
  return Compare(FromMagnitude(value), limit) < 0;
}

bool IsZero(const Decimal& value) {
  return value.low == 0 && value.high == 0;
}

int CompareDecimals(const Decimal& left, const Decimal& right) {
  if (left.negative != right.negative) return left.negative ? -1 : 1;
  const uint8_t scale = std::max(left.scale, right.scale);
  const int order = Compare(Scaled(left, scale), Scaled(right, scale));
  return left.negative ? -order : order;
}

std::optional<Decimal> AddDecimals(const Decimal& left, const Decimal& right, uint8_t scale) {
  const bool isSmall = left.high == 0 && right.high == 0 && left.scale == scale && right.scale == scale;
  if (isSmall && left.negative == right.negative && left.low <= UINT64_MAX - right.low)
    return Decimal{left.low + right.low, 0, scale, left.negative};
  const uint8_t common = std::max(left.scale, right.scale);
  const BigNumber a = Scaled(left, common);
  const BigNumber b = Scaled(right, common);
  if (left.negative == right.negative)
    return RoundTo(Add(a, b), common, scale, left.negative, Rounding::HalfAwayFromZero);
  const bool leftLarger = Compare(a, b) >= 0;
  return RoundTo(leftLarger ? Subtract(a, b) : Subtract(b, a), common, scale,
                 leftLarger ? left.negative : right.negative, Rounding::HalfAwayFromZero);
}

std::optional<Decimal> SubtractDecimals(const Decimal& left, const Decimal& right, uint8_t scale) {
  Decimal opposite = right;
  opposite.negative = !right.negative;
  return AddDecimals(left, opposite, scale);
}

std::optional<Decimal> MultiplyDecimals(const Decimal& left, const Decimal& right, uint8_t scale) {
  if (left.high == 0 && right.high == 0) {
    Decimal product;
    MultiplyHalves(left.low, right.low, product);
    product.scale = static_cast<uint8_t>(left.scale + right.scale);
    product.negative = left.negative != right.negative && (product.low != 0 || product.high != 0);
    if (product.scale == scale && IsSafelySmall(product)) return product;
    if (product.high == 0) return Rescale(product, scale);
  }
  return RoundTo(Multiply(FromMagnitude(left), FromMagnitude(right)), left.scale + right.scale, scale,
                 left.negative != right.negative, Rounding::HalfAwayFromZero);
}

std::optional<Decimal> DivideDecimals(const Decimal& left, const Decimal& right, uint8_t scale) {
  assert(!IsZero(right));
  BigNumber numerator = FromMagnitude(left);
  BigNumber denominator = FromMagnitude(right);
  const int shift = scale + right.scale - left.scale;
  if (shift >= 0) {
    MultiplyPower(numerator, shift);
  } else {
    MultiplyPower(denominator, -shift);
  }
  return ToDecimal(Divide(numerator, denominator), scale, left.negative != right.negative);
}

std::optional<Decimal> DecimalRemainder(const Decimal& left, const Decimal& right, uint8_t scale) {
  assert(!IsZero(right));
  const uint8_t common = std::max(left.scale, right.scale);
  BigNumber rest = Scaled(left, common);
  Divide(rest, Scaled(right, common));
  return RoundTo(rest, common, scale, left.negative, Rounding::HalfAwayFromZero);
}

std::array<char, kWideSize> EncodeWide(const Decimal& value) {
  uint64_t high = value.high;
  uint64_t low = value.low;
  if (value.negative) {
    low = ~low + 1;
    high = ~high + (low == 0 ? 1 : 0);
  }
  high ^= uint64_t{1} << 63U;
  std::array<char, kWideSize> bytes{};
  for (unsigned i = 0; i < 8; ++i) {
    bytes[i] = static_cast<char>(high >> (56 - 8 * i));
    bytes[8 + i] = static_cast<char>(low >> (56 - 8 * i));
  }
  return bytes;
}

Decimal DecodeWide(std::string_view bytes, uint8_t scale) {
  assert(bytes.size() == kWideSize);
  uint64_t high = 0;
  uint64_t low = 0;
  for (size_t i = 0; i < 8; ++i) {
    high = (high << 8U) | static_cast<unsigned char>(bytes[i]);
    low = (low << 8U) | static_cast<unsigned char>(bytes[8 + i]);
  }
  high ^= uint64_t{1} << 63U;
  Decimal value;
  value.scale = scale;
  value.negative = (high >> 63U) != 0;
  if (value.negative) {
    low = ~low + 1;
    high = ~high + (low == 0 ? 1 : 0);
  }
  value.low = low;
  value.high = high;
  return value;
}

} // namespace tsql
