// What is too deep, too wide or too long is refused, and the session goes on.
#include <chrono>

#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class LimitsTest : public EngineTest {
 protected:
  static std::string Repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
  }
};

TEST_F(LimitsTest, Nesting) {
  EXPECT_EQ(Scalar(Repeat("(", 100) + "1" + Repeat(")", 100)), "1");
  EXPECT_EQ(Scalar("1" + Repeat(" + 1", 300)), "301");
  EXPECT_EQ(Scalar(Repeat("(SELECT ", 20) + "1" + Repeat(")", 20)), "1");
  constexpr int kDeep = 20000;
  EXPECT_EQ(
      ErrorText("SELECT 1 +\n" + Repeat("(", kDeep) + "1" + Repeat(")", kDeep)),
      "191 2 Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into "
      "smaller queries.");
  EXPECT_EQ(ErrorOf("SELECT 1" + Repeat(" + 1", kDeep)), 191);
  EXPECT_EQ(ErrorOf("SELECT 1 WHERE 1 = 1" + Repeat(" OR 1 = 2", kDeep)), 191);
  EXPECT_EQ(ErrorOf("SELECT 1 WHERE " + Repeat("NOT ", kDeep) + "1 = 1"), 191);
  EXPECT_EQ(ErrorOf("SELECT " + Repeat("- ", kDeep) + "1"), 191);
  EXPECT_EQ(ErrorOf("SELECT " + Repeat("(SELECT ", kDeep) + "1" + Repeat(")", kDeep)), 191);
  EXPECT_EQ(ErrorOf(Repeat("IF 1 = 1 ", kDeep) + "PRINT 'x'"), 191);
  EXPECT_EQ(ErrorOf(Repeat("BEGIN ", kDeep) + "PRINT 'x'" + Repeat(" END", kDeep)), 191);
  EXPECT_EQ(ErrorOf("SELECT 1" + Repeat(" UNION ALL SELECT 1", kDeep)), 106);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT 1 AS a) x" + Repeat(", (SELECT 1 AS a) x", kDeep)), 106);
  std::string tables = "SELECT COUNT(*) FROM (SELECT 1 AS a) x";
  for (int i = 0; i < 70; ++i) tables += ", (SELECT 1 AS a) x" + std::to_string(i);
  EXPECT_EQ(ErrorText(tables), "106 1 Too many table names in the query. The maximum allowable is 64.");
  const size_t from = tables.find(" FROM");
  EXPECT_EQ(ErrorText("SELECT COUNT(*) AS n INTO made" + tables.substr(from)),
            "106 1 Too many table names in the query. The maximum allowable is 64.");
  EXPECT_EQ(ErrorOf("SELECT * FROM made"), 208);
  // Depth adds up over subqueries and the chains within them.
  EXPECT_EQ(ErrorOf("SELECT " + Repeat("(SELECT ", 100) + "1" + Repeat(" + 1 + 1 + 1 + 1 + 1)", 100)), 191);
  EXPECT_EQ(Scalar("1"), "1");
}

TEST_F(LimitsTest, Work) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (0)");
  session_->SetWorkLimit(1000);
  EXPECT_EQ(ErrorText("WHILE 1 = 1 SET NOCOUNT ON"),
            "8649 1 The query has been canceled because it takes more work than the session allows.");
  EXPECT_EQ(
      ErrorOf(
          "BEGIN TRAN WHILE 1 = 1 BEGIN BEGIN TRY UPDATE t SET a = a + 1 END TRY BEGIN CATCH SELECT 1 END "
          "CATCH END"),
      8649);
  EXPECT_EQ(session_->TransactionCount(), 0);
  // One statement that runs long, and one within a procedure with temporary tables of its own.
  const std::string many = "(SELECT 1 AS n" + Repeat(" UNION ALL SELECT 1", 49) + ")";
  const std::string product =
      "SELECT COUNT(*) FROM " + many + " a, " + many + " b, " + many + " c, " + many + " d, t WHERE t.a < 1";
  EXPECT_EQ(ErrorOf(product), 8649);
  Must("CREATE PROCEDURE p AS CREATE TABLE #own (a INT) WHILE 1 = 1 INSERT INTO #own VALUES (1)");
  EXPECT_EQ(ErrorOf("EXEC p"), 8649);
  EXPECT_EQ(ErrorOf("BEGIN TRY EXEC p END TRY BEGIN CATCH PRINT 'caught' END CATCH"), 8649);
  EXPECT_EQ(ErrorOf("SELECT * FROM #own"), 208);
  // Each batch has all of it again.
  for (int i = 0; i < 3; ++i) Must("DECLARE @i INT SET @i = 0 WHILE @i < 200 SET @i = @i + 1");
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"0"}));
  session_->SetWorkLimit(std::nullopt);
  Must("DECLARE @i INT SET @i = 0 WHILE @i < 5000 SET @i = @i + 1");
}

