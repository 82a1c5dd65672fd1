// date, time(n) and datetime2(n) as the server's documentation of each type and of the date functions has
// them: how they are written and read, rounded, compared, computed with, kept and indexed.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class DateTypesTest : public EngineTest {
 protected:
  Type TypeOf(std::string_view expression) {
    const Output output = Run("SELECT " + std::string(expression));
    return output.columns.empty() ? Type{} : output.columns[0][0].type;
  }
  // A value of any datetime type as CAST writes it.
  std::string Text(const std::string& expression) {
    return Scalar("CAST(" + expression + " AS VARCHAR(40))");
  }
};

const Type kTime7{TypeId::Time, 0, 0, 7};
const Type kDateTime27{TypeId::DateTime2, 0, 0, 7};

// The documentation's example: one text as each of the types.
TEST_F(DateTypesTest, OneTextAsEachType) {
  const std::string text = "'2007-05-08 12:35:29.1234567 +12:15'";
  EXPECT_EQ(Text("CAST(" + text + " AS TIME(7))"), "12:35:29.1234567");
  EXPECT_EQ(Text("CAST(" + text + " AS DATE)"), "2007-05-08");
  EXPECT_EQ(Text("CAST(" + text + " AS DATETIME2(7))"), "2007-05-08 12:35:29.1234567");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(40), CAST('2007-05-08 12:35:29.123' AS SMALLDATETIME), 120)"),
            "2007-05-08 12:35:00");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(40), CAST('2007-05-08 12:35:29.123' AS DATETIME), 121)"),
            "2007-05-08 12:35:29.123");
}

TEST_F(DateTypesTest, TextsThatTheyRead) {
  for (const char* text : {"2020-01-31 13:05:06.7", "20200131 13:05:06.7", "2020-01-31T13:05:06.7",
                           "2020-01-31T13:05:06.7Z", "01/31/2020 1:05:06.7 PM", "Jan 31 2020 1:05:06.7PM",
                           "31 January 2020 13:05:06.7000000", "2020-01-31 13:05:06.7 -05:00"}) {
    EXPECT_EQ(Text("CAST('" + std::string(text) + "' AS DATETIME2)"), "2020-01-31 13:05:06.7000000") << text;
    EXPECT_EQ(Text("CAST('" + std::string(text) + "' AS TIME(1))"), "13:05:06.7") << text;
    EXPECT_EQ(Text("CAST(N'" + std::string(text) + "' AS DATE)"), "2020-01-31") << text;
  }
  EXPECT_EQ(Text("CAST('2020-01-31' AS DATETIME2(0))"), "2020-01-31 00:00:00");
  EXPECT_EQ(Text("CAST('13:05' AS DATETIME2(0))"), "1900-01-01 13:05:00");
  EXPECT_EQ(Text("CAST('' AS TIME(0))"), "00:00:00");
  EXPECT_EQ(Text("CAST('0001-01-01' AS DATETIME2(0))"), "0001-01-01 00:00:00");
  EXPECT_EQ(Text("CAST('9999-12-31 23:59:59.9999999' AS DATETIME2)"), "9999-12-31 23:59:59.9999999");
}

TEST_F(DateTypesTest, TextsThatTheyDoNotRead) {
  const std::string failed =
      "241 1 Conversion failed when converting date and/or time from character string.";
  for (const char* type : {"DATE", "TIME", "DATETIME2"}) {
    for (const char* text :
         {"x", "2020-02-30", "2020-13-01", "25:00", "12:60", "2020-01-01 10:00:00.12345678",
          "2020-01-01 10:00 +14:01", "2020-01-01 10:00 +1", "0000-01-01"})
      EXPECT_EQ(ErrorText("SELECT CAST('" + std::string(text) + "' AS " + type + ")"), failed)
          << type << text;
  }
  EXPECT_EQ(ErrorText("SELECT CAST('2020-02-30' AS DATETIME)"),
            "242 1 The conversion of a varchar data type to a datetime data type resulted in an out-of-range "
            "value.");
  EXPECT_EQ(ErrorText("SELECT CAST('x' AS SMALLDATETIME)"),
            "295 1 Conversion failed when converting character string to smalldatetime data type.");
  EXPECT_EQ(ErrorOf("SELECT CAST('2020-01-01 10:00 +01:00' AS DATETIME)"), 241);
}

