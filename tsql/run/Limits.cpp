#include "tsql/run/Limits.h"

#include <algorithm>
#include <limits>
#include <thread>
#include <utility>

#include "tsql/tsql.h"

namespace tsql {
namespace {

constexpr int kWorkLimitReached = 8649;

} // namespace

Limits::Limits(const Connection& connection, const Transaction& transaction)
    : connection_(connection), transaction_(transaction) {}

void Limits::SetLockTimeout(int milliseconds) {
  lockTimeout_ = std::chrono::milliseconds(milliseconds);
  Watch();
}

void Limits::SetWorkLimit(std::optional<int64_t> steps) {
  workLimit_ = steps;
  Watch();
}

void Limits::SetTimeLimit(std::optional<std::chrono::milliseconds> limit) {
  timeLimit_ = limit;
  Watch();
}

void Limits::SetStopRequest(std::function<bool()> isStopWanted) {
  isStopWanted_ = std::move(isStopWanted);
  Watch();
}

void Limits::Reset() {
  workLimit_.reset();
  timeLimit_.reset();
  isStopWanted_ = nullptr;
  SetLockTimeout(kDefaultLockTimeout);
}

void Limits::Watch() {
  constexpr int kInstructions = 1000;
  const auto step = [](void* self) { return static_cast<Limits*>(self)->TakeStep() ? 0 : 1; };
  sqlite3_progress_handler(connection_.Handle(),
                           workLimit_ || timeLimit_ || isStopWanted_ ? kInstructions : 0, step, this);
  if (isStopWanted_) {
    // SQLite's own waiting asks nobody.
    const auto wait = [](void* self, int count) {
      return static_cast<Limits*>(self)->WaitForLock(count) ? 1 : 0;
    };
    sqlite3_busy_handler(connection_.Handle(), wait, this);
    return;
  }
  // Waiting for a lock takes time, too.
  const std::chrono::milliseconds wait = timeLimit_ ? std::min(lockTimeout_, *timeLimit_) : lockTimeout_;
  sqlite3_busy_timeout(connection_.Handle(), static_cast<int>(wait.count()));
}

void Limits::Begin() {
  workLeft_ = workLimit_.value_or(0);
  deadline_.reset();
  if (timeLimit_) deadline_ = Clock::now() + *timeLimit_;
  canceled_ = 0;
  isStopped_ = false;
}

void Limits::AskForStop() {
  if (!isStopWanted_ || isStopped_ || !isStopWanted_()) return;
  isStopped_ = true;
  deadline_ = Clock::now();
}

bool Limits::WaitForLock(int count) {
  constexpr std::chrono::milliseconds kPause{5};
  if (count == 0) waitsForLockSince_ = Clock::now();
  AskForStop();
  if (IsPastDeadline() || Clock::now() - waitsForLockSince_ >= lockTimeout_) return false;
  std::this_thread::sleep_for(kPause);
  return true;
}

bool Limits::TakeLimitedStep() {
  if (workLimit_ && --workLeft_ < 0) {
    workLeft_ = std::numeric_limits<int64_t>::max();
    canceled_ = kWorkLimitReached;
    return false;
  }
  AskForStop();
  if (!IsPastDeadline()) return true;
  // A changing statement that is stopped takes the transaction with it. A short one is let through: the next
  // statement is then the one that does not run.
  constexpr std::chrono::seconds kGrace{1};
  if (transaction_.Count() > 0 && Clock::now() < *deadline_ + kGrace && IsChanging()) return true;
  deadline_.reset();
  canceled_ = kTimeoutExpired;
  return false;
}

bool Limits::Wait(std::chrono::milliseconds time) {
  constexpr std::chrono::milliseconds kPause{5};
  const Clock::time_point end = Clock::now() + time;
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return true;
    if (!TakeStep()) return false;
    std::this_thread::sleep_for(std::min(left, kPause));
  }
}

bool Limits::IsPastDeadline() const {
  return deadline_ && Clock::now() >= *deadline_;
}

bool Limits::IsChanging() const {
  sqlite3_stmt* statement = nullptr;
  while ((statement = sqlite3_next_stmt(connection_.Handle(), statement)) != nullptr)
    if (sqlite3_stmt_busy(statement) != 0 && sqlite3_stmt_readonly(statement) == 0) return true;
  return false;
}

bool Limits::Ended(const SqliteFailure& failure) {
  if ((failure.code & 0xFF) == SQLITE_BUSY && IsPastDeadline()) {
    deadline_.reset();
    canceled_ = kTimeoutExpired;
  }
  return canceled_ != 0;
}

} // namespace tsql
