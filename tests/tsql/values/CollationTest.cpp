// The order of texts, beside the same one character after the other.
#include "tsql/values/Collation.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace tsql::test {
namespace {

int Sign(int number) {
  return number < 0 ? -1 : number > 0 ? 1 : 0;
}

// The plain way: without capitals and trailing blanks, by the code points.
int Expected(std::string_view left, std::string_view right) {
  const auto plain = [](std::string_view text) {
    std::u32string characters;
    for (size_t at = 0; at < text.size();) characters += FoldChar(NextChar(text, at));
    while (!characters.empty() && characters.back() == U' ') characters.pop_back();
    return characters;
  };
  return Sign(plain(left).compare(plain(right)));
}

TEST(Collation, TextsThatBeginAlikeAreComparedByCharacters) {
  // Of one to four bytes, some of which begin with the same bytes.
  constexpr std::array<const char*, 12> kCharacters = {
      "a", "A", "b", " ", "1", "\u00e4", "\u00c4", "\u4e00", "\u4e01", "\u4f00", "\U0001f600", "\U0001f601"};
  std::mt19937 random(20261123);
  const auto text = [&](size_t most) {
    std::string made;
    for (size_t left = random() % (most + 1); left > 0; --left)
      made += kCharacters[random() % kCharacters.size()];
    return made;
  };
  int alike = 0;
  constexpr int kPairs = 50000;
  for (int i = 0; i < kPairs; ++i) {
    const std::string start = text(12);
    const std::string left = start + text(3);
    const std::string right = start + text(3);
    EXPECT_EQ(Sign(CompareText(left, right)), Expected(left, right)) << left << " and " << right;
    if (Expected(left, right) == 0) ++alike;
  }
  EXPECT_GT(alike, kPairs / 100);
  EXPECT_LT(alike, kPairs / 2);
}

} // namespace
} // namespace tsql::test
