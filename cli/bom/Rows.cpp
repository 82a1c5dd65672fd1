#include "cli/bom/Rows.h"

#include <oleauto.h>

#include "cli/Number.h"
#include "com/ComError.h"
#include "com/RecordsetRows.h"
#include "com/Text.h"
#include "com/ValueText.h"

namespace bomcall::bom {

int32_t RowView::Number(size_t column) const {
  const VARIANT& value = values_[column];
  if (value.vt == VT_I4) return value.lVal;
  return IsNull(column) ? 0 : com::Variant(value).AsLong();
}

std::wstring RowView::Text(size_t column) const {
  if (values_[column].vt == VT_BSTR) return com::FromBstr(values_[column].bstrVal);
  const com::Variant value(values_[column]);
  const auto digits = NumberText(value);
  return digits ? *digits : com::ToText(value);
}

Quantity RowView::Decimal(size_t column) const {
  const VARIANT& value = values_[column];
  // Nearly all of them fit into 64 bits, and making a number of digits out of a text takes much longer.
  if (value.vt == VT_DECIMAL && value.decVal.Hi32 == 0)
    return Quantity::Scaled(value.decVal.Lo64, value.decVal.scale, value.decVal.sign != 0);
  return Quantity::Parse(Text(column)).value_or(Quantity());
}

Day RowView::DayAt(size_t column) const {
  if (IsNull(column)) return std::nullopt;
  if (values_[column].vt == VT_DATE) return DayOf(values_[column].date);
  // A driver that has no type for days hands out texts.
  std::wstring text = Text(column).substr(0, 10);
  DATE date = 0;
  com::Check(VarDateFromStr(text.data(), LOCALE_INVARIANT, 0, &date));
  return DayOf(date);
}

void ForEachRow(const com::Object& connection, const std::wstring& query,
                const std::function<void(const RowView&)>& visit) {
  const com::Object recordset = connection.Call(L"Execute", query).AsObject();
  com::ForEachRow(recordset, [&](const VARIANT* values) { visit(RowView(values)); });
  recordset.Call(L"Close");
}

} // namespace bomcall::bom
