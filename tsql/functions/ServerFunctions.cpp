// What the server says of itself: databases, users, logins, roles and types. There is one database beside
// those of the system, and whoever asks is its owner.
#include <algorithm>
#include <optional>

#include "tsql/functions/FunctionCall.h"
#include "tsql/functions/ServerTypes.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"

namespace tsql {
namespace {

struct Numbered {
  int64_t id;
  std::string_view name;
};
constexpr Numbered kDatabases[] = {{1, "master"}, {2, "tempdb"}, {3, "model"}, {4, "msdb"}};
constexpr int64_t kOwnDatabase = 5;
constexpr Numbered kUsers[] = {
    {0, "public"}, {1, "dbo"}, {2, "guest"}, {3, "INFORMATION_SCHEMA"}, {4, "sys"}};
// The name that the server has for nvarchar(128).
constexpr Numbered kSysname = {256, "sysname"};

template <size_t Count>
std::optional<std::string_view> NameOf(const Numbered (&list)[Count], int64_t id) {
  const auto* const found = std::ranges::find(list, id, &Numbered::id);
  if (found == std::end(list)) return std::nullopt;
  return found->name;
}

void ReturnName(const FunctionCall& call, const std::optional<std::string_view>& name) {
  if (name) return call.ReturnText(*name);
  call.ReturnNull();
}

void DatabaseId(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Count() == 0) return call.ReturnInteger(kOwnDatabase);
  const std::string_view name = TrimTrailingBlanks(call.Text(0));
  if (EqualNames(name, call.Context().catalog->DatabaseName())) return call.ReturnInteger(kOwnDatabase);
  for (const Numbered& database : kDatabases)
    if (EqualNames(name, database.name)) return call.ReturnInteger(database.id);
  call.ReturnNull();
}

void DatabaseNameOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Integer(0) == kOwnDatabase) return call.ReturnText(call.Context().catalog->DatabaseName());
  ReturnName(call, NameOf(kDatabases, call.Integer(0)));
}

void UserNameOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  ReturnName(call, NameOf(kUsers, call.Integer(0)));
}

// The one login has the number 1, and that byte.
void LoginNameOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const bool isKnown = call.IsBlob(0) ? call.Text(0) == "\x01" : call.Integer(0) == 1;
  ReturnName(call, isKnown ? std::optional<std::string_view>("sa") : std::nullopt);
}

void ServerTypeId(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  std::string_view name = TrimTrailingBlanks(call.Text(0));
  constexpr std::string_view kSchema = "sys.";
  if (EqualNames(name.substr(0, kSchema.size()), kSchema)) name.remove_prefix(kSchema.size());
  if (EqualNames(name, kSysname.name)) return call.ReturnInteger(kSysname.id);
  for (const ServerType& type : ServerTypes())
    if (EqualNames(name, type.name)) return call.ReturnInteger(type.id);
  call.ReturnNull();
}

void ServerTypeName(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Integer(0) == kSysname.id) return call.ReturnText(kSysname.name);
  for (const ServerType& type : ServerTypes())
    if (type.id == call.Integer(0)) return call.ReturnText(type.name);
  call.ReturnNull();
}

// t_is_member(role, whether it is one of the server)
void IsMember(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  constexpr std::string_view kOfDatabase[] = {"db_accessadmin",    "db_backupoperator", "db_datareader",
                                              "db_datawriter",     "db_ddladmin",       "db_denydatareader",
                                              "db_denydatawriter", "db_securityadmin"};
  constexpr std::string_view kOfServer[] = {"bulkadmin",     "dbcreator",   "diskadmin", "processadmin",
                                            "securityadmin", "serveradmin", "setupadmin"};
  const std::string_view role = TrimTrailingBlanks(call.Text(0));
  const bool isOfServer = call.Integer(1) != 0;
  const auto isRole = [role](std::string_view name) { return EqualNames(role, name); };
  if (isRole("public") || isRole(isOfServer ? "sysadmin" : "db_owner")) return call.ReturnInteger(1);
  const bool isKnown =
      isOfServer ? std::ranges::any_of(kOfServer, isRole) : std::ranges::any_of(kOfDatabase, isRole);
  if (isKnown) Refuse("Membership of a role other than public, db_owner and sysadmin");
  call.ReturnNull();
}

} // namespace

void RegisterServerFunctions(sqlite3* connection, FunctionContext& context) {
  Register<DatabaseId>(connection, context, names::kDatabaseId, -1);
  Register<DatabaseNameOf>(connection, context, names::kDatabaseName, 1);
  Register<UserNameOf>(connection, context, names::kUserName, 1);
  Register<LoginNameOf>(connection, context, names::kLoginName, 1);
  Register<ServerTypeId>(connection, context, names::kServerTypeId, 1);
  Register<ServerTypeName>(connection, context, names::kServerTypeName, 1);
  Register<IsMember>(connection, context, names::kIsMember, 2);
}

} // namespace tsql
