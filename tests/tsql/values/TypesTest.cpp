// Types: arithmetic, conversions, texts under the collation, NULL, functions.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class TypesTest : public EngineTest {
 protected:
  Type TypeOf(std::string_view expression) {
    const Output output = Run("SELECT " + std::string(expression));
    return output.columns.empty() ? Type{} : output.columns[0][0].type;
  }
};

Type DecimalType(uint8_t precision, uint8_t scale) {
  return Type{TypeId::Decimal, 0, precision, scale};
}

TEST_F(TypesTest, IntegerArithmetic) {
  EXPECT_EQ(Scalar("7 / 2"), "3");
  EXPECT_EQ(Scalar("-7 / 2"), "-3");
  EXPECT_EQ(Scalar("-7 % 3"), "-1");
  EXPECT_EQ(Scalar("2 + 3 * 4 - 1"), "13");
  EXPECT_EQ(Scalar("6 & 3"), "2");
  EXPECT_EQ(Scalar("6 | 3"), "7");
  EXPECT_EQ(Scalar("6 ^ 3"), "5");
  EXPECT_EQ(Scalar("~5"), "-6");
  EXPECT_EQ(ErrorText("SELECT 2147483647 + 1"),
            "8115 1 Arithmetic overflow error converting expression to data type int.");
  EXPECT_EQ(ErrorText("DECLARE @z INT SET @z = 0 SELECT 1 / @z"), "8134 1 Divide by zero error encountered.");
  EXPECT_EQ(Scalar("CAST(2147483647 AS BIGINT) + 1"), "2147483648");
  EXPECT_EQ(ErrorOf("DECLARE @b BIGINT SET @b = 9223372036854775807 SELECT @b + 1"), 8115);
  EXPECT_EQ(TypeOf("CAST(1 AS TINYINT) + CAST(1 AS SMALLINT)").id, TypeId::SmallInt);
  EXPECT_EQ(Scalar("-2147483648"), "-2147483648");
}

// A single value is checked where it is read.
TEST_F(TypesTest, OverflowOfASingleValue) {
  const std::string head = "DECLARE @m INT = 2147483647, @i INT = 5, @b BIGINT = 5 ";
  for (const char* statement :
       {"SET @i = @m + 1", "SET @i = -2 - @m", "SET @i = @m * @m", "SET @i += @m", "SET @b = @m + 1",
        "DECLARE @d INT = @m + 1", "PRINT @m + 1", "EXEC('SELECT 1 WHERE 1 = 2147483647 + 1')"}) {
    SCOPED_TRACE(statement);
    const Output output = Run(head + statement + " SELECT @i, @b");
    ASSERT_EQ(output.errors.size(), 1U);
    EXPECT_EQ(output.errors[0].number, 8115);
    EXPECT_EQ(output.results.back(), Lines({"5|5"})) << "the variables keep their values";
  }
  EXPECT_EQ(ErrorOf("CREATE PROCEDURE next @n INT AS RETURN @n + 1"), 0);
  EXPECT_EQ(ErrorOf("EXEC next 2147483647"), 8115);
  EXPECT_EQ(
      Rows("DECLARE @m INT = 2147483646, @n INT, @z INT = 7 SET @m = @m + 1 SET @z = @n + 1 SELECT @m, @z"),
      Lines({"2147483647|NULL"}));
}

TEST_F(TypesTest, ALiteralHasAsManyDigitsAsItIsWrittenWith) {
  EXPECT_EQ(TypeOf("0.0"), DecimalType(1, 1));
  EXPECT_EQ(TypeOf("9."), DecimalType(1, 0));
  EXPECT_EQ(TypeOf("10."), DecimalType(2, 0));
  EXPECT_EQ(TypeOf("0.012"), DecimalType(3, 3));
  EXPECT_EQ(TypeOf("2147483648"), DecimalType(10, 0));
  // The last number of 64 bits and the first beyond them.
  EXPECT_EQ(TypeOf("18446744073709551615"), DecimalType(20, 0));
  EXPECT_EQ(TypeOf("18446744073709551616"), DecimalType(20, 0));
  EXPECT_EQ(TypeOf("99999999999999999999999999999999999999"), DecimalType(38, 0));
}

