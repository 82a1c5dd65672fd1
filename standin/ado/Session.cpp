#include "standin/ado/Session.h"

#include <oleauto.h>

#include <cwchar>

#include "com/ComError.h"
#include "com/Text.h"
#include "standin/ado/Types.h"

namespace standin::ado {
namespace {

constexpr auto kTransactionExists = static_cast<HRESULT>(0x8004D013);
constexpr auto kNoTransaction = static_cast<HRESULT>(0x8004D00E);

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
  // A day that the month does not have comes back as another one.
  if ((read != 3 && read != 6) || static_cast<size_t>(end) != value.size() || time.wHour > 23 ||
      time.wMinute > 59 || time.wSecond > 59 || !SystemTimeToVariantTime(&time, &date) ||
      !VariantTimeToSystemTime(date, &back) || back.wDay != time.wDay || back.wMonth != time.wMonth)
    RaiseBadNow(value);
  return ToDateTime(date);
}

} // namespace

// Keeps what comes out of a batch.
class Session::Collector final : public tsql::ResultSink {
 public:
  void BeginRows(std::span<const tsql::Column> columns) override {
    rows_ = std::make_shared<RowSet>(columns);
  }
  void Row(std::span<const tsql::Value> values) override { rows_->Append(values); }
  void EndRows(int64_t /*count*/) override { results.push_back({std::move(rows_), -1}); }
  void RowCount(int64_t count) override { results.push_back({nullptr, count}); }
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override { errors.push_back(FromServer(error)); }

  Results results;
  ErrorList errors;

 private:
  std::shared_ptr<RowSet> rows_;
};

Session::Session(const ConnectionString& connectionString, std::shared_ptr<ErrorList> errors)
    : errors_(std::move(errors)) {
  const std::string path = com::ToUtf8(connectionString.Get(L"Data Source"));
  const auto mode = path.starts_with(":memory:") ? tsql::OpenMode::Create : tsql::OpenMode::Existing;
  try {
    session_ = tsql::Session::Open(tsql::Database::Open(path, mode));
  } catch (const tsql::Error& error) {
    ProviderError failure = FromServer(error);
    failure.description += L" The data source is '" + connectionString.Get(L"Data Source") + L"'.";
    *errors_ = {failure};
    Raise(failure);
  }
  SetClock(connectionString);
}

void Session::SetClock(const ConnectionString& connectionString) {
  const std::wstring now = connectionString.Get(L"Now");
  session_->SetNow(now.empty() ? std::nullopt : std::optional(ParseNow(now)));
}

Results Session::Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters) {
  Collector collector;
  try {
    return Finish(collector, session_->Execute(com::ToUtf8(batch), parameters, collector));
  } catch (const tsql::Error& error) {
    Fail(error);
  }
}

Results Session::Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters, int32_t& status) {
  Collector collector;
  try {
    const std::optional<int32_t> returned = session_->Call(com::ToUtf8(procedure), parameters, collector);
    status = returned.value_or(0);
    return Finish(collector, returned.has_value());
  } catch (const tsql::Error& error) {
    Fail(error);
  }
}

Results Session::Finish(Collector& collector, bool succeeded) {
  if (succeeded && collector.errors.empty()) return std::move(collector.results);
  *errors_ = std::move(collector.errors);
  if (errors_->empty()) errors_->push_back({E_FAIL, 0, L"HY000", L"The batch failed."});
  Raise(errors_->front());
}

void Session::Begin() {
  if (inTransaction_)
    throw com::ComError(kTransactionExists, kProviderSource,
                        L"Only one transaction can be active on this session.");
  try {
    session_->Begin();
  } catch (const tsql::Error& error) {
    Fail(error);
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
  if (!inTransaction_) throw com::ComError(kNoTransaction, kProviderSource, L"No transaction is active.");
  inTransaction_ = false;
  try {
    (session_.get()->*end)();
  } catch (const tsql::Error& error) {
    Fail(error);
  }
}

void Session::Fail(const tsql::Error& error) {
  *errors_ = {FromServer(error)};
  Raise(errors_->front());
}

} // namespace standin::ado
