// What the server refuses because of a type, an argument or a size, by the numbers and texts of its errors.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class TypeRefusalsTest : public EngineTest {};

TEST_F(TypeRefusalsTest, ArgumentsOfTheWrongType) {
  EXPECT_EQ(ErrorText("SELECT SUBSTRING(123, 1, 2)"),
            "8116 1 Argument data type int is invalid for argument 1 of substring function.");
  EXPECT_EQ(ErrorOf("SELECT SUBSTRING(1.5, 1, 2)"), 8116);
  EXPECT_EQ(ErrorOf("SELECT SUBSTRING(GETDATE(), 1, 2)"), 8116);
  EXPECT_EQ(ErrorText("SELECT SUBSTRING(NULL, 1, 2)"),
            "8116 1 Argument data type NULL is invalid for argument 1 of substring function.");
  EXPECT_EQ(ErrorText("SELECT REPLACE(CAST('2020-01-01' AS DATE), '-', '')"),
            "8116 1 Argument data type date is invalid for argument 1 of replace function.");
  EXPECT_EQ(ErrorOf("SELECT REPLACE('a', GETDATE(), '')"), 8116);
  EXPECT_EQ(Scalar("REPLACE(121, 1, 3)"), "323");
}

TEST_F(TypeRefusalsTest, PartsOfDates) {
  EXPECT_EQ(ErrorText("SELECT DATEADD(hour, 1, CAST('2020-01-01' AS DATE))"),
            "9810 1 The datepart hour is not supported by date function dateadd for data type date.");
  EXPECT_EQ(ErrorText("SELECT DATEPART(mi, CAST('2020-01-01' AS DATE))"),
            "9810 1 The datepart minute is not supported by date function datepart for data type date.");
  EXPECT_EQ(ErrorOf("SELECT DATENAME(ms, CAST('2020-01-01' AS DATE))"), 9810);
  EXPECT_EQ(Scalar("DATEADD(day, 1, CAST('1900-01-01' AS DATE))"), "1:0");
  EXPECT_EQ(Scalar("DATEDIFF(hour, CAST('2020-01-01' AS DATE), CAST('2020-01-02' AS DATE))"), "24");
  EXPECT_EQ(ErrorText("SELECT DATEADD(foo, 1, GETDATE())"),
            "155 1 'foo' is not a recognized dateadd option.");
  EXPECT_EQ(ErrorText("SELECT DATEDIFF(foo, 1, GETDATE())"),
            "155 1 'foo' is not a recognized datediff option.");
  EXPECT_EQ(ErrorText("SELECT DATEPART('year', GETDATE())"),
            "1023 1 Invalid parameter 1 specified for datepart.");
}

TEST_F(TypeRefusalsTest, NullsWithoutAType) {
  EXPECT_EQ(
      ErrorText("SELECT NULLIF(NULL, 2)"),
      "4151 1 The type of the first argument to NULLIF cannot be the NULL constant because the type of the "
      "first argument has to be known.");
  EXPECT_EQ(Scalar("NULLIF(2, NULL)"), "2");
  EXPECT_EQ(
      ErrorText("SELECT COALESCE(NULL, NULL)"),
      "4127 1 At least one of the arguments to COALESCE must be an expression that is not the NULL constant.");
  EXPECT_EQ(Scalar("COALESCE(NULL, CAST(NULL AS INT))"), "NULL");
  EXPECT_EQ(ErrorOf("SELECT CASE WHEN 1 = 1 THEN NULL ELSE NULL END"), 8133);
}

TEST_F(TypeRefusalsTest, EscapesOfLike) {
  EXPECT_EQ(ErrorText("SELECT 1 WHERE 'a' LIKE 'a' ESCAPE ''"),
            "506 1 The invalid escape character \"\" was specified in a LIKE predicate.");
  EXPECT_EQ(ErrorText("SELECT 1 WHERE 'a' LIKE 'a' ESCAPE 'xy'"),
            "506 1 The invalid escape character \"xy\" was specified in a LIKE predicate.");
}

