// Queries: joins, subqueries, grouping, set operations, ordering, names.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class QueryTest : public EngineTest {
 protected:
  QueryTest() {
    Must("CREATE TABLE g (id INT NOT NULL PRIMARY KEY, parent INT NOT NULL, name VARCHAR(20) NOT NULL)");
    Must("INSERT INTO g VALUES (1, 0, 'root'), (2, 1, 'left'), (3, 1, 'right'), (4, 2, 'leaf')");
    Must("CREATE TABLE b (id INT NOT NULL, grp INT NULL, qty DECIMAL(10,2) NULL)");
    Must("INSERT INTO b VALUES (10, 2, 1.5), (11, 2, 2.5), (12, 4, NULL), (13, NULL, 9)");
  }
};

TEST_F(QueryTest, Joins) {
  EXPECT_EQ(Rows("SELECT g.name, b.id FROM g INNER JOIN b ON b.grp = g.id ORDER BY b.id"),
            Lines({"left|10", "left|11", "leaf|12"}));
  EXPECT_EQ(Rows("SELECT g.id, b.id FROM g LEFT OUTER JOIN b ON b.grp = g.id WHERE g.id > 2 ORDER BY 1, 2"),
            Lines({"3|NULL", "4|12"}));
  EXPECT_EQ(Rows("SELECT g.id, b.id FROM g RIGHT JOIN b ON b.grp = g.id WHERE b.id > 11 ORDER BY 2"),
            Lines({"4|12", "NULL|13"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM g FULL JOIN b ON b.grp = g.id"), Lines({"6"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM g CROSS JOIN b"), Lines({"16"}));
  EXPECT_EQ(Rows("SELECT x.id, y.id FROM g x, g y LEFT JOIN b ON b.grp = y.id AND b.qty > 2 "
                 "WHERE x.id = y.parent AND b.id IS NOT NULL"),
            Lines({"1|2"}));
  EXPECT_EQ(Rows("SELECT g.id FROM g LEFT JOIN (b INNER JOIN g g2 ON g2.id = b.grp AND g2.name = 'leaf') "
                 "ON b.grp = g.id WHERE b.id IS NULL ORDER BY g.id"),
            Lines({"1", "2", "3"}));
}

TEST_F(QueryTest, DerivedTablesAndSubqueries) {
  EXPECT_EQ(Rows("SELECT t.n, t.s FROM (SELECT grp n, SUM(qty) AS s FROM b GROUP BY grp) t WHERE t.n = 2"),
            Lines({"2|4.00"}));
  EXPECT_EQ(Rows("SELECT (SELECT COUNT(*) FROM b WHERE b.grp = g.id), name FROM g ORDER BY id"),
            Lines({"0|root", "2|left", "0|right", "1|leaf"}));
  EXPECT_EQ(Rows("SELECT id FROM g WHERE EXISTS (SELECT * FROM b WHERE grp = g.id) ORDER BY id"),
            Lines({"2", "4"}));
  EXPECT_EQ(Rows("SELECT id FROM g WHERE id NOT IN (SELECT parent FROM g) ORDER BY id"), Lines({"3", "4"}));
  EXPECT_EQ(Rows("SELECT id FROM b WHERE grp NOT IN (1, 4)"), Lines({"10", "11"}));
  EXPECT_EQ(ErrorOf("SELECT (SELECT id FROM g)"), 512);
  EXPECT_EQ(ErrorOf("SELECT (SELECT id, name FROM g WHERE id = 1)"), 116);
  EXPECT_EQ(Rows("SELECT (SELECT id FROM g WHERE name = 'leaf'), (SELECT id FROM g WHERE 1 = 0)"),
            Lines({"4|NULL"}));
}

TEST_F(QueryTest, CountsAreSubtractedWithinOneSelect) {
  EXPECT_EQ(
      Rows(" select (select count(*) as n  from b t1 join g t2 on t2.id = t1.grp\r\n"
           " Where ( select count(*) from b where grp = t2.id and qty > 100)=0 \r\n"
           " and t2.id=2)-(select count(*) as m from g t1  join b t2 on t1.id=t2.grp   where t2.id=12)"),
      Lines({"1"}));
}

TEST_F(QueryTest, Grouping) {
  EXPECT_EQ(Rows("SELECT grp, COUNT(*), COUNT(qty), MIN(qty), MAX(qty), AVG(qty) FROM b GROUP BY grp "
                 "HAVING COUNT(*) >= 1 ORDER BY grp"),
            Lines({"NULL|1|1|9.00|9.00|9.000000", "2|2|2|1.50|2.50|2.000000", "4|1|0|NULL|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT MIN(id) FROM b HAVING MIN(id) <> 0"), Lines({"10"}));
  EXPECT_EQ(Rows("SELECT MIN(id) FROM b HAVING MIN(id) <> 10"), Lines());
  EXPECT_EQ(Rows("SELECT parent % 2, COUNT(DISTINCT parent) FROM g GROUP BY parent % 2 ORDER BY parent % 2"),
            Lines({"0|2", "1|1"}));
  EXPECT_EQ(Rows("SELECT COUNT(*), SUM(id), MAX(name) FROM g WHERE 1 = 0"), Lines({"0|NULL|NULL"}));
  EXPECT_EQ(ErrorText("SELECT name, COUNT(*) FROM g GROUP BY id"),
            "8120 1 Column 'g.name' is invalid in the select list because it is not contained in either an "
            "aggregate function or the GROUP BY clause.");
  EXPECT_EQ(ErrorOf("SELECT id FROM g WHERE COUNT(*) > 1"), 147);
}

TEST_F(QueryTest, SetOperations) {
  EXPECT_EQ(
      Rows("SELECT id FROM g WHERE id < 3 UNION SELECT grp FROM b WHERE grp IS NOT NULL ORDER BY id DESC"),
      Lines({"4", "2", "1"}));
  EXPECT_EQ(Rows("SELECT 1 UNION ALL SELECT 1"), Lines({"1", "1"}));
  EXPECT_EQ(
      Rows("select top 1 'a' as t, id as x From g Where id = 4\r\n union select top 1 'b' as t, id From b "
           "Where grp = 2 ORDER BY t"),
      Lines({"a|4", "b|10"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM (SELECT 'x' AS v UNION SELECT 'X ') t"), Lines({"1"}));
  EXPECT_EQ(Rows("SELECT id FROM g EXCEPT SELECT parent FROM g ORDER BY 1"), Lines({"3", "4"}));
  EXPECT_EQ(Rows("SELECT id FROM g INTERSECT SELECT parent FROM g ORDER BY 1"), Lines({"1", "2"}));
  EXPECT_EQ(
      ErrorText("SELECT 1, 2 UNION SELECT 1"),
      "205 1 All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of "
      "expressions in their target lists.");
  // The branches' common type decides: int is stronger than varchar.
  EXPECT_EQ(ErrorOf("SELECT 1 UNION SELECT 'abc'"), 245);
}

TEST_F(QueryTest, AliasesAndNames) {
  const Output output =
      Run("SELECT a = id, [b c] = name, parent AS 'd', 1 FROM [dbo].[g] WHERE dbo.g.id = 1");
  ASSERT_EQ(output.columns.size(), 1U);
  EXPECT_EQ(output.columns[0][0].name, "a");
  EXPECT_EQ(output.columns[0][1].name, "b c");
  EXPECT_EQ(output.columns[0][2].name, "d");
  EXPECT_EQ(output.columns[0][3].name, "");
  EXPECT_EQ(Rows("SELECT G.ID FROM dbo.g INNER JOIN dbo.b b_1 ON g.Id = b_1.GRP WHERE b_1.id = 12"),
            Lines({"4"}));
  EXPECT_EQ(Rows("SELECT b.* , g.name FROM b, g WHERE b.grp = g.id AND b.id = 12"),
            Lines({"12|4|NULL|leaf"}));
  EXPECT_EQ(ErrorText("SELECT g.nothing FROM g"), "207 1 Invalid column name 'nothing'.");
  EXPECT_EQ(ErrorText("SELECT z.id FROM g"), "4104 1 The multi-part identifier \"z.id\" could not be bound.");
  EXPECT_EQ(ErrorText("SELECT id FROM g, b"), "209 1 Ambiguous column name 'id'.");
  EXPECT_EQ(ErrorOf("SELECT 1 FROM g, g"), 1013);
  EXPECT_EQ(ErrorOf("SELECT 1 FROM g a, b a"), 1011);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT id, id FROM g) t"), 8156);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT id, 1 FROM g) t"), 8155);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT id FROM g ORDER BY id) t"), 1033);
}

TEST_F(QueryTest, Ordering) {
  EXPECT_EQ(Rows("SELECT TOP 2 id FROM g ORDER BY parent DESC, id DESC"), Lines({"4", "3"}));
  EXPECT_EQ(Rows("SELECT qty FROM b ORDER BY qty"), Lines({"NULL", "1.50", "2.50", "9.00"}));
  EXPECT_EQ(Rows("SELECT DISTINCT t.* FROM (SELECT id % 2 AS m, 'k' k FROM g) t ORDER BY m DESC"),
            Lines({"1|k", "0|k"}));
  EXPECT_EQ(ErrorOf("SELECT DISTINCT name FROM g ORDER BY id"), 145);
  EXPECT_EQ(ErrorOf("SELECT id FROM g ORDER BY 2"), 108);
  EXPECT_EQ(Rows("SELECT TOP (1) name FROM g WITH (NOLOCK) ORDER BY name"), Lines({"leaf"}));
}

TEST_F(QueryTest, CaseForms) {
  EXPECT_EQ(
      Rows("SELECT CASE parent WHEN 0 THEN 'qa' ELSE 'gb'+CONVERT(VARCHAR,parent) END FROM g ORDER BY id"),
      Lines({"qa", "gb1", "gb1", "gb2"}));
  EXPECT_EQ(Rows("SELECT CASE WHEN qty IS NULL THEN -1 WHEN qty > 2 THEN qty END FROM b ORDER BY id"),
            Lines({"NULL", "2.50", "-1.00", "9.00"}));
}

TEST_F(QueryTest, CommonTables) {
  EXPECT_EQ(Rows("WITH c (k) AS (SELECT id FROM g WHERE id > 2) SELECT k FROM c ORDER BY k"),
            Lines({"3", "4"}));
  EXPECT_EQ(Rows("WITH tree AS (SELECT id, parent, 0 AS depth FROM g WHERE parent = 0 UNION ALL "
                 "SELECT g.id, g.parent, tree.depth + 1 FROM g INNER JOIN tree ON g.parent = tree.id) "
                 "SELECT id, depth FROM tree ORDER BY depth, id"),
            Lines({"1|0", "2|1", "3|1", "4|2"}));
  EXPECT_EQ(ErrorText("WITH n AS (SELECT 1 AS i UNION ALL SELECT i + 1 FROM n) SELECT COUNT(*) FROM n"),
            "530 1 The statement terminated. The maximum recursion 100 has been exhausted before statement "
            "completion.");
}

TEST_F(QueryTest, Views) {
  Must("CREATE VIEW v (k, n) AS SELECT id, name FROM g WHERE parent > 0");
  EXPECT_EQ(Rows("SELECT x.k, v.n FROM v INNER JOIN v x ON x.k = v.k WHERE x.k > 2 ORDER BY x.k"),
            Lines({"3|right", "4|leaf"}));
  EXPECT_EQ(ErrorOf("CREATE VIEW v AS SELECT 1 AS a"), 2714);
  EXPECT_EQ(ErrorOf("CREATE VIEW w AS SELECT nothing FROM g"), 207);
  Must("ALTER VIEW v AS SELECT id AS k, 'new' AS n FROM g WHERE id = 1");
  EXPECT_EQ(Rows("SELECT * FROM v"), Lines({"1|new"}));
  Must("DROP VIEW v");
  EXPECT_EQ(ErrorOf("SELECT * FROM v"), 208);
}

TEST_F(QueryTest, UpdateFrom) {
  EXPECT_EQ(Run("UPDATE t1 SET name = t1.name + '*' FROM g t1 LEFT JOIN g t2 ON t1.parent = t2.id WHERE "
                "t2.id IS NULL")
                .counts,
            std::vector<int64_t>({1}));
  EXPECT_EQ(
      Run("UPDATE t1 SET t1.qty = t2.m FROM b t1 INNER JOIN (SELECT MAX(qty) m, grp FROM b GROUP BY grp) t2 "
          "ON t1.grp = t2.grp")
          .counts,
      std::vector<int64_t>({3}));
  EXPECT_EQ(Run("UPDATE g SET name = 'n' FROM b WHERE b.grp = g.id").counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Rows("SELECT name FROM g ORDER BY id"), Lines({"root*", "n", "right", "n"}));
  EXPECT_EQ(Rows("SELECT qty FROM b ORDER BY id"), Lines({"2.50", "2.50", "NULL", "9.00"}));
  EXPECT_EQ(
      Run("UPDATE b SET qty = (SELECT COUNT(*) FROM g WHERE g.id <= b.grp) WHERE grp IS NOT NULL").counts,
      std::vector<int64_t>({3}));
  EXPECT_EQ(Rows("SELECT qty FROM b ORDER BY id"), Lines({"2.00", "2.00", "4.00", "9.00"}));
  EXPECT_EQ(ErrorOf("UPDATE g SET nothing = 1"), 207);
  EXPECT_EQ(ErrorOf("UPDATE g SET name = 'a', name = 'b'"), 264);
}

TEST_F(QueryTest, DeleteFrom) {
  EXPECT_EQ(Run("DELETE t1 FROM g t1 INNER JOIN b t2 ON t1.id = t2.grp").counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Run("delete from b where grp in (select 4 from g where id = 1)").counts,
            std::vector<int64_t>({1}));
  EXPECT_EQ(Run("DELETE TOP (1) FROM b WHERE grp = 2").counts, std::vector<int64_t>({1}));
  EXPECT_EQ(Scalar("COUNT(*) FROM b"), "2");
}

TEST_F(QueryTest, GroupingWithoutGroupBy) {
  // Such a query has one group, even over no rows.
  EXPECT_EQ(Rows("SELECT 'one' FROM g HAVING COUNT(*) > 0"), Lines({"one"}));
  EXPECT_EQ(Rows("SELECT 'one' FROM g HAVING 1 = 1"), Lines({"one"}));
  EXPECT_EQ(Rows("SELECT 'one' FROM g WHERE 1 = 0 HAVING 1 = 1"), Lines({"one"}));
  EXPECT_EQ(Rows("SELECT 'one', 2 HAVING 1 = 2"), Lines({}));
  EXPECT_EQ(Rows("SELECT 'one' FROM g ORDER BY COUNT(*)"), Lines({"one"}));
  EXPECT_EQ(ErrorOf("SELECT 1 FROM g GROUP BY 1"), 164);
}

TEST_F(QueryTest, ConstantsInOrderBy) {
  EXPECT_EQ(ErrorOf("SELECT id FROM g ORDER BY NULL"), 408);
  EXPECT_EQ(ErrorOf("SELECT id FROM g ORDER BY id, 'a'"), 408);
  EXPECT_EQ(ErrorOf("SELECT id FROM g ORDER BY -1.5"), 408);
  EXPECT_EQ(ErrorOf("DECLARE @v INT SET @v = 1 SELECT id FROM g ORDER BY @v"), 1008);
}

TEST_F(QueryTest, TheArgumentOfTop) {
  EXPECT_EQ(Rows("DECLARE @n INT SET @n = 1 SELECT TOP (@n) 'x' FROM g"), Lines({"x"}));
  EXPECT_EQ(ErrorOf("DECLARE @n INT SELECT TOP (@n) id FROM g"), 1060);
  EXPECT_EQ(ErrorOf("SELECT TOP (NULL) id FROM g"), 1060);
  EXPECT_EQ(ErrorOf("SELECT TOP (-1) id FROM g"), 127);
  EXPECT_EQ(ErrorOf("DECLARE @n INT SET @n = -1 SELECT TOP (@n) id FROM g"), 127);
  EXPECT_EQ(ErrorOf("SELECT TOP (id) id FROM g"), 4115);
  EXPECT_EQ(ErrorOf("DECLARE @n INT DELETE TOP (@n) FROM g"), 1060);
}

TEST_F(QueryTest, TopOfAChangeCountsRowsOfTheTarget) {
  Must(
      "CREATE TABLE target (id INT NOT NULL PRIMARY KEY, v INT NOT NULL) INSERT INTO target VALUES (1, 0), (2, 0), (3, 0)");
  Must("CREATE TABLE twice (id INT) INSERT INTO twice VALUES (1), (1), (1), (2), (2), (3)");
  EXPECT_EQ(Run("UPDATE TOP (2) t SET v = 1 FROM target t JOIN twice w ON w.id = t.id").counts,
            std::vector<int64_t>({2}));
  EXPECT_EQ(Scalar("SUM(v) FROM target"), "2");
  // An update that moves keys is made in another way.
  EXPECT_EQ(
      Run("UPDATE TOP (2) t SET id = 4 - t.id FROM target t JOIN twice w ON w.id = t.id WHERE t.id <> 2")
          .counts,
      std::vector<int64_t>({2}));
  EXPECT_EQ(Run("DELETE TOP (2) t FROM target t JOIN twice w ON w.id = t.id").counts,
            std::vector<int64_t>({2}));
  EXPECT_EQ(Scalar("COUNT(*) FROM target"), "1");
}

TEST_F(QueryTest, AUnionIsOrderedByItsColumns) {
  EXPECT_EQ(
      ErrorText("SELECT 1 AS a UNION SELECT 2 ORDER BY a + 1"),
      "104 1 ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT "
      "operator.");
}

TEST_F(QueryTest, NoVariablesAreAssignedInAUnion) {
  EXPECT_EQ(ErrorOf("DECLARE @a INT SELECT @a = 1 UNION SELECT 2"), 10734);
  EXPECT_EQ(ErrorOf("DECLARE @a INT SELECT 1 UNION ALL SELECT @a = 2"), 10734);
}

TEST_F(QueryTest, SelectIntoOverTooManyTables) {
  std::string from;
  for (int i = 0; i < 65; ++i) from += (i > 0 ? ", g t" : "g t") + std::to_string(i);
  EXPECT_EQ(ErrorOf("SELECT t0.id INTO #many FROM " + from), 106);
  std::string nested;
  for (int i = 0; i < 65; ++i)
    nested += std::string(i > 0 ? ", " : "") + "(SELECT id FROM g) t" + std::to_string(i);
  EXPECT_EQ(ErrorOf("SELECT t0.id INTO #many FROM " + nested), 106);
}

TEST_F(QueryTest, JoinsOfTablesWithManyColumns) {
  std::string columns = "c0 INT";
  for (int i = 1; i < 1024; ++i) columns += ", c" + std::to_string(i) + " INT";
  Must("CREATE TABLE wide (" + columns + ") INSERT INTO wide (c0) VALUES (7)");
  EXPECT_EQ(Run("SELECT x.*, y.* FROM wide x JOIN wide y ON x.c0 = y.c0 SELECT @@ROWCOUNT").results.at(1),
            Lines({"1"}));
  Must("UPDATE x SET c1 = z.c0 FROM wide x JOIN wide y ON x.c0 = y.c0 JOIN wide z ON z.c0 = y.c0 JOIN wide v "
       "ON v.c0 = z.c0");
  EXPECT_EQ(
      Rows(
          "SELECT w.c1, d.c0 FROM wide w LEFT JOIN (wide b JOIN wide c ON b.c0 = c.c0 JOIN wide d ON d.c0 = c.c0)"
          " ON b.c0 = w.c0"),
      Lines({"7|7"}));
  Must(
      "CREATE TABLE log (n INT) EXEC ('CREATE TRIGGER tr ON wide FOR UPDATE AS INSERT INTO log SELECT i.c1 + d.c1 FROM"
      " inserted i JOIN deleted d ON i.c0 = d.c0') UPDATE wide SET c1 = 8");
  EXPECT_EQ(Rows("SELECT n FROM log"), Lines({"15"}));
  EXPECT_EQ(
      ErrorText("SELECT a.*, b.*, c.*, d.*, 1 FROM wide a, wide b, wide c, wide d"),
      "1056 1 The number of elements in the select list exceeds the maximum allowed number of 4096 elements.");
}

TEST_F(QueryTest, NamesOfKeysAndIndexes) {
  Must("CREATE TABLE keyed (a INT NOT NULL, b INT NOT NULL) CREATE INDEX named ON keyed (a)");
  EXPECT_EQ(ErrorOf("ALTER TABLE keyed ADD CONSTRAINT named UNIQUE (b)"), 1913);
  EXPECT_EQ(ErrorOf("CREATE TABLE other (a INT CONSTRAINT two UNIQUE, b INT CONSTRAINT two UNIQUE)"), 2714);
  EXPECT_EQ(ErrorOf("CREATE TABLE #other (a INT CONSTRAINT two UNIQUE, b INT CONSTRAINT two UNIQUE)"), 2714);
  // Names that are made up stay different when an index is dropped in between.
  Must("ALTER TABLE keyed ADD UNIQUE (b) DROP INDEX keyed.named ALTER TABLE keyed ADD UNIQUE (a, b)");
}

TEST_F(QueryTest, SetsInPatterns) {
  const auto matches = [this](const std::string& condition) {
    return Scalar("CASE WHEN " + condition + " THEN 1 ELSE 0 END");
  };
  EXPECT_EQ(matches("'[a' LIKE '[a'"), "0"); // a set that is not closed matches nothing
  EXPECT_EQ(matches("'a' LIKE '[a'"), "0");
  EXPECT_EQ(matches("'b' LIKE '[^a'"), "0");
  EXPECT_EQ(matches("']' LIKE '[]]'"), "0"); // the first bracket closes the set
  EXPECT_EQ(matches("']' LIKE ']'"), "1");
  EXPECT_EQ(matches("'a]' LIKE '[a]]'"), "1");
  EXPECT_EQ(matches("']' LIKE '[a!]]' ESCAPE '!'"), "1");
  EXPECT_EQ(matches("'-' LIKE '[a-]'"), "1");
}

TEST_F(QueryTest, TrailingBlanksInLike) {
  Must("CREATE TABLE blank (c CHAR(5), n NCHAR(5), v VARCHAR(5), w NVARCHAR(5)) "
       "INSERT INTO blank VALUES ('ab', N'ab', 'ab  ', N'ab  ')");
  EXPECT_EQ(Scalar("COUNT(*) FROM blank WHERE c LIKE 'ab'"), "1");
  EXPECT_EQ(Scalar("COUNT(*) FROM blank WHERE v LIKE 'ab'"), "1");
  EXPECT_EQ(Scalar("COUNT(*) FROM blank WHERE v LIKE '%b'"), "1");
  EXPECT_EQ(Scalar("COUNT(*) FROM blank WHERE n LIKE N'ab'"), "0");
  EXPECT_EQ(Scalar("COUNT(*) FROM blank WHERE w LIKE N'ab'"), "0");
  EXPECT_EQ(Scalar("COUNT(*) FROM blank WHERE c LIKE N'ab'"), "0");
  // Those of the pattern count.
  EXPECT_EQ(Scalar("COUNT(*) FROM blank WHERE v LIKE 'ab   '"), "0");
}

TEST_F(QueryTest, ArgumentsOfAggregates) {
  EXPECT_EQ(ErrorText("SELECT SUM(COUNT(*)) FROM g"),
            "130 1 Cannot perform an aggregate function on an expression containing an aggregate or a "
            "subquery.");
  EXPECT_EQ(ErrorOf("SELECT SUM((SELECT 1)) FROM g"), 130);
  EXPECT_EQ(ErrorOf("SELECT COUNT(CASE WHEN EXISTS (SELECT 1) THEN 1 END) FROM g"), 130);
  EXPECT_EQ(ErrorOf("SELECT id FROM g x WHERE id = (SELECT SUM(x.id + y.id) FROM g y)"), 8124);
  EXPECT_EQ(ErrorOf("SELECT id FROM g x WHERE EXISTS (SELECT 1 FROM g y HAVING SUM(x.id) > 1)"), 40510);
  EXPECT_EQ(ErrorOf("SELECT id FROM g WHERE SUM(id) > 1"), 147);
  EXPECT_EQ(ErrorOf("SELECT 1 FROM g GROUP BY (SELECT 1)"), 144);
  EXPECT_EQ(ErrorOf("SELECT id FROM g x WHERE EXISTS (SELECT 1 FROM g y GROUP BY x.id)"), 164);
  EXPECT_EQ(ErrorOf("SELECT 1 FROM g GROUP BY GETDATE()"), 164);
}

TEST_F(QueryTest, UnsupportedIsRefusedByName) {
  EXPECT_EQ(ErrorText("KILL 51"), "40510 1 KILL is not supported.");
  EXPECT_EQ(ErrorText("SELECT CHECKSUM(id) FROM g"), "40510 1 The function CHECKSUM is not supported.");
  EXPECT_EQ(ErrorText("SELECT foo(1)"), "195 1 'foo' is not a recognized built-in function name.");
}

TEST_F(QueryTest, IntoOfAUnion) {
  Must("CREATE TABLE one (id INT IDENTITY(1,1) NOT NULL, name VARCHAR(5) NOT NULL) "
       "INSERT INTO one VALUES ('a'), ('b')");
  EXPECT_EQ(
      Run("SELECT id, name INTO u FROM one UNION ALL SELECT 9, N'longer' UNION ALL SELECT NULL, 'c'").counts,
      (std::vector<int64_t>{4}));
  EXPECT_EQ(Rows("SELECT id, name FROM u ORDER BY name"), Lines({"1|a", "2|b", "NULL|c", "9|longer"}));
  // The table has the columns of the UNION, and no identity column.
  EXPECT_EQ(
      Rows(
          "SELECT COLUMN_NAME, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, IS_NULLABLE FROM INFORMATION_SCHEMA.COLUMNS "
          "WHERE TABLE_NAME = 'u' ORDER BY ORDINAL_POSITION"),
      Lines({"id|int|NULL|YES", "name|nvarchar|6|NO"}));
  EXPECT_EQ(ErrorOf("INSERT INTO u (name) VALUES ('x')"), 0);
  Must(
      "SELECT a.name INTO #e FROM one a EXCEPT SELECT 'a' INTERSECT SELECT name FROM one ORDER BY name DESC");
  EXPECT_EQ(Rows("SELECT name FROM #e"), Lines({"b"}));
  Must("WITH x AS (SELECT id FROM one) SELECT id INTO #w FROM x UNION SELECT id + 1 FROM x");
  EXPECT_EQ(Rows("SELECT id FROM #w ORDER BY id"), Lines({"1", "2", "3"}));
  // The batch finds the table that it has made.
  EXPECT_EQ(Rows("SELECT 1 AS n INTO #b UNION SELECT 2 SELECT SUM(n) FROM #b"), Lines({"3"}));
  EXPECT_EQ(ErrorOf("SELECT id INTO u FROM one UNION SELECT 1"), 2714);
  EXPECT_EQ(ErrorOf("SELECT id FROM one UNION SELECT 1 AS a INTO w"), 196);
  EXPECT_EQ(ErrorOf("SELECT id + 1 INTO w FROM one UNION SELECT 1"), 1038);
  EXPECT_EQ(ErrorOf("SELECT id INTO w FROM one UNION SELECT 1, 2"), 205);
  EXPECT_EQ(Scalar("OBJECT_ID('w')"), "NULL");
}

TEST_F(QueryTest, IntoOfAUnionAndRowCount) {
  EXPECT_EQ(Run("SET ROWCOUNT 2 SELECT 1 AS n INTO r UNION ALL SELECT 2 UNION ALL SELECT 3").counts,
            (std::vector<int64_t>{2}));
  EXPECT_EQ(Rows("SET ROWCOUNT 0 SELECT COUNT(*) FROM r"), Lines({"2"}));
}

} // namespace
} // namespace tsql::test
