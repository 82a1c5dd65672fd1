// What PIVOT and UNPIVOT ask of the queries that stand for them.
#include <algorithm>
#include <optional>

#include "tsql/bind/Binder.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {

void Binder::GroupByStar(const Select& select, BoundSelect& bound) const {
  for (const ScopeSource& source : scope_->sources) {
    for (const ScopeColumn& column : source.columns) {
      if (ContainsName(select.items.front().starWithout, column.name)) continue;
      for (const SelectItem& item : select.items)
        if (EqualNames(item.alias, column.name)) Fail(265, {column.name});
      if (IsLob(column.type.id)) Fail(402, {TypeName(column.type.id), TypeName(column.type.id), "group by"});
      bound.groupBy.push_back(MakeColumn(source, column));
    }
  }
}

// 8167 unless the columns have one type.
void Binder::CheckUnpivoted(const SelectItem& star) const {
  std::optional<Type> type;
  for (const ScopeColumn& column : scope_->sources.front().columns) {
    if (!ContainsName(star.starWithout, column.name)) continue;
    if (type && *type != column.type) Fail(8167, {column.name});
    type = column.type;
  }
}

} // namespace tsql