// CONVERT's style says how the text is to be read.
TEST_F(DateTypesTest, StylesOfTheTextsThatTheyRead) {
  EXPECT_EQ(Text("CONVERT(DATE, '03/04/2020', 101)"), "2020-03-04");
  EXPECT_EQ(Text("CONVERT(DATE, '03/04/2020', 103)"), "2020-04-03");
  EXPECT_EQ(Text("CONVERT(DATE, '03.04.20', 4)"), "2020-04-03");
  EXPECT_EQ(Text("CONVERT(DATE, '31-12-2020', 105)"), "2020-12-31");
  EXPECT_EQ(Text("CONVERT(DATE, '20.12.31', 2)"), "2020-12-31");
  EXPECT_EQ(Text("CONVERT(DATE, '20/12/31', 11)"), "2020-12-31");
  EXPECT_EQ(Text("CONVERT(DATE, '20201231', 112)"), "2020-12-31");
  EXPECT_EQ(Text("CONVERT(DATETIME2(3), '2020-12-31T10:11:12.345', 126)"), "2020-12-31 10:11:12.345");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(30), CONVERT(DATETIME, '31/12/2020 10:00', 103), 120)"),
            "2020-12-31 10:00:00");
  EXPECT_EQ(ErrorOf("SELECT CONVERT(DATETIME, '31/12/2020', 101)"), 242);
  EXPECT_EQ(ErrorOf("SELECT CONVERT(DATE, '12/31/2020', 103)"), 241);
}

TEST_F(DateTypesTest, FractionsAreRounded) {
  EXPECT_EQ(Text("CAST('12:00:00.1234567' AS TIME(0))"), "12:00:00");
  EXPECT_EQ(Text("CAST('12:00:00.5' AS TIME(0))"), "12:00:01");
  EXPECT_EQ(Text("CAST('12:00:00.1234567' AS TIME(3))"), "12:00:00.123");
  EXPECT_EQ(Text("CAST('12:00:00.1235' AS TIME(3))"), "12:00:00.124");
  EXPECT_EQ(Text("CAST('23:59:59.9999999' AS TIME(0))"), "00:00:00");
  EXPECT_EQ(Text("CAST('2020-12-31 23:59:59.9999999' AS DATETIME2(6))"), "2021-01-01 00:00:00.000000");
  EXPECT_EQ(Text("CAST(CAST('1800-05-05 01:01:01.55' AS DATETIME2) AS DATETIME2(1))"),
            "1800-05-05 01:01:01.6");
  // To 1/300 of a second, and what ticks cannot say is said in milliseconds.
  const std::string datetime = "CAST(CAST('2020-01-01 10:00:00.1259' AS DATETIME2) AS DATETIME)";
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(40), " + datetime + ", 121)"), "2020-01-01 10:00:00.127");
  EXPECT_EQ(Text("CAST(" + datetime + " AS DATETIME2)"), "2020-01-01 10:00:00.1270000");
  EXPECT_EQ(Text("CAST(" + datetime + " AS TIME(4))"), "10:00:00.1270");
  EXPECT_EQ(
      Scalar("CONVERT(VARCHAR(40), CAST(CAST('2020-01-01 10:00:29.999' AS DATETIME2) AS SMALLDATETIME), "
             "120)"),
      "2020-01-01 10:01:00");
  EXPECT_EQ(
      Scalar("CONVERT(VARCHAR(40), CAST(CAST('2020-01-01 10:00:29.998' AS DATETIME2) AS SMALLDATETIME), "
             "120)"),
      "2020-01-01 10:00:00");
}

TEST_F(DateTypesTest, ConversionsBetweenThem) {
  EXPECT_EQ(Text("CAST(CAST('10:11:12.5' AS TIME(1)) AS DATETIME2(2))"), "1900-01-01 10:11:12.50");
  EXPECT_EQ(Text("CAST(CAST('2020-02-03' AS DATE) AS DATETIME2(0))"), "2020-02-03 00:00:00");
  EXPECT_EQ(Text("CAST(CAST('2020-02-03 23:59:59.9999999' AS DATETIME2) AS DATE)"), "2020-02-03");
  EXPECT_EQ(Text("CAST(CAST('0001-02-03 23:59' AS DATETIME2) AS DATE)"), "0001-02-03");
  EXPECT_EQ(Text("CAST(CAST('1752-02-03 23:59' AS DATETIME2) AS TIME(0))"), "23:59:00");
  EXPECT_EQ(ErrorText("SELECT CAST(CAST('1752-12-31' AS DATETIME2) AS DATETIME)"),
            "242 1 The conversion of a datetime2 data type to a datetime data type resulted in an "
            "out-of-range value.");
  EXPECT_EQ(ErrorOf("SELECT CAST(CAST('2079-06-07' AS DATE) AS SMALLDATETIME)"), 242);
  EXPECT_EQ(ErrorText("SELECT CAST(GETDATE() AS INT), CAST(SYSDATETIME() AS INT)"),
            "529 1 Explicit conversion from data type datetime2 to int is not allowed.");
  EXPECT_EQ(ErrorText("SELECT CAST(1 AS TIME)"),
            "529 1 Explicit conversion from data type int to time is not allowed.");
  EXPECT_EQ(ErrorOf("SELECT CAST(CAST('10:00' AS TIME) AS DATE)"), 529);
  EXPECT_EQ(ErrorOf("SELECT CAST(CAST('2020-01-01' AS DATE) AS TIME)"), 529);
  EXPECT_EQ(ErrorText("DECLARE @t TIME = 1"), "206 1 Operand type clash: int is incompatible with time");
  EXPECT_EQ(Scalar("TRY_CAST('x' AS DATETIME2)"), "NULL");
}

