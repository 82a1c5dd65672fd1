#include "tests/tsql/EngineFixture.h"

#include <array>
#include <atomic>
#include <cstdio>

namespace tsql::test {
namespace {

std::string DecimalDigits(const Decimal& decimal) {
  // Tests use values of one half only.
  std::string digits = std::to_string(decimal.low);
  if (digits.size() <= decimal.scale) digits.insert(0, decimal.scale + 1U - digits.size(), '0');
  if (decimal.scale > 0) digits.insert(digits.size() - decimal.scale, 1, '.');
  return decimal.negative ? "-" + digits : digits;
}

} // namespace

std::string ToText(const Value& value) {
  switch (value.kind) {
  case Value::Kind::Null: return "NULL";
  case Value::Kind::Integer: return std::to_string(value.integer);
  case Value::Kind::Float: {
    std::array<char, 40> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.15g", value.real);
    return buffer.data();
  }
  case Value::Kind::Decimal:
    return value.decimal.high == 0 ? DecimalDigits(value.decimal) : "(more than 64 bits)";
  case Value::Kind::DateTime:
    return std::to_string(value.datetime.days) + ":" + std::to_string(value.datetime.ticks);
  case Value::Kind::Text:
  case Value::Kind::Bytes: return std::string(value.text);
  }
  return {};
}

void Output::BeginRows(std::span<const Column> rowColumns) {
  columns.emplace_back(rowColumns.begin(), rowColumns.end());
  results.emplace_back();
}

void Output::Row(std::span<const Value> values) {
  std::string line;
  for (size_t i = 0; i < values.size(); ++i) line += (i > 0 ? "|" : "") + ToText(values[i]);
  results.back().push_back(std::move(line));
}

void Output::EndRows(int64_t count) {
  EXPECT_EQ(static_cast<int64_t>(results.back().size()), count);
}

std::string UniqueMemoryName() {
  static std::atomic<int> next{0};
  return ":memory:test" + std::to_string(++next);
}

EngineTest::EngineTest()
    : database_(Database::Open(UniqueMemoryName(), OpenMode::Create)), session_(Session::Open(database_)) {}

Output EngineTest::RunOn(Session& session, std::string_view batch, std::span<Parameter> parameters) {
  Output output;
  const bool succeeded = session.Execute(batch, parameters, output);
  EXPECT_EQ(succeeded, output.errors.empty());
  return output;
}

std::vector<std::string> EngineTest::Rows(std::string_view batch) {
  const Output output = Run(batch);
  for (const Error& error : output.errors) ADD_FAILURE() << error.number << " " << error.what();
  if (output.results.size() != 1) {
    ADD_FAILURE() << output.results.size() << " results";
    return {};
  }
  return output.results[0];
}

std::string EngineTest::Scalar(std::string_view expression) {
  const Lines rows = Rows("SELECT " + std::string(expression));
  return rows.size() == 1 ? rows[0] : "(" + std::to_string(rows.size()) + " rows)";
}

int EngineTest::ErrorOf(std::string_view batch) {
  const Output output = Run(batch);
  return output.errors.empty() ? 0 : output.errors[0].number;
}

std::string EngineTest::ErrorText(std::string_view batch) {
  const Output output = Run(batch);
  if (output.errors.empty()) return "no error";
  const Error& error = output.errors[0];
  return std::to_string(error.number) + " " + std::to_string(error.line) + " " + error.what();
}

void EngineTest::Must(std::string_view batch) {
  const Output output = Run(batch);
  for (const Error& error : output.errors)
    ADD_FAILURE() << error.number << " " << error.what() << "\n" << batch;
}

} // namespace tsql::test
