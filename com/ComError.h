// ComError: a failed COM call on its way through C++.
//
// It carries everything that a COM client can see of an error, so that what a callee raised leaves this
// module unchanged, NULs in texts included: as the EXCEPINFO of a dispatch call and as the thread's error
// object.
#pragma once

#include <oaidl.h>

#include <exception>
#include <string>

namespace com {

class ComError : public std::exception {
 public:
  ComError(HRESULT hr, std::wstring source, std::wstring description, std::wstring helpFile = {},
           DWORD helpContext = 0);

  // The error of a system function that failed with `hr`, in the system's words.
  static ComError FromSystem(HRESULT hr);
  // The error of an object that failed with `hr`: takes the thread's error object where there is one.
  static ComError FromThread(HRESULT hr);
  // The error of a dispatch call that returned DISP_E_EXCEPTION. Frees the strings of `info`.
  static ComError FromExcepInfo(EXCEPINFO& info);

  HRESULT code() const noexcept { return hr_; }
  const std::wstring& source() const noexcept { return source_; }
  const std::wstring& description() const noexcept { return description_; }
  const std::wstring& helpFile() const noexcept { return helpFile_; }
  DWORD helpContext() const noexcept { return helpContext_; }
  // The code and the description, for whoever knows it only as an exception.
  const char* what() const noexcept override { return what_.c_str(); }

  // Makes this error the thread's error object.
  void SetOnThread() const noexcept;
  void FillExcepInfo(EXCEPINFO& info) const noexcept;

 private:
  HRESULT hr_;
  std::wstring source_;
  std::wstring description_;
  std::wstring helpFile_;
  DWORD helpContext_;
  std::string what_;
};

[[noreturn]] void RaiseSystemError(HRESULT hr);

// Throws FromSystem(hr) when hr is a failure.
inline void Check(HRESULT hr) {
  if (FAILED(hr)) RaiseSystemError(hr);
}

// For a catch (...) at a COM boundary: turns the exception in flight into its HRESULT and the thread's error
// object, and fills `info` when there is one.
HRESULT ReportCurrentException(EXCEPINFO* info) noexcept;

// Run-time errors as Automation languages number them; their HRESULTs are 0x800A0000 + n.
enum class RuntimeError : int {
  InvalidCall = 5,
  Overflow = 6,
  SubscriptOutOfRange = 9,
  TypeMismatch = 13,
  ObjectNotSet = 91,
  KeyExists = 457,
};
// Throws the error with the language's own text for it.
[[noreturn]] void Raise(RuntimeError error, const wchar_t* source);
// Throws the error with a text that says more.
[[noreturn]] void Raise(RuntimeError error, const wchar_t* source, const std::wstring& description);
// The same for the numbers of a library of its own.
[[noreturn]] void RaiseRuntimeError(int number, const wchar_t* source, const std::wstring& description);

} // namespace com
