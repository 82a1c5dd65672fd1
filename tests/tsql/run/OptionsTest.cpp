// SET options: which are refused, and how long one holds; what @@ROWCOUNT is after statements without rows.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class OptionsTest : public EngineTest {};

TEST_F(OptionsTest, ASettingThatTheEngineCannotHaveIsRefused) {
  EXPECT_EQ(ErrorText("SET ANSI_WARNINGS OFF"), "40510 1 SET ANSI_WARNINGS OFF is not supported.");
  for (const char* option : {"ANSI_WARNINGS", "ARITHABORT", "ANSI_NULL_DFLT_ON"}) {
    EXPECT_EQ(ErrorOf("SET " + std::string(option) + " OFF"), 40510) << option;
    EXPECT_EQ(ErrorOf("SET " + std::string(option) + " ON"), 0) << option;
  }
  EXPECT_EQ(ErrorOf("SET NUMERIC_ROUNDABORT ON"), 40510);
  EXPECT_EQ(ErrorOf("SET NUMERIC_ROUNDABORT OFF"), 0);
}

TEST_F(OptionsTest, AnOptionMayBeSetToWhatItIs) {
  for (const char* option :
       {"ANSI_NULL_DFLT_OFF", "ARITHIGNORE", "CURSOR_CLOSE_ON_COMMIT", "FMTONLY", "FORCEPLAN",
        "IMPLICIT_TRANSACTIONS", "NOEXEC", "PARSEONLY", "REMOTE_PROC_TRANSACTIONS", "SHOWPLAN_ALL",
        "SHOWPLAN_TEXT", "SHOWPLAN_XML", "STATISTICS IO", "STATISTICS TIME, IO"}) {
    EXPECT_EQ(ErrorOf("SET " + std::string(option) + " OFF"), 0) << option;
    EXPECT_EQ(ErrorOf("SET " + std::string(option) + " ON"), 40510) << option;
  }
  for (const char* setting :
       {"DATEFORMAT mdy", "TEXTSIZE 2147483647", "TEXTSIZE -1", "QUERY_GOVERNOR_COST_LIMIT 0",
        "DEADLOCK_PRIORITY LOW", "DEADLOCK_PRIORITY 3", "DEADLOCK_PRIORITY -10"})
    EXPECT_EQ(ErrorOf("SET " + std::string(setting)), 0) << setting;
  for (const char* setting :
       {"DATEFORMAT dmy", "DATEFORMAT ''", "TEXTSIZE 7", "QUERY_GOVERNOR_COST_LIMIT 9", "LANGUAGE German"})
    EXPECT_EQ(ErrorOf("DECLARE @d INT SET " + std::string(setting)), 40510) << setting;
  EXPECT_EQ(Run("SET LANGUAGE us_english").messages, Lines({"Changed language setting to us_english."}));
  EXPECT_EQ(ErrorText("SET FOO ON"), "195 1 'FOO' is not a recognized SET option.");
  EXPECT_EQ(ErrorOf("SET DEADLOCK_PRIORITY 11"), 102);
  EXPECT_EQ(ErrorOf("SET DATEFIRST"), 102);
  EXPECT_EQ(ErrorOf("SET STATISTICS FOO OFF"), 102);
}

TEST_F(OptionsTest, SeveralSwitchesAtOnce) {
  Must("SET ANSI_NULLS, QUOTED_IDENTIFIER, ANSI_WARNINGS ON");
  EXPECT_EQ(Run("SET NOCOUNT, XACT_ABORT ON SELECT @@OPTIONS & (512 + 16384)").results,
            std::vector<Lines>({{"16896"}}));
  EXPECT_EQ(ErrorText("SET ANSI_NULLS, ARITHABORT OFF"), "40510 1 SET ARITHABORT OFF is not supported.");
  EXPECT_EQ(ErrorText("SET NOCOUNT, FOO ON"), "195 1 'FOO' is not a recognized SET option.");
  EXPECT_EQ(ErrorOf("SET NOCOUNT, IDENTITY_INSERT t ON"), 102);
  EXPECT_EQ(ErrorOf("SET NOCOUNT, ON"), 102);
}

// What the other session gets when it wants to change what a transaction has read.
class IsolationTest : public EngineTest {
 protected:
  IsolationTest() { Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1)"); }
  int ChangeOfAnother() {
    return RunOn(*other_, "SET LOCK_TIMEOUT 0 UPDATE t SET a = a + 1").errors.empty() ? 0 : 1222;
  }
  const std::unique_ptr<Session> other_ = Session::Open(database_);
};

