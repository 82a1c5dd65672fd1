#include "tsql/catalog/IdentityStore.h"

#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

std::string NumbersOf(const TableInfo& table) {
  return std::string(PlaceName(table.place)) + "." +
         (table.IdentityIsRowid() ? "sqlite_sequence" : storage::kIdentities);
}

} // namespace

std::optional<int64_t> IdentityStore::Last(const TableInfo& table) const {
  const char* const column = table.IdentityIsRowid() ? "seq" : "last";
  PreparedStatement numbers =
      connection_.Prepare(std::string("SELECT ") + column + " FROM " + NumbersOf(table) +
                          " WHERE name = " + QuoteText(table.storageName));
  if (!numbers.Step()) return std::nullopt;
  const int64_t last = numbers.ColumnInteger(0);
  // Before its first number SQLite has the one before the seed.
  if (table.IdentityIsRowid() && last == table.seed - 1) return std::nullopt;
  return last;
}

std::vector<std::string> IdentityStore::SetLastSql(const TableInfo& table, std::optional<int64_t> last) {
  const std::string name = QuoteText(table.storageName);
  std::vector<std::string> statements = {"DELETE FROM " + NumbersOf(table) + " WHERE name = " + name};
  if (table.IdentityIsRowid() && !last) last = table.seed - 1;
  if (last)
    statements.push_back("INSERT INTO " + NumbersOf(table) + " VALUES (" + name + ", " +
                         std::to_string(*last) + ")");
  return statements;
}

void IdentityStore::SetLast(const TableInfo& table, std::optional<int64_t> last) const {
  for (const std::string& statement : SetLastSql(table, last)) connection_.Run(statement);
}

std::optional<int64_t> IdentityStore::Farthest(const TableInfo& table) const {
  const std::string column = QuoteName(table.columns[static_cast<size_t>(table.identityColumn)].name);
  PreparedStatement rows =
      connection_.Prepare("SELECT " + column + " FROM " + table.SqlName() + " ORDER BY " + column +
                          (table.increment > 0 ? " DESC" : "") + " LIMIT 1");
  return rows.Step() ? std::optional(rows.ColumnInteger(0)) : std::nullopt;
}

void IdentityStore::Prepare(const TableInfo& table) const {
  if (table.CountsIdentity())
    connection_.Run(std::string("CREATE TABLE IF NOT EXISTS ") + PlaceName(table.place) + "." +
                    storage::kIdentities + "(name TEXT PRIMARY KEY, last INTEGER)");
}

void IdentityStore::Rename(const TableInfo& before, const TableInfo& after) const {
  if (!before.CountsIdentity()) return; // SQLite renames its own
  connection_.Run("UPDATE " + NumbersOf(before) + " SET name = " + QuoteText(after.storageName) +
                  " WHERE name = " + QuoteText(before.storageName));
}

} // namespace tsql
