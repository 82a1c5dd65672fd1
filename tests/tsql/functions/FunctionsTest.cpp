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

TEST_F(FunctionsTest, Trigonometry) {
  EXPECT_EQ(Scalar("ROUND(SIN(PI() / 6), 10)"), "0.5");
  EXPECT_EQ(Scalar("ROUND(COS(PI() / 3), 10)"), "0.5");
  EXPECT_EQ(Scalar("ROUND(TAN(PI() / 4), 10)"), "1");
  EXPECT_EQ(Scalar("ROUND(COT(PI() / 4), 10)"), "1");
  EXPECT_EQ(Scalar("ROUND(ACOS(-1) - PI(), 10) + ASIN(0) + ATAN(0)"), "0");
  EXPECT_EQ(Scalar("ROUND(ATN2(1, -1) / PI(), 10)"), "0.75");
  EXPECT_EQ(Scalar("SIN(NULL)"), "NULL");
  EXPECT_EQ(ErrorText("SELECT ACOS(1.1)"), "3623 1 An invalid floating point operation occurred.");
  EXPECT_EQ(ErrorOf("SELECT ASIN(-2)"), 3623);
  EXPECT_EQ(ErrorOf("SELECT COT(0)"), 3623);
  EXPECT_EQ(ErrorText("SELECT SIN()"), "174 1 The sin function requires 1 argument(s).");
  // The type of the argument decides: an integer is cut, a decimal has 18 places.
  EXPECT_EQ(Scalar("RADIANS(180)"), "3");
  EXPECT_EQ(Scalar("DEGREES(PI() / 2)"), "90");
  EXPECT_EQ(Run("SELECT DEGREES(1), DEGREES(1.5), DEGREES($1), DEGREES(1e0)").columns[0][1].type.scale, 18);
  EXPECT_EQ(Scalar("LOG(8, 2)"), "3");
  EXPECT_EQ(Scalar("LOG(8, NULL)"), "NULL");
  EXPECT_EQ(ErrorOf("SELECT LOG(8, 1)"), 3623);
  EXPECT_EQ(ErrorOf("SELECT LOG(0)"), 3623);
  EXPECT_EQ(ErrorOf("SELECT LOG(-1)"), 3623);
  EXPECT_EQ(ErrorOf("SELECT LOG10(0)"), 3623);
  EXPECT_EQ(ErrorOf("SELECT LOG(8, -2)"), 3623);
}

TEST_F(FunctionsTest, RandomNumbersFollowTheirSeed) {
  // The sequence that the documentation of RAND shows.
  EXPECT_EQ(Rows("SELECT RAND(100), RAND(), RAND()"),
            Lines({"0.715436657367485|0.28463380767982|0.0131039082850364"}));
  EXPECT_EQ(Rows("DECLARE @a FLOAT SET @a = RAND(100) SELECT RAND()"), Lines({"0.28463380767982"}));
  // A place has one value for all rows.
  EXPECT_EQ(
      Rows("SELECT COUNT(DISTINCT r) FROM (SELECT RAND() AS r FROM (SELECT 1 AS a UNION SELECT 2) x) y"),
      Lines({"1"}));
  EXPECT_EQ(Rows("SELECT RAND(a) - RAND(a) FROM (SELECT 1 AS a UNION SELECT 2) x"), Lines({"0", "0"}));
  EXPECT_EQ(Scalar("RAND(NULL)"), "NULL");
  EXPECT_EQ(Scalar("CASE WHEN RAND() >= 0 AND RAND() < 1 THEN 1 END"), "1");
  // Each time a loop asks is a statement of its own: RAND(100) is followed by 0.28, 0.01.
  EXPECT_EQ(Rows("DECLARE @n INT, @r FLOAT SELECT @n = 0, @r = RAND(100) "
                 "WHILE RAND() > 0.02 SET @n = @n + 1 SELECT @n"),
            Lines({"1"}));
  EXPECT_EQ(ErrorText("CREATE TABLE x (a FLOAT CHECK (a > RAND()))"),
            "40510 1 A value of the session in a CHECK constraint or computed column is not supported.");
}

