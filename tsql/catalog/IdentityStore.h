// The last number of each identity column. That of a column that is SQLite's rowid SQLite keeps itself;
// others are kept in a table of the engine's own beside the tables.
#pragma once

#include "tsql/catalog/TableInfo.h"
#include "tsql/sqlite/Connection.h"

namespace tsql {

class IdentityStore {
 public:
  explicit IdentityStore(const Connection& connection) : connection_(connection) {}

  // None before the first number: the next one is the seed.
  std::optional<int64_t> Last(const TableInfo& table) const;
  // Without a number the table begins at its seed again, and one that goes has left nothing.
  void SetLast(const TableInfo& table, std::optional<int64_t> last) const;
  // The statements that do that.
  static std::vector<std::string> SetLastSql(const TableInfo& table, std::optional<int64_t> last);
  // The number of a row of the table that is the farthest from its seed; none without rows.
  std::optional<int64_t> Farthest(const TableInfo& table) const;
  // Makes what a table with such numbers needs in its place.
  void Prepare(const TableInfo& table) const;
  // The table gets another name in SQLite.
  void Rename(const TableInfo& before, const TableInfo& after) const;

 private:
  const Connection& connection_;
};

} // namespace tsql
