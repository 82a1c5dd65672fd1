#include "com/DispatchObject.h"

#include <oleauto.h>

#include "com/ObservedCall.h"

namespace com {

const IID kImplementationId = {0x7c1f3a52, 0x0b6d, 0x4e83, {0x9a, 0x41, 0xd2, 0x5e, 0x88, 0x13, 0x6f, 0x07}};

STDMETHODIMP DispatchBase::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (iid == IID_IUnknown || iid == IID_IDispatch || (iid == table_.interfaceId() && iid != IID_NULL))
    *object = static_cast<IDispatch*>(this);
  else if (iid == IID_ISupportErrorInfo)
    *object = static_cast<ISupportErrorInfo*>(this);
  else if (iid == IID_IProvideClassInfo && classId_ != CLSID_NULL)
    *object = static_cast<IProvideClassInfo*>(this);
  else if (iid == kImplementationId)
    *object = this;
  else
    return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP DispatchBase::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = table_.interfaceId() == IID_NULL ? 0 : 1;
  return S_OK;
}

namespace {

HRESULT TypeInfoOf(REFGUID id, ITypeInfo** info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  Ptr<ITypeLib> library;
  if (const HRESULT hr = LoadModuleTypeLibrary(ModulePath(), library); FAILED(hr)) return hr;
  return library->GetTypeInfoOfGuid(id, info);
}

} // namespace

STDMETHODIMP DispatchBase::GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** info) {
  if (table_.interfaceId() == IID_NULL) return E_NOTIMPL;
  return index == 0 ? TypeInfoOf(table_.interfaceId(), info) : DISP_E_BADINDEX;
}

STDMETHODIMP DispatchBase::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID /*locale*/,
                                         DISPID* ids) {
  return iid == IID_NULL ? table_.GetIDsOfNames(names, count, ids) : DISP_E_UNKNOWNINTERFACE;
}

STDMETHODIMP DispatchBase::Invoke(DISPID id, REFIID iid, LCID /*locale*/, WORD flags, DISPPARAMS* params,
                                  VARIANT* result, EXCEPINFO* info, UINT* badArgument) {
  if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  const CallObserver* const observer = ObserverOfCalls();
  if (!observer || classId_ == CLSID_NULL)
    return table_.Invoke(instance(), id, flags, params, result, info, badArgument);
  const ObservedCall call(classId_, table_.NameOf(id, flags));
  observer->begins(call);
  const HRESULT answer = table_.Invoke(instance(), id, flags, params, result, info, badArgument);
  observer->ends(call, answer, answer == DISP_E_EXCEPTION ? info : nullptr);
  return answer;
}

STDMETHODIMP DispatchBase::InterfaceSupportsErrorInfo(REFIID iid) {
  return iid == IID_IDispatch || (iid == table_.interfaceId() && iid != IID_NULL) ? S_OK : S_FALSE;
}

STDMETHODIMP DispatchBase::GetClassInfo(ITypeInfo** info) {
  return TypeInfoOf(classId_, info);
}

} // namespace com
