#include "tsql/catalog/SystemViews.h"

#include "tsql/values/Collation.h"

namespace tsql {
namespace {

const std::vector<SystemView>& Views() {
  using Id = SystemView::Id;
  const Type kName = MakeType(TypeId::NVarChar, 128);
  const Type kLongText = MakeType(TypeId::NVarChar, 4000);
  const Type kInt = MakeType(TypeId::Int);
  const Type kSmall = MakeType(TypeId::SmallInt);
  const Type kBit = MakeType(TypeId::Bit);
  const Type kTwo = MakeType(TypeId::Char, 2);
  const Type kShort = MakeType(TypeId::VarChar, 10);
  static const std::vector<SystemView> views = {
      {Id::SysObjects,
       nullptr,
       "sysobjects",
       {{"name", kName, false},
        {"id", kInt, false},
        {"xtype", kTwo, false},
        {"uid", kSmall, true},
        {"type", kTwo, false}}},
      {Id::SysColumns,
       nullptr,
       "syscolumns",
       {{"name", kName, false},
        {"id", kInt, false},
        {"colid", kSmall, false},
        {"length", kSmall, true},
        {"isnullable", kInt, false},
        {"iscomputed", kInt, false}}},
      {Id::Objects,
       "sys",
       "objects",
       {{"name", kName, false},
        {"object_id", kInt, false},
        {"schema_id", kInt, false},
        {"parent_object_id", kInt, false},
        {"type", kTwo, false},
        {"type_desc", kName, false}}},
      {Id::Tables,
       "sys",
       "tables",
       {{"name", kName, false}, {"object_id", kInt, false}, {"schema_id", kInt, false}}},
      {Id::Schemas,
       "sys",
       "schemas",
       {{"name", kName, false}, {"schema_id", kInt, false}, {"principal_id", kInt, true}}},
      {Id::Schemata,
       "information_schema",
       "schemata",
       {{"CATALOG_NAME", kName, true}, {"SCHEMA_NAME", kName, false}, {"SCHEMA_OWNER", kName, true}}},
      {Id::Columns,
       "sys",
       "columns",
       {{"name", kName, false},
        {"object_id", kInt, false},
        {"column_id", kInt, false},
        {"max_length", kSmall, true},
        {"is_nullable", kBit, false},
        {"is_identity", kBit, false},
        {"is_computed", kBit, false}}},
      {Id::Triggers,
       "sys",
       "triggers",
       {{"name", kName, false},
        {"object_id", kInt, false},
        {"parent_id", kInt, false},
        {"type", kTwo, false},
        {"type_desc", kName, false},
        {"is_disabled", kBit, false},
        {"is_instead_of_trigger", kBit, false}}},
      {Id::SchemaTables,
       "information_schema",
       "tables",
       {{"TABLE_SCHEMA", kName, false}, {"TABLE_NAME", kName, false}, {"TABLE_TYPE", kShort, false}}},
      {Id::SchemaColumns,
       "information_schema",
       "columns",
       {{"TABLE_SCHEMA", kName, false},
        {"TABLE_NAME", kName, false},
        {"COLUMN_NAME", kName, false},
        {"ORDINAL_POSITION", kInt, false},
        {"COLUMN_DEFAULT", kLongText, true},
        {"IS_NULLABLE", kShort, false},
        {"DATA_TYPE", kName, false},
        {"CHARACTER_MAXIMUM_LENGTH", kInt, true}}}};
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
