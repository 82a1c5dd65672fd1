#include "tsql/catalog/Schemas.h"

#include <algorithm>

#include "tsql/values/Collation.h"

namespace tsql {
namespace {

constexpr ServerSchema kServerSchemas[] = {{kDboSchema, "dbo"},
                                           {2, "guest"},
                                           {3, "INFORMATION_SCHEMA", true},
                                           {4, "sys", true},
                                           {kFirstRoleSchema, "db_owner"},
                                           {16385, "db_accessadmin"},
                                           {16386, "db_securityadmin"},
                                           {16387, "db_ddladmin"},
                                           {16389, "db_backupoperator"},
                                           {16390, "db_datareader"},
                                           {16391, "db_datawriter"},
                                           {16392, "db_denydatareader"},
                                           {16393, "db_denydatawriter"}};

} // namespace

std::span<const ServerSchema> ServerSchemas() {
  return kServerSchemas;
}

const ServerSchema* FindServerSchema(std::string_view name) {
  const auto* const found = std::ranges::find_if(
      kServerSchemas, [name](const ServerSchema& schema) { return EqualNames(schema.name, name); });
  return found != std::end(kServerSchemas) ? found : nullptr;
}

bool IsDbo(std::string_view name) {
  return EqualNames(name, "dbo");
}

} // namespace tsql
