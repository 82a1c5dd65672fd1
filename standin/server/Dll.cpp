// The entry points of the COM server.
#include <windows.h>

#include "com/Module.h"
#include "com/Registration.h"
#include "odbc/SessionPool.h"
#include "standin/ado/SessionPool.h"
#include "standin/host/ThreadState.h"
#include "standin/server/Classes.h"
#include "tsql/tsql.h"

namespace {

bool RunsUnderWine() {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll && GetProcAddress(ntdll, "wine_get_version");
}

com::RegistrationInfo Registered() {
  return {com::ModulePath(), RunsUnderWine() ? standin::Classes() : standin::ClassesBesidesAdo(), false};
}

} // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object) {
  return com::GetClassObject(standin::Classes(), classId, iid, object);
}

STDAPI DllCanUnloadNow() {
  if (com::ModuleInUse()) return S_FALSE;
  // Nobody is left who could come back to an idle session.
  standin::ado::SessionPool::ClearAll();
  odbc::SessionPool::Clear();
  return S_OK;
}

STDAPI DllRegisterServer() {
  return com::Register(Registered());
}

STDAPI DllUnregisterServer() {
  return com::Unregister(Registered());
}

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, void* processEnds) {
  if (reason == DLL_THREAD_DETACH) {
    standin::ReleaseThreadState();
    standin::ado::SessionPool::ClearThread();
    odbc::SessionPool::ReleaseThread();
  }
  if (reason == DLL_PROCESS_DETACH && !processEnds) {
    standin::ado::SessionPool::ClearAll();
    if (!com::ModuleInUse()) tsql::ReleaseStorage();
  }
  return TRUE;
}
