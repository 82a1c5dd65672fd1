// UPDATE and DELETE of the rows that a common table expression, a derived table or a view gives.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class ChangedQueriesTest : public EngineTest {
 protected:
  void SetUp() override {
    Must("CREATE TABLE t (id INT, k VARCHAR(5), n INT NULL)"
         " INSERT INTO t VALUES (1, 'a', 10), (2, 'a', 20), (3, 'b', 30), (4, 'a', 40), (5, 'b', 50)");
  }
  Lines Left() { return Rows("SELECT id, n FROM t ORDER BY id"); }
};

TEST_F(ChangedQueriesTest, RowsAreDeletedByTheirPlace) {
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON;WITH d AS (SELECT *, ROW_NUMBER() OVER (PARTITION BY k ORDER BY id DESC) AS place FROM t)"
          " DELETE FROM d WHERE place > 1 SELECT @@ROWCOUNT"),
      Lines({"3"}));
  EXPECT_EQ(Left(), Lines({"4|40", "5|50"}));
}

TEST_F(ChangedQueriesTest, TheFirstRowsOfAnOrder) {
  Must("WITH d AS (SELECT TOP 2 * FROM t ORDER BY n DESC) DELETE FROM d");
  EXPECT_EQ(Left(), Lines({"1|10", "2|20", "3|30"}));
  Must("WITH d AS (SELECT TOP (1) n FROM t ORDER BY id) UPDATE d SET n = n + 1");
  EXPECT_EQ(Left(), Lines({"1|11", "2|20", "3|30"}));
  Must("WITH d AS (SELECT * FROM t) DELETE TOP (1) FROM d WHERE n > 15");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"2"}));
}

TEST_F(ChangedQueriesTest, AnUpdateTakesWhatTheQueryComputes) {
  Must(
      "WITH d (number, place, total) AS (SELECT n, ROW_NUMBER() OVER (ORDER BY id DESC), SUM(n) OVER (PARTITION BY k) FROM t)"
      " UPDATE d SET number = place * 100 + total WHERE place <> 3");
  EXPECT_EQ(Left(), Lines({"1|570", "2|470", "3|30", "4|270", "5|180"}));
  Must("UPDATE x SET x.n = y.id FROM (SELECT id, n FROM t WHERE k = 'b') x JOIN t y ON y.id = x.id - 1");
  EXPECT_EQ(Left(), Lines({"1|570", "2|470", "3|2", "4|270", "5|4"}));
  Must("DELETE x FROM (SELECT TOP 1 id FROM t ORDER BY id) AS x WHERE x.id = 1");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"4"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON DECLARE @s INT SET @s = 0;WITH d AS (SELECT n FROM t WHERE k = 'b') UPDATE d SET @s += n, n = 0"
          " SELECT @s"),
      Lines({"6"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON DECLARE @s INT SET @s = 0;WITH d AS (SELECT id FROM t) UPDATE d SET @s = @s + id SELECT @s"),
      Lines({"14"}));
}

TEST_F(ChangedQueriesTest, AViewIsItsTable) {
  Must("CREATE VIEW v AS SELECT id AS number, n, n * 2 AS twice FROM t WHERE k = 'a'");
  Must("UPDATE v SET n = twice WHERE number > 1 DELETE v WHERE number = 1");
  EXPECT_EQ(Left(), Lines({"2|40", "3|30", "4|80", "5|50"}));
  Must("UPDATE x SET n = 7 FROM v x JOIN t ON t.id = x.number + 1 WHERE t.k = 'b'");
  EXPECT_EQ(Left(), Lines({"2|7", "3|30", "4|7", "5|50"}));
  EXPECT_EQ(
      ErrorText("UPDATE v SET twice = 1"),
      "4406 1 Update or insert of view or function 'v' failed because it contains a derived or constant field.");
  EXPECT_EQ(ErrorOf("UPDATE v SET k = 'b'"), 207);
  EXPECT_EQ(ErrorOf("UPDATE v SET id = 1"), 207);
}

TEST_F(ChangedQueriesTest, TriggersAndKeysOfTheTable) {
  Must("CREATE TABLE log (id INT, was INT, becomes INT)");
  Must("CREATE TRIGGER tr ON t FOR UPDATE, DELETE AS INSERT INTO log SELECT d.id, d.n, i.n FROM deleted d"
       " LEFT JOIN inserted i ON i.id = d.id");
  Must(
      "WITH d AS (SELECT n, ROW_NUMBER() OVER (ORDER BY id) AS place FROM t) UPDATE d SET n = place WHERE place < 3"
      ";WITH d AS (SELECT id FROM t) DELETE FROM d WHERE id = 5");
  EXPECT_EQ(Rows("SELECT id, was, becomes FROM log ORDER BY id"), Lines({"1|10|1", "2|20|2", "5|50|NULL"}));
  Must("CREATE TABLE z (id INT PRIMARY KEY) CREATE TABLE y (id INT REFERENCES z ON UPDATE CASCADE)"
       " INSERT INTO z VALUES (1), (2) INSERT INTO y VALUES (2)"
       ";WITH d (number) AS (SELECT id FROM z) UPDATE d SET number = 7 WHERE number = 2");
  EXPECT_EQ(Rows("SELECT id FROM y"), Lines({"7"}));
  Must("CREATE TABLE u (id INT PRIMARY KEY, n INT) INSERT INTO u VALUES (1, 1), (2, 2)"
       ";WITH d AS (SELECT id, n FROM u) UPDATE d SET id = 3 - id");
  EXPECT_EQ(Rows("SELECT id, n FROM u ORDER BY id"), Lines({"1|2", "2|1"}));
  EXPECT_EQ(ErrorOf("WITH d AS (SELECT id FROM u) UPDATE d SET id = 1"), 2627);
}

