// Texts that do not compile: the error's number, line and text.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class SyntaxTest : public EngineTest {
 protected:
  SyntaxTest() { Must("CREATE TABLE t (a INT NOT NULL, b VARCHAR(5) NULL)"); }
};

TEST_F(SyntaxTest, SyntaxErrors) {
  EXPECT_EQ(ErrorText("SELECT a FROM t WHERE a=1 b = 1"), "102 1 Incorrect syntax near 'b'.");
  EXPECT_EQ(ErrorText("SELECT a FROM t\nWHERE"), "102 2 Incorrect syntax near 'WHERE'.");
  EXPECT_EQ(ErrorText("SELECT a FROM WHERE a = 1"), "156 1 Incorrect syntax near the keyword 'WHERE'.");
  EXPECT_EQ(ErrorText("SELECT a,\n\nFROM t"), "156 3 Incorrect syntax near the keyword 'FROM'.");
  EXPECT_EQ(ErrorText("if not exists(select * from t where a = 1 and ) select 1"),
            "102 1 Incorrect syntax near ')'.");
  EXPECT_EQ(ErrorText("UPDATE t SET WHERE a = 1"), "156 1 Incorrect syntax near the keyword 'WHERE'.");
  EXPECT_EQ(ErrorText("SELECT a FROM t WHERE b = 'it's'"), "102 1 Incorrect syntax near 's'.");
  EXPECT_EQ(ErrorText("SELECT a\nFROM t WHERE b = 'open"),
            "105 2 Unclosed quotation mark after the character string 'open'.");
  EXPECT_EQ(ErrorText("SELECT /* a"), "113 1 Missing end comment mark '*/'.");
  EXPECT_EQ(ErrorText("SELECT a FROM t WHERE a"), "4145 1 An expression of non-boolean type specified in a "
                                                  "context where a condition is expected, near 'a'.");
  EXPECT_EQ(ErrorText("select FInterId FROM t t_icitem and a='Rel'"),
            "156 1 Incorrect syntax near the keyword 'and'.");
}

TEST_F(SyntaxTest, Inserts) {
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (1)"),
            "213 1 Column name or number of supplied values does not match table definition.");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a, b) VALUES (1)"), 109);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (1, 'x')"), 110);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a, b) SELECT 1"), 120);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) SELECT 1, 'x'"), 121);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a, nothing) VALUES (1, 2)"), 207);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a, a) VALUES (1, 2)"), 264);
  EXPECT_EQ(ErrorOf("INSERT INTO missing VALUES (1)"), 208);
}

