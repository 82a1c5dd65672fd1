// The system's own views, as far as scripts ask them whether something is there. The emitter has their SQL.
#pragma once

#include "tsql/syntax/QueryTree.h"

namespace tsql {

struct SystemView {
  enum class Id : uint8_t {
    SysObjects,         // sysobjects
    SysColumns,         // syscolumns
    Objects,            // sys.objects
    Tables,             // sys.tables
    Schemas,            // sys.schemas
    Schemata,           // INFORMATION_SCHEMA.SCHEMATA
    Types,              // sys.types
    Procedures,         // sys.procedures
    Views,              // sys.views
    Indexes,            // sys.indexes
    IndexColumns,       // sys.index_columns
    ForeignKeys,        // sys.foreign_keys
    ForeignKeyColumns,  // sys.foreign_key_columns
    KeyConstraints,     // sys.key_constraints
    DefaultConstraints, // sys.default_constraints
    CheckConstraints,   // sys.check_constraints
    TableConstraints,   // INFORMATION_SCHEMA.TABLE_CONSTRAINTS
    KeyColumns,         // INFORMATION_SCHEMA.KEY_COLUMN_USAGE
    Routines,           // INFORMATION_SCHEMA.ROUTINES
    SchemaViews,        // INFORMATION_SCHEMA.VIEWS
    SysIndexes,         // sysindexes
    SysComments,        // syscomments
    SysTypes,           // systypes
    SqlModules,         // sys.sql_modules
    Columns,            // sys.columns
    Triggers,           // sys.triggers
    SchemaTables,       // INFORMATION_SCHEMA.TABLES
    SchemaColumns,      // INFORMATION_SCHEMA.COLUMNS
  };
  Id id;
  const char* schema; // that has to be written; null for dbo, which does not
  const char* name;
  std::vector<Column> columns;
};

// Null when the name means none of them.
const SystemView* FindSystemView(const ObjectName& name);

} // namespace tsql
