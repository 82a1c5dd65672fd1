#include "cli/Grid.h"

#include <algorithm>
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
  Grid grid{DistinctNames(reader.names()), {}};
  for (; reader.HasRow(); reader.Next()) {
    std::vector<Cell>& row = grid.rows.emplace_back();
    row.reserve(grid.columns.size());
    for (size_t i = 0; i < grid.columns.size(); ++i) row.push_back(CellOf(reader.Value(i)));
  }
  return grid;
}

// Dictionaries have the keys of all of them as columns; anything else stands in a column "item".
Grid VectorGrid(const Object& vector) {
  Grid grid;
  std::unordered_map<std::wstring, size_t> places;
  const auto placeOf = [&](const std::wstring& name) {
    const auto [known, isNew] = places.try_emplace(com::Lower(name), grid.columns.size());
    if (isNew) grid.columns.push_back(name);
    return known->second;
  };
  const auto put = [](std::vector<Cell>& row, size_t place, Cell cell) {
    if (row.size() <= place) row.resize(place + 1, Cell::Text({}));
    row[place] = std::move(cell);
  };
  const int32_t count = vector.Get(L"Count").AsLong();
  for (int32_t i = 1; i <= count; ++i) {
    const Variant item = vector.Get(L"Item", i);
    std::vector<Cell>& row = grid.rows.emplace_back();
    if (!item.IsObject() || KindOf(item.AsObject()) != Kind::Dictionary) {
      put(row, placeOf(L"item"), CellOf(item));
      continue;
    }
    const Object dictionary = item.AsObject();
    for (const std::wstring& key : KeysOf(dictionary))
      put(row, placeOf(key), CellOf(dictionary.Get(L"Value", key)));
  }
  for (std::vector<Cell>& row : grid.rows) row.resize(grid.columns.size(), Cell::Text({}));
  return grid;
}

Grid DictionaryGrid(const Object& dictionary) {
  Grid grid{{L"key", L"value"}, {}};
  for (const std::wstring& key : KeysOf(dictionary))
    grid.rows.push_back({Cell::Text(key), CellOf(dictionary.Get(L"Value", key))});
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
  for (const std::wstring& name : grid.columns) known.append(known.empty() ? L"" : L", ").append(name);
  throw UsageError(L"there is no column " + column + L"; there are " + known);
}

} // namespace

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
  Grid result;
  for (const std::wstring& column : columns) {
    const auto found = std::ranges::find_if(
        grid.columns, [&](const std::wstring& name) { return com::EqualsNoCase(name, column); });
    if (found == grid.columns.end()) RaiseNoColumn(grid, column);
    places.push_back(static_cast<size_t>(found - grid.columns.begin()));
    result.columns.push_back(*found);
  }
  for (const std::vector<Cell>& row : grid.rows) {
    std::vector<Cell>& picked = result.rows.emplace_back();
    for (const size_t place : places) picked.push_back(row[place]);
  }
  return result;
}

std::wstring CsvOf(const Grid& grid) {
  std::wstring out;
  for (size_t i = 0; i < grid.columns.size(); ++i) {
    if (i > 0) out += L',';
    AppendCsvField(out, grid.columns[i]);
  }
  out += L"\r\n";
  for (const std::vector<Cell>& row : grid.rows) {
    for (size_t i = 0; i < row.size(); ++i) {
      if (i > 0) out += L',';
      AppendCsvField(out, row[i].text);
    }
    out += L"\r\n";
  }
  return out;
}

std::wstring VerticalOf(const Grid& grid) {
  if (grid.rows.empty()) return L"(no rows)\n";
  size_t width = 0;
  for (const std::wstring& column : grid.columns) width = std::max(width, DisplayWidth(column));
  std::wstring out;
  for (size_t i = 0; i < grid.rows.size(); ++i) {
    out += L"-- row " + std::to_wstring(i + 1) + L"\n";
    for (size_t j = 0; j < grid.columns.size(); ++j)
      out += grid.columns[j] + L":" + std::wstring(width - DisplayWidth(grid.columns[j]) + 1, L' ') +
             ReadableText(grid.rows[i][j]) + L"\n";
  }
  return out;
}

std::wstring TableOf(const Grid& grid, size_t width, bool coloured) {
  if (grid.columns.empty()) return L"(no rows)\n";
  std::vector<Row> rows;
  rows.reserve(grid.rows.size());
  for (const std::vector<Cell>& cells : grid.rows) {
    Row& row = rows.emplace_back();
    for (const Cell& cell : cells) row.push_back(ReadableText(cell));
  }
  return FormatTable(grid.columns, rows, width, coloured);
}

} // namespace bomcall
