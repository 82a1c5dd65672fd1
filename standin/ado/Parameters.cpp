#include "standin/ado/Parameters.h"

#include <algorithm>

#include "com/DispatchObject.h"
#include "com/Text.h"
#include "standin/ado/AdoError.h"
#include "standin/ado/RowSet.h"
#include "standin/ado/Types.h"
#include "standin/foundation/Enumerator.h"

namespace standin::ado {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kParametersSource[] = L"ADODB.Parameter";
constexpr wchar_t kCollectionSource[] = L"ADODB.Parameters";

bool NeedsSize(DataType type) {
  switch (type) {
  case DataType::Char:
  case DataType::VarChar:
  case DataType::WChar:
  case DataType::VarWChar:
  case DataType::Binary:
  case DataType::VarBinary: return true;
  default: return false;
  }
}

// What counts against a parameter's Size: bytes of the database's code page for the types that hold them,
// else characters.
int SizeOf(BSTR text, DataType type) {
  const auto length = static_cast<int>(SysStringLen(text));
  if (type != DataType::Char && type != DataType::VarChar) return length;
  return WideCharToMultiByte(tsql::kCodePage, 0, text, length, nullptr, 0, nullptr, nullptr);
}

} // namespace

void Parameter::PutType(int32_t value) {
  const auto type = static_cast<DataType>(value);
  try {
    if (type != DataType::Empty) TypeOf(type, 0, 0, 0);
  } catch (const com::ComError&) {
    Raise(AdoError::InvalidArgument, kParametersSource);
  }
  type_ = type;
}

void Parameter::PutDirection(int32_t value) {
  if (value < static_cast<int32_t>(Direction::Unknown) ||
      value > static_cast<int32_t>(Direction::ReturnValue))
    Raise(AdoError::InvalidArgument, kParametersSource);
  direction_ = static_cast<Direction>(value);
}

void Parameter::PutSize(int32_t value) {
  if (value < 0) Raise(AdoError::InvalidArgument, kParametersSource);
  size_ = value;
}

void Parameter::PutPrecision(int16_t value) {
  if (value < 0 || value > 38) Raise(AdoError::InvalidArgument, kParametersSource);
  precision_ = static_cast<uint8_t>(value);
}

void Parameter::PutNumericScale(int16_t value) {
  if (value < 0 || value > 38) Raise(AdoError::InvalidArgument, kParametersSource);
  scale_ = static_cast<uint8_t>(value);
}

void Parameter::PutValue(const Variant& value) {
  if (!value.IsMissing()) value_ = InOwnType(value);
}

Variant Parameter::InOwnType(const Variant& value) const {
  try {
    Variant converted = Convert(value, type_);
    const bool tooLong = NeedsSize(type_) && size_ > 0 && converted.type() == VT_BSTR &&
                         SizeOf(converted.raw().bstrVal, type_) > size_;
    if (tooLong) Raise(AdoError::DataConversion, kParametersSource);
    return converted;
  } catch (const com::ComError&) {
    Raise(AdoError::DataConversion, kParametersSource);
  }
}

void Parameter::RequireDefined() const {
  if (type_ == DataType::Empty || (NeedsSize(type_) && size_ == 0))
    Raise(AdoError::BadParameterInfo, kParametersSource);
}

tsql::Parameter Parameter::ToEngine(std::string& storage) const {
  tsql::Parameter result;
  result.type = TypeOf(type_, size_, precision_, scale_);
  result.output = direction_ == Direction::Output || direction_ == Direction::InputOutput;
  // The type may have been set after the value.
  if (IsInput()) result.value = ToValue(Convert(value_, type_), storage);
  return result;
}

void Parameters::Append(const Object& parameter) {
  const auto* added = com::Unwrap<Parameter>(parameter.pointer());
  if (!added) Raise(AdoError::InvalidArgument, kCollectionSource);
  if (std::ranges::find(items_, parameter) != items_.end())
    Raise(AdoError::ObjectInCollection, kCollectionSource);
  added->RequireDefined();
  items_.push_back(parameter);
}

