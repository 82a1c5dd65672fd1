#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

std::string Quote(std::string_view text, char mark) {
  std::string quoted(1, mark);
  for (const char character : text) {
    if (character == mark) quoted.push_back(mark);
    quoted.push_back(character);
  }
  quoted.push_back(mark);
  return quoted;
}

} // namespace

std::string QuoteName(std::string_view name) {
  return Quote(name, '"');
}

std::string QuoteText(std::string_view text) {
  return Quote(text, '\'');
}

} // namespace tsql
