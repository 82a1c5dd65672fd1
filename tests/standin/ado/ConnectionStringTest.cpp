#include "standin/ado/ConnectionString.h"

#include <gtest/gtest.h>

namespace standin::ado {
namespace {

TEST(ConnectionString, FindsKeysInAnyCaseAndTrimsValues) {
  const ConnectionString text(L"A=1; B = two words ;c=;=x;nothing;D=x=y");
  EXPECT_EQ(text.Get(L"a"), L"1");
  EXPECT_EQ(text.Get(L"B"), L"two words");
  EXPECT_EQ(text.Get(L"C"), L"");
  EXPECT_EQ(text.Get(L"D"), L"x=y");
  EXPECT_EQ(text.Get(L"nothing"), L"");
}

TEST(ConnectionString, TakesAValueInBraces) {
  const ConnectionString text(L"A=1; B = {x;y} ;C=3;D={open");
  EXPECT_EQ(text.Get(L"B"), L"x;y");
  EXPECT_EQ(text.Get(L"C"), L"3");
  EXPECT_EQ(text.Get(L"D"), L"open");
}

TEST(ConnectionString, TheFirstOfTwoPairsCounts) {
  EXPECT_EQ(ConnectionString(L"A=1;a=2").Get(L"A"), L"1");
}

TEST(ConnectionString, LeavesKeysOutAndTheRestAsWritten) {
  const ConnectionString text(
      L"Provider=SQLOLEDB;Language=en; Data Source={a;b};subid=1;User ID=sa;Now=2026-01-01;");
  EXPECT_EQ(text.Without({L"Language", L"SubID", L"Now"}),
            L"Provider=SQLOLEDB; Data Source={a;b};User ID=sa");
  EXPECT_EQ(ConnectionString(L"Now=1").Without({L"now"}), L"");
}

TEST(ConnectionString, TakesBracesWithinBraces) {
  const ConnectionString text(L"A={x={y};z={;}};B=2");
  EXPECT_EQ(text.Get(L"A"), L"x={y};z={;}");
  EXPECT_EQ(text.Get(L"B"), L"2");
  const ConnectionString unclosed(L"A={x{y};B=2");
  EXPECT_EQ(unclosed.Get(L"A"), L"x{y") << "to the first closing brace";
  EXPECT_EQ(unclosed.Get(L"B"), L"2");
}

TEST(ConnectionString, TellsWhatServesIt) {
  const auto serverOf = [](const wchar_t* text) { return ConnectionString(text).server(); };
  EXPECT_EQ(serverOf(L"Provider=embedded"), Server::Embedded);
  EXPECT_EQ(serverOf(L"Data Source=x"), Server::Embedded);
  EXPECT_EQ(serverOf(L"Provider=odbc;Connection={DRIVER={x}}"), Server::Odbc);
  EXPECT_EQ(serverOf(L"Provider=SQLOLEDB;Data Source=x"), Server::Unknown);
  EXPECT_EQ(serverOf(L"DSN=x"), Server::Unknown);
  EXPECT_EQ(serverOf(L""), Server::Unknown);
}

} // namespace
} // namespace standin::ado
