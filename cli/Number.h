// Numbers with all of their digits, from texts and to texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "com/Variant.h"

namespace bomcall {

// A decimal number written without an exponent. Nothing if it has more digits than VT_DECIMAL holds.
std::optional<com::Variant> ParseDecimal(std::string_view text);

// The digits of a number of any type, which are a number of JSON too: a decimal without zeros behind its last
// digit, a binary fraction with as few digits as tell it from its neighbours. Nothing for what is no number
// or has no digits, as an infinity.
std::optional<std::wstring> NumberText(const com::Variant& number);

} // namespace bomcall
