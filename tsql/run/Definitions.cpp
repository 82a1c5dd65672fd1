#include "tsql/run/Definitions.h"

#include <algorithm>

#include "tsql/run/ForeignKeys.h"
#include "tsql/sqlite/Quotation.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/NameHash.h"
#include "tsql/values/PowersOfTen.h"

namespace tsql {
namespace {

std::string StorageType(const Type& type) {
  switch (FamilyOf(type.id)) {
  case Family::Integer:
  case Family::DateTime: return "INTEGER";
  case Family::Decimal: return IsWide(type) ? "BLOB" : "INTEGER";
  case Family::Float: return "REAL";
  case Family::Text: return std::string("TEXT COLLATE ") + storage::kCollation;
  case Family::Guid: return "TEXT";
  case Family::Binary: break;
  }
  return "BLOB";
}

bool IsIntegerStored(const Type& type) {
  return FamilyOf(type.id) == Family::Integer ||
         (type.id == TypeId::Decimal && !IsWide(type) && type.scale == 0);
}

// Makes a name for a constraint without one, as the server does. It is unique within the table.
std::string GeneratedName(const char* prefix, const TableInfo& table) {
  const uint32_t hash = HashOfName(table.storageName);
  std::string name = std::string(prefix) + "__" + table.name.substr(0, 9) + "__";
  for (unsigned shift = 32; shift > 0; shift -= 8) AppendHex(name, static_cast<char>(hash >> (shift - 8)));
  // Dropped indexes leave gaps, so that the number of keys may be taken.
  size_t number = table.keys.size();
  const auto isTaken = [&](const std::string& candidate) {
    return std::any_of(table.keys.begin(), table.keys.end(),
                       [&](const KeyInfo& key) { return EqualNames(key.name, candidate); });
  };
  while (isTaken(name + std::to_string(number))) ++number;
  return name + std::to_string(number);
}

// The column in a unique index that takes NULLs for equal. In the index a value that the column cannot have
// stands for NULL.
std::string NullSafeKey(const ColumnInfo& column) {
  const bool isBlob = FamilyOf(column.type.id) == Family::Binary || IsWide(column.type);
  std::string key = "ifnull(" + QuoteName(column.name);
  key += isBlob ? ", '')" : ", x'')";
  if (IsText(column.type)) key.append(" COLLATE ").append(storage::kCollation);
  return key;
}

} // namespace

int64_t LargestIdentity(const Type& type) {
  switch (type.id) {
  case TypeId::TinyInt: return UINT8_MAX;
  case TypeId::SmallInt: return INT16_MAX;
  case TypeId::Int: return INT32_MAX;
  case TypeId::Decimal: return PowerOfTen(type.precision) - 1;
  default: return INT64_MAX;
  }
}

void Definitions::CheckNew(const ObjectName& name) const {
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) Refuse("A schema other than dbo");
  if (PlaceOf(name) == Place::Main && storage::IsOwnName(name.name))
    Refuse("A table with a name that the storage has for itself");
  if (catalog_.Exists(name)) Fail(2714, {name.name});
}

void Definitions::AddColumn(TableInfo& table, const ColumnDefinition& definition) const {
  if (table.FindColumn(definition.name) >= 0) Fail(2705, {definition.name, table.name});
  ColumnInfo column;
  column.name = definition.name;
  column.type = definition.type;
  column.nullable = definition.nullable.value_or(!definition.identity);
  column.identity = definition.identity;
  column.defaultText = definition.defaultText;
  if (definition.identity) {
    if (table.identityColumn >= 0) Fail(2744, {table.name});
    if (!definition.defaultText.empty()) Fail(1754, {table.name, column.name});
    if (IsWide(column.type) && column.type.scale == 0) Refuse("An identity column of more than 18 digits");
    if (column.nullable || !IsIntegerStored(column.type) || column.type.id == TypeId::Bit)
      Fail(2749, {column.name});
    table.identityColumn = static_cast<int>(table.columns.size());
    table.seed = definition.seed;
    if (table.seed > LargestIdentity(column.type) || (column.type.id == TypeId::TinyInt && table.seed < 0))
      Fail(2752, {column.name});
  }
  table.columns.push_back(std::move(column));
}

