#include "cli/Cell.h"

#include <oleauto.h>

#include "cli/Json.h"
#include "cli/JsonWriter.h"
#include "cli/Number.h"
#include "com/Elements.h"
#include "com/Text.h"
#include "com/ValueText.h"

namespace bomcall {
namespace {

using com::Variant;

std::wstring HexText(const Variant& bytes) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  std::wstring text = L"0x";
  const std::vector<Variant> elements = com::ElementsOf(bytes).value_or(std::vector<Variant>());
  for (const Variant& byte : elements) {
    text += kDigits[byte.raw().bVal >> 4];
    text += kDigits[byte.raw().bVal & 15];
  }
  return text;
}

} // namespace

bool HoldsBytes(const Variant& value) {
  return value.type() == (VT_ARRAY | VT_UI1) && value.raw().parray &&
         SafeArrayGetDim(value.raw().parray) == 1;
}

Cell PlainCell(const Variant& value) {
  if (const auto digits = NumberText(value)) return Cell::Number(*digits);
  if (HoldsBytes(value)) return Cell::Text(HexText(value));
  if ((value.type() & VT_ARRAY) != 0) return Cell::Text(L"(array)");
  switch (value.type()) {
  case VT_EMPTY: return Cell::Text({});
  case VT_NULL:
  case VT_ERROR: // an argument that was left out
  case VT_R4:    // a number without digits
  case VT_R8: return {};
  case VT_BOOL: return {Cell::Kind::Boolean, com::ToText(value)};
  default: return Cell::Text(com::ToText(value));
  }
}

Cell CellOf(const Variant& value) {
  const bool isArray = (value.type() & VT_ARRAY) != 0 && !HoldsBytes(value);
  if (value.IsObject() || isArray) return {Cell::Kind::Json, com::FromUtf8(JsonLine(value))};
  return PlainCell(value);
}

std::wstring ReadableText(const Cell& cell) {
  return cell.kind == Cell::Kind::Null ? L"NULL" : cell.text;
}

void WriteCell(JsonWriter& writer, const Cell& cell) {
  switch (cell.kind) {
  case Cell::Kind::Null: writer.Literal(L"null"); return;
  case Cell::Kind::Text: writer.Text(cell.text); return;
  case Cell::Kind::Boolean:
    writer.Literal(com::EqualsNoCase(cell.text, L"True") ? L"true" : L"false");
    return;
  case Cell::Kind::Number:
  case Cell::Kind::Json: writer.Literal(cell.text); return;
  }
}

} // namespace bomcall
