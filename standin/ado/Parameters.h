// Parameters and Parameter: the arguments of a command.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "com/Object.h"
#include "standin/ado/Constants.h"
#include "tsql/tsql.h"

namespace standin::ado {

class Parameter {
 public:
  std::wstring Name() const { return name_; }
  void PutName(const std::wstring& value) { name_ = value; }
  int32_t GetType() const { return static_cast<int32_t>(type_); }
  void PutType(int32_t value);
  int32_t GetDirection() const { return static_cast<int32_t>(direction_); }
  void PutDirection(int32_t value);
  int32_t Size() const { return size_; }
  void PutSize(int32_t value);
  int16_t Precision() const { return precision_; }
  void PutPrecision(int16_t value);
  int16_t NumericScale() const { return scale_; }
  void PutNumericScale(int16_t value);
  // The value in the parameter's type. Throws DataConversion for one that does not convert or is too long.
  com::Variant Value() const { return value_; }
  void PutValue(const com::Variant& value);

  // For the command.

  Direction direction() const { return direction_; }
  bool IsInput() const { return direction_ != Direction::Output && direction_ != Direction::ReturnValue; }
  // Throws BadParameterInfo when there is no type, or no size for a type that needs one.
  void RequireDefined() const;
  // As the engine takes it; the value's text lies in `storage`.
  tsql::Parameter ToEngine(std::string& storage) const;
  // The value in the parameter's type; as PutValue throws.
  com::Variant InOwnType(const com::Variant& value) const;
  // Takes the value that the server put out.
  void TakeOutput(com::Variant value) noexcept { value_ = std::move(value); }

 private:
  std::wstring name_;
  DataType type_ = DataType::Empty;
  Direction direction_ = Direction::Input;
  int32_t size_ = 0;
  uint8_t precision_ = 0;
  uint8_t scale_ = 0;
  com::Variant value_;
};

class Parameters {
 public:
  void Append(const com::Object& parameter);
  void Delete(const com::Variant& index);
  int32_t Count() const { return static_cast<int32_t>(items_.size()); }
  // By name in any case, or by position from 0.
  com::Object Item(const com::Variant& index) const;
  void Refresh();
  com::Ptr<IUnknown> NewEnum() const;

  // Parameter objects, in the order in which they were appended.
  const std::vector<com::Object>& items() const { return items_; }

 private:
  size_t PositionOf(const com::Variant& index) const;

  std::vector<com::Object> items_;
};

// The parameter inside an object of the collection.
Parameter& ParameterOf(const com::Object& object);

// The value that the engine put out, as ADO's.
com::Variant OutputValueOf(const tsql::Parameter& parameter);

} // namespace standin::ado