TEST_F(IsolationTest, WhatATransactionHasReadStays) {
  for (const std::string level : {"SERIALIZABLE", "REPEATABLE READ"}) {
    Must("SET TRANSACTION ISOLATION LEVEL " + level + " BEGIN TRAN SELECT a FROM t");
    EXPECT_EQ(ChangeOfAnother(), 1222) << level;
    Must("COMMIT");
    EXPECT_EQ(ChangeOfAnother(), 0) << level;
    Must("BEGIN TRAN IF EXISTS (SELECT * FROM t) PRINT 'x'");
    EXPECT_EQ(ChangeOfAnother(), 1222) << "a condition reads too";
    Must("ROLLBACK SELECT a FROM t");
    EXPECT_EQ(ChangeOfAnother(), 0) << "a statement alone holds nothing";
  }
}

TEST_F(IsolationTest, OtherLevelsHoldNothing) {
  for (const std::string level : {"READ COMMITTED", "READ UNCOMMITTED"}) {
    Must("SET TRANSACTION ISOLATION LEVEL SERIALIZABLE SET TRANSACTION ISOLATION LEVEL " + level);
    Must("BEGIN TRAN SELECT a FROM t");
    EXPECT_EQ(ChangeOfAnother(), 0) << level;
    Must("COMMIT");
  }
  EXPECT_EQ(ErrorText("SET TRANSACTION ISOLATION LEVEL SNAPSHOT"),
            "40510 1 The isolation level SNAPSHOT is not supported.");
  EXPECT_EQ(ErrorOf("SET TRANSACTION ISOLATION LEVEL REPEATABLE"), 102);
}

TEST_F(IsolationTest, TheLevelOfAProcedureEndsWithIt) {
  Must("CREATE PROCEDURE p AS SET TRANSACTION ISOLATION LEVEL SERIALIZABLE");
  Must("EXEC p BEGIN TRAN SELECT a FROM t");
  EXPECT_EQ(ChangeOfAnother(), 0);
  Must("COMMIT");
}

TEST_F(OptionsTest, TheFirstDayOfTheWeek) {
  // 2021-01-03 was a Sunday.
  const std::string parts =
      " SELECT @@DATEFIRST, DATEPART(weekday, '2021-01-03'), DATEPART(weekday, '2021-01-04'), "
      "DATEPART(week, '2021-01-03'), DATENAME(weekday, '2021-01-03'), "
      "DATEDIFF(week, '2021-01-02', '2021-01-03'), DATEPART(iso_week, '2021-01-04')";
  EXPECT_EQ(Rows(parts), Lines({"7|1|2|2|Sunday|1|1"}));
  EXPECT_EQ(Rows("SET DATEFIRST 1" + parts), Lines({"1|7|1|1|Sunday|1|1"}));
  EXPECT_EQ(Rows("DECLARE @d INT = 6 SET DATEFIRST @d" + parts), Lines({"6|2|3|2|Sunday|1|1"}));
  EXPECT_EQ(ErrorText("SET DATEFIRST 8"), "2742 1 SET DATEFIRST 8 is out of range.");
  EXPECT_EQ(ErrorOf("SET DATEFIRST 0"), 2742);
  EXPECT_EQ(ErrorOf("SET DATEFIRST x"), 102);
  Must("CREATE PROCEDURE p AS SET DATEFIRST 3");
  EXPECT_EQ(Rows("SET DATEFIRST 5 EXEC p SELECT @@DATEFIRST"), Lines({"5"}));
  EXPECT_EQ(Rows("SELECT @@DATEFIRST"), Lines({"5"}));
  EXPECT_EQ(Run("SET LANGUAGE us_english SELECT @@DATEFIRST").results, std::vector<Lines>({{"7"}}));
}

