// STRING_AGG and STRING_SPLIT, and the other functions that scripts put texts together and apart with, as the
// server's documentation has them.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class StringAggregateTest : public EngineTest {
 protected:
  StringAggregateTest() {
    Must("CREATE TABLE t (g INT, n INT NULL, s VARCHAR(20) NULL, w NVARCHAR(20) NULL)");
    Must("INSERT INTO t VALUES (1, 3, 'c', N'中'), (1, 1, 'a', N'x'), (1, 2, NULL, NULL), (2, 5, 'B', N'y'), "
         "(2, 4, 'b', N'z'), (3, 6, NULL, NULL)");
  }
  Type TypeOf(std::string_view query) {
    const Output output = Run(query);
    return output.columns.empty() ? Type{} : output.columns[0][0].type;
  }
};

// "Null values are ignored and the corresponding separator is not added."
TEST_F(StringAggregateTest, JoinsWhatIsNotNullInTheGivenOrder) {
  EXPECT_EQ(Rows("SELECT g, STRING_AGG(s, ', ') WITHIN GROUP (ORDER BY n) FROM t GROUP BY g ORDER BY g"),
            Lines({"1|a, c", "2|b, B", "3|NULL"}));
  EXPECT_EQ(Rows("SELECT g, STRING_AGG(s, ', ') WITHIN GROUP (ORDER BY n DESC) FROM t GROUP BY g ORDER BY g"),
            Lines({"1|c, a", "2|B, b", "3|NULL"}));
  EXPECT_EQ(Rows("SELECT STRING_AGG(n, '') WITHIN GROUP (ORDER BY g DESC, n) FROM t"), Lines({"645123"}));
  EXPECT_EQ(Rows("SELECT STRING_AGG(w, N'｜') WITHIN GROUP (ORDER BY n) FROM t"), Lines({"x｜中｜z｜y"}));
  EXPECT_EQ(Rows("SELECT STRING_AGG(s, ',') FROM t WHERE g > 9"), Lines({"NULL"}));
  EXPECT_EQ(Rows("DECLARE @c CHAR(1) = '-' SELECT STRING_AGG(s, @c) WITHIN GROUP (ORDER BY s COLLATE "
                 "Latin1_General_BIN) FROM t"),
            Lines({"B-a-b-c"}));
  EXPECT_EQ(Rows("SELECT g FROM t GROUP BY g HAVING STRING_AGG(s, '') WITHIN GROUP (ORDER BY n) = 'ac'"),
            Lines({"1"}));
  EXPECT_EQ(
      Rows(
          "SELECT STRING_AGG(CONCAT(g, ':', n), ' ') WITHIN GROUP (ORDER BY n), COUNT(*) FROM t WHERE g < 3"),
      Lines({"1:1 1:2 1:3 2:4 2:5|5"}));
  EXPECT_EQ(Rows("SELECT STRING_AGG(CAST(n AS MONEY), ';') WITHIN GROUP (ORDER BY n) FROM t WHERE g = 2"),
            Lines({"4.00;5.00"}));
}

TEST_F(StringAggregateTest, ItsTypeIsTheLongestOfItsKind) {
  EXPECT_EQ(TypeOf("SELECT STRING_AGG(s, ',') FROM t"), (Type{TypeId::VarChar, 8000}));
  EXPECT_EQ(TypeOf("SELECT STRING_AGG(w, ',') FROM t"), (Type{TypeId::NVarChar, 4000}));
  EXPECT_EQ(TypeOf("SELECT STRING_AGG(n, ',') FROM t"), (Type{TypeId::NVarChar, 4000}));
  EXPECT_EQ(TypeOf("SELECT STRING_AGG(CAST(s AS VARCHAR(MAX)), ',') FROM t"), (Type{TypeId::VarChar, -1}));
  EXPECT_EQ(
      ErrorText("SELECT STRING_AGG(REPLICATE(w, 1000), ',') FROM t"),
      "9829 1 STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to avoid result "
      "truncation.");
  EXPECT_EQ(Rows("SELECT LEN(STRING_AGG(CAST(REPLICATE(s, 3000) AS VARCHAR(MAX)), ',')) FROM t"),
            Lines({"12003"}));
}

