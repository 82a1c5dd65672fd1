// The names of collations, as the server has them: DESIGNATOR[_VERSION], then _CI or _CS and _AS or _AI with
// what follows those, or _BIN or _BIN2; those that begin with SQL_ have a code page in place of a version.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tsql/values/Collation.h"

namespace tsql {

// A collation by its name, of which many mean the same. That of the database has none here.
struct NamedCollation {
  CollationId id = CollationId::Default;
  std::string name;
  bool operator==(const NamedCollation&) const = default;
};

inline constexpr std::string_view kDatabaseCollation = "Chinese_PRC_CI_AS";
// As messages and system views have it.
inline std::string_view CollationName(std::string_view name) {
  return name.empty() ? kDatabaseCollation : name;
}

// The collation, its name in the server's spelling; DATABASE_DEFAULT is the database's. None where no
// collation has the name, or where it ignores accents, which the engine cannot.
std::optional<NamedCollation> FindCollation(std::string_view name);
// Whether a collation that ignores accents has the name.
bool IgnoresAccents(std::string_view name);

} // namespace tsql
