// Variables that a changing statement or a query assigns row by row.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class AssignedVariablesTest : public EngineTest {
 protected:
  AssignedVariablesTest() {
    Must("CREATE TABLE t (id INT NOT NULL PRIMARY KEY, a INT, s VARCHAR(10)) "
         "INSERT INTO t VALUES (1, 10, 'x'), (2, 20, 'y'), (3, NULL, 'z')");
  }
  Lines Table() { return Rows("SELECT id, a, s FROM t ORDER BY id"); }
};

TEST_F(AssignedVariablesTest, ACompoundAssignmentReadsTheColumnItself) {
  Must("CREATE TABLE x (id INT, n INT) CREATE TABLE y (id INT, n INT)"
       " INSERT INTO x VALUES (1, 10) INSERT INTO y VALUES (1, 5)");
  EXPECT_EQ(Rows("SET NOCOUNT ON UPDATE x SET n += y.n FROM x JOIN y ON y.id = x.id SELECT n FROM x"),
            Lines({"15"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON UPDATE z SET z.n -= y.n FROM x z JOIN y ON y.id = z.id SELECT n FROM x"),
            Lines({"10"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON;WITH c AS (SELECT n AS m, id FROM x) UPDATE c SET m *= y.n FROM c"
                 " JOIN (SELECT id, n, 3 AS m FROM y) y ON y.id = c.id SELECT n FROM x"),
            Lines({"50"}));
  EXPECT_EQ(ErrorOf("UPDATE x SET n = n + y.n FROM x JOIN y ON y.id = x.id"), 209);
}

TEST_F(AssignedVariablesTest, SelectHasCompoundAssignments) {
  EXPECT_EQ(Rows("DECLARE @n INT = 1 SELECT @n += id FROM t SELECT @n"), Lines({"7"}));
  EXPECT_EQ(Rows("DECLARE @n INT = 2 SELECT @n *= id FROM t SELECT @n"), Lines({"12"}));
  EXPECT_EQ(Rows("DECLARE @s VARCHAR(20) = '' SELECT @s += s + ',' FROM t SELECT @s"), Lines({"x,y,z,"}));
  EXPECT_EQ(Rows("DECLARE @n INT = 6 SELECT @n -= 1 SELECT @n |= 8 SELECT @n /= 2 SELECT @n"), Lines({"6"}));
  EXPECT_EQ(ErrorOf("DECLARE @n INT SELECT @n += 1, 2"), 141);
  EXPECT_EQ(ErrorOf("SELECT @missing += 1"), 137);
}

TEST_F(AssignedVariablesTest, ATextIsJoinedInTheOrderOfTheRows) {
  EXPECT_EQ(Rows("DECLARE @s VARCHAR(20) = '' SELECT @s = @s + s FROM t ORDER BY id DESC SELECT @s"),
            Lines({"zyx"}));
  EXPECT_EQ(Rows("DECLARE @s VARCHAR(20) = '' SELECT @s += s FROM t ORDER BY s DESC SELECT @s"),
            Lines({"zyx"}));
}

TEST_F(AssignedVariablesTest, SortedRowsAreReadOneByOne) {
  const std::string declare = "DECLARE @s VARCHAR(50) = '', @n INT = 0, @last INT ";
  EXPECT_EQ(Rows(declare + "SELECT TOP 2 @s = @s + s + ',' FROM t ORDER BY s DESC SELECT @s"),
            Lines({"z,y,"}));
  EXPECT_EQ(Rows(declare + "SELECT @s += s FROM t ORDER BY s DESC OFFSET 1 ROWS SELECT @s"), Lines({"yx"}));
  EXPECT_EQ(Rows(declare + "SELECT @n += 1, @s += s, @last = id FROM t "
                           "ORDER BY 3 DESC SELECT @n, @s, @last"),
            Lines({"3|zyx|1"}));
  EXPECT_EQ(Rows(declare + "SELECT @n = @n + 1 FROM t ORDER BY s SELECT @n"), Lines({"3"}));
  EXPECT_EQ(Rows(declare + "SELECT @s = @s + CASE WHEN a IS NULL THEN '-' ELSE STR(100 / a, 2) END FROM t "
                           "ORDER BY s DESC SELECT @s"),
            Lines({"- 510"}));
  EXPECT_EQ(Rows(declare +
                 "SELECT @s = @s + CAST(SUM(id) AS VARCHAR(5)) + s FROM t GROUP BY s ORDER BY SUM(id) DESC "
                 "SELECT @s"),
            Lines({"3z2y1x"}));
  EXPECT_EQ(
      Rows(declare + "SELECT @s += (SELECT x.s FROM t x WHERE x.id = t.id) FROM t ORDER BY s DESC SELECT @s"),
      Lines({"zyx"}));
  EXPECT_EQ(Rows(declare + "; WITH c AS (SELECT s FROM t) SELECT @s += s FROM c ORDER BY s DESC SELECT @s"),
            Lines({"zyx"}));
}

TEST_F(AssignedVariablesTest, UpdateGivesTheNewValueOfTheColumn) {
  EXPECT_EQ(Rows("DECLARE @v INT SET NOCOUNT ON UPDATE t SET @v = a = a + 1 WHERE id = 1 SELECT @v"),
            Lines({"11"}));
  EXPECT_EQ(Table(), Lines({"1|11|x", "2|20|y", "3|NULL|z"}));
  EXPECT_EQ(Rows("DECLARE @v INT UPDATE t SET @v = t.a += 5 WHERE id = 1 SELECT @v"), Lines({"16"}));
}

TEST_F(AssignedVariablesTest, UpdateGivesTheOldValueBesideTheColumn) {
  EXPECT_EQ(Rows("DECLARE @v INT UPDATE t SET @v = a, a = a + 1 WHERE id = 2 SELECT @v"), Lines({"20"}));
  EXPECT_EQ(Rows("DECLARE @v INT UPDATE t SET a = a + 1, @v = a WHERE id = 2 SELECT @v"), Lines({"21"}));
  EXPECT_EQ(Table(), Lines({"1|10|x", "2|22|y", "3|NULL|z"}));
}

TEST_F(AssignedVariablesTest, EachRowReadsWhatTheRowBeforeAssigned) {
  Must("DECLARE @n INT = 100 UPDATE t SET @n = a = @n + 1");
  EXPECT_EQ(Table(), Lines({"1|101|x", "2|102|y", "3|103|z"}));
  EXPECT_EQ(
      Rows("DECLARE @n INT = 0 UPDATE t SET s = CAST(@n AS VARCHAR(5)), @n = @n + 10, a = @n SELECT @n"),
      Lines({"30"}));
  EXPECT_EQ(Rows("SELECT id, a FROM t ORDER BY id"), Lines({"1|10", "2|20", "3|30"}));
}

TEST_F(AssignedVariablesTest, VariablesAloneChangeNoRow) {
  const Output output =
      Run("DECLARE @n INT = 0, @s VARCHAR(9) = '' UPDATE t SET @n += id, @s += s WHERE id > 1"
          " SELECT @n, @s, @@ROWCOUNT");
  EXPECT_EQ(output.results, std::vector<Lines>({{"5|yz|2"}}));
  EXPECT_EQ(output.counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Table(), Lines({"1|10|x", "2|20|y", "3|NULL|z"}));
}

TEST_F(AssignedVariablesTest, VariablesAloneOfATableWithAnIdentityOrAViewWithATrigger) {
  Must(
      "CREATE TABLE i (id INT IDENTITY(1,1), b AS id * 2) INSERT INTO i DEFAULT VALUES INSERT INTO i DEFAULT VALUES");
  EXPECT_EQ(Rows("DECLARE @n INT = 0 UPDATE i SET @n += b SELECT @n"), Lines({"6"}));
  Must("CREATE VIEW v AS SELECT id, a FROM t");
  Must("CREATE TRIGGER on_v ON v INSTEAD OF UPDATE AS IF UPDATE(id) PRINT 'id' IF UPDATE(a) PRINT 'a'");
  const Output output = Run("DECLARE @n INT = 0 UPDATE v SET @n += id UPDATE v SET @n = a = 1 PRINT @n");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.messages, Lines({"a", "1"}));
}

TEST_F(AssignedVariablesTest, NoRowAssignsNothing) {
  EXPECT_EQ(Rows("DECLARE @v INT = 9 UPDATE t SET @v = a = 1 WHERE id = 7 SELECT @v"), Lines({"9"}));
}

TEST_F(AssignedVariablesTest, TheVariableGetsTheValueInItsOwnType) {
  EXPECT_EQ(Rows("DECLARE @v VARCHAR(1) UPDATE t SET @v = a = 57 WHERE id = 1 SELECT @v"), Lines({"*"}));
  EXPECT_EQ(Rows("DECLARE @v DECIMAL(9,2) UPDATE t SET @v = a = 5.7 WHERE id = 1 SELECT @v, a FROM t "
                 "WHERE id = 1"),
            Lines({"5.00|5"}));
  EXPECT_EQ(Rows("DECLARE @v INT = 1 UPDATE t SET @v = a = NULL WHERE id = 1 SELECT @v"), Lines({"NULL"}));
}

TEST_F(AssignedVariablesTest, ErrorsOfVariables) {
  EXPECT_EQ(ErrorOf("UPDATE t SET @missing = a = 1"), 137);
  EXPECT_EQ(ErrorOf("UPDATE t SET @missing = 1"), 137);
  EXPECT_EQ(ErrorOf("DECLARE @v INT UPDATE t SET @v = b = 1"), 207);
  EXPECT_EQ(ErrorOf("DECLARE @v INT UPDATE t SET @v = a = 1, a = 2"), 264);
  EXPECT_EQ(ErrorOf("DECLARE @v TINYINT UPDATE t SET @v = a = 256 WHERE id = 1"), 220);
  EXPECT_EQ(Table(), Lines({"1|10|x", "2|20|y", "3|NULL|z"}));
}

TEST_F(AssignedVariablesTest, WithAJoinTopAndOutput) {
  Must("CREATE TABLE u (id INT, n INT) INSERT INTO u VALUES (1, 5), (2, 6)");
  EXPECT_EQ(Rows("DECLARE @v INT = 0 UPDATE t SET @v += u.n, a = u.n FROM t JOIN u ON t.id = u.id SELECT @v"),
            Lines({"11"}));
  EXPECT_EQ(
      Rows("DECLARE @v INT = 0 UPDATE t SET @v += 1, a = u.n FROM t LEFT JOIN u ON t.id = u.id SELECT @v"),
      Lines({"3"}));
  EXPECT_EQ(Rows("DECLARE @v INT = 0 UPDATE TOP (2) t SET @v += 1 SELECT @v"), Lines({"2"}));
  const Output output =
      Run("DECLARE @n INT = 0 UPDATE t SET @n = a = @n + 1 OUTPUT inserted.a, deleted.a SELECT @n");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"1|5", "2|6", "3|NULL"}, {"3"}}));
}

