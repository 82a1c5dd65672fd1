#include "com/ClassesKey.h"

#include <array>
#include <utility>

namespace com {
namespace {

std::wstring PathOf(const std::wstring& key) {
  return L"Software\\Classes\\" + key;
}

// The topmost key on the way to `key` that is not there; "" when all of them are.
std::wstring FirstMissing(HKEY root, const std::wstring& key) {
  for (size_t end = key.find(L'\\');; end = key.find(L'\\', end + 1)) {
    std::wstring above = key.substr(0, end);
    HKEY handle = nullptr;
    const LSTATUS status = RegOpenKeyExW(root, PathOf(above).c_str(), 0, KEY_READ, &handle);
    if (status == ERROR_FILE_NOT_FOUND) return above;
    if (status == ERROR_SUCCESS) RegCloseKey(handle);
    if (end == std::wstring::npos) return {};
  }
}

} // namespace

ClassesKey::ClassesKey(HKEY root, const std::wstring& key, REGSAM view) {
  if (RegOpenKeyExW(root, PathOf(key).c_str(), 0, KEY_READ | view, &handle_) != ERROR_SUCCESS)
    handle_ = nullptr;
}

ClassesKey::~ClassesKey() {
  if (handle_) RegCloseKey(handle_);
}

std::optional<std::wstring> ClassesKey::Text(const wchar_t* name) const {
  const auto read = [&](wchar_t* text, DWORD& size) {
    return RegGetValueW(handle_, nullptr, name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS;
  };
  DWORD size = 0;
  if (!handle_ || !read(nullptr, size)) return {};
  std::wstring text(size / sizeof(wchar_t), L'\0');
  if (!read(text.data(), size)) return {};
  text.resize(size / sizeof(wchar_t) - 1); // without the NUL at its end
  return text;
}

std::vector<std::wstring> ClassesKey::Subkeys() const {
  std::vector<std::wstring> names;
  std::array<wchar_t, 256> name{}; // the longest that a key can have
  DWORD size = name.size();
  while (handle_ && RegEnumKeyExW(handle_, static_cast<DWORD>(names.size()), name.data(), &size, nullptr,
                                  nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
    names.emplace_back(name.data(), size);
    size = name.size();
  }
  return names;
}

std::wstring ClassesKey::Place() const {
  using QueryKey = LONG NTAPI(HANDLE, int, void*, ULONG, ULONG*);
  constexpr int kKeyNameInformation = 3;
  static auto* const query = reinterpret_cast<QueryKey*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryKey")));
  struct {
    ULONG bytes;
    std::array<wchar_t, 1024> name;
  } information{};
  ULONG size = 0;
  if (!query || query(handle_, kKeyNameInformation, &information, sizeof information, &size) != 0) return {};
  return {information.name.data(), information.bytes / sizeof(wchar_t)};
}

bool IsShared(HKEY root, const std::wstring& key) {
  const ClassesKey own(root, key, kOwnView);
  const ClassesKey other(root, key, kOtherView);
  // Wine shows a program a common key through its own view only.
  return !own || !other || own.Place() == other.Place();
}

void ClassesRemoval::Tree(const std::wstring& key) {
  Note(RegDeleteTreeW(root_, PathOf(key).c_str()));
}

void ClassesRemoval::Empty(const std::wstring& key) {
  if (ClassesKey(root_, key, kOwnView).Subkeys().empty()) Note(RegDeleteKeyW(root_, PathOf(key).c_str()));
}

void ClassesRemoval::Note(LSTATUS status) {
  if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND && status_ == ERROR_SUCCESS) status_ = status;
}

LSTATUS ClassesWriting::Write(const ClassesValue& value) {
  Written written{value.key, value.name, FirstMissing(root_, value.key), {}};
  if (written.created.empty()) written.old = ClassesKey(root_, value.key, kOwnView).Text(value.name);
  written_.push_back(std::move(written));
  return Set(value.key, value.name, value.text);
}

void ClassesWriting::TakeBack() {
  for (; !written_.empty(); written_.pop_back()) {
    const Written& last = written_.back();
    if (!last.created.empty()) {
      RegDeleteTreeW(root_, PathOf(last.created).c_str());
    } else if (last.old) {
      Set(last.key, last.name, *last.old);
    } else {
      RegDeleteKeyValueW(root_, PathOf(last.key).c_str(), last.name);
    }
  }
}

LSTATUS ClassesWriting::Set(const std::wstring& key, const wchar_t* name, const std::wstring& text) const {
  HKEY handle = nullptr;
  LSTATUS status = RegCreateKeyExW(root_, PathOf(key).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                                   nullptr, &handle, nullptr);
  if (status != ERROR_SUCCESS) return status;
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  status = RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), size);
  RegCloseKey(handle);
  return status;
}

} // namespace com
