// ANSI_NULLS, QUOTED_IDENTIFIER, CONCAT_NULL_YIELDS_NULL and ANSI_PADDING off, as scripts of old systems set
// them.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class OldOptionsTest : public EngineTest {
 protected:
  OldOptionsTest() {
    Must("CREATE TABLE t (a INT NULL, b INT NULL) INSERT INTO t VALUES (1, 1), (NULL, 2), (3, NULL)");
  }
  // The only value of a batch's only result.
  std::string Only(const std::string& batch) {
    const Lines rows = Rows(batch);
    return rows.size() == 1 ? rows.front() : std::to_string(rows.size()) + " rows";
  }
  std::string CountOf(const std::string& condition) {
    return Only("DECLARE @null INT, @one INT SET @one = 1 SELECT COUNT(*) FROM t WHERE " + condition);
  }
};

TEST_F(OldOptionsTest, NullEqualsAVariableAndItself) {
  EXPECT_EQ(CountOf("a = NULL"), "0");
  EXPECT_EQ(CountOf("a <> @null"), "0");
  Must("SET ANSI_NULLS OFF");
  EXPECT_EQ(CountOf("a = NULL"), "1");
  EXPECT_EQ(CountOf("NULL = a"), "1");
  EXPECT_EQ(CountOf("a <> NULL"), "2");
  EXPECT_EQ(CountOf("a != @null"), "2");
  EXPECT_EQ(CountOf("a = @null"), "1");
  EXPECT_EQ(CountOf("a = @one"), "1");
  EXPECT_EQ(CountOf("a <> @one"), "2") << "null is something else than 1";
  EXPECT_EQ(CountOf("NOT a = @one"), "2");
  EXPECT_EQ(CountOf("a <> 1"), "1") << "a constant is neither a variable nor NULL";
  EXPECT_EQ(CountOf("a = b"), "1") << "nor are columns";
  EXPECT_EQ(CountOf("a < NULL"), "0");
  EXPECT_EQ(CountOf("a IN (1, NULL)"), "2");
  EXPECT_EQ(CountOf("a IN (@one, 3)"), "2");
  EXPECT_EQ(CountOf("a NOT IN (1, @null)"), "1");
  EXPECT_EQ(CountOf("CASE a WHEN @null THEN 5 WHEN 1 THEN 6 ELSE 7 END = 5"), "1");
  EXPECT_EQ(Run("IF NULL = NULL PRINT 'equal' ELSE PRINT 'unknown'").messages, Lines({"equal"}));
  EXPECT_EQ(Run("DECLARE @a INT, @b INT WHILE @a = @b SET @a = 1 PRINT @a").messages, Lines({"1"}));
  EXPECT_EQ(Only("SELECT COUNT(*) FROM t x JOIN t y ON x.a = y.a"), "2");
  EXPECT_EQ(Only("SELECT @@OPTIONS & 32"), "0");
}

TEST_F(OldOptionsTest, AnsiNullsHoldsFromItsStatementOn) {
  const Output result = Run("DECLARE @i INT SET @i = 0 WHILE @i < 4 BEGIN IF @i = 2 SET ANSI_NULLS OFF "
                            "IF NULL = NULL PRINT 'equal' ELSE PRINT 'unknown' SET @i = @i + 1 END");
  EXPECT_EQ(result.messages, Lines({"unknown", "unknown", "equal", "equal"}));
  EXPECT_EQ(CountOf("a = NULL"), "1");
  Must("SET ANSI_NULLS ON");
  EXPECT_EQ(CountOf("a = NULL"), "0");
}

TEST_F(OldOptionsTest, ALongListOfVariables) {
  Must("SET ANSI_NULLS OFF");
  std::string list = "@null";
  for (int i = 0; i < 3000; ++i) list += ", " + std::to_string(i % 2 == 0 ? 1 : 4);
  EXPECT_EQ(CountOf("a IN (" + list + ")"), "2");
}

TEST_F(OldOptionsTest, AModuleHasTheOptionsThatItWasMadeWith) {
  Must("SET ANSI_NULLS OFF SET QUOTED_IDENTIFIER OFF");
  Must("CREATE PROCEDURE p AS SET ANSI_NULLS ON SET QUOTED_IDENTIFIER ON SELECT COUNT(*), \"it's\" FROM t "
       "WHERE a = NULL EXEC (\"SELECT COUNT(*) FROM t WHERE a = NULL\")");
  Must("CREATE VIEW v AS SELECT a, \"text\" AS b FROM t WHERE a = NULL");
  Must(
      "CREATE FUNCTION f (@a INT) RETURNS VARCHAR(5) AS BEGIN IF @a = NULL RETURN \"null\" RETURN \"one\" END");
  Must("CREATE FUNCTION g (@a INT) RETURNS TABLE AS RETURN SELECT \"in\" AS i FROM t WHERE a = @a");
  Must("CREATE TRIGGER tr ON t FOR INSERT AS IF (SELECT COUNT(*) FROM inserted WHERE a = NULL) > 0 "
       "RAISERROR (\"null\", 16, 1)");
  Must("SET ANSI_NULLS ON SET QUOTED_IDENTIFIER ON");
  EXPECT_EQ(Run("EXEC p").results, std::vector<Lines>({{"1|it's"}, {"1"}}));
  EXPECT_EQ(Run("SELECT * FROM v").results, std::vector<Lines>({{"NULL|text"}}));
  EXPECT_EQ(Only("SELECT dbo.f(NULL) + dbo.f(1)"), "nullone");
  EXPECT_EQ(Only("SELECT COUNT(*) FROM t CROSS APPLY g(a) WHERE i = 'in'"), "3");
  EXPECT_EQ(ErrorText("INSERT INTO t (a) VALUES (NULL)"), "50000 1 null");
  EXPECT_EQ(CountOf("a = NULL"), "0");
  EXPECT_EQ(Only("SELECT OBJECTPROPERTY(OBJECT_ID('p'), 'ExecIsAnsiNullsOn') + "
                 "OBJECTPROPERTY(OBJECT_ID('p'), 'ExecIsQuotedIdentOn')"),
            "0");

  Must("CREATE PROCEDURE q AS SET ANSI_NULLS OFF SELECT COUNT(*) FROM t WHERE a = NULL");
  EXPECT_EQ(Only("EXEC q"), "0");
  Must("SET ANSI_NULLS OFF");
  EXPECT_EQ(Only("EXEC q"), "0");
  Must("ALTER PROCEDURE q AS SELECT COUNT(*) FROM t WHERE a = NULL");
  EXPECT_EQ(Only("EXEC q"), "2") << "of the session that altered it";
}

