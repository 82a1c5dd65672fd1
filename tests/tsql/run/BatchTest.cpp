// Control flow, variables, temporary tables, procedures and error handling within batches.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class BatchTest : public EngineTest {};

TEST_F(BatchTest, DeclareSetAndSelectAssign) {
  EXPECT_EQ(Rows("DECLARE @a INT, @b VARCHAR(10) = 'x', @c INT = 3\n"
                 "SET @a = @c + 1\nSELECT @b = @b + 'y', @c = @c * 2\nSELECT @a, @b, @c"),
            Lines({"4|xy|6"}));
  EXPECT_EQ(Rows("DECLARE @a INT SET @a = 7 SELECT @a"), Lines({"7"}));
  EXPECT_EQ(Rows("DECLARE @a INT = 2 SET @a += 5 SET @a *= 3 SELECT @a"), Lines({"21"}));
}

TEST_F(BatchTest, SelectAssignTakesTheLastRowOrNone) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1), (2), (3)");
  EXPECT_EQ(Rows("DECLARE @a INT SELECT @a = a FROM t ORDER BY a SELECT @a"), Lines({"3"}));
  EXPECT_EQ(Rows("DECLARE @a INT SET @a = 9 SELECT @a = a FROM t WHERE a > 5 SELECT @a"), Lines({"9"}));
  EXPECT_EQ(
      Rows(
          "DECLARE @s VARCHAR(50) SET @s = '' SELECT @s = @s + CAST(a AS VARCHAR(5)) + ',' FROM t SELECT @s"),
      Lines({"1,2,3,"}));
}

TEST_F(BatchTest, IfElseAndBlocks) {
  EXPECT_EQ(Run("IF 1 = 2 PRINT 'a' ELSE BEGIN PRINT 'b' PRINT 'c' END PRINT 'd'").messages,
            Lines({"b", "c", "d"}));
  EXPECT_EQ(Run("IF 1 = 1 BEGIN IF 1 = 2 PRINT 'x' ELSE PRINT 'y' END ELSE PRINT 'z'").messages,
            Lines({"y"}));
  EXPECT_EQ(Run("IF NULL = NULL PRINT 'equal' ELSE PRINT 'unknown'").messages, Lines({"unknown"}));
  EXPECT_EQ(Run("IF NOT EXISTS (SELECT 1 WHERE 1 = 0) PRINT 'none';").messages, Lines({"none"}));
}

TEST_F(BatchTest, WhileBreakContinue) {
  EXPECT_EQ(Run("DECLARE @i INT SET @i = 0\nWHILE @i < 10\nBEGIN\n  SET @i = @i + 1\n  IF @i = 2 CONTINUE\n"
                "  IF @i = 4 BREAK\n  PRINT @i\nEND PRINT 'end'")
                .messages,
            Lines({"1", "3", "end"}));
  EXPECT_EQ(ErrorText("PRINT 'a'\nBREAK"),
            "135 2 Cannot use a BREAK statement outside the scope of a WHILE statement.");
}

TEST_F(BatchTest, ReturnEndsTheBatch) {
  EXPECT_EQ(Run("PRINT 'a' RETURN PRINT 'b'").messages, Lines({"a"}));
}

TEST_F(BatchTest, NoCountAndRowCount) {
  const Output output = Run("CREATE TABLE t (a INT)\nINSERT INTO t VALUES (1), (2)\nSET NOCOUNT ON\n"
                            "INSERT INTO t VALUES (3)\nSELECT @@ROWCOUNT\nSET NOCOUNT OFF\nDELETE FROM t");
  EXPECT_EQ(output.counts, std::vector<int64_t>({2, 3}));
  EXPECT_EQ(output.results, std::vector<Lines>({{"1"}}));
}

