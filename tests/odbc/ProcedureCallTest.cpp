// The texts that call procedures, run on the embedded engine as the server.
#include "odbc/ProcedureCall.h"

#include <gtest/gtest.h>

#include "com/Text.h"

namespace odbc {
namespace {

using tsql::TypeId;
using Kind = tsql::Value::Kind;

// The order in which things come.
struct Order : tsql::ResultSink {
  void BeginRows(std::span<const tsql::Column> columns) override { text += "[" + columns.front().name; }
  void Row(std::span<const tsql::Value> values) override { text += " " + std::to_string(values[0].integer); }
  void EndRows(int64_t count) override { text += "]" + std::to_string(count); }
  void RowCount(int64_t count) override { text += " " + std::to_string(count) + " "; }
  void Message(const tsql::Error& info) override { text += info.what(); }
  void Failed(const tsql::Error& error) override { text += " failed " + std::to_string(error.number); }
  std::string text;
};

class ProcedureCallTest : public testing::Test {
 protected:
  ProcedureCallTest() {
    Run("CREATE TABLE t (n int) INSERT INTO t VALUES (1) INSERT INTO t VALUES (2)");
    Run("CREATE PROCEDURE p @name nvarchar(20), @text varchar(20) OUTPUT, @less int, @sum decimal(10,2) OUTPUT, "
        "@none datetime OUTPUT AS\n"
        "UPDATE t SET n = n - @less\n"
        "SELECT n FROM t ORDER BY n\n"
        "SET @text = @text + ' ' + @name\n"
        "SELECT @sum = SUM(n) FROM t\n"
        "RETURN 5");
  }
  void Run(std::string_view batch) {
    Order order;
    ASSERT_TRUE(session_->Execute(batch, {}, order)) << order.text;
  }
  static tsql::Parameter Parameter(tsql::Type type, bool output, const tsql::Value& value = {}) {
    tsql::Parameter parameter;
    parameter.type = type;
    parameter.output = output;
    parameter.value = value;
    return parameter;
  }
  static tsql::Value Text(std::string_view text) {
    tsql::Value value;
    value.kind = Kind::Text;
    value.text = text;
    return value;
  }
  static tsql::Value Integer(int64_t number) {
    tsql::Value value;
    value.kind = Kind::Integer;
    value.integer = number;
    return value;
  }

  std::unique_ptr<tsql::Session> session_ =
      tsql::Session::Open(tsql::Database::Open(":memory:calls", tsql::OpenMode::Create));
};

TEST_F(ProcedureCallTest, HandsOnTheResultsAndKeepsTheOutputs) {
  std::array parameters{Parameter({.id = TypeId::NVarChar, .length = 20}, false, Text("it's 车")),
                        Parameter({.id = TypeId::VarChar, .length = 20}, true, Text("given")),
                        Parameter({.id = TypeId::Int}, false, Integer(-3)),
                        Parameter({.id = TypeId::Decimal, .precision = 10, .scale = 2}, true),
                        Parameter({.id = TypeId::DateTime}, true)};
  Order order;
  OutputCatcher catcher(parameters, order);
  const std::wstring text = CallText(L"p", parameters, Dialect::TransactSql);
  EXPECT_TRUE(session_->Execute(com::ToUtf8(text), {}, catcher)) << com::ToUtf8(text) << order.text;
  EXPECT_EQ(order.text, " 2 [n 4 5]2");
  EXPECT_EQ(catcher.status(), 5);
  EXPECT_EQ(parameters[1].value.text, "given it's 车");
  EXPECT_EQ(parameters[1].storage, "given it's 车");
  EXPECT_EQ(parameters[3].value.decimal.low, 900U);
  EXPECT_EQ(parameters[3].value.decimal.scale, 2);
  EXPECT_EQ(parameters[4].value.kind, Kind::Null);
}

TEST_F(ProcedureCallTest, WithoutParametersHasAStatusToo) {
  Run("CREATE PROCEDURE q AS RETURN -1");
  Order order;
  OutputCatcher catcher({}, order);
  EXPECT_TRUE(session_->Execute(com::ToUtf8(CallText(L"q", {}, Dialect::TransactSql)), {}, catcher));
  EXPECT_EQ(catcher.status(), -1);
  EXPECT_EQ(order.text, "");
}

TEST_F(ProcedureCallTest, ThatIsNotThereHasNoStatus) {
  Order order;
  OutputCatcher catcher({}, order);
  EXPECT_FALSE(session_->Execute(com::ToUtf8(CallText(L"nowhere", {}, Dialect::TransactSql)), {}, catcher));
  EXPECT_EQ(catcher.status(), std::nullopt);
  EXPECT_EQ(order.text, " failed 2812");
}

TEST_F(ProcedureCallTest, DeclaresEveryTypeOfAParameter) {
  for (const tsql::Type type :
       {tsql::Type{.id = TypeId::TinyInt}, tsql::Type{.id = TypeId::SmallInt},
        tsql::Type{.id = TypeId::BigInt}, tsql::Type{.id = TypeId::Bit},
        tsql::Type{.id = TypeId::Money, .precision = 19, .scale = 4},
        tsql::Type{.id = TypeId::SmallMoney, .precision = 10, .scale = 4}, tsql::Type{.id = TypeId::Float},
        tsql::Type{.id = TypeId::Real}, tsql::Type{.id = TypeId::Char, .length = 3},
        tsql::Type{.id = TypeId::VarChar, .length = -1}, tsql::Type{.id = TypeId::NChar, .length = 3},
        tsql::Type{.id = TypeId::NVarChar, .length = -1}, tsql::Type{.id = TypeId::SmallDateTime},
        tsql::Type{.id = TypeId::Date}, tsql::Type{.id = TypeId::Binary, .length = 3},
        tsql::Type{.id = TypeId::VarBinary, .length = -1}, tsql::Type{.id = TypeId::UniqueIdentifier}}) {
    Order order;
    const std::string text = "DECLARE @x " + com::ToUtf8(DeclarationOf(type)) + " SELECT @x AS x";
    EXPECT_TRUE(session_->Execute(text, {}, order)) << text << order.text;
  }
}

} // namespace
} // namespace odbc
