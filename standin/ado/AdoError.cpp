#include "standin/ado/AdoError.h"

#include "com/ComError.h"

namespace standin::ado {
namespace {

const wchar_t* TextOf(AdoError error) {
  switch (error) {
  case AdoError::InvalidArgument:
    return L"Arguments are of the wrong type, are out of acceptable range, or are in conflict with one "
           L"another.";
  case AdoError::NoCurrentRecord:
    return L"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires "
           L"a current record.";
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

} // namespace

void Raise(AdoError error, const wchar_t* source) {
  com::RaiseRuntimeError(static_cast<int>(error), source, TextOf(error));
}

void RaiseUnsupported(const wchar_t* feature, const wchar_t* source) {
  const std::wstring text = std::wstring(feature) + L": " + TextOf(AdoError::FeatureNotAvailable);
  com::RaiseRuntimeError(static_cast<int>(AdoError::FeatureNotAvailable), source, text);
}

} // namespace standin::ado
