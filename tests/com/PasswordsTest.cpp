#include "com/Passwords.h"

#include <gtest/gtest.h>

namespace com {
namespace {

TEST(Passwords, AreMaskedWhereverTheyStand) {
  EXPECT_EQ(Masked(L"DRIVER={x};UID=sa;PWD=secret;Database=d"), L"DRIVER={x};UID=sa;PWD=***;Database=d");
  EXPECT_EQ(Masked(L"pwd = secret"), L"pwd = ***");
  EXPECT_EQ(Masked(L"Password={a;b}}c};x=1"), L"Password=***;x=1");
  EXPECT_EQ(Masked(L"PWD=a;Password=b"), L"PWD=***;Password=***");
}

TEST(Passwords, AreMaskedWithTheirQuotes) {
  EXPECT_EQ(Masked(L"Password=\"a;b\"\"c\";x=1"), L"Password=***;x=1");
  EXPECT_EQ(Masked(L"Connection={PWD='a;''}b';UID=sa};y=2"), L"Connection={PWD=***;UID=sa};y=2");
  EXPECT_EQ(Masked(L"PWD=\"a;b"), L"PWD=***");
}

TEST(Passwords, AreMaskedWithinADescriptor) {
  EXPECT_EQ(Masked(L"Provider=ODBC;Connection={DRIVER={x};PWD=secret};Language=en"),
            L"Provider=ODBC;Connection={DRIVER={x};PWD=***};Language=en");
  EXPECT_EQ(Masked(L"Connection={PWD=secret;UID=sa}"), L"Connection={PWD=***;UID=sa}");
  EXPECT_EQ(Masked(L"Connection={PWD={s};UID=sa}"), L"Connection={PWD=***;UID=sa}");
}

TEST(Passwords, EverythingElseStaysAsItIs) {
  for (const wchar_t* text :
       {L"", L";", L"=", L"PWD", L"Provider=Embedded;Data Source=a=b;Now=2026-01-01 10:00:00",
        L"XPWD=a;PWDX=b", L"UID=PWD;x=Password", L"a={PWD}"})
    EXPECT_EQ(Masked(text), text);
}

TEST(Passwords, ArePickedOutOfAMessage) {
  EXPECT_EQ(WithoutPasswordsOf(L"UID=sa;PWD={secret}", L"secret: no secret"), L"***: no ***");
  EXPECT_EQ(WithoutPasswordsOf(L"UID=sa;PWD=", L"Login failed."), L"Login failed.");
  EXPECT_EQ(WithoutPasswordsOf(L"UID=sa", L"Login failed for sa."), L"Login failed for sa.");
}

} // namespace
} // namespace com
