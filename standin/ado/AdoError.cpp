#include "standin/ado/AdoError.h"

#include "com/ComError.h"
#include "com/Text.h"

namespace standin::ado {
namespace {

const wchar_t* TextOf(AdoError error) {
  switch (error) {
  case AdoError::InvalidArgument:
    return L"Arguments are of the wrong type, are out of acceptable range, or are in conflict with one "
           L"another.";
  case AdoError::NoCurrentRecord:
    return L"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires "
           L"a "
           L"current record.";
  case AdoError::IllegalOperation: return L"Operation is not allowed in this context.";
  case AdoError::InTransaction:
    return L"Connection object cannot be explicitly closed while in a transaction.";
  case AdoError::FeatureNotAvailable:
    return L"Object or provider is not capable of performing requested operation.";
  case AdoError::ItemNotFound:
    return L"Item cannot be found in the collection corresponding to the requested name or ordinal.";
  case AdoError::ObjectInCollection: return L"Object is already in collection. Cannot append.";
  case AdoError::DataConversion:
    return L"Application uses a value of the wrong type for the current operation.";
  case AdoError::ObjectClosed: return L"Operation is not allowed when the object is closed.";
  case AdoError::ObjectOpen: return L"Operation is not allowed when the object is open.";
  case AdoError::ProviderNotFound: return L"Provider cannot be found. It may not be properly installed.";
  case AdoError::BadParameterInfo:
    return L"Parameter object is improperly defined. Inconsistent or incomplete information was provided.";
  case AdoError::InvalidConnection:
    return L"The connection cannot be used to perform this operation. It is either closed or invalid in this "
           L"context.";
  }
  return L"";
}

// What OLE DB makes of a server error.
struct Mapping {
  HRESULT hr;
  const wchar_t* sqlState;
};

constexpr auto kErrorsInCommand = static_cast<HRESULT>(0x80040E14);
constexpr auto kNoTable = static_cast<HRESULT>(0x80040E37);
constexpr auto kIntegrityViolation = static_cast<HRESULT>(0x80040E2F);
constexpr auto kCannotConvert = static_cast<HRESULT>(0x80040E07);
constexpr auto kDataOverflow = static_cast<HRESULT>(0x80040E57);
constexpr auto kTimeout = static_cast<HRESULT>(0x80040E31);

Mapping MappingOf(int number) {
  switch (number) {
  case 208:
  case 3701:
  case 4902: return {kNoTable, L"42S02"};
  case 207: return {kErrorsInCommand, L"42S22"};
  case 2714: return {kErrorsInCommand, L"42S01"};
  case 515:
  case 547:
  case 2601:
  case 2627: return {kIntegrityViolation, L"23000"};
  case 245: return {kCannotConvert, L"22018"};
  case 241:
  case 242: return {kCannotConvert, L"22007"};
  case 8114: return {kCannotConvert, L"42000"};
  case 8152: return {kDataOverflow, L"22001"};
  case 220:
  case 232:
  case 248:
  case 8115: return {kDataOverflow, L"22003"};
  case 8134: return {kErrorsInCommand, L"22012"};
  case 512: return {kErrorsInCommand, L"21000"};
  case 1205: return {E_FAIL, L"40001"};
  case 1222: return {kTimeout, L"HYT00"};
  case 4060: return {E_FAIL, L"42000"};
  default: return {kErrorsInCommand, L"42000"};
  }
}

} // namespace

const wchar_t kProviderSource[] = L"Microsoft OLE DB Provider for SQL Server";

void Raise(AdoError error, const wchar_t* source) {
  com::RaiseRuntimeError(static_cast<int>(error), source, TextOf(error));
}

void RaiseUnsupported(const wchar_t* feature, const wchar_t* source) {
  const std::wstring text = std::wstring(feature) + L": " + TextOf(AdoError::FeatureNotAvailable);
  com::RaiseRuntimeError(static_cast<int>(AdoError::FeatureNotAvailable), source, text.c_str());
}

ProviderError FromServer(const tsql::Error& error) {
  const Mapping mapping = MappingOf(error.number);
  return {mapping.hr, error.number, mapping.sqlState, com::FromUtf8(error.what())};
}

void Raise(const ProviderError& error) {
  throw com::ComError(error.hr, kProviderSource, error.description);
}

} // namespace standin::ado
