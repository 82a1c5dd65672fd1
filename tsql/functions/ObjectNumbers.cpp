#include "tsql/functions/ObjectNumbers.h"

#include "tsql/values/NameHash.h"

namespace tsql {

int64_t NumberOfKey(std::string_view key) {
  return static_cast<int64_t>(HashOfName(key) & 0x7FFFFFFFU) | 1;
}

std::optional<Catalog::Object> FindObject(const Catalog& catalog, int64_t number) {
  for (const Catalog::Object& object : catalog.Objects())
    if (NumberOfKey(object.key) == number) return object;
  return std::nullopt;
}

} // namespace tsql
