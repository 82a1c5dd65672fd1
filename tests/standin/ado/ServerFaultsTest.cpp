// A server that dies, hangs, or does not let anybody in: what the caller is told, what becomes of the unit of
// work, and that the next call works.
#include <chrono>

#include "com/Text.h"
#include "odbc/Session.h"
#include "tests/standin/Worker.h"
#include "tests/support/TdsServer.h"

namespace standin::test {
namespace {

constexpr auto kTimeout = static_cast<HRESULT>(0x80040E31);
constexpr auto kLoginFailed = static_cast<HRESULT>(0x80040E4D);
constexpr wchar_t kDies[] = L"UPDATE things SET FName = 'half'\nSHUTDOWN WITH NOWAIT";
constexpr wchar_t kLasts[] = L"UPDATE things SET FName = 'half'\nWAITFOR DELAY '00:00:30'";

class ServerFaultsTest : public testing::Test {
 protected:
  void SetUp() override {
    SKIP_WITHOUT_TDS_SERVER();
    server_ = std::make_unique<com::test::TdsServer>();
    connection_ = Connect();
    Execute(L"CREATE TABLE things (FInterID int NOT NULL PRIMARY KEY, FName nvarchar(20) NULL)");
    Execute(L"INSERT INTO things (FInterID, FName) VALUES (1, 'one')");
  }

  Object Connect() const {
    Object connection = New(L"ADODB.Connection");
    connection.Call(L"Open", server_->Dsn());
    return connection;
  }
  Object Execute(const std::wstring& sql) const { return connection_.Call(L"Execute", sql).AsObject(); }
  std::wstring Name() const { return ColumnText(Execute(L"SELECT FName FROM things")); }
  int32_t NativeError() const {
    return connection_.Get(L"Errors").AsObject().Get(L"Item", 0).AsObject().Get(L"NativeError").AsLong();
  }

