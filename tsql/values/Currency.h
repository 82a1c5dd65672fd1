// The signs of currencies that an amount of money may have in a text.
#pragma once

#include <string_view>

namespace tsql {

// Takes a currency sign from the start of the text.
bool TakeCurrency(std::string_view& text);

} // namespace tsql
