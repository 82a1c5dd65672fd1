// RowSet: the rows of one result, kept compactly and read in any order.
//
// A cell takes 9 bytes; texts, bytes and exact numbers lie in blocks of memory that only grow. A text or an
// exact number that the row above has as well, as what is joined often does, is there once, and so are the
// columns' names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "com/Variant.h"
#include "tsql/tsql.h"

namespace standin::ado {

// Memory that is handed out piece by piece and freed as a whole.
class Arena {
 public:
  // `alignment` is a power of two that divides what an address of new memory is a multiple of.
  void* Allocate(size_t size, size_t alignment);

 private:
  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  size_t blockSize_ = 0;
  size_t used_ = 0;
};

struct RowColumn {
  std::wstring name;
  tsql::Type type;
  bool nullable;
};

class RowSet {
 public:
  explicit RowSet(std::span<const tsql::Column> columns);

  void Append(std::span<const tsql::Value> row);

  const std::vector<RowColumn>& columns() const { return columns_; }
  size_t rowCount() const { return rowCount_; }
  // The position of the first column of that name, in any case; columns().size() when there is none.
  size_t FindColumn(std::wstring_view name) const;

  com::Variant Value(size_t row, size_t column) const;
  // The value's length: bytes, of text that is not Unicode characters; 0 for null.
  int32_t ActualSize(size_t row, size_t column) const;

 private:
  union Content {
    int64_t integer;
    double real;
    tsql::DateTime moment;
    const tsql::Decimal* decimal;
    const uint32_t* pieces; // how many characters or bytes there are, and behind that they themselves
  };
  struct Cell {
    tsql::Value::Kind kind;
    Content content;
  };
  struct Block {
    std::vector<tsql::Value::Kind> kinds;
    std::vector<Content> contents;
  };

  // `above` is the cell of the row before, a null in the first one.
  Cell Store(const tsql::Value& value, const tsql::Type& type, const Cell& above);
  const uint32_t* StorePieces(const void* pieces, size_t count, size_t sizeOfOne);
  Cell At(size_t row, size_t column) const {
    const Block& block = blocks_[row / kRowsInBlock];
    const size_t place = row % kRowsInBlock * columns_.size() + column;
    return {block.kinds[place], block.contents[place]};
  }

  // The first block grows to this size, for most results have few rows; each further one has it at once. They
  // are large because a heap that has many free pieces of middling sizes searches them at each request.
  static constexpr size_t kRowsInBlock = 128;
  static constexpr size_t kRowsAtFirst = 8;

  std::vector<RowColumn> columns_;
  std::vector<Block> blocks_;
  size_t rowCount_ = 0;
  Arena arena_;
};

} // namespace standin::ado
