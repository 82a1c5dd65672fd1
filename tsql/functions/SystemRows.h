// The rows of those system views that the catalog answers, each with the values of the view's columns in
// their order. The other views are queries of the engine's own tables (emit/SystemViewSql.h).
#pragma once

#include "tsql/catalog/Catalog.h"
#include "tsql/catalog/SystemViews.h"
#include "tsql/values/Datum.h"

namespace tsql {

// The number of an object or constraint: positive, and the same for the same key.
int64_t IdOfKey(std::string_view key);

std::vector<std::vector<Datum>> SystemRows(const Catalog& catalog, SystemView::Id view);

} // namespace tsql
