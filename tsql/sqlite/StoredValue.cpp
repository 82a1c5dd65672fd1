#include "tsql/sqlite/StoredValue.h"

namespace tsql {

std::string_view BytesOf(sqlite3_value* value) {
  const void* bytes = sqlite3_value_blob(value);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<size_t>(sqlite3_value_bytes(value))};
}

Datum DatumOf(sqlite3_value* value) {
  Datum datum;
  ReadDatum(value, datum);
  return datum;
}

void ReadDatum(sqlite3_value* value, Datum& datum) {
  datum.kind = Datum::Kind::Null;
  datum.integer = 0;
  datum.real = 0;
  datum.text.clear();
  switch (sqlite3_value_type(value)) {
  case SQLITE_INTEGER:
    datum.kind = Datum::Kind::Integer;
    datum.integer = sqlite3_value_int64(value);
    break;
  case SQLITE_FLOAT:
    datum.kind = Datum::Kind::Real;
    datum.real = sqlite3_value_double(value);
    break;
  case SQLITE_TEXT:
    datum.text = BytesOf(value);
    datum.kind = Datum::Kind::Text;
    break;
  case SQLITE_BLOB:
    datum.text = BytesOf(value);
    datum.kind = Datum::Kind::Blob;
    break;
  default: break;
  }
}

Decimal DecimalOf(sqlite3_value* value, const Type& type) {
  if (sqlite3_value_type(value) == SQLITE_BLOB) return DecodeWide(BytesOf(value), type.scale);
  Decimal number = DecimalFromInteger(sqlite3_value_int64(value));
  number.scale = type.scale;
  return number;
}

} // namespace tsql
