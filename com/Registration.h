// Registration of a module's classes and type library: for the whole machine, or for the user where the
// machine's part of the registry may not be written.
#pragma once

#include <oaidl.h>

#include <span>
#include <string>

#include "com/ClassObject.h"

namespace com {

struct RegistrationInfo {
  std::wstring modulePath;
  std::span<const ClassEntry> classes; // apartment-threaded
  bool typeLibrary = false;            // the module contains one, which is registered too
};

// Registers everything or nothing; what another file had registered is there again after a failure. A failure
// is the HRESULT of the step that failed: LoadTypeLib's where the type library is missing, E_ACCESSDENIED
// where neither the machine's nor the user's registry may be written.
HRESULT Register(const RegistrationInfo& info) noexcept;

// Removes both registrations, as far as they name this very module: what another copy, another version or the
// other width has registered keeps working. What is not there is no failure.
HRESULT Unregister(const RegistrationInfo& info) noexcept;

} // namespace com
