// CommandTimeout: a batch that does not come to its end is ended by the provider.
#include <chrono>

#include "tests/standin/Support.h"

namespace standin::test {
namespace {

constexpr auto kTimeout = static_cast<HRESULT>(0x80040E31);
constexpr wchar_t kLoop[] = L"WHILE 1 = 1 SET NOCOUNT ON";

class TimeoutTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"CREATE TABLE many (n int)");
    database_.Execute(L"DECLARE @i int SET @i = 0 "
                      L"WHILE @i < 50 BEGIN SET @i = @i + 1 INSERT INTO many VALUES (@i) END");
  }
  void Limit(int32_t seconds) const { database_.connection().Put(L"CommandTimeout", seconds); }
  // One statement that counts for longer than anybody waits.
  static std::wstring Endless() {
    std::wstring sql = L"SELECT COUNT(*) AS n FROM t, many x0";
    for (int i = 1; i < 10; ++i) sql += L", many x" + std::to_wstring(i);
    return sql + L" WHERE t.FInterID > 0";
  }

  Database database_;
};

template <class Call>
void ExpectTimeout(Call call) {
  const auto start = std::chrono::steady_clock::now();
  const Raised raised = RaisedBy(call);
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(raised.code, kTimeout);
  EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
  EXPECT_EQ(raised.description, L"Timeout expired");
  EXPECT_GE(elapsed, std::chrono::milliseconds(900));
  EXPECT_LT(elapsed, std::chrono::seconds(10));
}

TEST_F(TimeoutTest, EndsALoopAndAStatement) {
  Limit(1);
  for (const std::wstring& batch : {std::wstring(kLoop), Endless()}) {
    ExpectTimeout([&] { database_.Execute(batch); });
    const Object error = database_.connection().Get(L"Errors").AsObject().Get(L"Item", 0).AsObject();
    EXPECT_EQ(error.Get(L"NativeError"), Variant(0));
    EXPECT_EQ(error.Get(L"SQLState"), Variant(L"HYT00"));
    EXPECT_EQ(database_.Column(L"SELECT FInterID FROM t"), L"1,2,3") << "the next call works";
  }
}

TEST_F(TimeoutTest, OfTheConnectionIsARecordsetsToo) {
  Limit(1);
  ExpectTimeout([&] { database_.Open(Endless(), 3); });
  ExpectTimeout([&] { database_.Open(Endless(), 2); });
}

TEST_F(TimeoutTest, OfACommandIsItsOwn) {
  Limit(1);
  const Object command = New(L"ADODB.Command");
  EXPECT_EQ(command.Get(L"CommandTimeout"), Variant(30));
  command.Put(L"ActiveConnection", database_.connection());
  command.Put(L"CommandText",
              L"DECLARE @end datetime SET @end = DATEADD(ms, 1500, GETDATE()) WHILE GETDATE() < @end SET "
              L"NOCOUNT ON SELECT 7 AS seven");
  EXPECT_EQ(ValueOf(command.Call(L"Execute").AsObject(), L"seven"), Variant(7));
  command.Put(L"CommandTimeout", 1);
  Limit(30);
  ExpectTimeout([&] { command.Call(L"Execute"); });
  database_.Execute(L"CREATE PROCEDURE p AS WHILE 1 = 1 SET NOCOUNT ON");
  command.Put(L"CommandText", L"p");
  command.Put(L"CommandType", 4);
  ExpectTimeout([&] { command.Call(L"Execute"); });
}

TEST_F(TimeoutTest, ZeroIsNoLimit) {
  Limit(0);
  EXPECT_EQ(database_.Column(L"DECLARE @end datetime SET @end = DATEADD(ms, 1200, GETDATE()) "
                             L"WHILE GETDATE() < @end SET NOCOUNT ON SELECT 7"),
            L"7");
}

TEST_F(TimeoutTest, AsksNoCatchBlockAndLeavesTheTransactionOpen) {
  Limit(1);
  const Object& connection = database_.connection();
  connection.Call(L"BeginTrans");
  database_.Execute(L"UPDATE t SET FName = 'x'");
  ExpectTimeout([&] {
    database_.Execute(L"SET NOCOUNT ON BEGIN TRY WHILE 1 = 1 SET NOCOUNT ON END TRY "
                      L"BEGIN CATCH DELETE FROM t END CATCH");
  });
  EXPECT_EQ(database_.Column(L"SELECT FName FROM t"), L"x,x,x");
  EXPECT_EQ(database_.Column(L"SELECT @@TRANCOUNT"), L"1");
  connection.Call(L"RollbackTrans");
  EXPECT_EQ(database_.Column(L"SELECT FName FROM t"), L"one,two,NULL");
}

TEST_F(TimeoutTest, RollsBackUnderXactAbort) {
  Limit(1);
  database_.connection().Call(L"BeginTrans");
  database_.Execute(L"SET XACT_ABORT ON UPDATE t SET FName = 'x'");
  ExpectTimeout([&] { database_.Execute(Endless()); });
  EXPECT_EQ(database_.Column(L"SELECT FName FROM t"), L"one,two,NULL");
}

TEST_F(TimeoutTest, ComesBehindTheResultsThatWereSent) {
  Limit(1);
  const Object count = database_.Execute(L"UPDATE t SET FName = 'x' " + std::wstring(kLoop));
  EXPECT_EQ(RaisedBy([&] { count.Call(L"NextRecordset"); }).code, kTimeout);
  EXPECT_EQ(database_.Column(L"SELECT FName FROM t"), L"x,x,x");
}

} // namespace
} // namespace standin::test
