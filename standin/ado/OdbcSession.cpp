#include "standin/ado/OdbcSession.h"

#include "com/Text.h"

namespace standin::ado {
namespace {

ProviderError ErrorOf(const odbc::Error& error) {
  return FromDriver(error, com::FromUtf8(error.sqlState));
}

// What the driver sends, on its way to the collector.
class Sink final : public tsql::ResultSink {
 public:
  explicit Sink(ResultCollector& results) : results_(results) {}
  void BeginRows(std::span<const tsql::Column> columns) override { results_.BeginRows(columns); }
  void Row(std::span<const tsql::Value> values) override { results_.Row(values); }
  void EndRows(int64_t /*count*/) override { results_.EndRows(); }
  void RowCount(int64_t count) override { results_.RowCount(count); }
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override {
    // A session's errors are of this type.
    results_.Failed(ErrorOf(static_cast<const odbc::Error&>(error)));
  }

 private:
  ResultCollector& results_;
};

// Does it, and turns the driver's own failures into the seam's.
template <class Work>
auto Failing(Work work) {
  try {
    return work();
  } catch (const odbc::Error& error) {
    throw ServerFailure{{ErrorOf(error)}};
  }
}

} // namespace

OdbcSession::OdbcSession(const ConnectionString& descriptor)
    : session_(Failing([&] { return odbc::SessionPool::Take(descriptor.Get(L"Connection")); })) {}

void OdbcSession::Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters,
                          ResultCollector& results) {
  Sink sink(results);
  Failing([&] { session_->Execute(batch, parameters, sink); });
}

int32_t OdbcSession::Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
                          ResultCollector& results) {
  Sink sink(results);
  return Failing([&] { return session_->Call(procedure, parameters, sink).value_or(0); });
}

void OdbcSession::Begin() {
  Failing([&] { session_->Begin(); });
}

void OdbcSession::Commit() {
  Failing([&] { session_->Commit(); });
}

void OdbcSession::Rollback() {
  Failing([&] { session_->Rollback(); });
}

} // namespace standin::ado