// A constraint's name is unique in the database, and that of a key among the indexes of its table as well.
void Definitions::CheckKeyName(const TableInfo& table, const KeyInfo& key) const {
  for (const KeyInfo& other : table.keys) {
    if (!EqualNames(other.name, key.name)) continue;
    const bool isIndex = other.kind == KeyKind::Index || other.kind == KeyKind::UniqueIndex;
    if (!isIndex) Fail(2714, {key.name});
    if (key.kind == KeyKind::PrimaryKey || key.kind == KeyKind::Unique) Fail(1913, {key.name, table.name});
  }
  if (table.place == Place::Main && catalog_.ConstraintExists(key.name)) Fail(2714, {key.name});
}

void Definitions::AddConstraint(TableInfo& table, const ConstraintDefinition& definition) const {
  KeyInfo key;
  key.name = definition.name;
  const char* prefix = "PK";
  switch (definition.kind) {
  case ConstraintDefinition::Kind::PrimaryKey: key.kind = KeyKind::PrimaryKey; break;
  case ConstraintDefinition::Kind::Unique:
    key.kind = KeyKind::Unique;
    prefix = "UQ";
    break;
  case ConstraintDefinition::Kind::Check:
    key.kind = KeyKind::Check;
    key.checkText = definition.checkText;
    prefix = "CK";
    break;
  case ConstraintDefinition::Kind::ForeignKey: AddForeignKey(table, definition); return;
  }
  if (key.name.empty()) key.name = GeneratedName(prefix, table);
  CheckKeyName(table, key);
  for (const std::string& name : definition.columns) {
    const int column = table.FindColumn(name);
    if (column < 0) Fail(1911, {name});
    key.columns.push_back(column);
  }
  if (key.kind == KeyKind::PrimaryKey) {
    for (const KeyInfo& other : table.keys)
      if (other.kind == KeyKind::PrimaryKey) Fail(1779, {table.name});
  }
  table.keys.push_back(std::move(key));
}

// The table that the key refers to. That may be the table itself, which is not in the catalog yet.
TablePtr Definitions::FindReferenced(const TableInfo& table, const KeyInfo& key) const {
  if (EqualNames(key.referencedTable, table.name)) return std::make_shared<const TableInfo>(table);
  ObjectName name;
  name.name = key.referencedTable;
  return catalog_.FindTable(name);
}

void Definitions::AddForeignKey(TableInfo& table, const ConstraintDefinition& definition) const {
  if (table.place != Place::Main) Refuse("A FOREIGN KEY constraint of a temporary table");
  KeyInfo key;
  key.kind = KeyKind::ForeignKey;
  key.name = definition.name.empty() ? GeneratedName("FK", table) : definition.name;
  CheckKeyName(table, key);
  key.referencedTable = definition.referenced.name;
  const TablePtr parent = FindReferenced(table, key);
  if (!parent || parent->place != Place::Main) Fail(1767, {key.name, definition.referenced.name});
  key.referencedTable = parent->name;
  for (const std::string& name : definition.columns) {
    const int column = table.FindColumn(name);
    if (column < 0) Fail(1769, {key.name, name, table.name});
    key.columns.push_back(column);
  }
  std::vector<int> referenced;
  for (const std::string& name : definition.referencedColumns) {
    const int column = parent->FindColumn(name);
    if (column < 0) Fail(1770, {key.name, name, parent->name});
    referenced.push_back(column);
  }
  const auto isWanted = [&](const KeyInfo& other) {
    if (referenced.empty()) return other.kind == KeyKind::PrimaryKey;
    const bool isUnique = other.kind == KeyKind::PrimaryKey || other.kind == KeyKind::Unique ||
                          other.kind == KeyKind::UniqueIndex;
    return isUnique && other.columns.size() == referenced.size() &&
           std::is_permutation(referenced.begin(), referenced.end(), other.columns.begin());
  };
  const auto found = std::find_if(parent->keys.begin(), parent->keys.end(), isWanted);
  if (found == parent->keys.end() && referenced.empty()) Fail(1773, {key.name, parent->name});
  if (found != parent->keys.end() && referenced.empty()) referenced = found->columns;
  if (found == parent->keys.end() || referenced.size() != key.columns.size())
    Fail(1776, {parent->name, key.name});
  for (size_t i = 0; i < referenced.size(); ++i) {
    const ColumnInfo& other = parent->columns[static_cast<size_t>(referenced[i])];
    const ColumnInfo& own = table.columns[static_cast<size_t>(key.columns[i])];
    const bool isSame = IsText(own.type) ? own.type.id == other.type.id : own.type == other.type;
    if (!isSame) Fail(1778, {parent->name, other.name, table.name, own.name, key.name});
    key.referencedColumns.push_back(other.name);
  }
  table.keys.push_back(std::move(key));
}

