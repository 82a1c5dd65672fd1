#include "tsql/sqlite/StoredValue.h"

namespace tsql {

std::string_view BytesOf(sqlite3_value* value) {
  const void* bytes = sqlite3_value_blob(value);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<size_t>(sqlite3_value_bytes(value))};
}

Datum DatumOf(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
  case SQLITE_INTEGER: return Datum::OfInteger(sqlite3_value_int64(value));
  case SQLITE_FLOAT: return Datum::OfReal(sqlite3_value_double(value));
  case SQLITE_TEXT: return Datum::OfText(std::string(BytesOf(value)));
  case SQLITE_BLOB: return Datum::OfBlob(std::string(BytesOf(value)));
  default: return {};
  }
}

Decimal DecimalOf(sqlite3_value* value, const Type& type) {
  if (sqlite3_value_type(value) == SQLITE_BLOB) return DecodeWide(BytesOf(value), type.scale);
  Decimal number = DecimalFromInteger(sqlite3_value_int64(value));
  number.scale = type.scale;
  return number;
}

} // namespace tsql