TEST_F(BatchTest, Identity) {
  Must("CREATE TABLE t (id INT IDENTITY(10,1) NOT NULL, a VARCHAR(5))");
  EXPECT_EQ(Rows("SET NOCOUNT ON INSERT INTO t (a) SELECT 'z' UNION ALL SELECT 'y' "
                 "SELECT SCOPE_IDENTITY(), @@IDENTITY"),
            Lines({"11|11"}));
  Must("DELETE FROM t INSERT INTO t VALUES ('n')");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"12|n"}));
  EXPECT_EQ(ErrorText("INSERT INTO t (id, a) VALUES (1, 'x')"),
            "544 1 Cannot insert explicit value for identity column in table 't' when IDENTITY_INSERT is set "
            "to OFF.");
  Must("SET IDENTITY_INSERT t ON INSERT INTO t (id, a) VALUES (1, 'x') SET IDENTITY_INSERT t OFF");
  EXPECT_EQ(Scalar("MIN(id) FROM t"), "1");
  EXPECT_EQ(ErrorOf("UPDATE t SET id = 5"), 8102);
  Must("TRUNCATE TABLE t INSERT INTO t VALUES ('n')");
  EXPECT_EQ(Rows("SELECT id FROM t"), Lines({"10"}));
}

TEST_F(BatchTest, IdentityFollowsTheOrderBy) {
  Must("CREATE TABLE s (k INT, v VARCHAR(5)) INSERT INTO s VALUES (3, 'c'), (1, 'a'), (2, 'b')");
  Must("CREATE TABLE #d (FEntryID INT NOT NULL IDENTITY(1,1), v VARCHAR(5))");
  Must("INSERT INTO #d (v) SELECT v FROM s ORDER BY k");
  EXPECT_EQ(Rows("SELECT FEntryID, v FROM #d ORDER BY FEntryID"), Lines({"1|a", "2|b", "3|c"}));
  Must("TRUNCATE TABLE #d INSERT INTO #d (v) SELECT v FROM s ORDER BY v DESC");
  EXPECT_EQ(Rows("SELECT FEntryID, v FROM #d ORDER BY FEntryID"), Lines({"1|c", "2|b", "3|a"}));
}

TEST_F(BatchTest, ErrorVariable) {
  Must("CREATE TABLE t (a INT NOT NULL PRIMARY KEY)");
  const Output output =
      Run("INSERT INTO t VALUES (1)\nINSERT INTO t VALUES (1)\nSELECT @@ERROR\nSELECT @@ERROR");
  EXPECT_EQ(output.results, std::vector<Lines>({{"2627"}, {"0"}}));
  EXPECT_EQ(output.errors.at(0).line, 2);
}

TEST_F(BatchTest, SyntaxErrorRunsNothing) {
  Must("CREATE TABLE t (a INT)");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (1)\nSELECT a FROM t WHERE a = 1 a = 2"),
            "102 2 Incorrect syntax near 'a'.");
  EXPECT_EQ(Scalar("COUNT(*) FROM t"), "0");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (1) SELECT b FROM t"), "207 1 Invalid column name 'b'.");
  EXPECT_EQ(Scalar("COUNT(*) FROM t"), "0");
  // A table that is missing is looked for when its statement's turn comes.
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (1)\nSELECT b FROM missing\nINSERT INTO t VALUES (2)"),
            "208 2 Invalid object name 'missing'.");
  EXPECT_EQ(Scalar("COUNT(*) FROM t"), "1");
}

TEST_F(BatchTest, DeferredNamesOfTemporaryTables) {
  const char* batch =
      "CREATE TABLE #t (a INT)\nINSERT INTO #t VALUES (1)\nINSERT INTO #t SELECT a + 1 FROM #t\n"
      "SELECT SUM(a) FROM #t\nDROP TABLE #t";
  EXPECT_EQ(Rows(batch), Lines({"3"}));
  EXPECT_EQ(Rows(batch), Lines({"3"}));
  EXPECT_EQ(ErrorText("DROP TABLE #t"),
            "3701 1 Cannot drop the table '#t', because it does not exist or you do not have permission.");
}

TEST_F(BatchTest, SelectInto) {
  Must("CREATE TABLE t (a INT NOT NULL, b VARCHAR(7)) INSERT INTO t VALUES (1, 'x'), (2, 'y')");
  EXPECT_EQ(Run("SELECT a, b AS c INTO #u FROM t WHERE a > 1").counts, std::vector<int64_t>({1}));
  const Output output = Run("SELECT * FROM #u");
  EXPECT_EQ(output.results, std::vector<Lines>({{"2|y"}}));
  EXPECT_EQ(output.columns[0][1].type, (Type{TypeId::VarChar, 7, 0, 0}));
  EXPECT_EQ(ErrorOf("SELECT a INTO #u FROM t"), 2714);
}