TEST_F(TypesTest, DecimalArithmetic) {
  EXPECT_EQ(Scalar("1.5 + 2.25"), "3.75");
  EXPECT_EQ(TypeOf("1.5 + 2.25"), DecimalType(4, 2));
  EXPECT_EQ(Scalar("1.5 * 1.5"), "2.25");
  EXPECT_EQ(TypeOf("1.5 * 1.5"), DecimalType(5, 2));
  // (2,1) / (1,0): scale max(6, 1 + 1 + 1) = 6, precision 2 - 1 + 0 + 6 = 7; the rest is cut off.
  EXPECT_EQ(Scalar("2.0 / 3"), "0.666666");
  EXPECT_EQ(TypeOf("2.0 / 3"), DecimalType(7, 6));
  EXPECT_EQ(Scalar("5.5 % 2"), "1.5");
  EXPECT_EQ(Scalar("-1.25"), "-1.25");
  EXPECT_EQ(Scalar("CAST(1.005 AS DECIMAL(10,2))"), "1.01");
  EXPECT_EQ(Scalar("CAST(-1.005 AS DECIMAL(10,2))"), "-1.01");
  EXPECT_EQ(ErrorText("SELECT CAST(1000 AS DECIMAL(3,0))"),
            "8115 1 Arithmetic overflow error converting expression to data type numeric.");
  EXPECT_EQ(ErrorOf("SELECT 1.0 / 0"), 8134);
  // (28,10) * (28,10) is (57,20), cut to 38 digits: 20 - (57 - 38) = 1, but six places stay.
  EXPECT_EQ(TypeOf("CAST(1 AS DECIMAL(28,10)) * CAST(1 AS DECIMAL(28,10))"), DecimalType(38, 6));
  EXPECT_EQ(Scalar("CAST(2.5 AS DECIMAL(28,10)) * CAST(4 AS DECIMAL(28,10))"), "10.000000");
  EXPECT_EQ(
      Scalar("CONVERT(VARCHAR(50), CAST('12345678901234567890123456789.12345' AS DECIMAL(38,5)) + 0.00001)"),
      "12345678901234567890123456789.12346");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(50), CAST('-99999999999999999999' AS DECIMAL(38,0)) * 2)"),
            "-199999999999999999998");
}

TEST_F(TypesTest, TheLastIntBeforeTheRangeEnds) {
  Must("CREATE TABLE e (n INT NULL) INSERT INTO e VALUES (2147483640), (-2147483640), (NULL)");
  EXPECT_EQ(Rows("SELECT n + 7 FROM e"), Lines({"2147483647", "-2147483633", "NULL"}));
  EXPECT_EQ(Rows("SELECT n - 8 FROM e"), Lines({"2147483632", "-2147483648", "NULL"}));
  EXPECT_EQ(Rows("SELECT n + 0, n - 0 FROM e WHERE n > 0"), Lines({"2147483640|2147483640"}));
  EXPECT_EQ(Rows("SELECT n + 2147483647 FROM e WHERE n < 0"), Lines({"7"}));
  EXPECT_EQ(ErrorOf("SELECT n + 8 FROM e"), 8115);
  EXPECT_EQ(ErrorOf("SELECT n - 9 FROM e"), 8115);
  EXPECT_EQ(ErrorOf("SELECT n - 2147483647 FROM e WHERE n < 0"), 8115);
}

TEST_F(TypesTest, NullWithinDecimalArithmetic) {
  const std::string head =
      "DECLARE @n DECIMAL(18,4), @d DECIMAL(38,0) = '99999999999999999999999999999999999999' ";
  EXPECT_EQ(Rows(head + "SELECT 2.5 * 2 * @n, @n * 2.5 * 2, 1.0 / @n"), Lines({"NULL|NULL|NULL"}));
  // Null in front of an overflow and behind it, as each operation on null is null.
  EXPECT_EQ(Rows(head + "SELECT @n * @d * @d"), Lines({"NULL"}));
  EXPECT_EQ(Rows(head + "SELECT @d * (@d * @n)"), Lines({"NULL"}));
}

