// Class objects: what a module hands to COM so that clients can create its classes.
#pragma once

#include <objbase.h>

#include <span>

#include "com/DispatchObject.h"

namespace com {

// A class of the module that is created by its ProgID.
struct ClassEntry {
  CLSID classId;
  const wchar_t* progId;
  const wchar_t* description;
  // Creates the object. Throws what its constructor throws.
  Ptr<IDispatch> (*create)(REFCLSID classId);
};

template <class T>
Ptr<IDispatch> CreateDispatchObject(REFCLSID classId) {
  return Ptr<IDispatch>(new DispatchObject<T>(classId));
}

// The body of DllGetClassObject: CLASS_E_CLASSNOTAVAILABLE for a class that is not in `classes`. The class
// objects refuse aggregation with CLASS_E_NOAGGREGATION.
HRESULT GetClassObject(std::span<const ClassEntry> classes, REFCLSID classId, REFIID iid,
                       void** object) noexcept;

} // namespace com
