// Single conversions and the values at the edges of the types, as the server's documentation of CAST and
// CONVERT has them. ConversionPropertyTest goes through all pairs of types.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class ConversionTest : public EngineTest {
 protected:
  // The digits of a binary value.
  std::string Hex(const std::string& expression) {
    const Output output = Run("SELECT " + expression);
    if (!output.errors.empty()) return "error " + std::to_string(output.errors[0].number);
    std::string digits;
    for (const char byte : output.results.at(0).at(0)) {
      const auto number = static_cast<unsigned char>(byte);
      digits += "0123456789ABCDEF"[number / 16];
      digits += "0123456789ABCDEF"[number % 16];
    }
    return digits;
  }
  Type TypeOf(std::string_view expression) {
    const Output output = Run("SELECT " + std::string(expression));
    return output.columns.empty() ? Type{} : output.columns[0][0].type;
  }
};

// "Converting to bit promotes any nonzero value to 1." Of a binary value the last byte counts, as for a
// tinyint.
TEST_F(ConversionTest, BitIsZeroOrOneFromEveryType) {
  for (const char* value : {"2", "-1", "CAST(256 AS BIGINT)", "0.5", "CAST(0.0001 AS MONEY)", "1e-5",
                            "CAST(7 AS TINYINT)", "'5'", "N'-3'", "'true'", "CAST('2000-01-01' AS DATETIME)",
                            "CAST('1900-01-01 06:00' AS SMALLDATETIME)", "0x02", "0x0110"})
    EXPECT_EQ(Scalar("CAST(" + std::string(value) + " AS BIT)"), "1") << value;
  for (const char* value :
       {"0", "0.0", "0e0", "$0", "'0'", "''", "'FALSE'", "CAST('1900-01-01' AS DATETIME)", "0x00"})
    EXPECT_EQ(Scalar("CAST(" + std::string(value) + " AS BIT)"), "0") << value;
  Must("CREATE TABLE t (b BIT NULL) INSERT INTO t VALUES (5), (-2), ('3'), (0x04) UPDATE t SET b = b + 7");
  EXPECT_EQ(Rows("SELECT DISTINCT b FROM t"), Lines({"1"}));
  EXPECT_EQ(Rows("DECLARE @b BIT SET @b = 12 SELECT @b"), Lines({"1"}));
  EXPECT_EQ(ErrorOf("SELECT CAST('yes' AS BIT)"), 245);
}

TEST_F(ConversionTest, RealIsSinglePrecision) {
  EXPECT_EQ(Scalar("CASE WHEN CAST(16777217 AS REAL) = 16777216 THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CAST(CAST(0.1 AS REAL) AS FLOAT)"), "0.100000001490116");
  // 2^24 + 1 has no single of its own.
  EXPECT_EQ(Rows("DECLARE @a REAL, @b REAL SELECT @a = 16777216, @b = 1 SELECT @a + @b, @a * @b - @b"),
            Lines({"16777216|16777215"}));
  EXPECT_EQ(TypeOf("CAST(1 AS REAL) / 3").id, TypeId::Real);
  EXPECT_EQ(Scalar("CAST(CAST(1 AS REAL) / 3 AS FLOAT)"), "0.333333343267441");
  EXPECT_EQ(Scalar("CASE WHEN CAST(0.1 AS REAL) = 0.1 THEN 1 ELSE 0 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN CAST(0.1 AS REAL) = CAST(0.1 AS FLOAT) THEN 1 ELSE 0 END"), "0");
  EXPECT_EQ(ErrorOf("SELECT CAST(1e300 AS REAL)"), 8115);
  EXPECT_EQ(ErrorOf("DECLARE @a REAL SET @a = 3e38 SELECT @a * @a"), 8115);
  Must("CREATE TABLE t (r REAL) INSERT INTO t VALUES (0.1), (0.2) UPDATE t SET r = r + r");
  EXPECT_EQ(Scalar("COUNT(*) FROM t WHERE r = CAST(0.4 AS REAL)"), "1");
}

