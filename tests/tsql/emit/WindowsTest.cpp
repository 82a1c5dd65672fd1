// Functions with OVER: ranks, aggregates over a window, values of other rows.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class WindowsTest : public EngineTest {
 protected:
  WindowsTest() {
    Must("CREATE TABLE s (id INT NOT NULL PRIMARY KEY, area VARCHAR(10) NULL, amount DECIMAL(9,2) NULL)");
    Must("INSERT INTO s VALUES (1, 'north', 10), (2, 'north', 20), (3, 'South', 20), (4, 'south', 5), "
         "(5, 'SOUTH', NULL), (6, NULL, 7)");
  }
};

TEST_F(WindowsTest, Ranks) {
  EXPECT_EQ(Rows("SELECT id, ROW_NUMBER() OVER (ORDER BY amount DESC, id) FROM s ORDER BY id"),
            Lines({"1|3", "2|1", "3|2", "4|5", "5|6", "6|4"}));
  EXPECT_EQ(
      Rows("SELECT id, RANK() OVER (ORDER BY amount DESC), DENSE_RANK() OVER (ORDER BY amount DESC) FROM s "
           "ORDER BY id"),
      Lines({"1|3|2", "2|1|1", "3|1|1", "4|5|4", "5|6|5", "6|4|3"}));
  // Names of areas are equal whatever their case; a null is an area of its own, and comes first.
  EXPECT_EQ(Rows("SELECT id, ROW_NUMBER() OVER (PARTITION BY area ORDER BY id) FROM s ORDER BY id"),
            Lines({"1|1", "2|2", "3|1", "4|2", "5|3", "6|1"}));
  EXPECT_EQ(Rows("SELECT id, NTILE(4) OVER (ORDER BY id) FROM s ORDER BY id"),
            Lines({"1|1", "2|1", "3|2", "4|2", "5|3", "6|4"}));
  EXPECT_EQ(
      Rows("SELECT CUME_DIST() OVER (ORDER BY id), PERCENT_RANK() OVER (ORDER BY id) FROM s WHERE id < 5 "
           "ORDER BY id"),
      Lines({"0.25|0", "0.5|0.333333333333333", "0.75|0.666666666666667", "1|1"}));
  EXPECT_EQ(
      Rows(
          "SELECT COUNT(*) FROM (SELECT ROW_NUMBER() OVER (ORDER BY (SELECT NULL)) AS n FROM s) x WHERE n <= 4"),
      Lines({"4"}));
  const Output output = Run("SELECT ROW_NUMBER() OVER (ORDER BY id) FROM s");
  EXPECT_EQ(output.columns[0][0].type.id, TypeId::BigInt);
  EXPECT_FALSE(output.columns[0][0].nullable);
}

TEST_F(WindowsTest, Aggregates) {
  EXPECT_EQ(Rows("SELECT id, SUM(amount) OVER (PARTITION BY area), COUNT(*) OVER (PARTITION BY area), "
                 "COUNT(amount) OVER () FROM s ORDER BY id"),
            Lines({"1|30.00|2|5", "2|30.00|2|5", "3|25.00|3|5", "4|25.00|3|5", "5|25.00|3|5", "6|7.00|1|5"}));
  // With ORDER BY they run up to the row, and to those equal to it.
  EXPECT_EQ(Rows("SELECT id, SUM(amount) OVER (ORDER BY amount) FROM s WHERE amount > 6 ORDER BY id"),
            Lines({"1|17.00", "2|57.00", "3|57.00", "6|7.00"}));
  EXPECT_EQ(
      Rows("SELECT id, SUM(id) OVER (ORDER BY id ROWS BETWEEN 1 PRECEDING AND 1 FOLLOWING), "
           "AVG(amount) OVER (ORDER BY id ROWS 1 PRECEDING), "
           "MIN(id) OVER (ORDER BY id ROWS BETWEEN CURRENT ROW AND UNBOUNDED FOLLOWING), "
           "MAX(id) OVER (ORDER BY id RANGE BETWEEN UNBOUNDED PRECEDING AND CURRENT ROW) FROM s ORDER BY id"),
      Lines({"1|3|10.000000|1|1", "2|6|15.000000|2|2", "3|9|20.000000|3|3", "4|12|12.500000|4|4",
             "5|15|5.000000|5|5", "6|11|7.000000|6|6"}));
  EXPECT_EQ(Rows("SELECT AVG(id) OVER (), SUM(CAST(id AS FLOAT)) OVER () FROM s WHERE id < 3"),
            Lines({"1|3", "1|3"}));
  // Over the groups of a query.
  EXPECT_EQ(Rows("SELECT area, SUM(SUM(amount)) OVER (), RANK() OVER (ORDER BY COUNT(*) DESC) FROM s "
                 "WHERE area IS NOT NULL GROUP BY area ORDER BY 3"),
            Lines({"South|55.00|1", "north|55.00|2"}));
  EXPECT_EQ(ErrorOf("SELECT SUM(x) OVER () FROM (SELECT 2147483647 AS x UNION ALL SELECT 1) y"), 8115);
}

