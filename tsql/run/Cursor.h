// A cursor of a session. Its rows are read when it is opened, whatever its kind.
#pragma once

#include <deque>

#include "tsql/run/RunningUnit.h"

namespace tsql {

// The rows of an open cursor, packed: there may be many, and most are read once.
class CursorRows {
 public:
  // Takes the row on which the statement is.
  void Append(const PreparedStatement& row, int columns);
  // Values are counted through all rows.
  void Read(size_t index, Datum& value) const;
  int64_t Count() const { return count_; } // of the rows
  void Clear();

 private:
  struct Cell {
    Datum::Kind kind = Datum::Kind::Null;
    uint32_t size = 0;  // of a text, which SQLite lets be a gigabyte
    int64_t number = 0; // an integer, the bits of a real, or where the text begins
  };
  std::deque<Cell> cells_; // grows without being copied
  std::string texts_;
  int64_t count_ = 0;
};

struct Cursor {
  const DeclareCursorStatement* statement = nullptr;
  std::shared_ptr<CompiledUnit> unit; // that the statement belongs to
  RunningUnit declared;               // the values of its variables when it was declared
  bool isOpen = false;
  std::vector<Column> columns;
  std::vector<TablePtr> changeable; // the numbers of their rows follow the columns
  CursorRows rows;
  int64_t position = -1; // of the row that was fetched last; before the first or behind the last for none

  bool IsOnRow() const { return position >= 0 && position < rows.Count(); }
  // A value of the row that was fetched last.
  void Read(size_t column, Datum& value) const {
    rows.Read(static_cast<size_t>(position) * (columns.size() + changeable.size()) + column, value);
  }
};

} // namespace tsql
