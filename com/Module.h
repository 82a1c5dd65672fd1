// Module: facts about the DLL or program that this code is in: whether it is in use, where its file is, its type
// library.
#pragma once

#include <oaidl.h>

#include <string>

#include "com/Ptr.h"

namespace com {

// Counts as one use of the module for as long as it lives: every object and every lock holds one.
class ModuleUse {
 public:
  ModuleUse() noexcept;
  ~ModuleUse();
  ModuleUse(const ModuleUse&) noexcept : ModuleUse() {}
  ModuleUse& operator=(const ModuleUse&) = default;
};

bool ModuleInUse() noexcept;
void LockModule(bool lock) noexcept;

// The full path of the DLL or program that this code was linked into.
std::wstring ModulePath();

// The type library inside the file `path`. A failure is LoadTypeLib's HRESULT.
HRESULT LoadModuleTypeLibrary(const std::wstring& path, Ptr<ITypeLib>& library);

} // namespace com
