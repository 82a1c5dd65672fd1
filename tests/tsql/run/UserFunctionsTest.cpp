// Functions of users: scalar, inline and with a table that they fill.
#include <chrono>

#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class UserFunctionsTest : public EngineTest {
 protected:
  UserFunctionsTest() {
    Must("CREATE TABLE t (id INT NOT NULL PRIMARY KEY, a INT NULL, s VARCHAR(10) NULL)"
         " INSERT t VALUES (1, 10, 'x'), (2, 20, 'y'), (3, NULL, 'z')");
    Must("CREATE FUNCTION dbo.twice (@n INT = 4) RETURNS INT WITH SCHEMABINDING AS BEGIN RETURN @n * 2 END");
    Must("CREATE FUNCTION above (@n INT) RETURNS TABLE AS RETURN (SELECT id, a FROM t WHERE a > @n)");
    Must(
        "CREATE FUNCTION numbers (@from INT, @to INT) RETURNS @r TABLE (n INT PRIMARY KEY, s VARCHAR(9)) AS BEGIN"
        " WHILE @from <= @to BEGIN INSERT @r VALUES (@from, 'no ' + CAST(@from AS VARCHAR(4))) SET @from = @from + 1"
        " END RETURN END");
  }
};

TEST_F(UserFunctionsTest, AScalarFunctionIsAValue) {
  EXPECT_EQ(
      Rows(
          "SELECT dbo.twice(id), dbo.twice(a), dbo.twice(DEFAULT) FROM t WHERE dbo.twice(id) > 2 ORDER BY id"),
      Lines({"4|40|8", "6|NULL|8"}));
  EXPECT_EQ(Rows("DECLARE @v INT SET @v = dbo.twice(dbo.twice(3)) IF dbo.twice(@v) = 24 SELECT @v"),
            Lines({"12"}));
  EXPECT_EQ(
      Rows("SET NOCOUNT ON UPDATE t SET a = dbo.twice(id) INSERT t SELECT id + 10, dbo.twice(a), s FROM t"
           " SELECT id, a FROM t"),
      Lines({"1|2", "2|4", "3|6", "11|4", "12|8", "13|12"}));
  EXPECT_EQ(Rows("SELECT SUM(dbo.twice(id)), dbo.twice(2) FROM t"), Lines({"84|4"}));
  EXPECT_EQ(Rows("SELECT dbo.twice('21')"), Lines({"42"}));
}

TEST_F(UserFunctionsTest, ItsBodyReadsTablesAndHasVariables) {
  Must("CREATE FUNCTION label (@id INT) RETURNS VARCHAR(20) AS BEGIN DECLARE @s VARCHAR(20), @n INT"
       " SELECT @s = s, @n = a FROM t WHERE id = @id IF @n IS NULL RETURN @s + '?'"
       " WHILE LEN(@s) < 3 SET @s = @s + '-' RETURN @s END");
  EXPECT_EQ(Rows("SELECT dbo.label(id) FROM t ORDER BY dbo.label(id) DESC"), Lines({"z?", "y--", "x--"}));
  EXPECT_EQ(Rows("SELECT dbo.label(99)"), Lines({"NULL"}));
  EXPECT_EQ(
      Rows("SELECT dbo.label(id), COUNT(*) FROM t GROUP BY dbo.label(id) HAVING dbo.label(MIN(id)) < 'y'"),
      Lines({"x--|1"}));
}

TEST_F(UserFunctionsTest, TheResultHasTheTypeThatIsDeclared) {
  Must("CREATE FUNCTION cut (@s VARCHAR(3)) RETURNS CHAR(5) AS BEGIN RETURN @s END");
  EXPECT_EQ(Rows("SELECT dbo.cut('abcdef') + '|', DATALENGTH(dbo.cut('a'))"), Lines({"abc  ||5"}));
  Must("CREATE FUNCTION small () RETURNS TINYINT AS BEGIN RETURN 256 END");
  EXPECT_EQ(ErrorOf("SELECT dbo.small()"), 220);
  Must(
      "CREATE FUNCTION strict (@a INT) RETURNS INT WITH RETURNS NULL ON NULL INPUT AS BEGIN RETURN ISNULL(@a, 1) END");
  EXPECT_EQ(Rows("SELECT dbo.strict(NULL), dbo.strict(2)"), Lines({"NULL|2"}));
  EXPECT_EQ(Rows("SELECT dbo.twice(DEFAULT), ISNULL(OBJECT_ID('twice', 'FN'), 0) - OBJECT_ID('twice')"),
            Lines({"8|0"}));
}

