// The OUTPUT clause: what a change gives of the rows that it makes, as a result and into a table.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class OutputTest : public EngineTest {
 protected:
  OutputTest() {
    Must(
        "CREATE TABLE t (id INT NOT NULL PRIMARY KEY, name VARCHAR(10) NULL DEFAULT 'none', qty DECIMAL(9,2) NULL)");
    Must("INSERT INTO t VALUES (1, 'one', 1.5), (2, 'two', NULL), (3, 'three', 3)");
    Must(
        "CREATE TABLE log (n INT IDENTITY(1,1), id INT NULL, was VARCHAR(5) NULL, at INT NOT NULL DEFAULT 7)");
  }
};

TEST_F(OutputTest, Insert) {
  EXPECT_EQ(Rows("INSERT INTO t (id) OUTPUT inserted.* VALUES (10), (11)"),
            Lines({"10|none|NULL", "11|none|NULL"}));
  EXPECT_EQ(
      Rows(
          "INSERT INTO log (id) OUTPUT inserted.n, INSERTED.id * 2 AS twice, 'new' SELECT id FROM t WHERE id < 3 "
          "ORDER BY id"),
      Lines({"1|2|new", "2|4|new"}));
  const Output output =
      Run("INSERT INTO log DEFAULT VALUES INSERT INTO log (id) OUTPUT inserted.n AS number, "
          "inserted.was VALUES (5) SELECT @@ROWCOUNT, SCOPE_IDENTITY(), @@IDENTITY");
  ASSERT_EQ(output.results.size(), 2U);
  EXPECT_EQ(output.columns[0][0].name, "number");
  EXPECT_EQ(output.columns[0][1].name, "was");
  EXPECT_EQ(output.columns[0][1].type.id, TypeId::VarChar);
  EXPECT_EQ(output.results[0], Lines({"4|NULL"}));
  EXPECT_EQ(output.results[1], Lines({"1|4|4"}));
  // Nothing but the result tells of the rows.
  EXPECT_EQ(output.counts, std::vector<int64_t>({1}));
  EXPECT_EQ(Rows("INSERT INTO t OUTPUT inserted.id SELECT id, name, qty FROM t WHERE 1 = 0"), Lines());
}

TEST_F(OutputTest, Update) {
  EXPECT_EQ(
      Rows("UPDATE t SET qty = ISNULL(qty, 0) + 1, name = UPPER(name) OUTPUT deleted.name, inserted.name, "
           "deleted.qty, inserted.qty, inserted.qty - deleted.qty WHERE id < 3"),
      Lines({"one|ONE|1.50|2.50|1.00", "two|TWO|NULL|1.00|NULL"}));
  EXPECT_EQ(Rows("SELECT id, name, qty FROM t ORDER BY id"),
            Lines({"1|ONE|2.50", "2|TWO|1.00", "3|three|3.00"}));
  // Keys may move from row to row.
  EXPECT_EQ(Rows("UPDATE t SET id = id + 1 OUTPUT deleted.id, inserted.id"), Lines({"1|2", "2|3", "3|4"}));
  EXPECT_EQ(Rows("SELECT id, name FROM t ORDER BY id"), Lines({"2|ONE", "3|TWO", "4|three"}));
  EXPECT_EQ(Rows("UPDATE t SET name = 'x' OUTPUT inserted.* WHERE 1 = 0"), Lines());
  // What a volatile function gave is what the table has.
  Must("CREATE TABLE g (a INT, u UNIQUEIDENTIFIER NULL) INSERT INTO g VALUES (1, NULL)");
  const Output output = Run("UPDATE g SET u = NEWID() OUTPUT inserted.u SELECT u FROM g");
  ASSERT_EQ(output.results.size(), 2U);
  EXPECT_EQ(output.results[0], output.results[1]);
}

