// Rows under named columns, and the forms in which they are shown.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/Cell.h"
#include "com/Object.h"

namespace bomcall {

// The cells of all rows lie in one piece: a report has a hundred thousand rows, and a piece of memory for
// each takes longer than what is in it.
class Grid {
 public:
  explicit Grid(std::vector<std::wstring> columns) : columns_(std::move(columns)) {}

  // For as many rows as will be added, where that is known.
  void Reserve(size_t rows) { cells_.reserve(rows * columns_.size()); }
  // A row: a cell for each column.
  template <class... Cells>
  void Add(Cells... cells) {
    (cells_.push_back(std::move(cells)), ...);
    ++rowCount_;
  }
  // The same, and leaves empty cells behind.
  void AddRow(std::span<Cell> cells);

  const std::vector<std::wstring>& columns() const { return columns_; }
  size_t rowCount() const { return rowCount_; }
  std::span<const Cell> Row(size_t row) const {
    return std::span(cells_).subspan(row * columns_.size(), columns_.size());
  }

 private:
  std::vector<std::wstring> columns_;
  std::vector<Cell> cells_;
  size_t rowCount_ = 0;
};

// The names, with "_2" and so on behind those that have come before and "columnN" for those that are empty.
std::vector<std::wstring> DistinctNames(std::vector<std::wstring> names);

// The rows of a recordset, a Vector (of Dictionaries, or one item a row) or a Dictionary (a row a key).
// Nothing for any other value.
std::optional<Grid> GridOf(const com::Variant& value);

// The grid with these columns, in this order. Throws UsageError for one that it has not.
Grid WithColumns(const Grid& grid, const std::vector<std::wstring>& columns);

// RFC 4180, with a line of names; a null is empty. Lines end with CR LF.
std::wstring CsvOf(const Grid& grid);
// A line for each value, "name: value", under a line for each row.
std::wstring VerticalOf(const Grid& grid);
// As an aligned table, or "(no rows)" without columns.
std::wstring TableOf(const Grid& grid, size_t width, bool coloured);

} // namespace bomcall