TEST_F(TypesTest, WideDecimalsCompareAndSort) {
  Must("CREATE TABLE t (a DECIMAL(28,10) NULL) INSERT INTO t VALUES (10), (-2), (0), (9.5), (-10.25)");
  EXPECT_EQ(Rows("SELECT a FROM t ORDER BY a"),
            Lines({"-10.2500000000", "-2.0000000000", "0.0000000000", "9.5000000000", "10.0000000000"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t WHERE a > -2 AND a <= 10"), Lines({"3"}));
  EXPECT_EQ(Rows("SELECT SUM(a), MIN(a), AVG(a) FROM t"),
            Lines({"7.2500000000|-10.2500000000|1.4500000000"}));
  EXPECT_EQ(Rows("SELECT a FROM t WHERE a = 9.5"), Lines({"9.5000000000"}));
}

TEST_F(TypesTest, FloatArithmeticAndText) {
  EXPECT_EQ(Scalar("1e0 / 4"), "0.25");
  EXPECT_EQ(TypeOf("1.5 + 1e0").id, TypeId::Float);
  EXPECT_EQ(ErrorOf("SELECT 1e0 / 0"), 8134);
  EXPECT_EQ(Scalar("CAST(CAST(0.1 AS FLOAT) AS VARCHAR(30))"), "0.1");
  EXPECT_EQ(Scalar("CAST(1e10 AS VARCHAR(30))"), "1e+010");
  EXPECT_EQ(Scalar("CAST(123456789e0 AS VARCHAR(30))"), "1.23457e+008");
  EXPECT_EQ(Scalar("CAST(2.9e0 AS INT)"), "2");
  EXPECT_EQ(Scalar("CAST(2.345e0 AS DECIMAL(10,2))"), "2.35");
  EXPECT_EQ(Scalar("CASE WHEN CAST(0.1 AS FLOAT) = 0.1 THEN 1 ELSE 0 END"), "1");
}

TEST_F(TypesTest, Money) {
  EXPECT_EQ(Scalar("CAST('1,234.5678' AS MONEY)"), "1234.5678");
  EXPECT_EQ(Scalar("CAST(CAST(1234.567 AS MONEY) AS VARCHAR(20))"), "1234.57");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), CAST(1234567.8 AS MONEY), 1)"), "1,234,567.80");
  EXPECT_EQ(Scalar("CAST(1.5 AS MONEY) + 1"), "2.5000");
  EXPECT_EQ(TypeOf("CAST(1.5 AS MONEY) * 2").id, TypeId::Money);
}

TEST_F(TypesTest, BitTakesAnyNumber) {
  EXPECT_EQ(Scalar("CAST(-5 AS BIT)"), "1");
  EXPECT_EQ(Scalar("CAST('true' AS BIT)"), "1");
  EXPECT_EQ(Scalar("CASE WHEN CAST(0 AS BIT) = 0 THEN 'zero' ELSE 'one' END"), "zero");
}

TEST_F(TypesTest, TextsCompareWithoutCaseAndTrailingBlanks) {
  EXPECT_EQ(Scalar("CASE WHEN 'abc' = 'ABC  ' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN ' abc' = 'abc' THEN 1 ELSE 0 END"), "0");
  EXPECT_EQ(Scalar("CASE WHEN N'ÄÖ' = N'äö' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN N'ΑΒΓ' = N'αβγ' AND N'ЖЯ' = N'жя' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN '物料' = '物料 ' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN 'b' > 'A' AND 'B' > 'a' THEN 1 ELSE 0 END"), "1");
  Must("CREATE TABLE t (a VARCHAR(10)) INSERT INTO t VALUES ('x'), ('X '), ('y')");
  EXPECT_EQ(Scalar("COUNT(DISTINCT a) FROM t"), "2");
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM t GROUP BY a ORDER BY a"), Lines({"2", "1"}));
  EXPECT_EQ(Scalar("COUNT(*) FROM t WHERE UPPER(a) = 'x'"), "2");
  EXPECT_EQ(Scalar("COUNT(*) FROM t WHERE a IN ('X', 'z')"), "2");
  EXPECT_EQ(Scalar("CASE 'A' WHEN 'a' THEN 1 ELSE 0 END"), "1");
}

TEST_F(TypesTest, Like) {
  EXPECT_EQ(Scalar("CASE WHEN 'Widget' LIKE '%DGE%' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN 'abc' LIKE 'a_c' AND 'abc' NOT LIKE 'a_' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN 'b7' LIKE '[a-c][0-9]' AND 'b7' NOT LIKE '[^a-c]7' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(
      Scalar("CASE WHEN '50%' LIKE '50!%' ESCAPE '!' AND '500' NOT LIKE '50!%' ESCAPE '!' THEN 1 ELSE 0 END"),
      "1");
  EXPECT_EQ(Scalar("CASE WHEN 'abc' LIKE 'abc ' THEN 1 ELSE 0 END"), "0");
  EXPECT_EQ(Scalar("CASE WHEN '料号01' LIKE '%号_1' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN 12 LIKE '1%' THEN 1 ELSE 0 END"), "1");
}

TEST_F(TypesTest, TextLengths) {
  EXPECT_EQ(Scalar("CAST('abcdef' AS VARCHAR(3))"), "abc");
  EXPECT_EQ(Scalar("CAST('ab' AS CHAR(4)) + '|'"), "ab  |");
  EXPECT_EQ(Scalar("DATALENGTH(CAST('x' AS CHAR))"), "30");
  EXPECT_EQ(Scalar("LEN(CONVERT(VARCHAR, REPLICATE('x', 40)))"), "30");
  EXPECT_EQ(Rows("DECLARE @v VARCHAR SET @v = 'abc' SELECT @v"), Lines({"a"}));
  EXPECT_EQ(TypeOf("'ab' + 'cde'"), (Type{TypeId::VarChar, 5, 0, 0}));
  EXPECT_EQ(TypeOf("'ab' + N'c'"), (Type{TypeId::NVarChar, 3, 0, 0}));
  Must("CREATE TABLE t (a VARCHAR(2), c CHAR(3))");
  Must("INSERT INTO t VALUES ('物', 'x'), ('ab ', 'y')");
  EXPECT_EQ(Rows("SELECT a, c + '|' FROM t"), Lines({"物|x  |", "ab|y  |"}));
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES ('abc')"), 8152);
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) SELECT 'ab' + 'c'"), 8152);
  EXPECT_EQ(Scalar("CAST(12345 AS VARCHAR(3))"), "*");
}

TEST_F(TypesTest, NullRules) {
  EXPECT_EQ(Scalar("'a' + NULL"), "NULL");
  EXPECT_EQ(Scalar("1 + NULL"), "NULL");
  EXPECT_EQ(Scalar("CASE WHEN NULL <> 1 THEN 1 WHEN NOT (NULL = 1) THEN 2 ELSE 3 END"), "3");
  EXPECT_EQ(Scalar("ISNULL(NULL, 'x')"), "x");
  EXPECT_EQ(Scalar("ISNULL(CAST(NULL AS VARCHAR(2)), 'xyz')"), "xy");
  EXPECT_EQ(Scalar("COALESCE(NULL, NULL, 3)"), "3");
  EXPECT_EQ(Scalar("NULLIF(5, 5)"), "NULL");
  EXPECT_EQ(Scalar("NULLIF('A', 'a')"), "NULL");
  EXPECT_EQ(Scalar("NULLIF(5, 5.5)"), "5");
  Must("CREATE TABLE t (a INT NULL CONSTRAINT uq UNIQUE, b INT NULL) CREATE UNIQUE INDEX ux ON t (b, a)");
  Must("INSERT INTO t VALUES (NULL, 1), (1, NULL)");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (NULL, 2)"),
            "2627 1 Violation of UNIQUE KEY constraint 'uq'. Cannot insert duplicate key in object 'dbo.t'.");
  Must("ALTER TABLE t ADD c INT NULL CREATE UNIQUE INDEX uc ON t (c, b)");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (2, 1, NULL)"),
            "2601 1 Cannot insert duplicate key row in object 'dbo.t' with unique index 'uc'.");
}