TEST_F(FunctionsTest, Concatenation) {
  EXPECT_EQ(Scalar("CONCAT('a', NULL, 1, 'b')"), "a1b");
  EXPECT_EQ(Scalar("'[' + CONCAT(NULL, NULL) + ']'"), "[]");
  EXPECT_EQ(Scalar("CONCAT(1.50, '/', $2.5, '/', CAST('2020-01-31' AS DATETIME))"),
            "1.50/2.50/Jan 31 2020 12:00AM");
  EXPECT_EQ(Scalar("CONCAT('x ', CAST('ab' AS CHAR(4)), 'y')"), "x ab  y");
  EXPECT_EQ(Scalar("LEN(CONCAT(REPLICATE('a', 8000), 'b'))"), "8000");
  EXPECT_EQ(Scalar("LEN(CONCAT(REPLICATE('a', 8000), CAST('b' AS VARCHAR(MAX))))"), "8001");
  EXPECT_EQ(Scalar("CONCAT_WS(',', 'a', NULL, 'b', 3)"), "a,b,3");
  EXPECT_EQ(Scalar("CONCAT_WS(NULL, 'a', 'b')"), "ab");
  EXPECT_EQ(Scalar("'[' + CONCAT_WS(',', NULL, NULL) + ']'"), "[]");
  EXPECT_EQ(ErrorText("SELECT CONCAT('a')"), "189 1 The concat function requires 2 to 254 arguments.");
  EXPECT_EQ(ErrorText("SELECT CONCAT_WS(',', 'a')"),
            "189 1 The concat_ws function requires 3 to 254 arguments.");
  const Output output =
      Run("SELECT CONCAT('ab', 'c'), CONCAT('ab', N'c'), CONCAT('a', CAST('b' AS NVARCHAR(MAX)))");
  EXPECT_EQ(output.columns[0][0].type.id, TypeId::VarChar);
  EXPECT_EQ(output.columns[0][0].type.length, 3);
  EXPECT_EQ(output.columns[0][1].type.id, TypeId::NVarChar);
  EXPECT_EQ(output.columns[0][2].type.length, -1);
}

TEST_F(FunctionsTest, Choices) {
  EXPECT_EQ(Scalar("IIF(1 < 2, 'yes', 'no')"), "yes");
  EXPECT_EQ(Scalar("IIF(NULL = 1, 'yes', 'no')"), "no");
  EXPECT_EQ(Scalar("IIF(1 = 1 AND NOT 2 = 3, 1, 2.5)"), "1.0");
  EXPECT_EQ(Scalar("IIF(1 = 2, 1, NULL)"), "NULL");
  EXPECT_EQ(ErrorOf("SELECT IIF(1 = 1, NULL, NULL)"), 8133);
  EXPECT_EQ(ErrorOf("SELECT IIF(1, 2, 3)"), 4145);
  EXPECT_EQ(Scalar("CHOOSE(2, 'a', 'b', 'c')"), "b");
  EXPECT_EQ(Scalar("CHOOSE(2.9, 'a', 'b', 'c')"), "b");
  EXPECT_EQ(Scalar("CHOOSE(1, 1, 2.5)"), "1.0");
  EXPECT_EQ(Rows("SELECT CHOOSE(0, 'a'), CHOOSE(4, 'a', 'b', 'c'), CHOOSE(NULL, 'a')"),
            Lines({"NULL|NULL|NULL"}));
  EXPECT_EQ(ErrorOf("SELECT CHOOSE(1)"), 189);
}

