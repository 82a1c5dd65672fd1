// Computed columns: their types and values, what cannot be done to them, and that they follow every kind of
// change of the columns that they are computed from.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class ComputedColumnsTest : public EngineTest {
 protected:
  ComputedColumnsTest() {
    Must(
        "CREATE TABLE t (id INT IDENTITY PRIMARY KEY, a INT NULL, total AS a * price, price DECIMAL(9,2) NULL,"
        " twice AS (a * 2) PERSISTED, label AS 'no ' + CAST(a AS VARCHAR(5)))"
        " INSERT INTO t VALUES (3, 1.5), (4, NULL)");
  }
  Lines All() { return Rows("SELECT a, total, price, twice, label FROM t ORDER BY id"); }
};

TEST_F(ComputedColumnsTest, FollowTheColumnsThatTheyComeFrom) {
  EXPECT_EQ(All(), Lines({"3|4.50|1.50|6|no 3", "4|NULL|NULL|8|no 4"}));
  Must(
      "UPDATE t SET a = a + 1, price = 0.5 INSERT INTO t (price, a) VALUES (10, 7) INSERT INTO t DEFAULT VALUES");
  EXPECT_EQ(All(), Lines({"4|2.00|0.50|8|no 4", "5|2.50|0.50|10|no 5", "7|70.00|10.00|14|no 7",
                          "NULL|NULL|NULL|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT id FROM t WHERE twice > 8 AND label LIKE '%7' ORDER BY total"), Lines({"3"}));
  EXPECT_EQ(Rows("SELECT SUM(twice) FROM t GROUP BY LEFT(label, 2) ORDER BY 1"), Lines({"NULL", "32"}));
  Must(
      "CREATE TABLE n (id INT IDENTITY(10,1), a AS id * 2, b AS id + 1 PERSISTED) INSERT INTO n DEFAULT VALUES");
  EXPECT_EQ(Rows("SELECT * FROM n"), Lines({"10|20|11"}));
  Must("DELETE FROM t WHERE twice IS NULL OR total > 50");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"2"}));
}

TEST_F(ComputedColumnsTest, HaveTheTypesOfTheirExpressions) {
  const Output output = Run("SELECT total, twice, label FROM t");
  ASSERT_EQ(output.columns.size(), 1U);
  EXPECT_EQ(output.columns[0][0].type.id, TypeId::Decimal);
  EXPECT_EQ(output.columns[0][1].type.id, TypeId::Int);
  EXPECT_EQ(output.columns[0][2].type.id, TypeId::VarChar);
  EXPECT_EQ(output.columns[0][2].type.length, 8); // three characters and up to five digits
  EXPECT_EQ(
      Rows("SELECT name, is_computed, is_identity FROM sys.columns WHERE object_id = OBJECT_ID('t') ORDER BY "
           "column_id"),
      Lines({"id|0|1", "a|0|0", "total|1|0", "price|0|0", "twice|1|0", "label|1|0"}));
  EXPECT_EQ(
      Rows("SELECT colid, iscomputed FROM syscolumns WHERE id = OBJECT_ID('t') AND name IN ('a', 'label') "
           "ORDER BY 1"),
      Lines({"2|0", "6|1"}));
  EXPECT_EQ(
      Rows("SELECT DATA_TYPE, COLUMN_DEFAULT FROM INFORMATION_SCHEMA.COLUMNS WHERE COLUMN_NAME = 'twice'"),
      Lines({"int|NULL"}));
}

TEST_F(ComputedColumnsTest, AreNotWritten) {
  const std::string text =
      "The column \"twice\" cannot be modified because it is either a computed column or is "
      "the result of a UNION operator.";
  EXPECT_EQ(ErrorText("INSERT INTO t (a, twice) VALUES (1, 2)"), "271 1 " + text);
  EXPECT_EQ(ErrorText("UPDATE t SET twice = 2"), "271 1 " + text);
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (1, 2, 3)"), 213);
  EXPECT_EQ(ErrorOf("INSERT INTO t SELECT 1, 2, 3, 4, 5"), 213);
  Must("INSERT INTO t SELECT 5, 2 INSERT INTO t EXEC ('SELECT 6, 3')");
  EXPECT_EQ(Rows("SELECT total FROM t WHERE a IN (5, 6) ORDER BY a"), Lines({"10.00", "18.00"}));
}

