// GROUP BY with ROLLUP, CUBE and GROUPING SETS, and what tells their groups apart.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class GroupingSetsTest : public EngineTest {
 protected:
  GroupingSetsTest() {
    Must("CREATE TABLE s (id INT NOT NULL PRIMARY KEY, area VARCHAR(10) NULL, kind INT NOT NULL, "
         "amount DECIMAL(9,2) NULL)");
    Must("INSERT INTO s VALUES (1, 'north', 1, 10), (2, 'north', 2, 20), (3, 'South', 1, 20), "
         "(4, 'south', 1, 5), (5, 'south', 2, NULL), (6, NULL, 1, 7)");
  }
};

TEST_F(GroupingSetsTest, RollUpLeavesOutFromTheRight) {
  const Lines rolled = {"NULL|1|7.00|1",   "NULL|NULL|7.00|1",   "NORTH|1|10.00|1",
                        "NORTH|2|20.00|1", "NORTH|NULL|30.00|2", "SOUTH|1|25.00|2",
                        "SOUTH|2|NULL|1",  "SOUTH|NULL|25.00|3", "NULL|NULL|62.00|6"};
  const std::string select = "SELECT UPPER(area), kind, SUM(amount), COUNT(*) FROM s GROUP BY ";
  const std::string order = " ORDER BY GROUPING(area), UPPER(area), GROUPING(kind), kind";
  EXPECT_EQ(Rows(select + "ROLLUP (area, kind)" + order), rolled);
  EXPECT_EQ(Rows(select + "area, kind WITH ROLLUP" + order), rolled);
  EXPECT_EQ(Rows(select + "GROUPING SETS ((area, kind), area, ())" + order), rolled);
  EXPECT_EQ(Rows(select + "GROUPING SETS (ROLLUP (area, kind))" + order), rolled);
}

TEST_F(GroupingSetsTest, CubeLeavesOutEveryChoice) {
  const Lines cube = {"0|1|4", "0|2|2", "1|NULL|6"};
  EXPECT_EQ(Rows("SELECT GROUPING(kind), kind, COUNT(*) FROM s GROUP BY CUBE (kind) ORDER BY 1, 2"), cube);
  EXPECT_EQ(
      Rows("SELECT GROUPING_ID(a, b), COUNT(*), SUM(n) FROM (VALUES (1, 1, 10), (1, 2, 20), (2, 2, 40)) "
           "v (a, b, n) GROUP BY a, b WITH CUBE ORDER BY 1, 3"),
      Lines({"0|1|10", "0|1|20", "0|1|40", "1|2|30", "1|1|40", "2|1|10", "2|2|60", "3|3|70"}));
}

TEST_F(GroupingSetsTest, ElementsInParenthesesGoTogether) {
  EXPECT_EQ(
      Rows("SELECT a, b, c, COUNT(*) FROM (SELECT 1 AS a, 2 AS b, 3 AS c) v GROUP BY ROLLUP (a, (b, c)) "
           "ORDER BY GROUPING_ID(a, b, c)"),
      Lines({"1|2|3|1", "1|NULL|NULL|1", "NULL|NULL|NULL|1"}));
  EXPECT_EQ(Rows("SELECT a, b, c, COUNT(*) FROM (SELECT 1 AS a, 2 AS b, 3 AS c) v GROUP BY CUBE ((a, b), c) "
                 "ORDER BY GROUPING_ID(a, b, c)"),
            Lines({"1|2|3|1", "1|2|NULL|1", "NULL|NULL|3|1", "NULL|NULL|NULL|1"}));
}

