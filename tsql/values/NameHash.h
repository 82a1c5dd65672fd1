// A number for a name: the same for every way to write it in upper and lower case, in every session.
#pragma once

#include "tsql/values/Collation.h"

namespace tsql {

// FNV-1a of the name in lower case.
inline uint32_t HashOfName(std::string_view name) {
  constexpr uint32_t kOffset = 2166136261U;
  constexpr uint32_t kPrime = 16777619U;
  uint32_t hash = kOffset;
  for (const char character : ToLower(name)) hash = (hash ^ static_cast<unsigned char>(character)) * kPrime;
  return hash;
}

} // namespace tsql
