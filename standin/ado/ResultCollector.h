// ResultCollector: keeps what comes out of a batch, in order, for the client to take.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <span>

#include "standin/ado/ProviderError.h"
#include "standin/ado/Results.h"
#include "standin/ado/RowSet.h"
#include "tsql/tsql.h"

namespace standin::ado {

class ResultCollector {
 public:
  // Rows without an end are a result too: a CATCH block took their failure.
  void BeginRows(std::span<const tsql::Column> columns);
  void Row(std::span<const tsql::Value> values) { rows_->Append(values); }
  void EndRows() { KeepRows(); }
  void RowCount(int64_t count);
  // It cuts the rows short that have no end yet.
  void Failed(ProviderError error);

  // Everything that was collected; the collector is empty then.
  std::deque<Result> Finish();

 private:
  void KeepRows();

  std::deque<Result> results_;
  std::shared_ptr<RowSet> rows_;
};

} // namespace standin::ado
