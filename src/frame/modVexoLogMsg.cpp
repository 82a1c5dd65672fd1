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
    log.object = new Object(Object::Create(names::kProgId));
  } catch (const com::ComError&) { // NOLINT(bugprone-empty-catch): without the component nothing is logged
  }
}

bool IsLogEnabled(ProcedureLog& log) {
  if (!log.object) return false;
  if (log.object->Get(names::kIsEnabled).AsBool()) return true;
  delete log.object;
  log.object = nullptr;
  return false;
}

} // namespace

int32_t LogStart(const std::wstring& procedure) {
  const com::PendingError pending;
  try {
    ProcedureLog& log = ThreadLog();
    CreateOnce(log);
    if (!IsLogEnabled(log)) return 0;
    Variant name(procedure);
    return log.object->Call(names::kLogStart, Variant::TypedReference(name)).AsLong();
  } catch (const com::ComError&) {
    return 0;
  }
}

void LogEnd(int32_t handle, int32_t value) {
  const com::PendingError pending;
  try {
    ProcedureLog& log = ThreadLog();
    if (!IsLogEnabled(log)) return;
    Variant first(handle);
    Variant second(value);
    log.object->Call(names::kLogEnd, Variant::TypedReference(first), Variant::TypedReference(second));
  } catch (const com::ComError&) { // NOLINT(bugprone-empty-catch): logging disturbs nobody
  }
}

} // namespace mbom
