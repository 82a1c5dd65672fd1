// The text of a value in statements and messages.
#pragma once

#include <string>

#include "com/Variant.h"

namespace com {

// Null and Empty give nothing, numbers have a point whatever the locale, a Boolean is True or False, a date
// yyyy-mm-dd, with hh:nn:ss where it has a time. An object is a type mismatch (DISP_E_TYPEMISMATCH).
std::wstring ToText(const Variant& value);

} // namespace com