TEST_F(WindowsTest, ValuesOfOtherRows) {
  EXPECT_EQ(
      Rows(
          "SELECT id, LAG(id) OVER (ORDER BY id), LEAD(id, 2) OVER (ORDER BY id), LEAD(id, 2, 0) OVER (ORDER "
          "BY id), LAG(amount, 1, 1) OVER (ORDER BY id) FROM s WHERE id < 4 ORDER BY id"),
      Lines({"1|NULL|3|3|1.00", "2|1|NULL|0|10.00", "3|2|NULL|0|20.00"}));
  EXPECT_EQ(
      Rows(
          "SELECT id, FIRST_VALUE(area) OVER (PARTITION BY area ORDER BY id), LAST_VALUE(id) OVER (ORDER BY id), "
          "LAST_VALUE(id) OVER (ORDER BY id ROWS BETWEEN UNBOUNDED PRECEDING AND UNBOUNDED FOLLOWING) "
          "FROM s WHERE id BETWEEN 2 AND 4 ORDER BY id"),
      Lines({"2|north|2|4", "3|South|3|4", "4|South|4|4"}));
}

TEST_F(WindowsTest, WhereTheyMayStand) {
  EXPECT_EQ(Rows("SELECT id FROM s WHERE id < 4 ORDER BY ROW_NUMBER() OVER (ORDER BY id DESC)"),
            Lines({"3", "2", "1"}));
  EXPECT_EQ(Rows("SELECT DISTINCT COUNT(*) OVER (PARTITION BY area) AS n FROM s ORDER BY n"),
            Lines({"1", "2", "3"}));
  EXPECT_EQ(Rows("WITH x AS (SELECT id, ROW_NUMBER() OVER (PARTITION BY area ORDER BY id DESC) AS n FROM s) "
                 "SELECT id FROM x WHERE n = 1 ORDER BY id"),
            Lines({"2", "5", "6"}));
  EXPECT_EQ(
      Rows("SELECT x.id, (SELECT MAX(n) FROM (SELECT ROW_NUMBER() OVER (ORDER BY y.id) AS n FROM s y WHERE "
           "y.id <= x.id) z) FROM s x WHERE x.id > 4 ORDER BY 1"),
      Lines({"5|5", "6|6"}));
  const std::string misplaced =
      "4108 1 Windowed functions can only appear in the SELECT or ORDER BY clauses.";
  EXPECT_EQ(ErrorText("SELECT id FROM s WHERE ROW_NUMBER() OVER (ORDER BY id) = 1"), misplaced);
  EXPECT_EQ(ErrorText("SELECT COUNT(*) FROM s GROUP BY RANK() OVER (ORDER BY id)"), misplaced);
  EXPECT_EQ(ErrorText("SELECT COUNT(*) FROM s HAVING SUM(id) OVER () > 1"), misplaced);
  EXPECT_EQ(ErrorText("UPDATE s SET amount = ROW_NUMBER() OVER (ORDER BY id)"), misplaced);
  EXPECT_EQ(ErrorText("DECLARE @x INT SET @x = COUNT(*) OVER ()"), misplaced);
  const std::string nested =
      "4109 1 Windowed functions cannot be used in the context of another windowed function or aggregate.";
  EXPECT_EQ(ErrorText("SELECT SUM(ROW_NUMBER() OVER (ORDER BY id)) FROM s"), nested);
  EXPECT_EQ(ErrorText("SELECT SUM(COUNT(*) OVER ()) OVER () FROM s"), nested);
  EXPECT_EQ(ErrorText("SELECT RANK() OVER (ORDER BY RANK() OVER (ORDER BY id)) FROM s"), nested);
  EXPECT_EQ(ErrorOf("SELECT SUM(amount) OVER () FROM s GROUP BY area"), 8120);
}

