#include "src/frame/globals/SystemProfile.h"

#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Variant;
using Texts = std::vector<std::wstring>;

TEST(ReadSystemProfile, ReadsTheSettingOrTheDefault) {
  const TestDatabase database;
  database.Execute(
      L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('General', 'SingleMan', '1')");
  Frame frame;
  frame.OpenDataContext(database.Dsn());
  const Trace trace;
  EXPECT_EQ(ReadSystemProfile(frame, L"SingleMan", L"General"), Variant(L"1"));
  EXPECT_EQ(
      trace.Events(),
      (Texts{L"GetConnection", L"Command\tSelect FValue From t_SystemProfile Where FCategory = ? And FKey = ?"
                               L"\t=General\t=SingleMan"}));
  EXPECT_EQ(ReadSystemProfile(frame, L"NoSuchKey", L"General"), Variant(L""));
  EXPECT_EQ(ReadSystemProfile(frame, L"NoSuchKey", L"General", 7), Variant(7));
  EXPECT_EQ(ReadSystemProfile(frame, L"General", L"SingleMan"), Variant(L""));
  const Fault fault(L"Command");
  EXPECT_EQ(RaisedBy([&] { ReadSystemProfile(frame, L"SingleMan", L"General"); }).code, Fault::kCode);
}

} // namespace
} // namespace mbom::test
