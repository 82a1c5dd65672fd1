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

// Keeps what comes out of a batch, in order.
class Session::Collector final : public tsql::ResultSink {
 public:
  void BeginRows(std::span<const tsql::Column> columns) override {
    KeepRows();
    rows_ = std::make_shared<RowSet>(columns);
  }
  void Row(std::span<const tsql::Value> values) override { rows_->Append(values); }
  void EndRows(int64_t /*count*/) override { KeepRows(); }
  void RowCount(int64_t count) override {
    KeepRows();
    results_.push_back({nullptr, count, {}});
  }
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override {
    const bool cutsRows = rows_ && rows_->rowCount() > 0;
    if (cutsRows) KeepRows();
    rows_ = nullptr;
    // Errors that follow each other without a result between them belong together.
    if (!cutsRows && (results_.empty() || results_.back().failure.empty())) results_.emplace_back();
    results_.back().failure.push_back(FromServer(error));
  }

  std::deque<Result> Finish() {
    KeepRows();
    return std::move(results_);
  }

 private:
  // Rows without an end are a result too: a CATCH block took their failure.
  void KeepRows() {
    if (rows_) results_.push_back({std::move(rows_), -1, {}});
    rows_ = nullptr;
  }

  std::deque<Result> results_;
  std::shared_ptr<RowSet> rows_;
};

Session::Session(const ConnectionString& connectionString, std::shared_ptr<ErrorList> errors)
    : errors_(std::move(errors)) {
  try {
    session_ = SessionPool::Take(com::ToUtf8(connectionString.Get(L"Data Source")));
  } catch (const tsql::Error& error) {
    Fail({FromServer(error)});
  }
  SetClock(connectionString);
}

void Session::SetClock(const ConnectionString& connectionString) {
  const std::wstring now = connectionString.Get(L"Now");
  session_->SetNow(now.empty() ? std::nullopt : std::optional(ParseNow(now)));
}

// For a statement that is about to run.
void Session::Prepare(int32_t timeout) {
  if (inTransaction_ && readers_ > 0) Fail({ErrorOf(Refusal::ConnectionBusy)});
  session_->SetTimeLimit(timeout > 0 ? std::optional<std::chrono::milliseconds>(std::chrono::seconds(timeout))
                                     : std::nullopt);
}

Results Session::Execute(const std::wstring& batch, int32_t timeout, std::span<tsql::Parameter> parameters) {
  Prepare(timeout);
  Collector collector;
  try {
    session_->Execute(com::ToUtf8(batch), parameters, collector);
  } catch (const tsql::Error& error) {
    Fail({FromServer(error)});
  }
  return ResultsOf(collector);
}

Results Session::Call(const std::wstring& procedure, int32_t timeout, std::span<tsql::Parameter> parameters,
                      int32_t& status) {
  Prepare(timeout);
  Collector collector;
  try {
    status = session_->Call(com::ToUtf8(procedure), parameters, collector).value_or(0);
  } catch (const tsql::Error& error) {
    Fail({FromServer(error)});
  }
  return ResultsOf(collector);
}

Results Session::ResultsOf(Collector& collector) {
  std::deque<Result> results = collector.Finish();
  if (!results.empty() && !results.front().rows && !results.front().failure.empty())
    Fail(std::move(results.front().failure));
  return {shared_from_this(), std::move(results)};
}

void Session::Begin() {
  if (inTransaction_) Fail({ErrorOf(Refusal::TransactionExists)});
  try {
    session_->Begin();
  } catch (const tsql::Error& error) {
    Fail({FromServer(error)});
  }
  inTransaction_ = true;
}

void Session::Commit() {
  End(&tsql::Session::Commit);
}

void Session::Rollback() {
  End(&tsql::Session::Rollback);
}

void Session::End(void (tsql::Session::*end)()) {
  if (!inTransaction_) Fail({ErrorOf(Refusal::NoTransaction)});
  inTransaction_ = false;
  try {
    (session_.get()->*end)();
  } catch (const tsql::Error& error) {
    Fail({FromServer(error)});
  }
}

void Session::Fail(ErrorList errors) {
  *errors_ = std::move(errors);
  Raise(errors_->front());
}

} // namespace standin::ado
