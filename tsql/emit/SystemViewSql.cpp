#include "tsql/emit/SystemViewSql.h"

#include "tsql/catalog/Storage.h"
#include "tsql/functions/FunctionNames.h"

namespace tsql {
namespace {

std::string Main(const char* table) {
  return std::string("main.") + table;
}

std::string Call(const char* function, const char* arguments) {
  return std::string(function) + "(" + arguments + ")";
}

// Tables, views, procedures, functions and triggers, with the kinds by which the system's views know them.
std::string Objects() {
  struct Kind {
    ModuleKind kind;
    const char* type;
    const char* description;
  };
  constexpr Kind kKinds[] = {{ModuleKind::View, "V ", "VIEW"},
                             {ModuleKind::Procedure, "P ", "SQL_STORED_PROCEDURE"},
                             {ModuleKind::ScalarFunction, "FN", "SQL_SCALAR_FUNCTION"},
                             {ModuleKind::InlineFunction, "IF", "SQL_INLINE_TABLE_VALUED_FUNCTION"},
                             {ModuleKind::TableFunction, "TF", "SQL_TABLE_VALUED_FUNCTION"},
                             {ModuleKind::Trigger, "TR", "SQL_TRIGGER"}};
  std::string type = "CASE kind % " + std::to_string(storage::kDisabled);
  std::string description = type;
  for (const Kind& kind : kKinds) {
    const std::string when = " WHEN " + std::to_string(static_cast<int>(kind.kind)) + " THEN '";
    type += when + kind.type + "'";
    description += when + kind.description + "'";
  }
  return "(SELECT name, 'U ' AS xtype, 'USER_TABLE' AS description FROM " + Main(storage::kTables) +
         " UNION ALL SELECT name, " + type + " END, " + description + " END FROM " + Main(storage::kModules) +
         ")";
}

} // namespace

std::string SystemViewSql(const SystemView& view) {
  using Id = SystemView::Id;
  const std::string id = Call(names::kObjectId, "name");
  const std::string tableId = Call(names::kObjectId, "table_name");
  const std::string length = Call(names::kColLength, "table_name, name");
  switch (view.id) {
  case Id::SysObjects: return "SELECT name, " + id + " AS id, xtype, xtype AS type FROM " + Objects();
  case Id::SysColumns:
    return "SELECT name, " + tableId + " AS id, ordinal + 1 AS colid, " + length +
           " AS length, nullable AS isnullable, identity > 1 AS iscomputed FROM " + Main(storage::kColumns);
  case Id::Objects:
    return "SELECT name, " + id + " AS object_id, xtype AS type, description AS type_desc FROM " + Objects();
  case Id::Tables: return "SELECT name, " + id + " AS object_id FROM " + Main(storage::kTables);
  case Id::Columns:
    return "SELECT name, " + tableId + " AS object_id, ordinal + 1 AS column_id, " + length +
           " AS max_length, nullable AS is_nullable, identity = 1 AS is_identity, identity > 1 AS is_computed "
           "FROM " +
           Main(storage::kColumns);
  case Id::Triggers:
    return "SELECT name, " + id + " AS object_id, " +
           Call(names::kObjectId, Call(names::kTriggerTable, "name").c_str()) +
           " AS parent_id, 'TR' AS type, 'SQL_TRIGGER' AS type_desc, kind > " +
           std::to_string(storage::kDisabled) + " AS is_disabled, " + Call(names::kIsInsteadOf, "name") +
           " AS is_instead_of_trigger FROM " + Main(storage::kModules) + " WHERE kind % " +
           std::to_string(storage::kDisabled) + " = " + std::to_string(static_cast<int>(ModuleKind::Trigger));
  case Id::SchemaTables:
    return "SELECT 'dbo' AS TABLE_SCHEMA, name AS TABLE_NAME, iif(xtype = 'V ', 'VIEW', 'BASE TABLE') AS "
           "TABLE_TYPE FROM " +
           Objects() + " WHERE xtype IN ('U ', 'V ')";
  case Id::SchemaColumns: break;
  }
  return "SELECT 'dbo' AS TABLE_SCHEMA, table_name AS TABLE_NAME, name AS COLUMN_NAME, ordinal + 1 AS "
         "ORDINAL_POSITION, iif(identity > 1, NULL, nullif(default_text, '')) AS COLUMN_DEFAULT, iif(nullable, 'YES', 'NO') AS "
         "IS_NULLABLE, " +
         Call(names::kTypeName, "type") + " AS DATA_TYPE, " + Call(names::kCharLength, "type") +
         " AS CHARACTER_MAXIMUM_LENGTH FROM " + Main(storage::kColumns);
}

} // namespace tsql
