// Texts with parameters (sp_executesql), and rows that a procedure or text returns to an INSERT.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class DynamicTextTest : public EngineTest {};

TEST_F(DynamicTextTest, ParametersByPositionAndByName) {
  EXPECT_EQ(Rows("EXEC sp_executesql N'SELECT @a, @b', N'@a INT, @b VARCHAR(5)', 7, 'x'"), Lines({"7|x"}));
  EXPECT_EQ(Rows("EXEC sp_executesql N'SELECT @a, @b', N'@a INT, @b VARCHAR(5)', @b = 'x', @a = '8'"),
            Lines({"8|x"}));
  EXPECT_EQ(
      Rows("DECLARE @s NVARCHAR(99), @p NVARCHAR(99), @v INT SET @s = N'SELECT @a + 1' SET @p = N'@a INT'"
           " SET @v = 4 EXEC sp_executesql @stmt = @s, @params = @p, @a = @v"),
      Lines({"5"}));
  EXPECT_EQ(Rows("EXEC dbo.sp_executesql N'SELECT 1'"), Lines({"1"}));
}

TEST_F(DynamicTextTest, AProceduresNameInAVariable) {
  Must("CREATE PROCEDURE p @a INT = 1, @b INT = 2 OUTPUT AS SELECT @a, @b SET @b = @a * 10 RETURN @a");
  EXPECT_EQ(Rows("DECLARE @name VARCHAR(50) SET @name = 'p' EXEC @name 5"), Lines({"5|2"}));
  EXPECT_EQ(Rows("DECLARE @name NVARCHAR(50), @v INT SET @name = N'dbo.[P] ' EXECUTE @name @b = 7, @a = -1"),
            Lines({"-1|7"}));
  const Output output =
      Run("DECLARE @name SYSNAME, @r INT, @o INT SET @name = 'p' EXEC @r = @name 4, @o OUTPUT"
          " SELECT @r, @o");
  EXPECT_EQ(output.results, std::vector<Lines>({{"4|NULL"}, {"4|40"}}));
  EXPECT_EQ(
      Rows("DECLARE @name VARCHAR(50) SET @name = 'sp_executesql' EXEC @name N'SELECT @x', N'@x INT', 3"),
      Lines({"3"}));
  EXPECT_EQ(Rows("DECLARE @name VARCHAR(9) SET @name = 'p' DECLARE @t TABLE (a INT, b INT)"
                 " INSERT INTO @t EXEC @name 8 SELECT a, b FROM @t"),
            Lines({"8|2"}));
  EXPECT_EQ(ErrorText("DECLARE @name VARCHAR(50) SET @name = 'none.such' EXEC @name"),
            "2812 1 Could not find stored procedure 'none.such'.");
  EXPECT_EQ(ErrorText("DECLARE @name VARCHAR(50) EXEC @name"), "2812 1 Could not find stored procedure ''.");
  EXPECT_EQ(ErrorOf("DECLARE @name VARCHAR(50) SET @name = '[p' EXEC @name"), 2812);
  EXPECT_EQ(ErrorOf("DECLARE @name VARCHAR(50) SET @name = 'sp_who' EXEC @name"), 40510);
  EXPECT_EQ(ErrorOf("DECLARE @name VARCHAR(50) SET @name = 'other.dbo.p' EXEC @name"), 40510);
  EXPECT_EQ(ErrorText("EXEC @name"), "137 1 Must declare the scalar variable \"@name\".");
}

TEST_F(DynamicTextTest, ValuesComeBack) {
  EXPECT_EQ(
      Rows("DECLARE @n INT, @rc INT EXEC @rc = sp_executesql N'SET @x = @x * 2', N'@x INT OUTPUT', @n OUTPUT"
           " SELECT @n, @rc"),
      Lines({"NULL|0"}));
  EXPECT_EQ(
      Rows(
          "DECLARE @n BIGINT SET @n = 21 EXEC sp_executesql N'SET @x = @x * 2', N'@x INT OUTPUT', @x = @n OUTPUT"
          " SELECT @n"),
      Lines({"42"}));
  EXPECT_EQ(
      Rows("DECLARE @n INT SET @n = 1 EXEC sp_executesql N'SET @x = 9', N'@x INT OUTPUT', @n SELECT @n"),
      Lines({"1"}));
}