TEST_F(ComputedColumnsTest, StandInIndexesAndKeys) {
  Must("CREATE UNIQUE INDEX ux ON t (twice) CREATE INDEX ix ON t (label, a)");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (3)"), 2601);
  // The keys of both rows move at once.
  Must("UPDATE t SET a = a + 1 UPDATE t SET a = 9 - a");
  EXPECT_EQ(Rows("SELECT a, twice FROM t ORDER BY twice"), Lines({"4|8", "5|10"}));
  Must("CREATE TABLE k (a INT NOT NULL, b AS a % 10 PERSISTED NOT NULL PRIMARY KEY, c AS a UNIQUE)"
       " INSERT INTO k VALUES (11), (12)");
  EXPECT_EQ(ErrorOf("INSERT INTO k VALUES (21)"), 2627);
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT, b AS a + 1 PRIMARY KEY)"), 1711);
  Must("CREATE TABLE f (a INT, b AS a / 2 PERSISTED REFERENCES k (b), c AS a + 1 PERSISTED CHECK (c > 0))");
  EXPECT_EQ(ErrorOf("INSERT INTO f VALUES (7)"), 547);
  EXPECT_EQ(ErrorOf("INSERT INTO f VALUES (-1)"), 547);
  Must("INSERT INTO f VALUES (3)");
  EXPECT_EQ(ErrorOf("DELETE FROM k WHERE b = 1"), 547);
}

TEST_F(ComputedColumnsTest, AreDefinedWithinLimits) {
  EXPECT_EQ(ErrorText("CREATE TABLE x (a INT, b AS a + 1, c AS b + 1)"),
            "1759 1 Computed column 'b' in table 'x' is not allowed to be used in another computed-column "
            "definition.");
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT, b AS nothing + 1)"), 207);
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT, b AS (SELECT 1))"), 1046);
  EXPECT_EQ(
      ErrorText("CREATE TABLE x (a INT, b AS a NOT NULL)"),
      "8183 1 Only UNIQUE or PRIMARY KEY constraints can be created on computed columns, while CHECK, FOREIGN "
      "KEY, and NOT NULL constraints require that computed columns be persisted.");
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT, b AS a CHECK (b > 0))"), 8183);
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT, b AS a DEFAULT 1)"), 156);
  EXPECT_EQ(
      ErrorText("CREATE TABLE x (a DATETIME, b AS DATEDIFF(day, a, GETDATE()) PERSISTED)"),
      "4936 1 Computed column 'b' in table 'x' cannot be persisted because the column is non-deterministic.");
  Must("CREATE TABLE x (a DATETIME, b AS DATEDIFF(day, a, GETDATE())) INSERT INTO x SELECT GETDATE() - 2");
  EXPECT_EQ(Rows("SELECT b FROM x"), Lines({"2"}));
  EXPECT_EQ(
      ErrorText("CREATE INDEX ix ON x (b)"),
      "2729 1 Column 'b' in table 'x' cannot be used in an index or statistics or as a partition key because "
      "it is non-deterministic.");
}

TEST_F(ComputedColumnsTest, AreAddedToTablesAndDropped) {
  Must("ALTER TABLE t ADD next AS a + 1, kept AS price * 2 PERSISTED");
  EXPECT_EQ(Rows("SELECT next, kept FROM t ORDER BY id"), Lines({"4|3.00", "5|NULL"}));
  const Output output = Run("ALTER TABLE t DROP COLUMN price");
  ASSERT_EQ(output.errors.size(), 3U);
  EXPECT_STREQ(output.errors[0].what(), "The column 'total' is dependent on column 'price'.");
  EXPECT_STREQ(output.errors[1].what(), "The column 'kept' is dependent on column 'price'.");
  EXPECT_EQ(output.errors[2].number, 4922);
  EXPECT_EQ(ErrorOf("ALTER TABLE t ALTER COLUMN a BIGINT"), 5074);
  EXPECT_EQ(ErrorText("ALTER TABLE t ALTER COLUMN next BIGINT"),
            "4928 1 Cannot alter column 'next' because it is 'COMPUTED'.");
  EXPECT_EQ(ErrorOf("ALTER TABLE t ADD DEFAULT 1 FOR next"), 1752);
  Must("ALTER TABLE t DROP COLUMN kept, total, price");
  EXPECT_EQ(Rows("SELECT * FROM t ORDER BY id"), Lines({"1|3|6|no 3|4", "2|4|8|no 4|5"}));
}

TEST_F(ComputedColumnsTest, LiveInTemporaryTablesAndVariables) {
  Must("CREATE TABLE #t (a INT, b AS a + 1) INSERT INTO #t VALUES (1) SELECT * INTO copy FROM #t"
       " INSERT INTO copy VALUES (5, 5)");
  EXPECT_EQ(Rows("SELECT * FROM copy ORDER BY a"), Lines({"1|2", "5|5"}));
  EXPECT_EQ(Rows("DECLARE @t TABLE (a INT, b AS a * a) INSERT @t VALUES (3) BEGIN TRAN UPDATE t SET a = 0"
                 " UPDATE @t SET a = 4 ROLLBACK SELECT * FROM @t"),
            Lines({"4|16"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE a = 0"), Lines({"0"}));
  EXPECT_EQ(Rows("INSERT INTO #t OUTPUT inserted.b VALUES (8)"), Lines({"9"}));
  EXPECT_EQ(Rows("DELETE FROM #t OUTPUT deleted.b WHERE a = 1"), Lines({"2"}));
}

} // namespace
} // namespace tsql::test