TEST_F(TypesTest, Conversions) {
  EXPECT_EQ(Scalar("CAST(' 12 ' AS INT)"), "12");
  EXPECT_EQ(Scalar("CAST('' AS INT)"), "0");
  EXPECT_EQ(Scalar("CASE WHEN 5 = '5' THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(ErrorText("SELECT 1 WHERE 5 = '5x'"),
            "245 1 Conversion failed when converting the varchar value '5x' to data type int.");
  EXPECT_EQ(ErrorText("SELECT CAST('99999999999' AS INT)"),
            "248 1 The conversion of the varchar value '99999999999' overflowed an int column.");
  EXPECT_EQ(ErrorText("SELECT CAST('x' AS DECIMAL(5,2))"),
            "8114 1 Error converting data type varchar to numeric.");
  EXPECT_EQ(ErrorText("SELECT CAST('x' AS FLOAT)"), "8114 1 Error converting data type varchar to float.");
  EXPECT_EQ(Scalar("'3' + 4"), "7");
  EXPECT_EQ(ErrorOf("SELECT 'a' + 4"), 245);
  EXPECT_EQ(ErrorText("DECLARE @d DATETIME DECLARE @i INT SET @i = @d"),
            "257 1 Implicit conversion from data type datetime to int is not allowed. Use the CONVERT "
            "function to run "
            "this query.");
  EXPECT_EQ(ErrorText("SELECT CAST(300 AS TINYINT)"),
            "220 1 Arithmetic overflow error for data type tinyint, value = 300.");
  EXPECT_EQ(Scalar("CAST(CAST('6f9619ff-8b86-d011-b42d-00c04fc964ff' AS UNIQUEIDENTIFIER) AS CHAR(36))"),
            "6F9619FF-8B86-D011-B42D-00C04FC964FF");
  EXPECT_EQ(ErrorOf("SELECT CAST('x' AS UNIQUEIDENTIFIER)"), 8169);
  EXPECT_EQ(Scalar("LEN(NEWID())"), "36");
}

TEST_F(TypesTest, DateTexts) {
  EXPECT_EQ(Scalar("CAST('' AS DATETIME)"), "0:0");
  EXPECT_EQ(Scalar("CAST('1900-01-02 00:00:01' AS DATETIME)"), "1:300");
  EXPECT_EQ(Scalar("CAST('19000103' AS DATETIME)"), "2:0");
  EXPECT_EQ(Scalar("CAST('1/4/1900 1:00 PM' AS DATETIME)"), "3:14040000");
  EXPECT_EQ(Scalar("CAST('Jan 5 1900' AS DATETIME)"), "4:0");
  EXPECT_EQ(Scalar("CAST('2006/05/04 10:11:12' AS DATETIME)"), "38839:11001600");
  EXPECT_EQ(ErrorText("SELECT CAST('nonsense' AS DATETIME)"),
            "241 1 Conversion failed when converting date and/or time from character string.");
  EXPECT_EQ(ErrorText("SELECT CAST('2001-02-29' AS DATETIME)"),
            "242 1 The conversion of a varchar data type to a datetime data type resulted in an out-of-range "
            "value.");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(10), CAST('2006-05-04 13:14:15.678' AS DATETIME), 120)"), "2006-05-04");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), CAST('2006-05-04 13:14:15.678' AS DATETIME), 121)"),
            "2006-05-04 13:14:15.677");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), CAST('2006-05-04 13:14:15' AS DATETIME), 101)"), "05/04/2006");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), CAST('2006-05-04' AS DATETIME), 112)"), "20060504");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), CAST('2006-05-04' AS DATETIME), 111)"), "2006/05/04");
  EXPECT_EQ(Scalar("CAST(CAST('2006-05-04 13:14:15' AS DATETIME) AS VARCHAR(30))"), "May  4 2006  1:14PM");
}

