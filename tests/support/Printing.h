// How GoogleTest shows UTF-16 texts and variants in its messages.
#pragma once

#include <ostream>
#include <string>

#include "com/Text.h"
#include "com/Variant.h"

namespace com {

inline void PrintTo(const Variant& value, std::ostream* out) {
  *out << "VT " << value.type();
  if (value.type() == VT_BSTR) *out << " \"" << ToUtf8(value.AsText()) << '"';
  if (value.type() == VT_I4) *out << ' ' << value.AsLong();
}

} // namespace com