TEST_F(StringAggregateTest, WhatItDoesNotTake) {
  EXPECT_EQ(ErrorText("SELECT STRING_AGG(s, g) FROM t"),
            "8733 1 Separator parameter for STRING_AGG must be a string literal or variable.");
  EXPECT_EQ(ErrorText("SELECT STRING_AGG(s, 1) FROM t"),
            "8116 1 Argument data type int is invalid for argument 2 of string_agg function.");
  EXPECT_EQ(ErrorOf("SELECT STRING_AGG(s) FROM t"), 174);
  EXPECT_EQ(ErrorOf("SELECT STRING_AGG(DISTINCT s, ',') FROM t"), 102);
  EXPECT_EQ(ErrorOf("SELECT STRING_AGG(s, ',') OVER (PARTITION BY g) FROM t"), 4113);
  EXPECT_EQ(ErrorText("SELECT MIN(s) WITHIN GROUP (ORDER BY n) FROM t"),
            "10757 1 The function 'min' may not have a WITHIN GROUP clause.");
  EXPECT_EQ(ErrorOf("SELECT STRING_AGG(s, ',') WITHIN GROUP (ORDER BY 1) FROM t"), 5308);
  EXPECT_EQ(ErrorOf("SELECT STRING_AGG(MAX(s), ',') FROM t"), 130);
  EXPECT_EQ(ErrorOf("SELECT STRING_AGG(s, ',') WITHIN GROUP (n) FROM t"), 102);
  EXPECT_EQ(ErrorOf("SELECT s, STRING_AGG(s, ',') FROM t"), 8120);
}

TEST_F(StringAggregateTest, SplitGivesTheParts) {
  EXPECT_EQ(Rows("SELECT value FROM STRING_SPLIT('Lorem ipsum  dolor', ' ')"),
            Lines({"Lorem", "ipsum", "", "dolor"}));
  EXPECT_EQ(Rows("SELECT value FROM STRING_SPLIT('', ',')"), Lines({""}));
  EXPECT_EQ(Rows("SELECT value FROM STRING_SPLIT(',', ',')"), Lines({"", ""}));
  EXPECT_EQ(Rows("SELECT value FROM STRING_SPLIT(NULL, ',')"), Lines({}));
  EXPECT_EQ(Rows("SELECT value FROM STRING_SPLIT(N'中，国', N'，') ORDER BY value"), Lines({"中", "国"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM STRING_SPLIT('1,2,3', ',') x WHERE x.value > 1"), Lines({"2"}));
  EXPECT_EQ(
      Rows(
          "SELECT g, n FROM t WHERE n IN (SELECT CAST(value AS INT) FROM STRING_SPLIT('2,5,9', ',')) ORDER BY n"),
      Lines({"1|2", "2|5"}));
  EXPECT_EQ(
      Rows("DECLARE @l VARCHAR(10) = 'a;b', @s CHAR(1) = ';' SELECT p FROM STRING_SPLIT(@l, @s) AS x (p)"),
      Lines({"a", "b"}));
  EXPECT_EQ(TypeOf("SELECT value FROM STRING_SPLIT('abc', ',')"), (Type{TypeId::VarChar, 3}));
  EXPECT_EQ(TypeOf("SELECT value FROM STRING_SPLIT('abc', N',')"), (Type{TypeId::NVarChar, 3}));
}

TEST_F(StringAggregateTest, SplitIsApplied) {
  Must("CREATE TABLE p (id INT, tags VARCHAR(40) NULL) INSERT INTO p VALUES (1, 'x,y'), (2, NULL), (3, 'z')");
  EXPECT_EQ(Rows("SELECT id, value FROM p CROSS APPLY STRING_SPLIT(tags, ',') ORDER BY id, value"),
            Lines({"1|x", "1|y", "3|z"}));
  EXPECT_EQ(Rows("SELECT id, value FROM p OUTER APPLY STRING_SPLIT(tags, ',') s ORDER BY id, s.value"),
            Lines({"1|x", "1|y", "2|NULL", "3|z"}));
  EXPECT_EQ(Rows("SELECT id FROM p WHERE EXISTS (SELECT * FROM STRING_SPLIT(tags, ',') WHERE value = 'Y')"),
            Lines({"1"}));
}

TEST_F(StringAggregateTest, WhatSplitDoesNotTake) {
  EXPECT_EQ(ErrorText("SELECT value FROM STRING_SPLIT('a', ',;')"),
            "214 1 Procedure expects parameter 'separator' of type 'nchar(1)/nvarchar(1)'.");
  EXPECT_EQ(ErrorOf("SELECT value FROM STRING_SPLIT('a', '')"), 214);
  EXPECT_EQ(ErrorText("SELECT value FROM STRING_SPLIT(12, ',')"),
            "8116 1 Argument data type int is invalid for argument 1 of string_split function.");
  EXPECT_EQ(ErrorOf("SELECT value FROM STRING_SPLIT('a')"), 174);
  EXPECT_EQ(ErrorOf("SELECT other FROM STRING_SPLIT('a', ',')"), 207);
}

} // namespace
} // namespace tsql::test