TEST_F(DateTypesTest, StylesOfTheTextsThatTheyGive) {
  const auto styled = [this](const char* type, int style) {
    return Scalar("CONVERT(VARCHAR(40), CAST('2020-03-04 15:06:07.0891234' AS " + std::string(type) + "), " +
                  std::to_string(style) + ")");
  };
  struct Case {
    int style;
    const char* date;
    const char* time;
    const char* datetime2;
  };
  for (const Case& each : {
           Case{0, "Mar  4 2020", "3:06PM", "Mar  4 2020  3:06PM"},
           Case{100, "Mar  4 2020", "3:06PM", "Mar  4 2020  3:06PM"},
           Case{109, "Mar  4 2020", "3:06:07.0891PM", "Mar  4 2020  3:06:07.0891PM"},
           Case{113, "04 Mar 2020", "15:06:07.0891", "04 Mar 2020 15:06:07.0891"},
           Case{120, "2020-03-04", "15:06:07", "2020-03-04 15:06:07"},
           Case{121, "2020-03-04", "15:06:07.0891", "2020-03-04 15:06:07.0891"},
           Case{126, "2020-03-04", "15:06:07.0891", "2020-03-04T15:06:07.0891"},
           Case{127, "2020-03-04", "15:06:07.0891", "2020-03-04T15:06:07.0891"},
       }) {
    EXPECT_EQ(styled("DATE", each.style), each.date) << each.style;
    EXPECT_EQ(styled("TIME(4)", each.style), each.time) << each.style;
    EXPECT_EQ(styled("DATETIME2(4)", each.style), each.datetime2) << each.style;
  }
  EXPECT_EQ(styled("DATETIME2", 108), "15:06:07");
  EXPECT_EQ(styled("TIME", 108), "15:06:07");
  EXPECT_EQ(styled("TIME", 114), "15:06:07.0891234");
  EXPECT_EQ(styled("DATETIME2", 112), "20200304");
  EXPECT_EQ(styled("DATETIME2", 101), "03/04/2020");
  EXPECT_EQ(styled("DATE", 3), "04/03/20");
  EXPECT_EQ(styled("DATETIME2(0)", 121), "2020-03-04 15:06:07");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(40), CAST('2020-03-04' AS DATETIME2), 126)"), "2020-03-04T00:00:00");
  EXPECT_EQ(ErrorText("SELECT CONVERT(VARCHAR(40), CAST('10:00' AS TIME), 112)"),
            "281 1 112 is not a valid style number when converting from time to a character string.");
  EXPECT_EQ(ErrorOf("SELECT CONVERT(VARCHAR(40), CAST('2020-01-01' AS DATE), 108)"), 281);
  EXPECT_EQ(ErrorOf("SELECT CONVERT(VARCHAR(40), SYSDATETIME(), 77)"), 281);
  EXPECT_EQ(ErrorOf("SELECT CONVERT(VARCHAR(40), SYSDATETIME(), 130)"), 40510);
}