TEST_F(ChangedQueriesTest, RowsAreInsertedThroughAView) {
  Must("CREATE TABLE p (id INT IDENTITY(1,1), a INT NOT NULL, b VARCHAR(5) DEFAULT 'z', c AS a * 2)");
  Must("CREATE VIEW pv AS SELECT id, a AS first_one, b FROM p WHERE a < 100");
  Must(
      "INSERT INTO pv (first_one) VALUES (1), (200) INSERT pv (b, first_one) SELECT 'y', 2 INSERT INTO pv VALUES (3, 'x')");
  EXPECT_EQ(Rows("SELECT id, a, b, c FROM p ORDER BY id"),
            Lines({"1|1|z|2", "2|200|z|400", "3|2|y|4", "4|3|x|6"}))
      << "its condition does not count without WITH CHECK OPTION";
  EXPECT_EQ(Rows("SET NOCOUNT ON INSERT INTO pv (first_one) VALUES (5) SELECT @@IDENTITY"), Lines({"5"}));
  EXPECT_EQ(ErrorOf("INSERT INTO pv (a) VALUES (1)"), 207);
  EXPECT_EQ(ErrorOf("INSERT INTO pv (b) VALUES ('x')"), 515);
  EXPECT_EQ(ErrorOf("INSERT INTO pv (id, first_one) VALUES (1, 1)"), 544);
  EXPECT_EQ(ErrorOf("INSERT INTO pv VALUES (1)"), 213);
  Must("CREATE VIEW derived AS SELECT a, a + 1 AS more FROM p");
  Must("INSERT INTO derived (a) VALUES (6)");
  EXPECT_EQ(
      ErrorText("INSERT INTO derived VALUES (7, 8)"),
      "4406 1 Update or insert of view or function 'derived' failed because it contains a derived or constant field.");
  Must("CREATE VIEW grouped AS SELECT a, COUNT(*) AS n FROM p GROUP BY a");
  EXPECT_EQ(ErrorOf("INSERT INTO grouped (a) VALUES (1)"), 4403);
  Must("CREATE VIEW united AS SELECT a FROM p UNION ALL SELECT a FROM p");
  EXPECT_EQ(ErrorOf("INSERT INTO united (a) VALUES (1)"), 4426);
  EXPECT_EQ(ErrorText("INSERT INTO pv (first_one) OUTPUT inserted.first_one VALUES (1)"),
            "40510 1 OUTPUT of a change through a query or view is not supported.");
}

TEST_F(ChangedQueriesTest, TriggersOfTheTableFireForRowsThroughAView) {
  Must("CREATE TABLE p (a INT) CREATE TABLE log (a INT)");
  Must("CREATE VIEW pv AS SELECT a FROM p");
  Must("CREATE PROCEDURE put @a INT AS INSERT INTO pv VALUES (@a), (@a + 1)");
  Must("EXEC put 1");
  Must("CREATE TRIGGER tr ON p FOR INSERT AS INSERT INTO log SELECT a FROM inserted");
  Must("EXEC put 10");
  EXPECT_EQ(Rows("SELECT a FROM p ORDER BY a"), Lines({"1", "2", "10", "11"}));
  EXPECT_EQ(Rows("SELECT a FROM log ORDER BY a"), Lines({"10", "11"}));
  Must("DROP TRIGGER tr EXEC put 20 DROP VIEW pv");
  Must("CREATE VIEW pv AS SELECT a AS b FROM log");
  Must("EXEC put 30");
  EXPECT_EQ(Rows("SELECT MAX(a) FROM log"), Lines({"31"})) << "the view is another one";
}

TEST_F(ChangedQueriesTest, WhatCannotBeChanged) {
  EXPECT_EQ(ErrorOf("WITH d AS (SELECT k, SUM(n) AS n FROM t GROUP BY k) UPDATE d SET n = 1"), 4403);
  EXPECT_EQ(ErrorOf("WITH d AS (SELECT DISTINCT k FROM t) DELETE FROM d"), 4403);
  EXPECT_EQ(ErrorOf("WITH d AS (SELECT k FROM t UNION ALL SELECT 'x') DELETE FROM d"), 4426);
  EXPECT_EQ(ErrorOf("WITH d AS (SELECT a.k FROM t a, t b) DELETE FROM d"), 4405);
  EXPECT_EQ(ErrorOf("WITH d AS (SELECT a.k FROM t a, t b) UPDATE d SET k = 'x'"), 40510);
  EXPECT_EQ(ErrorOf("DELETE FROM sys.objects"), 259);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"5"}));
}

} // namespace
} // namespace tsql::test