TEST_F(DynamicTextTest, WhatIsWrongWithACall) {
  EXPECT_EQ(ErrorText("EXEC sp_executesql 'SELECT 1'"),
            "214 1 Procedure expects parameter '@statement' of type 'ntext/nchar/nvarchar'.");
  EXPECT_EQ(ErrorText("EXEC sp_executesql N'SELECT 1', '@a INT', 1"),
            "214 1 Procedure expects parameter '@params' of type 'ntext/nchar/nvarchar'.");
  EXPECT_EQ(
      ErrorText("EXEC sp_executesql N'SELECT @a', N'@a INT'"),
      "8178 1 The parameterized query '(@a INT)SELECT @a' expects the parameter '@a', which was not supplied.");
  EXPECT_EQ(ErrorOf("EXEC sp_executesql N'SELECT @a', N'@a INT', 1, 2"), 8144);
  EXPECT_EQ(ErrorOf("EXEC sp_executesql N'SELECT @a', N'@a INT', @b = 2"), 8145);
  EXPECT_EQ(ErrorOf("EXEC sp_executesql"), 201);
  EXPECT_EQ(ErrorOf("EXEC sp_executesql N'SELECT @b', N'@a INT', 1"), 137);
  EXPECT_EQ(ErrorOf("DECLARE @b INT EXEC sp_executesql N'SELECT @b'"), 137)
      << "variables of the batch are not seen";
  EXPECT_EQ(ErrorOf("EXEC sp_executesql N'SELECT 1', N'@a'"), 102);
  EXPECT_EQ(Rows("DECLARE @s NVARCHAR(9) EXEC sp_executesql @s SELECT 1"), Lines({"1"}));
}

TEST_F(DynamicTextTest, OptionsAndTemporaryTablesEndWithTheText) {
  const Output output =
      Run("EXEC sp_executesql N'SET NOCOUNT ON CREATE TABLE #t (a INT)' CREATE TABLE #t (b INT)"
          " INSERT #t VALUES (1)");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.counts, std::vector<int64_t>({1}));
}

// As the objects of ADO call a procedure.
TEST_F(DynamicTextTest, CalledLikeAProcedure) {
  const auto text = [](const char* name, std::string_view value) {
    Parameter parameter;
    parameter.name = name;
    parameter.type = Type{TypeId::NVarChar, 100, 0, 0};
    parameter.value.kind = Value::Kind::Text;
    parameter.value.text = value;
    return parameter;
  };
  const auto number = [](const char* name, int value) {
    Parameter parameter;
    parameter.name = name;
    parameter.type.id = TypeId::Int;
    parameter.value.kind = Value::Kind::Integer;
    parameter.value.integer = value;
    return parameter;
  };
  std::vector<Parameter> parameters = {text("@stmt", "SET @y = @s + N'!' SELECT @x + 1"),
                                       text("@params", "@x INT, @s NVARCHAR(9), @y NVARCHAR(9) OUTPUT"),
                                       number("@x", 4), text("@s", "yes"), text("@y", "")};
  parameters[4].output = true;
  Output output;
  EXPECT_EQ(session_->Call("sp_executesql", parameters, output), std::optional<int32_t>(0));
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.results, std::vector<Lines>({{"5"}}));
  EXPECT_EQ(ToText(parameters[4].value), "yes!");
  std::vector<Parameter> byPosition = {text("", "SELECT @b, @a"), text("", "@a INT, @b INT"), number("", 1),
                                       number("", 2)};
  EXPECT_EQ(session_->Call("sys.sp_executesql", byPosition, output), std::optional<int32_t>(0));
  EXPECT_EQ(output.results.back(), Lines({"2|1"}));
  EXPECT_EQ(session_->Call("sp_executesql", {}, output), std::nullopt);
  EXPECT_EQ(output.errors.back().number, 201);
  std::vector<Parameter> bad = {text("", "SELECT 1"), text("", "@a INT"), number("@a = 1 --", 1)};
  EXPECT_EQ(session_->Call("sp_executesql", bad, output), std::nullopt);
  EXPECT_EQ(output.errors.back().number, 8145);
}