// "datetime2, datetime, smalldatetime, date, time": the one in front wins.
TEST_F(DateTypesTest, PrecedenceAndCommonTypes) {
  const auto common = [this](const char* left, const char* right) {
    return TypeOf("CASE WHEN 1 = 1 THEN CAST(NULL AS " + std::string(left) + ") ELSE CAST(NULL AS " + right +
                  ") END");
  };
  EXPECT_EQ(common("TIME(2)", "TIME(5)"), (Type{TypeId::Time, 0, 0, 5}));
  EXPECT_EQ(common("DATETIME2(2)", "DATE"), (Type{TypeId::DateTime2, 0, 0, 2}));
  EXPECT_EQ(common("DATETIME2(2)", "DATETIME"), (Type{TypeId::DateTime2, 0, 0, 3}));
  EXPECT_EQ(common("DATE", "DATETIME").id, TypeId::DateTime);
  EXPECT_EQ(common("DATE", "SMALLDATETIME").id, TypeId::SmallDateTime);
  EXPECT_EQ(common("TIME(3)", "VARCHAR(10)"), (Type{TypeId::Time, 0, 0, 3}));
  EXPECT_EQ(TypeOf("CAST('10:00' AS TIME)"), kTime7);
  EXPECT_EQ(TypeOf("CAST('10:00' AS DATETIME2)"), kDateTime27);
}

TEST_F(DateTypesTest, Comparisons) {
  EXPECT_EQ(Scalar("CASE WHEN CAST('10:00:00.1' AS TIME(1)) = CAST('10:00:00.1000000' AS TIME) THEN 1 END"),
            "1");
  EXPECT_EQ(Scalar("CASE WHEN CAST('2020-01-01' AS DATE) = CAST('2020-01-01' AS DATETIME2) THEN 1 END"), "1");
  EXPECT_EQ(
      Scalar("CASE WHEN CAST('2020-01-01 00:00:00.0000001' AS DATETIME2) > CAST('2020-01-01' AS DATETIME) "
             "THEN 1 END"),
      "1");
  EXPECT_EQ(Scalar("CASE WHEN CAST('1700-01-01' AS DATE) < CAST('2020-01-01' AS DATETIME2) THEN 1 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN CAST('09:30' AS TIME) BETWEEN '09:00' AND '10:00' THEN 1 END"), "1");
  EXPECT_EQ(ErrorText("SELECT 1 WHERE GETDATE() > CAST('10:00' AS TIME)"),
            "402 1 The data types datetime and time are incompatible in the greater than operator.");
  EXPECT_EQ(ErrorText("SELECT 1 WHERE CAST('2020-01-01' AS DATE) = 1"),
            "206 1 Operand type clash: int is incompatible with date");
}

TEST_F(DateTypesTest, NothingIsAddedToThem) {
  EXPECT_EQ(ErrorText("SELECT SYSDATETIME() + 1"),
            "206 1 Operand type clash: datetime2 is incompatible with int");
  EXPECT_EQ(ErrorText("DECLARE @d DATE SELECT @d - @d"),
            "8117 1 Operand data type date is invalid for subtract operator.");
  EXPECT_EQ(ErrorText("SELECT GETDATE() + CAST('10:00' AS TIME)"),
            "402 1 The data types datetime and time are incompatible in the add operator.");
  EXPECT_EQ(ErrorText("SELECT GETDATE() - SYSDATETIME()"),
            "402 1 The data types datetime and datetime2 are incompatible in the subtract operator.");
  EXPECT_EQ(ErrorOf("SELECT SUM(d) FROM (SELECT SYSDATETIME() AS d) x"), 8117);
}

TEST_F(DateTypesTest, TheClock) {
  EXPECT_EQ(TypeOf("SYSDATETIME()"), kDateTime27);
  EXPECT_EQ(TypeOf("SYSUTCDATETIME()"), kDateTime27);
  EXPECT_EQ(TypeOf("GETDATE()").id, TypeId::DateTime);
  EXPECT_EQ(TypeOf("CURRENT_TIMESTAMP").id, TypeId::DateTime);
  session_->SetNow(DateTime{43829, 300 * 60 + 1}); // 2020-01-01 00:01:00.003
  EXPECT_EQ(Text("SYSDATETIME()"), "2020-01-01 00:01:00.0030000");
  EXPECT_EQ(Scalar("GETDATE()"), "43829:18001");
  session_->SetNow(std::nullopt);
  EXPECT_EQ(Scalar("CASE WHEN ABS(DATEDIFF(SECOND, GETDATE(), SYSDATETIME())) <= 1 THEN 1 END"), "1");
  EXPECT_EQ(Scalar("CASE WHEN SYSDATETIME() = SYSDATETIME() THEN 1 END"), "1");
}

