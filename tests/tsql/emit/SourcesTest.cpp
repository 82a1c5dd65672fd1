// Tables that a query makes: VALUES, and what APPLY finds for each row.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SourcesTest : public EngineTest {
 protected:
  SourcesTest() {
    Must("CREATE TABLE o (id INT NOT NULL PRIMARY KEY, name NVARCHAR(10) NULL)");
    Must("INSERT INTO o VALUES (1, 'one'), (2, 'two'), (3, 'three')");
    Must(
        "CREATE TABLE l (o INT NOT NULL, n INT NOT NULL, qty DECIMAL(20,4) NULL, at DATETIME NULL, raw VARBINARY(4))");
    Must(
        "INSERT INTO l VALUES (1, 1, 2.5, '2020-01-31', 0x0102), (1, 2, 7, NULL, NULL), (2, 1, NULL, NULL, 0x00)");
  }
};

TEST_F(SourcesTest, Values) {
  EXPECT_EQ(Rows("SELECT b, a FROM (VALUES (1, 'x'), (2, 'y')) AS v(a, b) ORDER BY a DESC"),
            Lines({"y|2", "x|1"}));
  EXPECT_EQ(Rows("SELECT o.name FROM o JOIN (VALUES (2), (3), (9)) v(id) ON v.id = o.id ORDER BY o.id"),
            Lines({"two", "three"}));
  // A column has the type that all its values have in common.
  EXPECT_EQ(Rows("SELECT a FROM (VALUES (1), (2.50), (NULL)) v(a) ORDER BY a"),
            Lines({"NULL", "1.00", "2.50"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM (VALUES ('a'), ('A '), ('b')) v(a) WHERE a = 'a'"), Lines({"2"}));
  EXPECT_EQ(
      Rows(
          "DECLARE @i INT SET @i = 5 SELECT MAX(a) FROM (VALUES (@i), ((SELECT COUNT(*) FROM o)), (2 * 2)) v(a)"),
      Lines({"5"}));
  EXPECT_EQ(Rows("SELECT id, (SELECT MAX(x) FROM (VALUES (o.id), (2)) v(x)) FROM o ORDER BY id"),
            Lines({"1|2", "2|2", "3|3"}));
  EXPECT_EQ(Run("INSERT INTO o SELECT a, b FROM (VALUES (7, N'seven'), (8, N'八')) v(a, b)").counts,
            std::vector<int64_t>({2}));
}

TEST_F(SourcesTest, BadValues) {
  EXPECT_EQ(ErrorText("SELECT * FROM (VALUES (1, 2), (3)) v(a, b)"),
            "10709 1 The number of columns for each row in a table value constructor must be the same.");
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (1, 2)) v(a)"), 8158);
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (1)) v(a, b)"), 8159);
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (1)) v"), 8155);
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (1, 2)) v(a, A)"), 8156);
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (DEFAULT)) v(a)"), 156);
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (COUNT(*))) v(a)"), 147);
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (1), ('x')) v(a)"), 245);
  EXPECT_EQ(ErrorOf("SELECT * FROM (VALUES (1))"), 102);
  EXPECT_EQ(ErrorOf("INSERT INTO o VALUES (20, 'x'), (21)"), 10709);
  std::string many = "INSERT INTO o VALUES (100, 'x')";
  for (int i = 1; i <= 1000; ++i) many += ", (" + std::to_string(100 + i) + ", 'x')";
  EXPECT_EQ(ErrorOf(many), 10738);
}

