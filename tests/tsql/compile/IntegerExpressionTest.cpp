// Integers without SQLite: which expressions they are, what is not computed, and that they are what SQLite
// gives for the same expression.
#include "tsql/compile/IntegerExpression.h"

#include <array>
#include <random>

#include "tests/tsql/EngineFixture.h"
#include "tsql/bind/Binder.h"
#include "tsql/syntax/Parser.h"

namespace tsql::test {
namespace {

// The rows, or the first error.
std::string OutcomeOf(const Output& output) {
  if (!output.errors.empty())
    return std::to_string(output.errors.front().number) + " " + output.errors.front().what();
  return output.results.at(0).at(0);
}

class IntegerExpressionTest : public EngineTest {
 protected:
  // Of a batch that the expression is in the middle of.
  std::string Outcome(const std::string& before, const std::string& expression, const char* after) {
    return OutcomeOf(Run(before + expression + after));
  }
  bool IsOne(const std::string& expression) {
    return IsIntegerExpression(*Binder(catalog_, variables_, {}).BindScalar(*ParseDefault(expression)));
  }

  const Connection connection_{":memory:", SQLITE_OPEN_READWRITE};
  const Catalog catalog_{connection_, "test"};
  const std::vector<VariableInfo> variables_{{"@i", MakeType(TypeId::Int)},
                                             {"@b", MakeType(TypeId::BigInt)},
                                             {"@d", MakeType(TypeId::Decimal)},
                                             {"@s", MakeType(TypeId::VarChar, 20)}};
};

TEST_F(IntegerExpressionTest, IsOfIntegersAlone) {
  for (const char* expression : {"1", "@i", "NULL", "@@ROWCOUNT", "@i + 1", "-@b", "~@i", "@i * @b % 7 / @i",
                                 "CAST(@i AS tinyint)", "ISNULL(@i, 0)", "COALESCE(@i, @b, 1)"})
    EXPECT_TRUE(IsOne(expression)) << expression;
  for (const char* expression :
       {"@s", "'1'", "1.5", "@d", "@i + @d", "CAST(@s AS int)", "CAST(@i AS varchar(10))", "LEN(@s)",
        "ABS(@i)", "ISNULL(@i, LEN(@s))", "CASE WHEN @i = 1 THEN 1 ELSE 2 END", "@@IDENTITY",
        "TRY_CAST(@i AS tinyint)"})
    EXPECT_FALSE(IsOne(expression)) << expression;
}

TEST_F(IntegerExpressionTest, TheFirstSideThatDecidesIsTheLast) {
  const std::string declare = "DECLARE @i INT = 0, @n INT ";
  EXPECT_EQ(Run(declare + "IF @i <> 0 AND 1 / @i > 0 PRINT 'and' ELSE PRINT 'no'").messages, Lines({"no"}));
  EXPECT_EQ(Run(declare + "IF @i = 0 OR 1 / @i > 0 PRINT 'or' ELSE PRINT 'no'").messages, Lines({"or"}));
  EXPECT_EQ(Rows(declare + "SET @n = COALESCE(@n, @i + 5, 1 / @i) SELECT @n"), Lines({"5"}));
  // What is unknown does not hold, nor does what it is denied of.
  EXPECT_EQ(Run(declare + "IF @n = 1 AND 1 / @i > 0 PRINT 'and' ELSE PRINT 'no'").messages, Lines({"no"}));
  EXPECT_EQ(Run(declare + "IF NOT (@n = 1 OR 1 / @i > 0) PRINT 'or' ELSE PRINT 'no'").messages,
            Lines({"no"}));
}

TEST_F(IntegerExpressionTest, NullIsUnknown) {
  const std::string declare = "DECLARE @i INT = 1, @n INT, @s VARCHAR(5), @t VARCHAR(5) = '' ";
  const auto holds = [&](const std::string& condition) {
    return Run(declare + "IF " + condition + " PRINT 'yes' ELSE PRINT 'no'").messages == Lines({"yes"});
  };
  EXPECT_FALSE(holds("@n = 1"));
  EXPECT_FALSE(holds("NOT @n = 1"));
  EXPECT_FALSE(holds("@n = 1 AND @i = 1"));
  EXPECT_FALSE(holds("@n = 1 OR @i = 2"));
  EXPECT_TRUE(holds("@n = 1 OR @i = 1"));
  EXPECT_TRUE(holds("NOT (@n = 1 AND @i = 2)"));
  EXPECT_TRUE(holds("@n + @i IS NULL"));
  EXPECT_TRUE(holds("@s IS NULL AND @t IS NOT NULL"));
  EXPECT_FALSE(holds("@s IS NOT NULL OR @t IS NULL"));
}

TEST_F(IntegerExpressionTest, WhatATypeCannotHoldIsAnError) {
  const std::string declare =
      "DECLARE @i INT = 2147483647, @b BIGINT = 9223372036854775807, @s SMALLINT = 32767, @t TINYINT = 255 ";
  const auto message = [&](const std::string& statement) { return ErrorText(declare + statement); };
  EXPECT_EQ(message("SET @b = @i + 1"),
            "8115 1 Arithmetic overflow error converting expression to data type int.");
  EXPECT_EQ(message("SET @b = @b + 1"),
            "8115 1 Arithmetic overflow error converting expression to data type bigint.");
  EXPECT_EQ(message("SET @b = (-@b - 1) / -1"),
            "8115 1 Arithmetic overflow error converting expression to data type bigint.");
  EXPECT_EQ(message("SET @i = (-@i - 1) / -1"),
            "8115 1 Arithmetic overflow error converting expression to data type int.");
  EXPECT_EQ(message("SET @t = @i"),
            "220 1 Arithmetic overflow error for data type tinyint, value = 2147483647.");
  EXPECT_EQ(message("SET @s = @s * 2"),
            "220 1 Arithmetic overflow error for data type smallint, value = 65534.");
  EXPECT_EQ(message("SET @i = @i / (@i - @i)"), "8134 1 Divide by zero error encountered.");
  EXPECT_EQ(message("SET @i = @i % (@i - @i)"), "8134 1 Divide by zero error encountered.");
  EXPECT_EQ(Rows(declare + "SET @b = (-@b - 1) % -1 SELECT @b"), Lines({"0"}));
}

// ---- the same by SQLite

// Expressions at random, with values near the ends of the types among them.
class RandomExpressions {
 public:
  explicit RandomExpressions(uint32_t seed) : random_(seed) {}

