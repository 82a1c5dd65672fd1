// DispatchObject: a COM object around a plain C++ class.
//
// The class knows nothing of COM; its table (TableOf) says what is called by which name. The object counts as
// a use of the module while it lives; whoever calls it holds a reference for the length of the call, as COM
// asks. Make<T>() creates one, Unwrap<T>() finds the class inside an object that may be anything. A class
// that hands out references to its own object declares SetSelf(IDispatch*); it is told once, before the first
// call, and holds the pointer without a reference.
#pragma once

#include <oaidl.h>
#include <ocidl.h>

#include <utility>

#include "com/DispatchTable.h"
#include "com/Ptr.h"
#include "com/RefCounted.h"

namespace com {

class DispatchBase : public RefCounted<IDispatch, ISupportErrorInfo, IProvideClassInfo> {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** object) final;

  STDMETHODIMP GetTypeInfoCount(UINT* count) final;
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) final;
  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) final;
  STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                      EXCEPINFO* info, UINT* badArgument) final;

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) final;
  STDMETHODIMP GetClassInfo(ITypeInfo** info) final;

  const DispatchTable& table() const noexcept { return table_; }
  virtual void* instance() noexcept = 0;

 protected:
  // `classId` is the coclass in the module's type library; CLSID_NULL when it has none.
  DispatchBase(const DispatchTable& table, REFCLSID classId) : table_(table), classId_(classId) {}

 private:
  const DispatchTable& table_;
  CLSID classId_;
};

// An interface that only this kit knows: an object that answers to it is a DispatchBase.
extern const IID kImplementationId;

template <class T>
concept KnowsItsObject = requires(T& object, IDispatch* self) {
  object.SetSelf(self);
};

template <class T>
class DispatchObject final : public DispatchBase {
 public:
  template <class... Args>
  explicit DispatchObject(REFCLSID classId, Args&&... args)
      : DispatchBase(TableOf<T>(), classId), object_(std::forward<Args>(args)...) {
    if constexpr (KnowsItsObject<T>) object_.SetSelf(this);
  }

  T& object() noexcept { return object_; }
  void* instance() noexcept override { return &object_; }

 private:
  T object_;
};

template <class T, class... Args>
Ptr<DispatchObject<T>> Make(Args&&... args) {
  return Ptr<DispatchObject<T>>(new DispatchObject<T>(CLSID_NULL, std::forward<Args>(args)...));
}

template <class T>
Object ToObject(const Ptr<DispatchObject<T>>& object) {
  return Object(Ptr<IDispatch>(object.Get()));
}

// The T inside `object`, valid as long as the object; null when it is something else.
template <class T>
T* Unwrap(IDispatch* object) {
  DispatchBase* base = nullptr;
  if (!object || FAILED(object->QueryInterface(kImplementationId, reinterpret_cast<void**>(&base))))
    return nullptr;
  T* result = &base->table() == &TableOf<T>() ? static_cast<T*>(base->instance()) : nullptr;
  base->Release();
  return result;
}

} // namespace com
