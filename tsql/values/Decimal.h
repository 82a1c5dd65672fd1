// Exact decimal arithmetic on tsql::Decimal: 38 digits, magnitude and sign, the scale given by the caller.
// Results that need more than 38 digits are nullopt; the caller reports the overflow. Written on 32-bit
// limbs, because the 32-bit target has no 128-bit integer.
#pragma once

#include "tsql/tsql.h"

#include <array>

namespace tsql {

constexpr int kMaxPrecision = 38;

enum class Rounding : uint8_t { HalfAwayFromZero, Truncate };

Decimal DecimalFromInteger(int64_t value);
std::optional<int64_t> DecimalToInteger(const Decimal& value); // fraction cut off
double DecimalToDouble(const Decimal& value);
std::optional<Decimal> DecimalFromDouble(double value, uint8_t scale);

// Digits with an optional sign and point; nothing else. The scale is that of the text.
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
// The divisor is not zero; the quotient is cut off at the scale, as the server does.
std::optional<Decimal> DivideDecimals(const Decimal& left, const Decimal& right, uint8_t scale);
std::optional<Decimal> DecimalRemainder(const Decimal& left, const Decimal& right, uint8_t scale);

// The order-preserving form of a decimal of more than 18 digits: 16 bytes, big-endian two's complement with
// the sign bit turned over, so that memcmp of two values of one scale is their numeric order.
constexpr size_t kWideSize = 16;
std::array<char, kWideSize> EncodeWide(const Decimal& value);
Decimal DecodeWide(std::string_view bytes, uint8_t scale);

} // namespace tsql
