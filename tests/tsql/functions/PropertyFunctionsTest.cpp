// OBJECTPROPERTY, COLUMNPROPERTY, COL_NAME and OBJECT_DEFINITION.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class PropertyFunctionsTest : public EngineTest {
 protected:
  PropertyFunctionsTest() {
    Must(
        "CREATE TABLE t (id INT IDENTITY(1,1) PRIMARY KEY, n NVARCHAR(30) NULL DEFAULT N'x', d DECIMAL(9,2) NOT NULL,"
        " c AS id + 1, m DATETIME NULL, CHECK (d > 0))");
    Must("CREATE TABLE plain (a INT NULL, b TEXT NULL)");
    Must("CREATE VIEW v AS SELECT id FROM t");
    Must("CREATE PROCEDURE p AS SELECT 1");
    Must("CREATE FUNCTION f () RETURNS INT AS BEGIN RETURN 1 END");
    Must("CREATE FUNCTION g () RETURNS TABLE AS RETURN (SELECT 1 AS a)");
    Must("CREATE TRIGGER tr ON t FOR INSERT AS PRINT 'x'");
    Must("CREATE TRIGGER ir ON v INSTEAD OF INSERT AS PRINT 'x'");
  }
  // What each of the objects answers.
  std::string Answers(const std::string& property, const Lines& objects) {
    std::string answers;
    for (const std::string& object : objects) {
      answers += Answer(property, object);
      answers += ' ';
    }
    return answers;
  }
  std::string Answer(const std::string& property, const std::string& object) {
    return Scalar("OBJECTPROPERTY(OBJECT_ID('" + object + "'), '" + property + "')");
  }
};

TEST_F(PropertyFunctionsTest, KindsOfObjects) {
  const Lines objects = {"t", "v", "p", "f", "g", "tr"};
  EXPECT_EQ(Answers("IsTable", objects), "1 0 0 0 0 0 ");
  EXPECT_EQ(Answers("IsUserTable", objects), "1 0 0 0 0 0 ");
  EXPECT_EQ(Answers("IsView", objects), "0 1 0 0 0 0 ");
  EXPECT_EQ(Answers("IsProcedure", objects), "0 0 1 0 0 0 ");
  EXPECT_EQ(Answers("IsScalarFunction", objects), "0 0 0 1 0 0 ");
  EXPECT_EQ(Answers("IsInlineFunction", objects), "0 0 0 0 1 0 ");
  EXPECT_EQ(Answers("IsTableFunction", objects), "0 0 0 0 1 0 ");
  EXPECT_EQ(Answers("IsTrigger", objects), "0 0 0 0 0 1 ");
  EXPECT_EQ(Answers("IsMSShipped", objects), "0 0 0 0 0 0 ");
  EXPECT_EQ(Answers("ExecIsQuotedIdentOn", objects), "0 1 1 1 1 1 ");
}

TEST_F(PropertyFunctionsTest, WhatATableHas) {
  const Lines tables = {"t", "plain", "v"};
  EXPECT_EQ(Answers("TableHasIdentity", tables), "1 0 0 ");
  EXPECT_EQ(Answers("TableHasPrimaryKey", tables), "1 0 0 ");
  EXPECT_EQ(Answers("TableHasUniqueCnst", tables), "0 0 0 ");
  EXPECT_EQ(Answers("TableHasCheckCnst", tables), "1 0 0 ");
  EXPECT_EQ(Answers("TableHasDefaultCnst", tables), "1 0 0 ");
  EXPECT_EQ(Answers("TableHasForeignKey", tables), "0 0 0 ");
  EXPECT_EQ(Answers("TableHasTextImage", tables), "0 1 0 ");
  EXPECT_EQ(Answers("ExecIsInsteadOfTrigger", {"tr", "ir"}), "0 1 ");
  Must("DISABLE TRIGGER tr ON t");
  EXPECT_EQ(Answers("ExecIsTriggerDisabled", {"tr", "ir"}), "1 0 ");
}

