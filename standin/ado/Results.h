// Results: what a batch sent, on its way to the client.
//
// A batch is run to its end at once and its results are kept. The client takes them one after another and
// meets a failure at the place where the server sent it, as with a provider that reads the results off the
// wire when they are asked for.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "standin/ado/OutputValues.h"
#include "standin/ado/ProviderError.h"
#include "standin/ado/RowSet.h"

namespace standin::ado {

class Session;

// Rows, or a statement's row count, or a failure. Rows with a failure were cut short by it.
struct Result {
  std::shared_ptr<const RowSet> rows;
  int64_t count = -1; // unknown for rows
  ErrorList failure;
};

// A client has results of the session to read as long as this object lives.
class Reading {
 public:
  explicit Reading(std::shared_ptr<Session> session);
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
  ~Reading();

 private:
  std::shared_ptr<Session> session_;
};

// The results that the client has not taken yet. When the object ends, the connection is free and the output
// parameters of the command have their values.
class Results {
 public:
  Results() = default;
  Results(std::shared_ptr<Session> session, std::deque<Result> queue);

  bool empty() const { return queue_.empty(); }
  // The row count of the next result; -1 when it has none.
  int64_t NextCount() const;

  // Takes the next result; an empty one when there is none. Throws a failure that stands in its place, or
  // that cut its rows short when all of them are wanted; such a result is taken as well.
  Result Take(bool allRows);
  // Takes all that is left. Throws the first failure.
  void TakeAll();

  // The connection is busy while this object lives.
  void KeepBusy();
  void Append(OutputValues outputs) { outputs_ = std::move(outputs); }

 private:
  std::shared_ptr<Session> session_;
  std::deque<Result> queue_;
  OutputValues outputs_;
  std::unique_ptr<Reading> reading_;
};

} // namespace standin::ado