TEST_F(ConversionTest, MoneyReachesItsLowestValues) {
  const std::string lowest = "'-922337203685477.5808'";
  EXPECT_EQ(Scalar("CAST(" + lowest + " AS MONEY)"), "-922337203685477.5808");
  EXPECT_EQ(Scalar("CAST(-922337203685477.5808 AS MONEY)"), "-922337203685477.5808");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), CAST(" + lowest + " AS MONEY), 2)"), "-922337203685477.5808");
  EXPECT_EQ(Scalar("CAST('-214748.3648' AS SMALLMONEY)"), "-214748.3648");
  EXPECT_EQ(Scalar("CAST(922337203685477.5807 AS MONEY)"), "922337203685477.5807");
  EXPECT_EQ(ErrorOf("SELECT CAST(922337203685477.5808 AS MONEY)"), 8115);
  EXPECT_EQ(ErrorOf("SELECT CAST(-922337203685477.5809 AS MONEY)"), 8115);
  EXPECT_EQ(ErrorOf("SELECT CAST('214748.3648' AS SMALLMONEY)"), 8115);
  Must("CREATE TABLE t (m MONEY, s SMALLMONEY) INSERT INTO t VALUES (" + lowest + ", '-214748.3648')");
  EXPECT_EQ(Rows("SELECT m, s, m + 0.0001 FROM t"),
            Lines({"-922337203685477.5808|-214748.3648|-922337203685477.5807"}));
  EXPECT_EQ(ErrorOf("SELECT -m FROM t"), 8115);
  EXPECT_EQ(ErrorOf("SELECT ABS(m) FROM t"), 8115);
  EXPECT_EQ(ErrorOf("SELECT m - 1 FROM t"), 8115);
  EXPECT_EQ(ErrorOf("SELECT s - CAST(1 AS SMALLMONEY) FROM t"), 8115);
}

TEST_F(ConversionTest, MoneyTextsHaveCurrencySigns) {
  for (const char* text :
       {"\uffe512", "\u00a512", "$12", "\u00a312", "\u20ac12", "\uff0412", "\u20a912", "$ 12", "+$12"})
    EXPECT_EQ(Scalar("CAST(REPLACE(N'" + std::string(text) + "', ' ', '') AS MONEY)"), "12.0000") << text;
  EXPECT_EQ(Scalar("CAST('\uffe512' AS MONEY)"), "12.0000"); // the code page has this one
  EXPECT_EQ(Scalar("CAST('-$1,234.5' AS MONEY)"), "-1234.5000");
  EXPECT_EQ(Scalar("CAST('$-5' AS SMALLMONEY)"), "-5.0000");
  EXPECT_EQ(Scalar("CAST('$' AS MONEY)"), "0.0000");
  EXPECT_EQ(ErrorOf("SELECT CAST('12$' AS MONEY)"), 235);
  EXPECT_EQ(ErrorOf("SELECT CAST('1$2' AS MONEY)"), 235);
  EXPECT_EQ(ErrorOf("SELECT CAST('#12' AS SMALLMONEY)"), 293);
}

