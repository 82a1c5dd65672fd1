// Limits: how much work and how much time a batch may take, and how long a statement waits for a lock.
//
// SQLite asks now and then while a statement runs, and the interpreter asks between statements. A limit that
// is reached ends a batch once: what still runs after it clears up.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

#include "tsql/run/Transaction.h"
#include "tsql/sqlite/Connection.h"

namespace tsql {

// Thrown when a limit is reached. No CATCH block catches it.
struct Canceled {
  int error; // of the limit
  int line;  // of the statement that was running
};

class Limits {
 public:
  Limits(const Connection& connection, const Transaction& transaction);
  Limits(const Limits&) = delete;
  Limits& operator=(const Limits&) = delete;

  void SetLockTimeout(int milliseconds);
  int LockTimeout() const { return static_cast<int>(lockTimeout_.count()); }
  void SetWorkLimit(std::optional<int64_t> steps);
  void SetTimeLimit(std::optional<std::chrono::milliseconds> limit);
  void SetStopRequest(std::function<bool()> isStopWanted);

  // No limits but the default for locks.
  void Reset();
  // A batch or call begins, and all of the limits is left.
  void Begin();
  // Takes a step of work. False when a limit is reached.
  bool TakeStep() { return (!workLimit_ && !deadline_ && !isStopWanted_) || TakeLimitedStep(); }
  // Waits so long; false when a limit is reached before.
  bool Wait(std::chrono::milliseconds time);
  // Whether a failure of SQLite comes from a limit that was reached.
  bool Ended(const SqliteFailure& failure);
  Canceled CanceledAt(int line) const { return {canceled_, line}; }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr int kDefaultLockTimeout = 5000; // milliseconds

  bool TakeLimitedStep();
  // A stop that is wanted is a deadline that has come.
  void AskForStop();
  bool WaitForLock(int count);
  bool IsPastDeadline() const;
  bool IsChanging() const;
  void Watch();

  const Connection& connection_;
  const Transaction& transaction_;
  std::optional<int64_t> workLimit_;
  int64_t workLeft_ = 0;
  std::optional<std::chrono::milliseconds> timeLimit_;
  std::optional<Clock::time_point> deadline_;
  std::function<bool()> isStopWanted_;
  bool isStopped_ = false; // and not to be asked again
  Clock::time_point waitsForLockSince_;
  std::chrono::milliseconds lockTimeout_{kDefaultLockTimeout};
  int canceled_ = 0; // the error of the limit that was reached
};

} // namespace tsql
