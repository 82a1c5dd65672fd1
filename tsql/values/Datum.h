// A value in its storage form (Types.h says which that is for each type); its T-SQL type travels beside it.
#pragma once

#include <string>

#include "tsql/values/Decimal.h"
#include "tsql/values/Types.h"

namespace tsql {

struct Datum {
  enum class Kind : uint8_t { Null, Integer, Real, Text, Blob };
  Kind kind = Kind::Null;
  int64_t integer = 0;
  double real = 0;
  std::string text; // Text and Blob

  bool IsNull() const { return kind == Kind::Null; }
  bool operator==(const Datum&) const = default;

  static Datum OfInteger(int64_t value) {
    Datum datum;
    datum.kind = Kind::Integer;
    datum.integer = value;
    return datum;
  }
  static Datum OfReal(double value) {
    Datum datum;
    datum.kind = Kind::Real;
    datum.real = value;
    return datum;
  }
  static Datum OfText(std::string value) {
    Datum datum;
    datum.kind = Kind::Text;
    datum.text = std::move(value);
    return datum;
  }
  static Datum OfBlob(std::string value) {
    Datum datum;
    datum.kind = Kind::Blob;
    datum.text = std::move(value);
    return datum;
  }
};

// The number that a value in storage form is. `datum` is not null, and its type is a decimal or an integer.
Decimal DecimalOf(const Datum& datum, const Type& type);
// The storage form of a number, which has the type's scale and fits its precision.
Datum DatumOfDecimal(const Decimal& value, const Type& type);

} // namespace tsql
