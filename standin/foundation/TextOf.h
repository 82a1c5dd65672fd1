// The text of a value as the system shows it: Null and Empty give nothing, numbers are locale-free, dates
// yyyy-mm-dd with hh:nn:ss when there is a time of day.
#pragma once

#include <string>

#include "com/Variant.h"

namespace standin {

// Throws DISP_E_TYPEMISMATCH for what has no text (arrays, objects).
std::wstring TextOf(const com::Variant& value);

} // namespace standin
