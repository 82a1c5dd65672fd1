#include "tsql/catalog/SystemViews.h"

#include "tsql/values/Collation.h"

namespace tsql {
namespace {

const std::vector<SystemView>& Views() {
  const Type kName = MakeType(TypeId::NVarChar, 128);
  const Type kInt = MakeType(TypeId::Int);
  const Type kSmall = MakeType(TypeId::SmallInt);
  const Type kTwo = MakeType(TypeId::Char, 2);
  const Type kShort = MakeType(TypeId::VarChar, 10);
  // Tables, and views (1) and procedures (2) as the modules' table numbers them.
  const std::string kObjects =
      "(SELECT name, 'U ' AS xtype, 'USER_TABLE' AS description FROM main.\"~tables\" UNION ALL"
      " SELECT name, iif(kind = 1, 'V ', 'P '), iif(kind = 1, 'VIEW', 'SQL_STORED_PROCEDURE') FROM "
      "main.\"~modules\")";
  static const std::vector<SystemView> views = {
      {nullptr,
       "sysobjects",
       {{"name", kName, false}, {"id", kInt, false}, {"xtype", kTwo, false}, {"type", kTwo, false}},
       "SELECT name, t_object_id(name) AS id, xtype, xtype AS type FROM " + kObjects},
      {nullptr,
       "syscolumns",
       {{"name", kName, false},
        {"id", kInt, false},
        {"colid", kSmall, false},
        {"length", kSmall, true},
        {"isnullable", kInt, false}},
       "SELECT name, t_object_id(table_name) AS id, ordinal + 1 AS colid, t_col_length(table_name, name) AS "
       "length,"
       " nullable AS isnullable FROM main.\"~columns\""},
      {"sys",
       "objects",
       {{"name", kName, false},
        {"object_id", kInt, false},
        {"type", kTwo, false},
        {"type_desc", kName, false}},
       "SELECT name, t_object_id(name) AS object_id, xtype AS type, description AS type_desc FROM " +
           kObjects},
      {"sys",
       "tables",
       {{"name", kName, false}, {"object_id", kInt, false}},
       "SELECT name, t_object_id(name) AS object_id FROM main.\"~tables\""},
      {"sys",
       "columns",
       {{"name", kName, false},
        {"object_id", kInt, false},
        {"column_id", kInt, false},
        {"max_length", kSmall, true},
        {"is_nullable", MakeType(TypeId::Bit), false},
        {"is_identity", MakeType(TypeId::Bit), false}},
       "SELECT name, t_object_id(table_name) AS object_id, ordinal + 1 AS column_id,"
       " t_col_length(table_name, name) AS max_length, nullable AS is_nullable, identity AS is_identity"
       " FROM main.\"~columns\""},
      {"information_schema",
       "tables",
       {{"TABLE_SCHEMA", kName, false}, {"TABLE_NAME", kName, false}, {"TABLE_TYPE", kShort, false}},
       "SELECT 'dbo' AS TABLE_SCHEMA, name AS TABLE_NAME, iif(xtype = 'V ', 'VIEW', 'BASE TABLE') AS "
       "TABLE_TYPE"
       " FROM " +
           kObjects + " WHERE xtype <> 'P '"},
      {"information_schema",
       "columns",
       {{"TABLE_SCHEMA", kName, false},
        {"TABLE_NAME", kName, false},
        {"COLUMN_NAME", kName, false},
        {"ORDINAL_POSITION", kInt, false},
        {"COLUMN_DEFAULT", MakeType(TypeId::NVarChar, 4000), true},
        {"IS_NULLABLE", kShort, false},
        {"DATA_TYPE", kName, false},
        {"CHARACTER_MAXIMUM_LENGTH", kInt, true}},
       "SELECT 'dbo' AS TABLE_SCHEMA, table_name AS TABLE_NAME, name AS COLUMN_NAME, ordinal + 1 AS "
       "ORDINAL_POSITION,"
       " nullif(default_text, '') AS COLUMN_DEFAULT, iif(nullable, 'YES', 'NO') AS IS_NULLABLE,"
       " t_type_name(type) AS DATA_TYPE, t_char_length(type) AS CHARACTER_MAXIMUM_LENGTH FROM "
       "main.\"~columns\""}};
  return views;
}

} // namespace

const SystemView* FindSystemView(const ObjectName& name) {
  for (const SystemView& view : Views()) {
    const bool isSchema = view.schema != nullptr ? EqualNames(name.schema, view.schema)
                                                 : name.schema.empty() || EqualNames(name.schema, "dbo");
    if (isSchema && EqualNames(name.name, view.name)) return &view;
  }
  return nullptr;
}

} // namespace tsql
