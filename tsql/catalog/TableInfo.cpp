#include "tsql/catalog/TableInfo.h"

#include "tsql/sqlite/Quotation.h"
#include "tsql/values/Collation.h"

namespace tsql {

Place PlaceOf(const ObjectName& name) {
  if (name.name.starts_with("##")) return Place::Global;
  return name.name.starts_with("#") ? Place::Temp : Place::Main;
}

bool NameLess::operator()(const std::string& left, const std::string& right) const {
  return CompareText(left, right) < 0;
}

int TableInfo::FindColumn(std::string_view columnName) const {
  for (size_t i = 0; i < columns.size(); ++i)
    if (EqualNames(columns[i].name, columnName)) return static_cast<int>(i);
  return -1;
}

std::string TableInfo::SqlName() const {
  return std::string(PlaceName(place)) + "." + QuoteName(storageName);
}

} // namespace tsql
