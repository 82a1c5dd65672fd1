#include "com/ErrorInfo.h"

#include <oleauto.h>

#include "com/ComError.h"
#include "com/RefCounted.h"
#include "com/Text.h"

namespace com {
namespace {

class ErrorInfo final : public RefCounted<IErrorInfo> {
 public:
  // NOLINTNEXTLINE(bugprone-throw-keyword-missing): the error is kept, not thrown
  explicit ErrorInfo(const ComError& error) : error_(error) {}

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IErrorInfo;
    *object = known ? static_cast<IErrorInfo*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP GetGUID(GUID* guid) override {
    if (!guid) return E_POINTER;
    *guid = GUID_NULL;
    return S_OK;
  }
  STDMETHODIMP GetSource(BSTR* source) override { return Give(error_.source(), source); }
  STDMETHODIMP GetDescription(BSTR* description) override { return Give(error_.description(), description); }
  STDMETHODIMP GetHelpFile(BSTR* helpFile) override { return Give(error_.helpFile(), helpFile); }
  STDMETHODIMP GetHelpContext(DWORD* helpContext) override {
    if (!helpContext) return E_POINTER;
    *helpContext = error_.helpContext();
    return S_OK;
  }

 private:
  static HRESULT Give(const std::wstring& text, BSTR* out) {
    if (!out) return E_POINTER;
    *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *out ? S_OK : E_OUTOFMEMORY;
  }

  const ComError error_;
};

} // namespace

Ptr<IErrorInfo> MakeErrorInfo(const ComError& error) {
  return Ptr<IErrorInfo>(new ErrorInfo(error));
}

} // namespace com
