// Savepoints, transactions that can only be rolled back, and XACT_STATE.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SavepointsTest : public EngineTest {
 protected:
  SavepointsTest() { Must("CREATE TABLE t (a INT)"); }
};

TEST_F(SavepointsTest, ARollbackToOneUndoesWhatFollows) {
  EXPECT_EQ(
      Rows("SET NOCOUNT ON BEGIN TRAN INSERT t VALUES (1) SAVE TRAN s INSERT t VALUES (2) ROLLBACK TRAN s"
           " INSERT t VALUES (3) COMMIT SELECT a FROM t"),
      Lines({"1", "3"}));
  EXPECT_EQ(Rows("SELECT @@TRANCOUNT"), Lines({"0"}));
}

TEST_F(SavepointsTest, TheLastOneOfANameCounts) {
  EXPECT_EQ(Rows("SET NOCOUNT ON BEGIN TRAN SAVE TRANSACTION s INSERT t VALUES (1) SAVE TRANSACTION s"
                 " INSERT t VALUES (2) ROLLBACK TRANSACTION s ROLLBACK TRANSACTION s SELECT a FROM t"
                 " COMMIT"),
            Lines({"1"}));
}

TEST_F(SavepointsTest, AnOuterOneTakesTheInnerOnesWithIt) {
  EXPECT_EQ(ErrorText("BEGIN TRAN SAVE TRAN a SAVE TRAN b ROLLBACK TRAN a ROLLBACK TRAN b"),
            "6401 1 Cannot roll back b. No transaction or savepoint of that name was found.");
  EXPECT_EQ(session_->TransactionCount(), 1) << "the transaction goes on";
}

TEST_F(SavepointsTest, NamesInVariablesAndOfTransactions) {
  EXPECT_EQ(
      Rows("SET NOCOUNT ON DECLARE @s VARCHAR(32) SET @s = 'here' BEGIN TRAN whole SAVE TRAN @s"
           " INSERT t VALUES (1) ROLLBACK TRAN @s SELECT @@TRANCOUNT, COUNT(*) FROM t ROLLBACK TRAN whole"),
      Lines({"1|0"}));
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(ErrorOf("BEGIN TRAN a BEGIN TRAN b ROLLBACK TRAN b"), 6401) << "only the outermost has a name";
  Must("ROLLBACK");
  EXPECT_EQ(ErrorOf("BEGIN TRAN SAVE TRAN s ROLLBACK TRAN S"), 6401) << "case counts";
}

TEST_F(SavepointsTest, WithoutATransaction) {
  EXPECT_EQ(ErrorText("SAVE TRAN s"),
            "628 1 Cannot issue SAVE TRANSACTION when there is no active transaction.");
  EXPECT_EQ(ErrorOf("ROLLBACK TRAN s"), 3903);
  EXPECT_EQ(ErrorOf("SAVE TRAN"), 102);
}

TEST_F(SavepointsTest, DefinitionsAndTableVariables) {
  EXPECT_EQ(
      Rows("SET NOCOUNT ON DECLARE @v TABLE (a INT) BEGIN TRAN CREATE TABLE u (a INT) SAVE TRAN s"
           " CREATE TABLE w (a INT) CREATE TABLE #x (a INT) INSERT @v VALUES (9) ROLLBACK TRAN s"
           " SELECT OBJECT_ID('w'), OBJECT_ID('tempdb..#x'), (SELECT COUNT(*) FROM u), a FROM @v COMMIT"),
      Lines({"NULL|NULL|0|9"}));
}

TEST_F(SavepointsTest, XactState) {
  EXPECT_EQ(Rows("SELECT XACT_STATE()"), Lines({"0"}));
  EXPECT_EQ(Rows("BEGIN TRAN SELECT XACT_STATE() COMMIT"), Lines({"1"}));
}

TEST_F(SavepointsTest, ACaughtErrorThatEndsTransactionsDoomsIt) {
  EXPECT_EQ(Rows("SET NOCOUNT ON BEGIN TRAN INSERT t VALUES (1) BEGIN TRY INSERT t VALUES ('x') END TRY"
                 " BEGIN CATCH SELECT XACT_STATE(), @@TRANCOUNT ROLLBACK END CATCH"),
            Lines({"-1|1"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON BEGIN TRAN BEGIN TRY SELECT 1 / 0 END TRY BEGIN CATCH SELECT XACT_STATE() COMMIT END CATCH"),
      Lines({"1"}));
  EXPECT_EQ(
      Rows(
          "SET XACT_ABORT ON BEGIN TRAN BEGIN TRY SELECT 1 / 0 END TRY BEGIN CATCH SELECT XACT_STATE() ROLLBACK END CATCH"
          " SET XACT_ABORT OFF"),
      Lines({"-1"}));
  const char* caught = "BEGIN TRAN BEGIN TRY INSERT t VALUES ('x') END TRY BEGIN CATCH ";
  for (const char* forbidden : {"INSERT t VALUES (1)", "COMMIT", "CREATE TABLE u (a INT)"})
    EXPECT_EQ(ErrorOf(caught + std::string(forbidden) + " END CATCH"), 3930) << forbidden;
  EXPECT_EQ(
      ErrorOf(
          "BEGIN TRAN SAVE TRAN s BEGIN TRY INSERT t VALUES ('x') END TRY BEGIN CATCH ROLLBACK TRAN s END CATCH"),
      3931);
  EXPECT_EQ(
      ErrorText(
          "SELECT 1 BEGIN TRAN BEGIN TRY INSERT t VALUES ('x') END TRY BEGIN CATCH SELECT a FROM t END CATCH"),
      "3998 1 Uncommittable transaction is detected at the end of the batch. The transaction is rolled back.");
  EXPECT_EQ(session_->TransactionCount(), 0);
  Must("INSERT t VALUES (1)");
}

} // namespace
} // namespace tsql::test
