// ReplySink: what a batch or call of the engine sends, as the reply to a client.
#pragma once

#include <vector>

#include "tests/server/tds/Reply.h"

namespace tds {

class ReplySink final : public tsql::ResultSink {
 public:
  // `isCall`: the client called a procedure, and all that comes is from within it.
  ReplySink(Reply& reply, const tsql::Session& session, bool isCall)
      : reply_(reply), session_(session), isCall_(isCall) {}

  void BeginRows(std::span<const tsql::Column> columns) override;
  void Row(std::span<const tsql::Value> values) override { reply_.Row(columns_, values); }
  void EndRows(int64_t count) override;
  void RowCount(int64_t count) override;
  void Message(const tsql::Error& info) override;
  void Failed(const tsql::Error& error) override;

  // Nothing more comes.
  void Leave() { Where(); }
  bool HasFailed() const { return hasFailed_; }

 private:
  // What ends when a statement ends, here and now. Says that a procedure has ended where one has.
  Ended Where();

  Reply& reply_;
  const tsql::Session& session_;
  bool isCall_;
  bool wasInProcedure_ = false;
  bool hasFailed_ = false;
  std::vector<tsql::Column> columns_;
};

} // namespace tds
