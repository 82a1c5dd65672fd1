#include "com/ClassObject.h"

#include <algorithm>
#include <new>

#include "com/RefCounted.h"

namespace com {
namespace {

class ClassObject final : public RefCounted<IClassFactory> {
 public:
  explicit ClassObject(const ClassEntry& entry) : entry_(entry) {}

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    try {
      return entry_.create(entry_.classId)->QueryInterface(iid, object);
    } catch (...) {
      return ReportCurrentException(nullptr);
    }
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    LockModule(lock != FALSE);
    return S_OK;
  }

 private:
  const ClassEntry& entry_;
};

} // namespace

HRESULT GetClassObject(std::span<const ClassEntry> classes, REFCLSID classId, REFIID iid,
                       void** object) noexcept {
  if (!object) return E_POINTER;
  *object = nullptr;
  const auto entry = std::ranges::find_if(
      classes, [&](const ClassEntry& candidate) { return candidate.classId == classId; });
  if (entry == classes.end()) return CLASS_E_CLASSNOTAVAILABLE;
  const Ptr<ClassObject> factory(new (std::nothrow) ClassObject(*entry));
  return factory ? factory->QueryInterface(iid, object) : E_OUTOFMEMORY;
}

} // namespace com
