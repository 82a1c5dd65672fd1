#include "standin/ado/ServerSession.h"

#include "standin/ado/EmbeddedSession.h"

namespace standin::ado {

std::unique_ptr<ServerSession> OpenServerSession(const ConnectionString& descriptor) {
  return std::make_unique<EmbeddedSession>(descriptor);
}

} // namespace standin::ado
