#include "tsql/CharacterWidth.h"

#include <algorithm>
#include <array>

namespace tsql {
namespace {

struct CharacterRange {
  char32_t first;
  char32_t last;
  unsigned columns;
};

// What takes one column is in none of them.
constexpr auto kRanges = std::to_array<CharacterRange>({
#include "tsql/CharacterWidthTable.inc"
});
static_assert(std::ranges::is_sorted(kRanges, {}, &CharacterRange::first));

} // namespace

unsigned CharacterWidth(char32_t character) {
  const auto* behind = std::ranges::upper_bound(kRanges, character, {}, &CharacterRange::first);
  if (behind == kRanges.begin()) return 1;
  const CharacterRange& range = *(behind - 1);
  return character <= range.last ? range.columns : 1;
}

} // namespace tsql