TEST_F(FunctionsTest, TriedConversions) {
  EXPECT_EQ(Rows("SELECT TRY_CAST('12' AS INT), TRY_CAST('x' AS INT), TRY_CAST(NULL AS INT)"),
            Lines({"12|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT TRY_CONVERT(TINYINT, 256), TRY_CONVERT(DECIMAL(3,1), '123.4'), "
                 "TRY_CONVERT(DATETIME, '20200230'), TRY_CONVERT(VARCHAR(10), GETDATE() - GETDATE(), 112)"),
            Lines({"NULL|NULL|NULL|19000101"}));
  EXPECT_EQ(Rows("SELECT TRY_CAST(a AS INT) FROM (SELECT '1' AS a UNION ALL SELECT 'b') x ORDER BY 1"),
            Lines({"NULL", "1"}));
  // What never can be converted, and what fails within the argument, are errors all the same.
  EXPECT_EQ(ErrorText("SELECT TRY_CAST(1 AS UNIQUEIDENTIFIER)"),
            "529 1 Explicit conversion from data type int to uniqueidentifier is not allowed.");
  EXPECT_EQ(ErrorOf("SELECT TRY_CAST(1 / 0 AS INT)"), 8134);
  EXPECT_EQ(ErrorOf("SELECT TRY_CONVERT(VARCHAR(30), GETDATE(), 999)"), 281);
}

TEST_F(FunctionsTest, DatesOfParts) {
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), DATEFROMPARTS(2020, 2, 29), 120)"), "2020-02-29");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), DATETIMEFROMPARTS(2010, 12, 31, 23, 59, 59, 0), 121)"),
            "2010-12-31 23:59:59.000");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), SMALLDATETIMEFROMPARTS(2010, 12, 31, 23, 59), 120)"),
            "2010-12-31 23:59:00");
  EXPECT_EQ(Scalar("DATEFROMPARTS(2020, NULL, 1)"), "NULL");
  EXPECT_EQ(ErrorText("SELECT DATEFROMPARTS(2021, 2, 29)"),
            "289 1 Cannot construct data type date, some of the arguments have values which are not valid.");
  EXPECT_EQ(
      ErrorText("SELECT DATETIMEFROMPARTS(1752, 1, 1, 0, 0, 0, 0)"),
      "289 1 Cannot construct data type datetime, some of the arguments have values which are not valid.");
  EXPECT_EQ(ErrorOf("SELECT SMALLDATETIMEFROMPARTS(2080, 1, 1, 0, 0)"), 289);
  EXPECT_EQ(ErrorOf("SELECT DATEFROMPARTS(2021, 2)"), 174);
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), EOMONTH('2020-02-03'), 120)"), "2020-02-29");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), EOMONTH('2020-01-31 10:00', 1), 120)"), "2020-02-29");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), EOMONTH('2020-03-31', -13), 120)"), "2019-02-28");
  EXPECT_EQ(Scalar("EOMONTH(NULL)"), "NULL");
  EXPECT_EQ(ErrorOf("SELECT EOMONTH('9999-12-01', 1)"), 517);
  EXPECT_EQ(ErrorText("SELECT EOMONTH(5)"),
            "8116 1 Argument data type int is invalid for argument 1 of eomonth function.");
  EXPECT_EQ(Scalar("DATEDIFF_BIG(millisecond, '1900-01-01', '2020-01-01')"), "3786825600000");
  EXPECT_EQ(Scalar("DATEDIFF(dd, 0, '2020-05-05 12:00')"), "43954") << "a number is one of days";
  EXPECT_EQ(Scalar("DATEDIFF(dd, CAST('1900-01-02' AS DATETIME2), 2.5)"), "1");
  EXPECT_EQ(Scalar("DATEADD(dd, DATEDIFF(dd, 0, '2020-05-05 12:00'), 0)"), "43954:0");
  EXPECT_EQ(Scalar("CASE WHEN ABS(DATEDIFF(hour, GETDATE(), GETUTCDATE())) <= 14 THEN 1 END"), "1");
}

