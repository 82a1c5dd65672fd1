// How the errors of a session below become what clients of ADO see.
#pragma once

#include "standin/ado/ServerSession.h"

namespace standin::ado {

using ErrorMapping = ProviderError (*)(const tsql::Error& error);

// Does the work, and throws what it fails with as a ServerFailure.
template <class Work>
auto Mapped(ErrorMapping mapping, Work work) {
  try {
    return work();
  } catch (const tsql::Error& error) {
    throw ServerFailure{{mapping(error)}};
  }
}

} // namespace standin::ado