void Definitions::ChooseRowid(TableInfo& table) const {
  table.rowidColumn = table.identityColumn;
  if (table.rowidColumn >= 0) return;
  for (const KeyInfo& key : table.keys) {
    if (key.kind != KeyKind::PrimaryKey || key.columns.size() != 1) continue;
    const Type& type = table.columns[static_cast<size_t>(key.columns[0])].type;
    if (FamilyOf(type.id) == Family::Integer) table.rowidColumn = key.columns[0];
  }
}

void Definitions::CreateTable(const CreateTableStatement& statement) {
  CheckNew(statement.table);
  TableInfo table;
  table.name = statement.table.name;
  table.place = PlaceOf(statement.table);
  table.storageName = table.place == Place::Temp ? catalog_.TempStorageName(table.name) : table.name;
  for (const ColumnDefinition& column : statement.columns) AddColumn(table, column);
  const auto isForeign = [](const ConstraintDefinition& constraint) {
    return constraint.kind == ConstraintDefinition::Kind::ForeignKey;
  };
  for (const ConstraintDefinition& constraint : statement.constraints) {
    if (isForeign(constraint)) continue;
    AddConstraint(table, constraint);
    if (constraint.kind != ConstraintDefinition::Kind::PrimaryKey) continue;
    for (const int column : table.keys.back().columns) {
      const auto index = static_cast<size_t>(column);
      if (statement.columns[index].nullable.value_or(false)) Fail(8111, {table.name});
      table.columns[index].nullable = false;
    }
  }
  // Foreign keys come last, because a table may refer to a key of its own.
  for (const ConstraintDefinition& constraint : statement.constraints)
    if (isForeign(constraint)) AddConstraint(table, constraint);
  ChooseRowid(table);
  Build(table);
  for (const KeyInfo& key : table.keys)
    if (key.kind == KeyKind::ForeignKey)
      CreateForeignKeyTriggers(connection_, table, key, *FindReferenced(table, key));
  catalog_.AddTable(table);
}

void Definitions::CreateTable(const ObjectName& name, const std::vector<Column>& columns) {
  CheckNew(name);
  TableInfo table;
  table.name = name.name;
  table.place = PlaceOf(name);
  table.storageName = table.place == Place::Temp ? catalog_.TempStorageName(table.name) : table.name;
  for (const Column& column : columns) {
    if (column.name.empty()) Fail(1038, {});
    ColumnDefinition definition;
    definition.name = column.name;
    definition.type = column.type;
    definition.nullable = column.nullable;
    AddColumn(table, definition);
  }
  Build(table);
  catalog_.AddTable(table);
}

std::string Definitions::ColumnSql(const TableInfo& table, size_t column) const {
  const ColumnInfo& info = table.columns[column];
  std::string sql = QuoteName(info.name) + " " + StorageType(info.type);
  if (static_cast<int>(column) == table.rowidColumn) {
    sql += " PRIMARY KEY";
    if (info.identity) sql += " AUTOINCREMENT"; // the number of a deleted row is not used again
  }
  if (!info.nullable) sql += " NOT NULL";
  return sql;
}

std::string Definitions::CheckSql(const TableInfo& table, const KeyInfo& key) const {
  return "CONSTRAINT " + QuoteName(key.name) + " CHECK (" + compiler_.CompileCheck(table, key.checkText) +
         ")";
}

// Uses a dropped table of the same definition again. One of the same name and another definition makes room.
bool Definitions::BuildFromSpare(const TableInfo& table) {
  if (table.place != Place::Temp) return false;
  const TablePtr spare = catalog_.TakeSpare(table.storageName);
  if (!spare) return false;
  if (*spare == table) return true;
  connection_.Run("DROP TABLE " + spare->SqlName());
  return false;
}

