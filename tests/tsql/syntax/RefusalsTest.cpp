// What the engine lacks is refused by its name; what the server does not know is the server's error.
#include "tsql/syntax/Refusals.h"

#include <algorithm>

#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class RefusalsTest : public EngineTest {
 protected:
  RefusalsTest() {
    Must("CREATE TABLE t (a INT NOT NULL, b VARCHAR(5) NULL, CONSTRAINT pk_t PRIMARY KEY (a)) "
         "CREATE TABLE i (id INT IDENTITY(1,1))");
    Must("CREATE VIEW v AS SELECT a FROM t");
    Must("CREATE PROCEDURE p AS SELECT 1");
  }

  void ExpectRefused(const std::string& batch, const std::string& what) {
    EXPECT_EQ(ErrorText(batch), "40510 1 " + what + " is not supported.") << batch;
  }

  // Each name of the list, in the batch that `write` makes of it.
  template <typename Write>
  void ExpectNamesRefused(RefusedKind kind, const std::string& prefix, Write write) {
    ASSERT_FALSE(RefusedNames(kind).empty());
    for (const std::string_view name : RefusedNames(kind))
      ExpectRefused(write(std::string(name)), prefix + std::string(name));
  }
};

TEST_F(RefusalsTest, EveryConstructIsRefusedByItsName) {
  for (const Refusal& refusal : kRefusedConstructs)
    ExpectRefused(std::string(refusal.example), std::string(refusal.name));
}

TEST_F(RefusalsTest, EveryConstructIsNamedOnce) {
  for (const Refusal& refusal : kRefusedConstructs)
    EXPECT_EQ(std::count_if(std::begin(kRefusedConstructs), std::end(kRefusedConstructs),
                            [&](const Refusal& other) { return other.name == refusal.name; }),
              1)
        << refusal.name;
}

TEST_F(RefusalsTest, StatementsAreRefusedByTheirWords) {
  ExpectNamesRefused(RefusedKind::Statement, "", [](const std::string& name) { return name + " x"; });
  // Within blocks too.
  ExpectRefused("IF 1 = 1 BEGIN END CONVERSATION @h END", "END CONVERSATION");
  ExpectRefused("BEGIN TRY WAITFOR (RECEIVE 1 FROM q) END TRY BEGIN CATCH END CATCH",
                "WAITFOR of a statement");
  ExpectRefused("CREATE PROCEDURE q AS RECONFIGURE", "RECONFIGURE");
}

TEST_F(RefusalsTest, ObjectsAreRefusedByTheirWords) {
  ExpectNamesRefused(RefusedKind::Create, "CREATE ",
                     [](const std::string& name) { return "CREATE " + name + " x"; });
  ExpectNamesRefused(RefusedKind::Alter, "ALTER ",
                     [](const std::string& name) { return "ALTER " + name + " x"; });
  ExpectNamesRefused(RefusedKind::Drop, "DROP ",
                     [](const std::string& name) { return "DROP " + name + " x"; });
  ExpectNamesRefused(RefusedKind::AlterTable, "ALTER TABLE ",
                     [](const std::string& name) { return "ALTER TABLE t " + name + " x"; });
}

TEST_F(RefusalsTest, FunctionsTypesAndVariablesOfTheServerAreRefused) {
  ExpectNamesRefused(RefusedKind::Function, "The function ",
                     [](const std::string& name) { return "SELECT " + name + "(1)"; });
  ExpectNamesRefused(RefusedKind::Type, "The type ",
                     [](const std::string& name) { return "DECLARE @x " + name; });
  ExpectNamesRefused(RefusedKind::Global, "", [](const std::string& name) { return "SELECT " + name; });
  ExpectRefused("SELECT PARSE('1' AS INT USING 'en-US')", "The function PARSE");
  ExpectRefused("SELECT a FROM t WHERE CONTAINS(b, 'x')", "The function CONTAINS");
  ExpectRefused("IF COLUMNS_UPDATED() > 0 PRINT 'x'", "The function COLUMNS_UPDATED");
  ExpectRefused("CREATE TABLE x (a DATETIMEOFFSET(3))", "The type DATETIMEOFFSET");
  ExpectRefused("SELECT CAST(1 AS SQL_VARIANT)", "The type SQL_VARIANT");
}

