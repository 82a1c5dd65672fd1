// What a recursive common table expression may and may not contain.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class RecursionTest : public EngineTest {
 protected:
  // The error of an expression n(c) with this recursive member.
  int ErrorOfMember(const std::string& member) {
    return ErrorOf("WITH n(c) AS (SELECT 1 UNION ALL " + member + ") SELECT c FROM n");
  }
};

TEST_F(RecursionTest, AMemberReadsTheRowsBefore) {
  EXPECT_EQ(Rows("WITH n(c) AS (SELECT 1 UNION ALL SELECT c + 1 FROM n WHERE c < 3) SELECT c FROM n"),
            Lines({"1", "2", "3"}));
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (10)");
  EXPECT_EQ(
      Rows("WITH n(c) AS (SELECT 1 UNION ALL SELECT n.c + t.a FROM t JOIN n ON n.c < t.a) SELECT c FROM n"),
      Lines({"1", "11"}));
  EXPECT_EQ(Rows("WITH n(c) AS (SELECT 1 UNION ALL SELECT 5 UNION ALL SELECT c + 1 FROM n WHERE c < 2) "
                 "SELECT c FROM n ORDER BY c"),
            Lines({"1", "2", "5"}));
}

TEST_F(RecursionTest, TheTypesOfTheMembersAreTheSame) {
  EXPECT_EQ(
      ErrorText("WITH n(c) AS (SELECT 1 UNION ALL SELECT c + 1.5 FROM n WHERE c < 5) SELECT * FROM n"),
      "240 1 Types don't match between the anchor and the recursive part in column \"c\" of recursive query "
      "\"n\".");
  // A text that grows needs a CAST to the length of the first.
  EXPECT_EQ(
      ErrorOf("WITH n(i, c) AS (SELECT 1, CAST('a' AS VARCHAR(9)) UNION ALL SELECT i + 1, c + 'b' FROM n "
              "WHERE i < 3) SELECT c FROM n"),
      240);
  EXPECT_EQ(Rows("WITH n(i, c) AS (SELECT 1, CAST('a' AS VARCHAR(9)) UNION ALL SELECT i + 1, CAST(c + 'b' AS "
                 "VARCHAR(9)) FROM n WHERE i < 3) SELECT c FROM n"),
            Lines({"a", "ab", "abb"}));
}

TEST_F(RecursionTest, AReferenceInASubqueryIsRefused) {
  EXPECT_EQ(ErrorOfMember("SELECT 2 WHERE EXISTS (SELECT c FROM n)"), 465);
  EXPECT_EQ(ErrorOfMember("SELECT (SELECT MAX(c) FROM n) + 1"), 465);
  EXPECT_EQ(ErrorOfMember("SELECT c + 1 FROM n WHERE c IN (SELECT c FROM n)"), 465);
}

TEST_F(RecursionTest, AReferenceInADerivedTableIsRefusedByName) {
  EXPECT_EQ(ErrorText("WITH n(c) AS (SELECT 1 UNION ALL SELECT c + 1 FROM (SELECT c FROM n) x WHERE c < 5) "
                      "SELECT * FROM n"),
            "40510 1 A recursive reference within a derived table is not supported.");
}

TEST_F(RecursionTest, WhatTheServerForbidsInAMember) {
  EXPECT_EQ(ErrorOfMember("SELECT DISTINCT c FROM n"), 460);
  EXPECT_EQ(ErrorOfMember("SELECT TOP 1 c FROM n"), 461);
  EXPECT_EQ(ErrorOfMember("SELECT n.c FROM n LEFT JOIN (SELECT 1 AS b) x ON x.b = n.c"), 462);
  EXPECT_EQ(ErrorOfMember("SELECT MAX(c) FROM n"), 467);
  EXPECT_EQ(ErrorOfMember("SELECT c FROM n GROUP BY c"), 467);
  EXPECT_EQ(
      ErrorText(
          "WITH n(c) AS (SELECT 1 UNION ALL SELECT a.c FROM n a JOIN n b ON a.c = b.c) SELECT c FROM n"),
      "253 1 Recursive member of a common table expression 'n' has multiple recursive references.");
  EXPECT_EQ(ErrorOfMember("(SELECT c FROM n UNION ALL SELECT c FROM n)"), 40510);
  EXPECT_EQ(ErrorOfMember("SELECT c + 1 FROM n WHERE c < 3 UNION ALL SELECT c + 2 FROM n WHERE c < 3"),
            40510);
}

TEST_F(RecursionTest, TheNameMeansTheExpressionAndNoTable) {
  Must("CREATE TABLE n (c INT) INSERT INTO n VALUES (7)");
  EXPECT_EQ(ErrorText("WITH n AS (SELECT c FROM n) SELECT c FROM n"),
            "252 1 Recursive common table expression 'n' does not contain a top-level UNION ALL operator.");
  EXPECT_EQ(ErrorOf("WITH n(c) AS (SELECT 1 UNION SELECT c + 1 FROM n) SELECT c FROM n"), 252);
  EXPECT_EQ(ErrorOf("WITH n(c) AS (SELECT c FROM n UNION ALL SELECT 1) SELECT c FROM n"), 246);
  EXPECT_EQ(Rows("WITH n AS (SELECT c + 1 AS c FROM dbo.n) SELECT c FROM n"), Lines({"8"}));
  EXPECT_EQ(ErrorOf("WITH m AS (SELECT 1 AS a), m AS (SELECT 2 AS a) SELECT a FROM m"), 239);
  // Nothing is changed in the table that has the name of the expression.
  EXPECT_EQ(ErrorOf("WITH n AS (SELECT 1 AS c) UPDATE n SET c = 0"), 40510);
  EXPECT_EQ(Rows("SELECT c FROM n"), Lines({"7"}));
}

TEST_F(RecursionTest, TheStatementSaysHowDeepItMayGo) {
  const std::string counting =
      "WITH n (c) AS (SELECT 1 UNION ALL SELECT c + 1 FROM n WHERE c < 200) SELECT MAX(c) FROM n ";
  EXPECT_EQ(Rows(counting + "OPTION (MAXRECURSION 200)"), Lines({"200"}));
  EXPECT_EQ(Rows(counting + "OPTION (RECOMPILE, MAXRECURSION 0)"), Lines({"200"}));
  EXPECT_EQ(ErrorText(counting + "OPTION (MAXRECURSION 10)"),
            "530 1 The statement terminated. The maximum recursion 10 has been exhausted before statement "
            "completion.");
  EXPECT_EQ(
      ErrorText(counting + "OPTION (MAXRECURSION 40000)"),
      "310 1 The value 40000 specified for the MAXRECURSION option exceeds the allowed maximum of 32767.");
  Must("CREATE TABLE r (c INT) INSERT INTO r VALUES (1), (150)");
  EXPECT_EQ(
      Run("WITH n (c) AS (SELECT 1 UNION ALL SELECT c + 1 FROM n WHERE c < 200) DELETE FROM r WHERE c IN "
          "(SELECT c FROM n) OPTION (MAXRECURSION 300)")
          .counts,
      std::vector<int64_t>({2}));
}

} // namespace
} // namespace tsql::test
