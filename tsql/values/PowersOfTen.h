// Powers of ten as 64-bit integers.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace tsql {

// The largest exponent whose power a signed 64-bit integer holds.
constexpr int kMaxPowerOfTen = 18;

// `exponent` is from 0 to kMaxPowerOfTen.
constexpr int64_t PowerOfTen(int exponent) {
  constexpr std::array<int64_t, kMaxPowerOfTen + 1> kPowers = [] {
    std::array<int64_t, kMaxPowerOfTen + 1> powers{};
    int64_t power = 1;
    for (size_t i = 0; i < powers.size(); ++i) {
      powers[i] = power;
      if (i + 1 < powers.size()) power *= 10;
    }
    return powers;
  }();
  assert(exponent >= 0 && exponent <= kMaxPowerOfTen);
  return kPowers[static_cast<size_t>(exponent)];
}

} // namespace tsql
