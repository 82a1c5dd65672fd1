#include "com/Object.h"

#include <objbase.h>

#include <algorithm>

#include "com/ComError.h"

namespace com {

namespace {

constexpr DWORD kAnyServer = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER;

CLSID ClassIdOf(const wchar_t* progId) {
  CLSID classId;
  Check(CLSIDFromProgID(progId, &classId));
  return classId;
}

[[noreturn]] void RaiseNoObject() {
  Raise(RuntimeError::ObjectNotSet, L"");
}

// The arguments of a call in the order of a dispatch call, the last one first.
void Invoke(IDispatch* object, DISPID id, WORD flags, std::span<VARIANTARG> reversed, VARIANT* result) {
  if (!object) RaiseNoObject();
  DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  DISPID putId = DISPID_PROPERTYPUT;
  if (flags == DISPATCH_PROPERTYPUT) {
    params.rgdispidNamedArgs = &putId;
    params.cNamedArgs = 1;
    if (reversed[0].vt == VT_DISPATCH || reversed[0].vt == VT_UNKNOWN) flags |= DISPATCH_PROPERTYPUTREF;
  }
  EXCEPINFO info{};
  UINT badArgument = 0;
  const HRESULT hr =
      object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result, &info, &badArgument);
  if (hr == DISP_E_EXCEPTION) {
    // The error travels on as an exception; left on the thread as well it would be taken for a later one's.
    SetErrorInfo(0, nullptr);
    throw ComError::FromExcepInfo(info);
  }
  Check(hr);
}

} // namespace

Object Object::Create(const wchar_t* progId) {
  const CLSID clsid = ClassIdOf(progId);
  Ptr<IDispatch> object;
  const HRESULT hr = CoCreateInstance(clsid, nullptr, kAnyServer, IID_IDispatch, object.OutVoid());
  if (FAILED(hr)) throw ComError::FromThread(hr);
  return Object(std::move(object));
}

DISPID Object::IdOf(const wchar_t* name) const {
  if (!object_) RaiseNoObject();
  const auto known = std::ranges::find(known_, name, &KnownMember::name);
  if (known != known_.end()) return known->id;
  DISPID id = DISPID_UNKNOWN;
  wchar_t* names = const_cast<wchar_t*>(name);
  Check(object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id));
  known_[nextKnown_++ % known_.size()] = {name, id};
  return id;
}

Variant Object::InvokeArray(const wchar_t* name, WORD flags, Variant* args, size_t count) const {
  const DISPID id = IdOf(name);
  std::array<VARIANTARG, 16> reversed;
  if (count > reversed.size()) throw ComError::FromSystem(DISP_E_BADPARAMCOUNT);
  for (size_t i = 0; i < count; ++i) reversed[count - 1 - i] = args[i].raw();
  Variant result;
  com::Invoke(object_.Get(), id, flags, {reversed.data(), count},
              flags == DISPATCH_PROPERTYPUT ? nullptr : &result.raw());
  return result;
}

ObjectClass::ObjectClass(const wchar_t* progId) {
  const CLSID classId = ClassIdOf(progId);
  const HRESULT hr = CoGetClassObject(classId, kAnyServer, nullptr, IID_IClassFactory, factory_.OutVoid());
  if (FAILED(hr)) throw ComError::FromThread(hr);
}

Object ObjectClass::Create() const {
  Ptr<IDispatch> object;
  const HRESULT hr = factory_->CreateInstance(nullptr, IID_IDispatch, object.OutVoid());
  if (FAILED(hr)) throw ComError::FromThread(hr);
  return Object(std::move(object));
}

BoundMember::BoundMember(const Object& object, const wchar_t* name) : id_(object.IdOf(name)) {}

Variant BoundMember::Get(const Object& object) const {
  Variant result;
  Invoke(object.pointer(), id_, DISPATCH_PROPERTYGET | DISPATCH_METHOD, {}, &result.raw());
  return result;
}

Variant BoundMember::Get(const Object& object, const Variant& index) const {
  VARIANTARG borrowed = index.raw();
  Variant result;
  Invoke(object.pointer(), id_, DISPATCH_PROPERTYGET | DISPATCH_METHOD, {&borrowed, 1}, &result.raw());
  return result;
}

Variant BoundMember::Get(const Object& object, const Variant& first, const Variant& second) const {
  std::array<VARIANTARG, 2> borrowed{second.raw(), first.raw()};
  Variant result;
  Invoke(object.pointer(), id_, DISPATCH_PROPERTYGET | DISPATCH_METHOD, borrowed, &result.raw());
  return result;
}

void BoundMember::Call(const Object& object) const {
  Variant result;
  Invoke(object.pointer(), id_, DISPATCH_METHOD, {}, &result.raw());
}

void BoundMember::Call(const Object& object, const Variant& argument) const {
  VARIANTARG borrowed = argument.raw();
  Variant result;
  Invoke(object.pointer(), id_, DISPATCH_METHOD, {&borrowed, 1}, &result.raw());
}

void BoundMember::Put(const Object& object, const Variant& index, const Variant& value) const {
  std::array<VARIANTARG, 2> borrowed{value.raw(), index.raw()};
  Invoke(object.pointer(), id_, DISPATCH_PROPERTYPUT, borrowed, nullptr);
}

} // namespace com