// "int, smallint, tinyint: int; decimal(p, s): decimal(38, s); bit and character types: float" and so on.
TEST_F(ConversionTest, PowerAnswersInTheTypeOfItsFirstArgument) {
  EXPECT_EQ(TypeOf("POWER(2, 10)").id, TypeId::Int);
  EXPECT_EQ(TypeOf("POWER(CAST(2 AS TINYINT), 3)").id, TypeId::Int);
  EXPECT_EQ(TypeOf("POWER(CAST(2 AS BIGINT), 3)").id, TypeId::BigInt);
  EXPECT_EQ(TypeOf("POWER(2.5, 2)"), (Type{TypeId::Decimal, 0, 38, 1}));
  EXPECT_EQ(TypeOf("POWER(CAST(2 AS SMALLMONEY), 2)").id, TypeId::Money);
  EXPECT_EQ(TypeOf("POWER(CAST(2 AS REAL), 2)").id, TypeId::Float);
  EXPECT_EQ(TypeOf("POWER('2', 2)").id, TypeId::Float);
  EXPECT_EQ(TypeOf("POWER(CAST(1 AS BIT), 2)").id, TypeId::Float);
  EXPECT_EQ(Scalar("POWER(2.5, 2)"), "6.3");
  EXPECT_EQ(Scalar("POWER(2, -1)"), "0");
  EXPECT_EQ(Scalar("POWER(CAST(2 AS TINYINT), 8)"), "256");
  EXPECT_EQ(Scalar("POWER(2e0, -1)"), "0.5");
  EXPECT_EQ(ErrorText("SELECT POWER(2, 31)"),
            "232 1 Arithmetic overflow error for type int, value = 2147483648.000000.");
  EXPECT_EQ(ErrorText("SELECT POWER(CAST(2 AS BIGINT), 63)"),
            "8115 1 Arithmetic overflow error converting expression to data type bigint.");
  EXPECT_EQ(ErrorText("SELECT POWER(10.0, 40)"),
            "8115 1 Arithmetic overflow error converting float to data type numeric.");
}

TEST_F(ConversionTest, FloatsThatDoNotFit) {
  EXPECT_EQ(ErrorText("SELECT CAST(1e10 AS INT)"),
            "232 1 Arithmetic overflow error for type int, value = 10000000000.000000.");
  EXPECT_EQ(ErrorText("SELECT CAST(3e2 AS TINYINT)"),
            "232 1 Arithmetic overflow error for type tinyint, value = 300.000000.");
  EXPECT_EQ(ErrorOf("SELECT CAST(1e30 AS BIGINT)"), 8115);
  EXPECT_EQ(ErrorText("SELECT CAST(1234.5e0 AS VARCHAR(3))"),
            "232 1 Arithmetic overflow error for type varchar, value = 1234.500000.");
  EXPECT_EQ(ErrorText("SELECT CAST($1234 AS VARCHAR(3))"),
            "234 1 There is insufficient result space to convert a money value to varchar.");
  EXPECT_EQ(ErrorText("SELECT CAST(NEWID() AS CHAR(35))"),
            "8170 1 Insufficient result space to convert uniqueidentifier value to char.");
}

TEST_F(ConversionTest, BinaryHasABytesLength) {
  EXPECT_EQ(Scalar("LEN(0x0102F0)"), "3");
  EXPECT_EQ(Scalar("LEN(CAST(1 AS BINARY(8)))"), "8");
  EXPECT_EQ(Scalar("LEN(0xC3A9)"), "2");
  EXPECT_EQ(Hex("SUBSTRING(0x01020304, 2, 2)"), "0203");
  EXPECT_EQ(Hex("SUBSTRING(0x01020304, 0, 2)"), "01");
  EXPECT_EQ(Hex("SUBSTRING(0x01020304, 4, 9)"), "04");
  EXPECT_EQ(Hex("SUBSTRING(0x01020304, 9, 1)"), "");
  EXPECT_EQ(TypeOf("SUBSTRING(0x01020304, 2, 2)").id, TypeId::VarBinary);
}

