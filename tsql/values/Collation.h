// The server's default collation over UTF-8: case does not count, trailing blanks do not count in
// comparisons. Case is folded for ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic; other scripts compare
// by code point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tsql {

// Decodes the character at `at` and moves behind it. A byte that is no UTF-8 counts as one character.
char32_t NextChar(std::string_view text, size_t& at);
void AppendChar(std::string& text, char32_t character);

char32_t FoldChar(char32_t character); // to lower case
char32_t UpperChar(char32_t character);
std::string ToLower(std::string_view text);
std::string ToUpper(std::string_view text);

// The number of characters, which is what the server calls the length.
size_t CharCount(std::string_view text);
// The byte position of the character number `index` (0-based), or the end of the text.
size_t CharOffset(std::string_view text, size_t index);
std::string_view TrimTrailingBlanks(std::string_view text);

// The order under the collation: negative, 0 or positive.
int CompareText(std::string_view left, std::string_view right);
bool EqualNames(std::string_view left, std::string_view right);
bool ContainsName(const std::vector<std::string>& names, std::string_view name);

// What a collation may mean. All but the default one tell cases apart: in the first of them small letters
// come before their capitals, in the second one the code points decide.
enum class CollationId : uint8_t { Default, CaseSensitive, Binary };
int CompareCased(std::string_view left, std::string_view right);
int ComparePoints(std::string_view left, std::string_view right);

enum class TrailingBlanks : uint8_t { Kept, Ignored };

// LIKE with %, _, [set] and [^set]. `escape` is 0 for none. Trailing blanks of the pattern count, those of
// the text as `blanks` says: the server ignores them in char and varchar.
bool MatchLike(std::string_view text, std::string_view pattern, char32_t escape,
               TrailingBlanks blanks = TrailingBlanks::Kept, CollationId collation = CollationId::Default);

// The byte position of `needle` in `text` from `start` on; npos when it is not there. `length` receives the
// byte length of what matched.
size_t FindText(std::string_view text, std::string_view needle, size_t start, size_t& length,
                CollationId collation = CollationId::Default);

} // namespace tsql
