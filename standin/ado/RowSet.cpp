#include "standin/ado/RowSet.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "com/Text.h"
#include "standin/ado/Types.h"

namespace standin::ado {
namespace {

using com::Variant;
using tsql::TypeId;
using Kind = tsql::Value::Kind;

constexpr size_t kFirstBlock = 512; // most results are one row
constexpr size_t kLargestBlock = 65536;

// In all digits: 1.0 is not 1.00.
bool AreSame(const tsql::Decimal& a, const tsql::Decimal& b) {
  return a.low == b.low && a.high == b.high && a.scale == b.scale && a.negative == b.negative;
}

} // namespace

void* Arena::Allocate(size_t size, size_t alignment) {
  used_ = (used_ + alignment - 1) / alignment * alignment;
  if (blocks_.empty() || used_ + size > blockSize_) {
    blockSize_ = std::max(size, std::clamp(blockSize_ * 2, kFirstBlock, kLargestBlock));
    blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(blockSize_));
    used_ = 0;
  }
  void* result = blocks_.back().get() + used_;
  used_ += size;
  return result;
}

RowSet::RowSet(std::span<const tsql::Column> columns) {
  columns_.reserve(columns.size());
  for (const tsql::Column& column : columns)
    columns_.push_back({com::FromUtf8(column.name), column.type, column.nullable});
}

RowSet::Cell RowSet::Store(const tsql::Value& value, const tsql::Type& type, const Cell* above) {
  if (value.kind == Kind::DateTime && IsMomentText(type.id)) {
    const std::string text = ToDateText(value.datetime);
    tsql::Value shown;
    shown.kind = Kind::Text;
    shown.text = text;
    return Store(shown, type, above);
  }
  Cell cell{};
  cell.kind = value.kind;
  if (above && above->kind != value.kind) above = nullptr;
  switch (value.kind) {
  case Kind::Null: break;
  case Kind::Integer: cell.integer = value.integer; break;
  case Kind::Float: cell.real = value.real; break;
  case Kind::DateTime: cell.moment = value.datetime; break;
  case Kind::Decimal:
    if (above && AreSame(*static_cast<const tsql::Decimal*>(above->data), value.decimal)) return *above;
    cell.data =
        new (arena_.Allocate(sizeof(tsql::Decimal), alignof(tsql::Decimal))) tsql::Decimal(value.decimal);
    break;
  case Kind::Text: {
    const bool braces = type.id == TypeId::UniqueIdentifier;
    const std::wstring text = braces ? L'{' + com::FromUtf8(value.text) + L'}' : com::FromUtf8(value.text);
    if (above && text == std::wstring_view(static_cast<const wchar_t*>(above->data), above->size))
      return *above;
    void* place = arena_.Allocate(text.size() * sizeof(wchar_t), alignof(wchar_t));
    std::memcpy(place, text.data(), text.size() * sizeof(wchar_t));
    cell.data = place;
    cell.size = static_cast<uint32_t>(text.size());
    break;
  }
  case Kind::Bytes: {
    // Of no bytes there may be no address, which memcpy may not have.
    void* place = arena_.Allocate(value.text.size(), 1);
    std::ranges::copy(value.text, static_cast<char*>(place));
    cell.data = place;
    cell.size = static_cast<uint32_t>(value.text.size());
    break;
  }
  }
  return cell;
}

void RowSet::Append(std::span<const tsql::Value> row) {
  if (rowCount_ % kRowsInBlock == 0)
    blocks_.emplace_back().reserve((rowCount_ == 0 ? kRowsAtFirst : kRowsInBlock) * columns_.size());
  for (size_t i = 0; i < columns_.size(); ++i) {
    const Cell* above = rowCount_ == 0 ? nullptr : &At(rowCount_ - 1, i);
    blocks_.back().push_back(Store(row[i], columns_[i].type, above));
  }
  ++rowCount_;
}

size_t RowSet::FindColumn(std::wstring_view name) const {
  const auto column = std::ranges::find_if(columns_, [&](const RowColumn& candidate) {
    return candidate.name.size() == name.size() && com::EqualsNoCase(candidate.name, name);
  });
  return static_cast<size_t>(column - columns_.begin());
}

Variant RowSet::Value(size_t row, size_t column) const {
  const Cell& cell = At(row, column);
  const TypeId type = columns_[column].type.id;
  switch (cell.kind) {
  case Kind::Null: return Variant::Null();
  case Kind::Integer: return FromInteger(cell.integer, type);
  case Kind::Float: {
    if (type != TypeId::Real) return {cell.real};
    Variant single;
    single.raw().vt = VT_R4;
    single.raw().fltVal = static_cast<float>(cell.real);
    return single;
  }
  case Kind::Decimal: return FromDecimal(*static_cast<const tsql::Decimal*>(cell.data), type);
  case Kind::Text: return {std::wstring_view(static_cast<const wchar_t*>(cell.data), cell.size)};
  case Kind::Bytes: return FromBytes(cell.data, cell.size);
  case Kind::DateTime: return Variant::Date(ToDate(cell.moment));
  }
  return {};
}

int32_t RowSet::ActualSize(size_t row, size_t column) const {
  const Cell& cell = At(row, column);
  const TypeId type = columns_[column].type.id;
  const auto size = static_cast<int32_t>(cell.size);
  switch (cell.kind) {
  case Kind::Null: return 0;
  case Kind::Bytes: return size;
  case Kind::Text:
    if (type == TypeId::UniqueIdentifier) break;
    return IsWideText(type) || IsMomentText(type) ? size * static_cast<int32_t>(sizeof(wchar_t)) : size;
  default: break;
  }
  return FieldTypeOf(columns_[column].type).definedSize;
}

} // namespace standin::ado