TEST_F(FunctionsTest, PartsOfTexts) {
  EXPECT_EQ(Scalar("TRIM('.,! ' FROM '  # test .')"), "# test");
  EXPECT_EQ(Scalar("TRIM('X' FROM 'xax')"), "a");
  EXPECT_EQ(Scalar("'[' + TRIM('a' FROM 'aaa') + ']'"), "[]");
  EXPECT_EQ(ErrorText("SELECT TRIM('a', 'b')"), "174 1 The trim function requires 1 argument(s).");
  EXPECT_EQ(Scalar("TRANSLATE('2*[3+4]/{7-2}', '[]{}', '()()')"), "2*(3+4)/(7-2)");
  EXPECT_EQ(Scalar("TRANSLATE('abc', NULL, 'x')"), "NULL");
  EXPECT_EQ(ErrorOf("SELECT TRANSLATE('abc', 'ab', 'x')"), 9828);
  EXPECT_EQ(
      Rows("SELECT PARSENAME('srv.db.dbo.t', 1), PARSENAME('srv.db.dbo.t', 4), PARSENAME('dbo.[a.b]', 1), "
           "PARSENAME('a.b', 3), PARSENAME('a.b.c.d.e', 1), PARSENAME('a..c', 2)"),
      Lines({"t|srv|a.b|NULL|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT a INTO #x FROM (SELECT 1 AS a UNION SELECT 2) x SELECT ROWCOUNT_BIG()"),
            Lines({"2"}));
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
}

TEST_F(FunctionsTest, NamesAndNumbersOfTheServer) {
  EXPECT_EQ(Rows("SELECT DB_ID(), DB_ID(DB_NAME()), DB_ID('TempDB '), DB_ID('none'), DB_ID(NULL)"),
            Lines({"5|5|2|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT DB_NAME(1), CASE WHEN DB_NAME(5) = DB_NAME() THEN 'own' END, DB_NAME(6)"),
            Lines({"master|own|NULL"}));
  EXPECT_EQ(Rows("SELECT USER_NAME(1), USER_NAME(0), USER_NAME(99), SUSER_NAME(1), SUSER_SNAME(0x01),"
                 " SUSER_SNAME(0x02), SUSER_NAME(NULL)"),
            Lines({"dbo|public|NULL|sa|sa|NULL|NULL"}));
  EXPECT_EQ(Rows("SELECT TYPE_NAME(56), TYPE_NAME(231), TYPE_NAME(256), TYPE_NAME(1), TYPE_ID('INT'),"
                 " TYPE_ID('sys.datetime2'), TYPE_ID('sysname'), TYPE_ID('none')"),
            Lines({"int|nvarchar|sysname|NULL|56|42|256|NULL"}));
  EXPECT_EQ(Rows("SELECT IS_MEMBER('public'), IS_MEMBER('DB_OWNER'), IS_MEMBER('none'),"
                 " IS_SRVROLEMEMBER('sysadmin'), IS_SRVROLEMEMBER('db_owner'), IS_MEMBER(NULL)"),
            Lines({"1|1|NULL|1|NULL|NULL"}));
  EXPECT_EQ(ErrorText("SELECT IS_SRVROLEMEMBER('dbcreator')"),
            "40510 1 Membership of a role other than public, db_owner and sysadmin is not supported.");
  EXPECT_EQ(ErrorText("SELECT HOST_NAME(1)"), "174 1 The host_name function requires 0 argument(s).");
}

TEST_F(FunctionsTest, HowTextsSound) {
  EXPECT_EQ(Rows("SELECT SOUNDEX('Smith'), SOUNDEX('Smythe'), SOUNDEX('Blotchet-Halls'), SOUNDEX('Green'),"
                 " SOUNDEX('greene')"),
            Lines({"S530|S530|B432|G650|G650"}));
  // Letters of one digit count once, the first one's and those on both sides of H or W too; a vowel parts
  // them.
  EXPECT_EQ(Rows("SELECT SOUNDEX('Pfister'), SOUNDEX('Ashcraft'), SOUNDEX('Tymczak'), SOUNDEX('Jackson'),"
                 " SOUNDEX('Gutierrez'), SOUNDEX('VanDeusen')"),
            Lines({"P236|A261|T522|J250|G362|V532"}));
  EXPECT_EQ(
      Rows("SELECT SOUNDEX(''), SOUNDEX('12'), SOUNDEX(NULL), SOUNDEX(N'a'), DATALENGTH(SOUNDEX(N'a'))"),
      Lines({"0000|0000|NULL|A000|4"}));
  EXPECT_EQ(Rows("SELECT DIFFERENCE('Smithers', 'Smythers'), DIFFERENCE('Anothers', 'Brothers'),"
                 " DIFFERENCE('Blotchet-Halls', 'Greene'), DIFFERENCE('a', NULL)"),
            Lines({"4|2|0|NULL"}));
}

// The digests of "abc" are those of the standards.
TEST_F(FunctionsTest, Digests) {
  const auto digest = [this](const std::string& name, const std::string& value) {
    return Scalar("CONVERT(VARCHAR(200), HASHBYTES('" + name + "', " + value + "), 2)");
  };
  EXPECT_EQ(digest("md5", "'abc'"), "900150983CD24FB0D6963F7D28E17F72");
  EXPECT_EQ(digest("SHA", "'abc'"), "A9993E364706816ABA3E25717850C26C9CD0D89D");
  EXPECT_EQ(digest("sha1", "0x0001FF"), "C63E8274458BC7501E7C981F6394CED6D4490FDA");
  EXPECT_EQ(digest("SHA2_256", "'abc'"), "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD");
  EXPECT_EQ(digest("SHA2_512", "'abc'"), "DDAF35A193617ABACC417349AE20413112E6FA4E89A97EA20A9EEEE64B55D39A"
                                         "2192992A274FC1A836BA3C23A3FEEBBD454D4423643CE80E2A9AC94FA54CA49F");
  // The bytes are those of the type: of the code page, or two for a character.
  EXPECT_EQ(digest("MD5", "N'abc'"), "CE1473CF80C6B3FDA8E3DFC006ADC315");
  EXPECT_EQ(digest("MD5", "CAST(N'\xe5\xad\x97' AS VARCHAR(5))"), "11BEDABB71DB35385F6E0A73F3CAAFC9");
  EXPECT_EQ(digest("MD5", "''"), "D41D8CD98F00B204E9800998ECF8427E");
  EXPECT_EQ(digest("MD6", "'abc'"), "NULL");
  EXPECT_EQ(digest("MD5", "NULL"), "NULL");
  EXPECT_EQ(ErrorText("SELECT HASHBYTES('MD5', 1)"),
            "8116 1 Argument data type int is invalid for argument 2 of hashbytes function.");
  EXPECT_EQ(ErrorText("SELECT HASHBYTES('MD4', 'a')"), "40510 1 HASHBYTES with MD2 or MD4 is not supported.");
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
  EXPECT_EQ(ErrorOf("DELETE FROM sysobjects"), 259);
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
