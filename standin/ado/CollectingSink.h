// CollectingSink: what a session sends, on its way to the collector of its results.
#pragma once

#include "standin/ado/ErrorMapping.h"
#include "standin/ado/ResultCollector.h"

namespace standin::ado {

class CollectingSink final : public tsql::ResultSink {
 public:
  CollectingSink(ResultCollector& results, ErrorMapping mapping) : results_(results), mapping_(mapping) {}
  void BeginRows(std::span<const tsql::Column> columns) override { results_.BeginRows(columns); }
  void Row(std::span<const tsql::Value> values) override { results_.Row(values); }
  void EndRows(int64_t /*count*/) override { results_.EndRows(); }
  void RowCount(int64_t count) override { results_.RowCount(count); }
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override { results_.Failed(mapping_(error)); }

 private:
  ResultCollector& results_;
  ErrorMapping mapping_;
};

} // namespace standin::ado