TEST_F(UserFunctionsTest, AnInlineFunctionIsAPartOfTheQuery) {
  EXPECT_EQ(Rows("SELECT id FROM dbo.above(5) ORDER BY id"), Lines({"1", "2"}));
  EXPECT_EQ(Rows("DECLARE @n INT SET @n = 15 SELECT f.id, t.s FROM above(@n) AS f JOIN t ON t.id = f.id"),
            Lines({"2|y"}));
  EXPECT_EQ(Rows("SELECT t.id, (SELECT COUNT(*) FROM above(t.a)) FROM t ORDER BY t.id"),
            Lines({"1|1", "2|0", "3|0"}));
  Must("CREATE FUNCTION both (@x INT, @y INT = 15) RETURNS TABLE RETURN WITH c AS (SELECT id FROM above(@x))"
       " SELECT c.id AS k, @x AS x FROM c UNION SELECT id, @y FROM dbo.above(@y)");
  EXPECT_EQ(Rows("SELECT k, x FROM both(5, DEFAULT) ORDER BY k, x"), Lines({"1|5", "2|5", "2|15"}));
  EXPECT_EQ(Rows("WITH c AS (SELECT 5 AS v) SELECT COUNT(*) FROM above((SELECT v FROM c))"), Lines({"2"}));
  EXPECT_EQ(ErrorOf("SELECT @n FROM above(5)"), 137);
  EXPECT_EQ(ErrorText("CREATE FUNCTION x () RETURNS TABLE AS RETURN SELECT 1"),
            "4514 1 CREATE FUNCTION failed because a column name is not specified for column 1.");
  EXPECT_EQ(ErrorOf("CREATE FUNCTION x () RETURNS TABLE AS RETURN SELECT a FROM missing"), 208);
  EXPECT_EQ(ErrorOf("CREATE FUNCTION x () RETURNS TABLE AS RETURN SELECT @v AS a"), 137);
}

