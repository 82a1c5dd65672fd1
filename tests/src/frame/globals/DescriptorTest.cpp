#include "src/frame/globals/Descriptor.h"

#include <gtest/gtest.h>

#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

TEST(GetDsnValue, ReadsAKeyWithAndWithoutAClosingSeparator) {
  EXPECT_EQ(GetDsnValue(L"DSN=x;Language=en", L"Language"), L"en");
  EXPECT_EQ(GetDsnValue(L"DSN=x;Language=en;", L"Language"), L"en");
  EXPECT_EQ(GetDsnValue(L"language=chs;DSN=x", L"Language"), L"chs");
}

TEST(GetDsnValue, FallsBackToTraditionalChinese) {
  EXPECT_EQ(GetDsnValue(L"DSN=x", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"Language=", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"Language= ;", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"Language;en", L"Language"), L"cht");
}

TEST(GetDsnValue, DoesNotTrimAValue) {
  EXPECT_EQ(GetDsnValue(L"Language=chs ;x", L"Language"), L"chs ");
}

TEST(GetDsnValue, MatchesTheKeyAnywhere) {
  EXPECT_EQ(GetDsnValue(L"XLanguage=en;Language=chs", L"Language"), L"en");
  EXPECT_EQ(GetDsnValue(L"A={x;LANGUAGE=en};", L"Language"), L"en}");
}

} // namespace
} // namespace mbom::test