TEST_F(TypesTest, DateFunctions) {
  EXPECT_EQ(Scalar("CONVERT(CHAR(10), DATEADD(month, 1, '2004-01-31'), 120)"), "2004-02-29");
  EXPECT_EQ(Scalar("CONVERT(CHAR(10), DATEADD(dd, -1, '2004-03-01'), 120)"), "2004-02-29");
  EXPECT_EQ(Scalar("DATEDIFF(day, '2004-02-28 23:59', '2004-03-01')"), "2");
  EXPECT_EQ(Scalar("DATEDIFF(year, '2004-12-31', '2005-01-01')"), "1");
  EXPECT_EQ(Scalar("DATEPART(weekday, '2000-01-01')"), "7");
  EXPECT_EQ(Scalar("YEAR('2006-05-04') * 10000 + MONTH('2006-05-04') * 100 + DAY('2006-05-04')"), "20060504");
  EXPECT_EQ(Scalar("CAST('1900-01-05' AS DATETIME) + 1"), "5:0");
  EXPECT_EQ(Scalar("DATENAME(month, '2006-05-04')"), "May");
  EXPECT_EQ(ErrorOf("SELECT DATEADD(year, 9000, '2006-05-04')"), 517);
}

TEST_F(TypesTest, TextFunctions) {
  EXPECT_EQ(Scalar("LEN('ab  ')"), "2");
  EXPECT_EQ(Scalar("'[' + LTRIM('  a ') + RTRIM(' b  ') + ']'"), "[a  b]");
  EXPECT_EQ(Scalar("LEFT('物料编码', 2) + RIGHT('abc', 2)"), "物料bc");
  EXPECT_EQ(Scalar("SUBSTRING('abcdef', 2, 3)"), "bcd");
  EXPECT_EQ(Scalar("SUBSTRING('abcdef', 0, 3)"), "ab");
  EXPECT_EQ(ErrorOf("DECLARE @n INT SET @n = -1 SELECT SUBSTRING('abc', 1, @n)"), 537);
  EXPECT_EQ(Scalar("UPPER(N'aé') + LOWER(N'BÀ')"), "AÉbà");
  EXPECT_EQ(Scalar("REPLACE('aXbxc', 'x', '-')"), "a-b-c");
  EXPECT_EQ(Scalar("CHARINDEX('C', 'abcabc')"), "3");
  EXPECT_EQ(Scalar("CHARINDEX('c', 'abcabc', 4)"), "6");
  EXPECT_EQ(Scalar("CHARINDEX('z', 'abc')"), "0");
  EXPECT_EQ(Scalar("REPLICATE('ab', 3) + '|' + SPACE(2) + '|'"), "ababab|  |");
  EXPECT_EQ(Scalar("STR(123.456, 8, 2)"), "  123.46");
  EXPECT_EQ(Scalar("STR(1234, 3)"), "***");
  EXPECT_EQ(Scalar("STUFF('abcdef', 2, 3, 'XY')"), "aXYef");
}

