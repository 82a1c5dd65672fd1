// Names with the database's own name in front, and those of other databases.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class DatabaseNamesTest : public EngineTest {
 protected:
  DatabaseNamesTest() : own_("[" + Rows("SELECT DB_NAME()").front() + "]") {
    Must("CREATE TABLE t (x INT) INSERT INTO t VALUES (1)");
  }
  const std::string own_;
};

TEST_F(DatabaseNamesTest, TheOwnOneMayStandBeforeASchema) {
  Must("CREATE TABLE " + own_ + ".dbo.u (x INT) INSERT INTO " + own_ + "..u VALUES (2)");
  EXPECT_EQ(Rows("SELECT " + own_ + ".dbo.u.x, " + own_ + "..u.x, dbo.u.x FROM " + own_ + ".dbo.u"),
            Lines({"2|2|2"}));
  Must("UPDATE " + own_ + "..u SET x = 3 DELETE " + own_ + ".dbo.u WHERE x = 4");
  EXPECT_EQ(Rows("SELECT x FROM u"), Lines({"3"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM " + own_ + ".sys.tables"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM " + own_ + ".INFORMATION_SCHEMA.TABLES"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM " + own_ + "..sysobjects WHERE xtype = 'U'"), Lines({"2"}));
  EXPECT_EQ(ErrorOf("SELECT x FROM " + own_ + "..nosuch"), 208);
  Must("DROP TABLE " + own_ + "..u");
  EXPECT_EQ(ErrorOf("SELECT x FROM u"), 208);
}

TEST_F(DatabaseNamesTest, InModulesAndCalls) {
  Must("CREATE PROCEDURE p AS SELECT x FROM " + own_ + "..t");
  EXPECT_EQ(Rows("EXEC " + own_ + "..p"), Lines({"1"}));
  EXPECT_EQ(Rows("DECLARE @p NVARCHAR(200) SET @p = '" + own_ + ".dbo.p' EXEC @p"), Lines({"1"}));
  Must("CREATE FUNCTION f (@x INT) RETURNS INT AS BEGIN RETURN @x + (SELECT x FROM " + own_ + ".dbo.t) END");
  EXPECT_EQ(Rows("SELECT " + own_ + ".dbo.f(5)"), Lines({"6"}));
  Must("CREATE VIEW v AS SELECT x FROM " + own_ + "..t");
  EXPECT_EQ(Rows("SELECT x FROM " + own_ + ".dbo.v"), Lines({"1"}));
  Must("CREATE TRIGGER tr ON t FOR INSERT AS UPDATE " + own_ + "..t SET x = 9");
  Must("INSERT INTO t VALUES (2)");
  EXPECT_EQ(Rows("SELECT x FROM v"), Lines({"9", "9"}));
  for (const char* kind : {"VIEW", "PROCEDURE", "FUNCTION", "TRIGGER"})
    EXPECT_EQ(ErrorText("DROP " + std::string(kind) + " " + own_ + ".dbo.x"),
              "166 1 'DROP " + std::string(kind) +
                  "' does not allow specifying the database name as a prefix to the object name.");
  EXPECT_EQ(
      ErrorText("CREATE VIEW " + own_ + ".dbo.w AS SELECT 1 AS a"),
      "166 1 'CREATE/ALTER VIEW' does not allow specifying the database name as a prefix to the object name.");
}

TEST_F(DatabaseNamesTest, AnotherOneIsRefused) {
  for (const char* batch :
       {"SELECT x FROM other.dbo.t", "SELECT x FROM other..t", "EXEC other.dbo.p",
        "DECLARE @p NVARCHAR(20) SET @p = 'other..p' EXEC @p", "INSERT INTO tempdb..t VALUES (1)"})
    EXPECT_EQ(ErrorText(batch), "40510 1 A name with the part of another database is not supported.")
        << batch;
  EXPECT_EQ(ErrorOf("SELECT other.dbo.f(1)"), 4121);
}

TEST_F(DatabaseNamesTest, ObjectsAreAskedForInTheirDatabase) {
  Must("CREATE TABLE #t (a INT)");
  EXPECT_EQ(Rows("SELECT OBJECT_ID('" + own_ +
                 "..t') - OBJECT_ID('t'), OBJECT_ID('other..t'), "
                 "OBJECT_ID('tempdb..t'), OBJECT_ID('#t'), COL_LENGTH('tempdb..#t', 'a')"),
            Lines({"0|NULL|NULL|NULL|4"}));
  EXPECT_EQ(Rows("SELECT 1 WHERE OBJECT_ID('tempdb..#t') IS NOT NULL"), Lines({"1"}));
}

} // namespace
} // namespace tsql::test
