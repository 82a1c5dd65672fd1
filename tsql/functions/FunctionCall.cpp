#include "tsql/functions/FunctionCall.h"

#include <array>

namespace tsql {

std::string_view FunctionCall::Text(int i) const {
  const void* bytes = sqlite3_value_blob(values_[i]);
  const int size = sqlite3_value_bytes(values_[i]);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<size_t>(size)};
}

Datum FunctionCall::Value(int i) const {
  switch (sqlite3_value_type(values_[i])) {
  case SQLITE_INTEGER: return Datum::OfInteger(Integer(i));
  case SQLITE_FLOAT: return Datum::OfReal(Real(i));
  case SQLITE_TEXT: return Datum::OfText(std::string(Text(i)));
  case SQLITE_BLOB: return Datum::OfBlob(std::string(Text(i)));
  default: return {};
  }
}

Decimal FunctionCall::DecimalAt(int i, const Type& type) const {
  if (sqlite3_value_type(values_[i]) == SQLITE_BLOB) return DecodeWide(Text(i), type.scale);
  Decimal value = DecimalFromInteger(Integer(i));
  value.scale = type.scale;
  return value;
}

void FunctionCall::ReturnDecimal(const Decimal& value, const Type& type) const {
  if (!IsWide(type)) {
    ReturnInteger(DatumOfDecimal(value, type).integer);
    return;
  }
  const std::array<char, kWideSize> bytes = EncodeWide(value);
  sqlite3_result_blob64(context_, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

void FunctionCall::Return(const Datum& value) const {
  switch (value.kind) {
  case Datum::Kind::Null: ReturnNull(); break;
  case Datum::Kind::Integer: ReturnInteger(value.integer); break;
  case Datum::Kind::Real: ReturnReal(value.real); break;
  case Datum::Kind::Text: ReturnText(value.text); break;
  case Datum::Kind::Blob: ReturnBytes(value.text); break;
  }
}

void FunctionCall::ReturnError(const Error& error) const {
  Context().error = error;
  sqlite3_result_error(context_, error.what(), -1);
}

} // namespace tsql