// "When other data types are converted to binary or varbinary, the data is padded or truncated on the left."
// Texts and binary values are on the right.
TEST_F(ConversionTest, NumbersToBinaryArePaddedAndCutOnTheLeft) {
  EXPECT_EQ(Hex("CONVERT(BINARY(8), 1)"), "0000000000000001");
  EXPECT_EQ(Hex("CONVERT(BINARY(2), 66051)"), "0203");
  EXPECT_EQ(Hex("CONVERT(VARBINARY(8), 1)"), "00000001");
  EXPECT_EQ(Hex("CONVERT(VARBINARY(2), 66051)"), "0203");
  EXPECT_EQ(Hex("CAST(CAST(-2 AS BIGINT) AS VARBINARY)"), "FFFFFFFFFFFFFFFE");
  EXPECT_EQ(Hex("CAST(CAST(258 AS SMALLINT) AS VARBINARY)"), "0102");
  EXPECT_EQ(Hex("CAST(CAST(255 AS TINYINT) AS BINARY(3))"), "0000FF");
  EXPECT_EQ(Hex("CAST(CAST(1 AS BIT) AS BINARY(2))"), "0001");
  EXPECT_EQ(Hex("CAST('ab' AS BINARY(4))"), "61620000");
  EXPECT_EQ(Hex("CAST(0x010203 AS BINARY(2))"), "0102");
  EXPECT_EQ(Hex("CAST(0x01 AS BINARY(3))"), "010000");
  EXPECT_EQ(Scalar("CAST(0x0000000000000001 AS INT)"), "1");
  EXPECT_EQ(Scalar("CAST(0x0100000002 AS INT)"), "2"); // cut on the left as well
  EXPECT_EQ(Scalar("CAST(0xFFFF AS SMALLINT)"), "-1");
  EXPECT_EQ(Scalar("CAST(0x0101 AS TINYINT)"), "1");
  EXPECT_EQ(Scalar("0x0A + 1"), "11");
}

// decimal: precision, scale, a zero, the sign, the magnitude from its low byte on. Others: from the high byte
// on.
TEST_F(ConversionTest, OtherValuesToBinaryAndBack) {
  EXPECT_EQ(Hex("CAST(1.5 AS VARBINARY(20))"), "020100010F000000");
  EXPECT_EQ(Hex("CAST(-1.5 AS VARBINARY(20))"), "020100000F000000");
  EXPECT_EQ(Scalar("CAST(0x020100010F000000 AS DECIMAL(5, 2))"), "1.50");
  EXPECT_EQ(ErrorOf("SELECT CAST(0x0F AS DECIMAL(5, 2))"), 8114);
  EXPECT_EQ(Hex("CAST($1 AS VARBINARY(8))"), "0000000000002710");
  EXPECT_EQ(Hex("CAST(CAST(-1 AS SMALLMONEY) AS VARBINARY(8))"), "FFFFD8F0");
  EXPECT_EQ(Scalar("CAST(0x2710 AS MONEY)"), "1.0000");
  EXPECT_EQ(Hex("CAST(1e0 AS VARBINARY(8))"), "3FF0000000000000");
  EXPECT_EQ(Hex("CAST(CAST(1 AS REAL) AS BINARY(4))"), "3F800000");
  EXPECT_EQ(ErrorOf("SELECT CAST(0x3FF0000000000000 AS FLOAT)"), 529);
  EXPECT_EQ(Hex("CAST(CAST('1900-01-02 00:00:01' AS DATETIME) AS BINARY(8))"), "000000010000012C");
  EXPECT_EQ(Scalar("CAST(0x000000010000012C AS DATETIME)"), "1:300");
  EXPECT_EQ(Hex("CAST(CAST('1900-01-02 01:01' AS SMALLDATETIME) AS BINARY(4))"), "0001003D");
  EXPECT_EQ(Hex("CAST(CAST('0001-01-03' AS DATE) AS BINARY(3))"), "020000");
  EXPECT_EQ(ErrorOf("DECLARE @b VARBINARY(8) SET @b = GETDATE()"), 257);
}

TEST_F(ConversionTest, BinaryToUniqueIdentifier) {
  EXPECT_EQ(Scalar("CAST(0xFF19966F868B11D0B42D00C04FC964FF AS UNIQUEIDENTIFIER)"),
            "6F9619FF-8B86-D011-B42D-00C04FC964FF");
  EXPECT_EQ(Hex("CAST(CAST('6F9619FF-8B86-D011-B42D-00C04FC964FF' AS UNIQUEIDENTIFIER) AS BINARY(16))"),
            "FF19966F868B11D0B42D00C04FC964FF");
  // Zeros take the place of what is missing on the right.
  EXPECT_EQ(Scalar("CAST(0xFF AS UNIQUEIDENTIFIER)"), "000000FF-0000-0000-0000-000000000000");
  EXPECT_EQ(Rows("DECLARE @g UNIQUEIDENTIFIER SET @g = 0x01 SELECT @g"),
            Lines({"00000001-0000-0000-0000-000000000000"}));
}

