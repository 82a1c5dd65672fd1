#include "standin/ado/OdbcSession.h"

#include "com/Text.h"
#include "standin/ado/CollectingSink.h"

namespace standin::ado {
namespace {

// The errors of a session over ODBC are the driver's, all of them.
ProviderError ErrorOf(const tsql::Error& error) {
  const auto& own = static_cast<const odbc::Error&>(error);
  return FromDriver(own, com::FromUtf8(own.sqlState));
}

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
  CollectingSink sink(results, ErrorOf);
  Failing([&] { session_->Execute(batch, parameters, sink); });
}

int32_t OdbcSession::Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
                          ResultCollector& results) {
  CollectingSink sink(results, ErrorOf);
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
