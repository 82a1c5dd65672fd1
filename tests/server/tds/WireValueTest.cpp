// Values of each type on their way out and in again: the bytes that the protocol wants, and the same value.
#include "tests/server/tds/WireValue.h"

#include <gtest/gtest.h>

namespace tds {
namespace {

using Kind = tsql::Value::Kind;

// What the engine makes of a literal.
struct Taken : tsql::ResultSink {
  void BeginRows(std::span<const tsql::Column> columns) override { type = columns[0].type; }
  void Row(std::span<const tsql::Value> values) override {
    ByteWriter out;
    PutType(out, type);
    PutValue(out, type, values[0]);
    bytes = out.data();
  }
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override { ADD_FAILURE() << error.what(); }
  tsql::Type type;
  std::string bytes;
};

std::string Hex(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    text += kDigits[static_cast<uint8_t>(byte) >> 4];
    text += kDigits[static_cast<uint8_t>(byte) & 15];
  }
  return text;
}

class WireValueTest : public testing::Test {
 protected:
  // The type and value of an expression, in hexadecimal digits.
  std::string Wire(const std::string& expression) {
    Taken taken;
    session_->Execute("SELECT " + expression, {}, taken);
    return Hex(taken.bytes);
  }
  // The text of the same value after it came in again.
  std::string Back(const std::string& expression) {
    Taken taken;
    session_->Execute("SELECT " + expression, {}, taken);
    ByteReader in(taken.bytes);
    std::vector<tsql::Parameter> parameters(1);
    parameters[0].name = "@x";
    TakeTypeAndValue(in, parameters[0]);
    EXPECT_TRUE(in.IsAtEnd()) << expression;
    struct Text : Taken {
      void Row(std::span<const tsql::Value> values) override { text = std::string(values[0].text); }
      std::string text;
    } back;
    session_->Execute("SELECT CASE WHEN @x = " + expression +
                          " THEN 'same' WHEN @x IS NULL THEN 'null' ELSE 'other' END",
                      parameters, back);
    return back.text;
  }

  std::unique_ptr<tsql::Session> session_ =
      tsql::Session::Open(tsql::Database::Open(":memory:wire", tsql::OpenMode::Create));
};

TEST_F(WireValueTest, WritesTheBytesOfTheProtocol) {
  EXPECT_EQ(Wire("CAST(-2 AS int)"), "260404FEFFFFFF");
  EXPECT_EQ(Wire("CAST(NULL AS int)"), "260400");
  EXPECT_EQ(Wire("CAST(1 AS bit)"), "68010101");
  // -123.45 as decimal(9,2): four bytes behind the sign.
  EXPECT_EQ(Wire("CAST(-123.45 AS decimal(9,2))"), "6A0509020500"
                                                   "39300000");
  // One ten-thousandth less than nothing: all bits are set, the high half first.
  EXPECT_EQ(Wire("CAST(-0.0001 AS money)"), "6E0808"
                                            "FFFFFFFF"
                                            "FFFFFFFF");
  EXPECT_EQ(Wire("CAST(1.5 AS float)"), "6D0808000000000000F83F");
  // A day and a second after 1900-01-01.
  EXPECT_EQ(Wire("CAST('1900-01-02 00:00:01' AS datetime)"), "6F0808"
                                                             "01000000"
                                                             "2C010000");
  EXPECT_EQ(Wire("CAST('1900-01-02 00:05:00' AS smalldatetime)"), "6F0404"
                                                                  "0100"
                                                                  "0500");
  EXPECT_EQ(Wire("CAST('0001-01-02' AS date)"), "2803010000");
  // One character of two bytes in the code page, and the collation.
  EXPECT_EQ(Wire("CAST('自' AS varchar(4))"), "A70400"
                                              "0408D00000"
                                              "0200"
                                              "D7D4");
  EXPECT_EQ(Wire("CAST(N'自' AS nvarchar(4))"), "E70800"
                                                "0408D00000"
                                                "0200"
                                                "EA81");
  EXPECT_EQ(Wire("CAST(NULL AS nvarchar(4))"), "E70800"
                                               "0408D00000"
                                               "FFFF");
  EXPECT_EQ(Wire("CAST('ab' AS varchar(max))"), "A7FFFF"
                                                "0408D00000"
                                                "0200000000000000"
                                                "02000000"
                                                "6162"
                                                "00000000");
  EXPECT_EQ(Wire("CAST(NULL AS varchar(max))"), "A7FFFF"
                                                "0408D00000"
                                                "FFFFFFFFFFFFFFFF");
  EXPECT_EQ(Wire("CAST('6F9619FF-8B86-D011-B42D-00C04FC964FF' AS uniqueidentifier)"),
            "241010"
            "FF19966F868B11D0B42D00C04FC964FF");
}

TEST_F(WireValueTest, TakesBackWhatItWrote) {
  for (const char* expression : {"CAST(255 AS tinyint)",
                                 "CAST(-32768 AS smallint)",
                                 "CAST(-2147483648 AS int)",
                                 "CAST(9007199254740993 AS bigint)",
                                 "CAST(1 AS bit)",
                                 "CAST(-12345.6789 AS decimal(20,4))",
                                 "CAST(99999999999999999999999999999999999999 AS decimal(38,0))",
                                 "CAST(-922337203685477.5808 AS money)",
                                 "CAST(214748.3647 AS smallmoney)",
                                 "CAST(0.1 AS float)",
                                 "CAST(0.5 AS real)",
                                 "CAST('2026-03-05 14:30:09.123' AS datetime)",
                                 "CAST('2026-03-05 14:30' AS smalldatetime)",
                                 "CAST('9999-12-31' AS date)",
                                 "CAST('自行车 it''s' AS varchar(30))",
                                 "CAST(N'自行车' AS nvarchar(30))",
                                 "CAST('ab' AS char(4))",
                                 "CAST(N'ab' AS nchar(4))",
                                 "CAST(0x00FF AS varbinary(4))",
                                 "CAST(0x01 AS binary(2))",
                                 "CAST(N'long' AS nvarchar(max))",
                                 "CAST('' AS varchar(max))",
                                 "CAST('6F9619FF-8B86-D011-B42D-00C04FC964FF' AS uniqueidentifier)"})
    EXPECT_EQ(Back(expression), "same") << expression;
  for (const char* type : {"tinyint", "bit", "decimal(9,2)", "money", "real", "datetime", "date",
                           "varchar(9)", "nvarchar(max)", "varbinary(9)", "uniqueidentifier"})
    EXPECT_EQ(Back("CAST(NULL AS " + std::string(type) + ")"), "null") << type;
}

TEST_F(WireValueTest, TakesAMomentInTenMillionths) {
  // 2026-03-05 is day 739679 of the calendar; noon and a third of a hundredth.
  ByteWriter out;
  out.PutBytes(std::string_view("\x2A\x07\x08", 3));
  constexpr uint64_t kNoon = 12ULL * 3600 * 10'000'000 + 33'333;
  out.PutBytes({reinterpret_cast<const char*>(&kNoon), 5});
  constexpr uint32_t kDay = 739679;
  out.PutBytes({reinterpret_cast<const char*>(&kDay), 3});
  tsql::Parameter parameter;
  ByteReader in(out.data());
  TakeTypeAndValue(in, parameter);
  EXPECT_EQ(parameter.value.datetime, (tsql::DateTime{46084, 12 * 3600 * 300 + 1}));
}

} // namespace
} // namespace tds
