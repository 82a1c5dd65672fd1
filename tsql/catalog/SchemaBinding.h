// Views and functions WITH SCHEMABINDING: what they name cannot be dropped or changed under them.
#pragma once

#include "tsql/catalog/TableInfo.h"

namespace tsql {

// Whether the text of the module says so.
bool IsSchemaBound(const ModuleInfo& module);

// Whether the text of the module has the name in it, as a name.
bool Names(const ModuleInfo& module, std::string_view name);

} // namespace tsql