class TimeLimitTest : public LimitsTest {
 protected:
  void SetUp() override {
    Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (0) CREATE TABLE many (n INT)");
    Must("DECLARE @i INT SET @i = 0 WHILE @i < 50 BEGIN SET @i = @i + 1 INSERT INTO many VALUES (@i) END");
    session_->SetTimeLimit(std::chrono::milliseconds(200));
  }
  // Counts for longer than anybody waits, in one statement.
  static std::string Endless() {
    std::string product = "SELECT COUNT(*) AS a FROM t, many x0";
    for (int i = 1; i < 10; ++i) product += ", many x" + std::to_string(i);
    return product + " WHERE t.a > -1";
  }
  std::string A() { return Rows("SELECT a FROM t").front(); }
};

TEST_F(TimeLimitTest, EndsALoop) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ErrorText("PRINT 'x'\nWHILE 1 = 1 SET NOCOUNT ON"), "-2 2 Timeout expired");
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, std::chrono::milliseconds(200));
  EXPECT_LT(elapsed, std::chrono::seconds(5));
  EXPECT_EQ(Scalar("1"), "1");
}

TEST_F(TimeLimitTest, EndsAStatementAndTheBatchWithIt) {
  const Output output = Run("UPDATE t SET a = 1 " + Endless() + " UPDATE t SET a = 2");
  ASSERT_EQ(output.errors.size(), 1U);
  EXPECT_EQ(output.errors[0].number, kTimeoutExpired);
  EXPECT_EQ(output.counts, std::vector<int64_t>({1}));
  EXPECT_EQ(A(), "1");
}

TEST_F(TimeLimitTest, AsksNoCatchBlock) {
  EXPECT_EQ(ErrorOf("BEGIN TRY WHILE 1 = 1 SET NOCOUNT ON END TRY BEGIN CATCH UPDATE t SET a = 9 END CATCH"),
            kTimeoutExpired);
  EXPECT_EQ(A(), "0");
}

TEST_F(TimeLimitTest, LeavesTheTransactionOpen) {
  session_->Begin();
  Must("UPDATE t SET a = 1");
  EXPECT_EQ(ErrorOf(Endless()), kTimeoutExpired);
  EXPECT_EQ(session_->TransactionCount(), 1);
  EXPECT_EQ(ErrorOf("WHILE 1 = 1 UPDATE t SET a = a + 1"), kTimeoutExpired);
  EXPECT_EQ(session_->TransactionCount(), 1);
  EXPECT_NE(A(), "1") << "the statements that were complete stay";
  session_->Rollback();
  EXPECT_EQ(A(), "0");
}

TEST_F(TimeLimitTest, RollsBackUnderXactAbort) {
  Must("SET XACT_ABORT ON");
  session_->Begin();
  Must("UPDATE t SET a = 1");
  EXPECT_EQ(ErrorOf(Endless()), kTimeoutExpired);
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(A(), "0");
}

TEST_F(TimeLimitTest, UndoesTheStatementThatWasRunning) {
  const std::string insert = "INSERT INTO t " + Endless();
  EXPECT_EQ(ErrorOf(insert), kTimeoutExpired);
  EXPECT_EQ(ErrorOf("SELECT 1 AS a INTO #made FROM (" + Endless() + ") e"), kTimeoutExpired);
  EXPECT_EQ(ErrorOf("SELECT * FROM #made"), 208);
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"0"}));
}

TEST_F(TimeLimitTest, CountsTheWaitForALock) {
  const auto other = Session::Open(database_);
  Must("SET LOCK_TIMEOUT -1");
  Output output;
  other->Execute("BEGIN TRAN UPDATE t SET a = 7", {}, output);
  EXPECT_EQ(ErrorOf("UPDATE t SET a = 8"), kTimeoutExpired);
  session_->SetTimeLimit(std::nullopt);
  session_->SetLockTimeout(10);
  EXPECT_EQ(ErrorOf("UPDATE t SET a = 8"), 1222);
  other->Rollback();
}

