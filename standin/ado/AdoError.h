// AdoError: the errors that the ADO objects raise themselves, by number.
#pragma once

namespace standin::ado {

// ADO's numbers (ErrorValueEnum); as HRESULT 0x800A0000 + number.
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

} // namespace standin::ado
