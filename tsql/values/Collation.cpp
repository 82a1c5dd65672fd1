#include "tsql/values/Collation.h"

#include <algorithm>
#include <cstring>

namespace tsql {
namespace {

constexpr bool IsAscii(char character) {
  return static_cast<unsigned char>(character) < 0x80;
}

// Whether the byte is within a character, behind its first one.
constexpr bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// How many bytes both begin with alike, in whole characters: most of them, for it looks at eight at a time.
size_t EqualStart(std::string_view left, std::string_view right) {
  constexpr size_t kStep = 8;
  const size_t size = std::min(left.size(), right.size());
  size_t equal = 0;
  while (equal + kStep <= size && std::memcmp(left.data() + equal, right.data() + equal, kStep) == 0)
    equal += kStep;
  const auto isWithinCharacter = [&equal](std::string_view text) {
    return equal < text.size() && IsContinuation(text[equal]);
  };
  while (equal > 0 && (isWithinCharacter(left) || isWithinCharacter(right))) --equal;
  return equal;
}

constexpr unsigned char LowerByte(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

// Blocks in which upper and lower case alternate: even (or odd) code points are the capitals.
bool IsAlternating(char32_t c) {
  return (c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177) || (c >= 0x460 && c <= 0x481) ||
         (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F);
}

bool IsOddAlternating(char32_t c) {
  return (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E) || (c >= 0x4C1 && c <= 0x4CE);
}

template <char32_t (*Map)(char32_t)>
std::string MapText(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (size_t at = 0; at < text.size();) AppendChar(result, Map(NextChar(text, at)));
  return result;
}

// The place of a character in the order of the collation.
char32_t OrderFolded(char32_t character) {
  return FoldChar(character);
}

char32_t OrderCased(char32_t character) {
  const char32_t folded = FoldChar(character);
  return folded * 2 + (folded != character ? 1 : 0);
}

char32_t OrderByPoint(char32_t character) {
  return character;
}

using CharacterOrder = char32_t (*)(char32_t);

// Whether `character` is in the set that starts behind "[". Moves `at` behind the bracket that closes it,
// which is the first one that is not escaped. A set without one matches nothing.
template <CharacterOrder Order>
bool MatchSet(std::string_view pattern, size_t& at, char32_t character, char32_t escape) {
  const bool negated = at < pattern.size() && pattern[at] == '^';
  if (negated) ++at;
  const auto takeMember = [&] {
    const char32_t member = NextChar(pattern, at);
    return Order(escape != 0 && member == escape && at < pattern.size() ? NextChar(pattern, at) : member);
  };
  const char32_t place = Order(character);
  bool found = false;
  while (at < pattern.size() && pattern[at] != ']') {
    const char32_t low = takeMember();
    char32_t high = low;
    if (at + 1 < pattern.size() && pattern[at] == '-' && pattern[at + 1] != ']') {
      ++at;
      high = takeMember();
    }
    found = found || (place >= low && place <= high);
  }
  if (at == pattern.size()) return false;
  ++at;
  return found != negated;
}

// Compares one element of the pattern other than % with one character, and moves behind both.
template <CharacterOrder Order>
bool MatchOne(std::string_view text, size_t& textAt, std::string_view pattern, size_t& patternAt,
              char32_t escape) {
  const char32_t element = NextChar(pattern, patternAt);
  const char32_t character = NextChar(text, textAt);
  if (escape != 0 && element == escape && patternAt < pattern.size())
    return Order(NextChar(pattern, patternAt)) == Order(character);
  if (element == '_') return true;
  if (element == '[') return MatchSet<Order>(pattern, patternAt, character, escape);
  return Order(element) == Order(character);
}

template <CharacterOrder Order>
bool MatchLikeBy(std::string_view text, std::string_view pattern, char32_t escape, TrailingBlanks blanks) {
  // When something does not match, the search goes back to the last % and lets it take one character more.
  size_t textAt = 0;
  size_t patternAt = 0;
  size_t retryText = std::string_view::npos;
  size_t retryPattern = 0;
  while (true) {
    if (patternAt < pattern.size() && pattern[patternAt] == '%' && escape != '%') {
      retryPattern = ++patternAt;
      retryText = textAt;
      continue;
    }
    if (patternAt == pattern.size() && textAt == text.size()) return true;
    const bool mayIgnoreRest = patternAt == pattern.size() && blanks == TrailingBlanks::Ignored;
    if (mayIgnoreRest && TrimTrailingBlanks(text.substr(textAt)).empty()) return true;
    if (patternAt < pattern.size() && textAt < text.size() &&
        MatchOne<Order>(text, textAt, pattern, patternAt, escape))
      continue;
    if (retryText == std::string_view::npos || retryText >= text.size()) return false;
    NextChar(text, retryText);
    textAt = retryText;
    patternAt = retryPattern;
  }
}

} // namespace

char32_t NextChar(std::string_view text, size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at++]);
  if (lead < 0x80) return lead;
  const int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
  if (extra == 0) return lead;
  char32_t character = lead & (0x3FU >> extra);
  size_t next = at;
  for (int i = 0; i < extra; ++i, ++next) {
    if (next >= text.size() || (static_cast<unsigned char>(text[next]) & 0xC0U) != 0x80U) return lead;
    character = (character << 6U) | (static_cast<unsigned char>(text[next]) & 0x3FU);
  }
  at = next;
  return character;
}

