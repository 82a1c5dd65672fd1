// Cursors: their kinds, FETCH, scopes, and changes of the current row.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class CursorsTest : public EngineTest {
 protected:
  CursorsTest() {
    Must("CREATE TABLE t (a INT NOT NULL PRIMARY KEY, b VARCHAR(5) NULL)"
         " INSERT t VALUES (1, 'x'), (2, 'y'), (3, NULL)");
  }
};

TEST_F(CursorsTest, ALoopOverRows) {
  EXPECT_EQ(
      Run("DECLARE @a INT, @b VARCHAR(5) DECLARE c CURSOR FOR SELECT a, b FROM t ORDER BY a DESC OPEN c"
          " FETCH NEXT FROM c INTO @a, @b WHILE @@FETCH_STATUS = 0 BEGIN PRINT CAST(@a AS VARCHAR(5)) + ISNULL(@b, '-')"
          " FETCH NEXT FROM c INTO @a, @b END CLOSE c DEALLOCATE c PRINT @@FETCH_STATUS PRINT @a")
          .messages,
      Lines({"3-", "2y", "1x", "-1", "1"}));
}

TEST_F(CursorsTest, FetchWithoutVariablesReturnsTheRow) {
  const Output output =
      Run("DECLARE c CURSOR LOCAL FAST_FORWARD FOR SELECT a, b FROM t WHERE a < 2 OPEN c FETCH c"
          " SELECT @@ROWCOUNT, @@FETCH_STATUS FETCH NEXT FROM c SELECT @@ROWCOUNT, @@FETCH_STATUS");
  EXPECT_EQ(output.results, std::vector<Lines>({{"1|x"}, {"1|0"}, {}, {"0|-1"}}));
  EXPECT_EQ(output.columns.at(0).at(1).name, "b");
}

TEST_F(CursorsTest, EveryWayToScroll) {
  const auto fetch = [&](const std::string& words) {
    const Output output = Run("FETCH " + words + " FROM c");
    return output.results.at(0).empty() ? std::string("none") : output.results[0][0];
  };
  Must("DECLARE c SCROLL CURSOR FOR SELECT a FROM t ORDER BY a OPEN c");
  EXPECT_EQ(fetch("PRIOR"), "none");
  EXPECT_EQ(fetch("NEXT"), "1");
  EXPECT_EQ(fetch("LAST"), "3");
  EXPECT_EQ(fetch("NEXT"), "none");
  EXPECT_EQ(fetch("PRIOR"), "3");
  EXPECT_EQ(fetch("RELATIVE -1"), "2");
  EXPECT_EQ(fetch("RELATIVE 0"), "2");
  EXPECT_EQ(fetch("FIRST"), "1");
  EXPECT_EQ(fetch("ABSOLUTE 2"), "2");
  EXPECT_EQ(fetch("ABSOLUTE -1"), "3");
  EXPECT_EQ(fetch("ABSOLUTE 0"), "none");
  EXPECT_EQ(fetch("NEXT"), "1");
  EXPECT_EQ(fetch("ABSOLUTE 9"), "none");
  Must("DECLARE @n INT SET @n = 3 FETCH ABSOLUTE @n FROM c CLOSE c DEALLOCATE c");
}

TEST_F(CursorsTest, ThoseThatOnlyGoForwards) {
  for (const char* options : {"", "FORWARD_ONLY", "FAST_FORWARD", "FORWARD_ONLY STATIC", "LOCAL READ_ONLY"}) {
    const std::string declare = "DECLARE c CURSOR " + std::string(options) + " FOR SELECT a FROM t OPEN c ";
    EXPECT_EQ(ErrorText(declare + "FETCH LAST FROM c DEALLOCATE c"),
              "16911 1 fetch: The fetch type last cannot be used with forward only cursors.")
        << options;
  }
  for (const char* options : {"SCROLL", "STATIC", "KEYSET", "DYNAMIC", "LOCAL SCROLL STATIC READ_ONLY"})
    Must("DECLARE c CURSOR " + std::string(options) +
         " FOR SELECT a FROM t OPEN c FETCH LAST FROM c DEALLOCATE c");
  EXPECT_EQ(
      ErrorOf("DECLARE c CURSOR DYNAMIC FOR SELECT a FROM t OPEN c FETCH ABSOLUTE 1 FROM c DEALLOCATE c"),
      16925);
  EXPECT_EQ(ErrorText("DECLARE c CURSOR SCROLL FAST_FORWARD FOR SELECT 1"),
            "1048 1 Conflicting cursor options FAST_FORWARD and SCROLL.");
  EXPECT_EQ(ErrorOf("DECLARE c CURSOR STATIC KEYSET FOR SELECT 1"), 1048);
}