TEST_F(OldOptionsTest, WhatAModuleReadIsStillThereAfterReopening) {
  Must("SET ANSI_NULLS, QUOTED_IDENTIFIER OFF");
  Must("CREATE PROCEDURE p AS SELECT COUNT(*) FROM t WHERE a = NULL AND \"x\" = 'x'");
  const std::unique_ptr<Session> other = Session::Open(database_);
  EXPECT_EQ(RunOn(*other, "EXEC p").results, std::vector<Lines>({{"1"}}));
}

TEST_F(OldOptionsTest, DoubleQuotationMarksEncloseTexts) {
  EXPECT_EQ(Only("SET QUOTED_IDENTIFIER OFF SELECT \"it's \"\"one\"\"\""), "it's \"one\"");
  EXPECT_EQ(Only("SELECT \"text\""), "text") << "it holds for the session";
  EXPECT_EQ(Only("SELECT @@OPTIONS & 256"), "0");
  EXPECT_EQ(Only("EXEC sp_executesql N'SELECT \"text\"'"), "text");
  Must("CREATE TABLE d (a INT, s VARCHAR(10) DEFAULT \"it's\" CHECK (s <> \"no\"), u AS s + \"!\")");
  EXPECT_EQ(
      Run("EXEC ('SET QUOTED_IDENTIFIER ON SELECT a AS \"x\" FROM t WHERE a = 1') SELECT \"text\"").results,
      std::vector<Lines>({{"1"}, {"text"}}));
  EXPECT_EQ(Only("SELECT \"text\""), "text") << "an option that dynamic text sets ends with it";
  Must("SET QUOTED_IDENTIFIER ON");
  EXPECT_EQ(ErrorOf("SELECT \"text\""), 207);
  Must("INSERT INTO d (a) VALUES (1)");
  EXPECT_EQ(Only("SELECT u FROM d"), "it's!");
  EXPECT_EQ(ErrorOf("INSERT INTO d (a, s) VALUES (1, 'no')"), 547);
  EXPECT_EQ(ErrorOf("SET QUOTED_IDENTIFIER OFF SELECT \"text\" SELECT FROM"), 156);
  EXPECT_EQ(ErrorOf("SELECT \"text\""), 207) << "a batch that is not read sets nothing";
}

TEST_F(OldOptionsTest, ABatchThatRunsAgainIsReadByTheOptionOfNow) {
  const char* const batch = "SELECT \"a\" FROM t WHERE a = 1";
  for (int run = 0; run < 3; ++run) EXPECT_EQ(Only(batch), "1");
  Must("SET QUOTED_IDENTIFIER OFF");
  for (int run = 0; run < 3; ++run) EXPECT_EQ(Only(batch), "a");
  Must("SET QUOTED_IDENTIFIER ON");
  EXPECT_EQ(Only(batch), "1");
}

TEST_F(OldOptionsTest, NullIsNothingToATextThatIsJoinedToIt) {
  EXPECT_EQ(Only("SELECT 'a' + NULL + 'b'"), "NULL");
  Must("SET CONCAT_NULL_YIELDS_NULL OFF");
  EXPECT_EQ(Only("SELECT 'a' + NULL + 'b'"), "ab");
  EXPECT_EQ(Only("DECLARE @s VARCHAR(10) SET @s = @s + 'x' SET @s += 'y' SELECT @s"), "xy");
  EXPECT_EQ(Only("DECLARE @s NVARCHAR(10) SELECT '[' + (@s + @s) + ']'"), "[]");
  EXPECT_EQ(Only("SELECT a + NULL FROM t WHERE a = 1"), "NULL") << "numbers are as ever";
  Must("CREATE PROCEDURE p AS SELECT 'a' + NULL");
  EXPECT_EQ(Only("EXEC p"), "a");
  Must("SET CONCAT_NULL_YIELDS_NULL ON");
  EXPECT_EQ(Only("EXEC p"), "NULL") << "a module has the session's";
}

TEST_F(OldOptionsTest, PaddingIsRefusedWhereItCounts) {
  Must("SET ANSI_PADDING OFF CREATE TABLE n (a INT, b NVARCHAR(5)) SELECT 1 AS a INTO m");
  for (const char* batch : {"CREATE TABLE p (a VARCHAR(5))", "CREATE TABLE #p (a BINARY(5))",
                            "ALTER TABLE n ADD c CHAR(5)", "SELECT 'a' AS a INTO o"})
    EXPECT_EQ(
        ErrorText(batch),
        "40510 1 A column of char, varchar, binary or varbinary with ANSI_PADDING off is not supported.")
        << batch;
  Must("SET ANSI_PADDING ON CREATE TABLE p (a VARCHAR(5))");
  EXPECT_EQ(ErrorOf("SET ANSI_NULLS OFF CREATE TABLE c (a INT CHECK (a = NULL))"), 40510);
}

} // namespace
} // namespace tsql::test
