// Random values of every type converted to every type, implicitly, by CAST and by CONVERT, against a plain
// evaluation. TSQL_CONVERSION_COUNT sets how many values of each type are tried, TSQL_CONVERSION_SEED where
// the seeds start; a failure names the seed of its value.
#include <cstdlib>

#include "tests/tsql/EngineFixture.h"
#include "tests/tsql/values/PlainConversion.h"

namespace tsql::test {
namespace {

struct NamedType {
  const char* name;
  Type type;
};

// Of the types with a length one that holds nearly everything and one that holds little.
const NamedType kTypes[] = {
    {"TINYINT", {TypeId::TinyInt}},
    {"SMALLINT", {TypeId::SmallInt}},
    {"INT", {TypeId::Int}},
    {"BIGINT", {TypeId::BigInt}},
    {"BIT", {TypeId::Bit}},
    {"DECIMAL(9, 2)", {TypeId::Decimal, 0, 9, 2}},
    {"DECIMAL(18, 0)", {TypeId::Decimal, 0, 18, 0}},
    {"DECIMAL(38, 10)", {TypeId::Decimal, 0, 38, 10}},
    {"MONEY", {TypeId::Money, 0, 19, 4}},
    {"SMALLMONEY", {TypeId::SmallMoney, 0, 10, 4}},
    {"FLOAT", {TypeId::Float}},
    {"REAL", {TypeId::Real}},
    {"CHAR(40)", {TypeId::Char, 40}},
    {"CHAR(3)", {TypeId::Char, 3}},
    {"VARCHAR(40)", {TypeId::VarChar, 40}},
    {"VARCHAR(5)", {TypeId::VarChar, 5}},
    {"TEXT", {TypeId::Text, -1}},
    {"NCHAR(40)", {TypeId::NChar, 40}},
    {"NCHAR(3)", {TypeId::NChar, 3}},
    {"NVARCHAR(40)", {TypeId::NVarChar, 40}},
    {"NVARCHAR(MAX)", {TypeId::NVarChar, -1}},
    {"NTEXT", {TypeId::NText, -1}},
    {"DATETIME", {TypeId::DateTime}},
    {"SMALLDATETIME", {TypeId::SmallDateTime}},
    {"DATE", {TypeId::Date}},
    {"TIME", {TypeId::Time, 0, 0, 7}},
    {"TIME(2)", {TypeId::Time, 0, 0, 2}},
    {"DATETIME2", {TypeId::DateTime2, 0, 0, 7}},
    {"DATETIME2(3)", {TypeId::DateTime2, 0, 0, 3}},
    {"BINARY(8)", {TypeId::Binary, 8}},
    {"BINARY(3)", {TypeId::Binary, 3}},
    {"VARBINARY(20)", {TypeId::VarBinary, 20}},
    {"VARBINARY(2)", {TypeId::VarBinary, 2}},
    {"IMAGE", {TypeId::Image, -1}},
    {"UNIQUEIDENTIFIER", {TypeId::UniqueIdentifier}},
};

plain::Plain FromValue(const Value& value, const Type& type) {
  switch (value.kind) {
  case Value::Kind::Integer: return value.integer;
  case Value::Kind::Decimal: {
    const auto magnitude = static_cast<plain::Wide>(
        static_cast<plain::UnsignedWide>(value.decimal.high) << 64U | value.decimal.low);
    return plain::Exact{value.decimal.negative ? -magnitude : magnitude, value.decimal.scale};
  }
  case Value::Kind::Float: return value.real;
  case Value::Kind::DateTime:
    return plain::Moment{value.datetime.days * int64_t{25920000} + value.datetime.ticks};
  case Value::Kind::Bytes: return plain::Bytes{std::string(value.text)};
  default: break;
  }
  ADD_FAILURE() << "no value of a type " << static_cast<int>(type.id);
  return {};
}

// The columns of the only row, or the number of the error.
struct Answer : Output {
  void Row(std::span<const Value> values) override {
    for (size_t i = 0; i < values.size(); ++i) {
      const Type& type = columns.back()[i].type;
      types.push_back(type);
      const bool isPlain = values[i].kind == Value::Kind::Text || values[i].kind == Value::Kind::Null;
      shown.push_back(isPlain ? std::string(values[i].text) : plain::Show(FromValue(values[i], type), type));
    }
  }
  void EndRows(int64_t /*count*/) override {}
  std::string Text(size_t column) const {
    if (!errors.empty()) return "error " + std::to_string(errors[0].number);
    return column < shown.size() ? shown[column] : "nothing";
  }
  std::vector<std::string> shown;
  std::vector<Type> types;
};

uint64_t FromEnvironment(const char* name, uint64_t otherwise) {
  const char* text = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody sets it meanwhile
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

bool IsLarge(const Type& type) {
  return type.id == TypeId::Text || type.id == TypeId::NText || type.id == TypeId::Image;
}

class ConversionPropertyTest : public EngineTest {
 protected:
  Answer Ask(const std::string& batch, const plain::Plain& value, const Type& from) {
    std::vector<Parameter> parameters(1);
    parameters[0].name = "@p";
    parameters[0].type = from;
    parameters[0].value = plain::ToValue(value, parameters[0].storage);
    Answer answer;
    session_->Execute(batch, parameters, answer);
    return answer;
  }

  void Compare(const NamedType& from, const NamedType& to, const plain::Plain& value) {
    const std::string name = to.name;
    const plain::Allowed allowed = plain::IsAllowed(from.type.id, to.type.id);
    std::string wanted = "error 529";
    if (allowed != plain::Allowed::Never) {
      const plain::Outcome outcome = plain::Cast(value, from.type, to.type);
      wanted =
          outcome.error != 0 ? "error " + std::to_string(outcome.error) : plain::Show(outcome.value, to.type);
    }
    const Answer cast = Ask("SELECT CAST(@p AS " + name + "), CONVERT(" + name + ", @p)", value, from.type);
    EXPECT_EQ(cast.Text(0), wanted);
    EXPECT_EQ(cast.Text(1), wanted);
    for (const Type& type : cast.types) EXPECT_EQ(type, to.type);
    // Variables cannot have the large types.
    const Answer implicit = Ask(IsLarge(to.type) ? "DELETE FROM #large INSERT INTO #large (" + name +
                                                       ") VALUES (@p) SELECT " + name + " FROM #large"
                                                 : "DECLARE @v " + name + " SET @v = @p SELECT @v",
                                value, from.type);
    if (allowed == plain::Allowed::Never) wanted = "error 206";
    if (allowed == plain::Allowed::Explicitly) wanted = "error 257";
    EXPECT_EQ(implicit.Text(0), wanted);
  }
};

TEST_F(ConversionPropertyTest, EveryPairOfTypes) {
  Must("CREATE TABLE #large ([TEXT] TEXT NULL, [NTEXT] NTEXT NULL, [IMAGE] IMAGE NULL)");
  const uint64_t first = FromEnvironment("TSQL_CONVERSION_SEED", 1);
  const uint64_t count = FromEnvironment("TSQL_CONVERSION_COUNT", 10);
  for (uint64_t seed = first; seed < first + count; ++seed) {
    for (const NamedType& from : kTypes) {
      std::mt19937_64 random(seed);
      const plain::Plain value = plain::MakeValue(from.type, random);
      for (const NamedType& to : kTypes) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + plain::Show(value, from.type) + " of " +
                     from.name + " as " + to.name);
        Compare(from, to, value);
        if (HasFailure()) return;
      }
    }
  }
}

TEST_F(ConversionPropertyTest, NullStaysNull) {
  for (const NamedType& from : kTypes) {
    for (const NamedType& to : kTypes) {
      if (plain::IsAllowed(from.type.id, to.type.id) == plain::Allowed::Never) continue;
      EXPECT_EQ(Scalar("CAST(CAST(NULL AS " + std::string(from.name) + ") AS " + to.name + ")"), "NULL")
          << from.name << " " << to.name;
    }
  }
}

} // namespace
} // namespace tsql::test