TEST_F(PropertyFunctionsTest, WhatIsNotThereIsNull) {
  EXPECT_EQ(Scalar("OBJECTPROPERTY(5, 'IsTable')"), "NULL");
  EXPECT_EQ(Scalar("OBJECTPROPERTY(OBJECT_ID('t'), 'IsNothing')"), "NULL");
  EXPECT_EQ(Scalar("OBJECTPROPERTY(NULL, 'IsTable')"), "NULL");
  EXPECT_EQ(Scalar("COLUMNPROPERTY(OBJECT_ID('t'), 'x', 'AllowsNull')"), "NULL");
  EXPECT_EQ(Scalar("COLUMNPROPERTY(OBJECT_ID('v'), 'id', 'AllowsNull')"), "NULL");
  EXPECT_EQ(Scalar("COL_NAME(OBJECT_ID('t'), 0)"), "NULL");
  EXPECT_EQ(Scalar("COL_NAME(OBJECT_ID('t'), 9)"), "NULL");
  EXPECT_EQ(Scalar("OBJECT_DEFINITION(OBJECT_ID('t'))"), "NULL");
  EXPECT_EQ(ErrorOf("SELECT OBJECTPROPERTY(1)"), 174);
  EXPECT_EQ(ErrorOf("CREATE TABLE x (a INT, b AS OBJECTPROPERTY(a, 'IsTable'))"), 40510);
}

TEST_F(PropertyFunctionsTest, ColumnsAndTexts) {
  const auto of = [&](const std::string& column, const std::string& property) {
    return Scalar("COLUMNPROPERTY(OBJECT_ID('t'), '" + column + "', '" + property + "')");
  };
  EXPECT_EQ(of("id", "IsIdentity") + of("n", "IsIdentity") + of("c", "IsComputed") + of("n", "AllowsNull") +
                of("d", "AllowsNull") + of("d", "ColumnId"),
            "101103");
  EXPECT_EQ(of("id", "Precision") + " " + of("d", "precision") + " " + of("n", "Precision") + " " +
                of("m", "Precision"),
            "10 9 30 23");
  EXPECT_EQ(of("id", "Scale") + " " + of("d", "Scale") + " " + of("n", "Scale") + " " + of("m", "Scale"),
            "0 2 NULL 3");
  EXPECT_EQ(of("n", "CharMaxLen") + " " + of("d", "CharMaxLen"), "30 NULL");
  EXPECT_EQ(Scalar("COL_NAME(OBJECT_ID('t'), 3)"), "d");
  EXPECT_EQ(Scalar("OBJECT_DEFINITION(OBJECT_ID('p'))"), "CREATE PROCEDURE p AS SELECT 1");
}

TEST_F(PropertyFunctionsTest, NamesInTextsHaveBracketsAndPoints) {
  Must("CREATE TABLE [a]]b.c] (x INT)");
  const std::string number = Scalar("OBJECT_ID('[a]]b.c]')");
  EXPECT_NE(number, "NULL");
  EXPECT_EQ(Scalar("OBJECT_ID('dbo.\"a]b.c\"')"), number);
  EXPECT_EQ(Scalar("OBJECT_ID('[a')"), "NULL");
  EXPECT_EQ(Scalar("OBJECT_ID('[t]x')"), "NULL");
  EXPECT_EQ(Scalar("OBJECT_ID('')"), "NULL");
}

// As a tool of the year 2000 wrote it.
TEST_F(PropertyFunctionsTest, ScriptsAskBeforeTheyDrop) {
  Must("if exists (select * from dbo.sysobjects where id = object_id(N'[dbo].[plain]') and "
       "OBJECTPROPERTY(id, N'IsUserTable') = 1) drop table [dbo].[plain]");
  EXPECT_EQ(Scalar("OBJECT_ID('plain')"), "NULL");
}

} // namespace
} // namespace tsql::test
