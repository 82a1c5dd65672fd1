// Local temporary tables that are dropped and made again: nothing of the former table is to be seen.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class TempTablesTest : public EngineTest {};

TEST_F(TempTablesTest, ATableMadeAgainIsEmpty) {
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(
        Rows(
            "SET NOCOUNT ON CREATE TABLE #t (a INT) SELECT a FROM #t INSERT INTO #t VALUES (1) DROP TABLE #t"),
        Lines({}));
  EXPECT_EQ(ErrorOf("SELECT a FROM #t"), 208);
}

TEST_F(TempTablesTest, TheIdentityBeginsAgainAtItsSeed) {
  const char* batch =
      "SET NOCOUNT ON CREATE TABLE #t (id INT IDENTITY(5,1), a INT) INSERT INTO #t VALUES (1) INSERT INTO #t VALUES (2)"
      " SELECT id FROM #t DROP TABLE #t";
  EXPECT_EQ(Rows(batch), Lines({"5", "6"}));
  EXPECT_EQ(Rows(batch), Lines({"5", "6"}));
}

TEST_F(TempTablesTest, AnotherDefinitionUnderTheNameCounts) {
  Must("CREATE TABLE #t (a INT NOT NULL UNIQUE) INSERT INTO #t VALUES (1) DROP TABLE #t");
  EXPECT_EQ(Rows("SET NOCOUNT ON CREATE TABLE #T (a VARCHAR(10) NULL, b INT) INSERT INTO #t VALUES ('x', 1)"
                 " INSERT INTO #t VALUES ('x', NULL) SELECT a, b FROM #t"),
            Lines({"x|1", "x|NULL"}));
  Must("DROP TABLE #t CREATE TABLE #t (a INT NOT NULL UNIQUE) INSERT INTO #t VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO #t VALUES (1)"), 2627);
}

TEST_F(TempTablesTest, IndexesAndColumnsThatWereAddedLaterAreGone) {
  Must("CREATE TABLE #t (a INT)");
  Must("CREATE UNIQUE INDEX i ON #t (a)");
  Must("ALTER TABLE #t ADD b INT");
  Must("DROP TABLE #t");
  EXPECT_EQ(Rows("SET NOCOUNT ON CREATE TABLE #t (a INT) INSERT INTO #t VALUES (1) INSERT INTO #t VALUES (1)"
                 " SELECT * FROM #t"),
            Lines({"1", "1"}));
}

TEST_F(TempTablesTest, ARollbackOfTheDropBringsTheRowsBack) {
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON CREATE TABLE #t (a INT) INSERT INTO #t VALUES (7) BEGIN TRAN DROP TABLE #t ROLLBACK"
          " SELECT a FROM #t"),
      Lines({"7"}));
  Must("DROP TABLE #t");
  EXPECT_EQ(Rows("CREATE TABLE #t (a INT) SELECT a FROM #t"), Lines({}));
}

TEST_F(TempTablesTest, ARollbackOfTheCreationTakesTheTableAway) {
  Must("CREATE TABLE #t (a INT) DROP TABLE #t");
  EXPECT_EQ(ErrorOf("BEGIN TRAN CREATE TABLE #t (a INT) INSERT INTO #t VALUES (1) ROLLBACK SELECT a FROM #t"),
            208);
  EXPECT_EQ(Rows("CREATE TABLE #t (a INT) SELECT a FROM #t"), Lines({}));
}

TEST_F(TempTablesTest, ARollbackOfBothLeavesWhatWasThereBefore) {
  EXPECT_EQ(
      Rows("SET NOCOUNT ON CREATE TABLE #t (a INT) INSERT INTO #t VALUES (1) BEGIN TRAN DROP TABLE #t"
           " CREATE TABLE #t (a INT) INSERT INTO #t VALUES (2) DROP TABLE #t CREATE TABLE #t (b VARCHAR(5))"
           " ROLLBACK SELECT a FROM #t"),
      Lines({"1"}));
  EXPECT_EQ(
      Rows("SET NOCOUNT ON BEGIN TRAN CREATE TABLE #u (a INT) DROP TABLE #u ROLLBACK CREATE TABLE #u (a INT)"
           " INSERT INTO #u VALUES (3) SELECT a FROM #u"),
      Lines({"3"}));
}

TEST_F(TempTablesTest, ManyNamesOneAfterTheOther) {
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 40; ++i) {
      const std::string table = "#t" + std::to_string(i);
      std::string batch = "SET NOCOUNT ON CREATE TABLE #t (a INT) INSERT INTO #t VALUES (1) SELECT a FROM #t"
                          " DROP TABLE #t";
      for (size_t at = batch.find("#t"); at != std::string::npos; at = batch.find("#t", at + 2))
        batch.replace(at, 2, table);
      EXPECT_EQ(Rows(batch), Lines({"1"}));
    }
  }
}

TEST_F(TempTablesTest, AProceduresTableHidesTheCallersEachTime) {
  Must("CREATE PROCEDURE p AS CREATE TABLE #t (a INT) INSERT INTO #t VALUES (2) SELECT a FROM #t");
  Must("CREATE TABLE #t (a INT) INSERT INTO #t VALUES (1)");
  EXPECT_EQ(Rows("EXEC p"), Lines({"2"}));
  EXPECT_EQ(Rows("EXEC p"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT a FROM #t"), Lines({"1"}));
}

TEST_F(TempTablesTest, SelectIntoMakesItAgain) {
  Must("CREATE TABLE kept (a INT) SELECT a INTO #t FROM kept DROP TABLE #t");
  EXPECT_EQ(Rows("SET NOCOUNT ON INSERT INTO kept VALUES (4) SELECT a INTO #t FROM kept SELECT a FROM #t"),
            Lines({"4"}));
}

// The table ended with the procedure, before the rollback that undid its end.
TEST_F(TempTablesTest, ARollbackBringsNoTableOfAProcedureBack) {
  Must("CREATE PROCEDURE p AS CREATE TABLE #t (a INT) BEGIN TRAN INSERT INTO #t VALUES (1)");
  Must("EXEC p ROLLBACK");
  EXPECT_EQ(ErrorOf("SELECT a FROM #t"), 208);
  Must("EXEC p ROLLBACK");
  Output output;
  EXPECT_TRUE(session_->Call("p", {}, output).has_value());
  session_->Rollback();
  EXPECT_TRUE(session_->Call("p", {}, output).has_value());
  EXPECT_TRUE(output.errors.empty());
  session_->Rollback();
  EXPECT_EQ(Rows("CREATE TABLE #t (b INT) SELECT b FROM #t"), Lines({}));
}

} // namespace
} // namespace tsql::test
