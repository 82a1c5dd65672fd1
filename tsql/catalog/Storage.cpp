#include "tsql/catalog/Storage.h"

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

std::string IndexName(std::string_view table, std::string_view key) {
  return std::string(table) + "." + std::string(key);
}

std::string NullSafeIndexName(std::string_view table, std::string_view key) {
  return IndexName(table, key) + "~";
}

std::string TriggerName(std::string_view key, ForeignKeyEvent event) {
  return "~" + std::string(key) + "~" + static_cast<char>(event);
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
  connection.Run("PRAGMA main.user_version = " + std::to_string(kVersion));
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
