#include "cli/SourceText.h"

#include <gtest/gtest.h>

#include "cli/CommandLine.h"

namespace bomcall {
namespace {

std::string Decode(const std::string& bytes, Encoding encoding = Encoding::Unicode) {
  try {
    return DecodeSourceText(bytes, L"a.json", encoding);
  } catch (const UsageError& error) {
    return std::string("refused: ") + error.what();
  }
}

TEST(SourceText, ReadsUtf8WithAndWithoutItsMark) {
  EXPECT_EQ(Decode("[\"轮\"]"), "[\"轮\"]");
  EXPECT_EQ(Decode("\xEF\xBB\xBF[\"轮\"]"), "[\"轮\"]");
  EXPECT_EQ(Decode(""), "");
}

TEST(SourceText, ReadsUtf16OfBothOrders) {
  EXPECT_EQ(Decode(std::string("\xFF\xFE[\0\x6E\x8F]\0", 8)), "[轮]");
  EXPECT_EQ(Decode(std::string("\xFE\xFF\0[\x8F\x6E\0]", 8)), "[轮]");
  EXPECT_EQ(Decode(std::string("[\0\x6E\x8F]\0", 6)), "[轮]");
  EXPECT_EQ(Decode(std::string("\0[\x8F\x6E\0]", 6)), "[轮]");
  EXPECT_EQ(Decode(std::string("\xFF\xFE[", 3)), "refused: a.json is UTF-16, but ends amid a character");
  EXPECT_EQ(Decode(std::string("\xFF\xFE\0\0", 4)), "refused: a.json is UTF-32: save it as UTF-8");
}

TEST(SourceText, ReadsGbkWhenAsked) {
  EXPECT_EQ(Decode("{\n\"a\": \"\xC2\xD6\"}"),
            "refused: a.json, line 2, is not UTF-8: save it as UTF-8, or add --encoding gbk if it is GBK");
  EXPECT_EQ(Decode("{\n\"a\": \"\xC2\xD6\"}", Encoding::Gbk), "{\n\"a\": \"轮\"}");
  EXPECT_EQ(Decode("\xEF\xBB\xBF轮", Encoding::Gbk), "轮");
}

TEST(SourceText, SaysThatAFileCannotBeRead) {
  EXPECT_THROW(ReadSourceText(L"Z:/no/such/file", Encoding::Unicode), UsageError);
}

} // namespace
} // namespace bomcall
