#include "tsql/run/Diagnostics.h"

#include <utility>

#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

Error NullError(std::string_view column, const TableInfo* table, const Catalog& catalog,
                std::string_view verb) {
  const std::string name = table != nullptr ? table->FullName(catalog.DatabaseName()) : std::string();
  return MakeError(515, 0, {column, name, verb});
}

// The text after "failed: " in SQLite's message: "T.a, T.b" or "index 'T.key'".
std::string_view FailedPart(std::string_view message) {
  const size_t at = message.find("failed: ");
  return at == std::string_view::npos ? message : message.substr(at + 8);
}

const KeyInfo* FindKeyByIndex(const TableInfo& table, std::string_view message) {
  for (const KeyInfo& key : table.keys)
    if (message == "index '" + storage::NullSafeIndexName(table.storageName, key.name) + "'") return &key;
  return nullptr;
}

const KeyInfo* FindKeyByColumns(const TableInfo& table, std::string_view message) {
  for (const KeyInfo& key : table.keys) {
    if (!key.HasIndex() || key.kind == KeyKind::Index) continue;
    std::string columns;
    for (const int column : key.columns)
      columns += (columns.empty() ? "" : ", ") + table.storageName + "." +
                 table.columns[static_cast<size_t>(column)].name;
    if (message == columns) return &key;
  }
  return nullptr;
}

std::optional<Error> UniqueError(std::string_view message, const TableInfo& table) {
  const KeyInfo* key = FindKeyByIndex(table, FailedPart(message));
  if (key == nullptr) key = FindKeyByColumns(table, FailedPart(message));
  if (key == nullptr) return std::nullopt;
  if (key->kind == KeyKind::UniqueIndex) return MakeError(2601, 0, {table.QualifiedName(), key->name});
  const char* kind = key->kind == KeyKind::PrimaryKey ? "PRIMARY KEY" : "UNIQUE KEY";
  return MakeError(2627, 0, {kind, key->name, table.QualifiedName()});
}

const KeyInfo* FindCheck(const TableInfo& table, std::string_view name) {
  for (const KeyInfo& key : table.keys)
    if (key.kind == KeyKind::Check && key.name == name) return &key;
  return nullptr;
}

} // namespace

Error CheckError(const KeyInfo& check, const TableInfo& table, std::string_view verb, const Catalog& catalog,
                 const Compiler& compiler) {
  const std::vector<int> columns = compiler.ColumnsOfCheck(table, check.checkText);
  const std::string column =
      columns.size() == 1 ? ", column '" + table.columns[static_cast<size_t>(columns[0])].name + "'" : "";
  return MakeError(547, 0,
                   {verb, "CHECK", check.name, catalog.DatabaseName(), table.QualifiedName(), column});
}

Error TranslateFailure(const SqliteFailure& failure, FunctionContext& context, const Catalog& catalog,
                       const Compiler& compiler, const TableInfo* target, std::string_view verb) {
  const std::string_view message = failure.what();
  if (context.error) {
    const Error error = *std::exchange(context.error, std::nullopt);
    return error.number == 515 ? NullError(error.what(), target, catalog, verb) : error;
  }
  switch (failure.code) {
  case SQLITE_CONSTRAINT_NOTNULL: {
    const std::string_view part = FailedPart(message);
    return NullError(part.substr(part.rfind('.') + 1), target, catalog, verb);
  }
  case SQLITE_CONSTRAINT_UNIQUE:
  case SQLITE_CONSTRAINT_PRIMARYKEY:
  case SQLITE_CONSTRAINT_ROWID:
    if (target != nullptr)
      if (const std::optional<Error> error = UniqueError(message, *target)) return *error;
    break;
  case SQLITE_CONSTRAINT_CHECK:
    if (const KeyInfo* check = target != nullptr ? FindCheck(*target, FailedPart(message)) : nullptr)
      return CheckError(*check, *target, verb, catalog, compiler);
    return MakeError(547, 0,
                     {verb, "CHECK", FailedPart(message), catalog.DatabaseName(),
                      target != nullptr ? target->QualifiedName() : std::string()});
  case SQLITE_CONSTRAINT_COMMITHOOK: return StorageError("out of memory"); // a transaction was lost for it
  default: break;
  }
  const int kind = failure.code & 0xFF;
  if (kind == SQLITE_BUSY || kind == SQLITE_LOCKED || kind == SQLITE_PROTOCOL) return MakeError(1222, 0, {});
  // Tables and indexes share their names in SQLite, and an index has the name of its table in front.
  if (message.starts_with("there is already a"))
    return MakeError(kUnsupportedError, 0,
                     {RefusedConstruct("A name that the storage has for itself").Name()});
  if (message == "integer overflow") return MakeError(8115, 0, {"expression", "int"});
  return StorageError(message);
}

Error StorageError(std::string_view message) {
  constexpr int kStorageError = 823;
  return {kStorageError, 24, 2, 0, "The storage engine failed: " + std::string(message)};
}

} // namespace tsql
