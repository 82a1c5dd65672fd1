// Conversions and comparisons of late-bound values, by the rules of the clients' language: Null is equal to
// nothing and greater than nothing, Empty counts as 0, a text that holds a number compares as that number.
// Any other text, or an object, is a type mismatch (DISP_E_TYPEMISMATCH).
#pragma once

#include <cstdint>
#include <string>

#include "com/Variant.h"

namespace mbom {

// A value as it goes into SQL or a message: Null and Empty give nothing, numbers have a point whatever the
// locale, a Boolean is True or False, a date yyyy-mm-dd, with hh:nn:ss where it has a time.
std::wstring ToText(const com::Variant& value);

bool Equals(const com::Variant& value, int32_t number);
bool IsGreater(const com::Variant& value, int32_t number);
// `value = True`: a Boolean True, or the number -1 that it counts as.
bool IsTrue(const com::Variant& value);

// Without leading and trailing blanks (U+0020 only).
std::wstring Trim(const std::wstring& text);

} // namespace mbom