TEST_F(TimeLimitTest, IsThereAgainForTheNextBatch) {
  for (int i = 0; i < 2; ++i) EXPECT_EQ(ErrorOf("WHILE 1 = 1 SET NOCOUNT ON"), kTimeoutExpired);
  Must("CREATE PROCEDURE p AS WHILE 1 = 1 SET NOCOUNT ON");
  Output output;
  EXPECT_FALSE(session_->Call("p", {}, output).has_value());
  EXPECT_EQ(output.errors.at(0).number, kTimeoutExpired);
  session_->SetTimeLimit(std::nullopt);
  Must("DECLARE @i INT SET @i = 0 WHILE @i < 5000 SET @i = @i + 1");
}

// Somebody else says that the batch shall end.
class StopRequestTest : public TimeLimitTest {
 protected:
  void SetUp() override {
    TimeLimitTest::SetUp();
    session_->SetTimeLimit(std::nullopt);
  }
  // Wants the batch to end when it has asked so often.
  void StopAfter(int questions) {
    left_ = questions;
    session_->SetStopRequest([this] { return --left_ < 0; });
  }
  int left_ = 0;
};

TEST_F(StopRequestTest, EndsAStatementALoopAndAProcedure) {
  StopAfter(5);
  EXPECT_EQ(ErrorText("PRINT 'x'\n" + Endless()), "-2 2 Timeout expired");
  StopAfter(5);
  EXPECT_EQ(ErrorOf("WHILE 1 = 1 SET NOCOUNT ON"), kTimeoutExpired);
  StopAfter(50);
  Must("CREATE PROCEDURE p AS WHILE 1 = 1 SET NOCOUNT ON");
  EXPECT_EQ(ErrorOf("EXEC p"), kTimeoutExpired);
  StopAfter(5);
  EXPECT_EQ(Scalar("1"), "1") << "the next batch runs";
}

TEST_F(StopRequestTest, IsAskedNoMoreOnceItHasStopped) {
  StopAfter(0);
  EXPECT_EQ(ErrorOf("WHILE 1 = 1 SET NOCOUNT ON"), kTimeoutExpired);
  EXPECT_EQ(left_, -1);
}

TEST_F(StopRequestTest, LeavesTheTransactionOpen) {
  Must("BEGIN TRAN UPDATE t SET a = 1");
  StopAfter(5);
  EXPECT_EQ(ErrorOf(Endless()), kTimeoutExpired);
  session_->SetStopRequest(nullptr);
  EXPECT_EQ(session_->TransactionCount(), 1);
  EXPECT_EQ(A(), "1");
  Must("ROLLBACK");
}

// SQLite undoes the transaction of a change that is stopped on its way; the session knows of it. A limit of
// time could be over while the change is still compiled, and then the transaction stays.
TEST_F(StopRequestTest, AStoppedChangeTakesItsTransactionWithIt) {
  session_->Begin();
  Must("UPDATE t SET a = 1");
  StopAfter(1000); // far more than compiling asks
  EXPECT_EQ(ErrorOf("INSERT INTO t " + Endless()), kTimeoutExpired);
  session_->SetStopRequest(nullptr);
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"0"}));
  Must("BEGIN TRAN UPDATE t SET a = 2 COMMIT");
  EXPECT_EQ(A(), "2");
}

TEST_F(StopRequestTest, AChangeThatHasNotBegunLeavesItsTransaction) {
  session_->Begin();
  Must("UPDATE t SET a = 1");
  StopAfter(0);
  EXPECT_EQ(ErrorOf("INSERT INTO t " + Endless()), kTimeoutExpired);
  session_->SetStopRequest(nullptr);
  EXPECT_EQ(session_->TransactionCount(), 1);
  EXPECT_EQ(A(), "1");
}

TEST_F(StopRequestTest, EndsTheWaitForALock) {
  const auto other = Session::Open(database_);
  Must("SET LOCK_TIMEOUT -1");
  Output output;
  other->Execute("BEGIN TRAN UPDATE t SET a = 7", {}, output);
  StopAfter(20);
  EXPECT_EQ(ErrorOf("UPDATE t SET a = 8"), kTimeoutExpired);
  session_->SetLockTimeout(10);
  StopAfter(1000);
  EXPECT_EQ(ErrorOf("UPDATE t SET a = 8"), 1222) << "the lock's own limit holds beside it";
  other->Rollback();
  Must("UPDATE t SET a = 8");
}

} // namespace
} // namespace tsql::test
