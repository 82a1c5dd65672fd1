// TOP PERCENT, TOP WITH TIES, OFFSET and FETCH.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class RowLimitsTest : public EngineTest {
 protected:
  RowLimitsTest() {
    Must("CREATE TABLE n (a INT NOT NULL PRIMARY KEY, b INT NULL, c VARCHAR(5) NULL)");
    Must("INSERT INTO n VALUES (1, 10, 'x'), (2, 20, 'X'), (3, 20, 'y'), (4, 30, 'z'), (5, NULL, 'z')");
  }
};

TEST_F(RowLimitsTest, Offset) {
  EXPECT_EQ(Rows("SELECT a FROM n ORDER BY a OFFSET 2 ROWS"), Lines({"3", "4", "5"}));
  EXPECT_EQ(Rows("SELECT a FROM n ORDER BY a DESC OFFSET 1 ROW FETCH NEXT 2 ROWS ONLY"), Lines({"4", "3"}));
  EXPECT_EQ(Rows("DECLARE @o INT, @f BIGINT SELECT @o = 1, @f = 1 "
                 "SELECT a FROM n ORDER BY a OFFSET @o + 1 ROWS FETCH FIRST @f ROW ONLY"),
            Lines({"3"}));
  EXPECT_EQ(Rows("SELECT a FROM n ORDER BY a OFFSET (SELECT COUNT(*) FROM n WHERE b = 20) ROWS"),
            Lines({"3", "4", "5"}));
  EXPECT_EQ(Rows("SELECT a FROM n ORDER BY a OFFSET 9 ROWS"), Lines());
  EXPECT_EQ(Rows("SELECT a FROM n UNION SELECT 7 ORDER BY a DESC OFFSET 1 ROWS FETCH NEXT 1 ROWS ONLY"),
            Lines({"5"}));
  // With OFFSET a derived table may be ordered.
  EXPECT_EQ(Rows("SELECT MAX(a) FROM (SELECT a FROM n ORDER BY a OFFSET 1 ROWS FETCH NEXT 2 ROWS ONLY) x"),
            Lines({"3"}));
  EXPECT_EQ(
      Rows(
          "SELECT a, (SELECT y.a FROM n y WHERE y.a > x.a ORDER BY y.a OFFSET 1 ROWS FETCH NEXT 1 ROWS ONLY) "
          "FROM n x WHERE a > 2 ORDER BY a"),
      Lines({"3|5", "4|NULL", "5|NULL"}));
  EXPECT_EQ(Rows("SELECT DISTINCT b FROM n ORDER BY b OFFSET 1 ROWS"), Lines({"10", "20", "30"}));
  Must("CREATE TABLE m (a INT) INSERT INTO m SELECT a FROM n ORDER BY a OFFSET 3 ROWS");
  EXPECT_EQ(Rows("SELECT a FROM m ORDER BY a"), Lines({"4", "5"}));
}

TEST_F(RowLimitsTest, BadOffsets) {
  EXPECT_EQ(ErrorText("SELECT a FROM n ORDER BY a OFFSET -1 ROWS"),
            "10742 1 The offset specified in a OFFSET clause may not be negative.");
  EXPECT_EQ(ErrorOf("DECLARE @o INT SET @o = -1 SELECT a FROM n ORDER BY a OFFSET @o ROWS"), 10742);
  EXPECT_EQ(ErrorOf("DECLARE @o INT SELECT a FROM n ORDER BY a OFFSET @o ROWS"), 10743);
  EXPECT_EQ(ErrorOf("SELECT a FROM n ORDER BY a OFFSET 1.5 ROWS"), 10743);
  EXPECT_EQ(ErrorText("SELECT a FROM n ORDER BY a OFFSET 1 ROWS FETCH NEXT 0 ROWS ONLY"),
            "10744 1 The number of rows provided for a FETCH clause must be greater then zero.");
  EXPECT_EQ(ErrorText("SELECT TOP 1 a FROM n ORDER BY a OFFSET 1 ROWS"),
            "10741 1 A TOP can not be used in the same query or sub-query as a OFFSET.");
  EXPECT_EQ(ErrorOf("SELECT a FROM n OFFSET 1 ROWS"), 102);
  EXPECT_EQ(ErrorOf("SELECT a FROM n ORDER BY a OFFSET a ROWS"), 207);
}

