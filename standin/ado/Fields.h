// Fields and Field: the columns of a recordset and the current row's values.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "com/Object.h"
#include "standin/ado/Cursor.h"
#include "standin/ado/Types.h"

namespace standin::ado {

class Field {
 public:
  Field(std::shared_ptr<const Cursor> cursor, size_t column);

  std::wstring Name() const { return column().name; }
  // Throws NoCurrentRecord off the rows, ObjectClosed when the recordset is closed or shows another result.
  com::Variant Value() const;
  void PutValue(const com::Variant& value);
  int32_t Type() const;
  int32_t DefinedSize() const;
  int32_t ActualSize() const;
  int16_t Precision() const;
  int16_t NumericScale() const;
  int32_t Attributes() const;

 private:
  const RowColumn& column() const { return rows_->columns()[column_]; }
  size_t CurrentRow() const;

  std::shared_ptr<const Cursor> cursor_;
  std::shared_ptr<const RowSet> rows_;
  size_t column_;
};

class Fields {
 public:
  explicit Fields(std::shared_ptr<const Cursor> cursor) : cursor_(std::move(cursor)) {}

  int32_t Count() const; // 0 when the recordset is closed
  // By name in any case, or by position from 0.
  com::Object Item(const com::Variant& index) const;
  com::Ptr<IUnknown> NewEnum() const;

 private:
  std::shared_ptr<const Cursor> cursor_;
};

// The position of the column that a client names. Throws ItemNotFound.
size_t ColumnOf(const RowSet& rows, const com::Variant& index);

} // namespace standin::ado