TEST_F(AssignedVariablesTest, AKeyThatMovesIsCountedOnce) {
  EXPECT_EQ(Rows("DECLARE @n INT = 1 UPDATE t SET @n = id = @n + 1 SELECT @n"), Lines({"4"}));
  EXPECT_EQ(Rows("SELECT id, s FROM t ORDER BY id"), Lines({"2|x", "3|y", "4|z"}));
}

TEST_F(AssignedVariablesTest, ATriggerHasVariablesOfItsOwn) {
  Must("CREATE TABLE seen (a INT, n INT)");
  Must("CREATE TRIGGER on_t ON t FOR UPDATE AS DECLARE @n INT = 50 UPDATE seen SET @n = 1 "
       "INSERT INTO seen SELECT a, @n FROM inserted");
  EXPECT_EQ(Rows("DECLARE @n INT = 0 SET NOCOUNT ON UPDATE t SET @n = a = @n + 1 SELECT @n"), Lines({"3"}));
  EXPECT_EQ(Rows("SELECT a, n FROM seen ORDER BY a"), Lines({"1|50", "2|50", "3|50"}));
}

TEST_F(AssignedVariablesTest, AProcedureDoesItAgain) {
  Must("CREATE PROCEDURE p @start INT OUTPUT AS UPDATE t SET @start = a = @start + 1");
  EXPECT_EQ(Rows("DECLARE @n INT = 0 EXEC p @n OUTPUT EXEC p @n OUTPUT SELECT @n"), Lines({"6"}));
  EXPECT_EQ(Table(), Lines({"1|4|x", "2|5|y", "3|6|z"}));
}

} // namespace
} // namespace tsql::test