TEST_F(ConversionTest, BinaryStyles) {
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), 0x4142F0, 1)"), "0x4142F0");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), 0x4142F0, 2)"), "4142F0");
  EXPECT_EQ(Scalar("CONVERT(NVARCHAR(5), 0x4142F0, 1)"), "0x414"); // cut on the right
  EXPECT_EQ(Scalar("CONVERT(CHAR(6), 0x41, 2) + '|'"), "41    |");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), 0x4142)"), "AB");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), 0x4142, 0)"), "AB");
  EXPECT_EQ(Scalar("CAST(0x41004200 AS NVARCHAR(20))"), "AB");
  EXPECT_EQ(Hex("CAST(N'AB' AS VARBINARY(20))"), "41004200");
  EXPECT_EQ(Hex("CONVERT(VARBINARY(20), '0x4142f0', 1)"), "4142F0");
  EXPECT_EQ(Hex("CONVERT(VARBINARY(20), N'4142F0', 2)"), "4142F0");
  EXPECT_EQ(Hex("CONVERT(BINARY(2), '4142F0', 2)"), "4142");
  EXPECT_EQ(Hex("CONVERT(BINARY(4), '0x41', 1)"), "41000000");
  EXPECT_EQ(ErrorText("SELECT CONVERT(VARBINARY(20), '4142', 1)"),
            "8114 1 Error converting data type varchar to varbinary.");
  EXPECT_EQ(ErrorOf("SELECT CONVERT(VARBINARY(20), '0x414', 1)"), 8114);
  EXPECT_EQ(ErrorOf("SELECT CONVERT(VARBINARY(20), '0x41', 2)"), 8114);
  EXPECT_EQ(ErrorText("SELECT CONVERT(VARBINARY(20), 'ab', 3)"),
            "9809 1 The style 3 is not supported for conversions from varchar to varbinary.");
}

// The shorter one of two binary values counts as if zeros followed it.
TEST_F(ConversionTest, BinaryComparisonPads) {
  const auto holds = [this](const std::string& condition) {
    return Scalar("CASE WHEN " + condition + " THEN 1 ELSE 0 END") == "1";
  };
  EXPECT_TRUE(holds("0x01 = 0x0100"));
  EXPECT_TRUE(holds("0x = 0x0000"));
  EXPECT_TRUE(holds("0x0100 < 0x010001"));
  EXPECT_TRUE(holds("0x0100 BETWEEN 0x01 AND 0x01"));
  EXPECT_TRUE(holds("0x0100 IN (0x02, 0x01)"));
  EXPECT_FALSE(holds("0x01 = 0x0001"));
  EXPECT_EQ(Scalar("CASE 0x0100 WHEN 0x01 THEN 'same' ELSE 'different' END"), "same");
  EXPECT_EQ(Scalar("NULLIF(0x01, 0x0100)"), "NULL");
  Must("CREATE TABLE t (b BINARY(4), v VARBINARY(4)) INSERT INTO t VALUES (0x0102, 0x0102)");
  EXPECT_EQ(Scalar("COUNT(*) FROM t WHERE b = v AND b = 0x0102 AND v = 0x01020000"), "1");
}

TEST_F(ConversionTest, BinaryColumnsRefuseWhatIsTooLong) {
  Must("CREATE TABLE t (b BINARY(2) NULL, v VARBINARY(2) NULL)");
  EXPECT_EQ(ErrorOf("INSERT INTO t (v) VALUES (0x010203)"), 8152);
  EXPECT_EQ(ErrorOf("DECLARE @x VARBINARY(9) SET @x = 0x010203 INSERT INTO t (b) SELECT @x"), 8152);
  Must("INSERT INTO t VALUES (0x01, 0x0102) UPDATE t SET v = b");
  EXPECT_EQ(Hex("v FROM t"), "0100");
}