TEST_F(BatchTest, TryCatch) {
  Must("CREATE TABLE t (a INT NOT NULL PRIMARY KEY)");
  const Output output =
      Run("BEGIN TRY\n  INSERT INTO t VALUES (1)\n  INSERT INTO t VALUES (1)\n  PRINT 'not reached'\n"
          "END TRY\nBEGIN CATCH\n  SELECT ERROR_NUMBER(), ERROR_LINE(), ERROR_SEVERITY()\nEND CATCH\n"
          "SELECT ERROR_NUMBER()");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_TRUE(output.messages.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"2627|3|14"}, {"NULL"}}));
}

TEST_F(BatchTest, RaiserrorAndThrow) {
  const Output output =
      Run("RAISERROR('info %d of %s', 10, 1, 5, 'x')\nRAISERROR('bad', 16, 2)\nPRINT 'goes on'");
  EXPECT_EQ(output.messages, Lines({"info 5 of x", "goes on"}));
  ASSERT_EQ(output.errors.size(), 1U);
  EXPECT_EQ(output.errors[0].number, 50000);
  EXPECT_EQ(output.errors[0].state, 2);
  EXPECT_EQ(output.errors[0].line, 2);
  const Output thrown = Run("THROW 51000, 'stop', 3;\nPRINT 'not reached'");
  EXPECT_EQ(thrown.errors.at(0).number, 51000);
  EXPECT_TRUE(thrown.messages.empty());
  EXPECT_EQ(ErrorText("BEGIN TRY RAISERROR('inner', 16, 1) END TRY BEGIN CATCH THROW END CATCH"),
            "50000 1 inner");
}

TEST_F(BatchTest, AnErrorThatLeavesItsCatchBlockIsCaughtNoMore) {
  EXPECT_EQ(
      Rows("BEGIN TRY\nBEGIN TRY SELECT 1 / 0 END TRY BEGIN CATCH RAISERROR('second', 16, 1) END CATCH\n"
           "END TRY\nBEGIN CATCH PRINT ERROR_MESSAGE() END CATCH\nSELECT ERROR_NUMBER()"),
      Lines{"NULL"});
}

TEST_F(BatchTest, Procedures) {
  Must("CREATE PROCEDURE p @a INT, @b INT = 10, @sum INT OUTPUT AS\nSET NOCOUNT ON\nSET @sum = @a + @b\n"
       "SELECT @a AS a, @b AS b\nRETURN @a * 2");
  EXPECT_EQ(Run("DECLARE @s INT, @r INT EXEC @r = p 1, @sum = @s OUTPUT SELECT @s, @r").results,
            std::vector<Lines>({{"1|10"}, {"11|2"}}));
  EXPECT_EQ(Run("DECLARE @s INT EXECUTE dbo.p @b = 2, @a = 1, @sum = @s OUT SELECT @s").results[1],
            Lines({"3"}));
  EXPECT_EQ(ErrorText("EXEC p"),
            "201 1 Procedure or function 'p' expects parameter '@a', which was not supplied.");
  EXPECT_EQ(ErrorText("EXEC nothing"), "2812 1 Could not find stored procedure 'nothing'.");
  EXPECT_EQ(ErrorText("EXEC p 1, 2, 3, 4"),
            "8144 1 Procedure or function p has too many arguments specified.");
  EXPECT_EQ(ErrorText("EXEC p 1, @c = 2"), "8145 1 @c is not a parameter for procedure p.");
  EXPECT_EQ(ErrorText("CREATE PROC p AS SELECT 1"),
            "2714 1 There is already an object named 'p' in the database.");
}