TEST_F(SourcesTest, CrossApplyFindsRowsForEachRow) {
  EXPECT_EQ(
      Rows(
          "SELECT o.id, x.n, x.qty FROM o CROSS APPLY (SELECT TOP 1 n, qty FROM l WHERE l.o = o.id ORDER BY n DESC) x "
          "ORDER BY o.id"),
      Lines({"1|2|7.0000", "2|1|NULL"}));
  EXPECT_EQ(
      Rows(
          "SELECT o.id, x.total, x.lines FROM o CROSS APPLY (SELECT SUM(qty) AS total, COUNT(*) AS lines FROM l "
          "WHERE l.o = o.id) x ORDER BY o.id"),
      Lines({"1|9.5000|2", "2|NULL|1", "3|NULL|0"}));
  EXPECT_EQ(Rows("SELECT id, t FROM o CROSS APPLY (SELECT name + '!' AS t) x WHERE t LIKE 'T%' ORDER BY id"),
            Lines({"2|two!", "3|three!"}));
  // One row becomes several, and one APPLY uses the one before it.
  EXPECT_EQ(
      Rows("SELECT id, w FROM o CROSS APPLY (VALUES (id), (id * 10)) v(x) CROSS APPLY (SELECT x + 1 AS w) y "
           "WHERE id < 3 ORDER BY id, w"),
      Lines({"1|2", "1|11", "2|3", "2|21"}));
  // Without a reference to the left it is a cross join.
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM o CROSS APPLY (SELECT n FROM l) x"), Lines({"9"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM o CROSS APPLY l"), Lines({"9"}));
  EXPECT_EQ(
      Rows(
          "SELECT o.id, x.at, x.raw, x.b FROM o CROSS APPLY (SELECT at, raw, CAST(o.id AS FLOAT) / 2 AS b FROM l "
          "WHERE l.o = o.id AND n = 1) x WHERE o.id = 1"),
      Lines({std::string("1|43859:0|\x01\x02|0.5")}));
}

TEST_F(SourcesTest, OuterApplyKeepsRowsWithoutMatch) {
  EXPECT_EQ(
      Rows(
          "SELECT o.id, x.n FROM o OUTER APPLY (SELECT n FROM l WHERE l.o = o.id AND n > 1) x ORDER BY o.id"),
      Lines({"1|2", "2|NULL", "3|NULL"}));
  EXPECT_EQ(Rows("SELECT o.id FROM o OUTER APPLY (SELECT n FROM l WHERE l.o = o.id) x WHERE x.n IS NULL"),
            Lines({"3"}));
  EXPECT_EQ(
      Rows(
          "SELECT o.id, y.m FROM o LEFT JOIN l ON l.o = o.id AND l.n = 2 OUTER APPLY (SELECT l.n + 1 AS m WHERE "
          "l.n IS NOT NULL) y ORDER BY o.id"),
      Lines({"1|3", "2|NULL", "3|NULL"}));
  EXPECT_TRUE(
      Run("SELECT x.n FROM o OUTER APPLY (SELECT n FROM l WHERE l.o = o.id) x").columns[0][0].nullable);
}

TEST_F(SourcesTest, ApplyInOtherPlaces) {
  EXPECT_EQ(
      Rows(
          "SELECT id FROM o WHERE EXISTS (SELECT * FROM l CROSS APPLY (SELECT l.n + o.id AS s) x WHERE x.s = 3 AND "
          "l.o = o.id) ORDER BY id"),
      Lines({"1", "2"}));
  EXPECT_EQ(
      Run("UPDATE o SET name = x.t FROM o CROSS APPLY (SELECT CAST(COUNT(*) AS NVARCHAR(9)) AS t FROM l WHERE "
          "l.o = o.id) x WHERE o.id < 3")
          .counts,
      std::vector<int64_t>({2}));
  EXPECT_EQ(Rows("SELECT name FROM o ORDER BY id"), Lines({"2", "1", "three"}));
  EXPECT_EQ(Run("DELETE o FROM o CROSS APPLY (SELECT 1 AS a FROM l WHERE l.o = o.id) x").counts,
            std::vector<int64_t>({2}));
  Must("CREATE VIEW v AS SELECT o.id, x.n FROM o OUTER APPLY (SELECT MAX(n) AS n FROM l WHERE l.o = o.id) x");
  EXPECT_EQ(Rows("SELECT * FROM v"), Lines({"3|NULL"}));
  EXPECT_EQ(ErrorOf("SELECT * FROM o CROSS APPLY (SELECT y.n) x, l y"), 4104);
  EXPECT_EQ(ErrorOf("SELECT * FROM o CROSS APPLY (SELECT nothing AS a) x"), 207);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT o.id) x CROSS JOIN o"), 4104);
  EXPECT_EQ(ErrorOf("SELECT * FROM o LEFT APPLY l"), 102);
  EXPECT_EQ(ErrorOf("SELECT * FROM o CROSS APPLY (SELECT 1 / (o.id - 3) AS a) x"), 8134);
}

} // namespace
} // namespace tsql::test
