// How many columns of a terminal a character takes. Programs that print tables share it.
#pragma once

namespace tsql {

// 0, 1 or 2, by the data of Unicode that Debian has: two for wide and full-width characters, none for accents
// that stand over the character before them and for characters that show nothing.
unsigned CharacterWidth(char32_t character);

} // namespace tsql