TEST_F(BatchTest, ProcedureCalledFromOutside) {
  Must("CREATE PROCEDURE p @name VARCHAR(20), @out VARCHAR(20) OUTPUT AS SET @out = @name + '!' RETURN 7");
  std::vector<Parameter> parameters(2);
  parameters[0].name = "@name";
  parameters[0].type = Type{TypeId::VarChar, 20, 0, 0};
  parameters[0].value.kind = Value::Kind::Text;
  parameters[0].value.text = "hello";
  parameters[1].name = "@out";
  parameters[1].type = Type{TypeId::VarChar, 20, 0, 0};
  parameters[1].output = true;
  Output output;
  EXPECT_EQ(session_->Call("dbo.p", parameters, output), std::optional<int32_t>(7));
  EXPECT_EQ(ToText(parameters[1].value), "hello!");
  parameters[1].name = "@missing";
  EXPECT_EQ(session_->Call("p", parameters, output), std::nullopt);
  EXPECT_STREQ(output.errors.at(0).what(), "@missing is not a parameter for procedure p.");
  std::vector<Parameter> tooMany(3);
  EXPECT_EQ(session_->Call("p", tooMany, output), std::nullopt);
  EXPECT_EQ(output.errors.at(1).number, 8144);
  EXPECT_EQ(session_->Call("q", {}, output), std::nullopt);
  EXPECT_EQ(output.errors.at(2).number, 2812);
}

TEST_F(BatchTest, ProcedureTemporaryTablesEndWithIt) {
  Must("CREATE TABLE #t (a INT) INSERT INTO #t VALUES (1)");
  Must("CREATE PROCEDURE p AS CREATE TABLE #t (b INT) INSERT INTO #t VALUES (5) SELECT b FROM #t");
  EXPECT_EQ(Rows("EXEC p"), Lines({"5"}));
  EXPECT_EQ(Rows("EXEC p"), Lines({"5"}));
  EXPECT_EQ(Rows("SELECT a FROM #t"), Lines({"1"}));
}

TEST_F(BatchTest, RecursionOfProceduresIsLimited) {
  Must("CREATE PROCEDURE p @n INT AS IF @n > 0 BEGIN SET @n = @n - 1 EXEC p @n END ELSE SELECT @@NESTLEVEL");
  EXPECT_EQ(Rows("EXEC p 3"), Lines({"4"}));
  EXPECT_EQ(ErrorOf("EXEC p 40"), 217);
}

TEST_F(BatchTest, ExecText) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (4)");
  EXPECT_EQ(Rows("DECLARE @s VARCHAR(100) SET @s = 'SELECT a FROM ' EXEC(@s + 't')"), Lines({"4"}));
  EXPECT_EQ(ErrorOf("DECLARE @x INT EXEC('SELECT @x')"), 137);
}

TEST_F(BatchTest, NamedParameters) {
  std::vector<Parameter> parameters(1);
  parameters[0].name = "@p";
  parameters[0].type = Type{TypeId::Int, 0, 0, 0};
  parameters[0].output = true;
  parameters[0].value.kind = Value::Kind::Integer;
  parameters[0].value.integer = 20;
  const Output output = RunOn(*session_, "SELECT @p + 1 SET @p = 5", parameters);
  EXPECT_EQ(output.results, std::vector<Lines>({{"21"}}));
  EXPECT_EQ(parameters[0].value.integer, 5);
}

TEST_F(BatchTest, CommentsAndSeparators) {
  EXPECT_EQ(Rows("-- a comment with 'quote\r\n/* one /* nested */ */ SELECT /* in */ 1 -- end"),
            Lines({"1"}));
  EXPECT_EQ(Run(";;SELECT 1;;SELECT 2 SELECT 3;").results.size(), 3U);
  EXPECT_TRUE(Run("").results.empty());
  EXPECT_TRUE(Run("-- nothing").results.empty());
}