TEST_F(WindowsTest, BadWindows) {
  EXPECT_EQ(ErrorText("SELECT ROW_NUMBER() FROM s"),
            "10753 1 The function 'row_number' must have an OVER clause.");
  EXPECT_EQ(ErrorText("SELECT ROW_NUMBER() OVER () FROM s"),
            "4112 1 The function 'row_number' must have an OVER clause with ORDER BY.");
  EXPECT_EQ(ErrorOf("SELECT LAG(id) OVER (PARTITION BY area) FROM s"), 4112);
  EXPECT_EQ(ErrorText("SELECT RANK() OVER (ORDER BY id ROWS UNBOUNDED PRECEDING) FROM s"),
            "10752 1 The function 'rank' may not have a window frame.");
  EXPECT_EQ(ErrorText("SELECT SUM(id) OVER (PARTITION BY area ROWS UNBOUNDED PRECEDING) FROM s"),
            "10756 1 Window frame with ROWS or RANGE must have an ORDER BY clause.");
  EXPECT_EQ(ErrorText("SELECT COUNT(DISTINCT id) OVER () FROM s"),
            "10759 1 Use of DISTINCT is not allowed with the OVER clause.");
  EXPECT_EQ(ErrorText("SELECT SUM(id) OVER (ORDER BY id RANGE 1 PRECEDING) FROM s"),
            "4194 1 RANGE is only supported with UNBOUNDED and CURRENT ROW window frame delimiters.");
  EXPECT_EQ(
      ErrorText("SELECT SUM(id) OVER (ORDER BY id ROWS BETWEEN 1 FOLLOWING AND 1 PRECEDING) FROM s"),
      "4193 1 'BETWEEN FOLLOWING AND PRECEDING' is not a valid window frame and cannot be used with the OVER "
      "clause.");
  EXPECT_EQ(ErrorOf("SELECT ROW_NUMBER() OVER (ORDER BY 1) FROM s"), 5308);
  EXPECT_EQ(ErrorOf("SELECT ROW_NUMBER() OVER (ORDER BY 'a') FROM s"), 5309);
  EXPECT_EQ(
      ErrorText("SELECT LEN('a') OVER () FROM s"),
      "4113 1 The function 'len' is not a valid windowing function, and cannot be used with the OVER clause.");
  EXPECT_EQ(ErrorOf("SELECT NOTHING() OVER () FROM s"), 195);
  EXPECT_EQ(ErrorOf("SELECT NTILE(0) OVER (ORDER BY id) FROM s"), 4116);
  EXPECT_EQ(ErrorOf("DECLARE @n INT SET @n = -1 SELECT NTILE(@n) OVER (ORDER BY id) FROM s"), 4116);
  EXPECT_EQ(ErrorText("DECLARE @n INT SET @n = -1 SELECT LAG(id, @n) OVER (ORDER BY id) FROM s"),
            "8730 1 Offset parameter for Lag and Lead functions cannot be a negative value.");
  EXPECT_EQ(ErrorOf("SELECT SUM(area) OVER () FROM s"), 8117);
  EXPECT_EQ(ErrorOf("SELECT RANK(1) OVER (ORDER BY id) FROM s"), 174);
}

} // namespace
} // namespace tsql::test
