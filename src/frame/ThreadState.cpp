#include "src/frame/ThreadState.h"

#include "src/frame/OutsideNames.h"

namespace mbom {
namespace {

using com::Object;
using com::ObjectClass;

constinit thread_local Undestroyed<Object> t_global;
constinit thread_local Undestroyed<Object> t_loader;
constinit thread_local Undestroyed<Object> t_factory;
constinit thread_local Undestroyed<Object> t_foundation;
constinit thread_local Undestroyed<ObjectClass> t_dictionaryClass;
constinit thread_local Undestroyed<ObjectClass> t_vectorClass;
constinit thread_local Undestroyed<ObjectClass> t_recordsetClass;
constinit thread_local Undestroyed<ObjectClass> t_commandClass;
constinit thread_local ProcedureLog t_log;

const Object& OnFirstUse(Undestroyed<Object>& slot, const wchar_t* progId) {
  if (const Object* const object = slot.Get()) return *object;
  return slot.Make(Object::Create(progId));
}

const ObjectClass& OnFirstUse(Undestroyed<ObjectClass>& slot, const wchar_t* progId) {
  if (const ObjectClass* const known = slot.Get()) return *known;
  return slot.Make(progId);
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

const ObjectClass& RecordsetClass() {
  return OnFirstUse(t_recordsetClass, outside::ado::kRecordsetProgId);
}

const ObjectClass& CommandClass() {
  return OnFirstUse(t_commandClass, outside::ado::kCommandProgId);
}

ProcedureLog& ThreadLog() {
  return t_log;
}

} // namespace mbom