TEST_F(BatchTest, RaiserrorFormatsItsValues) {
  const auto message = [this](const std::string& arguments) {
    const Output output = Run("RAISERROR(" + arguments + ")");
    return output.errors.empty() ? output.messages.at(0) : std::string(output.errors.at(0).what());
  };
  EXPECT_EQ(message("'%d of %s, 100%%', 1, 1, 5, 'x'"), "5 of x, 100%");
  EXPECT_EQ(message("'[%5d|%-5d|%05d|%+d]', 1, 1, 42, 42, 42, 42"), "[   42|42   |00042|+42]");
  EXPECT_EQ(message("'[%7.3s|%-4s|%s]', 1, 1, 'abcde', 'x', N'车'"), "[    abc|x   |车]");
  EXPECT_EQ(message("'%x %X %o %u', 1, 1, 255, 255, 8, -1"), "ff FF 10 4294967295");
  EXPECT_EQ(message("'%d %s %d', 1, 1, NULL, NULL"), "(null) (null) (null)");
  EXPECT_EQ(message("'%I64d %ld %hd', 1, 1, 1, 2, 3"), "1 2 3");
  EXPECT_EQ(message("'[%*d|%-*s|%.*s|%*d]', 1, 1, 4, 7, 3, 'x', 2, 'abc', -3, 5"), "[   7|x  |ab|5  ]");
  EXPECT_EQ(ErrorOf("RAISERROR('%*d', 16, 1, 'x', 5)"), 2786);
  EXPECT_EQ(ErrorOf("RAISERROR('%*d', 16, 1)"), 2786);
  EXPECT_EQ(ErrorText("RAISERROR('%d', 16, 1, 'x')"),
            "2786 1 The data type of substitution parameter 1 does not match the expected type of the format "
            "specification.");
  EXPECT_EQ(ErrorOf("RAISERROR('%s %s', 16, 1, 'x', 5)"), 2786);
  EXPECT_EQ(ErrorText("RAISERROR('50% done%', 16, 1)"), "2787 1 Invalid format specification: '%'.");
  EXPECT_EQ(ErrorText("RAISERROR('%d', 16, 1, 1.5)"),
            "2748 1 Cannot specify numeric data type (parameter 4) as a substitution parameter.");
  EXPECT_EQ(ErrorOf("RAISERROR('x', 16, 1, 1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21)"), 2747);
}

TEST_F(BatchTest, SeverityAndStateOfRaiserrorHaveLimits) {
  EXPECT_EQ(
      ErrorText("RAISERROR('x', 19, 1)"),
      "2754 1 Error severity levels greater than 18 can only be specified by members of the sysadmin role, "
      "using the WITH LOG option.");
  EXPECT_EQ(Run("RAISERROR('x', 18, 1)").errors.at(0).severity, 18);
  EXPECT_EQ(Run("RAISERROR('x', 16, -5)").errors.at(0).state, 1);
  EXPECT_EQ(Run("RAISERROR('x', -5, 1) WITH NOWAIT, NOWAIT").messages, Lines({"x"}));
  EXPECT_EQ(Run("RAISERROR('x', 19, 1) WITH LOG, NOWAIT").errors.at(0).severity, 19);
  EXPECT_EQ(ErrorText("RAISERROR('x', 20, 1) WITH LOG"),
            "40510 1 RAISERROR of a severity that ends the connection is not supported.");
}

TEST_F(BatchTest, AMessageSetsTheErrorWhenItIsAskedTo) {
  EXPECT_EQ(Rows("RAISERROR('x', 5, 1) SELECT @@ERROR"), Lines({"0"}));
  EXPECT_EQ(Rows("RAISERROR('x', 5, 1) WITH NOWAIT, SETERROR SELECT @@ERROR"), Lines({"50000"}));
  EXPECT_EQ(Run("RAISERROR('x', 16, 1) WITH SETERROR SELECT @@ERROR").results,
            std::vector<Lines>({{"50000"}}));
}

TEST_F(BatchTest, OptionsThatChangeNothing) {
  Must("CREATE PROCEDURE p @a INT = 1 AS SELECT @a");
  EXPECT_EQ(Rows("EXEC p WITH RECOMPILE"), Lines({"1"}));
  EXPECT_EQ(Rows("EXEC p 2 WITH RECOMPILE"), Lines({"2"}));
  EXPECT_EQ(Rows("BEGIN TRAN x WITH MARK 'a mark' SELECT @@TRANCOUNT COMMIT WITH (DELAYED_DURABILITY = ON)"),
            Lines({"1"}));
  EXPECT_EQ(Rows("BEGIN TRAN y WITH MARK COMMIT TRAN y WITH (DELAYED_DURABILITY = OFF) SELECT @@TRANCOUNT"),
            Lines({"0"}));
  EXPECT_NE(ErrorOf("BEGIN TRAN WITH MARK"), 0) << "a mark is of a name";
  EXPECT_EQ(ErrorOf("BEGIN TRAN COMMIT WITH (FOO = ON)"), 102);
}