TEST_F(SyntaxTest, Definitions) {
  EXPECT_EQ(ErrorText("\nCREATE TABLE T (x INT)"),
            "2714 2 There is already an object named 'T' in the database.");
  EXPECT_EQ(ErrorOf("CREATE TABLE u (x INT, X INT)"), 2705);
  EXPECT_EQ(ErrorText("CREATE TABLE u (x nothing)"),
            "2715 1 Column, parameter, or variable #1: Cannot find data type nothing.");
  EXPECT_EQ(ErrorOf("CREATE TABLE u (x INT, PRIMARY KEY (y))"), 1911);
  EXPECT_EQ(ErrorOf("CREATE TABLE u (x INT NULL PRIMARY KEY)"), 8111);
  EXPECT_EQ(ErrorText("CREATE TABLE u (x INT PRIMARY KEY, y INT PRIMARY KEY)"),
            "8110 1 Cannot add multiple PRIMARY KEY constraints to table 'u'.");
  EXPECT_EQ(ErrorOf("CREATE TABLE u (x INT NOT NULL, y INT PRIMARY KEY, PRIMARY KEY (x))"), 8110);
  EXPECT_EQ(ErrorText("DROP TABLE u"),
            "3701 1 Cannot drop the table 'u', because it does not exist or you do not have permission.");
  Must("DROP TABLE IF EXISTS u");
  Must("INSERT INTO t VALUES (1, 'x'), (1, 'y')");
  EXPECT_EQ(ErrorOf("CREATE UNIQUE INDEX ux ON t (a)"), 1505);
  Must("CREATE INDEX ix ON t (a DESC, b)");
  EXPECT_EQ(ErrorOf("CREATE INDEX ix ON t (b)"), 1913);
  Must("DROP INDEX t.ix");
  EXPECT_EQ(ErrorOf("DROP INDEX t.ix"), 3701);
  Must("ALTER TABLE t ADD c INT NOT NULL DEFAULT 7, d VARCHAR(3) NULL");
  EXPECT_EQ(Rows("SELECT c, d FROM t"), Lines({"7|NULL", "7|NULL"}));
  EXPECT_EQ(ErrorOf("ALTER TABLE t ADD e INT NOT NULL"), 4901);
  EXPECT_EQ(ErrorOf("ALTER TABLE missing ADD e INT"), 4902);
  EXPECT_EQ(ErrorOf("ALTER TABLE t ADD e INT NOT NULL DEFAULT NULL"), 515);
  Must("CREATE TABLE none (a INT) ALTER TABLE none ADD e DATE NOT NULL DEFAULT NULL");
  EXPECT_EQ(ErrorOf("INSERT INTO none (a) VALUES (1)"), 515);
  EXPECT_EQ(ErrorText("CREATE TABLE u (a INT DEFAULT (SELECT 1))"),
            "1046 1 Subqueries are not allowed in this context. Only scalar expressions are allowed.");
  EXPECT_EQ(ErrorOf("CREATE TABLE u (a INT CHECK (a IN (SELECT a FROM t)))"), 1046);
  EXPECT_EQ(ErrorOf("CREATE TABLE u (a INT, CHECK (EXISTS (SELECT a FROM t)))"), 1046);
  Must("CREATE TABLE empty (a INT) ALTER TABLE empty ADD e DATE NOT NULL, f INT NOT NULL");
  EXPECT_EQ(ErrorOf("INSERT INTO empty (a, e) VALUES (1, '2020-01-31')"), 515);
  EXPECT_EQ(ErrorOf("INSERT INTO empty (a, f) SELECT 1, 2"), 515);
  Must("INSERT INTO empty (a, e, f) VALUES (1, '2020-01-31', 3)");
  EXPECT_EQ(ErrorOf("TRUNCATE TABLE missing"), 4701);
}

TEST_F(SyntaxTest, ABatchThatEndsWithinAListEnds) {
  EXPECT_EQ(ErrorOf("SELECT a FROM t WITH (NOLOCK"), 102);
  EXPECT_EQ(ErrorOf("SELECT a FROM t (NOLOCK,"), 102);
  EXPECT_EQ(ErrorOf("CREATE TABLE u (a INT) TEXTIMAGE_ON"), 102);
  EXPECT_EQ(ErrorOf("CREATE TABLE u (a INT) ON"), 102);
  EXPECT_EQ(ErrorOf("CREATE INDEX ix ON t (a) WITH (PAD_INDEX"), 102);
  EXPECT_EQ(ErrorOf("CREATE TABLE u (a INT REFERENCES t ON DELETE NO"), 102);
}

TEST_F(SyntaxTest, IntoAndAssignmentsBelongToTheStatementsOwnSelect) {
  EXPECT_EQ(ErrorOf("SELECT a FROM (SELECT a INTO u FROM t) x"), 156);
  EXPECT_EQ(ErrorOf("SELECT a FROM t WHERE EXISTS (SELECT a INTO u FROM t)"), 156);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) SELECT a INTO u FROM t"), 156);
  EXPECT_EQ(ErrorOf("CREATE VIEW w AS SELECT a INTO u FROM t"), 156);
  EXPECT_EQ(ErrorOf("WITH x AS (SELECT a INTO u FROM t) SELECT a FROM x"), 156);
  EXPECT_EQ(ErrorText("SELECT a FROM t UNION SELECT a INTO u FROM t"),
            "196 1 SELECT INTO must be the first query in a statement containing a UNION, INTERSECT or "
            "EXCEPT operator.");
  EXPECT_EQ(ErrorOf("DECLARE @v INT IF EXISTS (SELECT @v = a FROM t) SELECT 1"), 102);
  EXPECT_EQ(ErrorOf("DECLARE @v INT SELECT @v = a FROM t UNION SELECT 1"), 10734);
  EXPECT_EQ(ErrorOf("DECLARE @v INT SELECT 1 UNION ALL SELECT @v = a FROM t"), 10734);
  Must("WITH x AS (SELECT a FROM t) SELECT a INTO u FROM x");
  EXPECT_EQ(Rows("DECLARE @v INT = 7; WITH x AS (SELECT 5 AS a) SELECT @v = a FROM x SELECT @v"),
            Lines({"5"}));
}

