// What a rollback undoes of the catalog, seen by the statements that follow in the same batch.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class RollbackTest : public EngineTest {
 protected:
  RollbackTest() { Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1)"); }
};

TEST_F(RollbackTest, ADroppedTableIsBack) {
  EXPECT_EQ(Rows("BEGIN TRAN DROP TABLE t ROLLBACK SELECT a FROM t"), Lines({"1"}));
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1"}));
}

TEST_F(RollbackTest, ACreatedTableIsGone) {
  Must("BEGIN TRAN CREATE TABLE u (a INT) ROLLBACK CREATE TABLE u (b INT)");
  EXPECT_EQ(Rows("SELECT b FROM u"), Lines({}));
  EXPECT_EQ(ErrorOf("BEGIN TRAN CREATE TABLE v (a INT) ROLLBACK SELECT a FROM v"), 208);
}

TEST_F(RollbackTest, AnAlteredTableIsAsItWas) {
  const Output output = Run("BEGIN TRAN ALTER TABLE t ADD b INT ROLLBACK SELECT * FROM t");
  EXPECT_EQ(output.results, std::vector<Lines>({{"1"}}));
}

TEST_F(RollbackTest, ViewsAndProceduresTooAreAsTheyWere) {
  Must("CREATE PROCEDURE p AS SELECT 1");
  Must("CREATE VIEW v AS SELECT a FROM t");
  EXPECT_EQ(Rows("BEGIN TRAN DROP PROCEDURE p ROLLBACK EXEC p"), Lines({"1"}));
  EXPECT_EQ(Rows("BEGIN TRAN DROP VIEW v ROLLBACK SELECT a FROM v"), Lines({"1"}));
}

TEST_F(RollbackTest, ObjectIdInCatchAnswersWhatTheRollbackLeft) {
  EXPECT_EQ(Run("BEGIN TRY BEGIN TRAN CREATE TABLE u (a INT) SELECT 1 / 0 END TRY\n"
                "BEGIN CATCH ROLLBACK IF OBJECT_ID('u') IS NULL PRINT 'gone' ELSE PRINT 'there' END CATCH")
                .messages,
            Lines({"gone"}));
  EXPECT_EQ(Run("BEGIN TRY BEGIN TRAN DROP TABLE t SELECT 1 / 0 END TRY\n"
                "BEGIN CATCH ROLLBACK IF OBJECT_ID('t') IS NULL PRINT 'gone' ELSE PRINT 'there' END CATCH")
                .messages,
            Lines({"there"}));
}

TEST_F(RollbackTest, AFailedDefinitionLeavesTheOthersOfItsTransaction) {
  EXPECT_EQ(Run("BEGIN TRAN CREATE TABLE u (a INT) CREATE TABLE w (a INT, a INT)").errors.at(0).number, 2705);
  EXPECT_EQ(Rows("SELECT a FROM u"), Lines({}));
  Must("ROLLBACK");
  EXPECT_EQ(ErrorOf("SELECT a FROM u"), 208);
}

TEST_F(RollbackTest, ARollbackFromOutsideTheBatchCountsToo) {
  session_->Begin();
  Must("DROP TABLE t");
  session_->Rollback();
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1"}));
}

TEST_F(RollbackTest, AGlobalTableWhoseDropWasUndoneStillEndsWithItsSession) {
  const std::unique_ptr<Session> other = Session::Open(database_);
  Must("CREATE TABLE ##rolled (a INT)");
  Must("BEGIN TRAN DROP TABLE ##rolled ROLLBACK");
  EXPECT_TRUE(RunOn(*other, "SELECT a FROM ##rolled").errors.empty());
  session_.reset();
  EXPECT_EQ(RunOn(*other, "SELECT a FROM ##rolled").errors.at(0).number, 208);
}

} // namespace
} // namespace tsql::test
