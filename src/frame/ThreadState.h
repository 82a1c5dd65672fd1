// The component's per-thread state: outside objects that are created on first use on a thread and kept for
// the thread's life. They are never released: at a thread's end COM may already be gone. They lie in the
// thread's storage itself, so that their memory, though not the reference, goes with the module.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "com/Object.h"

namespace mbom {

// The data-access library's global object.
const com::Object& GlobalObject();
// The resource loader.
const com::Object& ResourceLoader();
// The base library's object factory.
const com::Object& ObjectFactory();
// The foundation library's global object.
const com::Object& FoundationGlobal();
// The classes of the foundation's collections, and of ADO's objects that the component makes itself. Most
// calls make some of them, and to look a class up takes longer than to fill a row or to run a short
// statement.
const com::ObjectClass& DictionaryClass();
const com::ObjectClass& VectorClass();
const com::ObjectClass& RecordsetClass();
const com::ObjectClass& CommandClass();

// A T in thread-local storage, which is made when it is asked for and whose destructor no thread's end runs.
template <class T>
class Undestroyed {
 public:
  T* Get() noexcept { return made_ ? std::launder(reinterpret_cast<T*>(place_)) : nullptr; }
  template <class... Args>
  T& Make(Args&&... args) {
    T* const made = new (place_) T(std::forward<Args>(args)...);
    made_ = true;
    return *made;
  }
  void Destroy() noexcept {
    if (T* const made = Get()) made->~T();
    made_ = false;
  }

 private:
  alignas(T) std::byte place_[sizeof(T)]{};
  bool made_ = false;
};

// The procedure log of a thread. Its object is the only one here that may go again: when it says that it is
// disabled.
struct ProcedureLog {
  bool initialised = false; // creating the object was tried
  Undestroyed<com::Object> object;
};
ProcedureLog& ThreadLog();

} // namespace mbom