TEST_F(OptionsTest, VariablesOfTheServerTellThem) {
  EXPECT_EQ(Rows("SELECT @@DATEFIRST, @@LANGUAGE, @@LANGID, @@TEXTSIZE, @@MAX_PRECISION"),
            Lines({"7|us_english|0|2147483647|38"}));
  EXPECT_EQ(Rows("SET LOCK_TIMEOUT 1800 SELECT @@LOCK_TIMEOUT"), Lines({"1800"}));
  EXPECT_EQ(Rows("SET LOCK_TIMEOUT -1 SELECT @@LOCK_TIMEOUT"), Lines({"-1"}));
  // The options of SQL's standard are 5496, NOCOUNT is 512, XACT_ABORT 16384.
  EXPECT_EQ(Rows("SET NOCOUNT OFF SELECT @@OPTIONS"), Lines({"5496"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON SET XACT_ABORT ON SELECT @@OPTIONS & 16896"), Lines({"16896"}));
  const auto other = Session::Open(database_);
  const std::string own = Rows("SELECT @@SPID").front();
  EXPECT_EQ(Rows("SELECT @@SPID"), Lines({own}));
  EXPECT_NE(RunOn(*other, "SELECT @@SPID").results.at(0), Lines({own}));
}

TEST_F(OptionsTest, UseOfTheOwnDatabaseAlone) {
  const std::string own = Rows("SELECT DB_NAME()").front();
  EXPECT_EQ(ErrorOf("USE [" + own + "] SELECT 1"), 0);
  EXPECT_EQ(ErrorText("SELECT 1\nUSE Other"),
            "911 2 Database 'Other' does not exist. Make sure that the name is entered correctly.");
  EXPECT_EQ(ErrorText("CREATE PROCEDURE p AS USE Other"),
            "154 1 a USE database statement is not allowed in a procedure, function or trigger.");
  EXPECT_EQ(ErrorText("USE master"), "40510 1 USE of a system database is not supported.");
}

TEST_F(OptionsTest, NoCountOfAProcedureEndsWithIt) {
  Must("CREATE TABLE t (a INT)");
  Must("CREATE PROCEDURE p AS SET NOCOUNT ON INSERT INTO t VALUES (1)");
  EXPECT_EQ(Run("EXEC p INSERT INTO t VALUES (2)").counts, std::vector<int64_t>({1}));
  EXPECT_EQ(Run("EXEC('SET NOCOUNT ON') INSERT INTO t VALUES (2)").counts, std::vector<int64_t>({1}));
  Output output;
  EXPECT_EQ(session_->Call("p", {}, output), std::optional<int32_t>(0));
  EXPECT_FALSE(session_->NoCount());
  // What the batch sets holds within the procedure and behind it.
  Must("CREATE PROCEDURE q AS INSERT INTO t VALUES (1) SET NOCOUNT OFF");
  EXPECT_EQ(Run("SET NOCOUNT ON EXEC q INSERT INTO t VALUES (2)").counts, std::vector<int64_t>());
}

TEST_F(OptionsTest, ABatchBehindTheNumberingProcedureSendsItsCounts) {
  Must("CREATE TABLE ICMaxNum (FTableName VARCHAR(50) NOT NULL, FMaxNum INT NULL) "
       "CREATE TABLE t (a INT) INSERT INTO t VALUES (1), (2)");
  Must(
      "CREATE PROCEDURE GetICMaxNum @TableName VARCHAR(50), @FInterID INT OUTPUT AS SET NOCOUNT ON BEGIN TRAN "
      "UPDATE ICMaxNum SET FMaxNum = ISNULL(FMaxNum, 0) + 1 WHERE FTableName = @TableName "
      "IF @@ROWCOUNT = 0 INSERT INTO ICMaxNum VALUES (@TableName, 1) "
      "SELECT @FInterID = FMaxNum FROM ICMaxNum WHERE FTableName = @TableName COMMIT TRAN");
  std::vector<Parameter> parameters(2);
  parameters[0].type = Type{TypeId::VarChar, 50, 0, 0};
  parameters[0].value.kind = Value::Kind::Text;
  parameters[0].value.text = "ICBOM";
  parameters[1].type.id = TypeId::Int;
  parameters[1].output = true;
  Output called;
  EXPECT_EQ(session_->Call("GetICMaxNum", parameters, called), std::optional<int32_t>(0));
  EXPECT_EQ(called.counts, std::vector<int64_t>());
  EXPECT_EQ(parameters[1].value.integer, 1);
  EXPECT_EQ(Run("INSERT INTO t SELECT a FROM t;  UPDATE ICMaxNum SET FMaxNum=3004 WHERE FTableName='ICBOM';")
                .counts,
            std::vector<int64_t>({2, 1}));
  EXPECT_EQ(Run("DECLARE @i INT EXEC GetICMaxNum 'ICBOM', @i OUTPUT DELETE FROM t").counts,
            std::vector<int64_t>({4}));
}

TEST_F(OptionsTest, XactAbortOfAProcedureEndsWithIt) {
  Must("CREATE TABLE t (a INT NOT NULL PRIMARY KEY)");
  Must("CREATE PROCEDURE p AS SET XACT_ABORT ON");
  const Output output =
      Run("BEGIN TRAN EXEC p INSERT INTO t VALUES (1) INSERT INTO t VALUES (1) SELECT @@TRANCOUNT");
  EXPECT_EQ(output.errors.at(0).number, 2627);
  EXPECT_EQ(output.results, std::vector<Lines>({{"1"}}));
  Must("COMMIT");
}

TEST_F(OptionsTest, OptionsEndWithAProcedureThatFailsToo) {
  Must("CREATE PROCEDURE p AS SET NOCOUNT ON SELECT 1 / 0");
  Run("BEGIN TRY EXEC p END TRY BEGIN CATCH PRINT 'caught' END CATCH");
  EXPECT_FALSE(session_->NoCount());
}

TEST_F(OptionsTest, IdentityInsertOfDynamicTextEndsWithIt) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT)");
  Must("EXEC('SET IDENTITY_INSERT t ON INSERT INTO t (id, a) VALUES (9, 1)')");
  EXPECT_EQ(ErrorOf("INSERT INTO t (id, a) VALUES (10, 1)"), 544);
}

TEST_F(OptionsTest, RowCountAfterStatementsWithoutRows) {
  EXPECT_EQ(Rows("DECLARE @a INT SELECT @a = 1 IF 1 = 1 SELECT @@ROWCOUNT"), Lines({"0"}));
  EXPECT_EQ(Rows("DECLARE @a INT SELECT @a = 1 IF @@ROWCOUNT = 1 PRINT 'one' SELECT @a"), Lines({"1"}));
  EXPECT_EQ(Rows("DECLARE @a INT SELECT @a = 1 SET NOCOUNT OFF SELECT @@ROWCOUNT"), Lines({"0"}));
  EXPECT_EQ(Rows("DECLARE @a INT SELECT @a = 1 RAISERROR('x', 1, 1) SELECT @@ROWCOUNT"), Lines({"0"}));
}

TEST_F(OptionsTest, RowCountAfterAProcedure) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1), (2), (3)");
  // EXECUTE keeps the count of the procedure's last statement; RETURN is a statement that has none.
  Must("CREATE PROCEDURE p AS UPDATE t SET a = a");
  EXPECT_EQ(Rows("EXEC p SELECT @@ROWCOUNT"), Lines({"3"}));
  Must("CREATE PROCEDURE q AS UPDATE t SET a = a RETURN 5");
  EXPECT_EQ(Rows("DECLARE @r INT EXEC @r = q SELECT @@ROWCOUNT, @r"), Lines({"0|5"}));
  EXPECT_EQ(Rows("EXEC('DELETE FROM t WHERE a = 1') SELECT @@ROWCOUNT"), Lines({"1"}));
}

