// Functions beyond those that the component itself calls.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class FunctionsTest : public EngineTest {};

TEST_F(FunctionsTest, Texts) {
  EXPECT_EQ(Scalar("PATINDEX('%b[0-9]%', 'aab1b2')"), "3");
  EXPECT_EQ(Scalar("PATINDEX('A%', 'abc')"), "1");
  EXPECT_EQ(Scalar("PATINDEX('%c', N'轮abc')"), "4");
  EXPECT_EQ(Scalar("PATINDEX('b', 'abc')"), "0");
  EXPECT_EQ(Scalar("PATINDEX('%x%', '')"), "0");
  EXPECT_EQ(Scalar("PATINDEX('%x%', NULL)"), "NULL");
  EXPECT_EQ(Scalar("STUFF('abcdef', 2, 3, 'XY')"), "aXYef");
  EXPECT_EQ(Scalar("STUFF('abc', 4, 1, 'X')"), "NULL");
  EXPECT_EQ(Scalar("REVERSE(N'轮ab')"), "ba轮");
  EXPECT_EQ(Scalar("'[' + SPACE(3) + ']'"), "[   ]");
  EXPECT_EQ(Scalar("ASCII('A') + ASCII('a')"), "162");
  EXPECT_EQ(Scalar("UNICODE(N'中') - UNICODE(NCHAR(20013))"), "0");
  EXPECT_EQ(Scalar("CHAR(66) + CHAR(67)"), "BC");
  EXPECT_EQ(Scalar("QUOTENAME('a]b')"), "[a]]b]");
  EXPECT_EQ(Scalar("QUOTENAME('it''s', '''')"), "'it''s'");
  EXPECT_EQ(Scalar("ISNUMERIC('1e5') + ISNUMERIC('x')"), "1");
  EXPECT_EQ(Scalar("ISDATE('2024-02-29') + ISDATE('2023-02-29')"), "1");
  EXPECT_EQ(Scalar("DATENAME(month, '2020-03-01')"), "March");
}

TEST_F(FunctionsTest, PartsOfAnEmptyTextAreEmpty) {
  EXPECT_EQ(
      Rows("DECLARE @e VARCHAR(5), @n INT SELECT @e = '', @n = 2 SELECT '[' + LEFT(@e, @n) + RIGHT(@e, @n) + "
           "SUBSTRING(@e, @n, 1) + ']'"),
      Lines({"[]"}));
}

TEST_F(FunctionsTest, Numbers) {
  EXPECT_EQ(Scalar("SIGN(-2.5)"), "-1.0");
  EXPECT_EQ(Scalar("POWER(2, 10)"), "1024");
  EXPECT_EQ(Scalar("SQRT(9) + SQUARE(3) + LOG10(100)"), "14");
  EXPECT_EQ(Scalar("ROUND(PI(), 4)"), "3.1416");
  EXPECT_EQ(ErrorOf("SELECT SQRT(-1)"), 3623);
}

TEST_F(FunctionsTest, FloatsDoNotOverflowInSilence) {
  EXPECT_EQ(ErrorText("SELECT 1e308 + 1e308"),
            "8115 1 Arithmetic overflow error converting expression to data type float.");
  EXPECT_EQ(ErrorOf("DECLARE @x FLOAT SET @x = -1e308 SELECT @x - 1e308"), 8115);
  EXPECT_EQ(ErrorOf("SELECT (1e300 * 1e8) * (1e0 + 1)"), 8115);
  EXPECT_EQ(ErrorOf("SELECT SUM(x) FROM (SELECT 1e308 AS x UNION ALL SELECT 1e308) t"), 8115);
  EXPECT_EQ(Scalar("1.7e308 + CAST(NULL AS FLOAT)"), "NULL");
  EXPECT_EQ(Scalar("0.85e308 + 0.85e308"), "1.7e+308");
}

TEST_F(FunctionsTest, Sizes) {
  EXPECT_EQ(Scalar("DATALENGTH(CAST(1.5 AS DECIMAL(28,10)))"), "13");
  EXPECT_EQ(Scalar("DATALENGTH(CAST(1.5 AS DECIMAL(9,2)))"), "5");
  EXPECT_EQ(Scalar("DATALENGTH(1e0)"), "8");
  EXPECT_EQ(Scalar("DATALENGTH(GETDATE())"), "8");
  EXPECT_EQ(Scalar("DATALENGTH(1)"), "4");
  EXPECT_EQ(Scalar("DATALENGTH(CAST('2020-01-01' AS SMALLDATETIME))"), "4");
  EXPECT_EQ(Scalar("DATALENGTH(N'ab ')"), "6");
}

