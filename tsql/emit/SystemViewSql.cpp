#include "tsql/emit/SystemViewSql.h"

#include "tsql/catalog/Storage.h"
#include "tsql/emit/Emitter.h"
#include "tsql/functions/FunctionNames.h"
#include "tsql/values/Quotation.h"

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

// A view whose rows the catalog has.
std::string RowsOf(const SystemView& view) {
  std::string columns;
  for (size_t i = 0; i < view.columns.size(); ++i)
    columns += (i > 0 ? ", " : "") + ResultColumnName(i) + " AS " + QuoteName(view.columns[i].name);
  return "SELECT " + columns + " FROM temp." + names::kFunctionRows + "(" +
         std::to_string(static_cast<int>(view.id)) + ")";
}

} // namespace

std::string SystemViewSql(const SystemView& view) {
  using Id = SystemView::Id;
  const std::string id = Call(names::kKeyId, "name");
  const std::string name = Call(names::kKeyName, "name") + " AS name";
  const std::string schema = Call(names::kKeySchema, "name");
  const std::string tableId = Call(names::kKeyId, "table_name");
  const std::string length = Call(names::kKeyColLength, "table_name, name");
  const std::string collation = Call(names::kColumnCollation, "table_name, name");
  // A trigger belongs to its table or view, other objects to none.
  const std::string parent =
      "ifnull(" + Call(names::kKeyId, Call(names::kTriggerTable, "name").c_str()) + ", 0)";
  switch (view.id) {
  case Id::SysObjects:
    return "SELECT " + name + ", " + id + " AS id, xtype, " + schema + " AS uid, xtype AS type FROM " +
           Objects();
  case Id::SysColumns:
    return "SELECT name, id, xtype, xtype AS xusertype, length, colid, colid AS colorder, "
           "CASE WHEN digits > 0 THEN digits WHEN length > 0 AND xtype IN (231, 239) THEN length / 2 ELSE length "
           "END AS prec, iif(digits > 0, scale, NULL) AS scale, iscomputed, isnullable FROM (SELECT name, " +
           tableId + " AS id, " + Call(names::kTypeId, "type") + " AS xtype, " + length +
           " AS length, ordinal + 1 AS colid, " + Call(names::kTypePrecision, "type") + " AS digits, " +
           Call(names::kTypeScale, "type") +
           " AS scale, identity IN (2, 3) AS iscomputed, nullable AS isnullable FROM " +
           Main(storage::kColumns) + ")";
  case Id::Objects:
    return "SELECT " + name + ", " + id + " AS object_id, " + schema + " AS schema_id, iif(xtype = 'TR', " +
           parent + ", 0) AS parent_object_id, xtype AS type, description AS type_desc FROM " + Objects();
  case Id::Tables:
    return "SELECT " + name + ", " + id + " AS object_id, " + schema + " AS schema_id FROM " +
           Main(storage::kTables);
  case Id::Columns:
    return "SELECT name, " + tableId + " AS object_id, ordinal + 1 AS column_id, " +
           Call(names::kTypeId, "type") + " AS system_type_id, " + Call(names::kTypeId, "type") +
           " AS user_type_id, " + length + " AS max_length, " + Call(names::kTypePrecision, "type") +
           " AS \"precision\", " + Call(names::kTypeScale, "type") + " AS scale, " + collation +
           " AS collation_name, nullable AS is_nullable, identity IN (1, 4) AS is_identity, identity IN (2, 3) AS is_computed "
           "FROM " +
           Main(storage::kColumns);
  case Id::Triggers:
    return "SELECT " + name + ", " + id + " AS object_id, " + parent +
           " AS parent_id, 'TR' AS type, 'SQL_TRIGGER' AS type_desc, (kind & " +
           std::to_string(storage::kDisabled) + ") != 0 AS is_disabled, " +
           Call(names::kIsInsteadOf, "name") + " AS is_instead_of_trigger FROM " + Main(storage::kModules) +
           " WHERE kind % " + std::to_string(storage::kDisabled) + " = " +
           std::to_string(static_cast<int>(ModuleKind::Trigger));
  case Id::SchemaTables:
    return "SELECT " + Call(names::kSchemaName, schema.c_str()) + " AS TABLE_SCHEMA, " +
           Call(names::kKeyName, "name") +
           " AS TABLE_NAME, iif(xtype = 'V ', 'VIEW', 'BASE TABLE') AS TABLE_TYPE FROM " + Objects() +
           " WHERE xtype IN ('U ', 'V ')";
  case Id::SchemaColumns:
    return "SELECT " + Call(names::kSchemaName, Call(names::kKeySchema, "table_name").c_str()) +
           " AS TABLE_SCHEMA, " + Call(names::kKeyName, "table_name") +
           " AS TABLE_NAME, name AS COLUMN_NAME, ordinal + 1 AS "
           "ORDINAL_POSITION, iif(identity > 1, NULL, nullif(default_text, '')) AS COLUMN_DEFAULT, "
           "iif(nullable, 'YES', 'NO') AS IS_NULLABLE, " +
           Call(names::kTypeName, "type") + " AS DATA_TYPE, " + Call(names::kCharLength, "type") +
           " AS CHARACTER_MAXIMUM_LENGTH, " + collation + " AS COLLATION_NAME FROM " +
           Main(storage::kColumns);
  default: return RowsOf(view);
  }
}

} // namespace tsql
