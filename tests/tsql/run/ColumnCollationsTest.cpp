// Columns with collations other than the database's, and what is made of them.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class ColumnCollationsTest : public EngineTest {
 protected:
  ColumnCollationsTest() {
    // The same letters in columns that tell cases apart by the dictionary, by code points, and not at all.
    Must("CREATE TABLE t (id INT NOT NULL PRIMARY KEY, cs VARCHAR(10) COLLATE Chinese_PRC_CS_AS NULL,"
         " bin NVARCHAR(10) COLLATE Latin1_General_BIN2 NULL, ci VARCHAR(10) NULL)");
    Must(
        "INSERT t VALUES (1, 'b', N'b', 'b'), (2, 'A', N'A', 'A'), (3, 'B', N'B', 'B'), (4, 'a', N'a', 'a')");
  }

  // The ids of the rows in which the condition holds.
  std::string Where(const std::string& condition) {
    std::string ids;
    for (const std::string& id : Rows("SELECT id FROM t WHERE " + condition + " ORDER BY id")) ids += id;
    return ids;
  }
};

TEST_F(ColumnCollationsTest, Comparisons) {
  for (const std::string column : {"cs", "bin"}) {
    EXPECT_EQ(Where(column + " = 'b'"), "1");
    EXPECT_EQ(Where("'A' = " + column), "2");
    EXPECT_EQ(Where(column + " <> 'a'"), "123");
    EXPECT_EQ(Where(column + " IN ('B', 'a')"), "34");
    EXPECT_EQ(Where(column + " NOT IN ('B', 'a')"), "12");
    EXPECT_EQ(Where("'B' IN (" + column + ", 'x')"), "3");
    EXPECT_EQ(Where(column + " LIKE 'B%'"), "3");
    EXPECT_EQ(Where("'B' LIKE " + column), "3");
    EXPECT_EQ(Where(column + " NOT LIKE '[aB]'"), "12");
    EXPECT_EQ(Where("CASE " + column + " WHEN 'b' THEN 1 ELSE 0 END = 1"), "1");
    EXPECT_EQ(Where("NULLIF(" + column + ", 'B') IS NULL"), "3");
    EXPECT_EQ(Where(column + " = ANY (SELECT 'a' UNION ALL SELECT 'B')"), "34");
    EXPECT_EQ(Where(column + " <> ALL (SELECT 'a')"), "123");
    // Trailing blanks do not count, as in any collation.
    EXPECT_EQ(Where(column + " = 'b  '"), "1");
  }
  EXPECT_EQ(Where("ci = 'b'"), "13");
  EXPECT_EQ(Rows("DECLARE @v VARCHAR(5) SET @v = 'B' SELECT id FROM t WHERE cs = @v"), Lines({"3"}));
}

