#include "src/frame/modVexoLogMsg.h"

#include "com/ComError.h"
#include "com/PendingError.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;
namespace names = outside::log;

void CreateOnce(ProcedureLog& log) {
  if (log.initialised) return;
  log.initialised = true;
  try {
    log.object.Make(Object::Create(names::kProgId));
  } catch (const com::ComError&) { // NOLINT(bugprone-empty-catch): without the component nothing is logged
  }
}

// Whether the thread logs nothing, now and later: then nothing is called, and no error has to be kept.
bool IsSilent(ProcedureLog& log) {
  return log.initialised && !log.object.Get();
}

// Null when nothing is logged.
Object* EnabledLog(ProcedureLog& log) {
  Object* const object = log.object.Get();
  if (!object || object->Get(names::kIsEnabled).AsBool()) return object;
  log.object.Destroy();
  return nullptr;
}

} // namespace

int32_t LogStart(std::wstring_view procedure) {
  ProcedureLog& log = ThreadLog();
  if (IsSilent(log)) return 0;
  const com::PendingError pending;
  try {
    CreateOnce(log);
    Object* const object = EnabledLog(log);
    if (!object) return 0;
    Variant name(procedure);
    return object->Call(names::kLogStart, Variant::TypedReference(name)).AsLong();
  } catch (const com::ComError&) {
    return 0;
  }
}

void LogEnd(int32_t handle, int32_t value) {
  ProcedureLog& log = ThreadLog();
  if (IsSilent(log)) return;
  const com::PendingError pending;
  try {
    Object* const object = EnabledLog(log);
    if (!object) return;
    Variant first(handle);
    Variant second(value);
    object->Call(names::kLogEnd, Variant::TypedReference(first), Variant::TypedReference(second));
  } catch (const com::ComError&) { // NOLINT(bugprone-empty-catch): logging disturbs nobody
  }
}

} // namespace mbom
