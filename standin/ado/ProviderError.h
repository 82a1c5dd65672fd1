// ProviderError: an error of the provider, as Connection.Errors shows it. Most come from the server; some the
// provider raises without asking it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tsql/tsql.h"

namespace standin::ado {

struct ProviderError {
  HRESULT hr;
  int32_t native; // the server's number; 0 when the server was not asked
  std::wstring sqlState;
  std::wstring description;
};

// The errors that belong to one failure, in the order in which they came. The first one is raised.
using ErrorList = std::vector<ProviderError>;

// What the provider refuses on its own account.
enum class Refusal : uint8_t {
  ConnectionBusy,
  TransactionExists,
  NoTransaction,
  FetchBackward,
  RestartPosition,
};

ProviderError ErrorOf(Refusal refusal);
ProviderError FromServer(const tsql::Error& error);
// An error that came through a driver, which has the state and, of a server that is another one, numbers of
// its own.
ProviderError FromDriver(const tsql::Error& error, const std::wstring& sqlState);

[[noreturn]] void Raise(const ProviderError& error);
[[noreturn]] void Raise(Refusal refusal);

// The provider's name, which is the source of its errors.
extern const wchar_t kProviderSource[];

} // namespace standin::ado
