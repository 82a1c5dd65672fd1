// GivenNumbers: the identity numbers that a session has given. A rollback takes a row back, and with it the
// count, because both are in the database; but a number that was given once is not given again. So the next
// row of the table is counted from here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tsql/catalog/TableInfo.h"

namespace tsql {

class GivenNumbers {
 public:
  // A number was given. `undone` is how often the session has undone something until now: only when that has
  // become more, the database may not know of the number. 0 when it does not in any case.
  void Note(const TableInfo& table, int64_t number, uint64_t undone);
  // The farthest number that the database may not know of; none when it knows all of them.
  std::optional<int64_t> Unknown(const TableInfo& table, uint64_t undone) const;
  // The table begins to count anew, or is another one of the name.
  void Forget(const TableInfo& table);
  void Clear() { entries_.clear(); }

 private:
  struct Entry {
    Place place;
    std::string table; // its name in SQLite
    int64_t number;
    uint64_t undone;
  };
  const Entry* Find(const TableInfo& table) const;

  std::vector<Entry> entries_; // one for each table
};

} // namespace tsql
