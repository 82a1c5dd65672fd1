// A number for a name: the same for every way to write it in upper and lower case, in every session.
#pragma once

#include "tsql/Fnv1a.h"
#include "tsql/values/Collation.h"

namespace tsql {

inline uint32_t HashOfName(std::string_view name) {
  Fnv1a hash;
  for (const char character : ToLower(name)) hash.Add(static_cast<unsigned char>(character));
  return hash.value();
}

} // namespace tsql
