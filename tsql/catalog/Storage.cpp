#include "tsql/catalog/Storage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

#include "tsql/values/Errors.h"

namespace tsql {
namespace {

int64_t ReadPragma(const Connection& connection, const char* name) {
  PreparedStatement statement = connection.Prepare(std::string("PRAGMA main.") + name);
  return statement.Step() ? statement.ColumnInteger(0) : 0;
}

} // namespace

const char* PlaceName(Place place) {
  return place == Place::Main ? "main" : place == Place::Global ? "global" : "temp";
}

namespace storage {

std::string ObjectKey(int64_t schema, std::string_view name) {
  return "~" + std::to_string(schema) + "~" + std::string(name);
}

std::optional<KeyParts> SplitKey(std::string_view key) {
  if (!key.starts_with('~')) return std::nullopt;
  KeyParts parts;
  const char* const end = key.data() + key.size();
  const auto [rest, error] = std::from_chars(key.data() + 1, end, parts.schema);
  if (error != std::errc() || rest == end || *rest != '~') return std::nullopt;
  parts.name = {rest + 1, static_cast<size_t>(end - rest - 1)};
  return parts;
}

bool IsOwnName(std::string_view name) {
  if (SplitKey(name)) return true;
  constexpr std::string_view kSqlite = "sqlite_";
  if (EqualNames(name.substr(0, kSqlite.size()), kSqlite) || EqualNames(name, kRebuilt)) return true;
  constexpr std::string_view kOwn[] = {kTables,  kColumns,    kKeys,      kModules,
                                       kSchemas, kIdentities, kCollations};
  return std::any_of(std::begin(kOwn), std::end(kOwn), [name](std::string_view quoted) {
    return EqualNames(name, quoted.substr(1, quoted.size() - 2));
  });
}

std::string IndexName(std::string_view table, std::string_view key) {
  return std::string(table) + "." + std::string(key);
}

std::string NullSafeIndexName(std::string_view table, std::string_view key) {
  return IndexName(table, key) + "~";
}

std::string TriggerName(std::string_view key, ForeignKeyEvent event) {
  return "~" + std::string(key) + "~" + static_cast<char>(event);
}

const char* CollationOf(CollationId id) {
  constexpr std::array<const char*, 3> kNames = {kCollation, kCasedCollation, kBinaryCollation};
  return kNames[static_cast<size_t>(id)];
}

bool IsMarked(const Connection& connection) {
  return ReadPragma(connection, "application_id") == kApplicationId;
}

void Mark(const Connection& connection) {
  connection.Run("PRAGMA main.application_id = " + std::to_string(kApplicationId));
  MarkVersion(connection);
}

bool CheckVersion(const Connection& connection, const std::string& databaseName) {
  const int64_t version = ReadPragma(connection, "user_version");
  if (version > kVersion) Fail(948, {databaseName, std::to_string(version), std::to_string(kVersion)});
  return version != 0;
}

void MarkVersion(const Connection& connection) {
  connection.Run("PRAGMA main.user_version = " + std::to_string(kFirstVersion));
}

void RequireVersion(const Connection& connection, int64_t version) {
  if (ReadPragma(connection, "user_version") >= version) return;
  connection.Run("PRAGMA main.user_version = " + std::to_string(version));
}

bool HasSchemas(const Connection& connection) {
  if (ReadPragma(connection, "user_version") < kSchemaVersion) return false;
  PreparedStatement table = connection.Prepare("SELECT 1 FROM main.sqlite_schema WHERE name = '~schemas'");
  return table.Step();
}

void CreateSchemas(const Connection& connection) {
  RequireVersion(connection, kSchemaVersion);
  connection.Run(std::string("CREATE TABLE main.") + kSchemas + "(id INTEGER PRIMARY KEY, name TEXT)");
}

bool HasCollations(const Connection& connection, Place place) {
  if (place == Place::Main && ReadPragma(connection, "user_version") < kCollationVersion) return false;
  PreparedStatement table = connection.Prepare(std::string("SELECT 1 FROM ") + PlaceName(place) +
                                               ".sqlite_schema WHERE name = '~collations'");
  return table.Step();
}

void CreateCollations(const Connection& connection, Place place) {
  if (place == Place::Main) RequireVersion(connection, kCollationVersion);
  connection.Run(std::string("CREATE TABLE IF NOT EXISTS ") + PlaceName(place) + "." + kCollations +
                 "(table_name TEXT, ordinal INTEGER, name TEXT, PRIMARY KEY(table_name, ordinal))");
}

void CreateTables(const Connection& connection, Place place) {
  const std::string create = std::string("CREATE TABLE IF NOT EXISTS ") + PlaceName(place) + ".";
  connection.Run(
      create + kTables + "(name TEXT PRIMARY KEY, seed INTEGER, rowid_column INTEGER);" + create + kColumns +
      "(table_name TEXT, ordinal INTEGER, name TEXT, type INTEGER, nullable INTEGER, "
      "identity INTEGER, default_text TEXT, PRIMARY KEY(table_name, ordinal));" +
      create + kKeys + "(table_name TEXT, name TEXT, kind INTEGER, columns TEXT, check_text TEXT);" + create +
      kModules + "(name TEXT PRIMARY KEY, kind INTEGER, text TEXT);");
}

} // namespace storage
} // namespace tsql