TEST_F(TypesTest, NumberFunctions) {
  EXPECT_EQ(Scalar("ABS(-5)"), "5");
  EXPECT_EQ(Scalar("ROUND(123.456, 2)"), "123.460");
  EXPECT_EQ(Scalar("ROUND(155, -1)"), "160");
  EXPECT_EQ(Scalar("ROUND(123.987, 1, 1)"), "123.900");
  EXPECT_EQ(Scalar("ROUND(2.5e0, 0)"), "3");
  EXPECT_EQ(Scalar("FLOOR(-1.5)"), "-2");
  EXPECT_EQ(Scalar("CEILING(1.2)"), "2");
  EXPECT_EQ(Scalar("SIGN(-3)"), "-1");
  EXPECT_EQ(Scalar("ISNUMERIC('12.5') + ISNUMERIC('x')"), "1");
}

TEST_F(TypesTest, Aggregates) {
  Must("CREATE TABLE t (i INT, s SMALLINT, f FLOAT, d DECIMAL(5,2), m MONEY, v VARCHAR(5))");
  Must("INSERT INTO t VALUES (1, 1, 1.5, 1.25, 2, 'b'), (2, 2, 2.5, 2.5, 3.5, 'A'), (NULL, NULL, NULL, NULL, "
       "NULL, NULL)");
  EXPECT_EQ(Rows("SELECT SUM(i), AVG(i), SUM(s), SUM(f), AVG(f), SUM(d), AVG(d), SUM(m), MIN(v), MAX(v), "
                 "COUNT(*), COUNT(i) FROM t"),
            Lines({"3|1|3|4|2|3.75|1.875000|5.5000|A|b|3|2"}));
  EXPECT_EQ(TypeOf("SUM(d) FROM t"), DecimalType(38, 2));
  EXPECT_EQ(TypeOf("SUM(s) FROM t").id, TypeId::Int);
  Must("INSERT INTO t (i) VALUES (2147483647)");
  EXPECT_EQ(ErrorOf("SELECT SUM(i) FROM t"), 8115);
  EXPECT_EQ(ErrorText("SELECT SUM(v) FROM t"),
            "8117 1 Operand data type varchar is invalid for sum operator.");
}

