// What the binder makes of an expression: functions of the dialect, types by the server's rules, and every
// conversion written out.
#include "tsql/bind/Binder.h"

#include <gtest/gtest.h>

#include "tsql/syntax/Parser.h"

namespace tsql::test {
namespace {

class BinderTest : public ::testing::Test {
 protected:
  BoundExprPtr Bind(const std::string& expression) {
    return Binder(catalog_, variables_, {}).BindScalar(*ParseDefault(expression));
  }

  const Connection connection_{":memory:", SQLITE_OPEN_READWRITE};
  const Catalog catalog_{connection_, "test"};
  const std::vector<VariableInfo> variables_{
      {"@i", MakeType(TypeId::Int)}, {"@d", MakeDecimal(9, 2)}, {"@s", MakeType(TypeId::NVarChar, 20)}};
};

TEST_F(BinderTest, FunctionsAreThoseOfTheDialect) {
  const BoundExprPtr left = Bind("LEFT(@s, 2)");
  EXPECT_EQ(left->kind, BoundExpr::Kind::Function);
  EXPECT_EQ(left->function, FunctionId::Left);
  EXPECT_EQ(left->type, MakeType(TypeId::NVarChar, 2));
  ASSERT_EQ(left->args.size(), 2U);
  const BoundExprPtr length = Bind("DATALENGTH(@d)");
  EXPECT_EQ(length->function, FunctionId::DataLength);
  EXPECT_EQ(length->type, MakeType(TypeId::Int));
  ASSERT_EQ(length->args.size(), 1U);
  EXPECT_EQ(length->args[0]->kind, BoundExpr::Kind::Variable);
}

TEST_F(BinderTest, SumsOfTwoTypesHaveTheirConversionsWrittenOut) {
  // decimal(9,2) + decimal(10,0), which an int becomes: max(7, 10) digits before the point, 2 behind, and a
  // carry.
  const BoundExprPtr sum = Bind("@d + @i");
  EXPECT_EQ(sum->kind, BoundExpr::Kind::Arithmetic);
  EXPECT_EQ(sum->type, MakeDecimal(13, 2));
  EXPECT_EQ(sum->args[0]->kind, BoundExpr::Kind::Variable);
  EXPECT_EQ(sum->args[1]->kind, BoundExpr::Kind::Cast);
  EXPECT_EQ(sum->args[1]->type, MakeDecimal(10, 0));
}

TEST_F(BinderTest, UnknownNamesAreErrors) {
  const auto error = [this](const std::string& expression) {
    try {
      Bind(expression);
    } catch (const Error& failure) {
      return failure.number;
    }
    return 0;
  };
  EXPECT_EQ(error("@missing"), 137);
  EXPECT_EQ(error("missing"), 207);
  EXPECT_EQ(error("MISSING(1)"), 195);
  EXPECT_EQ(error("LEFT(@s)"), 174);
}

} // namespace
} // namespace tsql::test
