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

} // namespace

OdbcSession::OdbcSession(const ConnectionString& descriptor)
    : session_(Mapped(ErrorOf, [&] { return odbc::SessionPool::Take(descriptor.Get(L"Connection")); })) {}

void OdbcSession::Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters,
                          ResultCollector& results) {
  CollectingSink sink(results, ErrorOf);
  Mapped(ErrorOf, [&] { session_->Execute(batch, parameters, sink); });
}

int32_t OdbcSession::Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
                          ResultCollector& results) {
  CollectingSink sink(results, ErrorOf);
  return Mapped(ErrorOf, [&] { return session_->Call(procedure, parameters, sink).value_or(0); });
}

void OdbcSession::Begin() {
  Mapped(ErrorOf, [&] { session_->Begin(); });
}

void OdbcSession::Commit() {
  Mapped(ErrorOf, [&] { session_->Commit(); });
}

void OdbcSession::Rollback() {
  Mapped(ErrorOf, [&] { session_->Rollback(); });
}

} // namespace standin::ado