TEST_F(UserFunctionsTest, AFunctionThatFillsATable) {
  EXPECT_EQ(Rows("SELECT n, s FROM dbo.numbers(2, 4) WHERE n <> 3 ORDER BY n DESC"),
            Lines({"4|no 4", "2|no 2"}));
  EXPECT_EQ(Rows("SELECT t.id, x.s FROM t LEFT JOIN numbers(1, 2) AS x ON x.n = t.id ORDER BY t.id"),
            Lines({"1|no 1", "2|no 2", "3|NULL"}));
  EXPECT_EQ(Rows("SELECT x.n, y.n FROM numbers(1, 2) x CROSS JOIN numbers(3, 4) y ORDER BY 1, 2"),
            Lines({"1|3", "1|4", "2|3", "2|4"}));
  EXPECT_EQ(Rows("SELECT id, (SELECT SUM(n) FROM numbers(1, t.id)) FROM t ORDER BY id"),
            Lines({"1|1", "2|3", "3|6"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON INSERT t (id) SELECT n FROM numbers(10, 12) DELETE t WHERE id IN (SELECT n FROM numbers(11, 20))"
          " SELECT id FROM t WHERE id > 5"),
      Lines({"10"}));
  EXPECT_EQ(Rows("SELECT a, b FROM numbers(1, 1) AS x (a, b)"), Lines({"1|no 1"}));
  Must(
      "CREATE FUNCTION outer_f (@n INT) RETURNS @r TABLE (v INT) AS BEGIN DECLARE @t TABLE (v INT)"
      " INSERT @t SELECT n FROM numbers(1, @n) UPDATE @t SET v = dbo.twice(v) DELETE x FROM @t x WHERE x.v = 4"
      " INSERT @r SELECT v FROM @t RETURN END");
  EXPECT_EQ(Rows("SELECT v FROM outer_f(3) UNION ALL SELECT v FROM outer_f(1)"), Lines({"2", "6", "2"}));
  EXPECT_EQ(ErrorOf("SELECT n FROM numbers(1, 2) WHERE missing = 1"), 207);
}

TEST_F(UserFunctionsTest, ApplyGivesTheRowsOfEachCall) {
  EXPECT_EQ(Rows("SELECT t.id, x.n, x.s FROM t CROSS APPLY dbo.numbers(2, t.id) x ORDER BY t.id, x.n"),
            Lines({"2|2|no 2", "3|2|no 2", "3|3|no 3"}));
  EXPECT_EQ(Rows("SELECT t.id, x.n FROM t OUTER APPLY numbers(t.id, 1 + t.a / 10) AS x ORDER BY t.id, x.n"),
            Lines({"1|1", "1|2", "2|2", "2|3", "3|NULL"}));
  EXPECT_EQ(Rows("SELECT t.id, x.a FROM t CROSS APPLY above(t.a - 1) x ORDER BY t.id, x.a"),
            Lines({"1|10", "1|20", "2|20"}));
  EXPECT_EQ(Rows("SELECT t.id, x.a FROM t OUTER APPLY above(t.a) x ORDER BY t.id, x.a"),
            Lines({"1|20", "2|NULL", "3|NULL"}));
  EXPECT_EQ(
      Rows("SELECT y.d FROM t CROSS APPLY dbo.numbers(1, t.id) x CROSS APPLY (SELECT dbo.twice(x.n) AS d) y"
           " WHERE t.id = 2 ORDER BY y.d"),
      Lines({"2", "4"}));
  EXPECT_EQ(
      Rows("SELECT id, (SELECT COUNT(*) FROM t y CROSS APPLY dbo.numbers(y.id, t.id) n) FROM t ORDER BY id"),
      Lines({"1|1", "2|3", "3|6"}));
  EXPECT_EQ(ErrorOf("SELECT * FROM t CROSS APPLY dbo.nothing(t.id) x"), 208);
  EXPECT_EQ(ErrorOf("SELECT * FROM t CROSS APPLY dbo.numbers(t.id) x"), 313);
}

TEST_F(UserFunctionsTest, TablesMayHaveTheNamesThatTheEngineHasWithinStatements) {
  Must("CREATE TABLE t_function_rows (a INT) CREATE TABLE t_rows (a INT) CREATE TABLE t_staged_rows (a INT)"
       " INSERT t_function_rows VALUES (1) INSERT t_rows VALUES (2) INSERT t_staged_rows VALUES (3)");
  EXPECT_EQ(Rows("SELECT n FROM dbo.numbers(5, 5)"), Lines({"5"}));
  EXPECT_EQ(Rows("SELECT x.n FROM t_rows r CROSS APPLY dbo.numbers(r.a, 2) x"), Lines({"2"}));
  EXPECT_EQ(Rows("UPDATE t_staged_rows SET a = a + 1 OUTPUT inserted.a"), Lines({"4"}));
  EXPECT_EQ(Rows("DELETE t_function_rows OUTPUT deleted.a"), Lines({"1"}));
}

TEST_F(UserFunctionsTest, AFailureIsThatOfTheCallingStatement) {
  Must("CREATE FUNCTION ratio (@a INT) RETURNS INT AS BEGIN\nRETURN 10 / @a END");
  const Output output = Run("SELECT dbo.ratio(5) SELECT dbo.ratio(0) SELECT 'goes on'");
  EXPECT_EQ(output.errors.at(0).number, 8134);
  EXPECT_EQ(output.results, std::vector<Lines>({{"2"}, {"goes on"}}));
  EXPECT_EQ(Run("INSERT t (id) SELECT 50 UNION ALL SELECT 100 + dbo.ratio(0)").errors.at(0).number, 8134);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE id >= 50"), Lines({"0"}));
  EXPECT_EQ(Run("BEGIN TRY SELECT dbo.ratio(0) END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH").messages,
            Lines({"Divide by zero error encountered."}));
  Must("CREATE FUNCTION twice_one () RETURNS @r TABLE (n INT PRIMARY KEY) AS BEGIN"
       " INSERT @r VALUES (1) INSERT @r VALUES (1) RETURN END");
  EXPECT_EQ(ErrorOf("SELECT n FROM twice_one()"), 2627);
  EXPECT_EQ(Rows("SELECT n FROM numbers(1, 1)"), Lines({"1"}));
}

TEST_F(UserFunctionsTest, NestingHasALimit) {
  Must("CREATE FUNCTION factorial (@n INT) RETURNS FLOAT AS BEGIN"
       " RETURN CASE WHEN @n <= 1 THEN 1 ELSE @n * dbo.factorial(@n - 1) END END");
  EXPECT_EQ(Rows("SELECT dbo.factorial(5), dbo.factorial(10)"), Lines({"120|3628800"}));
  EXPECT_EQ(Rows("SELECT CASE WHEN dbo.factorial(32) > 1E35 THEN 1 END"), Lines({"1"}));
  EXPECT_EQ(ErrorText("SELECT dbo.factorial(33)"),
            "217 1 Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).");
  EXPECT_EQ(Rows("SELECT dbo.factorial(3)"), Lines({"6"}));
}

TEST_F(UserFunctionsTest, NothingOutsideIsChanged) {
  const std::string head = "CREATE FUNCTION x () RETURNS INT AS BEGIN ";
  const std::pair<const char*, const char*> kEffects[] = {
      {"INSERT t (id) VALUES (9)", "INSERT"},
      {"UPDATE t SET a = 1", "UPDATE"},
      {"DELETE t", "DELETE"},
      {"PRINT 'x'", "PRINT"},
      {"RAISERROR ('x', 16, 1)", "RAISERROR"},
      {"EXEC ('SELECT 1')", "EXECUTE STRING"},
      {"BEGIN TRAN", "BEGIN TRANSACTION"},
      {"IF 1 = 1 WHILE 1 = 1 COMMIT", "COMMIT TRANSACTION"},
      {"CREATE TABLE u (a INT)", "CREATE TABLE"},
      {"SET NOCOUNT ON", "SET OPTION ON"},
      {"BEGIN TRY RETURN 1 END TRY BEGIN CATCH END CATCH", "BEGIN TRY"},
      {"WAITFOR DELAY '00:00:01'", "WAITFOR"},
      {"DECLARE @g UNIQUEIDENTIFIER SET @g = NEWID()", "newid"}};
  for (const auto& [statement, what] : kEffects)
    EXPECT_EQ(ErrorText(head + statement + " RETURN 1 END"),
              "443 1 Invalid use of a side-effecting operator '" + std::string(what) +
                  "' within a function.");
  EXPECT_EQ(ErrorOf(head + "SELECT a FROM t RETURN 1 END"), 444);
  EXPECT_EQ(ErrorOf(head + "DECLARE @a INT SELECT @a = a FROM #x RETURN 1 END"), 2772);
  EXPECT_EQ(ErrorText(head + "DECLARE @a INT END"),
            "455 1 The last statement included within a function must be a return statement.");
  Must("CREATE PROCEDURE p AS SELECT 1");
  Must(head + "EXEC p RETURN 1 END");
  EXPECT_EQ(ErrorOf("SELECT dbo.x()"), 557);
  EXPECT_EQ(ErrorOf("CREATE FUNCTION y () RETURNS @r TABLE (a INT) AS BEGIN RETURN 1 END"), 178);
}

TEST_F(UserFunctionsTest, WhatIsWrongWithACall) {
  EXPECT_EQ(
      ErrorText("SELECT dbo.twice()"),
      "313 1 An insufficient number of arguments were supplied for the procedure or function dbo.twice.");
  EXPECT_EQ(ErrorText("SELECT dbo.twice(1, 2)"),
            "8144 1 Procedure or function dbo.twice has too many arguments specified.");
  EXPECT_EQ(ErrorOf("SELECT twice(1)"), 195) << "a scalar function is called with its schema";
  EXPECT_EQ(ErrorOf("SELECT dbo.numbers(1, 2)"), 4121);
  EXPECT_EQ(ErrorOf("SELECT * FROM twice(1)"), 208);
  EXPECT_EQ(ErrorOf("SELECT * FROM missing(1)"), 208);
  EXPECT_EQ(ErrorOf("SELECT * FROM above(1, 2)"), 8144);
  EXPECT_EQ(ErrorOf("SELECT * FROM numbers(1)"), 313);
}

TEST_F(UserFunctionsTest, DefinitionsChange) {
  EXPECT_EQ(ErrorOf("CREATE FUNCTION twice () RETURNS INT AS BEGIN RETURN 1 END"), 2714);
  EXPECT_EQ(ErrorOf("CREATE TABLE twice (a INT)"), 2714);
  Must("CREATE VIEW v AS SELECT dbo.twice(id) AS d FROM t");
  EXPECT_EQ(Rows("SELECT SUM(d) FROM v"), Lines({"12"}));
  Must("ALTER FUNCTION twice (@n INT) RETURNS INT AS BEGIN RETURN @n * 20 END");
  EXPECT_EQ(Rows("SELECT SUM(d) FROM v"), Lines({"120"}));
  EXPECT_EQ(ErrorOf("ALTER FUNCTION missing () RETURNS INT AS BEGIN RETURN 1 END"), 208);
  EXPECT_EQ(ErrorOf("ALTER FUNCTION twice () RETURNS TABLE AS RETURN SELECT 1 AS a"), 2010);
  EXPECT_EQ(Rows("SELECT name, xtype FROM sysobjects WHERE xtype IN ('FN', 'IF', 'TF') ORDER BY name"),
            Lines({"above|IF", "numbers|TF", "twice|FN"}));
  Must("DROP FUNCTION twice, dbo.above");
  EXPECT_EQ(ErrorOf("SELECT dbo.twice(1)"), 4121);
  EXPECT_EQ(ErrorOf("SELECT d FROM v"), 4121);
  EXPECT_EQ(
      ErrorText("DROP FUNCTION twice"),
      "3701 1 Cannot drop the function 'twice', because it does not exist or you do not have permission.");
  Must("DROP FUNCTION IF EXISTS twice");
}

TEST_F(UserFunctionsTest, AnotherSessionSeesThemAndARollbackTakesThemAway) {
  const std::unique_ptr<Session> other = Session::Open(database_);
  EXPECT_EQ(RunOn(*other, "SELECT dbo.twice(4), n FROM numbers(1, 1)").results,
            std::vector<Lines>({{"8|1"}}));
  session_->Begin();
  Must("ALTER FUNCTION twice (@n INT) RETURNS INT AS BEGIN RETURN 0 END");
  session_->Rollback();
  EXPECT_EQ(Rows("SELECT dbo.twice(4)"), Lines({"8"}));
}

TEST_F(UserFunctionsTest, LimitsHoldWithin) {
  Must(
      "CREATE FUNCTION forever () RETURNS INT AS BEGIN WHILE 1 = 1 BEGIN DECLARE @i INT SET @i = 1 END RETURN 1 END");
  session_->SetTimeLimit(std::chrono::milliseconds(50));
  EXPECT_EQ(Run("SELECT dbo.forever()").errors.at(0).number, kTimeoutExpired);
  session_->SetTimeLimit(std::nullopt);
  session_->SetWorkLimit(1000);
  EXPECT_EQ(Run("UPDATE t SET a = dbo.forever()").errors.at(0).number, 8649);
  session_->SetWorkLimit(std::nullopt);
  EXPECT_EQ(Rows("SELECT dbo.twice(1), a FROM t WHERE id = 1"), Lines({"2|10"}));
}

TEST_F(UserFunctionsTest, TheMomentAndTheCountsAreThoseOfTheStatement) {
  Must("CREATE FUNCTION moment () RETURNS DATETIME AS BEGIN DECLARE @x TABLE (a INT) INSERT @x VALUES (1)"
       " RETURN GETDATE() END");
  EXPECT_EQ(
      Rows(
          "SELECT COUNT(DISTINCT m) FROM (SELECT dbo.moment() AS m FROM numbers(1, 300) UNION ALL SELECT GETDATE()) x"),
      Lines({"1"}));
  const Output output = Run("UPDATE t SET a = 1 WHERE dbo.moment() IS NOT NULL SELECT @@ROWCOUNT");
  EXPECT_EQ(output.counts, std::vector<int64_t>({3}));
  EXPECT_EQ(output.results, std::vector<Lines>({{"3"}}));
}

} // namespace
} // namespace tsql::test
