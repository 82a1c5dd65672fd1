// A COM server with nothing in it: one class, whose objects answer every call with 2. What the component's
// DLL is measured beside.
#include <oaidl.h>
#include <windows.h>

#include <atomic>

namespace {

// Both the class object and what it makes: neither has a state.
class Nothing : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
    return *out ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override;
  STDMETHODIMP LockServer(BOOL /*lock*/) override { return S_OK; }
};

class Empty : public IDispatch {
 public:
  virtual ~Empty() = default;
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
    if (!*out) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*language*/, ITypeInfo** /*info*/) override {
    return DISP_E_BADINDEX;
  }
  STDMETHODIMP GetIDsOfNames(REFIID /*iid*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*language*/,
                             DISPID* ids) override {
    *ids = 1;
    return S_OK;
  }
  STDMETHODIMP Invoke(DISPID /*member*/, REFIID /*iid*/, LCID /*language*/, WORD /*flags*/,
                      DISPPARAMS* /*parameters*/, VARIANT* result, EXCEPINFO* /*error*/,
                      UINT* /*argument*/) override {
    result->vt = VT_I4;
    result->lVal = 2;
    return S_OK;
  }

 private:
  std::atomic<ULONG> references_ = 0;
};

STDMETHODIMP Nothing::CreateInstance(IUnknown* /*outer*/, REFIID iid, void** out) {
  return (new Empty)->QueryInterface(iid, out);
}

Nothing g_classObject;

} // namespace

STDAPI DllGetClassObject(REFCLSID /*classId*/, REFIID iid, void** out) {
  return g_classObject.QueryInterface(iid, out);
}

STDAPI DllCanUnloadNow() {
  return S_OK;
}