TEST_F(RefusalsTest, OptionsAndHintsAreRefused) {
  ExpectNamesRefused(RefusedKind::Option, "SET ", [](const std::string& name) {
    return "SET " + name + (name.ends_with(" OFF") || name.ends_with(" ON") ? "" : " ON");
  });
  ExpectNamesRefused(RefusedKind::TableHint, "The table hint ",
                     [](const std::string& name) { return "SELECT a FROM t WITH (NOLOCK, " + name + ")"; });
}

TEST_F(RefusalsTest, ProceduresAndViewsOfTheServerAreRefused) {
  ExpectNamesRefused(RefusedKind::Procedure, "The procedure ",
                     [](const std::string& name) { return "EXEC " + name + " 'x'"; });
  ExpectNamesRefused(RefusedKind::SystemView, "The system view ",
                     [](const std::string& name) { return "SELECT * FROM " + name; });
  // A table of the batch may have such a name.
  EXPECT_EQ(Rows("CREATE TABLE sysfiles (a INT) INSERT INTO sysfiles VALUES (3) SELECT a FROM sysfiles"),
            Lines({"3"}));
}

TEST_F(RefusalsTest, VariantsOfConstructs) {
  ExpectRefused("SELECT (SELECT GROUPING(t.a)) FROM t GROUP BY ROLLUP (a)",
                "An aggregate of a column of an outer query");
  ExpectRefused("SELECT {fn NOW()}", "An ODBC escape sequence other than of a date or time");
  ExpectRefused("{call p}", "An ODBC escape sequence other than of a date or time");
  ExpectRefused("SELECT a FROM {oj t x LEFT OUTER JOIN t y ON x.a = y.a}",
                "An ODBC escape sequence other than of a date or time");
  ExpectRefused("SELECT a FROM OPENROWSET('SQLNCLI', 'x', 'SELECT 1') x", "A function in place of a table");
  ExpectRefused("SELECT a FROM (t x CROSS JOIN t z) UNPIVOT (v FOR n IN (a)) y",
                "PIVOT and UNPIVOT of a join");
  ExpectRefused("SELECT a FROM t FOR JSON PATH", "FOR XML, JSON or BROWSE");
  ExpectRefused("EXEC ('SELECT 1') AT other", "EXEC of a text AT a server or AS a user");
  ExpectRefused("EXEC p WITH RESULT SETS NONE", "EXEC WITH RESULT SETS");
  ExpectRefused("CREATE TABLE x (a INT ROWGUIDCOL)", "A property of a column such as SPARSE or ROWGUIDCOL");
  ExpectRefused("CREATE TABLE x (a INT) WITH (MEMORY_OPTIMIZED = ON)", "A table or index option");
  ExpectRefused("CREATE INDEX ix ON t (a) WITH (DROP_EXISTING = ON)", "A table or index option");
  ExpectRefused("ALTER TABLE t ALTER COLUMN a DROP PERSISTED", "ALTER COLUMN ADD or DROP of a property");
  ExpectRefused("SET TRANSACTION ISOLATION LEVEL SNAPSHOT", "The isolation level SNAPSHOT");
}

TEST_F(RefusalsTest, NamesThatSqliteHasForSomethingElse) {
  const std::string what = "A name that the storage has for itself";
  ExpectRefused("CREATE TABLE [~keys] (a INT)", what);
  ExpectRefused("SELECT a INTO SQLITE_sequence FROM t", what);
  Must("CREATE INDEX ix ON t (b)");
  ExpectRefused("CREATE TABLE [t.ix] (a INT)", what);
  Must("CREATE TABLE [t.u] (a INT)");
  ExpectRefused("CREATE INDEX u ON t (b)", what);
  Must("CREATE TABLE #sqlite_x (a INT) CREATE TABLE [~other] (a INT)");
}

