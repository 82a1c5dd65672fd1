// The database's code page: char and varchar count its bytes and hold only its characters.
#include "tsql/values/CodePage.h"

#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class CodePageTest : public EngineTest {};

// Bytes of GBK from its standard: the first and last characters of GB 2312 and of the extension, and the euro
// sign.
TEST_F(CodePageTest, BytesOfCharacters) {
  EXPECT_EQ(BytesOfText("A中", false), "A\xD6\xD0");
  EXPECT_EQ(BytesOfText("啊齄丂", false), "\xB0\xA1\xF7\xFE\x81\x40");
  EXPECT_EQ(BytesOfText("Я€", false), "\xA7\xC1\x80");
  EXPECT_EQ(BytesOfText("Ä한𠮷", false), "????"); // the last one is two units of UTF-16
  EXPECT_EQ(TextOfBytes("A\xD6\xD0\x80", false), "A中€");
  EXPECT_EQ(TextOfBytes("\xD6", false), "?");
  EXPECT_EQ(TextOfBytes("\xD6z\xFFz", false), "謟?z");
  EXPECT_EQ(BytesOfText("中𠮷", true), std::string("\x2D\x4E\x42\xD8\xB7\xDF"));
  EXPECT_EQ(TextOfBytes("\x2D\x4E\x42\xD8\xB7\xDF", true), "中𠮷");
}

TEST_F(CodePageTest, EveryCharacterOfThePageComesBack) {
  size_t characters = 0;
  for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
    for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
      const std::string bytes = {static_cast<char>(lead), static_cast<char>(trail)};
      const std::string text = TextOfBytes(bytes, false);
      if (text.starts_with('?')) continue;
      ++characters;
      ASSERT_EQ(BytesOfText(text, false), bytes);
      ASSERT_EQ(PageSize(text), 2U);
    }
  }
  EXPECT_EQ(characters, 21791U); // as the page's documentation counts them, without the areas for private use
}

TEST_F(CodePageTest, Sizes) {
  EXPECT_EQ(PageSize(""), 0U);
  EXPECT_EQ(PageSize("a物料"), 5U);
  EXPECT_EQ(PageOffset("a物料", 2), 1U); // a character is not cut in two
  EXPECT_EQ(PageOffset("a物料", 3), 4U);
  EXPECT_EQ(PageOffset("a物料", 9), 7U);
  EXPECT_EQ(KeepPage("aÄ料"), "a?料");
}

TEST_F(CodePageTest, LengthsOfTexts) {
  EXPECT_EQ(Scalar("DATALENGTH('物料ab')"), "6");
  EXPECT_EQ(Scalar("DATALENGTH(N'物料ab')"), "8");
  EXPECT_EQ(Scalar("LEN('物料ab')"), "4");
  EXPECT_EQ(Scalar("CAST('物料ab' AS VARCHAR(4))"), "物料");
  EXPECT_EQ(Scalar("CAST('物料ab' AS VARCHAR(3))"), "物");
  EXPECT_EQ(Scalar("CAST(N'物料ab' AS VARCHAR(5))"), "物料a");
  EXPECT_EQ(Scalar("CAST('物料ab' AS NVARCHAR(3))"), "物料a");
  EXPECT_EQ(Scalar("CAST('物' AS CHAR(5)) + '|'"), "物   |");
  EXPECT_EQ(Scalar("DATALENGTH(CAST('物料' AS CHAR(3)))"), "3");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(2), '料号')"), "料");
  EXPECT_EQ(Rows("DECLARE @v VARCHAR(3), @c CHAR(4) SELECT @v = '物料', @c = '号' SELECT @v, @c + '|'"),
            Lines({"物|号  |"}));
}

TEST_F(CodePageTest, ColumnsRefuseWhatHasTooManyBytes) {
  Must("CREATE TABLE t (v VARCHAR(4) NULL, c CHAR(4) NULL, n NVARCHAR(4) NULL)");
  Must("INSERT INTO t VALUES ('物料', '号', N'物料编码')");
  EXPECT_EQ(Rows("SELECT v, c + '|', n, DATALENGTH(v), DATALENGTH(c), DATALENGTH(n) FROM t"),
            Lines({"物料|号  ||物料编码|4|4|8"}));
  EXPECT_EQ(ErrorOf("INSERT INTO t (v) VALUES ('物料x')"), 8152);
  EXPECT_EQ(ErrorOf("INSERT INTO t (c) VALUES (N'物料x')"), 8152);
  EXPECT_EQ(ErrorOf("UPDATE t SET v = n"), 8152);
  EXPECT_EQ(ErrorOf("INSERT INTO t (v) SELECT n FROM t"), 8152);
  EXPECT_EQ(ErrorOf("INSERT INTO t (n) VALUES (N'物料编码x')"), 8152);
  Must("INSERT INTO t (v) VALUES ('物料  ')"); // blanks at the end are cut
}