TEST_F(BatchTest, ThrowWantsANumberOfAUserOrACatchBlock) {
  EXPECT_EQ(
      ErrorText("THROW 49999, 'x', 1"),
      "35100 1 Error number 49999 in the THROW statement is outside the valid range. Specify an error number "
      "in the valid range of 50000 to 2147483647.");
  EXPECT_EQ(ErrorText("THROW 50000, 'x', 1"), "50000 1 x");
  EXPECT_EQ(ErrorOf("THROW"), 10704);
  EXPECT_EQ(ErrorOf("BEGIN TRY THROW END TRY BEGIN CATCH END CATCH"), 10704);
  EXPECT_EQ(ErrorOf("BEGIN TRY SELECT 1 END TRY BEGIN CATCH END CATCH THROW"), 10704);
  EXPECT_EQ(ErrorOf("CREATE PROCEDURE p AS THROW"), 10704);
  // Within a block of a block that catches.
  EXPECT_EQ(ErrorOf("BEGIN TRY SELECT 1/0 END TRY BEGIN CATCH IF 1 = 1 BEGIN THROW END END CATCH"), 8134);
}

TEST_F(BatchTest, WhatAViewMustNotBe) {
  Must("CREATE TABLE #t (a INT) CREATE TABLE t (a INT)");
  EXPECT_EQ(ErrorText("CREATE VIEW v AS SELECT a FROM #t"),
            "4508 1 Views or functions are not allowed on temporary tables. Table names that begin with '#' "
            "denote temporary tables.");
  EXPECT_EQ(ErrorOf("CREATE VIEW v AS SELECT a FROM t WHERE EXISTS (SELECT a FROM #t)"), 4508);
  EXPECT_EQ(ErrorText("CREATE VIEW v AS SELECT a, a + 1 FROM t"),
            "4511 1 Create View or Function failed because no column name was specified for column 2.");
  EXPECT_EQ(
      ErrorText("CREATE VIEW v AS SELECT a, a FROM t"),
      "4506 1 Column names in each view or function must be unique. Column name 'a' in view or function "
      "'v' is specified more than once.");
  EXPECT_EQ(ErrorOf("CREATE VIEW v (x, y) AS SELECT a FROM t"), 8159);
  EXPECT_EQ(ErrorOf("CREATE VIEW v (x) AS SELECT a, a + 1 FROM t"), 8158);
  EXPECT_EQ(ErrorOf("CREATE VIEW v AS SELECT a FROM t ORDER BY a"), 1033);
  Must("CREATE VIEW v (x, y) AS SELECT a, a + 1 FROM t");
  Must("INSERT INTO t VALUES (4)");
  EXPECT_EQ(Rows("SELECT x, y FROM v"), Lines({"4|5"}));
}

TEST_F(BatchTest, TopMustNotBeNegative) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1)");
  EXPECT_EQ(ErrorOf("SELECT TOP (-1) a FROM t"), 127);
  EXPECT_EQ(ErrorOf("DECLARE @n INT SET @n = -1 SELECT TOP (@n) a FROM t"), 127);
  EXPECT_EQ(ErrorOf("DECLARE @n INT SET @n = -1 DELETE TOP (@n) FROM t"), 127);
  EXPECT_EQ(ErrorOf("DECLARE @n INT SELECT TOP (@n) a FROM t"), 1060);
}

TEST_F(BatchTest, ReturnOfAnExpression) {
  Must("CREATE PROCEDURE p AS RETURN CONVERT(INT, '7')");
  EXPECT_EQ(Rows("DECLARE @r INT EXEC @r = p SELECT @r"), Lines({"7"}));
  EXPECT_EQ(ErrorOf("CREATE PROCEDURE q AS"), 102); // the batch ends too early
}

TEST_F(BatchTest, CompoundAssignmentByExclusiveOr) {
  EXPECT_EQ(Rows("DECLARE @a INT = 6 SET @a ^= 3 SELECT @a"), Lines({"5"}));
  EXPECT_EQ(Rows("CREATE TABLE t (a INT) INSERT INTO t VALUES (6) UPDATE t SET a ^= 5 SELECT a FROM t"),
            Lines({"3"}));
}