TEST_F(RefusalsTest, WhatChangesNothingIsAccepted) {
  Must("CREATE TABLE x (a INT NOT NULL PRIMARY KEY CLUSTERED WITH (PAD_INDEX = OFF, FILLFACTOR = 80, "
       "IGNORE_DUP_KEY = OFF) ON [PRIMARY]) ON [PRIMARY] TEXTIMAGE_ON [PRIMARY]");
  Must("CREATE INDEX ix ON x (a) WITH (SORT_IN_TEMPDB = ON, MAXDOP = 1) ON [PRIMARY]");
  Must("SELECT a FROM t WITH (NOLOCK, ROWLOCK) WHERE a IN (SELECT a FROM t (UPDLOCK))");
  Must("SELECT a FROM t (INDEX = pk_t) WHERE a = 1 SELECT a FROM t WITH (NOLOCK, INDEX (pk_t, 1), FORCESEEK) "
       "SELECT a FROM t WITH (INDEX (0)) SELECT a FROM t x WITH (FORCESEEK (pk_t (a)))");
  Must("SELECT x.a FROM t x INNER HASH JOIN t y ON x.a = y.a LEFT LOOP JOIN t z ON z.a = y.a "
       "FULL OUTER MERGE JOIN t u ON u.a = z.a");
  Must(
      "SELECT a FROM t GROUP BY a ORDER BY a OPTION (MAXDOP 1, RECOMPILE, FAST 10, HASH GROUP, FORCE ORDER) "
      "UPDATE t SET b = 'x' OPTION (RECOMPILE) DELETE FROM t WHERE a = 7 OPTION (LOOP JOIN, KEEP PLAN) "
      "INSERT INTO t (a) VALUES (1) OPTION (OPTIMIZE FOR UNKNOWN) "
      "INSERT INTO t (a) SELECT 2 OPTION (OPTIMIZE FOR (@p = 1), USE HINT ('FORCE_LEGACY_CARDINALITY_ESTIMATION'))");
  EXPECT_EQ(ErrorOf("SELECT a FROM t OPTION (NOTHING)"), 102);
  EXPECT_EQ(ErrorOf("SELECT a FROM (SELECT a FROM t OPTION (RECOMPILE)) x"), 156);
  Must("SET ANSI_NULLS ON SET TRANSACTION ISOLATION LEVEL READ UNCOMMITTED");
  Must("DECLARE @x sys.int, @d DOUBLE PRECISION SET @x = 1");
}

TEST_F(RefusalsTest, WhatTheServerDoesNotKnowIsItsOwnError) {
  EXPECT_EQ(ErrorText("SELECT NOTHING(1)"), "195 1 'nothing' is not a recognized built-in function name.");
  EXPECT_EQ(ErrorOf("EXEC sp_nothing"), 2812);
  EXPECT_EQ(ErrorOf("SELECT @@nothing"), 137);
  EXPECT_EQ(ErrorOf("DECLARE @x nothing"), 2715);
  EXPECT_EQ(ErrorText("DECLARE @x dbo.nothing"),
            "2715 1 Column, parameter, or variable #1: Cannot find data type dbo.nothing.");
  EXPECT_EQ(ErrorOf("SELECT * FROM sys.nothing"), 208);
  EXPECT_EQ(ErrorText("SET NOTHING ON"), "195 1 'NOTHING' is not a recognized SET option.");
  EXPECT_EQ(ErrorText("CREATE NOTHING x"),
            "343 1 Unknown object type 'NOTHING' used in a CREATE, DROP, or ALTER statement.");
  EXPECT_EQ(ErrorOf("DROP NOTHING x"), 343);
  EXPECT_EQ(ErrorOf("ALTER NOTHING x"), 343);
  EXPECT_EQ(ErrorOf("CREATE SELECT"), 156);
  EXPECT_EQ(ErrorOf("SELECT a FROM t WITH (NOTHING)"), 321);
  EXPECT_EQ(ErrorText("SELECT dbo.nothing(1)"),
            "4121 1 Cannot find either column \"dbo\" or the user-defined function or aggregate "
            "\"dbo.nothing\", or the name is ambiguous.");
  EXPECT_EQ(ErrorOf("DECLARE @v INT += 1"), 102);
  EXPECT_EQ(ErrorOf("SELECT a FROM t FOR NOTHING"), 156);
  EXPECT_EQ(ErrorOf("NOTHING ELSE"), 156);
}

TEST_F(RefusalsTest, WordsOfTheServerAreReserved) {
  for (const char* word : {"checkpoint", "double", "file", "identitycol", "lineno", "rowcount", "rule",
                           "schema", "statistics", "varying"})
    EXPECT_EQ(ErrorOf("CREATE TABLE x (" + std::string(word) + " INT)"), 156) << word;
  Must("CREATE TABLE x ([file] INT, value INT, level INT, type INT)");
}

} // namespace
} // namespace tsql::test
