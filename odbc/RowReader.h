// RowReader: the rows of one result, on their way from the driver to a sink.
//
// Rows come in blocks into bound columns. Where a row holds a long text, columns are read one by one instead,
// in their order, and long ones piece by piece.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "odbc/Api.h"
#include "tsql/tsql.h"

namespace odbc {

class RowReader {
 public:
  RowReader(SQLHSTMT statement, std::vector<tsql::Column> columns);
  ~RowReader();
  RowReader(const RowReader&) = delete;
  RowReader& operator=(const RowReader&) = delete;

  // Hands all rows to the sink, between its BeginRows and EndRows. Throws Error where the rows end in a
  // failure, and the sink has no EndRows then.
  void ReadAll(tsql::ResultSink& sink);

 private:
  class ColumnBuffer;

  int64_t ReadBlocks(tsql::ResultSink& sink);
  int64_t ReadCells(tsql::ResultSink& sink);

  SQLHSTMT statement_;
  std::vector<tsql::Column> columns_;
  std::vector<ColumnBuffer> buffers_;
  std::vector<tsql::Value> values_;
};

} // namespace odbc
