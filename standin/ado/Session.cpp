#include "standin/ado/Session.h"

#include <oleauto.h>

#include <chrono>
#include <cwchar>
#include <optional>
#include <utility>

#include "com/ComError.h"
#include "com/Text.h"
#include "standin/ado/Types.h"

namespace standin::ado {
namespace {

[[noreturn]] void RaiseBadNow(const std::wstring& value) {
  throw com::ComError(E_INVALIDARG, L"ADODB.Connection",
                      L"Now: '" + value + L"' is not a time of the form yyyy-mm-dd hh:mm:ss.");
}

tsql::DateTime ParseNow(const std::wstring& value) {
  SYSTEMTIME time{};
  int end = 0;
  const int read = swscanf(value.c_str(), L"%4hu-%2hu-%2hu%n %2hu:%2hu:%2hu%n", &time.wYear, &time.wMonth,
                           &time.wDay, &end, &time.wHour, &time.wMinute, &time.wSecond, &end);
  double date = 0;
  SYSTEMTIME back{};
  // The system turns a day that the month does not have into a day of the next month.
  if ((read != 3 && read != 6) || static_cast<size_t>(end) != value.size() || time.wHour > 23 ||
      time.wMinute > 59 || time.wSecond > 59 || !SystemTimeToVariantTime(&time, &date) ||
      !VariantTimeToSystemTime(date, &back) || back.wDay != time.wDay || back.wMonth != time.wMonth)
    RaiseBadNow(value);
  return ToDateTime(date);
}

} // namespace

Session::Session(const ConnectionString& connectionString, std::shared_ptr<ErrorList> errors)
    : errors_(std::move(errors)) {
  Guarded([&] { session_ = OpenServerSession(connectionString); });
  SetClock(connectionString);
}

// Does it; a failure of the session is the connection's.
template <class Work>
void Session::Guarded(Work work) {
  try {
    work();
  } catch (ServerFailure& failure) {
    Fail(std::move(failure.errors));
  }
}

void Session::SetClock(const ConnectionString& connectionString) {
  const std::wstring now = connectionString.Get(L"Now");
  session_->SetNow(now.empty() ? std::nullopt : std::optional(ParseNow(now)));
}

// For a statement that is about to run.
void Session::Prepare(int32_t timeout) {
  if (inTransaction_ && readers_ > 0) Fail({ErrorOf(Refusal::ConnectionBusy)});
  ++uses_;
  session_->SetTimeLimit(timeout > 0 ? std::optional(std::chrono::seconds(timeout)) : std::nullopt);
}

Results Session::Execute(const std::wstring& batch, int32_t timeout, std::span<tsql::Parameter> parameters) {
  Prepare(timeout);
  ResultCollector results;
  Guarded([&] { session_->Execute(batch, parameters, results); });
  return ResultsOf(results);
}

Results Session::Call(const std::wstring& procedure, int32_t timeout, std::span<tsql::Parameter> parameters,
                      int32_t& status) {
  Prepare(timeout);
  ResultCollector results;
  Guarded([&] { status = session_->Call(procedure, parameters, results); });
  return ResultsOf(results);
}

Results Session::ResultsOf(ResultCollector& collector) {
  std::deque<Result> results = collector.Finish();
  if (!results.empty() && !results.front().rows && !results.front().failure.empty())
    Fail(std::move(results.front().failure));
  return {shared_from_this(), std::move(results)};
}

void Session::Begin() {
  if (inTransaction_) Fail({ErrorOf(Refusal::TransactionExists)});
  ++uses_;
  Guarded([&] { session_->Begin(); });
  inTransaction_ = true;
}

void Session::Commit() {
  End(&ServerSession::Commit);
}

void Session::Rollback() {
  End(&ServerSession::Rollback);
}

void Session::End(void (ServerSession::*end)()) {
  if (!inTransaction_) Fail({ErrorOf(Refusal::NoTransaction)});
  inTransaction_ = false;
  ++uses_;
  Guarded([&] { (session_.get()->*end)(); });
}

void Session::Fail(ErrorList errors) {
  *errors_ = std::move(errors);
  Raise(errors_->front());
}

} // namespace standin::ado
