// Functions with table variables, called for the first time from within statements that open tables late.
// SQLite ends a statement that runs while a table is made, so the tables of functions have to be there
// before.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class FunctionTablesTest : public EngineTest {
 protected:
  FunctionTablesTest() {
    Must(
        "CREATE TABLE t (id INT NOT NULL PRIMARY KEY, a INT NULL) INSERT t VALUES (1, 10), (2, 20), (3, NULL)"
        " CREATE TABLE log (id INT NULL, a INT NULL)");
    Must("CREATE FUNCTION one (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (a INT) INSERT @x VALUES (@n)"
         " RETURN (SELECT SUM(a) FROM @x) END");
    Must("CREATE FUNCTION upto (@n INT) RETURNS @r TABLE (k INT PRIMARY KEY, v INT) AS BEGIN"
         " INSERT @r SELECT id, dbo.one(a) FROM t WHERE id <= @n RETURN END");
  }
};

TEST_F(FunctionTablesTest, ColdInAChangeWithOutput) {
  EXPECT_EQ(Rows("INSERT t OUTPUT inserted.id, dbo.one(inserted.a) SELECT k + 10, v + 1 FROM dbo.upto(2)"),
            Lines({"11|11", "12|21"}));
  EXPECT_EQ(Rows("SELECT id, a FROM t WHERE id > 10"), Lines({"11|11", "12|21"}));
}

TEST_F(FunctionTablesTest, ColdInAChangeIntoATable) {
  Must(
      "INSERT t OUTPUT inserted.a, dbo.one(7) INTO log SELECT k + 10, v FROM t x JOIN dbo.upto(5) y ON y.k = x.id");
  EXPECT_EQ(Rows("SELECT id, a FROM log ORDER BY id"), Lines({"NULL|7", "10|7", "20|7"}));
}

TEST_F(FunctionTablesTest, ColdUnderForeignKeys) {
  Must(
      "CREATE TABLE p (id INT NOT NULL PRIMARY KEY, up INT NULL REFERENCES p (id)) INSERT p VALUES (1, NULL)");
  Must("INSERT p SELECT k + 1, dbo.one(k) FROM dbo.upto(3)");
  EXPECT_EQ(Rows("SELECT id, up FROM p ORDER BY id"), Lines({"1|NULL", "2|1", "3|2", "4|3"}));
  EXPECT_EQ(ErrorOf("UPDATE p SET up = dbo.one(9) WHERE id = 2"), 547);
  EXPECT_EQ(ErrorOf("DELETE p WHERE id = dbo.one(1)"), 547);
}

TEST_F(FunctionTablesTest, ColdInASubqueryThatIsReadLate) {
  Must(
      "CREATE TABLE other (id INT NOT NULL PRIMARY KEY, s VARCHAR(5)) INSERT other VALUES (1, 'x'), (2, 'y')");
  EXPECT_EQ(
      Rows(
          "SELECT id, CASE WHEN dbo.one(id) = 2 THEN (SELECT s FROM other WHERE id = t.id) END FROM t ORDER BY id"),
      Lines({"1|NULL", "2|y", "3|NULL"}));
}

