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

std::wstring_view TextOf(const uint32_t* pieces) {
  return {reinterpret_cast<const wchar_t*>(pieces + 1), *pieces};
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

const uint32_t* RowSet::StorePieces(const void* pieces, size_t count, size_t sizeOfOne) {
  auto* place =
      static_cast<uint32_t*>(arena_.Allocate(sizeof(uint32_t) + count * sizeOfOne, alignof(uint32_t)));
  *place = static_cast<uint32_t>(count);
  // Of none there may be no address, which memcpy may not have.
  if (count > 0) std::memcpy(place + 1, pieces, count * sizeOfOne);
  return place;
}

RowSet::Cell RowSet::Store(const tsql::Value& value, const tsql::Type& type, const Cell& above) {
  if (value.kind == Kind::DateTime && IsMomentText(type.id)) {
    const std::string text = ToDateText(value.datetime);
    tsql::Value shown;
    shown.kind = Kind::Text;
    shown.text = text;
    return Store(shown, type, above);
  }
  const bool sameKind = above.kind == value.kind;
  switch (value.kind) {
  case Kind::Null: break;
  case Kind::Integer: return {value.kind, {.integer = value.integer}};
  case Kind::Float: return {value.kind, {.real = value.real}};
  case Kind::DateTime: return {value.kind, {.moment = value.datetime}};
  case Kind::Decimal:
    if (sameKind && AreSame(*above.content.decimal, value.decimal)) return above;
    return {value.kind,
            {.decimal = new (arena_.Allocate(sizeof(tsql::Decimal), alignof(tsql::Decimal)))
                 tsql::Decimal(value.decimal)}};
  case Kind::Text: {
    const bool braces = type.id == TypeId::UniqueIdentifier;
    const std::wstring text = braces ? L'{' + com::FromUtf8(value.text) + L'}' : com::FromUtf8(value.text);
    if (sameKind && text == TextOf(above.content.pieces)) return above;
    return {value.kind, {.pieces = StorePieces(text.data(), text.size(), sizeof(wchar_t))}};
  }
  case Kind::Bytes: return {value.kind, {.pieces = StorePieces(value.text.data(), value.text.size(), 1)}};
  }
  return {Kind::Null, {}};
}

void RowSet::Append(std::span<const tsql::Value> row) {
  if (rowCount_ % kRowsInBlock == 0) {
    const size_t cells = (rowCount_ == 0 ? kRowsAtFirst : kRowsInBlock) * columns_.size();
    Block& block = blocks_.emplace_back();
    block.kinds.reserve(cells);
    block.contents.reserve(cells);
  }
  Block& block = blocks_.back();
  for (size_t i = 0; i < columns_.size(); ++i) {
    const Cell cell =
        Store(row[i], columns_[i].type, rowCount_ == 0 ? Cell{Kind::Null, {}} : At(rowCount_ - 1, i));
    block.kinds.push_back(cell.kind);
    block.contents.push_back(cell.content);
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
  const auto [kind, content] = At(row, column);
  const TypeId type = columns_[column].type.id;
  switch (kind) {
  case Kind::Null: return Variant::Null();
  case Kind::Integer: return FromInteger(content.integer, type);
  case Kind::Float: {
    if (type != TypeId::Real) return {content.real};
    Variant single;
    single.raw().vt = VT_R4;
    single.raw().fltVal = static_cast<float>(content.real);
    return single;
  }
  case Kind::Decimal: return FromDecimal(*content.decimal, type);
  case Kind::Text: return {TextOf(content.pieces)};
  case Kind::Bytes: return FromBytes(content.pieces + 1, *content.pieces);
  case Kind::DateTime: return Variant::Date(ToDate(content.moment));
  }
  return {};
}

int32_t RowSet::ActualSize(size_t row, size_t column) const {
  const auto [kind, content] = At(row, column);
  const TypeId type = columns_[column].type.id;
  switch (kind) {
  case Kind::Null: return 0;
  case Kind::Bytes: return static_cast<int32_t>(*content.pieces);
  case Kind::Text:
    if (type == TypeId::UniqueIdentifier) break;
    return static_cast<int32_t>(*content.pieces *
                                (IsWideText(type) || IsMomentText(type) ? sizeof(wchar_t) : 1));
  default: break;
  }
  return FieldTypeOf(columns_[column].type).definedSize;
}

} // namespace standin::ado