  std::unique_ptr<com::test::TdsServer> server_;
  Object connection_;
};

void ExpectLost(const Raised& raised) {
  EXPECT_EQ(raised.code, E_FAIL) << com::ToUtf8(raised.description);
  EXPECT_NE(raised.description, L"");
  EXPECT_EQ(raised.description.find(L"sesame"), std::wstring::npos);
}

TEST_F(ServerFaultsTest, AServerThatDiesInABatchLosesTheTransaction) {
  connection_.Call(L"BeginTrans");
  Execute(L"UPDATE things SET FName = 'first'");
  ExpectLost(RaisedBy([&] { Execute(kDies); }));
  EXPECT_NE(NativeError(), 0) << "the driver's number";
  // What belongs to the transaction does not run outside of it.
  ExpectLost(RaisedBy([&] { Execute(L"UPDATE things SET FName = 'second'"); }));
  connection_.Call(L"RollbackTrans");
  EXPECT_EQ(Name(), L"one") << "the next call works";
}

TEST_F(ServerFaultsTest, AServerThatDiesBetweenCallsFailsTheNextOne) {
  server_->Signal(L"KILL");
  ExpectLost(RaisedBy([&] { Execute(L"UPDATE things SET FName = 'x'"); }));
  EXPECT_EQ(Name(), L"one");
}

TEST_F(ServerFaultsTest, AServerThatDiesAmidRowsFailsThem) {
  Execute(L"CREATE TABLE many (n int)");
  Execute(L"INSERT INTO many VALUES (1)");
  for (int i = 0; i < 14; ++i) Execute(L"INSERT INTO many SELECT n FROM many");
  ExpectLost(RaisedBy([&] { ColumnText(Execute(L"SELECT n FROM many\nSHUTDOWN WITH NOWAIT")); }));
  EXPECT_EQ(Name(), L"one");
}

TEST_F(ServerFaultsTest, AUnitOfWorkIsRolledBackAndTheNextOneWorks) {
  const Object worker = HostedWorker();
  ExpectLost(RaisedBy([&] {
    worker.Call(L"Run", server_->Dsn(), L"bind|UPDATE things SET FName = 'x'|" + std::wstring(kDies));
  }));
  worker.Call(L"Run", server_->Dsn(),
              L"bind|UPDATE things SET FName = FName + ' more' WHERE FName = 'one'|complete");
  connection_ = Connect();
  EXPECT_EQ(Name(), L"one more");
}

TEST_F(ServerFaultsTest, APooledConnectionToADeadServerIsNotHandedOut) {
  connection_ = Object();
  server_->Signal(L"KILL");
  connection_ = Connect();
  EXPECT_EQ(Name(), L"one");
}

TEST_F(ServerFaultsTest, AStatementThatLastsTooLongIsCanceled) {
  connection_.Put(L"CommandTimeout", 1);
  const Raised raised = RaisedBy([&] { Execute(kLasts); });
  EXPECT_EQ(raised.code, kTimeout) << com::ToUtf8(raised.description);
  EXPECT_EQ(Name(), L"half") << "outside a transaction each statement is its own";
}

TEST_F(ServerFaultsTest, AServerThatHangsEndsWithTheTimeLimit) {
  connection_.Put(L"CommandTimeout", 1);
  const Object worker = HostedWorker();
  server_->Signal(L"STOP");
  const auto start = std::chrono::steady_clock::now();
  const Raised raised = RaisedBy([&] { Execute(L"UPDATE things SET FName = 'x'"); });
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
  EXPECT_EQ(raised.code, kTimeout) << com::ToUtf8(raised.description);
  server_->Signal(L"CONT");
  Name();
}

TEST_F(ServerFaultsTest, ThePoolDoesNotWaitForAServerThatHangs) {
  odbc::Session session(server_->ConnectionText());
  EXPECT_TRUE(session.Answers());
  server_->Signal(L"STOP");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(session.Answers());
  EXPECT_FALSE(session.Reset());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
  server_->Signal(L"CONT");
}

TEST_F(ServerFaultsTest, ALockIsWaitedForNoLongerThanTheStatementMay) {
  const Object other = Connect();
  other.Call(L"BeginTrans");
  other.Call(L"Execute", L"UPDATE things SET FName = 'theirs'");
  const Raised refused = RaisedBy([&] { Execute(L"SET LOCK_TIMEOUT 100 UPDATE things SET FName = 'ours'"); });
  EXPECT_EQ(refused.code, kTimeout);
  EXPECT_EQ(NativeError(), 1222);
  connection_.Put(L"CommandTimeout", 1);
  const Raised raised = RaisedBy([&] { Execute(L"SET LOCK_TIMEOUT -1 UPDATE things SET FName = 'ours'"); });
  EXPECT_EQ(raised.code, kTimeout);
  EXPECT_EQ(NativeError(), 0) << "the provider's own limit";
  other.Call(L"RollbackTrans");
  Execute(L"UPDATE things SET FName = 'ours'");
  EXPECT_EQ(Name(), L"ours");
}

TEST_F(ServerFaultsTest, SaysWithTheServersNumberWhoIsNotLetIn) {
  struct Case {
    const wchar_t* part; // of the descriptor
    const wchar_t* changed;
    HRESULT code;
    int32_t number;
  };
  constexpr int32_t kNobodyListens = 20009;
  constexpr int32_t kUnknownHost = 20013;
  for (const Case& refused :
       {Case{L"tester", L"nobody", kLoginFailed, 18456},
        Case{L"open sesame", L"open barley", kLoginFailed, 18456}, Case{L"scratch", L"nowhere", E_FAIL, 4060},
        Case{L"127.0.0.1", L"127.0.0.2", E_FAIL, kNobodyListens},
        Case{L"127.0.0.1", L"no.such.host.invalid", E_FAIL, kUnknownHost}}) {
    std::wstring dsn = server_->Dsn();
    dsn.replace(dsn.find(refused.part), std::wstring_view(refused.part).size(), refused.changed);
    connection_ = New(L"ADODB.Connection");
    const Raised raised = RaisedBy([&] { connection_.Call(L"Open", dsn); });
    EXPECT_EQ(raised.code, refused.code) << com::ToUtf8(refused.changed);
    EXPECT_EQ(NativeError(), refused.number) << com::ToUtf8(raised.description);
    for (const wchar_t* secret : {L"sesame", L"barley"})
      EXPECT_EQ(raised.description.find(secret), std::wstring::npos) << com::ToUtf8(raised.description);
  }
  connection_ = Connect();
  EXPECT_EQ(Name(), L"one");
}

} // namespace
} // namespace standin::test
