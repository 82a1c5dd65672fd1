#include "cli/Json.h"

#include <gtest/gtest.h>

#include "com/Object.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

TEST(Json, MakesCollectionsOfObjectsAndArrays) {
  const Object vector =
      ReadJson(R"([{"FInterID": 7, "名": "值", "inner": {"x": null}}, "text", 1.5, true])").AsObject();
  ASSERT_EQ(vector.Get(L"Count").AsLong(), 4);
  const Object first = vector.Get(L"Item", 1).AsObject();
  EXPECT_EQ(first.Get(L"Value", L"FInterID"), Variant(7));
  EXPECT_EQ(first.Get(L"Value", L"名"), Variant(L"值"));
  EXPECT_TRUE(first.Get(L"Value", L"inner").AsObject().Get(L"Value", L"x").IsNull());
  EXPECT_EQ(vector.Get(L"Item", 2), Variant(L"text"));
  EXPECT_EQ(vector.Get(L"Item", 3).type(), VT_DECIMAL);
  EXPECT_EQ(vector.Get(L"Item", 3).AsDouble(), 1.5);
  EXPECT_EQ(vector.Get(L"Item", 4), Variant(true));
}

TEST(Json, ReadsNumbersAsTheyAre) {
  EXPECT_EQ(ReadJson("2147483647"), Variant(2147483647));
  for (const auto& [text, type] :
       std::vector<std::pair<std::string, VARTYPE>>{{"2147483648", VT_I8},
                                                    {"-9223372036854775808", VT_I8},
                                                    {"18446744073709551615", VT_DECIMAL},
                                                    {"0.1234567890123456789012345678", VT_DECIMAL},
                                                    {"-12345678901234567.89", VT_DECIMAL},
                                                    {"1e+300", VT_R8}}) {
    EXPECT_EQ(ReadJson(text).type(), type) << text;
    EXPECT_EQ(JsonLine(ReadJson(text)), text);
  }
  EXPECT_EQ(JsonLine(ReadJson("1.500")), "1.5");
  EXPECT_EQ(JsonLine(ReadJson("-0.0")), "0");
}

std::string Refusal(const std::string& text) {
  try {
    ReadJson(text);
  } catch (const JsonError& error) {
    return (error.reason() == JsonError::Reason::Syntax ? "syntax " : "value ") + std::string(error.what());
  }
  return "(none)";
}

TEST(Json, SaysInWhichLineWhatIsWrong) {
  EXPECT_EQ(Refusal("[1,\n 1e400\n]"), "value line 2, column 6: the number 1e400 is too great");
  EXPECT_EQ(Refusal("[\n\n18446744073709551616]"),
            "value line 3, column 20: the number 18446744073709551616 has more than 64 bits");
  EXPECT_EQ(
      Refusal("0.12345678901234567890123456789"),
      "value line 1, column 31: the number 0.12345678901234567890123456789 has more digits than a decimal "
      "holds");
  EXPECT_EQ(Refusal("1e-400"), "value line 1, column 6: the number 1e-400 is too small");
  EXPECT_EQ(Refusal(std::string(100000, '[')).find("value line 1, column 501: "), 0u);
  EXPECT_EQ(Refusal("{\"a\":\n[1,\n 2,]}").find("syntax line 3, column 4: "), 0u);
  EXPECT_EQ(Refusal("").find("syntax line 1, column 1: "), 0u);
}

TEST(Json, ShowsCollectionsInDepth) {
  const char* text = R"({"b":[1,"x",null,true,{"c":1.5}],"a":"值","none":[],"empty":{}})";
  EXPECT_EQ(JsonLine(ReadJson(text)), text);
  EXPECT_EQ(JsonText(ReadJson(R"({"b":[1,{}],"a":[]})")),
            "{\n  \"b\": [\n    1,\n    {}\n  ],\n  \"a\": []\n}");
}

TEST(Json, ShowsRowsWithTheirTypes) {
  const mbom::test::TestDatabase database;
  const Object connection = Object::Create(L"ADODB.Connection");
  connection.Call(L"Open", database.Dsn());
  const Variant rows = connection.Call(
      L"Execute",
      L"SELECT 1 AS i, CAST(1.50 AS decimal(9,2)) AS d, CAST('2020-03-05' AS datetime) AS t, "
      L"CAST('2020-03-05 18:00:00' AS datetime) AS u, NULL AS n, CAST(1 AS bit) AS b, N'值' AS s, "
      L"CAST(12345678901234567.0123456789 AS decimal(28,10)) AS e, CAST(-922337203685477.5807 AS money) AS m, "
      L"CAST(9223372036854775807 AS bigint) AS l, 0x00FF AS x, 2 AS i");
  EXPECT_EQ(JsonLine(rows), R"([{"i":1,"d":1.5,"t":"2020-03-05","u":"2020-03-05 18:00:00","n":null,"b":true,)"
                            R"("s":"值","e":12345678901234567.0123456789,"m":-922337203685477.5807,)"
                            R"("l":9223372036854775807,"x":"0x00FF","i_2":2}])");
}

TEST(Json, ShowsNothingAsNull) {
  EXPECT_EQ(JsonLine(Variant(Object())), "null");
  EXPECT_EQ(JsonLine(Variant()), "null");
}

} // namespace
} // namespace bomcall
