#include "tsql/run/TableBuilder.h"

#include <algorithm>

#include "tsql/functions/FunctionNames.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

std::string StorageType(const ColumnInfo& column) {
  const Type& type = column.type;
  switch (FamilyOf(type.id)) {
  case Family::Integer:
  case Family::DateTime: return "INTEGER";
  case Family::Decimal: return IsWide(type) ? "BLOB" : "INTEGER";
  case Family::Float: return "REAL";
  case Family::Text: return std::string("TEXT COLLATE ") + storage::CollationOf(column.collation.id);
  case Family::Guid: return "TEXT";
  case Family::Binary: break;
  }
  return "BLOB";
}

// The column in a unique index that takes NULLs for equal. In the index a value that the column cannot have
// stands for NULL.
std::string NullSafeKey(const ColumnInfo& column) {
  const bool isBlob = FamilyOf(column.type.id) == Family::Binary || IsWide(column.type);
  std::string key = "ifnull(" + QuoteName(column.name);
  key += isBlob ? ", '')" : ", x'')";
  if (IsText(column.type)) key.append(" COLLATE ").append(storage::CollationOf(column.collation.id));
  return key;
}

// CHECK constraints are not looked at while it is there.
class UncheckedRows {
 public:
  explicit UncheckedRows(const Connection& connection) : connection_(connection) { Set(1); }
  UncheckedRows(const UncheckedRows&) = delete;
  UncheckedRows& operator=(const UncheckedRows&) = delete;
  ~UncheckedRows() {
    sqlite3_exec(connection_.Handle(), "PRAGMA ignore_check_constraints = 0", nullptr, nullptr, nullptr);
  }

 private:
  void Set(int on) const { connection_.Run("PRAGMA ignore_check_constraints = " + std::to_string(on)); }

  const Connection& connection_;
};

} // namespace

std::string TableBuilder::ColumnSql(const TableInfo& table, size_t column) const {
  const ColumnInfo& info = table.columns[column];
  std::string sql = QuoteName(info.name) + " " + StorageType(info);
  if (static_cast<int>(column) == table.rowidColumn) {
    sql += " PRIMARY KEY";
    if (info.identity) sql += " AUTOINCREMENT"; // the number of a deleted row is not used again
  }
  if (!info.nullable) sql += " NOT NULL";
  if (info.identity && table.CountsIdentity())
    sql.append(" DEFAULT (").append(names::kNextIdentity).append("())");
  if (info.IsComputed())
    sql += " AS (" + compiler_.CompileComputed(table, info) + (info.isPersisted ? ") STORED" : ") VIRTUAL");
  return sql;
}

std::string TableBuilder::CheckSql(const TableInfo& table, const KeyInfo& key) const {
  return "CONSTRAINT " + QuoteName(key.name) + " CHECK (" + compiler_.CompileCheck(table, key.checkText) +
         ")";
}

void TableBuilder::CreateBare(const TableInfo& table) const {
  identities_.Prepare(table);
  std::string sql = "CREATE TABLE " + table.SqlName() + "(";
  for (size_t i = 0; i < table.columns.size(); ++i) sql += (i > 0 ? ", " : "") + ColumnSql(table, i);
  for (const KeyInfo& key : table.keys)
    if (key.kind == KeyKind::Check && !key.disabled) sql += ", " + CheckSql(table, key);
  connection_.Run(sql + ")");
}

void TableBuilder::Build(const TableInfo& table) const {
  CreateBare(table);
  for (const KeyInfo& key : table.keys) BuildIndex(table, key);
  if (table.IdentityIsRowid() && table.seed != 1) identities_.SetLast(table, std::nullopt);
}