TEST_F(TypesTest, MetaFunctions) {
  Must("CREATE TABLE t (a VARCHAR(12))");
  EXPECT_EQ(Scalar("CASE WHEN OBJECT_ID('dbo.t') IS NULL THEN 'no' ELSE 'yes' END"), "yes");
  EXPECT_EQ(Scalar("OBJECT_ID(N'[nothing]', N'U')"), "NULL");
  EXPECT_EQ(Run("IF OBJECT_ID('tempdb..#t') IS NULL CREATE TABLE #t (b INT) SELECT b FROM #t").results.size(),
            1U);
  EXPECT_EQ(Scalar("COL_LENGTH('t', 'A')"), "12");
  EXPECT_EQ(Scalar("COL_LENGTH('t', 'x')"), "NULL");
}

TEST_F(TypesTest, CheckConstraint) {
  Must("CREATE TABLE t (a INT NULL CONSTRAINT ck CHECK (a > 0 AND a <> 13))");
  Must("INSERT INTO t VALUES (5), (NULL)");
  const std::string where =
      "statement conflicted with the CHECK constraint \"ck\". The conflict occurred in database \"" +
      Scalar("DB_NAME()") + "\", table \"dbo.t\"";
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (13)"), "547 1 The INSERT " + where + ", column 'a'.");
  EXPECT_EQ(ErrorText("UPDATE t SET a = 0 WHERE a = 5"), "547 1 The UPDATE " + where + ", column 'a'.");
  // A condition on several columns is of the table.
  Must("DROP TABLE t CREATE TABLE t (a INT NULL, b INT NULL, CONSTRAINT ck CHECK (a > b))");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (1, 2)"), "547 1 The INSERT " + where + ".");
}

// Long expressions of decimals run on 64 bits where these suffice: both sides of that border, and of each
// type's.
TEST_F(TypesTest, DecimalExpressions) {
  Must("CREATE TABLE d (a DECIMAL(18,4), b DECIMAL(28,10), i INT)"
       " INSERT INTO d VALUES (1.5, 2.25, 3), (3037000500, -99999999999999999.0000000001, 2147483647), "
       "(NULL, 1, 1)");
  const auto values = [this](const std::string& expression) {
    return Rows("SELECT CAST(" + expression + " AS VARCHAR(60)) FROM d");
  };
  EXPECT_EQ(values("a * 2 + 1"), Lines({"4.0000", "6074001001.0000", "NULL"}));
  EXPECT_EQ(values("a * a"), Lines({"2.25000000", "9223372037000250000.00000000", "NULL"}));
  EXPECT_EQ(values("b * 2 - i"), Lines({"1.5000000000", "-200000002147483645.0000000002", "1.0000000000"}));
  EXPECT_EQ(values("CAST(a / 7 AS DECIMAL(18,2))"), Lines({"0.21", "433857214.29", "NULL"}));
  EXPECT_EQ(values("CAST(b - 4.7 AS DECIMAL(28,1))"), Lines({"-2.5", "-100000000000000003.7", "-3.7"}));
  EXPECT_EQ(values("CAST(0 - b AS DECIMAL(28,0))"), Lines({"-2", "99999999999999999", "-1"}));
  EXPECT_EQ(Scalar("CAST(CAST(-2.45 AS DECIMAL(9,2)) * 1 AS DECIMAL(9,1))"), "-2.5");
  EXPECT_EQ(Scalar("CAST(CAST(999.98 AS DECIMAL(5,2)) + 0.01 AS DECIMAL(5,2))"), "999.99");
  EXPECT_EQ(ErrorText("SELECT CAST(CAST(999.99 AS DECIMAL(5,2)) + 0.01 AS DECIMAL(5,2))"),
            "8115 1 Arithmetic overflow error converting numeric to data type numeric.");
  EXPECT_EQ(ErrorOf("DECLARE @x DECIMAL(38,0) SET @x = 99999999999999999999999999999999999999 SELECT @x + 1"),
            8115);
  EXPECT_EQ(ErrorOf("SELECT a * (b / (i - 3)) FROM d"), 8134);
  EXPECT_EQ(Scalar("CAST(0.05 AS VARCHAR(9)) + '|' + CAST(-0.5 AS VARCHAR(9)) + '|' + CAST(0 AS VARCHAR(9))"),
            "0.05|-0.5|0");
  // More operands than one program takes.
  std::string sum = "b";
  for (int n = 0; n < 40; ++n) sum += " + b * 1";
  EXPECT_EQ(values("CAST(" + sum + " AS DECIMAL(38,2))"),
            Lines({"92.25", "-4099999999999999959.00", "41.00"}));
}

