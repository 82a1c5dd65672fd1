// GOTO and labels, SET ROWCOUNT, WAITFOR.
#include <chrono>

#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class JumpsTest : public EngineTest {};

TEST_F(JumpsTest, ForwardsAndBack) {
  EXPECT_EQ(Run("DECLARE @i INT SET @i = 0 again: SET @i = @i + 1 IF @i < 3 GOTO again PRINT @i GOTO done"
                " PRINT 'not here' done: PRINT 'end'")
                .messages,
            Lines({"3", "end"}));
}

TEST_F(JumpsTest, OutOfLoopsAndBlocksAndIntoThem) {
  EXPECT_EQ(Run("WHILE 1 = 1 BEGIN IF 1 = 1 BEGIN GOTO done END END PRINT 'not here' done:").messages,
            Lines({}));
  EXPECT_EQ(Run("DECLARE @i INT SET @i = 5 GOTO inside WHILE @i < 7 BEGIN PRINT 'body' inside: PRINT @i"
                " SET @i = @i + 1 END PRINT 'end'")
                .messages,
            Lines({"5", "body", "6", "end"}));
  EXPECT_EQ(Run("GOTO other IF 1 = 1 PRINT 'then' ELSE BEGIN PRINT 'x' other: PRINT 'else' END PRINT 'end'")
                .messages,
            Lines({"else", "end"}));
}

TEST_F(JumpsTest, OutOfTryAndCatch) {
  EXPECT_EQ(
      Run("BEGIN TRY GOTO done END TRY BEGIN CATCH END CATCH PRINT 'not here' done: PRINT 'end'").messages,
      Lines({"end"}));
  EXPECT_EQ(Run("BEGIN TRY SELECT 1 / 0 END TRY BEGIN CATCH GOTO done END CATCH PRINT 'not here' done:"
                " PRINT ISNULL(ERROR_MESSAGE(), 'none')")
                .messages,
            Lines({"none"}));
  EXPECT_EQ(Run("BEGIN TRY GOTO a PRINT 'x' a: PRINT 'y' END TRY BEGIN CATCH END CATCH").messages,
            Lines({"y"}));
}

TEST_F(JumpsTest, WhatIsWrongIsSaidBeforeAnythingRuns) {
  EXPECT_EQ(ErrorText("PRINT 'x'\nGOTO nowhere"),
            "133 2 A GOTO statement references the label 'nowhere' but the label has not been declared.");
  EXPECT_TRUE(Run("PRINT 'x' GOTO nowhere").messages.empty());
  EXPECT_EQ(
      ErrorText("a: PRINT 1\nA: PRINT 2"),
      "132 2 The label 'A' has already been declared. Label names must be unique within a query batch or "
      "stored procedure.");
  EXPECT_EQ(ErrorText("GOTO a BEGIN TRY a: PRINT 1 END TRY BEGIN CATCH END CATCH"),
            "1026 1 GOTO cannot be used to jump into a TRY or CATCH scope.");
  EXPECT_EQ(ErrorOf("BEGIN TRY GOTO a END TRY BEGIN CATCH a: PRINT 1 END CATCH"), 1026);
  EXPECT_EQ(ErrorOf("GOTO"), 102);
}

TEST_F(JumpsTest, ProceduresHaveTheirOwnLabels) {
  Must("CREATE PROCEDURE p AS GOTO a PRINT 'not here' a: PRINT 'in p'");
  EXPECT_EQ(Run("EXEC p GOTO a PRINT 'not here' a: PRINT 'end'").messages, Lines({"in p", "end"}));
}

TEST_F(JumpsTest, AnEndlessJumpEndsWithTheTimeLimit) {
  session_->SetTimeLimit(std::chrono::milliseconds(50));
  EXPECT_EQ(Run("a: GOTO a").errors.at(0).number, kTimeoutExpired);
  session_->SetTimeLimit(std::nullopt);
  Must("SELECT 1");
}

class RowCountTest : public EngineTest {
 protected:
  RowCountTest() { Must("CREATE TABLE t (a INT) INSERT t VALUES (1), (2), (3), (4) CREATE TABLE u (a INT)"); }
};

TEST_F(RowCountTest, ItLimitsQueriesAndChanges) {
  EXPECT_EQ(Rows("SET ROWCOUNT 2 SELECT a FROM t ORDER BY a DESC"), Lines({"4", "3"}));
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1", "2"})) << "until it is set again";
  EXPECT_EQ(Run("INSERT u SELECT a FROM t").counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Run("UPDATE t SET a = a + 10").counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Run("DELETE FROM t").counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Run("INSERT u VALUES (7), (8), (9)").counts, std::vector<int64_t>({3}));
  EXPECT_EQ(Run("SELECT a INTO #x FROM u").counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Rows("SET ROWCOUNT 0 SELECT COUNT(*) FROM t"), Lines({"2"}));
}

TEST_F(RowCountTest, TopCountsWhenItIsLower) {
  EXPECT_EQ(Run("SET ROWCOUNT 3 DELETE TOP (1) FROM t").counts, std::vector<int64_t>({1}));
  EXPECT_EQ(Run("DECLARE @n INT SET @n = 1 SET ROWCOUNT @n DELETE TOP (2) FROM t").counts,
            std::vector<int64_t>({1}));
  EXPECT_EQ(Rows("SELECT TOP 5 a FROM t").size(), 1U);
  EXPECT_EQ(Rows("DECLARE @a INT SET ROWCOUNT 0 SELECT @a = a FROM t ORDER BY a DESC SELECT @a, @@ROWCOUNT"),
            Lines({"3|2"}));
}

TEST_F(RowCountTest, ItEndsWithTheProcedureThatSetIt) {
  Must("CREATE PROCEDURE p AS SET ROWCOUNT 1 SELECT a FROM t");
  const Output output = Run("EXEC p SELECT a FROM t");
  EXPECT_EQ(output.results.at(0).size(), 1U);
  EXPECT_EQ(output.results.at(1).size(), 4U);
  EXPECT_EQ(ErrorOf("SET ROWCOUNT ON"), 156);
}

TEST_F(JumpsTest, WaitForADelay) {
  const auto start = std::chrono::steady_clock::now();
  Must("WAITFOR DELAY '00:00:00.050'");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(49));
  Must("DECLARE @d DATETIME SET @d = '00:00:00.010' WAITFOR DELAY @d");
  EXPECT_EQ(ErrorText("WAITFOR DELAY 'soon'"),
            "148 1 Incorrect time syntax in time string 'soon' used with WAITFOR.");
  EXPECT_EQ(ErrorOf("WAITFOR DELAY '2020-01-01 00:00:01'"), 148);
  EXPECT_EQ(ErrorOf("WAITFOR 5"), 102);
}

TEST_F(JumpsTest, WaitingEndsWithTheTimeLimit) {
  session_->SetTimeLimit(std::chrono::milliseconds(50));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Run("WAITFOR DELAY '00:01' PRINT 'not here'").errors.at(0).number, kTimeoutExpired);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  session_->SetTimeLimit(std::nullopt);
  session_->SetNow(DateTime{0, 300 * 3600 - 3});
  Must("WAITFOR TIME '01:00'");
}

} // namespace
} // namespace tsql::test
