#include "com/Elements.h"

#include <oleauto.h>

#include "com/ComError.h"

namespace com {

std::optional<std::vector<Variant>> ElementsOf(const Variant& array) {
  const bool isArray = (array.type() & (VT_ARRAY | VT_BYREF)) == VT_ARRAY;
  SAFEARRAY* safeArray = isArray ? array.raw().parray : nullptr;
  VARTYPE type = VT_EMPTY;
  if (!safeArray || SafeArrayGetDim(safeArray) != 1 || FAILED(SafeArrayGetVartype(safeArray, &type)))
    return std::nullopt;
  LONG first = 0;
  LONG last = -1;
  Check(SafeArrayGetLBound(safeArray, 1, &first));
  Check(SafeArrayGetUBound(safeArray, 1, &last));
  std::vector<Variant> elements;
  for (LONG i = first; i <= last; ++i) {
    Variant element;
    VARIANT& raw = element.raw();
    if (type == VT_VARIANT) {
      Check(SafeArrayGetElement(safeArray, &i, &raw));
    } else {
      // A decimal fills the variant, its type included; any other value stands behind the type.
      Check(SafeArrayGetElement(safeArray, &i, type == VT_DECIMAL ? static_cast<void*>(&raw) : &raw.bVal));
      raw.vt = type;
    }
    elements.push_back(std::move(element));
  }
  return elements;
}

} // namespace com
