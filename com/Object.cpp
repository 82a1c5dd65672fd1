#include "com/Object.h"

#include <objbase.h>

#include <algorithm>

#include "com/ComError.h"

namespace com {

Object Object::Create(const wchar_t* progId) {
  CLSID clsid;
  Check(CLSIDFromProgID(progId, &clsid));
  Ptr<IDispatch> object;
  const HRESULT hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                      IID_IDispatch, object.OutVoid());
  if (FAILED(hr)) throw ComError::FromThread(hr);
  return Object(std::move(object));
}

DISPID Object::IdOf(const wchar_t* name) const {
  const auto known = std::ranges::find(known_, name, &KnownMember::name);
  if (known != known_.end()) return known->id;
  DISPID id = DISPID_UNKNOWN;
  wchar_t* names = const_cast<wchar_t*>(name);
  Check(object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id));
  known_[nextKnown_++ % known_.size()] = {name, id};
  return id;
}

Variant Object::InvokeArray(const wchar_t* name, WORD flags, Variant* args, size_t count) const {
  if (!object_) RaiseRuntimeError(91, L"", L"Object variable or With block variable not set");
  const DISPID id = IdOf(name);

  // A dispatch call takes its arguments last first.
  std::array<VARIANTARG, 16> reversed;
  if (count > reversed.size()) throw ComError::FromSystem(DISP_E_BADPARAMCOUNT);
  for (size_t i = 0; i < count; ++i) reversed[count - 1 - i] = args[i].raw();

  DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(count), 0};
  DISPID putId = DISPID_PROPERTYPUT;
  const bool put = flags == DISPATCH_PROPERTYPUT;
  if (put) {
    params.rgdispidNamedArgs = &putId;
    params.cNamedArgs = 1;
    if (args[count - 1].IsObject()) flags |= DISPATCH_PROPERTYPUTREF;
  }
  Variant result;
  EXCEPINFO info{};
  UINT badArgument = 0;
  const HRESULT hr = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                     put ? nullptr : &result.raw(), &info, &badArgument);
  if (hr == DISP_E_EXCEPTION) {
    // The error travels on as an exception; left on the thread as well it would be taken for a later one's.
    SetErrorInfo(0, nullptr);
    throw ComError::FromExcepInfo(info);
  }
  Check(hr);
  return result;
}

} // namespace com
