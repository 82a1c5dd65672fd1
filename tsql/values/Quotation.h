// Names and texts as SQL has them: between quotation marks, those within doubled.
#pragma once

#include <string>
#include <string_view>

namespace tsql {

std::string QuoteName(std::string_view name);
std::string QuoteText(std::string_view text);

} // namespace tsql
