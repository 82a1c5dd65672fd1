#include "tests/server/tds/ReplySink.h"

namespace tds {

Ended ReplySink::Where() {
  if (isCall_) return Ended::StatementOfProcedure;
  const bool isInProcedure = session_.ProcedureNesting() > 0;
  if (wasInProcedure_ && !isInProcedure) reply_.End(Ended::Procedure, std::nullopt, false);
  wasInProcedure_ = isInProcedure;
  return isInProcedure ? Ended::StatementOfProcedure : Ended::Batch;
}

void ReplySink::BeginRows(std::span<const tsql::Column> columns) {
  Where();
  columns_.assign(columns.begin(), columns.end());
  reply_.Columns(columns);
}

void ReplySink::EndRows(int64_t count) {
  reply_.End(Where(), session_.NoCount() ? std::nullopt : std::optional(count), false);
}

void ReplySink::RowCount(int64_t count) {
  reply_.End(Where(), count, false);
}

void ReplySink::Message(const tsql::Error& info) {
  Where();
  reply_.Say(info);
}

void ReplySink::Failed(const tsql::Error& error) {
  hasFailed_ = true;
  const Ended what = Where();
  // The client knows that it wanted the batch to end.
  if (error.number == tsql::kTimeoutExpired) return;
  reply_.Say(error);
  reply_.End(what, std::nullopt, true);
}

} // namespace tds