TEST_F(GroupingSetsTest, ItemsBesideEachOtherAreMultiplied) {
  EXPECT_EQ(Rows("SELECT a, b, c FROM (SELECT 1 AS a, 2 AS b, 3 AS c) v GROUP BY a, ROLLUP (b), CUBE (c) "
                 "ORDER BY GROUPING_ID(a, b, c)"),
            Lines({"1|2|3", "1|2|NULL", "1|NULL|3", "1|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT a, b FROM (SELECT 1 AS a, 2 AS b) v GROUP BY GROUPING SETS (a, b), () ORDER BY a"),
            Lines({"NULL|2", "1|NULL"}));
  EXPECT_EQ(Rows("SELECT a, b, c FROM (SELECT 1 AS a, 2 AS b, 3 AS c) v "
                 "GROUP BY GROUPING SETS ((a, ROLLUP (b)), c) ORDER BY GROUPING_ID(a, b, c)"),
            Lines({"1|2|NULL", "1|NULL|NULL", "NULL|NULL|3"}));
  // A set that stands there twice gives its groups twice.
  EXPECT_EQ(Rows("SELECT kind, COUNT(*) FROM s GROUP BY GROUPING SETS (kind, kind) ORDER BY kind"),
            Lines({"1|4", "1|4", "2|2", "2|2"}));
}

TEST_F(GroupingSetsTest, TheEmptySetIsTheGrandTotal) {
  EXPECT_EQ(Rows("SELECT COUNT(*), SUM(amount) FROM s GROUP BY ()"), Lines({"6|62.00"}));
  EXPECT_EQ(Rows("SELECT 'x' FROM s GROUP BY GROUPING SETS ((), ())"), Lines({"x", "x"}));
  // It is a group though there are no rows.
  EXPECT_EQ(Rows("SELECT COUNT(*), SUM(amount) FROM s WHERE id > 99 GROUP BY ()"), Lines({"0|NULL"}));
  EXPECT_EQ(Rows("SELECT kind FROM s WHERE id > 99 GROUP BY ROLLUP (kind)"), Lines({"NULL"}));
}

TEST_F(GroupingSetsTest, ExpressionsAreFoundAsAWhole) {
  EXPECT_EQ(Rows("SELECT kind + 1, kind, COUNT(*) FROM s GROUP BY GROUPING SETS (kind, kind + 1) "
                 "ORDER BY GROUPING(kind), 2, 1"),
            Lines({"NULL|1|4", "NULL|2|2", "2|NULL|4", "3|NULL|2"}));
  // What is computed of a key that is left out is computed of a null, though the column has none.
  EXPECT_EQ(Rows("SELECT ISNULL(CAST(kind AS VARCHAR(5)), 'all'), CASE WHEN kind IS NULL THEN 1 ELSE 0 END, "
                 "COUNT(*) FROM s GROUP BY kind WITH ROLLUP ORDER BY 1"),
            Lines({"1|0|4", "2|0|2", "all|1|6"}));
  const Output output =
      Run("SELECT kind, COUNT(*), GROUPING(kind), GROUPING_ID(kind) FROM s GROUP BY CUBE (kind)");
  EXPECT_TRUE(output.columns[0][0].nullable);
  EXPECT_EQ(output.columns[0][0].type.id, TypeId::Int);
  EXPECT_EQ(output.columns[0][2].type.id, TypeId::TinyInt);
  EXPECT_EQ(output.columns[0][3].type.id, TypeId::Int);
}

TEST_F(GroupingSetsTest, ClausesSeeTheGroups) {
  EXPECT_EQ(Rows("SELECT kind, COUNT(*) FROM s GROUP BY ROLLUP (kind) HAVING COUNT(*) > 2 ORDER BY 2"),
            Lines({"1|4", "NULL|6"}));
  EXPECT_EQ(Rows("SELECT kind FROM s GROUP BY ROLLUP (kind) HAVING GROUPING(kind) = 1"), Lines({"NULL"}));
  EXPECT_EQ(Rows("SELECT TOP 1 kind, COUNT(*) AS n FROM s GROUP BY ROLLUP (kind) ORDER BY n DESC"),
            Lines({"NULL|6"}));
  EXPECT_EQ(Rows("SELECT DISTINCT GROUPING(kind) AS g FROM s GROUP BY ROLLUP (kind) ORDER BY g"),
            Lines({"0", "1"}));
  EXPECT_EQ(Rows("SELECT kind, RANK() OVER (ORDER BY COUNT(*) DESC), SUM(COUNT(*)) OVER () FROM s "
                 "GROUP BY ROLLUP (kind) ORDER BY 2"),
            Lines({"NULL|1|12", "1|2|12", "2|3|12"}));
  EXPECT_EQ(
      Rows("SELECT kind, (SELECT COUNT(*) FROM s i WHERE i.kind = o.kind) FROM s o GROUP BY ROLLUP (kind) "
           "ORDER BY kind"),
      Lines({"NULL|0", "1|4", "2|2"}));
  EXPECT_EQ(Rows("SELECT kind FROM s GROUP BY kind WITH ROLLUP UNION SELECT 3 ORDER BY 1"),
            Lines({"NULL", "1", "2", "3"}));
  EXPECT_EQ(
      Rows(
          "DECLARE @all VARCHAR(20) SET @all = '' SELECT @all = @all + ISNULL(CAST(kind AS VARCHAR(5)), '*') "
          "FROM s GROUP BY ROLLUP (kind) ORDER BY kind SELECT @all"),
      Lines({"*12"}));
}

TEST_F(GroupingSetsTest, AggregatesOfEveryKind) {
  EXPECT_EQ(
      Rows("SELECT kind, COUNT(DISTINCT area), MAX(amount + id), "
           "STRING_AGG(id, '-') WITHIN GROUP (ORDER BY id DESC) FROM s GROUP BY ROLLUP (kind) ORDER BY kind"),
      Lines({"NULL|2|23.00|6-5-4-3-2-1", "1|2|23.00|6-4-3-1", "2|2|22.00|5-2"}));
}

TEST_F(GroupingSetsTest, WhereverAQueryStands) {
  EXPECT_EQ(Rows("SELECT x.id, z.kind, z.n FROM s x CROSS APPLY (SELECT y.kind, COUNT(*) AS n FROM s y "
                 "WHERE y.area = x.area GROUP BY ROLLUP (y.kind)) z WHERE x.id = 1 ORDER BY z.kind"),
            Lines({"1|NULL|2", "1|1|1", "1|2|1"}));
  EXPECT_EQ(Rows("SELECT id, (SELECT COUNT(*) FROM (SELECT y.kind FROM s y WHERE y.area = x.area "
                 "GROUP BY CUBE (y.kind)) z) FROM s x WHERE id IN (1, 6) ORDER BY id"),
            Lines({"1|3", "6|1"}));
  Must("EXEC ('CREATE VIEW v AS SELECT kind, SUM(amount) AS total FROM s GROUP BY ROLLUP (kind)')");
  EXPECT_EQ(Rows("SELECT kind, total FROM v ORDER BY kind"), Lines({"NULL|62.00", "1|42.00", "2|20.00"}));
  EXPECT_EQ(ErrorOf("UPDATE v SET kind = 1"), 4403);
  Must("SELECT kind, COUNT(*) AS n INTO #g FROM s GROUP BY ROLLUP (kind)");
  EXPECT_EQ(Rows("SELECT kind, n FROM #g ORDER BY kind"), Lines({"NULL|6", "1|4", "2|2"}));
}

TEST_F(GroupingSetsTest, GroupingOfAPlainGroupBy) {
  EXPECT_EQ(Rows("SELECT kind, GROUPING(kind), GROUPING_ID(kind) FROM s GROUP BY kind ORDER BY kind"),
            Lines({"1|0|0", "2|0|0"}));
  EXPECT_EQ(
      ErrorText("SELECT GROUPING(id) FROM s GROUP BY kind"),
      "8161 1 Argument 1 of the GROUPING function does not match any of the expressions in the GROUP BY clause.");
  EXPECT_EQ(ErrorOf("SELECT GROUPING_ID(kind, id) FROM s GROUP BY ROLLUP (kind)"), 8161);
  EXPECT_EQ(ErrorOf("SELECT GROUPING(kind) FROM s"), 8161);
  EXPECT_EQ(ErrorOf("SELECT GROUPING(kind, id) FROM s GROUP BY kind, id"), 174);
  EXPECT_EQ(ErrorOf("SELECT kind FROM s WHERE GROUPING(kind) = 1 GROUP BY kind"), 147);
}

TEST_F(GroupingSetsTest, ColumnsThatAreNotGrouped) {
  EXPECT_EQ(ErrorOf("SELECT id FROM s GROUP BY ROLLUP (kind)"), 8120);
  EXPECT_EQ(ErrorOf("SELECT * FROM s GROUP BY ROLLUP (kind)"), 8120);
  EXPECT_EQ(ErrorOf("SELECT (SELECT COUNT(*) FROM s i WHERE i.id = o.id) FROM s o GROUP BY ROLLUP (kind)"),
            8120);
  EXPECT_EQ(ErrorOf("SELECT kind FROM s GROUP BY ROLLUP (kind) HAVING id = 1"), 8121);
  EXPECT_EQ(ErrorOf("SELECT kind FROM s GROUP BY ROLLUP (kind) ORDER BY id"), 8127);
  EXPECT_EQ(ErrorOf("SELECT COUNT(*) FROM s GROUP BY ROLLUP (kind, 1)"), 164);
  EXPECT_EQ(ErrorOf("SELECT COUNT(*) FROM s GROUP BY ROLLUP (kind, (SELECT 1))"), 144);
}

TEST_F(GroupingSetsTest, Limits) {
  const std::string from =
      " FROM (SELECT 1 AS a, 2 AS b, 3 AS c, 4 AS d, 5 AS e, 6 AS f, 7 AS g, 8 AS h, 9 AS i, "
      "10 AS j, 11 AS k, 12 AS l, 13 AS m) x ";
  EXPECT_EQ(Rows("SELECT COUNT(*), COUNT(a) FROM (SELECT a" + from +
                 "GROUP BY CUBE (a, b, c, d, e, f, g, h, i, j, k, l)) y"),
            Lines({"4096|2048"}));
  EXPECT_EQ(ErrorText("SELECT a" + from + "GROUP BY CUBE (a, b, c, d, e, f, g, h, i, j, k, l, m)"),
            "10703 1 Too many grouping sets. The maximum number is 4096.");
  EXPECT_EQ(ErrorOf("SELECT a" + from + "GROUP BY ROLLUP (a), b WITH CUBE"), 10702);
  std::string keys;
  for (int i = 0; i < 33; ++i) keys += (i == 0 ? "id + " : ", id + ") + std::to_string(i);
  EXPECT_EQ(ErrorOf("SELECT COUNT(*) FROM s GROUP BY ROLLUP (" + keys + ")"), 10706);
  EXPECT_EQ(ErrorOf("SELECT COUNT(*) FROM s GROUP BY ROLLUP ()"), 102);
  EXPECT_EQ(ErrorOf("SELECT COUNT(*) FROM s GROUP BY GROUPING SETS (GROUPING SETS (id))"), 102);
}

} // namespace
} // namespace tsql::test
