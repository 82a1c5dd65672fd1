// A DLL that lies beside the test program, loaded for a test.
#pragma once

#include <windows.h>

#include <string>

#include "com/Module.h"

namespace mbom::test {

inline std::wstring BesideTheTest(const wchar_t* file) {
  const std::wstring self = com::ModulePath();
  return self.substr(0, self.find_last_of(L'\\') + 1) + file;
}

class LoadedDll {
 public:
  explicit LoadedDll(const wchar_t* file) : module_(LoadLibraryW(BesideTheTest(file).c_str())) {}
  ~LoadedDll() {
    if (module_) FreeLibrary(module_);
  }
  LoadedDll(const LoadedDll&) = delete;
  LoadedDll& operator=(const LoadedDll&) = delete;

  explicit operator bool() const { return module_ != nullptr; }
  // The exported function, called with whatever the caller knows its signature to be.
  template <class Function>
  Function* Export(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

 private:
  HMODULE module_;
};

} // namespace mbom::test