void AppendChar(std::string& text, char32_t character) {
  const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0U | (character >> 6U));
    put(0x80U | (character & 0x3FU));
  } else if (character < 0x10000) {
    put(0xE0U | (character >> 12U));
    put(0x80U | ((character >> 6U) & 0x3FU));
    put(0x80U | (character & 0x3FU));
  } else {
    put(0xF0U | (character >> 18U));
    put(0x80U | ((character >> 12U) & 0x3FU));
    put(0x80U | ((character >> 6U) & 0x3FU));
    put(0x80U | (character & 0x3FU));
  }
}

char32_t FoldChar(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 0x20 : c;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 0x20;
  if (c == 0x178) return 0xFF;
  if (IsAlternating(c)) return c | 1U;
  if (IsOddAlternating(c)) return (c & 1U) != 0 ? c + 1 : c;
  if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return c + 0x20;
  if (c == 0x386) return 0x3AC;
  if (c >= 0x388 && c <= 0x38A) return c + 37;
  if (c == 0x38C) return 0x3CC;
  if (c == 0x38E || c == 0x38F) return c + 63;
  if (c >= 0x410 && c <= 0x42F) return c + 0x20;
  if (c >= 0x400 && c <= 0x40F) return c + 0x50;
  return c;
}

char32_t UpperChar(char32_t c) {
  if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 0x20 : c;
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return c - 0x20;
  if (c == 0xFF) return 0x178;
  if (IsAlternating(c)) return c & ~char32_t{1};
  if (IsOddAlternating(c)) return (c & 1U) == 0 ? c - 1 : c;
  if (c >= 0x3B1 && c <= 0x3CB && c != 0x3C2) return c - 0x20;
  if (c == 0x3AC) return 0x386;
  if (c >= 0x3AD && c <= 0x3AF) return c - 37;
  if (c == 0x3CC) return 0x38C;
  if (c == 0x3CD || c == 0x3CE) return c - 63;
  if (c >= 0x430 && c <= 0x44F) return c - 0x20;
  if (c >= 0x450 && c <= 0x45F) return c - 0x50;
  return c;
}

std::string ToLower(std::string_view text) {
  return MapText<FoldChar>(text);
}
std::string ToUpper(std::string_view text) {
  return MapText<UpperChar>(text);
}

size_t CharCount(std::string_view text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return !IsContinuation(byte); }));
}

size_t CharOffset(std::string_view text, size_t index) {
  size_t at = 0;
  while (index-- > 0 && at < text.size()) NextChar(text, at);
  return at;
}

std::string_view TrimTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

int CompareText(std::string_view left, std::string_view right) {
  left = TrimTrailingBlanks(left);
  right = TrimTrailingBlanks(right);
  size_t i = EqualStart(left, right);
  size_t j = i;
  while (i < left.size() && j < right.size()) {
    // Nearly all characters are ASCII and need no decoding.
    if (IsAscii(left[i]) && IsAscii(right[j])) {
      const int difference = LowerByte(left[i++]) - LowerByte(right[j++]);
      if (difference != 0) return difference;
      continue;
    }
    const char32_t a = FoldChar(NextChar(left, i));
    const char32_t b = FoldChar(NextChar(right, j));
    if (a != b) return a < b ? -1 : 1;
  }
  return static_cast<int>(i < left.size()) - static_cast<int>(j < right.size());
}

// Case decides where nothing else does.
int CompareCased(std::string_view left, std::string_view right) {
  if (const int difference = CompareText(left, right); difference != 0) return difference;
  left = TrimTrailingBlanks(left);
  right = TrimTrailingBlanks(right);
  for (size_t i = 0, j = 0; i < left.size() && j < right.size();) {
    const char32_t a = OrderCased(NextChar(left, i));
    const char32_t b = OrderCased(NextChar(right, j));
    if (a != b) return a < b ? -1 : 1;
  }
  return 0;
}

// The order of the bytes of UTF-8 is that of the code points.
int ComparePoints(std::string_view left, std::string_view right) {
  return TrimTrailingBlanks(left).compare(TrimTrailingBlanks(right));
}

bool EqualNames(std::string_view left, std::string_view right) {
  return left == right || CompareText(left, right) == 0; // most are written alike
}

bool ContainsName(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::any_of(names, [name](const std::string& other) { return EqualNames(other, name); });
}

bool MatchLike(std::string_view text, std::string_view pattern, char32_t escape, TrailingBlanks blanks,
               CollationId collation) {
  switch (collation) {
  case CollationId::CaseSensitive: return MatchLikeBy<OrderCased>(text, pattern, escape, blanks);
  case CollationId::Binary: return MatchLikeBy<OrderByPoint>(text, pattern, escape, blanks);
  case CollationId::Default: break;
  }
  return MatchLikeBy<OrderFolded>(text, pattern, escape, blanks);
}

size_t FindText(std::string_view text, std::string_view needle, size_t start, size_t& length,
                CollationId collation) {
  if (collation != CollationId::Default) {
    length = needle.size();
    return needle.empty() ? std::string_view::npos : text.find(needle, start);
  }
  for (size_t at = start; at < text.size();) {
    size_t i = at;
    size_t j = 0;
    while (i < text.size() && j < needle.size() &&
           FoldChar(NextChar(text, i)) == FoldChar(NextChar(needle, j)))
      if (j == needle.size()) {
        length = i - at;
        return at;
      }
    NextChar(text, at);
  }
  return std::string_view::npos;
}

} // namespace tsql