void TableBuilder::BuildIndex(const TableInfo& table, const KeyInfo& key) const {
  if (!key.HasIndex()) return;
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

void TableBuilder::BuildIndexOverRows(const TableInfo& table, const KeyInfo& key) const {
  try {
    BuildIndex(table, key);
  } catch (const SqliteFailure& failure) {
    if ((failure.code & 0xFF) == SQLITE_CONSTRAINT) Fail(1505, {table.QualifiedName(), key.name});
    throw;
  }
}

void TableBuilder::DropIndex(const TableInfo& table, const KeyInfo& key) const {
  const std::string prefix = std::string("DROP INDEX IF EXISTS ") + PlaceName(table.place) + ".";
  connection_.Run(prefix + QuoteName(storage::IndexName(table.storageName, key.name)) + "; " + prefix +
                  QuoteName(storage::NullSafeIndexName(table.storageName, key.name)));
}

void TableBuilder::Rename(const TableInfo& before, const TableInfo& after) const {
  connection_.Run("ALTER TABLE " + before.SqlName() + " RENAME TO " + QuoteName(after.storageName));
  identities_.Rename(before, after);
}

bool TableBuilder::HasRows(const TableInfo& table) const {
  return connection_.Prepare("SELECT 1 FROM " + table.SqlName() + " LIMIT 1").Step();
}

void TableBuilder::AddColumn(const TableInfo& table, bool fillsRows, std::string_view databaseName) const {
  const ColumnInfo& column = table.columns.back();
  std::string sql =
      "ALTER TABLE " + table.SqlName() + " ADD COLUMN " + ColumnSql(table, table.columns.size() - 1);
  const std::string value = column.defaultText.empty() ? "NULL" : compiler_.EvaluateDefault(column);
  if (!column.nullable) {
    // Rows that exist get the default; SQLite wants it as a constant, even where no row gets it.
    if (value == "NULL" && HasRows(table)) Fail(515, {column.name, table.FullName(databaseName), "UPDATE"});
    sql += " DEFAULT " + (value == "NULL" ? "0" : value);
  }
  connection_.Run(sql);
  if (!fillsRows || column.defaultText.empty()) return;
  const std::string each = compiler_.CompileDefault(column);
  if (column.nullable || each != value)
    connection_.Run("UPDATE " + table.SqlName() + " SET " + QuoteName(column.name) + " = " + each);
}

void TableBuilder::CopyRows(const TableInfo& before, const TableInfo& after,
                            const std::vector<std::string>& values) const {
  // Rows keep their numbers, which stand for the order in which they were inserted.
  const bool hasOwn = after.rowidColumn >= 0;
  std::string columns = hasOwn ? "" : "_rowid_";
  std::string selected = columns;
  for (size_t i = 0; i < after.columns.size(); ++i) {
    if (after.columns[i].IsComputed()) continue;
    columns += (columns.empty() ? "" : ", ") + QuoteName(after.columns[i].name);
    selected += (selected.empty() ? "" : ", ") + values[i];
  }
  const std::string insert = "INSERT INTO " + after.SqlName() + "(" + columns + ") SELECT " + selected +
                             " FROM " + before.SqlName() + " ORDER BY _rowid_";
  try {
    connection_.Run(insert);
  } catch (const SqliteFailure& failure) {
    // There may be rows from before a constraint, or from when it was switched off.
    if (failure.code != SQLITE_CONSTRAINT_CHECK) throw;
    const UncheckedRows unchecked(connection_);
    connection_.Run(insert);
  }
}

void TableBuilder::Rebuild(const TableInfo& before, const TableInfo& after,
                           const std::vector<std::string>& values, std::string_view databaseName) const {
  TableInfo made = after;
  made.storageName = storage::kRebuilt;
  CreateBare(made);
  std::optional<int64_t> last; // what the rows that are copied continue
  if (before.identityColumn >= 0) last = identities_.Last(before);
  if (made.identityColumn >= 0) identities_.SetLast(made, last);
  try {
    CopyRows(before, made, values);
  } catch (const SqliteFailure& failure) {
    if (failure.code != SQLITE_CONSTRAINT_NOTNULL) throw;
    const std::string_view message = failure.what();
    Fail(515, {message.substr(message.rfind('.') + 1), after.FullName(databaseName), "UPDATE"});
  }
  if (made.CountsIdentity() && before.identityColumn < 0)
    identities_.SetLast(made, identities_.Farthest(made));
  if (before.CountsIdentity()) identities_.SetLast(before, std::nullopt);
  connection_.Run("DROP TABLE " + before.SqlName());
  Rename(made, after);
}

} // namespace tsql
