#include "tsql/run/Cursor.h"

#include <bit>

namespace tsql {

void CursorRows::Append(const PreparedStatement& row, int columns) {
  for (int i = 0; i < columns; ++i) {
    Cell& cell = cells_.emplace_back();
    sqlite3_value* const value = row.Column(i);
    const int type = sqlite3_value_type(value);
    switch (type) {
    case SQLITE_NULL: break;
    case SQLITE_INTEGER:
      cell.kind = Datum::Kind::Integer;
      cell.number = sqlite3_value_int64(value);
      break;
    case SQLITE_FLOAT:
      cell.kind = Datum::Kind::Real;
      cell.number = std::bit_cast<int64_t>(sqlite3_value_double(value));
      break;
    default: {
      cell.kind = type == SQLITE_TEXT ? Datum::Kind::Text : Datum::Kind::Blob;
      const std::string_view text = BytesOf(value);
      cell.number = static_cast<int64_t>(texts_.size());
      cell.size = static_cast<uint32_t>(text.size());
      texts_ += text;
    }
    }
  }
  ++count_;
}

void CursorRows::Read(size_t index, Datum& value) const {
  const Cell& cell = cells_[index];
  value.kind = cell.kind;
  switch (cell.kind) {
  case Datum::Kind::Null: break;
  case Datum::Kind::Integer: value.integer = cell.number; break;
  case Datum::Kind::Real: value.real = std::bit_cast<double>(cell.number); break;
  case Datum::Kind::Text:
  case Datum::Kind::Blob: value.text.assign(texts_, static_cast<size_t>(cell.number), cell.size); break;
  }
}

void CursorRows::Clear() {
  cells_.clear();
  texts_.clear();
  count_ = 0;
}

} // namespace tsql
