#include "standin/ado/EmbeddedSession.h"

#include "com/Text.h"
#include "standin/ado/CollectingSink.h"

namespace standin::ado {
EmbeddedSession::EmbeddedSession(const ConnectionString& descriptor)
    : session_(Mapped(FromServer,
                      [&] { return SessionPool::Take(com::ToUtf8(descriptor.Get(L"Data Source"))); })) {}

void EmbeddedSession::Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters,
                              ResultCollector& results) {
  CollectingSink sink(results, FromServer);
  Mapped(FromServer, [&] { session_->Execute(com::ToUtf8(batch), parameters, sink); });
}

int32_t EmbeddedSession::Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
                              ResultCollector& results) {
  CollectingSink sink(results, FromServer);
  return Mapped(FromServer,
                [&] { return session_->Call(com::ToUtf8(procedure), parameters, sink).value_or(0); });
}

void EmbeddedSession::Begin() {
  Mapped(FromServer, [&] { session_->Begin(); });
}

void EmbeddedSession::Commit() {
  Mapped(FromServer, [&] { session_->Commit(); });
}

void EmbeddedSession::Rollback() {
  Mapped(FromServer, [&] { session_->Rollback(); });
}

} // namespace standin::ado