void Definitions::Build(const TableInfo& table) {
  if (BuildFromSpare(table)) return;
  std::string sql = "CREATE TABLE " + table.SqlName() + "(";
  for (size_t i = 0; i < table.columns.size(); ++i) sql += (i > 0 ? ", " : "") + ColumnSql(table, i);
  for (const KeyInfo& key : table.keys)
    if (key.kind == KeyKind::Check) sql += ", " + CheckSql(table, key);
  connection_.Run(sql + ")");
  for (const KeyInfo& key : table.keys) BuildIndex(table, key);
  if (table.identityColumn >= 0 && table.seed != 1)
    connection_.Run(std::string("INSERT INTO ") + PlaceName(table.place) + ".sqlite_sequence VALUES (" +
                    QuoteText(table.storageName) + ", " + std::to_string(table.seed - 1) + ")");
}

void Definitions::BuildIndex(const TableInfo& table, const KeyInfo& key) const {
  if (key.kind == KeyKind::Check || key.kind == KeyKind::ForeignKey) return;
  if (key.columns.size() == 1 && key.columns[0] == table.rowidColumn && key.kind != KeyKind::Index) return;
  const bool unique = key.kind != KeyKind::Index;
  bool nullable = false;
  std::string plain;
  std::string nullSafe;
  for (size_t i = 0; i < key.columns.size(); ++i) {
    const ColumnInfo& column = table.columns[static_cast<size_t>(key.columns[i])];
    const std::string direction = i < key.descending.size() && key.descending[i] ? " DESC" : "";
    const std::string separator = i > 0 ? ", " : "";
    plain += separator;
    plain += QuoteName(column.name);
    plain += direction;
    nullSafe += separator;
    nullSafe += NullSafeKey(column);
    nullable = nullable || column.nullable;
  }
  const std::string prefix = std::string(PlaceName(table.place)) + ".";
  const std::string on = " ON " + QuoteName(table.storageName) + "(";
  // In a unique index SQLite allows several NULLs and the server only one. So such an index is made twice:
  // one refuses duplicates, the other is for searching.
  if (unique && nullable)
    connection_.Run("CREATE UNIQUE INDEX " + prefix +
                    QuoteName(storage::NullSafeIndexName(table.storageName, key.name)) + on + nullSafe + ")");
  const char* kind = unique && !nullable ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
  connection_.Run(kind + prefix + QuoteName(storage::IndexName(table.storageName, key.name)) + on + plain +
                  ")");
}

void Definitions::DropTable(const TableInfo& table) {
  for (const ForeignKey& foreignKey : ForeignKeysOf(table, catalog_)) {
    if (!EqualNames(foreignKey.child->name, table.name)) Fail(3726, {table.name});
    DropForeignKeyTriggers(connection_, *foreignKey.key);
  }
  if (table.place == Place::Temp) return DropTempTable(table);
  catalog_.RemoveTable(table);
  connection_.Run("DROP TABLE " + table.SqlName());
}

// Until all is done that may fail the table keeps its name, so that it can be dropped once more.
void Definitions::DropTempTable(const TableInfo& table) {
  TruncateTable(table);
  if (const TablePtr superfluous = catalog_.SuperfluousSpare()) {
    connection_.Run("DROP TABLE " + superfluous->SqlName());
    catalog_.TakeSpare(superfluous->storageName);
  }
  catalog_.MakeSpare(table);
}

void Definitions::TruncateTable(const TableInfo& table) {
  for (const ForeignKey& foreignKey : ForeignKeysOf(table, catalog_))
    if (EqualNames(foreignKey.parent->name, table.name)) Fail(4712, {table.name});
  connection_.Run("DELETE FROM " + table.SqlName());
  if (table.identityColumn < 0) return;
  const std::string in = std::string(PlaceName(table.place)) + ".sqlite_sequence";
  connection_.Run("DELETE FROM " + in + " WHERE name = " + QuoteText(table.storageName));
  connection_.Run("INSERT INTO " + in + " VALUES (" + QuoteText(table.storageName) + ", " +
                  std::to_string(table.seed - 1) + ")");
}

