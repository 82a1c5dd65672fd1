#include "src/frame/MParse.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/Client.h"

namespace mbom::test {
namespace {

unsigned CodeOfLookUp(const wchar_t* key) {
  return static_cast<unsigned>(RaisedBy([&] { GetParsedValue(key); }).code);
}

TEST(ParseDsn, TakesKeysAndValuesApart) {
  EXPECT_TRUE(ParseDsn(L"A=1; B = {x;y} ;C=3"));
  EXPECT_EQ(GetParsedValue(L"A"), L"1");
  EXPECT_EQ(GetParsedValue(L"b"), L"x;y");
  EXPECT_EQ(GetParsedValue(L"C"), L"3");
}

TEST(ParseDsn, OfNothingStoresNothing) {
  EXPECT_TRUE(ParseDsn(L""));
  EXPECT_EQ(CodeOfLookUp(L""), 0x800A0005u);
  EXPECT_EQ(CodeOfLookUp(L"A"), 0x800A0005u);
}

TEST(ParseDsn, ForgetsTheDescriptorBefore) {
  ParseDsn(L"A=1");
  ParseDsn(L"B=2");
  EXPECT_EQ(CodeOfLookUp(L"A"), 0x800A0005u);
  EXPECT_EQ(GetParsedValue(L"B"), L"2");
}

TEST(ParseDsn, TrimsBlanks) {
  ParseDsn(L"  SubID =  JH  ; Next = { a } rubbish ;Last=");
  EXPECT_EQ(GetParsedValue(L"subid"), L"JH");
  EXPECT_EQ(GetParsedValue(L"Next"), L"a");
  EXPECT_EQ(GetParsedValue(L"Last"), L"");
}

TEST(ParseDsn, KeepsWhatFollowsTheFirstEqualsSign) {
  ParseDsn(L"A=b=c;D=e");
  EXPECT_EQ(GetParsedValue(L"A"), L"b=c");
  EXPECT_EQ(GetParsedValue(L"D"), L"e");
}

TEST(ParseDsn, TakesAValueInBracesToItsEnd) {
  ParseDsn(L"A={open;B=2");
  EXPECT_EQ(GetParsedValue(L"A"), L"open;B=2");
  EXPECT_EQ(CodeOfLookUp(L"B"), 0x800A0005u);
}

TEST(ParseDsn, StopsAtAnEmptyKey) {
  EXPECT_TRUE(ParseDsn(L"A=1;=2;C=3"));
  EXPECT_EQ(GetParsedValue(L"A"), L"1");
  EXPECT_EQ(CodeOfLookUp(L"C"), 0x800A0005u);
  EXPECT_TRUE(ParseDsn(L"word"));
  EXPECT_EQ(GetParsedValue(L"word"), L"");
}

TEST(ParseDsn, RaisesADuplicateKeyInAnyCase) {
  const Raised raised = RaisedBy([] { ParseDsn(L"A=1;B=2;a=3"); });
  EXPECT_EQ(static_cast<unsigned>(raised.code), 0x800A01C9u);
  EXPECT_EQ(GetParsedValue(L"B"), L"2");
}

TEST(ParseDsn, IsEachThreadsOwn) {
  ParseDsn(L"A=here");
  std::wstring there;
  unsigned before = 0;
  std::thread([&] {
    before = CodeOfLookUp(L"A");
    ParseDsn(L"A=there");
    there = GetParsedValue(L"A");
  }).join();
  EXPECT_EQ(before, 0x800A0005u);
  EXPECT_EQ(there, L"there");
  EXPECT_EQ(GetParsedValue(L"A"), L"here");
}

} // namespace
} // namespace mbom::test