TEST_F(RowLimitsTest, Percent) {
  // A part of a row is a whole one.
  EXPECT_EQ(Rows("SELECT TOP 40 PERCENT a FROM n ORDER BY a DESC"), Lines({"5", "4"}));
  EXPECT_EQ(Rows("SELECT TOP (41) PERCENT a FROM n ORDER BY a"), Lines({"1", "2", "3"}));
  EXPECT_EQ(Rows("SELECT TOP 0 PERCENT a FROM n"), Lines());
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM (SELECT TOP 100 PERCENT a FROM n ORDER BY b) x"), Lines({"5"}));
  EXPECT_EQ(Rows("DECLARE @p FLOAT SET @p = 0.1 SELECT TOP (@p) PERCENT a, b FROM n ORDER BY c DESC, a DESC"),
            Lines({"5|NULL"}));
  EXPECT_EQ(Rows("SELECT TOP 50 PERCENT b, COUNT(*) FROM n GROUP BY b ORDER BY COUNT(*) DESC, b"),
            Lines({"20|2", "NULL|1"}));
  EXPECT_EQ(
      Rows(
          "SELECT x.a, (SELECT MAX(a) FROM (SELECT TOP 50 PERCENT y.a FROM n y WHERE y.a <= x.a ORDER BY y.a) z) "
          "FROM n x WHERE x.a > 3 ORDER BY 1"),
      Lines({"4|2", "5|3"}));
  EXPECT_EQ(ErrorText("SELECT TOP 101 PERCENT a FROM n"), "1031 1 Percent values must be between 0 and 100.");
  EXPECT_EQ(ErrorOf("DECLARE @p INT SET @p = -1 SELECT TOP (@p) PERCENT a FROM n"), 1031);
}

TEST_F(RowLimitsTest, Ties) {
  EXPECT_EQ(Rows("SELECT TOP 3 WITH TIES a FROM n ORDER BY b"), Lines({"5", "1", "2", "3"}));
  EXPECT_EQ(Rows("SELECT TOP (1) WITH TIES c, a FROM n ORDER BY c"), Lines({"x|1", "X|2"}));
  EXPECT_EQ(
      Rows("SELECT TOP 1 WITH TIES b, COUNT(*) FROM n GROUP BY b HAVING COUNT(*) = 1 ORDER BY COUNT(*) DESC"),
      Lines({"NULL|1", "10|1", "30|1"}));
  EXPECT_EQ(Rows("SELECT DISTINCT TOP 1 WITH TIES c FROM n ORDER BY c DESC"), Lines({"z"}));
  EXPECT_EQ(Rows("SELECT TOP 10 PERCENT WITH TIES a FROM n ORDER BY c DESC"), Lines({"4", "5"}));
  EXPECT_EQ(ErrorText("SELECT TOP 1 WITH TIES a FROM n"),
            "1062 1 The TOP N WITH TIES clause is not allowed without a corresponding ORDER BY clause.");
  Must(
      "CREATE TABLE m (a INT, d INT DEFAULT 8) INSERT INTO m (a) SELECT TOP 1 WITH TIES a FROM n ORDER BY c");
  EXPECT_EQ(Rows("SELECT a, d FROM m ORDER BY a"), Lines({"1|8", "2|8"}));
}

