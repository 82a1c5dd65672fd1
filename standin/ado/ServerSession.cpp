#include "standin/ado/ServerSession.h"

#include "standin/ado/AdoError.h"
#include "standin/ado/EmbeddedSession.h"
#include "standin/ado/OdbcSession.h"

namespace standin::ado {

std::unique_ptr<ServerSession> OpenServerSession(const ConnectionString& descriptor) {
  switch (descriptor.server()) {
  case Server::Embedded: return std::make_unique<EmbeddedSession>(descriptor);
  case Server::Odbc: return std::make_unique<OdbcSession>(descriptor);
  case Server::Unknown: break;
  }
  Raise(AdoError::ProviderNotFound, L"ADODB.Connection");
}

} // namespace standin::ado
