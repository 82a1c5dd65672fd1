// Table variables: declared, changed, read, and what they outlive and do not outlive.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class TableVariablesTest : public EngineTest {};

TEST_F(TableVariablesTest, AllStatementsThatReadOrChangeATable) {
  EXPECT_EQ(Rows("SET NOCOUNT ON DECLARE @t TABLE (a INT NOT NULL PRIMARY KEY, b VARCHAR(5) DEFAULT 'x')"
                 " INSERT @t (a) VALUES (1), (2), (3) INSERT INTO @t SELECT a + 10, b FROM @t WHERE a < 3"
                 " UPDATE @t SET b = 'y' WHERE a = 2 UPDATE x SET x.b = 'z' FROM @t x WHERE x.a = 3"
                 " DELETE FROM @t WHERE a = 11 DELETE x FROM @t AS x JOIN @t y ON x.a = y.a + 10"
                 " SELECT t.a, t.b FROM @t t ORDER BY t.a"),
            Lines({"1|x", "2|y", "3|z"}));
  EXPECT_EQ(Rows("DECLARE @t TABLE (a INT) IF EXISTS (SELECT * FROM @t) SELECT 1 ELSE SELECT 0"),
            Lines({"0"}));
}

TEST_F(TableVariablesTest, TheyAreEmptyWhenTheBatchRunsAgain) {
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(Rows("SET NOCOUNT ON DECLARE @t TABLE (id INT IDENTITY(5,1), a INT) INSERT @t VALUES (1)"
                   " SELECT id, a, SCOPE_IDENTITY() FROM @t"),
              Lines({"5|1|5"}));
}

TEST_F(TableVariablesTest, ConstraintsHold) {
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT PRIMARY KEY) INSERT @t VALUES (1) INSERT @t VALUES (1)"), 2627);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT, b INT, UNIQUE (a, b)) INSERT @t VALUES (1, 2), (1, 2)"), 2627);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT CHECK (a > 0)) INSERT @t VALUES (0)"), 547);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT NOT NULL) INSERT @t VALUES (NULL)"), 515);
  EXPECT_EQ(ErrorText("DECLARE @t TABLE (a INT,\nCONSTRAINT pk PRIMARY KEY (a))"),
            "156 2 Incorrect syntax near the keyword 'CONSTRAINT'.");
  EXPECT_EQ(ErrorOf("CREATE TABLE p (a INT PRIMARY KEY) DECLARE @t TABLE (a INT REFERENCES p (a))"), 156);
}

TEST_F(TableVariablesTest, AFailedStatementChangesNothing) {
  const Output output = Run("SET NOCOUNT ON DECLARE @t TABLE (a INT PRIMARY KEY) INSERT @t VALUES (1)"
                            " INSERT @t VALUES (2), (3), (1) SELECT a FROM @t");
  EXPECT_EQ(output.errors.at(0).number, 2627);
  EXPECT_EQ(output.results, std::vector<Lines>({{"1"}}));
}

TEST_F(TableVariablesTest, TheyMustBeDeclared) {
  EXPECT_EQ(ErrorText("SELECT 1\nSELECT a FROM @t"), "1087 2 Must declare the table variable \"@t\".");
  EXPECT_TRUE(Run("PRINT 'not printed' INSERT @t VALUES (1)").messages.empty());
  EXPECT_EQ(ErrorOf("UPDATE @t SET a = 1"), 1087);
  EXPECT_EQ(ErrorOf("DELETE FROM @t"), 1087);
  EXPECT_EQ(ErrorOf("DECLARE @t INT SELECT a FROM @t"), 1087);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT) SET @t = 1"), 137);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT) SELECT b FROM @t"), 207);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT) DECLARE @T INT"), 134);
  EXPECT_EQ(ErrorOf("DECLARE @t INT DECLARE @t TABLE (a INT)"), 134);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT, a INT)"), 2705);
  EXPECT_EQ(ErrorOf("TRUNCATE TABLE @t"), 102);
  EXPECT_EQ(ErrorOf("DROP TABLE @t"), 102);
  EXPECT_EQ(ErrorOf("SELECT 1 AS a INTO @t"), 102);
}

