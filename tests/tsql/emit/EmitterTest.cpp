// What SQLite is asked for: its own operators and functions where they mean the same as the dialect's, and
// those of the engine elsewhere.
#include "tsql/emit/Emitter.h"

#include <gtest/gtest.h>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Parser.h"

namespace tsql::test {
namespace {

class EmitterTest : public ::testing::Test {
 protected:
  std::string Sql(const std::string& expression) {
    const BoundExprPtr bound = Binder(catalog_, variables_, {}).BindScalar(*ParseDefault(expression));
    return Emitter().EmitExpression(*bound);
  }

  const Connection connection_{":memory:", SQLITE_OPEN_READWRITE};
  const Catalog catalog_{connection_, "test"};
  const std::vector<VariableInfo> variables_{{"@i", MakeType(TypeId::Int)},
                                             {"@f", MakeType(TypeId::Float)},
                                             {"@s", MakeType(TypeId::VarChar, 20)},
                                             {"@b", MakeType(TypeId::BigInt)},
                                             {"@d", MakeDecimal(5, 2)},
                                             {"@n", MakeDecimal(18, 4)}};
};

TEST_F(EmitterTest, SubstringsWithinTheTextAreSqlites) {
  EXPECT_EQ(Sql("LEFT(@s, 2)"), "substr(?1 COLLATE tsql, 1, 2)");
  EXPECT_EQ(Sql("SUBSTRING(@s, 3, 4)"), "substr(?1 COLLATE tsql, 3, 4)");
  // A negative length is an error of the server's, and a start before the first character shortens the text.
  EXPECT_EQ(Sql("LEFT(@s, @i)"), "t_left(?1 COLLATE tsql, ?2)");
  EXPECT_EQ(Sql("SUBSTRING(@s, 0, 4)"), "t_substring(?1 COLLATE tsql, 0, 4)");
}

TEST_F(EmitterTest, TypeNumbersFollowTheArgument) {
  const std::string integer = "2"; // as files have it
  EXPECT_EQ(Sql("DATALENGTH(@i)"), "t_datalength(?1, " + integer + ")");
  EXPECT_EQ(Sql("ABS(@i)"), "t_abs(?1, " + integer + ", " + integer + ")");
}

TEST_F(EmitterTest, IntegerResultsAreChecked) {
  EXPECT_EQ(Sql("-@i"), "t_range(-?1, 2)");
  EXPECT_EQ(Sql("@i * @i"),
            "iif((?1 * ?1) BETWEEN -2147483648 AND 2147483647, (?1 * ?1), t_range((?1 * ?1), 2))");
  // With a constant the other side tells: one end of the range is 2^31 - 1, the other -2^31.
  EXPECT_EQ(Sql("@i + 7"), "iif(?1 <= 2147483640, (?1 + 7), t_range((?1 + 7), 2))");
  EXPECT_EQ(Sql("@i - 8"), "iif(?1 >= -2147483640, (?1 - 8), t_range((?1 - 8), 2))");
  EXPECT_EQ(Sql("@i / 2"), "(?1 / 2)");
  EXPECT_EQ(Sql("@i / @i"), "t_range(t_divide(?1, ?1), 2)");
}

TEST_F(EmitterTest, DecimalsThat64BitsSufficeForAreSqlites) {
  // The result's type holds whatever comes of it.
  EXPECT_EQ(Sql("@d * @d"), "(?1 * ?1)");
  EXPECT_EQ(Sql("@d * 3"), "(?1 * 3)");
  EXPECT_EQ(Sql("@d * @d * 0.5"), "((?1 * ?1) * 5)");
  EXPECT_EQ(Sql("CAST(@i AS DECIMAL(12,2))"), "(?1 * 100)");
  // It may not hold it: decimal(9,0) has no more than nine digits.
  EXPECT_EQ(Sql("CAST(@i AS DECIMAL(9,0))").substr(0, 55),
            "iif(?1 BETWEEN -999999999 AND 999999999, ?1, t_compute(");
  EXPECT_EQ(Sql("CAST(@d + 1 AS DECIMAL(4,2))").substr(0, 52),
            "iif((?1 + 100) BETWEEN -9999 AND 9999, (?1 + 100), t");
  // 18 digits by 9 are more than 64 bits hold, a division and a lost digit are to be rounded.
  for (const char* other : {"@n * @d", "@d / 3", "CAST(@d AS DECIMAL(5,1))", "CAST(@b AS DECIMAL(18,0))"})
    EXPECT_EQ(Sql(other).find("iif("), std::string::npos) << other;
}

TEST_F(EmitterTest, ConversionsThatLoseNothingAreSqlites) {
  EXPECT_EQ(Sql("CAST(@i AS BIGINT)"), "?1");
  EXPECT_EQ(Sql("CAST(@i AS FLOAT)"), "CAST(?1 AS REAL)");
  EXPECT_EQ(Sql("CAST(@f AS INT)"), "t_cast(?1, 8, 2, 0)");
}

} // namespace
} // namespace tsql::test