class InsertExecuteTest : public EngineTest {
 protected:
  InsertExecuteTest() {
    Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT NOT NULL, b VARCHAR(5) NULL DEFAULT 'd')");
    Must("CREATE PROCEDURE p AS SELECT 1, 'x' UNION ALL SELECT 2, 'y' SELECT 3, 'z' RETURN 5");
  }
};

TEST_F(InsertExecuteTest, TheRowsOfAllResultsAreInserted) {
  const Output output =
      Run("DECLARE @rc INT INSERT INTO t EXEC @rc = p SELECT @rc, @@ROWCOUNT SELECT id, a, b FROM t");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.counts, std::vector<int64_t>({3}));
  EXPECT_EQ(output.results, std::vector<Lines>({{"5|3"}, {"1|1|x", "2|2|y", "3|3|z"}}));
}

TEST_F(InsertExecuteTest, TextsTemporaryTablesAndColumns) {
  EXPECT_EQ(Rows("SET NOCOUNT ON INSERT t (a) EXEC ('SELECT ''12''') SELECT a, b, SCOPE_IDENTITY() FROM t"),
            Lines({"12|d|1"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON CREATE TABLE #x (a INT, b CHAR(1)) INSERT #x EXEC p SELECT a, b FROM #x"),
            Lines({"1|x", "2|y", "3|z"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON DECLARE @x TABLE (a INT, b CHAR(1)) INSERT @x EXEC p SELECT SUM(a) FROM @x"),
            Lines({"6"}));
  EXPECT_EQ(
      Rows("SET NOCOUNT ON DECLARE @x TABLE (a INT) INSERT @x EXEC sp_executesql N'SELECT @n', N'@n INT', 4"
           " SELECT a FROM @x"),
      Lines({"4"}));
}

TEST_F(InsertExecuteTest, AWrongNumberOfColumnsInsertsNothing) {
  EXPECT_EQ(ErrorOf("INSERT t (a) EXEC p"), 213);
  EXPECT_EQ(ErrorOf("INSERT t EXEC ('SELECT 1, ''x'' SELECT 1')"), 213);
  EXPECT_EQ(ErrorOf("INSERT t EXEC ('SELECT 1, ''too long''')"), 8152);
  EXPECT_EQ(ErrorOf("INSERT t EXEC ('SELECT 1, ''a'' SELECT NULL, ''b''')"), 515);
  EXPECT_EQ(Rows("SELECT * FROM t"), Lines({}));
}

TEST_F(InsertExecuteTest, ItDoesNotNest) {
  Must(
      "CREATE PROCEDURE outer_p AS CREATE TABLE #r (a INT, b VARCHAR(5)) INSERT #r EXEC p SELECT a, b FROM #r");
  EXPECT_EQ(ErrorText("INSERT t EXEC outer_p"), "8164 1 An INSERT EXEC statement cannot be nested.");
  EXPECT_EQ(ErrorOf("BEGIN TRAN INSERT t EXEC ('ROLLBACK') COMMIT"), 3915);
  EXPECT_EQ(ErrorOf("INSERT missing EXEC p"), 208);
  EXPECT_EQ(ErrorOf("INSERT @missing EXEC p"), 1087);
  EXPECT_EQ(ErrorOf("INSERT t EXEC missing"), 2812);
}

} // namespace
} // namespace tsql::test