TEST_F(FunctionTablesTest, ColdThroughViewsInlineFunctionsConditionsAndDefaults) {
  Must("CREATE VIEW v AS SELECT id, dbo.one(a) AS o FROM t");
  EXPECT_EQ(Rows("SELECT id, o FROM v WHERE EXISTS (SELECT * FROM log) OR id = 2"), Lines({"2|20"}));
  Must("CREATE FUNCTION two (@n INT) RETURNS INT AS BEGIN DECLARE @y TABLE (b INT) INSERT @y VALUES (@n)"
       " RETURN 2 * (SELECT b FROM @y) END");
  Must(
      "CREATE FUNCTION inl (@n INT) RETURNS TABLE AS RETURN SELECT id, dbo.two(id) AS d FROM t WHERE id < @n");
  EXPECT_EQ(Rows("SELECT d, (SELECT MAX(id) FROM t) FROM dbo.inl(3) ORDER BY d"), Lines({"2|3", "4|3"}));
  Must("CREATE FUNCTION three () RETURNS INT AS BEGIN DECLARE @z TABLE (c INT) INSERT @z VALUES (3)"
       " RETURN (SELECT c FROM @z) END");
  EXPECT_EQ(Rows("IF dbo.three() = 3 AND EXISTS (SELECT * FROM t) SELECT 'yes'"), Lines({"yes"}));
  Must("CREATE FUNCTION four () RETURNS INT AS BEGIN DECLARE @z TABLE (c INT) INSERT @z VALUES (4)"
       " RETURN (SELECT c FROM @z) END");
  Must("CREATE TABLE d (id INT NOT NULL, f INT NOT NULL DEFAULT dbo.four())");
  EXPECT_EQ(Rows("SET NOCOUNT ON INSERT d (id) EXEC ('SELECT 1 SELECT 2') SELECT id, f FROM d"),
            Lines({"1|4", "2|4"}));
  Must("CREATE FUNCTION five () RETURNS INT AS BEGIN DECLARE @z TABLE (c INT) INSERT @z VALUES (5)"
       " RETURN (SELECT c FROM @z) END");
  Must("SELECT id, dbo.five() AS f INTO made FROM t WHERE id IN (SELECT id FROM d)");
  EXPECT_EQ(Rows("SELECT id, f FROM made"), Lines({"1|5", "2|5"}));
  Must("CREATE FUNCTION six () RETURNS INT AS BEGIN DECLARE @z TABLE (c INT) INSERT @z VALUES (6)"
       " RETURN (SELECT c FROM @z) END");
  EXPECT_EQ(
      Rows("DECLARE @a INT DECLARE c CURSOR LOCAL FOR SELECT dbo.six() FROM t WHERE id IN (SELECT id FROM d)"
           " OPEN c FETCH c INTO @a SELECT @a"),
      Lines({"6"}));
  Must("CREATE FUNCTION seven () RETURNS INT AS BEGIN DECLARE @z TABLE (c INT) INSERT @z VALUES (7)"
       " RETURN (SELECT c FROM @z) END");
  Must("ALTER TABLE d ADD g INT NOT NULL DEFAULT dbo.seven()");
  EXPECT_EQ(Rows("SELECT DISTINCT g FROM d"), Lines({"7"}));
}

TEST_F(FunctionTablesTest, RecursionHasATableEach) {
  Must("CREATE FUNCTION down (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (a INT IDENTITY(5,1), n INT)"
       " INSERT @x (n) VALUES (@n) IF @n > 0 INSERT @x (n) VALUES (dbo.down(@n - 1))"
       " RETURN (SELECT SUM(a + n) FROM @x) END");
  // down(0) = 5, and down(n) = (5 + n) + (6 + down(n - 1)).
  EXPECT_EQ(Rows("SELECT dbo.down(id) FROM t ORDER BY id"), Lines({"17", "30", "44"}));
  EXPECT_EQ(Rows("SELECT CASE WHEN dbo.down(31) > 0 THEN 1 END"), Lines({"1"}));
  EXPECT_EQ(ErrorOf("SELECT dbo.down(32)"), 217);
  EXPECT_EQ(Rows("INSERT t OUTPUT inserted.a SELECT 9, dbo.down(1)"), Lines({"17"}));
}

TEST_F(FunctionTablesTest, FunctionsThatCallEachOther) {
  Must("CREATE FUNCTION ping (@n INT) RETURNS INT AS BEGIN RETURN @n END");
  Must("CREATE FUNCTION pong (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (a INT) INSERT @x VALUES (@n)"
       " IF @n > 0 INSERT @x VALUES (dbo.ping(@n - 1)) RETURN (SELECT SUM(a) FROM @x) END");
  Must("ALTER FUNCTION ping (@n INT) RETURNS INT AS BEGIN IF @n <= 0 RETURN 100 RETURN dbo.pong(@n - 1) END");
  // pong(4) = 4 + ping(3) = 4 + pong(2) = 4 + 2 + ping(1) = 6 + pong(0) = 6
  EXPECT_EQ(Rows("SELECT dbo.pong(4), dbo.pong(3), (SELECT MAX(a) FROM t)"), Lines({"6|104|20"}));
}

TEST_F(FunctionTablesTest, ARollbackTakesTheTablesAway) {
  const Output output =
      Run("SET NOCOUNT ON BEGIN TRAN DELETE t WHERE id = 3 SELECT v FROM dbo.upto(1) ROLLBACK"
          " SELECT v FROM dbo.upto(3) SELECT COUNT(*) FROM t");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"10"}, {"10", "20", "NULL"}, {"3"}}));
  Must("BEGIN TRAN SAVE TRAN s");
  Must("CREATE FUNCTION late (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (a INT) INSERT @x VALUES (@n)"
       " RETURN (SELECT a FROM @x) END");
  EXPECT_EQ(Scalar("dbo.late(1)"), "1");
  Must("ROLLBACK TRAN s");
  EXPECT_EQ(ErrorOf("SELECT dbo.late(1)"), 4121);
  EXPECT_EQ(Scalar("dbo.one(1)"), "1");
  Must("COMMIT");
  EXPECT_EQ(Scalar("dbo.one(2)"), "2");
}

