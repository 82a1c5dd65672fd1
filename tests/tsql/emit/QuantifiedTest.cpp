// Comparisons with ALL, ANY and SOME of a query: true, false and unknown.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class QuantifiedTest : public EngineTest {
 protected:
  QuantifiedTest() {
    Must(
        "CREATE TABLE t (a INT, s VARCHAR(5)) INSERT INTO t VALUES (1, 'a'), (2, 'B'), (3, 'c'), (NULL, NULL)");
    Must("CREATE TABLE n (a INT) CREATE TABLE two (a INT) INSERT INTO two VALUES (1), (2)");
    Must("CREATE TABLE holes (a INT) INSERT INTO holes VALUES (2), (NULL)");
  }
  // What the condition is: true, false or unknown.
  std::string Truth(const std::string& condition) {
    return Scalar("CASE WHEN " + condition + " THEN 'true' WHEN NOT (" + condition +
                  ") THEN 'false' ELSE 'unknown' END");
  }
};

TEST_F(QuantifiedTest, AllHoldsForEachRow) {
  EXPECT_EQ(Truth("3 > ALL (SELECT a FROM two)"), "true");
  EXPECT_EQ(Truth("2 > ALL (SELECT a FROM two)"), "false");
  EXPECT_EQ(Truth("2 >= ALL (SELECT a FROM two)"), "true");
  EXPECT_EQ(Truth("3 <> ALL (SELECT a FROM two)"), "true");
  EXPECT_EQ(Truth("2 <> ALL (SELECT a FROM two)"), "false");
  EXPECT_EQ(Truth("1 = ALL (SELECT a FROM two)"), "false");
  EXPECT_EQ(Truth("0 !> ALL (SELECT a FROM two)"), "true");
}

TEST_F(QuantifiedTest, AnyAndSomeHoldForOneRow) {
  EXPECT_EQ(Truth("1 = ANY (SELECT a FROM two)"), "true");
  EXPECT_EQ(Truth("2 < ANY (SELECT a FROM two)"), "false");
  EXPECT_EQ(Truth("1 < SOME (SELECT a FROM two)"), "true");
  EXPECT_EQ(Truth("1 <> ANY (SELECT a FROM two)"), "true");
  EXPECT_EQ(Truth("9 = SOME (SELECT a FROM two)"), "false");
}

TEST_F(QuantifiedTest, NoRows) {
  EXPECT_EQ(Truth("1 > ALL (SELECT a FROM n)"), "true");
  EXPECT_EQ(Truth("NULL > ALL (SELECT a FROM n)"), "true");
  EXPECT_EQ(Truth("1 = ANY (SELECT a FROM n)"), "false");
  EXPECT_EQ(Truth("NULL = ANY (SELECT a FROM n)"), "false");
}

TEST_F(QuantifiedTest, NullMakesItUnknownUnlessARowDecides) {
  EXPECT_EQ(Truth("3 > ALL (SELECT a FROM holes)"), "unknown");
  EXPECT_EQ(Truth("1 > ALL (SELECT a FROM holes)"), "false");
  EXPECT_EQ(Truth("2 = ANY (SELECT a FROM holes)"), "true");
  EXPECT_EQ(Truth("3 = ANY (SELECT a FROM holes)"), "unknown");
  EXPECT_EQ(Truth("NULL = ANY (SELECT a FROM two)"), "unknown");
  EXPECT_EQ(Truth("NULL <> ALL (SELECT a FROM two)"), "unknown");
}

TEST_F(QuantifiedTest, RowsOfAnOuterQuery) {
  EXPECT_EQ(Rows("SELECT a FROM t WHERE a >= ALL (SELECT a FROM two) ORDER BY a"), Lines({"2", "3"}));
  EXPECT_EQ(Rows("SELECT a FROM t WHERE NOT a = ANY (SELECT a FROM two) ORDER BY a"), Lines({"3"}));
  EXPECT_EQ(
      Rows(
          "SELECT x.a FROM t x WHERE x.a > ALL (SELECT y.a FROM t y WHERE y.a <> x.a AND y.a < 3) ORDER BY 1"),
      Lines({"NULL", "2", "3"})); // for NULL, the query has no rows
}

TEST_F(QuantifiedTest, WithAggregates) {
  EXPECT_EQ(
      Rows(
          "SELECT s FROM t GROUP BY s HAVING MAX(a) >= ALL (SELECT MAX(a) FROM t GROUP BY s HAVING MAX(a) > 0)"),
      Lines({"c"}));
  EXPECT_EQ(Rows("SELECT s FROM t WHERE a > ALL (SELECT AVG(a) FROM t)"), Lines({"c"}));
}

TEST_F(QuantifiedTest, TextsAndTypes) {
  EXPECT_EQ(Truth("'b' = ANY (SELECT s FROM t)"), "true");
  EXPECT_EQ(Truth("'c ' >= ALL (SELECT s FROM t WHERE s IS NOT NULL)"), "true");
  EXPECT_EQ(Truth("2.5 > ALL (SELECT a FROM two)"), "true");
  EXPECT_EQ(Truth("'2' = ANY (SELECT a FROM two)"), "true");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE 2 = ANY (SELECT 1 UNION ALL SELECT 2)"), Lines({"4"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE 2 = ANY (SELECT TOP 1 a FROM two ORDER BY a)"), Lines({"0"}));
}

TEST_F(QuantifiedTest, Errors) {
  EXPECT_EQ(ErrorOf("SELECT a FROM t WHERE a > ALL (SELECT a, a FROM two)"), 116);
  EXPECT_EQ(ErrorOf("SELECT a FROM t WHERE a > ALL (1, 2)"), 102);
  EXPECT_EQ(ErrorOf("SELECT a FROM t WHERE a > ALL (SELECT missing FROM two)"), 207);
  EXPECT_EQ(ErrorOf("SELECT a FROM t WHERE a = ANY (SELECT s FROM t)"), 245);
}

TEST_F(QuantifiedTest, InAChangeAndACondition) {
  EXPECT_EQ(Run("IF 3 > ALL (SELECT a FROM two) PRINT 'yes'").messages, Lines({"yes"}));
  Must("DELETE FROM t WHERE a <> ALL (SELECT a FROM two)");
  EXPECT_EQ(Rows("SELECT a FROM t ORDER BY a"), Lines({"NULL", "1", "2"}));
}

} // namespace
} // namespace tsql::test