void Definitions::AlterAddColumn(TableInfo& table, const ColumnDefinition& definition) const {
  if (definition.identity) Refuse("ALTER TABLE ADD of an identity column");
  AddColumn(table, definition);
  const size_t column = table.columns.size() - 1;
  const ColumnInfo& info = table.columns[column];
  std::string sql = "ALTER TABLE " + table.SqlName() + " ADD COLUMN " + ColumnSql(table, column);
  if (!info.nullable) {
    PreparedStatement any = connection_.Prepare("SELECT 1 FROM " + table.SqlName());
    const bool hasRows = any.Step();
    if (info.defaultText.empty() && hasRows) Fail(4901, {info.name, table.name});
    // Rows that exist get the default; SQLite wants it as a constant, even where no row gets it.
    std::string value = info.defaultText.empty() ? "NULL" : compiler_.CompileDefault(info);
    const std::string database = table.place == Place::Main ? catalog_.DatabaseName() : "tempdb";
    if (value == "NULL" && hasRows) Fail(515, {info.name, database + ".dbo." + table.name, "UPDATE"});
    sql += " DEFAULT " + (value == "NULL" ? "0" : value);
  }
  connection_.Run(sql);
}

void Definitions::AlterTable(const AlterTableStatement& statement) {
  const TablePtr found = catalog_.FindTable(statement.table);
  if (!found) Fail(4902, {statement.table.name});
  TableInfo table = *found;
  for (const ColumnDefinition& column : statement.columns) AlterAddColumn(table, column);
  for (const ConstraintDefinition& constraint : statement.constraints) {
    AddConstraint(table, constraint);
    const KeyInfo& key = table.keys.back();
    if (key.kind == KeyKind::Check) Refuse("ALTER TABLE ADD of a CHECK constraint");
    if (key.kind == KeyKind::PrimaryKey) {
      for (const int column : key.columns)
        if (table.columns[static_cast<size_t>(column)].nullable) Fail(8111, {table.name});
    }
    BuildIndex(table, key);
    if (key.kind != KeyKind::ForeignKey) continue;
    const TablePtr parent = FindReferenced(table, key);
    const ForeignKey foreignKey{EqualNames(parent->name, table.name) ? parent : found, &key, parent};
    if (statement.checksRows && IsViolated(connection_, table, key, *parent))
      throw Error(ForeignKeyError(foreignKey, table, "ALTER TABLE", catalog_));
    CreateForeignKeyTriggers(connection_, table, key, *parent);
  }
  catalog_.ReplaceTable(table);
}

void Definitions::CreateIndex(const CreateIndexStatement& statement) {
  const TablePtr found = catalog_.FindTable(statement.table);
  if (!found) Fail(4902, {statement.table.name});
  TableInfo table = *found;
  KeyInfo key;
  key.name = statement.name;
  key.kind = statement.unique ? KeyKind::UniqueIndex : KeyKind::Index;
  key.descending = statement.descending;
  for (const KeyInfo& other : table.keys)
    if (EqualNames(other.name, key.name)) Fail(1913, {key.name, table.name});
  for (const std::string& name : statement.columns) {
    const int column = table.FindColumn(name);
    if (column < 0) Fail(1911, {name});
    key.columns.push_back(column);
  }
  try {
    BuildIndex(table, key);
  } catch (const SqliteFailure& failure) {
    if ((failure.code & 0xFF) == SQLITE_CONSTRAINT) Fail(1505, {table.name, key.name});
    throw;
  }
  table.keys.push_back(std::move(key));
  catalog_.ReplaceTable(table);
}

void Definitions::DropIndex(const ObjectName& name, bool ifExists) {
  ObjectName tableName;
  tableName.name = name.schema;
  const TablePtr found = catalog_.FindTable(tableName);
  const std::string shown = name.schema + "." + name.name;
  if (!found && !ifExists) Fail(3701, {"index", shown});
  if (!found) return;
  TableInfo table = *found;
  const auto key = std::find_if(table.keys.begin(), table.keys.end(), [&](const KeyInfo& entry) {
    const bool isIndex = entry.kind == KeyKind::Index || entry.kind == KeyKind::UniqueIndex;
    return isIndex && EqualNames(entry.name, name.name);
  });
  if (key == table.keys.end()) {
    if (!ifExists) Fail(3701, {"index", shown});
    return;
  }
  const std::string prefix = std::string("DROP INDEX IF EXISTS ") + PlaceName(table.place) + ".";
  connection_.Run(prefix + QuoteName(storage::IndexName(table.storageName, key->name)) + "; " + prefix +
                  QuoteName(storage::NullSafeIndexName(table.storageName, key->name)));
  table.keys.erase(key);
  catalog_.ReplaceTable(table);
}

} // namespace tsql
