#include "com/Module.h"

#include <oleauto.h>

#include <atomic>

extern "C" IMAGE_DOS_HEADER __ImageBase; // NOLINT(bugprone-reserved-identifier): the linker's name

namespace com {
namespace {

std::atomic<long> g_uses{0};

} // namespace

ModuleUse::ModuleUse() noexcept {
  LockModule(true);
}

ModuleUse::~ModuleUse() {
  LockModule(false);
}

bool ModuleInUse() noexcept {
  return g_uses != 0;
}

void LockModule(bool lock) noexcept {
  g_uses += lock ? 1 : -1;
}

std::wstring ModulePath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(reinterpret_cast<HMODULE>(&__ImageBase), path.data(),
                                            static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

HRESULT LoadModuleTypeLibrary(const std::wstring& path, Ptr<ITypeLib>& library) {
  return LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.Out());
}

} // namespace com