size_t Parameters::PositionOf(const Variant& index) const {
  size_t position = items_.size();
  if (index.type() == VT_BSTR) {
    const std::wstring name = index.AsText();
    const auto named = std::ranges::find_if(
        items_, [&](const Object& item) { return com::EqualsNoCase(ParameterOf(item).Name(), name); });
    position = static_cast<size_t>(named - items_.begin());
  } else if (const int32_t number = index.AsLong(); number >= 0) {
    position = static_cast<size_t>(number);
  }
  if (position >= items_.size()) Raise(AdoError::ItemNotFound, kCollectionSource);
  return position;
}

Object Parameters::Item(const Variant& index) const {
  return items_[PositionOf(index)];
}

void Parameters::Delete(const Variant& index) {
  items_.erase(items_.begin() + static_cast<ptrdiff_t>(PositionOf(index)));
}

void Parameters::Refresh() {
  RaiseUnsupported(L"Refresh", kCollectionSource);
}

com::Ptr<IUnknown> Parameters::NewEnum() const {
  return MakeEnumerator({items_.begin(), items_.end()});
}

Parameter& ParameterOf(const Object& object) {
  return *com::Unwrap<Parameter>(object.pointer());
}

Variant OutputValueOf(const tsql::Parameter& parameter) {
  const tsql::Column column{{}, parameter.type, true};
  RowSet row({&column, 1});
  row.Append({&parameter.value, 1});
  return row.Value(0, 0);
}

} // namespace standin::ado

template <>
const com::DispatchTable& com::TableOf<standin::ado::Parameter>() {
  using standin::ado::Parameter;
  static const DispatchTable table(
      IID_NULL, {
                    PropertyGet<&Parameter::Value>(DISPID_VALUE, L"Value"),
                    PropertyPut<&Parameter::PutValue>(DISPID_VALUE, L"Value", {L"Value"}),
                    PropertyGet<&Parameter::Name>(kNextId, L"Name"),
                    PropertyPut<&Parameter::PutName>(kNextId, L"Name", {L"Value"}),
                    PropertyGet<&Parameter::GetType>(kNextId, L"Type"),
                    PropertyPut<&Parameter::PutType>(kNextId, L"Type", {L"Value"}),
                    PropertyGet<&Parameter::GetDirection>(kNextId, L"Direction"),
                    PropertyPut<&Parameter::PutDirection>(kNextId, L"Direction", {L"Value"}),
                    PropertyGet<&Parameter::Size>(kNextId, L"Size"),
                    PropertyPut<&Parameter::PutSize>(kNextId, L"Size", {L"Value"}),
                    PropertyGet<&Parameter::Precision>(kNextId, L"Precision"),
                    PropertyPut<&Parameter::PutPrecision>(kNextId, L"Precision", {L"Value"}),
                    PropertyGet<&Parameter::NumericScale>(kNextId, L"NumericScale"),
                    PropertyPut<&Parameter::PutNumericScale>(kNextId, L"NumericScale", {L"Value"}),
                });
  return table;
}

template <>
const com::DispatchTable& com::TableOf<standin::ado::Parameters>() {
  using standin::ado::Parameters;
  static const DispatchTable table(IID_NULL,
                                   {
                                       PropertyGet<&Parameters::Item>(DISPID_VALUE, L"Item", {L"Index"}),
                                       PropertyGet<&Parameters::Count>(kNextId, L"Count"),
                                       Method<&Parameters::Append>(kNextId, L"Append", {L"Object"}),
                                       Method<&Parameters::Delete>(kNextId, L"Delete", {L"Index"}),
                                       Method<&Parameters::Refresh>(kNextId, L"Refresh"),
                                       Enumeration<&Parameters::NewEnum>(),
                                   });
  return table;
}