TEST_F(FunctionTablesTest, AFunctionChanges) {
  EXPECT_EQ(Scalar("dbo.one(5)"), "5");
  Must(
      "ALTER FUNCTION one (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (b INT, c INT) INSERT @x VALUES (@n, 2)"
      " RETURN (SELECT b * c FROM @x) END");
  EXPECT_EQ(Rows("SELECT v FROM dbo.upto(2)"), Lines({"20", "40"}));
  Must("BEGIN TRAN");
  Must("ALTER FUNCTION one (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (a INT) INSERT @x VALUES (3)"
       " RETURN (SELECT a FROM @x) END");
  EXPECT_EQ(Scalar("dbo.one(5)"), "3");
  Must("ROLLBACK");
  EXPECT_EQ(Scalar("dbo.one(5)"), "10");
  Must("DROP FUNCTION one");
  EXPECT_EQ(ErrorOf("SELECT v FROM dbo.upto(2)"), 4121);
}

// What a function's body refers to may be made later than the function.
TEST_F(FunctionTablesTest, ABodyIsBoundAgain) {
  Must("CREATE FUNCTION late () RETURNS INT AS BEGIN DECLARE @x TABLE (a INT)"
       " INSERT @x SELECT dbo.missing(a) FROM nothing RETURN (SELECT SUM(a) FROM @x) END");
  EXPECT_EQ(ErrorOf("SELECT dbo.late()"), 208);
  Must("CREATE TABLE nothing (a INT) INSERT nothing VALUES (4)");
  EXPECT_EQ(ErrorOf("SELECT dbo.late()"), 4121);
  Must(
      "CREATE FUNCTION missing (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (a INT) INSERT @x VALUES (@n + 1)"
      " RETURN (SELECT a FROM @x) END");
  EXPECT_EQ(Rows("SELECT dbo.late(), (SELECT COUNT(*) FROM t)"), Lines({"5|3"}));
}

TEST_F(FunctionTablesTest, AllChangesOfTableVariables) {
  Must("CREATE FUNCTION work (@n INT) RETURNS @r TABLE (k INT PRIMARY KEY, v INT) AS BEGIN"
       " DECLARE @u TABLE (k INT PRIMARY KEY, v INT IDENTITY(5,1))"
       " INSERT @u (k) OUTPUT inserted.k, inserted.v INTO @r SELECT id FROM t WHERE id <= @n"
       " UPDATE @u SET k = 3 - k" // moves the keys from row to row
       " DELETE @r OUTPUT deleted.k, 10 * deleted.v INTO @r (k, v) WHERE k = 1"
       " INSERT @r SELECT k + 100, v FROM @u RETURN END");
  EXPECT_EQ(Rows("SELECT k, v FROM dbo.work(2) ORDER BY k"), Lines({"1|50", "2|6", "101|6", "102|5"}));
  EXPECT_EQ(
      Rows("SELECT x.id, y.v FROM t x OUTER APPLY dbo.work(x.id) y WHERE y.k >= 100 ORDER BY x.id, y.k"),
      Lines({"1|5", "2|6", "2|5", "3|7", "3|6", "3|5"}));
  EXPECT_EQ(ErrorOf("CREATE FUNCTION bad () RETURNS INT AS BEGIN DECLARE @x TABLE (a INT)"
                    " INSERT @x OUTPUT inserted.a VALUES (1) RETURN 1 END"),
            444);
  EXPECT_EQ(ErrorOf("CREATE FUNCTION bad () RETURNS INT AS BEGIN DECLARE @x TABLE (a INT)"
                    " INSERT @x OUTPUT inserted.a INTO log (id) VALUES (1) RETURN 1 END"),
            443);
}

TEST_F(FunctionTablesTest, AFailureLeavesNothing) {
  Must("CREATE FUNCTION part (@n INT) RETURNS INT AS BEGIN DECLARE @x TABLE (a INT PRIMARY KEY)"
       " INSERT @x VALUES (1) INSERT @x VALUES (@n) RETURN (SELECT COUNT(*) FROM @x) END");
  EXPECT_EQ(ErrorOf("SELECT dbo.part(1)"), 2627);
  EXPECT_EQ(ErrorOf("INSERT log SELECT id, dbo.part(4 - id) FROM t ORDER BY id"), 2627);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM log"), Lines({"0"}));
  EXPECT_EQ(Scalar("dbo.part(2)"), "2");
}

} // namespace
} // namespace tsql::test