  std::string Declarations() {
    return "DECLARE @i INT = " + OneOf({"NULL", "0", "-1", "7", "2147483647", "-2147483648"}) +
           ", @j INT = " + OneOf({"NULL", "0", "1", "-3", "65536"}) +
           ", @b BIGINT = " + OneOf({"NULL", "0", "-1", "9223372036854775807", "-9223372036854775808"}) +
           ", @s SMALLINT = " + OneOf({"NULL", "0", "-32768", "32767"}) +
           ", @t TINYINT = " + OneOf({"NULL", "0", "1", "255"}) + ", @f BIT = " + OneOf({"NULL", "0", "1"}) +
           " ";
  }
  std::string Value(int depth) {
    if (depth == 0) return OneOf({"@i", "@j", "@b", "@s", "@t", "CAST(@f AS int)", "1", "0", "-2", "NULL"});
    switch (Pick(8)) {
    case 0: return "(-" + Value(depth - 1) + ")";
    case 1: return "(~" + Value(depth - 1) + ")";
    case 2:
      return "CAST(" + Value(depth - 1) + " AS " + OneOf({"int", "bigint", "smallint", "tinyint", "bit"}) +
             ")";
    case 3: return "COALESCE(" + Value(depth - 1) + ", @j, " + Value(depth - 1) + ", 4)";
    default:
      return "(" + Value(depth - 1) + OneOf({" + ", " - ", " * ", " / ", " % ", " & ", " | ", " ^ "}) +
             Value(depth - 1) + ")";
    }
  }
  std::string Condition(int depth) {
    if (depth == 0) return Value(1) + OneOf({" = ", " <> ", " < ", " <= ", " > ", " >= "}) + Value(1);
    switch (Pick(4)) {
    case 0: return "(NOT " + Condition(depth - 1) + ")";
    case 1: return Value(1) + OneOf({" IS NULL", " IS NOT NULL"});
    default: return "(" + Condition(depth - 1) + OneOf({" AND ", " OR "}) + Condition(depth - 1) + ")";
    }
  }

 private:
  size_t Pick(size_t count) { return random_() % count; }
  std::string OneOf(const std::vector<const char*>& choices) { return choices[Pick(choices.size())]; }
  std::mt19937 random_;
};

TEST_F(IntegerExpressionTest, GivesWhatSqliteGives) {
  RandomExpressions expressions(20);
  constexpr int kTimes = 1500;
  int values = 0;
  for (int i = 0; i < kTimes; ++i) {
    const std::string declare = expressions.Declarations();
    const std::string value = expressions.Value(1 + i % 3);
    const std::string expected = Outcome(declare + "SELECT CAST(", value, " AS bigint)");
    EXPECT_EQ(Outcome(declare + "DECLARE @r BIGINT SET @r = ", value, " SELECT @r"), expected)
        << declare << value;
    if (expected.find(' ') == std::string::npos) ++values;
  }
  EXPECT_GT(values, kTimes / 4) << "of the others each is an error";
}

TEST_F(IntegerExpressionTest, HoldsWhereSqliteFindsARow) {
  RandomExpressions expressions(21);
  constexpr int kTimes = 1500;
  std::array<int, 2> times{};
  for (int i = 0; i < kTimes; ++i) {
    const std::string declare = expressions.Declarations();
    const std::string condition = expressions.Condition(i % 3);
    const std::string expected =
        Outcome(declare + "SELECT COUNT(*) FROM (SELECT 1 AS x) y WHERE ", condition, "");
    EXPECT_EQ(Outcome(declare + "IF ", condition, " SELECT 1 ELSE SELECT 0"), expected)
        << declare << condition;
    if (expected == "0") ++times[0];
    if (expected == "1") ++times[1];
  }
  EXPECT_GT(times[0], kTimes / 10);
  EXPECT_GT(times[1], kTimes / 10);
}

} // namespace
} // namespace tsql::test