TEST_F(OptionsTest, RowCountWithinAndAfterALoop) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1), (2), (3)");
  const Output output = Run("SET NOCOUNT ON DECLARE @i INT SET @i = 0 UPDATE t SET a = a "
                            "WHILE @i < 1 BEGIN SELECT @@ROWCOUNT SET @i = @i + 1 END SELECT @@ROWCOUNT");
  EXPECT_EQ(output.results, std::vector<Lines>({{"0"}, {"0"}}));
  EXPECT_EQ(Run("SET NOCOUNT ON UPDATE t SET a = a WHILE @@ROWCOUNT > 0 DELETE TOP (2) FROM t "
                "SELECT COUNT(*) FROM t")
                .results,
            std::vector<Lines>({{"0"}}));
}

TEST_F(OptionsTest, LockTimeoutOfAProcedureEndsWithIt) {
  const auto other = Session::Open(database_);
  Must("CREATE TABLE t (a INT)");
  Must("CREATE PROCEDURE p AS SET LOCK_TIMEOUT 60000");
  Must("SET LOCK_TIMEOUT 0 EXEC p");
  RunOn(*other, "BEGIN TRAN INSERT INTO t VALUES (1)");
  // With the procedure's time-out this would wait for a minute.
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (2)"), 1222);
  RunOn(*other, "ROLLBACK");
}

TEST_F(OptionsTest, AnArgumentThatDoesNotFitItsParameter) {
  Must("CREATE PROCEDURE p @a TINYINT, @d DATETIME = NULL AS SELECT @a, @d");
  EXPECT_EQ(ErrorText("EXEC p 'abc'"), "8114 1 Error converting data type varchar to tinyint.");
  EXPECT_EQ(ErrorText("EXEC p 300"), "8114 1 Error converting data type int to tinyint.");
  EXPECT_EQ(ErrorText("EXEC p 1, '2020-13-01'"), "8114 1 Error converting data type varchar to datetime.");
  EXPECT_EQ(ErrorText("EXEC sp_executesql N'SELECT @x', N'@x INT', @x = N'y'"),
            "8114 1 Error converting data type nvarchar to int.");
  EXPECT_EQ(Rows("EXEC p '7'"), Lines({"7|NULL"}));
}

TEST_F(OptionsTest, AfterANamedArgumentAllAreNamed) {
  Must("CREATE PROCEDURE p @a INT, @b INT AS SELECT @a, @b");
  EXPECT_EQ(
      ErrorText("EXEC p @b = 1, 2"),
      "119 1 Must pass parameter number 2 and subsequent parameters as '@name = value'. After the form "
      "'@name = value' has been used, all subsequent parameters must be passed in the form '@name = value'.");
  EXPECT_EQ(Rows("EXEC p 1, @b = 2"), Lines({"1|2"}));
}

} // namespace
} // namespace tsql::test