TEST_F(OutputTest, UpdateAndDeleteWithOtherTables) {
  Must("CREATE TABLE f (k INT NOT NULL, v VARCHAR(5) NULL) INSERT INTO f VALUES (1, 'a'), (3, 'c')");
  EXPECT_EQ(
      Rows("UPDATE t SET name = f.v OUTPUT inserted.id, deleted.name, f.v + '!' FROM t JOIN f ON f.k = t.id"),
      Lines({"1|one|a!", "3|three|c!"}));
  EXPECT_EQ(Rows("DELETE x OUTPUT deleted.id, v FROM t x JOIN f ON f.k = x.id WHERE v = 'c'"),
            Lines({"3|c"}));
  EXPECT_EQ(Rows("DELETE TOP (1) FROM t OUTPUT deleted.id, deleted.name"), Lines({"1|a"}));
  EXPECT_EQ(Rows("SELECT id FROM t"), Lines({"2"}));
  EXPECT_EQ(Rows("WITH c AS (SELECT 2 AS k) DELETE FROM t OUTPUT deleted.name WHERE id IN (SELECT k FROM c)"),
            Lines({"two"}));
}

TEST_F(OutputTest, IntoATable) {
  const Output output = Run("DELETE FROM t OUTPUT deleted.id, deleted.name INTO log (id, was) WHERE id < 3");
  EXPECT_TRUE(output.results.empty());
  EXPECT_EQ(output.counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Rows("SELECT n, id, was, at FROM log ORDER BY id"), Lines({"1|1|one|7", "2|2|two|7"}));
  Must(
      "CREATE TABLE #c (a INT, b DECIMAL(9,1)) UPDATE t SET qty = 2.25 OUTPUT deleted.id, inserted.qty INTO #c");
  EXPECT_EQ(Rows("SELECT a, b FROM #c"), Lines({"3|2.3"}));
  EXPECT_EQ(Rows("INSERT INTO t (id) OUTPUT inserted.id, inserted.qty INTO #c VALUES (20) SELECT @@ROWCOUNT"),
            Lines({"1"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM #c"), Lines({"2"}));
  // What does not fit there undoes the change.
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT deleted.id, 'too long' INTO log (id, was)"), 8152);
  const std::string missing = ErrorText("DELETE FROM t OUTPUT NULL INTO log (at)");
  EXPECT_TRUE(missing.starts_with("515 1 Cannot insert the value NULL into column 'at'")) << missing;
  EXPECT_TRUE(missing.ends_with(".dbo.log'; column does not allow nulls. DELETE fails.")) << missing;
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"2"}));
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT deleted.id INTO nothing"), 208);
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT deleted.id INTO log (id, was)"), 120);
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT deleted.id, 1 INTO log (id)"), 121);
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT deleted.id INTO log (n)"), 544);
}

TEST_F(OutputTest, IntoATableVariable) {
  const Output output =
      Run("SET NOCOUNT ON DECLARE @gone TABLE (id INT PRIMARY KEY, name VARCHAR(10), twice INT)"
          " DELETE FROM t OUTPUT deleted.id, deleted.name, 2 * deleted.id INTO @gone WHERE id > 1"
          " SELECT @@ROWCOUNT SELECT id, name, twice FROM @gone ORDER BY id");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"2"}, {"2|two|4", "3|three|6"}}));
  // A rollback leaves what the variable has, and undoes the change.
  EXPECT_EQ(
      Rows("SET NOCOUNT ON DECLARE @new TABLE (id INT) BEGIN TRAN INSERT t (id) OUTPUT inserted.id INTO @new"
           " VALUES (7), (8) ROLLBACK SELECT x.id, t.id FROM @new x LEFT JOIN t ON t.id = x.id ORDER BY 1"),
      Lines({"7|NULL", "8|NULL"}));
  // A change of a variable goes into a table.
  EXPECT_EQ(
      Rows("SET NOCOUNT ON DECLARE @v TABLE (a INT) INSERT @v VALUES (4) INSERT @v OUTPUT inserted.a INTO @v"
           " SELECT a + 1 FROM @v UPDATE @v SET a = a + 10 OUTPUT inserted.a, deleted.a INTO log (id, was)"
           " SELECT id, was FROM log ORDER BY id"),
      Lines({"14|4", "15|5", "15|5"}));
  EXPECT_EQ(ErrorOf("DECLARE @v TABLE (a INT NOT NULL) INSERT log (id) OUTPUT NULL INTO @v VALUES (1)"), 515);
  EXPECT_EQ(ErrorOf("DELETE log OUTPUT deleted.id INTO @nothing"), 1087);
}