TEST_F(FunctionsTest, Names) {
  Must("CREATE TABLE Named (a INT)");
  EXPECT_EQ(Scalar("OBJECT_NAME(OBJECT_ID('dbo.named'))"), "Named");
  EXPECT_EQ(Scalar("OBJECT_NAME(0)"), "NULL");
  EXPECT_EQ(Scalar("USER_NAME() + ' ' + SUSER_SNAME() + ' ' + HOST_NAME()"), "dbo sa localhost");
  EXPECT_EQ(ErrorText("SELECT USER_NAME(1)"),
            "40510 1 A function of the server that gives a name, with an argument is not supported.");
}

TEST_F(FunctionsTest, SystemViews) {
  Must("CREATE TABLE Named (a INT NOT NULL IDENTITY, b NVARCHAR(30) NULL DEFAULT 'x', c DECIMAL(9,2) NULL)");
  Must("CREATE PROCEDURE DoIt AS SELECT 1");
  Must("CREATE VIEW Seen AS SELECT a FROM Named");
  EXPECT_EQ(Rows("SELECT name, xtype FROM sysobjects WHERE id = OBJECT_ID('named') OR xtype IN ('P', 'V') "
                 "ORDER BY name"),
            Lines({"DoIt|P ", "Named|U ", "Seen|V "}));
  Must("IF EXISTS (SELECT * FROM dbo.sysobjects WHERE name = 'DOIT' AND type = 'P') DROP PROCEDURE DoIt");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM sys.objects WHERE type_desc = 'SQL_STORED_PROCEDURE'"), Lines({"0"}));
  EXPECT_EQ(Rows("SELECT o.name, c.name, c.colid, c.length, c.isnullable FROM sysobjects o INNER JOIN "
                 "syscolumns c ON "
                 "o.id = c.id WHERE c.colid > 1 ORDER BY c.colid"),
            Lines({"Named|b|2|60|1", "Named|c|3|5|1"}));
  EXPECT_EQ(Rows("SELECT TABLE_NAME, TABLE_TYPE FROM INFORMATION_SCHEMA.TABLES ORDER BY 1"),
            Lines({"Named|BASE TABLE", "Seen|VIEW"}));
  EXPECT_EQ(Rows("SELECT COLUMN_NAME, DATA_TYPE, IS_NULLABLE, CHARACTER_MAXIMUM_LENGTH, COLUMN_DEFAULT FROM "
                 "information_schema.columns WHERE table_name = 'named' ORDER BY ordinal_position"),
            Lines({"a|int|NO|NULL|NULL", "b|nvarchar|YES|30|'x'", "c|numeric|YES|NULL|NULL"}));
  EXPECT_EQ(ErrorOf("SELECT * FROM TABLES"), 208);
  EXPECT_EQ(ErrorOf("DELETE FROM sysobjects"), 208);
}

TEST_F(FunctionsTest, IsNumericKnowsAmounts) {
  for (const char* text :
       {"1,000", "$1.5", "+", "-", "$", ".", "-$1", "$-1", " 12 ", "1e5", "1.", "\uffe512"})
    EXPECT_EQ(Scalar("ISNUMERIC(N'" + std::string(text) + "')"), "1") << text;
  for (const char* text : {"", " ", "a", "e", "1.2.3", "inf", "nan", "--1", "1 2", "$1e5"})
    EXPECT_EQ(Scalar("ISNUMERIC(N'" + std::string(text) + "')"), "0") << text;
  EXPECT_EQ(Scalar("ISNUMERIC(CAST(1.5 AS MONEY))"), "1");
}

TEST_F(FunctionsTest, DatesWithNamesOfMonthsBetweenSeparators) {
  // 2021-08-01 is day 44407.
  for (const char* text : {"01-Aug-2021", "Aug-01-2021", "2021/Aug/01", "2021 - 08 - 01", "8 / 1 / 2021",
                           "1 Aug 2021", "August 1, 2021"}) {
    EXPECT_EQ(Scalar("CAST('" + std::string(text) + "' AS DATETIME)"), "44407:0") << text;
    EXPECT_EQ(Scalar("ISDATE('" + std::string(text) + "')"), "1") << text;
  }
  EXPECT_EQ(Scalar("CAST('2021-08-01T00:00:00Z' AS DATETIME)"), "44407:0");
  EXPECT_EQ(Scalar("ISDATE('2021-08-01 00:00:00.1234567')"), "0");
  EXPECT_EQ(ErrorOf("SELECT CAST('2021-08-01 00:00:00.1234567' AS DATETIME)"), 241);
  EXPECT_EQ(Scalar("CAST('2021-08-01 00:00:00.1234567' AS DATE)"), "44407:0");
  for (const char* text : {"01-Aux-2021", "Aug-Aug-2021", "2021-08", "2021-08/01"})
    EXPECT_EQ(Scalar("ISDATE('" + std::string(text) + "')"), "0") << text;
}

} // namespace
} // namespace tsql::test