TEST_F(BatchTest, VariablesMustBeDeclaredOnce) {
  EXPECT_EQ(ErrorText("SELECT 1\nSELECT @x"), "137 2 Must declare the scalar variable \"@x\".");
  EXPECT_EQ(ErrorOf("SET @x = 1 DECLARE @x INT"), 137);
  EXPECT_EQ(ErrorOf("DECLARE @x INT DECLARE @X INT"), 134);
}

TEST_F(BatchTest, CreateOrAlterMakesOrChanges) {
  Must("CREATE TABLE t (a INT)");
  for (const char* value : {"1", "2"}) {
    const std::string number = value;
    std::string row = number;
    row += "|";
    row += number;
    Must("CREATE OR ALTER PROCEDURE p AS SELECT " + number);
    Must("CREATE OR ALTER VIEW v AS SELECT " + number + " AS a");
    Must("CREATE OR ALTER FUNCTION f () RETURNS INT AS BEGIN RETURN " + number + " END");
    Must("CREATE OR ALTER TRIGGER tr ON t FOR INSERT AS PRINT '" + number + "'");
    EXPECT_EQ(Rows("EXEC p"), Lines({number}));
    EXPECT_EQ(Rows("SELECT a, dbo.f() FROM v"), Lines({row}));
    EXPECT_EQ(Run("INSERT INTO t VALUES (1)").messages, Lines({number}));
  }
  EXPECT_EQ(ErrorOf("CREATE OR ALTER VIEW p AS SELECT 1 AS a"), 2714);
  EXPECT_EQ(ErrorOf("CREATE OR ALTER FUNCTION f () RETURNS TABLE AS RETURN (SELECT 1 AS a)"), 2010);
  EXPECT_EQ(ErrorOf("CREATE OR ALTER TABLE x (a INT)"), 156);
}

TEST_F(BatchTest, RaiserrorAsItWasWrittenBefore) {
  EXPECT_EQ(ErrorText("PRINT 'a'\nRAISERROR 50001 'by number'"), "50001 2 by number");
  EXPECT_EQ(Rows("DECLARE @s VARCHAR(20) = 'text' BEGIN TRY RAISERROR 60000 @s END TRY BEGIN CATCH "
                 "SELECT ERROR_NUMBER(), ERROR_SEVERITY(), ERROR_STATE(), ERROR_MESSAGE() END CATCH"),
            Lines({"60000|16|1|text"}));
  EXPECT_EQ(Run("SET XACT_ABORT ON RAISERROR 50001 'x' PRINT 'goes on'").messages, Lines({"goes on"}));
  EXPECT_EQ(ErrorOf("RAISERROR 9223372036854775807 'x'"), 102);
  EXPECT_EQ(ErrorOf("RAISERROR 0 'x'"), 102);
  EXPECT_EQ(ErrorText("RAISERROR 1000 'x'"),
            "2732 1 Error number 1000 is invalid. The number must be from 13000 "
            "through 2147483647 and it cannot be 50000.");
}

TEST_F(BatchTest, RaiserrorOfAMessageThatIsNotThere) {
  EXPECT_EQ(
      ErrorText("RAISERROR(50001, 16, 2)"),
      "18054 1 Error 50001, severity 16, state 2 was raised, but no message with that error number was found in "
      "sys.messages. If error is larger than 50000, make sure the user-defined message is added using "
      "sp_addmessage.");
  EXPECT_EQ(ErrorOf("RAISERROR(50000, 16, 1)"), 2732);
  EXPECT_EQ(ErrorOf("RAISERROR(14088, 16, 1)"), 40510);
}

TEST_F(BatchTest, NamesOfWhoAsks) {
  EXPECT_EQ(Rows("SELECT CURRENT_USER, SESSION_USER, USER, SYSTEM_USER, ORIGINAL_LOGIN()"),
            Lines({"dbo|dbo|dbo|sa|sa"}));
  Must("CREATE TABLE t (a INT, who NVARCHAR(128) DEFAULT SYSTEM_USER) INSERT INTO t (a) VALUES (1)");
  EXPECT_EQ(Rows("SELECT who FROM t"), Lines({"sa"}));
}

} // namespace
} // namespace tsql::test