// The documentation's examples of DATEADD on '2007-01-01 13:10:10.1111111'.
TEST_F(DateTypesTest, DateAddKeepsTheType) {
  const auto add = [this](const char* part, const char* number) {
    return Text("DATEADD(" + std::string(part) + ", " + number +
                ", CAST('2007-01-01 13:10:10.1111111' AS DATETIME2))");
  };
  EXPECT_EQ(add("year", "1"), "2008-01-01 13:10:10.1111111");
  EXPECT_EQ(add("quarter", "1"), "2007-04-01 13:10:10.1111111");
  EXPECT_EQ(add("month", "13"), "2008-02-01 13:10:10.1111111");
  EXPECT_EQ(add("dayofyear", "365"), "2008-01-01 13:10:10.1111111");
  EXPECT_EQ(add("week", "5"), "2007-02-05 13:10:10.1111111");
  EXPECT_EQ(add("hour", "23"), "2007-01-02 12:10:10.1111111");
  EXPECT_EQ(add("minute", "59"), "2007-01-01 14:09:10.1111111");
  EXPECT_EQ(add("second", "59"), "2007-01-01 13:11:09.1111111");
  EXPECT_EQ(add("millisecond", "1"), "2007-01-01 13:10:10.1121111");
  EXPECT_EQ(add("microsecond", "2"), "2007-01-01 13:10:10.1111131");
  EXPECT_EQ(add("nanosecond", "49"), "2007-01-01 13:10:10.1111111");
  EXPECT_EQ(add("nanosecond", "50"), "2007-01-01 13:10:10.1111112");
  EXPECT_EQ(add("nanosecond", "150"), "2007-01-01 13:10:10.1111113");
  EXPECT_EQ(TypeOf("DATEADD(day, 1, CAST('2020-01-01' AS DATE))").id, TypeId::Date);
  EXPECT_EQ(TypeOf("DATEADD(day, 1, CAST('2020-01-01' AS DATETIME2(3)))"),
            (Type{TypeId::DateTime2, 0, 0, 3}));
  EXPECT_EQ(TypeOf("DATEADD(day, 1, '2020-01-01')").id, TypeId::DateTime);
  EXPECT_EQ(Text("DATEADD(hour, 2, CAST('23:30' AS TIME(0)))"), "01:30:00");
  EXPECT_EQ(Text("DATEADD(month, 1, CAST('2020-01-31' AS DATE))"), "2020-02-29");
  EXPECT_EQ(ErrorText("SELECT DATEADD(hour, 1, CAST('2020-01-01' AS DATE))"),
            "9810 1 The datepart hour is not supported by date function dateadd for data type date.");
  EXPECT_EQ(ErrorText("SELECT DATEADD(day, 1, CAST('10:00' AS TIME))"),
            "9810 1 The datepart day is not supported by date function dateadd for data type time.");
  EXPECT_EQ(ErrorOf("SELECT DATEADD(microsecond, 1, GETDATE())"), 9810);
  EXPECT_EQ(ErrorText("SELECT DATEADD(iso_week, 1, SYSDATETIME())"),
            "9806 1 The datepart iso_week is not supported by date function dateadd.");
  EXPECT_EQ(ErrorText("SELECT DATEADD(year, 8000, SYSDATETIME())"),
            "517 1 Adding a value to a 'datetime2' column caused an overflow.");
}

// "DATEDIFF returns 1 for each part": the documentation's two moments that are 100 ns apart.
TEST_F(DateTypesTest, DateDiffCountsBoundaries) {
  for (const char* part : {"year", "quarter", "month", "dayofyear", "day", "week", "hour", "minute", "second",
                           "millisecond", "microsecond"}) {
    const std::string call = std::string("DATEDIFF(") + part + ", ";
    // 2005-12-31 was a Saturday.
    EXPECT_EQ(Scalar(call + "'2005-12-31 23:59:59.9999999', '2006-01-01 00:00:00.0000000')"), "1") << part;
    EXPECT_EQ(Scalar(call + "CAST('2005-12-31 23:59:59.9999999' AS DATETIME2), CAST('2006-01-01' AS DATE))"),
              "1")
        << part;
  }
  EXPECT_EQ(Scalar("DATEDIFF(nanosecond, '2005-12-31 23:59:59.9999999', '2006-01-01 00:00:00')"), "100");
  EXPECT_EQ(Scalar("DATEDIFF(minute, CAST('09:15' AS TIME), CAST('17:45:59' AS TIME))"), "510");
  EXPECT_EQ(Scalar("DATEDIFF(hour, CAST('2020-01-01' AS DATE), CAST('2020-01-02' AS DATE))"), "24");
  EXPECT_EQ(Scalar("DATEDIFF(day, CAST('0001-01-01' AS DATE), CAST('9999-12-31' AS DATE))"), "3652058");
  EXPECT_EQ(
      Scalar("DATEDIFF(ms, CAST('2020-01-01' AS DATETIME), CAST('2020-01-01 00:00:00.003' AS DATETIME))"),
      "3");
  EXPECT_EQ(Scalar("DATEDIFF_BIG(microsecond, '2020-01-01', '2020-01-02')"), "86400000000");
  EXPECT_EQ(ErrorOf("SELECT DATEDIFF(microsecond, '2020-01-01', '2020-01-02')"), 535);
  EXPECT_EQ(ErrorOf("SELECT DATEDIFF_BIG(nanosecond, '0001-01-01', '9999-12-31')"), 535);
  EXPECT_EQ(ErrorOf("SELECT DATEDIFF(day, CAST('10:00' AS TIME), CAST('11:00' AS TIME))"), 9810);
  EXPECT_EQ(ErrorOf("SELECT DATEDIFF(isowk, GETDATE(), GETDATE())"), 9806);
}

