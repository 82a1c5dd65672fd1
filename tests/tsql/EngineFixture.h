// Runs batches against a fresh in-memory database and keeps what comes out as text, so that an expectation
// reads like the result: rows as "a|b", NULL as "NULL", one string a row.
#pragma once

#include <gtest/gtest.h>

#include "tsql/tsql.h"

namespace tsql::test {

std::string ToText(const Value& value);

// What a batch sent, in order.
struct Output : ResultSink {
  void BeginRows(std::span<const Column> columns) override;
  void Row(std::span<const Value> values) override;
  void EndRows(int64_t count) override;
  void RowCount(int64_t count) override { counts.push_back(count); }
  void Message(const Error& info) override { messages.emplace_back(info.what()); }
  void Failed(const Error& error) override { errors.push_back(error); }

  std::vector<std::vector<Column>> columns; // of each result
  std::vector<std::vector<std::string>> results;
  std::vector<int64_t> counts;
  std::vector<std::string> messages;
  std::vector<Error> errors;
};

std::string UniqueMemoryName();

class EngineTest : public ::testing::Test {
 protected:
  EngineTest();

  Output Run(std::string_view batch) { return RunOn(*session_, batch); }
  Output RunOn(Session& session, std::string_view batch, std::span<Parameter> parameters = {});
  // The rows of the only result; a failure of the batch fails the test.
  std::vector<std::string> Rows(std::string_view batch);
  // The only value of the only row.
  std::string Scalar(std::string_view expression);
  // The first error's number, 0 without one.
  int ErrorOf(std::string_view batch);
  // "number line text" of the first error.
  std::string ErrorText(std::string_view batch);
  void Must(std::string_view batch); // no error

  std::shared_ptr<Database> database_;
  std::unique_ptr<Session> session_;
};

using Lines = std::vector<std::string>;

} // namespace tsql::test