// The sum is of the type of the average.
TEST_F(TypeRefusalsTest, AveragesOverflowWithTheirSums) {
  Must(
      "CREATE TABLE t (i INT, b BIGINT, s SMALLINT) INSERT INTO t VALUES (2147483647, 9223372036854775807, 32767), "
      "(2147483647, 9223372036854775807, 32767)");
  EXPECT_EQ(ErrorText("SELECT AVG(i) FROM t"),
            "8115 1 Arithmetic overflow error converting expression to data type int.");
  EXPECT_EQ(ErrorOf("SELECT AVG(b) FROM t"), 8115);
  EXPECT_EQ(Scalar("AVG(s) FROM t"), "32767");
  EXPECT_EQ(Scalar("AVG(CAST(i AS BIGINT)) FROM t"), "2147483647");
  EXPECT_EQ(Scalar("AVG(i) FROM t WHERE i < 0"), "NULL");
}

TEST_F(TypeRefusalsTest, ColumnsOfTables) {
  EXPECT_EQ(
      ErrorText("CREATE TABLE t (a INT IDENTITY DEFAULT 5)"),
      "1754 1 Defaults cannot be created on columns with an IDENTITY attribute. Table 't', column 'a'.");
  Must("CREATE TABLE named (a SYSNAME, b SYSNAME NULL) INSERT INTO named VALUES ('x', NULL)");
  EXPECT_EQ(ErrorOf("INSERT INTO named VALUES (NULL, 'x')"), 515);
  EXPECT_EQ(Scalar("COL_LENGTH('named', 'a')"), "256");
}

TEST_F(TypeRefusalsTest, SizesOfTypes) {
  for (const char* type : {"TEXT", "NTEXT", "IMAGE"})
    EXPECT_EQ(ErrorText("DECLARE @v " + std::string(type)),
              "2739 1 The text, ntext, and image data types are invalid for local variables.");
  EXPECT_EQ(
      ErrorText("SELECT CAST('a' AS VARCHAR(8001))"),
      "131 1 The size (8001) given to the type 'varchar' exceeds the maximum allowed for any data type (8000).");
  EXPECT_EQ(ErrorOf("DECLARE @v VARBINARY(8001)"), 131);
  EXPECT_EQ(ErrorOf("DECLARE @v NVARCHAR(8001)"), 131);
  EXPECT_EQ(ErrorText("DECLARE @v NVARCHAR(4001)"),
            "2717 1 The size (4001) given to the type 'nvarchar' exceeds the maximum allowed (4000).");
  EXPECT_EQ(ErrorOf("CREATE TABLE t (a NCHAR(4001))"), 2717);
  EXPECT_EQ(ErrorText("DECLARE @v VARCHAR(0)"),
            "1001 1 Line 1: Length or precision specification 0 is invalid.");
  EXPECT_EQ(ErrorText("DECLARE @f FLOAT(54)"),
            "1001 1 Line 1: Length or precision specification 54 is invalid.");
  EXPECT_EQ(ErrorOf("SELECT CAST(1 AS FLOAT(0))"), 1001);
  EXPECT_EQ(
      ErrorText("DECLARE @d DECIMAL(39,1)"),
      "2750 1 Column, parameter, or variable #1: Specified column precision 39 is greater than the maximum "
      "precision of 38.");
  EXPECT_EQ(
      ErrorText("CREATE TABLE t (a NUMERIC(5,6))"),
      "2751 1 Column, parameter, or variable #1: Specified column scale 6 is greater than the specified "
      "precision of 5.");
  EXPECT_EQ(ErrorOf("SELECT CAST(1 AS DECIMAL(39,40))"), 2750);
  for (const char* type : {"CHAR", "NCHAR", "BINARY"})
    EXPECT_EQ(ErrorText("DECLARE @v " + std::string(type) + "(MAX)"), "102 1 Incorrect syntax near 'max'.");
  Must("DECLARE @v VARCHAR(8000), @n NVARCHAR(4000), @m NVARCHAR(MAX), @b VARBINARY(MAX)");
}

} // namespace
} // namespace tsql::test
