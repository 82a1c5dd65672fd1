#include "standin/ado/ResultCollector.h"

#include <utility>

namespace standin::ado {

void ResultCollector::BeginRows(std::span<const tsql::Column> columns) {
  KeepRows();
  rows_ = std::make_shared<RowSet>(columns);
}

void ResultCollector::RowCount(int64_t count) {
  KeepRows();
  results_.push_back({nullptr, count, {}});
}

void ResultCollector::Failed(ProviderError error) {
  const bool cutsRows = rows_ && rows_->rowCount() > 0;
  if (cutsRows) KeepRows();
  rows_ = nullptr;
  // Errors that follow each other without a result between them belong together.
  if (!cutsRows && (results_.empty() || results_.back().failure.empty())) results_.emplace_back();
  results_.back().failure.push_back(std::move(error));
}

std::deque<Result> ResultCollector::Finish() {
  KeepRows();
  return std::exchange(results_, {});
}

void ResultCollector::KeepRows() {
  if (rows_) results_.push_back({std::move(rows_), -1, {}});
  rows_ = nullptr;
}

} // namespace standin::ado
