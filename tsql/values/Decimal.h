// Exact arithmetic on tsql::Decimal, numbers of up to 38 digits. The caller says which scale a result has. A
// result that needs more than 38 digits is nullopt, and the caller reports the overflow.
#pragma once

#include <array>

#include "tsql/tsql.h"

namespace tsql {

constexpr int kMaxPrecision = 38;

enum class Rounding : uint8_t { HalfAwayFromZero, Truncate };

inline Decimal DecimalFromInteger(int64_t value) {
  Decimal result;
  result.negative = value < 0;
  result.low = value < 0 ? ~static_cast<uint64_t>(value) + 1 : static_cast<uint64_t>(value);
  return result;
}
std::optional<int64_t> DecimalToInteger(const Decimal& value); // without the fraction
double DecimalToDouble(const Decimal& value);
std::optional<Decimal> DecimalFromDouble(double value, uint8_t scale);

// Reads digits with an optional sign and point and nothing else. The scale is that of the text.
std::optional<Decimal> ParseDecimal(std::string_view text);
std::string DecimalToText(const Decimal& value);

std::optional<Decimal> Rescale(const Decimal& value, uint8_t scale,
                               Rounding rounding = Rounding::HalfAwayFromZero);
bool FitsPrecision(const Decimal& value, int precision);
int DigitCount(const Decimal& value);
bool IsZero(const Decimal& value);
int CompareDecimals(const Decimal& left, const Decimal& right);

std::optional<Decimal> AddDecimals(const Decimal& left, const Decimal& right, uint8_t scale);
std::optional<Decimal> SubtractDecimals(const Decimal& left, const Decimal& right, uint8_t scale);
std::optional<Decimal> MultiplyDecimals(const Decimal& left, const Decimal& right, uint8_t scale);
// The divisor is not zero. The quotient is cut off at the scale and not rounded, as on the server.
std::optional<Decimal> DivideDecimals(const Decimal& left, const Decimal& right, uint8_t scale);
std::optional<Decimal> DecimalRemainder(const Decimal& left, const Decimal& right, uint8_t scale);

// How a decimal of more than 18 digits is stored: 16 bytes, big-endian two's complement with the sign bit
// turned over, so that the order of the bytes is the order of the numbers.
constexpr size_t kWideSize = 16;
std::array<char, kWideSize> EncodeWide(const Decimal& value);
Decimal DecodeWide(std::string_view bytes, uint8_t scale);

} // namespace tsql
