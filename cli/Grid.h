// Rows under named columns, and the forms in which they are shown.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/Cell.h"
#include "com/Object.h"

namespace bomcall {

struct Grid {
  std::vector<std::wstring> columns;
  std::vector<std::vector<Cell>> rows;
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
