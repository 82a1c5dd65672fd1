// IdentityCounter: the numbers that one statement gives to the rows of a table whose identity column counts
// by itself, because its steps are not those of SQLite's rowid or a number may be there twice.
#pragma once

#include <optional>

#include "tsql/catalog/TableInfo.h"

namespace tsql {

class IdentityCounter {
 public:
  // `last` is the last number before the statement; none before the first.
  IdentityCounter(const TableInfo& table, std::optional<int64_t> last);

  // The next row's number; 8115 when the column's type has no more.
  int64_t Next();
  // A row was given a number by the statement: the count goes on from there when it is beyond the last.
  void TakeGiven(int64_t number);

  const std::optional<int64_t>& Last() const { return last_; }
  bool HasChanged() const { return hasChanged_; }
  // The number of the row that came last, whether given or counted; none without a row.
  const std::optional<int64_t>& OfLastRow() const { return ofLastRow_; }

 private:
  Type type_;
  int64_t seed_;
  int64_t increment_;
  std::optional<int64_t> last_;
  std::optional<int64_t> ofLastRow_;
  bool hasChanged_ = false;
};

} // namespace tsql
