#include "tsql/values/Currency.h"

#include <algorithm>
#include <iterator>

#include "tsql/values/Collation.h"

namespace tsql {

bool TakeCurrency(std::string_view& text) {
  struct Range {
    char32_t first;
    char32_t last;
  };
  // The server's list, by code point.
  constexpr Range kSigns[] = {{U'$', U'$'},     {0xA2, 0xA5},     {0x9F2, 0x9F3},   {0xE3F, 0xE3F},
                              {0x17DB, 0x17DB}, {0x20A0, 0x20B1}, {0xFDFC, 0xFDFC}, {0xFE69, 0xFE69},
                              {0xFF04, 0xFF04}, {0xFFE0, 0xFFE1}, {0xFFE5, 0xFFE6}};
  if (text.empty()) return false;
  size_t end = 0;
  const char32_t character = NextChar(text, end);
  const bool isSign = std::any_of(std::begin(kSigns), std::end(kSigns), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
  if (isSign) text.remove_prefix(end);
  return isSign;
}

} // namespace tsql
