// A connection inside a transaction runs nothing else while a client has results of it to read.
#include "tests/standin/Worker.h"

namespace standin::test {
namespace {

constexpr wchar_t kAll[] = L"SELECT FInterID, FName FROM t ORDER BY FInterID";
constexpr wchar_t kCountAndRows[] = L"UPDATE t SET FName = 'x' SELECT FInterID FROM t";

class BusyConnectionTest : public testing::Test {
 protected:
  ~BusyConnectionTest() override {
    // An open transaction would not let the connection go.
    RaisedBy([&] { database_.connection().Call(L"RollbackTrans"); });
  }
  void Begin() const { database_.connection().Call(L"BeginTrans"); }
  bool Busy() const {
    return FAILED(RaisedBy([&] { database_.Execute(L"UPDATE t SET FName = 'y' WHERE 1 = 2"); }).code);
  }
  Object Open(const wchar_t* sql, int32_t location, int32_t cursorType) const {
    Object recordset = New(L"ADODB.Recordset");
    recordset.Put(L"CursorLocation", location);
    recordset.Call(L"Open", sql, database_.connection(), cursorType);
    return recordset;
  }

  Database database_;
};

constexpr int32_t kForwardOnly = 0;
constexpr int32_t kStatic = 3;

TEST_F(BusyConnectionTest, RefusesAStatementInTheProvidersWords) {
  Begin();
  const Object rows = database_.Execute(kAll);
  const Raised raised = RaisedBy([&] { database_.Execute(L"DELETE FROM t"); });
  EXPECT_EQ(raised.code, E_FAIL);
  EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
  EXPECT_EQ(raised.description,
            L"Cannot create new connection because in manual or distributed transaction mode.");
  const Object error = database_.connection().Get(L"Errors").AsObject().Get(L"Item", 0).AsObject();
  EXPECT_EQ(error.Get(L"Number"), Variant(static_cast<int32_t>(E_FAIL)));
  EXPECT_EQ(error.Get(L"NativeError"), Variant(0));
  EXPECT_EQ(ColumnText(rows), L"1,2,3") << "the rows are still there, and the statement did not run";
}

TEST_F(BusyConnectionTest, RefusesRecordsetsAndCommandsToo) {
  Begin();
  const Object rows = database_.Execute(kAll);
  EXPECT_EQ(RaisedBy([&] { database_.Open(L"SELECT 1 AS x", kClient); }).code, E_FAIL);
  const Object command = New(L"ADODB.Command");
  command.Put(L"ActiveConnection", database_.connection());
  command.Put(L"CommandText", L"SELECT 1 AS x");
  EXPECT_EQ(RaisedBy([&] { command.Call(L"Execute"); }).code, E_FAIL);
  command.Put(L"CommandText", L"NoSuchProcedure");
  command.Put(L"CommandType", 4);
  EXPECT_EQ(RaisedBy([&] { command.Call(L"Execute"); }).code, E_FAIL);
}

TEST_F(BusyConnectionTest, IsFreeOutsideOfATransaction) {
  const Object rows = database_.Execute(kAll);
  EXPECT_FALSE(Busy());
  EXPECT_EQ(ColumnText(rows), L"1,2,3");
}

TEST_F(BusyConnectionTest, IsFreeWhenTheRowsAreRead) {
  Begin();
  const Object rows = database_.Execute(kAll);
  rows.Call(L"MoveNext");
  rows.Call(L"MoveNext");
  EXPECT_TRUE(Busy());
  rows.Call(L"MoveNext");
  EXPECT_EQ(rows.Get(L"EOF"), Variant(true));
  EXPECT_FALSE(Busy());
}

TEST_F(BusyConnectionTest, IsFreeWhenThereAreNoRows) {
  Begin();
  const Object rows = database_.Execute(L"SELECT * FROM t WHERE 1 = 2");
  EXPECT_FALSE(Busy());
}

TEST_F(BusyConnectionTest, IsFreeWhenGetRowsTookThemAll) {
  Begin();
  const Object rows = database_.Execute(kAll);
  rows.Call(L"GetRows", 2);
  EXPECT_TRUE(Busy());
  rows.Call(L"GetRows");
  EXPECT_FALSE(Busy());
}

TEST_F(BusyConnectionTest, IsFreeWhenTheRecordsetIsClosed) {
  Begin();
  const Object rows = database_.Execute(kAll);
  rows.Call(L"Close");
  EXPECT_FALSE(Busy());
}

TEST_F(BusyConnectionTest, IsFreeWhenTheLastReferenceIsGone) {
  Begin();
  Object rows = database_.Execute(kAll);
  Object second = rows;
  const Object fields = rows.Get(L"Fields").AsObject();
  const Object field = fields.Get(L"Item", 0).AsObject();
  rows = Object();
  EXPECT_TRUE(Busy());
  second = Object();
  EXPECT_FALSE(Busy()) << "its fields do not count";
}

TEST_F(BusyConnectionTest, IsFreeWithACursorThatIsComplete) {
  Begin();
  const Object client = Open(kAll, kClient, kForwardOnly);
  EXPECT_FALSE(Busy());
  const Object counted = Open(kAll, kServer, kStatic);
  EXPECT_FALSE(Busy());
  const Object forward = Open(kAll, kServer, kForwardOnly);
  EXPECT_TRUE(Busy());
}

TEST_F(BusyConnectionTest, IsBusyWhileResultsWait) {
  Begin();
  const Object count = database_.Execute(kCountAndRows);
  EXPECT_EQ(count.Get(L"State"), Variant(0));
  EXPECT_TRUE(Busy()) << "the rows behind the count";
  const Object rows = count.Call(L"NextRecordset").AsObject();
  EXPECT_TRUE(Busy());
  EXPECT_EQ(ColumnText(rows), L"1,2,3");
  EXPECT_FALSE(Busy());
  const Object onlyCount = database_.Execute(L"UPDATE t SET FName = 'z'");
  EXPECT_FALSE(Busy()) << "a last count leaves nothing to read";
}

TEST_F(BusyConnectionTest, IsBusyBehindRowsThatAnotherResultFollows) {
  Begin();
  const Object rows = database_.Execute(L"SELECT FInterID FROM t SELECT 7 AS seven");
  EXPECT_EQ(ColumnText(rows), L"1,2,3");
  EXPECT_TRUE(Busy());
  const Object seven = rows.Call(L"NextRecordset").AsObject();
  EXPECT_FALSE(seven.Call(L"NextRecordset").AsObject());
  EXPECT_FALSE(Busy()) << "moved past the last result with its row unread";
}

TEST_F(BusyConnectionTest, IsFreeWhenAFailureWasTheLastResult) {
  Begin();
  const Object count = database_.Execute(L"UPDATE t SET FName = 'x' INSERT INTO t (FInterID) VALUES (1)");
  EXPECT_TRUE(Busy());
  EXPECT_TRUE(FAILED(RaisedBy([&] { count.Call(L"NextRecordset"); }).code));
  EXPECT_FALSE(Busy());
}

TEST_F(BusyConnectionTest, IsFreeWhenAnUnreadCountIsReleased) {
  Begin();
  database_.Execute(kCountAndRows);
  EXPECT_FALSE(Busy());
}

TEST_F(BusyConnectionTest, IsFreeWhenTheTransactionHasEnded) {
  Begin();
  const Object rows = database_.Execute(kAll);
  EXPECT_TRUE(Busy());
  database_.connection().Call(L"CommitTrans");
  EXPECT_FALSE(Busy());
}

TEST_F(BusyConnectionTest, IsTheUnitsOwnInsideAHostedCall) {
  const Object worker = HostedWorker();
  const Raised raised = RaisedBy(
      [&] { worker.Call(L"Run", database_.Dsn(), L"bind|hold|SELECT FInterID FROM t|DELETE FROM t"); });
  EXPECT_EQ(raised.code, E_FAIL);
  worker.Call(L"Run", database_.Dsn(), L"bind|hold|SELECT FInterID FROM t|let go|DELETE FROM t|complete");
  EXPECT_EQ(database_.Column(L"SELECT FInterID FROM t"), L"");
}

TEST_F(BusyConnectionTest, ASecondContextOfTheUnitHasTheSameConnection) {
  const Object worker = HostedWorker();
  EXPECT_EQ(RaisedBy([&] {
              worker.Call(L"Run", database_.Dsn(), L"bind|hold|SELECT FInterID FROM t|bind|DELETE FROM t");
            }).code,
            E_FAIL);
  NewWorker().Call(L"Run", database_.Dsn(), L"bind|hold|SELECT FInterID FROM t|bind|DELETE FROM t");
  EXPECT_EQ(database_.Column(L"SELECT FInterID FROM t"), L"");
}

} // namespace
} // namespace standin::test
