#include "standin/ado/EmbeddedSession.h"

#include "com/Text.h"
#include "standin/ado/CollectingSink.h"

namespace standin::ado {
namespace {

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
  CollectingSink sink(results, FromServer);
  Failing([&] { session_->Execute(com::ToUtf8(batch), parameters, sink); });
}

int32_t EmbeddedSession::Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
                              ResultCollector& results) {
  CollectingSink sink(results, FromServer);
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
