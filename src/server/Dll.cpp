// The four entry points of the COM server.
#include "com/Module.h"
#include "com/Registration.h"
#include "src/log/DiagnosticLog.h"
#include "src/server/Classes.h"

namespace {

com::RegistrationInfo Registered() {
  return {com::ModulePath(), mbom::PublicClasses(), true};
}

} // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object) {
  mbom::StartLogOfProcess(mbom::PublicClasses());
  return com::GetClassObject(mbom::PublicClasses(), classId, iid, object);
}

STDAPI DllCanUnloadNow() {
  return com::ModuleInUse() ? S_FALSE : S_OK;
}

STDAPI DllRegisterServer() {
  return com::Register(Registered());
}

STDAPI DllUnregisterServer() {
  return com::Unregister(Registered());
}
