// The schemas that every database has from the server. Of those only dbo can have objects here.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace tsql {

struct ServerSchema {
  int64_t id;
  std::string_view name;
  bool isClosed = false; // to objects of users
};

inline constexpr int64_t kDboSchema = 1;
inline constexpr int64_t kFirstUserSchema = 5;
inline constexpr int64_t kFirstRoleSchema = 16384; // the roles of the database have one each
inline constexpr int64_t kLastRoleSchema = 16399;

std::span<const ServerSchema> ServerSchemas();
// Null when it is none of the server's.
const ServerSchema* FindServerSchema(std::string_view name);
bool IsDbo(std::string_view name);

} // namespace tsql
