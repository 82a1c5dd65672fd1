// Comparisons of late-bound values, by the rules of the clients' language: Null is equal to
// nothing and greater than nothing, Empty counts as 0, a text that holds a number compares as that number.
// Any other text, or an object, is a type mismatch (DISP_E_TYPEMISMATCH).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "com/Variant.h"

namespace mbom {

// The number that a value counts as in a comparison; none for Null.
std::optional<double> NumberIn(const com::Variant& value);
bool Equals(const com::Variant& value, int32_t number);
bool IsGreater(const com::Variant& value, int32_t number);
// `value = True`: a Boolean True, the number -1 that it counts as, or a text with that number or with the
// word "True". A text with another number, "1" for one, is not True.
bool IsTrue(const com::Variant& value);

// The number that a text begins with, blanks aside; 0 where it begins with none. Never fails.
double LeadingNumber(const std::wstring& text);

// The elements of a one-dimensional array, as texts. Anything else is a type mismatch.
std::vector<std::wstring> TextsIn(const com::Variant& array);

// Today's date by the local clock, as an Automation date.
com::Variant Today();

// A date with its time as "yyyy/mm/dd hh:nn:ss", 24 hours. Anything but a date is a type mismatch.
std::wstring TimeStamp(const com::Variant& date);

// Without leading and trailing blanks (U+0020 only).
std::wstring Trim(const std::wstring& text);

} // namespace mbom
