// PIVOT and UNPIVOT.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class PivotTest : public EngineTest {
 protected:
  void SetUp() override {
    Must(
        "CREATE TABLE sale (item VARCHAR(5), y INT, qty INT NULL, price MONEY NULL)"
        " INSERT INTO sale VALUES ('a', 2019, 1, 10), ('a', 2020, 2, 20), ('a', 2020, 3, NULL), ('b', 2020, 4, 40),"
        " ('c', 2018, NULL, 5)"
        " CREATE TABLE wide (id INT, q1 INT NULL, q2 INT NULL, q3 SMALLINT NULL)"
        " INSERT INTO wide VALUES (1, 10, NULL, 1), (2, 20, 21, 2)");
  }
};

TEST_F(PivotTest, AggregatesBecomeColumns) {
  EXPECT_EQ(
      Rows(
          "SELECT * FROM (SELECT item, y, qty FROM sale) AS s PIVOT (SUM(qty) FOR y IN ([2019], [2020])) AS p"
          " ORDER BY item"),
      Lines({"a|1|5", "b|NULL|4", "c|NULL|NULL"}));
  EXPECT_EQ(
      Rows("SELECT item, [2020] FROM (SELECT item, y, qty FROM sale) s PIVOT (COUNT(qty) FOR y IN ([2020]))"
           " p WHERE [2020] > 0 ORDER BY 2 DESC"),
      Lines({"a|2", "b|1"}));
  EXPECT_EQ(
      Rows("SELECT p.b, p.a FROM (SELECT item, qty FROM sale) s PIVOT (MAX(qty) FOR s.item IN (a, b)) p"),
      Lines({"4|3"}));
  const Output output =
      Run("SELECT * FROM (SELECT y, item, qty FROM sale) s PIVOT (AVG(qty) FOR item IN (a, [b])) p");
  ASSERT_EQ(output.columns.size(), 1U);
  EXPECT_EQ(output.columns[0][0].name, "y");
  EXPECT_EQ(output.columns[0][1].name, "a");
  EXPECT_EQ(output.columns[0][2].name, "b");
  EXPECT_EQ(output.columns[0][2].type.id, TypeId::Int);
}

TEST_F(PivotTest, WhatIsLeftOfTheSourceIsGroupedBy) {
  // The price is one of the columns, so that rows with different prices stay apart.
  EXPECT_EQ(
      Rows(
          "SELECT item, price, [2020] FROM sale PIVOT (SUM(qty) FOR y IN ([2020])) AS p ORDER BY item, price"),
      Lines({"a|NULL|3", "a|10.0000|NULL", "a|20.0000|2", "b|40.0000|4", "c|5.0000|NULL"}));
  EXPECT_EQ(
      Rows("SELECT COUNT(*) FROM sale AS s PIVOT (SUM(qty) FOR y IN ([2020])) AS p JOIN wide w ON w.id = 1"),
      Lines({"5"}));
}

TEST_F(PivotTest, ColumnsBecomeRows) {
  EXPECT_EQ(Rows("SELECT * FROM (SELECT id, q1, q2 FROM wide) w UNPIVOT (n FOR quarter IN (q1, q2)) AS u"
                 " ORDER BY id, quarter"),
            Lines({"1|10|q1", "2|20|q1", "2|21|q2"}));
  EXPECT_EQ(Rows("SELECT u.quarter, u.q3, SUM(u.n) FROM wide UNPIVOT (n FOR quarter IN (q1, [q2])) u"
                 " WHERE q3 = 2 GROUP BY u.quarter, u.q3 ORDER BY 1"),
            Lines({"q1|2|20", "q2|2|21"}));
  // There and back.
  EXPECT_EQ(Rows("SELECT * FROM (SELECT id, q1, q2 FROM wide) w UNPIVOT (n FOR q IN (q1, q2)) u"
                 " PIVOT (MAX(n) FOR q IN (q2, q1)) p ORDER BY id"),
            Lines({"1|NULL|10", "2|21|20"}));
}

TEST_F(PivotTest, InViewsAndChanges) {
  Must(
      "CREATE VIEW v AS SELECT * FROM (SELECT item, y, qty FROM sale) s PIVOT (SUM(qty) FOR y IN ([2020])) p");
  EXPECT_EQ(Rows("SELECT SUM([2020]) FROM v"), Lines({"9"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON SELECT id, n INTO #u FROM wide UNPIVOT (n FOR c IN (q1, q2)) u"
                 " UPDATE wide SET q1 = [2020] FROM v WHERE item = 'b'"
                 " SELECT (SELECT COUNT(*) FROM #u), MIN(q1) FROM wide"),
            Lines({"3|4"}));
}

TEST_F(PivotTest, WhatIsWrittenWrongly) {
  EXPECT_EQ(ErrorOf("SELECT * FROM sale PIVOT (SUM(nothing) FOR y IN ([1])) p"), 207);
  EXPECT_EQ(ErrorOf("SELECT * FROM sale PIVOT (SUM(qty) FOR nothing IN ([1])) p"), 207);
  EXPECT_EQ(
      ErrorText("SELECT * FROM sale PIVOT (SUM(qty) FOR y IN ([item])) p"),
      "265 1 The column name \"item\" specified in the PIVOT operator conflicts with the existing column name "
      "in the PIVOT argument.");
  EXPECT_EQ(
      ErrorText("SELECT * FROM wide UNPIVOT (n FOR c IN (q1, q3)) u"),
      "8167 1 The type of column \"q3\" conflicts with the type of other columns specified in the UNPIVOT "
      "list.");
  EXPECT_EQ(ErrorOf("SELECT * FROM wide UNPIVOT (n FOR c IN (q1, nothing)) u"), 207);
  EXPECT_EQ(ErrorOf("SELECT * FROM sale PIVOT (SUM(qty) FOR y IN ([1]))"), 102);
  EXPECT_EQ(ErrorOf("SELECT * FROM sale PIVOT (SUM(item) FOR y IN ([1])) p"), 8117);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT y, qty FROM sale) s PIVOT (SUM(qty) FOR y IN ([x])) p"), 245);
}

} // namespace
} // namespace tsql::test