TEST_F(CursorsTest, WhatIsWrongWithAUse) {
  EXPECT_EQ(ErrorText("OPEN c"), "16916 1 A cursor with the name 'c' does not exist.");
  EXPECT_EQ(ErrorOf("CLOSE c"), 16916);
  EXPECT_EQ(ErrorOf("DEALLOCATE c"), 16916);
  EXPECT_EQ(ErrorOf("FETCH c"), 16916);
  Must("DECLARE c CURSOR FOR SELECT a, b FROM t");
  EXPECT_EQ(ErrorText("DECLARE C CURSOR FOR SELECT 1"), "16915 1 A cursor with the name 'C' already exists.");
  EXPECT_EQ(ErrorText("FETCH c"), "16917 1 Cursor is not open.");
  EXPECT_EQ(ErrorOf("CLOSE c"), 16917);
  Must("OPEN c");
  EXPECT_EQ(ErrorText("OPEN c"), "16905 1 The cursor is already open.");
  EXPECT_EQ(
      ErrorText("DECLARE @a INT FETCH c INTO @a"),
      "16924 1 Cursorfetch: The number of variables declared in the INTO list must match that of selected columns.");
  EXPECT_EQ(
      ErrorText("DECLARE @a INT, @b UNIQUEIDENTIFIER FETCH c INTO @b, @a"),
      "16922 1 Cursor Fetch: Implicit conversion from data type int to uniqueidentifier is not allowed.");
  EXPECT_EQ(ErrorOf("FETCH c INTO @nothing"), 137);
  EXPECT_EQ(ErrorOf("DECLARE d CURSOR FOR SELECT a FROM missing"), 208);
  EXPECT_EQ(ErrorOf("DECLARE d CURSOR FOR SELECT missing FROM t"), 207);
  EXPECT_EQ(Run("OPEN missing PRINT 'goes on'").messages, Lines({"goes on"}));
  Must("DEALLOCATE c");
}

TEST_F(CursorsTest, ScopesAndStates) {
  Must(
      "CREATE PROCEDURE p AS DECLARE l CURSOR LOCAL FOR SELECT 1 DECLARE g CURSOR GLOBAL FOR SELECT 7 OPEN l OPEN g"
      " SELECT CURSOR_STATUS('local', 'l'), CURSOR_STATUS('global', 'g'), CURSOR_STATUS('global', 'l')");
  EXPECT_EQ(Rows("EXEC p"), Lines({"1|1|-3"}));
  EXPECT_EQ(Rows("FETCH NEXT FROM g"), Lines({"7"})) << "it outlives its procedure";
  EXPECT_EQ(ErrorOf("CLOSE l"), 16916);
  EXPECT_EQ(Rows("DECLARE g CURSOR LOCAL FOR SELECT 8 OPEN g FETCH g"), Lines({"8"}));
  EXPECT_EQ(
      Rows(
          "DECLARE s CURSOR STATIC FOR SELECT a FROM t WHERE a > 9 SELECT CURSOR_STATUS('global', 's') OPEN s"),
      Lines({"-1"}));
  EXPECT_EQ(Rows("SELECT CURSOR_STATUS('global', 's'), @@CURSOR_ROWS"), Lines({"0|0"}));
  EXPECT_EQ(Rows("DECLARE k CURSOR KEYSET FOR SELECT a FROM t OPEN k SELECT @@CURSOR_ROWS"), Lines({"3"}));
  EXPECT_EQ(Rows("DECLARE d CURSOR DYNAMIC FOR SELECT a FROM t OPEN d SELECT @@CURSOR_ROWS"), Lines({"-1"}));
  session_->Reset();
  EXPECT_EQ(ErrorOf("FETCH g"), 16916);
}

TEST_F(CursorsTest, VariablesAreThoseOfTheDeclaration) {
  EXPECT_EQ(
      Rows(
          "DECLARE @n INT SET @n = 2 DECLARE c CURSOR LOCAL FOR SELECT a FROM t WHERE a = @n SET @n = 3 OPEN c"
          " FETCH c"),
      Lines({"2"}));
}

