#include "com/ComError.h"

#include <array>
#include <cstdio>
#include <cwchar>
#include <new>
#include <utility>

#include "com/ErrorInfo.h"
#include "com/Ptr.h"
#include "com/Text.h"

namespace com {
namespace {

bool HoldsNul(const std::wstring& text) {
  return text.find(L'\0') != std::wstring::npos;
}

// The whole text; null when there is no memory.
BSTR WholeBstr(const std::wstring& text) {
  return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

std::wstring SystemText(HRESULT hr) {
  wchar_t* text = nullptr;
  const DWORD flags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const DWORD length = FormatMessageW(flags, nullptr, static_cast<DWORD>(hr), 0,
                                      reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::wstring result(text ? text : L"", length);
  LocalFree(text);
  while (!result.empty() && result.back() <= L' ') result.pop_back();
  if (!result.empty()) return result;
  // Not every system knows a text for every code.
  std::array<wchar_t, 32> code{};
  std::swprintf(code.data(), code.size(), L"Error 0x%08lX", static_cast<unsigned long>(hr));
  return code.data();
}

} // namespace

ComError::ComError(HRESULT hr, std::wstring source, std::wstring description, std::wstring helpFile,
                   DWORD helpContext)
    : hr_(hr), source_(std::move(source)), description_(std::move(description)),
      helpFile_(std::move(helpFile)), helpContext_(helpContext) {
  std::array<char, 16> code{};
  std::snprintf(code.data(), code.size(), "0x%08lX ", static_cast<unsigned long>(hr));
  what_ = code.data() + ToUtf8(description_);
}

ComError ComError::FromSystem(HRESULT hr) {
  return {hr, {}, SystemText(hr)};
}

ComError ComError::FromThread(HRESULT hr) {
  Ptr<IErrorInfo> info;
  if (GetErrorInfo(0, info.Out()) != S_OK) return FromSystem(hr);
  BSTR source = nullptr;
  BSTR description = nullptr;
  BSTR helpFile = nullptr;
  DWORD helpContext = 0;
  info->GetSource(&source);
  info->GetDescription(&description);
  info->GetHelpFile(&helpFile);
  info->GetHelpContext(&helpContext);
  return {hr, TakeBstr(source), TakeBstr(description), TakeBstr(helpFile), helpContext};
}

ComError ComError::FromExcepInfo(EXCEPINFO& info) {
  if (info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
  // A server that reports only the 16-bit code means an Automation run-time error.
  const HRESULT hr = info.scode ? info.scode : MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, info.wCode);
  return {hr, TakeBstr(std::exchange(info.bstrSource, nullptr)),
          TakeBstr(std::exchange(info.bstrDescription, nullptr)),
          TakeBstr(std::exchange(info.bstrHelpFile, nullptr)), info.dwHelpContext};
}

void ComError::SetOnThread() const noexcept {
  if (HoldsNul(source_) || HoldsNul(description_)) {
    try {
      SetErrorInfo(0, MakeErrorInfo(*this).Get());
      return;
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): what is in front of the NUL must do
    }
  }
  Ptr<ICreateErrorInfo> create;
  if (FAILED(CreateErrorInfo(create.Out()))) return;
  create->SetSource(const_cast<wchar_t*>(source_.c_str()));
  create->SetDescription(const_cast<wchar_t*>(description_.c_str()));
  if (!helpFile_.empty()) create->SetHelpFile(const_cast<wchar_t*>(helpFile_.c_str()));
  create->SetHelpContext(helpContext_);
  Ptr<IErrorInfo> info;
  if (SUCCEEDED(create->QueryInterface(IID_IErrorInfo, info.OutVoid()))) SetErrorInfo(0, info.Get());
}

void ComError::FillExcepInfo(EXCEPINFO& info) const noexcept {
  info = {};
  info.scode = hr_;
  info.bstrSource = WholeBstr(source_);
  info.bstrDescription = WholeBstr(description_);
  if (!helpFile_.empty()) info.bstrHelpFile = WholeBstr(helpFile_);
  info.dwHelpContext = helpContext_;
}

void RaiseSystemError(HRESULT hr) {
  throw ComError::FromSystem(hr);
}

HRESULT ReportCurrentException(EXCEPINFO* info) noexcept {
  try {
    throw;
  } catch (const ComError& error) {
    error.SetOnThread();
    if (info) error.FillExcepInfo(*info);
    return info ? DISP_E_EXCEPTION : error.code();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& error) {
    try {
      const ComError wrapped(E_FAIL, {}, FromUtf8(error.what()));
      wrapped.SetOnThread();
      if (info) wrapped.FillExcepInfo(*info);
      return info ? DISP_E_EXCEPTION : E_FAIL;
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    }
  }
}

void Raise(RuntimeError error, const wchar_t* source) {
  const auto text = [error] {
    switch (error) {
    case RuntimeError::InvalidCall: return L"Invalid procedure call or argument";
    case RuntimeError::Overflow: return L"Overflow";
    case RuntimeError::SubscriptOutOfRange: return L"Subscript out of range";
    case RuntimeError::TypeMismatch: return L"Type mismatch";
    case RuntimeError::ObjectNotSet: return L"Object variable or With block variable not set";
    case RuntimeError::KeyExists: return L"This key is already associated with an element of this collection";
    }
    return L"";
  };
  RaiseRuntimeError(static_cast<int>(error), source, text());
}

void Raise(RuntimeError error, const wchar_t* source, const std::wstring& description) {
  RaiseRuntimeError(static_cast<int>(error), source, description);
}

void RaiseRuntimeError(int number, const wchar_t* source, const std::wstring& description) {
  throw ComError(MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number), source, description);
}

} // namespace com
