// STDEV, STDEVP, VAR and VARP: of groups, of different values, and of windows.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SpreadTest : public EngineTest {
 protected:
  void SetUp() override {
    Must(
        "CREATE TABLE t (k INT, n DECIMAL(9,2) NULL)"
        " INSERT INTO t VALUES (1, 2), (1, 4), (1, 4), (1, 4), (1, 5), (1, 5), (1, 7), (1, 9), (1, NULL), (2, 3), (3, NULL)");
  }
};

TEST_F(SpreadTest, OfASampleAndOfAPopulation) {
  EXPECT_EQ(
      Rows(
          "SELECT k, STDEVP(n), VARP(n), ROUND(VAR(n), 12), ROUND(STDEV(n), 12) FROM t GROUP BY k ORDER BY k"),
      Lines({"1|2|4|4.571428571429|2.138089935299", "2|0|0|NULL|NULL", "3|NULL|NULL|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT VARP(DISTINCT n), COUNT(DISTINCT n) FROM t WHERE k = 1 AND n IN (2, 4)"),
            Lines({"1|2"}));
  EXPECT_EQ(Rows("SELECT STDEV(n) FROM t WHERE k > 9"), Lines({"NULL"}));
  // Far from zero nothing of the spread is lost.
  EXPECT_EQ(Rows("SELECT VAR(x) FROM (VALUES (1000000001.0), (1000000002.0), (1000000003.0)) v (x)"),
            Lines({"1"}));
}

TEST_F(SpreadTest, OfAWindow) {
  Must("CREATE TABLE w (i INT, n INT) INSERT INTO w VALUES (1, 1), (2, 3), (3, 5), (4, 5)");
  EXPECT_EQ(Rows("SELECT i, VARP(n) OVER (ORDER BY i ROWS BETWEEN 1 PRECEDING AND CURRENT ROW),"
                 " VAR(n) OVER (PARTITION BY n) FROM w ORDER BY i"),
            Lines({"1|0|NULL", "2|1|NULL", "3|1|0", "4|0|0"}));
}

TEST_F(SpreadTest, WhatHasNone) {
  EXPECT_EQ(ErrorText("SELECT STDEV(x) FROM (SELECT 'a' AS x) y"),
            "8117 1 Operand data type varchar is invalid for stdev operator.");
  EXPECT_EQ(ErrorOf("SELECT VAR(CAST(1 AS BIT))"), 8117);
  EXPECT_EQ(ErrorOf("SELECT VARP(1, 2)"), 174);
  EXPECT_EQ(ErrorOf("SELECT STDEVP(*) FROM t"), 102);
}

} // namespace
} // namespace tsql::test
