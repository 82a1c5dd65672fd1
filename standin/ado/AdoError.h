// The errors of the ADO objects: ADO's own, by number, and the provider's, from the engine's.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "tsql/tsql.h"

namespace standin::ado {

// ADO's own numbers (ErrorValueEnum); as HRESULT 0x800A0000 + number.
enum class AdoError : int {
  InvalidArgument = 3001,
  NoCurrentRecord = 3021,
  IllegalOperation = 3219,
  InTransaction = 3246,
  FeatureNotAvailable = 3251,
  ItemNotFound = 3265,
  ObjectInCollection = 3367,
  DataConversion = 3421,
  ObjectClosed = 3704,
  ObjectOpen = 3705,
  ProviderNotFound = 3706,
  BadParameterInfo = 3708,
  InvalidConnection = 3709,
};

// Throws ADO's error; `source` is the class, as in L"ADODB.Recordset".
[[noreturn]] void Raise(AdoError error, const wchar_t* source);
// FeatureNotAvailable, and which feature it is.
[[noreturn]] void RaiseUnsupported(const wchar_t* feature, const wchar_t* source);

// An error of the provider, as Connection.Errors shows it.
struct ProviderError {
  HRESULT hr;
  int32_t native; // the server's number
  std::wstring sqlState;
  std::wstring description;
};

ProviderError FromServer(const tsql::Error& error);
[[noreturn]] void Raise(const ProviderError& error);

// The provider's name, which is the source of its errors.
extern const wchar_t kProviderSource[];

} // namespace standin::ado