TEST_F(SyntaxTest, WhereNoColumnIsToBeNamed) {
  const std::string text =
      "The name \"a\" is not permitted in this context. Valid expressions are constants, constant "
      "expressions, and (in some contexts) variables. Column names are not permitted.";
  EXPECT_EQ(ErrorText("CREATE TABLE x (a INT,\nb INT DEFAULT a)"), "128 2 " + text);
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT, b INT DEFAULT (ABS(a) + 1))"), 128);
  Must("CREATE TABLE x (a INT, b DATETIME DEFAULT DATEADD(day, 1, GETDATE()), c INT)");
  EXPECT_EQ(ErrorText("ALTER TABLE x ADD CONSTRAINT df DEFAULT a FOR c"), "128 1 " + text);
  EXPECT_EQ(ErrorOf("ALTER TABLE x ADD d INT DEFAULT a"), 128);
  EXPECT_EQ(ErrorText("INSERT INTO x (a) VALUES (a)"), "128 1 " + text);
  EXPECT_EQ(ErrorText("PRINT a"), "128 1 " + text);
  Must("INSERT INTO x (a) VALUES ((SELECT MAX(a) FROM x)), (DATEPART(year, '2020-01-01'))");
}

TEST_F(SyntaxTest, DefinitionsAsToolsWriteThem) {
  Must("CREATE TABLE [dbo].[x] ([id] [int] IDENTITY(1,1) NOT FOR REPLICATION NOT NULL,"
       " [n] [nvarchar](50) COLLATE Chinese_PRC_CI_AS NULL CHECK NOT FOR REPLICATION ([n] <> ''),"
       " CONSTRAINT [PK_x] PRIMARY KEY CLUSTERED ([id] ASC) WITH (PAD_INDEX = OFF, IGNORE_DUP_KEY = OFF,"
       " ALLOW_ROW_LOCKS = ON) ON [PRIMARY]) ON [PRIMARY] TEXTIMAGE_ON [PRIMARY]");
  Must("CREATE TABLE y (a INT NOT NULL, b TEXT NULL, x INT REFERENCES x (id) NOT FOR REPLICATION)");
  Must(
      "ALTER TABLE y WITH NOCHECK ADD CONSTRAINT PK_y PRIMARY KEY CLUSTERED (a) WITH FILLFACTOR = 90 ON [PRIMARY]");
  Must("CREATE INDEX ix ON y (x) WITH PAD_INDEX, FILLFACTOR = 80, STATISTICS_NORECOMPUTE ON [PRIMARY]");
  Must("CREATE UNIQUE INDEX ux ON y (a, x) INCLUDE (b)");
  EXPECT_EQ(ErrorOf("CREATE INDEX iy ON y (x) INCLUDE (z)"), 1911);
  EXPECT_EQ(ErrorOf("CREATE INDEX iy ON y (x) WITH IGNORE_DUP_KEY"), 40510);
  EXPECT_EQ(ErrorOf("CREATE INDEX iy ON y (x) WITH FILLFACTOR = x"), 102);
  EXPECT_EQ(ErrorOf("CREATE INDEX iy ON y (x) WITH FILLFACTOR = 9, FOO"), 102);
  EXPECT_EQ(ErrorOf("CREATE INDEX iy ON y (x) WHERE x > 1"), 40510);
  Must("CREATE TRIGGER ty ON y FOR INSERT WITH APPEND NOT FOR REPLICATION AS PRINT 'in'");
  EXPECT_EQ(Run("INSERT INTO x (n) VALUES ('a') INSERT INTO y (a, x) VALUES (1, 1)").messages, Lines({"in"}));
  EXPECT_EQ(ErrorOf("INSERT INTO x (n) VALUES ('')"), 547);
}

} // namespace
} // namespace tsql::test