// The documentation's example '2007-10-30 12:15:32.1234567'.
TEST_F(DateTypesTest, DatePartAndDateName) {
  const auto part = [this](const char* name) {
    const std::string moment = "CAST('2007-10-30 12:15:32.1234567' AS DATETIME2)";
    EXPECT_EQ(Scalar("DATEPART(" + std::string(name) + ", " + moment + ")"),
              Scalar("DATEPART(" + std::string(name) + ", '2007-10-30 12:15:32.1234567')"));
    return Scalar("DATENAME(" + std::string(name) + ", " + moment + ")");
  };
  EXPECT_EQ(part("year"), "2007");
  EXPECT_EQ(part("quarter"), "4");
  EXPECT_EQ(part("month"), "October");
  EXPECT_EQ(part("dayofyear"), "303");
  EXPECT_EQ(part("day"), "30");
  EXPECT_EQ(part("week"), "44");
  EXPECT_EQ(part("weekday"), "Tuesday");
  EXPECT_EQ(part("hour"), "12");
  EXPECT_EQ(part("minute"), "15");
  EXPECT_EQ(part("second"), "32");
  EXPECT_EQ(part("millisecond"), "123");
  EXPECT_EQ(part("microsecond"), "123456");
  EXPECT_EQ(part("nanosecond"), "123456700");
  EXPECT_EQ(part("isowk"), "44");
  // A year's first week has its first Thursday.
  EXPECT_EQ(Scalar("DATEPART(iso_week, '2004-12-31')"), "53");
  EXPECT_EQ(Scalar("DATEPART(iso_week, CAST('2010-01-03' AS DATETIME))"), "53");
  EXPECT_EQ(Scalar("DATEPART(iso_week, CAST('2010-01-04' AS DATE))"), "1");
  EXPECT_EQ(Scalar("DATEPART(microsecond, CAST('2020-01-01 00:00:00.997' AS DATETIME))"), "997000");
  EXPECT_EQ(
      Rows("SELECT YEAR(d), MONTH(d), DAY(d) FROM (SELECT CAST('0450-06-07 10:00' AS DATETIME2) AS d) x"),
      Lines({"450|6|7"}));
  EXPECT_EQ(Scalar("YEAR(CAST('1500-01-01' AS DATE))"), "1500");
  EXPECT_EQ(ErrorText("SELECT DATEPART(year, CAST('10:00' AS TIME))"),
            "9810 1 The datepart year is not supported by date function datepart for data type time.");
  EXPECT_EQ(ErrorOf("SELECT YEAR(CAST('10:00' AS TIME))"), 9810);
  EXPECT_EQ(ErrorOf("SELECT DATEPART(hour, CAST('2020-01-01' AS DATE))"), 9810);
  EXPECT_EQ(ErrorOf("SELECT DATENAME(iso_week, CAST('10:00' AS TIME))"), 9810);
  EXPECT_EQ(ErrorOf("SELECT DATEPART(tz, SYSDATETIME())"), 40510);
}

