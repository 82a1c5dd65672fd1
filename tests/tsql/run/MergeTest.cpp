// MERGE.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class MergeTest : public EngineTest {
 protected:
  void SetUp() override {
    Must("CREATE TABLE t (id INT NOT NULL PRIMARY KEY, name VARCHAR(20) NULL, qty INT NOT NULL DEFAULT 7)"
         " CREATE TABLE s (id INT NOT NULL, name VARCHAR(20) NULL)"
         " INSERT INTO t VALUES (1, 'a', 1), (2, 'b', 2), (3, 'c', 3), (4, 'd', 4)"
         " INSERT INTO s VALUES (2, 'B'), (3, NULL), (5, 'e'), (6, 'f')");
  }
  Lines Left() { return Rows("SELECT id, name, qty FROM t ORDER BY id"); }
};

TEST_F(MergeTest, EachRowHasTheFirstActionThatIsForIt) {
  const Output output =
      Run("MERGE INTO t AS x USING s ON x.id = s.id WHEN MATCHED AND s.name IS NULL THEN DELETE"
          " WHEN MATCHED THEN UPDATE SET name = s.name, x.qty += 10"
          " WHEN NOT MATCHED BY TARGET THEN INSERT (id, name, qty) VALUES (s.id, s.name, DEFAULT)"
          " WHEN NOT MATCHED BY SOURCE AND x.id > 1 THEN UPDATE SET qty = -1; SELECT @@ROWCOUNT");
  EXPECT_EQ(output.counts, std::vector<int64_t>({5}));
  EXPECT_EQ(output.results, std::vector<Lines>({{"5"}}));
  EXPECT_EQ(Left(), Lines({"1|a|1", "2|B|12", "4|d|-1", "5|e|7", "6|f|7"}));
}

TEST_F(MergeTest, TheSourceIsATableOfAnyKind) {
  Must("MERGE t USING (VALUES (1, 'one'), (9, 'nine')) AS v (k, n) ON t.id = v.k"
       " WHEN MATCHED THEN UPDATE SET t.name = n WHEN NOT MATCHED THEN INSERT (id, name) VALUES (k, n);");
  EXPECT_EQ(Rows("SELECT name FROM t WHERE id IN (1, 9) ORDER BY id"), Lines({"one", "nine"}));
  Must("MERGE t USING (SELECT 9 AS k UNION SELECT 8) AS v ON t.id = v.k"
       " WHEN NOT MATCHED THEN INSERT (id) VALUES (k) WHEN MATCHED THEN DELETE;");
  EXPECT_EQ(Rows("SELECT id FROM t WHERE id > 4"), Lines({"8"}));
  Must("WITH c (k, n) AS (SELECT id, name FROM s WHERE id > 4) MERGE INTO t WITH (HOLDLOCK) USING c ON id = k"
       " WHEN NOT MATCHED AND n <> 'f' THEN INSERT VALUES (k, UPPER(n), 1)"
       " WHEN NOT MATCHED BY SOURCE AND id = 8 THEN DELETE OPTION (LOOP JOIN);");
  EXPECT_EQ(Rows("SELECT id, name FROM t WHERE id > 4"), Lines({"5|E"}));
  Must("CREATE VIEW v AS SELECT id + 100 AS id, name FROM s");
  Must("MERGE t USING v ON 1 = 0 WHEN NOT MATCHED THEN INSERT (id, name) VALUES (v.id, v.name);");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE id > 100"), Lines({"4"}));
}

TEST_F(MergeTest, TableVariablesAndLoops) {
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON DECLARE @t TABLE (id INT, n INT) DECLARE @i INT SET @i = 0 WHILE @i < 3 BEGIN"
          " MERGE @t AS a USING (SELECT @i / 2 AS id) b ON a.id = b.id WHEN MATCHED THEN UPDATE SET n = n + 1"
          " WHEN NOT MATCHED THEN INSERT VALUES (b.id, 100); SET @i += 1 END SELECT id, n FROM @t"),
      Lines({"0|101", "1|100"}));
}

TEST_F(MergeTest, ARowIsChangedOnce) {
  EXPECT_EQ(
      ErrorOf("MERGE t USING (VALUES (1), (1)) v (k) ON t.id = v.k WHEN MATCHED THEN UPDATE SET qty = 0;"),
      8672);
  EXPECT_EQ(ErrorOf("MERGE t USING (VALUES (1), (1)) v (k) ON t.id = v.k WHEN MATCHED THEN DELETE;"), 8672);
  EXPECT_EQ(Left().size(), 4U);
  // The second row is for no action.
  Must("MERGE t USING (VALUES (1, 5), (1, 6)) v (k, n) ON t.id = v.k WHEN MATCHED AND n = 6 THEN"
       " UPDATE SET qty = n;");
  EXPECT_EQ(Rows("SELECT qty FROM t WHERE id = 1"), Lines({"6"}));
}

