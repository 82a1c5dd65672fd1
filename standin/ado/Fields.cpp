#include "standin/ado/Fields.h"

#include "com/DispatchObject.h"
#include "standin/ado/AdoError.h"
#include "standin/foundation/Enumerator.h"

namespace standin::ado {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kFieldSource[] = L"ADODB.Field";
constexpr wchar_t kFieldsSource[] = L"ADODB.Fields";

// FieldAttributeEnum: the column takes nulls, and may hold one.
constexpr int32_t kNullable = 0x20 | 0x40;

} // namespace

Field::Field(std::shared_ptr<const Cursor> cursor, size_t column)
    : cursor_(std::move(cursor)), rows_(cursor_->rows), column_(column) {}

size_t Field::CurrentRow() const {
  if (!cursor_->open() || cursor_->rows != rows_) Raise(AdoError::ObjectClosed, kFieldSource);
  if (cursor_->bof() || cursor_->eof()) Raise(AdoError::NoCurrentRecord, kFieldSource);
  return static_cast<size_t>(cursor_->position);
}

Variant Field::Value() const {
  return rows_->Value(CurrentRow(), column_);
}

void Field::PutValue(const Variant& /*value*/) {
  RaiseUnsupported(L"Updating", kFieldSource);
}

int32_t Field::Type() const {
  return static_cast<int32_t>(FieldTypeOf(column().type).type);
}

int32_t Field::DefinedSize() const {
  return FieldTypeOf(column().type).definedSize;
}

int32_t Field::ActualSize() const {
  return rows_->ActualSize(CurrentRow(), column_);
}

int16_t Field::Precision() const {
  return FieldTypeOf(column().type).precision;
}

int16_t Field::NumericScale() const {
  return FieldTypeOf(column().type).scale;
}

int32_t Field::Attributes() const {
  return FieldTypeOf(column().type).attributes | (column().nullable ? kNullable : 0);
}

size_t ColumnOf(const RowSet& rows, const Variant& index) {
  const size_t count = rows.columns().size();
  size_t column = count;
  if (index.type() == VT_BSTR) {
    column = rows.FindColumn({index.raw().bstrVal, SysStringLen(index.raw().bstrVal)});
  } else {
    const int32_t position = index.AsLong();
    if (position >= 0) column = static_cast<size_t>(position);
  }
  if (column >= count) Raise(AdoError::ItemNotFound, kFieldsSource);
  return column;
}

int32_t Fields::Count() const {
  return cursor_->open() ? static_cast<int32_t>(cursor_->rows->columns().size()) : 0;
}

Object Fields::Item(const Variant& index) const {
  if (!cursor_->open()) Raise(AdoError::ItemNotFound, kFieldsSource);
  return com::ToObject(com::Make<Field>(cursor_, ColumnOf(*cursor_->rows, index)));
}

com::Ptr<IUnknown> Fields::NewEnum() const {
  std::vector<Variant> elements;
  elements.reserve(static_cast<size_t>(Count()));
  for (int32_t i = 0; i < Count(); ++i) elements.emplace_back(Item(i));
  return MakeEnumerator(std::move(elements));
}

} // namespace standin::ado

template <>
const com::DispatchTable& com::TableOf<standin::ado::Field>() {
  using standin::ado::Field;
  static const DispatchTable table(IID_NULL,
                                   {
                                       PropertyGet<&Field::Value>(DISPID_VALUE, L"Value"),
                                       PropertyPut<&Field::PutValue>(DISPID_VALUE, L"Value", {L"Value"}),
                                       PropertyGet<&Field::Name>(kNextId, L"Name"),
                                       PropertyGet<&Field::Type>(kNextId, L"Type"),
                                       PropertyGet<&Field::DefinedSize>(kNextId, L"DefinedSize"),
                                       PropertyGet<&Field::ActualSize>(kNextId, L"ActualSize"),
                                       PropertyGet<&Field::Precision>(kNextId, L"Precision"),
                                       PropertyGet<&Field::NumericScale>(kNextId, L"NumericScale"),
                                       PropertyGet<&Field::Attributes>(kNextId, L"Attributes"),
                                   });
  return table;
}

template <>
const com::DispatchTable& com::TableOf<standin::ado::Fields>() {
  using standin::ado::Fields;
  static const DispatchTable table(IID_NULL,
                                   {
                                       PropertyGet<&Fields::Item>(DISPID_VALUE, L"Item", {L"Index"}),
                                       PropertyGet<&Fields::Count>(kNextId, L"Count"),
                                       Enumeration<&Fields::NewEnum>(),
                                   });
  return table;
}
