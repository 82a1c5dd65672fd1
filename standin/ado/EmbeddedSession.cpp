#include "standin/ado/EmbeddedSession.h"

#include "com/Text.h"

namespace standin::ado {
namespace {

// What the engine sends, on its way to the collector.
class Sink final : public tsql::ResultSink {
 public:
  explicit Sink(ResultCollector& results) : results_(results) {}
  void BeginRows(std::span<const tsql::Column> columns) override { results_.BeginRows(columns); }
  void Row(std::span<const tsql::Value> values) override { results_.Row(values); }
  void EndRows(int64_t /*count*/) override { results_.EndRows(); }
  void RowCount(int64_t count) override { results_.RowCount(count); }
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override { results_.Failed(FromServer(error)); }

 private:
  ResultCollector& results_;
};

// Does it, and turns the engine's own failures into the seam's.
template <class Work>
auto Failing(Work work) {
  try {
    return work();
  } catch (const tsql::Error& error) {
    throw ServerFailure{{FromServer(error)}};
  }
}

} // namespace

EmbeddedSession::EmbeddedSession(const ConnectionString& descriptor)
    : session_(Failing([&] { return SessionPool::Take(com::ToUtf8(descriptor.Get(L"Data Source"))); })) {}

void EmbeddedSession::Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters,
                              ResultCollector& results) {
  Sink sink(results);
  Failing([&] { session_->Execute(com::ToUtf8(batch), parameters, sink); });
}

int32_t EmbeddedSession::Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
                              ResultCollector& results) {
  Sink sink(results);
  return Failing([&] { return session_->Call(com::ToUtf8(procedure), parameters, sink).value_or(0); });
}

void EmbeddedSession::Begin() {
  Failing([&] { session_->Begin(); });
}

void EmbeddedSession::Commit() {
  Failing([&] { session_->Commit(); });
}

void EmbeddedSession::Rollback() {
  Failing([&] { session_->Rollback(); });
}

} // namespace standin::ado
