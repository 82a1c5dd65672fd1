// The component's per-thread state: outside objects that are created on first use on a thread and kept for
// the thread's life. They are never released, as plain pointers: at a thread's end COM may already be gone.
#pragma once

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
// The classes of the foundation's collections. Most calls make some of them, and to look a class up takes
// longer than to fill a row.
const com::ObjectClass& DictionaryClass();
const com::ObjectClass& VectorClass();

// The procedure log of a thread. Its object is the only one here that may go again: when it says that it is
// disabled.
struct ProcedureLog {
  bool initialised = false; // creating the object was tried
  com::Object* object = nullptr;
};
ProcedureLog& ThreadLog();

} // namespace mbom