TEST_F(DateTypesTest, MadeOfParts) {
  EXPECT_EQ(Text("DATETIME2FROMPARTS(2011, 8, 15, 14, 23, 44, 5, 1)"), "2011-08-15 14:23:44.5");
  EXPECT_EQ(Text("DATETIME2FROMPARTS(2011, 8, 15, 14, 23, 44, 50, 2)"), "2011-08-15 14:23:44.50");
  EXPECT_EQ(Text("DATETIME2FROMPARTS(2011, 8, 15, 14, 23, 44, 500, 3)"), "2011-08-15 14:23:44.500");
  EXPECT_EQ(Text("TIMEFROMPARTS(23, 59, 59, 0, 0)"), "23:59:59");
  EXPECT_EQ(Text("TIMEFROMPARTS(14, 23, 44, 5, 7)"), "14:23:44.0000005");
  EXPECT_EQ(TypeOf("TIMEFROMPARTS(14, 23, 44, 5, 2)"), (Type{TypeId::Time, 0, 0, 2}));
  EXPECT_EQ(Scalar("TIMEFROMPARTS(14, NULL, 44, 5, 2)"), "NULL");
  EXPECT_EQ(ErrorText("SELECT TIMEFROMPARTS(14, 23, 44, 10, 1)"),
            "289 1 Cannot construct data type time, some of the arguments have values which are not valid.");
  EXPECT_EQ(ErrorOf("SELECT DATETIME2FROMPARTS(2011, 2, 29, 0, 0, 0, 0, 0)"), 289);
  EXPECT_EQ(ErrorOf("SELECT TIMEFROMPARTS(24, 0, 0, 0, 0)"), 289);
  EXPECT_EQ(ErrorText("SELECT TIMEFROMPARTS(14, 23, 44, 0, NULL)"),
            "10760 1 Scale argument is not valid. Valid expressions for data type time scale argument are "
            "integer constants and integer constant expressions.");
  EXPECT_EQ(ErrorOf("SELECT TIMEFROMPARTS(14, 23, 44, 0, 8)"), 1002);
  EXPECT_EQ(ErrorOf("SELECT TIMEFROMPARTS(14, 23, 44, 0)"), 174);
  EXPECT_EQ(TypeOf("EOMONTH(SYSDATETIME())").id, TypeId::Date);
  EXPECT_EQ(Text("EOMONTH(CAST('2020-02-03 10:00' AS DATETIME2))"), "2020-02-29");
}

TEST_F(DateTypesTest, TheirDeclarations) {
  EXPECT_EQ(ErrorText("DECLARE @t TIME(8)"), "1002 1 Line 1: Specified scale 8 is invalid.");
  EXPECT_EQ(ErrorText("DECLARE @d DATE(3)"),
            "2716 1 Column, parameter, or variable #1: Cannot specify a column width on data type date.");
  EXPECT_EQ(ErrorOf("DECLARE @d DATETIMEOFFSET"), 40510);
  EXPECT_EQ(ErrorText("SELECT ISDATE(SYSDATETIME())"),
            "8116 1 Argument data type datetime2 is invalid for argument 1 of isdate function.");
  EXPECT_EQ(Rows("SELECT ISDATE('2020-01-01 10:00:00.123'), ISDATE('2020-01-01 10:00:00.1234')"),
            Lines({"1|0"}));
  // As many bytes as the digits need.
  EXPECT_EQ(Rows("SELECT DATALENGTH(CAST('10:00' AS TIME(2))), DATALENGTH(CAST('10:00' AS TIME(4))), "
                 "DATALENGTH(CAST('10:00' AS TIME)), DATALENGTH(CAST('10:00' AS DATETIME2(0))), "
                 "DATALENGTH(CAST('10:00' AS DATETIME2(3))), DATALENGTH(SYSDATETIME())"),
            Lines({"3|4|5|6|7|8"}));
}

