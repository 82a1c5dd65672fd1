#include "cli/Grid.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

#include "cli/CommandLine.h"
#include "cli/Kinds.h"
#include "cli/Table.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

Grid RecordsetGrid(const Object& recordset) {
  const RecordsetReader reader(recordset);
  Grid grid(DistinctNames(reader.names()));
  std::vector<Cell> row(grid.columns().size());
  for (; reader.HasRow(); reader.Next()) {
    for (size_t i = 0; i < row.size(); ++i) row[i] = CellOf(reader.Value(i));
    grid.AddRow(row);
  }
  return grid;
}

// Dictionaries have the keys of all of them as columns; anything else stands in a column "item".
Grid VectorGrid(const Object& vector) {
  std::vector<std::wstring> columns;
  std::vector<std::vector<Cell>> rows;
  std::unordered_map<std::wstring, size_t> places;
  const auto placeOf = [&](const std::wstring& name) {
    const auto [known, isNew] = places.try_emplace(com::Lower(name), columns.size());
    if (isNew) columns.push_back(name);
    return known->second;
  };
  const auto put = [](std::vector<Cell>& row, size_t place, Cell cell) {
    if (row.size() <= place) row.resize(place + 1, Cell::Text({}));
    row[place] = std::move(cell);
  };
  const int32_t count = vector.Get(L"Count").AsLong();
  for (int32_t i = 1; i <= count; ++i) {
    const Variant item = vector.Get(L"Item", i);
    std::vector<Cell>& row = rows.emplace_back();
    if (!item.IsObject() || KindOf(item.AsObject()) != Kind::Dictionary) {
      put(row, placeOf(L"item"), CellOf(item));
      continue;
    }
    const Object dictionary = item.AsObject();
    for (const std::wstring& key : KeysOf(dictionary))
      put(row, placeOf(key), CellOf(dictionary.Get(L"Value", key)));
  }
  Grid grid(std::move(columns));
  grid.Reserve(rows.size());
  for (std::vector<Cell>& row : rows) {
    row.resize(grid.columns().size(), Cell::Text({}));
    grid.AddRow(row);
  }
  return grid;
}

Grid DictionaryGrid(const Object& dictionary) {
  Grid grid({L"key", L"value"});
  for (const std::wstring& key : KeysOf(dictionary))
    grid.Add(Cell::Text(key), CellOf(dictionary.Get(L"Value", key)));
  return grid;
}

void AppendCsvField(std::wstring& out, const std::wstring& text) {
  if (text.find_first_of(L",\"\r\n") == std::wstring::npos) {
    out += text;
    return;
  }
  out += L'"';
  for (const wchar_t c : text) out.append(c == L'"' ? 2 : 1, c);
  out += L'"';
}

[[noreturn]] void RaiseNoColumn(const Grid& grid, const std::wstring& column) {
  std::wstring known;
  for (const std::wstring& name : grid.columns()) known.append(known.empty() ? L"" : L", ").append(name);
  throw UsageError(L"there is no column " + column + L"; there are " + known);
}

} // namespace

void Grid::AddRow(std::span<Cell> cells) {
  std::ranges::move(cells, std::back_inserter(cells_));
  ++rowCount_;
}

std::vector<std::wstring> DistinctNames(std::vector<std::wstring> names) {
  std::unordered_set<std::wstring> taken;
  for (const std::wstring& name : names) taken.insert(com::Lower(name));
  std::unordered_set<std::wstring> seen;
  for (size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) names[i] = L"column" + std::to_wstring(i + 1);
    if (seen.insert(com::Lower(names[i])).second) continue;
    for (size_t number = 2;; ++number) {
      const std::wstring name = names[i] + L"_" + std::to_wstring(number);
      if (taken.contains(com::Lower(name)) || !seen.insert(com::Lower(name)).second) continue;
      names[i] = name;
      break;
    }
  }
  return names;
}

std::optional<Grid> GridOf(const Variant& value) {
  if (!value.IsObject()) return std::nullopt;
  const Object object = value.AsObject();
  switch (KindOf(object)) {
  case Kind::Recordset: return RecordsetGrid(object);
  case Kind::Vector: return VectorGrid(object);
  case Kind::Dictionary: return DictionaryGrid(object);
  case Kind::Nothing:
  case Kind::Other: break;
  }
  return std::nullopt;
}

Grid WithColumns(const Grid& grid, const std::vector<std::wstring>& columns) {
  std::vector<size_t> places;
  std::vector<std::wstring> picked;
  for (const std::wstring& column : columns) {
    const auto found = std::ranges::find_if(
        grid.columns(), [&](const std::wstring& name) { return com::EqualsNoCase(name, column); });
    if (found == grid.columns().end()) RaiseNoColumn(grid, column);
    places.push_back(static_cast<size_t>(found - grid.columns().begin()));
    picked.push_back(*found);
  }
  Grid result(std::move(picked));
  result.Reserve(grid.rowCount());
  std::vector<Cell> cells(places.size());
  for (size_t i = 0; i < grid.rowCount(); ++i) {
    std::ranges::transform(places, cells.begin(), [row = grid.Row(i)](size_t place) { return row[place]; });
    result.AddRow(cells);
  }
  return result;
}

std::wstring CsvOf(const Grid& grid) {
  std::wstring out;
  for (size_t i = 0; i < grid.columns().size(); ++i) {
    if (i > 0) out += L',';
    AppendCsvField(out, grid.columns()[i]);
  }
  out += L"\r\n";
  for (size_t i = 0; i < grid.rowCount(); ++i) {
    const std::span<const Cell> row = grid.Row(i);
    for (size_t j = 0; j < row.size(); ++j) {
      if (j > 0) out += L',';
      AppendCsvField(out, row[j].text);
    }
    out += L"\r\n";
  }
  return out;
}

std::wstring VerticalOf(const Grid& grid) {
  if (grid.rowCount() == 0) return L"(no rows)\n";
  size_t width = 0;
  for (const std::wstring& column : grid.columns()) width = std::max(width, DisplayWidth(column));
  std::wstring out;
  for (size_t i = 0; i < grid.rowCount(); ++i) {
    out += L"-- row " + std::to_wstring(i + 1) + L"\n";
    for (size_t j = 0; j < grid.columns().size(); ++j) {
      const std::wstring& column = grid.columns()[j];
      out += column + L":" + std::wstring(width - DisplayWidth(column) + 1, L' ') +
             ReadableText(grid.Row(i)[j]) + L"\n";
    }
  }
  return out;
}

std::wstring TableOf(const Grid& grid, size_t width, bool coloured) {
  if (grid.columns().empty()) return L"(no rows)\n";
  std::vector<Row> rows;
  rows.reserve(grid.rowCount());
  for (size_t i = 0; i < grid.rowCount(); ++i) {
    Row& row = rows.emplace_back();
    for (const Cell& cell : grid.Row(i)) row.push_back(ReadableText(cell));
  }
  return FormatTable(grid.columns(), rows, width, coloured);
}

} // namespace bomcall
