// SQLite's queries behind the system views; their columns are called as those of the view.
#pragma once

#include "tsql/catalog/SystemViews.h"

namespace tsql {

std::string SystemViewSql(const SystemView& view);

} // namespace tsql