TEST_F(TypesTest, NamesOfSeveralWords) {
  Must(
      "CREATE TABLE w (a NATIONAL CHARACTER VARYING(7), b CHAR VARYING(3), c NATIONAL CHAR(2), d BINARY VARYING(4),"
      " e NCHAR VARYING(5), f CHARACTER VARYING(MAX), g NATIONAL TEXT)");
  EXPECT_EQ(
      Rows("SELECT DATA_TYPE, CHARACTER_MAXIMUM_LENGTH FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'w'"
           " ORDER BY ORDINAL_POSITION"),
      Lines({"nvarchar|7", "varchar|3", "nchar|2", "varbinary|4", "nvarchar|5", "varchar|-1",
             "ntext|1073741823"}));
  EXPECT_EQ(ErrorOf("DECLARE @i INT VARYING"), 156);
  EXPECT_EQ(ErrorOf("DECLARE @i NATIONAL INT"), 2715);
}

TEST_F(TypesTest, BinaryValuesAreTakenTogether) {
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), 0x01 + 0x0203, 1)"), "0x010203");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), CAST(0x00 AS BINARY(2)) + CAST('a' AS VARBINARY(5)) + 0x, 1)"),
            "0x000061");
  EXPECT_EQ(Scalar("0x01 + CAST(NULL AS VARBINARY(5))"), "NULL");
  EXPECT_EQ(Scalar("DATALENGTH(CAST(0x AS BINARY(5000)) + CAST(0x AS BINARY(5000)))"), "8000");
  Must("CREATE TABLE b (a BINARY(2), v VARBINARY(MAX)) INSERT INTO b VALUES (0x0A, 0xFF00)");
  EXPECT_EQ(Rows("SELECT CONVERT(VARCHAR(20), a + v, 1), CONVERT(VARCHAR(20), v + a, 1) FROM b"),
            Lines({"0x0A00FF00|0xFF000A00"}));
  EXPECT_EQ(Rows("SELECT id FROM (SELECT 1 AS id, 0x01 + 0x02 AS v) x WHERE v = 0x0102"), Lines({"1"}));
}

TEST_F(TypesTest, AConcatenationIsCutAtTheLongestOfItsType) {
  EXPECT_EQ(Scalar("LEN(REPLICATE('a', 5000) + REPLICATE('b', 5000))"), "8000");
  EXPECT_EQ(Scalar("RIGHT(REPLICATE('a', 7999) + 'bc', 1)"), "b");
  EXPECT_EQ(Scalar("LEN(REPLICATE(N'a', 3000) + REPLICATE('b', 3000))"), "4000");
  EXPECT_EQ(Scalar("LEN(CAST(REPLICATE('a', 5000) AS VARCHAR(MAX)) + REPLICATE('b', 5000))"), "10000");
  // A column of two characters and one of six: nothing is to be cut.
  EXPECT_EQ(Scalar("'ab' + 'cdefgh'"), "abcdefgh");
}

TEST_F(TypesTest, DatesInEscapesOfOdbc) {
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(23), {d '2021-02-03'}, 121)"), "2021-02-03 00:00:00.000");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(23), {ts '2021-02-03 04:05:06.007'}, 121)"), "2021-02-03 04:05:06.007");
  EXPECT_EQ(Scalar("DATEDIFF(second, CAST(GETDATE() AS DATE), {t '01:00:07'})"), "3607");
  EXPECT_EQ(
      Scalar(
          "CASE WHEN 'a%' LIKE 'a!%' {escape '!'} THEN DATEDIFF(day, {d '2021-01-01'}, {d '2021-01-03'}) END"),
      "2");
  EXPECT_EQ(ErrorOf("SELECT {d '2021-13-03'}"), 242);
  EXPECT_EQ(ErrorOf("SELECT {d '2021-12-03'"), 102);
}

} // namespace
} // namespace tsql::test