TEST_F(ColumnCollationsTest, Order) {
  // By the dictionary small letters come before their capitals; capitals have the lower code points.
  EXPECT_EQ(Rows("SELECT cs FROM t ORDER BY cs"), Lines({"a", "A", "b", "B"}));
  EXPECT_EQ(Rows("SELECT bin FROM t ORDER BY bin DESC"), Lines({"b", "a", "B", "A"}));
  EXPECT_EQ(Rows("SELECT cs + 'x' FROM t ORDER BY cs + 'x'"), Lines({"ax", "Ax", "bx", "Bx"}));
  EXPECT_EQ(Where("bin BETWEEN 'A' AND 'a'"), "234");
  EXPECT_EQ(Where("'a' BETWEEN bin AND 'a'"), "234");
  EXPECT_EQ(Where("cs > 'A'"), "13");
  EXPECT_EQ(Where("bin < 'a'"), "23");
  EXPECT_EQ(Rows("SELECT MIN(cs), MAX(cs), MIN(bin), MAX(bin) FROM t"), Lines({"a|B|A|b"}));
  EXPECT_EQ(Rows("SELECT TOP 1 WITH TIES id FROM t ORDER BY bin"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT id FROM t ORDER BY bin OFFSET 1 ROW FETCH NEXT 1 ROW ONLY"), Lines({"3"}));
}

TEST_F(ColumnCollationsTest, Groups) {
  Must("INSERT t VALUES (5, 'a', N'a', 'a')");
  EXPECT_EQ(Rows("SELECT cs, COUNT(*) FROM t GROUP BY cs ORDER BY cs"), Lines({"a|2", "A|1", "b|1", "B|1"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t GROUP BY ci ORDER BY 1"), Lines({"2", "3"}));
  EXPECT_EQ(Rows("SELECT COUNT(DISTINCT cs), COUNT(DISTINCT bin), COUNT(DISTINCT ci) FROM t"),
            Lines({"4|4|2"}));
  EXPECT_EQ(Rows("SELECT DISTINCT bin FROM t ORDER BY bin"), Lines({"A", "B", "a", "b"}));
  EXPECT_EQ(Rows("SELECT id, COUNT(*) OVER (PARTITION BY cs), RANK() OVER (ORDER BY bin) FROM t ORDER BY id"),
            Lines({"1|1|5", "2|1|1", "3|1|2", "4|2|3", "5|2|3"}));
  EXPECT_EQ(Rows("SELECT cs, COUNT(*) FROM t GROUP BY ROLLUP (cs) HAVING GROUPING(cs) = 1 OR cs = 'A'"
                 " ORDER BY 2"),
            Lines({"A|1", "NULL|5"}));
  EXPECT_EQ(Rows("SELECT STRING_AGG(cs, '') WITHIN GROUP (ORDER BY cs) FROM t"), Lines({"aaAbB"}));
}

TEST_F(ColumnCollationsTest, Joins) {
  EXPECT_EQ(Rows("SELECT x.id, y.id FROM t x JOIN t y ON x.cs = y.cs ORDER BY x.id"),
            Lines({"1|1", "2|2", "3|3", "4|4"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t x JOIN t y ON x.ci = y.ci"), Lines({"8"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t x JOIN t y ON x.cs = y.ci COLLATE Chinese_PRC_CS_AS"), Lines({"4"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t x JOIN t y ON x.cs = y.ci COLLATE DATABASE_DEFAULT"), Lines({"8"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t x JOIN t y ON x.cs COLLATE DATABASE_DEFAULT = y.ci"), Lines({"8"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t x LEFT JOIN t y ON x.bin = y.bin WHERE y.id IS NULL"), Lines({"0"}));
  EXPECT_EQ(Where("EXISTS (SELECT 1 FROM t y WHERE y.cs = t.cs AND y.id > 2)"), "34");
  EXPECT_EQ(Where("cs IN (SELECT cs FROM t WHERE id IN (1, 2))"), "12");
  EXPECT_EQ(Where("'B' IN (SELECT y.cs FROM t y WHERE y.id = t.id)"), "3");
  EXPECT_EQ(Where("cs = (SELECT MAX(cs) FROM t)"), "3");
}

TEST_F(ColumnCollationsTest, SetOperations) {
  EXPECT_EQ(Rows("SELECT cs FROM t UNION SELECT 'a' ORDER BY cs"), Lines({"a", "A", "b", "B"}));
  EXPECT_EQ(Rows("SELECT 'a' AS c UNION SELECT cs FROM t ORDER BY c"), Lines({"a", "A", "b", "B"}));
  EXPECT_EQ(Rows("SELECT cs FROM t EXCEPT SELECT 'a' ORDER BY cs"), Lines({"A", "b", "B"}));
  EXPECT_EQ(Rows("SELECT 'B' INTERSECT SELECT cs FROM t"), Lines({"B"}));
  EXPECT_EQ(Rows("SELECT 'B' EXCEPT SELECT cs FROM t WHERE id = 1"), Lines({"B"}));
  EXPECT_EQ(Rows("SELECT c FROM (SELECT 'a' AS c UNION ALL SELECT cs FROM t) x WHERE c = 'a'"),
            Lines({"a", "a"}));
  EXPECT_EQ(Rows("SELECT c FROM (VALUES ('a'), ('A' COLLATE Latin1_General_BIN)) x (c) WHERE c = 'a'"),
            Lines({"a"}));
  EXPECT_EQ(
      ErrorText("SELECT cs FROM t UNION SELECT ci FROM t"),
      "468 1 Cannot resolve the collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" in "
      "the UNION operation.");
  EXPECT_EQ(ErrorOf("SELECT cs FROM t EXCEPT SELECT bin FROM t"), 468);
  EXPECT_EQ(
      ErrorText("SELECT id, cs FROM t UNION ALL SELECT id, ci FROM t"),
      "451 1 Cannot resolve collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" in UNION "
      "ALL operator occurring in SELECT statement column 2.");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM (SELECT cs FROM t UNION SELECT ci COLLATE DATABASE_DEFAULT FROM t) x"),
            Lines({"2"}));
}

// An explicit collation is stronger than that of a column, and a column's than a literal's or a variable's.
// Two columns with different ones cannot be compared.
TEST_F(ColumnCollationsTest, Precedence) {
  EXPECT_EQ(Where("cs = 'B' COLLATE Chinese_PRC_CI_AS"), "13");
  EXPECT_EQ(Where("ci = 'B' COLLATE Chinese_PRC_CS_AS"), "3");
  EXPECT_EQ(Where("cs COLLATE DATABASE_DEFAULT IN ('B')"), "13");
  EXPECT_EQ(
      ErrorText("SELECT id FROM t WHERE ci = cs"),
      "468 1 Cannot resolve the collation conflict between \"Chinese_PRC_CS_AS\" and \"Chinese_PRC_CI_AS\" in "
      "the equal to operation.");
  for (const std::string condition :
       {"cs < ci", "cs = bin", "ci IN (cs)", "ci IN (SELECT cs FROM t)", "ci LIKE cs",
        "cs BETWEEN ci AND 'x'", "ci = (SELECT MAX(cs) FROM t)", "ci = ANY (SELECT cs FROM t)",
        "CASE ci WHEN cs THEN 1 END = 1", "NULLIF(ci, cs) IS NULL", "CHARINDEX(ci, cs) = 1",
        "REPLACE(ci, cs, '') = ''", "LEFT(cs, 1) = ci", "LTRIM(cs) + 'x' = ci", "CAST(cs AS CHAR(3)) = ci",
        "ISNULL(cs, '') = ci"})
    EXPECT_EQ(ErrorOf("SELECT id FROM t WHERE " + condition), 468) << condition;
  EXPECT_EQ(Where("NULLIF(ci, UPPER(cs) COLLATE Chinese_PRC_BIN) IS NULL"), "23");
  // Names decide, and not what they mean.
  Must(
      "CREATE TABLE other (c VARCHAR(10) COLLATE Latin1_General_CI_AS, d VARCHAR(10) COLLATE database_default)");
  EXPECT_EQ(
      ErrorText("SELECT 1 FROM other WHERE d = c"),
      "468 1 Cannot resolve the collation conflict between \"Latin1_General_CI_AS\" and \"Chinese_PRC_CI_AS\" "
      "in the equal to operation.");
  EXPECT_EQ(Rows("SELECT 1 FROM other JOIN t ON d = ci"), Lines());
  // A conversion to another type and back forgets the collation, and so does a function that takes no text.
  EXPECT_EQ(Where("CAST(CAST(id AS VARCHAR(5)) AS VARCHAR(9)) = ci"), "");
  EXPECT_EQ(Where("CASE cs WHEN 'b' THEN 'B' END = ci"), "1");
}

TEST_F(ColumnCollationsTest, WhatHasNoCollation) {
  EXPECT_EQ(
      ErrorText("SELECT id, cs + ci FROM t"),
      "451 1 Cannot resolve collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" in add "
      "operator occurring in SELECT statement column 2.");
  EXPECT_EQ(
      ErrorText("SELECT CASE WHEN id > 1 THEN cs ELSE ci END FROM t"),
      "451 1 Cannot resolve collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" in CASE "
      "operator occurring in SELECT statement column 1.");
  EXPECT_EQ(
      ErrorText("SELECT id FROM t ORDER BY id, cs + ci"),
      "451 1 Cannot resolve collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" in add "
      "operator occurring in ORDER BY statement column 2.");
  EXPECT_EQ(
      ErrorText("SELECT id FROM t WHERE cs + ci = 'bb'"),
      "446 1 Cannot resolve collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" in add "
      "operator for equal to operation.");
  EXPECT_EQ(ErrorOf("SELECT MAX(cs + ci) FROM t"), 446);
  EXPECT_EQ(ErrorOf("SELECT COUNT(*) FROM t GROUP BY cs + ci"), 451);
  EXPECT_EQ(
      ErrorText("DECLARE @v VARCHAR(9) SELECT @v = cs + ci FROM t"),
      "457 1 Implicit conversion of varchar value to varchar cannot be performed because the collation of the "
      "value is unresolved due to a collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" "
      "in add operator.");
  EXPECT_EQ(ErrorOf("UPDATE t SET ci = cs + ci"), 457);
  EXPECT_EQ(ErrorOf("DECLARE @v VARCHAR(9) UPDATE t SET @v = cs + ci"), 457);
  EXPECT_EQ(
      ErrorText("SELECT LAG(cs, 1, ci) OVER (ORDER BY id) FROM t"),
      "451 1 Cannot resolve collation conflict between \"Chinese_PRC_CI_AS\" and \"Chinese_PRC_CS_AS\" in lag "
      "operator occurring in SELECT statement column 1.");
  EXPECT_EQ(ErrorOf("SELECT COUNT(DISTINCT cs + ci) FROM t"), 446);
  EXPECT_EQ(Rows("SELECT COUNT(cs + ci) FROM t"), Lines({"4"}));
  // What does not depend on a collation may have none, and COLLATE gives one.
  EXPECT_EQ(Where("LEN(cs + ci) > 2"), "");
  EXPECT_EQ(Rows("SELECT (cs + ci) COLLATE DATABASE_DEFAULT FROM t WHERE id = 1"), Lines({"bb"}));
  EXPECT_EQ(Where("cs + ci = 'BB' COLLATE Latin1_General_BIN"), "3");
  EXPECT_EQ(Rows("SELECT cs + ci COLLATE Latin1_General_BIN FROM t WHERE id = 3"), Lines({"BB"}));
}

// What a column is compared with may compare texts by itself.
TEST_F(ColumnCollationsTest, OneComparisonWithinAnother) {
  EXPECT_EQ(Where("ci = CASE WHEN cs = 'a' THEN 'A' ELSE 'b' END"), "134");
  EXPECT_EQ(Where("CASE WHEN cs = 'a' THEN 'A' ELSE 'b' END = ci"), "134");
  EXPECT_EQ(Where("ci BETWEEN CASE WHEN cs = 'a' THEN 'A' ELSE 'b' END AND 'B'"), "134");
  EXPECT_EQ(Where("CASE ci WHEN CASE WHEN cs = 'a' THEN 'A' ELSE 'b' END THEN 1 END = 1"), "134");
  EXPECT_EQ(Where("ci = CASE WHEN ci COLLATE Latin1_General_BIN = 'a' THEN 'A' ELSE 'b' END"), "134");
}

TEST_F(ColumnCollationsTest, Functions) {
  EXPECT_EQ(Rows("SELECT REPLACE(cs, 'a', 'x') FROM t ORDER BY id"), Lines({"b", "A", "B", "x"}));
  EXPECT_EQ(Rows("SELECT REPLACE('aAa' COLLATE Latin1_General_BIN, 'A', 'x')"), Lines({"axa"}));
  EXPECT_EQ(Rows("SELECT CHARINDEX('b', 'AaBb' COLLATE Latin1_General_CS_AS), CHARINDEX('b', 'AaBb')"),
            Lines({"4|3"}));
  EXPECT_EQ(Rows("SELECT CHARINDEX('B', cs), PATINDEX('%B%', cs) FROM t ORDER BY id"),
            Lines({"0|0", "0|0", "1|1", "0|0"}));
  EXPECT_EQ(Rows("SELECT PATINDEX('%[A-Z]%', 'abC' COLLATE Latin1_General_BIN)"), Lines({"3"}));
  // By the dictionary all letters but 'a' lie between 'A' and 'Z'.
  EXPECT_EQ(Rows("SELECT PATINDEX('%[A-Z]%', 'abC' COLLATE Latin1_General_CS_AS)"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT TRIM('a' FROM 'aAa' COLLATE Latin1_General_CS_AS), TRANSLATE('aA' COLLATE "
                 "Latin1_General_BIN, 'A', 'x')"),
            Lines({"A|ax"}));
  EXPECT_EQ(Rows("SELECT UPPER(cs), LEN(cs) FROM t WHERE LOWER(cs) = 'b' ORDER BY id"),
            Lines({"B|1", "B|1"}));
}

TEST_F(ColumnCollationsTest, KeysAndIndexes) {
  Must("CREATE TABLE k (a VARCHAR(5) COLLATE Chinese_PRC_CS_AS NOT NULL CONSTRAINT pk PRIMARY KEY,"
       " b VARCHAR(5) COLLATE Chinese_PRC_BIN NULL CONSTRAINT uq UNIQUE, c VARCHAR(5) NOT NULL)");
  Must("INSERT k VALUES ('a', 'x', 'a'), ('A', 'X', 'A'), ('b', NULL, 'b')");
  EXPECT_EQ(ErrorOf("INSERT k VALUES ('a', 'y', 'y')"), 2627);
  EXPECT_EQ(ErrorOf("INSERT k VALUES ('c', 'X', 'y')"), 2627);
  EXPECT_EQ(ErrorOf("INSERT k VALUES ('c', NULL, 'y')"), 2627);
  EXPECT_EQ(ErrorOf("CREATE UNIQUE INDEX ix ON k (c)"), 1505);
  Must("CREATE UNIQUE INDEX ix ON k (a, b DESC)");
  EXPECT_EQ(Rows("SELECT a FROM k WHERE a = 'A'"), Lines({"A"}));
  EXPECT_EQ(Rows("SELECT a FROM k ORDER BY a"), Lines({"a", "A", "b"}));
  EXPECT_EQ(Rows("UPDATE k SET a = UPPER(a) WHERE a = 'b' SELECT a FROM k ORDER BY a"),
            Lines({"a", "A", "B"}));
  EXPECT_EQ(ErrorOf("UPDATE k SET a = 'A' WHERE a = 'a'"), 2627);
}

TEST_F(ColumnCollationsTest, ForeignKeys) {
  Must(
      "CREATE TABLE p (a VARCHAR(5) COLLATE Chinese_PRC_CS_AS NOT NULL PRIMARY KEY) INSERT p VALUES ('a'), ('B')");
  Must(
      "CREATE TABLE c (a VARCHAR(5) COLLATE Chinese_PRC_CS_AS CONSTRAINT fk REFERENCES p ON UPDATE CASCADE)");
  Must("INSERT c VALUES ('a')");
  EXPECT_EQ(ErrorOf("INSERT c VALUES ('A')"), 547);
  EXPECT_EQ(Rows("UPDATE p SET a = 'A' WHERE a = 'a' SELECT a FROM c"), Lines({"A"}));
  EXPECT_EQ(ErrorOf("DELETE p WHERE a = 'A'"), 547);
  Must("DELETE p WHERE a = 'B'");
  EXPECT_EQ(ErrorText("CREATE TABLE d (x VARCHAR(5) CONSTRAINT fk2 REFERENCES p)"),
            "1757 1 Column 'p.a' is not of same collation as referencing column 'd.x' in foreign key 'fk2'.");
}

TEST_F(ColumnCollationsTest, ChecksAndComputedColumns) {
  Must("CREATE TABLE c (a VARCHAR(5) COLLATE Chinese_PRC_CS_AS CHECK (a IN ('x', 'Y') AND a LIKE '[xY]'),"
       " b VARCHAR(5) CHECK (b COLLATE Latin1_General_BIN = UPPER(b)), d AS a + '!', e AS b COLLATE "
       "Latin1_General_BIN PERSISTED)");
  Must("INSERT c VALUES ('x', 'Q'), ('Y', 'R')");
  EXPECT_EQ(ErrorOf("INSERT c VALUES ('X', 'Q')"), 547);
  EXPECT_EQ(ErrorOf("INSERT c VALUES ('x', 'q')"), 547);
  EXPECT_EQ(Rows("SELECT a FROM c WHERE d = 'X!'"), Lines());
  EXPECT_EQ(Rows("SELECT a FROM c WHERE d = 'x!'"), Lines({"x"}));
  EXPECT_EQ(Rows("SELECT a FROM c WHERE e = 'q' OR e = 'R'"), Lines({"Y"}));
  EXPECT_EQ(ErrorOf("SELECT 1 FROM c WHERE d = b"), 468);
  EXPECT_EQ(ErrorOf("ALTER TABLE c ADD f AS a + b"), 451);
  EXPECT_EQ(ErrorOf("ALTER TABLE c ADD CHECK (a <> b)"), 468);
  Must("CREATE UNIQUE INDEX ix ON c (e)");
  EXPECT_EQ(Rows("SELECT e FROM c ORDER BY e DESC"), Lines({"R", "Q"}));
}

TEST_F(ColumnCollationsTest, InnerQueries) {
  Must("CREATE VIEW v AS SELECT id, cs AS c, ci COLLATE Latin1_General_BIN AS b FROM t");
  EXPECT_EQ(Rows("SELECT id FROM v WHERE c = 'B'"), Lines({"3"}));
  EXPECT_EQ(Rows("SELECT id FROM v WHERE b = 'B'"), Lines({"3"}));
  EXPECT_EQ(Rows("SELECT b FROM v ORDER BY b"), Lines({"A", "B", "a", "b"}));
  EXPECT_EQ(ErrorOf("SELECT 1 FROM v WHERE c = b"), 468);
  EXPECT_EQ(Rows("SELECT id FROM (SELECT id, bin AS x FROM t) d WHERE x < 'a' ORDER BY x"),
            Lines({"2", "3"}));
  EXPECT_EQ(Rows("WITH w AS (SELECT DISTINCT cs AS x FROM t) SELECT COUNT(*), COUNT(DISTINCT x) FROM w"),
            Lines({"4|4"}));
  EXPECT_EQ(
      Rows("WITH w (x, n) AS (SELECT cs, 1 FROM t WHERE cs = 'a' UNION ALL SELECT CAST(x AS VARCHAR(10)),"
           " n + 1 FROM w WHERE n < 2 AND x = 'a') SELECT COUNT(*) FROM w WHERE x = 'A'"),
      Lines({"0"}));
  EXPECT_EQ(ErrorOf("WITH w (x) AS (SELECT cs FROM t UNION ALL SELECT t.ci FROM w, t) SELECT x FROM w"), 240);
  EXPECT_EQ(
      Rows(
          "SELECT x.id FROM t x CROSS APPLY (SELECT y.cs AS c FROM t y WHERE y.cs = x.cs) d WHERE d.c = 'A'"),
      Lines({"2"}));
  // The order in which a variable takes its values.
  EXPECT_EQ(Rows("DECLARE @s VARCHAR(20) SET @s = '' SELECT @s = @s + cs FROM t ORDER BY bin SELECT @s"),
            Lines({"ABab"}));
}

TEST_F(ColumnCollationsTest, TablesMadeOfQueries) {
  Must(
      "SELECT cs, bin + 'x' AS b, ci, ci COLLATE Latin1_General_CS_AS AS named, 'a' AS literal INTO made FROM t");
  EXPECT_EQ(Rows("SELECT name, collation_name FROM sys.columns WHERE object_id = OBJECT_ID('made')"
                 " ORDER BY column_id"),
            Lines({"cs|Chinese_PRC_CS_AS", "b|Latin1_General_BIN2", "ci|Chinese_PRC_CI_AS",
                   "named|Latin1_General_CS_AS", "literal|Chinese_PRC_CI_AS"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM made WHERE cs = 'a' AND named = 'a'"), Lines({"1"}));
  EXPECT_EQ(Rows("SELECT 'a' AS x INTO u UNION SELECT cs FROM t SELECT COUNT(*) FROM u WHERE x = 'a'"),
            Lines({"1"}));
  EXPECT_EQ(Rows("SET ROWCOUNT 3 SELECT cs INTO #some FROM t ORDER BY id SET ROWCOUNT 0"
                 " SELECT cs FROM #some WHERE cs = 'b'"),
            Lines({"b"}));
}

TEST_F(ColumnCollationsTest, OtherKindsOfTables) {
  EXPECT_EQ(Rows("DECLARE @v TABLE (a VARCHAR(5) COLLATE Chinese_PRC_CS_AS PRIMARY KEY)"
                 " INSERT @v VALUES ('a'), ('A') SELECT a FROM @v WHERE a = 'A'"),
            Lines({"A"}));
  for (const std::string name : {"#temp", "##global"}) {
    const std::string create = "CREATE TABLE " + name;
    const std::string insert = "INSERT " + name + " VALUES ('a', 'a'), ('A', 'A')";
    Must(create + " (a VARCHAR(5) COLLATE Chinese_PRC_BIN UNIQUE, b VARCHAR(5))");
    Must(insert);
    EXPECT_EQ(Rows("SELECT a FROM " + name + " WHERE a = 'a'"), Lines({"a"}));
    // A table of the same name that is made anew has its own collation.
    Must("DROP TABLE " + name);
    Must(create + " (a VARCHAR(5) UNIQUE, b VARCHAR(5))");
    EXPECT_EQ(ErrorOf(insert), 2627);
    Must("DROP TABLE " + name);
  }
  Must("CREATE FUNCTION f (@x VARCHAR(5)) RETURNS @r TABLE (a VARCHAR(5) COLLATE Chinese_PRC_CS_AS) AS BEGIN"
       " INSERT @r VALUES (@x), (UPPER(@x)) RETURN END");
  EXPECT_EQ(Rows("SELECT a FROM f('q') WHERE a = 'Q'"), Lines({"Q"}));
  EXPECT_EQ(ErrorOf("SELECT 1 FROM f('q') JOIN t ON a = ci"), 468);
  EXPECT_EQ(
      Rows("SELECT value FROM t CROSS APPLY STRING_SPLIT(cs + ',Q', ',') WHERE value = 'q' OR value = 'B'"),
      Lines({"B"}));
  Must("CREATE FUNCTION g (@x VARCHAR(5)) RETURNS TABLE AS RETURN SELECT id, cs FROM t WHERE cs = @x");
  EXPECT_EQ(Rows("SELECT id FROM g('B') WHERE cs <> 'b'"), Lines({"3"}));
  // A parameter is like a variable, whatever stands for it.
  EXPECT_EQ(Rows("SELECT x.id FROM t x CROSS APPLY g(x.ci) y WHERE x.id = y.id"),
            Lines({"1", "2", "3", "4"}));
  Must(
      "CREATE FUNCTION k (@x VARCHAR(5)) RETURNS TABLE AS RETURN SELECT id FROM t WHERE ci = @x AND @x = 'B'");
  EXPECT_EQ(Rows("SELECT x.id, y.id FROM t x CROSS APPLY k(x.cs) y ORDER BY 1, 2"),
            Lines({"1|1", "1|3", "3|1", "3|3"}));
  // What a scalar function returns is like a variable.
  Must("CREATE FUNCTION h (@x VARCHAR(5)) RETURNS VARCHAR(5) AS BEGIN RETURN @x END");
  EXPECT_EQ(Where("dbo.h(cs) = ci"), "1234");
}

TEST_F(ColumnCollationsTest, TriggersAndOutput) {
  Must("CREATE TABLE log (a VARCHAR(10))");
  Must("CREATE TRIGGER tr ON t FOR UPDATE AS INSERT log SELECT i.cs FROM inserted i JOIN deleted d ON"
       " i.id = d.id WHERE i.cs <> d.cs");
  EXPECT_EQ(Rows("UPDATE t SET cs = UPPER(cs) SELECT a FROM log ORDER BY a"), Lines({"A", "B"}));
  Must("DROP TRIGGER tr");
  EXPECT_EQ(Rows("UPDATE t SET cs = 'c' OUTPUT CASE WHEN inserted.cs = 'C' THEN 1 ELSE 0 END WHERE id = 1"),
            Lines({"0"}));
}

TEST_F(ColumnCollationsTest, AlteredColumns) {
  Must("CREATE TABLE x (a VARCHAR(5), b INT) INSERT x VALUES ('a', 1), ('A', 2)");
  Must("ALTER TABLE x ADD c VARCHAR(5) COLLATE Chinese_PRC_BIN CREATE INDEX ix ON x (c)");
  Must("ALTER TABLE x ALTER COLUMN a VARCHAR(5) COLLATE Chinese_PRC_CS_AS NOT NULL");
  EXPECT_EQ(Rows("SELECT b FROM x WHERE a = 'A'"), Lines({"2"}));
  Must("ALTER TABLE x ADD CONSTRAINT pk PRIMARY KEY (a)");
  EXPECT_EQ(ErrorOf("ALTER TABLE x ALTER COLUMN a VARCHAR(5) COLLATE Chinese_PRC_BIN NOT NULL"), 5074);
  // Of an index's column the length may grow, but not the collation change.
  EXPECT_EQ(ErrorOf("ALTER TABLE x ALTER COLUMN c VARCHAR(9)"), 5074);
  Must("ALTER TABLE x ALTER COLUMN c VARCHAR(9) COLLATE Chinese_PRC_BIN");
  Must("EXEC sp_rename 'x.a', 'renamed', 'COLUMN' EXEC sp_rename 'x', 'y' ALTER TABLE y DROP COLUMN b");
  EXPECT_EQ(Rows("SELECT name, collation_name FROM sys.columns WHERE object_id = OBJECT_ID('y')"),
            Lines({"renamed|Chinese_PRC_CS_AS", "c|Chinese_PRC_BIN"}));
  // Without COLLATE it is the database's.
  Must("ALTER TABLE y DROP CONSTRAINT pk ALTER TABLE y ALTER COLUMN renamed VARCHAR(5)");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM y WHERE renamed = 'a'"), Lines({"2"}));
  EXPECT_EQ(ErrorOf("ALTER TABLE y ADD CONSTRAINT pk UNIQUE (renamed)"), 1505);
  Must("BEGIN TRAN ALTER TABLE y ALTER COLUMN renamed VARCHAR(5) COLLATE Chinese_PRC_BIN ROLLBACK");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM y WHERE renamed = 'a'"), Lines({"2"}));
}

TEST_F(ColumnCollationsTest, Errors) {
  EXPECT_EQ(ErrorText("CREATE TABLE x (a VARCHAR(5) COLLATE nothing)"), "448 1 Invalid collation 'nothing'.");
  EXPECT_EQ(ErrorText("CREATE TABLE x (a INT COLLATE Latin1_General_BIN)"),
            "447 1 Expression type int is invalid for COLLATE clause.");
  EXPECT_EQ(ErrorOf("ALTER TABLE t ALTER COLUMN id INT COLLATE Latin1_General_BIN"), 447);
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a VARCHAR(5) COLLATE Chinese_PRC_CS_AI)"), 40510);
}

TEST_F(ColumnCollationsTest, SystemViews) {
  EXPECT_EQ(Rows("SELECT COLUMN_NAME, COLLATION_NAME FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 't'"
                 " ORDER BY ORDINAL_POSITION"),
            Lines({"id|NULL", "cs|Chinese_PRC_CS_AS", "bin|Latin1_General_BIN2", "ci|Chinese_PRC_CI_AS"}));
  EXPECT_EQ(
      Rows("SELECT name FROM sys.columns WHERE object_id = OBJECT_ID('t') AND collation_name LIKE '%BIN2'"),
      Lines({"bin"}));
}

} // namespace
} // namespace tsql::test
