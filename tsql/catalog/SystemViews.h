// The system's own views, as far as scripts ask them whether something is there: sysobjects, syscolumns,
// sys.objects, sys.tables, sys.columns, INFORMATION_SCHEMA.TABLES and .COLUMNS.
#pragma once

#include "tsql/syntax/Tree.h"

namespace tsql {

struct SystemView {
  const char* schema; // that has to be written; null for dbo, which does not
  const char* name;
  std::vector<Column> columns;
  std::string sql; // SQLite's query; its columns are called as `columns` are
};

// Null when the name means none of them.
const SystemView* FindSystemView(const ObjectName& name);

} // namespace tsql