TEST_F(CodePageTest, WhatThePageLacksBecomesAQuestionMark) {
  EXPECT_EQ(Scalar("'aÄ한'"), "a??");
  EXPECT_EQ(Scalar("N'aÄ한'"), "aÄ한");
  EXPECT_EQ(Scalar("CAST(N'Ä物' AS VARCHAR(10))"), "?物");
  Must("CREATE TABLE t (v VARCHAR(10), n NVARCHAR(10)) INSERT INTO t VALUES (N'Ä', N'Ä')");
  EXPECT_EQ(Rows("SELECT v, n FROM t"), Lines({"?|Ä"}));
  Must("INSERT INTO t SELECT n, n FROM t");
  EXPECT_EQ(Rows("SELECT v FROM t"), Lines({"?", "?"}));
  EXPECT_EQ(Scalar("N'x' + 'Ä'"), "x?");
  EXPECT_EQ(Scalar("REPLACE('abc', 'b', N'Ä')"), "aÄc");
  EXPECT_EQ(Scalar("STUFF(N'aÄc', 1, 1, 'x')"), "xÄc");
  // A letter whose other case the page lacks stays as it is.
  EXPECT_EQ(Scalar("UPPER('é')"), "é");
  EXPECT_EQ(Scalar("UPPER(N'é')"), "É");
  EXPECT_EQ(Scalar("UPPER('жя')"), "ЖЯ");
}

TEST_F(CodePageTest, FunctionsCountCharacters) {
  EXPECT_EQ(Scalar("LEFT('物料编码', 3)"), "物料编");
  EXPECT_EQ(Scalar("RIGHT('物料编码', 2)"), "编码");
  EXPECT_EQ(Scalar("SUBSTRING('物料编码', 2, 2)"), "料编");
  EXPECT_EQ(Scalar("CHARINDEX('码', '物料编码')"), "4");
  EXPECT_EQ(Scalar("REVERSE('物料')"), "料物");
  EXPECT_EQ(Scalar("STUFF('物料编码', 2, 2, 'x')"), "物x码");
  // A part that is all of the text still has its bytes.
  EXPECT_EQ(Scalar("DATALENGTH(CAST(LEFT('物料编码', 2) AS VARCHAR(2)))"), "2");
  EXPECT_EQ(Scalar("DATALENGTH(REPLICATE('物', 5000))"), "8000");
  EXPECT_EQ(Scalar("DATALENGTH(REPLICATE(N'物', 5000))"), "8000");
  EXPECT_EQ(Scalar("ASCII('中')"), "214"); // its first byte in the page
  EXPECT_EQ(Scalar("ASCII(N'Ä')"), "63");
  EXPECT_EQ(Scalar("CHAR(65) + CHAR(97)"), "Aa");
  EXPECT_EQ(Scalar("CHAR(256)"), "NULL");
  EXPECT_EQ(Scalar("NCHAR(20013)"), "中");
  EXPECT_EQ(ErrorText("SELECT CHAR(214)"),
            "40510 1 CHAR of a part of a character of the code page is not supported.");
}

TEST_F(CodePageTest, BinaryHoldsThePagesBytes) {
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), CAST('中A' AS VARBINARY(10)), 1)"), "0xD6D041");
  EXPECT_EQ(Scalar("CAST(0xD6D041 AS VARCHAR(10))"), "中A");
  EXPECT_EQ(Scalar("CONVERT(VARCHAR(20), CAST(N'中A' AS VARBINARY(10)), 1)"), "0x2D4E4100");
  EXPECT_EQ(Scalar("CAST(0x2D4E4100 AS NVARCHAR(10))"), "中A");
}

TEST_F(CodePageTest, ParametersOfTheClient) {
  std::vector<Parameter> parameters(1);
  parameters[0].name = "@p";
  parameters[0].type = {.id = TypeId::VarChar, .length = 5};
  parameters[0].value.kind = Value::Kind::Text;
  parameters[0].value.text = "Ä物料编";
  EXPECT_EQ(RunOn(*session_, "SELECT @p, DATALENGTH(@p)", parameters).results,
            std::vector<Lines>({{"?物料|5"}}));
}

} // namespace
} // namespace tsql::test