TEST_F(ConversionTest, QuoteNameKnowsEveryQuote) {
  for (const char* mark : {"[", "]"})
    EXPECT_EQ(Scalar("QUOTENAME('a]b[c', '" + std::string(mark) + "')"), "[a]]b[c]");
  for (const char* mark : {"(", ")"})
    EXPECT_EQ(Scalar("QUOTENAME('a)b', '" + std::string(mark) + "')"), "(a))b)");
  for (const char* mark : {"<", ">"})
    EXPECT_EQ(Scalar("QUOTENAME('a>b', '" + std::string(mark) + "')"), "<a>>b>");
  for (const char* mark : {"{", "}"})
    EXPECT_EQ(Scalar("QUOTENAME('a}b', '" + std::string(mark) + "')"), "{a}}b}");
  EXPECT_EQ(Scalar("QUOTENAME('a\"b', '\"')"), "\"a\"\"b\"");
  EXPECT_EQ(Scalar("QUOTENAME('a''b', '''')"), "'a''b'");
  EXPECT_EQ(Scalar("QUOTENAME('a`b', '`')"), "`a``b`");
  EXPECT_EQ(Scalar("QUOTENAME('abc', '[]')"), "[abc]");
  for (const char* mark : {"x", "-", "/", "!"})
    EXPECT_EQ(Scalar("QUOTENAME('abc', '" + std::string(mark) + "')"), "NULL");
  EXPECT_EQ(Scalar("LEN(QUOTENAME(REPLICATE('a', 128)))"), "130");
  EXPECT_EQ(Scalar("QUOTENAME(REPLICATE('a', 129))"), "NULL");
}

TEST_F(ConversionTest, ColumnsWithoutNamesHaveNone) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (1)");
  for (const char* item : {"1", "a + 1", "CAST(a AS BIGINT)", "ISNULL(a, 0)", "COUNT(*)", "MAX(a)",
                           "(SELECT a)", "-a", "CASE WHEN a = 1 THEN a END", "CONVERT(VARCHAR(5), a)"}) {
    const Output output = Run("SELECT " + std::string(item) + " FROM t");
    ASSERT_EQ(output.columns.size(), 1U) << item;
    EXPECT_EQ(output.columns[0][0].name, "") << item;
  }
  const Output output =
      Run("DECLARE @a INT SELECT @a SELECT 1 UNION SELECT a FROM t SELECT TOP 1 5 FROM t ORDER BY a");
  ASSERT_EQ(output.columns.size(), 3U);
  for (const std::vector<Column>& columns : output.columns) EXPECT_EQ(columns[0].name, "");
  EXPECT_EQ(ErrorOf("SELECT a + 1 INTO #copy FROM t"), 1038);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT a + 1 FROM t) d"), 8155);
}

// What stands behind a date that can be read makes it unreadable.
TEST_F(ConversionTest, NothingFollowsADate) {
  for (const char* text :
       {"01-Aug-2021", "Aug-01-2021", "2021/Aug/01", "01 - Aug - 2021", "2021-08-01T00:00:00Z",
        "2021-08-01T00:00:00.000Z", " 2021-08-01 ", "20210801 00:00"}) {
    EXPECT_EQ(Scalar("CAST('" + std::string(text) + "' AS DATETIME)"), "44407:0") << text;
    EXPECT_EQ(Scalar("ISDATE('" + std::string(text) + "')"), "1") << text;
  }
  for (const char* text :
       {"01-Aug-2021x", "01-Aug-2021 x", "2021-08-01-", "01-Aug-2021-", "2021/Aug/01/", "2021-08-01Z",
        "2021-08-01T00:00:00ZZ", "2021-08-01T00:00:00Z Z", "2021-08-01 00:00:00.1234567",
        "2021-08-01 00:00:00.1234", "2021-08-01 2021", "20210801 20210801"}) {
    EXPECT_EQ(ErrorOf("SELECT CAST('" + std::string(text) + "' AS DATETIME)"), 241) << text;
    EXPECT_EQ(Scalar("ISDATE('" + std::string(text) + "')"), "0") << text;
  }
}

} // namespace
} // namespace tsql::test
