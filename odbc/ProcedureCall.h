// ProcedureCall: a call of a stored procedure as a batch of T-SQL, and its outputs on their way back.
//
// A driver hands over the counts of a procedure's statements one by one only when it is called by a text. So
// the text has variables for the outputs, and its last row is the procedure's status with their values.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "odbc/Dialect.h"
#include "tsql/tsql.h"

namespace odbc {

// The batch that calls the procedure with its arguments by position.
std::wstring CallText(std::wstring_view procedure, std::span<const tsql::Parameter> parameters,
                      Dialect dialect);

// Hands on to another sink what the batch sends, and keeps its last row for itself.
class OutputCatcher final : public tsql::ResultSink {
 public:
  // The output ones of `parameters` are written.
  OutputCatcher(std::span<tsql::Parameter> parameters, tsql::ResultSink& sink)
      : parameters_(parameters), sink_(sink) {}

  void BeginRows(std::span<const tsql::Column> columns) override;
  void Row(std::span<const tsql::Value> values) override;
  void EndRows(int64_t count) override;
  void RowCount(int64_t count) override { sink_.RowCount(count); }
  void Message(const tsql::Error& info) override { sink_.Message(info); }
  void Failed(const tsql::Error& error) override { sink_.Failed(error); }

  // The procedure's status; nullopt when it came to none.
  std::optional<int32_t> status() const { return status_; }

 private:
  void Take(std::span<const tsql::Value> values);

  std::span<tsql::Parameter> parameters_;
  tsql::ResultSink& sink_;
  std::optional<int32_t> status_;
  bool isLastRow_ = false;
};

} // namespace odbc
