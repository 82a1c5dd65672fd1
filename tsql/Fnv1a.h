// FNV-1a, a hash that is the same everywhere and for ever: numbers that are stored may depend on it.
#pragma once

#include <cstdint>

namespace tsql {

// Begins with nothing added.
class Fnv1a {
 public:
  // A byte, or a unit of a text.
  constexpr void Add(uint16_t unit) { value_ = (value_ ^ unit) * kPrime; }
  constexpr uint32_t value() const { return value_; }

 private:
  static constexpr uint32_t kOffset = 2166136261U;
  static constexpr uint32_t kPrime = 16777619U;

  uint32_t value_ = kOffset;
};

} // namespace tsql
