// The system's own views, as far as scripts ask them whether something is there. The emitter has their SQL.
#pragma once

#include "tsql/syntax/QueryTree.h"

namespace tsql {

struct SystemView {
  enum class Id : uint8_t {
    SysObjects,    // sysobjects
    SysColumns,    // syscolumns
    Objects,       // sys.objects
    Tables,        // sys.tables
    Schemas,       // sys.schemas
    Schemata,      // INFORMATION_SCHEMA.SCHEMATA
    Columns,       // sys.columns
    Triggers,      // sys.triggers
    SchemaTables,  // INFORMATION_SCHEMA.TABLES
    SchemaColumns, // INFORMATION_SCHEMA.COLUMNS
  };
  Id id;
  const char* schema; // that has to be written; null for dbo, which does not
  const char* name;
  std::vector<Column> columns;
};

// Null when the name means none of them.
const SystemView* FindSystemView(const ObjectName& name);

} // namespace tsql
