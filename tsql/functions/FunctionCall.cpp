#include "tsql/functions/FunctionCall.h"

#include <array>

namespace tsql {

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
