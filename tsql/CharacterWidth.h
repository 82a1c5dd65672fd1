// How many columns of a terminal a character takes. Programs that print tables share it.
#pragma once

#include <algorithm>
#include <array>

namespace tsql {

struct CharacterRange {
  char32_t first;
  char32_t last;
};

// Unicode's wide and full-width blocks (East Asian Width W and F).
inline constexpr std::array kWideCharacters{
    CharacterRange{0x1100, 0x115F},   CharacterRange{0x2E80, 0x303E},   CharacterRange{0x3041, 0xA4CF},
    CharacterRange{0xA960, 0xA97C},   CharacterRange{0xAC00, 0xD7A3},   CharacterRange{0xF900, 0xFAFF},
    CharacterRange{0xFE10, 0xFE19},   CharacterRange{0xFE30, 0xFE6F},   CharacterRange{0xFF00, 0xFF60},
    CharacterRange{0xFFE0, 0xFFE6},   CharacterRange{0x1F300, 0x1F64F}, CharacterRange{0x1F900, 0x1F9FF},
    CharacterRange{0x20000, 0x3FFFD},
};

// Accents that stand over the character before them, and characters that show nothing.
inline constexpr std::array kCharactersWithoutWidth{
    CharacterRange{0x0300, 0x036F},
    CharacterRange{0x200B, 0x200F},
    CharacterRange{0xFE00, 0xFE0F},
};

// 0, 1 or 2.
constexpr unsigned CharacterWidth(char32_t character) {
  const auto holds = [character](const CharacterRange& range) {
    return character >= range.first && character <= range.last;
  };
  if (std::ranges::any_of(kCharactersWithoutWidth, holds)) return 0;
  return std::ranges::any_of(kWideCharacters, holds) ? 2 : 1;
}

} // namespace tsql
