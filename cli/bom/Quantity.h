// A quantity that stays exact, however often it is multiplied and divided.
#pragma once

// The library misses thread-local variables in MinGW's compiler, though it has no use for them here, and says
// so at length each time.
#define BOOST_MP_DISABLE_DEPRECATE_03_WARNING
#include <boost/multiprecision/cpp_int.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace bomcall::bom {

class Quantity {
 public:
  Quantity() = default;
  // A decimal number without an exponent, "2.5" or "-3". Nothing for any other text.
  static std::optional<Quantity> Parse(std::wstring_view text);
  // digits / 10^decimals
  static Quantity Scaled(uint64_t digits, unsigned decimals, bool negative);
  static Quantity One() { return Quantity(Number(1)); }

  // Most quantities are for one, and a product or quotient is brought to lowest terms each time.
  Quantity operator*(const Quantity& other) const {
    if (other.IsOne()) return *this;
    return IsOne() ? other : Quantity(Number(number_ * other.number_));
  }
  // By anything but zero.
  Quantity operator/(const Quantity& other) const {
    return other.IsOne() ? *this : Quantity(Number(number_ / other.number_));
  }
  Quantity operator+(const Quantity& other) const { return Quantity(Number(number_ + other.number_)); }
  Quantity& operator+=(const Quantity& other) {
    number_ += other.number_;
    return *this;
  }
  bool operator==(const Quantity& other) const { return number_ == other.number_; }
  bool IsZero() const { return number_.is_zero(); }

  // As a decimal number: with all digits if they are 20 behind the point at most, else rounded to 20, halves
  // away from zero.
  std::wstring Text() const;

 private:
  using Number = boost::multiprecision::cpp_rational;
  explicit Quantity(Number number) : number_(std::move(number)) {}
  // Without `number_ == 1`, for which the library divides.
  bool IsOne() const {
    return boost::multiprecision::numerator(number_) == 1 && boost::multiprecision::denominator(number_) == 1;
  }

  Number number_;
};

} // namespace bomcall::bom