TEST_F(OutputTest, WithARowCount) {
  EXPECT_EQ(Rows("SET ROWCOUNT 2 UPDATE t SET qty = 0 OUTPUT inserted.id"), Lines({"1", "2"}));
  EXPECT_EQ(Rows("SET ROWCOUNT 1 DELETE t OUTPUT deleted.id"), Lines({"1"}));
  EXPECT_EQ(Rows("SET ROWCOUNT 1 INSERT log (id) OUTPUT inserted.id SELECT id FROM t ORDER BY id"),
            Lines({"2"}));
  EXPECT_EQ(Rows("SET ROWCOUNT 0 SELECT id FROM t"), Lines({"2", "3"}));
}

TEST_F(OutputTest, AndWhatAProcedureReturns) {
  EXPECT_EQ(ErrorText("INSERT log (id) OUTPUT inserted.id EXEC ('SELECT 1')"),
            "483 1 The OUTPUT clause cannot be used in an INSERT...EXEC statement.");
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON INSERT log (id, was) EXEC ('DELETE t OUTPUT deleted.id, deleted.name WHERE id < 3')"
          " SELECT id, was FROM log ORDER BY id"),
      Lines({"1|one", "2|two"}));
}

TEST_F(OutputTest, AFailingChangeGivesNothing) {
  Must("CREATE TABLE p (a INT NOT NULL PRIMARY KEY) CREATE TABLE c (a INT NOT NULL REFERENCES p (a)) "
       "INSERT INTO p VALUES (1), (2) INSERT INTO c VALUES (2)");
  for (const char* batch :
       {"INSERT INTO p OUTPUT inserted.a VALUES (3), (1)", "DELETE FROM p OUTPUT deleted.a",
        "UPDATE p SET a = 5 OUTPUT inserted.a WHERE a = 2", "INSERT INTO c OUTPUT inserted.a VALUES (9)"}) {
    const Output output = Run(batch);
    EXPECT_EQ(output.errors.size(), 1U) << batch;
    EXPECT_TRUE(output.results.empty()) << batch;
  }
  EXPECT_EQ(Rows("SELECT a FROM p ORDER BY a"), Lines({"1", "2"}));
  EXPECT_EQ(Rows("BEGIN TRAN DELETE FROM c OUTPUT deleted.a ROLLBACK"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT a FROM c"), Lines({"2"}));
  // The session goes on as if nothing had been.
  EXPECT_EQ(Rows("INSERT INTO p OUTPUT inserted.a VALUES (4)"), Lines({"4"}));
  Must("CREATE PROCEDURE q AS INSERT INTO p OUTPUT inserted.a SELECT MAX(a) + 1 FROM p");
  EXPECT_EQ(Rows("EXEC q"), Lines({"5"}));
  EXPECT_EQ(Rows("EXEC q"), Lines({"6"}));
}

TEST_F(OutputTest, BadClauses) {
  EXPECT_EQ(ErrorText("INSERT INTO t (id) OUTPUT deleted.id VALUES (9)"),
            "4104 1 The multi-part identifier \"deleted.id\" could not be bound.");
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT inserted.id"), 4104);
  EXPECT_EQ(ErrorText("DELETE FROM t OUTPUT deleted.nothing"), "207 1 Invalid column name 'nothing'.");
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT id"), 207);
  EXPECT_EQ(ErrorOf("UPDATE t SET qty = 1 OUTPUT t.id"), 4104);
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT *"), 102);
  EXPECT_EQ(ErrorText("DELETE FROM t OUTPUT COUNT(*)"),
            "158 1 An aggregate may not appear in the OUTPUT clause.");
  EXPECT_EQ(ErrorText("DELETE FROM t OUTPUT (SELECT 1)"),
            "10705 1 Subqueries are not allowed in the OUTPUT clause.");
  EXPECT_EQ(ErrorOf("DELETE FROM t OUTPUT ROW_NUMBER() OVER (ORDER BY deleted.id)"), 4108);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t"), Lines({"3"}));
}

} // namespace
} // namespace tsql::test