TEST_F(RowLimitsTest, ShareOfAChange) {
  // A share of 5 rows is rounded up.
  EXPECT_EQ(Run("UPDATE TOP (50) PERCENT n SET c = 'new'").counts, (std::vector<int64_t>{3}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM n WHERE c = 'new'"), Lines({"3"}));
  // The share is one of the rows that the condition allows.
  EXPECT_EQ(Run("UPDATE TOP (50) PERCENT n SET c = 'b' WHERE b = 20").counts, (std::vector<int64_t>{1}));
  EXPECT_EQ(Run("DELETE TOP (0) PERCENT FROM n").counts, (std::vector<int64_t>{0}));
  EXPECT_EQ(Run("DECLARE @p FLOAT SET @p = 20 DELETE TOP (@p) PERCENT n").counts, (std::vector<int64_t>{1}));
  EXPECT_EQ(Run("DELETE TOP (100) PERCENT FROM n").counts, (std::vector<int64_t>{4}));
  EXPECT_EQ(ErrorOf("DELETE TOP (101) PERCENT FROM n"), 1031);
  EXPECT_EQ(ErrorOf("UPDATE TOP (-1) PERCENT n SET b = 1"), 1031);
  EXPECT_EQ(ErrorOf("DELETE TOP (NULL) PERCENT FROM n"), 1060);
}

TEST_F(RowLimitsTest, ShareOfAChangeOfJoinedRows) {
  // A row that the join finds several times is one.
  Must("CREATE TABLE twice (a INT) INSERT INTO twice VALUES (1), (1), (2), (2), (3), (3), (4), (4)");
  EXPECT_EQ(Run("UPDATE TOP (50) PERCENT x SET c = 'new' FROM n x JOIN twice t ON t.a = x.a").counts,
            (std::vector<int64_t>{2}));
  EXPECT_EQ(Run("UPDATE TOP (25) PERCENT x SET c = t.a FROM n x LEFT JOIN twice t ON t.a = x.a WHERE x.a < 5")
                .counts,
            (std::vector<int64_t>{1}));
  EXPECT_EQ(
      Run("DELETE TOP (50) PERCENT x OUTPUT deleted.a FROM n x JOIN twice t ON t.a = x.a").results[0].size(),
      2U);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM n"), Lines({"3"}));
  EXPECT_EQ(Run("WITH d AS (SELECT a FROM n) DELETE TOP (50) PERCENT FROM d").counts,
            (std::vector<int64_t>{2}));
}

TEST_F(RowLimitsTest, ShareOfAChangeAndRowCount) {
  EXPECT_EQ(Run("SET ROWCOUNT 1 DELETE TOP (60) PERCENT FROM n").counts, (std::vector<int64_t>{1}));
  EXPECT_EQ(Run("SET ROWCOUNT 3 DELETE TOP (50) PERCENT FROM n").counts, (std::vector<int64_t>{2}));
}

TEST_F(RowLimitsTest, ShareOfAChangeWithTriggers) {
  Must("CREATE TABLE seen (count INT)");
  Must("EXEC ('CREATE TRIGGER changed ON n AFTER DELETE AS INSERT INTO seen SELECT COUNT(*) FROM deleted')");
  Must("DELETE TOP (40) PERCENT FROM n");
  EXPECT_EQ(Rows("SELECT count FROM seen"), Lines({"2"}));
  Must("EXEC ('CREATE VIEW v AS SELECT a FROM n')");
  Must(
      "EXEC ('CREATE TRIGGER instead ON v INSTEAD OF DELETE AS INSERT INTO seen SELECT COUNT(*) FROM deleted')");
  Must("DELETE seen DELETE TOP (34) PERCENT FROM v");
  EXPECT_EQ(Rows("SELECT count FROM seen"), Lines({"2"}));
}

TEST_F(RowLimitsTest, RowsOfAnInsert) {
  Must("CREATE TABLE m (id INT IDENTITY(1,1), a INT NOT NULL, b VARCHAR(5) DEFAULT 'd')");
  EXPECT_EQ(Run("INSERT TOP (2) INTO m (a) SELECT a FROM n").counts, (std::vector<int64_t>{2}));
  EXPECT_EQ(Run("INSERT TOP (2) m (a) VALUES (7), (8), (9)").counts, (std::vector<int64_t>{2}));
  EXPECT_EQ(Rows("SELECT id, b FROM m ORDER BY id"), Lines({"1|d", "2|d", "3|d", "4|d"}));
  EXPECT_EQ(
      Rows(
          "DECLARE @n INT SET @n = 1 INSERT TOP (@n) INTO m (a) OUTPUT inserted.id SELECT a FROM n UNION SELECT 9"),
      Lines({"5"}));
  EXPECT_EQ(Run("INSERT TOP (9) INTO m (a) SELECT a FROM n").counts, (std::vector<int64_t>{5}));
  EXPECT_EQ(Run("INSERT TOP (0) INTO m (a) SELECT NULL").counts, (std::vector<int64_t>{0}));
  EXPECT_EQ(Run("SET ROWCOUNT 1 INSERT TOP (3) INTO m (a) SELECT a FROM n").counts,
            (std::vector<int64_t>{1}));
  EXPECT_EQ(
      Run("SET ROWCOUNT 0; WITH x AS (SELECT a FROM n) INSERT TOP (4) INTO m (a) SELECT a FROM x").counts,
      (std::vector<int64_t>{4}));
  EXPECT_EQ(ErrorOf("INSERT TOP (-1) INTO m (a) SELECT 1"), 127);
  EXPECT_EQ(ErrorOf("INSERT TOP (NULL) INTO m (a) SELECT 1"), 1060);
  EXPECT_EQ(ErrorOf("INSERT TOP (1) INTO m (a) SELECT 1, 2"), 121);
}

TEST_F(RowLimitsTest, TheRowLimitHoldsForWhateverIsSelectedInto) {
  Must("CREATE TABLE source (id INT IDENTITY, a INT) INSERT source VALUES (1), (2), (3), (4)");
  Must("SET ROWCOUNT 1 SELECT a INTO o FROM source ORDER BY a OFFSET 1 ROWS"
       " SELECT TOP 50 PERCENT a, IDENTITY(INT, 5, 5) AS i INTO p FROM source ORDER BY a DESC"
       " SELECT id, a INTO q FROM source SET ROWCOUNT 0 INSERT q VALUES (9)");
  EXPECT_EQ(Rows("SELECT a FROM o"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT a, i FROM p"), Lines({"4|5"}));
  EXPECT_EQ(Rows("SELECT id, a FROM q ORDER BY id"), Lines({"1|1", "2|9"})) << "it has the identity too";
}

} // namespace
} // namespace tsql::test
