#include "tsql/values/Datum.h"

#include <cassert>

namespace tsql {

Decimal DecimalOf(const Datum& datum, const Type& type) {
  if (datum.kind == Datum::Kind::Blob) return DecodeWide(datum.text, type.scale);
  assert(datum.kind == Datum::Kind::Integer);
  Decimal value = DecimalFromInteger(datum.integer);
  value.scale = type.scale;
  return value;
}

Datum DatumOfDecimal(const Decimal& value, const Type& type) {
  assert(value.scale == type.scale);
  if (IsWide(type)) {
    const std::array<char, kWideSize> bytes = EncodeWide(value);
    return Datum::OfBlob(std::string(bytes.data(), bytes.size()));
  }
  assert(value.high == 0);
  // The lowest money value has no positive counterpart in 64 bits.
  return Datum::OfInteger(static_cast<int64_t>(value.negative ? ~value.low + 1 : value.low));
}

} // namespace tsql
