#include "tsql/catalog/TableInfo.h"

#include "tsql/values/Collation.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/NameHash.h"
#include "tsql/values/PowersOfTen.h"
#include "tsql/values/Quotation.h"

namespace tsql {

Place PlaceOf(const ObjectName& name) {
  if (name.variable) return Place::Temp;
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

std::string TableInfo::DefaultName(size_t column) const {
  for (const KeyInfo& key : keys)
    if (key.kind == KeyKind::Default && key.columns[0] == static_cast<int>(column)) return key.name;
  constexpr size_t kTablePart = 9;
  constexpr size_t kColumnPart = 5;
  const std::string& columnName = columns[column].name;
  const uint32_t hash = HashOfName(storageName + "." + columnName);
  std::string made = "DF__" + name.substr(0, kTablePart) + "__" + columnName.substr(0, kColumnPart) + "__";
  for (unsigned shift = 32; shift > 0; shift -= 8) AppendHex(made, static_cast<char>(hash >> (shift - 8)));
  return made;
}

std::string TableInfo::StoredColumns() const {
  std::string list;
  for (const ColumnInfo& column : columns)
    if (!column.IsComputed()) list += (list.empty() ? "" : ", ") + QuoteName(column.name);
  return list;
}

std::string TableInfo::QualifiedName() const {
  return (schema.empty() ? "dbo" : schema) + "." + name;
}

std::string TableInfo::FullName(std::string_view databaseName) const {
  return std::string(place == Place::Main ? databaseName : "tempdb") + "." + QualifiedName();
}

std::string TableInfo::ConstraintKey(const KeyInfo& key) const {
  if (schema.empty()) return key.name;
  return storageName.substr(0, storageName.size() - name.size()) + key.name;
}

IdentityRange IdentityRangeOf(const Type& type) {
  switch (type.id) {
  case TypeId::TinyInt: return {0, UINT8_MAX};
  case TypeId::SmallInt: return {INT16_MIN, INT16_MAX};
  case TypeId::Int: return {INT32_MIN, INT32_MAX};
  case TypeId::Decimal: {
    const int64_t largest = PowerOfTen(type.precision) - 1;
    return {-largest, largest};
  }
  default: return {INT64_MIN, INT64_MAX};
  }
}

bool IsSameModule(const ModuleInfo& left, const ModuleInfo& right) {
  return left.text == right.text && left.key == right.key && left.schema == right.schema &&
         left.options == right.options;
}

std::string TableInfo::SqlName() const {
  return std::string(PlaceName(place)) + "." + QuoteName(storageName);
}

} // namespace tsql
