#include "src/frame/ado/Connection.h"

#include <gtest/gtest.h>

#include "src/frame/Frame.h"
#include "src/frame/ado/ClientRecordset.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Variant;

class AdoTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO t_User (FUserID, FName) VALUES (1, 'Anna'), (2, 'Ben')");
    frame_.OpenDataContext(database_.Dsn());
  }
  static Sql Users(const wchar_t* condition = L"1=1") {
    return Sql() << L"SELECT FName FROM t_User WHERE " << condition << L" ORDER BY FUserID";
  }

  const TestDatabase database_;
  Frame frame_;
};

TEST_F(AdoTest, RewindsToTheFirstRow) {
  const ClientRecordset users(frame_.GetConnection());
  users.Open(Users());
  users.MoveNext();
  users.MoveNext();
  ASSERT_TRUE(users.Eof());
  users.Rewind();
  EXPECT_EQ(users[L"FName"], Variant(L"Anna"));
  users.Open(Users(L"1=0"));
  users.Rewind();
  EXPECT_TRUE(users.Eof());
}

TEST_F(AdoTest, ExecutesOnTheClientsSideAndLeavesTheConnectionAsItWas) {
  constexpr int32_t kServer = 2;
  const Connection conn = frame_.GetConnection();
  const Trace trace;
  const Recordset users = conn.ExecuteClientSide(Users());
  EXPECT_EQ(trace.Events(), std::vector<std::wstring>{L"Execute\t" + Users().text()});
  EXPECT_EQ(conn.object().Get(L"CursorLocation"), Variant(kServer));
  users.Detach();
  EXPECT_EQ(users.object().Get(L"RecordCount"), Variant(2));
  EXPECT_FALSE(users.object().Get(L"ActiveConnection").AsObject());
  EXPECT_EQ(users[L"FName"], Variant(L"Anna"));
}

TEST_F(AdoTest, LeavesTheConnectionAsItWasAfterAFailure) {
  constexpr int32_t kServer = 2;
  const Connection conn = frame_.GetConnection();
  EXPECT_EQ(RaisedBy([&] { conn.ExecuteClientSide(Users(L"FNoSuch=1")); }).code,
            static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(conn.object().Get(L"CursorLocation"), Variant(kServer));
}

TEST_F(AdoTest, HandsOutTheConnectionAsAnObjectToo) {
  const Trace trace;
  EXPECT_EQ(frame_.GetConnectionObject().Execute(Users())[L"FName"], Variant(L"Anna"));
  EXPECT_EQ(trace.Events().front(), L"GetConnectionObject");
}

TEST_F(AdoTest, OpensWithTheCursorAndTheLockThatAreAskedFor) {
  const ClientRecordset users(frame_.GetConnection(), ClientRecordset::Cursor::ForwardOnly,
                              ClientRecordset::Lock::ReadOnly);
  EXPECT_EQ(users.object().Get(L"CursorType"), Variant(0));
  EXPECT_EQ(users.object().Get(L"LockType"), Variant(1));
  users.Open(Users());
  // On the client's side every cursor is static, whatever was asked for.
  EXPECT_EQ(users.object().Get(L"CursorType"), Variant(3));
  EXPECT_EQ(users.RecordCount(), 2);
}

} // namespace
} // namespace mbom::test