TEST_F(TableVariablesTest, DynamicTextAndProceduresDoNotSeeThem) {
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT) EXEC ('SELECT a FROM @t')"), 1087);
  EXPECT_EQ(ErrorOf("DECLARE @t TABLE (a INT) EXEC sp_executesql N'SELECT a FROM @t'"), 1087);
  Must(
      "CREATE PROCEDURE p @n INT AS SET NOCOUNT ON DECLARE @t TABLE (a VARCHAR(9)) IF @n > 0 BEGIN"
      " INSERT @t VALUES ('level ' + CAST(@n AS VARCHAR(2))) SET @n = @n - 1 EXEC p @n SELECT a FROM @t END");
  const Output output =
      Run("SET NOCOUNT ON DECLARE @t TABLE (a INT) INSERT @t VALUES (7) EXEC p 2 SELECT a FROM @t");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"level 1"}, {"level 2"}, {"7"}}));
  EXPECT_EQ(ErrorOf("SELECT a FROM @t"), 1087) << "it ended with its batch";
}

TEST_F(TableVariablesTest, TheDeclarationNeedNotBePassed) {
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON IF 1 = 0 BEGIN DECLARE @t TABLE (a INT) END INSERT @t VALUES (1) SELECT a FROM @t"),
      Lines({"1"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON DECLARE @i INT SET @i = 0 WHILE @i < 3 BEGIN DECLARE @t TABLE (a INT)"
                 " INSERT @t VALUES (@i) SET @i = @i + 1 END SELECT a FROM @t"),
            Lines({"0", "1", "2"}));
}

TEST_F(TableVariablesTest, ARollbackLeavesTheirRows) {
  Must("CREATE TABLE x (a INT)");
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON DECLARE @t TABLE (id INT IDENTITY(1,1), a INT) INSERT @t VALUES (1) BEGIN TRAN"
          " INSERT x VALUES (1) INSERT @t VALUES (2) DELETE FROM @t WHERE a = 1 ROLLBACK INSERT @t VALUES (3)"
          " SELECT id, a, (SELECT COUNT(*) FROM x) FROM @t"),
      Lines({"2|2|0", "3|3|0"}));
  Must("CREATE PROCEDURE p AS SET NOCOUNT ON DECLARE @t TABLE (a INT PRIMARY KEY, b VARCHAR(9)) BEGIN TRAN"
       " INSERT x VALUES (2) INSERT @t VALUES (1, 'kept') ROLLBACK SELECT a, b FROM @t");
  EXPECT_EQ(Rows("EXEC p"), Lines({"1|kept"}));
  EXPECT_EQ(Rows("EXEC p"), Lines({"1|kept"}));
}

TEST_F(TableVariablesTest, ARollbackFromOutsideTheBatchFindsNoneThatEnded) {
  Must("CREATE TABLE x (a INT)");
  const char* batch = "SET NOCOUNT ON DECLARE @t TABLE (a INT) INSERT @t VALUES (1) INSERT x VALUES (1)"
                      " INSERT @t VALUES (2) SELECT a FROM @t";
  for (int i = 0; i < 3; ++i) {
    session_->Begin();
    EXPECT_EQ(Rows(batch), Lines({"1", "2"}));
    session_->Rollback();
    EXPECT_EQ(Rows("SELECT COUNT(*) FROM x"), Lines({"0"}));
  }
  EXPECT_EQ(Rows(batch), Lines({"1", "2"}));
}

TEST_F(TableVariablesTest, AnErrorThatEndsTheTransactionLeavesTheirRowsToTheCaller) {
  Must("CREATE TABLE x (a INT)");
  const Output output = Run("SET NOCOUNT ON DECLARE @t TABLE (a INT) BEGIN TRAN INSERT x VALUES (1)"
                            " BEGIN TRY INSERT @t VALUES (5) INSERT x VALUES ('no number') END TRY"
                            " BEGIN CATCH ROLLBACK END CATCH SELECT a FROM @t SELECT COUNT(*) FROM x");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"5"}, {"0"}}));
}

TEST_F(TableVariablesTest, WithoutAChangeOfAnotherTableNobodyHasToWait) {
  const std::unique_ptr<Session> other = Session::Open(database_);
  Must("CREATE TABLE x (a INT) INSERT x VALUES (1)");
  session_->Begin();
  Must("DECLARE @t TABLE (a INT) INSERT @t SELECT a FROM x");
  other->SetLockTimeout(0);
  EXPECT_TRUE(RunOn(*other, "UPDATE x SET a = 2").errors.empty());
  session_->Rollback();
}

} // namespace
} // namespace tsql::test