TEST_F(MergeTest, ItIsOneStatement) {
  EXPECT_EQ(ErrorText("MERGE t USING s ON t.id = s.id WHEN MATCHED THEN DELETE"
                      " WHEN NOT MATCHED THEN INSERT (id, name) VALUES (1, s.name);")
                .substr(0, 4),
            "2627");
  EXPECT_EQ(Left(), Lines({"1|a|1", "2|b|2", "3|c|3", "4|d|4"}));
  Must("ALTER TABLE t ADD CONSTRAINT few CHECK (qty < 100) CREATE TABLE child (id INT REFERENCES t)"
       " INSERT INTO child VALUES (4)");
  EXPECT_EQ(ErrorText("MERGE t USING s ON t.id = s.id WHEN NOT MATCHED THEN INSERT (id) VALUES (s.id)"
                      " WHEN MATCHED THEN UPDATE SET qty = 100;")
                .substr(0, 68),
            "547 1 The MERGE statement conflicted with the CHECK constraint \"few\"");
  EXPECT_EQ(ErrorText("MERGE t USING s ON t.id = s.id WHEN NOT MATCHED BY SOURCE THEN DELETE;").substr(0, 60),
            "547 1 The MERGE statement conflicted with the REFERENCE cons");
  EXPECT_EQ(Left(), Lines({"1|a|1", "2|b|2", "3|c|3", "4|d|4"}));
  // A key that goes and comes again is no duplicate.
  Must("MERGE t USING (SELECT 1 AS id) v ON t.id = v.id + 1 WHEN MATCHED THEN UPDATE SET id = 1"
       " WHEN NOT MATCHED BY SOURCE AND t.id = 1 THEN DELETE;");
  EXPECT_EQ(Rows("SELECT id, name FROM t WHERE id < 3"), Lines({"1|b"}));
}

TEST_F(MergeTest, TriggersFireForEachKindOfChange) {
  Must("CREATE TABLE log (n INT IDENTITY, i INT, d INT, r INT)");
  Must(
      "CREATE TRIGGER tr ON t FOR INSERT, UPDATE, DELETE AS DECLARE @r INT SET @r = @@ROWCOUNT"
      " INSERT INTO log (i, d, r) SELECT (SELECT COUNT(*) FROM inserted), (SELECT COUNT(*) FROM deleted), @r");
  EXPECT_EQ(Run("MERGE t USING s ON t.id = s.id WHEN MATCHED THEN UPDATE SET qty = 0"
                " WHEN NOT MATCHED THEN INSERT (id) VALUES (s.id) WHEN NOT MATCHED BY SOURCE AND t.id = 4"
                " THEN DELETE;")
                .counts.back(),
            5);
  EXPECT_EQ(Rows("SELECT i, d, r FROM log ORDER BY n"), Lines({"0|1|5", "2|2|5", "2|0|5"}));
  // What a trigger fails at undoes all of the statement.
  Must("ALTER TRIGGER tr ON t FOR INSERT AS IF EXISTS (SELECT * FROM inserted WHERE id = 50) SELECT 1 / 0");
  EXPECT_EQ(ErrorOf("MERGE t USING (VALUES (1), (50)) v (k) ON id = k WHEN MATCHED THEN DELETE"
                    " WHEN NOT MATCHED THEN INSERT (id) VALUES (k);"),
            8134);
  EXPECT_EQ(Rows("SELECT id FROM t WHERE id IN (1, 50)"), Lines({"1"}));
  EXPECT_EQ(session_->TransactionCount(), 0);
}

TEST_F(MergeTest, WithinATriggerItHasRowsOfItsOwn) {
  Must("CREATE TABLE sums (name VARCHAR(20) PRIMARY KEY, n INT)");
  Must(
      "CREATE TRIGGER tr ON t FOR INSERT, UPDATE AS MERGE sums USING (SELECT name, SUM(qty) AS n FROM inserted"
      " GROUP BY name) AS i ON sums.name = i.name WHEN MATCHED THEN UPDATE SET n += i.n"
      " WHEN NOT MATCHED THEN INSERT VALUES (i.name, i.n);");
  Must("MERGE t USING s ON t.id = s.id WHEN MATCHED THEN UPDATE SET name = 'x', qty = t.qty * 10"
       " WHEN NOT MATCHED THEN INSERT VALUES (s.id, 'x', 1);");
  EXPECT_EQ(Rows("SELECT name, n FROM sums"), Lines({"x|52"}));
}

TEST_F(MergeTest, IdentityColumnsAndRowCount) {
  Must("CREATE TABLE g (n INT IDENTITY(10, 5), k INT, c AS k * 2)");
  EXPECT_EQ(
      Rows("SET NOCOUNT ON MERGE g USING s ON g.k = s.id WHEN NOT MATCHED THEN INSERT (k) VALUES (s.id);"
           " SELECT SCOPE_IDENTITY(), @@ROWCOUNT, (SELECT SUM(c) FROM g)"),
      Lines({"25|4|32"}));
  EXPECT_EQ(ErrorOf("MERGE g USING s ON g.k = s.id WHEN MATCHED THEN UPDATE SET n = 1;"), 8102);
  EXPECT_EQ(Rows("SET NOCOUNT ON SET ROWCOUNT 2 MERGE g USING s ON g.k = s.id WHEN MATCHED THEN DELETE;"
                 " SET ROWCOUNT 0 SELECT COUNT(*) FROM g"),
            Lines({"2"}));
}

