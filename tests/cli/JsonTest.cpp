#include "cli/Json.h"

#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

TEST(Json, MakesCollectionsOfObjectsAndArrays) {
  const Object vector =
      FromJson(Json::parse(R"([{"FInterID": 7, "名": "值", "inner": {"x": null}}, "text", 1.5, true])"))
          .AsObject();
  ASSERT_EQ(vector.Get(L"Count").AsLong(), 4);
  const Object first = vector.Get(L"Item", 1).AsObject();
  EXPECT_EQ(first.Get(L"Value", L"FInterID"), Variant(7));
  EXPECT_EQ(first.Get(L"Value", L"名"), Variant(L"值"));
  EXPECT_TRUE(first.Get(L"Value", L"inner").AsObject().Get(L"Value", L"x").IsNull());
  EXPECT_EQ(vector.Get(L"Item", 2), Variant(L"text"));
  EXPECT_EQ(vector.Get(L"Item", 3), Variant(1.5));
  EXPECT_EQ(vector.Get(L"Item", 4), Variant(true));
}

TEST(Json, KeepsNumbersThatDoNotFitAsDoubles) {
  EXPECT_EQ(FromJson(Json::parse("2147483647")), Variant(2147483647));
  EXPECT_EQ(FromJson(Json::parse("2147483648")), Variant(2147483648.0));
}

TEST(Json, ShowsCollectionsInDepth) {
  const char* text = R"({"b":[1,"x",null,true,{"c":1.5}],"a":"值"})";
  EXPECT_EQ(ToJson(FromJson(Json::parse(text))).dump(), text);
}

TEST(Json, ShowsRowsWithTheirTypes) {
  const mbom::test::TestDatabase database;
  const Object connection = Object::Create(L"ADODB.Connection");
  connection.Call(L"Open", database.Dsn());
  const Variant rows = connection.Call(
      L"Execute",
      L"SELECT 1 AS i, CAST(1.50 AS decimal(9,2)) AS d, CAST('2020-03-05' AS datetime) AS t, "
      L"CAST('2020-03-05 18:00:00' AS datetime) AS u, NULL AS n, CAST(1 AS bit) AS b, N'值' AS s");
  const Json json = ToJson(rows);
  ASSERT_EQ(json.size(), 1u);
  EXPECT_EQ(json[0]["i"], 1);
  EXPECT_EQ(json[0]["d"], 1.5);
  EXPECT_EQ(json[0]["t"], "2020-03-05");
  EXPECT_EQ(json[0]["u"], "2020-03-05 18:00:00");
  EXPECT_TRUE(json[0]["n"].is_null());
  EXPECT_EQ(json[0]["b"], true);
  EXPECT_EQ(json[0]["s"], "值");
}

TEST(Json, ShowsNothingAsNull) {
  EXPECT_TRUE(ToJson(Variant(Object())).is_null());
}

} // namespace
} // namespace bomcall