TEST_F(DateTypesTest, ColumnsKeysAndIndexes) {
  Must("CREATE TABLE t (d DATETIME2(3) NOT NULL PRIMARY KEY, t TIME(0) NULL DEFAULT '08:00', "
       "o DATE NULL, CHECK (t < '20:00'), CHECK (YEAR(d) > 1000)) CREATE INDEX ix ON t (t, o)");
  Must("INSERT INTO t (d, t, o) VALUES ('2020-01-02 10:00:00.1234', '09:30', '2020-01-02'), "
       "('1500-12-31', NULL, NULL), (CAST('2020-01-02' AS DATE), '07:00:00.5', '1500-01-01') "
       "INSERT INTO t (d) VALUES ('2021-01-01')");
  EXPECT_EQ(Rows("SELECT d, t FROM t ORDER BY d"),
            Lines({"1500-12-31 00:00:00.000|NULL", "2020-01-02 00:00:00.000|07:00:01",
                   "2020-01-02 10:00:00.123|09:30:00", "2021-01-01 00:00:00.000|08:00:00"}));
  EXPECT_EQ(Rows("SELECT MIN(t), MAX(d), COUNT(DISTINCT t) FROM t"),
            Lines({"07:00:01|2021-01-01 00:00:00.000|3"}));
  EXPECT_EQ(Rows("SELECT CAST(d AS DATE), COUNT(*) FROM t WHERE d >= '2000-01-01' GROUP BY CAST(d AS DATE) "
                 "ORDER BY 2 DESC"),
            Lines({"43830:0|2", "44195:0|1"}));
  EXPECT_EQ(Rows("SELECT o FROM t WHERE t = '07:00:01'"), Lines({"-146097:0"}));
  EXPECT_EQ(ErrorOf("INSERT INTO t (d) VALUES ('2020-01-02 10:00:00.1231')"), 2627);
  EXPECT_EQ(ErrorOf("INSERT INTO t (d, t) VALUES ('2022-01-01', '20:00')"), 547);
  EXPECT_EQ(ErrorOf("INSERT INTO t (d) VALUES ('0900-01-01')"), 547);
  EXPECT_EQ(Rows("SELECT COLUMN_NAME, DATA_TYPE FROM INFORMATION_SCHEMA.COLUMNS ORDER BY ORDINAL_POSITION"),
            Lines({"d|datetime2", "t|time", "o|date"}));
  EXPECT_EQ(Rows("SELECT name, max_length FROM sys.columns ORDER BY column_id"),
            Lines({"d|7", "t|3", "o|3"}));
}

TEST_F(DateTypesTest, VariablesTablesAndFunctions) {
  EXPECT_EQ(Rows("DECLARE @t TABLE (d DATETIME2(1), t TIME(2)) INSERT @t VALUES ('2020-01-01 10:00:00.25', "
                 "'10:00:00.255') SELECT d, t FROM @t"),
            Lines({"2020-01-01 10:00:00.3|10:00:00.26"}));
  Must("CREATE FUNCTION later (@d DATETIME2(2), @s INT) RETURNS DATETIME2(0) AS BEGIN "
       "RETURN DATEADD(second, @s, @d) END");
  EXPECT_EQ(Scalar("dbo.later('2020-01-01 00:00:00.506', 1)"), "2020-01-01 00:00:02");
  Must("CREATE PROCEDURE p @t TIME(3), @o TIME(1) OUTPUT AS SET @o = @t");
  EXPECT_EQ(Rows("DECLARE @o TIME(1) EXEC p '01:02:03.4567', @o OUTPUT SELECT @o"), Lines({"01:02:03.5"}));
  EXPECT_EQ(
      Rows("DECLARE @d DATETIME2(3) = '2020-01-01' DECLARE c CURSOR LOCAL FOR SELECT @d OPEN c FETCH c"),
      Lines({"2020-01-01 00:00:00.000"}));
  EXPECT_EQ(Rows("SELECT CONCAT(CAST('10:00' AS TIME(0)), '|', CAST('2020-01-01' AS DATE))"),
            Lines({"10:00:00|2020-01-01"}));
  EXPECT_EQ(Rows("SELECT d, LAG(d) OVER (ORDER BY d) FROM (VALUES (CAST('2020-01-01' AS DATETIME2(0))), "
                 "(CAST('0500-01-01' AS DATETIME2(0)))) x (d) ORDER BY d"),
            Lines({"0500-01-01 00:00:00|NULL", "2020-01-01 00:00:00|0500-01-01 00:00:00"}));
}

// Outside they are texts.
TEST_F(DateTypesTest, ParametersComeAndGoAsTexts) {
  std::vector<Parameter> parameters(1);
  parameters[0].name = "@d";
  parameters[0].type = kDateTime27;
  parameters[0].output = true;
  parameters[0].value.kind = Value::Kind::Text;
  parameters[0].value.text = "2020-01-31 10:00:00.1234567";
  Output output;
  EXPECT_TRUE(session_->Execute("SELECT @d SET @d = DATEADD(nanosecond, 100, @d)", parameters, output));
  EXPECT_EQ(output.results, std::vector<Lines>({{"2020-01-31 10:00:00.1234567"}}));
  EXPECT_EQ(ToText(parameters[0].value), "2020-01-31 10:00:00.1234568");
  parameters[0].value.kind = Value::Kind::DateTime;
  parameters[0].value.datetime = {43829, 1};
  Output again;
  EXPECT_TRUE(session_->Execute("SELECT @d", parameters, again));
  EXPECT_EQ(again.results, std::vector<Lines>({{"2020-01-01 00:00:00.0030000"}}));
}

} // namespace
} // namespace tsql::test