TEST_F(MergeTest, TheSourceMayChangeBetweenRuns) {
  Must("CREATE PROCEDURE p AS MERGE t USING s ON t.id = s.id WHEN NOT MATCHED THEN INSERT (id, name)"
       " VALUES (s.id, s.name);");
  Must("EXEC p DELETE FROM t WHERE id > 4 DROP TABLE s CREATE TABLE s (name INT, more INT, id INT)"
       " INSERT INTO s VALUES (77, 0, 8) EXEC p");
  EXPECT_EQ(Rows("SELECT id, name FROM t WHERE id > 4"), Lines({"8|77"}));
}

TEST_F(MergeTest, CollationsOfTheSource) {
  Must("CREATE TABLE cased (k VARCHAR(5) COLLATE Latin1_General_CS_AS) INSERT INTO cased VALUES ('a'), ('A')"
       " CREATE TABLE u (k VARCHAR(5) COLLATE Latin1_General_CS_AS, n INT) INSERT INTO u VALUES ('a', 0)"
       " MERGE u USING cased AS c ON c.k = u.k WHEN MATCHED AND c.k = 'a' THEN UPDATE SET n += 1"
       " WHEN NOT MATCHED THEN INSERT VALUES (c.k, CASE c.k WHEN 'a' THEN 7 ELSE 8 END);");
  EXPECT_EQ(Rows("SELECT k, n FROM u ORDER BY n"), Lines({"a|1", "A|8"}));
}

TEST_F(MergeTest, WhatIsWrittenWrongly) {
  EXPECT_EQ(ErrorText("MERGE t USING s ON t.id = s.id WHEN MATCHED THEN DELETE"),
            "10713 1 A MERGE statement must be terminated by a semi-colon (;).");
  EXPECT_EQ(
      ErrorText("MERGE t USING s ON t.id = s.id WHEN MATCHED THEN INSERT (id) VALUES (1);"),
      "10711 1 An action of type 'INSERT' is not allowed in the 'WHEN MATCHED' clause of a MERGE statement.");
  EXPECT_EQ(ErrorOf("MERGE t USING s ON t.id = s.id WHEN NOT MATCHED THEN DELETE;"), 10711);
  EXPECT_EQ(
      ErrorText(
          "MERGE t USING s ON t.id = s.id WHEN MATCHED AND 1 = 0 THEN DELETE WHEN MATCHED THEN DELETE;"),
      "10714 1 An action of type 'DELETE' cannot appear more than once in a 'WHEN MATCHED' clause of a MERGE "
      "statement.");
  EXPECT_EQ(
      ErrorText("MERGE t USING s ON t.id = s.id WHEN MATCHED THEN DELETE WHEN MATCHED AND 1 = 0 THEN"
                " UPDATE SET qty = 1;"),
      "5324 1 In a MERGE statement, a 'WHEN MATCHED' clause with a search condition cannot appear after a 'WHEN "
      "MATCHED' clause with no search condition.");
  EXPECT_EQ(ErrorOf("MERGE t USING s ON t.id = s.id;"), 102);
  EXPECT_EQ(ErrorOf("MERGE t USING s ON t.id = s.id WHEN NOT MATCHED THEN INSERT (id, qty) VALUES (1);"),
            109);
  EXPECT_EQ(ErrorOf("MERGE t USING s ON t.id = s.id WHEN NOT MATCHED THEN INSERT (id) VALUES (1, 2);"), 110);
  EXPECT_EQ(ErrorOf("MERGE t USING s ON t.id = s.id WHEN NOT MATCHED THEN INSERT VALUES (1);"), 213);
  EXPECT_EQ(ErrorOf("MERGE t USING s ON t.id = s.id WHEN NOT MATCHED THEN INSERT (id) VALUES (t.id);"), 4104);
  EXPECT_EQ(ErrorOf("MERGE t USING s ON t.id = s.id WHEN MATCHED THEN UPDATE SET nothing = 1;"), 207);
  EXPECT_EQ(ErrorOf("MERGE t USING s ON id = 1 WHEN MATCHED THEN DELETE;"), 209);
  EXPECT_EQ(ErrorOf("MERGE t USING nothing n ON 1 = 1 WHEN MATCHED THEN DELETE;"), 208);
  EXPECT_EQ(
      ErrorOf("CREATE FUNCTION f () RETURNS INT AS BEGIN MERGE t USING s ON t.id = s.id WHEN MATCHED THEN"
              " DELETE; RETURN 1 END"),
      443);
}

} // namespace
} // namespace tsql::test
