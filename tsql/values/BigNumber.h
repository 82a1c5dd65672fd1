// Unsigned whole numbers of 512 bits: room for 38 digits that are scaled by 76 more. Written on 32-bit limbs,
// because the 32-bit target has no 128-bit integer.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace tsql {

// The low limb comes first.
struct BigNumber {
  static constexpr int kLimbs = 16;
  std::array<uint32_t, kLimbs> limb{};

  int Length() const {
    int length = kLimbs;
    while (length > 0 && limb[static_cast<size_t>(length - 1)] == 0) --length;
    return length;
  }
  uint32_t& operator[](int i) { return limb[static_cast<size_t>(i)]; }
  uint32_t operator[](int i) const { return limb[static_cast<size_t>(i)]; }
};

inline void MultiplySmall(BigNumber& big, uint32_t factor) {
  uint64_t carry = 0;
  for (uint32_t& limb : big.limb) {
    carry += uint64_t{limb} * factor;
    limb = static_cast<uint32_t>(carry);
    carry >>= 32U;
  }
  assert(carry == 0);
}

inline void AddSmall(BigNumber& big, uint32_t value) {
  uint64_t carry = value;
  for (int i = 0; i < BigNumber::kLimbs && carry != 0; ++i) {
    carry += big[i];
    big[i] = static_cast<uint32_t>(carry);
    carry >>= 32U;
  }
}

// Leaves the quotient in `big` and returns the remainder.
inline uint32_t DivideSmall(BigNumber& big, uint32_t divisor) {
  uint64_t rest = 0;
  for (int i = big.Length() - 1; i >= 0; --i) {
    rest = (rest << 32U) | big[i];
    big[i] = static_cast<uint32_t>(rest / divisor);
    rest %= divisor;
  }
  return static_cast<uint32_t>(rest);
}

// Multiplies by 10^exponent.
void MultiplyPower(BigNumber& big, int exponent);
// Negative, 0 or positive.
int Compare(const BigNumber& left, const BigNumber& right);
BigNumber Add(const BigNumber& left, const BigNumber& right);
// `left` is not smaller than `right`.
BigNumber Subtract(const BigNumber& left, const BigNumber& right);
BigNumber Multiply(const BigNumber& left, const BigNumber& right);
// Returns the quotient and leaves the remainder in `left`; `right` is not zero.
BigNumber Divide(BigNumber& left, const BigNumber& right);

} // namespace tsql