TEST_F(CursorsTest, CursorVariables) {
  EXPECT_EQ(Rows("DECLARE @c CURSOR, @a INT SET @c = CURSOR SCROLL FOR SELECT a FROM t ORDER BY a OPEN @c"
                 " FETCH LAST FROM @c INTO @a CLOSE @c DEALLOCATE @c SELECT @a"),
            Lines({"3"}));
  EXPECT_EQ(ErrorText("DECLARE @c CURSOR OPEN @c"),
            "16950 1 The variable '@c' does not currently have a cursor allocated to it.");
  EXPECT_EQ(ErrorOf("SET @c = CURSOR FOR SELECT 1"), 137);
  EXPECT_EQ(Rows("DECLARE @c CURSOR SELECT CURSOR_STATUS('variable', '@c'), CURSOR_STATUS('variable', '@d')"),
            Lines({"-2|-3"}));
}

TEST_F(CursorsTest, ChangesOfTheCurrentRow) {
  Must(
      "DECLARE @a INT DECLARE c CURSOR FOR SELECT a FROM t ORDER BY a FOR UPDATE OF b OPEN c FETCH c INTO @a FETCH c INTO @a"
      " UPDATE t SET b = 'new' WHERE CURRENT OF c FETCH c INTO @a DELETE FROM t WHERE CURRENT OF c");
  EXPECT_EQ(Rows("SELECT a, b FROM t ORDER BY a"), Lines({"1|x", "2|new"}));
  EXPECT_EQ(ErrorText("DELETE t WHERE CURRENT OF c"), "16947 1 No rows were updated or deleted.");
  EXPECT_EQ(ErrorText("FETCH c UPDATE t SET b = 'z' WHERE CURRENT OF c"),
            "16931 1 There are no rows in the current fetch buffer.");
  Must("CREATE TABLE u (a INT)");
  EXPECT_EQ(ErrorOf("CLOSE c OPEN c FETCH c DELETE u WHERE CURRENT OF c"), 16933);
  EXPECT_EQ(
      ErrorOf("DECLARE r CURSOR READ_ONLY FOR SELECT a FROM t OPEN r FETCH r DELETE t WHERE CURRENT OF r"),
      16929);
  EXPECT_EQ(ErrorOf("DELETE t WHERE CURRENT OF missing"), 16916);
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1", "2"}));
}

TEST_F(CursorsTest, OverATableThatIsDropped) {
  Must("CREATE TABLE u (a INT) INSERT u VALUES (1), (2)");
  Must("DECLARE c CURSOR FOR SELECT a FROM u");
  Must("DROP TABLE u");
  EXPECT_EQ(ErrorOf("OPEN c"), 208);
  Must("CREATE TABLE u (a INT) INSERT u VALUES (5), (6)");
  EXPECT_EQ(Rows("OPEN c FETCH c"), Lines({"5"}));
  Must("DROP TABLE u");
  EXPECT_EQ(Rows("FETCH c"), Lines({"6"})) << "the rows were read when it was opened";
  Must("CLOSE c DEALLOCATE c");
}

TEST_F(CursorsTest, WithinTransactionsProceduresAndFunctions) {
  Must(
      "CREATE FUNCTION joined () RETURNS VARCHAR(99) AS BEGIN DECLARE @s VARCHAR(99), @a INT SET @s = ''"
      " DECLARE c CURSOR LOCAL FOR SELECT a FROM t ORDER BY a OPEN c FETCH c INTO @a WHILE @@FETCH_STATUS = 0 BEGIN"
      " SET @s = @s + CAST(@a AS VARCHAR(9)) FETCH c INTO @a END RETURN @s END");
  EXPECT_EQ(Rows("SELECT dbo.joined(), dbo.joined()"), Lines({"123|123"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON DECLARE @a INT BEGIN TRAN DECLARE c CURSOR LOCAL FOR SELECT a FROM t OPEN c FETCH c INTO @a"
          " DELETE t WHERE CURRENT OF c ROLLBACK FETCH c INTO @a SELECT @a, COUNT(*) FROM t"),
      Lines({"2|3"}));
  EXPECT_EQ(
      ErrorOf(
          "CREATE FUNCTION x () RETURNS INT AS BEGIN DECLARE c CURSOR LOCAL FOR SELECT 1 OPEN c FETCH c RETURN 1 END"),
      444);
}

} // namespace
} // namespace tsql::test
