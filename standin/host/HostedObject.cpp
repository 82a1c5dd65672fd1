#include "standin/host/HostedObject.h"

#include <oaidl.h>
#include <ocidl.h>
#include <oleauto.h>

#include "com/ComError.h"
#include "com/PendingError.h"
#include "com/RefCounted.h"
#include "standin/host/UnitOfWork.h"

namespace standin {
namespace {

using com::Ptr;

class HostedObject final : public com::RefCounted<IDispatch, ISupportErrorInfo, IProvideClassInfo> {
 public:
  explicit HostedObject(Ptr<IDispatch> inner) : inner_(std::move(inner)) {
    inner_->QueryInterface(IID_ISupportErrorInfo, errorInfo_.OutVoid());
    inner_->QueryInterface(IID_IProvideClassInfo, classInfo_.OutVoid());
  }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (iid == IID_ISupportErrorInfo && errorInfo_)
      *object = static_cast<ISupportErrorInfo*>(this);
    else if (iid == IID_IProvideClassInfo && classInfo_)
      *object = static_cast<IProvideClassInfo*>(this);
    else if (iid == IID_IUnknown || iid == IID_IDispatch || IsDispatchInterface(iid))
      *object = static_cast<IDispatch*>(this);
    else
      return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return inner_->GetTypeInfoCount(count); }
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
    return inner_->GetTypeInfo(index, locale, info);
  }
  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override {
    return inner_->GetIDsOfNames(iid, names, count, locale, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                      EXCEPINFO* info, UINT* badArgument) override;

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
    return errorInfo_->InterfaceSupportsErrorInfo(iid);
  }
  STDMETHODIMP GetClassInfo(ITypeInfo** info) override { return classInfo_->GetClassInfo(info); }

 private:
  // Whether `iid` is the inner object's own dispinterface: IDispatch under another name.
  bool IsDispatchInterface(REFIID iid) {
    Ptr<ITypeInfo> info;
    TYPEATTR* attributes = nullptr;
    if (FAILED(inner_->GetTypeInfo(0, LOCALE_NEUTRAL, info.Out())) || FAILED(info->GetTypeAttr(&attributes)))
      return false;
    const bool same = attributes->typekind == TKIND_DISPATCH &&
                      (attributes->wTypeFlags & TYPEFLAG_FDUAL) == 0 && attributes->guid == iid;
    info->ReleaseTypeAttr(attributes);
    return same;
  }

  Ptr<IDispatch> inner_;
  Ptr<ISupportErrorInfo> errorInfo_;
  Ptr<IProvideClassInfo> classInfo_;
};

STDMETHODIMP HostedObject::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params,
                                  VARIANT* result, EXCEPINFO* info, UINT* badArgument) {
  const Ptr<HostedObject> aliveDuringTheCall(this);
  if (result) VariantInit(result);
  try {
    UnitOfWork unit;
    const HRESULT hr = inner_->Invoke(id, iid, locale, flags, params, result, info, badArgument);
    if (SUCCEEDED(hr)) {
      unit.Finish();
    } else {
      // The call's own error is the one that the client sees.
      const com::PendingError pending;
      unit.RollBack();
    }
    return hr;
  } catch (...) {
    if (result) VariantClear(result);
    return com::ReportCurrentException(info);
  }
}

} // namespace

com::Object MakeHosted(const com::Object& inner) {
  return com::Object(Ptr<IDispatch>(new HostedObject(Ptr<IDispatch>(inner.pointer()))));
}

} // namespace standin
