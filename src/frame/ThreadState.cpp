#include "src/frame/ThreadState.h"

#include "src/frame/OutsideNames.h"

namespace mbom {
namespace {

using com::Object;
using com::ObjectClass;

thread_local const Object* t_global = nullptr;
thread_local const Object* t_loader = nullptr;
thread_local const Object* t_factory = nullptr;
thread_local const Object* t_foundation = nullptr;
thread_local const ObjectClass* t_dictionaryClass = nullptr;
thread_local const ObjectClass* t_vectorClass = nullptr;
thread_local ProcedureLog t_log;

const Object& OnFirstUse(const Object*& slot, const wchar_t* progId) {
  if (!slot) slot = new Object(Object::Create(progId));
  return *slot;
}

const ObjectClass& OnFirstUse(const ObjectClass*& slot, const wchar_t* progId) {
  if (!slot) slot = new ObjectClass(progId);
  return *slot;
}

} // namespace

const Object& GlobalObject() {
  return OnFirstUse(t_global, outside::global::kProgId);
}

const Object& ResourceLoader() {
  return OnFirstUse(t_loader, outside::loader::kProgId);
}

const Object& ObjectFactory() {
  return OnFirstUse(t_factory, outside::factory::kProgId);
}

const Object& FoundationGlobal() {
  return OnFirstUse(t_foundation, outside::foundation::kProgId);
}

const ObjectClass& DictionaryClass() {
  return OnFirstUse(t_dictionaryClass, outside::dictionary::kProgId);
}

const ObjectClass& VectorClass() {
  return OnFirstUse(t_vectorClass, outside::vector::kProgId);
}

ProcedureLog& ThreadLog() {
  return t_log;
}

} // namespace mbom
