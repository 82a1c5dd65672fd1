#include "src/frame/globals/CurrentUser.h"

#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using Texts = std::vector<std::wstring>;

TEST(GetCurrentUserId, AsksTheSecurityServiceAfresh) {
  const TestDatabase database;
  Frame frame;
  frame.OpenDataContext(database.Dsn());
  const Trace trace;
  EXPECT_EQ(GetCurrentUserId(frame), 16394);
  EXPECT_EQ(GetCurrentUserId(frame), 16394);
  EXPECT_EQ(trace.Events(), (Texts{L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo",
                                   L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo"}));
  const Fault fault(L"CreateServerObject");
  EXPECT_EQ(RaisedBy([&] { GetCurrentUserId(frame); }).code, Fault::kCode);
}

} // namespace
} // namespace mbom::test
