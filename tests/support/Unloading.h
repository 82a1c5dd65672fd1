// A copy of a DLL that is loaded, used and unloaded again and again, and what that leaves behind in the
// process.
#pragma once

#include <objbase.h>

#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "com/ComError.h"
#include "com/Module.h"
#include "com/Object.h"
#include "tests/support/HeapUse.h"

namespace com::test {

// What a process has of things that unloaded modules may have left to it.
struct Left {
  HeapUse heap;
  DWORD slot = 0;       // the next free slot of thread-local storage
  uintptr_t handle = 0; // the number of the next handle

  // Throws what HeapUse::Now does.
  static Left Now() {
    Left left{.heap = HeapUse::Now()};
    left.slot = TlsAlloc();
    TlsFree(left.slot);
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    left.handle = reinterpret_cast<uintptr_t>(event);
    CloseHandle(event);
    return left;
  }
};

// A copy that nobody but the test loads, in the folder for temporary files.
class DllCopy {
 public:
  explicit DllCopy(const std::wstring& file) {
    const std::wstring self = ModulePath();
    std::wstring folder(MAX_PATH, L'\0');
    folder.resize(GetTempPathW(MAX_PATH, folder.data()));
    path_ = folder + std::to_wstring(GetCurrentProcessId()) + file;
    CopyFileW((self.substr(0, self.find_last_of(L'\\') + 1) + file).c_str(), path_.c_str(), FALSE);
  }
  ~DllCopy() { DeleteFileW(path_.c_str()); }
  DllCopy(const DllCopy&) = delete;
  DllCopy& operator=(const DllCopy&) = delete;

  const wchar_t* path() const { return path_.c_str(); }
  bool IsLoaded() const { return GetModuleHandleW(path()) != nullptr; }

 private:
  std::wstring path_;
};

// A DLL that is loaded as long as this lives.
class LoadedServer {
 public:
  explicit LoadedServer(const wchar_t* path) : module_(LoadLibraryW(path)) {}
  ~LoadedServer() {
    if (module_) FreeLibrary(module_);
  }
  LoadedServer(const LoadedServer&) = delete;
  LoadedServer& operator=(const LoadedServer&) = delete;

  Object Create(REFCLSID classId) const {
    using GetClassObject = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
    Ptr<IClassFactory> factory;
    Check(Export<GetClassObject>("DllGetClassObject")(classId, IID_IClassFactory, factory.OutVoid()));
    Ptr<IDispatch> object;
    Check(factory->CreateInstance(nullptr, IID_IDispatch, object.OutVoid()));
    return Object(object);
  }
  // As COM asks before it unloads a DLL.
  bool MayGo() const { return Export<HRESULT STDAPICALLTYPE()>("DllCanUnloadNow")() == S_OK; }

 private:
  template <class Function>
  Function* Export(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  HMODULE module_;
};

// What the cycles have left, each round of them compared with the one before; how many rounds left more.
// UNLOADING_CYCLES in the environment sets how many cycles there are in all.
inline int GrowingRounds(const std::function<void()>& cycle, std::ostream& out) {
  constexpr int kRounds = 4;
  const char* const text = std::getenv("UNLOADING_CYCLES");
  const int cycles = text ? std::atoi(text) : 200;
  for (int i = 0; i < 20; ++i) cycle();
  int growing = 0;
  Left before = Left::Now();
  for (int round = 0; round < kRounds; ++round) {
    for (int i = 0; i < cycles / kRounds; ++i) cycle();
    const Left after = Left::Now();
    out << cycles / kRounds << " cycles: blocks " << before.heap.blocks << " to " << after.heap.blocks
        << ", bytes " << before.heap.bytes << " to " << after.heap.bytes << ", slot " << before.slot << " to "
        << after.slot << ", handle " << before.handle << " to " << after.handle << "\n";
    if (after.heap.blocks > before.heap.blocks || after.heap.bytes > before.heap.bytes ||
        after.slot > before.slot || after.handle > before.handle)
      ++growing;
    before = after;
  }
  return growing;
}

} // namespace com::test
